// Tables, views and procedures: lists of them, and whether one exists.
#include "catalog/dbms_tag.h"
#include "catalog/messages.h"
#include "catalog/schema_restrictions.h"
#include "driver/guard.h"
#include "tkkernel/util.h"
#include "util/text.h"

using namespace tk::catalog;
using tk::driver::Guard;
using tk::util::OrEmpty;

namespace {

// Names are inserted as they are.
constexpr char kOracleObjects[] = "SELECT OBJECT_NAME FROM OBJ WHERE OBJECT_TYPE='%s'";

}  // namespace

int CTDatabase::GetAllObjects(CStringArray& ar, const char* szType) {
    return Guard::Run(*this, kListObjectsFailed, 0, [&] {
        if (DbmsOf(dbmsTag_) == Dbms::Oracle) return ListOracleObjects(ar, szType);
        IDispatch* rowset = GetObjectSet(szType, nullptr);
        if (rowset == nullptr) return SetErrorString(kListObjectsFailed, GetLastErrorText());
        return ListColumn(rowset, "TABLE_NAME", ar);
    });
}

int CTDatabase::ListOracleObjects(CStringArray& ar, const char* szType) {
    CString sql;
    sql.Format(kOracleObjects, OrEmpty(szType));
    CTRecordset objects(this);
    if (!objects.OpenSQL(sql, 1)) return SetError("%s", static_cast<LPCTSTR>(objects.GetLastErrorString()));
    // Contract: here, unlike everywhere else, an empty list is a failure.
    if (objects.GetEof()) return 0;
    for (; !objects.GetEof(); objects.MoveNext())
        ar.Add(objects.GetStringValue(0L));
    return 1;
}

int CTDatabase::GetAllTables(CStringArray& ar) {
    return GetAllObjects(ar, "TABLE");
}

int CTDatabase::GetAllViews(CStringArray& ar) {
    return GetAllObjects(ar, "VIEW");
}

int CTDatabase::GetAllProcedures(CStringArray& ar) {
    if (DbmsOf(dbmsTag_) == Dbms::Oracle) return GetAllObjects(ar, "PROCEDURE");
    return Guard::Run(*this, kListObjectsFailed, 0, [&] {
        CStringArray names;
        if (!ListColumn(GetProcedureSet(GetCurSchema()), "PROCEDURE_NAME", names)) return 0;
        for (int i = 0; i < names.GetSize(); ++i) {
            // SQL Server reports "P_SAVE;1": the number of a procedure in its group.
            const int number = names[i].Find(';');
            ar.Add(number < 0 ? names[i] : names[i].Left(number));
        }
        return 1;
    });
}

int CTDatabase::IsObjectExist(const char* szName, const char* szType) {
    const CString type = szType;
    if (type.CompareNoCase("TABLE") != 0 && type.CompareNoCase("VIEW") != 0) return 0;
    // Contract: what has columns exists; whether it is a table or a view is not looked at.
    return HasRows(GetFieldSet(szName, nullptr));
}

int CTDatabase::IsTableExist(const char* szName) {
    return IsObjectExist(szName, "TABLE");
}

int CTDatabase::IsViewExist(const char* szName) {
    return IsObjectExist(szName, "VIEW");
}

int CTDatabase::IsProcedureExist(const char* szName) {
    return Guard::Run(*this, kListObjectsFailed, 0, [&] {
        const CString name = szName;
        const int dot = name.Find('.');
        const CString schema = dot < 0 ? GetCurSchema() : name.Left(dot);
        // Contract: the name is asked for with its schema still in front of it.
        return HasRows(OpenSchema(kNamedProcedure.id, RestrictionArray(kNamedProcedure, {{1, schema}, {2, szName}})));
    });
}

/// @param rowset  taken over; may be null
int CTDatabase::HasRows(IDispatch* rowset) {
    return Guard::Run(*this, kListObjectsFailed, 0, [&] {
        COleDispatchDriver owner(rowset);  // until the recordset is there
        CTRecordset records;
        return ShowRowset(records, owner.DetachDispatch()) && !records.GetEof() ? 1 : 0;
    });
}
