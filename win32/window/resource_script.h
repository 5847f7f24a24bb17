// Resource scripts: the texts and menus of a module.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "windef.h"

namespace tk::window {

struct MenuTemplate {
    struct Item {
        UINT flags;  // MF_...
        UINT command;
        std::string text;         // GBK
        std::vector<Item> items;  // of a sub-menu
    };
    std::vector<Item> items;
};

struct ResourceScript {
    std::map<UINT, std::string> texts;          // GBK
    std::map<std::string, MenuTemplate> menus;  // by name in capitals, or by number as text
};

/// @param includes  gives the content of a header the script includes; empty when there is none
ResourceScript ParseResourceScript(std::string_view content,
                                   std::string (*include)(const std::string& name, void* data), void* data);

}  // namespace tk::window
