// invoke.h - COleDispatchDriver::InvokeHelper with typed results, so that a member reads as the one call it is.
#pragma once

#include "afx/dispatch_call.h"
#include "tkkernel/driver.h"

namespace tk::driver {

inline constexpr const BYTE* kNoParms = nullptr;

inline long GetLong(COleDispatchDriver& object, DISPID id) {
    long result = 0;
    object.InvokeHelper(id, DISPATCH_PROPERTYGET, VT_I4, &result, kNoParms);
    return result;
}

inline int GetFlag(COleDispatchDriver& object, DISPID id) {
    BOOL result = FALSE;
    object.InvokeHelper(id, DISPATCH_PROPERTYGET, VT_BOOL, &result, kNoParms);
    return result;
}

inline CString GetText(COleDispatchDriver& object, DISPID id) {
    CString result;
    object.InvokeHelper(id, DISPATCH_PROPERTYGET, VT_BSTR, &result, kNoParms);
    return result;
}

/// @return the caller's to clear
inline VARIANT GetVariant(COleDispatchDriver& object, DISPID id) {
    VARIANT result;
    VariantInit(&result);
    object.InvokeHelper(id, DISPATCH_PROPERTYGET, VT_VARIANT, &result, kNoParms);
    return result;
}

/// @return the caller's to release; may be null
inline IDispatch* GetObject(COleDispatchDriver& object, DISPID id) {
    IDispatch* result = nullptr;
    object.InvokeHelper(id, DISPATCH_PROPERTYGET, VT_DISPATCH, &result, kNoParms);
    return result;
}

/// @return the caller's to release; may be null
inline IUnknown* GetUnknown(COleDispatchDriver& object, DISPID id) {
    IUnknown* result = nullptr;
    object.InvokeHelper(id, DISPATCH_PROPERTYGET, VT_UNKNOWN, &result, kNoParms);
    return result;
}

/// What `convert` makes of a VARIANT that a call returned, which is cleared after that. The call writes it where it is
/// read: whoever copies one that has just been written field by field waits until the fields are in memory.
template <class Result>
Result Take(Result (*convert)(const VARIANT&), VARIANT value) {
    struct Clearing {
        VARIANT& value;
        ~Clearing() { afx::ClearVariant(value); }
    } const clearing{value};
    return convert(value);
}

template <typename... Arguments>
void Put(COleDispatchDriver& object, DISPID id, const BYTE* parms, Arguments... arguments) {
    object.InvokeHelper(id, DISPATCH_PROPERTYPUT, VT_EMPTY, nullptr, parms, arguments...);
}

inline void PutLong(COleDispatchDriver& object, DISPID id, long value) {
    static constexpr BYTE parms[] = VTS_I4;
    Put(object, id, parms, value);
}

inline void PutText(COleDispatchDriver& object, DISPID id, const char* value) {
    static constexpr BYTE parms[] = VTS_BSTR;
    Put(object, id, parms, value);
}

inline void PutVariant(COleDispatchDriver& object, DISPID id, const VARIANT& value) {
    static constexpr BYTE parms[] = VTS_VARIANT;
    Put(object, id, parms, &value);
}

template <typename... Arguments>
void PutRef(COleDispatchDriver& object, DISPID id, const BYTE* parms, Arguments... arguments) {
    object.InvokeHelper(id, DISPATCH_PROPERTYPUTREF, VT_EMPTY, nullptr, parms, arguments...);
}

/// A method without a result.
template <typename... Arguments>
void Call(COleDispatchDriver& object, DISPID id, const BYTE* parms, Arguments... arguments) {
    object.InvokeHelper(id, DISPATCH_METHOD, VT_EMPTY, nullptr, parms, arguments...);
}

inline void Call(COleDispatchDriver& object, DISPID id) {
    object.InvokeHelper(id, DISPATCH_METHOD, VT_EMPTY, nullptr, kNoParms);
}

inline void CallWithLong(COleDispatchDriver& object, DISPID id, long value) {
    static constexpr BYTE parms[] = VTS_I4;
    Call(object, id, parms, value);
}

/// A method that answers an object.
/// @return the caller's to release; may be null
template <typename... Arguments>
IDispatch* CallForObject(COleDispatchDriver& object, DISPID id, const BYTE* parms, Arguments... arguments) {
    IDispatch* result = nullptr;
    object.InvokeHelper(id, DISPATCH_METHOD, VT_DISPATCH, &result, parms, arguments...);
    return result;
}

}  // namespace tk::driver
