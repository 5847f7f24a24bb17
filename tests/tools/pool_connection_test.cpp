// What a pool of sessions is told of a connection string.
#include "tools/tkdb/pool_connection.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using tk::tools::ForPool;

TEST(PoolConnection, TakesUserPasswordAndSourceOutOfTheText) {
    static const struct {
        const char* label;
        const char* connection;
        const char* text;
        const char* user;
        const char* password;
    } kRows[] = {
        {"a data source by its name", "stock", "stock", "", ""},
        {"blanks around the name", "  stock\n", "stock", "", ""},
        {"nothing", "", "", "", ""},
        {"a driver", "Driver=SQLite3;Database=/a b.db", ";Driver=SQLite3;Database=/a b.db", "", ""},
        {"source, user and password", "DSN=stock;UID=sa;PWD=x", "stock", "sa", "x"},
        {"in any case and order", "pwd=x;uId=sa;Port=1;dsn=stock", "stock;Port=1", "sa", "x"},
        {"blanks around the names", " DSN = stock ; UID = sa ; PWD = x y ", "stock", "sa", "x y"},
        {"other names", "Server=s;User ID=sa;Password=x", ";Server=s", "sa", "x"},
        {"the short name", "Server=s;User=sa;Password=x", ";Server=s", "sa", "x"},
        {"two names: the first counts", "UID=b;User ID=a;PWD=d;Password=c;User=z", "", "a", "c"},
        {"twice: the last counts", "UID=a;UID=b", "", "b", ""},
        {"braces", "Driver={MariaDB Unicode};PWD={a;b}}c}", ";Driver={MariaDB Unicode}", "", "a;b}c"},
        {"braces around a source", "DSN={my;stock};UID=sa", "{my;stock}", "sa", ""},
        {"a semicolon in braces elsewhere", "InitStmt={a;UID=x};UID=sa", ";InitStmt={a;UID=x}", "sa", ""},
        {"quotes", "UID=\"s;a\";PWD='it''s'", "", "s;a", "it's"},
        {"a quote that does not end", "PWD='a;Port=1", ";Port=1", "", "'a"},
        {"a brace inside a value", "Database=a{b;UID=sa", ";Database=a{b", "sa", ""},
        {"a brace that closes nothing", "Database=a}b;UID=sa", ";Database=a}b", "sa", ""},
        {"an equals sign in a value", "PWD=a=b;Port=1", ";Port=1", "", "a=b"},
        {"empty values", "UID=;PWD=;Port=1", ";Port=1", "", ""},
        {"pieces without a value", ";;stock;UID=sa;", "", "sa", ""},
        {"no name", "=x;UID=sa", "", "sa", ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        std::string reason;
        const auto pool = ForPool(row.connection, reason);
        EXPECT_EQ(reason, "");
        ASSERT_TRUE(pool);
        EXPECT_EQ(pool->text, row.text);
        EXPECT_EQ(pool->user, row.user);
        EXPECT_EQ(pool->password, row.password);
    }
}

TEST(PoolConnection, SaysWhatAPoolCannotBeTold) {
    const std::string fits(127, 'x');
    const struct {
        const char* label;
        std::string connection;
        const char* reason;
    } kRows[] = {
        {"a brace that is not closed", "Driver={SQLite3;Database=x", "a brace in the connection string is not closed"},
        {"a long source", fits + "y", "a pool takes a connection string of up to 127 bytes, not 128"},
        {"a long text", "A=" + fits, "a pool takes a connection string of up to 127 bytes, not 130"},
        {"a long user", "UID=" + fits + "y", "a pool takes a user of up to 127 bytes, not 128"},
        {"a long password", "PWD=" + fits + "y;UID=sa", "a pool takes a password of up to 127 bytes, not 128"},
        {"what would read as another item", "PWD={a;Server=b}",
         "a pool takes no password with a semicolon and an equals sign behind it"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        std::string reason;
        EXPECT_FALSE(ForPool(row.connection, reason));
        EXPECT_EQ(reason, row.reason);
    }
    std::string reason;
    EXPECT_TRUE(ForPool("UID=" + fits + ";PWD=" + fits + ";DSN=" + fits, reason)) << reason;
}

}  // namespace
