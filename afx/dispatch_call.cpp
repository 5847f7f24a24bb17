#include "afx/dispatch_call.h"

#include <iterator>

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
        // Most calls succeed and leave no text: not even the calls are made.
        for (const BSTR text : {bstrSource, bstrDescription, bstrHelpFile}) {
            if (text != nullptr) SysFreeString(text);
        }
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

using Store = void (*)(const VARIANT& value, void* target);  // moves what the value owns

// What InvokeHelper hands out, by VARIANT type; null where a caller cannot ask for the type.
struct StoreTable {
    Store rows[VT_I8 + 1] = {};

    constexpr StoreTable() {
        rows[VT_I2] = [](const VARIANT& value, void* target) { *static_cast<short*>(target) = value.iVal; };
        rows[VT_I4] = [](const VARIANT& value, void* target) { *static_cast<long*>(target) = value.lVal; };
        rows[VT_R4] = [](const VARIANT& value, void* target) { *static_cast<float*>(target) = value.fltVal; };
        rows[VT_R8] = [](const VARIANT& value, void* target) { *static_cast<double*>(target) = value.dblVal; };
        rows[VT_CY] = [](const VARIANT& value, void* target) { *static_cast<CY*>(target) = value.cyVal; };
        rows[VT_DATE] = [](const VARIANT& value, void* target) { *static_cast<DATE*>(target) = value.date; };
        rows[VT_DISPATCH] = [](const VARIANT& value, void* target) {
            *static_cast<IDispatch**>(target) = value.pdispVal;
        };
        rows[VT_ERROR] = [](const VARIANT& value, void* target) { *static_cast<SCODE*>(target) = value.scode; };
        rows[VT_BOOL] = [](const VARIANT& value, void* target) { *static_cast<BOOL*>(target) = value.boolVal != 0; };
        rows[VT_UNKNOWN] = [](const VARIANT& value, void* target) { *static_cast<IUnknown**>(target) = value.punkVal; };
        rows[VT_UI1] = [](const VARIANT& value, void* target) { *static_cast<BYTE*>(target) = value.bVal; };
        rows[VT_I8] = [](const VARIANT& value, void* target) { *static_cast<long long*>(target) = value.llVal; };
    }
};
constexpr StoreTable kStores;

// Clears a value unless it was handed on, and then VT_EMPTY.
struct Clearing {
    VARIANT& value;
    ~Clearing() { ClearVariant(value); }
};

}  // namespace

void StoreResult(VARIANT& value, VARTYPE wanted, void* target) {
    Clearing clearing{value};
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
    if (wanted >= std::size(kStores.rows) || kStores.rows[wanted] == nullptr) AfxThrowOleException(DISP_E_BADVARTYPE);
    kStores.rows[wanted](value, target);
    value.vt = VT_EMPTY;
}

}  // namespace tk::afx
