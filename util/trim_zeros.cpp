#include "tkkernel/util.h"
#include "util/text.h"

namespace {

/// Whether the integer a text begins with is 0, whatever its length; a text without one counts as 0.
bool BeginsWithZero(std::string_view text) {
    std::size_t at = text.find_first_not_of(" \t\n\v\f\r");
    if (at == std::string_view::npos) return true;
    if (text[at] == '-' || text[at] == '+') ++at;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
        if (text[at] != '0') return false;
    }
    return true;
}

}  // namespace

CString TruncDouble(CString& text) {
    const std::string_view number = tk::util::View(text);
    if (number.find('.') == std::string_view::npos) return BeginsWithZero(number) ? CString() : text;

    const std::size_t last = number.find_last_not_of('0');  // the point at the latest
    if (number[last] != '.') return tk::util::ToText(number.substr(0, last + 1));
    const std::string_view whole = number.substr(0, last);
    return BeginsWithZero(whole) ? CString() : tk::util::ToText(whole);
}
