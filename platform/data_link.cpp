// Composing a connection in the platform's dialog.
#include "platform/data_link_interfaces.h"
#include "tkkernel/platform.h"

namespace tk::platform {
namespace {

constexpr DWORD kPropertySheet = 1;
constexpr unsigned char kIncludePassword = 1;

/// One reference to an interface, given back at the end.
template <typename Interface>
class Reference {
public:
    Reference() = default;
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;
    ~Reference() {
        if (object_ != nullptr) object_->Release();
    }

    Interface* operator->() const { return object_; }
    Interface* Get() const { return object_; }
    Interface** Receive() { return &object_; }
    void** ReceiveVoid() { return reinterpret_cast<void**>(&object_); }

private:
    Interface* object_ = nullptr;
};

/// A data source the user composed, connected. @return S_OK, or why there is none; a cancelled dialog is no S_OK
HRESULT PromptForSource(Reference<IUnknown>& source) {
    Reference<IPromptInitialize> prompt;
    HRESULT result =
        CoCreateInstance(kDataLinksClass, nullptr, CLSCTX_INPROC_SERVER, kPromptInitializeId, prompt.ReceiveVoid());
    if (result != S_OK) return result;
    result = prompt->PromptDataSource(nullptr, nullptr, kPropertySheet, 0, nullptr, nullptr, kPropertiesId,
                                      source.Receive());
    if (result == S_FALSE) return static_cast<HRESULT>(0x800704C7);  // the user cancelled
    if (result != S_OK) return result;
    Reference<IInitialize> connection;
    result = source->QueryInterface(kInitializeId, connection.ReceiveVoid());
    return result == S_OK ? connection->Initialize() : result;
}

CString ConnectionStringOf(IUnknown* source) {
    Reference<IDataInitialize> initializer;
    if (CoCreateInstance(kDataInitializeClass, nullptr, CLSCTX_INPROC_SERVER, kDataInitializeId,
                         initializer.ReceiveVoid()) != S_OK) {
        return CString();
    }
    LPOLESTR text = nullptr;
    if (FAILED(initializer->GetInitializationString(source, kIncludePassword, &text))) return CString();
    const CString connection(text);
    CoTaskMemFree(text);
    return connection;
}

}  // namespace
}  // namespace tk::platform

CString GetSystemDataSource() {
    tk::platform::Reference<IUnknown> source;
    if (tk::platform::PromptForSource(source) != S_OK || source.Get() == nullptr) return CString();
    return tk::platform::ConnectionStringOf(source.Get());
}
