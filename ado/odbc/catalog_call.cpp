#include "ado/odbc/catalog_call.h"

namespace tk::ado {
namespace {

/// A text argument as the narrow functions take it.
struct Argument {
    explicit Argument(const std::string& value)
        : length(value.empty() ? SQLSMALLINT{0} : static_cast<SQLSMALLINT>(value.size())),
          copy(value),
          text(value.empty() ? nullptr : reinterpret_cast<SQLCHAR*>(copy.data())) {}
    Argument(const Argument&) = delete;
    Argument& operator=(const Argument&) = delete;

    SQLSMALLINT length;
    std::string copy;
    SQLCHAR* text;
};

}  // namespace

SQLRETURN RunCatalogCall(SQLHSTMT statement, const CatalogCall& call) {
    const OdbcApi& odbc = Odbc();
    Argument catalog(call.catalog);
    Argument schema(call.schema);
    Argument table(call.table);
    Argument column(call.column);
    Argument types(call.types);
    SQLCHAR all[] = "%";
    SQLCHAR none[] = "";
    switch (call.function) {
        case CatalogCall::Function::Tables:
            return odbc.Tables(statement, catalog.text, catalog.length, schema.text, schema.length, table.text,
                               table.length, types.text, types.length);
        case CatalogCall::Function::Columns:
            return odbc.Columns(statement, catalog.text, catalog.length, schema.text, schema.length, table.text,
                                table.length, column.text, column.length);
        case CatalogCall::Function::PrimaryKeys:
            return odbc.PrimaryKeys(statement, catalog.text, catalog.length, schema.text, schema.length, table.text,
                                    table.length);
        case CatalogCall::Function::ForeignKeys: {
            Argument foreignCatalog(call.foreignCatalog);
            Argument foreignSchema(call.foreignSchema);
            Argument foreignTable(call.foreignTable);
            return odbc.ForeignKeys(statement, catalog.text, catalog.length, schema.text, schema.length, table.text,
                                    table.length, foreignCatalog.text, foreignCatalog.length, foreignSchema.text,
                                    foreignSchema.length, foreignTable.text, foreignTable.length);
        }
        case CatalogCall::Function::Statistics:
            return odbc.Statistics(statement, catalog.text, catalog.length, schema.text, schema.length, table.text,
                                   table.length, call.unique ? SQL_INDEX_UNIQUE : SQL_INDEX_ALL, SQL_QUICK);
        case CatalogCall::Function::Procedures:
            return odbc.Procedures(statement, catalog.text, catalog.length, schema.text, schema.length, table.text,
                                   table.length);
        case CatalogCall::Function::ProcedureColumns:
            return odbc.ProcedureColumns(statement, catalog.text, catalog.length, schema.text, schema.length,
                                         table.text, table.length, column.text, column.length);
        case CatalogCall::Function::ColumnPrivileges:
            return odbc.ColumnPrivileges(statement, catalog.text, catalog.length, schema.text, schema.length,
                                         table.text, table.length, all, 1);
        case CatalogCall::Function::RowVersions:
            return odbc.SpecialColumns(statement, SQL_ROWVER, catalog.text, catalog.length, schema.text, schema.length,
                                       table.text, table.length, SQL_SCOPE_CURROW, SQL_NULLABLE);
        case CatalogCall::Function::TypeInfo:
            return odbc.GetTypeInfo(statement, SQL_ALL_TYPES);
        case CatalogCall::Function::Catalogs:
            return odbc.Tables(statement, all, 1, none, 0, none, 0, nullptr, 0);
        case CatalogCall::Function::Schemas:
            return odbc.Tables(statement, none, 0, all, 1, none, 0, nullptr, 0);
    }
    return SQL_ERROR;
}

}  // namespace tk::ado
