// Formatted dates and numbers, amounts in words and pinyin initials, beside the libraries people would take for that.
//
// Input: 4,096 values from a fixed seed; texts of 64 common characters. Every pair of functions is compared on its
// whole input before anything is timed, apart from the cases named below, where another library means something else.
#include "bench/format_bench.h"

#include <benchmark/benchmark.h>

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <unicode/datefmt.h>
#include <unicode/decimfmt.h>
#include <unicode/rbnf.h>
#include <unicode/smpdtfmt.h>
#include <unicode/translit.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tkkernel/util.h"

namespace {

constexpr std::size_t kValues = 4096;
constexpr std::size_t kCharacters = 64;

[[noreturn]] void Fail(const char* name) {
    std::fprintf(stderr, "%s: the answers differ\n", name);
    std::exit(1);
}

template <class Object>
Object& Made(Object* object, UErrorCode code) {
    if (U_FAILURE(code) || object == nullptr) Fail(u_errorName(code));
    return *object;
}

std::string Std(const CString& text) {
    return {static_cast<LPCTSTR>(text), static_cast<std::size_t>(text.GetLength())};
}

std::string FromUtf16(const icu::UnicodeString& text) {
    return Std(CString(reinterpret_cast<LPCWSTR>(text.getBuffer()), text.length()));
}

// ---- inputs

std::vector<double> MakeAmounts() {
    std::mt19937_64 random(20030704);
    std::vector<double> values(kValues);
    for (double& value : values)
        value = static_cast<double>(random() % 10000000000ULL) / 100;
    return values;
}

/// Amounts whose digits are none of them zero: there other spellings of zero do not show.
std::vector<double> MakePlainAmounts() {
    std::mt19937_64 random(20030704);
    std::vector<double> values(kValues);
    for (double& value : values) {
        for (int digit = 0; digit < 8; ++digit)
            value = value * 10 + static_cast<double>(1 + random() % 9);
    }
    return values;
}

std::vector<std::string> MakeNumberTexts() {
    std::mt19937_64 random(20030704);
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < kValues; ++i) {
        // The third and fourth decimal keep away from halves, where rounding in binary goes wrong.
        const unsigned long long rest = random() % 100 < 50 ? random() % 49 : 51 + random() % 49;
        texts.push_back(fmt::format("{}.{:02}{:02}", random() % 1000000, random() % 100, rest));
    }
    return texts;
}

std::vector<DATE> MakeDates() {
    std::mt19937_64 random(20030704);
    std::vector<DATE> values(kValues);
    for (DATE& value : values)
        value = static_cast<double>(random() % 4000000000ULL) / 86400.0;
    return values;
}

std::tm Parts(DATE date) {
    SYSTEMTIME time;
    VariantTimeToSystemTime(date, &time);
    std::tm parts = {};
    parts.tm_year = time.wYear - 1900;
    parts.tm_mon = time.wMonth - 1;
    parts.tm_mday = time.wDay;
    parts.tm_hour = time.wHour;
    parts.tm_min = time.wMinute;
    parts.tm_sec = time.wSecond;
    parts.tm_wday = time.wDayOfWeek;
    return parts;
}

// ---- initials, by others

constexpr unsigned kBoundaries[] = {0xB0A1, 0xB0C5, 0xB2C1, 0xB4EE, 0xB6EA, 0xB7A2, 0xB8C1, 0xB9FE,
                                    0xBBF7, 0xBFA6, 0xC0AC, 0xC2E8, 0xC4C3, 0xC5B6, 0xC5BE, 0xC6DA,
                                    0xC8BB, 0xC8F6, 0xCBFA, 0xCDDA, 0xCEF4, 0xD1B9, 0xD4D1};

std::string InitialsBySearch(const std::string& text) {
    std::string result;
    for (std::size_t at = 0; at + 1 < text.size(); at += 2) {
        const unsigned code = static_cast<unsigned char>(text[at]) * 256U + static_cast<unsigned char>(text[at + 1]);
        const auto* const behind = std::upper_bound(std::begin(kBoundaries), std::end(kBoundaries), code);
        result += "ABCDEFGHJKLMNOPQRSTWXYZ"[behind - kBoundaries - 1];
    }
    return result;
}

/// ICU's own way: romanise, then keep the first letter of each syllable.
std::string InitialsByIcu(const icu::Transliterator& romanise, const std::string& text) {
    const CString narrow(text.c_str(), static_cast<int>(text.size()));
    BSTR wide = narrow.AllocSysString();
    icu::UnicodeString syllables(reinterpret_cast<const char16_t*>(wide), static_cast<int>(SysStringLen(wide)));
    SysFreeString(wide);
    romanise.transliterate(syllables);
    std::string result;
    bool begins = true;
    for (int at = 0; at < syllables.length(); ++at) {
        const char16_t unit = syllables[at];
        if (begins) result += static_cast<char>(unit & ~0x20);
        begins = unit == ' ';
    }
    return result;
}

