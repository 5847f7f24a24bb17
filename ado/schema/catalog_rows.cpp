#include "ado/schema/catalog_rows.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "ado/odbc/odbc_api.h"

namespace tk::ado {
namespace {

constexpr double kTooLarge = 9.2e18;
constexpr std::size_t kUsuallyFound = 8;

/// Names are patterns to these functions. Those that only match are left out afterwards; but an escape character in a
/// name would keep it from meeting itself.
CatalogCall Escaped(Session& session, CatalogCall call) {
    const bool isPattern =
        call.function == CatalogCall::Function::Tables || call.function == CatalogCall::Function::Columns;
    constexpr char kEscape = '\\';
    if (!isPattern || call.table.find(kEscape) == std::string::npos) return call;
    if (session.InfoText(SQL_SEARCH_PATTERN_ESCAPE) != std::string(1, kEscape)) return call;
    std::string escaped;
    for (const char c : call.table)
        escaped.append(c == kEscape ? 2 : 1, c);
    call.table = std::move(escaped);
    return call;
}

/// In a database without schemata nothing is in one: the rows say so themselves, while a driver calls it a mistake.
CatalogCall WithoutUnknownSchema(Session& session, CatalogCall call) {
    if (call.schema.empty() && call.foreignSchema.empty()) return call;
    if (session.InfoNumber(SQL_SCHEMA_USAGE) != 0) return call;
    call.schema.clear();
    call.foreignSchema.clear();
    return call;
}

/// @param columns  the catalog function's column that each one is; empty: the same
CatalogRows ReadRows(std::shared_ptr<RowSet> fetched, std::span<const std::size_t> columns) {
    auto answer = std::make_shared<CatalogAnswer>();
    answer->rows = std::move(fetched);
    std::size_t most = std::min(answer->rows->Columns().size(), kMostCatalogColumns - 1);
    if (!columns.empty()) most = std::min(most, columns.size());
    for (std::size_t place = 1; place <= most; ++place) {
        const std::size_t column = columns.empty() ? place : columns[place - 1];
        answer->places[column] = static_cast<unsigned char>(place);
    }
    const std::size_t count = answer->rows->CountRows();
    CatalogRows rows;
    rows.reserve(count);
    for (std::size_t row = 0; row < count; ++row)
        rows.emplace_back(answer, row);
    return rows;
}

}  // namespace

const SchemaValue* CatalogRow::FindFound(std::size_t column) const noexcept {
    if (!isFound_[column]) return nullptr;
    for (const Found& found : found_) {
        if (found.column == column) return &found.value;
    }
    return nullptr;
}

std::optional<std::string_view> CatalogRow::Text(std::size_t column) const {
    if (const SchemaValue* found = FindFound(column)) {
        return found->IsText() ? std::optional(found->AsText()) : std::nullopt;
    }
    const std::size_t place = answer_->places[column];
    if (place == 0) return std::nullopt;
    const Cell cell = answer_->rows->At(row_, place - 1);
    if (cell.form == Cell::Form::Null) return std::nullopt;
    if (cell.text.data() != nullptr) return cell.text;
    if (cell.form != Cell::Form::Integer) return std::string_view();
    return answer_->made.emplace_back(std::to_string(cell.integer));
}

std::optional<long long> CatalogRow::Number(std::size_t column) const {
    if (const SchemaValue* found = FindFound(column)) {
        return found->IsNull() || found->IsText() ? std::nullopt : std::optional(found->AsNumber());
    }
    const std::size_t place = answer_->places[column];
    if (place == 0) return std::nullopt;
    const Cell cell = answer_->rows->At(row_, place - 1);
    switch (cell.form) {
        case Cell::Form::Integer:
        case Cell::Form::Boolean:
            return cell.integer;
        case Cell::Form::Real:
            return std::abs(cell.real) < kTooLarge ? std::optional(std::llround(cell.real)) : std::nullopt;
        case Cell::Form::Text:
        case Cell::Form::Decimal: {
            long long number = 0;
            const char* const end = cell.text.data() + cell.text.size();
            const auto read = std::from_chars(cell.text.data(), end, number);
            const bool isNumber = read.ec == std::errc() && (read.ptr == end || *read.ptr == '.');
            return isNumber ? std::optional(number) : std::nullopt;
        }
        default:
            return std::nullopt;
    }
}

void CatalogRow::Set(std::size_t column, SchemaValue value) {
    if (found_.empty()) found_.reserve(kUsuallyFound);
    isFound_.set(column);
    found_.push_back({column, value});
}

void CatalogRow::SetMadeText(std::size_t column, std::string text) {
    Set(column, SchemaValue::Text(answer_->made.emplace_back(std::move(text))));
}

std::string TextsOf(const CatalogRow& row, std::span<const std::size_t> columns) {
    std::string texts;
    for (const std::size_t column : columns)
        texts.append(row.Text(column).value_or("")) += '\0';
    return texts;
}

CatalogRows CallCatalog(const std::shared_ptr<Session>& session, const CatalogCall& call,
                        std::span<const std::size_t> columns) {
    const auto ask = [&](const CatalogCall& asked) -> CatalogRows {
        Statement statement = session->Catalog(asked, {});
        // Some drivers answer a call they do not know with success and no columns.
        if (!statement.HasRows()) return {};
        return ReadRows(RowSet::Fetch(std::move(statement), session, {}), columns);
    };
    const CatalogCall known = WithoutUnknownSchema(*session, call);
    const CatalogCall escaped = Escaped(*session, known);
    CatalogRows rows = ask(escaped);
    // One driver takes the escapes that it asks for by the letter.
    return rows.empty() && escaped.table != known.table ? ask(known) : rows;
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

// NOLINTNEXTLINE(performance-unnecessary-value-param): changed, through a pointer to its member
CatalogRows CallForTable(const std::shared_ptr<Session>& session, CatalogCall call, const CalledTable& called) {
    CatalogRows rows = CallForRows(session, call);
    const std::string table = call.*called.table;
    if (!rows.empty() || table.empty() || !(call.*called.schema).empty()) return rows;
    if (session->InfoNumber(SQL_SCHEMA_USAGE) == 0) return rows;
    CatalogCall tables;
    tables.catalog = call.*called.catalog;
    tables.schema.assign(1, kAnything);
    tables.table = table;
    for (const CatalogRow& found : CallCatalog(session, tables)) {
        const auto schema = found.Text(2);
        // The name was a pattern to the driver.
        if (!schema || schema->empty() || found.Text(3) != table) continue;
        call.*called.schema = std::string(*schema);
        for (CatalogRow& row : CallForRows(session, call)) {
            if (row.Text(called.answeredSchema) == schema) rows.push_back(std::move(row));
        }
    }
    return rows;
}

CatalogRows SelectRows(const std::shared_ptr<Session>& session, const std::string& sql,
                       std::initializer_list<std::size_t> columns) {
    Statement statement = session->Execute(sql, ExecuteOptions{});
    if (!statement.HasRows()) return {};
    return ReadRows(RowSet::Fetch(std::move(statement), session, {}), std::span(columns.begin(), columns.end()));
}

CatalogRows SelectRows(const std::shared_ptr<Session>& session, const std::string& sql,
                       std::span<const std::size_t> columns, std::initializer_list<std::string_view> parameters) {
    std::vector<Parameter> sent;
    for (const std::string_view text : parameters)
        sent.push_back({.value = nullptr, .cell = {Cell::Form::Text, 0, 0, text}, .column = nullptr});
    ExecuteOptions options;
    options.prepared = true;
    Statement statement = session->Execute(sql, std::span<const Parameter>(sent), options);
    if (!statement.HasRows()) return {};
    return ReadRows(RowSet::Fetch(std::move(statement), session, {}), columns);
}

}  // namespace tk::ado
