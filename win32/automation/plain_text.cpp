#include "win32/automation/plain_text.h"

#include <algorithm>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace tk::automation {

char* PutDigits(char* to, UInt128 value) noexcept {
    constexpr std::uint64_t kPart = kPowersOfTen[19];
    if (value < kPart) return std::to_chars(to, to + 20, static_cast<std::uint64_t>(value)).ptr;
    to = PutDigits(to, value / kPart);
    char part[20];
    const char* end = std::to_chars(part, part + sizeof(part), static_cast<std::uint64_t>(value % kPart)).ptr;
    to = std::fill_n(to, 19 - (end - part), '0');
    return std::copy(static_cast<const char*>(part), end, to);
}

namespace {

// Decimals of 15 digits survive the way through a normal double. So where the shortest text has no more than those, it
// is the rounded one too, and it is found several times as fast.
char* PutScientific(char (&text)[40], double magnitude, int significantDigits) {
    constexpr auto kForm = std::chars_format::scientific;
    if (significantDigits == DBL_DIG && (magnitude >= DBL_MIN || magnitude == 0)) {
        char* end = std::to_chars(text, text + sizeof(text), magnitude, kForm).ptr;
        const auto digits = std::find(text, end, 'e') - text;
        if (digits <= DBL_DIG + 1) return end;  // with the point
    }
    return std::to_chars(text, text + sizeof(text), magnitude, kForm, significantDigits - 1).ptr;
}

}  // namespace

void SplitReal(double value, int significantDigits, RealDigits& digits) noexcept {
    char text[40];
    const char* end = PutScientific(text, std::fabs(value), significantDigits);
    const char* mark = std::find(static_cast<const char*>(text), end, 'e');
    digits.negative = std::signbit(value);
    digits.count = 0;
    for (const char* at = text; at != mark; ++at) {
        if (*at != '.') digits.digit[digits.count++] = *at;
    }
    while (digits.count > 1 && digits.digit[digits.count - 1] == '0')
        --digits.count;
    const char* exponent = mark + 1;
    if (*exponent == '+') ++exponent;  // from_chars takes no plus sign
    digits.exponent = 0;
    std::from_chars(exponent, end, digits.exponent);
}

void WriteInteger(Int128 value, NumberText& text) noexcept {
    char digits[40];
    if (value < 0) text.Add('-');
    const UInt128 magnitude = value < 0 ? -static_cast<UInt128>(value) : static_cast<UInt128>(value);
    const char* end = PutDigits(digits, magnitude);
    text.Add({digits, static_cast<std::size_t>(end - digits)});
}

namespace {

// The names that the platform's run-time library has for them.
void WriteNoNumber(double value, NumberText& text) {
    if (std::isinf(value)) {
        text.Add(value < 0 ? "-1.#INF" : "1.#INF");
    } else {
        text.Add(std::signbit(value) ? "-1.#IND" : "1.#QNAN");
    }
}

void WriteExponentForm(const RealDigits& digits, NumberText& text) {
    text.Add(digits.digit[0]);
    if (digits.count > 1) {
        text.Add('.');
        text.Add({digits.digit + 1, static_cast<std::size_t>(digits.count - 1)});
    }
    text.Add('E');
    text.Add(digits.exponent < 0 ? '-' : '+');
    const int exponent = std::abs(digits.exponent);
    if (exponent < 10) text.Add('0');
    WriteInteger(exponent, text);
}

}  // namespace

void WriteReal(double value, int significantDigits, NumberText& text) noexcept {
    if (!std::isfinite(value)) return WriteNoNumber(value, text);
    RealDigits digits;
    SplitReal(value, significantDigits, digits);
    if (digits.negative && digits.digit[0] != '0') text.Add('-');
    const int places = digits.count - 1 - digits.exponent;  // decimal places of the plain form
    if (digits.exponent >= significantDigits || places > significantDigits) return WriteExponentForm(digits, text);
    const std::string_view all(digits.digit, static_cast<std::size_t>(digits.count));
    if (digits.exponent < 0) {
        text.Add("0.");
        text.AddTimes(-digits.exponent - 1, '0');
        text.Add(all);
        return;
    }
    const auto whole = static_cast<std::size_t>(std::min(digits.count, digits.exponent + 1));
    text.Add(all.substr(0, whole));
    text.AddTimes(digits.exponent + 1 - digits.count, '0');
    if (places > 0) {
        text.Add('.');
        text.Add(all.substr(whole));
    }
}

void WriteScaled(UInt128 magnitude, int scale, bool negative, NumberText& text) noexcept {
    char digits[40];
    char* end = PutDigits(digits, magnitude);
    int count = static_cast<int>(end - digits);
    for (; scale > 0 && digits[count - 1] == '0' && count > 1; --scale)
        --count;
    if (magnitude == 0) scale = 0;
    if (negative && magnitude != 0) text.Add('-');
    const std::string_view all(digits, static_cast<std::size_t>(count));
    if (scale == 0) return text.Add(all);
    if (count <= scale) {
        text.Add("0.");
        text.AddTimes(scale - count, '0');
        text.Add(all);
        return;
    }
    const auto whole = static_cast<std::size_t>(count - scale);
    text.Add(all.substr(0, whole));
    text.Add('.');
    text.Add(all.substr(whole));
}

BSTR MakeText(std::string_view ascii) noexcept {
    BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(ascii.size()));
    if (text == nullptr) return nullptr;
    std::transform(ascii.begin(), ascii.end(), text,
                   [](char character) { return static_cast<OLECHAR>(static_cast<unsigned char>(character)); });
    return text;
}

}  // namespace tk::automation
