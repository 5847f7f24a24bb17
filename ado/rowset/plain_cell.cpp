#include "ado/rowset/plain_cell.h"

#include "ado/rowset/date_value.h"
#include "ado/rowset/moment_fields.h"
#include "ado/rowset/number_value.h"
#include "ado/rowset/type_map.h"

namespace tk::ado {
namespace {

bool SetMoment(const CalendarTime& time, VARIANT& value) noexcept {
    const auto date = ToAutomationDate(time);
    if (!date) return false;
    value.vt = VT_DATE;
    value.date = *date;
    return true;
}

}  // namespace

PlainCell PlainCellOf(const Column& column, const RowLayout::Place& place) noexcept {
    const auto either = [&](PlainCell text, PlainCell fixed) { return place.isVariable ? text : fixed; };
    switch (column.kind) {
        case CellKind::Integer32:
            return column.type == kTypeInteger ? either(PlainCell::LongText, PlainCell::Long) : PlainCell::None;
        case CellKind::Real64:
            return column.type == kTypeDouble ? either(PlainCell::DoubleText, PlainCell::Double) : PlainCell::None;
        case CellKind::Timestamp:
            return either(PlainCell::MomentText, PlainCell::Moment);
        default:
            return PlainCell::None;
    }
}

bool ReadPlainMoment(const SQL_TIMESTAMP_STRUCT& stamp, VARIANT& value) noexcept {
    if (stamp.month == kMonthOfText) return false;
    return SetMoment(
        {stamp.year, stamp.month, stamp.day, stamp.hour, stamp.minute, stamp.second, static_cast<int>(stamp.fraction)},
        value);
}

bool ReadPlainText(PlainCell form, std::string_view text, VARIANT& value) noexcept {
    switch (form) {
        case PlainCell::LongText: {
            const auto integer = ParseInteger(text);
            if (!integer || *integer != static_cast<LONG>(*integer)) return false;
            value.vt = VT_I4;
            value.lVal = static_cast<LONG>(*integer);
            return true;
        }
        case PlainCell::DoubleText: {
            const auto real = ParseReal(text);
            if (!real) return false;
            value.vt = VT_R8;
            value.dblVal = *real;
            return true;
        }
        case PlainCell::MomentText: {
            const auto time = ParseCalendarTime(text);
            return time && SetMoment(*time, value);
        }
        default:
            return false;
    }
}

}  // namespace tk::ado
