// tests/afx/recording_dispatch.h - an automation object that writes down how it is called and answers as told.
//
// It counts its references and lives as long as the test; Release never frees it.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <afx.h>

#include <functional>
#include <string>
#include <vector>

/// One argument as it arrived.
struct SeenArgument {
    VARTYPE vt = VT_EMPTY;
    VARIANT value = {};               // a plain copy: pointers are only to be compared
    bool nullText = false;            // VT_BSTR with a null pointer
    std::basic_string<OLECHAR> text;  // of VT_BSTR
};

struct SeenCall {
    DISPID id = 0;
    WORD kind = 0;
    LCID lcid = 0;
    bool nullInterface = false;  // riid was IID_NULL
    bool wantsResult = false;
    std::vector<SeenArgument> arguments;  // first argument first
    std::vector<DISPID> named;
};

class RecordingDispatch : public IDispatch {
public:
    virtual ~RecordingDispatch() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        *object = nullptr;
        if (!IsEqualIID(riid, IID_IUnknown) && !IsEqualIID(riid, IID_IDispatch)) return E_NOINTERFACE;
        *object = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--references); }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override { return *count = 0, S_OK; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID riid, LCID lcid, WORD kind, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* info, UINT*) override {
        SeenCall call;
        call.id = id;
        call.kind = kind;
        call.lcid = lcid;
        call.nullInterface = IsEqualIID(riid, IID_NULL);
        call.wantsResult = result != nullptr;
        for (UINT i = parameters->cArgs; i-- > 0;) {
            const VARIANT& argument = parameters->rgvarg[i];
            SeenArgument seen;
            seen.vt = argument.vt;
            seen.value = argument;
            if (argument.vt == VT_BSTR) {
                seen.nullText = argument.bstrVal == nullptr;
                seen.text.assign(seen.nullText ? OLESTR("") : argument.bstrVal, SysStringLen(argument.bstrVal));
            }
            call.arguments.push_back(seen);
        }
        for (UINT i = 0; i < parameters->cNamedArgs; ++i)
            call.named.push_back(parameters->rgdispidNamedArgs[i]);
        calls.push_back(call);
        if (answer) return answer(parameters, result, info);
        return S_OK;
    }

    int references = 1;
    std::vector<SeenCall> calls;
    /// Runs in each call; the outcome of the call. Unset: S_OK and no result.
    std::function<HRESULT(DISPPARAMS*, VARIANT*, EXCEPINFO*)> answer;
};
