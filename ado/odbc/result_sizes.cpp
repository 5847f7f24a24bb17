#include "ado/odbc/result_sizes.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <limits>

namespace tk::ado {
namespace {

// One word a place: the upper half of the text's hash, and the rows plus one. A collision forgets the older text; equal
// upper halves are two texts that share a guess.
constinit std::array<std::atomic<std::uint64_t>, 1024> memory{};

/// Eight bytes at a time; a text and its length decide.
std::uint64_t Hash(std::uint64_t hash, std::string_view text) noexcept {
    const auto add = [&](std::size_t at, std::size_t size) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, text.data() + at, size);
        hash = (hash ^ bytes) * 0x9E3779B97F4A7C15u;
        hash ^= hash >> 32;
    };
    std::size_t at = 0;
    for (; at + 8 <= text.size(); at += 8)
        add(at, 8);
    if (at < text.size()) add(at, text.size() - at);
    return (hash ^ text.size()) * 0x9E3779B97F4A7C15u;
}

}  // namespace

std::uint64_t ResultName(std::string_view connectionKey, std::string_view sql) noexcept {
    const std::uint64_t hash = Hash(Hash(0xcbf29ce484222325u, connectionKey), sql);
    return (hash ^ (hash >> 29)) | 1;
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
