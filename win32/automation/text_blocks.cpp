#include "win32/automation/text_blocks.h"

#include "win32/automation/heap.h"

namespace tk::automation {

Heap heap{std::malloc, std::free};

namespace detail {

constinit thread_local ThreadBlocks threadBlocks{};

namespace {

enum class ListState : unsigned char { NotYet, Open, Closed };
constinit thread_local ListState listState = ListState::NotYet;

// Opens the lists of its thread, and empties them at the thread's end.
struct ListOwner {
    ListOwner() noexcept {
        listState = ListState::Open;
        for (std::uint32_t i = 0; i < kBlockClasses; ++i) {
            threadBlocks.lists[i].room = kKeptBytesPerClass / ((i + 1) * kBlockStep);
        }
    }
    ~ListOwner() {
        listState = ListState::Closed;
        for (FreeList& list : threadBlocks.lists) {
            while (FreeBlock* block = list.first) {
                list.first = block->next;
                heap.give(block);
            }
            list.room = 0;
        }
    }
    ListOwner(const ListOwner&) = delete;
    ListOwner& operator=(const ListOwner&) = delete;
};

}  // namespace

void* TakeBlock(std::uint32_t blockBytes) noexcept {
    return heap.take(blockBytes);
}

void GiveBlock(TextHeader* header) noexcept {
    if (kKeepBlocks && listState == ListState::NotYet) {
        thread_local const ListOwner owner;
        static_cast<void>(&owner);  // its construction is what matters
        GiveText(header + 1);
        return;
    }
    heap.give(header);
}

}  // namespace detail

}  // namespace tk::automation
