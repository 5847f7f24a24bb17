// tests/util/counted_object.h - an automation object on the stack that has nothing but a default value, and knows how
// many references there are to it.
#pragma once

#include <windows.h>

#include <oleauto.h>

namespace tk::test {

class CountedObject final : public IDispatch {
public:
    /// @param text  the default value; borrowed
    explicit CountedObject(const OLECHAR* text = OLESTR("")) : text_(text) {}
    CountedObject(const CountedObject&) = delete;
    CountedObject& operator=(const CountedObject&) = delete;
    ~CountedObject() = default;

    /// With the owner's.
    ULONG References() const { return references_; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        const bool known = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch);
        *object = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override { return --references_; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                                     UINT*) override {
        if (id != DISPID_VALUE) return DISP_E_MEMBERNOTFOUND;
        if (result != nullptr) {
            result->vt = VT_BSTR;
            result->bstrVal = SysAllocString(text_);
        }
        return S_OK;
    }

private:
    const OLECHAR* text_;
    ULONG references_ = 1;
};

}  // namespace tk::test
