// The yardstick: a loop over the driver manager as an expert would write it by hand for this table.
#include <sql.h>
#include <sqlext.h>

#include <cstring>
#include <stdexcept>
#include <vector>

#include "bench/database/workload.h"

namespace tk::bench {
namespace {

constexpr SQLULEN kBlock = 1000;
constexpr SQLLEN kNameBytes = 81;
constexpr SQLLEN kTextBytes = 32;

struct Block {
    SQLINTEGER id[kBlock];
    char name[kBlock][kNameBytes];
    double price[kBlock];
    SQLINTEGER quantity[kBlock];
    SQL_TIMESTAMP_STRUCT stamp[kBlock];
    SQLLEN length[5][kBlock];
};

struct TextBlock {
    char id[kBlock][kTextBytes];
    char name[kBlock][kNameBytes];
    char price[kBlock][kTextBytes];
    char quantity[kBlock][kTextBytes];
    char stamp[kBlock][kTextBytes];
    SQLLEN length[5][kBlock];
};

struct Row {
    SQLINTEGER id;
    std::string name;
    double price;
    SQLINTEGER quantity;
    SQL_TIMESTAMP_STRUCT stamp;
};

class Raw : public Contender {
public:
    ~Raw() override {
        SQLFreeHandle(SQL_HANDLE_STMT, statement_);
        SQLDisconnect(connection_);
        SQLFreeHandle(SQL_HANDLE_DBC, connection_);
        SQLFreeHandle(SQL_HANDLE_ENV, environment_);
    }

    const char* Name() const override { return "raw"; }

    void Connect(const std::string& connection) override {
        SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment_);
        SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
        SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection_);
        std::string text = connection;
        Check(SQLDriverConnect(connection_, nullptr, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS, nullptr, 0,
                               nullptr, SQL_DRIVER_NOPROMPT));
        SQLAllocHandle(SQL_HANDLE_STMT, connection_, &statement_);
    }

    Checksum NativeScan() override {
        Checksum sum;
        ForEachBlock(kSelectAll, [&](SQLULEN rows) {
            for (SQLULEN i = 0; i < rows; ++i) {
                sum.numbers += block_->id[i] + block_->price[i] + block_->quantity[i];
                sum.texts += block_->length[1][i];
                sum.seconds += Seconds(block_->stamp[i]);
            }
            sum.rows += static_cast<long>(rows);
        });
        return sum;
    }

    Checksum TextScan() override {
        Checksum sum;
        Reset();
        BindText(1, text_->id, kTextBytes);
        BindText(2, text_->name, kNameBytes);
        BindText(3, text_->price, kTextBytes);
        BindText(4, text_->quantity, kTextBytes);
        BindText(5, text_->stamp, kTextBytes);
        Fetch(kSelectAll, [&](SQLULEN rows) {
            for (SQLULEN i = 0; i < rows; ++i) {
                // A text of the caller's own for each cell, as every contender gives one.
                std::string cells[5] = {{text_->id[i], Length(0, i)},
                                        {text_->name[i], Length(1, i)},
                                        {text_->price[i], Length(2, i)},
                                        {text_->quantity[i], Length(3, i)},
                                        {text_->stamp[i], Length(4, i)}};
                sum.texts += static_cast<long long>(cells[1].size());
            }
            sum.rows += static_cast<long>(rows);
        });
        return sum;
    }

    Checksum ClientCursor() override {
        std::vector<Row> all;
        ForEachBlock(kSelectAll, [&](SQLULEN rows) {
            for (SQLULEN i = 0; i < rows; ++i) {
                all.push_back({block_->id[i],
                               std::string(block_->name[i], static_cast<std::size_t>(block_->length[1][i])),
                               block_->price[i], block_->quantity[i], block_->stamp[i]});
            }
        });
        Checksum sum;
        for (const auto& row : all)
            Add(sum, row);
        for (auto row = all.rbegin(); row != all.rend(); ++row)
            Add(sum, *row);
        return sum;
    }

