// Random documents and random edits: what is read is what was written, and what is saved reads as what was
// edited. Where libxml2 is at hand it must say the same.

#include <algorithm>
#include <cstdio>
#include <map>

#include "tests/platform/xml/random_edits.h"
#include "tests/platform/xml/xml_documents.h"

#ifdef TAVEK_LIBXML2
#include "tests/platform/xml/libxml_reader.h"
#endif

namespace {

using namespace testing;
using xml::Encoding;

const std::uint32_t documentCount = 1000;

constexpr Encoding encodings[] = {Encoding::utf8,           Encoding::utf8,  Encoding::utf16LittleEndian,
                                  Encoding::utf16BigEndian, Encoding::ascii, Encoding::latin1,
                                  Encoding::windows1252};

Encoding encodingOf(std::uint32_t seed) {
    return encodings[seed % std::size(encodings)];
}

TEST(Property, readingGivesWhatWasWritten) {
    for (std::uint32_t seed = 0; seed < documentCount; ++seed) {
        RandomDocument random(seed);
        const Element root = random.element(encodingOf(seed), 3);
        const std::string bytes = random.written(root, encodingOf(seed));
        const auto document = parsed(bytes);
        ASSERT_EQ(describeTree(document.get()), describe(root)) << "seed " << seed << "\n" << bytes;
        ASSERT_EQ(saved(document), bytes) << "seed " << seed;
    }
}

TEST(Property, savingGivesWhatWasEdited) {
    for (std::uint32_t seed = 0; seed < documentCount; ++seed) {
        RandomDocument random(seed);
        Element root = random.element(encodingOf(seed), 2);
        const auto document = parsed(random.written(root, encodingOf(seed)));
        for (int edit = 0; edit < 12; ++edit) editBoth(random, document.get(), root, encodingOf(seed));
        ASSERT_EQ(describeTree(document.get()), describe(root)) << "seed " << seed;
        const std::string bytes = saved(document);
        const auto again = parsed(bytes);
        ASSERT_EQ(describeTree(again.get()), describe(root)) << "seed " << seed << "\n" << bytes;
        ASSERT_EQ(saved(again), bytes) << "seed " << seed;
    }
}

TEST(Property, anEditLeavesEveryOtherElementItsBytes) {
    for (std::uint32_t seed = 0; seed < documentCount; ++seed) {
        RandomDocument random(seed);
        const Element root = random.element(Encoding::utf8, 2);
        const std::string before = random.written(root, Encoding::utf8);
        const auto document = parsed(before);
        // A mark that no drawn text holds: cut out again, what is left is the document.
        zXmlItem item = zXml_Root(document.get());
        while (zXml_ChildCount(document.get(), item) > 0 && !random.chance(4))
            item = zXml_ChildAt(document.get(), item, random.roll(zXml_ChildCount(document.get(), item)));
        ASSERT_EQ(zXml_SetAttrText(document.get(), item, "mark", "#"), zStatus_Success);
        std::string after = saved(document);
        const std::size_t place = after.find("mark=\"#\"");
        ASSERT_NE(place, std::string::npos);
        const std::size_t start = after.find_last_not_of(" \t\r\n", place - 1) + 1;
        after.erase(start, place + 8 - start);
        ASSERT_EQ(after, before) << "seed " << seed;
    }
}

#ifdef TAVEK_LIBXML2

TEST(Libxml, readsWhatWasWrittenAndEdited) {
    for (std::uint32_t seed = 0; seed < documentCount; ++seed) {
        RandomDocument random(seed);
        Element root = random.element(encodingOf(seed), 2);
        const std::string bytes = random.written(root, encodingOf(seed));
        ASSERT_EQ(libxmlTree(bytes), describe(root)) << "seed " << seed << "\n" << bytes;
        const auto document = parsed(bytes);
        for (int edit = 0; edit < 8; ++edit) editBoth(random, document.get(), root, encodingOf(seed));
        ASSERT_EQ(libxmlTree(saved(document)), describe(root)) << "seed " << seed << "\n" << saved(document);
    }
}

/// What a document is damaged with.
constexpr const char* splinters[] = {"<",
                                     ">",
                                     "&",
                                     "\"",
                                     "'",
                                     "/",
                                     "=",
                                     " ",
                                     "]]>",
                                     "--",
                                     "<!--",
                                     "-->",
                                     "<?",
                                     "?>",
                                     "<a>",
                                     "</a>",
                                     "<a/>",
                                     "&lt;",
                                     "&#0;",
                                     "&x;",
                                     "&#65",
                                     "a",
                                     ":",
                                     "xml",
                                     "<?xml ",
                                     "<![CDATA[",
                                     "\x01",
                                     "\xFF",
                                     "\xC3",
                                     "\xED\xA0\x80",
                                     "\r",
                                     "1",
                                     " a=''",
                                     " x='1' x='2'",
                                     "\xEF\xBF\xBF",
                                     "\xE0\x80\x80",
                                     "\xC3\x97",
                                     "<!DOCTYPE a>"};

/// Damages `text` in one to three places.
std::string mutated(RandomDocument& random, std::string text) {
    for (std::size_t count = 1 + random.roll(3); count > 0; --count) {
        const std::size_t place = random.roll(text.size() + 1);
        const std::size_t size = std::min(random.roll(6), text.size() - place);
        switch (random.roll(4)) {
            case 0:
                text.erase(place, size);
                break;
            case 1:
                text.insert(random.roll(text.size() + 1), text.substr(place, 4 * size));
                break;
            case 2:
                text.replace(place, std::min<std::size_t>(size, 1),
                             splinters[random.roll(std::size(splinters))]);
                break;
            default:
                text.insert(place, splinters[random.roll(std::size(splinters))]);
        }
    }
    return text;
}

TEST(Libxml, agreesOnEveryDamagedDocument) {
    std::map<std::string, int> counts;
    for (std::uint32_t seed = 0; seed < 10 * documentCount; ++seed) {
        RandomDocument random(seed);
        const Element root = random.element(Encoding::utf8, 1);
        const std::string bytes = mutated(random, random.written(root, Encoding::utf8));
        const std::string fault = faultOf(bytes);
        const std::string theirs = libxmlTree(bytes);
        const std::string own = fault == "accepted" ? describeTree(parsed(bytes).get()) : libxmlRefuses;
        if (own == theirs) {
            ++counts[own == libxmlRefuses ? "refused by both" : "read alike by both"];
            continue;
        }
        const char* reason = reasonToDisagree(bytes, fault);
        ++counts[reason == nullptr ? "unexplained" : reason];
        EXPECT_NE(reason, nullptr) << "seed " << seed << ": " << fault << "\nlibxml2: " << theirs << "\n"
                                   << own << bytes;
    }
    for (const auto& [what, count] : counts) std::printf("%6d %s\n", count, what.c_str());
    EXPECT_GT(counts["refused by both"], counts["read alike by both"]);
    EXPECT_GT(counts["read alike by both"], static_cast<int>(documentCount) / 4);
}

/// A document of each kind on which the two disagree, so that no reason outlives what it explains.
TEST(Libxml, disagreesForTheseReasonsOnly) {
    using namespace std::string_literals;
    const std::pair<std::string, const char*> documents[] = {
        {"<!DOCTYPE a [<!ELEMENT b>]><a/>", "declarations"},
        {"<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>", "entities"},
        {"<?xml version='1.0' encoding='ISO-8859-2'?><a/>", "encodings"},
        {"\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?><a/>", "encodings"},
        {"<?xml version='1.'?><a/>", "version"},
        {"<?xml version='1.0' encoding='UTF-8'standalone='yes'?><a/>", "declaration"},
        {"<a/>\0"s, "zero"},
    };
    for (const auto& [bytes, reason] : documents) {
        const std::string fault = faultOf(bytes);
        EXPECT_NE(fault == "accepted", libxmlTree(bytes) != libxmlRefuses) << bytes << ": " << fault;
        const char* known = reasonToDisagree(bytes, fault);
        ASSERT_NE(known, nullptr) << bytes;
        EXPECT_TRUE(std::string_view(known).starts_with(reason)) << bytes << ": " << known;
    }
}

#else

TEST(Libxml, isNotThere) {
    GTEST_SKIP() << "this build has no libxml2 to compare with";
}

#endif

}  // namespace
