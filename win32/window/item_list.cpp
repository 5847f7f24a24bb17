#include "win32/window/item_list.h"

#include <algorithm>

#include "tkwin32/text.h"
#include "winbase.h"
#include "winnls.h"

namespace tk::window {
namespace {

/// As texts are ordered for users, case aside.
int Compare(const std::string& first, const std::string& second) {
    return lstrcmpiA(first.c_str(), second.c_str());
}

}  // namespace

LRESULT ItemList::Add(const char* text, bool sorted) {
    if (text == nullptr) return kError;
    if (!sorted) return Insert(-1, text);
    const std::string added = text;
    const auto place = std::ranges::find_if(items_, [&](const Item& item) { return Compare(item.text, added) > 0; });
    return Insert(place - items_.begin(), text);
}

LRESULT ItemList::Insert(INT_PTR index, const char* text) {
    if (text == nullptr || index < -1 || index > Count()) return kError;
    if (index == -1) index = Count();
    items_.insert(items_.begin() + index, Item{text});
    if (selected_ >= index) ++selected_;
    return index;
}

LRESULT ItemList::Remove(UINT_PTR index) {
    if (index >= items_.size()) return kError;
    items_.erase(items_.begin() + static_cast<INT_PTR>(index));
    if (selected_ == static_cast<LRESULT>(index)) {
        selected_ = kError;
    } else if (selected_ > static_cast<LRESULT>(index)) {
        --selected_;
    }
    return Count();
}

void ItemList::Clear() {
    items_.clear();
    selected_ = kError;
}

LRESULT ItemList::Select(UINT_PTR index) {
    selected_ = index < items_.size() ? static_cast<LRESULT>(index) : kError;
    return selected_;
}

const std::string* ItemList::TextAt(UINT_PTR index) const {
    return index < items_.size() ? &items_[index].text : nullptr;
}

LRESULT ItemList::DataAt(UINT_PTR index) const {
    return index < items_.size() ? items_[index].data : kError;
}

LRESULT ItemList::SetDataAt(UINT_PTR index, LPARAM data) {
    if (index >= items_.size()) return kError;
    items_[index].data = data;
    return 0;
}

LRESULT ItemList::Find(INT_PTR after, const char* text, bool whole) const {
    if (text == nullptr || items_.empty()) return kError;
    const std::string wanted = text;
    const std::size_t first = after >= 0 && after < Count() ? static_cast<std::size_t>(after) + 1 : 0;
    for (std::size_t i = 0; i < items_.size(); ++i) {
        const std::size_t index = (first + i) % items_.size();
        const std::string& item = items_[index].text;
        // Half a character would look like a question mark.
        const std::string part = whole ? item : item.substr(0, tk::text::WholeGbkPrefix(item, wanted.size()));
        if (part.size() == wanted.size() && Compare(part, wanted) == 0) return static_cast<LRESULT>(index);
    }
    return kError;
}

}  // namespace tk::window
