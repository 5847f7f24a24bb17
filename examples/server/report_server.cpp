// An in-process server of a third party: one class, "Stock.Report", that tells how many articles are on stock.
//
// It needs the platform's headers and nothing of the library's. A client finds it through the class registry:
//
//   {7E1D0A40-52F5-4F2A-9A11-0102030405AA} Stock.Report /opt/stock/lib/libstock_report.so
//
//   COleDispatchDriver report;
//   CString error;
//   if (CreateIDispatch(&report, "Stock.Report", error)) report.InvokeHelper(1, DISPATCH_METHOD, VT_I4, &count, NULL);
#include <windows.h>

#include <ole2.h>

#include <atomic>
#include <new>

namespace {

constexpr CLSID kReportClass = {0x7E1D0A40, 0x52F5, 0x4F2A, {0x9A, 0x11, 0x01, 0x02, 0x03, 0x04, 0x05, 0xAA}};
constexpr DISPID kCount = 1;
constexpr LONG kArticles = 4711;

std::atomic<long> objects = 0;

class Report final : public IDispatch {
public:
    Report() { ++objects; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        const bool known = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch);
        *object = known ? static_cast<IDispatch*>(this) : nullptr;
        if (!known) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        if (count == nullptr) return E_POINTER;
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        if (names == nullptr || ids == nullptr || count == 0) return E_INVALIDARG;
        constexpr OLECHAR kName[] = OLESTR("Count");
        const OLECHAR* name = names[0];
        int at = 0;
        while (kName[at] != 0 && name[at] == kName[at])
            ++at;
        const bool known = kName[at] == 0 && name[at] == 0;
        ids[0] = known ? kCount : DISPID_UNKNOWN;
        return known && count == 1 ? S_OK : DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT* result, EXCEPINFO*,
                                     UINT*) override {
        if (id != kCount) return DISP_E_MEMBERNOTFOUND;
        if (arguments != nullptr && arguments->cArgs != 0) return DISP_E_BADPARAMCOUNT;
        if (result == nullptr) return S_OK;
        result->vt = VT_I4;
        result->lVal = kArticles;
        return S_OK;
    }

private:
    ~Report() { --objects; }

    std::atomic<ULONG> references_ = 1;
};

/// Holds nothing, so one serves everybody and is never freed.
class ReportFactory final : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        const bool known = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory);
        *object = known ? static_cast<IClassFactory*>(this) : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        auto* report = new (std::nothrow) Report;
        if (report == nullptr) return E_OUTOFMEMORY;
        const HRESULT result = report->QueryInterface(iid, object);
        report->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, LPVOID* object) {
    static ReportFactory factory;
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    return IsEqualCLSID(clsid, kReportClass) ? factory.QueryInterface(iid, object) : CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() {
    return objects == 0 ? S_OK : S_FALSE;
}
