// What a client does with its connection, and what it asks of its server.
#include "session/inside.h"
#include "tkkernel/platform.h"
#include "util/text.h"

using namespace tk::session;

namespace {

/// printf's escape alone: the statement is a format that no arguments follow. A single '%' stays what it is.
CString AsFormat(std::string_view statement) {
    CString format;
    for (std::size_t i = 0; i < statement.size(); ++i) {
        format += statement[i];
        if (statement[i] != '%') continue;
        format += '%';
        if (i + 1 < statement.size() && statement[i + 1] == '%') ++i;
    }
    return format;
}

}  // namespace

/// Runs work(connection) while one is held; a fault returns it.
template <typename Result, typename Work>
Result Inside::OnConnection(CTDataClient& client, const char* place, Result refused, const Work& work) {
    return RunOr(
        client, place, refused,
        [&] {
            if (!client.IsEnableDatabase()) return refused;
            CTDatabase* const database = Held(client.database_, client.server_.load());
            return database != nullptr ? work(*database) : refused;
        },
        [&] { client.EndTrans(); });
}

/// Asks the server, which needs no loan. The reason for an empty answer is the server's.
template <typename Question>
CString Inside::OnServer(CTDataClient& client, const char* place, const Question& question) {
    return Run(client, place, CString(), [&] {
        CTDataServer* const server = client.server_;
        if (!IsValidAddress(server, sizeof(CTDataServer))) return CString();
        CString answer = question(*server);
        if (answer.IsEmpty()) client.SetLastErrorString(server->GetLastErrorString());
        return answer;
    });
}

int CTDataClient::ExecuteSQL(const char* szSQL) {
    return Inside::OnConnection(*this, "ExecuteSQL", 0, [&](CTDatabase& database) {
        if (database.ExecuteSQL(szSQL)) return 1;
        SetLastErrorString(database.GetLastErrorString());
        return 0;
    });
}

long CTDataClient::ExecSQL(const char* szSQL) {
    return Inside::OnConnection(*this, "ExecSQL", 0L, [&](CTDatabase& database) {
        // Contract: 1 for any number of rows.
        if (database.ExecSQL(AsFormat(tk::util::View(szSQL))) != 0) return 1L;
        SetLastErrorString(database.GetLastErrorString());
        return 0L;
    });
}

CString CTDataClient::GetTableScript(const char* szTable) {
    return Inside::OnConnection(*this, "GetTableScript", CString(), [&](CTDatabase& database) {
        const CString script = database.GetTableStruct(szTable);
        if (script.IsEmpty()) SetLastErrorString(database.GetLastErrorString());
        return script;
    });
}

CString CTDataClient::GetViewScript(const char* szView) {
    return Inside::OnConnection(*this, "GetViewScript", CString(), [&](CTDatabase& database) {
        const CString script = database.GetViewContext(szView);
        if (script.IsEmpty()) SetLastErrorString(database.GetLastErrorString());
        return script;
    });
}

// Contract: all three name one place.
CString CTDataClient::GetDbmsName() {
    return Inside::OnServer(*this, "GetDbmsName", [](CTDataServer& server) { return server.GetDbmsName(); });
}

CString CTDataClient::GetSpecialValue(const char* szSQL, const char* szFields) {
    return Inside::OnServer(*this, "GetDbmsName",
                            [&](CTDataServer& server) { return server.GetSpecialValue(szSQL, szFields); });
}

CString CTDataClient::GetRecordValues(const char* szSQL, const char* szSeparator) {
    return Inside::OnServer(*this, "GetDbmsName",
                            [&](CTDataServer& server) { return server.GetRecordValues(szSQL, szSeparator); });
}
