#include "ado/odbc/parameter_binding.h"

#include <tkwin32/text.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <type_traits>

#include "ado/messages.h"
#include "ado/odbc/whole_utf8.h"
#include "ado/rowset/date_value.h"
#include "ado/rowset/number_value.h"
#include "ado/rowset/type_map.h"
#include "ado/rowset/value.h"

namespace tk::ado {
namespace {

constexpr std::size_t kLongestVarChar = 4000;

// Room for an output value: bytes of any number or date, characters of a text at most, bytes of a character.
constexpr std::size_t kLongestNumber = 64;
constexpr LONG kLongestOutput = 4 * 1024 * 1024;
constexpr std::size_t kMostUtf8 = 4;

[[noreturn]] void ThrowUnsupported() {
    throw AdoError(ErrorNumber::DataConversion, kUnsupportedParameter);
}

/// The bytes of a one-dimensional array of bytes.
std::string ArrayBytes(SAFEARRAY* array) {
    LONG lower = 0;
    LONG upper = -1;
    void* data = nullptr;
    if (array == nullptr || SafeArrayGetDim(array) != 1 || FAILED(SafeArrayGetLBound(array, 1, &lower)) ||
        FAILED(SafeArrayGetUBound(array, 1, &upper)) || FAILED(SafeArrayAccessData(array, &data))) {
        ThrowUnsupported();
    }
    std::string bytes(static_cast<const char*>(data), static_cast<std::size_t>(upper - lower + 1));
    SafeArrayUnaccessData(array);
    return bytes;
}

/// The type that a parameter is sent as for its column or declaration: national texts as such, where that matters.
SQLSMALLINT SentType(const Column& column, bool hasWideParameters) {
    const auto sqlType = static_cast<SQLSMALLINT>(column.sqlType);
    const bool isNational = column.type == kTypeWChar || column.type == kTypeVarWChar ||
                            column.type == kTypeLongVarWChar || column.type == kTypeBstr;
    if (!hasWideParameters || !isNational) return sqlType;
    if (sqlType == SQL_VARCHAR) return SQL_WVARCHAR;
    return sqlType == SQL_LONGVARCHAR ? SQLSMALLINT{SQL_WLONGVARCHAR} : sqlType;
}

SQLSMALLINT CTypeOf(Cell::Form form) noexcept {
    switch (form) {
        case Cell::Form::Integer:
            return SQL_C_SBIGINT;
        case Cell::Form::Real:
            return SQL_C_DOUBLE;
        case Cell::Form::Bytes:
            return SQL_C_BINARY;
        default:
            return SQL_C_CHAR;
    }
}

}  // namespace

ParameterBinding::ParameterBinding(StatementHandle& handle, std::span<const Parameter> parameters) : handle_(handle) {
    if (!parameters.empty() && parameters.front().array != nullptr) {
        BindArrays(parameters);
        return;
    }
    SQLUSMALLINT number = 0;
    for (const Parameter& parameter : parameters) {
        Slot& slot = slots_->list.emplace_back();
        if (parameter.direction == Parameter::Direction::Input) {
            Read(parameter, slot);
        } else {
            ReadOutput(parameter, slot);
            hasOutputs_ = true;
        }
        const SQLRETURN result = Odbc().BindParameter(handle_.Get(), ++number, slot.direction, slot.cType, slot.sqlType,
                                                      std::max<SQLULEN>(slot.size, 1), slot.digits, slot.bytes.data(),
                                                      static_cast<SQLLEN>(slot.bytes.size()), &slot.indicator);
        if (!SQL_SUCCEEDED(result)) ThrowUnbound();
    }
}

void ParameterBinding::BindArrays(std::span<const Parameter> parameters) {
    static_assert(std::is_same_v<SQLLEN, std::ptrdiff_t> && SQL_NULL_DATA == -1);
    states_.assign(parameters.front().array->lengths.size(), SQL_PARAM_SUCCESS);
    if (!handle_.SetParameterRows(states_.size(), states_.data())) ThrowUnbound();
    SQLUSMALLINT number = 0;
    for (const Parameter& parameter : parameters) {
        // Drivers take both as writable; none writes to an input.
        const ParameterArray& array = *parameter.array;
        auto* const bytes = const_cast<char*>(array.bytes.data());
        auto* const lengths = const_cast<SQLLEN*>(array.lengths.data());
        const auto width = static_cast<SQLLEN>(array.width);
        const SQLRETURN result = Odbc().BindParameter(handle_.Get(), ++number, SQL_PARAM_INPUT, CTypeOf(array.form),
                                                      SentType(*parameter.column, handle_.Profile().hasWideParameters),
                                                      static_cast<SQLULEN>(width), 0, bytes, width, lengths);
        if (!SQL_SUCCEEDED(result)) ThrowUnbound();
    }
}

void ParameterBinding::ThrowUnbound() const {
    const auto records = ReadDiagnostics(SQL_HANDLE_STMT, handle_.Get());
    Odbc().FreeStmt(handle_.Get(), SQL_RESET_PARAMS);
    if (!states_.empty()) handle_.SetParameterRows(1, nullptr);
    throw MakeError(records);
}

ParameterBinding::~ParameterBinding() {
    if (!slots_->list.empty() || !states_.empty()) Odbc().FreeStmt(handle_.Get(), SQL_RESET_PARAMS);
    if (!states_.empty()) handle_.SetParameterRows(1, nullptr);
}

bool ParameterBinding::HasFailedExecution() const noexcept {
    return std::ranges::find(states_, SQLUSMALLINT{SQL_PARAM_ERROR}) != states_.end();
}

void ParameterBinding::Read(const Parameter& parameter, Slot& slot) const {
    if (parameter.value != nullptr) {
        ReadVariant(*parameter.value, parameter.column, slot);
    } else {
        ReadCell(parameter.cell, parameter.column, slot);
    }
    // The column's own type keeps a typed server from refusing a text for a number, or a NULL without a type.
    if (parameter.column != nullptr && parameter.column->sqlType != 0 && handle_.Profile().hasTypedParameters) {
        slot.sqlType = SentType(*parameter.column, handle_.Profile().hasWideParameters);
        if (parameter.column->dbType == kTypeNumeric && slot.cType == SQL_C_CHAR) return;
        if (parameter.column->dbType == kTypeNumeric) slot.size = parameter.column->precision;
    }
}

void ParameterBinding::ReadOutput(const Parameter& parameter, Slot& slot) const {
    const Column& column = *parameter.column;
    const bool isInput = parameter.direction == Parameter::Direction::InputOutput;
    // Every value travels as text, binaries as they are, so that one rule gives room and one reads the answer.
    slot.indicator = SQL_NULL_DATA;
    if (isInput && TextFromVariant(*parameter.value, slot.bytes))
        slot.indicator = static_cast<SQLLEN>(slot.bytes.size());
    const auto characters = static_cast<std::size_t>(std::clamp<LONG>(column.definedSize, 0, kLongestOutput));
    const bool isText = column.kind == CellKind::Text;
    const bool isBytes = column.kind == CellKind::Bytes;
    const std::size_t room = isText ? characters * kMostUtf8 + 1 : isBytes ? characters : kLongestNumber;
    slot.bytes.resize(std::max({room, slot.bytes.size() + 1, kLongestNumber}));
    slot.cType = isBytes ? SQL_C_BINARY : SQL_C_CHAR;
    slot.sqlType =
        column.sqlType != 0 ? SentType(column, handle_.Profile().hasWideParameters) : SQLSMALLINT{SQL_VARCHAR};
    slot.size = column.dbType == kTypeNumeric && column.precision != 255 ? column.precision : characters;
    slot.digits = column.dbType == kTypeNumeric && column.scale != 255 ? column.scale : SQLSMALLINT{0};
    slot.direction = isInput ? SQL_PARAM_INPUT_OUTPUT : SQL_PARAM_OUTPUT;
}

void ParameterBinding::Slots::Read(std::size_t place, const Column& column, VARIANT& value) const {
    const Slot& slot = list[place];
    std::string_view text;
    if (slot.indicator >= 0) {
        // A value that did not fit is cut; some drivers tell the whole length then.
        const std::size_t most = slot.bytes.size() - (slot.cType == SQL_C_CHAR ? 1 : 0);
        text = std::string_view(slot.bytes).substr(0, std::min(static_cast<std::size_t>(slot.indicator), most));
        if (text.size() == most && column.kind == CellKind::Text) text = text.substr(0, WholeUtf8(text));
    }
    MakeVariant(CellFromText(column.kind, text), column, value);
}

std::size_t ParameterBinding::Slots::Count() const noexcept {
    return static_cast<std::size_t>(
        std::ranges::count_if(list, [](const Slot& slot) { return slot.direction != SQL_PARAM_INPUT; }));
}

std::size_t ParameterBinding::Slots::PlaceOf(std::size_t output) const {
    std::size_t place = 0;
    while (list[place].direction == SQL_PARAM_INPUT || output-- != 0)
        ++place;
    return place;
}

short ParameterBinding::Slots::CType(std::size_t output) const {
    return list[PlaceOf(output)].cType;
}

void ParameterBinding::Slots::Put(std::size_t output, const std::string* value) {
    // The driver may still write into the bytes: they keep their place and size.
    Slot& slot = list[PlaceOf(output)];
    slot.indicator = SQL_NULL_DATA;
    if (value == nullptr) return;
    const std::size_t most = slot.bytes.size() - (slot.cType == SQL_C_CHAR ? 1 : 0);
    const std::size_t length = std::min(value->size(), most);
    std::copy_n(value->begin(), length, slot.bytes.begin());
    slot.indicator = static_cast<SQLLEN>(length);
}

void ParameterBinding::ReadVariant(const VARIANT& value, const Column* column, Slot& slot) const {
    if (value.vt == (VT_VARIANT | VT_BYREF)) return ReadVariant(*value.pvarVal, column, slot);
    switch (value.vt) {
        case VT_EMPTY:
        case VT_NULL:
            slot.indicator = SQL_NULL_DATA;
            break;
        case VT_I1:
            return SetFixed<short>(static_cast<signed char>(value.cVal), SQL_C_SSHORT, SQL_SMALLINT, 5, slot);
        case VT_UI1:
            return SetFixed<short>(value.bVal, SQL_C_SSHORT, SQL_SMALLINT, 5, slot);
        case VT_I2:
            return SetFixed<short>(value.iVal, SQL_C_SSHORT, SQL_SMALLINT, 5, slot);
        case VT_UI2:
            return SetFixed<SQLINTEGER>(value.uiVal, SQL_C_SLONG, SQL_INTEGER, 10, slot);
        case VT_I4:
        case VT_INT:
            return SetFixed<SQLINTEGER>(value.lVal, SQL_C_SLONG, SQL_INTEGER, 10, slot);
        case VT_UI4:
        case VT_UINT:
            return SetFixed<SQLBIGINT>(value.ulVal, SQL_C_SBIGINT, SQL_BIGINT, 19, slot);
        case VT_I8:
            return SetFixed<SQLBIGINT>(value.llVal, SQL_C_SBIGINT, SQL_BIGINT, 19, slot);
        case VT_UI8:
            return SetDecimal(std::to_string(value.ullVal), slot);
        case VT_R4:
            return SetFixed<double>(static_cast<double>(value.fltVal), SQL_C_DOUBLE, SQL_DOUBLE, 15, slot);
        case VT_R8:
            return SetFixed<double>(value.dblVal, SQL_C_DOUBLE, SQL_DOUBLE, 15, slot);
        case VT_BOOL:
            return SetFixed<unsigned char>(value.boolVal != VARIANT_FALSE ? 1 : 0, SQL_C_BIT, SQL_BIT, 1, slot);
        case VT_CY: {
            DECIMAL amount = DecimalFromInteger(value.cyVal.int64);
            amount.scale = 4;
            return SetDecimal(FormatDecimal(amount), slot);
        }
        case VT_DECIMAL: {
            const auto integer = value.decVal.scale == 0 ? IntegerFromDecimal(value.decVal) : std::nullopt;
            if (integer) return SetFixed<SQLBIGINT>(*integer, SQL_C_SBIGINT, SQL_BIGINT, 19, slot);
            return SetDecimal(FormatDecimal(value.decVal), slot);
        }
        case VT_DATE:
            return SetDate(value.date, -1, column, slot);
        case VT_BSTR:
            return SetText(
                text::Utf16ToUtf8({value.bstrVal == nullptr ? u"" : value.bstrVal, SysStringLen(value.bstrVal)}), slot);
        case VT_ARRAY | VT_UI1:
            slot.bytes = ArrayBytes(value.parray);
            slot.cType = SQL_C_BINARY;
            slot.sqlType = SQL_LONGVARBINARY;
            slot.size = slot.bytes.size();
            slot.indicator = static_cast<SQLLEN>(slot.bytes.size());
            break;
        default:
            ThrowUnsupported();
    }
}

void ParameterBinding::ReadCell(const Cell& cell, const Column* column, Slot& slot) const {
    const bool hasOwnText = !handle_.Profile().hasTypedParameters && cell.text.data() != nullptr;
    switch (cell.form) {
        case Cell::Form::Null:
            slot.indicator = SQL_NULL_DATA;
            break;
        case Cell::Form::Integer:
            return SetFixed<SQLBIGINT>(cell.integer, SQL_C_SBIGINT, SQL_BIGINT, 19, slot);
        case Cell::Form::Boolean:
            return SetFixed<unsigned char>(cell.integer != 0 ? 1 : 0, SQL_C_BIT, SQL_BIT, 1, slot);
        case Cell::Form::Real:
            return SetFixed<double>(cell.real, SQL_C_DOUBLE, SQL_DOUBLE, 15, slot);
        case Cell::Form::Decimal:
            return SetDecimal(std::string(cell.text), slot);
        case Cell::Form::Date:
            if (hasOwnText) return SetText(std::string(cell.text), slot);
            return SetDate(cell.real, static_cast<long>(cell.integer), column, slot);
        case Cell::Form::Text:
            return SetText(std::string(cell.text), slot);
        case Cell::Form::Bytes:
            slot.bytes = cell.text;
            slot.cType = SQL_C_BINARY;
            slot.sqlType = SQL_LONGVARBINARY;
            slot.size = slot.bytes.size();
            slot.indicator = static_cast<SQLLEN>(slot.bytes.size());
            break;
    }
}

void ParameterBinding::SetText(std::string text, Slot& slot) const {
    // Better refused than stored without its end.
    if (handle_.Profile().cutsAtZero && text.find('\0') != std::string::npos) ThrowUnsupported();
    const bool isWide = handle_.Profile().hasWideParameters;
    const bool isLong = text.size() > kLongestVarChar;
    slot.cType = SQL_C_CHAR;
    slot.sqlType = isLong ? (isWide ? SQL_WLONGVARCHAR : SQL_LONGVARCHAR) : (isWide ? SQL_WVARCHAR : SQL_VARCHAR);
    slot.size = text.size();
    slot.indicator = static_cast<SQLLEN>(text.size());
    slot.bytes = std::move(text);
}

void ParameterBinding::SetDecimal(std::string digits, Slot& slot) const {
    const std::size_t point = digits.find('.');
    const std::size_t scale = point == std::string::npos ? 0 : digits.size() - point - 1;
    const auto precision =
        static_cast<SQLULEN>(std::ranges::count_if(digits, [](char c) { return c >= '0' && c <= '9'; }));
    SetText(std::move(digits), slot);
    if (handle_.Profile().hasPlainDecimals) return;
    slot.sqlType = SQL_NUMERIC;
    slot.size = precision;
    slot.digits = static_cast<SQLSMALLINT>(scale);
}

void ParameterBinding::SetDate(DATE date, long nanoseconds, const Column* column, Slot& slot) const {
    const CalendarTime time = FromAutomationDate(date, nanoseconds);
    if (!handle_.Profile().hasTypedParameters) {
        const CalendarForm form = column != nullptr ? CalendarFormOf(column->kind) : CalendarForm::DateTime;
        return SetText(FormatCalendarTime(time, form), slot);
    }
    SQL_TIMESTAMP_STRUCT fields = {};
    fields.year = static_cast<SQLSMALLINT>(time.year);
    fields.month = static_cast<SQLUSMALLINT>(time.month);
    fields.day = static_cast<SQLUSMALLINT>(time.day);
    fields.hour = static_cast<SQLUSMALLINT>(time.hour);
    fields.minute = static_cast<SQLUSMALLINT>(time.minute);
    fields.second = static_cast<SQLUSMALLINT>(time.second);
    fields.fraction = static_cast<SQLUINTEGER>(time.nanosecond);
    constexpr SQLULEN kWholeSeconds = 19;
    const SQLSMALLINT digits = time.nanosecond == 0 ? 0 : time.nanosecond % 1'000 == 0 ? 6 : 9;
    SetFixed(fields, SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP,
             digits == 0 ? kWholeSeconds : kWholeSeconds + 1 + static_cast<SQLULEN>(digits), slot);
    slot.digits = digits;
}

template <class Value>
void ParameterBinding::SetFixed(Value value, SQLSMALLINT cType, SQLSMALLINT sqlType, SQLULEN size, Slot& slot) {
    slot.bytes.assign(reinterpret_cast<const char*>(&value), sizeof value);
    slot.cType = cType;
    slot.sqlType = sqlType;
    slot.size = size;
    slot.indicator = static_cast<SQLLEN>(sizeof value);
}

}  // namespace tk::ado
