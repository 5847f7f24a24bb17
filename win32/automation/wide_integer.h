// wide_integer.h - an unsigned integer of 256 bits: what a product or an aligned sum of two decimals needs.
#pragma once

#include <array>
#include <bit>
#include <compare>
#include <cstdint>

namespace tk::automation {

__extension__ typedef unsigned __int128 UInt128;
__extension__ typedef __int128 Int128;

inline constexpr int kTenPowers = 20;
/// 10^0 to 10^19, all that fit 64 bits.
inline constexpr auto kPowersOfTen = [] {
    std::array<std::uint64_t, kTenPowers> powers{1};
    for (int i = 1; i < kTenPowers; ++i)
        powers[i] = powers[i - 1] * 10;
    return powers;
}();

class Wide {
public:
    constexpr Wide() = default;
    constexpr explicit Wide(UInt128 value)
        : limbs_{static_cast<std::uint64_t>(value), static_cast<std::uint64_t>(value >> 64), 0, 0} {}

    constexpr int Bits() const {
        for (int i = kLimbs - 1; i >= 0; --i) {
            if (limbs_[i] != 0) return i * 64 + static_cast<int>(std::bit_width(limbs_[i]));
        }
        return 0;
    }
    constexpr bool IsZero() const { return Bits() == 0; }
    constexpr UInt128 Low() const { return (UInt128{limbs_[1]} << 64) | limbs_[0]; }

    /// this = this * factor + addend
    constexpr void MultiplyAdd(std::uint64_t factor, std::uint64_t addend) {
        std::uint64_t carry = addend;
        for (std::uint64_t& limb : limbs_) {
            const UInt128 product = UInt128{limb} * factor + carry;
            limb = static_cast<std::uint64_t>(product);
            carry = static_cast<std::uint64_t>(product >> 64);
        }
    }
    constexpr void MultiplyByTenTo(int power) {
        for (; power >= kTenPowers; power -= kTenPowers - 1)
            MultiplyAdd(kPowersOfTen[kTenPowers - 1], 0);
        if (power > 0) MultiplyAdd(kPowersOfTen[power], 0);
    }
    /// this = this / divisor; the remainder is returned.
    constexpr std::uint64_t Divide(std::uint64_t divisor) {
        UInt128 remainder = 0;
        for (int i = kLimbs - 1; i >= 0; --i) {
            if (remainder == 0 && limbs_[i] == 0) continue;
            const UInt128 part = (remainder << 64) | limbs_[i];
            limbs_[i] = static_cast<std::uint64_t>(part / divisor);
            remainder = part % divisor;
        }
        return static_cast<std::uint64_t>(remainder);
    }
    constexpr Wide& operator+=(const Wide& other) {
        UInt128 carry = 0;
        for (int i = 0; i < kLimbs; ++i) {
            carry += UInt128{limbs_[i]} + other.limbs_[i];
            limbs_[i] = static_cast<std::uint64_t>(carry);
            carry >>= 64;
        }
        return *this;
    }
    /// The other one is not larger.
    constexpr Wide& operator-=(const Wide& other) {
        std::uint64_t borrow = 0;
        for (int i = 0; i < kLimbs; ++i) {
            const UInt128 difference = UInt128{limbs_[i]} - other.limbs_[i] - borrow;
            limbs_[i] = static_cast<std::uint64_t>(difference);
            borrow = (difference >> 64) != 0 ? 1 : 0;
        }
        return *this;
    }
    constexpr bool IsOdd() const { return (limbs_[0] & 1) != 0; }

    /// this = this / divisor; the remainder is returned. The divisor has at most 96 bits.
    constexpr UInt128 DivideBy96Bits(UInt128 divisor) {
        UInt128 remainder = 0;
        for (int i = kLimbs - 1; i >= 0; --i) {
            std::uint64_t quotient = 0;
            for (const int shift : {32, 0}) {  // 96 bits of remainder leave room for half a limb
                const UInt128 part = (remainder << 32) | static_cast<std::uint32_t>(limbs_[i] >> shift);
                quotient = (quotient << 32) | static_cast<std::uint64_t>(part / divisor);
                remainder = part % divisor;
            }
            limbs_[i] = quotient;
        }
        return remainder;
    }

    friend constexpr Wide operator*(const Wide& left, const Wide& right) {  // of 128 bits each
        Wide product;
        for (int i = 0; i < 2; ++i) {
            std::uint64_t carry = 0;
            for (int j = 0; j < 2; ++j) {
                const UInt128 part = UInt128{left.limbs_[i]} * right.limbs_[j] + product.limbs_[i + j] + carry;
                product.limbs_[i + j] = static_cast<std::uint64_t>(part);
                carry = static_cast<std::uint64_t>(part >> 64);
            }
            product.limbs_[i + 2] = carry;
        }
        return product;
    }
    friend constexpr std::strong_ordering operator<=>(const Wide& left, const Wide& right) {
        for (int i = kLimbs - 1; i >= 0; --i) {
            if (left.limbs_[i] != right.limbs_[i]) return left.limbs_[i] <=> right.limbs_[i];
        }
        return std::strong_ordering::equal;
    }
    friend constexpr bool operator==(const Wide& left, const Wide& right) = default;

private:
    static constexpr int kLimbs = 4;
    std::array<std::uint64_t, kLimbs> limbs_{};
};

}  // namespace tk::automation
