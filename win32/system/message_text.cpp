#include <cstring>

#include "tkwin32/text.h"
#include "win32/system/message_inserts.h"
#include "win32/system/system_texts.h"
#include "winbase.h"

namespace tk::system {
namespace {

// The system speaks Chinese, and whatever of its languages is asked for by default.
constexpr DWORD kLanguages[] = {0x0000, 0x0400, 0x0800, 0x0004, 0x0804};

struct Request {
    DWORD flags;
    const void* source;
    DWORD code;
    DWORD language;
    va_list* arguments;
    bool wide;
};

/// The text before anything is filled in. @return the error
DWORD FindText(const Request& request, std::u16string& text) {
    if ((request.flags & FORMAT_MESSAGE_FROM_STRING) != 0) {
        if (request.source == nullptr) return ERROR_INVALID_PARAMETER;
        text = request.wide ? static_cast<const char16_t*>(request.source)
                            : text::GbkToUtf16(static_cast<const char*>(request.source));
        return NO_ERROR;
    }
    if ((request.flags & (FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_FROM_HMODULE)) == 0)
        return ERROR_INVALID_PARAMETER;
    // Shared objects carry no message tables.
    if ((request.flags & FORMAT_MESSAGE_FROM_SYSTEM) == 0) return ERROR_RESOURCE_TYPE_NOT_FOUND;
    const char16_t* found = FindSystemText(request.code);
    if (found == nullptr) return ERROR_MR_MID_NOT_FOUND;
    if (std::ranges::find(kLanguages, request.language) == std::end(kLanguages)) return ERROR_RESOURCE_LANG_NOT_FOUND;
    text = found;
    text += u"\r\n";
    return NO_ERROR;
}

MessageValues ValuesOf(const Request& request) {
    if (request.arguments == nullptr) return {};
    if ((request.flags & FORMAT_MESSAGE_ARGUMENT_ARRAY) == 0) return MessageValues(request.arguments);
    return MessageValues(reinterpret_cast<const DWORD_PTR*>(request.arguments));
}

DWORD MakeText(const Request& request, std::u16string& text) {
    std::u16string raw;
    if (const DWORD error = FindText(request, raw); error != NO_ERROR) return error;
    const MessageForm form = {(request.flags & FORMAT_MESSAGE_IGNORE_INSERTS) != 0, request.wide,
                              request.flags & FORMAT_MESSAGE_MAX_WIDTH_MASK};
    MessageValues values = ValuesOf(request);
    auto expanded = ExpandMessage(raw, form, values);
    if (!expanded) return ERROR_INVALID_PARAMETER;
    text = *std::move(expanded);
    return NO_ERROR;
}

/// Hands a text out as the flags ask. @return the error
template <class Char>
DWORD Store(const std::basic_string<Char>& text, DWORD flags, Char* buffer, DWORD size) {
    const std::size_t needed = text.size() + 1;
    if ((flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) != 0) {
        auto* allocated =
            static_cast<Char*>(LocalAlloc(LMEM_FIXED, std::max<std::size_t>(needed, size) * sizeof(Char)));
        if (allocated == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
        std::memcpy(buffer, &allocated, sizeof allocated);  // the buffer is the address of a pointer
        buffer = allocated;
    } else if (size < needed) {
        if (size != 0) buffer[0] = 0;
        return ERROR_INSUFFICIENT_BUFFER;
    }
    std::memcpy(buffer, text.c_str(), needed * sizeof(Char));
    return NO_ERROR;
}

template <class Char>
DWORD Answer(DWORD error, const std::basic_string<Char>& text) {
    if (error == NO_ERROR) return static_cast<DWORD>(text.size());
    SetLastError(error);
    return 0;
}

}  // namespace
}  // namespace tk::system

using namespace tk::system;

DWORD FormatMessageW(DWORD dwFlags, LPCVOID lpSource, DWORD dwMessageId, DWORD dwLanguageId, LPWSTR lpBuffer,
                     DWORD nSize, va_list* Arguments) {
    std::u16string text;
    DWORD error = lpBuffer != nullptr ? MakeText({dwFlags, lpSource, dwMessageId, dwLanguageId, Arguments, true}, text)
                                      : ERROR_INVALID_PARAMETER;
    if (error == NO_ERROR) error = Store(text, dwFlags, lpBuffer, nSize);
    return Answer(error, text);
}

DWORD FormatMessageA(DWORD dwFlags, LPCVOID lpSource, DWORD dwMessageId, DWORD dwLanguageId, LPSTR lpBuffer,
                     DWORD nSize, va_list* Arguments) {
    std::u16string text;
    DWORD error = lpBuffer != nullptr ? MakeText({dwFlags, lpSource, dwMessageId, dwLanguageId, Arguments, false}, text)
                                      : ERROR_INVALID_PARAMETER;
    std::string narrow;
    if (error == NO_ERROR) {
        narrow = tk::text::Utf16ToGbk(text);
        error = Store(narrow, dwFlags, lpBuffer, nSize);
    }
    return Answer(error, narrow);
}
