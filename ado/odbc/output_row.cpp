#include "ado/odbc/output_row.h"

#include "ado/odbc/ascii.h"
#include "ado/odbc/column_attribute.h"
#include "ado/odbc/procedure_name.h"
#include "ado/rowset/cell_reader.h"

namespace tk::ado {
namespace {

/// The columns of the row are the procedure's own, one for each output.
bool IsOutputRow(const Statement::Impl& statement) {
    if (!statement.outputs || statement.handle == nullptr) return false;
    if (!statement.handle->Profile().hasOutputRow) return false;
    if (statement.columnCount == 0 || static_cast<std::size_t>(statement.columnCount) != statement.outputs->Count()) {
        return false;
    }
    // A table called as the procedure may have the same columns, but hardly one row.
    SQLLEN rows = 0;
    if (SQL_SUCCEEDED(Odbc().RowCount(statement.handle->Get(), &rows)) && rows > 1) return false;
    const std::string called = ReadCalledName(statement.text);
    if (called.empty()) return false;
    for (int number = 1; number <= statement.columnCount; ++number) {
        if (!EqualsNoCase(TextAttribute(statement.handle->Get(), number, SQL_DESC_BASE_TABLE_NAME), called))
            return false;
    }
    return true;
}

}  // namespace

bool PassOutputRow(Statement::Impl& statement) {
    if (!IsOutputRow(statement)) return true;
    StatementHandle& handle = *statement.handle;
    handle.SetRowArraySize(1);
    handle.Unbind();
    const SQLRETURN fetched = Odbc().Fetch(handle.Get());
    if (!SQL_SUCCEEDED(fetched)) statement.Fail(fetched);
    std::string value;
    for (int number = 1; number <= statement.columnCount; ++number) {
        const auto output = static_cast<std::size_t>(number - 1);
        const bool isValue = ReadWholeCell(statement, number, statement.outputs->CType(output), value);
        statement.outputs->Put(output, isValue ? &value : nullptr);
    }
    if (statement.NextResult()) return true;
    statement.columnCount = 0;
    return false;
}

}  // namespace tk::ado
