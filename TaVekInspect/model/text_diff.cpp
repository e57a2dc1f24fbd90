#include "TaVekInspect/model/text_diff.h"

#include <algorithm>

namespace {

using Lines = std::vector<std::string_view>;  // each with its line end

Lines linesOf(std::string_view text) {
    Lines lines;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::size_t length = end == std::string_view::npos ? text.size() : end + 1;
        lines.push_back(text.substr(0, length));
        text.remove_prefix(length);
    }
    return lines;
}

/// One step on the way from the first text to the second.
struct Step {
    char mark;
    std::string_view line;
};

using Steps = std::vector<Step>;

/// The shortest way between two lists of lines (E. W. Myers, "An O(ND) Difference Algorithm", 1986): for each
/// number of edits, how far one gets on each diagonal; then back along the furthest.
class ShortestWay {
  public:
    ShortestWay(const Lines& before, const Lines& after) : before_(before), after_(after) {}

    /// False when it takes more edits than are worth looking for.
    bool find(Steps& steps) {
        const auto most = std::min<std::ptrdiff_t>(mostEdits, oldCount() + newCount());
        reached_.assign(static_cast<std::size_t>(2 * most + 3), 0);
        origin_ = most + 1;
        for (std::ptrdiff_t edits = 0; edits <= most; ++edits) {
            if (extend(edits)) {
                walkBack(edits, steps);
                return true;
            }
        }
        return false;
    }

  private:
    static constexpr std::ptrdiff_t mostEdits = 1500;

    std::ptrdiff_t oldCount() const { return static_cast<std::ptrdiff_t>(before_.size()); }
    std::ptrdiff_t newCount() const { return static_cast<std::ptrdiff_t>(after_.size()); }
    std::ptrdiff_t& reached(std::ptrdiff_t diagonal) {
        return reached_[static_cast<std::size_t>(origin_ + diagonal)];
    }
    std::string_view oldLine(std::ptrdiff_t at) const { return before_[static_cast<std::size_t>(at)]; }
    std::string_view newLine(std::ptrdiff_t at) const { return after_[static_cast<std::size_t>(at)]; }

    /// True when a line is added, not removed, on the way to the diagonal.
    bool comesFromAbove(std::ptrdiff_t edits, std::ptrdiff_t diagonal) {
        return diagonal == -edits || (diagonal != edits && reached(diagonal - 1) < reached(diagonal + 1));
    }

    /// One edit more on every diagonal; true when that leads to both ends.
    bool extend(std::ptrdiff_t edits) {
        history_.emplace_back(reached_);
        for (std::ptrdiff_t diagonal = -edits; diagonal <= edits; diagonal += 2) {
            std::ptrdiff_t x =
                comesFromAbove(edits, diagonal) ? reached(diagonal + 1) : reached(diagonal - 1) + 1;
            std::ptrdiff_t y = x - diagonal;
            while (x < oldCount() && y < newCount() && oldLine(x) == newLine(y)) ++x, ++y;
            reached(diagonal) = x;
            if (x >= oldCount() && y >= newCount()) return true;
        }
        return false;
    }

    void walkBack(std::ptrdiff_t edits, Steps& steps) {
        std::ptrdiff_t x = oldCount(), y = newCount();
        for (; edits >= 0; --edits) {
            reached_ = history_[static_cast<std::size_t>(edits)];
            const std::ptrdiff_t diagonal = x - y;
            const bool isAdded = comesFromAbove(edits, diagonal);
            const std::ptrdiff_t startX = edits == 0 ? 0 : reached(isAdded ? diagonal + 1 : diagonal - 1);
            const std::ptrdiff_t editedX = edits == 0 ? 0 : startX + (isAdded ? 0 : 1);
            for (; x > editedX; --x, --y) steps.push_back({' ', oldLine(x - 1)});
            if (edits == 0) break;
            if (isAdded) {
                steps.push_back({'+', newLine(--y)});
            } else {
                steps.push_back({'-', oldLine(--x)});
            }
        }
        std::reverse(steps.begin(), steps.end());
    }

