#include <gtest/gtest.h>

#include "platform/archive/inflate.h"
#include "tests/platform/archive/deflate_stream.h"
#include "tests/platform/archive/inflate_fixture.h"

// The two ends of the decoder: where its input comes from, and where its output goes.

namespace {

using namespace testing;
using inflation::Verdict;
using S = DeflateStream;

TEST(InflateEnds, reportAnInputThatFails) {
    class Failing : public inflation::Input {
      public:
        bool next(std::span<const std::uint8_t>& bytes) override {
            if (asked_++ > 0) return false;
            bytes = {bytes_, sizeof bytes_};
            return true;
        }

      private:
        const std::uint8_t bytes_[2] = {0, 9};  // a stored block, cut
        int asked_ = 0;
    };
    Failing input;
    Gathered output;
    inflation::Inflater inflater;
    EXPECT_EQ(inflater.run(input, output), Verdict::inputFailed);
}

TEST(InflateEnds, stopWhenNoMoreIsWanted) {
    const std::string content(2'000'000, 'z');
    S stream;
    for (std::size_t at = 0; at < content.size(); at += 50'000) {
        stream.storedBlock(content.substr(at, 50'000), at + 50'000 >= content.size());
    }
    const Inflated result = inflate(stream.bytes(), 4096, 500'000);
    EXPECT_EQ(result.verdict, Verdict::outputRefused);
    EXPECT_LT(result.content.size(), 1'000'000u);
    // Also when all of it comes in one piece at the very end.
    EXPECT_EQ(inflate(S().fixedBlock("x").bytes(), 100, 0).verdict, Verdict::outputRefused);
}

TEST(InflateEnds, canBeUsedAgainAfterEveryFault) {
    const std::string good = S().fixedBlock("good").bytes();
    for (const std::string& bad : {S().header(true, S::unknownType).bytes(), std::string("\x05"),
                                   S().dynamicHeader(lengthsOf("ab", 1), {0}).bytes()}) {
        EXPECT_NE(inflate(bad, 100).verdict, Verdict::complete);
        EXPECT_EQ(inflate(good, 100).content, "good");
    }
}

TEST(InflateEnds, haveAPhraseForEveryFault) {
    for (const Verdict verdict :
         {Verdict::endsEarly, Verdict::badBlockType, Verdict::badStoredLength, Verdict::badCodeCount,
          Verdict::badCodeLengths, Verdict::noEndCode, Verdict::badCode, Verdict::distanceTooFar}) {
        EXPECT_STRNE(inflation::phraseOf(verdict), "");
    }
    EXPECT_STREQ(inflation::phraseOf(Verdict::complete), "");
}

}  // namespace
