#include "afx/text_codes.h"

#include <cstring>

#include "afx_exception.h"

namespace tk::afx {

int NarrowText(LPCWSTR text, int length, char* buffer, int room) noexcept {
    return WideCharToMultiByte(kTextCodePage, 0, text, length, buffer, room, nullptr, nullptr);
}

BSTR NewBstr(LPCSTR text) {
    if (text == nullptr) return nullptr;
    const std::size_t length = std::strlen(text);
    if (length > 0x3FFFFFFF) AfxThrowMemoryException();
    return NewBstr(text, static_cast<int>(length));
}

BSTR NewBstr(LPCSTR text, int length) {
    constexpr int kShort = 512;
    OLECHAR units[kShort];
    BSTR made = nullptr;
    if (length <= 0) {
        made = SysAllocStringLen(nullptr, 0);
    } else if (length <= kShort) {
        // A text never has more units than bytes.
        const int count = MultiByteToWideChar(kTextCodePage, 0, text, length, units, kShort);
        made = SysAllocStringLen(units, static_cast<UINT>(count));
    } else {
        const int count = MultiByteToWideChar(kTextCodePage, 0, text, length, nullptr, 0);
        made = SysAllocStringLen(nullptr, static_cast<UINT>(count));
        if (made != nullptr) MultiByteToWideChar(kTextCodePage, 0, text, length, made, count);
    }
    if (made == nullptr) AfxThrowMemoryException();
    return made;
}

}  // namespace tk::afx
