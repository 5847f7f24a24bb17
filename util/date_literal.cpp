#include <afxdisp.h>

#include "tkkernel/util.h"
#include "util/text.h"

namespace {

constexpr std::size_t kLiteralBytes = 64;  // with the terminator
constexpr char kPlainForm[] = "'%s'";
constexpr char kOracleForm[] = "TO_DATE('%s','YYYY-MM-DD HH24:MI:SS')";

}  // namespace

CString GetCurDate(const char* szFormat) {
    return COleDateTime::GetCurrentTime().Format(tk::util::OrEmpty(szFormat));
}

CString GetDateString(const char* szText, int bOracle) {
    using namespace tk::util;
    const std::string_view text = View(szText);
    if (text.empty()) return {};
    const CString value = text.find('%') != std::string_view::npos ? GetCurDate(szText) : CString(szText);
    CString literal;
    // Contract: the text stands in the literal as it is; its quotes are not doubled.
    literal.Format(bOracle != 0 ? kOracleForm : kPlainForm, static_cast<LPCTSTR>(value));
    // Contract: no literal is longer than its buffer.
    return ToText(WholeCharacters(View(literal), kLiteralBytes - 1));
}