/// Texts of common characters of which everybody has the same opinion.
std::vector<std::string> MakeNames(const icu::Transliterator& romanise) {
    std::vector<std::string> agreed;
    for (int lead = 0xB0; lead <= 0xD6; ++lead) {
        for (int trail = 0xA1; trail <= 0xFE; ++trail) {
            const std::string character = {static_cast<char>(lead), static_cast<char>(trail)};
            if (InitialsByIcu(romanise, character) == InitialsBySearch(character)) agreed.push_back(character);
        }
    }
    std::mt19937_64 random(20030704);
    std::vector<std::string> texts(256);
    for (std::string& text : texts) {
        for (std::size_t i = 0; i < kCharacters; ++i)
            text += agreed[random() % agreed.size()];
    }
    return texts;
}

// ---- amounts, by others

/// The usual form in strings, step by step, as one would write it first.
std::string AmountByStrings(double amount) {
    static const char* const digits[] = {"\xC1\xE3", "\xD2\xBC", "\xB7\xA1", "\xC8\xFE", "\xCB\xC1",
                                         "\xCE\xE9", "\xC2\xBD", "\xC6\xE2", "\xB0\xC6", "\xBE\xC1"};
    static const char* const units[] = {"\xC7\xAA", "\xB0\xDB", "\xCA\xB0", ""};
    static const char* const groupUnits[] = {"\xD2\xDA", "\xCD\xF2", "\xD4\xAA"};
    char text[64];
    std::snprintf(text, sizeof(text), "%015.2f", amount);
    std::string result;
    bool pending = false;
    for (int group = 0; group < 3; ++group) {
        const std::string four(text + group * 4, 4);
        if (four == "0000") continue;
        for (int place = 0; place < 4; ++place) {
            if (four[place] == '0') {
                pending = pending || place < 3;
                continue;
            }
            if (pending && !result.empty()) result += digits[0];
            pending = false;
            result = result + digits[four[place] - '0'] + units[place];
        }
        result += groupUnits[group];
    }
    const bool hasTens = amount >= 9.995;
    if (std::string(text + 8, 4) == "0000" && hasTens) result += groupUnits[2];
    if (text[13] != '0' || text[14] != '0') {
        if (text[11] == '0' && hasTens) result += digits[0];
        result += digits[text[13] - '0'];
        if (text[13] != '0') result += "\xBD\xC7";
        if (text[14] != '0') result = result + digits[text[14] - '0'] + "\xB7\xD6";
    }
    return result + "\xD5\xFB";
}

// ---- checking and timing

template <class Input, class Ours, class Other>
void Check(const char* name, const std::vector<Input>& inputs, Ours ours, Other other) {
    for (const Input& input : inputs) {
        if (ours(input) != other(input)) Fail(name);
    }
}

template <class Input, class Convert>
void Register(const char* name, const std::vector<Input>& inputs, Convert convert, std::size_t items = 1) {
    benchmark::RegisterBenchmark(name, [&inputs, convert, items](benchmark::State& state) {
        std::size_t at = 0;
        for (auto _ : state) {
            benchmark::DoNotOptimize(convert(inputs[at]));
            at = at + 1 == inputs.size() ? 0 : at + 1;
        }
        if (items > 1) state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * items));
    });
}

}  // namespace

