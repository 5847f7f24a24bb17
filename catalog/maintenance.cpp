// Statements that maintain data and objects. Names stand between double quotes as they are given.
#include <algorithm>
#include <iterator>

#include "catalog/dbms_tag.h"
#include "tkkernel/driver.h"
#include "util/text.h"

using namespace tk::catalog;
using tk::util::OrEmpty;

namespace {

// Contract: the blanks of these texts, the doubled and the last ones too, are part of them.
constexpr char kDeleteAll[] = "DELETE  FROM \"%s\" ";
constexpr char kDeleteSome[] = "DELETE  FROM \"%s\" WHERE %s";
constexpr char kDropTable[] = "DROP TABLE \"%s\"";
constexpr char kDropView[] = "DROP VIEW \"%s\" ";
constexpr char kDropProcedure[] = "DROP PROCEDURE \"%s\" ";

constexpr char kTruncate[] = "TRUNCATE TABLE \"%s\" ";

constexpr struct {
    Dbms system;
    const char* format;
} kTruncateTable[] = {
    {Dbms::SqlServer, kTruncate},        {Dbms::Sybase, kTruncate}, {Dbms::Oracle, kTruncate},
    {Dbms::Db2, "DELETE FROM  \"%s\" "}, {Dbms::Unknown, ""},  // sent as it is
};

CString About(const char* name, const char* format) {
    CString sql;
    sql.Format(format, OrEmpty(name));
    return sql;
}

}  // namespace

int CTDatabase::Delete(const char* szTable, const char* szWhere) {
    CString condition = szWhere;
    condition.TrimLeft(' ');
    if (condition.IsEmpty()) return ExecuteSQL(About(szTable, kDeleteAll));
    CString sql;
    sql.Format(kDeleteSome, OrEmpty(szTable), szWhere);
    return ExecuteSQL(sql);
}

int CTDatabase::TruncateTable(const char* szTable) {
    const auto* row =
        std::ranges::find(kTruncateTable, DbmsOf(dbmsTag_), [](const auto& known) { return known.system; });
    return ExecuteSQL(About(szTable, row->format));
}

int CTDatabase::DropTable(const char* szTable) {
    return ExecuteSQL(About(szTable, kDropTable));
}

int CTDatabase::DropView(const char* szView) {
    return ExecuteSQL(About(szView, kDropView));
}

int CTDatabase::DropProcedure(const char* szProcedure) {
    return ExecuteSQL(About(szProcedure, kDropProcedure));
}
