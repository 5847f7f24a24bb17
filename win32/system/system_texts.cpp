#include "win32/system/system_texts.h"

#include "winerror.h"

namespace tk::system {
namespace {

const char16_t* FindIn(std::span<const SystemText> texts, DWORD code) noexcept {
    const auto found = std::ranges::lower_bound(texts, code, {}, &SystemText::code);
    return found != texts.end() && found->code == code ? found->text : nullptr;
}

}  // namespace

const char16_t* FindSystemText(DWORD code) noexcept {
    for (const auto texts : {kGeneralTexts, kServiceTexts, kNetworkTexts, kComponentTexts}) {
        if (const char16_t* text = FindIn(texts, code)) return text;
    }
    constexpr DWORD kPlainCodeMask = 0xFFFF0000;
    constexpr DWORD kPlainCodeForm = 0x80000000 | (FACILITY_WIN32 << 16);
    return (code & kPlainCodeMask) == kPlainCodeForm ? FindSystemText(code & 0xFFFF) : nullptr;
}

}  // namespace tk::system
