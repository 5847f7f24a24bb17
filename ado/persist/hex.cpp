#include "ado/persist/hex.h"

namespace tk::ado {
namespace {

int DigitOf(char letter) noexcept {
    if (letter >= '0' && letter <= '9') return letter - '0';
    if (letter >= 'a' && letter <= 'f') return letter - 'a' + 10;
    if (letter >= 'A' && letter <= 'F') return letter - 'A' + 10;
    return -1;
}

constexpr std::size_t kGuidText = 38;

// Where each byte's digits are in the text: the first three groups are numbers, so their low bytes come first.
constexpr unsigned char kGuidPlaces[] = {7, 5, 3, 1, 12, 10, 17, 15, 20, 22, 25, 27, 29, 31, 33, 35};

}  // namespace

void PutHex(std::string_view bytes, char* target) noexcept {
    constexpr char kDigits[] = "0123456789abcdef";
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        *target++ = kDigits[value >> 4];
        *target++ = kDigits[value & 15];
    }
}

bool ReadHex(std::string_view digits, std::string& bytes) {
    bytes.clear();
    bytes.reserve(digits.size() / 2);
    int high = -1;
    for (const char letter : digits) {
        if (letter == ' ' || letter == '\n' || letter == '\r' || letter == '\t') continue;
        const int digit = DigitOf(letter);
        if (digit < 0) return false;
        if (high < 0) {
            high = digit;
            continue;
        }
        bytes.push_back(static_cast<char>(high * 16 + digit));
        high = -1;
    }
    return high < 0;
}

bool GuidBytes(std::string_view text, char* bytes) noexcept {
    if (text.size() != kGuidText || text.front() != '{' || text.back() != '}') return false;
    for (const std::size_t dash : {9u, 14u, 19u, 24u}) {
        if (text[dash] != '-') return false;
    }
    for (const unsigned char place : kGuidPlaces) {
        const char first = text[place];
        const char second = text[place + 1u];
        const bool isLower = (first >= 'a' && first <= 'f') || (second >= 'a' && second <= 'f');
        if (isLower || DigitOf(first) < 0 || DigitOf(second) < 0) return false;
        *bytes++ = static_cast<char>(DigitOf(first) * 16 + DigitOf(second));
    }
    return true;
}

void SpellGuid(const char* bytes, char* text) noexcept {
    constexpr char kDigits[] = "0123456789ABCDEF";
    text[0] = '{';
    text[9] = text[14] = text[19] = text[24] = '-';
    text[kGuidText - 1] = '}';
    for (const unsigned char place : kGuidPlaces) {
        const auto value = static_cast<unsigned char>(*bytes++);
        text[place] = kDigits[value >> 4];
        text[place + 1u] = kDigits[value & 15];
    }
}

}  // namespace tk::ado
