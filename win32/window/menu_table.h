// The menus of the process.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tkwin32/menus.h"

namespace tk::window {

struct MenuItem {
    UINT flags;
    UINT command;      // 0 for separators and sub-menus
    std::string text;  // GBK
    HMENU subMenu = nullptr;
};

struct Menu {
    std::vector<MenuItem> items;
    int defaultItem = -1;  // a position
};

/// @return null with ERROR_INVALID_MENU_HANDLE for what is no menu
std::shared_ptr<Menu> FindMenu(HMENU handle);

}  // namespace tk::window
