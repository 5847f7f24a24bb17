#include "win32/window/window_classes.h"

#include <strings.h>

#include <algorithm>

#include "tkwin32/resources.h"
#include "winbase.h"

namespace tk::window {
namespace {

struct Classes {
    std::mutex lock;
    std::vector<std::shared_ptr<WindowClass>> all;
    ATOM last = 0xC000;
};

Classes& TheClasses() {
    static Classes& classes = []() -> Classes& {
        auto& made = *new Classes;
        for (const auto& [name, procedure] : {std::pair<const char*, WNDPROC>("Static", &DefWindowProcA),
                                              {"ListBox", &ListProcedure},
                                              {"ComboBox", &ListProcedure}}) {
            made.all.push_back(std::make_shared<WindowClass>(WindowClass{name, procedure, nullptr, made.last++}));
        }
        return made;
    }();
    return classes;
}

/// The lock is held.
auto FindClass(Classes& classes, LPCSTR name) {
    return std::ranges::find_if(classes.all, [&](const auto& known) {
        if (IS_INTRESOURCE(name)) return known->number == static_cast<ATOM>(reinterpret_cast<ULONG_PTR>(name));
        return strcasecmp(known->name.c_str(), name) == 0;
    });
}

}  // namespace

std::shared_ptr<WindowClass> TakeClass(LPCSTR name) {
    Classes& classes = TheClasses();
    const std::lock_guard lock(classes.lock);
    const auto found = FindClass(classes, name);
    if (found == classes.all.end()) {
        SetLastError(ERROR_CANNOT_FIND_WND_CLASS);
        return nullptr;
    }
    ++(*found)->windows;
    return *found;
}

void GiveBackClass(WindowClass& windowClass) {
    Classes& classes = TheClasses();
    const std::lock_guard lock(classes.lock);
    --windowClass.windows;
}

}  // namespace tk::window

using namespace tk::window;

ATOM RegisterClassA(const WNDCLASSA* lpWndClass) {
    if (lpWndClass == nullptr || lpWndClass->lpfnWndProc == nullptr || IS_INTRESOURCE(lpWndClass->lpszClassName) ||
        *lpWndClass->lpszClassName == '\0') {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    Classes& classes = TheClasses();
    const std::lock_guard lock(classes.lock);
    if (FindClass(classes, lpWndClass->lpszClassName) != classes.all.end()) {
        SetLastError(ERROR_CLASS_ALREADY_EXISTS);
        return 0;
    }
    classes.all.push_back(std::make_shared<WindowClass>(
        WindowClass{lpWndClass->lpszClassName, lpWndClass->lpfnWndProc, lpWndClass->hInstance, classes.last}));
    return classes.last++;
}

BOOL UnregisterClassA(LPCSTR lpClassName, HINSTANCE) {
    Classes& classes = TheClasses();
    const std::lock_guard lock(classes.lock);
    const auto found = FindClass(classes, lpClassName);
    const bool systems = found != classes.all.end() && found - classes.all.begin() < 3;
    if (found == classes.all.end() || systems) {
        SetLastError(ERROR_CLASS_DOES_NOT_EXIST);
        return FALSE;
    }
    if ((*found)->windows != 0) {
        SetLastError(ERROR_CLASS_HAS_WINDOWS);
        return FALSE;
    }
    classes.all.erase(found);
    return TRUE;
}
