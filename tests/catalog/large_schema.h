// large_schema.h - a schema of real size: 500 tables, 10,000 columns, 2,000 indexes, generated; and what the listing
// members must tell of it.
//
//   LargeSchema::Make(database, LargeSchema::System::Sqlite);
//   LargeSchema::ExpectListed(database);
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "catalog/listed_names.h"
#include "tkkernel/driver.h"

namespace tk::test {

class LargeSchema {
public:
    enum class System { Sqlite, Postgres, MariaDb };

    static constexpr int kTables = 500;
    static constexpr int kColumns = 20;
    static constexpr int kIndexes = 4;

    static std::string Table(int table) { return Numbered(KindOf(table % 10), table); }
    static std::string Column(int column) { return column == 0 ? "id" : Numbered(KindOf(column % 5), column); }
    static std::string Index(int table, int index) {
        return "ix_" + std::to_string(table) + "_" + std::to_string(index);
    }

    /// The columns of the key, as the members join them: of every fourth table two, the later column first.
    static std::string Key(int table) { return table % 4 == 0 ? Column(2) + ",id" : "id"; }

    static void Make(CTDatabase& database, System system) {
        // Many statements a text, where the system takes them so; in one transaction.
        const std::size_t most = system == System::Sqlite ? 1 : 50;
        std::string text;
        std::size_t count = 0;
        const auto send = [&] {
            if (count != 0) {
                ASSERT_EQ(database.ExecuteSQL(text.c_str()), 1) << database.GetLastErrorString();
            }
            text.clear();
            count = 0;
        };
        database.BeginTrans();
        for (int table = 0; table < kTables; ++table) {
            for (const std::string& statement : Statements(table, system)) {
                text += (count == 0 ? "" : ";") + statement;
                if (++count == most) send();
            }
        }
        send();
        database.CommitTrans();
    }

    /// The lists of tables, columns, keys and indexes, table by table.
    static void ExpectListed(CTDatabase& database) {
        std::vector<std::string> tables = Names([&](CStringArray& ar) { return database.GetAllTables(ar); });
        std::vector<std::string> wanted = AllTables();
        std::ranges::sort(tables);
        std::ranges::sort(wanted);
        ASSERT_EQ(tables, wanted);
        const std::vector<std::string> columns = AllColumns();
        int indexes = 0;
        for (int table = 0; table < kTables; ++table) {
            const std::string name = Table(table);
            CStringArray found;
            ASSERT_EQ(database.GetAllFields(name.c_str(), found), kColumns) << name;
            for (int i = 0; i < kColumns; ++i)
                ASSERT_EQ(std::string(found[i]), columns[static_cast<std::size_t>(i)]) << name;
            const std::vector<std::string> names =
                Names([&](CStringArray& ar) { return database.GetIndexNames(name.c_str(), ar, nullptr); });
            ASSERT_THAT(names, ::testing::UnorderedElementsAreArray(IndexesOf(table))) << name;
            indexes += static_cast<int>(names.size());
            if (table % 25 != 0 && table % 25 != 13) continue;
            ASSERT_EQ(std::string(database.GetPrimaryKey(name.c_str())), Key(table)) << name;
        }
        EXPECT_EQ(indexes, kTables * kIndexes);
        EXPECT_EQ(database.IsTableExist(Table(kTables - 1).c_str()), 1);
        EXPECT_EQ(database.IsTableExist("table_000_"), 0);
    }

    /// The columns of all tables in one rowset: as many, each where it belongs.
    static void ExpectColumnsOfAll(CTDatabase& database, const char* schema) {
        const std::vector<std::string> lines = WholeRowset(database, schema);
        ASSERT_EQ(lines.size(), static_cast<std::size_t>(kTables * kColumns));
        std::vector<std::string> wanted;
        for (const std::string& table : AllTables()) {
            int ordinal = 0;
            for (const std::string& column : AllColumns())
                wanted.push_back(table + "." + column + " " + std::to_string(++ordinal));
        }
        std::vector<std::string> sorted = lines;
        std::ranges::sort(sorted);
        std::ranges::sort(wanted);
        EXPECT_EQ(sorted, wanted);
    }

