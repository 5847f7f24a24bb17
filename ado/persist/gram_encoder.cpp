#include "ado/persist/gram_encoder.h"

#include <tkwin32/text.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "ado/odbc/odbc_api.h"
#include "ado/persist/decimal_digits.h"
#include "ado/persist/hex.h"
#include "ado/persist/moment_rules.h"
#include "ado/rowset/number_value.h"
#include "ado/rowset/value.h"

namespace tk::ado::gram {
namespace {

using Form = SavedValue::Form;

constexpr std::size_t kShortPiece = 16 * 1024;  // texts up to here fit into the writer's room at once

template <class Number>
char* Store(char* at, Number number) noexcept {
    std::memcpy(at, &number, sizeof number);
    return at + sizeof number;
}

bool IsAscii(std::string_view text) noexcept {
    unsigned char all = 0;
    for (const char letter : text)
        all = static_cast<unsigned char>(all | static_cast<unsigned char>(letter));
    return all < 0x80;
}

}  // namespace

bool Encoder::Put(const GramColumn& column, CellKind kind, const SavedValue& value) {
    switch (column.coding) {
        case Coding::Int8:
        case Coding::UInt8:
        case Coding::Int16:
        case Coding::UInt16:
        case Coding::Int32:
        case Coding::UInt32:
        case Coding::Int64:
            return PutInteger(column, value);
        case Coding::Real32:
        case Coding::Real64:
            return PutReal(column, value);
        case Coding::UInt64:
        case Coding::Currency:
        case Coding::Decimal:
        case Coding::Numeric:
        case Coding::VarNumeric:
            return PutDigits(column, value);
        case Coding::Boolean: {
            bool truth = value.integer != 0;
            if (value.form == Form::Text) {
                const Cell cell = CellFromText(CellKind::Boolean, value.text);
                if (cell.form != Cell::Form::Boolean) return false;
                truth = cell.integer != 0;
            }
            file_.Commit(Store(file_.Room(2), static_cast<std::int16_t>(truth ? -1 : 0)));
            return true;
        }
        case Coding::Guid:
            return PutGuid(value);
        case Coding::Date:
        case Coding::DbDate:
        case Coding::DbTime:
        case Coding::DbTimestamp:
            return PutMoment(column, value);
        case Coding::FixedText:
        case Coding::ShortText:
        case Coding::LongText: {
            char buffer[64];
            return PutText(column, TextOf(value, kind, buffer));
        }
        case Coding::FixedBytes:
        case Coding::ShortBytes:
        case Coding::LongBytes:
            return value.form == Form::Text && PutBytes(column, value.text);
    }
    return false;
}

bool Encoder::PutInteger(const GramColumn& column, const SavedValue& value) {
    long long integer = value.integer;
    if (value.form == Form::Text) {
        const auto parsed = ParseInteger(value.text);
        if (!parsed) return false;
        integer = *parsed;
    } else if (value.form != Form::Integer) {
        return false;
    }
    char* const at = file_.Room(8);
    const auto put = [&]<class Number>(Number) {
        if (!std::in_range<Number>(integer)) return false;
        file_.Commit(Store(at, static_cast<Number>(integer)));
        return true;
    };
    switch (column.coding) {
        case Coding::Int8:
            return put(std::int8_t{});
        case Coding::UInt8:
            return put(std::uint8_t{});
        case Coding::Int16:
            return put(std::int16_t{});
        case Coding::UInt16:
            return put(std::uint16_t{});
        case Coding::Int32:
            return put(std::int32_t{});
        case Coding::UInt32:
            return put(std::uint32_t{});
        default:
            return put(std::int64_t{});
    }
}

bool Encoder::PutReal(const GramColumn& column, const SavedValue& value) {
    double real = value.real;
    if (value.form == Form::Text) {
        const auto parsed = ParseReal(value.text);
        if (!parsed) return false;
        real = *parsed;
    } else if (value.form != Form::Real) {
        return false;
    }
    if (column.coding == Coding::Real64) {
        file_.Commit(Store(file_.Room(8), real));
        return true;
    }
    if (std::isfinite(real) && std::fabs(real) > static_cast<double>(std::numeric_limits<float>::max())) return false;
    file_.Commit(Store(file_.Room(4), static_cast<float>(real)));
    return true;
}

bool Encoder::PutDigits(const GramColumn& column, const SavedValue& value) {
    DecimalDigits digits;
    if (value.form != Form::Text || !ReadDigits(value.text, digits)) return false;
    const auto low = static_cast<std::uint64_t>(digits.magnitude);
    const auto high = static_cast<std::uint64_t>(digits.magnitude >> 64);
    char* at = file_.Room(32);
    switch (column.coding) {
        case Coding::UInt64:
            if (digits.scale != 0 || high != 0 || (digits.isNegative && low != 0)) return false;
            at = Store(at, low);
            break;
        case Coding::Currency: {
            constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
            if (digits.scale != 4 || high != 0 || low > kMost) return false;
            const auto amount = static_cast<std::int64_t>(low);
            at = Store(at, digits.isNegative ? -amount : amount);
            break;
        }
        case Coding::Decimal:
            if (digits.scale > 28 || (high >> 32) != 0) return false;
            at = Store(at, std::uint16_t{0});
            *at++ = static_cast<char>(digits.scale);
            *at++ = static_cast<char>(digits.isNegative ? 0x80 : 0);
            at = Store(at, static_cast<std::uint32_t>(high));
            at = Store(at, low);
            break;
        default:
            *at++ = static_cast<char>(column.precision >= 1 && column.precision <= 38 ? column.precision : 38);
            *at++ = static_cast<char>(digits.scale);
            *at++ = static_cast<char>(digits.isNegative ? 0 : 1);
            at = Store(at, low);
            at = Store(at, high);
            if (column.coding == Coding::VarNumeric) at[-19] = 38;  // of 16 bytes
            break;
    }
    file_.Commit(at);
    return true;
}

bool Encoder::PutMoment(const GramColumn& column, const SavedValue& value) {
    CalendarTime moment = value.moment;
    if (value.form == Form::Text) {
        // A date that no automation date can say is handed out as the text it is.
        const auto parsed = ParseCalendarTime(value.text);
        if (!parsed || parsed->year < 100) return false;
        moment = *parsed;
    } else if (value.form != Form::Moment) {
        return false;
    }
    if (!IsSayable(moment)) return false;
    const bool hasTime = moment.hour != 0 || moment.minute != 0 || moment.second != 0 || moment.nanosecond != 0;
    const auto unsignedShort = [](int number) { return static_cast<std::uint16_t>(number); };
    char* at = file_.Room(16);
    switch (column.coding) {
        case Coding::Date: {
            const auto date = ToAutomationDate(moment);
            if (!date || !IsSameMoment(FromAutomationDate(*date), moment)) return false;
            file_.Commit(Store(at, *date));
            return true;
        }
        case Coding::DbDate:
            if (hasTime) return false;
            break;
        case Coding::DbTime:
            if (moment.nanosecond != 0) return false;
            break;
        default:
            break;
    }
    if (column.coding != Coding::DbTime) {
        at = Store(at, static_cast<std::int16_t>(moment.year));
        at = Store(at, unsignedShort(moment.month));
        at = Store(at, unsignedShort(moment.day));
    }
    if (column.coding != Coding::DbDate) {
        at = Store(at, unsignedShort(moment.hour));
        at = Store(at, unsignedShort(moment.minute));
        at = Store(at, unsignedShort(moment.second));
    }
    if (column.coding == Coding::DbTimestamp) at = Store(at, static_cast<std::uint32_t>(moment.nanosecond));
    file_.Commit(at);
    return true;
}

bool Encoder::PutGuid(const SavedValue& value) {
    char bytes[16];
    if (value.form != Form::Text || !GuidBytes(value.text, bytes)) return false;
    char* const at = file_.Room(sizeof bytes);
    std::memcpy(at, bytes, sizeof bytes);
    file_.Commit(at + sizeof bytes);
    return true;
}

bool Encoder::PutText(const GramColumn& column, std::string_view text) {
    if (text.size() > kShortPiece) return PutLongText(column, text);
    char* at = file_.Room(sizeof(std::uint32_t) + text.size() * sizeof(char16_t));
    char* const start = at;
    at += column.coding == Coding::ShortText ? 1 : column.coding == Coding::LongText ? 4 : 0;
    std::size_t bytes = 0;
    if (IsAscii(text)) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            at[2 * i] = text[i];
            at[2 * i + 1] = '\0';
        }
        bytes = text.size() * 2;
    } else {
        if (units_.size() < text.size()) units_.resize(text.size() + 256);
        bytes = text::Utf8ToUtf16(text, units_.data(), units_.size()).written * 2;
        std::memcpy(at, units_.data(), bytes);
    }
    if (column.coding == Coding::FixedText ? bytes != column.bytes : bytes > column.bytes) return false;
    if (column.coding == Coding::ShortText) {
        *start = static_cast<char>(bytes);
    } else if (column.coding == Coding::LongText) {
        Store(start, static_cast<std::uint32_t>(bytes));
    }
    file_.Commit(at + bytes);
    return true;
}

