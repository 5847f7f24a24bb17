#include "driver/guard.h"
#include "driver/ids.h"
#include "driver/invoke.h"
#include "driver/messages.h"
#include "tkkernel/platform.h"

using namespace tk::driver;

namespace {

constexpr long kStateOpen = 1;
constexpr long kClientCursor = 3;
constexpr long kCacheSize = 1000;
constexpr long kRequeryOptions = 1;
constexpr int kTagLength = 3;

// What the source of an open is (ADO CommandTypeEnum).
constexpr long kText = 1;
constexpr long kTable = 2;
constexpr long kStoredProcedure = 4;

struct CursorAndLock {
    long cursor;
    long lock;
};

constexpr CursorAndLock CursorFor(int readOnly) noexcept {
    constexpr CursorAndLock kForwardOnlyReadOnly = {0, 1};
    constexpr CursorAndLock kDynamicOptimistic = {2, 3};
    return readOnly ? kForwardOnlyReadOnly : kDynamicOptimistic;
}

}  // namespace

CTRecordset::CTRecordset() = default;

CTRecordset::CTRecordset(CTDatabase* pDatabase) {
    OpenDatabase(pDatabase);
}

CTRecordset::CTRecordset(const CTRecordset& other) : CTDataDriver(other) {
    OnInitDispatch();
}

CTRecordset::CTRecordset(IDispatch* pDispatch) : CTDataDriver(pDispatch) {
    OnInitDispatch();
}

CTRecordset::~CTRecordset() {
    Guard::Destroying(*this, kRecordsetCloseFailed, [&] {
        if (GetState() != 0) Call(dispatch_, recordset::kClose);
    });
}

int CTRecordset::OnInitDispatch() {
    if (!initialised_) initialised_ = OnInitCLSID(kRecordsetClass);
    return initialised_;
}

// ---- binding -------------------------------------------------------------------------------------------------------

int CTRecordset::OpenDatabase(CTDatabase* pDatabase) {
    if (pDatabase == nullptr) return SetErrorString(kNoConnection, kNoConnectionDetail);
    return Guard::Run(*this, kOpenDatabaseFailed, 0, [&] {
        // A database that was never opened has no object to ask, and no connection string to give.
        connection_ = pDatabase->GetDispatch() != nullptr ? pDatabase->GetConnectionString() : CString();
        dbmsTag_ = pDatabase->GetDBMS();
        return OnInitDispatch();
    });
}

int CTRecordset::OpenDatabase(const char* szConnection, const char* szDbms) {
    if (szDbms != nullptr && *szDbms != '\0') {
        // Contract: kept whole here, while SetDBMS cuts to three characters.
        connection_ = szConnection;
        dbmsTag_ = szDbms;
        return OnInitDispatch();
    }
    CTDatabase database;
    return BindThrough(database, database.Open(szConnection));
}

int CTRecordset::OpenDatabase(const char* szDsn, const char* szUser, const char* szPassword) {
    CTDatabase database;
    return BindThrough(database, database.Open(szDsn, szUser, szPassword));
}

/// Binds to a connection that was opened for this alone, and closes it.
int CTRecordset::BindThrough(CTDatabase& opened, int isOpen) {
    if (!isOpen) return SetError("%s", static_cast<const char*>(opened.GetLastErrorString()));
    const int bound = OpenDatabase(&opened);
    opened.Close();
    return bound;
}

int CTRecordset::CloseDatabase() {
    connection_.Empty();
    dbmsTag_.Empty();
    return Close();
}

CString CTRecordset::GetDBMS() {
    return dbmsTag_;
}

void CTRecordset::SetDBMS(const char* szDbms) {
    dbmsTag_ = CString(szDbms).Left(kTagLength);
}

// ---- opening -------------------------------------------------------------------------------------------------------

int CTRecordset::OpenTable(const char* szTable, int bReadOnly) {
    const auto [cursor, lock] = CursorFor(bReadOnly);
    return OnInvoke(GetStandardSQL(szTable), cursor, lock, kTable);
}

int CTRecordset::OpenSQL(const char* szSQL, int bReadOnly) {
    const auto [cursor, lock] = CursorFor(bReadOnly);
    return OnInvoke(szSQL, cursor, lock, kText);
}

