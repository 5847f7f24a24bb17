#include "ado/cursor/compare.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "ado/cursor/text.h"

namespace tk::ado {
namespace {

template <class T>
int Order(const T& first, const T& second) noexcept {
    return first < second ? -1 : second < first ? 1 : 0;
}

/// A decimal taken apart: zeros that change nothing are gone.
struct Digits {
    bool isPlain = false;
    bool negative = false;
    std::string_view whole;
    std::string_view fraction;
};

Digits Split(std::string_view text) noexcept {
    Digits digits;
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        digits.negative = text.front() == '-';
        text.remove_prefix(1);
    }
    const std::size_t point = std::min(text.find('.'), text.size());
    digits.whole = text.substr(0, point);
    digits.fraction = text.substr(std::min(point + 1, text.size()));
    const auto isDigits = [](std::string_view part) {
        return std::ranges::all_of(part, [](char c) { return c >= '0' && c <= '9'; });
    };
    digits.isPlain =
        isDigits(digits.whole) && isDigits(digits.fraction) && !(digits.whole.empty() && digits.fraction.empty());
    while (!digits.whole.empty() && digits.whole.front() == '0')
        digits.whole.remove_prefix(1);
    while (!digits.fraction.empty() && digits.fraction.back() == '0')
        digits.fraction.remove_suffix(1);
    if (digits.whole.empty() && digits.fraction.empty()) digits.negative = false;
    return digits;
}

int OrderOfViews(std::string_view first, std::string_view second) noexcept {
    const int order = first.compare(second);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

long double RealOf(std::string_view text) noexcept {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    long double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

long double RealOf(const Cell& cell) noexcept {
    switch (cell.form) {
        case Cell::Form::Integer:
        case Cell::Form::Boolean:
            return static_cast<long double>(cell.integer);
        case Cell::Form::Real:
            return cell.real;
        default:
            return RealOf(cell.text);
    }
}

bool IsWhole(const Cell& cell) noexcept {
    return cell.form == Cell::Form::Integer || cell.form == Cell::Form::Boolean;
}

/// The digits of an integer or a decimal.
std::string_view DigitsOf(const Cell& cell, char (&buffer)[24]) noexcept {
    if (!IsWhole(cell)) return cell.text;
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, cell.integer).ptr;
    return {buffer, static_cast<std::size_t>(end - buffer)};
}

/// Letters and digits of ASCII have the same order in every collation; true when there is nothing else.
bool IsSimple(std::u16string_view text) noexcept {
    return std::ranges::all_of(text, [](char16_t unit) {
        return (unit >= u'0' && unit <= u'9') || (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z');
    });
}

}  // namespace

int CompareDecimalDigits(std::string_view first, std::string_view second) noexcept {
    const Digits a = Split(first);
    const Digits b = Split(second);
    if (!a.isPlain || !b.isPlain) return Order(RealOf(first), RealOf(second));
    if (a.negative != b.negative) return a.negative ? -1 : 1;
    int order = Order(a.whole.size(), b.whole.size());
    if (order == 0) order = OrderOfViews(a.whole, b.whole);
    if (order == 0) order = OrderOfViews(a.fraction, b.fraction);
    return a.negative ? -order : order;
}

int CompareNumbers(const Cell& first, const Cell& second) noexcept {
    if (IsWhole(first) && IsWhole(second)) return Order(first.integer, second.integer);
    if (first.form == Cell::Form::Real || second.form == Cell::Form::Real) {
        return Order(RealOf(first), RealOf(second));
    }
    char firstBuffer[24];
    char secondBuffer[24];
    return CompareDecimalDigits(DigitsOf(first, firstBuffer), DigitsOf(second, secondBuffer));
}

long long DateMilliseconds(double date) noexcept {
    // Outside the range of dates there is nothing to tell apart.
    constexpr double kLimit = 1e7;
    if (std::isnan(date)) return std::numeric_limits<long long>::min();
    const double bounded = std::clamp(date, -kLimit, kLimit);
    const double days = std::trunc(bounded);
    const double time = std::fabs(bounded - days);
    return std::llround(days) * 86400000LL + std::llround(time * 86400000.0);
}

int CompareTexts(std::u16string_view first, std::u16string_view second) noexcept {
    if (IsSimple(first) && IsSimple(second)) {
        const std::size_t common = std::min(first.size(), second.size());
        for (std::size_t i = 0; i < common; ++i) {
            if (const int order = Order(FoldUnit(first[i]), FoldUnit(second[i])); order != 0) return order;
        }
        return Order(first.size(), second.size());
    }
    constexpr LCID kChinese = 0x0804;
    const int result = CompareStringW(kChinese, NORM_IGNORECASE, first.data(), static_cast<int>(first.size()),
                                      second.data(), static_cast<int>(second.size()));
    return result == 0 ? 0 : result - CSTR_EQUAL;
}

int CompareCells(const Cell& first, const Cell& second) noexcept {
    if (IsNumber(first.form) && IsNumber(second.form)) return CompareNumbers(first, second);
    if (first.form == Cell::Form::Date && second.form == Cell::Form::Date) {
        return Order(DateMilliseconds(first.real), DateMilliseconds(second.real));
    }
    return OrderOfViews(first.text, second.text);
}

}  // namespace tk::ado
