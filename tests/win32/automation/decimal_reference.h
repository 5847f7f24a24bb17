// decimal_reference.h - decimals the slow way, digit by digit on text: what the real ones are compared with.
#pragma once

#include <algorithm>
#include <string>

namespace tk::test {

/// An unsigned integer as its digits, most significant first, and how many of them are decimal places.
struct Digits {
    std::string digits = "0";
    int scale = 0;
    bool negative = false;
};

inline std::string TrimFront(const std::string& digits) {
    const std::size_t first = digits.find_first_not_of('0');
    return first == std::string::npos ? "0" : digits.substr(first);
}

inline int CompareDigits(const std::string& left, const std::string& right) {
    const std::string first = TrimFront(left);
    const std::string second = TrimFront(right);
    if (first.size() != second.size()) return first.size() < second.size() ? -1 : 1;
    return first.compare(second);
}

inline std::string AddDigits(std::string left, std::string right) {
    const std::size_t width = std::max(left.size(), right.size()) + 1;
    left.insert(0, width - left.size(), '0');
    right.insert(0, width - right.size(), '0');
    int carry = 0;
    for (std::size_t i = width; i-- > 0;) {
        const int sum = left[i] - '0' + right[i] - '0' + carry;
        left[i] = static_cast<char>('0' + sum % 10);
        carry = sum / 10;
    }
    return TrimFront(left);
}

inline std::string SubtractDigits(std::string left, std::string right) {  // left is not smaller
    right.insert(0, left.size() - std::min(left.size(), right.size()), '0');
    left.insert(0, right.size() - std::min(left.size(), right.size()), '0');
    int borrow = 0;
    for (std::size_t i = left.size(); i-- > 0;) {
        int difference = left[i] - right[i] - borrow;
        borrow = difference < 0 ? 1 : 0;
        if (difference < 0) difference += 10;
        left[i] = static_cast<char>('0' + difference);
    }
    return TrimFront(left);
}

inline std::string MultiplyDigits(const std::string& left, const std::string& right) {
    std::string product(left.size() + right.size(), '\0');
    for (std::size_t i = left.size(); i-- > 0;) {
        int carry = 0;
        for (std::size_t j = right.size(); j-- > 0;) {
            const int value = product[i + j + 1] + (left[i] - '0') * (right[j] - '0') + carry;
            product[i + j + 1] = static_cast<char>(value % 10);
            carry = value / 10;
        }
        product[i] = static_cast<char>(product[i] + carry);
    }
    for (char& digit : product)
        digit = static_cast<char>(digit + '0');
    return TrimFront(product);
}

/// Cuts so many digits off, rounding a half to the even digit. `more` stands for digits beyond.
inline std::string CutDigits(std::string digits, int count, bool more = false) {
    if (count == 0) return TrimFront(digits);
    const auto cut = static_cast<std::size_t>(count);
    if (digits.size() <= cut) digits.insert(0, cut - digits.size() + 1, '0');
    const std::string kept = digits.substr(0, digits.size() - cut);
    const std::string rest = digits.substr(digits.size() - cut);
    std::string half = "5" + std::string(cut - 1, '0');
    const int order = rest.compare(half);
    const bool odd = (kept.back() - '0') % 2 != 0;
    const bool up = order > 0 || (order == 0 && (more || odd));
    return up ? AddDigits(kept, "1") : TrimFront(kept);
}

/// What a DECIMAL can hold of the number, spelled with all its places, or "overflow".
inline std::string FitDecimal(const Digits& exact, bool more = false) {
    static const std::string kMax = "79228162514264337593543950335";
    for (int cut = std::max(0, exact.scale - 28); cut <= exact.scale; ++cut) {
        std::string digits = CutDigits(exact.digits, cut, more);
        if (CompareDigits(digits, kMax) > 0) continue;
        const int scale = exact.scale - cut;
        const bool zero = digits == "0";
        if (static_cast<int>(digits.size()) <= scale) {
            digits.insert(0, static_cast<std::size_t>(scale) - digits.size() + 1, '0');
        }
        if (scale != 0) digits.insert(digits.size() - static_cast<std::size_t>(scale), ".");
        return (exact.negative && !zero ? "-" : "") + digits;
    }
    return "overflow";
}

inline Digits Parse(const std::string& text) {
    Digits parsed;
    parsed.digits.clear();
    bool fraction = false;
    for (const char character : text) {
        if (character == '-') {
            parsed.negative = true;
        } else if (character == '.') {
            fraction = true;
        } else {
            parsed.digits += character;
            if (fraction) ++parsed.scale;
        }
    }
    parsed.digits = TrimFront(parsed.digits);
    return parsed;
}

inline Digits Add(Digits left, Digits right) {
    const int scale = std::max(left.scale, right.scale);
    left.digits += std::string(static_cast<std::size_t>(scale - left.scale), '0');
    right.digits += std::string(static_cast<std::size_t>(scale - right.scale), '0');
    Digits sum{"", scale, left.negative};
    if (left.negative == right.negative) {
        sum.digits = AddDigits(left.digits, right.digits);
    } else if (CompareDigits(left.digits, right.digits) >= 0) {
        sum.digits = SubtractDigits(left.digits, right.digits);
    } else {
        sum.digits = SubtractDigits(right.digits, left.digits);
        sum.negative = right.negative;
    }
    return sum;
}

inline Digits Multiply(const Digits& left, const Digits& right) {
    return {MultiplyDigits(left.digits, right.digits), left.scale + right.scale, left.negative != right.negative};
}

}  // namespace tk::test
