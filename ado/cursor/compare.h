// ado/cursor/compare.h - the order of cells: numbers by value, dates to the millisecond, texts as a Chinese system
// does.
#pragma once

#include <string_view>

#include "ado/rowset/row_set.h"

namespace tk::ado {

/// True for the forms that compare as numbers.
constexpr bool IsNumber(Cell::Form form) noexcept {
    return form == Cell::Form::Integer || form == Cell::Form::Real || form == Cell::Form::Boolean ||
           form == Cell::Form::Decimal;
}

/// -1, 0 or 1. Integers and decimals compare exactly; only a real among them makes both real.
int CompareNumbers(const Cell& first, const Cell& second) noexcept;

/// Plain decimal digits with sign and point, exactly, whatever their length.
int CompareDecimalDigits(std::string_view first, std::string_view second) noexcept;

/// Automation dates in milliseconds since their day 0: dates before it count their time of day forward too.
long long DateMilliseconds(double date) noexcept;

/// Without regard to case, in the order of a Chinese system.
int CompareTexts(std::u16string_view first, std::u16string_view second) noexcept;

/// Two values that are not NULL and not texts. Values of different families are equal.
int CompareCells(const Cell& first, const Cell& second) noexcept;

}  // namespace tk::ado
