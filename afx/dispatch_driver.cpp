#include <ole2.h>

#include <utility>

#include "afx/dispatch_arguments.h"
#include "afx/dispatch_call.h"
#include "afx/text_codes.h"
#include "afx_dispatch.h"

using tk::afx::OwnedVariant;

COleDispatchDriver::COleDispatchDriver(LPDISPATCH lpDispatch, BOOL bAutoRelease) noexcept
    : m_lpDispatch(lpDispatch), m_bAutoRelease(bAutoRelease) {}

COleDispatchDriver::COleDispatchDriver(const COleDispatchDriver& dispatchSrc) noexcept
    : m_lpDispatch(dispatchSrc.m_lpDispatch) {
    if (m_lpDispatch != nullptr) m_lpDispatch->AddRef();
}

COleDispatchDriver::COleDispatchDriver(COleDispatchDriver&& other) noexcept
    : m_lpDispatch(std::exchange(other.m_lpDispatch, nullptr)), m_bAutoRelease(other.m_bAutoRelease) {}

COleDispatchDriver& COleDispatchDriver::operator=(const COleDispatchDriver& dispatchSrc) {
    if (this == &dispatchSrc) return *this;
    if (dispatchSrc.m_lpDispatch != nullptr) dispatchSrc.m_lpDispatch->AddRef();
    AttachDispatch(dispatchSrc.m_lpDispatch, TRUE);
    return *this;
}

COleDispatchDriver& COleDispatchDriver::operator=(COleDispatchDriver&& other) noexcept {
    if (this != &other) AttachDispatch(std::exchange(other.m_lpDispatch, nullptr), other.m_bAutoRelease);
    return *this;
}

COleDispatchDriver::~COleDispatchDriver() {
    ReleaseDispatch();
}

BOOL COleDispatchDriver::CreateDispatch(REFCLSID clsid, COleException* pError) {
    IUnknown* object = nullptr;
    IDispatch* dispatch = nullptr;
    HRESULT outcome = CoCreateInstance(clsid, nullptr, CLSCTX_ALL | CLSCTX_REMOTE_SERVER, IID_IUnknown,
                                       reinterpret_cast<void**>(&object));
    if (SUCCEEDED(outcome)) outcome = OleRun(object);
    if (SUCCEEDED(outcome)) outcome = object->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch));
    if (object != nullptr) object->Release();
    if (FAILED(outcome)) {
        if (pError != nullptr) pError->m_sc = outcome;
        return FALSE;
    }
    AttachDispatch(dispatch, TRUE);
    return TRUE;
}

BOOL COleDispatchDriver::CreateDispatch(LPCTSTR lpszProgID, COleException* pError) {
    const BSTR name = tk::afx::NewBstr(lpszProgID == nullptr ? "" : lpszProgID);
    CLSID clsid = {};
    const HRESULT outcome = CLSIDFromString(name, &clsid);
    SysFreeString(name);
    if (SUCCEEDED(outcome)) return CreateDispatch(clsid, pError);
    if (pError != nullptr) pError->m_sc = outcome;
    return FALSE;
}

void COleDispatchDriver::AttachDispatch(LPDISPATCH lpDispatch, BOOL bAutoRelease) {
    // The new one is in place before the old one goes: Release may run code that looks here.
    const LPDISPATCH old = std::exchange(m_lpDispatch, lpDispatch);
    if (std::exchange(m_bAutoRelease, bAutoRelease) && old != nullptr) old->Release();
}

LPDISPATCH COleDispatchDriver::DetachDispatch() noexcept {
    return std::exchange(m_lpDispatch, nullptr);
}

void COleDispatchDriver::ReleaseDispatch() {
    const LPDISPATCH old = std::exchange(m_lpDispatch, nullptr);
    if (m_bAutoRelease && old != nullptr) old->Release();
}

void COleDispatchDriver::InvokeHelperV(DISPID dwDispID, WORD wFlags, VARTYPE vtRet, void* pvRet,
                                       const BYTE* pbParamInfo, va_list argList) {
    if (m_lpDispatch == nullptr) AfxThrowOleException(E_POINTER);
    OwnedVariant result;
    {
        tk::afx::DispatchArguments arguments(pbParamInfo);
        arguments.Read(argList);
        tk::afx::CallMember(m_lpDispatch, dwDispID, wFlags, arguments.Data(), arguments.Count(),
                            vtRet == VT_EMPTY ? nullptr : &result);
        arguments.StoreBack();
    }
    tk::afx::StoreResult(result, vtRet, pvRet);
}

void COleDispatchDriver::InvokeHelper(DISPID dwDispID, WORD wFlags, VARTYPE vtRet, void* pvRet, const BYTE* pbParamInfo,
                                      ...) {
    va_list arguments;
    va_start(arguments, pbParamInfo);
    struct Ending {
        va_list& list;
        ~Ending() { va_end(list); }
    } ending{arguments};
    InvokeHelperV(dwDispID, wFlags, vtRet, pvRet, pbParamInfo, arguments);
}

void COleDispatchDriver::SetProperty(DISPID dwDispID, VARTYPE vtProp, ...) {
    // A text is passed narrow here, so its code is the narrow one.
    const bool byReference = (vtProp & VT_BYREF) != 0;
    const auto type = static_cast<BYTE>(vtProp & ~VT_BYREF);
    const BYTE parameters[] = {static_cast<BYTE>(byReference ? type | 0x40 : type == VT_BSTR ? 0x0E : type), 0};
    va_list arguments;
    va_start(arguments, vtProp);
    struct Ending {
        va_list& list;
        ~Ending() { va_end(list); }
    } ending{arguments};
    InvokeHelperV(dwDispID, DISPATCH_PROPERTYPUT, VT_EMPTY, nullptr, parameters, arguments);
}

void COleDispatchDriver::GetProperty(DISPID dwDispID, VARTYPE vtProp, void* pvProp) const {
    OwnedVariant result;
    tk::afx::CallMember(m_lpDispatch, dwDispID, DISPATCH_PROPERTYGET, nullptr, 0, &result);
    tk::afx::StoreResult(result, vtProp, pvProp);
}
