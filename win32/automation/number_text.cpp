#include "win32/automation/number_text.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "win32/automation/decimal_value.h"

namespace tk::automation {

namespace {

constexpr std::int64_t kExponentLimit = 1'000'000'000;  // far beyond every type, far inside the arithmetic

// Walks over the text, narrowed; ends with NULs.
class Reader {
public:
    explicit Reader(std::u16string_view text) : text_(text) {}

    char16_t Peek(std::size_t ahead = 0) const {
        return at_ + ahead < text_.size() ? Narrow(text_[at_ + ahead]) : u'\0';
    }
    char16_t Next() {
        const char16_t character = Peek();
        ++at_;
        return character;
    }
    bool Take(char16_t character) {
        if (AtEnd() || Peek() != character) return false;
        ++at_;
        return true;
    }
    // Currency signs are no ASCII forms of anything, save the full-width dollar.
    bool TakeOneOf(std::u16string_view characters) {
        if (AtEnd()) return false;
        if (characters.find(text_[at_]) == characters.npos && characters.find(Peek()) == characters.npos) return false;
        ++at_;
        return true;
    }
    void SkipBlanks() {
        while (!AtEnd() && Peek() == u' ')
            ++at_;
    }
    bool AtEnd() const { return at_ >= text_.size(); }

private:
    std::u16string_view text_;
    std::size_t at_ = 0;
};

int DigitOfRadix(char16_t character, int base) {
    const char16_t lower = LowerAscii(character);
    int digit = -1;
    if (IsDigit(lower)) digit = lower - u'0';
    if (lower >= u'a' && lower <= u'f') digit = lower - u'a' + 10;
    return digit < base ? digit : -1;
}

HRESULT ParseRadix(Reader& reader, ParsedNumber& number) {
    const char16_t mark = LowerAscii(reader.Next());
    if (mark != u'h' && mark != u'o') return DISP_E_TYPEMISMATCH;
    const int base = mark == u'h' ? 16 : 8;
    bool any = false;
    bool tooLong = false;
    for (int digit; (digit = DigitOfRadix(reader.Peek(), base)) >= 0; reader.Next(), any = true) {
        const UInt128 value = UInt128{number.bits} * static_cast<unsigned>(base) + static_cast<unsigned>(digit);
        tooLong = tooLong || (value >> 64) != 0;
        number.bits = static_cast<std::uint64_t>(value);
    }
    reader.SkipBlanks();
    if (!any || !reader.AtEnd()) return DISP_E_TYPEMISMATCH;
    number.radix = true;
    return tooLong ? DISP_E_OVERFLOW : S_OK;
}

// The digits as they come: zeros in front move the point, digits that find no room leave a mark behind.
class DigitCollector {
public:
    explicit DigitCollector(ParsedNumber& number) : number_(number) {}