bool Encoder::PutLongText(const GramColumn& column, std::string_view text) {
    const std::uint64_t bytes = std::uint64_t{text::Utf8ToUtf16Length(text)} * 2;
    if (column.coding == Coding::ShortText) return false;
    if (column.coding == Coding::FixedText ? bytes != column.bytes : bytes > column.bytes) return false;
    if (bytes > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max())) return false;
    if (column.coding == Coding::LongText) {
        file_.Commit(Store(file_.Room(4), static_cast<std::uint32_t>(bytes)));
    }
    if (units_.size() < kShortPiece) units_.resize(kShortPiece);
    while (!text.empty()) {
        const auto done = text::Utf8ToUtf16(text, units_.data(), units_.size());
        file_.Write({reinterpret_cast<const char*>(units_.data()), done.written * 2});
        text.remove_prefix(done.read);
    }
    return true;
}

bool Encoder::PutBytes(const GramColumn& column, std::string_view bytes) {
    if (column.coding == Coding::FixedBytes ? bytes.size() != column.bytes : bytes.size() > column.bytes) return false;
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) return false;
    if (column.coding == Coding::ShortBytes) {
        file_.Commit(Store(file_.Room(1), static_cast<std::uint8_t>(bytes.size())));
    } else if (column.coding == Coding::LongBytes) {
        file_.Commit(Store(file_.Room(4), static_cast<std::uint32_t>(bytes.size())));
    }
    file_.Write(bytes);
    return true;
}

}  // namespace tk::ado::gram
