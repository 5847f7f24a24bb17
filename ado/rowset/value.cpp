#include "ado/rowset/value.h"

#include <tkwin32/text.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

#include "ado/error.h"
#include "ado/messages.h"
#include "ado/odbc/ascii.h"
#include "ado/rowset/date_value.h"
#include "ado/rowset/number_value.h"
#include "ado/rowset/type_map.h"

namespace tk::ado {
namespace {

Cell TextCell(std::string_view text) noexcept {
    return {Cell::Form::Text, 0, 0, text};
}

Cell NumberCell(std::string_view text, bool prefersReal) noexcept {
    if (!prefersReal) {
        if (const auto integer = ParseInteger(text)) return {Cell::Form::Integer, *integer, 0, text};
    }
    if (const auto real = ParseReal(text)) return {Cell::Form::Real, 0, *real, text};
    return TextCell(text);
}

Cell BooleanCell(std::string_view text) noexcept {
    static constexpr struct {
        std::string_view word;
        bool value;
    } kWords[] = {{"t", true}, {"f", false}, {"true", true}, {"false", false}, {"yes", true}, {"no", false}};
    if (const auto number = ParseReal(text)) return {Cell::Form::Boolean, *number != 0 ? 1 : 0, 0, text};
    for (const auto& each : kWords) {
        if (EqualsNoCase(text, each.word)) return {Cell::Form::Boolean, each.value ? 1 : 0, 0, text};
    }
    return TextCell(text);
}

Cell DateCell(CellKind kind, std::string_view text) noexcept {
    auto time = ParseCalendarTime(text);
    if (!time) return TextCell(text);
    if (kind == CellKind::Time) {  // the day part is 0 whatever day the text names
        time->year = 1899;
        time->month = 12;
        time->day = 30;
    }
    const auto date = ToAutomationDate(*time);
    return date ? Cell{Cell::Form::Date, time->nanosecond, *date, text} : TextCell(text);
}

template <class Integer>
bool Fits(long long value) noexcept {
    return value >= std::numeric_limits<Integer>::min() && value <= std::numeric_limits<Integer>::max();
}

void SetI4(long long integer, VARIANT& value) noexcept {
    value.vt = VT_I4;
    value.lVal = static_cast<LONG>(integer);
}

void SetDecimal(const DECIMAL& decimal, VARIANT& value) noexcept {
    value.decVal = decimal;  // overlays the type
    value.vt = VT_DECIMAL;
}

/// The type that the column's readers expect; the next one that holds the value when the database kept a larger one.
void MakeInteger(long long integer, const Column& column, VARIANT& value) noexcept {
    switch (column.type) {
        case kTypeTinyInt:
        case kTypeSmallInt:
            if (!Fits<short>(integer)) break;
            value.vt = VT_I2;
            value.iVal = static_cast<SHORT>(integer);
            return;
        case kTypeUnsignedTinyInt:
            if (!Fits<BYTE>(integer)) break;
            value.vt = VT_UI1;
            value.bVal = static_cast<BYTE>(integer);
            return;
        case kTypeBigInt:
        case kTypeUnsignedBigInt:
            // Contract: a stored 64-bit integer is a decimal; a computed one, like a count, is VT_I4 when it fits.
            if (column.isExpression) break;
            return SetDecimal(DecimalFromInteger(integer), value);
        case kTypeUnsignedInt:
            if (Fits<LONG>(integer)) break;
            value.vt = VT_R8;
            value.dblVal = static_cast<double>(integer);
            return;
        default:
            break;
    }
    if (Fits<LONG>(integer)) return SetI4(integer, value);
    SetDecimal(DecimalFromInteger(integer), value);
}

void MakeDecimal(std::string_view digits, VARIANT& value) {
    if (const auto decimal = ParseDecimal(digits)) return SetDecimal(*decimal, value);
    value.vt = VT_BSTR;
    value.bstrVal = MakeBstr(digits);
}

void MakeArray(std::string_view bytes, VARIANT& value) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    if (array == nullptr) throw std::bad_alloc();
    if (!bytes.empty()) std::memcpy(array->pvData, bytes.data(), bytes.size());
    value.vt = VT_ARRAY | VT_UI1;
    value.parray = array;
}

template <class Real>
std::string RealText(Real real) {
    char buffer[64];
    const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, real);
    static_cast<void>(error);  // the buffer takes any double
    return std::string(buffer, end);
}

}  // namespace

