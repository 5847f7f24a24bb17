#include "ado/rowset/chunk_memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>

namespace tk::ado {
namespace {

constexpr std::size_t kHugePage = 2 * 1024 * 1024;
constexpr std::size_t kLargestBlock = 8 * kHugePage;
constexpr std::size_t kLargeResult = 4 * kHugePage;  // the page that is begun costs at most a quarter more then
constexpr std::size_t kAlignment = 16;

std::shared_ptr<char[]> Allocate(std::size_t size) {
    if (size > std::numeric_limits<std::ptrdiff_t>::max() / 2) throw std::bad_alloc();  // the library adds to it
    return std::make_shared_for_overwrite<char[]>(size);
}

/// Whole huge pages; null when there is no room for them. A page takes memory when it is first written to.
std::shared_ptr<char[]> MapBlock(std::size_t size) {
    const std::size_t mapped = size + kHugePage;  // for a boundary of pages inside
    void* const address = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (address == MAP_FAILED) return nullptr;
    auto* const first = static_cast<char*>(address);
    const std::size_t before = (kHugePage - reinterpret_cast<std::uintptr_t>(address) % kHugePage) % kHugePage;
    char* const begin = first + before;
    if (before != 0) munmap(first, before);
    munmap(begin + size, kHugePage - before);
    madvise(begin, size, MADV_HUGEPAGE);  // a system without them gives small ones
    return {begin, [size](char* block) { munmap(block, size); }};
}

}  // namespace

std::shared_ptr<char[]> ChunkMemory::Take(std::size_t size) {
    std::shared_ptr<char[]> piece = taken_ >= kLargeResult ? TakeOfBlock(size) : nullptr;
    if (piece == nullptr) piece = Allocate(size);
    taken_ += size;
    return piece;
}

std::shared_ptr<char[]> ChunkMemory::TakeOfBlock(std::size_t size) {
    // So much of a block as is never used is little beside the rest of the result.
    const std::size_t wanted = std::min(taken_ / 4 / kHugePage * kHugePage, kLargestBlock);
    if (size > wanted / 4) return nullptr;
    if (blockSize_ - used_ < size) {
        block_ = MapBlock(wanted);
        blockSize_ = block_ != nullptr ? wanted : 0;
        used_ = 0;
        if (block_ == nullptr) return nullptr;
    }
    std::shared_ptr<char[]> piece(block_, block_.get() + used_);
    used_ += (size + kAlignment - 1) / kAlignment * kAlignment;  // a block is a multiple of it
    return piece;
}

}  // namespace tk::ado
