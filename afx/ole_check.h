// afx/ole_check.h - a failed result code becomes the exception that applications catch.
#pragma once

#include "afx_ole_exception.h"

namespace tk::afx {

inline void ThrowIfFailed(HRESULT result) {
    if (SUCCEEDED(result)) return;
    if (result == E_OUTOFMEMORY) AfxThrowMemoryException();
    AfxThrowOleException(result);
}

}  // namespace tk::afx
