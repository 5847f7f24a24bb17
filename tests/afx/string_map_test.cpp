#include <afx.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "afx/raises.h"

namespace {

constexpr const char* kKeys[] = {"Provider", "Data Source", "User ID",   "Password", "a",
                                 "r",        "b",           "DBMS Name", "库存",     "Current Catalog"};

std::vector<std::string> Walk(const CMapStringToString& map) {
    std::vector<std::string> keys;
    CString key;
    CString value;
    for (POSITION at = map.GetStartPosition(); at != nullptr;) {
        map.GetNextAssoc(at, key, value);
        keys.emplace_back(key);
    }
    return keys;
}

using Keys = std::vector<std::string>;

TEST(StringMap, KeepsOneValueForAKey) {
    CMapStringToString map;
    EXPECT_TRUE(map.IsEmpty());
    map.SetAt("Provider", "MSDASQL");
    map["User"] = "sa";
    map["User"] += "!";
    map.SetAt("Provider", "SQLOLEDB");
    EXPECT_EQ(map.GetCount(), 2);
    EXPECT_EQ(map.GetSize(), 2);
    CString value("untouched");
    EXPECT_TRUE(map.Lookup("Provider", value));
    EXPECT_STREQ(value, "SQLOLEDB");
    EXPECT_TRUE(map.Lookup("User", value));
    EXPECT_STREQ(value, "sa!");
    EXPECT_FALSE(map.Lookup("provider", value)) << "case matters";
    EXPECT_STREQ(value, "sa!");
    EXPECT_STREQ(map["new"], "");
    EXPECT_EQ(map.GetCount(), 3);
    LPCTSTR key = nullptr;
    EXPECT_TRUE(map.LookupKey("User", key));
    EXPECT_STREQ(key, "User");
    EXPECT_FALSE(map.LookupKey("nobody", key));
}

TEST(StringMap, HashesByThirtyThreeAndByte) {
    const CMapStringToString map;
    EXPECT_EQ(map.HashKey(""), 0u);
    EXPECT_EQ(map.HashKey("a"), 97u);
    EXPECT_EQ(map.HashKey("ab"), 97u * 33 + 98);
    EXPECT_EQ(map.HashKey("Provider"), 662751275u);
    EXPECT_EQ(map.HashKey("库存"), 7116251u);
    EXPECT_EQ(map.HashKey(nullptr), 0u);
}

TEST(StringMap, IsWalkedByBucketTheLatestKeyFirst) {
    CMapStringToString map;
    EXPECT_EQ(map.GetHashTableSize(), 17u);
    EXPECT_EQ(map.GetStartPosition(), nullptr);
    for (const char* key : kKeys)
        map[key] = "";
    EXPECT_EQ(Walk(map), (Keys{"Current Catalog", "库存", "Provider", "Password", "Data Source", "User ID", "DBMS Name",
                               "r", "a", "b"}));
}

TEST(StringMap, IsWalkedByItsOwnNumberOfBuckets) {
    CMapStringToString map;
    map.InitHashTable(10);
    EXPECT_EQ(map.GetHashTableSize(), 10u);
    for (const char* key : kKeys)
        map[key] = "";
    EXPECT_EQ(Walk(map), (Keys{"Current Catalog", "库存", "DBMS Name", "Password", "r", "Provider", "a", "b", "User ID",
                               "Data Source"}));
    CMapStringToString chain;
    chain.InitHashTable(1, FALSE);
    for (const char* key : kKeys)
        chain[key] = "";
    EXPECT_EQ(Walk(chain), (Keys{"Current Catalog", "库存", "DBMS Name", "b", "r", "a", "Password", "User ID",
                                 "Data Source", "Provider"}));
}

TEST(StringMap, KeepsItsOrderWhenAKeyIsSetAgain) {
    CMapStringToString map;
    map["a"] = "1";
    map["r"] = "2";
    map["a"] = "3";
    EXPECT_EQ(Walk(map), (Keys{"r", "a"}));
}

TEST(StringMap, LosesKeys) {
    CMapStringToString map;
    for (const char* key : kKeys)
        map[key] = key;
    EXPECT_TRUE(map.RemoveKey("r"));
    EXPECT_FALSE(map.RemoveKey("r"));
    EXPECT_FALSE(map.RemoveKey("nobody"));
    EXPECT_EQ(map.GetCount(), 9);
    EXPECT_EQ(Walk(map), (Keys{"Current Catalog", "库存", "Provider", "Password", "Data Source", "User ID", "DBMS Name",
                               "a", "b"}));
    for (const char* key : kKeys)
        map.RemoveKey(key);
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(map.GetStartPosition(), nullptr);
    map["again"] = "x";
    EXPECT_EQ(Walk(map), Keys{"again"});
    map.RemoveAll();
    EXPECT_EQ(map.GetCount(), 0);
    EXPECT_FALSE(map.RemoveKey("again"));
}

TEST(StringMap, MayLoseTheEntryJustGivenOut) {
    CMapStringToString map;
    for (const char* key : kKeys)
        map[key] = "";
    CString key;
    CString value;
    int seen = 0;
    for (POSITION at = map.GetStartPosition(); at != nullptr; ++seen) {
        map.GetNextAssoc(at, key, value);
        EXPECT_TRUE(map.RemoveKey(key));
    }
    EXPECT_EQ(seen, 10);
    EXPECT_TRUE(map.IsEmpty());
}

TEST(StringMap, FilesItsEntriesAnewWhenTheBucketsChange) {
    CMapStringToString map;
    for (int i = 0; i < 500; ++i) {
        CString key;
        key.Format("key%d", i);
        map[key] = key;
    }
    map.InitHashTable(101);
    EXPECT_EQ(map.GetCount(), 500);
    EXPECT_EQ(Walk(map).size(), 500u);
    CString value;
    EXPECT_TRUE(map.Lookup("key499", value));
    EXPECT_STREQ(value, "key499");
}

TEST(StringMap, TakesPartsOfItselfAsValues) {
    CMapStringToString map;
    map["a"] = "value";
    map.SetAt("a", static_cast<LPCSTR>(map["a"]) + 2);
    EXPECT_STREQ(map["a"], "lue");
}

TEST(StringMap, RaisesForImpossibleUses) {
    CMapStringToString map;
    CString text;
    POSITION none = nullptr;
    EXPECT_EQ(Raised([&] { map.GetNextAssoc(none, text, text); }), "CInvalidArgException");
    EXPECT_EQ(Raised([&] { map.InitHashTable(0); }), "CInvalidArgException");
    map["a"] = "";
    POSITION begun = map.GetStartPosition();
    map.RemoveAll();
    EXPECT_EQ(Raised([&] { map.GetNextAssoc(begun, text, text); }), "CInvalidArgException");
}

}  // namespace
