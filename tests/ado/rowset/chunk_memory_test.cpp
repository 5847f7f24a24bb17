#include "ado/rowset/chunk_memory.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <random>
#include <vector>

namespace tk::ado {
namespace {

constexpr std::size_t kMegabyte = 1024 * 1024;
using Piece = std::shared_ptr<char[]>;

bool IsMapped(const char* address) {
    const auto page = reinterpret_cast<std::uintptr_t>(address) & ~std::uintptr_t{4095};
    return msync(reinterpret_cast<void*>(page), 4096, MS_ASYNC) == 0 || errno != ENOMEM;
}

std::vector<Piece> TakeMany(ChunkMemory& memory, std::size_t count, std::size_t size) {
    std::vector<Piece> pieces(count);
    for (Piece& piece : pieces) {
        piece = memory.Take(size);
        std::memset(piece.get(), 'x', size);
    }
    return pieces;
}

TEST(ChunkMemory, PiecesLieApartAndOutliveIt) {
    std::mt19937 random(1);
    std::vector<std::pair<Piece, std::size_t>> pieces;
    {
        ChunkMemory memory;
        for (std::size_t taken = 0; taken < 60 * kMegabyte; taken += pieces.back().second) {
            const std::size_t size = random() % 20 == 0 ? random() % (8 * kMegabyte) : random() % (200 * 1024);
            pieces.emplace_back(memory.Take(size), size);
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(pieces.back().first.get()) % 16, 0u);
            std::memset(pieces.back().first.get(), static_cast<char>(pieces.size()), size);
        }
    }
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const char* const begin = pieces[i].first.get();
        const char wanted = static_cast<char>(i + 1);
        ASSERT_TRUE(std::all_of(begin, begin + pieces[i].second, [wanted](char each) { return each == wanted; })) << i;
    }
}

TEST(ChunkMemory, GivesABlockBackWithItsLastPiece) {
    ChunkMemory memory;
    std::vector<Piece> pieces = TakeMany(memory, 400, 100 * 1024);  // more than two blocks
    const char* const inside = pieces[200].get();
    EXPECT_TRUE(IsMapped(inside));
    Piece kept = pieces[200];
    pieces.clear();
    EXPECT_TRUE(IsMapped(inside));
    EXPECT_EQ(kept[100 * 1024 - 1], 'x');
    kept.reset();
    EXPECT_FALSE(IsMapped(inside));
}

/// Exits with 0 when pieces can still be had where the process has no room for a block.
[[noreturn]] void TakeWithoutRoom() {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t room = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + 14 * kMegabyte;
    const rlimit limit = {room, room};
    if (setrlimit(RLIMIT_AS, &limit) != 0) _exit(2);
    ChunkMemory memory;
    const std::vector<Piece> pieces = TakeMany(memory, 80, 100 * 1024);
    _exit(std::all_of(pieces.begin(), pieces.end(), [](const Piece& each) { return each[0] == 'x'; }) ? 0 : 1);
}

TEST(ChunkMemory, DoesWithoutBlocksWhereThereIsNoRoom) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer needs more address space than can be limited";
#endif
    EXPECT_EXIT(TakeWithoutRoom(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace tk::ado
