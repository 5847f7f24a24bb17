#include "session/inside.h"
#include "session/messages.h"

using namespace tk::session;

CTDataClient::CTDataClient() {
    Inside::Mark(*this);
}

CTDataClient::~CTDataClient() {
    Revoke();
    mark_ = 0;
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

int CTDataClient::EndTrans() {
    return Inside::Run(*this, "EndTrans", 0, [&] {
        CTDataServer* const server = server_;
        if (server == nullptr) {
            SetLastErrorString(kNoConnection);
            return 0;
        }
        server->RevokeDatabase(Inside::GiveUp(database_, server));
        return 1;
    });
}

int CTDataClient::CloseSQL() {
    const auto giveBack = [&] {
        CTDataServer* const server = server_;
        if (server == nullptr) return;
        if (CTRecordset* const held = Inside::GiveUp(recordset_, server)) server->RevokeRecordset(held);
    };
    return Inside::RunOr(
        *this, "CloseSQL", 1,
        [&] {
            if (!IsEnableRecordset()) return 1;
            if (CTRecordset* const held = Inside::Held(recordset_, server_.load())) held->Close();
            giveBack();
            return 1;
        },
        [&] { tk::util::RunGuarded(giveBack); });
}

CTRecordset* CTDataClient::GetRecordset() {
    return recordset_.object;
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
