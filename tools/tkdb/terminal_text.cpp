#include "tools/tkdb/terminal_text.h"

#include <iconv.h>
#include <langinfo.h>
#include <tkwin32/text.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdint>

namespace tk::tools {
namespace {

std::string& TerminalCodeset() {
    static std::string codeset = "UTF-8";
    return codeset;
}

bool IsUtf8() {
    return TerminalCodeset() == "UTF-8";
}

// Converts with the system's tables, one '?' for each character that the target lacks.
std::string Convert(std::string_view text, const char* from, const char* to) {
    iconv_t converter = iconv_open(to, from);
    if (converter == reinterpret_cast<iconv_t>(-1)) return std::string(text);
    std::string result;
    std::array<char, 4096> buffer;
    auto* input = const_cast<char*>(text.data());  // iconv takes a writable pointer and does not write through it
    std::size_t inputLeft = text.size();
    while (inputLeft > 0) {
        char* output = buffer.data();
        std::size_t outputLeft = buffer.size();
        const std::size_t code = iconv(converter, &input, &inputLeft, &output, &outputLeft);
        result.append(buffer.data(), static_cast<std::size_t>(output - buffer.data()));
        if (code != static_cast<std::size_t>(-1) || output != buffer.data()) continue;
        result += '?';
        ++input;
        --inputLeft;
        while (inputLeft > 0 && (static_cast<unsigned char>(*input) & 0xC0) == 0x80) {
            ++input;
            --inputLeft;
        }
    }
    iconv_close(converter);
    return result;
}

struct Range {
    std::uint32_t first;
    std::uint32_t last;
};

// Two columns wide, by the East Asian Width property (W and F).
constexpr Range kWide[] = {
    {0x1100, 0x115F}, {0x231A, 0x231B}, {0x2329, 0x232A}, {0x2E80, 0x303E},   {0x3041, 0x33FF},   {0x3400, 0x4DBF},
    {0x4E00, 0x9FFF}, {0xA000, 0xA4CF}, {0xA960, 0xA97F}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE10, 0xFE19},
    {0xFE30, 0xFE6F}, {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD},
};
constexpr Range kZero[] = {{0x0300, 0x036F}, {0x200B, 0x200F}, {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}, {0xFEFF, 0xFEFF}};

template <std::size_t N>
bool Contains(const Range (&ranges)[N], std::uint32_t code) {
    return std::ranges::any_of(ranges,
                               [code](const Range& range) { return code >= range.first && code <= range.last; });
}

}  // namespace

void UseTerminalLocale() {
    // Numbers and times stay in the C locale: only the character set is the terminal's.
    std::setlocale(LC_CTYPE, "");
    const char* codeset = nl_langinfo(CODESET);
    if (codeset != nullptr && *codeset != '\0') TerminalCodeset() = codeset;
    if (TerminalCodeset() == "ANSI_X3.4-1968") TerminalCodeset() = "UTF-8";  // the plain C locale promises nothing
}

std::string TerminalToGbk(std::string_view text) {
    return text::Utf8ToGbk(IsUtf8() ? std::string(text) : Convert(text, TerminalCodeset().c_str(), "UTF-8"));
}

std::string GbkToTerminal(std::string_view text) {
    return Utf8ToTerminal(text::GbkToUtf8(text));
}

std::string Utf8ToTerminal(std::string_view text) {
    return IsUtf8() ? std::string(text) : Convert(text, "UTF-8", TerminalCodeset().c_str());
}

std::size_t DisplayWidth(std::string_view utf8) {
    std::size_t width = 0;
    for (std::size_t i = 0; i < utf8.size();) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        std::uint32_t code = length == 1 ? lead : lead & (0x7Fu >> length);
        for (std::size_t k = 1; k < length && i + k < utf8.size(); ++k) {
            code = (code << 6) | (static_cast<unsigned char>(utf8[i + k]) & 0x3Fu);
        }
        width += Contains(kZero, code) ? 0 : Contains(kWide, code) ? 2 : 1;
        i += length;
    }
    return width;
}

}  // namespace tk::tools
