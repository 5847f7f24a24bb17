#include "tkkernel/util.h"

namespace {

constexpr LCID kLocale = 0x400;
constexpr ULONG kNoUserOverride = 0x80000000;

/// A text for the platform's parsers, freed with its scope.
class WideText {
public:
    explicit WideText(const char* text) : text_(CString(text).AllocSysString()) {}
    WideText(const WideText&) = delete;
    WideText& operator=(const WideText&) = delete;
    ~WideText() { SysFreeString(text_); }

    BSTR Get() const { return text_; }

private:
    BSTR text_;
};

}  // namespace

CString DecimalToString(DECIMAL value) {
    BSTR wide = nullptr;
    if (FAILED(VarBstrFromDec(&value, kLocale, kNoUserOverride, &wide))) return {};
    CString text(wide, static_cast<int>(SysStringLen(wide)));
    SysFreeString(wide);
    return text;
}

double DecimalToDouble(DECIMAL value) {
    double number = 0.0;
    return SUCCEEDED(VarR8FromDec(&value, &number)) ? number : 0.0;
}

DECIMAL StringToDecimal(const char* szText) {
    DECIMAL number = {};
    return SUCCEEDED(VarDecFromStr(WideText(szText).Get(), kLocale, kNoUserOverride, &number)) ? number : DECIMAL{};
}

double StringToDouble(const char* szText) {
    double number = 0.0;
    return SUCCEEDED(VarR8FromStr(WideText(szText).Get(), kLocale, kNoUserOverride, &number)) ? number : 0.0;
}
