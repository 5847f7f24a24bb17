// afx/format_conversion.h - what stands between '%' and its letter in a printf format.
#pragma once

#include <cstdarg>
#include <cstdint>

namespace tk::afx {

enum class FormatSize : std::uint8_t { Int, Char, Short, Long, LongLong, Pointer, LongDouble, Wide };

struct FormatConversion {
    bool left = false, plus = false, blank = false, alternative = false, zero = false;
    int width = 0;
    int precision = -1;  // not given
    FormatSize size = FormatSize::Int;
    bool narrow = false;  // "h": a narrow text even for %S
    char letter = '\0';
};

struct FormatArguments {
    va_list list;
};

/// Reads from behind the '%' to the letter and stops there; '*' takes its arguments. A width or precision that no text
/// can have raises CMemoryException.
FormatConversion ReadConversion(const char*& at, FormatArguments& arguments);

}  // namespace tk::afx
