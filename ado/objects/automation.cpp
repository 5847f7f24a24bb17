#include "ado/objects/automation.h"

#include <optional>

#include "ado/cursor/text.h"
#include "ado/objects/module.h"

namespace tk::ado {
namespace {

BSTR NewText(std::u16string_view text) {
    return SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

/// Help topics of the errors that have one of their own.
constexpr struct {
    HRESULT code;
    DWORD context;
} kHelpContexts[] = {
    {static_cast<HRESULT>(0x800A0CC1), 1240649},  // no such item
    {static_cast<HRESULT>(0x800A0E78), 1240653},  // closed
    {static_cast<HRESULT>(0x800A0E7A), 1240655},  // no provider
};

DWORD HelpContextOf(HRESULT code) noexcept {
    for (const auto& row : kHelpContexts) {
        if (row.code == code) return row.context;
    }
    return 0;
}

}  // namespace

AutomationObject::AutomationObject() {
    moduleUses.fetch_add(1, std::memory_order_relaxed);
}
AutomationObject::~AutomationObject() {
    moduleUses.fetch_sub(1, std::memory_order_relaxed);
}

HRESULT AutomationObject::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (!(iid == IID_IUnknown) && !(iid == IID_IDispatch)) return E_NOINTERFACE;
    *object = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
}

ULONG AutomationObject::AddRef() {
    return references_.fetch_add(1, std::memory_order_relaxed) + 1;
}

bool AutomationObject::TryAddRef() noexcept {
    ULONG held = references_.load(std::memory_order_relaxed);
    while (held != 0 && held < kEnding) {
        if (references_.compare_exchange_weak(held, held + 1, std::memory_order_relaxed)) return true;
    }
    return false;
}

ULONG AutomationObject::Release() {
    const ULONG left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) {
        // Whatever the destructor does with references to this object must not end it again.
        references_.store(kEnding, std::memory_order_relaxed);
        delete this;
    }
    return left;
}

HRESULT AutomationObject::GetTypeInfoCount(UINT* count) {
    if (count == nullptr) return E_POINTER;
    *count = 0;
    return S_OK;
}

HRESULT AutomationObject::GetTypeInfo(UINT, LCID, ITypeInfo** info) {
    if (info == nullptr) return E_POINTER;
    *info = nullptr;
    return DISP_E_BADINDEX;
}

bool IsMemberName(const OLECHAR* known, std::u16string_view asked) noexcept {
    return SameName(known, asked);
}

HRESULT AutomationObject::GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
    if (!(iid == IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    if (names == nullptr || ids == nullptr) return E_POINTER;
    bool allKnown = true;
    for (UINT i = 0; i < count; ++i) {
        // Only members have names here; arguments are told by their places.
        const MemberInfo* member = i == 0 && names[i] != nullptr ? FindName(names[i]) : nullptr;
        ids[i] = member == nullptr ? DISPID_UNKNOWN : member->id;
        allKnown = allKnown && member != nullptr;
    }
    return allKnown ? S_OK : DISP_E_UNKNOWNNAME;
}

const MemberInfo* AutomationObject::Choose(DISPID id, WORD flags, const DISPPARAMS& parameters) const noexcept {
    if ((flags & (kPut | kPutRef)) != 0) {
        const MemberInfo* byReference = (flags & kPutRef) != 0 ? FindMember(id, kPutRef) : nullptr;
        const MemberInfo* byValue = (flags & kPut) != 0 ? FindMember(id, kPut) : nullptr;
        if (byReference == nullptr || byValue == nullptr) return byReference != nullptr ? byReference : byValue;
        const VARTYPE type = parameters.cArgs == 0 ? static_cast<VARTYPE>(VT_EMPTY) : parameters.rgvarg[0].vt;
        return type == VT_DISPATCH || type == VT_UNKNOWN ? byReference : byValue;
    }
    if ((flags & kMethod) != 0) {
        if (const MemberInfo* method = FindMember(id, kMethod)) return method;
    }
    // Late-bound callers often do not know a property from a method.
    return (flags & (kMethod | kGet)) != 0 ? FindMember(id, kGet) : nullptr;
}

HRESULT AutomationObject::Report(const std::exception& cause, EXCEPINFO* exception) const noexcept try {
    std::optional<AdoError> made;
    const auto* own = dynamic_cast<const AdoError*>(&cause);
    const AdoError& error = own != nullptr ? *own : made.emplace(AdoError::From(cause));
    if (!error.Records().empty()) {
        if (const auto list = Errors()) list->Replace(error.Records());
    }
    if (exception != nullptr) {
        *exception = EXCEPINFO{};
        exception->bstrSource = NewText(error.Source().empty() ? std::u16string_view(ClassName()) : error.Source());
        exception->bstrDescription = NewText(error.Description());
        exception->dwHelpContext = HelpContextOf(error.Code());
        exception->scode = error.Code();
    }
    return DISP_E_EXCEPTION;
} catch (...) {
    return E_OUTOFMEMORY;
}

HRESULT AutomationObject::Invoke(DISPID id, REFIID iid, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                                 EXCEPINFO* exception, UINT* argument) {
    if (result != nullptr) VariantInit(result);
    if (!(iid == IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    if (parameters == nullptr) return E_POINTER;
    const MemberInfo* member = Choose(id, flags, *parameters);
    if (member == nullptr) return DISP_E_MEMBERNOTFOUND;
    try {
        Call call(*parameters);
        if (call.Count() < member->least || call.Count() > member->most) return DISP_E_BADPARAMCOUNT;
        Run(*member, call);
        if (result != nullptr) *result = call.Result().Detach();
        return S_OK;
    } catch (const CallFault& fault) {
        // A wrong number of arguments is nobody's in particular.
        if (argument != nullptr && fault.code != DISP_E_BADPARAMCOUNT) *argument = fault.argument;
        return fault.code;
    } catch (const BadVariant& bad) {
        // Inside an argument: an element of an array, or what an object gave.
        return bad.code;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const std::exception& cause) {
        return Report(cause, exception);
    } catch (...) {
        return E_UNEXPECTED;
    }
}

}  // namespace tk::ado
