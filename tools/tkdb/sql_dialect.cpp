#include "tools/tkdb/sql_dialect.h"

namespace tk::tools {
namespace {

/// What every connection can convert by its own tag, for a tag without a connection.
class Converter : public CTDatabase {
public:
    using CTDatabase::VeriFyDB2Pragramer;
    using CTDatabase::VeriFyOraclePragramer;
    using CTDatabase::VeriFySQLServerPragramer;
    using CTDatabase::VeriFySybasePragramer;
};

constexpr struct {
    Dialect dialect;
    const char* word;
    const char* name;  // what a database of that kind calls itself
    const char* tag;   // what the library knows it by
    CString (Converter::*convert)(const char*, const char*);
} kDialects[] = {
    {Dialect::SqlServer, "mssql", "Microsoft SQL Server", "Mic", &Converter::VeriFySQLServerPragramer},
    {Dialect::Sybase, "sybase", "ADAPTIVE SERVER ENTERPRISE", "ADA", &Converter::VeriFySybasePragramer},
    {Dialect::Db2, "db2", "DB2", "DB2", &Converter::VeriFyDB2Pragramer},
    {Dialect::Oracle, "oracle", "ORACLE", "ORA", &Converter::VeriFyOraclePragramer},
};

const auto* Find(Dialect dialect) {
    for (const auto& row : kDialects) {
        if (row.dialect == dialect) return &row;
    }
    return static_cast<decltype(&kDialects[0])>(nullptr);
}

}  // namespace

const std::map<std::string, Dialect>& DialectNames() {
    static const std::map<std::string, Dialect> names = [] {
        std::map<std::string, Dialect> made;
        for (const auto& row : kDialects)
            made.emplace(row.word, row.dialect);
        return made;
    }();
    return names;
}

std::string InDialect(const std::string& connection, Dialect dialect) {
    const auto* const row = Find(dialect);
    return row == nullptr ? connection : connection + ";DBMS Name={" + row->name + "}";
}

CString ConvertScript(const CString& script, Dialect from, Dialect to) {
    Converter database;
    const auto* const source = Find(from);
    const auto* const target = Find(to);
    if (source == nullptr || target == nullptr) return {};
    return (database.*source->convert)(script, target->tag);
}

}  // namespace tk::tools
