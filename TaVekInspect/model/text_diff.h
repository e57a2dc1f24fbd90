#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// One line of a unified diff.
struct DiffLine {
    char mark;  ///< ' ' in both texts, '-' in the first alone, '+' in the second alone.
    std::string text;
    bool endsLine = true;  ///< False for a last line without a line end.
};

/// A run of changed lines with up to three lines around it. Line numbers count from 1; as in every unified
/// diff, the number of an empty side is that of the line before.
struct Hunk {
    std::size_t oldBegin = 0, oldCount = 0;
    std::size_t newBegin = 0, newCount = 0;
    std::vector<DiffLine> lines;
};

/// What turns `before` into `after`; nothing when they are equal. The shortest such list, unless the texts
/// have little in common: then what lies between their equal beginnings and ends is replaced as a whole.
std::vector<Hunk> diffTexts(std::string_view before, std::string_view after);

/// "@@ -1,3 +1,4 @@".
std::string headingOf(const Hunk& hunk);
