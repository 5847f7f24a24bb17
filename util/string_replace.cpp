#include "tkkernel/util.h"
#include "util/text.h"

void ReplaceTextA(CString& text, const char* szOld, const char* szNew) {
    text.Replace(szOld, szNew);
}

CString ReplaceString(const char* szText, const char* szOld, const char* szNew) {
    using namespace tk::util;
    const std::string_view text = View(szText);
    const std::string_view oldText = View(szOld);
    const std::string_view newText = View(szNew);
    // Contract: a replacement longer than the whole text gives the empty text.
    if (oldText.empty() || newText.size() > text.size()) return {};

    CString result;
    std::size_t begin = 0;
    std::size_t found;
    while ((found = text.find(oldText, begin)) != std::string_view::npos) {
        result.Append(text.data() + begin, static_cast<int>(found - begin));
        result.Append(newText.data(), static_cast<int>(newText.size()));
        begin = found + oldText.size();
    }
    // Contract: what follows the last occurrence is not copied.
    return result;
}
