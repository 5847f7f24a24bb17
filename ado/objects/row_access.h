// ado/objects/row_access.h - the short cut of tkkernel/row_access.h on a Recordset: a part of it, with its references.
#pragma once

#include <tkkernel/row_access.h>

namespace tk::ado {

class Recordset;

class RowAccess final : public IRowAccess {
public:
    explicit RowAccess(Recordset& owner) noexcept : owner_(owner) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetValue(LONG index, VARIANT* value) override;
    HRESULT STDMETHODCALLTYPE FindField(const OLECHAR* name, UINT length, LONG* index) override;
    HRESULT STDMETHODCALLTYPE GetText(LONG index, const char** text, ULONG* length) override;
    HRESULT STDMETHODCALLTYPE MoveNext() override;
    HRESULT STDMETHODCALLTYPE MovePrevious() override;
    HRESULT STDMETHODCALLTYPE GetEof(VARIANT_BOOL* eof) override;
    HRESULT STDMETHODCALLTYPE GetBof(VARIANT_BOOL* bof) override;
    HRESULT STDMETHODCALLTYPE GetFieldCount(LONG* count) override;
    using IUnknown::QueryInterface;

private:
    Recordset& owner_;
};

}  // namespace tk::ado
