#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tkkernel/util.h"
#include "util/lists.h"
#include "util/slow_reference.h"

namespace {

using namespace tk::test;
using testing::ElementsAre;

TEST(StringInArray, ComparesWholeElementsWithTheirCase) {
    CStringArray array;
    Assign(array, {"id", "Name", "", "库存", "Name"});
    const struct {
        const char* text;
        int position;
    } kRows[] = {
        {"id", 0},    {"Name", 1}, {"", 2},       {nullptr, 2}, {"库存", 3},
        {"name", -1}, {"Nam", -1}, {"Names", -1}, {"库", -1},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text == nullptr ? "null" : row.text);
        EXPECT_EQ(StringInArrayPos(array, row.text), row.position);
        EXPECT_EQ(StringInArray(array, row.text), row.position >= 0 ? 1 : 0);
    }
    EXPECT_EQ(StringInArray(CStringArray(), ""), 0);
    EXPECT_EQ(StringInArrayPos(CStringArray(), "a"), -1);
}

TEST(DWordInArray, FindsNumbers) {
    CDWordArray array;
    EXPECT_EQ(DWordInArray(array, 0), 0);
    array.Add(7);
    array.Add(0xFFFFFFFF);
    EXPECT_EQ(DWordInArray(array, 7), 1);
    EXPECT_EQ(DWordInArray(array, 0xFFFFFFFF), 1);
    EXPECT_EQ(DWordInArray(array, 0), 0);
}

TEST(SortArray, SortsByTheBytesOfTheTexts) {
    CStringArray array;
    Assign(array, {"b", "B", "库", "a", "", "10", "9", "啊", "ab", "a"});
    SortArray(array);
    EXPECT_THAT(ToTexts(array), ElementsAre("", "10", "9", "B", "a", "a", "ab", "b", "啊", "库"));
}

TEST(SortArray, LeavesShortListsAlone) {
    CStringArray array;
    SortArray(array);
    EXPECT_EQ(array.GetSize(), 0);
    array.Add("one");
    SortArray(array);
    EXPECT_THAT(ToTexts(array), ElementsAre("one"));
}

TEST(SortArray, AgreesWithAnExchangeSort) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int round = 0; round < 200; ++round) {
        Texts texts;
        for (int count = random.Below(60); count > 0; --count)
            texts.push_back(random.TextOf("aB1\xB0\xA1\xFE", 24));
        CStringArray array;
        Assign(array, texts);
        SortArray(array);
        for (std::size_t i = 0; i < texts.size();) {  // step forward in order, swap and step back otherwise
            if (i == 0 || texts[i - 1] <= texts[i]) {
                ++i;
            } else {
                std::swap(texts[i - 1], texts[i]);
                --i;
            }
        }
        ASSERT_EQ(ToTexts(array), texts);
    }
}

}  // namespace
