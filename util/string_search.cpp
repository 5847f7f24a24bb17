#include "tkkernel/util.h"
#include "util/text.h"

namespace tk::util {
namespace {

/// Where a unit stands in a text, and where the search for the next one goes on.
struct Unit {
    std::size_t begin = 0;
    std::size_t length = 0;
    std::size_t next = std::string_view::npos;
};

Unit FindUnit(std::string_view head, std::string_view text, std::string_view tail) {
    const std::size_t found = text.find(head);
    if (found == std::string_view::npos) return {};
    const std::size_t begin = found + head.size();
    if (tail.empty()) return {begin, text.size() - begin, text.size()};
    const std::size_t end = text.find(tail, begin);
    if (end == std::string_view::npos) return {begin, 0, begin};
    return {begin, end - begin, end + tail.size()};
}

CString Lower(const char* text) {
    CString lower(text);
    lower.MakeLower();
    return lower;
}

}  // namespace
}  // namespace tk::util

int FindStringPos(const char* szPattern, const char* szText) {
    using namespace tk::util;
    return ToPosition(View(szText).find(View(szPattern)));
}

int FindStringNoCase(const char* szText, const char* szPattern) {
    using namespace tk::util;
    if (View(szPattern).empty()) return -1;
    return FindStringPos(Lower(szPattern), Lower(szText));
}

CString FindString(const char* szPattern, const char* szText) {
    using namespace tk::util;
    const std::string_view text = View(szText);
    const std::size_t position = text.find(View(szPattern));
    return position == std::string_view::npos ? CString() : ToText(text.substr(0, position));
}

CString GetUnit(const char* szHead, const char* szText, const char* szTail) {
    int position = 0;
    return GetUnitPos(szHead, szText, szTail, position);
}

CString GetUnitPos(const char* szHead, const char* szText, const char* szTail, int& nPosition) {
    using namespace tk::util;
    const std::string_view text = View(szText);
    const Unit unit = FindUnit(View(szHead), text, View(szTail));
    nPosition = ToPosition(unit.next);
    return ToText(text.substr(unit.begin, unit.length));
}

CString GetUnitNoCase(const char* szHead, const char* szText, const char* szTail, int& nPosition) {
    using namespace tk::util;
    const CString head = Lower(szHead);
    const CString text = Lower(szText);
    const CString tail = Lower(szTail);
    const Unit unit = FindUnit(View(head), View(text), View(tail));
    nPosition = ToPosition(unit.next);
    // Lower case takes the same number of bytes, so the place in the lowered text is the place in the given one.
    return ToText(View(szText).substr(unit.begin, unit.length));
}

CString GetSubString(const char* szMark, const char* szText, int bBefore, int nCount) {
    using namespace tk::util;
    const std::string_view mark = View(szMark);
    const std::string_view text = View(szText);
    const std::size_t position = text.find(mark);
    if (position == std::string_view::npos) return {};
    const std::size_t limit = nCount < 0 ? std::string_view::npos : static_cast<std::size_t>(nCount);
    if (bBefore == 0) return ToText(text.substr(position + mark.size(), limit));
    return ToText(text.substr(position > limit ? position - limit : 0, position > limit ? limit : position));
}
