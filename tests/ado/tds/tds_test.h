// tests/ado/tds/tds_test.h - a connection to the server that is taken for Microsoft SQL Server; each test has a
// database of its own.
#pragma once

#include "../objects/session_test.h"
#include "ado/cursor/text.h"
#include "support/tds/tds_server.h"

namespace tk::ado::test {

class TdsTest : public SessionTest {
protected:
    Object Connect(std::u16string_view more = u"") const {
        const Object opened = Object::Create(kConnectionClass);
        const Outcome outcome = opened.Call(connection::kOpen, {Text(ConnectionText() + std::u16string(more))});
        EXPECT_TRUE(outcome.Ok()) << outcome;
        opened.Put(connection::kCursorLocation, Number(3));
        return opened;
    }
    std::u16string ConnectionText() const { return ToUtf16(server_.ConnectionString()); }
    void SetUp() override { connection_ = Connect(); }
    void Do(std::u16string_view sql) const { Execute(connection_, sql); }
    std::string AskFor(std::u16string_view sql) const { return Ask(connection_, sql); }

    /// Runs what must fail.
    Outcome Fail(std::u16string_view sql) const {
        const Outcome outcome = connection_.Call(connection::kExecute, {Text(sql)});
        EXPECT_FALSE(outcome.Ok()) << ToUtf8(sql);
        return outcome;
    }
    /// "number state text" of the first record of the last failure.
    std::string FirstError() const {
        const Object first = connection_.Get(connection::kErrors).Result().Get(collection::kItem, {Number(0)}).Result();
        constexpr DISPID kDescription = 0, kState = 5, kNative = 6;
        return std::to_string(first.Get(kNative).Long()) + " " + first.Get(kState).Utf8() + " " +
               first.Get(kDescription).Utf8();
    }

    // Before what uses it.
    tk::test::TdsServer server_;
    Object connection_;
};

}  // namespace tk::ado::test
