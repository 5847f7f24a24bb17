#include <algorithm>
#include <cstring>
#include <map>
#include <utility>

#include "tkwin32/text.h"
#include "win32/window/window_classes.h"
#include "win32/window/window_table.h"
#include "winbase.h"

namespace tk::window {
namespace {

struct Windows {
    std::mutex lock;
    std::map<HWND, std::shared_ptr<Window>> all;  // in the order they were made
    std::uintptr_t last = 0x10000;
};

Windows& TheWindows() {
    static auto& windows = *new Windows;
    return windows;
}

std::shared_ptr<Window> MakeWindow(std::shared_ptr<WindowClass> windowClass, const CREATESTRUCTA& details) {
    auto window = std::make_shared<Window>();
    window->procedure = windowClass->procedure;
    window->windowClass = std::move(windowClass);
    window->parent = details.hwndParent;
    window->id = reinterpret_cast<LONG_PTR>(details.hMenu);
    window->style = details.style;
    window->exStyle = static_cast<LONG_PTR>(details.dwExStyle);
    window->module = reinterpret_cast<LONG_PTR>(details.hInstance);
    Windows& windows = TheWindows();
    const std::lock_guard lock(windows.lock);
    windows.last += 2;
    window->handle = reinterpret_cast<HWND>(windows.last);
    windows.all.emplace(window->handle, window);
    return window;
}

void Forget(Window& window) {
    {
        Windows& windows = TheWindows();
        const std::lock_guard lock(windows.lock);
        windows.all.erase(window.handle);
    }
    GiveBackClass(*window.windowClass);
}

std::vector<HWND> ChildrenOf(HWND parent) {
    Windows& windows = TheWindows();
    const std::lock_guard lock(windows.lock);
    std::vector<HWND> children;
    for (const auto& [handle, window] : windows.all) {
        if (window->parent == parent) children.push_back(handle);
    }
    return children;
}

/// @return false when it is being destroyed already
bool BeginEnd(Window& window) {
    const std::lock_guard lock(window.lock);
    return !std::exchange(window.ending, true);
}

LRESULT StoreText(Window& window, LPCSTR text) {
    const std::lock_guard lock(window.lock);
    window.text.assign(text != nullptr ? text : "");
    return TRUE;
}

LRESULT CopyText(Window& window, WPARAM room, char* buffer) {
    if (room == 0 || buffer == nullptr) return 0;
    const std::lock_guard lock(window.lock);
    const std::size_t length = text::WholeGbkPrefix(window.text, room - 1);
    std::memcpy(buffer, window.text.data(), length);
    buffer[length] = 0;
    return static_cast<LRESULT>(length);
}

/// The place of a number that GetWindowLongPtr tells; null when there is none.
LONG_PTR* PlaceOf(Window& window, int index) {
    switch (index) {
        case GWLP_HINSTANCE:
            return &window.module;
        case GWLP_ID:
            return &window.id;
        case GWL_STYLE:
            return &window.style;
        case GWL_EXSTYLE:
            return &window.exStyle;
        case GWLP_USERDATA:
            return &window.userData;
        default:
            SetLastError(ERROR_INVALID_INDEX);
            return nullptr;
    }
}

}  // namespace

std::shared_ptr<Window> FindWindow(HWND handle) {
    Windows& windows = TheWindows();
    const std::lock_guard lock(windows.lock);
    const auto found = windows.all.find(handle);
    if (found != windows.all.end()) return found->second;
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return nullptr;
}

}  // namespace tk::window

using namespace tk::window;

HWND CreateWindowExA(DWORD dwExStyle, LPCSTR lpClassName, LPCSTR lpWindowName, DWORD dwStyle, int X, int Y, int nWidth,
                     int nHeight, HWND hWndParent, HMENU hMenu, HINSTANCE hInstance, LPVOID lpParam) {
    if (lpClassName == nullptr) {
        SetLastError(ERROR_CANNOT_FIND_WND_CLASS);
        return nullptr;
    }
    if (hWndParent == HWND_MESSAGE) hWndParent = nullptr;
    if (hWndParent != nullptr && FindWindow(hWndParent) == nullptr) return nullptr;
    auto windowClass = TakeClass(lpClassName);
    if (windowClass == nullptr) return nullptr;
    CREATESTRUCTA details = {
        lpParam,      hInstance,   hMenu,    hWndParent, nHeight, nWidth, Y, X, static_cast<LONG>(dwStyle),
        lpWindowName, lpClassName, dwExStyle};
    const auto window = MakeWindow(std::move(windowClass), details);
    const auto argument = reinterpret_cast<LPARAM>(&details);
    if (SendMessageA(window->handle, WM_NCCREATE, 0, argument) == 0) {
        Forget(*window);
        return nullptr;
    }
    if (SendMessageA(window->handle, WM_CREATE, 0, argument) == -1) {
        DestroyWindow(window->handle);
        return nullptr;
    }
    return IsWindow(window->handle) ? window->handle : nullptr;
}

