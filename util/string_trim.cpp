#include <cstring>

#include "tkkernel/util.h"
#include "util/text.h"

namespace tk::util {
namespace {

/// Whether a character of one or two bytes is one of the characters of a set. Bytes of one character never match half
/// of another.
bool IsInSet(std::string_view character, std::string_view set) {
    for (std::size_t at = 0; at < set.size(); at += CharacterLength(set, at)) {
        if (set.substr(at, CharacterLength(set, at)) == character) return true;
    }
    return false;
}

/// Bytes of the leading characters that are in the set.
std::size_t LeadingBytes(std::string_view text, std::string_view set) {
    std::size_t end = 0;
    while (end < text.size() && IsInSet(text.substr(end, CharacterLength(text, end)), set)) {
        end += CharacterLength(text, end);
    }
    return end;
}

/// Where the trailing characters that are in the set begin. Characters can only be told apart from the front.
std::size_t TrailingBegin(std::string_view text, std::string_view set) {
    std::size_t begin = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = CharacterLength(text, at);
        const bool inSet = IsInSet(text.substr(at, length), set);
        at += length;
        if (!inSet) begin = at;
    }
    return begin;
}

/// Contract: -1, not 0, when nothing was removed.
int Removed(std::size_t bytes) {
    return bytes == 0 ? -1 : static_cast<int>(bytes);
}

}  // namespace
}  // namespace tk::util

int TrimLeft(char* pBuffer, const char* szSet) {
    using namespace tk::util;
    const std::string_view text = View(pBuffer);
    const std::size_t bytes = LeadingBytes(text, View(szSet));
    if (bytes != 0) std::memmove(pBuffer, pBuffer + bytes, text.size() - bytes + 1);
    return Removed(bytes);
}

int TrimRight(char* pBuffer, const char* szSet) {
    using namespace tk::util;
    const std::string_view text = View(pBuffer);
    const std::size_t begin = TrailingBegin(text, View(szSet));
    if (begin != text.size()) pBuffer[begin] = '\0';
    return Removed(text.size() - begin);
}

CString TruncString(const char* szText, char ch) {
    using namespace tk::util;
    const std::string_view text = View(szText);
    std::size_t lastOther = 0;  // where the last character other than ch begins
    for (std::size_t at = 0; at < text.size(); at += CharacterLength(text, at)) {
        if (CharacterLength(text, at) == 2 || text[at] != ch) lastOther = at;
    }
    // Contract: the last other character goes as well: "1.500" without "0" is "1.".
    return ToText(text.substr(0, lastOther));
}
