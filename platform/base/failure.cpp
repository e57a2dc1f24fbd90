#include "platform/base/failure.h"

#include <array>

namespace failure {
namespace {

/// Kept in fixed storage, for a failure for want of memory must be noted as well. A longer detail is cut.
struct Last {
    zStatus status = zStatus_Success;
    std::array<char, 2048> detail{};
    std::size_t length = 0;
};

Last last;

void append(std::string_view text) {
    last.length += text.copy(last.detail.data() + last.length, last.detail.size() - last.length);
}

void begin(zStatus status) {
    last.status = status;
    last.length = 0;
}

bool meansAbsent(std::error_code error) {
    return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

}  // namespace

zStatus record(zStatus status, std::string_view detail) {
    begin(status);
    append(detail);
    return status;
}

zStatus record(std::error_code error, std::string_view subject) {
    begin(meansAbsent(error) ? zStatus_NotFound : zStatus_IoError);
    append(subject);
    append(": ");
    append(error.message());
    return last.status;
}

zStatus within(std::string_view context, zStatus status) {
    if (status != zStatus_Success && status == last.status) {
        const Last inner = last;
        begin(status);
        append(context);
        append({inner.detail.data(), inner.length});
    }
    return status;
}

std::string_view detailOf(zStatus status) {
    if (status != last.status) return {};
    return {last.detail.data(), last.length};
}

}  // namespace failure
