#include "ado/objects/properties.h"

#include "ado/objects/index.h"

namespace tk::ado {

std::span<const Member<Property>> Property::Members() {
    static constexpr Member<Property> kMembers[] = {
        {0, kGet, OLESTR("Value"), &Property::GetValue},
        {0, kPut, OLESTR("Value"), &Property::PutValue, 1},
        {0x60020002, kGet, OLESTR("Name"), &Property::GetName},
        {0x60020003, kGet, OLESTR("Type"), &Property::GetType},
        {0x60020004, kGet, OLESTR("Attributes"), &Property::GetAttributes},
        {0x60020004, kPut, OLESTR("Attributes"), &Property::PutAttributes, 1},
    };
    static_assert(IsMemberTable(kMembers));
    return kMembers;
}

std::span<const Member<Properties>> Properties::Members() {
    static constexpr Member<Properties> kMembers[] = {
        {DISPID_NEWENUM, kGet, OLESTR("_NewEnum"), &Properties::GetNewEnum},
        {0, kGet, OLESTR("Item"), &Properties::GetItem, 1},
        {1, kGet, OLESTR("Count"), &Properties::GetCount},
        {2, kMethod, OLESTR("Refresh"), &Properties::Refresh},
        {0x60020000, kGet, OLESTR("Count"), &Properties::GetCount},
        {0x60020002, kMethod, OLESTR("Refresh"), &Properties::Refresh},
    };
    static_assert(IsMemberTable(kMembers));
    return kMembers;
}

std::optional<std::size_t> FindProperty(PropertySource& source, std::u16string_view name) {
    for (std::size_t i = 0; i < source.PropertyCount(); ++i) {
        if (SameName(source.DescribeProperty(i).name, name)) return i;
    }
    return std::nullopt;
}

std::size_t Properties::FindItem(const VARIANT& index) const {
    return ItemIndex(index, ItemCount(), [this](std::u16string_view name) { return FindProperty(source_, name); });
}

std::size_t Property::Index() const {
    // Opening and closing the owner changes the list, so the name decides.
    const auto index = FindProperty(source_, info_.name);
    if (!index) throw AdoError(ErrorNumber::ObjectNotSet, info_.name);
    return *index;
}

void Property::GetValue(Call& call) {
    call.Return(source_.ReadProperty(Index()));
}

void Property::PutValue(Call& call) {
    constexpr LONG kWrite = 0x400;
    if ((info_.attributes & kWrite) == 0) throw AdoError(ErrorNumber::FeatureNotAvailable, info_.name);
    const Value given = call.PlainValue(0);
    HRESULT result = S_OK;
    const Value value = given.As(info_.type, result);
    if (FAILED(result)) throw AdoError(ErrorNumber::DataConversion, info_.name);
    source_.WriteProperty(Index(), value);
}

void Property::GetName(Call& call) {
    call.ReturnText(info_.name);
}
void Property::GetType(Call& call) {
    call.ReturnLong(info_.type);
}
void Property::GetAttributes(Call& call) {
    call.ReturnLong(info_.attributes);
}
void Property::PutAttributes(Call& call) {
    info_.attributes = call.Long(0);
}

}  // namespace tk::ado
