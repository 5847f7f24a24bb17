#include "afx/dispatch_call.h"

#include "afx/ole_check.h"

namespace tk::afx {
namespace {

CString TextOf(BSTR text) {
    return CString(text, static_cast<int>(SysStringLen(text)));
}

struct OwnedExceptionInfo : EXCEPINFO {
    OwnedExceptionInfo() noexcept : EXCEPINFO{} {}
    OwnedExceptionInfo(const OwnedExceptionInfo&) = delete;
    OwnedExceptionInfo& operator=(const OwnedExceptionInfo&) = delete;
    ~OwnedExceptionInfo() {
        SysFreeString(bstrSource);
        SysFreeString(bstrDescription);
        SysFreeString(bstrHelpFile);
    }
};

[[noreturn]] void ThrowDescribed(OwnedExceptionInfo& info) {
    // The server may leave the texts for when somebody wants them.
    if (info.pfnDeferredFillIn != nullptr) info.pfnDeferredFillIn(&info);
    auto* const exception = new COleDispatchException(nullptr, info.dwHelpContext, info.wCode);
    try {
        exception->m_scError = info.scode;
        exception->m_strDescription = TextOf(info.bstrDescription);
        exception->m_strSource = TextOf(info.bstrSource);
        exception->m_strHelpFile = TextOf(info.bstrHelpFile);
    } catch (...) {
        exception->Delete();
        throw;
    }
    throw exception;
}

}  // namespace

void CallMember(IDispatch* object, DISPID member, WORD kind, VARIANT* arguments, UINT count, VARIANT* result) {
    if (object == nullptr) AfxThrowOleException(E_POINTER);
    DISPID put = DISPID_PROPERTYPUT;
    const bool puts = (kind & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
    DISPPARAMS parameters = {count == 0 ? nullptr : arguments, puts ? &put : nullptr, count, puts ? 1u : 0u};
    OwnedExceptionInfo info;
    UINT badArgument = 0;
    const HRESULT outcome = object->Invoke(member, IID_NULL, 0, kind, &parameters, result, &info, &badArgument);
    if (SUCCEEDED(outcome)) return;
    if (result != nullptr) VariantClear(result);
    if (outcome == DISP_E_EXCEPTION) ThrowDescribed(info);
    AfxThrowOleException(outcome);
}

namespace {

struct ResultType {
    VARTYPE vt;
    void (*store)(const VARIANT& value, void* target);  // moves what the value owns
};

// What InvokeHelper hands out for each type it can be asked for.
constexpr ResultType kResultTypes[] = {
    {VT_I2, [](const VARIANT& value, void* target) { *static_cast<short*>(target) = value.iVal; }},
    {VT_I4, [](const VARIANT& value, void* target) { *static_cast<long*>(target) = value.lVal; }},
    {VT_R4, [](const VARIANT& value, void* target) { *static_cast<float*>(target) = value.fltVal; }},
    {VT_R8, [](const VARIANT& value, void* target) { *static_cast<double*>(target) = value.dblVal; }},
    {VT_CY, [](const VARIANT& value, void* target) { *static_cast<CY*>(target) = value.cyVal; }},
    {VT_DATE, [](const VARIANT& value, void* target) { *static_cast<DATE*>(target) = value.date; }},
    {VT_DISPATCH, [](const VARIANT& value, void* target) { *static_cast<IDispatch**>(target) = value.pdispVal; }},
    {VT_ERROR, [](const VARIANT& value, void* target) { *static_cast<SCODE*>(target) = value.scode; }},
    {VT_BOOL, [](const VARIANT& value, void* target) { *static_cast<BOOL*>(target) = value.boolVal != 0; }},
    {VT_UNKNOWN, [](const VARIANT& value, void* target) { *static_cast<IUnknown**>(target) = value.punkVal; }},
    {VT_UI1, [](const VARIANT& value, void* target) { *static_cast<BYTE*>(target) = value.bVal; }},
    {VT_I8, [](const VARIANT& value, void* target) { *static_cast<long long*>(target) = value.llVal; }},
};

// Clears a value unless it was handed on.
struct Clearing {
    VARIANT* value;
    ~Clearing() {
        if (value != nullptr) VariantClear(value);
    }
};

}  // namespace

void StoreResult(VARIANT& value, VARTYPE wanted, void* target) {
    Clearing clearing{&value};
    if (wanted == VT_EMPTY || target == nullptr) return;
    if (wanted == VT_VARIANT) {
        *static_cast<VARIANT*>(target) = value;
        value.vt = VT_EMPTY;
        return;
    }
    if (value.vt != wanted) ThrowIfFailed(VariantChangeType(&value, &value, 0, wanted));
    if (wanted == VT_BSTR) {
        *static_cast<CString*>(target) = TextOf(value.bstrVal);
        return;
    }
    for (const ResultType& type : kResultTypes) {
        if (type.vt != wanted) continue;
        type.store(value, target);
        value.vt = VT_EMPTY;
        return;
    }
    AfxThrowOleException(DISP_E_BADVARTYPE);
}

}  // namespace tk::afx
