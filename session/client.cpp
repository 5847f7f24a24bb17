#include "session/inside.h"
#include "session/messages.h"

using namespace tk::session;

CTDataClient::CTDataClient() {
    Inside::Mark(*this);
}

CTDataClient::~CTDataClient() {
    Revoke();
    Inside::Unmark(*this);
}

// ---- guards --------------------------------------------------------------------------------------------------------

int CTDataClient::IsEnableDatabase() {
    CTDataServer* const server = server_;
    if (server != nullptr && Inside::Held(database_, server) != nullptr && server->GetSectionCount() > 0) return 1;
    SetLastErrorString(kNoConnection);
    return 0;
}

int CTDataClient::IsEnableRecordset() {
    CTDataServer* const server = server_;
    if (server != nullptr && Inside::Held(recordset_, server) != nullptr && server->GetSectionCount() > 0) return 1;
    SetLastErrorString(kNotOpen);
    return 0;
}

// ---- loans ---------------------------------------------------------------------------------------------------------

int CTDataClient::Invoke(CTDataServer* pServer) {
    server_ = pServer;
    return 1;
}

int CTDataClient::Revoke() {
    return Inside::Run(*this, "ForceRelease", 0, [&] {  // Contract: names another place
        if (IsEnableDatabase()) EndTrans();
        if (IsEnableRecordset()) CloseSQL();
        server_ = nullptr;
        return 1;
    });
}

int CTDataClient::BeginTrans() {
    return Inside::Run(*this, "BeginTrans", 0, [&] {
        CTDataServer* const server = server_;
        if (server == nullptr) {
            SetLastErrorString(kNoConnection);
            return 0;
        }
        // Contract: success, whether there was one to borrow or not.
        Inside::Take(database_, *server, server->InvokeDatabase(this));
        return 1;
    });
}

// A loan is ended and given back in one step, under the server's lock. Taken over in between, the session would be
// given back from under its new borrower.

int CTDataClient::EndTrans() {
    HeldLock held;
    return Inside::Run(*this, held, "EndTrans", 0, [&] {
        CTDataServer* const server = server_;
        if (server == nullptr) {
            SetLastErrorString(kNoConnection);
            return 0;
        }
        held.Enter(Inside::LockOf(*server));
        server->RevokeDatabase(Inside::GiveUp(database_, server));
        return 1;
    });
}

int CTDataClient::CloseSQL() {
    HeldLock held;
    const auto giveBack = [&] {
        CTDataServer* const server = server_;
        if (server == nullptr) return;
        held.Enter(Inside::LockOf(*server));
        if (CTRecordset* const recordset = Inside::GiveUp(recordset_, server)) server->RevokeRecordset(recordset);
        held.Leave();
    };
    return Inside::RunOr(
        *this, held, "CloseSQL", 1,
        [&] {
            if (!IsEnableRecordset()) return 1;
            if (CTRecordset* const recordset = Inside::Held(recordset_, server_.load())) recordset->Close();
            giveBack();
            return 1;
        },
        giveBack);
}

CTRecordset* CTDataClient::GetRecordset() {
    return Inside::Held(recordset_, server_.load());
}

// ---- texts ---------------------------------------------------------------------------------------------------------

CString CTDataClient::GetLastErrorString() {
    return Inside::GetError(*this);
}

void CTDataClient::SetLastErrorString(const char* szError) {
    Inside::SetError(*this, szError);
}

CString CTDataClient::About() {
    return kBanner;
}
