#include <windows.h>

#include <rpc.h>

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

CString StringFromUuid(const GUID& uuid) {
    GUID copied = uuid;  // some declarations ask for one that may be changed
    RPC_CSTR text = nullptr;
    if (UuidToStringA(&copied, &text) != RPC_S_OK) return CString();
    CString copy(reinterpret_cast<const char*>(text));
    RpcStringFreeA(&text);
    return copy;
}

GUID StringToUuid(const char* szText) {
    GUID uuid = {};
    CString text(szText);  // the platform takes a text it might change
    const auto writable = reinterpret_cast<RPC_CSTR>(text.GetBuffer(0));
    return UuidFromStringA(writable, &uuid) == RPC_S_OK ? uuid : GUID{};
}

GUID CreateUuid() {
    GUID uuid = {};
    UuidCreate(&uuid);
    return uuid;
}
