// platform/wide_text.h - a UTF-16 copy of a text for one call of the platform.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <afx.h>

namespace tk::platform {

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

}  // namespace tk::platform
