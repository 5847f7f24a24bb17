#include "ado/rowset/chunk_memory.h"

#include <sys/mman.h>

#include <cstdint>

namespace tk::ado {
namespace {

constexpr std::size_t kHugePage = 2 * 1024 * 1024;
constexpr std::size_t kBlock = 8 * kHugePage;
constexpr std::size_t kLargeResult = 2 * kHugePage;  // what a page is not filled with costs at most half as much
constexpr std::size_t kAlignment = 16;

/// Null when there is no room for it. Only what is written to takes memory.
std::shared_ptr<char[]> MapBlock() {
    constexpr std::size_t kMapped = kBlock + kHugePage;  // a whole page at any address
    void* const mapped = mmap(nullptr, kMapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) return nullptr;
    const auto address = reinterpret_cast<std::uintptr_t>(mapped);
    char* const begin = static_cast<char*>(mapped) + (kHugePage - address % kHugePage) % kHugePage;
    madvise(begin, kBlock, MADV_HUGEPAGE);  // a system without them gives small ones
    return {begin, [mapped](char*) { munmap(mapped, kMapped); }};
}

}  // namespace

std::shared_ptr<char[]> ChunkMemory::Take(std::size_t size) {
    taken_ += size;
    if (taken_ <= kLargeResult || size > kBlock / 4) return std::make_shared_for_overwrite<char[]>(size);
    if (block_ == nullptr || kBlock - used_ < size) {
        block_ = MapBlock();
        used_ = 0;
        if (block_ == nullptr) return std::make_shared_for_overwrite<char[]>(size);
    }
    std::shared_ptr<char[]> piece(block_, block_.get() + used_);
    used_ += (size + kAlignment - 1) / kAlignment * kAlignment;
    return piece;
}

}  // namespace tk::ado
