#include "bench/raw_text_scan.h"

#include <sql.h>
#include <sqlext.h>

#include <stdexcept>

namespace tk::bench {
namespace {

constexpr SQLULEN kBlock = 1000;
constexpr int kColumns = 5;
constexpr SQLLEN kCell = 81;

void Check(SQLRETURN code) {
    if (!SQL_SUCCEEDED(code)) throw std::runtime_error("raw: call failed");
}

}  // namespace

struct RawTextScan::Handles {
    SQLHENV environment = nullptr;
    SQLHDBC connection = nullptr;
    SQLHSTMT statement = nullptr;
    char text[kColumns][kBlock][kCell];
    SQLLEN length[kColumns][kBlock];
};

RawTextScan::RawTextScan(std::string connection) : handles_(std::make_unique<Handles>()) {
    SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &handles_->environment);
    SQLSetEnvAttr(handles_->environment, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    SQLAllocHandle(SQL_HANDLE_DBC, handles_->environment, &handles_->connection);
    Check(SQLDriverConnect(handles_->connection, nullptr, reinterpret_cast<SQLCHAR*>(connection.data()), SQL_NTS,
                           nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT));
    SQLAllocHandle(SQL_HANDLE_STMT, handles_->connection, &handles_->statement);
}

RawTextScan::~RawTextScan() {
    SQLFreeHandle(SQL_HANDLE_STMT, handles_->statement);
    SQLDisconnect(handles_->connection);
    SQLFreeHandle(SQL_HANDLE_DBC, handles_->connection);
    SQLFreeHandle(SQL_HANDLE_ENV, handles_->environment);
}

long long RawTextScan::Run(std::string sql) {
    const SQLHSTMT statement = handles_->statement;
    SQLULEN rows = 0;
    SQLSetStmtAttr(statement, SQL_ATTR_ROW_ARRAY_SIZE, reinterpret_cast<SQLPOINTER>(kBlock), 0);
    SQLSetStmtAttr(statement, SQL_ATTR_ROWS_FETCHED_PTR, &rows, 0);
    for (int i = 0; i < kColumns; ++i) {
        SQLBindCol(statement, static_cast<SQLUSMALLINT>(i + 1), SQL_C_CHAR, handles_->text[i], kCell,
                   handles_->length[i]);
    }
    Check(SQLExecDirect(statement, reinterpret_cast<SQLCHAR*>(sql.data()), SQL_NTS));
    long long bytes = 0;
    while (SQL_SUCCEEDED(SQLFetch(statement))) {
        for (SQLULEN row = 0; row < rows; ++row) {
            for (int i = 0; i < kColumns; ++i) {
                const std::string cell(handles_->text[i][row], static_cast<std::size_t>(handles_->length[i][row]));
                bytes += static_cast<long long>(cell.size());
            }
        }
    }
    SQLFreeStmt(statement, SQL_CLOSE);
    return bytes;
}

}  // namespace tk::bench
