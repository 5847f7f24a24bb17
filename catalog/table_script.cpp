// The CREATE TABLE script of a table, and the records of its columns.
#include "catalog/field_description.h"
#include "catalog/quoted_list.h"
#include "driver/guard.h"
#include "driver/messages.h"
#include "tkkernel/util.h"
#include "util/text.h"

using namespace tk::catalog;
using tk::driver::Guard;
using tk::util::OrEmpty;

namespace {

/// @param keys  column names with commas between them
CString KeyClause(const CString& keys) {
    return keys.IsEmpty() ? CString() : ",\r\n\tPRIMARY KEY (" + QuotedList(keys) + ")";
}

}  // namespace

/// Shows the columns of a table; here, unlike in the lists, a closed connection is a failure with a text.
int CTDatabase::ShowColumns(CTRecordset& columns, const char* szTable) {
    constexpr long kStateOpen = 1;
    if (GetState() != kStateOpen) return SetError("%s", tk::driver::kDatabaseNotOpened);
    return ShowRowset(columns, GetFieldSet(szTable, nullptr));
}

CString CTDatabase::GetTableStruct(const char* szTable) {
    return Guard::Run(*this, szTable, CString(), [&] {
        const CString key = KeyClause(GetPrimaryKey(szTable));
        CTRecordset columns;
        if (!ShowColumns(columns, szTable)) return CString();
        CString script;
        script.Format("CREATE TABLE \"%s\" (%s %s)", OrEmpty(szTable), static_cast<LPCTSTR>(columns.GetFieldsStruct()),
                      static_cast<LPCTSTR>(key));
        // Contract: names, types and defaults alike.
        script.MakeUpper();
        return script;
    });
}

int CTDatabase::GetTableStruct(const char* szTable, CTArray<_tagFIELDINFO, _tagFIELDINFO&>& arFields) {
    return Guard::Run(*this, szTable, 0, [&] {
        const CString keys = GetPrimaryKey(szTable);
        arFields.SetSize(0);
        CTRecordset columns;
        if (!ShowColumns(columns, szTable)) return 0;
        const long count = columns.GetRecordCount();
        for (long i = 0; i < count; ++i) {
            _tagFIELDINFO record = {};
            if (!columns.GetFieldInfoCurrent(&record))
                return SetError("%s", static_cast<LPCTSTR>(columns.GetLastErrorString()));
            // Contract: the name anywhere in the text of the keys, so the key "USERID" marks the column "ID" too.
            record.nPrimaryKey = FindStringNoCase(keys, record.szName) >= 0 ? 1 : 0;
            arFields.SetAtGrow(static_cast<int>(i), record);
            columns.MoveNext();
        }
        return 1;
    });
}
