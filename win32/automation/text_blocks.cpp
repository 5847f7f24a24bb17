#include "win32/automation/text_blocks.h"

#include <array>

#include "win32/automation/heap.h"

namespace tk::automation {

Heap heap{std::malloc, std::free};

namespace {

constexpr std::uint32_t kStep = 16;
constexpr std::uint32_t kClasses = 32;  // blocks of 16 to 512 bytes are kept
constexpr std::uint32_t kKeptPerClass = 16;

// A sanitizer must see every free at once, or it could not report a text used after it.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kKeepBlocks = false;
#else
constexpr bool kKeepBlocks = true;
#endif

struct FreeBlock {
    FreeBlock* next;
};

struct FreeList {
    FreeBlock* first;
    std::uint32_t count;
};

// Plain data, so that texts freed by other destructors of an ending thread find it usable.
struct ThreadBlocks {
    std::array<FreeList, kClasses> lists;
    bool watched;  // the thread's end will empty the lists
    bool closed;
};
#define TK_THREAD_STATE constinit thread_local __attribute__((tls_model("initial-exec")))
TK_THREAD_STATE ThreadBlocks threadBlocks{};

struct EmptyAtThreadEnd {
    EmptyAtThreadEnd() noexcept { threadBlocks.watched = true; }
    ~EmptyAtThreadEnd() {
        threadBlocks.closed = true;
        for (FreeList& list : threadBlocks.lists) {
            while (FreeBlock* block = list.first) {
                list.first = block->next;
                heap.give(block);
            }
            list.count = 0;
        }
    }
};

bool Keep(void* block, FreeList& list) noexcept {
    if (list.count >= kKeptPerClass || threadBlocks.closed) return false;
    if (!threadBlocks.watched) [[unlikely]] {
        thread_local const EmptyAtThreadEnd watch;
        static_cast<void>(&watch);
    }
    auto* kept = static_cast<FreeBlock*>(block);
    kept->next = list.first;
    list.first = kept;
    ++list.count;
    return true;
}

constexpr std::uint32_t ClassOf(std::uint32_t blockBytes) {
    return blockBytes / kStep - 1;
}

}  // namespace

void* TakeText(std::uint32_t bytes) noexcept {
    if (bytes > kMaxTextBytes) return nullptr;
    const std::uint32_t blockBytes =
        (bytes + 2 + static_cast<std::uint32_t>(sizeof(TextHeader)) + kStep - 1) & ~(kStep - 1);
    void* block = nullptr;
    if (kKeepBlocks && ClassOf(blockBytes) < kClasses) {
        FreeList& list = threadBlocks.lists[ClassOf(blockBytes)];
        if (list.first != nullptr) {
            block = list.first;
            list.first = list.first->next;
            --list.count;
        }
    }
    if (block == nullptr) {
        block = heap.take(blockBytes);
        if (block == nullptr) return nullptr;
    }
    auto* header = static_cast<TextHeader*>(block);
    header->capacity = blockBytes - static_cast<std::uint32_t>(sizeof(TextHeader));
    header->bytes = bytes;
    return header + 1;
}

void GiveText(void* text) noexcept {
    if (text == nullptr) return;
    TextHeader* header = HeaderOf(text);
    const std::uint32_t blockClass = ClassOf(header->capacity + static_cast<std::uint32_t>(sizeof(TextHeader)));
    if (kKeepBlocks && blockClass < kClasses && Keep(header, threadBlocks.lists[blockClass])) return;
    heap.give(header);
}

}  // namespace tk::automation
