#include "ado/persist/saved_value.h"

#include <charconv>
#include <cstdio>
#include <cstring>

#include "ado/cursor/text.h"
#include "ado/odbc/odbc_api.h"
#include "ado/rowset/chunk.h"

namespace tk::ado {
namespace {

// Read gives dates outside this range as texts.
constexpr double kFirstDate = -657434;
constexpr double kLastDate = 2958466;

void ReadFixed(const RowLayout& layout, const Chunk& chunk, CellKind kind, std::size_t row, std::size_t slot,
               SavedValue& value) noexcept {
    using Form = SavedValue::Form;
    const auto integer = [&](long long number, Form form = Form::Integer) {
        value.form = form;
        value.integer = number;
    };
    const auto real = [&](double number) {
        value.form = Form::Real;
        value.real = number;
    };
    switch (kind) {
        case CellKind::Integer16:
            return integer(chunk.Fixed<short>(layout, row, slot));
        case CellKind::Integer32:
            return integer(chunk.Fixed<std::int32_t>(layout, row, slot));
        case CellKind::Integer64:
            return integer(chunk.Fixed<std::int64_t>(layout, row, slot));
        case CellKind::Boolean:
            return integer(chunk.Fixed<unsigned char>(layout, row, slot) != 0 ? 1 : 0, Form::Boolean);
        case CellKind::Real32:
            return real(static_cast<double>(chunk.Fixed<float>(layout, row, slot)));
        case CellKind::Real64:
            return real(chunk.Fixed<double>(layout, row, slot));
        case CellKind::Date: {
            const auto date = chunk.Fixed<SQL_DATE_STRUCT>(layout, row, slot);
            value.form = Form::Moment;
            value.moment = {date.year, date.month, date.day, 0, 0, 0, 0};
            return;
        }
        case CellKind::Timestamp: {
            const auto stamp = chunk.Fixed<SQL_TIMESTAMP_STRUCT>(layout, row, slot);
            value.form = Form::Moment;
            value.moment = {stamp.year,
                            stamp.month,
                            stamp.day,
                            stamp.hour,
                            stamp.minute,
                            stamp.second,
                            static_cast<int>(stamp.fraction)};
            return;
        }
        default:
            value.form = Form::Null;
            return;
    }
}

}  // namespace

RowReader::RowReader(RowStore& rows) : rows_(rows), values_(rows.Columns().size()), texts_(values_.size()) {}

std::span<const SavedValue> RowReader::Read(const SavedRow& row, RowVersion version) {
    if (row.isAsFetched) {
        ReadFetched(row.row);
    } else {
        for (std::size_t i = 0; i < values_.size(); ++i)
            ReadCell(row.row, i, version);
    }
    return values_;
}

void RowReader::ReadFetched(std::size_t row) {
    const RowSet& fetched = rows_.Fetched();
    const RowLayout& layout = fetched.Layout();
    const Chunk& chunk = fetched.ChunkOf(row);
    const std::size_t inside = row - chunk.FirstRow();
    for (std::size_t i = 0; i < values_.size(); ++i) {
        SavedValue& value = values_[i];
        const RowLayout::Place& place = layout.At(i);
        if (place.isVariable) {
            value.text = chunk.Variable(layout, inside, place.slot);
            value.form = value.text.data() == nullptr ? SavedValue::Form::Null : SavedValue::Form::Text;
        } else if (chunk.IsNullFixed(inside, place.slot)) {
            value.form = SavedValue::Form::Null;
        } else {
            ReadFixed(layout, chunk, fetched.Columns()[i].kind, inside, place.slot, value);
        }
    }
}

void RowReader::ReadCell(std::size_t row, std::size_t column, RowVersion version) {
    const bool isCurrent = version == RowVersion::Current;
    const Cell cell = isCurrent ? rows_.At(row, column) : rows_.OriginalAt(row, column);
    SavedValue& value = values_[column];
    value = {};
    if (cell.form == Cell::Form::Null) return;
    if (cell.text.data() != nullptr) {
        value.form = SavedValue::Form::Text;
        value.text = cell.text;
        return;
    }
    switch (cell.form) {
        case Cell::Form::Integer:
            value.form = SavedValue::Form::Integer;
            value.integer = cell.integer;
            return;
        case Cell::Form::Boolean:
            value.form = SavedValue::Form::Boolean;
            value.integer = cell.integer;
            return;
        case Cell::Form::Real:
            value.form = SavedValue::Form::Real;
            value.real = cell.real;
            return;
        case Cell::Form::Date:
            if (cell.real > kFirstDate - 1 && cell.real < kLastDate) {
                value.form = SavedValue::Form::Moment;
                value.moment = FromAutomationDate(cell.real, static_cast<long>(cell.integer));
                return;
            }
            {
                Value text;
                isCurrent ? rows_.Read(row, column, *text.Out()) : rows_.ReadOriginal(row, column, *text.Out());
                if (text.Type() == VT_BSTR) texts_[column] = ToUtf8(ViewOf(text.Get().bstrVal));
            }
            value.form = SavedValue::Form::Text;
            value.text = texts_[column];
            return;
        default:
            value.form = SavedValue::Form::Text;
            value.text = std::string_view("", 0);
            return;
    }
}

bool IsSameValue(const SavedValue& first, const SavedValue& second) noexcept {
    if (first.form != second.form) return false;
    switch (first.form) {
        case SavedValue::Form::Null:
            return true;
        case SavedValue::Form::Text:
            return first.text == second.text;
        case SavedValue::Form::Integer:
        case SavedValue::Form::Boolean:
            return first.integer == second.integer;
        case SavedValue::Form::Real:
            return std::memcmp(&first.real, &second.real, sizeof first.real) == 0;
        case SavedValue::Form::Moment:
            return std::memcmp(&first.moment, &second.moment, sizeof first.moment) == 0;
    }
    return false;
}

namespace {

char* PutDigits(char* at, int value, int digits) noexcept {
    for (int i = digits - 1; i >= 0; --i) {
        at[i] = static_cast<char>('0' + value % 10);
        value /= 10;
    }
    return at + digits;
}

}  // namespace

std::string_view TextOf(const SavedValue& value, CellKind kind, char* buffer) {
    char* const end = buffer + 64;
    switch (value.form) {
        case SavedValue::Form::Integer:
            return {buffer, std::to_chars(buffer, end, value.integer).ptr};
        case SavedValue::Form::Boolean:
            return value.integer != 0 ? "1" : "0";
        case SavedValue::Form::Real:
            if (kind == CellKind::Real32) {
                return {buffer, std::to_chars(buffer, end, static_cast<float>(value.real)).ptr};
            }
            if (kind == CellKind::Real64) return {buffer, std::to_chars(buffer, end, value.real).ptr};
            // Among integers and decimals the exponent is what tells a real.
            return {buffer, std::to_chars(buffer, end, value.real, std::chars_format::scientific).ptr};
        case SavedValue::Form::Moment: {
            const CalendarTime& moment = value.moment;
            if (moment.year < 0 || moment.year > 9999) {
                const auto form = kind == CellKind::Date ? CalendarForm::Date : CalendarForm::DateTime;
                const std::string text = FormatCalendarTime(moment, form);
                std::memcpy(buffer, text.data(), std::min<std::size_t>(text.size(), 64));
                return {buffer, std::min<std::size_t>(text.size(), 64)};
            }
            char* at = PutDigits(buffer, moment.year, 4);
            *at++ = '-';
            at = PutDigits(at, moment.month, 2);
            *at++ = '-';
            at = PutDigits(at, moment.day, 2);
            const bool hasTime = moment.hour != 0 || moment.minute != 0 || moment.second != 0 || moment.nanosecond != 0;
            if (kind == CellKind::Date && !hasTime) return {buffer, at};
            *at++ = ' ';
            at = PutDigits(at, moment.hour, 2);
            *at++ = ':';
            at = PutDigits(at, moment.minute, 2);
            *at++ = ':';
            at = PutDigits(at, moment.second, 2);
            if (moment.nanosecond != 0) {
                *at++ = '.';
                at = PutDigits(at, moment.nanosecond, 9);
                while (at[-1] == '0')
                    --at;
            }
            return {buffer, at};
        }
        case SavedValue::Form::Text:
            return value.text;
        case SavedValue::Form::Null:
            break;
    }
    return {};
}

}  // namespace tk::ado
