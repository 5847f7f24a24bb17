#include "bench/raw_schema.h"

#include <sql.h>
#include <sqlext.h>

#include <initializer_list>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

namespace tk::bench {
namespace {

class Raw final : public RawSchema {
public:
    Raw(const std::string& connection, std::string schema) : schema_(std::move(schema)) {
        SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment_);
        SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
        SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection_);
        std::string text = connection;
        Check(SQLDriverConnect(connection_, nullptr, Bytes(text), SQL_NTS, nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT));
        SQLAllocHandle(SQL_HANDLE_STMT, connection_, &statement_);
        SQLCHAR name[128] = {};
        SQLGetInfo(connection_, SQL_DBMS_NAME, name, sizeof name, nullptr);
        const std::string system(reinterpret_cast<char*>(name));
        isFile_ = system.find("SQLite") != std::string::npos;
        hasCatalogs_ = system.find("MariaDB") != std::string::npos;
    }
    ~Raw() override {
        SQLFreeHandle(SQL_HANDLE_STMT, statement_);
        SQLDisconnect(connection_);
        SQLFreeHandle(SQL_HANDLE_DBC, connection_);
        SQLFreeHandle(SQL_HANDLE_ENV, environment_);
    }
    Raw(const Raw&) = delete;
    Raw& operator=(const Raw&) = delete;

    void Execute(const std::string& sql) override {
        std::string text = sql;
        Check(SQLExecDirect(statement_, Bytes(text), SQL_NTS));
        SQLFreeStmt(statement_, SQL_CLOSE);
    }

    long Each() override {
        std::vector<std::string> tables;
        Tables([&](const Row& row) { tables.emplace_back(row.text[2]); });
        long columns = 0;
        for (const std::string& table : tables)
            Columns(&table, [&](const Row& row) { columns += row.text[3][0] != '\0'; });
        return columns;
    }
    long Whole() override {
        // PostgreSQL's driver tells the columns of indexes as well.
        std::set<std::string> tables;
        if (!isFile_) Tables([&](const Row& row) { tables.emplace(row.text[2]); });
        long columns = 0;
        Columns(nullptr, [&](const Row& row) { columns += isFile_ || tables.contains(row.text[2]); });
        return columns;
    }
    bool HasCatalogs() const override { return hasCatalogs_; }
    bool IsFile() const override { return isFile_; }

private:
    struct Row {
        char text[6][512];
        SQLINTEGER number[5];
        SQLLEN length[11];
    };

    static SQLCHAR* Bytes(std::string& text) { return reinterpret_cast<SQLCHAR*>(text.data()); }
    void Check(SQLRETURN code) const {
        if (SQL_SUCCEEDED(code) || code == SQL_NO_DATA) return;
        SQLCHAR state[6] = {};
        SQLCHAR text[512] = "?";
        SQLGetDiagRec(statement_ != nullptr ? SQL_HANDLE_STMT : SQL_HANDLE_DBC,
                      statement_ != nullptr ? statement_ : connection_, 1, state, nullptr, text, sizeof text, nullptr);
        throw std::runtime_error(reinterpret_cast<char*>(text));
    }
    void Bind(Row& row, std::initializer_list<SQLUSMALLINT> texts, std::initializer_list<SQLUSMALLINT> numbers) {
        int place = 0;
        for (const SQLUSMALLINT column : texts) {
            SQLBindCol(statement_, column, SQL_C_CHAR, row.text[place], sizeof row.text[place], &row.length[place]);
            ++place;
        }
        int number = 0;
        for (const SQLUSMALLINT column : numbers)
            SQLBindCol(statement_, column, SQL_C_SLONG, &row.number[number++], 0, &row.length[place++]);
    }
    template <typename Use>
    void ForEach(const Row& row, const Use& use) {
        while (SQL_SUCCEEDED(SQLFetch(statement_)))
            use(row);
        SQLFreeStmt(statement_, SQL_CLOSE);
        SQLFreeStmt(statement_, SQL_UNBIND);
    }
    template <typename Use>
    void Tables(const Use& use) {
        Row row = {};
        if (isFile_) {
            Bind(row, {1, 2, 3, 4}, {});
            std::string sql =
                "select null, null, name, upper(type) from sqlite_master where type = 'table' order by name";
            Check(SQLExecDirect(statement_, Bytes(sql), SQL_NTS));
        } else {
            Bind(row, {1, 2, 3, 4}, {});
            SQLCHAR types[] = "'TABLE'";
            Check(SQLTables(statement_, Catalog(), SQL_NTS, Schema(), SQL_NTS, nullptr, 0, types, SQL_NTS));
        }
        ForEach(row, use);
    }
    template <typename Use>
    void Columns(const std::string* table, const Use& use) {
        Row row = {};
        if (isFile_) {
            Bind(row, {1, 2, 3, 4, 6, 13}, {11, 17});
            const std::string tables =
                table != nullptr ? "(select name from pragma_table_list('" + *table +
                                       "') where schema = 'main' and name = '" + *table + "')"
                                 : "(select name from sqlite_master where type in ('table', 'view') order by name)";
            std::string sql =
                "select null, null, m.name, c.name, null, c.type, null, null, null, null, c.\"notnull\", null, "
                "c.dflt_value, null, null, null, c.cid, c.pk from " +
                tables + " m join pragma_table_xinfo(m.name, 'main') c where c.hidden <> 1";
            Check(SQLExecDirect(statement_, Bytes(sql), SQL_NTS));
        } else {
            Bind(row, {1, 2, 3, 4, 6, 13}, {5, 7, 9, 11, 17});
            std::string name = table != nullptr ? *table : "";
            Check(SQLColumns(statement_, Catalog(), SQL_NTS, Schema(), SQL_NTS,
                             table != nullptr ? Bytes(name) : nullptr, SQL_NTS, nullptr, 0));
        }
        ForEach(row, use);
    }

    SQLHENV environment_ = nullptr;
    SQLHDBC connection_ = nullptr;
    SQLHSTMT statement_ = nullptr;
    SQLCHAR* Catalog() { return hasCatalogs_ ? Bytes(schema_) : nullptr; }
    SQLCHAR* Schema() { return hasCatalogs_ ? nullptr : Bytes(schema_); }

    bool hasCatalogs_ = false;
    bool isFile_ = false;
    std::string schema_;
};

}  // namespace

std::unique_ptr<RawSchema> MakeRawSchema(const std::string& connection, const std::string& schema) {
    return std::make_unique<Raw>(connection, schema);
}

}  // namespace tk::bench
