// tkwin32/text.h - GBK (code page 936), UTF-8 and UTF-16 turned into each other directly, at full speed.
//
//   std::string shown = tk::text::Utf8ToGbk(column);           // owning results
//   char name[128];
//   auto done = tk::text::Utf8ToGbk(column, name, sizeof(name) - 1);  // into a buffer, no allocation
//   name[done.written] = 0;
//
// The tables and the loops are those behind MultiByteToWideChar and WideCharToMultiByte; these functions have neither
// terminators nor error codes. Common rules:
//   - Input of any bytes is accepted; embedded zeros are ordinary characters.
//   - What the target cannot say becomes '?' in GBK (two of them for a character above U+FFFF, as on the platform).
//   - Input that is not text: each ill-formed UTF-8 sequence and each lone surrogate is U+FFFD, hence '?' in GBK; a GBK
//     lead byte without a proper second byte is '?' and the byte after it stands for itself.
//   - A full buffer ends the conversion before the character that does not fit; no half characters.
//   - The converted text never overlaps its source.
//
// Threads: any. Nothing here locks, allocates (the owning forms aside) or depends on the locale.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "windef.h"

namespace tk::text {

/// How far a conversion came.
struct Converted {
    std::size_t read;     ///< units of the source that were consumed; all of them unless the buffer was full
    std::size_t written;  ///< units stored in the buffer
    bool replaced;        ///< some of the source was ill-formed, or cannot be said in the target
};

// Buffers of these sizes always take the whole result: units of the target for a number of units of the source.
constexpr std::size_t Utf8ToUtf16Bound(std::size_t bytes) {
    return bytes;
}
constexpr std::size_t Utf16ToUtf8Bound(std::size_t units) {
    return units * 3;
}
constexpr std::size_t GbkToUtf16Bound(std::size_t bytes) {
    return bytes;
}
constexpr std::size_t Utf16ToGbkBound(std::size_t units) {
    return units * 2;
}
constexpr std::size_t GbkToUtf8Bound(std::size_t bytes) {
    return bytes * 3;  // 0x80 is the euro sign
}
constexpr std::size_t Utf8ToGbkBound(std::size_t bytes) {
    return bytes;
}

/// Convert into a buffer of `capacity` units. No terminator is written.
TKWIN32_API Converted Utf8ToUtf16(std::string_view source, char16_t* buffer, std::size_t capacity) noexcept;
TKWIN32_API Converted Utf16ToUtf8(std::u16string_view source, char* buffer, std::size_t capacity) noexcept;
TKWIN32_API Converted GbkToUtf16(std::string_view source, char16_t* buffer, std::size_t capacity) noexcept;
TKWIN32_API Converted Utf16ToGbk(std::u16string_view source, char* buffer, std::size_t capacity) noexcept;
TKWIN32_API Converted GbkToUtf8(std::string_view source, char* buffer, std::size_t capacity) noexcept;
TKWIN32_API Converted Utf8ToGbk(std::string_view source, char* buffer, std::size_t capacity) noexcept;

/// Convert into a text of their own; throw std::bad_alloc only.
TKWIN32_API std::u16string Utf8ToUtf16(std::string_view source);
TKWIN32_API std::string Utf16ToUtf8(std::u16string_view source);
TKWIN32_API std::u16string GbkToUtf16(std::string_view source);
TKWIN32_API std::string Utf16ToGbk(std::u16string_view source);
TKWIN32_API std::string GbkToUtf8(std::string_view source);
TKWIN32_API std::string Utf8ToGbk(std::string_view source);

/// Count the units of the converted text without storing it: the exact size of a buffer.
TKWIN32_API std::size_t Utf8ToUtf16Length(std::string_view source) noexcept;
TKWIN32_API std::size_t Utf16ToUtf8Length(std::u16string_view source) noexcept;
TKWIN32_API std::size_t GbkToUtf16Length(std::string_view source) noexcept;
TKWIN32_API std::size_t Utf16ToGbkLength(std::u16string_view source) noexcept;
TKWIN32_API std::size_t GbkToUtf8Length(std::string_view source) noexcept;
TKWIN32_API std::size_t Utf8ToGbkLength(std::string_view source) noexcept;

/// Whether a byte can begin, or end, a double-byte character of code page 936.
constexpr bool IsGbkLead(char byte) noexcept {
    return static_cast<unsigned char>(byte) >= 0x81 && static_cast<unsigned char>(byte) <= 0xFE;
}
constexpr bool IsGbkTrail(char byte) noexcept {
    const auto value = static_cast<unsigned char>(byte);
    return value >= 0x40 && value <= 0xFE && value != 0x7F;
}

/// The bytes of the whole characters within the first `limit` bytes of a GBK text: where to cut it.
TKWIN32_API std::size_t WholeGbkPrefix(std::string_view text, std::size_t limit) noexcept;

}  // namespace tk::text