    void Add(char16_t digit, bool fraction) {
        any_ = true;
        if (number_.count == 0 && digit == u'0') {
            if (fraction) --number_.point;
            return;
        }
        if (!fraction) ++number_.point;
        if (number_.count < ParsedNumber::kMaxDigits) {
            number_.digit[number_.count++] = static_cast<char>(digit);
        } else if (digit != u'0') {
            beyond_ = true;
        }
    }
    bool Any() const { return any_; }
    void Finish() {
        if (beyond_) {
            number_.digit[number_.count++] = '1';
            return;
        }
        while (number_.count > 0 && number_.digit[number_.count - 1] == '0')
            --number_.count;
        if (number_.count == 0) number_.point = 0;
    }

private:
    ParsedNumber& number_;
    bool any_ = false;
    bool beyond_ = false;
};

bool ParseDigits(Reader& reader, ParsedNumber& number) {
    DigitCollector digits(number);
    for (; IsDigit(reader.Peek()) || (digits.Any() && reader.Peek() == u',');) {
        const char16_t character = reader.Next();
        if (character != u',') digits.Add(character, false);
    }
    if (reader.Take(u'.')) {
        while (IsDigit(reader.Peek()))
            digits.Add(reader.Next(), true);
    }
    digits.Finish();
    return digits.Any();
}

bool ParseExponent(Reader& reader, ParsedNumber& number) {
    if (LowerAscii(reader.Peek()) != u'e') return true;
    reader.Next();
    const bool negative = reader.Peek() == u'-';
    if (negative || reader.Peek() == u'+') reader.Next();
    if (!IsDigit(reader.Peek())) return false;
    std::int64_t exponent = 0;
    while (IsDigit(reader.Peek()))
        exponent = std::min(exponent * 10 + (reader.Next() - u'0'), kExponentLimit);
    if (number.count != 0) number.point += negative ? -exponent : exponent;
    return true;
}

// Sign, parentheses and currency sign may each stand once, in front or behind.
struct Affixes {
    bool sign = false;
    bool currency = false;
    bool open = false;
    bool closed = false;
    bool negative = false;
};

bool TakeAffix(Reader& reader, const LocaleFacts& locale, bool behind, Affixes& seen) {
    const char16_t next = reader.Peek();
    if ((next == u'-' || next == u'+') && !seen.sign && !seen.open) {
        reader.Next();
        seen.sign = true;
        seen.negative = next == u'-';
        return true;
    }
    if (!behind && next == u'(' && !seen.sign && !seen.open) {
        reader.Next();
        return seen.open = seen.negative = true;
    }
    if (behind && next == u')' && seen.open && !seen.closed) {
        reader.Next();
        return seen.closed = true;
    }
    if (!seen.currency && reader.TakeOneOf(locale.currencySigns)) return seen.currency = true;
    return false;
}

void TakeAffixes(Reader& reader, const LocaleFacts& locale, bool behind, Affixes& seen) {
    do {
        reader.SkipBlanks();
    } while (TakeAffix(reader, locale, behind, seen));
}

}  // namespace

HRESULT ParseNumber(std::u16string_view text, const LocaleFacts& locale, ParsedNumber& number) noexcept {
    Reader reader(text);
    reader.SkipBlanks();
    if (reader.Take(u'&')) return ParseRadix(reader, number);
    Affixes seen;
    TakeAffixes(reader, locale, false, seen);
    if (!ParseDigits(reader, number) || !ParseExponent(reader, number)) return DISP_E_TYPEMISMATCH;
    TakeAffixes(reader, locale, true, seen);
    if (!reader.AtEnd() || seen.open != seen.closed) return DISP_E_TYPEMISMATCH;
    number.negative = seen.negative;
    return S_OK;
}

HRESULT RealFromParsed(const ParsedNumber& number, double& value) noexcept {
    if (number.radix) {
        value = static_cast<double>(number.bits);
        return S_OK;
    }
    constexpr std::int64_t kBeyondDouble = 400;
    double magnitude = 0;
    if (number.count != 0) {
        if (number.point > kBeyondDouble) return DISP_E_OVERFLOW;
        if (number.point > -kBeyondDouble) {
            char text[ParsedNumber::kMaxDigits + 16];
            char* end = std::copy_n(number.digit, number.count, text);
            *end++ = 'e';
            end = std::to_chars(end, text + sizeof(text), number.point - number.count).ptr;
            const auto result = std::from_chars(text, end, magnitude);
            // Too large and too small come back as one error; the size of the number tells them apart.
            if (result.ec == std::errc::result_out_of_range) {
                if (number.point > 0) return DISP_E_OVERFLOW;
                magnitude = 0;
            }
        }
    }
    value = number.negative && magnitude != 0 ? -magnitude : magnitude;  // no negative zero
    return S_OK;
}

HRESULT IntegerFromParsed(const ParsedNumber& number, int places, Int128& value) noexcept {
    if (number.radix) {
        value = static_cast<Int128>(number.bits);
        for (; places > 0; --places)
            value *= 10;
        return S_OK;
    }
    constexpr std::int64_t kSafeDigits = 38;
    const std::int64_t whole = number.point + places;
    if (whole > kSafeDigits && number.count != 0) return DISP_E_OVERFLOW;
    Int128 magnitude = 0;
    for (std::int64_t i = 0; i < whole; ++i) {
        magnitude = magnitude * 10 + (i < number.count ? number.digit[i] - '0' : 0);
    }
    if (whole >= 0 && whole < number.count) {
        const char next = number.digit[whole];
        const bool half = next == '5' && whole + 1 == number.count;
        if (half ? (magnitude & 1) != 0 : next >= '5') ++magnitude;
    }
    value = number.negative ? -magnitude : magnitude;
    return S_OK;
}

HRESULT DecimalFromParsed(const ParsedNumber& number, DECIMAL& value) noexcept {
    if (number.radix) {
        StoreDecimal(number.bits, 0, false, value);
        return S_OK;
    }
    constexpr int kDigitsKept = 60;  // more than 28 places and 29 digits can ever need, and inside 256 bits
    constexpr int kWholeDigits = 29;
    if (number.count != 0 && number.point > kWholeDigits) return DISP_E_OVERFLOW;
    if (number.count == 0 || number.point < -kMaxScale) {
        StoreDecimal(0, 0, false, value);
        return S_OK;
    }
    const int kept = std::min(number.count, kDigitsKept);
    Wide magnitude;
    for (int i = 0; i < kept; ++i)
        magnitude.MultiplyAdd(10, static_cast<std::uint64_t>(number.digit[i] - '0'));
    const int scale = kept - static_cast<int>(number.point);
    if (scale < 0) magnitude.MultiplyByTenTo(-scale);
    return StoreRounded(magnitude, std::max(scale, 0), kept < number.count, number.negative, value);
}

}  // namespace tk::automation
