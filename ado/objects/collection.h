// ado/objects/collection.h - the members that all collections share: Item, Count, _NewEnum.
#pragma once

#include <vector>

#include "ado/objects/automation.h"
#include "ado/objects/enumerator.h"
#include "ado/objects/index.h"

namespace tk::ado {

/// @tparam T  has: std::size_t ItemCount(); std::size_t FindItem(const VARIANT&); Ref<...> MakeItem(std::size_t)
template <class T>
class Collection : public Automation<T> {
protected:
    void GetItem(Call& call) {
        const std::size_t index = WithIndex(call, 0, [this](const VARIANT& given) { return Self().FindItem(given); });
        call.ReturnObject(Self().MakeItem(index));
    }
    void GetCount(Call& call) { call.ReturnLong(static_cast<LONG>(Self().ItemCount())); }
    void GetNewEnum(Call& call) {
        std::vector<Value> items(Self().ItemCount());
        for (std::size_t i = 0; i < items.size(); ++i) {
            VARIANT* item = items[i].Out();
            item->vt = VT_DISPATCH;
            item->pdispVal = Self().MakeItem(i).Detach();
        }
        call.ReturnUnknown(new Enumerator(std::move(items)));
    }

    /// The items are always those of now.
    void Refresh(Call&) {}

private:
    T& Self() noexcept { return static_cast<T&>(*this); }
};

}  // namespace tk::ado
