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
    const char* name;  // its first three letters are the tag
    CString (Converter::*convert)(const char*, const char*);
} kDialects[] = {
    {Dialect::SqlServer, "mssql", "Microsoft SQL Server", &Converter::VeriFySQLServerPragramer},
    {Dialect::Sybase, "sybase", "ADAPTIVE SERVER ENTERPRISE", &Converter::VeriFySybasePragramer},
    {Dialect::Db2, "db2", "DB2", &Converter::VeriFyDB2Pragramer},
    {Dialect::Oracle, "oracle", "ORACLE", &Converter::VeriFyOraclePragramer},
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

const char* TagOf(Dialect dialect) {
    static constexpr std::size_t kTagLength = 3;
    static const auto tags = [] {
        std::map<Dialect, std::string> made;
        for (const auto& row : kDialects)
            made.emplace(row.dialect, std::string(row.name, kTagLength));
        return made;
    }();
    const auto found = tags.find(dialect);
    return found == tags.end() ? "" : found->second.c_str();
}

CString ConvertScript(const CString& script, Dialect from, Dialect to) {
    Converter database;
    const auto* const row = Find(from);
    return row == nullptr ? CString() : (database.*row->convert)(script, TagOf(to));
}

}  // namespace tk::tools
