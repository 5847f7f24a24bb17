#include "ado/rowset/chunk_memory.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <limits>
#include <random>
#include <set>
#include <thread>
#include <vector>

namespace tk::ado {
namespace {

constexpr std::size_t kMegabyte = 1024 * 1024;
constexpr std::size_t kSize = 100 * 1024;  // of a usual piece: a multiple of what pieces are aligned to
using Piece = std::shared_ptr<char[]>;

std::uintptr_t AddressOf(const Piece& piece) {
    return reinterpret_cast<std::uintptr_t>(piece.get());
}

std::vector<Piece> TakeMany(ChunkMemory& memory, std::size_t count) {
    std::vector<Piece> pieces(count);
    for (Piece& piece : pieces) {
        piece = memory.Take(kSize);
        std::memset(piece.get(), 'x', kSize);
    }
    return pieces;
}

/// The places of pieces that begin a block: at a boundary of huge pages, the next piece right behind them.
std::vector<std::size_t> BlocksIn(const std::vector<Piece>& pieces) {
    std::vector<std::size_t> blocks;
    for (std::size_t i = 0; i + 1 < pieces.size(); ++i) {
        const bool isAligned = AddressOf(pieces[i]) % (2 * kMegabyte) == 0;
        if (isAligned && AddressOf(pieces[i + 1]) == AddressOf(pieces[i]) + kSize) blocks.push_back(i);
    }
    return blocks;
}

bool IsMapped(const char* address) {
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto begin = reinterpret_cast<std::uintptr_t>(address) / page * page;
    return msync(reinterpret_cast<void*>(begin), page, MS_ASYNC) == 0 || errno != ENOMEM;
}

std::size_t MappedBytes() {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/// What the system knows of the mapping that an address is in: "rd wr mr ...".
std::string FlagsAt(std::uintptr_t address) {
    std::ifstream mappings("/proc/self/smaps");
    bool isInside = false;
    for (std::string line; std::getline(mappings, line);) {
        unsigned long begin = 0;
        unsigned long end = 0;
        if (std::sscanf(line.c_str(), "%lx-%lx ", &begin, &end) == 2) isInside = begin <= address && address < end;
        if (isInside && line.starts_with("VmFlags: ")) return line.substr(9);
    }
    return {};
}

TEST(ChunkMemory, PiecesLieApartAndOutliveIt) {
    std::mt19937 random(1);
    std::vector<std::pair<Piece, std::size_t>> pieces;
    {
        ChunkMemory memory;
        for (std::size_t taken = 0; taken < 60 * kMegabyte; taken += pieces.back().second) {
            const std::size_t size = random() % 20 == 0 ? random() % (8 * kMegabyte) : random() % (200 * 1024);
            pieces.emplace_back(memory.Take(size), size);
            ASSERT_EQ(AddressOf(pieces.back().first) % 16, 0u);
            std::memset(pieces.back().first.get(), static_cast<char>(pieces.size()), size);
        }
    }
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const char* const begin = pieces[i].first.get();
        const char wanted = static_cast<char>(i + 1);
        ASSERT_TRUE(std::all_of(begin, begin + pieces[i].second, [wanted](char each) { return each == wanted; })) << i;
    }
}

TEST(ChunkMemory, ALargeResultLiesInBlocksOfHugePagesThatGrowWithIt) {
    ChunkMemory memory;
    const std::vector<Piece> pieces = TakeMany(memory, 1000);
    const std::vector<std::size_t> blocks = BlocksIn(pieces);
    ASSERT_GE(blocks.size(), 5u);
    EXPECT_GE(blocks.front() * kSize, 8 * kMegabyte - kSize);
    EXPECT_EQ(blocks[1] - blocks[0], 2 * kMegabyte / kSize);
    EXPECT_EQ(blocks.back() - blocks[blocks.size() - 2], 16 * kMegabyte / kSize);
    if (access("/sys/kernel/mm/transparent_hugepage/enabled", F_OK) != 0) {
        GTEST_SKIP() << "this system has no huge pages to ask for";
    }
    EXPECT_NE(FlagsAt(AddressOf(pieces[blocks.front()])).find("hg"), std::string::npos);
}

/// The pages of huge ones that pieces of blocks lie in.
std::set<std::uintptr_t> PagesOf(const std::vector<Piece>& pieces) {
    std::set<std::uintptr_t> pages;
    for (std::size_t i = BlocksIn(pieces).front(); i < pieces.size(); ++i) {
        pages.insert(AddressOf(pieces[i]) / (2 * kMegabyte));
        pages.insert((AddressOf(pieces[i]) + kSize - 1) / (2 * kMegabyte));
    }
    return pages;
}

TEST(ChunkMemory, KeepsABlockUntilItsLastPieceIsGone) {
    auto memory = std::make_unique<ChunkMemory>();
    std::vector<Piece> pieces = TakeMany(*memory, 400);
    const std::size_t first = BlocksIn(pieces).front();
    const Piece kept = pieces[first + 1];
    pieces.clear();
    memory.reset();
    ChunkMemory other;
    const std::vector<Piece> others = TakeMany(other, 400);
    EXPECT_FALSE(PagesOf(others).contains(AddressOf(kept) / (2 * kMegabyte)));
    EXPECT_EQ(kept[kSize - 1], 'x');
}

TEST(ChunkMemory, UsesTheBlocksOfAResultThatIsGoneForTheNext) {
    {
        ChunkMemory memory;
        TakeMany(memory, 400);
    }
    const std::size_t before = MappedBytes();
    ChunkMemory memory;
    const std::vector<Piece> pieces = TakeMany(memory, 400);  // blocks of some 30 MB
    EXPECT_LT(MappedBytes(), before + 16 * kMegabyte);        // what lies before them is of the heap
}

TEST(ChunkMemory, KeepsNoMoreThanSixtyFourMegabytesForTheNextResult) {
    std::set<std::uintptr_t> pages;
    {
        ChunkMemory memory;
        pages = PagesOf(TakeMany(memory, 2500));
    }
    ASSERT_GE(pages.size(), 100u);
    const auto kept = std::ranges::count_if(
        pages, [](std::uintptr_t page) { return IsMapped(reinterpret_cast<const char*>(page * 2 * kMegabyte)); });
    EXPECT_LE(kept, 32);
    EXPECT_GE(kept, 32 - 7);  // the oldest one that had to go for the last may have been larger
}

TEST(ChunkMemory, ServesThreadsAtOnce) {
    const auto work = [] {
        for (int i = 0; i < 20; ++i) {
            ChunkMemory memory;
            const std::vector<Piece> pieces = TakeMany(memory, 150);
            EXPECT_TRUE(std::ranges::all_of(pieces, [](const Piece& each) { return each[kSize / 2] == 'x'; }));
        }
    };
    std::thread other(work);
    work();
    other.join();
}

TEST(ChunkMemory, RefusesWhatNoMemoryCanHold) {
    ChunkMemory memory;
    for (const bool isLarge : {false, true}) {
        constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
        for (const std::size_t size : {kMost, kMost - 16, kMost / 2}) {
            EXPECT_THROW(memory.Take(size), std::bad_alloc) << size;
        }
        if (!isLarge) TakeMany(memory, 100);
    }
}

/// Exits with 0 when pieces can still be had where the process has no room for a block.
[[noreturn]] void TakeWithoutRoom() {
    ChunkMemory memory;
    std::vector<Piece> pieces = TakeMany(memory, 700);  // the next block is the largest
    const std::vector<std::size_t> before = BlocksIn(pieces);
    const rlim_t room = MappedBytes() + 12 * kMegabyte;
    const rlimit limit = {room, room};
    if (before.empty() || setrlimit(RLIMIT_AS, &limit) != 0) _exit(2);
    const std::vector<Piece> more = TakeMany(memory, 30);
    _exit(std::ranges::all_of(more, [](const Piece& each) { return each[0] == 'x'; }) ? 0 : 1);
}

TEST(ChunkMemory, DoesWithoutBlocksWhereThereIsNoRoom) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer needs more address space than can be limited";
#endif
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // a process of its own: no blocks are left from before
    EXPECT_EXIT(TakeWithoutRoom(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace tk::ado
