#include <malloc.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

#include "tkkernel/util.h"
#include "util/text.h"

namespace tk::util {
namespace {

std::size_t Limited(std::size_t length, int limit) {
    return limit < 0 ? 0 : std::min(length, static_cast<std::size_t>(limit));
}

/// Copies within or between buffers and terminates the target.
int Store(char* target, std::string_view text) {
    if (target == nullptr) return 0;
    std::memmove(target, text.data(), text.size());
    target[text.size()] = '\0';
    return static_cast<int>(text.size());
}

}  // namespace
}  // namespace tk::util

int IsExist(const char* szText, char ch) {
    return tk::util::View(szText).find(ch) != std::string_view::npos ? 1 : 0;
}

CString CutString(const char* szText, char ch) {
    using namespace tk::util;
    const std::string_view text = View(szText);
    CString result;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = CharacterLength(text, at);
        if (length == 2 || text[at] != ch) result.Append(text.data() + at, static_cast<int>(length));
        at += length;
    }
    return result;
}

int StringLeft(const char* pSource, char* pTarget, int nCount) {
    using namespace tk::util;
    const std::string_view text = View(pSource);
    return Store(pTarget, text.substr(0, Limited(text.size(), nCount)));
}

int StringLeft(char* pBuffer, int nCount) {
    return StringLeft(pBuffer, pBuffer, nCount);
}

int StringRight(const char* pSource, char* pTarget, int nCount) {
    using namespace tk::util;
    const std::string_view text = View(pSource);
    return Store(pTarget, text.substr(text.size() - Limited(text.size(), nCount)));
}

int StringRight(char* pBuffer, int nCount) {
    return StringRight(pBuffer, pBuffer, nCount);
}

int IsDigit(const char* szText) {
    const std::string_view text = tk::util::View(szText);
    return !text.empty() && std::ranges::all_of(text, [](char ch) { return ch >= '0' && ch <= '9'; }) ? 1 : 0;
}

int GetMemoryLength(void* pMemory) {
    constexpr std::size_t kMost = std::numeric_limits<int>::max();
    return pMemory == nullptr ? 0 : static_cast<int>(std::min<std::size_t>(_msize(pMemory), kMost));
}

int StrLen(const char* szText) {
    return static_cast<int>(tk::util::View(szText).size());
}

int WStrLen(const OLECHAR* szText) {
    return szText == nullptr ? 0 : static_cast<int>(std::char_traits<OLECHAR>::length(szText));
}
