#include "ado/persist/gram_decoder.h"

#include <tkwin32/text.h>

#include <cmath>

#include "ado/odbc/odbc_api.h"
#include "ado/persist/decimal_digits.h"
#include "ado/persist/hex.h"
#include "ado/persist/moment_rules.h"

namespace tk::ado::gram {
namespace {

constexpr std::size_t kShortText = 4096;
constexpr int kMostScale = 38;

/// Bytes of the largest magnitude of so many decimal digits.
std::size_t MagnitudeBytes(int digits) noexcept {
    WideInteger largest = 1;
    for (int i = 0; i < digits; ++i)
        largest *= 10;
    --largest;
    std::size_t bytes = 0;
    for (; largest != 0; largest >>= 8)
        ++bytes;
    return bytes;
}

WideInteger Magnitude(const char* bytes, std::size_t size) noexcept {
    WideInteger magnitude = 0;
    for (std::size_t i = size; i-- > 0;)
        magnitude = magnitude << 8 | static_cast<unsigned char>(bytes[i]);
    return magnitude;
}

SQL_TIMESTAMP_STRUCT StampOf(const CalendarTime& moment) noexcept {
    SQL_TIMESTAMP_STRUCT stamp = {};
    stamp.year = static_cast<SQLSMALLINT>(moment.year);
    stamp.month = static_cast<SQLUSMALLINT>(moment.month);
    stamp.day = static_cast<SQLUSMALLINT>(moment.day);
    stamp.hour = static_cast<SQLUSMALLINT>(moment.hour);
    stamp.minute = static_cast<SQLUSMALLINT>(moment.minute);
    stamp.second = static_cast<SQLUSMALLINT>(moment.second);
    stamp.fraction = static_cast<SQLUINTEGER>(moment.nanosecond);
    return stamp;
}

}  // namespace

void Decoder::Take(const GramColumn& column, RowCollector& rows) {
    const std::size_t target = column.target;
    switch (column.coding) {
        case Coding::Int8:
            return rows.AddFixed<short>(target, source_.Get<std::int8_t>());
        case Coding::UInt8:
            return rows.AddFixed<short>(target, source_.Get<std::uint8_t>());
        case Coding::Int16:
            return rows.AddFixed<short>(target, source_.Get<std::int16_t>());
        case Coding::UInt16:
            return rows.AddFixed<std::int32_t>(target, source_.Get<std::uint16_t>());
        case Coding::Int32:
            return rows.AddFixed<std::int32_t>(target, source_.Get<std::int32_t>());
        case Coding::UInt32:
            return rows.AddFixed<std::int64_t>(target, source_.Get<std::uint32_t>());
        case Coding::Int64:
            return rows.AddFixed<std::int64_t>(target, source_.Get<std::int64_t>());
        case Coding::Real32:
            return rows.AddFixed<float>(target, source_.Get<float>());
        case Coding::Real64:
            return rows.AddFixed<double>(target, source_.Get<double>());
        case Coding::Boolean:
            return rows.AddFixed<unsigned char>(target, source_.Get<std::uint16_t>() != 0 ? 1 : 0);
        case Coding::UInt64:
        case Coding::Currency:
        case Coding::Decimal:
        case Coding::Numeric:
        case Coding::VarNumeric:
            return TakeDigits(column, rows);
        case Coding::Date:
        case Coding::DbDate:
        case Coding::DbTime:
        case Coding::DbTimestamp:
            return TakeMoment(column, rows);
        case Coding::Guid: {
            char text[38];
            SpellGuid(source_.Take(16), text);
            return rows.AddText({text, sizeof text});
        }
        case Coding::FixedText:
        case Coding::ShortText:
        case Coding::LongText:
            return TakeText(column, rows);
        case Coding::FixedBytes:
        case Coding::ShortBytes:
        case Coding::LongBytes: {
            const std::size_t size = Length(column);
            if (size <= kShortText) return rows.AddText({source_.Take(size), size});
            std::string bytes;
            source_.Take(size, bytes);
            return rows.AddLongText(std::move(bytes));
        }
    }
}

void Decoder::Skip(const GramColumn& column) {
    std::size_t size = column.bytes;
    switch (column.coding) {
        case Coding::VarNumeric:
            size = MagnitudeBytes(std::min<int>(static_cast<unsigned char>(source_.Take(3)[0]), kMostScale));
            break;
        case Coding::FixedText:
        case Coding::ShortText:
        case Coding::LongText:
        case Coding::FixedBytes:
        case Coding::ShortBytes:
        case Coding::LongBytes:
            size = Length(column);
            break;
        default:
            break;
    }
    while (size != 0) {
        const std::size_t piece = std::min(size, GramSource::kMostAtOnce);
        source_.Take(piece);
        size -= piece;
    }
}

std::size_t Decoder::Length(const GramColumn& column) {
    std::size_t size = column.bytes;
    if (column.coding == Coding::ShortText || column.coding == Coding::ShortBytes) {
        size = source_.Get<std::uint8_t>();
    } else if (column.coding == Coding::LongText || column.coding == Coding::LongBytes) {
        size = source_.Get<std::uint32_t>();
    }
    if (size > column.bytes || size > source_.Left()) source_.Fail(kTextDamaged);
    return size;
}

void Decoder::TakeText(const GramColumn& column, RowCollector& rows) {
    const std::size_t size = Length(column);
    if (size > kShortText) return TakeLongText(column, size, rows);
    const char* const bytes = source_.Take(size);
    char utf8[kShortText * 3];
    if (!column.isWide) {
        // Not ours: in the code page of whoever wrote it, which on a Chinese system is this one.
        const auto done = text::GbkToUtf8({bytes, size}, utf8, sizeof utf8);
        return rows.AddText({utf8, done.written});
    }
    if (size % 2 != 0) source_.Fail(kTextDamaged);
    const std::size_t count = size / 2;
    unsigned char high = 0;
    unsigned char low = 0;
    for (std::size_t i = 0; i < count; ++i) {
        utf8[i] = bytes[2 * i];
        low = static_cast<unsigned char>(low | static_cast<unsigned char>(bytes[2 * i]));
        high = static_cast<unsigned char>(high | static_cast<unsigned char>(bytes[2 * i + 1]));
    }
    if (high == 0 && low < 0x80) return rows.AddText({utf8, count});
    char16_t units[kShortText / 2];
    std::memcpy(units, bytes, size);
    const auto done = text::Utf16ToUtf8({units, count}, utf8, sizeof utf8);
    rows.AddText({utf8, done.written});
}

void Decoder::TakeLongText(const GramColumn& column, std::size_t size, RowCollector& rows) {
    if (column.isWide && size % 2 != 0) source_.Fail(kTextDamaged);
    // Piece by piece: the text is held once, and only as far as the file really goes.
    std::string text;
    std::string pending;
    while (size != 0) {
        const std::size_t piece = std::min(size, GramSource::kMostAtOnce);
        const char* const bytes = source_.Take(piece);
        size -= piece;
        if (!column.isWide) {
            pending.append(bytes, piece);
            // The last byte may be half a character; what is held back for that comes with the next piece.
            const std::size_t whole = size == 0 ? pending.size() : text::WholeGbkPrefix(pending, pending.size() - 1);
            text += text::GbkToUtf8(std::string_view(pending).substr(0, whole));
            pending.erase(0, whole);
            continue;
        }
        const std::size_t held = units_.size();
        units_.resize(held + piece / 2);
        std::memcpy(units_.data() + held, bytes, piece);
        // A character of two units stays whole.
        std::size_t count = units_.size();
        if (size != 0 && (units_.back() & 0xFC00) == 0xD800) --count;
        text += text::Utf16ToUtf8({units_.data(), count});
        units_.erase(units_.begin(), units_.begin() + static_cast<std::ptrdiff_t>(count));
    }
    units_.clear();
    rows.AddLongText(std::move(text));
}

void Decoder::TakeDigits(const GramColumn& column, RowCollector& rows) {
    DecimalDigits digits;
    switch (column.coding) {
        case Coding::UInt64:
            digits.magnitude = source_.Get<std::uint64_t>();
            break;
        case Coding::Currency: {
            const auto amount = source_.Get<std::int64_t>();
            digits.isNegative = amount < 0;
            const auto bits = static_cast<std::uint64_t>(amount);
            digits.magnitude = amount < 0 ? 0 - bits : bits;
            digits.scale = 4;
            break;
        }
        case Coding::Decimal: {
            const char* const bytes = source_.Take(16);
            const auto sign = static_cast<unsigned char>(bytes[3]);
            digits.scale = static_cast<unsigned char>(bytes[2]);
            if (digits.scale > 28 || (sign != 0 && sign != 0x80)) source_.Fail(kTextBadValue);
            digits.isNegative = sign != 0;
            digits.magnitude = Magnitude(bytes + 4, 4) << 64 | Magnitude(bytes + 8, 8);
            break;
        }
        default: {
            const char* const head = source_.Take(3);
            const int precision = static_cast<unsigned char>(head[0]);
            // The format's scale has a sign.
            digits.scale = static_cast<signed char>(head[1]);  // NOLINT(bugprone-signed-char-misuse)
            digits.isNegative = head[2] == 0;
            if (digits.scale < 0 || digits.scale > kMostScale || precision > kMostScale) source_.Fail(kTextBadValue);
            const std::size_t size = column.coding == Coding::Numeric ? 16 : MagnitudeBytes(precision);
            digits.magnitude = Magnitude(source_.Take(size), size);
            break;
        }
    }
    char buffer[kDigitsRoom];
    rows.AddText(SpellDigits(digits, buffer));
}

void Decoder::TakeMoment(const GramColumn& column, RowCollector& rows) {
    CalendarTime moment;
    if (column.coding == Coding::Date) {
        constexpr double kFirst = -657434;
        constexpr double kLast = 2958466;
        const auto date = source_.Get<double>();
        if (!(date > kFirst - 1 && date < kLast)) source_.Fail(kTextBadValue);
        return rows.AddFixed(column.target, StampOf(FromAutomationDate(date)));
    }
    if (column.coding != Coding::DbTime) {
        moment.year = source_.Get<std::int16_t>();
        moment.month = source_.Get<std::uint16_t>();
        moment.day = source_.Get<std::uint16_t>();
    }
    if (column.coding != Coding::DbDate) {
        moment.hour = source_.Get<std::uint16_t>();
        moment.minute = source_.Get<std::uint16_t>();
        moment.second = source_.Get<std::uint16_t>();
    }
    if (column.coding == Coding::DbTimestamp) {
        moment.nanosecond = static_cast<int>(std::min<std::uint32_t>(source_.Get<std::uint32_t>(), 1'000'000'000));
    }
    if (!IsSayable(moment)) source_.Fail(kTextBadValue);
    if (column.coding == Coding::DbDate) {
        const SQL_TIMESTAMP_STRUCT stamp = StampOf(moment);
        return rows.AddFixed(column.target, SQL_DATE_STRUCT{stamp.year, stamp.month, stamp.day});
    }
    if (column.coding == Coding::DbTimestamp) return rows.AddFixed(column.target, StampOf(moment));
    char text[8];
    const auto put = [&](std::size_t at, int number) {
        text[at] = static_cast<char>('0' + number / 10);
        text[at + 1] = static_cast<char>('0' + number % 10);
    };
    put(0, moment.hour);
    put(3, moment.minute);
    put(6, moment.second);
    text[2] = text[5] = ':';
    rows.AddText({text, sizeof text});
}

}  // namespace tk::ado::gram
