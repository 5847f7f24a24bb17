#include "win32/system/base64.h"

namespace tk::system {
namespace {

constexpr std::string_view kCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string ToBase64(std::span<const BYTE> bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(bytes.size() - i, 3);
        unsigned group = 0;
        for (std::size_t j = 0; j < 3; ++j)
            group = group << 8 | (j < count ? bytes[i + j] : 0u);
        for (std::size_t j = 0; j < 4; ++j)
            text += j <= count ? kCharacters[group >> (18 - 6 * j) & 63] : '=';
    }
    return text;
}

std::optional<std::vector<BYTE>> FromBase64(std::string_view text) {
    std::vector<BYTE> bytes;
    for (std::size_t i = 0; i < text.size(); i += 4) {
        const std::string_view quad = text.substr(i, 4);
        const std::size_t used = std::min(quad.find('='), quad.size());
        const bool last = i + 4 == text.size();
        if (quad.size() != 4 || used < (last ? 2u : 4u) || quad.find_first_not_of('=', used) != quad.npos) {
            return std::nullopt;
        }
        unsigned group = 0;
        for (std::size_t j = 0; j < 4; ++j) {
            const auto place = j < used ? kCharacters.find(quad[j]) : 0;
            if (place == kCharacters.npos) return std::nullopt;
            group = group << 6 | static_cast<unsigned>(place);
        }
        for (std::size_t j = 0; j + 1 < used; ++j)
            bytes.push_back(static_cast<BYTE>(group >> (16 - 8 * j)));
    }
    return bytes;
}

}  // namespace tk::system
