// text_blocks.h - memory for BSTRs: a block header that knows its size, and a small free list per thread.
//
// Every value read makes a text and frees it soon after, mostly on the same thread and of the same few sizes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tk::automation {

/// Stands before the characters.
struct TextHeader {
    std::uint32_t capacity;  // bytes after the header, a multiple of 16 less the header's 8
    std::uint32_t bytes;     // length of the text; users of the platform read it at [-1]
};
static_assert(sizeof(TextHeader) == 8);

inline TextHeader* HeaderOf(void* text) noexcept {
    return static_cast<TextHeader*>(text) - 1;
}
inline const TextHeader* HeaderOf(const void* text) noexcept {
    return static_cast<const TextHeader*>(text) - 1;
}

/// Room for a text of `bytes` and its two zero bytes; the header is filled. Null when memory is out.
void* TakeText(std::uint32_t bytes) noexcept;
/// Gives the room back. Null is nothing.
void GiveText(void* text) noexcept;

/// The longest text there is: header, zero bytes and rounding must fit 32 bits.
inline constexpr std::uint32_t kMaxTextBytes = 0xFFFFFFFFu - 32;

}  // namespace tk::automation
