// ado/cursor/row_writer.h - the statements that write one changed row back to its table.
//
//   RowWriter writer(session, store, rules);
//   writer.Update(row, edit.Values());
//
// A row is found by its key and, as the rules say, by the values it had when it was read; every value travels as a
// parameter. What has been done for a row that is refused is undone, unless it is part of a transaction of the
// caller's.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ado/cursor/row_store.h"
#include "ado/cursor/value.h"
#include "ado/odbc/session.h"

namespace tk::ado {

/// "Update Criteria".
enum UpdateCriteria : LONG {
    kCriteriaKey = 0,
    kCriteriaAllColumns = 1,
    kCriteriaUpdatedColumns = 2,
    kCriteriaTimeStamp = 3
};

/// "Update Resync", a set of bits.
enum UpdateResync : LONG { kResyncAutoIncrement = 1, kResyncConflicts = 2, kResyncUpdates = 4, kResyncInserts = 8 };

struct WriteRules {
    LONG updateCriteria = kCriteriaUpdatedColumns;
    LONG updateResync = kResyncAutoIncrement;
    std::string uniqueTable;  // UTF-8; chooses the table of a join
    std::string uniqueSchema;
    std::string uniqueCatalog;
    std::string resyncCommand;  // a SELECT of one row with marks for the key columns; empty: one is made
    LONG timeoutSeconds = 30;
    LONG isolation = 0x1000;
};

/// The Status bit that fits why a change was refused; never 0.
LONG FailureStatus(const AdoError& error) noexcept;

class RowWriter {
public:
    using Values = std::vector<std::optional<Value>>;

    /// @param manyRows  more rows will be written with the same columns: the statements are prepared
    RowWriter(std::shared_ptr<Session> session, RowStore& rows, const WriteRules& rules, bool manyRows = false);

    /// Each throws AdoError: the driver's, 80040E38 when the row is not as it was read, 80040E21 when more than one row
    /// answers to its key, 80004005 when the table or its key is not known. Nothing is changed in the store. Values of
    /// several tables of a join go to each of them with a statement of its own.
    void Update(std::size_t row, const Values& changed);
    void Delete(std::size_t row);

    /// @return the values a new row has now as far as they are known: those given, and the numbers that the table gave
    Values Insert(const Values& given);

    /// Reads a row of the store again, by its key, into the store.
    /// @return false when it is gone; the store is as it was then
    bool Reread(std::size_t row, bool underlyingOnly);

    /// Whether a row is to be read again after it has been written, or after it was refused: the rules want it, or the
    /// values that were sent are not those that are stored.
    bool IsRereadAfterUpdate(const Values& sent) const;
    bool IsRereadAfterInsert(const Values& sent) const;
    bool IsRereadAfterConflict() const noexcept { return (rules_.updateResync & kResyncConflicts) != 0; }

private:
    struct Table {
        explicit Table(const Column& column)
            : catalog(column.baseCatalog),
              schema(column.baseSchema),
              name(column.baseTable),
              qualifier(column.qualifier) {}
        std::string catalog;
        std::string schema;
        std::string name;
        std::string qualifier;
    };
    struct Text;

    bool IsRounded(const Values& sent) const;
    bool IsUnique(const Column& column) const;
    std::vector<Table> TablesOf(const Values& changed) const;
    Table OnlyTable() const;
    bool Belongs(const Column& column, const Table& table) const;
    std::vector<std::size_t> KeyOf(const Table& table) const;
    std::string NameOf(const Table& table) const;
    std::string Quoted(std::string_view name) const;
    LONG CriteriaFor(const Table& table) const;
    bool IsCompared(std::size_t column, LONG criteria, const Values* changed) const;
    const std::vector<std::size_t>& RowVersions() const;
    void AddConditions(Text& text, const Table& table, std::size_t row, const Values* changed) const;
    Statement Run(const Text& text) const;
    void RunForOneRow(const Text& text) const;
    void InsertInto(const Table& table, const Values& given, Values& known) const;
    void TakeFirstRow(Statement statement, std::span<const std::size_t> columns, Values& values) const;
    bool RereadByCommand(std::size_t row, bool underlyingOnly);

    std::shared_ptr<Session> session_;
    RowStore& rows_;
    const WriteRules& rules_;
    bool manyRows_;
};

}  // namespace tk::ado
