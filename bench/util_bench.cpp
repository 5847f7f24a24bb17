// Values as text and texts as lists, beside the libraries people would take for that.
//
// Input: 4,096 values of each type from a fixed seed; a record of 24 fields of 0 to 30 characters. Every pair of
// functions is compared on its whole input before anything is timed.
#include <benchmark/benchmark.h>

#include <absl/strings/str_split.h>
#include <fmt/format.h>

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "bench/format_bench.h"
#include "tkkernel/util.h"

namespace {

constexpr std::size_t kValues = 4096;

std::vector<VARIANT> MakeReals() {
    std::mt19937_64 random(20030704);
    std::vector<VARIANT> values(kValues);
    for (auto& value : values) {
        value.vt = VT_R8;
        value.dblVal = static_cast<double>(random() % 100000000) / 1000.0 - 20000.0;
    }
    return values;
}

std::vector<VARIANT> MakeIntegers() {
    std::mt19937_64 random(20030704);
    std::vector<VARIANT> values(kValues);
    for (auto& value : values) {
        value.vt = VT_I4;
        value.lVal = static_cast<LONG>(random());
    }
    return values;
}

std::vector<VARIANT> MakeDates() {
    std::mt19937_64 random(20030704);
    std::vector<VARIANT> values(kValues);
    for (auto& value : values) {
        value.vt = VT_DATE;
        value.date = static_cast<double>(random() % 4000000000ULL) / 86400.0;
    }
    return values;
}

std::vector<VARIANT> MakeTexts() {
    std::mt19937_64 random(20030704);
    std::vector<VARIANT> values(kValues);
    for (auto& value : values) {
        OLECHAR text[16];
        const UINT length = 4 + static_cast<UINT>(random() % 12);
        for (UINT i = 0; i < length; ++i)
            text[i] = static_cast<OLECHAR>('a' + random() % 26);
        value.vt = VT_BSTR;
        value.bstrVal = SysAllocStringLen(text, length);
    }
    return values;
}

std::string Trimmed(std::string text) {
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.') text.pop_back();
    }
    return text.find_first_of("123456789") == std::string::npos ? std::string() : text;
}

std::string RealByFmt(const VARIANT& value) {
    return Trimmed(fmt::format("{:12.2f}", value.dblVal));
}

std::string RealByPrintf(const VARIANT& value) {
    char text[400];
    std::snprintf(text, sizeof(text), "%12.2f", value.dblVal);
    return Trimmed(text);
}

std::string IntegerByFmt(const VARIANT& value) {
    return fmt::to_string(value.lVal);
}

std::string IntegerByPrintf(const VARIANT& value) {
    char text[16];
    std::snprintf(text, sizeof(text), "%d", static_cast<int>(value.lVal));
    return text;
}

std::string DateByFmt(const VARIANT& value) {
    SYSTEMTIME parts;
    VariantTimeToSystemTime(value.date, &parts);
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", parts.wYear, parts.wMonth, parts.wDay, parts.wHour,
                       parts.wMinute, parts.wSecond);
}

CString TextByString(const VARIANT& value) {
    return CString(value.bstrVal);
}

[[noreturn]] void Fail(const char* name) {
    std::fprintf(stderr, "%s: the answers differ\n", name);
    std::exit(1);
}

template <class Other>
void CheckTexts(const char* name, const std::vector<VARIANT>& values, Other other) {
    for (const VARIANT& value : values) {
        if (std::string_view(VariantToString(value)) != std::string_view(other(value))) Fail(name);
    }
}

template <class Convert>
void Measure(benchmark::State& state, const std::vector<VARIANT>& values, Convert convert) {
    std::size_t at = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(convert(values[at]));
        at = (at + 1) % kValues;
    }
}

std::string MakeRecord() {
    std::mt19937_64 random(20030704);
    std::string record;
    for (int field = 0; field < 24; ++field) {
        if (field > 0) record += ',';
        const auto length = 1 + random() % 30;  // empty fields would be dropped by one side only
        for (std::size_t i = 0; i < length; ++i)
            record += static_cast<char>('a' + random() % 26);
    }
    return record;
}

std::vector<std::string> ByAbsl(const std::string& record) {
    return absl::StrSplit(record, ',');
}

std::vector<std::string> ByBoost(const std::string& record) {
    std::vector<std::string> fields;
    boost::split(fields, record, boost::is_any_of(","));
    return fields;
}

template <class Other>
void CheckSplit(const char* name, const std::string& record, Other other) {
    CStringArray array;
    StringToArray(array, record.c_str(), ",");
    const auto fields = other(record);
    if (static_cast<std::size_t>(array.GetSize()) != fields.size()) Fail(name);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (fields[i] != static_cast<LPCTSTR>(array[static_cast<int>(i)])) Fail(name);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const auto reals = MakeReals();
    const auto integers = MakeIntegers();
    const auto dates = MakeDates();
    const auto texts = MakeTexts();
    const std::string record = MakeRecord();

    const auto compare = [](const char* name, const std::vector<VARIANT>& values, auto convert) {
        CheckTexts(name, values, convert);
        benchmark::RegisterBenchmark(name, [&values, convert](auto& state) { Measure(state, values, convert); });
    };
    compare("real/VariantToString", reals, VariantToString);
    compare("real/fmt", reals, RealByFmt);
    compare("real/snprintf", reals, RealByPrintf);
    compare("integer/VariantToString", integers, VariantToString);
    compare("integer/fmt", integers, IntegerByFmt);
    compare("integer/snprintf", integers, IntegerByPrintf);
    compare("date/VariantToString", dates, VariantToString);
    compare("date/fmt", dates, DateByFmt);
    compare("text/VariantToString", texts, VariantToString);
    compare("text/CString", texts, TextByString);

    CheckSplit("split/absl", record, ByAbsl);
    CheckSplit("split/boost", record, ByBoost);
    benchmark::RegisterBenchmark("split/StringToArray", [&](auto& state) {
        for (auto _ : state) {
            CStringArray array;
            StringToArray(array, record.c_str(), ",");
            benchmark::DoNotOptimize(array.GetData());
        }
    });
    benchmark::RegisterBenchmark("split/StringToArray into the same list", [&](auto& state) {
        CStringArray array;
        for (auto _ : state) {
            StringToArray(array, record.c_str(), ",");
            benchmark::DoNotOptimize(array.GetData());
        }
    });
    benchmark::RegisterBenchmark("split/absl::StrSplit", [&](auto& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(ByAbsl(record));
    });
    benchmark::RegisterBenchmark("split/boost::split", [&](auto& state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(ByBoost(record));
    });

    RegisterFormats();

    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    for (auto value : texts)
        VariantClear(&value);
    return 0;
}