    /// What a query tells, which gives table, column and ordinal: the same as the rowset.
    static void ExpectAsToldBy(CTDatabase& database, const char* schema, const char* query) {
        std::vector<std::string> told;
        CTRecordset rows(&database);
        ASSERT_EQ(rows.OpenSQL(query, 1), 1) << rows.GetLastErrorString();
        for (; !rows.GetEof(); rows.MoveNext())
            told.push_back(Line(rows.GetStringValue(0L), rows.GetStringValue(1L), rows.GetStringValue(2L)));
        std::vector<std::string> lines = WholeRowset(database, schema);
        std::ranges::sort(told);
        std::ranges::sort(lines);
        EXPECT_EQ(lines, told);
    }

private:
    static const char* KindOf(int number) {
        return number == 3 ? "订单_%03d" : number == 4 ? "Order Line %03d" : "name_%03d";
    }
    static std::string Numbered(const char* format, int number) {
        char text[64];
        std::snprintf(text, sizeof text, format, number);
        return text;
    }
    static std::string Quoted(const std::string& name, System system) {
        const char* quote = system == System::MariaDb ? "`" : "\"";
        return quote + name + quote;
    }
    static std::vector<std::string> Statements(int table, System system) {
        const auto quoted = [&](const std::string& name) { return Quoted(name, system); };
        static const char* const kTypes[] = {"integer", "varchar(40)", "decimal(12,2)", "smallint", "char(8)"};
        std::string create = "create table " + quoted(Table(table)) + " (";
        for (int column = 0; column < kColumns; ++column) {
            create += quoted(Column(column)) + " " + kTypes[column % 5];
            create += column == 0 || column == 2 ? " not null, " : column % 6 == 0 ? " default 1, " : ", ";
        }
        create += "primary key (" + (table % 4 == 0 ? quoted(Column(2)) + ", " : "") + quoted("id") + ")";
        std::vector<std::string> statements;
        for (int index = 0; index < kIndexes; ++index) {
            const std::string columns = " (" + quoted(Column(index + 3)) + ", " + quoted("id") + ")";
            if (system == System::MariaDb) {
                create += ", key " + quoted(Index(table, index)) + columns;
            } else {
                statements.push_back("create index " + quoted(Index(table, index)) + " on " + quoted(Table(table)) +
                                     columns);
            }
        }
        // In memory: a file for each table takes longer than all of the listing.
        statements.insert(statements.begin(), create + (system == System::MariaDb ? ") engine=memory" : ")"));
        return statements;
    }
    static std::vector<std::string> AllTables() {
        std::vector<std::string> names;
        for (int table = 0; table < kTables; ++table)
            names.push_back(Table(table));
        return names;
    }
    static std::vector<std::string> AllColumns() {
        std::vector<std::string> names;
        for (int column = 0; column < kColumns; ++column)
            names.push_back(Column(column));
        return names;
    }
    static std::vector<std::string> IndexesOf(int table) {
        std::vector<std::string> names;
        for (int index = 0; index < kIndexes; ++index)
            names.push_back(Index(table, index));
        return names;
    }
    static std::string Line(const CString& table, const CString& column, const CString& ordinal) {
        CString number(ordinal);
        number.TrimLeft();
        return std::string(table) + "." + std::string(column) + " " + std::string(number);
    }
    static std::vector<std::string> WholeRowset(CTDatabase& database, const char* schema) {
        std::vector<std::string> lines;
        CTRecordset rows(&database);
        const COleDispatchDriver rowset(database.GetFieldSet(nullptr, schema));
        EXPECT_EQ(rows.OpenField(rowset.m_lpDispatch), 1) << rows.GetLastErrorString();
        for (; !rows.GetEof(); rows.MoveNext()) {
            lines.push_back(Line(rows.GetStringValue("TABLE_NAME"), rows.GetStringValue("COLUMN_NAME"),
                                 rows.GetStringValue("ORDINAL_POSITION")));
        }
        return lines;
    }
};

}  // namespace tk::test
