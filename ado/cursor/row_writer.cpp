#include "ado/cursor/row_writer.h"

#include <algorithm>

#include "ado/cursor/columns.h"
#include "ado/cursor/messages.h"
#include "ado/cursor/row_transaction.h"
#include "ado/cursor/text.h"
#include "ado/odbc/quoted_name.h"
#include "ado/rowset/date_value.h"
#include "ado/rowset/number_value.h"

namespace tk::ado {
namespace {

// SQLGetInfo items and the bit they share: "in data manipulation statements".
constexpr unsigned short kInfoSchemaUsage = 91;
constexpr unsigned short kInfoCatalogUsage = 92;
constexpr unsigned short kInfoCatalogSeparator = 41;
constexpr unsigned kUsedInStatements = 1;

RowTransaction::Inside InsideFor(std::size_t statements) noexcept {
    return statements > 1 ? RowTransaction::Inside::IsUndone : RowTransaction::Inside::Joins;
}

/// REAL, FLOAT and DOUBLE: what comes back need not be what is stored.
bool IsInexact(const Column& column) noexcept {
    return column.kind == CellKind::Real32 || column.kind == CellKind::Real64;
}

/// More digits than the column keeps: what is stored is another value, and only reading it tells which.
bool HasMoreDigits(const Value& value, const Column& column) {
    if (column.scale == 255) return false;
    if (column.kind == CellKind::Timestamp && value.Type() == VT_DATE) {
        return column.scale < 3 && FromAutomationDate(value.Get().date, -1).nanosecond != 0;
    }
    if (column.kind != CellKind::Decimal || value.Type() != VT_DECIMAL) return false;
    const std::string text = FormatDecimal(value.Get().decVal);
    const std::size_t point = text.find('.');
    return point != std::string::npos && text.find_last_not_of('0') > point + column.scale;
}

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
        {kErrorsInCommand, kStatusSchema},        {kCantConvertValue, kStatusSchema},
        {kDataOverflow, kStatusSchema},           {kErrorsOccurred, kStatusMultipleChanges},
    };
    for (const auto& row : kRows) {
        if (row.code == error.Code()) return row.status;
    }
    return kStatusCanceled;
}

RowWriter::RowWriter(std::shared_ptr<Session> session, RowStore& rows, const WriteRules& rules, bool manyRows)
    : session_(std::move(session)), rows_(rows), rules_(rules), manyRows_(manyRows) {
    rows_.Fetched().DescribeOrigins(rules_.timeoutSeconds);
}

std::string RowWriter::Quoted(std::string_view name) const {
    return QuotedName(name, session_->Quote());
}

std::string RowWriter::NameOf(const Table& table) const {
    if (!table.qualifier.empty()) return Quoted(table.qualifier) + "." + Quoted(table.name);
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

bool RowWriter::IsUnique(const Column& column) const {
    return SameName(ToUtf16(column.baseTable), ToUtf16(rules_.uniqueTable)) &&
           (rules_.uniqueSchema.empty() || column.baseSchema == rules_.uniqueSchema) &&
           (rules_.uniqueCatalog.empty() || column.baseCatalog == rules_.uniqueCatalog);
}

std::vector<RowWriter::Table> RowWriter::TablesOf(const Values& changed) const {
    const std::vector<Column>& columns = rows_.Columns();
    std::vector<Table> tables;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const Column& column = columns[i];
        if (!changed[i]) continue;
        const bool isKnown = !column.baseTable.empty() && !column.baseColumn.empty();
        if (!isKnown || (!rules_.uniqueTable.empty() && !IsUnique(column))) {
            throw ProviderFailure(E_FAIL, kTextNoBaseTable, kCursorSource);
        }
        const bool isNew = std::ranges::none_of(tables, [&](const Table& table) { return Belongs(column, table); });
        if (isNew) tables.emplace_back(column);
    }
    return tables;
}

