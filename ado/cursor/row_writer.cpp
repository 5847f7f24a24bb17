#include "ado/cursor/row_writer.h"

#include <algorithm>

#include "ado/cursor/columns.h"
#include "ado/cursor/messages.h"
#include "ado/cursor/text.h"

namespace tk::ado {
namespace {

// SQLGetInfo items and the bit they share: "in data manipulation statements".
constexpr unsigned short kInfoSchemaUsage = 91;
constexpr unsigned short kInfoCatalogUsage = 92;
constexpr unsigned short kInfoCatalogSeparator = 41;
constexpr unsigned kUsedInStatements = 1;

/// REAL, FLOAT and DOUBLE: what comes back need not be what is stored.
bool IsInexact(const Column& column) noexcept {
    return column.kind == CellKind::Real32 || column.kind == CellKind::Real64;
}

/// Takes back what was done unless it is kept.
class StatementTransaction {
public:
    StatementTransaction(Session& session, LONG isolation) : session_(session), own_(!session.InTransaction()) {
        if (own_) session_.Begin(isolation);
    }
    ~StatementTransaction() {
        if (!own_) return;
        try {
            session_.Rollback();
        } catch (const AdoError&) {
            // The failure that led here is the one to be reported.
        }
    }
    void Keep() {
        if (own_) session_.Commit();
        own_ = false;
    }

private:
    Session& session_;
    bool own_;
};

}  // namespace

/// A statement and its parameters in the order of their marks.
struct RowWriter::Text {
    std::string sql;
    std::vector<Parameter> parameters;

    void Add(const Value& value, const Column& column) { parameters.push_back({&value.Get(), {}, &column}); }
    void Add(const Cell& cell, const Column& column) { parameters.push_back({nullptr, cell, &column}); }
};

LONG FailureStatus(const AdoError& error) noexcept {
    static constexpr struct {
        HRESULT code;
        LONG status;
    } kRows[] = {
        {kConcurrencyViolation, kStatusConflict}, {kIntegrityViolation, kStatusIntegrity},
        {kPermissionDenied, kStatusPermission},   {kNoTable, kStatusSchema},
        {kErrorsInCommand, kStatusSchema},        {kErrorsOccurred, kStatusMultipleChanges},
    };
    for (const auto& row : kRows) {
        if (row.code == error.Code()) return row.status;
    }
    return 0;
}

RowWriter::RowWriter(std::shared_ptr<Session> session, RowStore& rows, const WriteRules& rules)
    : session_(std::move(session)), rows_(rows), rules_(rules) {
    rows_.Fetched().DescribeOrigins();
}

std::string RowWriter::Quoted(std::string_view name) const {
    const std::string& quote = session_->Quote();
    if (quote.empty() || quote == " ") return std::string(name);
    std::string quoted = quote;
    for (const char c : name) {
        quoted += c;
        if (quote.size() == 1 && c == quote[0]) quoted += c;
    }
    return quoted += quote;
}

std::string RowWriter::NameOf(const Table& table) const {
    std::string name;
    if (!table.catalog.empty() && (session_->InfoNumber(kInfoCatalogUsage) & kUsedInStatements) != 0) {
        const std::string separator = session_->InfoText(kInfoCatalogSeparator);
        name += Quoted(table.catalog) + (separator.empty() ? "." : separator);
    }
    if (!table.schema.empty() && (session_->InfoNumber(kInfoSchemaUsage) & kUsedInStatements) != 0) {
        name += Quoted(table.schema) + ".";
    }
    return name + Quoted(table.name);
}

bool RowWriter::Belongs(const Column& column, const Table& table) const {
    return !column.baseTable.empty() && !column.baseColumn.empty() && column.baseTable == table.name &&
           column.baseSchema == table.schema && column.baseCatalog == table.catalog;
}

RowWriter::Table RowWriter::ChooseTable(const Values* changed) const {
    const std::vector<Column>& columns = rows_.Columns();
    std::optional<Table> chosen;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const Column& column = columns[i];
        const bool counts = changed == nullptr ? !column.baseTable.empty() : (*changed)[i].has_value();
        if (!rules_.uniqueTable.empty()) {
            if (SameName(ToUtf16(column.baseTable), ToUtf16(rules_.uniqueTable)) &&
                (rules_.uniqueSchema.empty() || column.baseSchema == rules_.uniqueSchema) &&
                (rules_.uniqueCatalog.empty() || column.baseCatalog == rules_.uniqueCatalog)) {
                return {column.baseCatalog, column.baseSchema, column.baseTable};
            }
            continue;
        }
        if (!counts) continue;
        if (chosen && !Belongs(column, *chosen)) {
            chosen.reset();
            break;
        }
        chosen = Table{column.baseCatalog, column.baseSchema, column.baseTable};
    }
    if (!chosen || chosen->name.empty()) throw ProviderFailure(E_FAIL, kTextNoBaseTable, kCursorSource);
    return *chosen;
}

std::vector<std::size_t> RowWriter::KeyOf(const Table& table) const {
    std::vector<std::size_t> key;
    const std::vector<Column>& columns = rows_.Columns();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].isKey && Belongs(columns[i], table)) key.push_back(i);
    }
    if (key.empty()) throw ProviderFailure(E_FAIL, kTextNoKey, kCursorSource);
    return key;
}

bool RowWriter::IsCompared(std::size_t index, const Values* changed) const {
    const Column& column = rows_.Columns()[index];
    if (IsInexact(column) || (column.attributes & kFieldLong) != 0 || column.kind == CellKind::Bytes) return false;
    switch (rules_.updateCriteria) {
        case kCriteriaAllColumns:
            return true;
        case kCriteriaUpdatedColumns:
            return changed != nullptr && (*changed)[index].has_value();
        case kCriteriaTimeStamp:
            return (column.attributes & 0x200) != 0;  // a row version
        default:
            return false;
    }
}

