// tests/ado/objects/session_test.h - short forms of the calls that most tests make on a connection and its recordsets.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "ids.h"
#include "late_bound.h"

namespace tk::ado::test {

class SessionTest : public ::testing::Test {
protected:
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
    /// The named columns of all rows: "a,b;c,d;".
    static std::string List(const Object& rows, std::initializer_list<const char16_t*> names) {
        if (!rows) return "nothing";
        std::string text;
        for (; !rows.Get(recordset::kEof).True(); rows.Call(recordset::kMoveNext)) {
            bool isFirst = true;
            for (const char16_t* name : names) {
                text += (isFirst ? "" : ",") + ValueOf(rows, name);
                isFirst = false;
            }
            text += ";";
        }
        return text;
    }

    static Outcome PutValue(const Object& rows, std::u16string_view name, Value value) {
        return rows.Invoke(recordset::kCollect, DISPATCH_PROPERTYPUT, {Text(name), std::move(value)}, true);
    }
};

}  // namespace tk::ado::test
