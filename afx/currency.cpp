#include "afx_currency.h"

#include <limits>

#include "afx/text_codes.h"

COleCurrency& COleCurrency::operator=(CURRENCY cySrc) noexcept {
    m_cur = cySrc;
    m_status = valid;
    return *this;
}

COleCurrency& COleCurrency::operator=(const VARIANT& varSrc) {
    m_cur.int64 = 0;
    m_status = valid;
    if (varSrc.vt == VT_EMPTY || varSrc.vt == VT_NULL) {
        m_status = null;
        return *this;
    }
    VARIANT amount;
    VariantInit(&amount);
    if (FAILED(VariantChangeType(&amount, const_cast<VARIANT*>(&varSrc), 0, VT_CY))) {
        m_status = invalid;
        return *this;
    }
    return *this = amount.cyVal;
}

namespace {

constexpr long long kUnit = 10000;

// The status of a result: valid operands are needed, and a value that fits.
COleCurrency Result(COleCurrency::CurrencyStatus first, COleCurrency::CurrencyStatus second, bool overflow,
                    long long value) noexcept {
    COleCurrency result;
    if (first == COleCurrency::null || second == COleCurrency::null) {
        result.m_status = COleCurrency::null;
    } else if (first == COleCurrency::invalid || second == COleCurrency::invalid || overflow) {
        result.m_status = COleCurrency::invalid;
    } else {
        result.m_cur.int64 = value;
    }
    return result;
}

}  // namespace

void COleCurrency::SetCurrency(long nUnits, long nFractionalUnits) noexcept {
    long long scaled = 0;
    long long sum = 0;
    const bool overflow = __builtin_mul_overflow(static_cast<long long>(nUnits), kUnit, &scaled) ||
                          __builtin_add_overflow(scaled, static_cast<long long>(nFractionalUnits), &sum);
    *this = Result(valid, valid, overflow, sum);
}

BOOL COleCurrency::ParseCurrency(LPCTSTR lpszCurrency, DWORD dwFlags, LCID lcid) {
    m_cur.int64 = 0;
    m_status = invalid;
    const BSTR text = tk::afx::NewBstr(lpszCurrency == nullptr ? "" : lpszCurrency);
    CY amount;
    const HRESULT outcome = VarCyFromStr(text, lcid, dwFlags, &amount);
    SysFreeString(text);
    if (FAILED(outcome)) return FALSE;
    *this = amount;
    return TRUE;
}

CString COleCurrency::Format(DWORD dwFlags, LCID lcid) const {
    if (m_status == null) return CString();
    BSTR text = nullptr;
    if (m_status != valid || FAILED(VarBstrFromCy(m_cur, lcid, dwFlags, &text))) return "Invalid Currency";
    CString result(text, static_cast<int>(SysStringLen(text)));
    SysFreeString(text);
    return result;
}

COleCurrency COleCurrency::operator+(const COleCurrency& cur) const noexcept {
    long long sum = 0;
    const bool overflow = __builtin_add_overflow(m_cur.int64, cur.m_cur.int64, &sum);
    return Result(m_status, cur.m_status, overflow, sum);
}

COleCurrency COleCurrency::operator-(const COleCurrency& cur) const noexcept {
    long long difference = 0;
    const bool overflow = __builtin_sub_overflow(m_cur.int64, cur.m_cur.int64, &difference);
    return Result(m_status, cur.m_status, overflow, difference);
}

COleCurrency COleCurrency::operator*(long nOperand) const noexcept {
    long long product = 0;
    const bool overflow = __builtin_mul_overflow(m_cur.int64, static_cast<long long>(nOperand), &product);
    return Result(m_status, valid, overflow, product);
}

COleCurrency COleCurrency::operator/(long nOperand) const noexcept {
    // The least amount has no positive counterpart.
    const bool impossible = nOperand == 0 || (nOperand == -1 && m_cur.int64 == std::numeric_limits<long long>::min());
    return Result(m_status, valid, impossible, impossible ? 0 : m_cur.int64 / nOperand);
}

COleCurrency COleCurrency::operator-() const noexcept {
    long long negative = 0;
    const bool overflow = __builtin_sub_overflow(0LL, m_cur.int64, &negative);
    return Result(m_status, valid, overflow, negative);
}
