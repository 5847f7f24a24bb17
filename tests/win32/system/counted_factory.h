// A class object that counts what is done with it, and its objects.
#pragma once

#include <atomic>

#include "objbase.h"

namespace tk::test {

/// An object of no use but to be created.
class PlainObject : public IUnknown {
public:
    explicit PlainObject(std::atomic<int>* alive) : alive_(alive) { alive_->fetch_add(1); }
    virtual ~PlainObject() { alive_->fetch_sub(1); }

    HRESULT QueryInterface(REFIID riid, void** ppvObject) override {
        *ppvObject = riid == IID_IUnknown ? this : nullptr;
        if (*ppvObject == nullptr) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG AddRef() override { return references_.fetch_add(1) + 1; }
    ULONG Release() override {
        const ULONG left = references_.fetch_sub(1) - 1;
        if (left == 0) delete this;
        return left;
    }

private:
    std::atomic<int>* alive_;
    std::atomic<ULONG> references_ = 1;
};

/// Lives where the test puts it; its references are counted but do not end it.
class CountedFactory : public IClassFactory {
public:
    virtual ~CountedFactory() = default;

    HRESULT QueryInterface(REFIID riid, void** ppvObject) override {
        const bool known = riid == IID_IUnknown || riid == IID_IClassFactory;
        *ppvObject = known ? this : nullptr;
        if (!known) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG AddRef() override { return ++references; }
    ULONG Release() override { return --references; }
    HRESULT CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppvObject) override {
        *ppvObject = nullptr;
        if (pUnkOuter != nullptr) return CLASS_E_NOAGGREGATION;
        ++created;
        auto* object = new PlainObject(&alive);
        const HRESULT result = object->QueryInterface(riid, ppvObject);
        object->Release();
        return result;
    }
    HRESULT LockServer(BOOL) override { return S_OK; }

    std::atomic<ULONG> references = 0;
    std::atomic<int> created = 0;
    std::atomic<int> alive = 0;
};

}  // namespace tk::test
