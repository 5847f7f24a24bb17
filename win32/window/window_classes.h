// The classes of windows: the system's, and those the program registers.
#pragma once

#include "win32/window/window_table.h"

namespace tk::window {

/// Counts a window to its class. @return null with ERROR_CANNOT_FIND_WND_CLASS
std::shared_ptr<WindowClass> TakeClass(LPCSTR name);
void GiveBackClass(WindowClass& windowClass);

}  // namespace tk::window