RowWriter::Table RowWriter::OnlyTable() const {
    std::optional<Table> chosen;
    for (const Column& column : rows_.Columns()) {
        if (column.baseTable.empty() || (!rules_.uniqueTable.empty() && !IsUnique(column))) continue;
        const bool isSame = chosen && column.baseTable == chosen->name && column.baseSchema == chosen->schema &&
                            column.baseCatalog == chosen->catalog;
        // Which of several tables is meant is not to be guessed.
        if (chosen && !isSame) throw ProviderFailure(E_FAIL, kTextNoBaseTable, kCursorSource);
        chosen.emplace(column);
    }
    if (!chosen) throw ProviderFailure(E_FAIL, kTextNoBaseTable, kCursorSource);
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

const std::vector<std::size_t>& RowWriter::RowVersions() const {
    if (rows_.RowVersions()) return *rows_.RowVersions();
    std::vector<std::size_t> found;
    const std::vector<Column>& columns = rows_.Columns();
    std::vector<Table> asked;
    for (const Column& of : columns) {
        if (of.baseTable.empty() || std::ranges::any_of(asked, [&](const Table& table) { return Belongs(of, table); }))
            continue;
        const Table& table = asked.emplace_back(of);
        CatalogCall call;
        call.function = CatalogCall::Function::RowVersions;
        call.catalog = table.catalog;
        call.schema = table.schema;
        call.table = table.name;
        try {
            auto list = RowSet::Fetch(session_->Catalog(call, ExecuteOptions{rules_.timeoutSeconds, 0}), session_, {});
            for (std::size_t row = 0; row < list->CountRows(); ++row) {
                const auto name = list->TextAt(row, 1);
                for (std::size_t i = 0; name && i < columns.size(); ++i) {
                    if (Belongs(columns[i], table) && columns[i].baseColumn == *name) found.push_back(i);
                }
            }
        } catch (const AdoError&) {
            // A driver without this function knows no such columns.
        }
    }
    rows_.SetRowVersions(std::move(found));
    return *rows_.RowVersions();
}

LONG RowWriter::CriteriaFor(const Table& table) const {
    if (rules_.updateCriteria != kCriteriaTimeStamp) return rules_.updateCriteria;
    const std::vector<Column>& columns = rows_.Columns();
    const bool hasVersion =
        std::ranges::any_of(RowVersions(), [&](std::size_t i) { return Belongs(columns[i], table); });
    // Without a row version in the result nothing but all columns tells that the row is as it was.
    return hasVersion ? static_cast<LONG>(kCriteriaTimeStamp) : static_cast<LONG>(kCriteriaAllColumns);
}

bool RowWriter::IsCompared(std::size_t index, LONG criteria, const Values* changed) const {
    const Column& column = rows_.Columns()[index];
    if (criteria == kCriteriaTimeStamp) return std::ranges::find(RowVersions(), index) != RowVersions().end();
    if (IsInexact(column) || (column.attributes & kFieldLong) != 0 || column.kind == CellKind::Bytes) return false;
    if (criteria == kCriteriaAllColumns) return true;
    return criteria == kCriteriaUpdatedColumns && changed != nullptr && (*changed)[index].has_value();
}

void RowWriter::AddConditions(Text& text, const Table& table, std::size_t row, const Values* changed) const {
    const std::vector<Column>& columns = rows_.Columns();
    const std::vector<std::size_t> key = KeyOf(table);
    const LONG criteria = CriteriaFor(table);
    const char* joint = " WHERE ";
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!Belongs(columns[i], table)) continue;
        const bool isKey = std::ranges::find(key, i) != key.end();
        if (!isKey && !IsCompared(i, criteria, changed)) continue;
        const Cell known = isKey ? rows_.OriginalAt(row, i) : rows_.UnderlyingAt(row, i);
        text.sql += joint;
        if (known.form == Cell::Form::Null) {
            text.sql += Quoted(columns[i].baseColumn) + " IS NULL";
        } else if (columns[i].isOpaque) {
            text.sql += "CAST(" + Quoted(columns[i].baseColumn) + " AS text) = ?";
            text.parameters.push_back({nullptr, known, nullptr});
        } else {
            text.sql += Quoted(columns[i].baseColumn) + " = ?";
            text.Add(known, columns[i]);
        }
        joint = " AND ";
    }
}

Statement RowWriter::Run(const Text& text) const {
    return session_->Execute(text.sql, std::span<const Parameter>(text.parameters),
                             ExecuteOptions{rules_.timeoutSeconds, 0, manyRows_});
}

void RowWriter::RunForOneRow(const Text& text) const {
    const LONG affected = Run(text).RowsAffected();
    if (affected == 0) throw ProviderFailure(kConcurrencyViolation, kTextConcurrency, kCursorSource);
    if (affected > 1) throw ProviderFailure(kErrorsOccurred, kTextTooManyRows, kCursorSource);
}

void RowWriter::Update(std::size_t row, const Values& changed) {
    const std::vector<Table> tables = TablesOf(changed);
    if (tables.empty()) return;
    const std::vector<Column>& columns = rows_.Columns();
    std::vector<Text> texts;
    for (const Table& table : tables) {
        Text& text = texts.emplace_back(Text{"UPDATE " + NameOf(table) + " SET ", {}});
        const char* joint = "";
        for (std::size_t i = 0; i < changed.size(); ++i) {
            if (!changed[i] || !Belongs(columns[i], table)) continue;
            text.sql += joint + Quoted(columns[i].baseColumn) + " = ?";
            text.Add(*changed[i], columns[i]);
            joint = ", ";
        }
        AddConditions(text, table, row, &changed);
    }
    // Of several tables none is changed when one of them refuses.
    RowTransaction transaction(*session_, rules_.isolation, rules_.timeoutSeconds, InsideFor(texts.size()));
    for (const Text& text : texts)
        RunForOneRow(text);
    transaction.Keep();
}

void RowWriter::Delete(std::size_t row) {
    const Table table = OnlyTable();
    Text text{"DELETE FROM " + NameOf(table), {}};
    AddConditions(text, table, row, nullptr);
    RowTransaction transaction(*session_, rules_.isolation, rules_.timeoutSeconds);
    RunForOneRow(text);
    transaction.Keep();
}

