#include "win32/automation/operand.h"

#include "win32/automation/number.h"

namespace tk::automation {

HRESULT Operand::Take(const VARIANT* source, LCID locale) noexcept {
    if (source == nullptr) return E_INVALIDARG;
    HRESULT result = VariantCopyInd(&value_, source);
    if (FAILED(result)) return result;
    if (value_.vt == VT_DISPATCH) {
        VARIANT inner;
        result = DefaultValueOf(value_.pdispVal, locale, inner);
        if (FAILED(result)) return result;
        VariantClear(&value_);
        value_ = inner;
    }
    const bool usable = value_.vt == VT_EMPTY || value_.vt == VT_NULL || value_.vt == VT_BSTR ||
                        NumberTypeOf(value_.vt).form != Form::None;
    return usable ? S_OK : DISP_E_TYPEMISMATCH;
}

}  // namespace tk::automation