BOOL DestroyWindow(HWND hWnd) {
    const auto window = FindWindow(hWnd);
    if (window == nullptr || !BeginEnd(*window)) return FALSE;
    SendMessageA(hWnd, WM_DESTROY, 0, 0);
    for (const HWND child : ChildrenOf(hWnd))
        DestroyWindow(child);
    SendMessageA(hWnd, WM_NCDESTROY, 0, 0);
    Forget(*window);
    return TRUE;
}

BOOL IsWindow(HWND hWnd) {
    Windows& windows = TheWindows();
    const std::lock_guard lock(windows.lock);
    return windows.all.contains(hWnd);
}

LRESULT SendMessageA(HWND hWnd, UINT Msg, WPARAM wParam, LPARAM lParam) {
    const auto window = FindWindow(hWnd);
    if (window == nullptr) return 0;
    WNDPROC procedure = nullptr;
    {
        const std::lock_guard lock(window->lock);
        procedure = window->procedure;
    }
    return procedure(hWnd, Msg, wParam, lParam);
}

LRESULT DefWindowProcA(HWND hWnd, UINT Msg, WPARAM wParam, LPARAM lParam) {
    const auto window = FindWindow(hWnd);
    if (window == nullptr) return 0;
    switch (Msg) {
        case WM_NCCREATE: {
            const auto* details = reinterpret_cast<const CREATESTRUCTA*>(lParam);
            if (details != nullptr) StoreText(*window, details->lpszName);
            return TRUE;
        }
        case WM_SETTEXT:
            return StoreText(*window, reinterpret_cast<LPCSTR>(lParam));
        case WM_GETTEXT:
            return CopyText(*window, wParam, reinterpret_cast<char*>(lParam));
        case WM_GETTEXTLENGTH: {
            const std::lock_guard lock(window->lock);
            return static_cast<LRESULT>(window->text.size());
        }
        case WM_CLOSE:
            DestroyWindow(hWnd);
            return 0;
        default:
            return 0;
    }
}

LRESULT CallWindowProcA(WNDPROC lpPrevWndFunc, HWND hWnd, UINT Msg, WPARAM wParam, LPARAM lParam) {
    return lpPrevWndFunc != nullptr ? lpPrevWndFunc(hWnd, Msg, wParam, lParam) : 0;
}

HWND GetParent(HWND hWnd) {
    const auto window = FindWindow(hWnd);
    return window != nullptr ? window->parent : nullptr;
}

int GetDlgCtrlID(HWND hWnd) {
    return static_cast<int>(GetWindowLongPtrA(hWnd, GWLP_ID));
}

HWND GetDlgItem(HWND hDlg, int nIDDlgItem) {
    for (const HWND child : ChildrenOf(hDlg)) {
        if (GetDlgCtrlID(child) == nIDDlgItem) return child;
    }
    return nullptr;
}

int GetClassNameA(HWND hWnd, LPSTR lpClassName, int nMaxCount) {
    const auto window = FindWindow(hWnd);
    if (window == nullptr || lpClassName == nullptr || nMaxCount <= 0) return 0;
    const std::string& name = window->windowClass->name;
    const std::size_t length = tk::text::WholeGbkPrefix(name, static_cast<std::size_t>(nMaxCount) - 1);
    std::memcpy(lpClassName, name.data(), length);
    lpClassName[length] = 0;
    return static_cast<int>(length);
}

LONG_PTR GetWindowLongPtrA(HWND hWnd, int nIndex) {
    const auto window = FindWindow(hWnd);
    if (window == nullptr) return 0;
    if (nIndex == GWLP_HWNDPARENT) return reinterpret_cast<LONG_PTR>(window->parent);
    const std::lock_guard lock(window->lock);
    if (nIndex == GWLP_WNDPROC) return reinterpret_cast<LONG_PTR>(window->procedure);
    const LONG_PTR* place = PlaceOf(*window, nIndex);
    return place != nullptr ? *place : 0;
}

LONG_PTR SetWindowLongPtrA(HWND hWnd, int nIndex, LONG_PTR dwNewLong) {
    const auto window = FindWindow(hWnd);
    if (window == nullptr) return 0;
    const std::lock_guard lock(window->lock);
    if (nIndex == GWLP_WNDPROC) {
        return reinterpret_cast<LONG_PTR>(std::exchange(window->procedure, reinterpret_cast<WNDPROC>(dwNewLong)));
    }
    LONG_PTR* place = PlaceOf(*window, nIndex);
    return place != nullptr ? std::exchange(*place, dwNewLong) : 0;
}

BOOL SetWindowTextA(HWND hWnd, LPCSTR lpString) {
    return SendMessageA(hWnd, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(lpString)) != 0;
}

int GetWindowTextA(HWND hWnd, LPSTR lpString, int nMaxCount) {
    if (lpString == nullptr || nMaxCount <= 0) return 0;
    lpString[0] = 0;
    return static_cast<int>(
        SendMessageA(hWnd, WM_GETTEXT, static_cast<WPARAM>(nMaxCount), reinterpret_cast<LPARAM>(lpString)));
}

int GetWindowTextLengthA(HWND hWnd) {
    return static_cast<int>(SendMessageA(hWnd, WM_GETTEXTLENGTH, 0, 0));
}
