// odd_circumstances.h - what the members tell of tables that go, of names that are too long and of connections that are
// no more: the same on every system.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tkkernel/driver.h"

namespace tk::test {

/// The table "passing" is listed by one connection and dropped by another before it is asked for.
inline void ExpectNothingOfATableThatIsGone(CTDatabase& database, CTDatabase& other) {
    ASSERT_EQ(other.ExecuteSQL("create table passing (id integer not null primary key, n integer)"), 1)
        << other.GetLastErrorString();
    ASSERT_EQ(other.ExecuteSQL("create index ix_passing on passing (n)"), 1);
    CStringArray names;
    ASSERT_EQ(database.GetAllTables(names), 1);
    EXPECT_EQ(database.IsTableExist("passing"), 1);
    EXPECT_STREQ(database.GetPrimaryKey("passing"), "id");
    CTRecordset columns(&database);
    COleDispatchDriver rowset(database.GetFieldSet("passing", nullptr));
    ASSERT_EQ(columns.OpenField(rowset.m_lpDispatch), 1);

    ASSERT_EQ(other.ExecuteSQL("drop table passing"), 1) << other.GetLastErrorString();
    EXPECT_EQ(columns.GetRecordCount(), 2) << "what was opened stays";
    _tagFIELDINFO field = {};
    EXPECT_EQ(columns.GetFieldInfo("n", &field), 1);
    EXPECT_EQ(database.IsTableExist("passing"), 0);
    EXPECT_STREQ(database.GetTableStruct("passing"), "CREATE TABLE \"PASSING\" ( )");
    CTArray<_tagFIELDINFO, _tagFIELDINFO&> fields;
    EXPECT_EQ(database.GetTableStruct("passing", fields), 1);
    EXPECT_EQ(fields.GetSize(), 0);
    EXPECT_STREQ(database.GetPrimaryKey("passing"), "");
    EXPECT_STREQ(database.GetPrimaryKeyName("passing"), "");
    CStringArray none;
    EXPECT_EQ(database.GetIndexNames("passing", none, nullptr), 1);
    EXPECT_EQ(database.GetIndexesContext("passing", none), 1);
    EXPECT_EQ(database.GetForeignKeyNames("passing", none), 1);
    EXPECT_EQ(database.GetAllFields("passing", none), 0);
    EXPECT_EQ(none.GetSize(), 0);
    EXPECT_STREQ(database.GetAllIndexName("passing"), "");
    EXPECT_EQ(database.IsFieldNull("passing", "id"), 0);
    EXPECT_EQ(database.GetRecordCount("passing"), -1);
    EXPECT_EQ(database.Delete("passing", ""), 0);
    EXPECT_THAT(std::string(database.GetLastErrorString()), ::testing::HasSubstr("passing"));
}

/// A table and a column of `characters` Chinese characters each, in the key.
inline void ExpectLongNamesAreCutInRecordsAlone(CTDatabase& database, int characters, const char* quote) {
    std::string table = "表";
    std::string column = "c";  // every cut would be in the middle of a character
    while (static_cast<int>(table.size()) < 2 * characters)
        table += "名";
    while (static_cast<int>(column.size()) < 2 * characters - 1)
        column += "列";
    const std::string create = "create table " + (quote + table) + quote + " (" + quote + column + quote +
                               " integer not null, other integer, primary key (" + quote + column + quote + "))";
    ASSERT_EQ(database.ExecuteSQL(create.c_str()), 1) << database.GetLastErrorString();
    CTArray<_tagFIELDINFO, _tagFIELDINFO&> fields;
    ASSERT_EQ(database.GetTableStruct(table.c_str(), fields), 1) << database.GetLastErrorString();
    ASSERT_EQ(fields.GetSize(), 2);
    EXPECT_EQ(std::string(fields[0].szName), column.substr(0, 63));
    EXPECT_EQ(std::string(fields[0].szTable), table.substr(0, 62));
    EXPECT_EQ(fields[0].nPrimaryKey, 1);
    EXPECT_EQ(fields[1].nPrimaryKey, 0);
    column[0] = 'C';
    EXPECT_THAT(std::string(database.GetTableStruct(table.c_str())),
                ::testing::AllOf(::testing::StartsWith("CREATE TABLE \"" + table + "\" (\r\n\t\"" + column + "\"\t"),
                                 ::testing::HasSubstr("PRIMARY KEY (\"" + column + "\"))")));
    EXPECT_EQ(database.IsTableExist(table.c_str()), 1);
    EXPECT_EQ(database.IsTableExist(table.substr(0, 62).c_str()), 0);
    EXPECT_EQ(database.DropTable(table.c_str()), quote[0] == '"' ? 1 : 0) << "names stand between double quotes";
}

/// @param database  was open
inline void ExpectNothingOfAClosedConnection(CTDatabase& database) {
    const CString before = database.GetLastErrorString();
    CStringArray names;
    static constexpr struct {
        const char* label;
        int (*ask)(CTDatabase& database, CStringArray& names);
    } kQuestions[] = {
        {"columns", [](CTDatabase& d, CStringArray& a) { return d.GetAllFields("t", a); }},
        {"procedures", [](CTDatabase& d, CStringArray& a) { return d.GetAllProcedures(a); }},
        {"types", [](CTDatabase& d, CStringArray& a) { return d.GetTypeNames(a); }},
        {"databases", [](CTDatabase& d, CStringArray& a) { return d.GetAllDatabases(a); }},
        {"schemata", [](CTDatabase& d, CStringArray& a) { return d.GetSchemas(a); }},
        {"schemata and the user", [](CTDatabase& d, CStringArray& a) { return d.GetAllSchemas(a); }},
        {"foreign keys", [](CTDatabase& d, CStringArray& a) { return d.GetForeignKeyNames("t", a); }},
        {"indexes", [](CTDatabase& d, CStringArray& a) { return d.GetIndexNames("t", a, nullptr); }},
        {"a table", [](CTDatabase& d, CStringArray&) { return d.IsTableExist("t"); }},
        {"a column", [](CTDatabase& d, CStringArray&) { return d.IsFieldNull("t", "id"); }},
        {"a key", [](CTDatabase& d, CStringArray&) { return d.GetPrimaryKey("t").GetLength(); }},
        {"a key's name", [](CTDatabase& d, CStringArray&) { return d.GetPrimaryKeyName("t").GetLength(); }},
    };
    for (const auto& question : kQuestions) {
        SCOPED_TRACE(question.label);
        EXPECT_EQ(question.ask(database, names), 0);
        EXPECT_EQ(names.GetSize(), 0);
        EXPECT_STREQ(database.GetLastErrorString(), before);
    }
    EXPECT_EQ(database.GetAllTables(names), 0);
    EXPECT_THAT(std::string(database.GetLastErrorString()), ::testing::StartsWith("筛选数据对象出错\r\n"));
    EXPECT_EQ(database.GetAllIndexes(names), 0);
    EXPECT_STREQ(database.GetTableStruct("t"), "");
    EXPECT_STREQ(database.GetLastErrorString(), "数据库没有打开或打开失败,系统没有合法调用Open方法！");
    EXPECT_EQ(database.DropTable("t"), 0);
}

}  // namespace tk::test
