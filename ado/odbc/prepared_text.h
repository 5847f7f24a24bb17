// ado/odbc/prepared_text.h - a text that is prepared to be described, not to be executed.
//
//   PreparedText prepared(session, sql, timeoutSeconds);
//   SQLSMALLINT count = 0;
//   SQLRETURN result = prepared.Ask([&](SQLHSTMT handle) { return Odbc().NumResultCols(handle, &count); });
//
// Drivers prepare when they are first asked something, and the server may let that wait for another session's locks: so
// the first question is inside the time limit too.
//
// It ends before the session runs another statement, which may put a new connection in the place of a lost one.
//
// Threads: the session's caller; Session.Cancel ends the question where the driver can.
#pragma once

#include <concepts>
#include <string_view>

#include "ado/odbc/running_call.h"
#include "ado/odbc/server_call.h"
#include "ado/odbc/session.h"
#include "ado/odbc/watchdog.h"

namespace tk::ado {

class PreparedText {
public:
    /// Waits for what workers still do on the connection.
    /// @throws AdoError when the time is over or the wait was cancelled
    PreparedText(Session& session, std::string_view sql, LONG timeoutSeconds);
    /// Waits for the server where the driver does, within the usual limit.
    ~PreparedText();
    PreparedText(const PreparedText&) = delete;
    PreparedText& operator=(const PreparedText&) = delete;

    SQLHSTMT Get() const noexcept { return statement_.Get(); }

    /// Prepares the text, unless that is done, and asks.
    /// @return the driver's result, its diagnostics still there
    /// @throws AdoError when the question was cancelled or the time was over
    template <std::invocable<SQLHSTMT> Question>
    SQLRETURN Ask(Question&& question) {
        statement_.Start();
        const RunningCall::Scope running(session_.Running(), statement_);
        WatchdogGuard guard(timeoutSeconds_, statement_);
        const ServerCall call(statement_.Profile(), timeoutSeconds_, &statement_);
        SQLRETURN result = Prepare();
        if (SQL_SUCCEEDED(result)) result = question(statement_.Get());
        guard.Finish();
        statement_.HoldCancel();  // the diagnostics are the caller's now
        if (!SQL_SUCCEEDED(result)) ThrowIfEnded();
        return result;
    }

private:
    SQLRETURN Prepare();
    void ThrowIfEnded() const;

    Session& session_;
    StatementHandle statement_;
    std::string text_;
    LONG timeoutSeconds_;
    bool isPrepared_ = false;
};

}  // namespace tk::ado
