#include "util/number_printf.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "util/number_text.h"

namespace tk::util {
namespace {

constexpr int kMostPlaces = 512;  // of width and precision: a format may not ask for megabytes
constexpr int kQuickPrecision = 3;

struct Conversion {
    bool left = false;
    bool plus = false;
    bool blank = false;
    bool alternative = false;
    bool zero = false;
    bool isWide = false;  // 64 bits
    int width = 0;
    int precision = -1;
    char letter = '\0';

    bool IsReal() const { return letter == 'f' || letter == 'e' || letter == 'E' || letter == 'g' || letter == 'G'; }
    bool IsSigned() const { return letter == 'd'; }
};

struct Format {
    std::string_view prefix;  // as written, with its doubled percent signs
    Conversion conversion;
    std::string_view suffix;
};

struct Size {
    std::string_view text;
    bool isWide;
};
/// The longer of two that begin alike comes first.
constexpr Size kSizes[] = {{"I64", true}, {"I32", false}, {"ll", true}, {"l", false}, {"hh", false},
                           {"h", false},  {"L", false},   {"j", true},  {"z", true},  {"t", true}};

/// The letters that take a number, and what each one converts as; the rest of printf's letters take something else.
constexpr std::string_view kWritten = "dfiuoxXFeEgG";
constexpr std::string_view kMeant = "dfduoxXfeEgG";
static_assert(kWritten.size() == kMeant.size());

bool TakeFlag(char ch, Conversion& conversion) {
    switch (ch) {
        case '-':
            return conversion.left = true;
        case '+':
            return conversion.plus = true;
        case ' ':
            return conversion.blank = true;
        case '#':
            return conversion.alternative = true;
        case '0':
            return conversion.zero = true;
        default:
            return false;
    }
}

/// @return false for more than kMostPlaces
bool TakeNumber(std::string_view& text, int& number) {
    number = 0;
    for (; !text.empty() && text.front() >= '0' && text.front() <= '9'; text.remove_prefix(1)) {
        number = number * 10 + (text.front() - '0');
        if (number > kMostPlaces) return false;
    }
    return true;
}

bool TakeLetter(std::string_view& text, Conversion& conversion) {
    const std::size_t index = text.empty() ? std::string_view::npos : kWritten.find(text.front());
    if (index == std::string_view::npos) return false;
    conversion.letter = kMeant[index];
    text.remove_prefix(1);
    return true;
}

/// Takes what follows a percent sign.
bool TakeConversion(std::string_view& text, Conversion& conversion) {
    while (!text.empty() && TakeFlag(text.front(), conversion))
        text.remove_prefix(1);
    if (!TakeNumber(text, conversion.width)) return false;
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        if (!TakeNumber(text, conversion.precision)) return false;
    }
    if (TakeLetter(text, conversion)) return true;
    for (const Size& size : kSizes) {
        if (!text.starts_with(size.text)) continue;
        conversion.isWide = size.isWide;
        text.remove_prefix(size.text.size());
        return TakeLetter(text, conversion);
    }
    return false;
}

/// The next percent sign that is not doubled; a percent sign is no second byte of a character.
std::size_t FindConversion(std::string_view text) {
    for (std::size_t at = text.find('%'); at != std::string_view::npos; at = text.find('%', at + 2)) {
        if (text.substr(at + 1, 1) != "%") return at;
    }
    return std::string_view::npos;
}

bool Read(std::string_view text, Format& format) {
    const std::size_t begin = FindConversion(text);
    if (begin == std::string_view::npos) return false;
    format.prefix = text.substr(0, begin);
    text.remove_prefix(begin + 1);
    if (!TakeConversion(text, format.conversion)) return false;
    format.suffix = text;
    return FindConversion(text) == std::string_view::npos;
}

void AddLiteral(TextBuilder& result, std::string_view text) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        result.Add(text[at]);
        if (text[at] == '%') ++at;
    }
}

/// Pads a number to the width; zeros go behind its sign.
void AddPadded(TextBuilder& result, const Conversion& conversion, bool negative, std::string_view digits) {
    const char sign = negative ? '-' : conversion.plus ? '+' : conversion.blank ? ' ' : '\0';
    const std::size_t length = digits.size() + (sign != '\0');
    const auto width = static_cast<std::size_t>(conversion.width);
    const std::size_t missing = width > length ? width - length : 0;
    const bool zeros = conversion.zero && !conversion.left;
    if (!conversion.left && !zeros) result.AddFill(' ', missing);
    if (sign != '\0') result.Add(sign);
    if (zeros) result.AddFill('0', missing);
    result.Add(digits);
    if (conversion.left) result.AddFill(' ', missing);
}

