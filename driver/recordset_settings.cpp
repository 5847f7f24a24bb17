// The Recordset properties that pass straight through: how it is opened, sorted and sent.
#include "driver/ids.h"
#include "driver/invoke.h"

using namespace tk::driver;

long CTRecordset::GetState() {
    return dispatch_.m_lpDispatch == nullptr ? 0 : GetLong(dispatch_, recordset::kState);
}

long CTRecordset::GetCacheSize() {
    return GetLong(dispatch_, recordset::kCacheSize);
}

void CTRecordset::SetCacheSize(long nSize) {
    PutLong(dispatch_, recordset::kCacheSize, nSize);
}

long CTRecordset::GetCursorType() {
    return GetLong(dispatch_, recordset::kCursorType);
}

void CTRecordset::SetCursorType(long nType) {
    PutLong(dispatch_, recordset::kCursorType, nType);
}

long CTRecordset::GetCursorLocation() {
    return GetLong(dispatch_, recordset::kCursorLocation);
}

void CTRecordset::SetCursorLocation(long nLocation) {
    PutLong(dispatch_, recordset::kCursorLocation, nLocation);
}

long CTRecordset::GetLockType() {
    return GetLong(dispatch_, recordset::kLockType);
}

void CTRecordset::SetLockType(long nType) {
    PutLong(dispatch_, recordset::kLockType, nType);
}

long CTRecordset::GetMaxRecords() {
    return GetLong(dispatch_, recordset::kMaxRecords);
}

void CTRecordset::SetMaxRecords(long nRecords) {
    PutLong(dispatch_, recordset::kMaxRecords, nRecords);
}

long CTRecordset::GetMarshalOptions() {
    return GetLong(dispatch_, recordset::kMarshalOptions);
}

void CTRecordset::SetMarshalOptions(long nOptions) {
    PutLong(dispatch_, recordset::kMarshalOptions, nOptions);
}

CString CTRecordset::GetSort() {
    return GetText(dispatch_, recordset::kSort);
}

void CTRecordset::SetSort(const char* szSort) {
    PutText(dispatch_, recordset::kSort, szSort);
}

CString CTRecordset::GetIndex() {
    return GetText(dispatch_, recordset::kIndex);
}

void CTRecordset::SetIndex(const char* szIndex) {
    PutText(dispatch_, recordset::kIndex, szIndex);
}

CString CTRecordset::GetDataMember() {
    return GetText(dispatch_, recordset::kDataMember);
}

void CTRecordset::SetDataMember(const char* szMember) {
    PutText(dispatch_, recordset::kDataMember, szMember);
}

int CTRecordset::GetStayInSync() {
    return GetFlag(dispatch_, recordset::kStayInSync);
}

void CTRecordset::SetStayInSync(int bStay) {
    static constexpr BYTE parms[] = VTS_BOOL;
    Put(dispatch_, recordset::kStayInSync, parms, bStay);
}
