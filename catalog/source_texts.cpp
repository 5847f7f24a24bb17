// The stored texts of views and procedures, each read the way that the database system offers.
#include <algorithm>
#include <iterator>

#include "catalog/dbms_tag.h"
#include "catalog/messages.h"
#include "driver/guard.h"
#include "util/text.h"

using namespace tk::catalog;
using tk::driver::Guard;
using tk::util::OrEmpty;

namespace {

struct SourceQuery {
    Dbms system;
    const char* view;
    const char* procedure;
};

constexpr char kHelpText[] = "SP_HELPTEXT \"%s\"";

// Names are inserted as they are. Oracle's views are asked for with the current schema in front of the name.
constexpr SourceQuery kSourceQueries[] = {
    {Dbms::SqlServer, kHelpText, kHelpText},
    {Dbms::Sybase, kHelpText, kHelpText},
    {Dbms::Db2, "SELECT VARCHAR(TEXT) FROM SYSIBM.SYSVIEWS WHERE NAME='%s'",
     "SELECT VARCHAR(TEXT) FROM SYSIBM.SYSPROCEDURES WHERE PROCNAME='%s'"},
    {Dbms::Oracle, "SELECT TEXT FROM DBA_VIEWS WHERE OWNER='%s' AND VIEW_NAME='%s'",
     "SELECT TEXT FROM USER_SOURCE WHERE NAME='%s' AND TYPE='PROCEDURE'"},
};

/// null for an unknown system
const SourceQuery* QueryOf(Dbms system) {
    const SourceQuery* query = std::ranges::find(kSourceQueries, system, &SourceQuery::system);
    return query != std::end(kSourceQueries) ? query : nullptr;
}

}  // namespace

CString CTDatabase::GetViewContext(const char* szView) {
    return Guard::Run(*this, szView, CString(), [&] {
        const SourceQuery* query = QueryOf(DbmsOf(dbmsTag_));
        if (query == nullptr) {
            SetErrorString(kUnknownRdbms, "");
            return CString();
        }
        CString sql;
        if (query->system == Dbms::Oracle) {
            sql.Format(query->view, static_cast<LPCTSTR>(GetCurSchema()), OrEmpty(szView));
        } else {
            sql.Format(query->view, OrEmpty(szView));
        }
        return SourceText(sql);
    });
}

CString CTDatabase::GetProcedureContext(const char* szProcedure) {
    return Guard::Run(*this, szProcedure, CString(), [&] {
        const SourceQuery* query = QueryOf(DbmsOf(dbmsTag_));
        if (query == nullptr) {
            SetErrorString(kUnknownDbms, "");  // Contract: worded differently from that of views
            return CString();
        }
        CString sql;
        sql.Format(query->procedure, OrEmpty(szProcedure));
        return SourceText(sql);
    });
}

/// The first column of every row, with nothing between the rows: lines bring their ends with them.
CString CTDatabase::SourceText(const CString& sql) {
    return Guard::Run(*this, sql, CString(), [&] {
        CTRecordset lines(this);
        CString text;
        if (!lines.OpenSQL(sql, 1)) {
            SetError("%s", static_cast<LPCTSTR>(lines.GetLastErrorString()));
            return text;
        }
        for (; !lines.GetEof(); lines.MoveNext())
            text += lines.GetStringValue(0L);
        return text;
    });
}
