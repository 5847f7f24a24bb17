// tests/ado/objects/database_test.h - a database in a file of its own for each test, and connections to it.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "session_test.h"

namespace tk::ado::test {

class DatabaseTest : public SessionTest {
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
