// afx/dispatch_call.h - one late-bound call with ready arguments: the seam under COleDispatchDriver::InvokeHelper, and
// the way for the rooms above to call a member whose arguments are VARIANTs already, without a copy and without a
// block.
//
//   VARIANT arguments[] = {Value(last), Value(first)};  // in reverse order
//   tk::afx::OwnedVariant result;
//   tk::afx::CallMember(fields, 0, DISPATCH_PROPERTYGET, arguments, 2, &result);
#pragma once

#include <windows.h>

#include <oleauto.h>

namespace tk::afx {

/// VariantClear for what is certainly VT_EMPTY after that: most values are numbers and dates, which have nothing to
/// free and cost no call.
inline void ClearVariant(VARIANT& value) noexcept {
    if (value.vt >= VT_BSTR && value.vt != VT_BOOL && value.vt != VT_DECIMAL) VariantClear(&value);
    value.vt = VT_EMPTY;
}

/// A VARIANT that is cleared with its scope.
struct OwnedVariant : VARIANT {
    OwnedVariant() noexcept { vt = VT_EMPTY; }
    OwnedVariant(const OwnedVariant&) = delete;
    OwnedVariant& operator=(const OwnedVariant&) = delete;
    ~OwnedVariant() { ClearVariant(*this); }
};

/// Calls a member. A put names its value.
/// @param arguments  last argument first; stay the caller's
/// @param result  VT_EMPTY before; may be null
/// Failures: COleDispatchException with the server's words for DISP_E_EXCEPTION, COleException otherwise, E_POINTER for
/// a null object. The result is VT_EMPTY then.
void CallMember(IDispatch* object, DISPID member, WORD kind, VARIANT* arguments, UINT count, VARIANT* result);

/// Converts a result to the wanted type and stores it as InvokeHelper documents; the value is used up on every way out.
void StoreResult(VARIANT& value, VARTYPE wanted, void* target);

}  // namespace tk::afx
