#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "tkwin32/text.h"
#include "win32/text/collation.h"
#include "win32/text/locale.h"
#include "windows.h"

namespace {

using tk::text::CollationOptions;

constexpr DWORD kKnownFlags = NORM_IGNORECASE | NORM_IGNORENONSPACE | NORM_IGNORESYMBOLS | LINGUISTIC_IGNORECASE |
                              LINGUISTIC_IGNOREDIACRITIC | NORM_IGNOREKANATYPE | NORM_IGNOREWIDTH |
                              NORM_LINGUISTIC_CASING | SORT_STRINGSORT | LOCALE_USE_CP_ACP;

CollationOptions OptionsOf(LCID locale, DWORD flags) noexcept {
    CollationOptions options;
    options.han = locale == tk::text::kChinese ? tk::text::HanOrder::Pinyin : tk::text::HanOrder::CodePoint;
    options.stringSort = (flags & SORT_STRINGSORT) != 0;
    options.ignoreSymbols = (flags & NORM_IGNORESYMBOLS) != 0;
    options.ignoreAccents = (flags & (NORM_IGNORENONSPACE | LINGUISTIC_IGNOREDIACRITIC)) != 0;
    unsigned forms = 0;
    if ((flags & (NORM_IGNORECASE | LINGUISTIC_IGNORECASE)) != 0) forms |= tk::text::kFormUpper;
    if ((flags & NORM_IGNOREKANATYPE) != 0) forms |= tk::text::kFormKatakana;
    if ((flags & NORM_IGNOREWIDTH) != 0) forms |= tk::text::kFormWidth;
    options.ignoredForms = static_cast<std::uint8_t>(forms);
    return options;
}

// A GBK text as UTF-16, on the stack when it is short.
class Wide {
public:
    explicit Wide(std::string_view text) {
        if (text.size() <= std::size(short_)) {
            view_ = {short_, tk::text::GbkToUtf16(text, short_, std::size(short_)).written};
        } else {
            long_ = tk::text::GbkToUtf16(text);
            view_ = long_;
        }
    }
    Wide(const Wide&) = delete;
    Wide& operator=(const Wide&) = delete;

    std::u16string_view View() const noexcept { return view_; }

private:
    WCHAR short_[256];
    std::u16string long_;
    std::u16string_view view_;
};

template <class Unit>
std::basic_string_view<Unit> View(const Unit* text, int length) noexcept {
    return length < 0 ? std::basic_string_view<Unit>(text)
                      : std::basic_string_view<Unit>(text, static_cast<std::size_t>(length));
}

int Fail(DWORD error) noexcept {
    SetLastError(error);
    return 0;
}

// What is wrong with the arguments, ERROR_SUCCESS when nothing is.
DWORD Check(LCID locale, DWORD flags, const void* first, const void* second) noexcept {
    if (first == nullptr || second == nullptr || tk::text::ResolveLocale(locale) == 0) return ERROR_INVALID_PARAMETER;
    return (flags & ~kKnownFlags) != 0 ? ERROR_INVALID_FLAGS : ERROR_SUCCESS;
}

int Result(int order) noexcept {
    return order < 0 ? CSTR_LESS_THAN : order > 0 ? CSTR_GREATER_THAN : CSTR_EQUAL;
}

template <class Unit, class CompareUnits>
int ListCompare(const Unit* first, const Unit* second, DWORD flags, CompareUnits compare) noexcept {
    if (first == nullptr || second == nullptr) return (first != nullptr) - (second != nullptr);
    const int result = compare(GetThreadLocale(), flags, first, -1, second, -1);
    if (result != 0) return result - CSTR_EQUAL;
    const int order = std::basic_string_view<Unit>(first).compare(second);
    return (order > 0) - (order < 0);
}

}  // namespace

int WINAPI CompareStringW(LCID locale, DWORD flags, LPCWSTR first, int firstLength, LPCWSTR second, int secondLength) {
    if (const DWORD error = Check(locale, flags, first, second); error != ERROR_SUCCESS) return Fail(error);
    const CollationOptions options = OptionsOf(tk::text::ResolveLocale(locale), flags);
    return Result(tk::text::Compare(View(first, firstLength), View(second, secondLength), options));
}

int WINAPI CompareStringA(LCID locale, DWORD flags, LPCSTR first, int firstLength, LPCSTR second, int secondLength) {
    if (const DWORD error = Check(locale, flags, first, second); error != ERROR_SUCCESS) return Fail(error);
    try {
        const Wide left(View(first, firstLength));
        const Wide right(View(second, secondLength));
        const CollationOptions options = OptionsOf(tk::text::ResolveLocale(locale), flags);
        return Result(tk::text::Compare(left.View(), right.View(), options));
    } catch (const std::bad_alloc&) {
        return Fail(ERROR_NOT_ENOUGH_MEMORY);
    }
}

int WINAPI lstrcmpA(LPCSTR first, LPCSTR second) {
    return ListCompare(first, second, 0, CompareStringA);
}

int WINAPI lstrcmpW(LPCWSTR first, LPCWSTR second) {
    return ListCompare(first, second, 0, CompareStringW);
}

int WINAPI lstrcmpiA(LPCSTR first, LPCSTR second) {
    return ListCompare(first, second, NORM_IGNORECASE, CompareStringA);
}

int WINAPI lstrcmpiW(LPCWSTR first, LPCWSTR second) {
    return ListCompare(first, second, NORM_IGNORECASE, CompareStringW);
}
