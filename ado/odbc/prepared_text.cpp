#include "ado/odbc/prepared_text.h"

#include "ado/odbc/physical_connection.h"

namespace tk::ado {

PreparedText::PreparedText(Session& session, std::string_view sql, LONG timeoutSeconds)
    : session_(session),
      statement_(session.Physical().Get(), session.Profile()),
      text_(sql),
      timeoutSeconds_(timeoutSeconds) {
    session_.FinishBackgroundWork(timeoutSeconds);
    // One driver cannot end a description, but its server keeps the limit of the last execution.
    if (const char* const ping = session_.Profile().pingStatement) {
        session_.Execute(ping, ExecuteOptions{timeoutSeconds, 0, false});
    }
}

PreparedText::~PreparedText() {
    statement_.Finish();
    const ServerCall call(statement_.Profile());
    // One driver loses the description of a statement that is freed without this.
    statement_.Close();
}

SQLRETURN PreparedText::Prepare() {
    if (isPrepared_) return SQL_SUCCESS;
    const SQLRETURN result = Odbc().Prepare(statement_.Get(), reinterpret_cast<SQLCHAR*>(text_.data()),
                                            static_cast<SQLINTEGER>(text_.size()));
    isPrepared_ = SQL_SUCCEEDED(result);
    return result;
}

void PreparedText::ThrowIfEnded() const {
    if (statement_.WasCut()) session_.Physical().MarkBroken();
    if (statement_.WasCancelled()) throw MakeCancelledError();
    if (statement_.WasExpired()) throw MakeWaitedError();
    if (timeoutSeconds_ <= 0) return;
    AdoError why = MakeTimeoutError(ReadDiagnostics(SQL_HANDLE_STMT, statement_.Get()), false);
    if (IsEnded(why)) throw why;
}

}  // namespace tk::ado
