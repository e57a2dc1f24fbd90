// The documents of the W3C conformance suite: each is judged right, and each accepted one is written back as
// the same bytes.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/base/failure.h"
#include "platform/xml/xml.h"
#include "tests/testing/scratch_directory.h"
#include "tests/testing/xml_tree.h"

namespace {

const std::string corpus = TAVEK_CORPORA_DIRECTORY "/xml/";

void judge(const std::string& name, bool accept, const std::string& note) {
    const std::string bytes = testing::readFile(corpus + name);
    Ta::Object<zHandle> document;
    const zStatus status = zXml_LoadBytes(document.out(), bytes.data(), bytes.size(), nullptr);
    if (accept) {
        ASSERT_EQ(status, zStatus_Success) << name << " (" << note << "): " << failure::detailOf(status);
        EXPECT_TRUE(testing::writtenBytes(document.get()) == bytes) << name << " is written back differently";
    } else {
        EXPECT_TRUE(status == zStatus_Malformed || status == zStatus_Unsupported)
            << name << " (" << note << ") is accepted";
        EXPECT_NE(failure::detailOf(status), "") << name;
    }
}

TEST(Conformance, judgesEveryDocumentOfTheSuite) {
    if (!std::filesystem::exists(corpus)) GTEST_SKIP() << "no conformance documents in " << corpus;
    std::istringstream list(testing::readFile(corpus + "expected.tsv"));
    std::string line;
    std::getline(list, line);
    int judged = 0;
    while (std::getline(list, line)) {
        std::istringstream fields(line);
        std::string name;
        std::string verdict;
        std::string note;
        std::getline(fields, name, '\t');
        std::getline(fields, verdict, '\t');
        std::getline(fields, note, '\t');
        ASSERT_TRUE(verdict == "accept" || verdict == "refuse") << line;
        judge(name, verdict == "accept", note);
        ++judged;
    }
    EXPECT_EQ(judged, 921);
}

}  // namespace
