// ado/rowset/moment_fields.h - dates and timestamps as ODBC's structures, and what those cannot say.
//
// A moment that no structure holds, such as "infinity", is a text beside its chunk; the structure then has a month that
// no driver gives and the number of the text.
#pragma once

#include <cstdint>
#include <optional>

#include "ado/odbc/odbc_api.h"

namespace tk::ado {

inline constexpr SQLUSMALLINT kMonthOfText = 0xFFFF;

inline void SetTextNumber(SQL_DATE_STRUCT& date, std::uint32_t number) noexcept {
    date = {static_cast<SQLSMALLINT>(number >> 16), kMonthOfText, static_cast<SQLUSMALLINT>(number)};
}

inline void SetTextNumber(SQL_TIMESTAMP_STRUCT& stamp, std::uint32_t number) noexcept {
    stamp = {0, kMonthOfText, 0, 0, 0, 0, number};
}

inline std::optional<std::uint32_t> TextNumberOf(const SQL_DATE_STRUCT& date) noexcept {
    if (date.month != kMonthOfText) return std::nullopt;
    return static_cast<std::uint32_t>(static_cast<SQLUSMALLINT>(date.year)) << 16 | date.day;
}

inline std::optional<std::uint32_t> TextNumberOf(const SQL_TIMESTAMP_STRUCT& stamp) noexcept {
    if (stamp.month != kMonthOfText) return std::nullopt;
    return stamp.fraction;
}

}  // namespace tk::ado
