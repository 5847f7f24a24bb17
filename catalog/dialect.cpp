// Table scripts from one system's dialect into another's.
#include "catalog/dialect_rules.h"
#include "catalog/messages.h"
#include "tkkernel/driver.h"

using namespace tk::catalog;

namespace {

CString Converted(const char* script, Dbms source, Dbms target) {
    CString converted(script);
    converted.MakeUpper();
    for (const DialectRule& rule : DialectRules(source, target))
        rule.apply(converted, rule.from, rule.to);
    return converted;
}

}  // namespace

CString CTDatabase::VeriFySQLPragramer(const char* szScript, const char* szTarget) {
    switch (DbmsOf(dbmsTag_)) {
        case Dbms::SqlServer:
            return VeriFySQLServerPragramer(szScript, szTarget);
        case Dbms::Sybase:
            return VeriFySybasePragramer(szScript, szTarget);
        case Dbms::Db2:
            return VeriFyDB2Pragramer(szScript, szTarget);
        case Dbms::Oracle:
            return VeriFyOraclePragramer(szScript, szTarget);
        case Dbms::Unknown:
            break;
    }
    SetErrorString(kUnknownDbms, "");
    return {};
}

CString CTDatabase::VeriFySQLServerPragramer(const char* szScript, const char* szTarget) {
    // Contract: this one says it with full-width parentheses.
    if (DbmsOf(szTarget) == Dbms::Unknown) SetErrorString(kUnknownRdbmsWide, "");
    return Converted(szScript, Dbms::SqlServer, DbmsOf(szTarget));
}

CString CTDatabase::VeriFySybasePragramer(const char* szScript, const char* szTarget) {
    if (DbmsOf(szTarget) == Dbms::Unknown) SetErrorString(kUnknownRdbms, "");
    return Converted(szScript, Dbms::Sybase, DbmsOf(szTarget));
}

CString CTDatabase::VeriFyDB2Pragramer(const char* szScript, const char* szTarget) {
    if (DbmsOf(szTarget) == Dbms::Unknown) SetErrorString(kUnknownRdbms, "");
    return Converted(szScript, Dbms::Db2, DbmsOf(szTarget));
}

CString CTDatabase::VeriFyOraclePragramer(const char* szScript, const char* szTarget) {
    if (DbmsOf(szTarget) == Dbms::Unknown) SetErrorString(kUnknownRdbms, "");
    return Converted(szScript, Dbms::Oracle, DbmsOf(szTarget));
}
