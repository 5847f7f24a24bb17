// The six conversions among GBK, UTF-8 and UTF-16 beside iconv and ICU, on the same texts in the same run.
//
// Inputs are named by kind and size: "ascii" (a log line), "chinese" (ideographs and their punctuation) and "mixed" (an
// order line: words, numbers and names), cut to a value of a column (about 20 bytes) and to 4 KiB. Every converter's
// answer is compared with ours before it is timed, and ours with a round trip. Bytes per second count the source.
#include <benchmark/benchmark.h>
#include <iconv.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "tkwin32/text.h"

namespace {

enum Form { kGbk, kUtf8, kUtf16 };
constexpr const char* kIconvNames[] = {"CP936", "UTF-8", "UTF-16LE"};

std::u16string Repeat(std::u16string_view piece, std::size_t units) {
    std::u16string text;
    while (text.size() < units)
        text += piece;
    text.resize(units);
    return text;
}

struct Input {
    const char* name;
    std::u16string text;
};

const std::vector<Input>& Inputs() {
    static constexpr std::u16string_view kAscii = u"2024-03-15 08:30:12 INFO order 100234 shipped to warehouse 7; ";
    static constexpr std::u16string_view kChinese =
        u"本合同一式两份，双方签字盖章后生效。货物验收合格后三十日内付清全部款项；";
    static constexpr std::u16string_view kMixed =
        u"ORD-20240315 客户：北京华信科技有限公司 数量 120 件，单价 ￥35.80，No.7 仓库; ";
    static const std::vector<Input> kInputs = {
        {"ascii/20", Repeat(kAscii, 20)},   {"chinese/10", Repeat(kChinese, 10)},   {"mixed/20", Repeat(kMixed, 20)},
        {"ascii/4K", Repeat(kAscii, 4096)}, {"chinese/4K", Repeat(kChinese, 2048)}, {"mixed/4K", Repeat(kMixed, 3000)},
    };
    return kInputs;
}

// A text in one of the three forms, as bytes.
std::string Encoded(const std::u16string& text, Form form) {
    if (form == kGbk) return tk::text::Utf16ToGbk(text);
    if (form == kUtf8) return tk::text::Utf16ToUtf8(text);
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

class Tk {
public:
    Tk(Form from, Form to) : from_(from), to_(to) {}

    std::size_t operator()(const std::string& source, char* target, std::size_t room) {
        const std::u16string_view units(reinterpret_cast<const char16_t*>(source.data()), source.size() / 2);
        char16_t* wide = reinterpret_cast<char16_t*>(target);
        switch (from_ * 3 + to_) {
            case kGbk * 3 + kUtf8:
                return tk::text::GbkToUtf8(source, target, room).written;
            case kUtf8 * 3 + kGbk:
                return tk::text::Utf8ToGbk(source, target, room).written;
            case kGbk * 3 + kUtf16:
                return tk::text::GbkToUtf16(source, wide, room / 2).written * 2;
            case kUtf8 * 3 + kUtf16:
                return tk::text::Utf8ToUtf16(source, wide, room / 2).written * 2;
            case kUtf16 * 3 + kGbk:
                return tk::text::Utf16ToGbk(units, target, room).written;
            default:
                return tk::text::Utf16ToUtf8(units, target, room).written;
        }
    }

private:
    Form from_;
    Form to_;
};

class Iconv {
public:
    Iconv(Form from, Form to) : converter_(iconv_open(kIconvNames[to], kIconvNames[from])) {}
    ~Iconv() { iconv_close(converter_); }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    std::size_t operator()(const std::string& source, char* target, std::size_t room) {
        char* from = const_cast<char*>(source.data());
        std::size_t left = source.size();
        char* at = target;
        if (iconv(converter_, &from, &left, &at, &room) == static_cast<std::size_t>(-1)) return 0;
        return static_cast<std::size_t>(at - target);
    }

private:
    iconv_t converter_;
};

// The fastest calls ICU has for each direction; GBK to UTF-8 and back goes through its pivot buffer.
class Icu {
public:
    Icu(Form from, Form to) : from_(from), to_(to) {
        UErrorCode error = U_ZERO_ERROR;
        gbk_.reset(ucnv_open("windows-936-2000", &error));
        utf8_.reset(ucnv_open("UTF-8", &error));
        if (U_FAILURE(error)) std::abort();
    }

    std::size_t operator()(const std::string& source, char* target, std::size_t room) {
        UErrorCode error = U_ZERO_ERROR;
        const auto length = static_cast<int32_t>(source.size());
        auto* wide = reinterpret_cast<UChar*>(target);
        const auto* units = reinterpret_cast<const UChar*>(source.data());
        const auto bytes = static_cast<int32_t>(room);
        int32_t stored = 0;
        if (from_ == kUtf16) {
            if (to_ == kUtf8) {
                u_strToUTF8(target, bytes, &stored, units, length / 2, &error);
            } else {
                stored = ucnv_fromUChars(gbk_.get(), target, bytes, units, length / 2, &error);
            }
        } else if (to_ == kUtf16) {
            if (from_ == kUtf8) {
                u_strFromUTF8(wide, bytes / 2, &stored, source.data(), length, &error);
            } else {
                stored = ucnv_toUChars(gbk_.get(), wide, bytes / 2, source.data(), length, &error);
            }
            stored *= 2;
        } else {
            UChar pivot[1024];
            UChar* pivotRead = pivot;
            UChar* pivotWrite = pivot;
            char* at = target;
            const char* from = source.data();
            UConverter* in = from_ == kGbk ? gbk_.get() : utf8_.get();
            UConverter* out = to_ == kGbk ? gbk_.get() : utf8_.get();
            ucnv_convertEx(out, in, &at, target + room, &from, from + length, pivot, &pivotRead, &pivotWrite,
                           pivot + 1024, true, true, &error);
            stored = static_cast<int32_t>(at - target);
        }
        return U_FAILURE(error) ? 0 : static_cast<std::size_t>(stored);
    }

private:
    struct Close {
        void operator()(UConverter* converter) const { ucnv_close(converter); }
    };
    Form from_;
    Form to_;
    std::unique_ptr<UConverter, Close> gbk_;
    std::unique_ptr<UConverter, Close> utf8_;
};

template <class Converter>
void Convert(benchmark::State& state, const Input& input, Form from, Form to) {
    const std::string source = Encoded(input.text, from);
    const std::string expected = Encoded(input.text, to);
    Converter convert(from, to);
    // Aligned for UTF-16, and large enough for any form.
    std::vector<char16_t> buffer(input.text.size() * 2 + 8);
    char* target = reinterpret_cast<char*>(buffer.data());
    const std::size_t room = buffer.size() * 2;
    if (convert(source, target, room) != expected.size() ||
        expected.compare(0, expected.size(), target, expected.size())) {
        state.SkipWithError("wrong answer");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(convert(source, target, room));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(source.size()));
}

void Register() {
    static constexpr struct {
        const char* name;
        Form from;
        Form to;
    } kDirections[] = {
        {"GbkToUtf8", kGbk, kUtf8},   {"Utf8ToGbk", kUtf8, kGbk},     {"GbkToUtf16", kGbk, kUtf16},
        {"Utf16ToGbk", kUtf16, kGbk}, {"Utf8ToUtf16", kUtf8, kUtf16}, {"Utf16ToUtf8", kUtf16, kUtf8},
    };
    for (const auto& direction : kDirections) {
        for (const Input& input : Inputs()) {
            const auto add = [&](const char* who, auto function) {
                const std::string name = std::string(direction.name) + '/' + input.name + '/' + who;
                benchmark::RegisterBenchmark(name.c_str(), function, input, direction.from, direction.to);
            };
            add("tk", Convert<Tk>);
            add("iconv", Convert<Iconv>);
            add("icu", Convert<Icu>);
        }
    }
}

// The texts come back from every form; without that the comparison of answers says nothing.
bool RoundTripsHold() {
    for (const Input& input : Inputs()) {
        const std::string gbk = tk::text::Utf16ToGbk(input.text);
        if (tk::text::GbkToUtf16(gbk) != input.text) return false;
        if (tk::text::Utf8ToGbk(tk::text::GbkToUtf8(gbk)) != gbk) return false;
        if (tk::text::Utf8ToUtf16(tk::text::Utf16ToUtf8(input.text)) != input.text) return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (!RoundTripsHold()) {
        std::fputs("a text did not come back from its conversion\n", stderr);
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    Register();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
