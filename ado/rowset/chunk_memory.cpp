#include "ado/rowset/chunk_memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <mutex>
#include <new>

#include "ado/odbc/fork.h"

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

struct Block {
    char* begin = nullptr;
    std::size_t size = 0;
};

void Unmap(Block block) noexcept {
    munmap(block.begin, block.size);
}

/// The blocks that were given back last, for the next result. Threads: any number.
class SpareBlocks {
public:
    /// One of that size; none otherwise. It holds what was in it, or zeros where the system has taken a page back.
    Block Take(std::size_t size) noexcept {
        const std::lock_guard lock(mutex_);
        const auto end = blocks_.begin() + count_;
        const auto found = std::find_if(blocks_.begin(), end, [size](const Block& each) { return each.size == size; });
        return found != end ? Remove(found) : Block();
    }

    void Keep(Block block) noexcept {
        if (madvise(block.begin, block.size, MADV_FREE) != 0) return Unmap(block);
        const std::lock_guard lock(mutex_);
        while (total_ + block.size > kMostBytes)
            Unmap(Remove(blocks_.begin()));
        total_ += block.size;
        blocks_[count_++] = block;
    }

private:
    static constexpr std::size_t kMostBytes = std::size_t{64} * 1024 * 1024;
    using Blocks = std::array<Block, kMostBytes / kHugePage>;

    Block Remove(Blocks::iterator at) noexcept {
        const Block block = *at;
        std::move(at + 1, blocks_.begin() + count_, at);
        --count_;
        total_ -= block.size;
        return block;
    }

    std::mutex mutex_;
    Blocks blocks_;  // the oldest first
    unsigned count_ = 0;
    std::size_t total_ = 0;
};

constinit PerProcess<SpareBlocks> spareBlocks;

void GiveBack(Block block) noexcept {
    try {
        spareBlocks.Get().Keep(block);
    } catch (const std::bad_alloc&) {  // by the first use in this process
        Unmap(block);
    }
}

/// Whole huge pages; none when there is no room for them. A page takes memory when it is first written to.
Block MapBlock(std::size_t size) noexcept {
    const std::size_t mapped = size + kHugePage;  // for a boundary of pages inside
    void* const address = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (address == MAP_FAILED) return {};
    auto* const first = static_cast<char*>(address);
    const std::size_t before = (kHugePage - reinterpret_cast<std::uintptr_t>(address) % kHugePage) % kHugePage;
    char* const begin = first + before;
    if (before != 0) munmap(first, before);
    munmap(begin + size, kHugePage - before);
    madvise(begin, size, MADV_HUGEPAGE);  // a system without them gives small ones
    return {begin, size};
}

std::shared_ptr<char[]> Share(Block block) {
    return {block.begin, [block](char*) { GiveBack(block); }};
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
        Block block = spareBlocks.Get().Take(wanted);
        if (block.begin == nullptr) block = MapBlock(wanted);
        block_ = block.begin != nullptr ? Share(block) : nullptr;
        blockSize_ = block.size;
        used_ = 0;
        if (block_ == nullptr) return nullptr;
    }
    std::shared_ptr<char[]> piece(block_, block_.get() + used_);
    used_ += (size + kAlignment - 1) / kAlignment * kAlignment;  // a block is a multiple of it
    return piece;
}

}  // namespace tk::ado
