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
std::size_t ItemIndex(const Value& index, std::size_t count, Find&& find) {
    if (index.Type() == VT_BSTR) {
        const std::u16string_view name = ViewOf(index.Get().bstrVal);
        if (const std::optional<std::size_t> found = find(name)) return *found;
        throw AdoError(ErrorNumber::ItemNotFound, std::u16string(name));
    }
    HRESULT result = S_OK;
    const Value number = index.As(VT_I4, result);
    if (FAILED(result)) throw AdoError(ErrorNumber::ItemNotFound);
    const LONG position = number.Get().lVal;
    if (position < 0 || static_cast<std::size_t>(position) >= count) {
        throw AdoError(ErrorNumber::ItemNotFound, NumberText(position));
    }
    return static_cast<std::size_t>(position);
}

}  // namespace tk::ado
