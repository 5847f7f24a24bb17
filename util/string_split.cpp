#include <algorithm>
#include <cstring>
#include <functional>
#include <utility>

#include "tkkernel/util.h"
#include "util/text.h"

namespace tk::util {
namespace {

/// Where the next separator begins; npos when there is none. Most separators are one character.
std::size_t FindSeparator(std::string_view text, std::string_view separator, std::size_t from) {
    return separator.size() == 1 ? text.find(separator.front(), from) : text.find(separator, from);
}

/// Hands out each non-empty piece before a separator, and what follows the last one even when it is empty.
template <class Use>
void ForEachPiece(std::string_view text, std::string_view separator, Use use) {
    std::size_t begin = 0;
    std::size_t end;
    while ((end = FindSeparator(text, separator, begin)) != std::string_view::npos) {
        if (end > begin) use(text.substr(begin, end - begin));
        begin = end + separator.size();
    }
    use(text.substr(begin));
}

template <class Use>
void ForEachPacked(std::string_view packed, Use use) {
    while (!packed.empty()) {
        const std::string_view item = packed.substr(0, packed.find('\0'));
        use(item);
        packed.remove_prefix(std::min(packed.size(), item.size() + 1));
    }
}

/// Whether a text lies in an element of the array, which filling the array would pull from under it.
bool LiesIn(const CStringArray& array, std::string_view text) {
    const std::less<const char*> before;
    for (int i = 0; i < array.GetSize(); ++i) {
        const std::string_view element = View(array[i]);
        if (!before(text.data(), element.data()) && !before(element.data() + element.size(), text.data())) return true;
    }
    return false;
}

/// Fills the array with what `forEach` hands out, in batches: the text is walked once, and the array makes its room in
/// a few steps.
template <class ForEach>
void Fill(CStringArray& array, ForEach forEach) {
    constexpr int kBatch = 64;
    std::string_view batch[kBatch];
    int stored = 0;
    int waiting = 0;
    const auto store = [&] {
        array.SetSize(stored + waiting);
        CString* elements = array.GetData() + stored;
        for (int i = 0; i < waiting; ++i) {
            elements[i].Empty();
            elements[i].Append(batch[i].data(), static_cast<int>(batch[i].size()));
        }
        stored += std::exchange(waiting, 0);
    };
    forEach([&](std::string_view piece) {
        if (waiting == kBatch) store();
        batch[waiting++] = piece;
    });
    store();
}

}  // namespace
}  // namespace tk::util

void StringToArray(CStringArray& array, const char* szText, const char* szSeparator) {
    using namespace tk::util;
    const std::string_view text = View(szText);
    const std::string_view separator = View(szSeparator);
    if (LiesIn(array, text) || LiesIn(array, separator)) {
        return StringToArray(array, ToText(text), ToText(separator));
    }
    if (text.empty()) return array.RemoveAll();
    Fill(array, [&](auto use) {
        if (separator.empty()) {
            use(text);
        } else {
            ForEachPiece(text, separator, use);
        }
    });
}

void StringToArray(CStringArray& array, const char* pBuffer, int nLength) {
    using namespace tk::util;
    if (pBuffer == nullptr || nLength <= 0) return array.RemoveAll();
    const std::string_view packed(pBuffer, static_cast<std::size_t>(nLength));
    if (LiesIn(array, packed)) return StringToArray(array, ToText(packed), nLength);
    Fill(array, [&](auto use) { ForEachPacked(packed, use); });
}

CString ArrayToString(const CStringArray& array, const char* szSeparator) {
    using namespace tk::util;
    const std::string_view separator = View(szSeparator);
    const int count = array.GetSize();
    if (count == 0) return {};
    std::size_t length = separator.size() * static_cast<std::size_t>(count - 1);
    for (int i = 0; i < count; ++i)
        length += View(array[i]).size();

    CString result;
    char* at = result.GetBufferSetLength(static_cast<int>(length));
    for (int i = 0; i < count; ++i) {
        if (i > 0) at = std::copy(separator.begin(), separator.end(), at);
        const std::string_view element = View(array[i]);
        at = std::copy(element.begin(), element.end(), at);
    }
    return result;
}

CString DivideString(CString& text, char ch) {
    using namespace tk::util;
    const std::string_view whole = View(text);
    const std::size_t end = whole.find(ch);
    if (end == std::string_view::npos) return {};
    CString token = ToText(whole.substr(0, end));
    text = ToText(whole.substr(end + 1));
    return token;
}

int CountSubString(const char* szText, char ch) {
    const std::string_view text = tk::util::View(szText);
    const auto occurrences = static_cast<int>(std::ranges::count(text, ch));
    // Contract: counts fields, so a found character adds one: "a,b,c" is 3, "abc" is 0.
    return occurrences == 0 ? 0 : occurrences + 1;
}
