#include "afx/format_conversion.h"

#include <cstring>

#include "afx_exception.h"
#include "afxstr.h"

namespace tk::afx {
namespace {

struct LengthPrefix {
    const char* text;
    FormatSize size;
};
// Longer prefixes stand before those they begin with.
constexpr LengthPrefix kLengthPrefixes[] = {
    {"hh", FormatSize::Char},   {"h", FormatSize::Short},      {"ll", FormatSize::LongLong},
    {"l", FormatSize::Long},    {"I64", FormatSize::LongLong}, {"I32", FormatSize::Int},
    {"I", FormatSize::Pointer}, {"j", FormatSize::LongLong},   {"z", FormatSize::Pointer},
    {"t", FormatSize::Pointer}, {"L", FormatSize::LongDouble}, {"w", FormatSize::Wide},
};

int ReadNumber(const char*& at) {
    int number = 0;
    for (; *at >= '0' && *at <= '9'; ++at) {
        if (number > CString::kMaxLength / 10) AfxThrowMemoryException();
        number = number * 10 + (*at - '0');
    }
    return number;
}

// All flags lie from the blank to the zero; letters, which most conversions begin with, do not.
void ReadFlags(const char*& at, FormatConversion& conversion) {
    for (; *at >= ' ' && *at <= '0'; ++at) {
        if (*at == '-')
            conversion.left = true;
        else if (*at == '+')
            conversion.plus = true;
        else if (*at == ' ')
            conversion.blank = true;
        else if (*at == '#')
            conversion.alternative = true;
        else if (*at == '0')
            conversion.zero = true;
        else
            return;
    }
}

void ReadLengthPrefix(const char*& at, FormatConversion& conversion) {
    for (const LengthPrefix& prefix : kLengthPrefixes) {
        if (*prefix.text != *at) continue;
        const std::size_t length = std::strlen(prefix.text);
        if (std::strncmp(at, prefix.text, length) != 0) continue;
        conversion.size = prefix.size;
        conversion.narrow = prefix.size == FormatSize::Short;
        at += length;
        return;
    }
}

}  // namespace

FormatConversion ReadConversion(const char*& at, FormatArguments& arguments) {
    FormatConversion conversion;
    ReadFlags(at, conversion);
    if (*at == '*') {
        ++at;
        const int width = va_arg(arguments.list, int);
        conversion.left = conversion.left || width < 0;
        if (width < -CString::kMaxLength || width > CString::kMaxLength) AfxThrowMemoryException();
        conversion.width = width < 0 ? -width : width;
    } else {
        conversion.width = ReadNumber(at);
    }
    if (*at == '.') {
        ++at;
        if (*at == '*') {
            ++at;
            conversion.precision = va_arg(arguments.list, int);  // a negative one counts as not given
        } else {
            conversion.precision = ReadNumber(at);
        }
    }
    ReadLengthPrefix(at, conversion);
    conversion.letter = *at;
    return conversion;
}

}  // namespace tk::afx
