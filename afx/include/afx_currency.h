// afx_currency.h - COleCurrency, an amount in units of 1/10000.
//
//   COleCurrency price(12, 7500);  // 12.75
//   price *= 3;
//
// A result that does not fit 64 bits has the status invalid.
// Threads: as for any value.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include "afx_datetime.h"
#include "afx_export.h"
#include "afxstr.h"

class AFX_API COleCurrency {
public:
    enum CurrencyStatus { valid = 0, invalid = 1, null = 2 };

    COleCurrency() noexcept { m_cur.int64 = 0; }
    COleCurrency(CURRENCY cySrc) noexcept : m_cur(cySrc) {}
    COleCurrency(const VARIANT& varSrc) { *this = varSrc; }
    COleCurrency(long nUnits, long nFractionalUnits) noexcept { SetCurrency(nUnits, nFractionalUnits); }
    COleCurrency& operator=(CURRENCY cySrc) noexcept;
    /// VT_EMPTY and VT_NULL give the status null; what is no amount gives invalid.
    COleCurrency& operator=(const VARIANT& varSrc);

    CurrencyStatus GetStatus() const noexcept { return m_status; }
    void SetStatus(CurrencyStatus status) noexcept { m_status = status; }
    /// @param nFractionalUnits  units of 1/10000, of any size and sign; they are added
    void SetCurrency(long nUnits, long nFractionalUnits) noexcept;
    BOOL ParseCurrency(LPCTSTR lpszCurrency, DWORD dwFlags = 0, LCID lcid = LANG_USER_DEFAULT);
    /// A null amount gives "", an invalid one "Invalid Currency".
    CString Format(DWORD dwFlags = 0, LCID lcid = LANG_USER_DEFAULT) const;

    COleCurrency operator+(const COleCurrency& cur) const noexcept;
    COleCurrency operator-(const COleCurrency& cur) const noexcept;
    COleCurrency operator*(long nOperand) const noexcept;
    /// Truncates; a divisor of 0 gives the status invalid.
    COleCurrency operator/(long nOperand) const noexcept;
    COleCurrency operator-() const noexcept;
    COleCurrency& operator+=(const COleCurrency& cur) noexcept { return *this = *this + cur; }
    COleCurrency& operator-=(const COleCurrency& cur) noexcept { return *this = *this - cur; }
    COleCurrency& operator*=(long nOperand) noexcept { return *this = *this * nOperand; }
    COleCurrency& operator/=(long nOperand) noexcept { return *this = *this / nOperand; }
    operator CURRENCY() const noexcept { return m_cur; }

    BOOL operator==(const COleCurrency& cur) const noexcept {
        return m_status == cur.m_status && m_cur.int64 == cur.m_cur.int64;
    }
    BOOL operator!=(const COleCurrency& cur) const noexcept { return !(*this == cur); }
    BOOL operator<(const COleCurrency& cur) const noexcept { return m_cur.int64 < cur.m_cur.int64; }
    BOOL operator>(const COleCurrency& cur) const noexcept { return m_cur.int64 > cur.m_cur.int64; }
    BOOL operator<=(const COleCurrency& cur) const noexcept { return m_cur.int64 <= cur.m_cur.int64; }
    BOOL operator>=(const COleCurrency& cur) const noexcept { return m_cur.int64 >= cur.m_cur.int64; }

    CURRENCY m_cur;
    CurrencyStatus m_status = valid;
};
