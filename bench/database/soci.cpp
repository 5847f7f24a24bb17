// SOCI's ODBC backend, through rowset<row>: the late-bound access that its users write. Its rows have a value of each
// column's own type; texts are made of these by hand. Beside that, the text scan with strings bound beforehand.
#include <soci/odbc/soci-odbc.h>
#include <soci/soci.h>

#include <cstdio>
#include <ctime>
#include <stdexcept>
#include <vector>

#include "bench/database/workload.h"

namespace tk::bench {
namespace {

class Soci : public Contender {
public:
    const char* Name() const override { return "soci"; }

    void Connect(const std::string& connection) override { session_.open(soci::odbc, connection); }

    Checksum NativeScan() override { return Scan(kSelectAll); }

    Checksum TextScan() override {
        Checksum sum;
        soci::rowset<soci::row> rows = (session_.prepare << kSelectAll);
        for (const auto& row : rows) {
            for (std::size_t i = 0; i < row.size(); ++i) {
                const std::string cell = TextOf(row, i);
                if (i == 1) sum.texts += static_cast<long long>(cell.size());
            }
            ++sum.rows;
        }
        return sum;
    }

    Checksum ClientCursor() override {
        struct Item {
            long long id;
            std::string name;
            double price;
            int quantity;
            std::tm stamp;
        };
        std::vector<Item> all;
        soci::rowset<soci::row> rows = (session_.prepare << kSelectAll);
        for (const auto& row : rows) {
            all.push_back({Id(row), row.get<std::string>(1), row.get<double>(2), Quantity(row), row.get<std::tm>(4)});
        }
        Checksum sum;
        const auto add = [&sum](const Item& item) {
            sum.numbers += static_cast<double>(item.id) + item.price + item.quantity;
            sum.texts += static_cast<long long>(item.name.size());
            sum.seconds += item.stamp.tm_hour * 3600LL + item.stamp.tm_min * 60LL + item.stamp.tm_sec;
            ++sum.rows;
        };
        for (const auto& item : all)
            add(item);
        for (auto item = all.rbegin(); item != all.rend(); ++item)
            add(*item);
        return sum;
    }

    Checksum PointQuery(long id) override { return Scan(SelectOne(id)); }

    void Insert(long n) override {
        soci::transaction transaction(session_);
        for (long i = 1; i <= n; ++i)
            session_ << InsertOne(i);
        session_ << "DELETE FROM item_copy";
        transaction.commit();
    }

protected:
    soci::session session_;

private:
    static std::string TextOf(const soci::row& row, std::size_t column) {
        char text[40];
        switch (row.get_properties(column).get_data_type()) {
            case soci::dt_string:
                return row.get<std::string>(column);
            case soci::dt_integer:
                return std::to_string(row.get<int>(column));
            case soci::dt_long_long:
                return std::to_string(row.get<long long>(column));
            case soci::dt_double:
                std::snprintf(text, sizeof text, "%.15g", row.get<double>(column));
                return text;
            case soci::dt_date: {
                const auto stamp = row.get<std::tm>(column);
                std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &stamp);
                return text;
            }
            default:
                throw std::runtime_error("a type that the table does not have");
        }
    }

    static long long Id(const soci::row& row) {
        return row.get_properties(0).get_data_type() == soci::dt_long_long ? row.get<long long>(0) : row.get<int>(0);
    }
    static int Quantity(const soci::row& row) {
        return row.get_properties(3).get_data_type() == soci::dt_long_long ? static_cast<int>(row.get<long long>(3))
                                                                           : row.get<int>(3);
    }

    Checksum Scan(const std::string& sql) {
        Checksum sum;
        soci::rowset<soci::row> rows = (session_.prepare << sql);
        for (const auto& row : rows) {
            const auto stamp = row.get<std::tm>(4);
            sum.numbers += static_cast<double>(Id(row)) + row.get<double>(2) + Quantity(row);
            sum.texts += static_cast<long long>(row.get<std::string>(1).size());
            sum.seconds += stamp.tm_hour * 3600LL + stamp.tm_min * 60LL + stamp.tm_sec;
            ++sum.rows;
        }
        return sum;
    }
};

/// The same with strings bound to the columns.
class SociInto : public Soci {
public:
    const char* Name() const override { return "soci_into"; }

    Checksum TextScan() override {
        Checksum sum;
        std::string cells[5];
        soci::statement statement = (session_.prepare << kSelectAll, soci::into(cells[0]), soci::into(cells[1]),
                                     soci::into(cells[2]), soci::into(cells[3]), soci::into(cells[4]));
        statement.execute();
        while (statement.fetch()) {
            // A text of the caller's own for each cell, as every contender gives one.
            const std::string own[5] = {cells[0], cells[1], cells[2], cells[3], cells[4]};
            sum.texts += static_cast<long long>(own[1].size());
            ++sum.rows;
        }
        return sum;
    }
};

}  // namespace

std::unique_ptr<Contender> MakeSoci() {
    return std::make_unique<Soci>();
}

std::unique_ptr<Contender> MakeSociInto() {
    return std::make_unique<SociInto>();
}

}  // namespace tk::bench
