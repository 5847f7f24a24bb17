#include "win32/kernel/objects.h"

#include <new>
#include <string_view>

#include "tkwin32/text.h"
#include "winbase.h"

namespace tk::kernel {

GivenName::GivenName(LPCSTR name) : given(name != nullptr) {
    if (given) text = text::GbkToUtf16(name);
}
GivenName::GivenName(LPCWSTR name) : given(name != nullptr) {
    if (given) text = name;
}

DWORD CleanName(std::u16string& name) noexcept {
    if (name.size() > kMostName) return ERROR_FILENAME_EXCED_RANGE;
    for (const std::u16string_view space : {u"Local", u"Global", u"Session"}) {
        if (name == space) return ERROR_INVALID_HANDLE;  // there is something of that name, and no object of any kind
    }
    for (const std::u16string_view prefix : {u"Local\\", u"Global\\"}) {
        if (!name.starts_with(prefix)) continue;
        name.erase(0, prefix.size());
        break;
    }
    if (name.empty()) return ERROR_INVALID_HANDLE;
    const std::size_t backslash = name.find(u'\\');
    if (backslash == std::u16string::npos) return NO_ERROR;
    return backslash == 0 ? ERROR_BAD_PATHNAME : ERROR_PATH_NOT_FOUND;
}

namespace {

/// What generic rights mean for a kind of object.
DWORD MapAccess(DWORD access, DWORD all, DWORD modify) noexcept {
    DWORD mapped = access & all;
    if ((access & (GENERIC_ALL | MAXIMUM_ALLOWED)) != 0) mapped |= all;
    if ((access & GENERIC_READ) != 0) mapped |= READ_CONTROL | (all & 1);
    if ((access & GENERIC_WRITE) != 0) mapped |= READ_CONTROL | modify;
    if ((access & GENERIC_EXECUTE) != 0) mapped |= READ_CONTROL | SYNCHRONIZE;
    return mapped;
}

HANDLE Fail(DWORD error) noexcept {
    SetLastError(error);
    return nullptr;
}

HANDLE HandleOf(const NamedUse& use, DWORD access, bool inherit) noexcept {
    auto* target = new (std::nothrow) Target(use);
    if (target != nullptr) return OpenHandle(target, access, inherit);
    NamedObjects::Release(*use.objects, use.slot);
    return Fail(ERROR_NOT_ENOUGH_MEMORY);
}

}  // namespace

HANDLE CreateObject(const GivenName& name, const Initial& initial, bool owned, LPSECURITY_ATTRIBUTES attributes,
                    DWORD allAccess) noexcept {
    return Made([&] {
        const bool inherit = attributes != nullptr && attributes->bInheritHandle != FALSE;
        HANDLE handle = nullptr;
        bool existed = false;
        if (name.text.empty()) {
            auto* target = new (std::nothrow) Target(initial, owned);
            if (target == nullptr) return Fail(ERROR_NOT_ENOUGH_MEMORY);
            handle = OpenHandle(target, allAccess, inherit);
        } else {
            std::u16string cleaned = name.text;
            if (const DWORD error = CleanName(cleaned); error != NO_ERROR) return Fail(error);
            const NamedUse use = NamedObjects::Use(cleaned, initial.kind, &initial, owned);
            if (use.objects == nullptr) return Fail(use.error);
            existed = use.existed;
            handle = HandleOf(use, allAccess, inherit);
        }
        if (handle != nullptr) SetLastError(existed ? ERROR_ALREADY_EXISTS : NO_ERROR);
        return handle;
    });
}

HANDLE OpenObject(const GivenName& name, Kind kind, DWORD access, BOOL inherit, DWORD allAccess,
                  DWORD modifyAccess) noexcept {
    return Made([&] {
        if (!name.given) return Fail(ERROR_INVALID_PARAMETER);
        std::u16string cleaned = name.text;
        if (const DWORD error = CleanName(cleaned); error != NO_ERROR) return Fail(error);
        const NamedUse use = NamedObjects::Use(cleaned, kind, nullptr, false);
        if (use.objects == nullptr) return Fail(use.error);
        const DWORD mapped = MapAccess(access, allAccess, modifyAccess);
        if (mapped == 0) {
            NamedObjects::Release(*use.objects, use.slot);
            return Fail(ERROR_ACCESS_DENIED);
        }
        return HandleOf(use, mapped, inherit != FALSE);
    });
}

}  // namespace tk::kernel
