#include "ado/schema/catalog_rows.h"

#include "ado/cursor/text.h"
#include "ado/odbc/odbc_api.h"

namespace tk::ado {

std::optional<std::u16string> CatalogRow::Text(std::size_t column) const {
    if (column > cells_.size() || cells_[column - 1].IsNull()) return std::nullopt;
    HRESULT result = S_OK;
    const Value text = cells_[column - 1].As(VT_BSTR, result);
    if (FAILED(result)) return std::nullopt;
    return std::u16string(ViewOf(text.Get().bstrVal));
}

std::optional<long long> CatalogRow::Number(std::size_t column) const {
    if (column > cells_.size() || cells_[column - 1].IsNull()) return std::nullopt;
    HRESULT result = S_OK;
    const Value number = cells_[column - 1].As(VT_I8, result);
    if (FAILED(result)) return std::nullopt;
    return number.Get().llVal;
}

void CatalogRow::Set(std::size_t column, Value value) {
    if (column > cells_.size()) cells_.resize(column, Value::Null());
    cells_[column - 1] = std::move(value);
}

CatalogRows ReadRows(const std::shared_ptr<RowSet>& answer) {
    CatalogRows rows;
    const std::size_t columns = answer->Columns().size();
    for (std::size_t row = 0; answer->HasRow(row); ++row) {
        std::vector<Value> cells(columns);
        for (std::size_t i = 0; i < columns; ++i)
            answer->Read(row, i, *cells[i].Out());
        rows.emplace_back(std::move(cells));
    }
    return rows;
}

CatalogRows CallCatalog(const std::shared_ptr<Session>& session, const CatalogCall& call) {
    Statement statement = session->Catalog(call, {});
    // Some drivers answer a call they do not know with success and no columns.
    if (!statement.HasRows()) return {};
    return ReadRows(RowSet::Fetch(std::move(statement), session, {}));
}

namespace {

constexpr char kAnything = '%';  // as a pattern

/// CallCatalog without the row of SQLStatistics that tells of the table itself.
CatalogRows CallForRows(const std::shared_ptr<Session>& session, const CatalogCall& call) {
    constexpr std::size_t kIndexType = 7;
    CatalogRows rows = CallCatalog(session, call);
    if (call.function == CatalogCall::Function::Statistics) {
        std::erase_if(rows, [](const CatalogRow& row) { return row.Number(kIndexType).value_or(0) == 0; });
    }
    return rows;
}

}  // namespace

CatalogRows CallForTable(const std::shared_ptr<Session>& session, CatalogCall call, const CalledTable& called) {
    CatalogRows rows = CallForRows(session, call);
    const std::string table = call.*called.table;
    if (!rows.empty() || table.empty() || !(call.*called.schema).empty()) return rows;
    if (session->InfoNumber(SQL_SCHEMA_USAGE) == 0) return rows;
    CatalogCall tables;
    tables.catalog = call.*called.catalog;
    tables.schema.assign(1, kAnything);
    tables.table = table;
    const std::u16string name = ToUtf16(table);
    for (const CatalogRow& found : CallCatalog(session, tables)) {
        const auto schema = found.Text(2);
        // The name was a pattern to the driver.
        if (!schema || schema->empty() || found.Text(3) != name) continue;
        call.*called.schema = ToUtf8(*schema);
        for (CatalogRow& row : CallForRows(session, call)) {
            if (row.Text(called.answeredSchema) == schema) rows.push_back(std::move(row));
        }
    }
    return rows;
}

CatalogRows SelectRows(const std::shared_ptr<Session>& session, std::string_view sql) {
    Statement statement = session->Execute(sql, ExecuteOptions{});
    if (!statement.HasRows()) return {};
    return ReadRows(RowSet::Fetch(std::move(statement), session, {}));
}

}  // namespace tk::ado
