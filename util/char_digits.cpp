#include <charconv>
#include <cstring>
#include <system_error>

#include "tkkernel/util.h"
#include "util/text.h"

namespace tk::util {
namespace {

constexpr int kLetterOffset = 'A' - 10;  // 55
constexpr int kHexDigitsOfNumber = 8;

/// @return 0 to 35, or -1
constexpr int DigitValue(char ch) {
    if (ch >= '0' && ch <= '9') return ch - '0';
    if (ch >= 'A' && ch <= 'Z') return ch - 'A' + 10;
    if (ch >= 'a' && ch <= 'z') return ch - 'a' + 10;
    return -1;
}

constexpr bool IsHexDigit(char ch) {
    return DigitValue(ch) >= 0 && DigitValue(ch) < 16;
}

constexpr bool IsBase(int base) {
    return base >= 2 && base <= 36;
}

}  // namespace
}  // namespace tk::util

char DecToHex(int nValue) {
    return static_cast<char>(nValue >= 10 ? nValue + tk::util::kLetterOffset : nValue + '0');
}

int HexToDec(char ch) {
    const int code = static_cast<signed char>(ch);  // NOLINT(bugprone-signed-char-misuse): GBK bytes count below 0
    // Contract: a lower-case letter gives what its code gives, not its value.
    return code > '9' ? code - tk::util::kLetterOffset : code - '0';
}

CString StringToHexString(const char* szText) {
    const std::string_view text = tk::util::View(szText);
    CString result;
    char* at = result.GetBufferSetLength(static_cast<int>(text.size() * 2));
    for (const char ch : text) {
        const auto byte = static_cast<unsigned char>(ch);
        *at++ = DecToHex(byte >> 4);
        *at++ = DecToHex(byte & 0xF);
    }
    return result;
}

CString HexStringToString(const char* szText) {
    using namespace tk::util;
    const std::string_view text = View(szText);
    CString result;
    for (std::size_t at = 0; at + 1 < text.size() && IsHexDigit(text[at]) && IsHexDigit(text[at + 1]); at += 2) {
        const auto byte = static_cast<char>(DigitValue(text[at]) * 16 + DigitValue(text[at + 1]));
        result.Append(&byte, 1);
    }
    return result;
}

unsigned short StringToWord(const char* szText) {
    using namespace tk::util;
    std::string_view rest = View(szText);
    unsigned value = 0;
    for (int pair = 0; pair < 2; ++pair) {
        unsigned byte = 0;
        std::size_t digits = 0;
        for (; digits < 2 && digits < rest.size() && IsHexDigit(rest[digits]); ++digits)
            byte = byte * 16 + static_cast<unsigned>(DigitValue(rest[digits]));
        if (digits == 0) break;
        value = value * 256 + byte;
        rest.remove_prefix(digits);
    }
    return static_cast<unsigned short>(value);
}

CString NumberToString(unsigned int nNumber, int nBase) {
    using namespace tk::util;
    if (!IsBase(nBase)) return {};
    char digits[32];
    char* at = digits + sizeof(digits);
    do {
        *--at = DecToHex(static_cast<int>(nNumber % static_cast<unsigned>(nBase)));
        nNumber /= static_cast<unsigned>(nBase);
    } while (nNumber != 0);
    CString text(at, static_cast<int>(digits + sizeof(digits) - at));
    if (nBase != 16) return text;
    return "0x" + CString('0', kHexDigitsOfNumber - text.GetLength()) + text;
}

unsigned int StringToNumber(const char* szText, int nBase) {
    using namespace tk::util;
    if (!IsBase(nBase)) return 0;
    std::string_view text = View(szText);
    if (nBase == 16 && (text.starts_with("0x") || text.starts_with("0X"))) text.remove_prefix(2);
    unsigned number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number, nBase);
    return result.ec == std::errc::result_out_of_range ? 0xFFFFFFFF : number;
}
