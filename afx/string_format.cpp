#include "afx/string_format.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "afx/format_conversion.h"
#include "afx_exception.h"

namespace tk::afx {
namespace {

using Size = FormatSize;
using Conversion = FormatConversion;
using Arguments = FormatArguments;

void AppendFill(CString& target, char fill, int count) {
    if (count > 0) target += CString(fill, count);
}

// Pads to the width; zeros go between the sign or base prefix and the digits.
void AppendPadded(CString& target, const Conversion& conversion, const char* text, int length, int prefixLength,
                  bool zeros) {
    const int missing = conversion.width - length;
    if (missing <= 0) return target.Append(text, length);
    if (conversion.left) {
        target.Append(text, length);
        AppendFill(target, ' ', missing);
    } else if (zeros) {
        target.Append(text, prefixLength);
        AppendFill(target, '0', missing);
        target.Append(text + prefixLength, length - prefixLength);
    } else {
        AppendFill(target, ' ', missing);
        target.Append(text, length);
    }
}

template <class Char, class Short, class Int, class Long, class LongLong, class Pointer>
LongLong ReadInteger(Arguments& arguments, Size size) {
    if (size == Size::LongLong) return va_arg(arguments.list, LongLong);
    if (size == Size::Long) return va_arg(arguments.list, Long);
    if (size == Size::Pointer) return static_cast<LongLong>(va_arg(arguments.list, Pointer));
    const Int value = va_arg(arguments.list, Int);
    if (size == Size::Char) return static_cast<Char>(value);
    if (size == Size::Short) return static_cast<Short>(value);
    return value;
}

// Digits of a number with its prefix, the precision being the least number of digits.
void AppendDigits(CString& target, const Conversion& conversion, unsigned long long number, int base,
                  const char* prefix, bool upper) {
    char text[2 + std::numeric_limits<unsigned long long>::digits];
    char* digits = text;
    while (*prefix != '\0')
        *digits++ = *prefix++;
    char* end = std::to_chars(digits, text + sizeof(text), number, base).ptr;
    if (conversion.precision == 0 && number == 0) end = digits;
    if (upper) {
        for (char* at = digits; at < end; ++at) {
            // The analyzer does not know what to_chars wrote.
            // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult)
            if (*at >= 'a') *at = static_cast<char>(*at - 'a' + 'A');
        }
    }
    const int length = static_cast<int>(end - text);
    const int prefixLength = static_cast<int>(digits - text);
    const int missingDigits = conversion.precision - (length - prefixLength);
    if (missingDigits <= 0) {
        const bool zeros = conversion.zero && conversion.precision < 0;
        return AppendPadded(target, conversion, text, length, prefixLength, zeros);
    }
    CString filled(text, prefixLength);
    AppendFill(filled, '0', missingDigits);
    filled.Append(digits, length - prefixLength);
    AppendPadded(target, conversion, filled, filled.GetLength(), 0, false);
}

const char* SignPrefix(const Conversion& conversion, bool negative) {
    return negative ? "-" : conversion.plus ? "+" : conversion.blank ? " " : "";
}

void AppendSigned(CString& target, const Conversion& conversion, Arguments& arguments) {
    const long long value =
        ReadInteger<signed char, short, int, long, long long, std::ptrdiff_t>(arguments, conversion.size);
    const auto magnitude = static_cast<unsigned long long>(value);
    AppendDigits(target, conversion, value < 0 ? 0 - magnitude : magnitude, 10, SignPrefix(conversion, value < 0),
                 false);
}

void AppendUnsigned(CString& target, const Conversion& conversion, Arguments& arguments) {
    const unsigned long long value =
        ReadInteger<unsigned char, unsigned short, unsigned, unsigned long, unsigned long long, std::size_t>(
            arguments, conversion.size);
    const char letter = conversion.letter;
    const int base = letter == 'u' ? 10 : letter == 'o' ? 8 : 16;
    if (conversion.alternative && base == 8 && conversion.precision >= 0) {
        // The other form of octal asks for a leading zero, not for a prefix: the precision may bring it already.
        Conversion widened = conversion;
        widened.precision = std::max(conversion.precision, (static_cast<int>(std::bit_width(value)) + 2) / 3 + 1);
        return AppendDigits(target, widened, value, base, "", false);
    }
    const char* prefix = "";
    if (conversion.alternative && value != 0)
        prefix = letter == 'x' ? "0x" : letter == 'X' ? "0X" : base == 8 ? "0" : "";
    AppendDigits(target, conversion, value, base, prefix, letter == 'X');
}

// The platform's form of an address: all digits, upper case, no prefix.
void AppendPointer(CString& target, const Conversion& conversion, Arguments& arguments) {
    Conversion digits = conversion;
    digits.precision = static_cast<int>(sizeof(void*) * 2);
    const auto value = reinterpret_cast<std::uintptr_t>(va_arg(arguments.list, void*));
    AppendDigits(target, digits, value, 16, "", true);
}

void AppendNarrow(CString& target, const Conversion& conversion, const char* text) {
    if (text == nullptr) text = "(null)";
    std::size_t length = 0;
    if (conversion.precision >= 0) {
        // No byte beyond the precision is looked at: the text need not be terminated.
        const auto limit = static_cast<std::size_t>(conversion.precision);
        const void* const end = std::memchr(text, '\0', limit);
        length = end == nullptr ? limit : static_cast<std::size_t>(static_cast<const char*>(end) - text);
    } else {
        length = std::strlen(text);
    }
    if (length > CString::kMaxLength) AfxThrowMemoryException();
    AppendPadded(target, conversion, text, static_cast<int>(length), 0, false);
}

void AppendWide(CString& target, const Conversion& conversion, LPCWSTR text) {
    if (text == nullptr) return AppendNarrow(target, conversion, nullptr);
    const int limit = conversion.precision < 0 ? CString::kMaxLength / 2 : conversion.precision;
    int length = 0;
    while (length < limit && text[length] != 0)
        ++length;
    const CString narrow(text, length);
    AppendPadded(target, conversion, narrow, narrow.GetLength(), 0, false);
}

bool TakesWide(const Conversion& conversion) {
    if (conversion.narrow) return false;
    return conversion.size == Size::Long || conversion.size == Size::Wide || conversion.letter == 'S' ||
           conversion.letter == 'C';
}

void AppendText(CString& target, const Conversion& conversion, Arguments& arguments) {
    if (TakesWide(conversion)) return AppendWide(target, conversion, va_arg(arguments.list, LPCWSTR));
    AppendNarrow(target, conversion, va_arg(arguments.list, const char*));
}

void AppendCharacter(CString& target, const Conversion& conversion, Arguments& arguments) {
    const int value = va_arg(arguments.list, int);
    if (TakesWide(conversion)) {
        const auto unit = static_cast<WCHAR>(value);
        return AppendWide(target, Conversion{.left = conversion.left, .width = conversion.width, .precision = 1},
                          &unit);
    }
    const char ch = static_cast<char>(value);
    AppendPadded(target, conversion, &ch, 1, 0, false);
}

// The rare forms (%a, %#g, long double) are the C library's.
void AppendRareReal(CString& target, const Conversion& conversion, Arguments& arguments) {
    char format[16];
    char* at = format;
    *at++ = '%';
    if (conversion.left) *at++ = '-';
    if (conversion.plus) *at++ = '+';
    if (conversion.blank) *at++ = ' ';
    if (conversion.alternative) *at++ = '#';
    if (conversion.zero) *at++ = '0';
    for (const char* rest = "*.*"; *rest != '\0'; ++rest)
        *at++ = *rest;
    const bool isLong = conversion.size == Size::LongDouble;
    if (isLong) *at++ = 'L';
    *at++ = conversion.letter;
    *at = '\0';
    const long double value = isLong ? va_arg(arguments.list, long double) : va_arg(arguments.list, double);
    const auto print = [&](char* buffer, std::size_t room) {
        return isLong ? std::snprintf(buffer, room, format, conversion.width, conversion.precision, value)
                      : std::snprintf(buffer, room, format, conversion.width, conversion.precision,
                                      static_cast<double>(value));
    };
    const int length = print(nullptr, 0);
    if (length < 0) AfxThrowMemoryException();
    CString text;
    print(text.GetBuffer(length), static_cast<std::size_t>(length) + 1);
    text.ReleaseBuffer(length);
    target += text;
}

void AppendReal(CString& target, const Conversion& conversion, Arguments& arguments) {
    const char letter = static_cast<char>(conversion.letter | 0x20);
    if (conversion.alternative || letter == 'a' || conversion.size == Size::LongDouble) {
        return AppendRareReal(target, conversion, arguments);
    }
    const double value = va_arg(arguments.list, double);
    const int precision = conversion.precision < 0 ? 6 : conversion.precision;
    const auto form = letter == 'f'   ? std::chars_format::fixed
                      : letter == 'e' ? std::chars_format::scientific
                                      : std::chars_format::general;
    // A sign, the 309 digits before the point, the point and what follows it.
    constexpr int kBeforeFraction = 320;
    char shortText[512];
    std::unique_ptr<char[]> longText;
    char* text = shortText;
    std::size_t room = sizeof(shortText);
    if (precision > static_cast<int>(sizeof(shortText)) - kBeforeFraction) {
        if (precision > CString::kMaxLength - kBeforeFraction) AfxThrowMemoryException();
        room = static_cast<std::size_t>(precision) + kBeforeFraction;
        longText.reset(new (std::nothrow) char[room]);
        if (longText == nullptr) AfxThrowMemoryException();
        text = longText.get();
    }
    char* digits = text;
    const bool negative = std::signbit(value);
    const char* const sign = SignPrefix(conversion, negative);
    if (*sign != '\0') *digits++ = *sign;
    const double magnitude = negative ? -value : value;
    char* const end = std::to_chars(digits, text + room, magnitude, form, precision).ptr;
    const bool finite = *digits >= '0' && *digits <= '9';
    if (conversion.letter != letter) {
        for (char* at = digits; at < end; ++at) {
            if (*at >= 'a' && *at <= 'z') *at = static_cast<char>(*at - 'a' + 'A');
        }
    }
    AppendPadded(target, conversion, text, static_cast<int>(end - text), static_cast<int>(digits - text),
                 conversion.zero && finite);
}

void AppendPercent(CString& target, const Conversion&, Arguments&) {
    target += '%';
}

void SkipCount(CString&, const Conversion&, Arguments& arguments) {
    static_cast<void>(va_arg(arguments.list, void*));
}

using Append = void (*)(CString&, const Conversion&, Arguments&);

// Who prints which letter; null for what is no conversion.
struct LetterTable {
    Append rows[128] = {};

