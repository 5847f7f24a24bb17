#include "ado/odbc/procedure_name.h"

#include <gtest/gtest.h>

namespace tk::ado {
namespace {

TEST(ReadProcedureName, TakesTheLastPartInAnyQuotes) {
    static const struct {
        const char* label;
        const char* text;
        const char* schema;
        const char* name;
        bool isQuoted;
        std::size_t length;
    } kRows[] = {
        {"bare", "add_stock", "", "add_stock", false, 9},
        {"with arguments", "add_stock(1, 2)", "", "add_stock", false, 9},
        {"behind a schema", "shop.add_stock", "shop", "add_stock", false, 14},
        {"behind two", "db.shop.add_stock", "shop", "add_stock", false, 17},
        {"in double quotes", "\"add stock\"", "", "add stock", true, 11},
        {"a quote inside", "\"add \"\"it\"\"\"", "", "add \"it\"", true, 12},
        {"a point inside", "\"a.b\"(?)", "", "a.b", true, 5},
        {"in accents", "`add stock`", "", "add stock", true, 11},
        {"in brackets", "[add]]stock]", "", "add]stock", true, 12},
        {"never closed", "\"add", "", "add", true, 4},
        {"nothing", "", "", "", false, 0},
        {"a point at the end", "shop.", "shop", "", false, 5},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const ProcedureName read = ReadProcedureName(row.text);
        EXPECT_EQ(read.schema, row.schema);
        EXPECT_EQ(read.name, row.name);
        EXPECT_EQ(read.isQuoted, row.isQuoted);
        EXPECT_EQ(read.length, row.length);
    }
}

TEST(ReadCalledName, KnowsACallByItsFirstWord) {
    static const struct {
        const char* label;
        const char* sql;
        const char* name;
    } kRows[] = {
        {"escape", "{call divide(?, ?)}", "divide"},
        {"escape without arguments", "{call divide}", "divide"},
        {"escape with blanks", "{ call divide }", "divide"},
        {"return value", "{? = call divide(?)}", "divide"},
        {"return value, close together", "{?=call divide(?)}", "divide"},
        {"blanks and capitals", " { CALL\tshop.divide (?) }", "divide"},
        {"a statement", "CALL `two words`(?)", "two words"},
        {"quoted at once", "call\"two words\"(?)", "two words"},
        {"another word", "callback(?)", ""},
        {"a query", "select * from calls", ""},
        {"a mark and no call", "? call divide", ""},
        {"only the word", "call", ""},
        {"nothing", "", ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(ReadCalledName(row.sql), row.name);
    }
}

}  // namespace
}  // namespace tk::ado