Cell CellFromText(CellKind kind, std::string_view text) noexcept {
    if (text.data() == nullptr) return {};
    switch (kind) {
        case CellKind::Integer16:
        case CellKind::Integer32:
        case CellKind::Integer64:
            return NumberCell(text, false);
        case CellKind::Real32:
        case CellKind::Real64:
            return NumberCell(text, true);
        case CellKind::Boolean:
            return BooleanCell(text);
        case CellKind::Decimal:
            if (IsPlainDecimal(text)) return {Cell::Form::Decimal, 0, 0, text};
            return NumberCell(text, true);
        case CellKind::Date:
        case CellKind::Time:
        case CellKind::Timestamp:
            return DateCell(kind, text);
        case CellKind::Bytes:
            return {Cell::Form::Bytes, 0, 0, text};
        case CellKind::Text:
        case CellKind::Guid:
            break;
    }
    return TextCell(text);
}

BSTR MakeBstr(std::string_view utf8) {
    constexpr std::size_t kShort = 512;
    BSTR text = nullptr;
    if (utf8.size() <= kShort) {
        char16_t buffer[kShort];
        const auto done = text::Utf8ToUtf16(utf8, buffer, kShort);
        text = SysAllocStringLen(buffer, static_cast<UINT>(done.written));
    } else {
        const std::size_t length = text::Utf8ToUtf16Length(utf8);
        text = SysAllocStringLen(nullptr, static_cast<UINT>(length));
        if (text != nullptr) text::Utf8ToUtf16(utf8, text, length);
    }
    if (text == nullptr) throw std::bad_alloc();
    return text;
}

void MakeVariant(const Cell& cell, const Column& column, VARIANT& value) {
    value.vt = VT_EMPTY;
    switch (cell.form) {
        case Cell::Form::Null:
            value.vt = VT_NULL;
            return;
        case Cell::Form::Integer:
            return MakeInteger(cell.integer, column, value);
        case Cell::Form::Real:
            if (column.type == kTypeSingle) {
                value.vt = VT_R4;
                value.fltVal = static_cast<FLOAT>(cell.real);
                return;
            }
            value.vt = VT_R8;
            value.dblVal = cell.real;
            return;
        case Cell::Form::Boolean:
            value.vt = VT_BOOL;
            value.boolVal = cell.integer != 0 ? VARIANT_TRUE : VARIANT_FALSE;
            return;
        case Cell::Form::Decimal:
            return MakeDecimal(cell.text, value);
        case Cell::Form::Date:
            value.vt = VT_DATE;
            value.date = cell.real;
            return;
        case Cell::Form::Bytes:
            return MakeArray(cell.text, value);
        case Cell::Form::Text:
            value.bstrVal = MakeBstr(cell.text);
            value.vt = VT_BSTR;
            return;
    }
}

bool TextFromVariant(const VARIANT& value, std::string& text) {
    switch (value.vt) {
        case VT_EMPTY:
        case VT_NULL:
            return false;
        case VT_I1:
            text = std::to_string(value.cVal);
            return true;
        case VT_UI1:
            text = std::to_string(value.bVal);
            return true;
        case VT_I2:
            text = std::to_string(value.iVal);
            return true;
        case VT_UI2:
            text = std::to_string(value.uiVal);
            return true;
        case VT_I4:
        case VT_INT:
            text = std::to_string(value.lVal);
            return true;
        case VT_UI4:
        case VT_UINT:
            text = std::to_string(value.ulVal);
            return true;
        case VT_I8:
            text = std::to_string(value.llVal);
            return true;
        case VT_UI8:
            text = std::to_string(value.ullVal);
            return true;
        case VT_R4:
            text = RealText(value.fltVal);
            return true;
        case VT_R8:
            text = RealText(value.dblVal);
            return true;
        case VT_BOOL:
            text = value.boolVal != VARIANT_FALSE ? "1" : "0";
            return true;
        case VT_DATE:
            text = FormatCalendarTime(FromAutomationDate(value.date), CalendarForm::DateTime);
            return true;
        case VT_CY: {
            DECIMAL amount = DecimalFromInteger(value.cyVal.int64);
            amount.scale = 4;
            text = FormatDecimal(amount);
            return true;
        }
        case VT_DECIMAL:
            text = FormatDecimal(value.decVal);
            return true;
        case VT_BSTR:
            text = value.bstrVal == nullptr ? std::string()
                                            : text::Utf16ToUtf8({value.bstrVal, SysStringLen(value.bstrVal)});
            return true;
        case VT_ARRAY | VT_UI1: {
            ULONG count = 0;
            if (value.parray != nullptr && value.parray->cDims == 1) count = value.parray->rgsabound[0].cElements;
            text.assign(count == 0 ? "" : static_cast<const char*>(value.parray->pvData), count);
            return true;
        }
        default:
            throw AdoError(ErrorNumber::DataConversion, kUnsupportedParameter);
    }
}

}  // namespace tk::ado
