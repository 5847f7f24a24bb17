// The Recordset members that pass straight through.
#include "driver/ids.h"
#include "driver/invoke.h"
#include "tkkernel/row_access.h"

using namespace tk::driver;

// ---- objects and values --------------------------------------------------------------------------------------------

CTProperties CTRecordset::GetProperties() {
    return CTProperties(GetProperty());
}

IDispatch* CTRecordset::GetProperty() {
    return GetObject(dispatch_, recordset::kProperties);
}

CTFields CTRecordset::GetFields() {
    return CTFields(GetObject(dispatch_, recordset::kFields));
}

IDispatch* CTRecordset::GetActiveCommand() {
    return GetObject(dispatch_, recordset::kActiveCommand);
}

IUnknown* CTRecordset::GetDataSource() {
    return GetUnknown(dispatch_, recordset::kDataSource);
}

void CTRecordset::SetRefActiveConnection(IDispatch* pConnection) {
    static constexpr BYTE parms[] = VTS_DISPATCH;
    PutRef(dispatch_, recordset::kActiveConnection, parms, pConnection);
}

void CTRecordset::SetActiveConnection(const VARIANT& connection) {
    PutVariant(dispatch_, recordset::kActiveConnection, connection);
}

VARIANT CTRecordset::GetActiveConnection() {
    return GetVariant(dispatch_, recordset::kActiveConnection);
}

void CTRecordset::SetRefSource(IDispatch* pSource) {
    static constexpr BYTE parms[] = VTS_DISPATCH;
    PutRef(dispatch_, recordset::kSource, parms, pSource);
}

void CTRecordset::SetSource(const char* szSource) {
    PutText(dispatch_, recordset::kSource, szSource);
}

VARIANT CTRecordset::GetSource() {
    return GetVariant(dispatch_, recordset::kSource);
}

VARIANT CTRecordset::GetBookmark() {
    return GetVariant(dispatch_, recordset::kBookmark);
}

void CTRecordset::SetBookmark(const VARIANT& bookmark) {
    PutVariant(dispatch_, recordset::kBookmark, bookmark);
}

// ---- position ------------------------------------------------------------------------------------------------------

int CTRecordset::GetBof() {
    VARIANT_BOOL bof = VARIANT_FALSE;
    if (IRowAccess* rows = rows_.Of(dispatch_.m_lpDispatch); rows != nullptr && rows->GetBof(&bof) == S_OK) {
        return bof != VARIANT_FALSE ? 1 : 0;
    }
    return GetFlag(dispatch_, recordset::kBof);
}

int CTRecordset::GetEof() {
    VARIANT_BOOL eof = VARIANT_FALSE;
    if (IRowAccess* rows = rows_.Of(dispatch_.m_lpDispatch); rows != nullptr && rows->GetEof(&eof) == S_OK) {
        return eof != VARIANT_FALSE ? 1 : 0;
    }
    return GetFlag(dispatch_, recordset::kEof);
}

long CTRecordset::GetAbsolutePosition() {
    return GetLong(dispatch_, recordset::kAbsolutePosition);
}

void CTRecordset::SetAbsolutePosition(long nPosition) {
    PutLong(dispatch_, recordset::kAbsolutePosition, nPosition);
}

long CTRecordset::GetAbsolutePage() {
    return GetLong(dispatch_, recordset::kAbsolutePage);
}

void CTRecordset::SetAbsolutePage(long nPage) {
    PutLong(dispatch_, recordset::kAbsolutePage, nPage);
}

long CTRecordset::GetPageCount() {
    return GetLong(dispatch_, recordset::kPageCount);
}

long CTRecordset::GetPageSize() {
    return GetLong(dispatch_, recordset::kPageSize);
}

void CTRecordset::SetPageSize(long nSize) {
    PutLong(dispatch_, recordset::kPageSize, nSize);
}

void CTRecordset::Move(long nCount, const VARIANT& start) {
    static constexpr BYTE parms[] = VTS_I4 VTS_VARIANT;
    Call(dispatch_, recordset::kMove, parms, nCount, &start);
}

void CTRecordset::MoveNext() {
    if (IRowAccess* rows = rows_.Of(dispatch_.m_lpDispatch); rows != nullptr && rows->MoveNext() == S_OK) return;
    Call(dispatch_, recordset::kMoveNext);
}

void CTRecordset::MovePrevious() {
    if (IRowAccess* rows = rows_.Of(dispatch_.m_lpDispatch); rows != nullptr && rows->MovePrevious() == S_OK) return;
    Call(dispatch_, recordset::kMovePrevious);
}

void CTRecordset::MoveFirst() {
    Call(dispatch_, recordset::kMoveFirst);
}

void CTRecordset::MoveLast() {
    Call(dispatch_, recordset::kMoveLast);
}

