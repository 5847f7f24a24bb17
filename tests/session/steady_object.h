// steady_object.h - an automation object that answers from any thread, and allocates nothing.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <atomic>

namespace tk::test {

/// An object for every call, from any thread.
class SteadyObject final : public IDispatch {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        *object = nullptr;
        if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IDispatch)) return E_NOINTERFACE;
        *object = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references_); }
    ULONG STDMETHODCALLTYPE Release() override {
        const int left = --references_;
        if (left == 0) delete this;
        return static_cast<ULONG>(left);
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                                     UINT*) override {
        constexpr DISPID kProperties = 500;
        if (id == kProperties && result != nullptr) {
            V_VT(result) = VT_DISPATCH;
            V_DISPATCH(result) = nullptr;
        }
        return S_OK;
    }

private:
    std::atomic<int> references_ = 1;
};

}  // namespace tk::test
