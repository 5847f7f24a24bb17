// insert_bench - the ways by which rows reach a table, by bare calls, at several numbers of rows a statement.
//
//   insert_bench CONNECTION [ROWS]      an ODBC connection string; uses its table "tk_insert_bench"
//
// "values" is one INSERT with a list of rows, a parameter a value; "unnest" one array a column, where the system has
// them; "array" the driver's own parameter arrays. Prepared once, in one transaction; the best of three runs counts, in
// microseconds a row, of the clock and of this process. Each run counts the rows that have arrived.
#include <sql.h>
#include <sqlext.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr int kColumns = 5;
constexpr int kRuns = 3;

enum class Way { Values, Unnest, Array };

struct Rows {
    explicit Rows(std::size_t count) : ids(count), prices(count), quantities(count), names(count), stamps(count) {
        for (std::size_t i = 0; i < count; ++i) {
            ids[i] = static_cast<SQLBIGINT>(i + 1);
            prices[i] = static_cast<double>(i) * 0.25;
            quantities[i] = static_cast<SQLBIGINT>(i % 1000);
            std::snprintf(names[i].data, sizeof names[i].data, "item %07zu", i + 1);
            std::snprintf(stamps[i].data, sizeof stamps[i].data, "2020-01-01 %02zu:%02zu:%02zu", i / 3600 % 24,
                          i / 60 % 60, i % 60);
        }
    }
    struct Text {
        char data[32];
    };
    std::vector<SQLBIGINT> ids;
    std::vector<double> prices;
    std::vector<SQLBIGINT> quantities;
    std::vector<Text> names;
    std::vector<Text> stamps;
};

class Connection {
public:
    explicit Connection(std::string text) {
        SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment_);
        SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
        SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection_);
        const SQLRETURN opened =
            SQLDriverConnect(connection_, nullptr, Bytes(text), SQL_NTS, nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
        if (!SQL_SUCCEEDED(opened)) throw std::runtime_error("the connection does not open");
        char name[128] = {};
        SQLGetInfo(connection_, SQL_DBMS_NAME, name, sizeof name, nullptr);
        isPostgres_ = std::strstr(name, "Postgre") != nullptr;
        isMariaDb_ = std::strstr(name, "Maria") != nullptr || std::strstr(name, "MySQL") != nullptr;
    }
    ~Connection() {
        SQLDisconnect(connection_);
        SQLFreeHandle(SQL_HANDLE_DBC, connection_);
        SQLFreeHandle(SQL_HANDLE_ENV, environment_);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool Has(Way way, std::size_t rows) const {
        // Beyond that a system, or its driver, fails.
        const std::size_t mostParameters = isPostgres_ ? 7500 : isMariaDb_ ? 25000 : 32766;
        return way == Way::Values ? rows * kColumns <= mostParameters : way == Way::Array || isPostgres_;
    }
    /// Inserts all rows and undoes it.
    void Insert(Way way, const Rows& rows, std::size_t block) {
        Execute("DELETE FROM tk_insert_bench");
        SQLSetConnectAttr(connection_, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0);
        SQLHSTMT statement = nullptr;
        SQLAllocHandle(SQL_HANDLE_STMT, connection_, &statement);
        for (std::size_t first = 0, prepared = 0; first < rows.ids.size(); first += block) {
            const std::size_t count = std::min(block, rows.ids.size() - first);
            if (prepared != count) Prepare(statement, way, prepared = count);
            way == Way::Unnest ? InsertArrays(statement, rows, first, count)
                               : InsertParameters(statement, way, rows, first, count);
        }
        SQLFreeHandle(SQL_HANDLE_STMT, statement);
        const long found = Count();
        SQLEndTran(SQL_HANDLE_DBC, connection_, SQL_ROLLBACK);
        SQLSetConnectAttr(connection_, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON), 0);
        if (found != static_cast<long>(rows.ids.size())) throw std::runtime_error("rows are missing");
    }
    void Execute(std::string sql) {
        SQLHSTMT statement = nullptr;
        SQLAllocHandle(SQL_HANDLE_STMT, connection_, &statement);
        const SQLRETURN done = SQLExecDirect(statement, Bytes(sql), SQL_NTS);
        Check(statement, done);
        SQLFreeHandle(SQL_HANDLE_STMT, statement);
    }

