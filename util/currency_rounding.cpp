#include "util/currency_rounding.h"

#include <charconv>
#include <cstdint>

namespace tk::util {
namespace {

constexpr std::uint64_t kExactInDouble = std::uint64_t{1} << 53;

double NearestDouble(std::uint64_t hundredths) {
    // Both operands are exact below 2^53, so the quotient is the double nearest to the decimal value.
    if (hundredths < kExactInDouble) return static_cast<double>(hundredths) / 100.0;
    char text[24];
    char* end = std::to_chars(text, text + sizeof(text), hundredths).ptr;
    *end++ = 'e';
    *end++ = '-';
    *end++ = '2';
    double value = 0.0;
    std::from_chars(text, end, value);
    return value;
}

}  // namespace

double RoundCurrency(CY value) {
    const bool negative = value.int64 < 0;
    const auto units = static_cast<std::uint64_t>(value.int64);
    const std::uint64_t magnitude = negative ? 0 - units : units;
    const double rounded = NearestDouble((magnitude + 50) / 100);
    return negative ? -rounded : rounded;
}

}  // namespace tk::util
