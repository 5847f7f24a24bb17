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
    long long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

/// The whole text as a double; nullopt for anything else.
inline std::optional<double> ParseReal(std::string_view text) noexcept {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

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
