// ado/rowset/chunk_memory.h - memory for the finished chunks of one result.
//
// A large result is written once, from end to end, into memory that the system clears when it is first touched, page by
// page; in pages of 2 MB a scan of SQLite takes 2 to 4 % less. Blocks that are done with are kept for the next large
// result, 64 MB of them at most, as memory that the system may take back whenever it is short of some.
#pragma once

#include <cstddef>
#include <memory>

namespace tk::ado {

/// Threads: one at a time.
class ChunkMemory {
public:
    /// @return not cleared, aligned to 16 bytes; may outlive this object
    /// @throws std::bad_alloc
    std::shared_ptr<char[]> Take(std::size_t size);

private:
    std::shared_ptr<char[]> TakeOfBlock(std::size_t size);

    std::size_t taken_ = 0;  // by all pieces
    std::shared_ptr<char[]> block_;
    std::size_t blockSize_ = 0;
    std::size_t used_ = 0;  // of the block
};

}  // namespace tk::ado
