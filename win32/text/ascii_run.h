// ascii_run.h - the ASCII at the front of a text, sixteen bytes at a time.
//
// Each function stores the ASCII characters before the first other one, or before `count`, and returns how many. The
// buffer has room for `count` units; what lies behind the returned number may have been overwritten.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tk::text {

inline constexpr std::uint64_t kHighBits = 0x8080808080808080u;

/// The bytes before the first with its high bit set, from the high bits of eight bytes in memory order.
inline std::size_t AsciiBytes(std::uint64_t highBits) noexcept {
    if constexpr (std::endian::native == std::endian::little)
        return static_cast<std::size_t>(std::countr_zero(highBits)) / 8;
    return static_cast<std::size_t>(std::countl_zero(highBits)) / 8;
}

inline std::size_t CopyAscii(const std::uint8_t* source, std::size_t count, std::uint8_t* target) noexcept {
    std::size_t done = 0;
#if defined(__SSE2__)
    for (; count - done >= 16; done += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + done));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(target + done), bytes);
        const auto high = static_cast<unsigned>(_mm_movemask_epi8(bytes));
        if (high != 0) return done + static_cast<std::size_t>(std::countr_zero(high));
    }
#endif
    for (; count - done >= 8; done += 8) {
        std::uint64_t word;
        std::memcpy(&word, source + done, 8);
        std::memcpy(target + done, &word, 8);
        if ((word & kHighBits) != 0) return done + AsciiBytes(word & kHighBits);
    }
    for (; done < count && source[done] < 0x80; ++done)
        target[done] = source[done];
    return done;
}

/// WidenAscii for what is behind `done`, all of those before being ASCII.
inline std::size_t WidenRest(const std::uint8_t* source, std::size_t count, std::size_t done,
                             char16_t* target) noexcept {
#if defined(__SSE2__)
    // The last eight once more where there are not as many left.
    for (; done < count && count >= 8; done += 8) {
        done = std::min(done, count - 8);
        const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(source + done));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(target + done), _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
        const auto high = static_cast<unsigned>(_mm_movemask_epi8(bytes));
        if (high != 0) return done + static_cast<std::size_t>(std::countr_zero(high));
    }
#endif
    for (; done < count && source[done] < 0x80; ++done)
        target[done] = source[done];
    return done;
}

/// NarrowAscii, likewise.
inline std::size_t NarrowRest(const char16_t* source, std::size_t count, std::size_t done,
                              std::uint8_t* target) noexcept {
#if defined(__SSE2__)
    const __m128i beyond = _mm_set1_epi16(static_cast<short>(0xFF80));
    for (; done < count && count >= 8; done += 8) {
        done = std::min(done, count - 8);
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + done));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(target + done), _mm_packus_epi16(units, units));
        const __m128i ascii = _mm_cmpeq_epi16(_mm_and_si128(units, beyond), _mm_setzero_si128());
        const auto other = static_cast<unsigned>(_mm_movemask_epi8(ascii)) ^ 0xFFFFu;
        if (other != 0) return done + static_cast<std::size_t>(std::countr_zero(other)) / 2;
    }
#endif
    for (; done < count && source[done] < 0x80; ++done)
        target[done] = static_cast<std::uint8_t>(source[done]);
    return done;
}

inline std::size_t WidenAscii(const std::uint8_t* source, std::size_t count, char16_t* target) noexcept {
    std::size_t done = 0;
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    for (; count - done >= 16; done += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + done));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(target + done), _mm_unpacklo_epi8(bytes, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(target + done + 8), _mm_unpackhi_epi8(bytes, zero));
        const auto high = static_cast<unsigned>(_mm_movemask_epi8(bytes));
        if (high != 0) return done + static_cast<std::size_t>(std::countr_zero(high));
    }
#endif
    return WidenRest(source, count, done, target);
}

inline std::size_t NarrowAscii(const char16_t* source, std::size_t count, std::uint8_t* target) noexcept {
    std::size_t done = 0;
#if defined(__SSE2__)
    const __m128i beyond = _mm_set1_epi16(static_cast<short>(0xFF80));
    const __m128i zero = _mm_setzero_si128();
    for (; count - done >= 16; done += 16) {
        const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + done));
        const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + done + 8));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(target + done), _mm_packus_epi16(first, second));
        const __m128i ascii = _mm_packs_epi16(_mm_cmpeq_epi16(_mm_and_si128(first, beyond), zero),
                                              _mm_cmpeq_epi16(_mm_and_si128(second, beyond), zero));
        const auto other = static_cast<unsigned>(_mm_movemask_epi8(ascii)) ^ 0xFFFFu;
        if (other != 0) return done + static_cast<std::size_t>(std::countr_zero(other));
    }
#endif
    return NarrowRest(source, count, done, target);
}

}  // namespace tk::text