private:
    static SQLCHAR* Bytes(std::string& text) { return reinterpret_cast<SQLCHAR*>(text.data()); }
    static void Check(SQLHSTMT statement, SQLRETURN code) {
        if (SQL_SUCCEEDED(code) || code == SQL_NO_DATA) return;
        char state[6] = {};
        char text[512] = "?";
        SQLGetDiagRec(SQL_HANDLE_STMT, statement, 1, reinterpret_cast<SQLCHAR*>(state), nullptr,
                      reinterpret_cast<SQLCHAR*>(text), sizeof text, nullptr);
        throw std::runtime_error(text);
    }
    void Prepare(SQLHSTMT statement, Way way, std::size_t rows) {
        std::string sql = "INSERT INTO tk_insert_bench ";
        if (way == Way::Unnest) {
            sql +=
                "SELECT * FROM unnest(CAST(? AS bigint[]), CAST(? AS varchar[]), CAST(? AS double precision[]), "
                "CAST(? AS bigint[]), CAST(? AS timestamp[]))";
        } else {
            const std::size_t lists = way == Way::Values ? rows : 1;
            for (std::size_t i = 0; i < lists; ++i)
                sql += i == 0 ? "VALUES (?, ?, ?, ?, ?)" : ", (?, ?, ?, ?, ?)";
        }
        Check(statement, SQLPrepare(statement, Bytes(sql), SQL_NTS));
    }
    void InsertParameters(SQLHSTMT statement, Way way, const Rows& rows, std::size_t first, std::size_t count) {
        const std::size_t lists = way == Way::Values ? count : 1;
        if (way == Way::Array) {
            SQLSetStmtAttr(statement, SQL_ATTR_PARAM_BIND_TYPE, nullptr, 0);
            SQLSetStmtAttr(statement, SQL_ATTR_PARAMSET_SIZE, reinterpret_cast<SQLPOINTER>(count), 0);
        }
        lengths_.assign(rows.ids.size(), SQL_NTS);
        SQLUSMALLINT number = 0;
        for (std::size_t row = first; row < first + lists; ++row) {
            BindNumber(statement, ++number, SQL_C_SBIGINT, SQL_BIGINT, &rows.ids[row]);
            BindText(statement, ++number, SQL_VARCHAR, rows.names[row]);
            BindNumber(statement, ++number, SQL_C_DOUBLE, SQL_DOUBLE, &rows.prices[row]);
            BindNumber(statement, ++number, SQL_C_SBIGINT, SQL_BIGINT, &rows.quantities[row]);
            BindText(statement, ++number, SQL_TYPE_TIMESTAMP, rows.stamps[row]);
        }
        Check(statement, SQLExecute(statement));
    }
    template <typename Number>
    static void BindNumber(SQLHSTMT statement, SQLUSMALLINT number, SQLSMALLINT c, SQLSMALLINT sql,
                           const Number* value) {
        SQLBindParameter(statement, number, SQL_PARAM_INPUT, c, sql, 0, 0, const_cast<Number*>(value), 0, nullptr);
    }
    void BindText(SQLHSTMT statement, SQLUSMALLINT number, SQLSMALLINT sql, const Rows::Text& value) {
        SQLBindParameter(statement, number, SQL_PARAM_INPUT, SQL_C_CHAR, sql, sizeof value.data, 0,
                         const_cast<char*>(value.data), sizeof value.data, lengths_.data());
    }
    void InsertArrays(SQLHSTMT statement, const Rows& rows, std::size_t first, std::size_t count) {
        std::string texts[kColumns];
        for (std::size_t row = first; row < first + count; ++row) {
            char price[40];
            std::snprintf(price, sizeof price, "%.17g", rows.prices[row]);
            const std::string cells[kColumns] = {std::to_string(rows.ids[row]), rows.names[row].data, price,
                                                 std::to_string(rows.quantities[row]), rows.stamps[row].data};
            for (int i = 0; i < kColumns; ++i)
                texts[i] += (row == first ? "{\"" : ",\"") + cells[i] + "\"";
        }
        SQLUSMALLINT number = 0;
        for (std::string& text : texts) {
            text += "}";
            SQLBindParameter(statement, ++number, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_LONGVARCHAR, text.size(), 0,
                             text.data(), static_cast<SQLLEN>(text.size()), nullptr);
        }
        Check(statement, SQLExecute(statement));
    }
    long Count() {
        SQLHSTMT statement = nullptr;
        SQLAllocHandle(SQL_HANDLE_STMT, connection_, &statement);
        std::string sql = "SELECT COUNT(*) FROM tk_insert_bench";
        SQLBIGINT count = 0;
        SQLExecDirect(statement, Bytes(sql), SQL_NTS);
        SQLFetch(statement);
        SQLGetData(statement, 1, SQL_C_SBIGINT, &count, sizeof count, nullptr);
        SQLFreeHandle(SQL_HANDLE_STMT, statement);
        return static_cast<long>(count);
    }

    SQLHENV environment_ = nullptr;
    SQLHDBC connection_ = nullptr;
    bool isPostgres_ = false;
    bool isMariaDb_ = false;
    std::vector<SQLLEN> lengths_;
};

double ProcessSeconds() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
}

void Measure(Connection& connection, const Rows& rows) {
    static constexpr struct {
        const char* name;
        Way way;
    } kWays[] = {{"values", Way::Values}, {"unnest", Way::Unnest}, {"array", Way::Array}};
    std::printf("rows a statement");
    for (const auto& way : kWays)
        std::printf("%18s", way.name);
    std::printf("     (microseconds a row: clock, own processor)\n");
    for (const std::size_t block : {100, 300, 1000, 3000, 5000, 10000}) {
        std::printf("%16zu", block);
        for (const auto& way : kWays) {
            double clock = 1e9;
            double own = 1e9;
            for (int run = 0; run < kRuns && connection.Has(way.way, block); ++run) {
                const double before = ProcessSeconds();
                const auto start = std::chrono::steady_clock::now();
                connection.Insert(way.way, rows, block);
                const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
                clock = std::min(clock, took.count());
                own = std::min(own, ProcessSeconds() - before);
            }
            const double each = 1e6 / static_cast<double>(rows.ids.size());
            connection.Has(way.way, block) ? std::printf("%11.2f %6.2f", clock * each, own * each)
                                           : std::printf("%18s", "-");
            std::fflush(stdout);
        }
        std::printf("\n");
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return std::fprintf(stderr, "insert_bench CONNECTION [ROWS]\n"), 2;
    try {
        Connection connection(argv[1]);
        const Rows rows(argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 50'000);
        connection.Execute("DROP TABLE IF EXISTS tk_insert_bench");
        connection.Execute(
            "CREATE TABLE tk_insert_bench (id bigint not null primary key, name varchar(20), price double "
            "precision, quantity bigint, stamp timestamp null)");
        Measure(connection, rows);
        connection.Execute("DROP TABLE tk_insert_bench");
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
    return 0;
}
