#include "ado/rowset/number_value.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace tk::ado {
namespace {

__extension__ using Wide = unsigned __int128;

constexpr int kMostScale = 28;
constexpr Wide kLimit = (static_cast<Wide>(1) << 96) - 1;

DECIMAL MakeDecimal(Wide magnitude, int scale, bool isNegative) noexcept {
    DECIMAL decimal = {};
    decimal.scale = static_cast<BYTE>(scale);
    decimal.sign = isNegative ? DECIMAL_NEG : BYTE{0};
    decimal.Lo64 = static_cast<ULONGLONG>(magnitude);
    decimal.Hi32 = static_cast<ULONG>(magnitude >> 64);
    return decimal;
}

Wide Magnitude(const DECIMAL& value) noexcept {
    return (static_cast<Wide>(value.Hi32) << 64) | value.Lo64;
}

/// Up to 15 digits around a point: they are an integer that a double holds, and so is the power of ten that it is
/// divided by, which leaves one rounding. Not for anything else.
std::optional<double> ParseShortReal(std::string_view text) noexcept {
    constexpr std::size_t kMostDigits = 15;
    static constexpr double kPowers[kMostDigits] = {1,   1e1, 1e2,  1e3,  1e4,  1e5,  1e6, 1e7,
                                                    1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14};
    const bool isNegative = !text.empty() && text.front() == '-';
    if (isNegative) text.remove_prefix(1);
    const std::size_t point = text.find('.');
    const std::size_t whole = std::min(point, text.size());
    const std::size_t fraction = point == text.npos ? 0 : text.size() - point - 1;
    if (whole == 0 || whole + fraction > kMostDigits || (fraction == 0 && point != text.npos)) return std::nullopt;
    long long digits = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i == point) continue;
        const int digit = text[i] - '0';
        if (digit < 0 || digit > 9) return std::nullopt;
        digits = digits * 10 + digit;
    }
    const double magnitude = static_cast<double>(digits) / kPowers[fraction];
    return isNegative ? -magnitude : magnitude;
}

}  // namespace

std::optional<double> ParseReal(std::string_view text) noexcept {
    if (const auto real = ParseShortReal(text)) return real;
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

bool IsPlainDecimal(std::string_view text) noexcept {
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
    const auto isDigit = [](char letter) { return letter >= '0' && letter <= '9'; };
    const auto points = std::ranges::count(text, '.');
    return points <= 1 && std::ranges::any_of(text, isDigit) &&
           std::ranges::all_of(text, [&](char letter) { return letter == '.' || isDigit(letter); });
}

std::optional<DECIMAL> ParseDecimal(std::string_view text) noexcept {
    if (!IsPlainDecimal(text)) return std::nullopt;
    const bool isNegative = text.front() == '-';
    if (isNegative || text.front() == '+') text.remove_prefix(1);

    Wide magnitude = 0;
    int scale = 0;
    bool afterPoint = false;
    bool isFull = false;  // the digits from here on only decide the rounding
    int roundingDigit = 0;
    bool hasRest = false;  // something other than zero after the rounding digit
    for (const char letter : text) {
        if (letter == '.') {
            afterPoint = true;
            continue;
        }
        const auto digit = static_cast<unsigned>(letter - '0');
        if (isFull) {
            hasRest = hasRest || digit != 0;
            continue;
        }
        const Wide next = magnitude * 10 + digit;
        if (next > kLimit || scale == kMostScale) {
            if (!afterPoint) return std::nullopt;
            isFull = true;
            roundingDigit = static_cast<int>(digit);
            continue;
        }
        magnitude = next;
        scale += afterPoint ? 1 : 0;
    }
    const bool roundsUp = roundingDigit > 5 || (roundingDigit == 5 && (hasRest || magnitude % 2 != 0));
    if (roundsUp && magnitude == kLimit) {
        if (scale == 0) return std::nullopt;
        magnitude = magnitude / 10 + 1;  // the last digit of 2^96-1 is a 5, and more follows
        --scale;
    } else if (roundsUp) {
        ++magnitude;
    }
    return MakeDecimal(magnitude, scale, isNegative && magnitude != 0);
}

DECIMAL DecimalFromInteger(long long value) noexcept {
    const auto bits = static_cast<unsigned long long>(value);
    return MakeDecimal(value < 0 ? 0 - bits : bits, 0, value < 0);
}

std::string FormatDecimal(const DECIMAL& value) {
    std::string digits;
    Wide rest = Magnitude(value);
    for (int place = 0; rest != 0 || place <= value.scale; ++place) {
        if (place == value.scale && value.scale != 0) digits.push_back('.');
        digits.push_back(static_cast<char>('0' + static_cast<int>(rest % 10)));
        rest /= 10;
    }
    if (value.sign == DECIMAL_NEG && Magnitude(value) != 0) digits.push_back('-');
    std::ranges::reverse(digits);
    return digits;
}

std::optional<long long> IntegerFromDecimal(const DECIMAL& value) noexcept {
    Wide magnitude = Magnitude(value);
    for (int place = 0; place < value.scale; ++place) {
        if (magnitude % 10 != 0) return std::nullopt;
        magnitude /= 10;
    }
    const bool isNegative = value.sign == DECIMAL_NEG;
    constexpr auto kMost = static_cast<unsigned long long>(std::numeric_limits<long long>::max());
    if (magnitude > static_cast<Wide>(kMost) + (isNegative ? 1 : 0)) return std::nullopt;
    const auto bits = static_cast<unsigned long long>(magnitude);
    return static_cast<long long>(isNegative ? 0 - bits : bits);
}

}  // namespace tk::ado
