#pragma once

#include <exception>
#include <string>

#include "platform/base/status.h"

namespace Ta {

/// The one exception of the tool: a status and a message, in the located form also the place of the check.
class Exception : public std::exception {
  public:
    /// Located: the usual form after a failed operation. Without `format` (null) the message is
    /// "<operation>: <detail> (<phrase>, status <n>, <file>:<line>)", <detail> being what the failed
    /// operation left behind for this status (platform/base/failure.h); without one it falls away with its
    /// colon. With `format`, a printf format for what follows it, the formatted text is the message.
    Exception(int line, const char* file, zStatus status, const char* operation, const char* format, ...)
        __attribute__((format(printf, 6, 7)));

    /// A finding of the tool's own; `message` is printed as it stands.
    Exception(zStatus status, std::string message);

    /// A status alone: "<phrase> (status <n>)".
    explicit Exception(zStatus status);

    /// A message alone, printed as it stands; the status is zStatus_Failure.
    explicit Exception(const char* message);
    explicit Exception(std::string message);

    Exception(const Exception&) = default;
    ~Exception() override;

    const char* what() const noexcept override { return message_.c_str(); }

    zStatus status() const { return status_; }
    /// Line of the check; 0 in the forms that are not located.
    int line() const { return line_; }
    /// Name of the failing operation; "" in the forms that are not located.
    const std::string& operation() const { return operation_; }

  private:
    zStatus status_;
    int line_ = 0;
    std::string operation_;
    std::string message_;
};

/// The test that follows every fallible call: raises the located exception unless `status` is exactly 1.
/// `line` is a number where users know the check by it, else the line of the check itself.
void Check(zStatus status, const char* operation, int line = __builtin_LINE());

}  // namespace Ta
