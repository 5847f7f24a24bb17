// Texts of automation: length before the characters, zero bytes after them.
#include <algorithm>
#include <cstring>
#include <string>

#include "win32/automation/heap.h"
#include "win32/automation/text_blocks.h"
#include "win32/include/oleauto.h"

using tk::automation::GiveText;
using tk::automation::HeaderOf;
using tk::automation::kMaxTextBytes;
using tk::automation::TakeText;

namespace {

constexpr UINT kMaxCharacters = kMaxTextBytes / sizeof(OLECHAR);

void EndAt(void* text, std::uint32_t bytes) {
    std::memset(static_cast<char*>(text) + bytes, 0, sizeof(OLECHAR));
}

}  // namespace

BSTR SysAllocString(const OLECHAR* psz) {
    if (psz == nullptr) return nullptr;
    const std::size_t length = std::char_traits<OLECHAR>::length(psz);
    return length > kMaxCharacters ? nullptr : SysAllocStringLen(psz, static_cast<UINT>(length));
}

BSTR SysAllocStringLen(const OLECHAR* strIn, UINT ui) {
    if (ui > kMaxCharacters) return nullptr;
    const std::uint32_t bytes = ui * static_cast<std::uint32_t>(sizeof(OLECHAR));
    auto* text = static_cast<BSTR>(TakeText(bytes));
    if (text == nullptr) return nullptr;
    if (strIn != nullptr) std::memcpy(text, strIn, bytes);
    text[ui] = 0;
    return text;
}

BSTR SysAllocStringByteLen(LPCSTR psz, UINT len) {
    void* text = TakeText(len);
    if (text == nullptr) return nullptr;
    if (psz != nullptr) std::memcpy(text, psz, len);
    EndAt(text, len);
    return static_cast<BSTR>(text);
}

INT SysReAllocString(BSTR* pbstr, const OLECHAR* psz) {
    if (pbstr == nullptr) return 0;
    BSTR replacement = SysAllocString(psz);
    if (replacement == nullptr && psz != nullptr) return 0;
    SysFreeString(*pbstr);  // after the copy: psz may point into it
    *pbstr = replacement;
    return 1;
}

INT SysReAllocStringLen(BSTR* pbstr, const OLECHAR* psz, UINT len) {
    if (pbstr == nullptr || len > kMaxCharacters) return 0;
    const std::uint32_t bytes = len * static_cast<std::uint32_t>(sizeof(OLECHAR));
    BSTR old = *pbstr;
    if (old != nullptr && bytes + sizeof(OLECHAR) <= HeaderOf(old)->capacity) {
        if (psz != nullptr) std::memmove(old, psz, bytes);
        HeaderOf(old)->bytes = bytes;
        old[len] = 0;
        return 1;
    }
    BSTR replacement = SysAllocStringLen(psz, len);
    if (replacement == nullptr) return 0;
    if (psz == nullptr && old != nullptr) std::memcpy(replacement, old, std::min(bytes, HeaderOf(old)->bytes));
    SysFreeString(old);
    *pbstr = replacement;
    return 1;
}

void SysFreeString(BSTR bstrString) {
    GiveText(bstrString);
}

UINT SysStringLen(BSTR pbstr) {
    return pbstr == nullptr ? 0 : HeaderOf(pbstr)->bytes / static_cast<UINT>(sizeof(OLECHAR));
}

UINT SysStringByteLen(BSTR bstr) {
    return bstr == nullptr ? 0 : HeaderOf(bstr)->bytes;
}

HRESULT VarBstrCat(BSTR bstrLeft, BSTR bstrRight, LPBSTR pbstrResult) {
    if (pbstrResult == nullptr) return E_INVALIDARG;
    const std::uint64_t leftBytes = SysStringByteLen(bstrLeft);
    const std::uint64_t bytes = leftBytes + SysStringByteLen(bstrRight);
    if (bytes > kMaxTextBytes) return E_OUTOFMEMORY;
    BSTR joined = SysAllocStringByteLen(nullptr, static_cast<UINT>(bytes));
    if (joined == nullptr) return E_OUTOFMEMORY;
    if (bstrLeft != nullptr) std::memcpy(joined, bstrLeft, leftBytes);
    if (bstrRight != nullptr) std::memcpy(reinterpret_cast<char*>(joined) + leftBytes, bstrRight, bytes - leftBytes);
    *pbstrResult = joined;
    return S_OK;
}
