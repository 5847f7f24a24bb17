// VarCmp and VarBstrCmp: the order of values. A number stands before every text.
#include <cmath>

#include "win32/automation/number.h"
#include "win32/automation/operand.h"
#include "win32/include/winnls.h"

using namespace tk::automation;

namespace {

template <class T>
HRESULT Order(const T& left, const T& right) {
    if (left == right) return VARCMP_EQ;
    return left < right ? VARCMP_LT : VARCMP_GT;
}

HRESULT Turned(HRESULT order) {
    if (order == VARCMP_LT) return VARCMP_GT;
    return order == VARCMP_GT ? VARCMP_LT : order;
}

bool IsExact(Form form) {
    return form == Form::Currency || form == Form::Decimal;
}

HRESULT DecimalFrom(const Number& number, DECIMAL& decimal) {
    VARIANT stored;
    const HRESULT result = StoreNumber(number, VT_DECIMAL, stored);
    if (SUCCEEDED(result)) decimal = stored.decVal;
    return result;
}

HRESULT CompareNumbers(const Number& left, const Number& right) {
    if (left.form == Form::Integer && right.form == Form::Integer) return Order(left.integer, right.integer);
    if (IsExact(left.form) || IsExact(right.form)) {
        if (right.form == Form::Real && IsExact(left.form)) {
            DECIMAL decimal{};
            const HRESULT result = DecimalFrom(left, decimal);
            return FAILED(result) ? result : VarDecCmpR8(&decimal, right.real);
        }
        if (left.form == Form::Real) return Turned(CompareNumbers(right, left));
        DECIMAL first{};
        DECIMAL second{};
        HRESULT result = DecimalFrom(left, first);
        if (SUCCEEDED(result)) result = DecimalFrom(right, second);
        return FAILED(result) ? result : VarDecCmp(&first, &second);
    }
    const double first = RealOf(left);
    const double second = RealOf(right);
    return std::isnan(first) || std::isnan(second) ? VARCMP_NULL : Order(first, second);
}

// The order in which a Chinese and an English system differ is the text room's business.
LCID ServedLocale(LCID locale) {
    const LCID language = LOWORD(locale);
    const bool served =
        language == 0 || language == 0x0400 || language == 0x0800 || language == 0x0804 || language == 0x0409;
    return served ? language : LOCALE_INVARIANT;
}

}  // namespace

HRESULT VarBstrCmp(BSTR bstrLeft, BSTR bstrRight, LCID lcid, ULONG dwFlags) {
    static constexpr OLECHAR kNothing[] = u"";
    const OLECHAR* left = bstrLeft != nullptr ? bstrLeft : kNothing;
    const OLECHAR* right = bstrRight != nullptr ? bstrRight : kNothing;
    const int order = CompareStringW(ServedLocale(lcid), dwFlags, left, static_cast<int>(SysStringLen(bstrLeft)), right,
                                     static_cast<int>(SysStringLen(bstrRight)));
    if (order == 0) return E_INVALIDARG;
    return order - CSTR_LESS_THAN + VARCMP_LT;
}

HRESULT VarCmp(LPVARIANT pvarLeft, LPVARIANT pvarRight, LCID lcid, ULONG dwFlags) {
    Operand left;
    Operand right;
    HRESULT result = left.Take(pvarLeft, lcid);
    if (SUCCEEDED(result)) result = right.Take(pvarRight, lcid);
    if (FAILED(result)) return result;
    if (left.Type() == VT_NULL || right.Type() == VT_NULL) return VARCMP_NULL;
    const bool leftText = left.Type() == VT_BSTR;
    const bool rightText = right.Type() == VT_BSTR;
    if (leftText || rightText) {
        // Nothing is an empty text beside a text.
        if (!leftText && left.Type() != VT_EMPTY) return VARCMP_LT;
        if (!rightText && right.Type() != VT_EMPTY) return VARCMP_GT;
        return VarBstrCmp(leftText ? left.Value().bstrVal : nullptr, rightText ? right.Value().bstrVal : nullptr, lcid,
                          dwFlags);
    }
    Number first;
    Number second;
    result = LoadNumber(left.Value(), first);
    if (SUCCEEDED(result)) result = LoadNumber(right.Value(), second);
    return FAILED(result) ? result : CompareNumbers(first, second);
}
