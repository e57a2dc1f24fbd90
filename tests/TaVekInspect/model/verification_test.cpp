#include "TaVekInspect/model/verification.h"

#include <gmock/gmock.h>

#include "tests/testing/archive_fixture.h"
#include "tests/testing/scratch_directory.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::ScratchDirectory;

TEST(Verification, tellsHowFarItHasCome) {
    const ScratchDirectory scratch;
    const std::string path =
        testing::writeArchive(scratch.path("a.pkg"), {{"script.xml", "<S/>"}, {"two", ""}});
    std::vector<std::pair<std::size_t, std::size_t>> steps;
    const auto note = [&](std::size_t done, std::size_t count) { steps.emplace_back(done, count); };
    EXPECT_THAT(verifyMembers(readUpgrade(path), note), IsEmpty());
    EXPECT_THAT(steps, ElementsAre(Pair(0, 2), Pair(1, 2), Pair(2, 2)));
}

TEST(Verification, ofWhatIsNotOpenSaysWhyAlone) {
    const Findings findings = verifyConsistency(readUpgrade("no such file"));
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].text, "Path not found: no such file");
}

}  // namespace
