// The list of a control: texts with a number each, and a selection.
#pragma once

#include <string>
#include <vector>

#include "windef.h"

namespace tk::window {

class ItemList {
public:
    static constexpr LRESULT kError = -1;

    /// Behind the others, or where the order wants it. @return its index
    LRESULT Add(const char* text, bool sorted);
    /// @param index  -1: behind the others
    LRESULT Insert(INT_PTR index, const char* text);
    /// @return how many are left
    LRESULT Remove(UINT_PTR index);
    void Clear();
    LRESULT Count() const { return static_cast<LRESULT>(items_.size()); }

    LRESULT Selected() const { return selected_; }
    /// @return the index; an error, and no selection, for one that is not there
    LRESULT Select(UINT_PTR index);

    /// null for an index that is not there
    const std::string* TextAt(UINT_PTR index) const;
    LRESULT DataAt(UINT_PTR index) const;
    LRESULT SetDataAt(UINT_PTR index, LPARAM data);
    /// The first item behind `after` (-1: from the start), going round, that begins with a text or is it; case does not
    /// matter.
    LRESULT Find(INT_PTR after, const char* text, bool whole) const;

private:
    struct Item {
        std::string text;
        LPARAM data = 0;
    };

    std::vector<Item> items_;
    LRESULT selected_ = kError;
};

}  // namespace tk::window
