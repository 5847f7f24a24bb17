#include "ado/rowset/plain_cell.h"

#include <algorithm>

#include "ado/rowset/date_value.h"
#include "ado/rowset/number_value.h"
#include "ado/rowset/type_map.h"

namespace tk::ado {
namespace {

PlainCell PlainCellOf(const Column& column) noexcept {
    switch (column.kind) {
        case CellKind::Integer32:
            return column.type == kTypeInteger ? PlainCell::Long : PlainCell::None;
        case CellKind::Real64:
            return column.type == kTypeDouble ? PlainCell::Double : PlainCell::None;
        case CellKind::Timestamp:
            return PlainCell::Moment;
        default:
            return PlainCell::None;
    }
}

bool SetMoment(const CalendarTime& time, VARIANT& value) noexcept {
    const auto date = ToAutomationDate(time);
    if (!date) return false;
    value.vt = VT_DATE;
    value.date = *date;
    return true;
}

}  // namespace

std::vector<PlainCell> PlainCellsOf(std::span<const Column> columns) {
    std::vector<PlainCell> plain(columns.size());
    std::ranges::transform(columns, plain.begin(), PlainCellOf);
    return plain;
}

bool ReadPlainMoment(const SQL_TIMESTAMP_STRUCT& stamp, VARIANT& value) noexcept {
    // One that stands for a text has no month either.
    return SetMoment(
        {stamp.year, stamp.month, stamp.day, stamp.hour, stamp.minute, stamp.second, static_cast<int>(stamp.fraction)},
        value);
}

bool ReadPlainText(PlainCell form, std::string_view text, VARIANT& value) noexcept {
    switch (form) {
        case PlainCell::Long: {
            const auto integer = ParseInteger(text);
            if (!integer || *integer != static_cast<LONG>(*integer)) return false;
            value.vt = VT_I4;
            value.lVal = static_cast<LONG>(*integer);
            return true;
        }
        case PlainCell::Double: {
            const auto real = ParseReal(text);
            if (!real) return false;
            value.vt = VT_R8;
            value.dblVal = *real;
            return true;
        }
        case PlainCell::Moment: {
            const auto time = ParseCalendarTime(text);
            return time && SetMoment(*time, value);
        }
        case PlainCell::None:
            break;
    }
    return false;
}

}  // namespace tk::ado
