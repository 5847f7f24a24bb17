// packed_bytes.h - Chinese characters between UTF-16 and the three bytes of UTF-8, one or four at a time.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

#include "win32/text/unicode_units.h"

namespace tk::text {

/// Three bytes of a text as a number, the first one lowest.
/// @param left  bytes that may be read, at least 3; with a fourth one it is a single load
inline std::uint32_t LoadThree(const std::uint8_t* source, std::size_t left) noexcept {
    if (std::endian::native == std::endian::little && left >= 4) {
        std::uint32_t word;
        std::memcpy(&word, source, 4);
        return word & 0xFFFFFF;
    }
    return static_cast<std::uint32_t>(source[0] | source[1] << 8 | source[2] << 16);
}

/// The unit that a UTF-8 sequence of three bytes stands for; 0 when it is none.
constexpr char16_t UnitOfThree(std::uint32_t bytes) noexcept {
    if ((bytes & 0xC0C0F0) != 0x8080E0) return 0;
    const auto unit = static_cast<char16_t>((bytes & 0x0F) << 12 | (bytes >> 2 & 0xFC0) | (bytes >> 16 & 0x3F));
    return unit < 0x800 || IsSurrogate(unit) ? u'\0' : unit;
}

/// Whether UTF-8 takes three bytes for a unit.
constexpr bool TakesThree(char16_t unit) noexcept {
    return unit >= 0x800 && !IsSurrogate(unit);
}

/// Stores a unit that takes three bytes.
/// @param room  bytes that may be written, at least 3; with a fourth one it is a single store that overwrites it
inline void StoreThree(char16_t unit, std::uint8_t* target, std::size_t room) noexcept {
    if (std::endian::native == std::endian::little && room >= 4) {
        const std::uint32_t wide = unit;
        const std::uint32_t bytes = 0x8080E0 | wide >> 12 | (wide << 2 & 0x3F00) | (wide << 16 & 0x3F0000);
        std::memcpy(target, &bytes, 4);
        return;
    }
    target[0] = static_cast<std::uint8_t>(0xE0 | unit >> 12);
    target[1] = static_cast<std::uint8_t>(0x80 | (unit >> 6 & 0x3F));
    target[2] = static_cast<std::uint8_t>(0x80 | (unit & 0x3F));
}

// Four at a time: the units in one number, the first one lowest. Machines that lack the instructions take one at a
// time.
inline constexpr std::size_t kFourRead = 13;   // bytes of UTF-8 that are looked at, for up to 12 that are taken
inline constexpr std::size_t kFourWrite = 14;  // bytes of UTF-8 that are overwritten, for up to 12 that count

#if defined(__x86_64__)

/// All ones in each unit that does not take three bytes.
inline __m128i NotThree(__m128i units) noexcept {
    const __m128i top = _mm_and_si128(units, _mm_set1_epi16(static_cast<short>(0xF800)));
    const __m128i surrogate = _mm_cmpeq_epi16(top, _mm_set1_epi16(static_cast<short>(0xD800)));
    return _mm_or_si128(surrogate, _mm_cmpeq_epi16(top, _mm_setzero_si128()));
}

/// The units of four sequences of three bytes; 0 when one of the four is something else.
inline std::uint64_t LoadFour(const std::uint8_t* source) noexcept {
    const auto load = [source](int offset) {
        std::int32_t word;
        std::memcpy(&word, source + offset, 4);
        return _mm_cvtsi32_si128(word);
    };
    const __m128i pairs[2] = {_mm_unpacklo_epi32(load(0), load(3)), _mm_unpacklo_epi32(load(6), load(9))};
    const __m128i bytes = _mm_unpacklo_epi64(pairs[0], pairs[1]);
    const __m128i form = _mm_cmpeq_epi32(_mm_and_si128(bytes, _mm_set1_epi32(0xC0C0F0)), _mm_set1_epi32(0x8080E0));
    // The bits of each unit are put into the upper half and moved down with their sign, for the pack is a signed one.
    const __m128i high = _mm_slli_epi32(bytes, 28);
    const __m128i middle = _mm_and_si128(_mm_slli_epi32(bytes, 14), _mm_set1_epi32(0xFC00000));
    const __m128i low = _mm_and_si128(bytes, _mm_set1_epi32(0x3F0000));
    const __m128i wide = _mm_srai_epi32(_mm_or_si128(high, _mm_or_si128(middle, low)), 16);
    const __m128i units = _mm_packs_epi32(wide, wide);
    const __m128i good = _mm_andnot_si128(NotThree(units), _mm_packs_epi32(form, form));
    return _mm_movemask_epi8(good) == 0xFFFF ? static_cast<std::uint64_t>(_mm_cvtsi128_si64(units)) : 0;
}

/// Stores four units and tells how many come before the first that does not take three bytes.
inline std::size_t StoreFour(std::uint64_t four, std::uint8_t* target) noexcept {
    const __m128i units = _mm_cvtsi64_si128(static_cast<long long>(four));
    const __m128i wide = _mm_unpacklo_epi16(units, _mm_setzero_si128());
    const __m128i first = _mm_or_si128(_mm_srli_epi32(wide, 12), _mm_set1_epi32(0x8080E0));
    const __m128i second = _mm_and_si128(_mm_slli_epi32(wide, 2), _mm_set1_epi32(0x3F00));
    const __m128i third = _mm_and_si128(_mm_slli_epi32(wide, 16), _mm_set1_epi32(0x3F0000));
    const __m128i bytes = _mm_or_si128(first, _mm_or_si128(second, third));
    // Closes the gap of one byte between the two in each half.
    const __m128i even = _mm_and_si128(bytes, _mm_set1_epi64x(0xFFFFFF));
    const __m128i odd = _mm_srli_epi64(_mm_andnot_si128(_mm_set1_epi64x(0xFFFFFFFF), bytes), 8);
    const __m128i closed = _mm_or_si128(even, odd);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(target), closed);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(target + 6), _mm_unpackhi_epi64(closed, closed));
    const auto other = static_cast<unsigned>(_mm_movemask_epi8(NotThree(units))) | 0x100u;
    return static_cast<std::size_t>(std::countr_zero(other)) / 2;
}

#else

inline std::uint64_t LoadFour(const std::uint8_t*) noexcept {
    return 0;
}

inline std::size_t StoreFour(std::uint64_t, std::uint8_t*) noexcept {
    return 0;
}

#endif

}  // namespace tk::text
