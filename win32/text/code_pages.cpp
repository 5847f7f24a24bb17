#include <cstring>
#include <string_view>

#include "tkwin32/text.h"
#include "win32/text/gbk_output.h"
#include "win32/text/gbk_tables.h"
#include "windows.h"

namespace {

using tk::text::Converted;

constexpr UINT kSystemCodePage = 936;

// 0 for a code page that is not known.
constexpr UINT Resolve(UINT codePage) {
    switch (codePage) {
        case CP_ACP:
        case CP_OEMCP:
        case CP_THREAD_ACP:
            return kSystemCodePage;
        case kSystemCodePage:
        case CP_UTF8:
            return codePage;
        default:
            return 0;
    }
}

int Fail(DWORD error) {
    SetLastError(error);
    return 0;
}

// What both functions refuse before they look at the text.
template <class In, class Out>
bool ValidBuffers(const In* source, int length, const Out* target, int room) {
    return source != nullptr && length != 0 && room >= 0 && (target != nullptr || room == 0) &&
           static_cast<const void*>(source) != static_cast<const void*>(target);
}

template <class Unit>
std::basic_string_view<Unit> Source(const Unit* text, int length) {
    if (length >= 0) return {text, static_cast<std::size_t>(length)};
    return {text, std::char_traits<Unit>::length(text) + 1};
}

// Runs a conversion into the caller's buffer, or, when that has no room at all, piece by piece to count.
template <class In, class Out, class Convert>
int Run(std::basic_string_view<In> source, Out* target, int room, bool strict, bool* replaced, Convert convert) {
    Converted all = {};
    if (room > 0) {
        all = convert(source, target, static_cast<std::size_t>(room));
    } else {
        Out piece[1024];
        while (all.read < source.size()) {
            const Converted some = convert(source.substr(all.read), piece, std::size(piece));
            all.read += some.read;
            all.written += some.written;
            all.replaced |= some.replaced;
        }
    }
    if (replaced != nullptr) *replaced = all.replaced;
    if (strict && all.replaced) return Fail(ERROR_NO_UNICODE_TRANSLATION);
    if (all.read < source.size()) return Fail(ERROR_INSUFFICIENT_BUFFER);
    if (all.written > 0x7FFFFFFF) return Fail(ERROR_INVALID_PARAMETER);  // the count does not fit the result
    return static_cast<int>(all.written);
}

}  // namespace

int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR text, int bytes, LPWSTR wide, int units) {
    const UINT page = Resolve(codePage);
    if (page == 0 || !ValidBuffers(text, bytes, wide, units)) return Fail(ERROR_INVALID_PARAMETER);
    const DWORD known = page == CP_UTF8 ? MB_ERR_INVALID_CHARS : MB_ERR_INVALID_CHARS | MB_PRECOMPOSED;
    if ((flags & ~known) != 0) return Fail(ERROR_INVALID_FLAGS);

    const std::string_view source = Source(text, bytes);
    const bool strict = (flags & MB_ERR_INVALID_CHARS) != 0;
    const auto convert = [page](std::string_view from, WCHAR* to, std::size_t room) {
        return page == CP_UTF8 ? tk::text::Utf8ToUtf16(from, to, room) : tk::text::GbkToUtf16(from, to, room);
    };
    return Run(source, wide, units, strict, nullptr, convert);
}

int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int units, LPSTR text, int bytes,
                               LPCSTR defaultChar, LPBOOL usedDefaultChar) {
    const UINT page = Resolve(codePage);
    if (page == 0 || !ValidBuffers(wide, units, text, bytes)) return Fail(ERROR_INVALID_PARAMETER);
    const std::u16string_view source = Source(wide, units);

    if (page == CP_UTF8) {
        if ((flags & ~WC_ERR_INVALID_CHARS) != 0) return Fail(ERROR_INVALID_FLAGS);
        if (defaultChar != nullptr || usedDefaultChar != nullptr) return Fail(ERROR_INVALID_PARAMETER);
        const auto convert = [](std::u16string_view from, char* to, std::size_t room) {
            return tk::text::Utf16ToUtf8(from, to, room);
        };
        return Run(source, text, bytes, (flags & WC_ERR_INVALID_CHARS) != 0, nullptr, convert);
    }

    if ((flags & ~WC_NO_BEST_FIT_CHARS) != 0) return Fail(ERROR_INVALID_FLAGS);
    tk::text::GbkDefault instead;
    if (defaultChar != nullptr) {
        const bool pair = tk::text::IsGbkLead(defaultChar[0]) && defaultChar[1] != 0;
        instead = {{defaultChar[0], pair ? defaultChar[1] : '\0'}, pair ? std::size_t{2} : std::size_t{1}};
    }
    const auto convert = [&instead](std::u16string_view from, char* to, std::size_t room) {
        return tk::text::Utf16ToGbk(from, to, room, instead);
    };
    bool replaced = false;
    const int result = Run(source, text, bytes, false, &replaced, convert);
    if (usedDefaultChar != nullptr) *usedDefaultChar = replaced ? TRUE : FALSE;
    return result;
}

UINT WINAPI GetACP() {
    return kSystemCodePage;
}

UINT WINAPI GetOEMCP() {
    return kSystemCodePage;
}

BOOL WINAPI IsValidCodePage(UINT codePage) {
    return codePage == kSystemCodePage || codePage == CP_UTF8;
}

BOOL WINAPI GetCPInfo(UINT codePage, LPCPINFO info) {
    const UINT page = Resolve(codePage);
    if (page == 0 || info == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    *info = {};
    info->DefaultChar[0] = '?';
    info->MaxCharSize = page == CP_UTF8 ? 4 : 2;
    if (page == kSystemCodePage) {
        info->LeadByte[0] = tk::text::kFirstLead;
        info->LeadByte[1] = tk::text::kLastLead;
    }
    return TRUE;
}

BOOL WINAPI IsDBCSLeadByte(BYTE byte) {
    return tk::text::IsGbkLead(static_cast<char>(byte));
}

BOOL WINAPI IsDBCSLeadByteEx(UINT codePage, BYTE byte) {
    const UINT page = Resolve(codePage);
    if (page == 0) return Fail(ERROR_INVALID_PARAMETER);
    return page == kSystemCodePage && IsDBCSLeadByte(byte);
}
