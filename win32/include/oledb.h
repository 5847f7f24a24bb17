// oledb.h - the part of OLE DB that composing a connection needs: a data source that is given, and connected.
//
// Threads: as the object behind it.
#pragma once

#include "unknwn.h"

struct DBPROPIDSET;
struct DBPROPSET;
struct DBPROPINFOSET;

inline constexpr IID IID_IDBProperties = {0x0C733A8A, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};
inline constexpr IID IID_IDBInitialize = {0x0C733A8B, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};

struct IDBProperties : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetProperties(ULONG cPropertyIDSets, const DBPROPIDSET rgPropertyIDSets[],
                                                    ULONG* pcPropertySets, DBPROPSET** prgPropertySets) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPropertyInfo(ULONG cPropertyIDSets, const DBPROPIDSET rgPropertyIDSets[],
                                                      ULONG* pcPropertyInfoSets, DBPROPINFOSET** prgPropertyInfoSets,
                                                      OLECHAR** ppDescBuffer) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetProperties(ULONG cPropertySets, DBPROPSET rgPropertySets[]) = 0;

protected:
    ~IDBProperties() = default;
};

struct IDBInitialize : IUnknown {
    /// Connects.
    virtual HRESULT STDMETHODCALLTYPE Initialize() = 0;
    virtual HRESULT STDMETHODCALLTYPE Uninitialize() = 0;

protected:
    ~IDBInitialize() = default;
};