void RegisterFormats() {
    static const auto amounts = MakeAmounts();
    static const auto plainAmounts = MakePlainAmounts();
    static const auto numberTexts = MakeNumberTexts();
    static const auto dates = MakeDates();
    UErrorCode code = U_ZERO_ERROR;

    // Amounts. ICU has the numerals of whole numbers only, and other zeros.
    static const icu::RuleBasedNumberFormat& spellout =
        Made(new icu::RuleBasedNumberFormat(icu::URBNF_SPELLOUT, icu::Locale("zh"), code), code);
    const auto amountByIcu = [&](double amount) {
        icu::UnicodeString text;
        icu::FieldPosition position(icu::FieldPosition::DONT_CARE);
        UErrorCode failure = U_ZERO_ERROR;
        spellout.format(static_cast<std::int64_t>(amount), u"%spellout-cardinal-financial", text, position, failure);
        return FromUtf16(text) + "\xD4\xAA\xD5\xFB";
    };
    const auto amountByUs = [](double amount) { return UpperCurrency(amount, 1); };
    const auto amountText = [](double amount) { return Std(UpperCurrency(amount, 1)); };
    Check("amount/strings", amounts, amountText, AmountByStrings);
    Check("amount/ICU", plainAmounts, amountText, amountByIcu);
    Register("amount/UpperCurrency", amounts, amountByUs);
    Register("amount/strings", amounts, AmountByStrings);
    Register("amount of whole yuan/UpperCurrency", plainAmounts, amountByUs);
    Register("amount of whole yuan/ICU", plainAmounts, amountByIcu);

    // Initials.
    static const icu::Transliterator& romanise =
        Made(icu::Transliterator::createInstance("Han-Latin; Latin-ASCII", UTRANS_FORWARD, code), code);
    static const auto names = MakeNames(romanise);
    const auto initialsByUs = [](const std::string& text) {
        return ToPyHead(text.data(), static_cast<int>(text.size()));
    };
    const auto initialsText = [&](const std::string& text) { return Std(initialsByUs(text)); };
    const auto initialsByIcu = [&](const std::string& text) { return InitialsByIcu(romanise, text); };
    Check("initials/search", names, initialsText, InitialsBySearch);
    Check("initials/ICU", names, initialsText, initialsByIcu);
    Register("initials of 64/ToPyHead", names, initialsByUs, kCharacters);
    Register("initials of 64/search in the boundaries", names, InitialsBySearch, kCharacters);
    Register("initials of 64/ICU Han-Latin", names, initialsByIcu, kCharacters);

    // Dates.
    static const icu::SimpleDateFormat& dateFormat =
        Made(new icu::SimpleDateFormat(u"yyyy/MM/dd HH:mm:ss", icu::Locale::getRoot(), code), code);
    const_cast<icu::SimpleDateFormat&>(dateFormat).adoptTimeZone(icu::TimeZone::createTimeZone("UTC"));
    const auto dateByUs = [](DATE date) { return DateToString(date, "YYYY/MM/DD hh:mm:ss"); };
    const auto dateText = [&](DATE date) { return Std(dateByUs(date)); };
    const auto dateByStrftime = [](DATE date) {
        const std::tm parts = Parts(date);
        char text[32];
        return std::string(text, std::strftime(text, sizeof(text), "%Y/%m/%d %H:%M:%S", &parts));
    };
    const auto dateByFmt = [](DATE date) { return fmt::format("{:%Y/%m/%d %H:%M:%S}", Parts(date)); };
    const auto dateByIcu = [&](DATE date) {
        icu::UnicodeString text;
        dateFormat.format((std::round(date * 86400) - 25569 * 86400.0) * 1000, text);
        std::string result;
        return text.toUTF8String(result);
    };
    Check("date/strftime", dates, dateText, dateByStrftime);
    Check("date/fmt", dates, dateText, dateByFmt);
    Check("date/ICU", dates, dateText, dateByIcu);
    Register("date/DateToString", dates, dateByUs);
    Register("date/strftime", dates, dateByStrftime);
    Register("date/fmt", dates, dateByFmt);
    Register("date/ICU", dates, dateByIcu);

    // Numbers by a pattern.
    static const icu::DecimalFormat& numberFormat =
        Made(new icu::DecimalFormat(u"#,##0.00", icu::DecimalFormatSymbols(icu::Locale("en"), code), code), code);
    const auto patternByUs = [](double value) { return DoubleToString(value, "#,##0.00"); };
    const auto patternByIcu = [&](double value) {
        icu::UnicodeString text;
        numberFormat.format(value, text);
        std::string result;
        return text.toUTF8String(result);
    };
    const auto patternByFmt = [](double value) {
        std::string text = fmt::format("{:.2f}", value);
        for (std::size_t at = text.size() - 3; at > 3;)
            text.insert(at -= 3, 1, ',');
        return text;
    };
    Check(
        "pattern/ICU", amounts, [&](double value) { return Std(patternByUs(value)); }, patternByIcu);
    Check(
        "pattern/fmt", amounts, [&](double value) { return Std(patternByUs(value)); }, patternByFmt);
    Register("pattern #,##0.00/DoubleToString", amounts, patternByUs);
    Register("pattern #,##0.00/fmt and insert", amounts, patternByFmt);
    Register("pattern #,##0.00/ICU", amounts, patternByIcu);

    // Numbers by printf.
    const auto printfByUs = [](double value) { return DoubleToString(value, "%.2f"); };
    const auto printfByFmt = [](double value) { return fmt::format(fmt::runtime("{:.2f}"), value); };
    const auto printfByPrintf = [](double value) {
        char text[400];
        return std::string(text, static_cast<std::size_t>(std::snprintf(text, sizeof(text), "%.2f", value)));
    };
    Check(
        "printf/fmt", amounts, [&](double value) { return Std(printfByUs(value)); }, printfByFmt);
    Check(
        "printf/snprintf", amounts, [&](double value) { return Std(printfByUs(value)); }, printfByPrintf);
    Register("printf %.2f/DoubleToString", amounts, printfByUs);
    Register("printf %.2f/fmt", amounts, printfByFmt);
    Register("printf %.2f/snprintf", amounts, printfByPrintf);

    // Rounding of a number's text.
    const auto roundByUs = [](const std::string& text) { return Round(text.c_str(), 2); };
    const auto roundInBinary = [](const std::string& text) {
        return std::round(std::strtod(text.c_str(), nullptr) * 100) / 100;
    };
    const auto roundByFmt = [](const std::string& text) {
        return std::strtod(fmt::format("{:.2f}", std::strtod(text.c_str(), nullptr)).c_str(), nullptr);
    };
    Check("round/strtod and round", numberTexts, roundByUs, roundInBinary);
    Check("round/fmt", numberTexts, roundByUs, roundByFmt);
    Register("round/Round", numberTexts, roundByUs);
    Register("round/strtod and round", numberTexts, roundInBinary);
    Register("round/fmt and strtod", numberTexts, roundByFmt);
}
