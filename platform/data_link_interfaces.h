// platform/data_link_interfaces.h - the parts of the OLE DB service components that composing a connection needs.
//
// Declared here, under names of our own, because only one of the two systems has a header for them. The memory form is
// that of the published interfaces; members behind the last one called are left out.
#pragma once

#include <windows.h>

#include <objbase.h>

namespace tk::platform {

inline constexpr CLSID kDataLinksClass = {0x2206CDB2, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};
inline constexpr CLSID kDataInitializeClass = {
    0x2206CDB0, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};
inline constexpr IID kPromptInitializeId = {
    0x2206CCB0, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};
inline constexpr IID kDataInitializeId = {0x2206CCB1, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};
inline constexpr IID kPropertiesId = {0x0C733A8A, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};
inline constexpr IID kInitializeId = {0x0C733A8B, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};

/// IDBPromptInitialize: the dialog.
struct IPromptInitialize : IUnknown {
    /// @return S_FALSE when the user cancelled
    virtual HRESULT STDMETHODCALLTYPE PromptDataSource(IUnknown* outer, HWND parent, DWORD options,
                                                       ULONG sourceTypeCount, ULONG* sourceTypes, LPCOLESTR providers,
                                                       REFIID iid, IUnknown** source) = 0;

protected:
    ~IPromptInitialize() = default;
};

/// IDBInitialize: connects.
struct IInitialize : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Initialize() = 0;
    virtual HRESULT STDMETHODCALLTYPE Uninitialize() = 0;

protected:
    ~IInitialize() = default;
};

/// IDataInitialize: connection strings of data sources.
struct IDataInitialize : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetDataSource(IUnknown* outer, DWORD context, LPCOLESTR text, REFIID iid,
                                                    IUnknown** source) = 0;
    /// @param text  from the task allocator, the caller's
    virtual HRESULT STDMETHODCALLTYPE GetInitializationString(IUnknown* source, unsigned char includePassword,
                                                              LPOLESTR* text) = 0;

protected:
    ~IDataInitialize() = default;
};

}  // namespace tk::platform
