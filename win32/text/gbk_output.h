// gbk_output.h - conversions to GBK with the caller's own default character, as WideCharToMultiByte allows.
#pragma once

#include "tkwin32/text.h"

namespace tk::text {

/// What stands for a character outside the code page: one byte, or a lead and a trail byte.
struct GbkDefault {
    char bytes[2] = {'?', 0};
    std::size_t size = 1;
};

Converted Utf16ToGbk(std::u16string_view source, char* buffer, std::size_t capacity,
                     const GbkDefault& instead) noexcept;

}  // namespace tk::text
