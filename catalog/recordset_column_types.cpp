// The spelling of a column's type and default in the dialect of the recordset's tag.
#include "catalog/column_type.h"
#include "catalog/dbms_tag.h"
#include "catalog/messages.h"
#include "tkkernel/driver.h"

using namespace tk::catalog;

CString CTRecordset::GetFieldTypeStr(long nType, int nSize, int nPrecision, int nScale, int nLong, int nFixed) {
    switch (DbmsOf(dbmsTag_)) {
        case Dbms::SqlServer:
            return GetSQLFieldType(nType, nSize, nPrecision, nScale, nLong, nFixed);
        case Dbms::Sybase:
            return GetSYBASEFieldType(nType, nSize, nPrecision, nScale, nLong, nFixed);
        case Dbms::Db2:
            return GetDB2FieldType(nType, nSize, nPrecision, nScale, nLong, nFixed);
        case Dbms::Oracle:
            return GetORACLEFieldType(nType, nSize, nPrecision, nScale, nLong, nFixed);
        case Dbms::Unknown:
            break;
    }
    SetErrorString(kUnknownRdbms, "");
    return {};
}

CString CTRecordset::GetSQLFieldType(long nType, int nSize, int nPrecision, int nScale, int nLong, int nFixed) {
    return SpellType(SqlServerTypes(), {nType, nSize, nPrecision, nScale, nLong, nFixed});
}

CString CTRecordset::GetDB2FieldType(long nType, int nSize, int nPrecision, int nScale, int nLong, int nFixed) {
    return SpellType(Db2Types(), {nType, nSize, nPrecision, nScale, nLong, nFixed});
}

CString CTRecordset::GetORACLEFieldType(long nType, int nSize, int nPrecision, int nScale, int nLong, int nFixed) {
    return SpellType(OracleTypes(), {nType, nSize, nPrecision, nScale, nLong, nFixed});
}

CString CTRecordset::GetSYBASEFieldType(long nType, int nSize, int nPrecision, int nScale, int nLong, int nFixed) {
    return SpellType(SybaseTypes(), {nType, nSize, nPrecision, nScale, nLong, nFixed});
}

CString CTRecordset::FieldDefaultValue(int bHasDefault, const char* szDefault) {
    if (bHasDefault == 0 || szDefault == nullptr || *szDefault == '\0') return {};
    CString clause;
    switch (DbmsOf(dbmsTag_)) {
        case Dbms::SqlServer:
        case Dbms::Sybase:
        case Dbms::Oracle:
            clause.Format("\tDEFAULT (%s)", szDefault);
            break;
        case Dbms::Db2:
            clause.Format("\tWITH DEFAULT %s", szDefault);
            break;
        case Dbms::Unknown:
            SetErrorString(kUnknownRdbms, "");
            break;
    }
    return clause;
}
