// The indexes of a table: their names, their columns, and CREATE INDEX statements.
#include "catalog/dbms_tag.h"
#include "catalog/field_description.h"
#include "catalog/messages.h"
#include "catalog/quoted_list.h"
#include "driver/guard.h"
#include "driver/invoke.h"
#include "tkkernel/util.h"
#include "util/text.h"

using namespace tk::catalog;
using tk::driver::Guard;
using tk::driver::Take;
using tk::util::OrEmpty;

namespace {

// Names are inserted as they are.
constexpr char kDb2IndexColumns[] = "SELECT COLNAMES FROM SYSIBM.SYSINDEXES WHERE TBNAME='%s' AND NAME='%s'";

// Contract: what stands for the columns of a DB2 index that could not be asked for, in statements too.
constexpr char kDb2IndexFailed[] = "ERROR!";

}  // namespace

// ---- one index -----------------------------------------------------------------------------------------------------

CString CTDatabase::GetIndex(const char* szTable, const char* szIndex, const char* szSchema) {
    return Guard::Run(*this, kListObjectsFailed, CString(), [&] { return IndexColumns(szTable, szIndex, szSchema); });
}

/// GetIndex, without an end to exceptions.
CString CTDatabase::IndexColumns(const char* szTable, const char* szIndex, const char* szSchema) {
    switch (DbmsOf(dbmsTag_)) {
        case Dbms::SqlServer:
        case Dbms::Sybase:
        case Dbms::Oracle:
            return RowsetIndexColumns(GetIndexSet(szTable, szIndex, szSchema));
        case Dbms::Db2:
            return Db2IndexColumns(szTable, szIndex);
        case Dbms::Unknown:
            break;
    }
    SetErrorString(kUnknownDbms, "");
    return {};
}

/// @param rowset  taken over; may be null
CString CTDatabase::RowsetIndexColumns(IDispatch* rowset) {
    CTRecordset columns;
    if (!ShowRowset(columns, rowset)) return {};
    CString text;
    for (; !columns.GetEof(); columns.MoveNext())
        text += columns.GetStringValue("COLUMN_NAME") + ',';
    text.TrimRight(',');
    return text;
}

CString CTDatabase::Db2IndexColumns(const char* szTable, const char* szIndex) {
    CString sql;
    sql.Format(kDb2IndexColumns, OrEmpty(szTable), OrEmpty(szIndex));
    CTRecordset indexes(this);
    if (!indexes.OpenSQL(sql, 1)) {
        SetError("%s", static_cast<LPCTSTR>(indexes.GetLastErrorString()));
        return kDb2IndexFailed;
    }
    if (indexes.GetEof()) return {};
    // "+A-B": each name behind the direction in which it sorts.
    CString columns = indexes.GetStringValue("COLNAMES");
    columns.Replace('-', ',');
    columns.Replace('+', ',');
    columns.TrimLeft(',');
    columns.TrimRight(',');
    return columns;
}

// ---- the indexes of a table ----------------------------------------------------------------------------------------

int CTDatabase::GetIndexNames(const char* szTable, CStringArray& ar, const char* szSchema) {
    return Guard::Run(*this, kListObjectsFailed, 0, [&] { return ListIndexes(szTable, ar, szSchema); });
}

/// GetIndexNames, without an end to exceptions.
int CTDatabase::ListIndexes(const char* szTable, CStringArray& ar, const char* szSchema) {
    CTRecordset indexes;
    if (!ShowRowset(indexes, GetIndexSet(szTable, nullptr, szSchema))) return 0;
    // One row for each column of an index; SQL Server adds rows about the table itself, without a name.
    for (; !indexes.GetEof(); indexes.MoveNext()) {
        const CString name = indexes.GetStringValue("INDEX_NAME");
        if (Take(BooleanPart, indexes.GetValue("PRIMARY_KEY")) != VARIANT_FALSE) continue;
        if (name.IsEmpty() || name.CompareNoCase("NULL") == 0 || StringInArray(ar, name)) continue;
        ar.Add(name);
    }
    return 1;
}

int CTDatabase::GetAllIndexes(CStringArray& ar) {
    return Guard::Run(*this, kListObjectsFailed, 0, [&] {
        CStringArray tables;
        GetAllTables(tables);
        const int before = ar.GetSize();
        for (int i = 0; i < tables.GetSize(); ++i) {
            CStringArray names;  // apart: two tables may have an index of the same name
            GetIndexNames(tables[i], names, GetCurSchema());
            ar.Append(names);
        }
        return ar.GetSize() - before;
    });
}

int CTDatabase::GetIndexesContext(const char* szTable, CStringArray& ar) {
    return Guard::Run(*this, szTable, 0, [&] {
        CStringArray names;
        ListIndexes(szTable, names, nullptr);
        for (int i = 0; i < names.GetSize(); ++i) {
            CString statement = "CREATE INDEX \"" + names[i] + "\" ON \"" + OrEmpty(szTable) + "\" (" +
                                QuotedList(IndexColumns(szTable, names[i], nullptr)) + ")";
            statement.MakeUpper();
            ar.Add(statement);
        }
        return 1;
    });
}

CString CTDatabase::GetAllIndexName(const char* szTable) {
    return Guard::Run(*this, szTable, CString(), [&] {
        CStringArray names;
        ListIndexes(szTable, names, nullptr);
        CString text;
        // Contract: the columns, not the names; a column of two indexes is there twice.
        for (int i = 0; i < names.GetSize(); ++i)
            text += QuotedList(IndexColumns(szTable, names[i], nullptr)) + ',';
        text.TrimRight(',');
        return text;
    });
}
