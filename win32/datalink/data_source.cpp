#include "win32/datalink/data_source.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "oleauto.h"

namespace tk::datalink {
namespace {

constexpr CLSID kConnectionClass = {0x00000514, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};
constexpr DISPID kOpen = 10;

HRESULT OpenConnection(IDispatch& connection, const std::u16string& text) {
    VARIANT argument;
    VariantInit(&argument);
    V_VT(&argument) = VT_BSTR;
    V_BSTR(&argument) = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (V_BSTR(&argument) == nullptr) return E_OUTOFMEMORY;
    DISPPARAMS parameters = {&argument, nullptr, 1, 0};
    const HRESULT result =
        connection.Invoke(kOpen, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr);
    VariantClear(&argument);
    return result;
}

std::u16string_view Trimmed(std::u16string_view text) {
    while (!text.empty() && text.front() == u' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == u' ')
        text.remove_suffix(1);
    return text;
}

bool IsPasswordEntry(std::u16string_view entry) {
    const auto name = Trimmed(entry.substr(0, entry.find(u'=')));
    const auto matches = [&](std::u16string_view wanted) {
        return std::ranges::equal(
            name, wanted, [](char16_t a, char16_t b) { return (a >= u'A' && a <= u'Z' ? a + (u'a' - u'A') : a) == b; });
    };
    return matches(u"pwd") || matches(u"password");
}

/// The position of the ';' that ends the entry which begins here; quotes and braces protect what they enclose.
std::size_t EntryEnd(std::u16string_view text, std::size_t at) {
    char16_t closing = 0;
    for (; at < text.size(); ++at) {
        const char16_t unit = text[at];
        if (closing != 0) {
            if (unit == closing) closing = 0;
        } else if (unit == u'"' || unit == u'\'') {
            closing = unit;
        } else if (unit == u'{') {
            closing = u'}';
        } else if (unit == u';') {
            return at;
        }
    }
    return at;
}

}  // namespace

HRESULT DataSource::Make(std::u16string connection, REFIID iid, IUnknown** source) {
    if (source == nullptr) return E_POINTER;
    auto* made = new DataSource(std::move(connection));
    const HRESULT result = made->QueryInterface(iid, reinterpret_cast<void**>(source));
    made->Release();
    return result;
}

const DataSource* DataSource::Of(IUnknown* source) {
    void* own = nullptr;
    if (source == nullptr || source->QueryInterface(kDataSourceId, &own) != S_OK) return nullptr;
    auto* found = static_cast<DataSource*>(own);
    found->Release();
    return found;
}

HRESULT DataSource::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) return E_POINTER;
    if (iid == kDataSourceId) {
        *object = this;
    } else if (iid == IID_IDBInitialize) {
        *object = static_cast<IDBInitialize*>(this);
    } else if (iid == IID_IDBProperties || iid == IID_IUnknown) {
        *object = static_cast<IDBProperties*>(this);
    } else {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG DataSource::AddRef() {
    return ++references_;
}

ULONG DataSource::Release() {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
}

HRESULT DataSource::GetProperties(ULONG, const DBPROPIDSET[], ULONG*, DBPROPSET**) {
    return E_NOTIMPL;
}
HRESULT DataSource::GetPropertyInfo(ULONG, const DBPROPIDSET[], ULONG*, DBPROPINFOSET**, OLECHAR**) {
    return E_NOTIMPL;
}
HRESULT DataSource::SetProperties(ULONG, DBPROPSET[]) {
    return E_NOTIMPL;
}

HRESULT DataSource::Initialize() {
    Uninitialize();
    IDispatch* connection = nullptr;
    HRESULT result = CoCreateInstance(kConnectionClass, nullptr, CLSCTX_SERVER, IID_IDispatch,
                                      reinterpret_cast<void**>(&connection));
    if (FAILED(result)) return result;
    result = OpenConnection(*connection, connection_);
    if (SUCCEEDED(result)) opened_ = std::exchange(connection, nullptr);
    if (connection != nullptr) connection->Release();
    return result;
}

HRESULT DataSource::Uninitialize() {
    if (opened_ != nullptr) std::exchange(opened_, nullptr)->Release();  // the last reference closes the connection
    return S_OK;
}

std::u16string WithoutPassword(const std::u16string& connection) {
    std::u16string kept;
    for (std::size_t at = 0; at < connection.size();) {
        const std::size_t end = std::min(EntryEnd(connection, at) + 1, connection.size());
        const std::u16string_view entry = std::u16string_view(connection).substr(at, end - at);
        if (!IsPasswordEntry(entry)) kept += entry;
        at = end;
    }
    return kept;
}

}  // namespace tk::datalink
