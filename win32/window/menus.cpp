#include <cstring>
#include <map>
#include <mutex>

#include "tkwin32/text.h"
#include "tkwin32/windows.h"
#include "win32/system/dialog_program.h"
#include "win32/window/menu_table.h"
#include "winbase.h"

namespace tk::window {
namespace {

constexpr auto kNone = static_cast<UINT>(-1);
constexpr int kDeepest = 16;  // a menu that holds itself has no end

struct Menus {
    std::mutex lock;
    std::map<HMENU, std::shared_ptr<Menu>> all;
    std::uintptr_t last = 0x20000;
};

Menus& TheMenus() {
    static auto& menus = *new Menus;
    return menus;
}

std::shared_ptr<const MenuItem> ItemOf(const std::shared_ptr<Menu>& menu, const MenuItem& item) {
    return {menu, &item};
}

/// An item, by its position or by its command in the menu or one below it; null when there is none. It holds its menu,
/// which another thread may destroy.
std::shared_ptr<const MenuItem> FindItem(HMENU handle, UINT item, UINT flags, int depth = 0) {
    const auto menu = FindMenu(handle);
    if (menu == nullptr || depth > kDeepest) return nullptr;
    if ((flags & MF_BYPOSITION) != 0) return item < menu->items.size() ? ItemOf(menu, menu->items[item]) : nullptr;
    for (const MenuItem& candidate : menu->items) {
        if (candidate.subMenu != nullptr) {
            if (auto found = FindItem(candidate.subMenu, item, flags, depth + 1)) return found;
        } else if (candidate.command == item && (candidate.flags & MF_SEPARATOR) == 0) {
            return ItemOf(menu, candidate);
        }
    }
    return nullptr;
}

/// The label as it is shown: without the mark of its letter and without the key behind it.
std::string LabelOf(const MenuItem& item) {
    const std::string text = text::GbkToUtf8(item.text);
    std::string label;
    for (std::size_t i = 0; i < text.size() && text[i] != '\t'; ++i) {
        if (text[i] == '&' && i + 1 < text.size()) ++i;
        label += text[i];
    }
    return label;
}

struct Choices {
    std::vector<std::string> labels;
    std::vector<UINT> commands;
};

void Collect(HMENU handle, const std::string& path, Choices& choices, int depth = 0) {
    const auto menu = FindMenu(handle);
    if (menu == nullptr || depth > kDeepest) return;
    for (const MenuItem& item : menu->items) {
        if ((item.flags & (MF_SEPARATOR | MF_GRAYED | MF_DISABLED)) != 0) continue;
        const std::string label = path + LabelOf(item);
        if (item.subMenu != nullptr) {
            Collect(item.subMenu, label + " > ", choices, depth + 1);
        } else {
            choices.labels.push_back((item.flags & MF_CHECKED) != 0 ? "* " + label : label);
            choices.commands.push_back(item.command);
        }
    }
}

}  // namespace

std::shared_ptr<Menu> FindMenu(HMENU handle) {
    Menus& menus = TheMenus();
    const std::lock_guard lock(menus.lock);
    const auto found = menus.all.find(handle);
    if (found != menus.all.end()) return found->second;
    SetLastError(ERROR_INVALID_MENU_HANDLE);
    return nullptr;
}

}  // namespace tk::window

using namespace tk::window;

HMENU CreateMenu() {
    Menus& menus = TheMenus();
    const std::lock_guard lock(menus.lock);
    menus.last += 2;
    const auto handle = reinterpret_cast<HMENU>(menus.last);
    menus.all.emplace(handle, std::make_shared<Menu>());
    return handle;
}

HMENU CreatePopupMenu() {
    return CreateMenu();
}

BOOL DestroyMenu(HMENU hMenu) {
    const auto menu = FindMenu(hMenu);
    if (menu == nullptr) return FALSE;
    {
        Menus& menus = TheMenus();
        const std::lock_guard lock(menus.lock);
        menus.all.erase(hMenu);  // first: it may hold itself
    }
    for (const MenuItem& item : menu->items) {
        if (item.subMenu != nullptr) DestroyMenu(item.subMenu);
    }
    return TRUE;
}

BOOL IsMenu(HMENU hMenu) {
    Menus& menus = TheMenus();
    const std::lock_guard lock(menus.lock);
    return menus.all.contains(hMenu);
}

