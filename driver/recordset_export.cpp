// Records as texts: one column of every record, the current record, and record after record as delimited text.
#include "driver/guard.h"
#include "driver/ids.h"
#include "driver/invoke.h"
#include "driver/messages.h"
#include "tkkernel/util.h"

using namespace tk::driver;

namespace {

constexpr long kFieldIsNullable = 0x20;  // of ADO's FieldAttributeEnum

template <typename Column>
int ReadColumn(CTRecordset& records, const char* context, Column column, CStringArray& values) {
    return Guard::Run(records, context, 0, [&] {
        int read = 0;
        if (!records.GetEof()) records.MoveFirst();
        for (; !records.GetEof(); records.MoveNext(), ++read)
            values.Add(records.GetStringValue(column));
        return read;
    });
}

/// Replaces the array by one text for each field of the current record; leaves it alone behind the last record.
template <typename TextOf>
int ReadRecord(CTRecordset& records, CStringArray& values, TextOf textOf) {
    return Guard::Run(records, kReadCurrentFailed, 0, [&] {
        if (records.GetEof()) return 0;
        values.RemoveAll();
        const long count = records.GetFieldCount();
        for (long i = 0; i < count; ++i)
            values.Add(textOf(i));
        return count > 0 ? 1 : 0;
    });
}

}  // namespace

CString CTRecordset::GetNullString(long nIndex) {
    CTField field = GetFields().GetItem(COleVariant(static_cast<short>(nIndex)));
    return (field.GetAttributes() & kFieldIsNullable) == 0 ? " NOT NULL" : "";
}

int CTRecordset::SelectOneColumn(long nIndex, CStringArray& values) {
    return ReadColumn(*this, kReadColumnFailed, nIndex, values);
}

int CTRecordset::SelectOneColumn(const char* szName, CStringArray& values) {
    return ReadColumn(*this, kReadColumnFailed, szName, values);
}

// ---- the current record --------------------------------------------------------------------------------------------

CString CTRecordset::GetCurRecordToString(const char* szSeparator) {
    const CString separator(szSeparator);
    recordText_.Empty();
    return Guard::Run(*this, kReadCurrentFailed, CString(), [&] {
        if (!GetEof()) JoinFields(GetFieldCount(), recordText_, separator, 1);
        return recordText_;
    });
}

int CTRecordset::SelectCurRecordToString(CStringArray& values, int bUseStr) {
    return ReadRecord(*this, values, [&](long i) { return FieldText(i, bUseStr); });
}

int CTRecordset::SelectCurRecordToTrimString(CStringArray& values) {
    return ReadRecord(*this, values, [&](long i) {
        CString text = GetStringValue(i);
        text.TrimLeft();
        text.TrimRight();
        return text;
    });
}

// ---- record after record -------------------------------------------------------------------------------------------

int CTRecordset::SelectFirstRecordToString(long nCount, CString& text, const char* szSeparator, int bUseStr) {
    const CString separator(szSeparator);  // apart, as it may lie in the text
    text.Empty();
    return Guard::Run(*this, kReadFirstFailed, 0, [&] {
        if (GetEof()) return 0;
        MoveFirst();
        JoinFields(nCount, text, separator, bUseStr);
        return 1;
    });
}

int CTRecordset::SelectNextRecordToString(long nCount, CString& text, const char* szSeparator, int bUseStr) {
    const CString separator(szSeparator);
    text.Empty();
    return Guard::Run(*this, kReadNextFailed, 0, [&] {
        MoveNext();
        if (GetEof()) return 0;
        JoinFields(nCount, text, separator, bUseStr);
        return 1;
    });
}

CString CTRecordset::FieldText(long nIndex, int bUseStr) {
    return bUseStr ? GetStringValueStr(nIndex) : GetStringValue(nIndex);
}

/// Appends the texts of the first fields, a separator behind each, and cuts the separators at the end off: all of them,
/// those of empty fields as well.
void CTRecordset::JoinFields(long nCount, CString& text, const CString& separator, int bUseStr) {
    text.GetBuffer(rowLength_);  // records are alike: room for this one as the last one needed it
    for (long i = 0; i < nCount; ++i) {
        text += FieldText(i, bUseStr);
        text += separator;
    }
    rowLength_ = text.GetLength();
    text.TrimRight(separator);
}
