// ado/objects/index.h - how the collections take an index: a text is a name, anything else a number from 0.
#pragma once

#include <optional>
#include <string>

#include "ado/cursor/text.h"
#include "ado/error.h"
#include "ado/objects/call.h"

namespace tk::ado {

/// @param find  name -> std::optional<std::size_t>
/// @throws AdoError 3265 for an unknown name or number
template <class Find>
std::size_t ItemIndex(const VARIANT& index, std::size_t count, Find&& find) {
    LONG position = 0;
    switch (index.vt) {
        case VT_BSTR: {
            const std::u16string_view name = ViewOf(index.bstrVal);
            if (const std::optional<std::size_t> found = find(name)) return *found;
            throw AdoError(ErrorNumber::ItemNotFound, std::u16string(name));
        }
        case VT_I4:
            position = index.lVal;
            break;
        case VT_I2:
            position = index.iVal;
            break;
        default: {
            const Value followed(index);
            if (followed.Type() == VT_BSTR) return ItemIndex(followed.Get(), count, find);
            HRESULT result = S_OK;
            const Value number = followed.As(VT_I4, result);
            if (FAILED(result)) throw AdoError(ErrorNumber::ItemNotFound);
            position = number.Get().lVal;
        }
    }
    if (position < 0 || static_cast<std::size_t>(position) >= count) {
        throw AdoError(ErrorNumber::ItemNotFound, NumberText(position));
    }
    return static_cast<std::size_t>(position);
}

/// The index argument of a call: as it was passed, or the default member of an object.
template <class Use>
auto WithIndex(const Call& call, UINT argument, Use&& use) {
    const VARIANT& index = call.Argument(argument);
    try {
        return index.vt == VT_DISPATCH ? use(call.PlainValue(argument).Get()) : use(index);
    } catch (const BadVariant& bad) {
        throw call.Fault(bad.code, argument);
    }
}

}  // namespace tk::ado