    constexpr LetterTable() {
        Set("sS", AppendText);
        Set("cC", AppendCharacter);
        Set("di", AppendSigned);
        Set("uxXo", AppendUnsigned);
        Set("fFeEgGaA", AppendReal);
        Set("p", AppendPointer);
        Set("%", AppendPercent);
        Set("n", SkipCount);
    }
    constexpr void Set(const char* letters, Append append) {
        for (; *letters != '\0'; ++letters)
            rows[static_cast<unsigned char>(*letters)] = append;
    }
};
constexpr LetterTable kLetters;

Append FindAppend(char letter) {
    const auto index = static_cast<unsigned char>(letter);
    return index < std::size(kLetters.rows) ? kLetters.rows[index] : nullptr;
}

}  // namespace

void AppendFormatted(CString& target, LPCSTR format, va_list list) {
    Arguments arguments;
    va_copy(arguments.list, list);
    try {
        for (const char* at = format; *at != '\0';) {
            const char* const plain = at;
            while (*at != '\0' && *at != '%')
                ++at;
            target.Append(plain, static_cast<int>(at - plain));
            if (*at == '\0') break;
            const char* const start = at++;
            const Conversion conversion = ReadConversion(at, arguments);
            if (const Append append = FindAppend(conversion.letter)) {
                append(target, conversion, arguments);
                ++at;
            } else {
                target.Append(start, static_cast<int>(at - start));
            }
        }
    } catch (...) {
        va_end(arguments.list);
        throw;
    }
    va_end(arguments.list);
}

}  // namespace tk::afx

void CString::FormatV(LPCSTR lpszFormat, va_list argList) {
    CString text;  // the arguments may lie in the old one
    if (lpszFormat != nullptr) tk::afx::AppendFormatted(text, lpszFormat, argList);
    *this = std::move(text);
}

void CString::AppendFormatV(LPCSTR lpszFormat, va_list argList) {
    CString text;
    text.FormatV(lpszFormat, argList);
    *this += text;
}

void CString::Format(LPCSTR lpszFormat, ...) {
    va_list arguments;
    va_start(arguments, lpszFormat);
    FormatV(lpszFormat, arguments);
    va_end(arguments);
}

void CString::AppendFormat(LPCSTR lpszFormat, ...) {
    va_list arguments;
    va_start(arguments, lpszFormat);
    AppendFormatV(lpszFormat, arguments);
    va_end(arguments);
}
