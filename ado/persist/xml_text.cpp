#include "ado/persist/xml_text.h"

#include <array>
#include <cstring>

#include "ado/cursor/text.h"

namespace tk::ado {
namespace {

enum Class : unsigned char { kPlain = 0, kEscape = 1, kNever = 2, kBeyondAscii = 4 };

constexpr auto kClasses = [] {
    std::array<unsigned char, 256> classes{};
    for (int i = 0; i < 0x20; ++i)
        classes[static_cast<std::size_t>(i)] = kNever;
    for (const char letter : {'\t', '\n', '\r', '&', '<', '>', '"', '\''})
        classes[static_cast<unsigned char>(letter)] = kEscape;
    for (std::size_t i = 0x80; i < 0x100; ++i)
        classes[i] = kBeyondAscii;
    return classes;
}();

constexpr std::string_view EscapeOf(char letter) noexcept {
    switch (letter) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&#39;";
        case '\t':
            return "&#x9;";
        case '\n':
            return "&#xA;";
        default:
            return "&#xD;";
    }
}

/// Bytes of the well-formed character at the start of a text, 0 when there is none. Sets whether XML excludes it.
std::size_t CharacterAt(const unsigned char* at, std::size_t left, bool& isExcluded) noexcept {
    const auto follows = [&](std::size_t i) { return i < left && (at[i] & 0xC0) == 0x80; };
    const unsigned first = at[0];
    if (first < 0x80) return 1;
    if (first >= 0xC2 && first <= 0xDF) return follows(1) ? 2 : 0;
    if (first >= 0xE0 && first <= 0xEF) {
        if (!follows(1) || !follows(2)) return 0;
        if ((first == 0xE0 && at[1] < 0xA0) || (first == 0xED && at[1] > 0x9F)) return 0;
        if (first == 0xEF && at[1] == 0xBF && at[2] >= 0xBE) isExcluded = true;
        return 3;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        if (!follows(1) || !follows(2) || !follows(3)) return 0;
        if ((first == 0xF0 && at[1] < 0x90) || (first == 0xF4 && at[1] > 0x8F)) return 0;
        return 4;
    }
    return 0;
}

}  // namespace

XmlFit FitOf(std::string_view text) noexcept {
    unsigned seen = 0;
    for (const char letter : text)
        seen |= kClasses[static_cast<unsigned char>(letter)];
    if (seen == kPlain) return XmlFit::Plain;
    bool isExcluded = (seen & kNever) != 0;
    if ((seen & kBeyondAscii) != 0) {
        const auto* at = reinterpret_cast<const unsigned char*>(text.data());
        for (std::size_t left = text.size(); left != 0;) {
            const std::size_t size = CharacterAt(at, left, isExcluded);
            if (size == 0) return XmlFit::IllFormed;
            at += size;
            left -= size;
        }
    }
    if (isExcluded) return XmlFit::Never;
    return (seen & kEscape) != 0 ? XmlFit::Escaped : XmlFit::Plain;
}

void PutXmlText(FileWriter& file, std::string_view text, XmlFit fit) {
    constexpr std::size_t kLongestEscape = 6;
    constexpr std::size_t kPiece = FileWriter::kRoom / kLongestEscape;
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, kPiece);
        text.remove_prefix(piece.size());
        char* at = file.Room(piece.size() * kLongestEscape);
        if (fit == XmlFit::Plain) {
            std::memcpy(at, piece.data(), piece.size());
            at += piece.size();
        } else {
            for (const char letter : piece) {
                if (kClasses[static_cast<unsigned char>(letter)] != kEscape) {
                    *at++ = letter;
                    continue;
                }
                const std::string_view escape = EscapeOf(letter);
                std::memcpy(at, escape.data(), escape.size());
                at += escape.size();
            }
        }
        file.Commit(at);
    }
}

std::string XmlAttribute(std::string_view text) {
    std::string clean(text);
    if (FitOf(clean) == XmlFit::IllFormed) clean = ToUtf8(ToUtf16(clean));
    std::string result;
    const auto* bytes = reinterpret_cast<const unsigned char*>(clean.data());
    for (std::size_t at = 0; at < clean.size();) {
        bool isExcluded = kClasses[bytes[at]] == kNever;
        const std::size_t size = std::max<std::size_t>(CharacterAt(bytes + at, clean.size() - at, isExcluded), 1);
        if (isExcluded) {
            result += "\xEF\xBF\xBD";
        } else if (kClasses[bytes[at]] == kEscape) {
            result += EscapeOf(clean[at]);
        } else {
            result.append(clean, at, size);
        }
        at += size;
    }
    return result;
}

bool IsXmlName(std::u16string_view name) noexcept {
    static constexpr struct {
        char16_t first;
        char16_t last;
    } kLetters[] = {{u'A', u'Z'},     {u'_', u'_'},     {u'a', u'z'},     {0x00C0, 0x00D6},
                    {0x00D8, 0x00F6}, {0x00F8, 0x00FF}, {0x0391, 0x03A1}, {0x03A3, 0x03CE},
                    {0x0410, 0x044F}, {0x3041, 0x3094}, {0x30A1, 0x30FA}, {0x4E00, 0x9FA5}};
    const auto isLetter = [](char16_t unit) {
        for (const auto& range : kLetters) {
            if (unit >= range.first && unit <= range.last) return true;
        }
        return false;
    };
    if (name.empty() || !isLetter(name.front())) return false;
    for (const char16_t unit : name) {
        if (!isLetter(unit) && !(unit >= u'0' && unit <= u'9') && unit != u'-' && unit != u'.') return false;
    }
    return name.size() < 3 || !SameName(name.substr(0, 3), u"xml");
}

}  // namespace tk::ado
