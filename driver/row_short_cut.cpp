#include "tkkernel/driver.h"
#include "tkkernel/row_access.h"

namespace tk::driver {

void RowShortCut::Forget() noexcept {
    if (rows_ != nullptr) rows_->Release();
    rows_ = nullptr;
    object_ = nullptr;
}

IRowAccess* RowShortCut::Ask(IDispatch* object) noexcept {
    Forget();
    if (object == nullptr) return nullptr;
    IRowAccess* rows = nullptr;
    if (object->QueryInterface(IID_IRowAccess, reinterpret_cast<void**>(&rows)) == S_OK) rows_ = rows;
    object_ = object;
    return rows_;
}

}  // namespace tk::driver
