#include "platform/base/exception.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

#include "platform/base/failure.h"

namespace Ta {
namespace {

constexpr const char* sourceFile = "TaVekUtil";

std::string number(zStatus status) {
    return std::to_string(static_cast<std::int32_t>(status));
}

std::string formatted(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    // clang 14 sees the list uninitialised when it comes as a parameter.
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text(length < 0 ? 0 : static_cast<std::size_t>(length), '\0');
    if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}

std::string located(int line, const char* file, zStatus status, const char* operation) {
    std::string text = operation;
    const std::string_view detail = failure::detailOf(status);
    if (!detail.empty()) text.append(": ").append(detail);
    return text + " (" + zStatus_Phrase(status) + ", status " + number(status) + ", " + file + ':' +
           std::to_string(line) + ')';
}

}  // namespace

Exception::Exception(int line, const char* file, zStatus status, const char* operation, const char* format,
                     ...)
    : status_(status), line_(line), operation_(operation) {
    if (format == nullptr) {
        message_ = located(line, file, status, operation);
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    message_ = formatted(format, arguments);
    va_end(arguments);
}

Exception::Exception(zStatus status, std::string message) : status_(status), message_(std::move(message)) {}

Exception::Exception(zStatus status)
    : Exception(status, std::string(zStatus_Phrase(status)) + " (status " + number(status) + ')') {}

Exception::Exception(const char* message) : Exception(zStatus_Failure, message) {}

Exception::Exception(std::string message) : Exception(zStatus_Failure, std::move(message)) {}

Exception::~Exception() = default;

void Check(zStatus status, const char* operation, int line) {
    if (status != zStatus_Success) throw Exception(line, sourceFile, status, operation, nullptr);
}

}  // namespace Ta
