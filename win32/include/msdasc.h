// msdasc.h - the Data Link dialog, and connection strings of data sources.
//
// Created by class identifier: CLSID_DataLinks asks whoever sits at the machine for a connection string, in a window
// where a display and zenity are there, on the terminal where there is one; where nobody can be asked it answers as if
// the dialog had been cancelled. CLSID_MSDAINITIALIZE gives the text of such a data source back.
//
// Threads: any; a data source is used by one at a time.
#pragma once

#include "objbase.h"
#include "oledb.h"

using DBPROMPTOPTIONS = DWORD;
using DBSOURCETYPE = DWORD;
#define DBPROMPTOPTIONS_PROPERTYSHEET 0x2
#define DBPROMPTOPTIONS_WIZARDSHEET 0x1

inline constexpr CLSID CLSID_DataLinks = {0x2206CDB2, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};
inline constexpr CLSID CLSID_MSDAINITIALIZE = {
    0x2206CDB0, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};
inline constexpr IID IID_IDBPromptInitialize = {
    0x2206CCB0, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};
inline constexpr IID IID_IDataInitialize = {
    0x2206CCB1, 0x19C1, 0x11D1, {0x89, 0xE0, 0x00, 0xC0, 0x4F, 0xD7, 0xA8, 0x29}};

struct IDBPromptInitialize : IUnknown {
    /// @param pUnkOuter  null; hWndParent, dwPromptOptions and the filters are accepted and not needed
    /// @param ppDataSource  the data source of the text that was entered, not connected yet
    /// @return S_OK; S_FALSE, and null, when the question was cancelled, left empty, or nobody could be asked
    virtual HRESULT STDMETHODCALLTYPE PromptDataSource(IUnknown* pUnkOuter, HWND hWndParent,
                                                       DBPROMPTOPTIONS dwPromptOptions, ULONG cSourceTypeFilter,
                                                       DBSOURCETYPE* rgSourceTypeFilter,
                                                       LPCOLESTR pwszszzProviderFilter, REFIID riid,
                                                       IUnknown** ppDataSource) = 0;
    /// @return E_NOTIMPL: there are no files of connections here
    virtual HRESULT STDMETHODCALLTYPE PromptFileName(HWND hWndParent, DBPROMPTOPTIONS dwPromptOptions,
                                                     LPCOLESTR pwszInitialDirectory, LPCOLESTR pwszInitialFile,
                                                     LPOLESTR* ppwszSelectedFile) = 0;

protected:
    ~IDBPromptInitialize() = default;
};

struct IDataInitialize : IUnknown {
    /// The data source of a connection string, not connected yet.
    virtual HRESULT STDMETHODCALLTYPE GetDataSource(IUnknown* pUnkOuter, DWORD dwClsCtx,
                                                    LPCOLESTR pwszInitializationString, REFIID riid,
                                                    IUnknown** ppDataSource) = 0;
    /// @param pDataSource  one that these classes made; E_NOINTERFACE for another
    /// @param fIncludePassword  0 leaves the PWD and Password entries out
    /// @param ppwszInitString  from the task allocator, the caller's
    virtual HRESULT STDMETHODCALLTYPE GetInitializationString(IUnknown* pDataSource, unsigned char fIncludePassword,
                                                              LPOLESTR* ppwszInitString) = 0;
    // The four below: E_NOTIMPL. Providers are not created one by one here, and there are no files of connections.
    virtual HRESULT STDMETHODCALLTYPE CreateDBInstance(REFCLSID clsidProvider, IUnknown* pUnkOuter, DWORD dwClsCtx,
                                                       LPOLESTR pwszReserved, REFIID riid, IUnknown** ppDataSource) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateDBInstanceEx(REFCLSID clsidProvider, IUnknown* pUnkOuter, DWORD dwClsCtx,
                                                         LPOLESTR pwszReserved, COSERVERINFO* pServerInfo, ULONG cmq,
                                                         MULTI_QI* rgmqResults) = 0;
    virtual HRESULT STDMETHODCALLTYPE LoadStringFromStorage(LPCOLESTR pwszFileName,
                                                            LPOLESTR* ppwszInitializationString) = 0;
    virtual HRESULT STDMETHODCALLTYPE WriteStringToStorage(LPCOLESTR pwszFileName, LPCOLESTR pwszInitializationString,
                                                           DWORD dwCreationDisposition) = 0;

protected:
    ~IDataInitialize() = default;
};
