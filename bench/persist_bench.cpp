// persist_bench - recordsets saved and opened again, against reading the same rows from the database.
//
//   persist_bench [Google Benchmark options]
//
// The table is that of database_bench, on SQLite. The scans are the hand-written loops of bench/database/raw.cpp;
// "open" is a recordset opened and fetched to its end, "save" saves one that is open, "open_save" does both.
#include <benchmark/benchmark.h>
#include <tkkernel/tkkernel.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "bench/database/workload.h"

namespace {

using namespace tk::bench;

enum Format : long { kBinary = 0, kXml = 1 };

std::string folder;

std::string DatabaseText() {
    return "Driver=SQLite3;Database=" + folder + "/bench.db";
}
std::string SavedFile(Format format) {
    return folder + (format == kXml ? "/saved.xml" : "/saved.adtg");
}

// Ids of the Recordset's members.
constexpr DISPID kRecordCount = 1010;
constexpr DISPID kClose = 1014;
constexpr DISPID kMoveLast = 1021;
constexpr DISPID kOpen = 1022;
constexpr DISPID kCursorLocation = 1051;
constexpr DISPID kSave = 1057;
constexpr DISPID kCollect = -8;

/// A Recordset, called as programs call it.
class Recordset {
public:
    Recordset() {
        constexpr CLSID kClass = {0x00000535, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x6D, 0x2E, 0xA4}};
        if (FAILED(CoCreateInstance(kClass, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                    reinterpret_cast<void**>(&object_)))) {
            throw std::runtime_error("no recordset server");
        }
        COleVariant client(3L);
        Invoke(kCursorLocation, DISPATCH_PROPERTYPUT, {client});
    }
    ~Recordset() { object_->Release(); }
    Recordset(const Recordset&) = delete;
    Recordset& operator=(const Recordset&) = delete;

    void OpenQuery() {
        Invoke(kOpen, DISPATCH_METHOD,
               {COleVariant(kSelectAll), COleVariant(DatabaseText().c_str()), COleVariant(3L), COleVariant(1L),
                COleVariant(1L)});
    }
    void OpenFile(Format format) {
        Invoke(kOpen, DISPATCH_METHOD,
               {COleVariant(SavedFile(format).c_str()), COleVariant(""), COleVariant(3L), COleVariant(1L),
                COleVariant(256L)});
    }
    void Save(Format format) {
        unlink(SavedFile(format).c_str());
        Invoke(kSave, DISPATCH_METHOD,
               {COleVariant(SavedFile(format).c_str()), COleVariant(static_cast<long>(format))});
    }
    long Count() { return Long(Invoke(kRecordCount, DISPATCH_PROPERTYGET, {})); }
    void Close() { Invoke(kClose, DISPATCH_METHOD, {}); }

    /// Whether it holds what the table holds, by its last row.
    bool IsRight() {
        if (Count() != kRows) return false;
        Invoke(kMoveLast, DISPATCH_METHOD, {});
        return Long(Invoke(kCollect, DISPATCH_PROPERTYGET, {COleVariant(0L)})) == kRows &&
               Long(Invoke(kCollect, DISPATCH_PROPERTYGET, {COleVariant(2L)})) == kRows / 4 &&
               Long(Invoke(kCollect, DISPATCH_PROPERTYGET, {COleVariant(3L)})) == kRows % 1000;
    }

private:
    COleVariant Invoke(DISPID id, WORD kind, std::vector<COleVariant> arguments) {
        std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
        DISPID put = DISPID_PROPERTYPUT;
        const bool isPut = kind == DISPATCH_PROPERTYPUT;
        DISPPARAMS parameters = {reversed.data(), isPut ? &put : nullptr, static_cast<UINT>(reversed.size()),
                                 isPut ? 1u : 0u};
        COleVariant result;
        if (FAILED(object_->Invoke(id, IID_NULL, 0, kind, &parameters, isPut ? nullptr : &result, nullptr, nullptr))) {
            throw std::runtime_error("call " + std::to_string(id) + " failed");
        }
        return result;
    }
    static long Long(COleVariant value) {
        value.ChangeType(VT_I4);
        return value.lVal;
    }

