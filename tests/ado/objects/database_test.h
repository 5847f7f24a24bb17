// tests/ado/objects/database_test.h - a database in a file of its own for each test, and connections to it.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "ids.h"
#include "late_bound.h"

namespace tk::ado::test {

class DatabaseTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "ado-objects-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::u16string ConnectionText(std::u16string_view more = u"") const {
        return u"Driver=SQLite3;Database=" + ToUtf16((folder_ / "test.db").string()) + u";Timeout=2000" +
               std::u16string(more);
    }

    Object Connect(std::u16string_view more = u"") const {
        Object opened = Object::Create(kConnectionClass);
        const Outcome outcome = opened.Call(connection::kOpen, {Text(ConnectionText(more))});
        EXPECT_TRUE(outcome.Ok()) << outcome;
        opened.Put(connection::kCursorLocation, Number(3));
        return opened;
    }

    static void Execute(const Object& on, std::u16string_view sql) {
        const Outcome outcome = on.Call(connection::kExecute, {Text(sql), Omitted(), Number(129)});
        EXPECT_TRUE(outcome.Ok()) << outcome << " in " << ToUtf8(sql);
    }

    /// The first value of the first row, as text.
    static std::string Ask(const Object& on, std::u16string_view sql) {
        const Outcome outcome = on.Call(connection::kExecute, {Text(sql)});
        EXPECT_TRUE(outcome.Ok()) << outcome << " in " << ToUtf8(sql);
        const Object rows = outcome.Result();
        return rows ? rows.Get(recordset::kCollect, {Number(0)}).Utf8() : "nothing";
    }

    /// An updatable recordset on a connection.
    static Object OpenRows(const Object& on, std::u16string_view source, LONG lock = 3, LONG options = 1) {
        Object rows = Object::Create(kRecordsetClass);
        rows.Put(recordset::kCursorLocation, Number(3));
        const Outcome outcome =
            rows.Call(recordset::kOpen, {Text(source), on.AsValue(), Number(3), Number(lock), Number(options)});
        EXPECT_TRUE(outcome.Ok()) << outcome << " in " << ToUtf8(source);
        return rows;
    }

    static std::string ValueOf(const Object& rows, std::u16string_view name) {
        const Outcome outcome = rows.Get(recordset::kCollect, {Text(name)});
        return outcome.Ok() ? outcome.Utf8() : "error " + std::to_string(outcome.Error());
    }
    static Outcome PutValue(const Object& rows, std::u16string_view name, Value value) {
        return rows.Invoke(recordset::kCollect, DISPATCH_PROPERTYPUT, {Text(name), std::move(value)}, true);
    }

    /// A table of three goods.
    static void CreateGoods(const Object& on) {
        Execute(on, u"create table goods (id integer primary key, name varchar(20), price double, stock integer)");
        Execute(on, u"insert into goods values (1, '苹果', 1.5, 10)");
        Execute(on, u"insert into goods values (2, 'banana', 2.25, NULL)");
        Execute(on, u"insert into goods values (3, NULL, 10, 7)");
    }

    std::filesystem::path folder_;
};

}  // namespace tk::ado::test
