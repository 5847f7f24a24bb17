// ado/odbc/text_hash.h - the hash by which texts are remembered without being kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tk::ado {

inline constexpr std::uint64_t kEmptyHash = 0xcbf29ce484222325u;

/// Eight bytes at a time; a text and its length decide, and what was added before.
inline std::uint64_t AddToHash(std::uint64_t hash, std::string_view text) noexcept {
    constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15u;
    const auto add = [&](std::size_t at, std::size_t size) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, text.data() + at, size);
        hash = (hash ^ bytes) * kFactor;
        hash ^= hash >> 32;
    };
    std::size_t at = 0;
    for (; at + 8 <= text.size(); at += 8)
        add(at, 8);
    if (at < text.size()) add(at, text.size() - at);
    return (hash ^ text.size()) * kFactor;
}

/// What is left to do when all has been added; never 0.
inline std::uint64_t FinishHash(std::uint64_t hash) noexcept {
    return (hash ^ (hash >> 29)) | 1;
}

}  // namespace tk::ado