    IDispatch* object_ = nullptr;
};

void Scan(benchmark::State& state, bool asText) {
    const auto raw = MakeRaw();
    raw->Connect(DatabaseText());
    for (auto _ : state) {
        const Checksum sum = asText ? raw->TextScan() : raw->NativeScan();
        if (sum.rows != kRows) return state.SkipWithError("wrong answer");
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

void Open(benchmark::State& state) {
    Recordset rows;
    for (auto _ : state) {
        rows.OpenQuery();
        if (rows.Count() != kRows) return state.SkipWithError("wrong answer");
        rows.Close();
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

void Save(benchmark::State& state, Format format) {
    Recordset rows;
    rows.OpenQuery();
    if (!rows.IsRight()) return state.SkipWithError("wrong answer");
    for (auto _ : state)
        rows.Save(format);
    state.SetItemsProcessed(state.iterations() * kRows);
}

void OpenAndSave(benchmark::State& state, Format format) {
    Recordset rows;
    for (auto _ : state) {
        rows.OpenQuery();
        rows.Save(format);
        rows.Close();
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

void Load(benchmark::State& state, Format format) {
    Recordset rows;
    rows.OpenQuery();
    rows.Save(format);
    rows.Close();
    rows.OpenFile(format);
    if (!rows.IsRight()) return state.SkipWithError("wrong answer");
    rows.Close();
    for (auto _ : state) {
        rows.OpenFile(format);
        if (rows.Count() != kRows) return state.SkipWithError("wrong answer");
        rows.Close();
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

void Fill() {
    CTDatabase database;
    if (!database.Open(DatabaseText().c_str())) throw std::runtime_error("cannot open " + DatabaseText());
    const std::string n = std::to_string(kRows);
    const std::string statements[] = {
        "CREATE TABLE item (id integer primary key, name varchar(20), price double precision, quantity integer, stamp "
        "timestamp)",
        "WITH RECURSIVE s(n) AS (SELECT 1 UNION ALL SELECT n+1 FROM s WHERE n < " + n +
            ") INSERT INTO item SELECT n, printf('item %07d', n), n * 0.25, n % 1000, "
            "datetime('2020-01-01', (n % 86400) || ' seconds') FROM s"};
    for (const std::string& sql : statements) {
        if (!database.ExecuteSQL(sql.c_str())) throw std::runtime_error("cannot run " + sql);
    }
}

void RegisterAll() {
    const auto add = [](const char* name, auto work) {
        benchmark::RegisterBenchmark(name, work)->Unit(benchmark::kMillisecond)->UseRealTime();
    };
    add("scan/native", [](auto& state) { Scan(state, false); });
    add("scan/text", [](auto& state) { Scan(state, true); });
    add("open/query", [](auto& state) { Open(state); });
    add("save/binary", [](auto& state) { Save(state, kBinary); });
    add("save/xml", [](auto& state) { Save(state, kXml); });
    add("open_save/binary", [](auto& state) { OpenAndSave(state, kBinary); });
    add("open_save/xml", [](auto& state) { OpenAndSave(state, kXml); });
    add("open/binary", [](auto& state) { Load(state, kBinary); });
    add("open/xml", [](auto& state) { Load(state, kXml); });
}

}  // namespace

int main(int argc, char** argv) {
    char pattern[] = "/tmp/tkpersist-XXXXXX";
    if (mkdtemp(pattern) == nullptr) return 1;
    folder = pattern;
    int code = 0;
    try {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        Fill();
        RegisterAll();
        benchmark::Initialize(&argc, argv);
        benchmark::RunSpecifiedBenchmarks();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        code = 1;
    }
    for (const std::string& file : {folder + "/bench.db", SavedFile(kBinary), SavedFile(kXml)})
        unlink(file.c_str());
    rmdir(folder.c_str());
    return code;
}
