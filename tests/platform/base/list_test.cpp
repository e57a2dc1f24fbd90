#include "platform/base/list.h"

#include <gtest/gtest.h>

#include <limits>

#include "platform/base/failure.h"

namespace {

class List : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(zArrayList_Construct(list.out(), zItemType_String, 0, nullptr), zStatus_Success);
    }

    Ta::Object<zHandle> list;
};

TEST_F(List, isEmptyAtBirth) {
    EXPECT_EQ(zArrayList_Count(list.get()), 0u);
    EXPECT_EQ(zArrayList_String(list.get(), 0), nullptr);
}

TEST_F(List, keepsCopiesInOrder) {
    char text[] = "first";
    EXPECT_EQ(zArrayList_AddString(list.get(), text), zStatus_Success);
    text[0] = 'X';
    EXPECT_EQ(zArrayList_AddString(list.get(), ""), zStatus_Success);
    EXPECT_EQ(zArrayList_Count(list.get()), 2u);
    EXPECT_STREQ(zArrayList_String(list.get(), 0), "first");
    EXPECT_STREQ(zArrayList_String(list.get(), 1), "");
    EXPECT_EQ(zArrayList_String(list.get(), 2), nullptr);
}

TEST_F(List, grows) {
    for (int i = 0; i < 10'000; ++i) {
        ASSERT_EQ(zArrayList_AddString(list.get(), std::to_string(i).c_str()), zStatus_Success);
    }
    EXPECT_EQ(zArrayList_Count(list.get()), 10'000u);
    EXPECT_STREQ(zArrayList_String(list.get(), 9'999), "9999");
}

TEST_F(List, isCalledSoInTheLeakReport) {
    EXPECT_STREQ(static_cast<zObject*>(list.get())->kind(), "string list");
}

TEST(ListHandle, thatIsNoneIsAnEmptyList) {
    EXPECT_EQ(zArrayList_Count(nullptr), 0u);
    EXPECT_EQ(zArrayList_String(nullptr, 0), nullptr);
    EXPECT_EQ(zArrayList_AddString(nullptr, "x"), zStatus_BadArgument);
    EXPECT_EQ(failure::detailOf(zStatus_BadArgument), "the handle is that of no string list");
}

TEST(ListConstruct, refusesWhatItCannotMake) {
    int something = 0;
    zHandle list = &something;
    EXPECT_EQ(zArrayList_Construct(&list, static_cast<zItemType>(1), 0, nullptr), zStatus_Unsupported);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(zArrayList_Construct(&list, zItemType_String, std::numeric_limits<std::size_t>::max(), nullptr),
              zStatus_NoMemory);
    EXPECT_EQ(list, nullptr);
}

}  // namespace
