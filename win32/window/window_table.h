// The windows of the process and their classes.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "tkwin32/windows.h"
#include "win32/window/item_list.h"

namespace tk::window {

struct WindowClass {
    std::string name;  // GBK, as registered
    WNDPROC procedure;
    HINSTANCE module;
    ATOM number;
    int windows = 0;
};

struct Window {
    HWND handle;
    std::shared_ptr<WindowClass> windowClass;
    HWND parent;
    bool ending = false;

    // Guarded by the lock; nobody holds it while a procedure runs.
    std::mutex lock;
    WNDPROC procedure;
    std::string text;  // GBK
    LONG_PTR id;
    LONG_PTR style;
    LONG_PTR exStyle;
    LONG_PTR module;
    LONG_PTR userData = 0;
    ItemList items;  // of a control
};

/// @return null with ERROR_INVALID_WINDOW_HANDLE for what is no window
std::shared_ptr<Window> FindWindow(HWND handle);

/// The procedure of the controls that keep a list.
LRESULT CALLBACK ListProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace tk::window
