#include "win32/datalink/data_links.h"

#include "tkwin32/text.h"
#include "win32/datalink/data_source.h"
#include "win32/datalink/line_prompt.h"

namespace tk::datalink {
namespace {

constexpr char16_t kTitle[] = u"数据链接";
constexpr char16_t kQuestion[] = u"请输入连接字符串（空则取消）：";

/// What the objects of this file have in common: they hold nothing, so one of each serves everybody and is never freed.
template <typename Interface, const IID& kId>
class Stateless : public Interface {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        const bool known = iid == IID_IUnknown || iid == kId;
        *object = known ? static_cast<Interface*>(this) : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

protected:
    ~Stateless() = default;
};

class DataLinks final : public Stateless<IDBPromptInitialize, IID_IDBPromptInitialize> {
public:
    HRESULT STDMETHODCALLTYPE PromptDataSource(IUnknown* outer, HWND, DBPROMPTOPTIONS, ULONG, DBSOURCETYPE*, LPCOLESTR,
                                               REFIID iid, IUnknown** source) override {
        if (source == nullptr) return E_POINTER;
        *source = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        const auto line = AskLine(text::Utf16ToUtf8(kTitle), text::Utf16ToUtf8(kQuestion));
        if (!line || line->empty()) return S_FALSE;
        return DataSource::Make(text::Utf8ToUtf16(*line), iid, source);
    }
    HRESULT STDMETHODCALLTYPE PromptFileName(HWND, DBPROMPTOPTIONS, LPCOLESTR, LPCOLESTR, LPOLESTR*) override {
        return E_NOTIMPL;
    }
};

class DataInitialize final : public Stateless<IDataInitialize, IID_IDataInitialize> {
public:
    HRESULT STDMETHODCALLTYPE GetDataSource(IUnknown* outer, DWORD, LPCOLESTR connection, REFIID iid,
                                            IUnknown** source) override {
        if (source == nullptr) return E_POINTER;
        *source = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        return DataSource::Make(connection == nullptr ? u"" : connection, iid, source);
    }
    HRESULT STDMETHODCALLTYPE GetInitializationString(IUnknown* source, unsigned char includePassword,
                                                      LPOLESTR* result) override {
        if (source == nullptr || result == nullptr) return E_POINTER;
        *result = nullptr;
        const DataSource* own = DataSource::Of(source);
        if (own == nullptr) return E_NOINTERFACE;
        const std::u16string connection = includePassword != 0 ? own->Connection() : WithoutPassword(own->Connection());
        const std::size_t bytes = (connection.size() + 1) * sizeof(OLECHAR);
        *result = static_cast<LPOLESTR>(CoTaskMemAlloc(bytes));
        if (*result == nullptr) return E_OUTOFMEMORY;
        std::memcpy(*result, connection.c_str(), bytes);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE CreateDBInstance(REFCLSID, IUnknown*, DWORD, LPOLESTR, REFIID, IUnknown**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CreateDBInstanceEx(REFCLSID, IUnknown*, DWORD, LPOLESTR, COSERVERINFO*, ULONG,
                                                 MULTI_QI*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE LoadStringFromStorage(LPCOLESTR, LPOLESTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE WriteStringToStorage(LPCOLESTR, LPCOLESTR, DWORD) override { return E_NOTIMPL; }
};

template <typename Class>
class Factory final : public Stateless<IClassFactory, IID_IClassFactory> {
public:
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        static Class served;
        return outer != nullptr ? CLASS_E_NOAGGREGATION : served.QueryInterface(iid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace

HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    static Factory<DataLinks> dataLinks;
    static Factory<DataInitialize> dataInitialize;
    if (clsid == CLSID_DataLinks) return dataLinks.QueryInterface(iid, object);
    if (clsid == CLSID_MSDAINITIALIZE) return dataInitialize.QueryInterface(iid, object);
    return CLASS_E_CLASSNOTAVAILABLE;
}

}  // namespace tk::datalink
