// awkward_schema.h - a schema whose names are hard to handle: quotes, dots, blanks, wildcards, two cases, Chinese; and
// its rows, as a rowset of the library and as the server's own catalog tell them.
//
//   AwkwardSchema schema({.quote = '"', .prefix = "\"库\".", ...});
//   schema.Make(database);
//   EXPECT_EQ(RowsOf(database, database.GetFieldSet(nullptr, "库"), {"TABLE_NAME", "COLUMN_NAME"}),
//             RowsOf(database, "select table_name, column_name from information_schema.columns where ..."));
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tkkernel/driver.h"

namespace tk::test {

/// Each row's texts, without the blanks in front of numbers, in the order of the texts.
using Told = std::vector<std::vector<std::string>>;

inline void AddText(std::vector<std::string>& row, CString text) {
    text.TrimLeft();
    row.emplace_back(text);
}

/// @param rowset  taken over
inline Told RowsOf(CTDatabase& database, IDispatch* rowset, const std::vector<const char*>& columns) {
    const COleDispatchDriver owner(rowset);
    CTRecordset rows(&database);
    if (rowset == nullptr || !rows.OpenField(rowset)) return {{"failed", std::string(database.GetLastErrorString())}};
    Told told;
    for (; !rows.GetEof(); rows.MoveNext()) {
        std::vector<std::string>& row = told.emplace_back();
        for (const char* column : columns)
            AddText(row, rows.GetStringValue(column));
    }
    std::ranges::sort(told);
    return told;
}

inline Told RowsOf(CTDatabase& database, const std::string& sql) {
    CTRecordset rows(&database);
    if (!rows.OpenSQL(sql.c_str(), 1)) return {{"failed", std::string(rows.GetLastErrorString())}};
    const long columns = rows.GetFieldCount();
    Told told;
    for (; !rows.GetEof(); rows.MoveNext()) {
        std::vector<std::string>& row = told.emplace_back();
        for (long i = 0; i < columns; ++i)
            AddText(row, rows.GetStringValue(i));
    }
    std::ranges::sort(told);
    return told;
}

/// Those whose first text is a name.
inline Told Of(const std::string& name, Told told) {
    std::erase_if(told, [&](const std::vector<std::string>& row) { return row.front() != name; });
    return told;
}

class AwkwardSchema {
public:
    struct Spelling {
        char quote;
        std::string prefix;        // in front of a name: its schema, quoted, with the dot
        std::string stamp;         // a type
        std::string function;      // what stands behind "create function NAME()"
        std::string procedureEnd;  // what stands behind "create procedure NAME()"
    };

    explicit AwkwardSchema(Spelling spelling) : spelling_(std::move(spelling)) {}

    static const std::vector<std::string>& Tables() {
        static const std::vector<std::string> names = {
            "plain",       "Mixed Case",  "mixed case", "with.dot",  "qu\"ote",    "it's", "back`tick", "per%cent",
            "under_score", "underXscore", "%",          "[bracket]", "semi;colon", "订单", "单％价 ａ",
        };
        return names;
    }

    /// Tables with keys, each of which refers to the one before it; with indexes, a view, a function and a procedure.
    void Make(CTDatabase& database) const {
        std::string before;
        int number = 0;
        for (const std::string& table : Tables()) {
            const std::string name = In(table);
            std::string create = "create table " + name + " (" + Quoted("Id") + " integer not null, " +
                                 Quoted("名 称") + " varchar(20) default '无' not null, " + Quoted("a%b_c") +
                                 " numeric(10,2), " + Quoted("q\"u'o.te") + " " + spelling_.stamp + ", " +
                                 Quoted("lower") + " char(4) default 'x', " + Quoted("UPPER") +
                                 " varchar(30), small smallint not null, real_ double precision, constraint " +
                                 Quoted("PK " + table) + " primary key (" + Quoted("名 称") + ", " + Quoted("Id") + ")";
            if (!before.empty()) {
                // Names of keys that differ by their case are the same to some systems.
                const std::string foreignKey = "FK" + std::to_string(number++) + "." + table;
                const bool isOdd = table.size() % 2 == 1;
                create += ", constraint " + Quoted(foreignKey) + " foreign key (" + Quoted("名 称") + ", " +
                          Quoted("Id") + ") references " + In(before) + " (" + Quoted("名 称") + ", " + Quoted("Id") +
                          ")" + (isOdd ? " on delete cascade on update cascade" : "");
            }
            Run(database, create + ")");
            Run(database, "create index " + Quoted("IX " + table) + " on " + name + " (" + Quoted("q\"u'o.te") + ", " +
                              Quoted("lower") + ")");
            Run(database,
                "create unique index " + Quoted("UX%" + table) + " on " + name + " (" + Quoted("UPPER") + ")");
            Run(database, "create view " + In("V " + table) + " as select " + Quoted("Id") + " from " + name);
            // So are those of functions and procedures.
            if (table != "mixed case") {
                Run(database, "create function " + In("F " + table) + "() " + spelling_.function);
                Run(database, "create procedure " + In("P " + table) + "() " + spelling_.procedureEnd);
            }
            before = table;
        }
    }

private:
    static void Run(CTDatabase& database, const std::string& statement) {
        ASSERT_EQ(database.ExecuteSQL(statement.c_str()), 1) << statement << "\n" << database.GetLastErrorString();
    }
    std::string Quoted(const std::string& name) const {
        std::string quoted(1, spelling_.quote);
        for (const char c : name)
            quoted.append(c == spelling_.quote ? 2 : 1, c);
        return quoted + spelling_.quote;
    }
    std::string In(const std::string& name) const { return spelling_.prefix + Quoted(name); }

    Spelling spelling_;
};

}  // namespace tk::test
