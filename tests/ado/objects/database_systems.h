// tests/ado/objects/database_systems.h - the database systems that one suite of behaviour tests runs on, each started
// when it is first wanted, and what they spell differently.
#pragma once

#include <filesystem>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>

#include "ado/cursor/text.h"
#include "ado/odbc/session_cache.h"
#include "session_test.h"
#include "support/mariadb_server.h"
#include "support/postgres_server.h"
#include "support/temporary_folder.h"

namespace tk::ado::test {

enum class SystemKind { Sqlite, Postgres, MariaDb };

inline void PrintTo(SystemKind kind, std::ostream* stream) {
    *stream << (kind == SystemKind::Sqlite ? "SQLite" : kind == SystemKind::Postgres ? "PostgreSQL" : "MariaDB");
}

/// The words that differ.
struct Spelling {
    const char16_t* quote;
    const char16_t* number;  // an integer key that counts by itself
    const char16_t* blob;
    const char16_t* bytes12;  // the literal of the bytes 1, 2
};

class SystemTest : public SessionTest, public ::testing::WithParamInterface<SystemKind> {
protected:
    static std::string ConnectionString(SystemKind kind) {
        switch (kind) {
            case SystemKind::Sqlite: {
                static tk::test::TemporaryFolder folder;
                return "Driver=SQLite3;Database=" + folder.File("test.db") + ";Timeout=500;FKSupport=1";
            }
            case SystemKind::Postgres: {
                static tk::test::PostgresServer server;
                return server.ConnectionString();
            }
            case SystemKind::MariaDb: {
                static tk::test::MariaDbServer server;
                return server.ConnectionString();
            }
        }
        return {};
    }

    static const Spelling& Spell(SystemKind kind) {
        static constexpr Spelling kSqlite = {u"\"", u"integer primary key", u"blob", u"x'0102'"};
        static constexpr Spelling kPostgres = {u"\"", u"serial primary key", u"bytea", u"'\\x0102'"};
        static constexpr Spelling kMariaDb = {u"`", u"int auto_increment primary key", u"longblob", u"x'0102'"};
        return kind == SystemKind::Sqlite ? kSqlite : kind == SystemKind::Postgres ? kPostgres : kMariaDb;
    }

    static Object ConnectTo(SystemKind kind) {
        const Object opened = Object::Create(kConnectionClass);
        const Outcome outcome = opened.Call(connection::kOpen, {Text(ToUtf16(ConnectionString(kind)))});
        EXPECT_TRUE(outcome.Ok()) << outcome;
        opened.Put(connection::kCursorLocation, Number(3));
        return opened;
    }
    Object Connect() const { return ConnectTo(GetParam()); }
    const Spelling& Words() const { return Spell(GetParam()); }

    /// A text in which names stand in "…", with the system's own quotes.
    std::u16string Sql(std::u16string_view text) const {
        std::u16string spelled;
        for (const char16_t unit : text) {
            if (unit == u'"') {
                spelled += Words().quote;
            } else {
                spelled += unit;
            }
        }
        return spelled;
    }

    void SetUp() override { connection_ = Connect(); }
    void Do(std::u16string_view text) const { Execute(connection_, Sql(text)); }
    std::string AskFor(std::u16string_view text) const { return Ask(connection_, Sql(text)); }
    void Drop(std::u16string_view table) const {
        // With the functions that return its rows, where the system minds.
        const char16_t* const cascade = GetParam() == SystemKind::Postgres ? u" cascade" : u"";
        Do(u"drop table if exists \"" + std::u16string(table) + u"\"" + cascade);
    }

    static void SetProperty(const Object& rows, const char16_t* name, Value value) {
        const Outcome put = rows.Get(recordset::kProperties)
                                .Result()
                                .Get(collection::kItem, {Text(name)})
                                .Result()
                                .Put(0, std::move(value));
        EXPECT_TRUE(put.Ok()) << put;
    }

    Object connection_;
};

inline std::string SystemName(const ::testing::TestParamInfo<SystemKind>& info) {
    std::ostringstream text;
    PrintTo(info.param, &text);
    return text.str();
}

}  // namespace tk::ado::test
