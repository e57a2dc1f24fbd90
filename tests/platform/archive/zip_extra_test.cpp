#include "platform/archive/zip_extra.h"

#include <gtest/gtest.h>

#include "tests/platform/archive/zip_image.h"

namespace {

using namespace testing;
using zip::ExtraField;
using zip::Zip64Values;

/// An extra field of its own bytes.
struct Parsed {
    explicit Parsed(std::string content) : bytes(std::move(content)) {
        fault = zip::parseExtra({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, field);
    }
    Parsed(const Parsed&) = delete;
    Parsed& operator=(const Parsed&) = delete;
    std::string zip64() const {
        return {reinterpret_cast<const char*>(field.zip64.data()), field.zip64.size()};
    }
    std::string bytes;
    ExtraField field;
    const char* fault = nullptr;
};

TEST(ZipExtra, isAListOfRecords) {
    for (const std::string& other : {std::string(), extraRecord(7, "other"), extraRecord(7, "")}) {
        const Parsed none(other + other);
        EXPECT_EQ(none.fault, nullptr);
        EXPECT_FALSE(none.field.hasZip64);
        EXPECT_EQ(none.field.whole.size(), 2 * other.size());

        const Parsed one(other + extraRecord(zip64Id, "value") + other);
        EXPECT_EQ(one.fault, nullptr);
        EXPECT_TRUE(one.field.hasZip64);
        EXPECT_EQ(one.zip64(), "value");
    }
}

TEST(ZipExtra, mayHoldAnEmptyZip64Record) {
    const Parsed parsed(extraRecord(zip64Id, ""));
    EXPECT_EQ(parsed.fault, nullptr);
    EXPECT_TRUE(parsed.field.hasZip64);
    EXPECT_EQ(parsed.zip64(), "");
}

TEST(ZipExtra, mayBePaddedWithLessThanARecordOfZeros) {
    for (std::size_t count = 0; count < 4; ++count) {
        EXPECT_EQ(Parsed(std::string(count, '\0')).fault, nullptr);
        EXPECT_EQ(Parsed(extraRecord(7, "x") + std::string(count, '\0')).fault, nullptr);
    }
    // Four zeros are an empty record of kind 0.
    EXPECT_EQ(Parsed(std::string(7, '\0')).fault, nullptr);
    EXPECT_STREQ(Parsed(std::string(1, 'x')).fault, "bytes that are no record in the extra field");
    EXPECT_STREQ(Parsed(std::string("\0\0x", 3)).fault, "bytes that are no record in the extra field");
}

TEST(ZipExtra, refusesARecordLongerThanTheField) {
    EXPECT_STREQ(Parsed(number(7, 2) + number(1, 2)).fault,
                 "a record of the extra field is longer than the field");
    EXPECT_STREQ(Parsed(extraRecord(7, "x") + number(7, 2) + number(0xFFFF, 2) + "x").fault,
                 "a record of the extra field is longer than the field");
}

TEST(ZipExtra, refusesTwoZip64Records) {
    EXPECT_STREQ(Parsed(extraRecord(zip64Id, "") + extraRecord(zip64Id, "")).fault,
                 "two ZIP64 records in the extra field");
}

TEST(Zip64Values, standForMarksInTheirOrder) {
    const Parsed parsed(extraRecord(zip64Id, number(1, 8) + number(1ull << 40, 8) + number(3, 4)));
    Zip64Values values(parsed.field);
    EXPECT_EQ(values.wide(5), 5u);  // no mark: not in the record
    EXPECT_EQ(values.wide(zip::mark32), 1u);
    EXPECT_EQ(values.disk(0), 0u);
    EXPECT_EQ(values.wide(zip::mark32), 1ull << 40);
    EXPECT_EQ(values.disk(zip::mark16), 3u);
    EXPECT_FALSE(values.tooShort());
    EXPECT_EQ(values.disk(zip::mark16), 0u);
    EXPECT_TRUE(values.tooShort());
}

TEST(Zip64Values, knowARecordThatIsTooShort) {
    for (const std::size_t size : {0u, 7u}) {
        const Parsed parsed(extraRecord(zip64Id, std::string(size, 'x')));
        Zip64Values values(parsed.field);
        EXPECT_EQ(values.wide(zip::mark32), 0u);
        EXPECT_TRUE(values.tooShort());
    }
}

TEST(Zip64Values, withoutARecordAMarkIsAValue) {
    const Parsed parsed("");
    Zip64Values values(parsed.field);
    EXPECT_EQ(values.wide(zip::mark32), zip::mark32);
    EXPECT_EQ(values.disk(zip::mark16), zip::mark16);
    EXPECT_FALSE(values.tooShort());
}

}  // namespace
