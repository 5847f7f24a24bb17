// ado/cursor/block_writer.h - many rows into a table: several of them a statement, prepared once, values as parameters.
//
// The driver's profile says how the values of a statement travel: each as a parameter of its own, as one array for each
// column, or as arrays that the driver makes of the parameters of many executions.
//
//   BlockWriter writer(session, "\"item\"", {u"id", u"name"}, 30);
//   writer.Write(store, rows);
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "ado/cursor/row_store.h"
#include "ado/odbc/session.h"

namespace tk::ado {

class BlockWriter {
public:
    /// Asks the database for the types of the columns.
    /// @param table  as a statement has it, quoted where it needs to be
    /// @param names  the columns that get values, in the order of the rows' columns; not empty
    /// @throws AdoError when there is no such table or column
    BlockWriter(std::shared_ptr<Session> session, const std::string& table, std::span<const std::u16string> names,
                LONG timeoutSeconds);

    /// Writes rows of a store with as many columns. All of them or none, inside a transaction of the caller's where the
    /// database has savepoints.
    /// @throws AdoError, the driver's
    void Write(RowStore& rows, std::span<const std::size_t> list);

private:
    void ReadArrayTypes(const std::string& table, std::span<const std::u16string> names);
    const std::string& TextFor(std::size_t rows);

    // Each writes rows from the front of the list, in one statement, and gives their number.
    std::size_t WriteValues(RowStore& rows, std::span<const std::size_t> list);
    std::size_t WriteArrays(RowStore& rows, std::span<const std::size_t> list);
    std::size_t WriteColumns(RowStore& rows, std::span<const std::size_t> list);

    void Send(const std::string& text, const std::vector<Parameter>& parameters);

    std::shared_ptr<Session> session_;
    std::string head_;             // the statement up to its values
    std::string arrays_;           // the rest of it where they are arrays; empty: they are not
    std::string list_;             // the whole of it with a list of rows
    std::size_t listRows_ = 0;     // ... and their number
    std::vector<Column> columns_;  // of the table
    LONG timeoutSeconds_;
    std::size_t rowsPerList_;
    bool hasParameterArrays_ = false;
};

}  // namespace tk::ado
