#include "ado/schema/catalog_rows.h"

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

CatalogRows SelectRows(const std::shared_ptr<Session>& session, std::string_view sql) {
    Statement statement = session->Execute(sql, ExecuteOptions{});
    if (!statement.HasRows()) return {};
    return ReadRows(RowSet::Fetch(std::move(statement), session, {}));
}

}  // namespace tk::ado
