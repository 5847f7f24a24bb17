#include "ado/objects/arrays.h"

#include <cstring>

#include "ado/error.h"

namespace tk::ado {
namespace {

/// Data of an array, locked while it is looked at.
class ArrayData {
public:
    explicit ArrayData(SAFEARRAY* array) : array_(array) {
        if (FAILED(SafeArrayAccessData(array_, &data_))) throw AdoError(ErrorNumber::InvalidArgument);
    }
    ~ArrayData() { SafeArrayUnaccessData(array_); }
    ArrayData(const ArrayData&) = delete;
    ArrayData& operator=(const ArrayData&) = delete;
    void* Get() const noexcept { return data_; }

private:
    SAFEARRAY* array_;
    void* data_ = nullptr;
};

struct Bounds {
    LONG low = 0;
    LONG high = -1;
};

Bounds BoundsOf(SAFEARRAY* array) {
    Bounds bounds;
    if (array == nullptr || SafeArrayGetDim(array) != 1 || FAILED(SafeArrayGetLBound(array, 1, &bounds.low)) ||
        FAILED(SafeArrayGetUBound(array, 1, &bounds.high))) {
        throw AdoError(ErrorNumber::InvalidArgument);
    }
    return bounds;
}

}  // namespace

std::vector<Value> ArrayItems(const Value& array) {
    if ((array.Type() & VT_ARRAY) == 0) throw AdoError(ErrorNumber::InvalidArgument);
    SAFEARRAY* const data = array.Get().parray;
    const Bounds bounds = BoundsOf(data);
    const VARTYPE type = array.Type() & VT_TYPEMASK;
    std::vector<Value> items;
    for (LONG i = bounds.low; i <= bounds.high; ++i) {
        Value item;
        VARIANT* const place = item.Out();
        // An element that is no VARIANT is stored behind the type.
        void* const target = type == VT_VARIANT   ? static_cast<void*>(place)
                             : type == VT_DECIMAL ? static_cast<void*>(&place->decVal)
                                                  : static_cast<void*>(&place->llVal);
        if (FAILED(SafeArrayGetElement(data, &i, target))) throw AdoError(ErrorNumber::InvalidArgument);
        if (type != VT_VARIANT) place->vt = type;
        items.push_back(std::move(item));
    }
    return items;
}

std::vector<Value> ListItems(const Value& value) {
    if ((value.Type() & VT_ARRAY) != 0) return ArrayItems(value);
    return {value};
}

std::vector<BYTE> BytesOf(const Value& array) {
    if (array.Type() != (VT_ARRAY | VT_UI1)) throw AdoError(ErrorNumber::InvalidArgument);
    SAFEARRAY* const data = array.Get().parray;
    const Bounds bounds = BoundsOf(data);
    const ArrayData bytes(data);
    const auto* const first = static_cast<const BYTE*>(bytes.Get());
    if (bounds.high < bounds.low) return {};
    return {first, first + (bounds.high - bounds.low + 1)};
}

Value BytesValue(std::span<const BYTE> bytes) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    if (array == nullptr) throw std::bad_alloc();
    Value value;
    VARIANT* const place = value.Out();
    place->vt = VT_ARRAY | VT_UI1;
    place->parray = array;
    if (!bytes.empty()) std::memcpy(ArrayData(array).Get(), bytes.data(), bytes.size());
    return value;
}

}  // namespace tk::ado
