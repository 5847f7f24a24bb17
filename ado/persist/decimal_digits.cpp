#include "ado/persist/decimal_digits.h"

#include <cstdint>

namespace tk::ado {

namespace {

constexpr int kMostDigits = 38;

// A value of so many digits is a DECIMAL however it is spelled; a longer one is handed out as the text it is.
constexpr int kSurelyDecimal = 28;

}  // namespace

bool ReadDigits(std::string_view text, DecimalDigits& digits) noexcept {
    const std::string_view whole = text;
    digits = {};
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        digits.isNegative = text.front() == '-';
        text.remove_prefix(1);
    }
    if (text.size() > kMostDigits + 1) return false;
    constexpr int kEasy = 18;
    std::uint64_t low = 0;
    int count = 0;
    bool afterPoint = false;
    for (const char letter : text) {
        if (letter == '.') {
            if (afterPoint) return false;
            afterPoint = true;
            continue;
        }
        if (letter < '0' || letter > '9') return false;
        const auto digit = static_cast<unsigned>(letter - '0');
        if (count < kEasy) {
            low = low * 10 + digit;
        } else {
            if (count == kEasy) digits.magnitude = low;
            digits.magnitude = digits.magnitude * 10 + digit;
        }
        ++count;
        digits.scale += afterPoint ? 1 : 0;
    }
    if (count == 0 || count > kMostDigits) return false;
    if (count <= kEasy) digits.magnitude = low;
    if (count <= kSurelyDecimal) return true;
    char buffer[kDigitsRoom];
    return SpellDigits(digits, buffer) == whole;
}

std::string_view SpellDigits(const DecimalDigits& digits, char* buffer) noexcept {
    char* const end = buffer + kDigitsRoom;
    char* at = end;
    WideInteger rest = digits.magnitude;
    constexpr std::uint64_t kPart = 1'000'000'000'000'000'000u;
    constexpr int kPartDigits = 18;
    int place = 0;
    const auto put = [&](std::uint64_t part, int least) {
        for (int written = 0; part != 0 || written < least; ++written, ++place) {
            if (place == digits.scale && digits.scale != 0) *--at = '.';
            *--at = static_cast<char>('0' + part % 10);
            part /= 10;
        }
    };
    while (rest >= kPart) {
        put(static_cast<std::uint64_t>(rest % kPart), kPartDigits);
        rest /= kPart;
    }
    put(static_cast<std::uint64_t>(rest), 0);
    while (place <= digits.scale)
        put(0, 1);
    if (digits.isNegative && digits.magnitude != 0) *--at = '-';
    return {at, static_cast<std::size_t>(end - at)};
}

}  // namespace tk::ado
