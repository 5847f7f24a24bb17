// Coercion of a VARIANT: what kinds of values may become each other. The conversions themselves are in convert.cpp.
#include "win32/automation/convert.h"
#include "win32/automation/number.h"
#include "win32/automation/value_types.h"

using namespace tk::automation;

namespace {

// LOCALE_NOUSEROVERRIDE; the served locales have no user's settings to override.
constexpr ULONG kNoUserOverride = 0x80000000u;

ConvertRules RulesOf(LCID locale, USHORT flags) {
    ConvertRules rules;
    rules.locale = locale;
    rules.flags = ((flags & VARIANT_NOUSEROVERRIDE) != 0 ? kNoUserOverride : 0u) |
                  ((flags & VARIANT_LOCALBOOL) != 0 ? VAR_LOCALBOOL : 0u);
    rules.namedBooleans = (flags & (VARIANT_ALPHABOOL | VARIANT_LOCALBOOL)) != 0;
    rules.defaultValues = (flags & VARIANT_NOVALUEPROP) == 0;
    return rules;
}

// A type that VariantChangeType may be asked for.
bool IsTarget(VARTYPE type) {
    return IsVariantType(type) && (type & VT_BYREF) == 0;
}

bool IsPlainTarget(VARTYPE type) {
    return type == VT_BSTR || NumberTypeOf(type).form != Form::None;
}

bool IsInterface(VARTYPE type) {
    return type == VT_UNKNOWN || type == VT_DISPATCH;
}

HRESULT ChangeInterface(const VARIANT& source, VARTYPE target, VARIANT& result) {
    IUnknown* wanted = nullptr;
    if (source.punkVal != nullptr) {
        void* found = nullptr;
        const IID& iid = target == VT_DISPATCH ? IID_IDispatch : IID_IUnknown;
        if (FAILED(source.punkVal->QueryInterface(iid, &found)) || found == nullptr) return DISP_E_TYPEMISMATCH;
        wanted = static_cast<IUnknown*>(found);  // single inheritance: the pointer is the same
    }
    result.punkVal = wanted;
    result.vt = target;
    return S_OK;
}

HRESULT Change(const VARIANT& source, VARTYPE target, const ConvertRules& rules, VARIANT& result) {
    if (source.vt == target) return VariantCopy(&result, &source);
    if (((source.vt | target) & VT_ARRAY) != 0) return DISP_E_TYPEMISMATCH;
    if (IsInterface(source.vt) && IsInterface(target)) return ChangeInterface(source, target, result);
    if (!IsPlainTarget(target)) return DISP_E_TYPEMISMATCH;
    if (source.vt == VT_DISPATCH) {
        return rules.defaultValues ? ConvertObject(source.pdispVal, target, rules, result) : DISP_E_TYPEMISMATCH;
    }
    return ConvertPlain(source, target, rules, result);
}

}  // namespace

HRESULT VariantChangeType(VARIANTARG* pvargDest, const VARIANTARG* pvarSrc, USHORT wFlags, VARTYPE vt) {
    return VariantChangeTypeEx(pvargDest, pvarSrc, 0, wFlags, vt);
}

HRESULT VariantChangeTypeEx(VARIANTARG* pvargDest, const VARIANTARG* pvarSrc, LCID lcid, USHORT wFlags, VARTYPE vt) {
    if (pvargDest == nullptr || pvarSrc == nullptr) return E_INVALIDARG;
    if (!IsVariantType(pvarSrc->vt) || !IsTarget(vt)) return DISP_E_BADVARTYPE;
    if (pvargDest == pvarSrc && pvarSrc->vt == vt) return S_OK;
    VARIANT behind;
    VariantInit(&behind);
    HRESULT outcome = S_OK;
    if ((pvarSrc->vt & VT_BYREF) != 0) {
        outcome = VariantCopyInd(&behind, pvarSrc);
        if (FAILED(outcome)) return outcome;
    }
    VARIANT result;
    VariantInit(&result);
    outcome = Change((pvarSrc->vt & VT_BYREF) != 0 ? behind : *pvarSrc, vt, RulesOf(lcid, wFlags), result);
    VariantClear(&behind);
    if (FAILED(outcome)) return outcome;
    outcome = VariantClear(pvargDest);
    if (FAILED(outcome)) {
        VariantClear(&result);
        return outcome;
    }
    *pvargDest = result;
    return S_OK;
}
