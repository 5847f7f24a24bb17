// text_blocks.h - memory for BSTRs: a block header that knows its size, and a small free list per thread.
//
// Every value read makes a text and frees it soon after, mostly on the same thread and of the same few sizes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tk::automation {

/// Stands before the characters.
struct TextHeader {
    std::uint32_t capacity;  // bytes after the header
    std::uint32_t bytes;     // length of the text; users of the platform read it at [-1]
};
static_assert(sizeof(TextHeader) == 8);

inline TextHeader* HeaderOf(void* text) noexcept {
    return static_cast<TextHeader*>(text) - 1;
}
inline const TextHeader* HeaderOf(const void* text) noexcept {
    return static_cast<const TextHeader*>(text) - 1;
}

/// The longest text there is: header, zero bytes and rounding must fit 32 bits.
inline constexpr std::uint32_t kMaxTextBytes = 0xFFFFFFFFu - 32;

namespace detail {

inline constexpr std::uint32_t kBlockStep = 16;
inline constexpr std::uint32_t kBlockClasses = 32;  // blocks of 16 to 512 bytes are kept
inline constexpr std::uint32_t kKeptBytesPerClass = 4096;

// A sanitizer must see every free at once, or it could not report a text used after it.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kKeepBlocks = false;
#else
inline constexpr bool kKeepBlocks = true;
#endif

struct FreeBlock {
    FreeBlock* next;
};

struct FreeList {
    FreeBlock* first;
    std::uint32_t room;  // blocks it takes yet; 0 before the thread's first free and after the thread's end
};

// Plain data, so that texts freed by other destructors of an ending thread find it usable.
struct ThreadBlocks {
    std::array<FreeList, kBlockClasses> lists;
};
// One instruction away: the library is never unloaded, and this is small enough for the static block.
extern constinit thread_local __attribute__((tls_model("initial-exec"), visibility("hidden")))
ThreadBlocks threadBlocks;

/// Header included.
constexpr std::uint32_t BlockBytes(std::uint32_t textBytes) {
    return (textBytes + 2 + static_cast<std::uint32_t>(sizeof(TextHeader)) + kBlockStep - 1) & ~(kBlockStep - 1);
}
constexpr std::uint32_t ClassOf(std::uint32_t blockBytes) {
    return blockBytes / kBlockStep - 1;
}

void* TakeBlock(std::uint32_t blockBytes) noexcept;
/// Opens the thread's lists when they are not yet, and keeps the block when there is room; else frees it.
void GiveBlock(TextHeader* header) noexcept;

}  // namespace detail

/// Room for a text of `bytes` and its two zero bytes; the header is filled. Null when memory is out or too much.
inline void* TakeText(std::uint32_t bytes) noexcept {
    if (bytes > kMaxTextBytes) return nullptr;
    const std::uint32_t blockBytes = detail::BlockBytes(bytes);
    const std::uint32_t blockClass = detail::ClassOf(blockBytes);
    void* block = nullptr;
    if (detail::kKeepBlocks && blockClass < detail::kBlockClasses) {
        detail::FreeList& list = detail::threadBlocks.lists[blockClass];
        block = list.first;
        if (block != nullptr) {
            list.first = list.first->next;
            ++list.room;
        }
    }
    if (block == nullptr) {
        block = detail::TakeBlock(blockBytes);
        if (block == nullptr) return nullptr;
    }
    auto* header = static_cast<TextHeader*>(block);
    header->capacity = blockBytes - static_cast<std::uint32_t>(sizeof(TextHeader));
    header->bytes = bytes;
    return header + 1;
}

/// Gives the room back. Null is nothing.
inline void GiveText(void* text) noexcept {
    if (text == nullptr) return;
    TextHeader* header = HeaderOf(text);
    const std::uint32_t blockClass = detail::ClassOf(header->capacity + static_cast<std::uint32_t>(sizeof(TextHeader)));
    if (detail::kKeepBlocks && blockClass < detail::kBlockClasses) {
        detail::FreeList& list = detail::threadBlocks.lists[blockClass];
        if (list.room != 0) {
            auto* kept = reinterpret_cast<detail::FreeBlock*>(header);
            kept->next = list.first;
            list.first = kept;
            --list.room;
            return;
        }
    }
    detail::GiveBlock(header);
}

}  // namespace tk::automation