void CTRecordset::Find(const char* szCriteria, long nSkip, long nDirection, const VARIANT& start) {
    static constexpr BYTE parms[] = VTS_BSTR VTS_I4 VTS_I4 VTS_VARIANT;
    Call(dispatch_, recordset::kFind, parms, szCriteria, nSkip, nDirection, &start);
}

void CTRecordset::Seek(const VARIANT& keys, long nOption) {
    static constexpr BYTE parms[] = VTS_VARIANT VTS_I4;
    Call(dispatch_, recordset::kSeek, parms, &keys, nOption);
}

long CTRecordset::CompareBookmarks(const VARIANT& first, const VARIANT& second) {
    static constexpr BYTE parms[] = VTS_VARIANT VTS_VARIANT;
    long result = 0;
    dispatch_.InvokeHelper(recordset::kCompareBookmarks, DISPATCH_METHOD, VT_I4, &result, parms, &first, &second);
    return result;
}

// ---- changing records ----------------------------------------------------------------------------------------------

void CTRecordset::CancelUpdate() {
    Call(dispatch_, recordset::kCancelUpdate);
}

void CTRecordset::Delete() {
    Call(dispatch_, recordset::kDelete);
}

void CTRecordset::Delete(long nAffect) {
    CallWithLong(dispatch_, recordset::kDelete, nAffect);
}

void CTRecordset::Update() {
    Call(dispatch_, recordset::kUpdate);
}

void CTRecordset::Update(const VARIANT& fields, const VARIANT& values) {
    static constexpr BYTE parms[] = VTS_VARIANT VTS_VARIANT;
    Call(dispatch_, recordset::kUpdate, parms, &fields, &values);
}

void CTRecordset::UpdateBatch() {
    Call(dispatch_, recordset::kUpdateBatch);
}

void CTRecordset::UpdateBatch(long nAffect) {
    CallWithLong(dispatch_, recordset::kUpdateBatch, nAffect);
}

void CTRecordset::CancelBatch(long nAffect) {
    CallWithLong(dispatch_, recordset::kCancelBatch, nAffect);
}

void CTRecordset::Resync(long nAffect, long nResync) {
    static constexpr BYTE parms[] = VTS_I4 VTS_I4;
    Call(dispatch_, recordset::kResync, parms, nAffect, nResync);
}

long CTRecordset::GetEditMode() {
    return GetLong(dispatch_, recordset::kEditMode);
}

long CTRecordset::GetStatus() {
    return GetLong(dispatch_, recordset::kStatus);
}

// ---- the whole set -------------------------------------------------------------------------------------------------

void CTRecordset::Requery(long nOptions) {
    CallWithLong(dispatch_, recordset::kRequery, nOptions);
}

void CTRecordset::Cancel() {
    Call(dispatch_, recordset::kCancel);
}

VARIANT CTRecordset::GetRows(long nRows, const VARIANT& start, const VARIANT& fields) {
    static constexpr BYTE parms[] = VTS_I4 VTS_VARIANT VTS_VARIANT;
    VARIANT result;
    VariantInit(&result);
    dispatch_.InvokeHelper(recordset::kGetRows, DISPATCH_METHOD, VT_VARIANT, &result, parms, nRows, &start, &fields);
    return result;
}

CString CTRecordset::GetString(long nFormat, long nRows, const char* szColumn, const char* szRow, const char* szNull) {
    static constexpr BYTE parms[] = VTS_I4 VTS_I4 VTS_BSTR VTS_BSTR VTS_BSTR;
    CString result;
    dispatch_.InvokeHelper(recordset::kGetString, DISPATCH_METHOD, VT_BSTR, &result, parms, nFormat, nRows, szColumn,
                           szRow, szNull);
    return result;
}

CTRecordset CTRecordset::NextRecordset(VARIANT* pAffected) {
    static constexpr BYTE parms[] = VTS_PVARIANT;
    COleVariant ignored;
    VARIANT* affected = pAffected == nullptr ? &ignored : pAffected;
    return CTRecordset(CallForObject(dispatch_, recordset::kNextRecordset, parms, affected));
}

CTRecordset CTRecordset::Clone(long nLockType) {
    static constexpr BYTE parms[] = VTS_I4;
    return CTRecordset(CallForObject(dispatch_, recordset::kClone, parms, nLockType));
}

int CTRecordset::Supports(long nOption) {
    static constexpr BYTE parms[] = VTS_I4;
    BOOL result = FALSE;
    dispatch_.InvokeHelper(recordset::kSupports, DISPATCH_METHOD, VT_BOOL, &result, parms, nOption);
    return result;
}

void CTRecordset::Save(const VARIANT& destination, long nFormat) {
    static constexpr BYTE parms[] = VTS_VARIANT VTS_I4;
    Call(dispatch_, recordset::kSave, parms, &destination, nFormat);
}
