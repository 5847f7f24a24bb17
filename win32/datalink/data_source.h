// A connection string as a data source that can be tried.
#pragma once

#include <atomic>
#include <string>

#include "msdasc.h"

namespace tk::datalink {

/// Asked for by the classes of this folder to know their own data sources again.
inline constexpr IID kDataSourceId = {0x3F0A6E11, 0x8E0B, 0x4A5C, {0x9B, 0x52, 0x61, 0x7C, 0x0D, 0x2A, 0x95, 0xE4}};

class DataSource final : public IDBProperties, public IDBInitialize {
public:
    /// @return the interface of a new data source; E_NOINTERFACE for one it does not have
    static HRESULT Make(std::u16string connection, REFIID iid, IUnknown** source);

    /// @param source  null and foreign ones give null; else borrowed from it
    static const DataSource* Of(IUnknown* source);

    const std::u16string& Connection() const { return connection_; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // There is nothing but the connection string: E_NOTIMPL.
    HRESULT STDMETHODCALLTYPE GetProperties(ULONG, const DBPROPIDSET[], ULONG*, DBPROPSET**) override;
    HRESULT STDMETHODCALLTYPE GetPropertyInfo(ULONG, const DBPROPIDSET[], ULONG*, DBPROPINFOSET**, OLECHAR**) override;
    HRESULT STDMETHODCALLTYPE SetProperties(ULONG, DBPROPSET[]) override;

    /// Opens an ADO Connection with the text, and keeps it until Uninitialize.
    HRESULT STDMETHODCALLTYPE Initialize() override;
    HRESULT STDMETHODCALLTYPE Uninitialize() override;

private:
    explicit DataSource(std::u16string connection) : connection_(std::move(connection)) {}
    ~DataSource() { Uninitialize(); }

    const std::u16string connection_;
    std::atomic<ULONG> references_ = 1;
    IDispatch* opened_ = nullptr;
};

/// The connection string without its entries for a password.
std::u16string WithoutPassword(const std::u16string& connection);

}  // namespace tk::datalink