void RowWriter::AddConditions(Text& text, const Table& table, std::size_t row, const Values* changed) {
    const std::vector<Column>& columns = rows_.Columns();
    const std::vector<std::size_t> key = KeyOf(table);
    const char* joint = " WHERE ";
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!Belongs(columns[i], table)) continue;
        if (std::ranges::find(key, i) == key.end() && !IsCompared(i, changed)) continue;
        const Cell original = rows_.OriginalAt(row, i);
        text.sql += joint + Quoted(columns[i].baseColumn);
        if (original.form == Cell::Form::Null) {
            text.sql += " IS NULL";
        } else {
            text.sql += " = ?";
            text.Add(original, columns[i]);
        }
        joint = " AND ";
    }
}

void RowWriter::RunForOneRow(const Text& text) {
    StatementTransaction transaction(*session_, rules_.isolation);
    const Statement done = session_->Execute(text.sql, std::span<const Parameter>(text.parameters),
                                             ExecuteOptions{rules_.timeoutSeconds, 0});
    const LONG affected = done.RowsAffected();
    if (affected == 0) throw ProviderFailure(kConcurrencyViolation, kTextConcurrency, kCursorSource);
    if (affected > 1) throw ProviderFailure(kErrorsOccurred, kTextTooManyRows, kCursorSource);
    transaction.Keep();
}

void RowWriter::Update(std::size_t row, const Values& changed) {
    if (std::ranges::none_of(changed, [](const auto& value) { return value.has_value(); })) return;
    const Table table = ChooseTable(&changed);
    const std::vector<Column>& columns = rows_.Columns();
    Text text{"UPDATE " + NameOf(table) + " SET ", {}};
    const char* joint = "";
    for (std::size_t i = 0; i < changed.size(); ++i) {
        if (!changed[i]) continue;
        if (!Belongs(columns[i], table)) throw ProviderFailure(E_FAIL, kTextNoBaseTable, kCursorSource);
        text.sql += joint + Quoted(columns[i].baseColumn) + " = ?";
        text.Add(*changed[i], columns[i]);
        joint = ", ";
    }
    AddConditions(text, table, row, &changed);
    RunForOneRow(text);
}

void RowWriter::Delete(std::size_t row) {
    const Table table = ChooseTable(nullptr);
    Text text{"DELETE FROM " + NameOf(table), {}};
    AddConditions(text, table, row, nullptr);
    RunForOneRow(text);
}

RowWriter::Values RowWriter::Insert(const Values& given) {
    const bool isEmpty = std::ranges::none_of(given, [](const auto& value) { return value.has_value(); });
    const Table table = ChooseTable(isEmpty ? nullptr : &given);
    const std::vector<Column>& columns = rows_.Columns();
    Text text{"INSERT INTO " + NameOf(table), {}};
    if (isEmpty) {
        text.sql += " DEFAULT VALUES";
    } else {
        std::string names;
        std::string marks;
        for (std::size_t i = 0; i < given.size(); ++i) {
            if (!given[i]) continue;
            if (!Belongs(columns[i], table)) throw ProviderFailure(E_FAIL, kTextNoBaseTable, kCursorSource);
            names += (names.empty() ? "" : ", ") + Quoted(columns[i].baseColumn);
            marks += marks.empty() ? "?" : ", ?";
            text.Add(*given[i], columns[i]);
        }
        text.sql += " (" + names + ") VALUES (" + marks + ")";
    }
    session_->Execute(text.sql, std::span<const Parameter>(text.parameters), ExecuteOptions{rules_.timeoutSeconds, 0});
    Values known = given;
    if ((rules_.updateResync & (kResyncAutoIncrement | kResyncInserts)) != 0) ReadIdentity(table, known);
    return known;
}

void RowWriter::ReadIdentity(const Table& table, Values& values) {
    const char* const query = session_->Profile().identityQuery;
    if (query == nullptr) return;
    const std::vector<Column>& columns = rows_.Columns();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!columns[i].isAutoIncrement || values[i] || !Belongs(columns[i], table)) continue;
        auto answer = RowSet::Fetch(session_->Execute(query, ExecuteOptions{rules_.timeoutSeconds, 0}), session_, {});
        if (!answer->HasRow(0)) return;
        Value number;
        answer->Read(0, 0, *number.Out());
        values[i] = ConvertForColumn(number.Get(), columns[i]);
        return;
    }
}

bool RowWriter::Reread(std::size_t row, bool underlyingOnly) {
    const Table table = ChooseTable(nullptr);
    const std::vector<Column>& columns = rows_.Columns();
    std::vector<std::size_t> chosen;
    std::string names;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!Belongs(columns[i], table)) continue;
        names += (names.empty() ? "" : ", ") + Quoted(columns[i].baseColumn);
        chosen.push_back(i);
    }
    Text text{"SELECT " + names + " FROM " + NameOf(table), {}};
    const char* joint = " WHERE ";
    for (const std::size_t i : KeyOf(table)) {
        text.sql += joint + Quoted(columns[i].baseColumn) + " = ?";
        text.Add(rows_.OriginalAt(row, i), columns[i]);
        joint = " AND ";
    }
    auto read = RowSet::Fetch(session_->Execute(text.sql, std::span<const Parameter>(text.parameters),
                                                ExecuteOptions{rules_.timeoutSeconds, 0}),
                              session_, {});
    if (!read->HasRow(0)) return false;
    rows_.Refresh(row, std::move(read), chosen, underlyingOnly);
    return true;
}

}  // namespace tk::ado
