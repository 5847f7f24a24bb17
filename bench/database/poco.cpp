// POCO's ODBC RecordSet, which keeps the whole result.
#include <Poco/Data/ODBC/Connector.h>
#include <Poco/Data/RecordSet.h>
#include <Poco/Data/Session.h>
#include <Poco/DateTime.h>

#include "bench/database/workload.h"

namespace tk::bench {
namespace {

using namespace Poco::Data::Keywords;
using Poco::Data::RecordSet;
using Poco::Data::Statement;

class Poco_ : public Contender {
public:
    Poco_() { Poco::Data::ODBC::Connector::registerConnector(); }

    const char* Name() const override { return "poco"; }

    void Connect(const std::string& connection) override {
        session_ = std::make_unique<Poco::Data::Session>("ODBC", connection);
    }

    Checksum NativeScan() override { return Scan(kSelectAll, false); }

    Checksum TextScan() override {
        Checksum sum;
        RecordSet rows(*session_, std::string(kSelectAll));
        for (bool more = rows.moveFirst(); more; more = rows.moveNext()) {
            for (std::size_t i = 0; i < 5; ++i) {
                const std::string cell = rows[i].convert<std::string>();
                if (i == 1) sum.texts += static_cast<long long>(cell.size());
            }
            ++sum.rows;
        }
        return sum;
    }

    Checksum ClientCursor() override { return Scan(kSelectAll, true); }

    Checksum PointQuery(long id) override { return Scan(SelectOne(id), false); }

    void Insert(long n) override {
        session_->setFeature("autoCommit", false);  // it begins no transaction otherwise
        session_->begin();
        for (long i = 1; i <= n; ++i) {
            *session_ << InsertOne(i), now;
        }
        *session_ << "DELETE FROM item_copy", now;
        session_->commit();
        session_->setFeature("autoCommit", true);
    }

private:
    static void Add(Checksum& sum, RecordSet& rows) {
        const auto stamp = rows[4].extract<Poco::DateTime>();
        sum.numbers += rows[0].convert<double>() + rows[2].convert<double>() + rows[3].convert<double>();
        sum.texts += static_cast<long long>(rows[1].extract<std::string>().size());
        sum.seconds += stamp.hour() * 3600LL + stamp.minute() * 60LL + stamp.second();
        ++sum.rows;
    }

    Checksum Scan(const std::string& sql, bool back) {
        Checksum sum;
        RecordSet rows(*session_, sql);
        for (bool more = rows.moveFirst(); more; more = rows.moveNext())
            Add(sum, rows);
        if (back) {
            for (bool more = rows.moveLast(); more; more = rows.movePrevious())
                Add(sum, rows);
        }
        return sum;
    }

    std::unique_ptr<Poco::Data::Session> session_;
};

}  // namespace

std::unique_ptr<Contender> MakePoco() {
    return std::make_unique<Poco_>();
}

}  // namespace tk::bench
