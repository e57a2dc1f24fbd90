#include "TaVekInspect/model/text_diff.h"

#include <gmock/gmock.h>

#include <random>

namespace {

using testing::IsEmpty;

/// The hunks as a unified diff writes them.
std::string unified(const std::string& before, const std::string& after) {
    std::string text;
    for (const Hunk& hunk : diffTexts(before, after)) {
        text += headingOf(hunk) + '\n';
        for (const DiffLine& line : hunk.lines) {
            text += line.mark + line.text + (line.endsLine ? "\n" : "\n\\ No newline at end of file\n");
        }
    }
    return text;
}

/// What `before` becomes by the hunks; fails the test when they do not fit it.
std::string patched(const std::string& before, const std::vector<Hunk>& hunks) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < before.size();) {
        const std::size_t end = std::min(before.find('\n', at), before.size() - 1) + 1;
        lines.push_back(before.substr(at, end - at));
        at = end;
    }
    std::string after;
    std::size_t at = 0;
    for (const Hunk& hunk : hunks) {
        const std::size_t begin = hunk.oldBegin - (hunk.oldCount > 0 ? 1 : 0);
        while (at < begin) after += lines.at(at++);
        for (const DiffLine& line : hunk.lines) {
            const std::string text = line.text + (line.endsLine ? "\n" : "");
            if (line.mark != '+') {
                EXPECT_EQ(lines.at(at++), text);
            }
            if (line.mark != '-') after += text;
        }
    }
    while (at < lines.size()) after += lines.at(at++);
    return after;
}

TEST(TextDiff, equalTextsHaveNone) {
    EXPECT_THAT(diffTexts("a\nb\n", "a\nb\n"), IsEmpty());
    EXPECT_THAT(diffTexts("", ""), IsEmpty());
}

TEST(TextDiff, aChangeWithThreeLinesAroundIt) {
    EXPECT_EQ(unified("1\n2\n3\n4\n5\n6\n7\n8\n9\n", "1\n2\n3\n4\nfive\n6\n7\n8\n9\n"),
              "@@ -2,7 +2,7 @@\n 2\n 3\n 4\n-5\n+five\n 6\n 7\n 8\n");
}

TEST(TextDiff, anEmptySideStartsBehindTheLineBefore) {
    EXPECT_EQ(unified("", "a\nb\n"), "@@ -0,0 +1,2 @@\n+a\n+b\n");
    EXPECT_EQ(unified("a\n", ""), "@@ -1 +0,0 @@\n-a\n");
}

TEST(TextDiff, changesThatAreNearShareAHunk) {
    const std::string before = "a\n1\n2\n3\n4\n5\n6\nb\n", near = "A\n1\n2\n3\n4\n5\n6\nB\n";
    EXPECT_EQ(diffTexts(before, near).size(), 1u);
    EXPECT_EQ(diffTexts("a\n1\n2\n3\n4\n5\n6\n7\nb\n", "A\n1\n2\n3\n4\n5\n6\n7\nB\n").size(), 2u);
}

TEST(TextDiff, aMissingLineEndIsADifference) {
    EXPECT_EQ(unified("a\n", "a"), "@@ -1 +1 @@\n-a\n+a\n\\ No newline at end of file\n");
}

TEST(TextDiff, takesTheShortestWay) {
    EXPECT_EQ(unified("a\nb\nc\na\nb\nb\na\n", "c\nb\na\nb\na\nc\n"),
              "@@ -1,7 +1,6 @@\n-a\n-b\n c\n+b\n a\n b\n-b\n a\n+c\n");
}

TEST(TextDiff, textsWithLittleInCommonAreReplaced) {
    std::string before = "same\n", after = "same\n";
    for (int i = 0; i < 4000; ++i) {
        before += "old " + std::to_string(i) + '\n';
        after += "new " + std::to_string(i) + '\n';
    }
    const std::vector<Hunk> hunks = diffTexts(before, after);
    ASSERT_EQ(hunks.size(), 1u);
    EXPECT_EQ(hunks[0].oldCount, 4001u);
    EXPECT_EQ(patched(before, hunks), after);
}

TEST(TextDiff, givesTheSecondTextWhenItIsAppliedToTheFirst) {
    std::mt19937 random(7);
    for (int round = 0; round < 500; ++round) {
        std::string texts[2];
        for (std::string& text : texts) {
            const auto count = random() % 30;
            for (std::size_t i = 0; i < count; ++i)
                text += std::string(1, static_cast<char>('a' + random() % 4)) + '\n';
            if (random() % 4 == 0) text += "end";
        }
        ASSERT_EQ(patched(texts[0], diffTexts(texts[0], texts[1])), texts[1]) << texts[0] << "->\n"
                                                                              << texts[1];
    }
}

}  // namespace
