// tkkernel/row_access.h - an optional short cut that an in-process recordset server may offer beside IDispatch.
//
//   IRowAccess* rows = nullptr;
//   if (SUCCEEDED(recordset->QueryInterface(IID_IRowAccess, &rows)) && rows->GetValue(0, &value) == S_OK) ...
//
// Every member answers S_OK with exactly what the late-bound call sequence would have given, or anything else without
// having changed a thing; the caller then makes the late-bound calls, which give the result or the error text.
// A server that does not know the interface is driven by late-bound calls alone.
//
// Threads: as the recordset itself, one caller at a time.
#pragma once

#include <windows.h>

#include <oleauto.h>

inline constexpr IID IID_IRowAccess = {0x7B1D3C53, 0x5A0E, 0x4F43, {0x9C, 0x1B, 0x2E, 0x64, 0xD1, 0x90, 0x3A, 0x77}};

struct IRowAccess : IUnknown {
    /// Fields.Item(index).Value of the current record.
    /// @param value  uninitialised; owned by the caller afterwards; VT_EMPTY unless S_OK
    virtual HRESULT STDMETHODCALLTYPE GetValue(LONG index, VARIANT* value) = 0;

    /// The position of Fields.Item(name), compared as Item compares names.
    /// @param name, length  UTF-16 units, no terminator needed
    virtual HRESULT STDMETHODCALLTYPE FindField(const OLECHAR* name, UINT length, LONG* index) = 0;

    /// The text of a text field of the current record, in place.
    /// @param text, length  UTF-8 bytes, valid until the next call on the recordset; null for a NULL value
    /// @return S_OK for fields of text columns, whose Value would be a VT_BSTR or VT_NULL; S_FALSE for every other
    /// field
    virtual HRESULT STDMETHODCALLTYPE GetText(LONG index, const char** text, ULONG* length) = 0;

    virtual HRESULT STDMETHODCALLTYPE MoveNext() = 0;
    virtual HRESULT STDMETHODCALLTYPE MovePrevious() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetEof(VARIANT_BOOL* eof) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBof(VARIANT_BOOL* bof) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFieldCount(LONG* count) = 0;

protected:
    ~IRowAccess() = default;
};
