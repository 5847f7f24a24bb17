// heap.h - the one place where this room takes memory, so that a test can make it run out.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "win32/include/windef.h"

namespace tk::automation {

struct Heap {
    void* (*take)(std::size_t bytes);
    void (*give)(void* block);
};

/// The functions in use. Replaced by tests only, while no other thread is inside the room.
TKWIN32_API extern Heap heap;

/// Zeroed memory, or null. Zero bytes give a block of their own.
inline void* TakeZeroed(std::size_t bytes) {
    void* block = heap.take(bytes == 0 ? 1 : bytes);
    if (block != nullptr) std::memset(block, 0, bytes);
    return block;
}

}  // namespace tk::automation