RowWriter::Values RowWriter::Insert(const Values& given) {
    std::vector<Table> tables = TablesOf(given);
    if (tables.empty()) tables.push_back(OnlyTable());
    Values known = given;
    if (tables.size() == 1) {
        InsertInto(tables.front(), given, known);
        return known;
    }
    RowTransaction transaction(*session_, rules_.isolation, rules_.timeoutSeconds, InsideFor(tables.size()));
    for (const Table& table : tables)
        InsertInto(table, given, known);
    transaction.Keep();
    return known;
}

void RowWriter::InsertInto(const Table& table, const Values& given, Values& known) const {
    const std::vector<Column>& columns = rows_.Columns();
    const DriverProfile& profile = session_->Profile();
    Text text;
    std::string names;
    std::string marks;
    std::vector<std::size_t> made;  // what the table itself gives the row
    const bool isAsked = (rules_.updateResync & (kResyncAutoIncrement | kResyncInserts)) != 0;
    for (std::size_t i = 0; i < given.size(); ++i) {
        if (!Belongs(columns[i], table)) continue;
        if (!given[i]) {
            const bool isMade = columns[i].isAutoIncrement || (columns[i].isKey && profile.hasReturning);
            if (isAsked && isMade) made.push_back(i);
            continue;
        }
        names += (names.empty() ? "" : ", ") + Quoted(columns[i].baseColumn);
        marks += marks.empty() ? "?" : ", ?";
        text.Add(*given[i], columns[i]);
    }
    text.sql = "INSERT INTO " + NameOf(table) + " ";
    text.sql += names.empty() ? profile.emptyInsert : "(" + names + ") VALUES (" + marks + ")";
    if (made.empty()) {
        Run(text);
    } else if (profile.hasReturning) {
        const char* joint = " RETURNING ";
        for (const std::size_t i : made)
            text.sql += std::exchange(joint, ", ") + Quoted(columns[i].baseColumn);
        TakeFirstRow(Run(text), made, known);
    } else {
        Run(text);
        if (profile.identityQuery == nullptr) return;
        const ExecuteOptions options{rules_.timeoutSeconds, 0, manyRows_};
        TakeFirstRow(session_->Execute(profile.identityQuery, options), std::span(made).first(1), known);
    }
}

void RowWriter::TakeFirstRow(Statement statement, std::span<const std::size_t> columns, Values& values) const {
    const auto answer = RowSet::Fetch(std::move(statement), session_, {});
    if (!answer->HasRow(0)) return;
    for (std::size_t i = 0; i < columns.size() && i < answer->Columns().size(); ++i) {
        Value value;
        answer->Read(0, i, *value.Out());
        values[columns[i]] = ConvertForColumn(value.Get(), rows_.Columns()[columns[i]]);
    }
}

bool RowWriter::IsRereadAfterUpdate(const Values& sent) const {
    // The database has given the row another version with the change.
    return (rules_.updateResync & kResyncUpdates) != 0 || rules_.updateCriteria == kCriteriaTimeStamp ||
           IsRounded(sent);
}

bool RowWriter::IsRereadAfterInsert(const Values& sent) const {
    return (rules_.updateResync & kResyncInserts) != 0 || IsRounded(sent);
}

bool RowWriter::IsRounded(const Values& sent) const {
    const std::vector<Column>& columns = rows_.Columns();
    const Column* first = nullptr;
    bool isAny = false;
    for (std::size_t i = 0; i < sent.size(); ++i) {
        if (!sent[i]) continue;
        // A row of several tables is not read again.
        if (first == nullptr) first = &columns[i];
        if (!Belongs(columns[i], Table(*first))) return false;
        isAny = isAny || HasMoreDigits(*sent[i], columns[i]);
    }
    return isAny;
}

bool RowWriter::Reread(std::size_t row, bool underlyingOnly) {
    if (!rules_.resyncCommand.empty()) return RereadByCommand(row, underlyingOnly);
    const Table table = OnlyTable();
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
        const Cell key = rows_.OriginalAt(row, i);
        if (key.form == Cell::Form::Null) return false;
        text.sql += std::exchange(joint, " AND ") + Quoted(columns[i].baseColumn) + " = ?";
        text.Add(key, columns[i]);
    }
    auto read = RowSet::Fetch(Run(text), session_, {});
    if (!read->HasRow(0)) return false;
    rows_.Refresh(row, std::move(read), chosen, underlyingOnly);
    return true;
}

bool RowWriter::RereadByCommand(std::size_t row, bool underlyingOnly) {
    const std::vector<Column>& columns = rows_.Columns();
    Text text{rules_.resyncCommand, {}};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].isKey) text.Add(rows_.OriginalAt(row, i), columns[i]);
    }
    auto read = RowSet::Fetch(Run(text), session_, {});
    if (!read->HasRow(0)) return false;
    // Its columns are those of the result, in their order.
    if (read->Columns().size() != columns.size()) throw AdoError(ErrorNumber::InvalidArgument);
    std::vector<std::size_t> chosen(columns.size());
    std::ranges::generate(chosen, [next = std::size_t{0}]() mutable { return next++; });
    rows_.Refresh(row, std::move(read), chosen, underlyingOnly);
    return true;
}

}  // namespace tk::ado
