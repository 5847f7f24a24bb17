// Records as texts and files, beside the bare text scan that any export has to make.
//
// Input: 1,000,000 rows of five columns in an embedded database (id integer primary key, name varchar(20), price
// double, quantity integer, stamp timestamp). "scan" is a hand-written ODBC loop with all columns bound as text in
// blocks of 1,000; "library scan" reads every value with GetStringValue. Row counts and bytes are checked before
// anything is timed. Run with --benchmark_repetitions=5 --benchmark_enable_random_interleaving=true; ratios are to
// "scan".
#include <benchmark/benchmark.h>
#include <tkkernel/tkkernel.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "bench/raw_text_scan.h"
#include "tools/tkdb/replacing_file.h"
#include "tools/tkdb/write_rows.h"

namespace {

constexpr long kRows = 1'000'000;
constexpr char kSelectAll[] = "SELECT id, name, price, quantity, stamp FROM item";

class Database {
public:
    Database() {
        char folder[] = "/tmp/tkbench-XXXXXX";
        if (mkdtemp(folder) == nullptr) throw std::runtime_error("no temporary folder");
        folder_ = folder;
        connection_ = "Driver=SQLite3;Database=" + folder_ + "/item.db;SyncPragma=OFF";
        CTDatabase database;
        Check(database, database.Open(connection_.c_str()));
        database.ExecuteSQL(
            "CREATE TABLE item (id integer PRIMARY KEY, name varchar(20), price double, quantity integer, "
            "stamp timestamp)");
        Check(database, database.ExecuteSQL(
                            "INSERT INTO item WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE "
                            "i < 1000000) SELECT i, printf('item %07d', i), i * 0.25, i % 1000, "
                            "datetime('2020-01-01', (i % 86400) || ' seconds') FROM n"));
    }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    const std::string& Connection() const { return connection_; }
    std::string File(const char* name) const { return folder_ + "/" + name; }

    void Open(CTRecordset& records) const {
        Check(records, records.OpenDatabase(connection_.c_str(), "SQL"));
        Check(records, records.OpenSQL(kSelectAll, 1));
    }

private:
    static void Check(CTDataDriver& object, int done) {
        if (!done) throw std::runtime_error(static_cast<const char*>(object.GetLastErrorString()));
    }

    std::string folder_;
    std::string connection_;
};

const Database* database = nullptr;

// ---- the yardsticks ------------------------------------------------------------------------------------------------

long long Scan() {
    static tk::bench::RawTextScan scan(database->Connection());
    return scan.Run(kSelectAll);
}

long long LibraryScan() {
    CTRecordset records;
    database->Open(records);
    long long bytes = 0;
    for (; !records.GetEof(); records.MoveNext()) {
        for (long i = 0; i < 5; ++i)
            bytes += records.GetStringValue(i).GetLength();
    }
    return bytes;
}

// ---- exports -------------------------------------------------------------------------------------------------------

template <int UseStr>
long long RowText() {
    CTRecordset records;
    database->Open(records);
    CString text;
    long long bytes = 0;
    for (int more = records.SelectFirstRecordToString(5, text, ",", UseStr); more != 0;
         more = records.SelectNextRecordToString(5, text, ",", UseStr)) {
        bytes += text.GetLength();
    }
    return bytes;
}

template <tk::tools::Format Form>
long long File() {
    CTRecordset records;
    database->Open(records);
    const std::string path = database->File("export");
    tk::tools::ReplacingFile file(path);
    if (tk::tools::WriteRows(records, Form, file.Open(), tk::tools::Charset::Utf8, 0) != kRows) return 0;
    file.Commit();
    return static_cast<long long>(std::filesystem::file_size(path));
}

template <long Form>
long long Save() {
    CTRecordset records;
    database->Open(records);
    const std::string path = database->File("saved");
    const int done = Form == 1 ? records.SaveAsXML(path.c_str(), 0) : records.SaveAsFile(path.c_str(), 0);
    return done ? static_cast<long long>(std::filesystem::file_size(path)) : 0;
}

constexpr struct {
    const char* name;
    long long (*run)();  // gives the bytes it made
} kContenders[] = {
    {"scan", Scan},
    {"library scan", LibraryScan},
    {"row text", RowText<0>},
    {"row literals", RowText<1>},
    {"csv", File<tk::tools::Format::Csv>},
    {"json", File<tk::tools::Format::Json>},
    {"markdown", File<tk::tools::Format::Markdown>},
    {"xml", Save<1>},
    {"binary", Save<0>},
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    {
        const Database made;
        database = &made;
        const long long expected = LibraryScan();
        if (RowText<0>() != expected + 4 * kRows) {
            std::fprintf(stderr, "row text and scan differ\n");
            return 1;
        }
        for (const auto& contender : kContenders) {
            benchmark::RegisterBenchmark(contender.name,
                                         [run = contender.run](benchmark::State& state) {
                                             for (auto _ : state) {
                                                 const long long bytes = run();
                                                 if (bytes == 0) state.SkipWithError("nothing written");
                                                 state.counters["bytes"] = static_cast<double>(bytes);
                                                 benchmark::DoNotOptimize(bytes);
                                             }
                                         })
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime()
                ->MeasureProcessCPUTime()
                ->Iterations(1);
        }
        benchmark::RunSpecifiedBenchmarks();
    }
    CoUninitialize();
    return 0;
}
