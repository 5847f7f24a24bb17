#include "ado/cursor/cell_text.h"

#include <charconv>

#include "ado/rowset/date_value.h"

namespace tk::ado {
namespace {

template <typename Number>
std::string_view Digits(Number number, std::string& scratch) {
    char digits[64];
    return scratch.assign(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

}  // namespace

std::string_view CellText(const Cell& cell, const Column& target, std::string& scratch) {
    switch (cell.form) {
        case Cell::Form::Integer:
            return Digits(cell.integer, scratch);
        case Cell::Form::Boolean:
            return cell.integer != 0 ? "1" : "0";
        case Cell::Form::Real:
            return Digits(cell.real, scratch);
        case Cell::Form::Date:
            return scratch = FormatCalendarTime(FromAutomationDate(cell.real, static_cast<long>(cell.integer)),
                                                CalendarFormOf(target.kind));
        case Cell::Form::Decimal:
        case Cell::Form::Text:
        case Cell::Form::Bytes:
            return cell.text;
        case Cell::Form::Null:
            break;
    }
    return {};
}

}  // namespace tk::ado
