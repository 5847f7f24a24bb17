#include "ado/objects/errors.h"

#include "ado/objects/index.h"

namespace tk::ado {

std::span<const Member<Error>> Error::Members() {
    // The small ids are those of later type libraries, the large ones those of the first.
    static constexpr Member<Error> kMembers[] = {
        {0, kGet, OLESTR("Description"), &Error::GetDescription},
        {1, kGet, OLESTR("Number"), &Error::GetNumber},
        {2, kGet, OLESTR("Source"), &Error::GetSource},
        {3, kGet, OLESTR("HelpFile"), &Error::GetHelpFile},
        {4, kGet, OLESTR("HelpContext"), &Error::GetHelpContext},
        {5, kGet, OLESTR("SQLState"), &Error::GetSqlState},
        {6, kGet, OLESTR("NativeError"), &Error::GetNativeError},
        {0x60020000, kGet, OLESTR("Number"), &Error::GetNumber},
        {0x60020001, kGet, OLESTR("Source"), &Error::GetSource},
        {0x60020003, kGet, OLESTR("HelpFile"), &Error::GetHelpFile},
        {0x60020004, kGet, OLESTR("HelpContext"), &Error::GetHelpContext},
        {0x60020005, kGet, OLESTR("SQLState"), &Error::GetSqlState},
        {0x60020006, kGet, OLESTR("NativeError"), &Error::GetNativeError},
    };
    static_assert(IsMemberTable(kMembers));
    return kMembers;
}

void Error::GetDescription(Call& call) {
    call.ReturnText(record_.description);
}
void Error::GetNumber(Call& call) {
    call.ReturnLong(record_.number);
}
void Error::GetSource(Call& call) {
    call.ReturnText(record_.source);
}
void Error::GetHelpFile(Call& call) {
    call.ReturnText({});
}
void Error::GetHelpContext(Call& call) {
    call.ReturnLong(0);
}
void Error::GetSqlState(Call& call) {
    call.ReturnText(ToUtf16(record_.sqlState));
}
void Error::GetNativeError(Call& call) {
    call.ReturnLong(record_.nativeError);
}

std::span<const Member<Errors>> Errors::Members() {
    static constexpr Member<Errors> kMembers[] = {
        {DISPID_NEWENUM, kGet, OLESTR("_NewEnum"), &Errors::GetNewEnum},
        {0, kGet, OLESTR("Item"), &Errors::GetItem, 1},
        {1, kGet, OLESTR("Count"), &Errors::GetCount},
        {2, kMethod, OLESTR("Refresh"), &Errors::Refresh},
        {0x60020000, kGet, OLESTR("Count"), &Errors::GetCount},
        {0x60020002, kMethod, OLESTR("Refresh"), &Errors::Refresh},
        {0x60030001, kMethod, OLESTR("Clear"), &Errors::Clear},
    };
    static_assert(IsMemberTable(kMembers));
    return kMembers;
}

std::size_t Errors::FindItem(const VARIANT& index) const {
    return ItemIndex(index, ItemCount(), [](std::u16string_view) { return std::nullopt; });
}

Ref<Error> Errors::MakeItem(std::size_t index) const {
    auto record = list_->At(index);
    // Another thread may have cleared the list in between.
    if (!record) throw AdoError(ErrorNumber::ItemNotFound, NumberText(static_cast<LONG>(index)));
    return Make<Error>(std::move(*record));
}

void Errors::Clear(Call&) {
    list_->Clear();
}

}  // namespace tk::ado
