#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tkkernel/util.h"
#include "util/lists.h"
#include "util/slow_reference.h"

namespace {

using namespace tk::test;
using Pairs = std::map<std::string, std::string>;

Pairs ToPairs(const CMapStringToString& map) {
    Pairs pairs;
    CString key;
    CString value;
    for (POSITION position = map.GetStartPosition(); position != nullptr;) {
        map.GetNextAssoc(position, key, value);
        pairs[Std(key)] = Std(value);
    }
    return pairs;
}

TEST(StringToMap, SplitsItemsAtTheFirstEqualsSign) {
    const struct {
        const char* label;
        const char* text;
        Pairs pairs;
    } kRows[] = {
        {"two pairs", "a=1;b=2", {{"a", "1"}, {"b", "2"}}},
        {"a later value wins", "a=1;b=2;a=3", {{"a", "3"}, {"b", "2"}}},
        {"items without a sign are passed over", "a=1;b;c=3", {{"a", "1"}, {"c", "3"}}},
        {"the rest belongs to the value", "a=1=2", {{"a", "1=2"}}},
        {"empty value", "a=", {{"a", ""}}},
        {"empty key", "=1", {{"", "1"}}},
        {"sign alone", "=", {{"", ""}}},
        {"nothing is trimmed", " a = 1 ", {{" a ", " 1 "}}},
        {"keys know case", "A=1;a=2", {{"A", "1"}, {"a", "2"}}},
        {"semicolon at the end", "a=1;", {{"a", "1"}}},
        {"empty items", ";;a=1;;", {{"a", "1"}}},
        {"Chinese", "驱动=库;数据=存", {{"驱动", "库"}, {"数据", "存"}}},
        {"empty", "", {}},
        {"null", nullptr, {}},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        CMapStringToString map;
        StringToMap(map, row.text);
        EXPECT_EQ(ToPairs(map), row.pairs);
    }
}

TEST(StringToMap, AddsToWhatTheMapHas) {
    CMapStringToString map;
    map["old"] = "0";
    map["a"] = "0";
    StringToMap(map, "a=1;b=2");
    EXPECT_EQ(ToPairs(map), (Pairs{{"old", "0"}, {"a", "1"}, {"b", "2"}}));
}

TEST(StringToMap, ReadsATextThatLiesInTheMapItself) {
    CMapStringToString map;
    map["a"] = "a=a long value that does not fit into the object itself;b=2";
    StringToMap(map, map["a"]);
    EXPECT_EQ(ToPairs(map), (Pairs{{"a", "a long value that does not fit into the object itself"}, {"b", "2"}}));
}

TEST(MapToString, WritesTheMapsOwnOrder) {
    CMapStringToString map;
    EXPECT_STREQ(MapToString(map), "");
    map["key"] = "value";
    EXPECT_STREQ(MapToString(map), "key=value");
    map[""] = "";
    map["other"] = "";

    std::string expected;
    CString key;
    CString value;
    for (POSITION position = map.GetStartPosition(); position != nullptr;) {
        map.GetNextAssoc(position, key, value);
        expected += (expected.empty() ? "" : ";") + Std(key) + "=" + Std(value);
    }
    EXPECT_EQ(Std(MapToString(map)), expected);
    EXPECT_EQ(map.GetCount(), 3);
}

TEST(MapToString, IsReadBackByStringToMap) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 2000; ++i) {
        Pairs pairs;
        for (int count = random.Below(40); count > 0; --count) {
            pairs[random.TextOf("abcdefgh ", 6)] = random.TextOf("xyz= ", 30);
        }
        CMapStringToString map;
        for (const auto& [key, value] : pairs)
            map[key.c_str()] = value.c_str();
        CMapStringToString again;
        StringToMap(again, MapToString(map));
        ASSERT_EQ(ToPairs(again), pairs);
    }
}

}  // namespace
