// The error that a call left behind, in words: one per thread, handed out once.
#include <atomic>
#include <new>

#include "win32/include/oleauto.h"

namespace {

// Both faces of one object: filled through the one, read through the other.
class ErrorInfo final : public IErrorInfo, public ICreateErrorInfo {
public:
    HRESULT QueryInterface(REFIID riid, void** ppvObject) override {
        if (ppvObject == nullptr) return E_POINTER;
        if (riid == IID_IUnknown || riid == IID_IErrorInfo) {
            *ppvObject = static_cast<IErrorInfo*>(this);
        } else if (riid == IID_ICreateErrorInfo) {
            *ppvObject = static_cast<ICreateErrorInfo*>(this);
        } else {
            *ppvObject = nullptr;
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG AddRef() override { return ++references_; }
    ULONG Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

    HRESULT GetGUID(GUID* pGUID) override {
        if (pGUID == nullptr) return E_INVALIDARG;
        *pGUID = guid_;
        return S_OK;
    }
    HRESULT GetSource(BSTR* pBstrSource) override { return Hand(source_, pBstrSource); }
    HRESULT GetDescription(BSTR* pBstrDescription) override { return Hand(description_, pBstrDescription); }
    HRESULT GetHelpFile(BSTR* pBstrHelpFile) override { return Hand(helpFile_, pBstrHelpFile); }
    HRESULT GetHelpContext(DWORD* pdwHelpContext) override {
        if (pdwHelpContext == nullptr) return E_INVALIDARG;
        *pdwHelpContext = helpContext_;
        return S_OK;
    }

    HRESULT SetGUID(REFGUID rguid) override {
        guid_ = rguid;
        return S_OK;
    }
    HRESULT SetSource(LPOLESTR szSource) override { return Keep(source_, szSource); }
    HRESULT SetDescription(LPOLESTR szDescription) override { return Keep(description_, szDescription); }
    HRESULT SetHelpFile(LPOLESTR szHelpFile) override { return Keep(helpFile_, szHelpFile); }
    HRESULT SetHelpContext(DWORD dwHelpContext) override {
        helpContext_ = dwHelpContext;
        return S_OK;
    }

private:
    ~ErrorInfo() {
        SysFreeString(source_);
        SysFreeString(description_);
        SysFreeString(helpFile_);
    }
    static HRESULT Hand(BSTR kept, BSTR* out) {
        if (out == nullptr) return E_INVALIDARG;
        *out = nullptr;
        if (kept == nullptr) return S_OK;
        *out = SysAllocStringLen(kept, SysStringLen(kept));
        return *out == nullptr ? E_OUTOFMEMORY : S_OK;
    }
    static HRESULT Keep(BSTR& kept, const OLECHAR* text) {
        return SysReAllocString(&kept, text) != 0 ? S_OK : E_OUTOFMEMORY;
    }

    std::atomic<ULONG> references_ = 0;
    GUID guid_ = GUID_NULL;
    BSTR source_ = nullptr;
    BSTR description_ = nullptr;
    BSTR helpFile_ = nullptr;
    DWORD helpContext_ = 0;
};

// Released when the thread ends.
struct ThreadError {
    IErrorInfo* info = nullptr;
    ~ThreadError() {
        if (info != nullptr) info->Release();
    }
};
thread_local ThreadError threadError;

}  // namespace

HRESULT CreateErrorInfo(ICreateErrorInfo** pperrinfo) {
    if (pperrinfo == nullptr) return E_INVALIDARG;
    auto* made = new (std::nothrow) ErrorInfo;
    *pperrinfo = made;
    if (made == nullptr) return E_OUTOFMEMORY;
    made->AddRef();
    return S_OK;
}

HRESULT SetErrorInfo(ULONG dwReserved, IErrorInfo* perrinfo) {
    if (dwReserved != 0) return E_INVALIDARG;
    if (perrinfo != nullptr) perrinfo->AddRef();
    IErrorInfo* old = threadError.info;
    threadError.info = perrinfo;
    if (old != nullptr) old->Release();
    return S_OK;
}

HRESULT GetErrorInfo(ULONG dwReserved, IErrorInfo** pperrinfo) {
    if (dwReserved != 0 || pperrinfo == nullptr) return E_INVALIDARG;
    *pperrinfo = threadError.info;
    threadError.info = nullptr;
    return *pperrinfo == nullptr ? S_FALSE : S_OK;
}
