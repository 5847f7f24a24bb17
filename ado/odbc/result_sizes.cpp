#include "ado/odbc/result_sizes.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <limits>

#include "ado/odbc/text_hash.h"

namespace tk::ado {
namespace {

// One word a place: the upper half of the text's hash, and the rows plus one. A collision forgets the older text; equal
// upper halves are two texts that share a guess.
constinit std::array<std::atomic<std::uint64_t>, 1024> memory{};

}  // namespace

std::uint64_t ResultName(std::string_view connectionKey, std::string_view sql) noexcept {
    return FinishHash(AddToHash(AddToHash(kEmptyHash, connectionKey), sql));
}

std::optional<std::uint32_t> RememberedRows(std::uint64_t name) noexcept {
    const std::uint64_t entry = memory[name / 2 % memory.size()].load(std::memory_order_relaxed);
    const auto rows = static_cast<std::uint32_t>(entry);
    if (rows == 0 || (entry >> 32) != (name >> 32)) return std::nullopt;
    return rows - 1;
}

void RememberRows(std::uint64_t name, std::size_t rows) noexcept {
    const auto kept = std::min<std::size_t>(rows, std::numeric_limits<std::uint32_t>::max() - 1) + 1;
    memory[name / 2 % memory.size()].store((name >> 32 << 32) | kept, std::memory_order_relaxed);
}

}  // namespace tk::ado
