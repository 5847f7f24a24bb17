#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <system_error>

#include "tkkernel/util.h"
#include "util/text.h"

namespace tk::util {
namespace {

constexpr std::size_t kExactDigits = 15;  // whole numbers of so many digits are doubles, and so are the powers below
constexpr double kPowers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

constexpr bool IsDecimalDigit(char ch) {
    return ch >= '0' && ch <= '9';
}

std::string_view WithoutLeadingBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
}

/// Whether a number's text that no double can hold means a huge number; else it means a tiny one.
bool IsHuge(std::string_view text) {
    int exponent = 0;
    if (const std::size_t letter = text.find_first_of("eE"); letter != std::string_view::npos) {
        std::string_view digits = text.substr(letter + 1);
        const bool negative = digits.starts_with('-');
        if (negative || digits.starts_with('+')) digits.remove_prefix(1);
        const auto outcome = std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
        if (outcome.ec == std::errc::result_out_of_range) return !negative;
        if (negative) exponent = -exponent;
        text = text.substr(0, letter);
    }
    const auto point = static_cast<std::int64_t>(std::min(text.find('.'), text.size()));
    const std::size_t first = text.find_first_of("123456789");
    return first != std::string_view::npos && point - static_cast<std::int64_t>(first) + exponent > 0;
}

/// The number a text begins with, as atof reads it in any locale; 0 without one.
double ReadNumber(std::string_view text) {
    text = WithoutLeadingBlanks(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    if (text.empty() || !(IsDecimalDigit(text[0]) || text[0] == '.')) return 0;
    double number = 0;
    const auto outcome = std::from_chars(text.data(), text.data() + text.size(), number);
    if (outcome.ec == std::errc::invalid_argument) return 0;
    if (outcome.ec == std::errc::result_out_of_range) {
        number = IsHuge({text.data(), outcome.ptr}) ? HUGE_VAL : 0.0;
    }
    return negative ? -number : number;
}

/// Adds one to the last of some digits; the point is passed over, and what is no digit takes the carry away.
void AddCarry(std::string& digits, std::size_t end) {
    while (end > 0) {
        char& digit = digits[--end];
        if (digit == '.') continue;
        if (!IsDecimalDigit(digit)) return;
        if (digit != '9') {
            ++digit;
            return;
        }
        digit = '0';
    }
    digits.insert(digits.begin(), '1');
}

/// The rule on the digits, for every text.
double RoundText(std::string_view text, std::size_t dropped) {
    std::string digits(text);
    const bool negative = digits.front() == '-';
    if (negative || digits.front() == '+') digits.front() = '0';
    const bool up = digits[dropped] >= '5';
    std::fill(digits.begin() + static_cast<std::ptrdiff_t>(dropped), digits.end(), '0');
    if (up) AddCarry(digits, dropped);
    const double number = ReadNumber(digits);
    return negative ? -number : number;
}

/// The same for texts of few digits: their whole number and the power of ten are exact, so the quotient is the double
/// nearest to the rounded text. @return false for other texts
bool RoundQuickly(std::string_view text, std::size_t dropped, std::size_t decimals, double& result) {
    const bool negative = text.front() == '-';
    const std::size_t begin = negative || text.front() == '+' ? 1 : 0;
    if (dropped - begin > kExactDigits) return false;
    std::uint64_t number = 0;
    for (std::size_t at = begin; at < dropped; ++at) {
        if (text[at] == '.') continue;
        if (!IsDecimalDigit(text[at])) return false;
        number = number * 10 + static_cast<unsigned>(text[at] - '0');
    }
    if (text[dropped] >= '5') ++number;
    const double magnitude = static_cast<double>(number) / kPowers[decimals];
    result = negative ? -magnitude : magnitude;
    return true;
}

}  // namespace
}  // namespace tk::util

double Round(const char* szText, int nDecimals) {
    using namespace tk::util;
    const std::string_view text = WithoutLeadingBlanks(View(szText));
    const std::size_t point = text.find('.');
    if (point == std::string_view::npos) return ReadNumber(text);
    const std::size_t decimals = nDecimals > 0 ? static_cast<std::size_t>(nDecimals) : 0;
    const std::size_t dropped = point + 1 + decimals;
    if (dropped >= text.size() || !IsDecimalDigit(text[dropped])) return ReadNumber(text);
    double result = 0;
    return RoundQuickly(text, dropped, decimals, result) ? result : RoundText(text, dropped);
}