int CTRecordset::OpenProcedure(const char* szProcedure, int bReadOnly) {
    const auto [cursor, lock] = CursorFor(bReadOnly);
    return OnInvoke(GetStandardSQL(szProcedure), cursor, lock, kStoredProcedure);
}

int CTRecordset::OnInvoke(const char* szSource, long nCursorType, long nLockType, long nOptions) {
    if (connection_.IsEmpty()) return SetErrorString(kNoConnection, kNoConnectionDetail);
    return Guard::Run(*this, szSource, 0, [&] {
        if (!OnInitDispatch()) return 0;
        if (GetState() != 0) Close();
        SetCursorLocation(kClientCursor);
        lastError_ = kOperationDoneNoResult;
        return SetRecordset(COleVariant(szSource, VT_BSTR), COleVariant(connection_, VT_BSTR), nCursorType, nLockType,
                            nOptions);
    });
}

int CTRecordset::SetRecordset(const VARIANT& source, const VARIANT& activeConnection, long nCursorType, long nLockType,
                              long nOptions) {
    return Guard::Run(*this, kRecordsetOpenFailed, 0, [&] {
        static constexpr BYTE parms[] = VTS_VARIANT VTS_VARIANT VTS_I4 VTS_I4 VTS_I4;
        Call(dispatch_, recordset::kOpen, parms, &source, &activeConnection, nCursorType, nLockType, nOptions);
        SetCacheSize(kCacheSize);
        return 1;
    });
}

int CTRecordset::SetRecordset(const VARIANT& source) {
    return Guard::Run(*this, kRecordsetOpenFailed, 0, [&] {
        static constexpr BYTE parms[] = VTS_VARIANT;
        Call(dispatch_, recordset::kOpen, parms, &source);
        SetCacheSize(kCacheSize);
        return 1;
    });
}

int CTRecordset::SetRecordset(const VARIANT& source, long nCursorType, long nLockType, long nOptions) {
    return Guard::Run(*this, kRecordsetOpenFailed, 0, [&] {
        // Contract: without a connection argument the numbers land one place early, and Options is not sent.
        static constexpr BYTE parms[] = VTS_VARIANT VTS_I4 VTS_I4 VTS_I4;
        Call(dispatch_, recordset::kOpen, parms, &source, nCursorType, nLockType, nOptions);
        SetCacheSize(kCacheSize);
        return 1;
    });
}

// ---- data sources --------------------------------------------------------------------------------------------------

int CTRecordset::OpenDispatch(IDispatch* pSource) {
    return OpenField(pSource);
}

int CTRecordset::OpenField(IDispatch* pSource) {
    return Guard::Run(*this, kOpenFieldFailed, 0, [&] { return OnInitDispatch() ? SetRefDataSource(pSource) : 0; });
}

int CTRecordset::SetRefDataSource(IUnknown* pSource) {
    static constexpr BYTE parms[] = VTS_UNKNOWN;
    if (!IsValidAddress(pSource, 4)) return SetError("%s", kInvalidInterface);
    PutRef(dispatch_, recordset::kDataSource, parms, pSource);
    return 1;
}

int CTRecordset::SetDispatch(IUnknown* pSource) {
    return SetRefDataSource(pSource);
}

// ---- closing and state ---------------------------------------------------------------------------------------------

int CTRecordset::Close() {
    lastError_.Empty();
    return Guard::Closing(*this, kRecordsetCloseFailed, 0, [&] {
        if (GetState() != 0) Call(dispatch_, recordset::kClose);
        return 1;
    });
}

int CTRecordset::IsOpen() {
    return Guard::Run(*this, kIsOpenFailed, 0, [&] { return GetState() == kStateOpen ? 1 : 0; });
}

int CTRecordset::Requery() {
    // Contract: a failure that the object does not describe (COleException) passes to the caller.
    return Guard::Run<COleDispatchException>(*this, kRequeryFailed, 0, [&] {
        Requery(kRequeryOptions);
        return 1;
    });
}

long CTRecordset::GetRecordCount() {
    return Guard::Run(*this, kGetRecordCountFailed, -1L, [&] { return GetLong(dispatch_, recordset::kRecordCount); });
}
