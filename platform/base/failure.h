#pragma once

#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/base/status.h"

/// The one-line detail that a failed operation of the platform layer leaves behind: what it was doing, on
/// what, and why ("a.pkg: No such file or directory"). The next failure overwrites it, success leaves it
/// alone. Statuses travel through every layer; the detail waits here until an exception's message wants it.
namespace failure {

/// Notes `detail` as the reason of a failure with `status` and answers `status`.
zStatus record(zStatus status, std::string_view detail);

/// Notes that the system answered `error` for `subject` (a path): "subject: No such file or directory".
/// Answers zStatus_NotFound when nothing of that name exists, else zStatus_IoError.
zStatus record(std::error_code error, std::string_view subject);

/// Puts `context` in front of the last detail, as the reader of "script.xml" does with the "12:5: ..." of the
/// parser. Answers `status`, so that it can stand in a return. Nothing happens when the last failure had
/// another status.
zStatus within(std::string_view context, zStatus status);

/// The detail of the last failure when that had this `status`, else "". Valid until the next failure.
std::string_view detailOf(zStatus status);

/// Runs `operation`, whose answer is a status, and turns exhausted memory into one. Every operation whose
/// inside allocates has this between itself and its caller, for the operations never throw.
template <typename Operation>
zStatus guarded(Operation operation) noexcept {
    try {
        return operation();
    } catch (const std::bad_alloc&) {
    } catch (const std::length_error&) {
    }
    return record(zStatus_NoMemory, std::string_view());
}

}  // namespace failure
