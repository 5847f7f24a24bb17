// ado/odbc/odbc_api.h - the one seam towards the driver manager: every ODBC call goes through this table, so that a
// test can fail any of them.
//
//   const OdbcApi& odbc = Odbc();
//   SQLRETURN result = odbc.Fetch(statement);
//
// Only the narrow functions are here: texts towards drivers are UTF-8 on every driver, and mixing the narrow with the
// wide functions on one connection corrupts text in some of them.
//
// Threads: the table is read without a lock; SetOdbcForTest runs while no call is being made.
#pragma once

#include <windows.h>

#include <atomic>

// The platform's basic types are known already; ODBC's headers must not define them again.
#define ALREADY_HAVE_WINDOWS_TYPE
#define SQL_API
using SQLSCHAR = signed char;
using SQLHWND = void*;
using RETCODE = signed short;
#include <sql.h>
#include <sqlext.h>

namespace tk::ado {

// One row per function: our name, ODBC's name.
#define TK_ODBC_FUNCTIONS(X)                 \
    X(AllocHandle, SQLAllocHandle)           \
    X(FreeHandle, SQLFreeHandle)             \
    X(SetEnvAttr, SQLSetEnvAttr)             \
    X(DriverConnect, SQLDriverConnect)       \
    X(Disconnect, SQLDisconnect)             \
    X(SetConnectAttr, SQLSetConnectAttr)     \
    X(GetConnectAttr, SQLGetConnectAttr)     \
    X(GetInfo, SQLGetInfo)                   \
    X(GetFunctions, SQLGetFunctions)         \
    X(Drivers, SQLDrivers)                   \
    X(DataSources, SQLDataSources)           \
    X(EndTran, SQLEndTran)                   \
    X(ExecDirect, SQLExecDirect)             \
    X(Prepare, SQLPrepare)                   \
    X(Execute, SQLExecute)                   \
    X(BindParameter, SQLBindParameter)       \
    X(NumResultCols, SQLNumResultCols)       \
    X(DescribeCol, SQLDescribeCol)           \
    X(ColAttribute, SQLColAttribute)         \
    X(RowCount, SQLRowCount)                 \
    X(BindCol, SQLBindCol)                   \
    X(Fetch, SQLFetch)                       \
    X(GetData, SQLGetData)                   \
    X(SetPos, SQLSetPos)                     \
    X(MoreResults, SQLMoreResults)           \
    X(CloseCursor, SQLCloseCursor)           \
    X(FreeStmt, SQLFreeStmt)                 \
    X(SetStmtAttr, SQLSetStmtAttr)           \
    X(Cancel, SQLCancel)                     \
    X(GetDiagRec, SQLGetDiagRec)             \
    X(Tables, SQLTables)                     \
    X(Columns, SQLColumns)                   \
    X(PrimaryKeys, SQLPrimaryKeys)           \
    X(ForeignKeys, SQLForeignKeys)           \
    X(Statistics, SQLStatistics)             \
    X(Procedures, SQLProcedures)             \
    X(ProcedureColumns, SQLProcedureColumns) \
    X(ColumnPrivileges, SQLColumnPrivileges) \
    X(SpecialColumns, SQLSpecialColumns)     \
    X(NumParams, SQLNumParams)               \
    X(DescribeParam, SQLDescribeParam)       \
    X(GetTypeInfo, SQLGetTypeInfo)

/// The driver manager's functions under short names.
struct OdbcApi {
#define TK_ODBC_MEMBER(name, function) decltype(&::function) name = &::function;
    TK_ODBC_FUNCTIONS(TK_ODBC_MEMBER)
#undef TK_ODBC_MEMBER
};

/// For the two functions below.
inline constinit const OdbcApi kDriverManager;
inline constinit std::atomic<const OdbcApi*> odbcInUse = &kDriverManager;

/// The table in use.
inline const OdbcApi& Odbc() noexcept {
    return *odbcInUse.load(std::memory_order_acquire);
}

/// Puts another table in place and returns the former one; the table outlives its use.
const OdbcApi& SetOdbcForTest(const OdbcApi& api) noexcept;

}  // namespace tk::ado
