#include "util/decimal_digits.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace tk::util {
namespace {

constexpr double kPowers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
constexpr double kQuickLimit = 562949953421312.0;  // 2^49
constexpr double kDoubt = 1.0 / 2251799813685248;  // 2^-51: what the number and its product may be off, of its size

/// The shortest digits that mean a number, 0.d1d2d3... times ten to the exponent.
struct ShortestDigits {
    char digits[20];
    int count = 0;
    int exponent = 0;

    explicit ShortestDigits(double magnitude) {
        char text[32];
        const char* const end = std::to_chars(text, text + sizeof(text), magnitude, std::chars_format::scientific).ptr;
        const char* const letter = std::find(static_cast<const char*>(text), end, 'e');
        for (const char* at = text; at < letter; ++at) {
            if (*at != '.') digits[count++] = *at;
        }
        std::from_chars(letter[1] == '+' ? letter + 2 : letter + 1, end, exponent);
        ++exponent;
    }
};

}  // namespace

DecimalDigits::DecimalDigits(double magnitude, std::size_t shift, std::size_t decimals) {
    decimals = std::min(decimals, kMostDecimals - 4);
    const std::size_t power = decimals + shift;
    if (!RoundQuickly(magnitude, power)) RoundShortest(magnitude, power);

    const auto count = static_cast<std::size_t>(end_ - begin_);
    if (count >= decimals) {
        point_ = end_ - decimals;
    } else {
        char* const begin = room_ + (begin_ - room_) - (decimals - count);
        std::fill_n(begin, decimals - count, '0');
        begin_ = point_ = begin;
    }
}

/// Rounds the product of number and power where its error cannot matter.
bool DecimalDigits::RoundQuickly(double magnitude, std::size_t power) {
    if (power >= std::size(kPowers)) return false;
    const double scaled = magnitude * kPowers[power];
    if (!(scaled < kQuickLimit)) return false;
    auto number = static_cast<std::uint64_t>(scaled);
    const double rest = scaled - static_cast<double>(number);
    if (std::fabs(rest - 0.5) <= scaled * kDoubt) return false;
    if (rest > 0.5) ++number;

    char* at = room_ + sizeof(room_);
    end_ = at;
    for (; number != 0; number /= 10)
        *--at = static_cast<char>('0' + number % 10);
    begin_ = at;
    return true;
}

void DecimalDigits::RoundShortest(double magnitude, std::size_t power) {
    const ShortestDigits number(magnitude);
    char* const begin = room_ + kMostDecimals;  // zeros may have to go in front
    begin_ = end_ = begin;
    const int kept = number.exponent + static_cast<int>(power);
    if (kept < 0) return;
    const int copied = std::min(kept, number.count);
    char* const end = std::copy_n(number.digits, copied, begin);
    end_ = std::fill_n(end, kept - copied, '0');
    if (copied < number.count && number.digits[copied] >= '5') {
        char* at = end;
        while (at != begin && at[-1] == '9')
            *--at = '0';
        if (at != begin) {
            ++at[-1];
        } else {
            begin_ = begin - 1;
            begin[-1] = '1';
        }
    }
    while (begin_ != end_ && *begin_ == '0')
        ++begin_;
}

bool DecimalDigits::IsZero() const {
    return std::all_of(begin_, end_, [](char digit) { return digit == '0'; });
}

}  // namespace tk::util
