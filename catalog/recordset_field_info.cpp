// Records and column lines from a recordset that shows the columns of one table.
#include "catalog/field_description.h"
#include "catalog/messages.h"
#include "driver/guard.h"
#include "util/text.h"

using namespace tk::catalog;
using tk::driver::Guard;

int CTRecordset::GetFieldInfoCurrent(_tagFIELDINFO* pInfo) {
    FieldDescription field;
    if (pInfo == nullptr || !DescribeField(*this, field)) return 0;
    StoreField(field, *pInfo);
    return 1;
}

int CTRecordset::GetFieldInfo(long nIndex, _tagFIELDINFO* pInfo) {
    return Guard::Run(*this, kGetFieldInfoFailed, 0, [&] {
        if (GetEof() || nIndex < 0 || nIndex >= GetRecordCount()) return 0;
        constexpr short kFromFirst = 1;
        MoveFirst();
        Move(nIndex, COleVariant(kFromFirst));
        return GetFieldInfoCurrent(pInfo);
    });
}

int CTRecordset::GetFieldInfo(const char* szName, _tagFIELDINFO* pInfo) {
    return Guard::Run(*this, kGetFieldInfoFailed, 0, [&] {
        const char* wanted = tk::util::OrEmpty(szName);
        const long count = GetRecordCount();
        // Of no rows there is no first one to go to, and no name to find.
        if (count > 0) MoveFirst();
        long index = 0;
        for (; index < count && GetStringValue("COLUMN_NAME") != wanted; ++index)
            MoveNext();
        return GetFieldInfo(index, pInfo);
    });
}

CString CTRecordset::GetFieldsStruct() {
    return Guard::Run(*this, kGetFieldsStructFailed, CString(), [&] {
        CString lines;
        if (!GetEof()) MoveFirst();
        const long count = GetRecordCount();
        for (long i = 0; i < count; ++i) {
            FieldDescription field;
            if (!DescribeField(*this, field)) break;
            lines.AppendFormat("\r\n\t\"%s\"\t%s%s%s%s,", static_cast<LPCTSTR>(field.name),
                               static_cast<LPCTSTR>(field.type), field.nullable != 0 ? "" : "\t\t", field.NullText(),
                               static_cast<LPCTSTR>(FieldDefaultValue(field.hasDefault, field.defaultText)));
            MoveNext();
        }
        lines.TrimRight(',');
        return lines;
    });
}
