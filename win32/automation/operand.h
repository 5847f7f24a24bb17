// operand.h - what arithmetic and comparison see of a VARIANT: no reference, no object.
#pragma once

#include "win32/automation/convert.h"
#include "win32/automation/value_types.h"

namespace tk::automation {

/// A copy of the value with references followed and objects replaced by their default values.
class Operand {
public:
    Operand() noexcept { VariantInit(&value_); }
    ~Operand() { VariantClear(&value_); }
    Operand(const Operand&) = delete;
    Operand& operator=(const Operand&) = delete;

    /// @return E_INVALIDARG for null, DISP_E_BADVARTYPE, DISP_E_TYPEMISMATCH for arrays, errors and plain interfaces
    HRESULT Take(const VARIANT* source, LCID locale) noexcept;

    const VARIANT& Value() const noexcept { return value_; }
    VARTYPE Type() const noexcept { return value_.vt; }

private:
    VARIANT value_;
};

}  // namespace tk::automation