/// "%f" with few decimals, without a formatter. @return false where that is not enough
bool AddShortReal(TextBuilder& result, const Conversion& conversion, double value) {
    static constexpr std::uint64_t kPowers[kQuickPrecision + 1] = {1, 10, 100, 1000};
    const double magnitude = std::fabs(value);
    const int precision = conversion.precision;
    if (conversion.letter != 'f' || precision < 0 || precision > kQuickPrecision || conversion.alternative ||
        !(magnitude < kFirstWithoutFraction)) {
        return false;
    }
    const std::uint64_t power = kPowers[precision];
    const std::uint64_t scaled = ScaledExactly(magnitude, power);
    char digits[24];
    char* end = std::to_chars(digits, digits + sizeof(digits), scaled / power).ptr;
    if (precision > 0) {
        *end++ = '.';
        std::uint64_t rest = scaled % power;
        for (int at = precision; at-- > 0; rest /= 10)
            end[at] = static_cast<char>('0' + rest % 10);
        end += precision;
    }
    AddPadded(result, conversion, std::signbit(value), {digits, static_cast<std::size_t>(end - digits)});
    return true;
}

/// The conversion written anew: nothing of the caller's format reaches the formatter.
CString FormatOf(const Conversion& conversion) {
    CString text("%");
    if (conversion.left) text += '-';
    if (conversion.plus) text += '+';
    if (conversion.blank) text += ' ';
    if (conversion.alternative) text += '#';
    if (conversion.zero) text += '0';
    if (conversion.width > 0) text += IntegerText(conversion.width);
    if (conversion.precision >= 0) text += '.' + IntegerText(conversion.precision);
    if (!conversion.IsReal()) text += "ll";
    text += conversion.letter;
    return text;
}

template <class Number>
void AddByFormatter(TextBuilder& result, const Conversion& conversion, Number number) {
    CString text;
    text.Format(FormatOf(conversion), number);
    result.Add(std::string_view(text, static_cast<std::size_t>(text.GetLength())));
}

bool AddInteger(TextBuilder& result, const Conversion& conversion, double value) {
    constexpr double kBeyondSigned = 9223372036854775808.0;     // 2^63
    constexpr double kBeyondUnsigned = 18446744073709551616.0;  // 2^64
    const double whole = std::trunc(value);
    if (whole < -kBeyondSigned || whole >= (conversion.IsSigned() ? kBeyondSigned : kBeyondUnsigned)) return false;
    if (!conversion.IsSigned()) {
        auto bits = whole < 0 ? static_cast<std::uint64_t>(static_cast<std::int64_t>(whole))
                              : static_cast<std::uint64_t>(whole);
        // A negative number shows the bits of an int, as it does in printf, where it fits into one.
        if (whole < 0 && whole >= -2147483648.0 && !conversion.isWide) bits = static_cast<std::uint32_t>(bits);
        AddByFormatter(result, conversion, static_cast<unsigned long long>(bits));
        return true;
    }
    const auto number = static_cast<std::int64_t>(whole);
    if (conversion.precision >= 0) {
        AddByFormatter(result, conversion, static_cast<long long>(number));
        return true;
    }
    char digits[24];
    const auto bits = static_cast<std::uint64_t>(number);
    const char* const end = std::to_chars(digits, digits + sizeof(digits), number < 0 ? 0 - bits : bits).ptr;
    AddPadded(result, conversion, number < 0, {digits, static_cast<std::size_t>(end - digits)});
    return true;
}

}  // namespace

bool FormatByPrintf(double value, std::string_view text, TextBuilder& result) {
    Format format;
    if (!Read(text, format)) return false;
    const Conversion& conversion = format.conversion;
    AddLiteral(result, format.prefix);
    if (conversion.IsReal()) {
        if (!AddShortReal(result, conversion, value)) AddByFormatter(result, conversion, value);
    } else if (!AddInteger(result, conversion, value)) {
        return false;
    }
    AddLiteral(result, format.suffix);
    return true;
}

}  // namespace tk::util
