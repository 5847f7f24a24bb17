// This library, through the classes that applications use.
#include <tkkernel/tkkernel.h>

#include <cmath>
#include <stdexcept>

#include "bench/database/workload.h"

namespace tk::bench {
namespace {

class Tk : public Contender {
public:
    Tk() { CoInitializeEx(nullptr, COINIT_MULTITHREADED); }

    const char* Name() const override { return "tk"; }

    void Connect(const std::string& connection) override {
        if (!database_.Open(connection.c_str())) Fail(database_);
        if (!records_.OpenDatabase(&database_)) Fail(records_);
    }

    Checksum NativeScan() override {
        Checksum sum;
        Open(kSelectAll);
        for (; !records_.GetEof(); records_.MoveNext())
            Add(sum);
        records_.Close();
        return sum;
    }

    Checksum TextScan() override {
        Checksum sum;
        Open(kSelectAll);
        for (; !records_.GetEof(); records_.MoveNext()) {
            for (long i = 0; i < 5; ++i) {
                const CString cell = records_.GetStringValue(i);
                if (i == 1) sum.texts += cell.GetLength();
            }
            ++sum.rows;
        }
        records_.Close();
        return sum;
    }

    Checksum ClientCursor() override {
        Checksum sum;
        Open(kSelectAll);
        for (; !records_.GetEof(); records_.MoveNext())
            Add(sum);
        for (records_.MoveLast(); !records_.GetBof(); records_.MovePrevious())
            Add(sum);
        records_.Close();
        return sum;
    }

    Checksum PointQuery(long id) override {
        Checksum sum;
        Open(SelectOne(id).c_str());
        for (; !records_.GetEof(); records_.MoveNext())
            Add(sum);
        return sum;
    }

    void Insert(long n) override {
        database_.BeginTrans();
        for (long i = 1; i <= n; ++i) {
            if (!database_.ExecuteSQL(InsertOne(i).c_str())) Fail(database_);
        }
        database_.ExecuteSQL("DELETE FROM item_copy");
        database_.CommitTrans();
    }

private:
    [[noreturn]] static void Fail(CTDataDriver& object) {
        throw std::runtime_error(static_cast<const char*>(object.GetLastErrorString()));
    }

    void Open(const char* sql) {
        if (!records_.OpenSQL(sql, 1)) Fail(records_);
    }

    void Add(Checksum& sum) {
        sum.numbers += records_.GetIntValue(0L) + records_.GetDoubleValue(2L) + records_.GetIntValue(3L);
        sum.texts += records_.GetStringValue(1L).GetLength();
        const DATE stamp = records_.GetDateValue(4L);
        sum.seconds += std::llround((stamp - std::floor(stamp)) * 86400);
        ++sum.rows;
    }

    CTDatabase database_;
    CTRecordset records_;
};

}  // namespace

std::unique_ptr<Contender> MakeTk() {
    return std::make_unique<Tk>();
}

}  // namespace tk::bench
