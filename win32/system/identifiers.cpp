#include <errno.h>
#include <sys/random.h>

#include <cstdlib>
#include <string_view>

#include "objbase.h"
#include "tkwin32/text.h"
#include "win32/system/class_registry.h"
#include "win32/system/guid_text.h"

namespace tk::system {
namespace {

constexpr int kBracedSize = static_cast<int>(kGuidDigits) + 3;  // with braces and terminator

template <class Char>
Char* TaskText(const Char* text, std::size_t length) {
    auto* copy = static_cast<Char*>(CoTaskMemAlloc((length + 1) * sizeof(Char)));
    if (copy == nullptr) return nullptr;
    std::char_traits<Char>::copy(copy, text, length);
    copy[length] = 0;
    return copy;
}

HRESULT BracedText(REFGUID guid, LPOLESTR* text) {
    if (text == nullptr) return E_INVALIDARG;
    OLECHAR buffer[kBracedSize];
    StringFromGUID2(guid, buffer, kBracedSize);
    *text = TaskText(buffer, kBracedSize - 1);
    return *text != nullptr ? S_OK : E_OUTOFMEMORY;
}

void FillRandom(void* target, std::size_t size) {
    auto* bytes = static_cast<unsigned char*>(target);
    while (size != 0) {
        const ssize_t got = getrandom(bytes, size, 0);
        if (got < 0 && errno != EINTR) std::abort();  // a predictable identifier would be worse
        if (got < 0) continue;
        bytes += got;
        size -= static_cast<std::size_t>(got);
    }
}

}  // namespace
}  // namespace tk::system

using namespace tk::system;

HRESULT CLSIDFromString(LPCOLESTR lpsz, LPCLSID pclsid) {
    if (pclsid == nullptr) return E_INVALIDARG;
    *pclsid = CLSID_NULL;
    if (lpsz == nullptr) return S_OK;
    const std::u16string_view text = lpsz;
    if (text.starts_with(u'{')) {
        const auto clsid = ParseBracedGuid(text);
        if (clsid) *pclsid = *clsid;
        return clsid ? S_OK : CO_E_CLASSSTRING;
    }
    return CLSIDFromProgID(lpsz, pclsid);
}

HRESULT CLSIDFromProgID(LPCOLESTR lpszProgID, LPCLSID lpclsid) {
    if (lpclsid == nullptr) return E_INVALIDARG;
    *lpclsid = CLSID_NULL;
    if (lpszProgID == nullptr) return E_INVALIDARG;
    const auto clsid = FindProgId(tk::text::Utf16ToUtf8(lpszProgID));
    if (clsid) *lpclsid = *clsid;
    return clsid ? S_OK : CO_E_CLASSSTRING;
}

HRESULT ProgIDFromCLSID(REFCLSID clsid, LPOLESTR* lplpszProgID) {
    if (lplpszProgID == nullptr) return E_INVALIDARG;
    *lplpszProgID = nullptr;
    const auto entry = FindClass(clsid);
    if (!entry || entry->progId.empty()) return REGDB_E_CLASSNOTREG;
    const std::u16string progId = tk::text::Utf8ToUtf16(entry->progId);
    *lplpszProgID = TaskText(progId.data(), progId.size());
    return *lplpszProgID != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT IIDFromString(LPCOLESTR lpsz, LPIID lpiid) {
    if (lpiid == nullptr) return E_INVALIDARG;
    *lpiid = IID_NULL;
    if (lpsz == nullptr) return S_OK;
    const auto iid = ParseBracedGuid(std::u16string_view(lpsz));
    if (iid) *lpiid = *iid;
    return iid ? S_OK : CO_E_IIDSTRING;
}

int StringFromGUID2(REFGUID rguid, LPOLESTR lpsz, int cchMax) {
    if (lpsz == nullptr || cchMax < kBracedSize) return 0;
    lpsz[0] = u'{';
    WriteGuid(rguid, lpsz + 1, kUpperDigits);
    lpsz[kGuidDigits + 1] = u'}';
    lpsz[kGuidDigits + 2] = 0;
    return kBracedSize;
}

HRESULT StringFromCLSID(REFCLSID rclsid, LPOLESTR* lplpsz) {
    return BracedText(rclsid, lplpsz);
}
HRESULT StringFromIID(REFIID rclsid, LPOLESTR* lplpsz) {
    return BracedText(rclsid, lplpsz);
}

HRESULT CoCreateGuid(GUID* pguid) {
    if (pguid == nullptr) return E_INVALIDARG;
    FillRandom(pguid, sizeof(GUID));
    pguid->Data3 = static_cast<USHORT>((pguid->Data3 & 0x0FFF) | 0x4000);
    pguid->Data4[0] = static_cast<BYTE>((pguid->Data4[0] & 0x3F) | 0x80);
    return S_OK;
}

RPC_STATUS UuidCreate(UUID* Uuid) {
    return CoCreateGuid(Uuid) == S_OK ? RPC_S_OK : RPC_S_INVALID_ARG;
}

RPC_STATUS UuidToStringA(const UUID* Uuid, RPC_CSTR* StringUuid) {
    char buffer[kGuidDigits];
    WriteGuid(Uuid != nullptr ? *Uuid : GUID_NULL, buffer, kLowerDigits);
    *StringUuid = reinterpret_cast<RPC_CSTR>(TaskText(buffer, kGuidDigits));
    return *StringUuid != nullptr ? RPC_S_OK : RPC_S_OUT_OF_MEMORY;
}

RPC_STATUS UuidFromStringA(RPC_CSTR StringUuid, UUID* Uuid) {
    if (StringUuid == nullptr) {
        *Uuid = GUID_NULL;
        return RPC_S_OK;
    }
    const auto uuid = ParseGuid(std::string_view(reinterpret_cast<const char*>(StringUuid)));
    if (!uuid) return RPC_S_INVALID_STRING_UUID;
    *Uuid = *uuid;
    return RPC_S_OK;
}

RPC_STATUS RpcStringFreeA(RPC_CSTR* String) {
    CoTaskMemFree(*String);
    *String = nullptr;
    return RPC_S_OK;
}
