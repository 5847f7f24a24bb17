#include "tools/tkdb/table_maker.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <span>

#include "tools/tkdb/column_type_text.h"
#include "tools/tkdb/database_system.h"

namespace tk::tools {
namespace {

/// What a column of an ADO type is called; {0} is the size or precision, {1} the scale. A size that is not known, or
/// beyond what the systems take, makes a text or binary without limit of it.
constexpr struct {
    long type;
    const char* words[static_cast<std::size_t>(DatabaseSystem::Other)];  // of each system
    long unlimited = 0;                                                  // the type that stands in for it then
} kTypes[] = {
    {2, {"smallint", "smallint", "smallint"}},
    {3, {"integer", "integer", "integer"}},
    {4, {"real", "real", "float"}},
    {5, {"double", "double precision", "double"}},
    {6, {"decimal(19,4)", "numeric(19,4)", "decimal(19,4)"}},
    {7, {"timestamp", "timestamp", "datetime(6)"}},
    {11, {"boolean", "boolean", "boolean"}},
    {14, {"decimal({0},{1})", "numeric({0},{1})", "decimal({0},{1})"}, 5},
    {16, {"smallint", "smallint", "smallint"}},
    {17, {"smallint", "smallint", "smallint"}},
    {18, {"integer", "integer", "integer"}},
    {19, {"bigint", "bigint", "bigint"}},
    {20, {"bigint", "bigint", "bigint"}},
    {21, {"decimal(20,0)", "numeric(20,0)", "decimal(20,0)"}},
    {72, {"varchar(38)", "uuid", "varchar(38)"}},
    {128, {"blob", "bytea", "varbinary({0})"}, 205},
    {129, {"char({0})", "char({0})", "char({0})"}, 201},
    {130, {"char({0})", "char({0})", "char({0})"}, 201},
    {131, {"decimal({0},{1})", "numeric({0},{1})", "decimal({0},{1})"}, 5},
    {133, {"date", "date", "date"}},
    {134, {"time", "time", "time"}},
    {135, {"timestamp", "timestamp", "datetime(6)"}},
    {200, {"varchar({0})", "varchar({0})", "varchar({0})"}, 201},
    {201, {"text", "text", "longtext"}},
    {202, {"varchar({0})", "varchar({0})", "varchar({0})"}, 201},
    {203, {"text", "text", "longtext"}},
    {204, {"blob", "bytea", "varbinary({0})"}, 205},
    {205, {"blob", "bytea", "longblob"}},
};

constexpr long kLongestSize = 4000;
constexpr long kInteger = 3;
constexpr long kBigInteger = 20;

/// "" for a type without a word.
std::string TypeWord(long type, const _tagFIELDINFO& field, DatabaseSystem system) {
    const long size = type == 14 || type == 131 ? field.nPrecision : field.nSize;
    for (const auto& row : kTypes) {
        if (row.type != type) continue;
        const bool isLimited = size > 0 && size <= kLongestSize;
        if (row.unlimited != 0 && !isLimited) return TypeWord(row.unlimited, field, system);
        return fmt::format(fmt::runtime(row.words[static_cast<std::size_t>(system)]), size, field.nScale);
    }
    return {};
}

/// The columns of an index by its name, and whether it is unique.
struct Index {
    std::vector<std::string> columns;
    bool isUnique = false;
    bool isPartial = false;
};

std::map<std::string, Index> IndexesOf(CTDatabase& source, const std::string& table) {
    std::map<std::string, Index> indexes;
    CTRecordset rows(&source);
    const COleDispatchDriver rowset(source.GetIndexSet(table.c_str(), nullptr, nullptr));
    if (rows.OpenField(rowset.m_lpDispatch) == 0) return indexes;
    for (; !rows.GetEof(); rows.MoveNext()) {
        const std::string name(rows.GetStringValue("INDEX_NAME"));
        if (name.empty() || rows.GetIntValue("PRIMARY_KEY") != 0) continue;
        Index& index = indexes[name];
        index.columns.emplace_back(rows.GetStringValue("COLUMN_NAME"));
        index.isUnique = rows.GetIntValue("UNIQUE") != 0;
        index.isPartial = !rows.GetStringValue("FILTER_CONDITION").IsEmpty();
    }
    return indexes;
}

std::string List(std::span<const std::string> names) {
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + Quoted(name);
    return list;
}

std::vector<std::string> KeyOf(CTDatabase& source, const std::string& table) {
    std::vector<std::string> key;
    CTRecordset rows(&source);
    const COleDispatchDriver rowset(source.GetPrimaryKeySet(table.c_str(), nullptr));
    if (rows.OpenField(rowset.m_lpDispatch) == 0) return key;
    for (; !rows.GetEof(); rows.MoveNext())
        key.emplace_back(rows.GetStringValue("COLUMN_NAME"));
    return key;
}

CString MakeByTypes(CTDatabase& source, const std::string& table, DatabaseSystem to, TableScripts& scripts) {
    const DatabaseSystem from = SystemOf(source);
    CTRecordset columns(&source);
    const COleDispatchDriver rowset(source.GetFieldSet(table.c_str(), nullptr));
    if (columns.OpenField(rowset.m_lpDispatch) == 0) return columns.GetLastErrorString();
    const std::vector<std::string> key = KeyOf(source, table);
    std::set<std::string> names;
    std::string lines;
    for (; !columns.GetEof(); columns.MoveNext()) {
        _tagFIELDINFO field = {};
        if (columns.GetFieldInfoCurrent(&field) == 0) return columns.GetLastErrorString();
        long type = ExactType(columns.GetIntValue("DATA_TYPE"), field.nFlags);
        // Integers of a file have 64 bits, whatever they are called.
        if (from == DatabaseSystem::Sqlite && type == kInteger) type = kBigInteger;
        const std::string name(columns.GetStringValue("COLUMN_NAME"));
        names.insert(name);
        const std::string word = TypeWord(type, field, to);
        if (word.empty()) return ("no type for column " + name).c_str();
        lines += (lines.empty() ? "" : ", ") + Quoted(name) + " " + word + (field.nNullable != 0 ? "" : " NOT NULL");
    }
    if (lines.empty()) return ("no such table: " + table).c_str();
    if (!key.empty()) lines += ", PRIMARY KEY (" + List(key) + ")";
    scripts.name = table;
    scripts.made = CommitsTables(to) ? NameApart("copy", table) : table;
    scripts.create = "CREATE TABLE " + Quoted(scripts.made) + " (" + lines + ")";
    for (const auto& [name, index] : IndexesOf(source, table)) {
        const bool isOfColumns =
            std::ranges::all_of(index.columns, [&](const std::string& column) { return names.contains(column); });
        if (index.isPartial || !isOfColumns) {
            scripts.leftOut.push_back(name);
            continue;
        }
        scripts.indexes.push_back(fmt::format("CREATE {}INDEX {} ON {} ({})", index.isUnique ? "UNIQUE " : "",
                                              Quoted(name), Quoted(scripts.made), List(index.columns)));
    }
    return "";
}

CString MakeByScript(CTDatabase& source, const std::string& table, CTDatabase& target, TableScripts& scripts) {
    const CString script = source.GetTableStruct(table.c_str());
    if (script.IsEmpty()) return source.GetLastErrorString();
    const CString converted = source.VeriFySQLPragramer(script, TagOf(target));
    if (converted.IsEmpty()) return source.GetLastErrorString();
    CStringArray indexes;
    if (source.GetIndexesContext(table.c_str(), indexes) == 0) return source.GetLastErrorString();
    CString name(table.c_str());
    name.MakeUpper();
    scripts.name = name;
    scripts.made = scripts.name;
    scripts.create = converted;
    for (int i = 0; i < static_cast<int>(indexes.GetSize()); ++i)
        scripts.indexes.emplace_back(indexes.GetAt(i));
    return "";
}

}  // namespace

CString MakeScripts(CTDatabase& source, const std::string& table, CTDatabase& target, TableScripts& scripts) {
    if (HasScripts(source) && HasScripts(target)) return MakeByScript(source, table, target, scripts);
    const DatabaseSystem to = SystemOf(target);
    if (to == DatabaseSystem::Other)
        return "the target is no database system that tables can be made in: " + target.GetDbmsName();
    return MakeByTypes(source, table, to, scripts);
}

}  // namespace tk::tools
