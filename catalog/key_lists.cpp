// Primary and foreign keys.
#include "catalog/messages.h"
#include "driver/guard.h"
#include "tkkernel/util.h"
#include "util/text.h"

using namespace tk::catalog;
using tk::driver::Guard;
using tk::util::OrEmpty;

namespace {

// Names are inserted as they are.
constexpr char kDb2KeyColumns[] = "select colname from sysibm.syskeycoluse where tbname='%s' and tbcreator='%s'";

/// With commas between the names; commas at the end go, those of empty names and of names too.
CString Joined(const CStringArray& names) {
    CString text;
    for (int i = 0; i < names.GetSize(); ++i)
        text += names[i] + ',';
    text.TrimRight(',');
    return text;
}

}  // namespace

CString CTDatabase::GetPrimaryKey(const char* szTable) {
    CStringArray columns;
    return ListColumn(GetPrimaryKeySet(szTable, nullptr), "COLUMN_NAME", columns) ? Joined(columns) : CString();
}

CString CTDatabase::GetPrimaryKeyName(const char* szTable) {
    return Guard::Run(*this, kListObjectsFailed, CString(), [&] {
        CTRecordset keys;
        if (!ShowRowset(keys, GetPrimaryKeySet(szTable, nullptr)) || keys.GetEof()) return CString();
        return keys.GetStringValue("PK_NAME");
    });
}

CString CTDatabase::GetDB2PrimaryKey(const char* szTable, const char* szCreator) {
    CString sql;
    sql.Format(kDb2KeyColumns, OrEmpty(szTable), OrEmpty(szCreator));
    return Guard::Run(*this, sql, CString(), [&] {
        CTRecordset keys(this);
        if (!keys.OpenSQL(sql, 1)) {
            SetError("%s", static_cast<LPCTSTR>(keys.GetLastErrorString()));
            return CString();
        }
        CStringArray columns;
        for (; !keys.GetEof(); keys.MoveNext())
            columns.Add(keys.GetStringValue("colname"));
        return Joined(columns);
    });
}

int CTDatabase::GetForeignKeyNames(const char* szTable, CStringArray& ar) {
    return ListDistinct(GetForeignKeySet(szTable), "FK_NAME", ar);
}