    const Lines& before_;
    const Lines& after_;
    std::vector<std::ptrdiff_t> reached_;  // by diagonal: how many old lines are behind
    std::ptrdiff_t origin_ = 0;
    std::vector<std::vector<std::ptrdiff_t>> history_;
};

/// All the way: equal lines at both ends are never searched.
Steps wayBetween(const Lines& before, const Lines& after) {
    const std::size_t shorter = std::min(before.size(), after.size());
    std::size_t head = 0, tail = 0;
    while (head < shorter && before[head] == after[head]) ++head;
    while (tail < shorter - head && before[before.size() - 1 - tail] == after[after.size() - 1 - tail])
        ++tail;

    const auto middle = [&](const Lines& lines) {
        return Lines(lines.begin() + static_cast<std::ptrdiff_t>(head),
                     lines.end() - static_cast<std::ptrdiff_t>(tail));
    };
    const Lines oldMiddle = middle(before), newMiddle = middle(after);
    Steps steps;
    for (std::size_t i = 0; i < head; ++i) steps.push_back({' ', before[i]});
    Steps between;
    if (!ShortestWay(oldMiddle, newMiddle).find(between)) {
        for (const auto line : oldMiddle) between.push_back({'-', line});
        for (const auto line : newMiddle) between.push_back({'+', line});
    }
    steps.insert(steps.end(), between.begin(), between.end());
    for (std::size_t i = before.size() - tail; i < before.size(); ++i) steps.push_back({' ', before[i]});
    return steps;
}

constexpr std::size_t context = 3;

DiffLine lineOf(const Step& step) {
    const bool endsLine = step.line.ends_with('\n');
    return {step.mark, std::string(step.line.substr(0, step.line.size() - (endsLine ? 1 : 0))), endsLine};
}

/// The hunk of the steps from `begin` to `end`, of which the first stands behind so many lines of each text.
Hunk hunkOf(const Steps& steps, std::size_t begin, std::size_t end, std::size_t oldLines,
            std::size_t newLines) {
    Hunk hunk;
    for (std::size_t i = begin; i < end; ++i) {
        if (steps[i].mark != '+') ++hunk.oldCount;
        if (steps[i].mark != '-') ++hunk.newCount;
        hunk.lines.push_back(lineOf(steps[i]));
    }
    hunk.oldBegin = oldLines + (hunk.oldCount > 0 ? 1 : 0);
    hunk.newBegin = newLines + (hunk.newCount > 0 ? 1 : 0);
    return hunk;
}

/// One past the last change that belongs to the hunk of the change at `first`: no more than twice the context
/// lies between them.
std::size_t lastChange(const Steps& steps, std::size_t first) {
    std::size_t end = first;
    for (std::size_t i = first; i < steps.size() && i < end + 2 * context + 1; ++i) {
        if (steps[i].mark != ' ') end = i + 1;
    }
    return end;
}

std::string rangeOf(std::size_t begin, std::size_t count) {
    return std::to_string(begin) + (count == 1 ? "" : "," + std::to_string(count));
}

}  // namespace

std::vector<Hunk> diffTexts(std::string_view before, std::string_view after) {
    const Lines oldLines = linesOf(before), newLines = linesOf(after);
    const Steps steps = wayBetween(oldLines, newLines);
    std::vector<Hunk> hunks;
    std::size_t oldBehind = 0, newBehind = 0, at = 0;
    const auto walkTo = [&](std::size_t target) {
        for (; at < target; ++at) {
            if (steps[at].mark != '+') ++oldBehind;
            if (steps[at].mark != '-') ++newBehind;
        }
    };
    for (std::size_t i = 0; i < steps.size(); ++i) {
        if (steps[i].mark == ' ') continue;
        const std::size_t end = lastChange(steps, i);
        walkTo(std::max(at, i - std::min(i, context)));
        hunks.push_back(hunkOf(steps, at, std::min(end + context, steps.size()), oldBehind, newBehind));
        i = end - 1;
        walkTo(end);
    }
    return hunks;
}

std::string headingOf(const Hunk& hunk) {
    return "@@ -" + rangeOf(hunk.oldBegin, hunk.oldCount) + " +" + rangeOf(hunk.newBegin, hunk.newCount) +
           " @@";
}
