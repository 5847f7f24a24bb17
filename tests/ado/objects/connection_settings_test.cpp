// What a connection takes from its string, from its properties, and from its members.
#include <gtest/gtest.h>

#include "database_test.h"

namespace tk::ado::test {
namespace {

class ConnectionSettingsTest : public DatabaseTest {
protected:
    static Object PropertyOf(const Object& object, std::u16string_view name) {
        return object.Get(connection::kProperties).Result().Get(collection::kItem, {Text(name)}).Result();
    }
    static std::string Property(const Object& object, std::u16string_view name) {
        const Object property = PropertyOf(object, name);
        return property ? property.Get(0).Utf8() : "nothing";
    }
    static unsigned Insert(const Object& on) {
        return on
            .Call(connection::kExecute, {Text(u"insert into goods (name) values ('pear')"), Omitted(), Number(129)})
            .Error();
    }
};

TEST_F(ConnectionSettingsTest, TakesTheModeFromWhereverItIsSaid) {
    CreateGoods(Connect());
    const struct {
        const char* label;
        const char16_t* inString;
        LONG asProperty;
        LONG asMember;
        LONG mode;
        bool isReadOnly;
    } kRows[] = {
        {"nowhere", u"", -1, -1, 0, false},
        {"number in the string", u";Mode=1", -1, -1, 1, true},
        {"word in the string", u";Mode=Read", -1, -1, 1, true},
        {"words in any case", u";Mode=share deny none | READ", -1, -1, 0x11, true},
        {"both in the string", u";Mode=ReadWrite", -1, -1, 3, false},
        {"no such word", u";Mode=Sometimes", -1, -1, 0, false},
        {"inside Extended Properties", u";Extended Properties=\"Mode=Read\"", -1, -1, 1, true},
        {"property", u"", 1, -1, 1, true},
        {"member", u"", -1, 1, 1, true},
        {"member with a share", u"", -1, 9, 9, true},
        {"member that writes", u"", -1, 3, 3, false},
        {"the string before the member", u";Mode=ReadWrite", -1, 1, 3, false},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const Object opened = Object::Create(kConnectionClass);
        EXPECT_TRUE(opened.Put(connection::kConnectionString, Text(ConnectionText(row.inString))).Ok());
        if (row.asProperty >= 0) {
            EXPECT_TRUE(PropertyOf(opened, u"Mode").Put(0, Number(row.asProperty)).Ok());
        }
        if (row.asMember >= 0) {
            EXPECT_TRUE(opened.Put(connection::kMode, Number(row.asMember)).Ok());
        }
        EXPECT_EQ(opened.Get(connection::kMode).Long(), row.mode);
        const Outcome outcome = opened.Call(connection::kOpen);
        ASSERT_TRUE(outcome.Ok()) << outcome;
        EXPECT_EQ(opened.Get(connection::kMode).Long(), row.mode);
        EXPECT_EQ(Property(opened, u"Mode"), std::to_string(row.mode));
        EXPECT_EQ(Insert(opened) != 0, row.isReadOnly);
        EXPECT_NE(Ask(opened, u"select count(*) from goods"), "0");
    }
}

TEST_F(ConnectionSettingsTest, WritesAgainOnceItIsOpenedForWriting) {
    CreateGoods(Connect());
    const Object opened = Object::Create(kConnectionClass);
    opened.Put(connection::kMode, Number(1));
    ASSERT_TRUE(opened.Call(connection::kOpen, {Text(ConnectionText())}).Ok());
    EXPECT_NE(Insert(opened), 0u);
    opened.Call(connection::kClose);
    opened.Put(connection::kMode, Number(0));
    ASSERT_TRUE(opened.Call(connection::kOpen).Ok());
    EXPECT_EQ(Insert(opened), 0u);
}

TEST_F(ConnectionSettingsTest, ReadsItsPropertiesFromInsideExtendedProperties) {
    const std::u16string inner =
        u"Driver=SQLite3;Database=:memory:;UID=bob;PWD=secret;DBMS Name=Oracle;Connect Timeout=7";
    const std::u16string text = u"Provider=MSDASQL;Extended Properties=\"" + inner + u"\"";
    const Object opened = Object::Create(kConnectionClass);
    opened.Put(connection::kConnectionString, Text(text));
    EXPECT_EQ(Property(opened, u"Extended Properties"), ToUtf8(inner));
    EXPECT_EQ(Property(opened, u"User ID"), "bob");
    EXPECT_EQ(Property(opened, u"Connect Timeout"), "7");
    const Outcome outcome = opened.Call(connection::kOpen);
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(Property(opened, u"DBMS Name"), "Oracle");
    EXPECT_EQ(Property(opened, u"User ID"), "bob");
    EXPECT_EQ(Property(opened, u"Connect Timeout"), "7");
}

TEST_F(ConnectionSettingsTest, WhatTheStringSaysItselfCountsMoreThanExtendedProperties) {
    const Object opened = Object::Create(kConnectionClass);
    const Outcome outcome = opened.Call(
        connection::kOpen, {Text(u"DBMS Name=Mine;User ID=ann;Connect Timeout=9;Extended Properties="
                                 u"\"Driver=SQLite3;Database=:memory:;UID=bob;DBMS Name=Oracle;Connect Timeout=7\"")});
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(Property(opened, u"DBMS Name"), "Mine");
    EXPECT_EQ(Property(opened, u"User ID"), "ann");
    EXPECT_EQ(Property(opened, u"Connect Timeout"), "9");
}

TEST_F(ConnectionSettingsTest, ShowsNoPasswordOnceItIsOpen) {
    const std::u16string inner = u"Driver=SQLite3;Database=:memory:;UID=bob;PWD=secret";
    const struct {
        const char* label;
        const char16_t* more;
        bool isShown;
    } kRows[] = {{"by default", u"", false},
                 {"not wanted", u";Persist Security Info=False", false},
                 {"wanted", u";Persist Security Info=True", true}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const Object opened = Object::Create(kConnectionClass);
        const Outcome outcome = opened.Call(
            connection::kOpen, {Text(u"Provider=MSDASQL;Extended Properties=\"" + inner + u"\"" + row.more)});
        ASSERT_TRUE(outcome.Ok()) << outcome;
        const std::string shown = Property(opened, u"Extended Properties");
        EXPECT_EQ(shown.find("secret") != std::string::npos, row.isShown) << shown;
        EXPECT_NE(shown.find("UID=bob"), std::string::npos) << shown;
        EXPECT_EQ(opened.Get(connection::kConnectionString).Utf8().find("secret") != std::string::npos, row.isShown);
    }
}

}  // namespace
}  // namespace tk::ado::test
