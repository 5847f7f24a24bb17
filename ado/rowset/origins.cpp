#include "ado/rowset/origins.h"

#include <tkwin32/text.h>

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include "ado/odbc/ascii.h"
#include "ado/odbc/column_attribute.h"
#include "ado/odbc/diagnostics.h"
#include "ado/odbc/parameter.h"
#include "ado/odbc/physical_connection.h"
#include "ado/odbc/prepared_text.h"
#include "ado/odbc/server_call.h"
#include "ado/rowset/row_set.h"
#include "ado/rowset/type_map.h"
#include "ado/rowset/value.h"

namespace tk::ado {
namespace {

int Searchable(SQLLEN odbc) {
    switch (odbc) {
        case SQL_PRED_NONE:
            return 1;
        case SQL_PRED_CHAR:
            return 2;
        case SQL_PRED_BASIC:
            return 3;
        default:
            return 4;
    }
}

/// What the driver tells of a prepared statement.
void DescribePrepared(Session& session, std::string_view sql, std::span<Column> columns, LONG timeoutSeconds) {
    PhysicalConnection& connection = session.Physical();
    PreparedText statement(session, sql, timeoutSeconds);
    SQLSMALLINT count = 0;
    statement.Ask([&](SQLHSTMT handle) { return Odbc().NumResultCols(handle, &count); });
    if (static_cast<std::size_t>(count) != columns.size()) return;
    const ServerCall call(connection.Profile(), timeoutSeconds);  // a driver asks the server about base tables
    int number = 0;
    for (Column& column : columns) {
        ++number;
        column.isCaseSensitive = NumberAttribute(statement.Get(), number, SQL_DESC_CASE_SENSITIVE, 0) != 0;
        column.searchable =
            Searchable(NumberAttribute(statement.Get(), number, SQL_DESC_SEARCHABLE, SQL_PRED_SEARCHABLE));
        column.isAutoIncrement = NumberAttribute(statement.Get(), number, SQL_DESC_AUTO_UNIQUE_VALUE, 0) == SQL_TRUE;
        const std::string_view opaque = connection.Profile().opaqueType;
        column.isOpaque = !opaque.empty() && TextAttribute(statement.Get(), number, SQL_DESC_TYPE_NAME) == opaque;
        if (!connection.Profile().describesBase) continue;
        column.baseTable = TextAttribute(statement.Get(), number, SQL_DESC_BASE_TABLE_NAME);
        column.isExpression = column.baseTable.empty();
        if (column.isExpression) continue;
        column.baseCatalog = TextAttribute(statement.Get(), number, SQL_DESC_CATALOG_NAME);
        column.baseSchema = TextAttribute(statement.Get(), number, SQL_DESC_SCHEMA_NAME);
        column.baseColumn = TextAttribute(statement.Get(), number, SQL_DESC_BASE_COLUMN_NAME);
        // The driver calls every one of these by the same wrong name.
        const std::string label = text::Utf16ToUtf8(column.name);
        const auto& hidden = connection.Profile().systemColumns;
        if (std::ranges::find(hidden, label) != hidden.end()) column.baseColumn = label;
    }
}

/// For a driver that gives the alias for the base column: the names as the text has them.
void TakeColumnsFromText(std::string_view sql, std::span<Column> columns) {
    const std::vector<std::string> list = ReadSelectList(sql);
    const auto stars = static_cast<std::size_t>(std::ranges::count(list, "*"));
    // Several stars cannot be told apart; without any the list is the columns one by one.
    const bool isPlain = !list.empty() && stars <= 1 && list.size() - stars <= columns.size() &&
                         (stars == 1 || list.size() == columns.size());
    const std::size_t starColumns = isPlain ? columns.size() - (list.size() - stars) : 0;
    std::size_t at = 0;
    for (const std::string& name : list) {
        if (!isPlain) break;
        if (name != "*") {
            columns[at++].baseColumn = name;
            continue;
        }
        for (std::size_t i = 0; i < starColumns; ++i, ++at) {
            columns[at].baseColumn = text::Utf16ToUtf8(columns[at].name);
        }
    }
    for (Column& column : columns) {
        if (!isPlain || column.baseTable.empty()) column.baseColumn.clear();
    }
}

/// One column of a table.
struct TableColumn {
    std::string name;
    bool isKey = false;
    bool isAutoIncrement = false;
    bool isNullable = true;
};

std::string QuotedText(std::string_view text) {
    std::string quoted = "'";
    for (const char letter : text) {
        if (letter == '\'') quoted.push_back('\'');
        quoted.push_back(letter);
    }
    return quoted.append("'");
}

bool IsSameTable(const Column& first, const Column& second) {
    return first.baseTable == second.baseTable && first.baseSchema == second.baseSchema &&
           first.baseCatalog == second.baseCatalog;
}

/// The rows of a small query, every cell as text.
std::vector<std::vector<std::string>> Ask(Session& session, Statement statement) {
    std::vector<std::vector<std::string>> table;
    if (!statement.HasRows()) return table;
    // The session is borrowed: the rows are read to the end here.
    const std::shared_ptr<Session> borrowed(&session, [](Session*) {});
    const auto rows = RowSet::Fetch(std::move(statement), borrowed, {});
    for (std::size_t row = 0; rows->HasRow(row); ++row) {
        auto& cells = table.emplace_back();
        for (std::size_t i = 0; i < rows->Columns().size(); ++i) {
            const Cell cell = rows->At(row, i);
            cells.emplace_back(cell.text.data() != nullptr ? std::string(cell.text) : std::to_string(cell.integer));
        }
    }
    return table;
}

std::vector<std::vector<std::string>> Ask(Session& session, const std::string& sql, const ExecuteOptions& options) {
    return Ask(session, session.Execute(sql, options));
}

/// For a driver that tells no base tables: the one that a plain SELECT reads, and its columns.
void TakeTableFromText(Session& session, std::string_view sql, std::span<Column> columns,
                       const ExecuteOptions& options) {
    std::vector<std::string> name = ReadOnlyTable(sql);
    if (name.empty()) return;
    constexpr std::size_t kParts = 3;
    while (name.size() < kParts)
        name.insert(name.begin(), std::string());
    for (Column& column : columns) {
        column.baseTable = name.back();
        column.baseSchema = name[name.size() - 2];
        column.baseCatalog = name[name.size() - 3];
    }
    TakeColumnsFromText(sql, columns);
    CatalogCall call;
    call.function = CatalogCall::Function::Columns;
    call.catalog = name[name.size() - 3];
    call.schema = name[name.size() - 2];
    call.table = name.back();
    constexpr std::size_t kTableName = 2, kColumnName = 3;
    std::vector<std::string> known;
    for (const auto& row : Ask(session, session.Catalog(call, options))) {
        // The name was a pattern to the driver.
        if (row.size() > kColumnName && EqualsNoCase(row[kTableName], name.back())) known.push_back(row[kColumnName]);
    }
    for (Column& column : columns) {
        const auto found =
            std::ranges::find_if(known, [&](const auto& each) { return EqualsNoCase(each, column.baseColumn); });
        column.isExpression = found == known.end();
        column.baseColumn = column.isExpression ? std::string() : *found;
        if (column.isExpression) column.baseTable.clear();
    }
}

/// Without a primary key: the columns of the first unique index that no NULL can be in.
void TakeUniqueIndex(std::vector<TableColumn>& columns,
                     const std::map<std::string, std::vector<std::string>>& indexes) {
    for (const auto& [name, members] : indexes) {
        std::vector<TableColumn*> found;
        for (const std::string& member : members) {
            const auto column = std::ranges::find_if(
                columns, [&](const TableColumn& each) { return !each.isNullable && EqualsNoCase(each.name, member); });
            if (column != columns.end()) found.push_back(&*column);
        }
        if (found.empty() || found.size() != members.size()) continue;
        for (TableColumn* column : found)
            column->isKey = true;
        return;
    }
}

bool HasKey(const std::vector<TableColumn>& columns) {
    return std::ranges::any_of(columns, [](const TableColumn& each) { return each.isKey; });
}

/// @param schema  set to the one that the table is in
std::vector<TableColumn> AskPragma(Session& session, const std::string& table, const ExecuteOptions& options,
                                   std::string& schema) {
    const auto schemas = Ask(
        session, "select schema from pragma_table_list where name = " + QuotedText(table) + " collate nocase", options);
    // The driver does not tell the schema: of two tables of one name, one attached or temporary, it may be either.
    if (schemas.size() != 1) return {};
    schema = schemas[0][0];
    std::vector<TableColumn> columns;
    std::size_t keys = 0;
    bool isRowId = false;
    for (const auto& row :
         Ask(session, "select name, type, \"notnull\", pk from pragma_table_xinfo(" + QuotedText(table) + ")",
             options)) {
        TableColumn column;
        column.name = row[0];
        column.isKey = row[3] != "0";
        // Contract: only the exact type INTEGER makes the key the row's own number.
        if (column.isKey) isRowId = EqualsNoCase(row[1], "INTEGER");
        keys += column.isKey ? 1 : 0;
        column.isNullable = row[2] == "0";
        columns.push_back(std::move(column));
    }
    for (TableColumn& column : columns) {
        if (!column.isKey || keys != 1 || !isRowId) continue;
        column.isAutoIncrement = true;
        column.isNullable = false;
    }
    if (HasKey(columns)) return columns;
    std::map<std::string, std::vector<std::string>> indexes;
    for (const auto& row : Ask(session,
                               "select l.name, i.name from pragma_index_list(" + QuotedText(table) +
                                   ") l, pragma_index_info(l.name) i where l.\"unique\" = 1 and "
                                   "l.partial = 0 order by l.name, i.seqno",
                               options)) {
        indexes[row[0]].push_back(row[1]);
    }
    TakeUniqueIndex(columns, indexes);
    return columns;
}

/// By the catalog functions; the columns are those of the result, which is all that an update can use, and its key.
std::vector<TableColumn> AskCatalog(Session& session, std::span<const Column> result, const Column& of,
                                    const ExecuteOptions& options) {
    std::vector<TableColumn> columns;
    for (const Column& column : result) {
        if (!IsSameTable(column, of)) continue;
        columns.push_back(
            {column.baseColumn, false, column.isAutoIncrement, (column.attributes & kFieldMayBeNull) != 0});
    }
    if (session.Profile().keySource == KeySource::Nothing) return columns;
    CatalogCall call;
    call.function = CatalogCall::Function::PrimaryKeys;
    call.catalog = of.baseCatalog;
    call.schema = of.baseSchema;
    call.table = of.baseTable;
    for (const auto& row : Ask(session, session.Catalog(call, options))) {
        if (row.size() <= 3) continue;
        bool isThere = false;
        for (TableColumn& column : columns) {
            if (column.name != row[3]) continue;
            isThere = column.isKey = true;
        }
        // What the result does not have is a part of the key nevertheless.
        if (!isThere) columns.push_back({row[3], true, false, false});
    }
    if (HasKey(columns)) return columns;
    call.function = CatalogCall::Function::Statistics;
    call.unique = true;
    std::map<std::string, std::vector<std::string>> indexes;
    for (const auto& row : Ask(session, session.Catalog(call, options))) {
        if (row.size() > 8 && !row[5].empty() && !row[8].empty()) indexes[row[5]].push_back(row[8]);
    }
    TakeUniqueIndex(columns, indexes);
    return columns;
}

/// A part of a key finds more rows than the one that is meant.
bool HoldsWholeKey(std::span<const Column> result, const Column& of, std::span<const TableColumn> table) {
    return std::ranges::all_of(table, [&](const TableColumn& each) {
        return !each.isKey || std::ranges::any_of(result, [&](const Column& column) {
            return IsSameTable(column, of) && EqualsNoCase(column.baseColumn, each.name);
        });
    });
}

/// How often the text names the table, by itself or through views. Twice, as a join of a table with itself does, and a
/// value of a row may be another row's than the key beside it is.
std::ptrdiff_t TimesNamed(Session& session, std::string_view sql, const std::string& table,
                          const ExecuteOptions& options, int depth = 0) {
    constexpr int kDeepest = 16;  // views of views
    const std::vector<std::string> named = ReadTables(sql);
    const auto times = std::ranges::count_if(named, [&](const std::string& name) { return EqualsNoCase(name, table); });
    if (times != 0) return times;
    const char* const query = session.Profile().viewQuery;
    if (query == nullptr) return std::ssize(named);  // another name for it
    if (depth == kDeepest) return 0;
    std::ptrdiff_t found = 0;
    for (const std::string& name : named) {
        Parameter parameter;
        parameter.cell = CellFromText(CellKind::Text, name);
        const auto texts = Ask(session, session.Execute(query, std::span<const Parameter>(&parameter, 1), options));
        if (texts.size() == 1) found += TimesNamed(session, texts[0][0], table, options, depth + 1);
    }
    return found;
}

void DescribeTable(Session& session, std::string_view sql, std::span<Column> columns, const Column& of,
                   const ExecuteOptions& options) {
    const bool byPragma = session.Profile().keySource == KeySource::Pragma;
    std::string qualifier;
    const auto table =
        byPragma ? AskPragma(session, of.baseTable, options, qualifier) : AskCatalog(session, columns, of, options);
    const bool isWhole = HoldsWholeKey(columns, of, table) && TimesNamed(session, sql, of.baseTable, options) == 1;
    const Column known = of;  // one of the columns changed below
    for (Column& column : columns) {
        if (!IsSameTable(column, known)) continue;
        column.qualifier = qualifier;
        const auto found = std::ranges::find_if(
            table, [&](const TableColumn& each) { return EqualsNoCase(each.name, column.baseColumn); });
        if (found == table.end()) {
            column.baseColumn.clear();  // no such column: better none than a wrong one
            continue;
        }
        if (byPragma) column.baseColumn = found->name;
        column.isKey = found->isKey && isWhole;
        column.isAutoIncrement = column.isAutoIncrement || found->isAutoIncrement;
        column.attributes &= ~kFieldUnknownUpdatable;
        column.attributes |= kFieldUpdatable;
        if (column.isKey) column.attributes |= kFieldKeyColumn;
        if (byPragma && !found->isNullable) column.attributes &= ~(kFieldIsNullable | kFieldMayBeNull);
    }
}

}  // namespace

void DescribeOrigins(Session& session, std::string_view sql, std::vector<Column>& columns, LONG timeoutSeconds) {
    const ExecuteOptions options{timeoutSeconds, 0, false};
    std::vector<Column> described = columns;
    try {
        DescribePrepared(session, sql, described, timeoutSeconds);
        if (session.Profile().baseColumnIsAlias) TakeColumnsFromText(sql, described);
        if (session.Profile().readsBaseFromText) TakeTableFromText(session, sql, described, options);
        std::set<std::tuple<std::string, std::string, std::string>> done;
        for (const Column& column : described) {
            if (column.baseTable.empty()) continue;
            if (!done.emplace(column.baseCatalog, column.baseSchema, column.baseTable).second) continue;
            DescribeTable(session, sql, described, column, options);
        }
    } catch (const AdoError& error) {
        if (IsEnded(error)) throw;
        // What is not known stays empty; a row without a key cannot be written, and says so when it is tried.
    }
    columns = std::move(described);
}

}  // namespace tk::ado
