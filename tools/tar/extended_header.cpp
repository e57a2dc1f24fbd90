#include "tools/tar/extended_header.h"

#include <charconv>
#include <limits>

#include "tools/tar/failure.h"

namespace tar {
namespace {

[[noreturn]] void refuse(std::string_view what) {
    throw Failure("an extended header with " + std::string(what));
}

/// Reads the whole number at the start of `text` and takes it away from there.
template <typename Number>
Number takeNumber(std::string_view& text, std::string_view what) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) refuse(what);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

/// Seconds since 1970 with an optional fraction, whose digits beyond the ninth are cut off.
os::Time timeOf(std::string_view text) {
    constexpr std::string_view fault = "a time that is none";
    const bool negative = text.starts_with('-');
    os::Time time;
    time.seconds = takeNumber<std::int64_t>(text, fault);
    if (text.empty()) return time;
    if (text[0] != '.' || text.find_first_not_of("0123456789", 1) != std::string_view::npos) refuse(fault);
    std::string digits(text.substr(1, 9));
    digits.resize(9, '0');
    std::string_view left = digits;
    time.nanoseconds = takeNumber<std::int32_t>(left, fault);
    if (!negative || time.nanoseconds == 0) return time;
    constexpr std::int32_t second = 1'000'000'000;
    if (time.seconds == std::numeric_limits<std::int64_t>::min()) refuse(fault);
    time.seconds -= 1;
    time.nanoseconds = second - time.nanoseconds;
    return time;
}

std::uint64_t sizeOf(std::string_view text) {
    const std::uint64_t size = takeNumber<std::uint64_t>(text, "a size that is none");
    if (!text.empty()) refuse("a size that is none");
    return size;
}

/// A text that becomes a path must not end before its end.
std::string pathOf(std::string_view text) {
    if (text.find('\0') != std::string_view::npos) refuse("a name that holds a zero byte");
    return std::string(text);
}

template <typename Value, typename Reader>
void set(Overrides::Said<Value>& target, std::string_view text, Reader reader) {
    target = text.empty() ? std::optional<Value>() : std::optional<Value>(reader(text));
}

template <typename Value>
void put(const Overrides::Said<Value>& said, Value& target) {
    if (said && *said) target = **said;
}

void readRecord(Overrides& overrides, std::string_view keyword, std::string_view value) {
    if (keyword == "path") set(overrides.name, value, pathOf);
    if (keyword == "linkpath") set(overrides.link, value, pathOf);
    if (keyword == "size") set(overrides.size, value, sizeOf);
    if (keyword == "mtime") set(overrides.time, value, timeOf);
    if (keyword.starts_with("GNU.sparse.")) throw Failure("a file with holes, which this tar cannot unpack");
}

}  // namespace

void Overrides::read(std::string_view records) {
    while (!records.empty()) {
        std::string_view record = records;
        const std::size_t length = takeNumber<std::size_t>(record, "a record without length");
        const std::size_t digits = records.size() - record.size();
        if (length > records.size() || length < digits + 2) refuse("a record of wrong length");
        record = records.substr(digits, length - digits);
        if (record.front() != ' ' || record.back() != '\n') refuse("a record of wrong length");
        record = record.substr(1, record.size() - 2);
        const std::size_t equals = record.find('=');
        if (equals == std::string_view::npos) refuse("a record that is none");
        readRecord(*this, record.substr(0, equals), record.substr(equals + 1));
        records.remove_prefix(length);
    }
}

void Overrides::overlay(const Overrides& stronger) {
    if (stronger.name) name = stronger.name;
    if (stronger.link) link = stronger.link;
    if (stronger.size) size = stronger.size;
    if (stronger.time) time = stronger.time;
}

void Overrides::apply(Member& member) const {
    put(name, member.name);
    put(link, member.link);
    put(size, member.size);
    put(time, member.time);
    // The old way to tell a directory counts for the longer name, too.
    if (member.kind == Kind::file && member.name.ends_with('/')) member.kind = Kind::directory;
}

}  // namespace tar
