// List boxes and combo boxes: two sets of messages, one list.
#include <algorithm>
#include <cstring>

#include "win32/window/window_table.h"

namespace tk::window {
namespace {

enum class Operation : char {
    kAdd,
    kInsert,
    kRemove,
    kClear,
    kCount,
    kSelect,
    kSelected,
    kText,
    kTextLength,
    kFind,
    kFindWhole,
    kData,
    kSetData
};

struct ListMessage {
    UINT comboBox;
    UINT listBox;
    Operation operation;
};

constexpr ListMessage kMessages[] = {
    {CB_ADDSTRING, LB_ADDSTRING, Operation::kAdd},
    {CB_INSERTSTRING, LB_INSERTSTRING, Operation::kInsert},
    {CB_DELETESTRING, LB_DELETESTRING, Operation::kRemove},
    {CB_RESETCONTENT, LB_RESETCONTENT, Operation::kClear},
    {CB_GETCOUNT, LB_GETCOUNT, Operation::kCount},
    {CB_SETCURSEL, LB_SETCURSEL, Operation::kSelect},
    {CB_GETCURSEL, LB_GETCURSEL, Operation::kSelected},
    {CB_GETLBTEXT, LB_GETTEXT, Operation::kText},
    {CB_GETLBTEXTLEN, LB_GETTEXTLEN, Operation::kTextLength},
    {CB_FINDSTRING, LB_FINDSTRING, Operation::kFind},
    {CB_FINDSTRINGEXACT, LB_FINDSTRINGEXACT, Operation::kFindWhole},
    {CB_GETITEMDATA, LB_GETITEMDATA, Operation::kData},
    {CB_SETITEMDATA, LB_SETITEMDATA, Operation::kSetData},
};

bool IsComboBox(const Window& window) {
    return window.windowClass->name == "ComboBox";
}

bool IsSorted(const Window& window) {
    return (static_cast<DWORD>(window.style) & (IsComboBox(window) ? CBS_SORT : LBS_SORT)) != 0;
}

LRESULT Answer(Window& window, Operation operation, WPARAM wParam, LPARAM lParam) {
    ItemList& items = window.items;
    const auto* text = reinterpret_cast<const char*>(lParam);
    switch (operation) {
        case Operation::kAdd:
            return items.Add(text, IsSorted(window));
        case Operation::kInsert:
            return items.Insert(static_cast<int>(wParam), text);
        case Operation::kRemove:
            return items.Remove(wParam);
        case Operation::kClear:
            items.Clear();
            if (IsComboBox(window)) window.text.clear();
            return 0;
        case Operation::kCount:
            return items.Count();
        case Operation::kSelect: {
            const LRESULT selected = items.Select(wParam);
            const std::string* chosen = items.TextAt(static_cast<UINT_PTR>(selected));
            if (IsComboBox(window)) window.text.assign(chosen != nullptr ? *chosen : std::string());
            return selected;
        }
        case Operation::kSelected:
            return items.Selected();
        case Operation::kText:
        case Operation::kTextLength: {
            const std::string* item = items.TextAt(wParam);
            if (item == nullptr) return ItemList::kError;
            // The receiver has asked for the length before.
            if (operation == Operation::kText)
                std::memcpy(reinterpret_cast<char*>(lParam), item->c_str(), item->size() + 1);
            return static_cast<LRESULT>(item->size());
        }
        case Operation::kFind:
        case Operation::kFindWhole:
            return items.Find(static_cast<int>(wParam), text, operation == Operation::kFindWhole);
        case Operation::kData:
            return items.DataAt(wParam);
        case Operation::kSetData:
            return items.SetDataAt(wParam, lParam);
    }
    return ItemList::kError;
}

}  // namespace

LRESULT CALLBACK ListProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto window = FindWindow(handle);
    if (window == nullptr) return 0;
    const auto family = IsComboBox(*window) ? &ListMessage::comboBox : &ListMessage::listBox;
    const auto found = std::ranges::find(kMessages, message, family);
    if (found == std::end(kMessages)) return DefWindowProcA(handle, message, wParam, lParam);
    const std::lock_guard lock(window->lock);
    return Answer(*window, found->operation, wParam, lParam);
}

}  // namespace tk::window
