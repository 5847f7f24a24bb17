// Qt's ODBC driver through QSqlQuery; forward-only where the workload allows it.
#include <QtCore/QDateTime>
#include <QtCore/QVariant>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlError>
#include <QtSql/QSqlQuery>
#include <stdexcept>

#include "bench/database/workload.h"

namespace tk::bench {
namespace {

class Qt_ : public Contender {
public:
    ~Qt_() override {
        database_.close();
        database_ = {};
        QSqlDatabase::removeDatabase(name_);
    }

    const char* Name() const override { return "qt"; }

    void Connect(const std::string& connection) override {
        database_ = QSqlDatabase::addDatabase(QStringLiteral("QODBC"), name_);
        database_.setDatabaseName(QString::fromStdString(connection));
        if (!database_.open()) throw std::runtime_error(database_.lastError().text().toStdString());
    }

    Checksum NativeScan() override { return Scan(kSelectAll, false); }

    Checksum TextScan() override {
        Checksum sum;
        QSqlQuery query(database_);
        query.setForwardOnly(true);
        Run(query, kSelectAll);
        while (query.next()) {
            for (int i = 0; i < 5; ++i) {
                const QString cell = query.value(i).toString();
                if (i == 1) sum.texts += cell.size();
            }
            ++sum.rows;
        }
        return sum;
    }

    Checksum ClientCursor() override { return Scan(kSelectAll, true); }

    Checksum PointQuery(long id) override { return Scan(SelectOne(id), false); }

    void Insert(long n) override {
        database_.transaction();
        QSqlQuery query(database_);
        for (long i = 1; i <= n; ++i)
            Run(query, InsertOne(i));
        Run(query, "DELETE FROM item_copy");
        database_.commit();
    }

private:
    static void Run(QSqlQuery& query, const std::string& sql) {
        if (!query.exec(QString::fromStdString(sql))) throw std::runtime_error(query.lastError().text().toStdString());
    }

    static void Add(Checksum& sum, const QSqlQuery& query) {
        const QTime time = query.value(4).toDateTime().time();
        sum.numbers += query.value(0).toDouble() + query.value(2).toDouble() + query.value(3).toDouble();
        sum.texts += query.value(1).toString().size();
        sum.seconds += time.msecsSinceStartOfDay() / 1000;
        ++sum.rows;
    }

    Checksum Scan(const std::string& sql, bool back) {
        Checksum sum;
        QSqlQuery query(database_);
        query.setForwardOnly(!back);
        Run(query, sql);
        while (query.next())
            Add(sum, query);
        if (back) {
            for (bool more = query.last(); more; more = query.previous())
                Add(sum, query);
        }
        return sum;
    }

    // A second connection of the same name would take the first one away.
    const QString name_ = QStringLiteral("bench%1").arg(reinterpret_cast<quintptr>(this));
    QSqlDatabase database_;
};

}  // namespace

std::unique_ptr<Contender> MakeQt() {
    return std::make_unique<Qt_>();
}

}  // namespace tk::bench
