#pragma once

#include <cstddef>
#include <new>
#include <string>

#include "platform/base/status.h"

/// Operations of the platform layer that fail on demand, so that a test reaches the checks behind calls that
/// never fail on a healthy machine. The linker puts a wrapper around each operation that CMakeLists.txt
/// lists; calls from within the operation's own source file stay as they are.
namespace testing {

/// As long as it lives, `operation` ("zXml_Save") answers `status` without doing anything: from its call
/// number `call` on, counted from now; "zStrCopy", whose status nobody looks at, raises it. One at a time.
class Fault {
  public:
    Fault(const std::string& operation, zStatus status, std::size_t call = 1);
    /// The same with an exception, as the tool's own code may raise between two operations.
    Fault(const std::string& operation, const std::bad_alloc& exhausted, std::size_t call = 1);
    ~Fault();
    Fault(const Fault&) = delete;
    Fault& operator=(const Fault&) = delete;
};

/// How often `operation` has been called since the program started.
std::size_t callsOf(const std::string& operation);

/// As long as it lives, the program passes for one that lies in `directory`.
class ApplicationDirectory {
  public:
    explicit ApplicationDirectory(const std::string& directory);
    ~ApplicationDirectory();
    ApplicationDirectory(const ApplicationDirectory&) = delete;
    ApplicationDirectory& operator=(const ApplicationDirectory&) = delete;
};

}  // namespace testing
