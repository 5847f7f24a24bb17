// Names, types and number of the fields, and the provider properties.
#include "driver/guard.h"
#include "driver/ids.h"
#include "driver/invoke.h"
#include "driver/messages.h"
#include "tkkernel/row_access.h"
#include "tkkernel/util.h"

using namespace tk::driver;

namespace {

constexpr long kStateOpen = 1;

}  // namespace

int CTRecordset::GetFieldIndex(const char* szName) {
    CTFields fields = GetFields();
    // Contract: the count is read for every field, and the index travels as VT_I2.
    for (int i = 0; i < fields.GetCount(); ++i) {
        if (fields.GetItem(COleVariant(static_cast<short>(i))).GetName().CompareNoCase(szName) == 0) return i;
    }
    return -1;
}

CTField CTRecordset::GetField(const char* szName) {
    return GetFields().GetItem(COleVariant(szName, VT_BSTR));
}

long CTRecordset::GetFieldCount() {
    LONG count = 0;
    if (IRowAccess* rows = rows_.Of(dispatch_.m_lpDispatch); rows != nullptr && rows->GetFieldCount(&count) == S_OK) {
        return count;
    }
    return GetFields().GetCount();
}

CString CTRecordset::GetFieldName(long nIndex) {
    return GetFields().GetItem(COleVariant(nIndex)).GetName();
}

long CTRecordset::GetFieldType(VARIANT key) {
    return GetFields().GetItem(key).GetType();
}

CString CTRecordset::GetPropertyValue(const char* szName) {
    return Guard::Run(*this, kGetPropertyValueFailed, CString(), [&] {
        if (GetState() != kStateOpen) return CString();
        return Take(VariantToString, GetProperties().GetItem(COleVariant(szName, VT_BSTR)).GetValue());
    });
}

int CTRecordset::GetFieldNames(CStringArray& names) {
    return Guard::Run(*this, kGetFieldNamesFailed, 0, [&] {
        int visited = 0;
        if (!GetEof()) MoveFirst();
        for (; !GetEof(); MoveNext(), ++visited)
            names.Add(GetStringValue("COLUMN_NAME"));
        return visited;
    });
}

int CTRecordset::GetAllFieldNames(CStringArray& names) {
    return Guard::Run(*this, kGetFieldNamesFailed, 0, [&] {
        names.RemoveAll();
        for (long i = 0; i < GetFieldCount(); ++i)
            names.Add(GetFieldName(i));
        return static_cast<int>(names.GetSize());
    });
}

int CTRecordset::GetAllFieldNames(CString& names) {
    return Guard::Run(*this, kGetFieldNamesFailed, 0, [&] {
        names.Empty();
        int count = 0;
        for (; count < GetFieldCount(); ++count)
            names += GetFieldName(count) + ',';
        names.TrimRight(',');
        return count;
    });
}
