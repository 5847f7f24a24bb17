// Composing a connection in the platform's dialog.
#include <windows.h>

#include <objbase.h>

#include <msdasc.h>

#include "tkkernel/platform.h"

namespace tk::platform {
namespace {

// Identifiers under names of our own: some declarations of the interfaces come without their values.
constexpr CLSID kDataLinksClass = {0x2206CDB2, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};
constexpr CLSID kDataInitializeClass = {0x2206CDB0, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};
constexpr IID kPromptInitializeId = {0x2206CCB0, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};
constexpr IID kDataInitializeId = {0x2206CCB1, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};
constexpr IID kPropertiesId = {0x0C733A8A, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};
constexpr IID kInitializeId = {0x0C733A8B, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};

constexpr DBPROMPTOPTIONS kPromptOptions = 1;
constexpr unsigned char kIncludePassword = 1;
constexpr auto kCancelled = static_cast<HRESULT>(0x800704C7);

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
    Reference<IDBPromptInitialize> prompt;
    HRESULT result =
        CoCreateInstance(kDataLinksClass, nullptr, CLSCTX_INPROC_SERVER, kPromptInitializeId, prompt.ReceiveVoid());
    if (result != S_OK) return result;
    result = prompt->PromptDataSource(nullptr, GetActiveWindow(), kPromptOptions, 0, nullptr, nullptr, kPropertiesId,
                                      source.Receive());
    if (result == S_FALSE) return kCancelled;
    if (result != S_OK) return result;
    if (source.Get() == nullptr) return E_POINTER;
    Reference<IDBInitialize> connection;
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
    CString connection(text);
    CoTaskMemFree(text);
    return connection;
}

}  // namespace
}  // namespace tk::platform

CString GetSystemDataSource() {
    tk::platform::Reference<IUnknown> source;
    if (tk::platform::PromptForSource(source) != S_OK) return CString();
    return tk::platform::ConnectionStringOf(source.Get());
}
