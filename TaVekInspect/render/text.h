#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/archive/members.h"

/// Values as people read them.

/// `text` on one line, control characters as "?" but for those in `kept`: names come out of archives, and a
/// terminal obeys what they may hold. So are those that turn the order of the text round.
std::string printable(const std::string& text, std::string_view kept = "");

/// Columns that `text` takes on a terminal, one for each UTF-8 character.
std::size_t widthOf(const std::string& text);

/// "0 bytes", "1 byte", "812 bytes", "3.4 KiB", "1.0 GiB".
std::string sizeText(std::uint64_t size);

/// "1 member", "2 members".
std::string counted(std::size_t count, const std::string& noun);

/// "stored", "deflated", "method 12".
std::string methodText(const zMemberInfo& member);

/// "2024-06-19 13:33:22".
std::string timeText(const zMemberTime& time);

/// Eight hexadecimal digits.
std::string crcText(std::uint32_t crc);

/// The texts with ", " in between.
std::string joined(const std::vector<std::string>& texts);
