// ado/rowset/number_value.h - numbers in the plain text that drivers give, and DECIMALs.
#pragma once

#include <windows.h>

#include <wtypes.h>

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace tk::ado {

/// The whole text as a 64-bit integer; nullopt for anything else.
inline std::optional<long long> ParseInteger(std::string_view text) noexcept {
    constexpr std::size_t kSurelyFits = 18;  // letters
    if (text.size() <= kSurelyFits) {
        const bool isNegative = !text.empty() && text.front() == '-';
        if (text.size() == (isNegative ? 1 : 0)) return std::nullopt;
        long long magnitude = 0;
        for (std::size_t i = isNegative ? 1 : 0; i < text.size(); ++i) {
            const int digit = text[i] - '0';
            if (digit < 0 || digit > 9) return std::nullopt;
            magnitude = magnitude * 10 + digit;
        }
        return isNegative ? -magnitude : magnitude;
    }
    long long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

/// The whole text as a double, the nearest one there is; nullopt for anything else.
std::optional<double> ParseReal(std::string_view text) noexcept;

/// Sign, digits and at most one point: the plain form of a decimal number.
bool IsPlainDecimal(std::string_view text) noexcept;

/// A plain decimal as DECIMAL, its scale kept. Fraction digits that do not fit are rounded, half to even; nullopt when
/// the part before the point does not fit into 96 bits or the text is no plain decimal.
std::optional<DECIMAL> ParseDecimal(std::string_view text) noexcept;

DECIMAL DecimalFromInteger(long long value) noexcept;

/// All digits, with as many after the point as the scale says.
std::string FormatDecimal(const DECIMAL& value);

/// The value as a 64-bit integer when it is one.
std::optional<long long> IntegerFromDecimal(const DECIMAL& value) noexcept;

}  // namespace tk::ado
