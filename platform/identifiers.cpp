#include "platform/wide_text.h"
#include "tkkernel/platform.h"

CString StringFromGuid(const GUID& guid) {
    OLECHAR text[40] = {};
    const int length = StringFromGUID2(guid, text, static_cast<int>(std::size(text)));
    return length > 0 ? CString(text, length - 1) : CString();
}

GUID StringToGuid(const char* szText) {
    GUID guid = {};
    return SUCCEEDED(CLSIDFromString(tk::platform::WideText(szText).Get(), &guid)) ? guid : GUID{};
}

GUID CreateGuid() {
    GUID guid = {};
    return SUCCEEDED(CoCreateGuid(&guid)) ? guid : GUID{};
}
