#include "support/tds/decimal_digits.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "support/tds/messages.h"
#include "support/tds/sql_error.h"

namespace tk::test::tds {
namespace {

__extension__ using Wide = unsigned __int128;

constexpr std::size_t kMostDigits = 38;

std::string TextOf(const Cell& cell, unsigned scale) {
    if (const auto* text = std::get_if<std::string>(&cell)) return *text;
    if (const auto* integer = std::get_if<std::int64_t>(&cell)) return std::to_string(*integer);
    if (const auto* real = std::get_if<double>(&cell)) {
        std::array<char, 400> room;
        std::snprintf(room.data(), room.size(), "%.*f", static_cast<int>(scale), *real);
        return room.data();
    }
    throw ConversionError();
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

DecimalDigits DigitsOf(const Cell& cell, unsigned precision, unsigned scale) {
    const std::string whole = TextOf(cell, scale);
    std::string_view text = whole;
    DecimalDigits result;
    result.isNegative = text.starts_with('-');
    if (result.isNegative) text.remove_prefix(1);
    const std::size_t point = std::min(text.find('.'), text.size());
    std::string digits(text.substr(0, point));
    std::string fraction(text.substr(std::min(point + 1, text.size())));
    const bool isRoundedUp = fraction.size() > scale && fraction[scale] >= '5';
    fraction.resize(scale, '0');
    digits += fraction;
    if (text.empty() || !std::ranges::all_of(digits, IsDigit)) throw ConversionError();
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
    if (digits.size() > std::min<std::size_t>(precision, kMostDigits)) throw OverflowError();
    Wide number = 0;
    for (const char digit : digits)
        number = number * 10 + static_cast<unsigned>(digit - '0');
    if (isRoundedUp) ++number;
    for (std::size_t i = 0; i < sizeof number; ++i)
        result.magnitude += static_cast<char>(static_cast<unsigned char>(number >> (8 * i)));
    return result;
}

std::string DecimalText(bool isNegative, std::string_view magnitude, unsigned scale) {
    Wide number = 0;
    for (std::size_t i = magnitude.size(); i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(magnitude[i]);
    std::string digits;
    do {
        digits += static_cast<char>('0' + static_cast<int>(number % 10));
        number /= 10;
    } while (number != 0);
    while (digits.size() <= scale)
        digits += '0';
    std::ranges::reverse(digits);
    if (scale != 0) digits.insert(digits.size() - scale, 1, '.');
    return isNegative ? "-" + digits : digits;
}

}  // namespace tk::test::tds
