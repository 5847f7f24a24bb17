#include "catalog/dialect_rules.h"

#include <algorithm>
#include <iterator>

#include "tkkernel/util.h"

namespace tk::catalog {
namespace {

constexpr char kUnitEnd[] = ")";

/// What stands between the first `head` and the bracket that closes it.
CString FirstUnit(const CString& script, const char* head) {
    return GetUnit(head, script, kUnitEnd);
}

/// Contract: replaces the first unit and those with the same text in brackets; units with another text stay.
void ReplaceUnit(CString& script, const char* head, const char* to) {
    script.Replace(head + FirstUnit(script, head) + kUnitEnd, to);
}

/// The same, and the text in brackets follows the replacement.
void UnwrapUnit(CString& script, const char* head, const char* to) {
    const CString unit = FirstUnit(script, head);
    script.Replace(head + unit + kUnitEnd, to + unit);
}

void MakeCapitals(CString& script, const char* /*from*/, const char* /*to*/) {
    script.MakeUpper();
}

// Contract: the order is the interface. A rule sees what the rules before it wrote, names and default values included,
// so some rules never find what they look for, and some words are replaced twice.

constexpr DialectRule kSqlServerToDb2[] = {
    {"NVARCHAR (", "LONG VARCHAR ", ReplaceUnit},
    {"DEFAULT", "WITH DEFAULT"},
    {"DATETIME", "TIMESTAMP"},
    {"FLOAT", "DOUBLE"},
    {"SMALLDATETIME", "DATE"},  // has become SMALLTIMESTAMP
    {"TINYINT", "SMALLINT"},
    {"NUMERIC", "DECIMAL"},
    {"TEXT", "BLOB"},
    {"NTEXT", "CLOB"},    // has become NBLOB
    {"IMAGE", "GRPHIC"},  // spelled so
    {"(255)", "(254)"},
    {"( 255 )", "( 254 )"},
    {nullptr, nullptr, MakeCapitals},
};

constexpr DialectRule kSqlServerToOracle[] = {
    {"NVARCHAR", "VARCHAR2"}, {"VARCHAR", "VARCHAR2"},  // NVARCHAR ends as VARCHAR22
    {"INTEGER", "NUMBER"},    {"DECIMAL", "NUMBER"},   {"NUMERIC", "NUMBER"}, {"DOUBLE", "NUMBER"},
    {"BINARY", "NUMBER"},  // VARBINARY ends as VARNUMBER
    {"TIMESTAMP", "DATE"},    {"DATETIME", "DATE"},    {"TEXT", "LONG"},      {"NTEXT", "LONG"},  // has become NLONG
    {"IMAGE", "LONG ROW"},
};

constexpr DialectRule kSybaseToSqlServer[] = {
    {"LONG VARCHAR", "VARCHAR (7999)"},
    {"WITH DEFAULT", "DEFAULT"},
    {"TIMESTAMP", "DATETIME"},
    {"DOUBLE", "FLOAT"},
    {"DATE", "SMALLDATETIME"},  // TIMESTAMP ends as SMALLDATETIMETIME
    {"SMALLINT", "TINYINT"},
    {"BLOB", "TEXT"},
    {"CLOB", "NTEXT"},
    {"GRPHIC", "IMAGE"},
    {nullptr, nullptr, MakeCapitals},
};

constexpr DialectRule kDb2ToOracle[] = {
    {"LONG VARCHAR", "LONG"}, {"VARCHAR", "VARCHAR2"}, {"INTEGER", "NUMBER"}, {"DECIMAL", "NUMBER"},
    {"DOUBLE", "NUMBER"},     {"BINARY", "NUMBER"},    {"TIMESTAMP", "DATE"}, {"GRPHIC", "LONG ROW"},
};

constexpr DialectRule kOracleToDb2[] = {
    {"DEFAULT (", "WITH DEFAULT ", UnwrapUnit},
    {"DATE", "TIMESTAMP"},
    {"FLOAT", "DOUBLE"},
    {"VARCHAR2", "VARCHAR"},
    {"NUMBER", "DECIMAL"},
    {"LONG", "LONG VARCHAR"},
    {"LONG ROW", "BLOB"},  // has become LONG VARCHAR ROW
    {nullptr, nullptr, MakeCapitals},
};

constexpr DialectRule kOracleToSqlServer[] = {
    {"DEFAULT (", "WITH DEFAULT ", UnwrapUnit},  // as for DB2
    {"DATE", "DATETIME"},
    {"VARCHAR2", "VARCHAR"},
    {"NUMBER", "DECIMAL"},
    {"LONG", "TEXT"},
    {"LONG ROW", "NTEXT"},  // has become TEXT ROW
    {nullptr, nullptr, MakeCapitals},
};

struct Pair {
    Dbms source;
    Dbms target;
    std::span<const DialectRule> rules;
};

constexpr Pair kPairs[] = {
    {Dbms::SqlServer, Dbms::Db2, kSqlServerToDb2},    {Dbms::SqlServer, Dbms::Oracle, kSqlServerToOracle},
    {Dbms::Sybase, Dbms::Db2, kSqlServerToDb2},       {Dbms::Sybase, Dbms::SqlServer, kSybaseToSqlServer},
    {Dbms::Db2, Dbms::SqlServer, kSybaseToSqlServer}, {Dbms::Db2, Dbms::Oracle, kDb2ToOracle},
    {Dbms::Oracle, Dbms::Db2, kOracleToDb2},          {Dbms::Oracle, Dbms::SqlServer, kOracleToSqlServer},
};

}  // namespace

void ReplaceAll(CString& script, const char* from, const char* to) {
    script.Replace(from, to);
}

std::span<const DialectRule> DialectRules(Dbms source, Dbms target) noexcept {
    const Pair* pair = std::ranges::find_if(
        kPairs, [&](const Pair& known) { return known.source == source && known.target == target; });
    return pair != std::end(kPairs) ? pair->rules : std::span<const DialectRule>();
}

}  // namespace tk::catalog
