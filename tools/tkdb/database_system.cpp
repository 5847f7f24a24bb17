#include "tools/tkdb/database_system.h"

#include <fmt/format.h>

#include <cstdint>

namespace tk::tools {

DatabaseSystem SystemOf(CTDatabase& database) {
    static constexpr struct {
        std::string_view word;  // in "DBMS Name"
        DatabaseSystem system;
    } kNames[] = {{"SQLite", DatabaseSystem::Sqlite},
                  {"PostgreSQL", DatabaseSystem::Postgres},
                  {"MariaDB", DatabaseSystem::MariaDb},
                  {"MySQL", DatabaseSystem::MariaDb}};
    const std::string name(database.GetDbmsName());
    for (const auto& row : kNames) {
        if (name.find(row.word) != std::string::npos) return row.system;
    }
    return DatabaseSystem::Other;
}

bool HasScripts(CTDatabase& database) {
    const CString tag = TagOf(database);
    for (const char* known : {"Mic", "MS ", "ADA", "DB2", "ORA"}) {
        if (tag.CompareNoCase(known) == 0) return true;
    }
    return false;
}

CString TagOf(CTDatabase& database) {
    constexpr int kTagLength = 3;
    return database.GetDbmsName().Left(kTagLength);
}

bool UndoesTables(CTDatabase& database) {
    constexpr char kLikeRows[] = "8";
    return database.GetPropertyValue("Transaction DDL") == kLikeRows;
}

std::string NameApart(std::string_view purpose, std::string_view table) {
    std::uint64_t hash = 0xCBF29CE484222325;  // FNV-1a
    for (const char c : table)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    return fmt::format("tkdb_{}_{:016x}", purpose, hash);
}

std::string Quoted(std::string_view name) {
    std::string quoted = "\"";
    for (const char c : name)
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + "\"";
}

int UseQuotes(CTDatabase& database) {
    if (SystemOf(database) != DatabaseSystem::MariaDb) return 1;
    return database.ExecuteSQL("SET SESSION sql_mode = CONCAT(@@sql_mode, ',ANSI_QUOTES')");
}

}  // namespace tk::tools
