// ado/odbc/statement.h - an executed statement: its row count, its results, its cancellation.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "ado/error.h"
#include "ado/odbc/parameter.h"
#include "ado/rowset/column.h"

namespace tk::ado {

/// A call of one of ODBC's catalog functions; texts are UTF-8, an unset one is sent as null.
struct CatalogCall {
    enum class Function {
        Tables,
        Columns,
        PrimaryKeys,
        ForeignKeys,
        Statistics,
        Procedures,
        ProcedureColumns,
        ColumnPrivileges,
        RowVersions,  // the columns of a table that change with every change of a row
        TypeInfo,
        Catalogs,
        Schemas
    };
    Function function = Function::Tables;
    std::string catalog;
    std::string schema;
    std::string table;           // or procedure; for ForeignKeys the table with the primary key
    std::string column;          // Columns, ProcedureColumns
    std::string types;           // Tables: 'TABLE','VIEW'
    std::string foreignCatalog;  // ForeignKeys: the table that refers
    std::string foreignSchema;
    std::string foreignTable;
    bool unique = false;  // Statistics
};

class RunningCall;

/// Movable owner of one executed ODBC statement; its handle goes back to the session for reuse.
class Statement {
public:
    Statement(Statement&&) noexcept;
    Statement& operator=(Statement&&) noexcept;
    ~Statement();

    /// True when there is a result with columns.
    bool HasRows() const noexcept;

    /// Rows changed, or -1 where the statement returns rows or the driver does not say.
    LONG RowsAffected() const noexcept;

    /// What the driver said although the statement succeeded, for the Errors collection; told once.
    std::vector<ErrorRecord> TakeWarnings() noexcept;

    /// The output parameters of the execution; null when there are none. They outlive the statement. A result that only
    /// holds their values is not one of the statement's results.
    std::shared_ptr<const ParameterOutputs> Outputs() const noexcept;

    /// The columns of the current result, described once.
    const std::vector<Column>& Columns();

    /// Moves on to the next result; false when there is none.
    bool MoreResults();

    /// Keeps the numbers of a result without columns and steps to what follows, for a driver that would leave that on
    /// the connection. What the step fails with is told in the place of the next result.
    /// @param running  names the call for whoever cancels it
    void PassNumbers(RunningCall& running);

    /// Steps over what follows, where a driver would leave that on the connection.
    /// @throws AdoError, what the next of them failed with
    void TakeRest(RunningCall& running);

    /// From any thread; the running call ends with "cancelled".
    void Cancel() noexcept;

    /// For the row set only.
    struct Impl;
    explicit Statement(std::unique_ptr<Impl> impl);
    Impl& Internals() noexcept { return *impl_; }

private:
    bool NextResult();

    std::unique_ptr<Impl> impl_;
};

}  // namespace tk::ado