    Checksum PointQuery(long id) override {
        Checksum sum;
        ForEachBlock(SelectOne(id), [&](SQLULEN rows) {
            for (SQLULEN i = 0; i < rows; ++i) {
                sum.numbers += block_->id[i] + block_->price[i] + block_->quantity[i];
                sum.texts += block_->length[1][i];
                sum.seconds += Seconds(block_->stamp[i]);
            }
            sum.rows += static_cast<long>(rows);
        });
        return sum;
    }

    void Insert(long n) override {
        Reset();
        SQLSetConnectAttr(connection_, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0);
        for (long i = 1; i <= n; ++i)
            Execute(InsertOne(i));
        Execute("DELETE FROM item_copy");
        SQLEndTran(SQL_HANDLE_DBC, connection_, SQL_COMMIT);
        SQLSetConnectAttr(connection_, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON), 0);
    }

private:
    static void Check(SQLRETURN code) {
        if (!SQL_SUCCEEDED(code)) throw std::runtime_error("raw: call failed");
    }

    static long long Seconds(const SQL_TIMESTAMP_STRUCT& stamp) {
        return stamp.hour * 3600LL + stamp.minute * 60LL + stamp.second;
    }

    static void Add(Checksum& sum, const Row& row) {
        sum.numbers += row.id + row.price + row.quantity;
        sum.texts += static_cast<long long>(row.name.size());
        sum.seconds += Seconds(row.stamp);
        ++sum.rows;
    }

    std::size_t Length(int column, SQLULEN row) const { return static_cast<std::size_t>(text_->length[column][row]); }

    void Reset() {
        SQLFreeStmt(statement_, SQL_CLOSE);
        SQLFreeStmt(statement_, SQL_UNBIND);
        bound_ = false;
    }

    void BindText(SQLUSMALLINT column, void* buffer, SQLLEN bytes) {
        SQLBindCol(statement_, column, SQL_C_CHAR, buffer, bytes, text_->length[column - 1]);
    }

    void BindNative() {
        if (bound_) return;
        SQLBindCol(statement_, 1, SQL_C_SLONG, block_->id, 0, block_->length[0]);
        SQLBindCol(statement_, 2, SQL_C_CHAR, block_->name, kNameBytes, block_->length[1]);
        SQLBindCol(statement_, 3, SQL_C_DOUBLE, block_->price, 0, block_->length[2]);
        SQLBindCol(statement_, 4, SQL_C_SLONG, block_->quantity, 0, block_->length[3]);
        SQLBindCol(statement_, 5, SQL_C_TYPE_TIMESTAMP, block_->stamp, 0, block_->length[4]);
        bound_ = true;
    }

    template <class Work>
    void ForEachBlock(const std::string& sql, Work work) {
        SQLFreeStmt(statement_, SQL_CLOSE);
        BindNative();
        Fetch(sql, work);
    }

    template <class Work>
    void Fetch(const std::string& sql, Work work) {
        SQLULEN rows = 0;
        SQLSetStmtAttr(statement_, SQL_ATTR_ROW_ARRAY_SIZE, reinterpret_cast<SQLPOINTER>(kBlock), 0);
        SQLSetStmtAttr(statement_, SQL_ATTR_ROWS_FETCHED_PTR, &rows, 0);
        Execute(sql);
        while (SQL_SUCCEEDED(SQLFetch(statement_)))
            work(rows);
        SQLFreeStmt(statement_, SQL_CLOSE);
    }

    void Execute(const std::string& sql) {
        std::string text = sql;
        const SQLRETURN code = SQLExecDirect(statement_, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS);
        if (code != SQL_NO_DATA) Check(code);
    }

    SQLHENV environment_ = nullptr;
    SQLHDBC connection_ = nullptr;
    SQLHSTMT statement_ = nullptr;
    bool bound_ = false;
    std::unique_ptr<Block> block_ = std::make_unique<Block>();
    std::unique_ptr<TextBlock> text_ = std::make_unique<TextBlock>();
};

}  // namespace

std::unique_ptr<Contender> MakeRaw() {
    return std::make_unique<Raw>();
}

}  // namespace tk::bench
