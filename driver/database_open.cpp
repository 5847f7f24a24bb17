#include "driver/guard.h"
#include "driver/ids.h"
#include "driver/invoke.h"
#include "driver/messages.h"
#include "tkkernel/platform.h"

using namespace tk::driver;

namespace {

// Given to every Connection right after it was created.
constexpr long kClientCursor = 3;
constexpr long kCommandTimeoutSeconds = 1800;
constexpr long kConnectionTimeoutSeconds = 20;

constexpr long kOptionUnspecified = -1;
constexpr long kStateOpen = 1;

const char* OrElse(const char* text, const char* instead) noexcept {
    return text == nullptr ? instead : text;
}

}  // namespace

CTDatabase::CTDatabase() = default;

CTDatabase::CTDatabase(const CTDatabase& other) : CTDataDriver(other) {}

CTDatabase::~CTDatabase() {
    if (dispatch_.m_lpDispatch == nullptr) return;
    Guard::Destroying(*this, kCannotCloseOpenedDatabase, [&] { Close(); });
}

int CTDatabase::OnInitDispatch() {
    if (initialised_) return 1;
    if (!OnInitCLSID(kConnectionClass)) return 0;
    SetCursorLocation(kClientCursor);
    SetCommandTimeout(kCommandTimeoutSeconds);
    SetConnectionTimeout(kConnectionTimeoutSeconds);
    initialised_ = 1;
    return 1;
}

int CTDatabase::OnInvoke(const char* szConnection, const char* szUser, const char* szPassword, long nOptions) {
    return Guard::Run(*this, kOpenDatabaseFailed, 0, [&] {
        static constexpr BYTE parms[] = VTS_BSTR VTS_BSTR VTS_BSTR VTS_I4;
        if (!OnInitDispatch()) return 0;
        Call(dispatch_, connection::kOpen, parms, szConnection, szUser, szPassword, nOptions);
        const COleDispatchDriver properties(GetObject(dispatch_, connection::kProperties));
        OnInitProperty(properties.m_lpDispatch);
        dbmsTag_ = GetDBMS();
        return 1;
    });
}

int CTDatabase::Open() {
    const CString connection = GetSystemDataSource();
    return connection.IsEmpty() ? 0 : Open(connection);
}

int CTDatabase::Open(const char* szConnection) {
    return OnInvoke(szConnection, nullptr, nullptr, kOptionUnspecified);
}

int CTDatabase::Open(const char* szDsn, const char* szUser, const char* szPassword) {
    CString connection;
    connection.Format("DSN=%s;UID=%s;PWD=%s", OrElse(szDsn, ""), OrElse(szUser, ""), OrElse(szPassword, ""));
    return OnInvoke(connection, szUser, szPassword, kOptionUnspecified);
}

int CTDatabase::OpenDAO(const char* szDataSource, const char* szUser, const char* szPassword) {
    // Contract: the text ends in the fragment ";J", which providers ignore.
    static constexpr char kJetFormat[] =
        "Provider=Microsoft.Jet.OLEDB.4.0;User ID=%s;Data Source=%s;Mode=Share Deny None;Extended Properties=\"\";"
        "Jet OLEDB:System database=\"\";Jet OLEDB:Registry Path=\"\";Jet OLEDB:Database Password=\"%s\";J";
    CString connection;
    connection.Format(kJetFormat, OrElse(szUser, "Admin"), OrElse(szDataSource, ""), OrElse(szPassword, ""));
    return OnInvoke(connection, szUser, szPassword, kOptionUnspecified);
}

void CTDatabase::Close() {
    Guard::Closing(*this, kCannotCloseDatabase, 0, [&] {
        if (GetState() != 0) Call(dispatch_, connection::kClose);
        return 1;
    });
}

int CTDatabase::IsOpen() {
    return GetState() == kStateOpen ? 1 : 0;
}

void CTDatabase::Cancel() {
    Call(dispatch_, connection::kCancel);
}