BOOL AppendMenuA(HMENU hMenu, UINT uFlags, UINT_PTR uIDNewItem, LPCSTR lpNewItem) {
    const auto menu = FindMenu(hMenu);
    if (menu == nullptr) return FALSE;
    MenuItem item{uFlags, 0, {}, nullptr};
    if ((uFlags & MF_POPUP) != 0) {
        item.subMenu = reinterpret_cast<HMENU>(uIDNewItem);
        if (FindMenu(item.subMenu) == nullptr) return FALSE;
    } else if ((uFlags & MF_SEPARATOR) == 0) {
        item.command = static_cast<UINT>(uIDNewItem);
    }
    if ((uFlags & MF_SEPARATOR) == 0 && lpNewItem != nullptr) item.text.assign(lpNewItem);
    menu->items.push_back(std::move(item));
    return TRUE;
}

int GetMenuItemCount(HMENU hMenu) {
    const auto menu = FindMenu(hMenu);
    return menu != nullptr ? static_cast<int>(menu->items.size()) : -1;
}

UINT GetMenuItemID(HMENU hMenu, int nPos) {
    const auto item = FindItem(hMenu, static_cast<UINT>(nPos), MF_BYPOSITION);
    return item != nullptr && item->subMenu == nullptr ? item->command : kNone;
}

UINT GetMenuState(HMENU hMenu, UINT uId, UINT uFlags) {
    const auto item = FindItem(hMenu, uId, uFlags);
    if (item == nullptr) return kNone;
    if (item->subMenu == nullptr) return item->flags;
    return (item->flags & 0xFF) | static_cast<UINT>(GetMenuItemCount(item->subMenu)) << 8;
}

int GetMenuStringA(HMENU hMenu, UINT uIDItem, LPSTR lpString, int cchMax, UINT flags) {
    const auto item = FindItem(hMenu, uIDItem, flags);
    if (item == nullptr) return 0;
    if (lpString == nullptr || cchMax <= 0) return static_cast<int>(item->text.size());
    const std::size_t length = tk::text::WholeGbkPrefix(item->text, static_cast<std::size_t>(cchMax) - 1);
    std::memcpy(lpString, item->text.data(), length);
    lpString[length] = 0;
    return static_cast<int>(length);
}

HMENU GetSubMenu(HMENU hMenu, int nPos) {
    const auto item = FindItem(hMenu, static_cast<UINT>(nPos), MF_BYPOSITION);
    return item != nullptr ? item->subMenu : nullptr;
}

BOOL SetMenuDefaultItem(HMENU hMenu, UINT uItem, UINT fByPos) {
    const auto menu = FindMenu(hMenu);
    if (menu == nullptr) return FALSE;
    if (uItem == kNone) {
        menu->defaultItem = -1;
        return TRUE;
    }
    for (std::size_t i = 0; i < menu->items.size(); ++i) {
        const MenuItem& item = menu->items[i];
        if (fByPos != 0 ? i == uItem
                        : item.subMenu == nullptr && (item.flags & MF_SEPARATOR) == 0 && item.command == uItem) {
            menu->defaultItem = static_cast<int>(i);
            return TRUE;
        }
    }
    SetLastError(ERROR_MENU_ITEM_NOT_FOUND);
    return FALSE;
}

UINT GetMenuDefaultItem(HMENU hMenu, UINT fByPos, UINT) {
    const auto menu = FindMenu(hMenu);
    if (menu == nullptr || menu->defaultItem < 0) return kNone;
    return fByPos != 0 ? static_cast<UINT>(menu->defaultItem)
                       : menu->items[static_cast<std::size_t>(menu->defaultItem)].command;
}

BOOL TrackPopupMenu(HMENU hMenu, UINT uFlags, int, int, int, HWND hWnd, const RECT*) {
    const auto menu = FindMenu(hMenu);
    if (menu == nullptr) return FALSE;
    const bool tells = (uFlags & TPM_RETURNCMD) != 0;
    if (!IsWindow(hWnd)) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return FALSE;
    }
    Choices choices;
    Collect(hMenu, {}, choices);
    const UINT standard = GetMenuDefaultItem(hMenu, FALSE, 0);
    std::string title = tk::text::Utf16ToUtf8(u"请选择");
    for (std::size_t i = 0; i < choices.commands.size(); ++i) {
        if (choices.commands[i] == standard) title += " [" + choices.labels[i] + "]";
    }
    const auto chosen = tk::system::AskChoice(title, choices.labels);
    const UINT command = chosen ? choices.commands[*chosen] : 0;
    if (tells) return static_cast<BOOL>(command);
    if (chosen && (uFlags & TPM_NONOTIFY) == 0) SendMessageA(hWnd, WM_COMMAND, command & 0xFFFF, 0);
    return TRUE;
}

BOOL GetCursorPos(LPPOINT lpPoint) {
    if (lpPoint == nullptr) {
        SetLastError(ERROR_NOACCESS);
        return FALSE;
    }
    *lpPoint = {0, 0};
    return TRUE;
}
