#include "ado/objects/row_access.h"

#include "ado/cursor/columns.h"
#include "ado/objects/recordset.h"

namespace tk::ado {
namespace {

/// Whatever goes wrong here, the caller asks again by the ordinary way and gets the failure from there.
template <class Work>
HRESULT Try(Work&& work) noexcept {
    try {
        return work();
    } catch (...) {
        return E_FAIL;
    }
}

}  // namespace

HRESULT RowAccess::QueryInterface(REFIID iid, void** object) {
    if (object != nullptr && iid == IID_IRowAccess) {
        *object = static_cast<IRowAccess*>(this);
        AddRef();
        return S_OK;
    }
    return owner_.QueryInterface(iid, object);
}

ULONG RowAccess::AddRef() {
    return owner_.AddRef();
}
ULONG RowAccess::Release() {
    return owner_.Release();
}

HRESULT RowAccess::GetValue(LONG index, VARIANT* value) {
    value->vt = VT_EMPTY;
    return Try([&]() -> HRESULT {
        ClientCursor* const cursor = owner_.FastCursor();
        if (cursor == nullptr) return S_FALSE;
        const RowStore& rows = cursor->Store();
        const auto column = static_cast<std::size_t>(index);
        if (column >= rows.ColumnCount()) return S_FALSE;
        const auto row = cursor->LiveRow();
        if (!row) return S_FALSE;
        owner_.LeaveChunks(column);
        rows.Read(*row, column, *value);
        return S_OK;
    });
}

HRESULT RowAccess::FindField(const OLECHAR* name, UINT length, LONG* index) {
    return Try([&]() -> HRESULT {
        ClientCursor* const cursor = owner_.AnyCursor();
        if (cursor == nullptr) return S_FALSE;
        const auto found = LookUpColumn(cursor->Store().Columns(), {name, length});
        if (!found) return S_FALSE;
        *index = static_cast<LONG>(*found);
        return S_OK;
    });
}

HRESULT RowAccess::GetText(LONG index, const char** text, ULONG* length) {
    return Try([&]() -> HRESULT {
        ClientCursor* const cursor = owner_.FastCursor();
        if (cursor == nullptr) return S_FALSE;
        const RowStore& rows = cursor->Store();
        const auto column = static_cast<std::size_t>(index);
        if (column >= rows.ColumnCount()) return S_FALSE;
        const auto row = cursor->LiveRow();
        if (!row) return S_FALSE;
        owner_.LeaveChunks(column);
        const auto cell = rows.TextAt(*row, column);
        if (!cell) return S_FALSE;
        *text = cell->data();
        *length = static_cast<ULONG>(cell->size());
        return S_OK;
    });
}

HRESULT RowAccess::MoveNext() {
    return Try([&]() -> HRESULT {
        ClientCursor* const cursor = owner_.FastCursor();
        if (cursor == nullptr || cursor->Eof()) return S_FALSE;
        owner_.LeaveChunks();
        cursor->MoveNext();
        return S_OK;
    });
}

HRESULT RowAccess::MovePrevious() {
    return Try([&]() -> HRESULT {
        ClientCursor* const cursor = owner_.FastCursor();
        if (cursor == nullptr || cursor->Bof()) return S_FALSE;
        owner_.LeaveChunks();
        cursor->MovePrevious();
        return S_OK;
    });
}

HRESULT RowAccess::GetEof(VARIANT_BOOL* eof) {
    return Try([&]() -> HRESULT {
        ClientCursor* const cursor = owner_.FastCursor();
        if (cursor == nullptr) return S_FALSE;
        *eof = cursor->Eof() ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    });
}

HRESULT RowAccess::GetBof(VARIANT_BOOL* bof) {
    return Try([&]() -> HRESULT {
        ClientCursor* const cursor = owner_.FastCursor();
        if (cursor == nullptr) return S_FALSE;
        *bof = cursor->Bof() ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    });
}

HRESULT RowAccess::GetFieldCount(LONG* count) {
    return Try([&]() -> HRESULT {
        ClientCursor* const cursor = owner_.AnyCursor();
        if (cursor == nullptr) return S_FALSE;
        *count = static_cast<LONG>(cursor->Store().ColumnCount());
        return S_OK;
    });
}

}  // namespace tk::ado
