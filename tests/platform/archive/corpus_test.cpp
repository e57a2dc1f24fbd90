// Archives that other programs made or damaged, each with the verdict it must get.

#include <gmock/gmock.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/archive/archive.h"
#include "platform/base/failure.h"
#include "tests/platform/archive/archive_handle.h"
#include "tests/testing/scratch_directory.h"

namespace {

using testing::ScratchDirectory;
using testing::StartsWith;

const std::string corpus = TAVEK_CORPORA_DIRECTORY "/zip";

struct Case {
    std::string file;
    bool loads = false;
    bool damaged = false;  // loads, but one of its members must stop a save
};

std::vector<Case> readCases() {
    std::vector<Case> cases;
    std::ifstream table(corpus + "/expected.tsv");
    std::string line;
    std::getline(table, line);  // the headings
    while (std::getline(table, line)) {
        std::istringstream fields(line);
        Case one;
        std::string verdict;
        std::string why;
        std::getline(fields, one.file, '\t');
        std::getline(fields, verdict, '\t');
        std::getline(fields, why);
        one.loads = verdict == "must-load";
        one.damaged = why.find("a member is damaged") != std::string::npos;
        cases.push_back(one);
    }
    return cases;
}

class Corpus : public testing::Test {
  protected:
    void SetUp() override {
        if (!std::filesystem::exists(corpus)) GTEST_SKIP() << "there is no corpus at " << corpus;
        cases = readCases();
        ASSERT_FALSE(cases.empty());
    }
    std::vector<Case> cases;
};

TEST_F(Corpus, isJudgedRight) {
    const ScratchDirectory scratch;
    for (const Case& one : cases) {
        SCOPED_TRACE(one.file);
        const ArchiveHandle archive;
        const std::string path = corpus + '/' + one.file;
        const zStatus loaded = zArchive_Load(archive.get(), path.c_str());
        if (!one.loads) {
            EXPECT_EQ(loaded, zStatus_Malformed);
            EXPECT_THAT(std::string(failure::detailOf(loaded)), StartsWith(path + ": "));
            continue;
        }
        EXPECT_EQ(loaded, zStatus_Success) << failure::detailOf(loaded);
        EXPECT_EQ(zArchive_AddData(archive.get(), "new", 3, "added by the test", 0), zStatus_Success);
        const std::string saved = scratch.path(one.file);
        const zStatus status = zArchive_Save(archive.get(), saved.c_str());
        EXPECT_EQ(status, one.damaged ? zStatus_Malformed : zStatus_Success) << failure::detailOf(status);
        EXPECT_EQ(std::filesystem::exists(saved), status == zStatus_Success);
    }
}

}  // namespace
