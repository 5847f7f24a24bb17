// oleauto.h - the automation functions: BSTR texts, VARIANT values and their conversions, arrays, dates, decimals.
//
//   VARIANT amount;
//   VariantInit(&amount);
//   amount.vt = VT_BSTR;
//   amount.bstrVal = SysAllocString(u"12.75");
//   HRESULT result = VariantChangeType(&amount, &amount, 0, VT_DECIMAL);  // in place; the text is freed
//   VariantClear(&amount);
//
// Failures: a result code, and the destination left as it was unless stated. Nothing throws.
// Ownership: a BSTR, array or interface that a function hands out belongs to the caller.
// Threads: every function is reentrant; one value is used by one thread at a time. Array lock counts are atomic.
// Locales: 0x0804 (also under the names 0, 0x400 and 0x800), 0x0409 and 0x007F; others read and write as 0x007F.
#pragma once

#include "oaidl.h"

// ---- Texts. The pointer is to the characters; their length in bytes stands before them; null is an empty text.

/// Copies a NUL-terminated text. @return null for null, and when memory is out
WINOLEAUTAPI_(BSTR) SysAllocString(const OLECHAR* psz);
/// Makes a text of `ui` characters. @param strIn  may be null: the characters are then left unset
/// @return null when memory is out or the length in bytes does not fit 32 bits
WINOLEAUTAPI_(BSTR) SysAllocStringLen(const OLECHAR* strIn, UINT ui);
/// The same in bytes; an odd number is kept, and two zero bytes follow it.
WINOLEAUTAPI_(BSTR) SysAllocStringByteLen(LPCSTR psz, UINT len);
/// Replaces *pbstr by a copy of `psz`, which may be part of the old text. @return 0 when memory is out: *pbstr is kept
WINOLEAUTAPI_(INT) SysReAllocString(BSTR* pbstr, const OLECHAR* psz);
/// The same by length. @param psz  null keeps the old characters as far as they reach
WINOLEAUTAPI_(INT) SysReAllocStringLen(BSTR* pbstr, const OLECHAR* psz, UINT len);
WINOLEAUTAPI_(void) SysFreeString(BSTR bstrString);
WINOLEAUTAPI_(UINT) SysStringLen(BSTR pbstr);
WINOLEAUTAPI_(UINT) SysStringByteLen(BSTR bstr);

// ---- Values.

#define VARIANT_NOVALUEPROP 0x01
#define VARIANT_ALPHABOOL 0x02
#define VARIANT_NOUSEROVERRIDE 0x04
#define VARIANT_CALENDAR_HIJRI 0x08
#define VARIANT_LOCALBOOL 0x10

/// Makes the variant VT_EMPTY without looking at what it held.
WINOLEAUTAPI_(void) VariantInit(VARIANTARG* pvarg);
/// Frees what the variant owns and makes it VT_EMPTY; what a VT_BYREF one points to is left alone.
/// @return DISP_E_BADVARTYPE for a type that does not exist, DISP_E_ARRAYISLOCKED; the variant is then unchanged
WINOLEAUTAPI VariantClear(VARIANTARG* pvarg);
/// Clears the destination, then copies into it; VT_BYREF sources keep pointing where they point.
/// @note the destination is VT_EMPTY when the copy itself fails
WINOLEAUTAPI VariantCopy(VARIANTARG* pvargDest, const VARIANTARG* pvargSrc);
/// Copies the value behind a VT_BYREF source; source and destination may be the same variant.
WINOLEAUTAPI VariantCopyInd(VARIANT* pvarDest, const VARIANTARG* pvargSrc);
/// Converts for the user's locale. Source and destination may be the same; a failure leaves the destination alone.
/// @return DISP_E_TYPEMISMATCH, DISP_E_OVERFLOW, DISP_E_BADVARTYPE, E_OUTOFMEMORY
WINOLEAUTAPI VariantChangeType(VARIANTARG* pvargDest, const VARIANTARG* pvarSrc, USHORT wFlags, VARTYPE vt);
WINOLEAUTAPI VariantChangeTypeEx(VARIANTARG* pvargDest, const VARIANTARG* pvarSrc, LCID lcid, USHORT wFlags,
                                 VARTYPE vt);

// ---- Arithmetic and comparison of values. NULL on either side gives NULL; EMPTY is a zero, or an empty text, of the
// other side's type. The result is overwritten, not cleared, unless it is one of the operands.
// Texts: two are joined by VarAdd, elsewhere a text is its number. The result has the wider type of the two and moves
// to the next wider one when the value does not fit: UI1, I2, I4, R8; R4, R8; DATE, R8.

WINOLEAUTAPI VarAdd(LPVARIANT pvarLeft, LPVARIANT pvarRight, LPVARIANT pvarResult);
WINOLEAUTAPI VarSub(LPVARIANT pvarLeft, LPVARIANT pvarRight, LPVARIANT pvarResult);
WINOLEAUTAPI VarMul(LPVARIANT pvarLeft, LPVARIANT pvarRight, LPVARIANT pvarResult);
WINOLEAUTAPI VarNeg(LPVARIANT pvarIn, LPVARIANT pvarResult);

#define VARCMP_LT 0
#define VARCMP_EQ 1
#define VARCMP_GT 2
#define VARCMP_NULL 3

/// @return VARCMP_LT to VARCMP_NULL as a result code; a number stands before every text
WINOLEAUTAPI VarCmp(LPVARIANT pvarLeft, LPVARIANT pvarRight, LCID lcid, ULONG dwFlags);
/// Compares two texts in the order of the locale. @param dwFlags  those of CompareStringW
/// @return VARCMP_LT, VARCMP_EQ, VARCMP_GT as a result code
WINOLEAUTAPI VarBstrCmp(BSTR bstrLeft, BSTR bstrRight, LCID lcid, ULONG dwFlags);
/// Joins two texts into a new one; null is an empty text.
WINOLEAUTAPI VarBstrCat(BSTR bstrLeft, BSTR bstrRight, LPBSTR pbstrResult);

// ---- Dates: days since 30 December 1899 as a double; the fraction, without its sign, is the time of day.
// The range is 1 January 100 to 31 December 9999; times are to the second.

#define VAR_TIMEVALUEONLY 0x00000001u
#define VAR_DATEVALUEONLY 0x00000002u
#define VAR_VALIDDATE 0x00000004u
#define VAR_LOCALBOOL 0x00000010u
#define VAR_FOURDIGITYEARS 0x00000040u
#define VAR_CALENDAR_GREGORIAN 0x00000100u
#define VTDATEGRE_MAX 2958465
#define VTDATEGRE_MIN (-657434)

/// A date with its parts, and the day of the year from 1.
struct UDATE {
    SYSTEMTIME st;
    USHORT wDayOfYear;
};

/// @return 0 when the date is out of range. The milliseconds are 0: the time is rounded to the second.
WINOLEAUTAPI_(INT) VariantTimeToSystemTime(DOUBLE vtime, LPSYSTEMTIME lpSystemTime);
/// A day 0, or one to 31 that the month does not have, moves into the neighbouring month. Milliseconds are dropped.
/// @note years 0 to 29 mean 2000 to 2029, years 30 to 99 mean 1930 to 1999
WINOLEAUTAPI_(INT) SystemTimeToVariantTime(LPSYSTEMTIME lpSystemTime, DOUBLE* pvtime);
/// Years 1980 to 2099, two-second steps.
WINOLEAUTAPI_(INT) DosDateTimeToVariantTime(USHORT wDosDate, USHORT wDosTime, DOUBLE* pvtime);
WINOLEAUTAPI_(INT) VariantTimeToDosDateTime(DOUBLE vtime, USHORT* pwDosDate, USHORT* pwDosTime);
/// As SystemTimeToVariantTime, with result codes. @param dwFlags  VAR_VALIDDATE: the day of the year decides the date
WINOLEAUTAPI VarDateFromUdate(UDATE* pudateIn, ULONG dwFlags, DATE* pdateOut);
WINOLEAUTAPI VarDateFromUdateEx(UDATE* pudateIn, LCID lcid, ULONG dwFlags, DATE* pdateOut);
WINOLEAUTAPI VarUdateFromDate(DATE dateIn, ULONG dwFlags, UDATE* pudateOut);

// ---- Conversions of one type into another: Var<to>From<from>.
// Reals and decimals become integers by rounding to even. DISP_E_OVERFLOW when the value does not fit,
// DISP_E_TYPEMISMATCH when a text is no value of the type. Null text pointers are DISP_E_TYPEMISMATCH.

WINOLEAUTAPI VarUI1FromI2(SHORT sIn, BYTE* pbOut);
WINOLEAUTAPI VarUI1FromI4(LONG lIn, BYTE* pbOut);
WINOLEAUTAPI VarUI1FromI8(LONG64 i64In, BYTE* pbOut);
WINOLEAUTAPI VarUI1FromR4(FLOAT fltIn, BYTE* pbOut);
WINOLEAUTAPI VarUI1FromR8(DOUBLE dblIn, BYTE* pbOut);
WINOLEAUTAPI VarUI1FromCy(CY cyIn, BYTE* pbOut);
WINOLEAUTAPI VarUI1FromDate(DATE dateIn, BYTE* pbOut);
WINOLEAUTAPI VarUI1FromStr(LPCOLESTR strIn, LCID lcid, ULONG dwFlags, BYTE* pbOut);
WINOLEAUTAPI VarUI1FromDisp(IDispatch* pdispIn, LCID lcid, BYTE* pbOut);
WINOLEAUTAPI VarUI1FromBool(VARIANT_BOOL boolIn, BYTE* pbOut);
WINOLEAUTAPI VarUI1FromI1(CHAR cIn, BYTE* pbOut);
WINOLEAUTAPI VarUI1FromUI2(USHORT uiIn, BYTE* pbOut);
WINOLEAUTAPI VarUI1FromUI4(ULONG ulIn, BYTE* pbOut);
WINOLEAUTAPI VarUI1FromUI8(ULONG64 ui64In, BYTE* pbOut);
WINOLEAUTAPI VarUI1FromDec(const DECIMAL* pdecIn, BYTE* pbOut);

WINOLEAUTAPI VarI2FromUI1(BYTE bIn, SHORT* psOut);
WINOLEAUTAPI VarI2FromI4(LONG lIn, SHORT* psOut);
WINOLEAUTAPI VarI2FromI8(LONG64 i64In, SHORT* psOut);
WINOLEAUTAPI VarI2FromR4(FLOAT fltIn, SHORT* psOut);
WINOLEAUTAPI VarI2FromR8(DOUBLE dblIn, SHORT* psOut);
WINOLEAUTAPI VarI2FromCy(CY cyIn, SHORT* psOut);
WINOLEAUTAPI VarI2FromDate(DATE dateIn, SHORT* psOut);
WINOLEAUTAPI VarI2FromStr(LPCOLESTR strIn, LCID lcid, ULONG dwFlags, SHORT* psOut);
WINOLEAUTAPI VarI2FromDisp(IDispatch* pdispIn, LCID lcid, SHORT* psOut);
WINOLEAUTAPI VarI2FromBool(VARIANT_BOOL boolIn, SHORT* psOut);
WINOLEAUTAPI VarI2FromI1(CHAR cIn, SHORT* psOut);
WINOLEAUTAPI VarI2FromUI2(USHORT uiIn, SHORT* psOut);
WINOLEAUTAPI VarI2FromUI4(ULONG ulIn, SHORT* psOut);
WINOLEAUTAPI VarI2FromUI8(ULONG64 ui64In, SHORT* psOut);
WINOLEAUTAPI VarI2FromDec(const DECIMAL* pdecIn, SHORT* psOut);

WINOLEAUTAPI VarI4FromUI1(BYTE bIn, LONG* plOut);
WINOLEAUTAPI VarI4FromI2(SHORT sIn, LONG* plOut);
WINOLEAUTAPI VarI4FromI8(LONG64 i64In, LONG* plOut);
WINOLEAUTAPI VarI4FromR4(FLOAT fltIn, LONG* plOut);
WINOLEAUTAPI VarI4FromR8(DOUBLE dblIn, LONG* plOut);
WINOLEAUTAPI VarI4FromCy(CY cyIn, LONG* plOut);
WINOLEAUTAPI VarI4FromDate(DATE dateIn, LONG* plOut);
WINOLEAUTAPI VarI4FromStr(LPCOLESTR strIn, LCID lcid, ULONG dwFlags, LONG* plOut);
WINOLEAUTAPI VarI4FromDisp(IDispatch* pdispIn, LCID lcid, LONG* plOut);
WINOLEAUTAPI VarI4FromBool(VARIANT_BOOL boolIn, LONG* plOut);
WINOLEAUTAPI VarI4FromI1(CHAR cIn, LONG* plOut);
WINOLEAUTAPI VarI4FromUI2(USHORT uiIn, LONG* plOut);
WINOLEAUTAPI VarI4FromUI4(ULONG ulIn, LONG* plOut);
WINOLEAUTAPI VarI4FromUI8(ULONG64 ui64In, LONG* plOut);
WINOLEAUTAPI VarI4FromDec(const DECIMAL* pdecIn, LONG* plOut);

WINOLEAUTAPI VarI8FromUI1(BYTE bIn, LONG64* pi64Out);
WINOLEAUTAPI VarI8FromI2(SHORT sIn, LONG64* pi64Out);
WINOLEAUTAPI VarI8FromR4(FLOAT fltIn, LONG64* pi64Out);
WINOLEAUTAPI VarI8FromR8(DOUBLE dblIn, LONG64* pi64Out);
WINOLEAUTAPI VarI8FromCy(CY cyIn, LONG64* pi64Out);
WINOLEAUTAPI VarI8FromDate(DATE dateIn, LONG64* pi64Out);
WINOLEAUTAPI VarI8FromStr(LPCOLESTR strIn, LCID lcid, ULONG dwFlags, LONG64* pi64Out);
WINOLEAUTAPI VarI8FromDisp(IDispatch* pdispIn, LCID lcid, LONG64* pi64Out);
WINOLEAUTAPI VarI8FromBool(VARIANT_BOOL boolIn, LONG64* pi64Out);
WINOLEAUTAPI VarI8FromI1(CHAR cIn, LONG64* pi64Out);
WINOLEAUTAPI VarI8FromUI2(USHORT uiIn, LONG64* pi64Out);
WINOLEAUTAPI VarI8FromUI4(ULONG ulIn, LONG64* pi64Out);
WINOLEAUTAPI VarI8FromUI8(ULONG64 ui64In, LONG64* pi64Out);
WINOLEAUTAPI VarI8FromDec(const DECIMAL* pdecIn, LONG64* pi64Out);

WINOLEAUTAPI VarR4FromUI1(BYTE bIn, FLOAT* pfltOut);
WINOLEAUTAPI VarR4FromI2(SHORT sIn, FLOAT* pfltOut);
WINOLEAUTAPI VarR4FromI4(LONG lIn, FLOAT* pfltOut);
WINOLEAUTAPI VarR4FromI8(LONG64 i64In, FLOAT* pfltOut);
WINOLEAUTAPI VarR4FromR8(DOUBLE dblIn, FLOAT* pfltOut);
WINOLEAUTAPI VarR4FromCy(CY cyIn, FLOAT* pfltOut);
WINOLEAUTAPI VarR4FromDate(DATE dateIn, FLOAT* pfltOut);
WINOLEAUTAPI VarR4FromStr(LPCOLESTR strIn, LCID lcid, ULONG dwFlags, FLOAT* pfltOut);
WINOLEAUTAPI VarR4FromDisp(IDispatch* pdispIn, LCID lcid, FLOAT* pfltOut);
WINOLEAUTAPI VarR4FromBool(VARIANT_BOOL boolIn, FLOAT* pfltOut);
WINOLEAUTAPI VarR4FromI1(CHAR cIn, FLOAT* pfltOut);
WINOLEAUTAPI VarR4FromUI2(USHORT uiIn, FLOAT* pfltOut);
WINOLEAUTAPI VarR4FromUI4(ULONG ulIn, FLOAT* pfltOut);
WINOLEAUTAPI VarR4FromUI8(ULONG64 ui64In, FLOAT* pfltOut);
WINOLEAUTAPI VarR4FromDec(const DECIMAL* pdecIn, FLOAT* pfltOut);

WINOLEAUTAPI VarR8FromUI1(BYTE bIn, DOUBLE* pdblOut);
WINOLEAUTAPI VarR8FromI2(SHORT sIn, DOUBLE* pdblOut);
WINOLEAUTAPI VarR8FromI4(LONG lIn, DOUBLE* pdblOut);
WINOLEAUTAPI VarR8FromI8(LONG64 i64In, DOUBLE* pdblOut);
WINOLEAUTAPI VarR8FromR4(FLOAT fltIn, DOUBLE* pdblOut);
WINOLEAUTAPI VarR8FromCy(CY cyIn, DOUBLE* pdblOut);
WINOLEAUTAPI VarR8FromDate(DATE dateIn, DOUBLE* pdblOut);
WINOLEAUTAPI VarR8FromStr(LPCOLESTR strIn, LCID lcid, ULONG dwFlags, DOUBLE* pdblOut);
WINOLEAUTAPI VarR8FromDisp(IDispatch* pdispIn, LCID lcid, DOUBLE* pdblOut);
WINOLEAUTAPI VarR8FromBool(VARIANT_BOOL boolIn, DOUBLE* pdblOut);
WINOLEAUTAPI VarR8FromI1(CHAR cIn, DOUBLE* pdblOut);
WINOLEAUTAPI VarR8FromUI2(USHORT uiIn, DOUBLE* pdblOut);
WINOLEAUTAPI VarR8FromUI4(ULONG ulIn, DOUBLE* pdblOut);
WINOLEAUTAPI VarR8FromUI8(ULONG64 ui64In, DOUBLE* pdblOut);
WINOLEAUTAPI VarR8FromDec(const DECIMAL* pdecIn, DOUBLE* pdblOut);

WINOLEAUTAPI VarCyFromUI1(BYTE bIn, CY* pcyOut);
WINOLEAUTAPI VarCyFromI2(SHORT sIn, CY* pcyOut);
WINOLEAUTAPI VarCyFromI4(LONG lIn, CY* pcyOut);
WINOLEAUTAPI VarCyFromI8(LONG64 i64In, CY* pcyOut);
WINOLEAUTAPI VarCyFromR4(FLOAT fltIn, CY* pcyOut);
WINOLEAUTAPI VarCyFromR8(DOUBLE dblIn, CY* pcyOut);
WINOLEAUTAPI VarCyFromDate(DATE dateIn, CY* pcyOut);
WINOLEAUTAPI VarCyFromStr(LPCOLESTR strIn, LCID lcid, ULONG dwFlags, CY* pcyOut);
WINOLEAUTAPI VarCyFromDisp(IDispatch* pdispIn, LCID lcid, CY* pcyOut);
WINOLEAUTAPI VarCyFromBool(VARIANT_BOOL boolIn, CY* pcyOut);
WINOLEAUTAPI VarCyFromI1(CHAR cIn, CY* pcyOut);
WINOLEAUTAPI VarCyFromUI2(USHORT uiIn, CY* pcyOut);
WINOLEAUTAPI VarCyFromUI4(ULONG ulIn, CY* pcyOut);
WINOLEAUTAPI VarCyFromUI8(ULONG64 ui64In, CY* pcyOut);
WINOLEAUTAPI VarCyFromDec(const DECIMAL* pdecIn, CY* pcyOut);

WINOLEAUTAPI VarDateFromUI1(BYTE bIn, DATE* pdateOut);
WINOLEAUTAPI VarDateFromI2(SHORT sIn, DATE* pdateOut);
WINOLEAUTAPI VarDateFromI4(LONG lIn, DATE* pdateOut);
WINOLEAUTAPI VarDateFromI8(LONG64 i64In, DATE* pdateOut);
WINOLEAUTAPI VarDateFromR4(FLOAT fltIn, DATE* pdateOut);
WINOLEAUTAPI VarDateFromR8(DOUBLE dblIn, DATE* pdateOut);
WINOLEAUTAPI VarDateFromCy(CY cyIn, DATE* pdateOut);
WINOLEAUTAPI VarDateFromStr(LPCOLESTR strIn, LCID lcid, ULONG dwFlags, DATE* pdateOut);
WINOLEAUTAPI VarDateFromDisp(IDispatch* pdispIn, LCID lcid, DATE* pdateOut);
WINOLEAUTAPI VarDateFromBool(VARIANT_BOOL boolIn, DATE* pdateOut);
WINOLEAUTAPI VarDateFromI1(CHAR cIn, DATE* pdateOut);
WINOLEAUTAPI VarDateFromUI2(USHORT uiIn, DATE* pdateOut);
WINOLEAUTAPI VarDateFromUI4(ULONG ulIn, DATE* pdateOut);
WINOLEAUTAPI VarDateFromUI8(ULONG64 ui64In, DATE* pdateOut);
WINOLEAUTAPI VarDateFromDec(const DECIMAL* pdecIn, DATE* pdateOut);

WINOLEAUTAPI VarBstrFromUI1(BYTE bIn, LCID lcid, ULONG dwFlags, BSTR* pbstrOut);
WINOLEAUTAPI VarBstrFromI2(SHORT sIn, LCID lcid, ULONG dwFlags, BSTR* pbstrOut);
WINOLEAUTAPI VarBstrFromI4(LONG lIn, LCID lcid, ULONG dwFlags, BSTR* pbstrOut);
WINOLEAUTAPI VarBstrFromI8(LONG64 i64In, LCID lcid, ULONG dwFlags, BSTR* pbstrOut);
WINOLEAUTAPI VarBstrFromR4(FLOAT fltIn, LCID lcid, ULONG dwFlags, BSTR* pbstrOut);
WINOLEAUTAPI VarBstrFromR8(DOUBLE dblIn, LCID lcid, ULONG dwFlags, BSTR* pbstrOut);
WINOLEAUTAPI VarBstrFromCy(CY cyIn, LCID lcid, ULONG dwFlags, BSTR* pbstrOut);
WINOLEAUTAPI VarBstrFromDate(DATE dateIn, LCID lcid, ULONG dwFlags, BSTR* pbstrOut);
WINOLEAUTAPI VarBstrFromDisp(IDispatch* pdispIn, LCID lcid, ULONG dwFlags, BSTR* pbstrOut);
WINOLEAUTAPI VarBstrFromBool(VARIANT_BOOL boolIn, LCID lcid, ULONG dwFlags, BSTR* pbstrOut);
WINOLEAUTAPI VarBstrFromI1(CHAR cIn, LCID lcid, ULONG dwFlags, BSTR* pbstrOut);
WINOLEAUTAPI VarBstrFromUI2(USHORT uiIn, LCID lcid, ULONG dwFlags, BSTR* pbstrOut);
WINOLEAUTAPI VarBstrFromUI4(ULONG ulIn, LCID lcid, ULONG dwFlags, BSTR* pbstrOut);
WINOLEAUTAPI VarBstrFromUI8(ULONG64 ui64In, LCID lcid, ULONG dwFlags, BSTR* pbstrOut);
WINOLEAUTAPI VarBstrFromDec(const DECIMAL* pdecIn, LCID lcid, ULONG dwFlags, BSTR* pbstrOut);

WINOLEAUTAPI VarBoolFromUI1(BYTE bIn, VARIANT_BOOL* pboolOut);
WINOLEAUTAPI VarBoolFromI2(SHORT sIn, VARIANT_BOOL* pboolOut);
WINOLEAUTAPI VarBoolFromI4(LONG lIn, VARIANT_BOOL* pboolOut);
WINOLEAUTAPI VarBoolFromI8(LONG64 i64In, VARIANT_BOOL* pboolOut);
WINOLEAUTAPI VarBoolFromR4(FLOAT fltIn, VARIANT_BOOL* pboolOut);
WINOLEAUTAPI VarBoolFromR8(DOUBLE dblIn, VARIANT_BOOL* pboolOut);
WINOLEAUTAPI VarBoolFromCy(CY cyIn, VARIANT_BOOL* pboolOut);
WINOLEAUTAPI VarBoolFromDate(DATE dateIn, VARIANT_BOOL* pboolOut);
WINOLEAUTAPI VarBoolFromStr(LPCOLESTR strIn, LCID lcid, ULONG dwFlags, VARIANT_BOOL* pboolOut);
WINOLEAUTAPI VarBoolFromDisp(IDispatch* pdispIn, LCID lcid, VARIANT_BOOL* pboolOut);
WINOLEAUTAPI VarBoolFromI1(CHAR cIn, VARIANT_BOOL* pboolOut);
WINOLEAUTAPI VarBoolFromUI2(USHORT uiIn, VARIANT_BOOL* pboolOut);
WINOLEAUTAPI VarBoolFromUI4(ULONG ulIn, VARIANT_BOOL* pboolOut);
WINOLEAUTAPI VarBoolFromUI8(ULONG64 ui64In, VARIANT_BOOL* pboolOut);
WINOLEAUTAPI VarBoolFromDec(const DECIMAL* pdecIn, VARIANT_BOOL* pboolOut);

WINOLEAUTAPI VarI1FromUI1(BYTE bIn, CHAR* pcOut);
WINOLEAUTAPI VarI1FromI2(SHORT sIn, CHAR* pcOut);
WINOLEAUTAPI VarI1FromI4(LONG lIn, CHAR* pcOut);
WINOLEAUTAPI VarI1FromI8(LONG64 i64In, CHAR* pcOut);
WINOLEAUTAPI VarI1FromR4(FLOAT fltIn, CHAR* pcOut);
WINOLEAUTAPI VarI1FromR8(DOUBLE dblIn, CHAR* pcOut);
WINOLEAUTAPI VarI1FromCy(CY cyIn, CHAR* pcOut);
WINOLEAUTAPI VarI1FromDate(DATE dateIn, CHAR* pcOut);
WINOLEAUTAPI VarI1FromStr(LPCOLESTR strIn, LCID lcid, ULONG dwFlags, CHAR* pcOut);
WINOLEAUTAPI VarI1FromDisp(IDispatch* pdispIn, LCID lcid, CHAR* pcOut);
WINOLEAUTAPI VarI1FromBool(VARIANT_BOOL boolIn, CHAR* pcOut);
WINOLEAUTAPI VarI1FromUI2(USHORT uiIn, CHAR* pcOut);
WINOLEAUTAPI VarI1FromUI4(ULONG ulIn, CHAR* pcOut);
WINOLEAUTAPI VarI1FromUI8(ULONG64 ui64In, CHAR* pcOut);
WINOLEAUTAPI VarI1FromDec(const DECIMAL* pdecIn, CHAR* pcOut);

WINOLEAUTAPI VarUI2FromUI1(BYTE bIn, USHORT* puiOut);
WINOLEAUTAPI VarUI2FromI2(SHORT sIn, USHORT* puiOut);
WINOLEAUTAPI VarUI2FromI4(LONG lIn, USHORT* puiOut);
WINOLEAUTAPI VarUI2FromI8(LONG64 i64In, USHORT* puiOut);
WINOLEAUTAPI VarUI2FromR4(FLOAT fltIn, USHORT* puiOut);
WINOLEAUTAPI VarUI2FromR8(DOUBLE dblIn, USHORT* puiOut);
WINOLEAUTAPI VarUI2FromCy(CY cyIn, USHORT* puiOut);
WINOLEAUTAPI VarUI2FromDate(DATE dateIn, USHORT* puiOut);
WINOLEAUTAPI VarUI2FromStr(LPCOLESTR strIn, LCID lcid, ULONG dwFlags, USHORT* puiOut);
WINOLEAUTAPI VarUI2FromDisp(IDispatch* pdispIn, LCID lcid, USHORT* puiOut);
WINOLEAUTAPI VarUI2FromBool(VARIANT_BOOL boolIn, USHORT* puiOut);
WINOLEAUTAPI VarUI2FromI1(CHAR cIn, USHORT* puiOut);
WINOLEAUTAPI VarUI2FromUI4(ULONG ulIn, USHORT* puiOut);
WINOLEAUTAPI VarUI2FromUI8(ULONG64 ui64In, USHORT* puiOut);
WINOLEAUTAPI VarUI2FromDec(const DECIMAL* pdecIn, USHORT* puiOut);

WINOLEAUTAPI VarUI4FromUI1(BYTE bIn, ULONG* pulOut);
WINOLEAUTAPI VarUI4FromI2(SHORT sIn, ULONG* pulOut);
WINOLEAUTAPI VarUI4FromI4(LONG lIn, ULONG* pulOut);
WINOLEAUTAPI VarUI4FromI8(LONG64 i64In, ULONG* pulOut);
WINOLEAUTAPI VarUI4FromR4(FLOAT fltIn, ULONG* pulOut);
WINOLEAUTAPI VarUI4FromR8(DOUBLE dblIn, ULONG* pulOut);
WINOLEAUTAPI VarUI4FromCy(CY cyIn, ULONG* pulOut);
WINOLEAUTAPI VarUI4FromDate(DATE dateIn, ULONG* pulOut);
WINOLEAUTAPI VarUI4FromStr(LPCOLESTR strIn, LCID lcid, ULONG dwFlags, ULONG* pulOut);
WINOLEAUTAPI VarUI4FromDisp(IDispatch* pdispIn, LCID lcid, ULONG* pulOut);
WINOLEAUTAPI VarUI4FromBool(VARIANT_BOOL boolIn, ULONG* pulOut);
WINOLEAUTAPI VarUI4FromI1(CHAR cIn, ULONG* pulOut);
WINOLEAUTAPI VarUI4FromUI2(USHORT uiIn, ULONG* pulOut);
WINOLEAUTAPI VarUI4FromUI8(ULONG64 ui64In, ULONG* pulOut);
WINOLEAUTAPI VarUI4FromDec(const DECIMAL* pdecIn, ULONG* pulOut);

WINOLEAUTAPI VarUI8FromUI1(BYTE bIn, ULONG64* pui64Out);
WINOLEAUTAPI VarUI8FromI2(SHORT sIn, ULONG64* pui64Out);
WINOLEAUTAPI VarUI8FromI4(LONG lIn, ULONG64* pui64Out);
WINOLEAUTAPI VarUI8FromI8(LONG64 i64In, ULONG64* pui64Out);
WINOLEAUTAPI VarUI8FromR4(FLOAT fltIn, ULONG64* pui64Out);
WINOLEAUTAPI VarUI8FromR8(DOUBLE dblIn, ULONG64* pui64Out);
WINOLEAUTAPI VarUI8FromCy(CY cyIn, ULONG64* pui64Out);
WINOLEAUTAPI VarUI8FromDate(DATE dateIn, ULONG64* pui64Out);
WINOLEAUTAPI VarUI8FromStr(LPCOLESTR strIn, LCID lcid, ULONG dwFlags, ULONG64* pui64Out);
WINOLEAUTAPI VarUI8FromDisp(IDispatch* pdispIn, LCID lcid, ULONG64* pui64Out);
WINOLEAUTAPI VarUI8FromBool(VARIANT_BOOL boolIn, ULONG64* pui64Out);
WINOLEAUTAPI VarUI8FromI1(CHAR cIn, ULONG64* pui64Out);
WINOLEAUTAPI VarUI8FromUI2(USHORT uiIn, ULONG64* pui64Out);
WINOLEAUTAPI VarUI8FromUI4(ULONG ulIn, ULONG64* pui64Out);
WINOLEAUTAPI VarUI8FromDec(const DECIMAL* pdecIn, ULONG64* pui64Out);

WINOLEAUTAPI VarDecFromUI1(BYTE bIn, DECIMAL* pdecOut);
WINOLEAUTAPI VarDecFromI2(SHORT sIn, DECIMAL* pdecOut);
WINOLEAUTAPI VarDecFromI4(LONG lIn, DECIMAL* pdecOut);
WINOLEAUTAPI VarDecFromI8(LONG64 i64In, DECIMAL* pdecOut);
WINOLEAUTAPI VarDecFromR4(FLOAT fltIn, DECIMAL* pdecOut);
WINOLEAUTAPI VarDecFromR8(DOUBLE dblIn, DECIMAL* pdecOut);
WINOLEAUTAPI VarDecFromCy(CY cyIn, DECIMAL* pdecOut);
WINOLEAUTAPI VarDecFromDate(DATE dateIn, DECIMAL* pdecOut);
WINOLEAUTAPI VarDecFromStr(LPCOLESTR strIn, LCID lcid, ULONG dwFlags, DECIMAL* pdecOut);
WINOLEAUTAPI VarDecFromDisp(IDispatch* pdispIn, LCID lcid, DECIMAL* pdecOut);
WINOLEAUTAPI VarDecFromBool(VARIANT_BOOL boolIn, DECIMAL* pdecOut);
WINOLEAUTAPI VarDecFromI1(CHAR cIn, DECIMAL* pdecOut);
WINOLEAUTAPI VarDecFromUI2(USHORT uiIn, DECIMAL* pdecOut);
WINOLEAUTAPI VarDecFromUI4(ULONG ulIn, DECIMAL* pdecOut);
WINOLEAUTAPI VarDecFromUI8(ULONG64 ui64In, DECIMAL* pdecOut);

// ---- Decimals: 96 bits, 0 to 28 decimal places. Results that need more places are rounded to even.

#define DECIMAL_SETZERO(dec) ((dec).Lo64 = 0, (dec).Hi32 = 0, (dec).signscale = 0)

WINOLEAUTAPI VarDecAdd(LPDECIMAL pdecLeft, LPDECIMAL pdecRight, LPDECIMAL pdecResult);
WINOLEAUTAPI VarDecSub(LPDECIMAL pdecLeft, LPDECIMAL pdecRight, LPDECIMAL pdecResult);
WINOLEAUTAPI VarDecMul(LPDECIMAL pdecLeft, LPDECIMAL pdecRight, LPDECIMAL pdecResult);
/// @return DISP_E_DIVBYZERO, DISP_E_OVERFLOW
WINOLEAUTAPI VarDecDiv(LPDECIMAL pdecLeft, LPDECIMAL pdecRight, LPDECIMAL pdecResult);
WINOLEAUTAPI VarDecAbs(LPDECIMAL pdecIn, LPDECIMAL pdecResult);
WINOLEAUTAPI VarDecNeg(LPDECIMAL pdecIn, LPDECIMAL pdecResult);
/// Cuts the fraction.
WINOLEAUTAPI VarDecFix(LPDECIMAL pdecIn, LPDECIMAL pdecResult);
/// The largest integer that is not larger.
WINOLEAUTAPI VarDecInt(LPDECIMAL pdecIn, LPDECIMAL pdecResult);
/// Rounds to even. @return E_INVALIDARG for a negative number of places
WINOLEAUTAPI VarDecRound(LPDECIMAL pdecIn, INT cDecimals, LPDECIMAL pdecResult);
/// @return VARCMP_LT, VARCMP_EQ, VARCMP_GT
WINOLEAUTAPI VarDecCmp(LPDECIMAL pdecLeft, LPDECIMAL pdecRight);
WINOLEAUTAPI VarDecCmpR8(LPDECIMAL pdecLeft, DOUBLE dblRight);

// ---- Currency: units of 1/10000 in 64 bits.

WINOLEAUTAPI VarCyAdd(CY cyLeft, CY cyRight, CY* pcyResult);
WINOLEAUTAPI VarCySub(CY cyLeft, CY cyRight, CY* pcyResult);
WINOLEAUTAPI VarCyMul(CY cyLeft, CY cyRight, CY* pcyResult);
WINOLEAUTAPI VarCyMulI4(CY cyLeft, LONG lRight, CY* pcyResult);
WINOLEAUTAPI VarCyMulI8(CY cyLeft, LONG64 lRight, CY* pcyResult);
WINOLEAUTAPI VarCyAbs(CY cyIn, CY* pcyResult);
WINOLEAUTAPI VarCyNeg(CY cyIn, CY* pcyResult);
WINOLEAUTAPI VarCyFix(CY cyIn, CY* pcyResult);
WINOLEAUTAPI VarCyInt(CY cyIn, CY* pcyResult);
WINOLEAUTAPI VarCyRound(CY cyIn, INT cDecimals, CY* pcyResult);
WINOLEAUTAPI VarCyCmp(CY cyLeft, CY cyRight);
WINOLEAUTAPI VarCyCmpR8(CY cyLeft, DOUBLE dblRight);

// ---- Arrays. Index 0 of an index list and of the bounds given to SafeArrayCreate is the first dimension, which varies
// fastest in memory. Elements are zero when made. A locked array can be neither freed nor resized.

/// @return null for a type that arrays cannot hold, no dimension, bounds beyond the index range, or no memory
WINOLEAUTAPI_(SAFEARRAY*) SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound);
/// @param pvExtra  the IRecordInfo* of VT_RECORD, the IID* of VT_UNKNOWN and VT_DISPATCH (may be null)
WINOLEAUTAPI_(SAFEARRAY*) SafeArrayCreateEx(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound, PVOID pvExtra);
WINOLEAUTAPI_(SAFEARRAY*) SafeArrayCreateVector(VARTYPE vt, LONG lLbound, ULONG cElements);
WINOLEAUTAPI_(SAFEARRAY*) SafeArrayCreateVectorEx(VARTYPE vt, LONG lLbound, ULONG cElements, PVOID pvExtra);
WINOLEAUTAPI SafeArrayAllocDescriptor(UINT cDims, SAFEARRAY** ppsaOut);
WINOLEAUTAPI SafeArrayAllocDescriptorEx(VARTYPE vt, UINT cDims, SAFEARRAY** ppsaOut);
WINOLEAUTAPI SafeArrayAllocData(SAFEARRAY* psa);
WINOLEAUTAPI SafeArrayDestroyDescriptor(SAFEARRAY* psa);
WINOLEAUTAPI SafeArrayDestroyData(SAFEARRAY* psa);
/// Null is no error.
WINOLEAUTAPI SafeArrayDestroy(SAFEARRAY* psa);
/// Changes the bounds of the last dimension; new elements are zero, lost ones are freed.
WINOLEAUTAPI SafeArrayRedim(SAFEARRAY* psa, SAFEARRAYBOUND* psaboundNew);
WINOLEAUTAPI_(UINT) SafeArrayGetDim(SAFEARRAY* psa);
WINOLEAUTAPI_(UINT) SafeArrayGetElemsize(SAFEARRAY* psa);
/// @param nDim  from 1. @return DISP_E_BADINDEX for a dimension that the array does not have
WINOLEAUTAPI SafeArrayGetUBound(SAFEARRAY* psa, UINT nDim, LONG* plUbound);
WINOLEAUTAPI SafeArrayGetLBound(SAFEARRAY* psa, UINT nDim, LONG* plLbound);
/// @return E_UNEXPECTED at 65,535 locks
WINOLEAUTAPI SafeArrayLock(SAFEARRAY* psa);
/// @return E_UNEXPECTED when the array is not locked
WINOLEAUTAPI SafeArrayUnlock(SAFEARRAY* psa);
WINOLEAUTAPI SafeArrayAccessData(SAFEARRAY* psa, void** ppvData);
WINOLEAUTAPI SafeArrayUnaccessData(SAFEARRAY* psa);
/// Copies the element out; `pv` is overwritten, not freed.
WINOLEAUTAPI SafeArrayGetElement(SAFEARRAY* psa, LONG* rgIndices, void* pv);
/// Copies the element in and frees the old one. BSTR and interface pointers are given as `pv` itself.
WINOLEAUTAPI SafeArrayPutElement(SAFEARRAY* psa, LONG* rgIndices, void* pv);
/// @return the element's place; the caller holds a lock
WINOLEAUTAPI SafeArrayPtrOfIndex(SAFEARRAY* psa, LONG* rgIndices, void** ppvData);
WINOLEAUTAPI SafeArrayCopy(SAFEARRAY* psa, SAFEARRAY** ppsaOut);
/// Copies all elements into an array of the same shape. @return E_INVALIDARG for another shape
WINOLEAUTAPI SafeArrayCopyData(SAFEARRAY* psaSource, SAFEARRAY* psaTarget);
WINOLEAUTAPI SafeArrayGetVartype(SAFEARRAY* psa, VARTYPE* pvt);
WINOLEAUTAPI SafeArraySetIID(SAFEARRAY* psa, REFGUID guid);
WINOLEAUTAPI SafeArrayGetIID(SAFEARRAY* psa, GUID* pguid);
WINOLEAUTAPI SafeArraySetRecordInfo(SAFEARRAY* psa, IRecordInfo* prinfo);
WINOLEAUTAPI SafeArrayGetRecordInfo(SAFEARRAY* psa, IRecordInfo** prinfo);
/// A vector of bytes as the bytes of a text, and back.
WINOLEAUTAPI VectorFromBstr(BSTR bstr, SAFEARRAY** ppsa);
WINOLEAUTAPI BstrFromVector(SAFEARRAY* psa, BSTR* pbstr);

// ---- Calls.

/// Takes one argument of a call, converted. @param position  from 0 in the order of the call
/// @param puArgErr  gets the index in rgvarg on DISP_E_TYPEMISMATCH and DISP_E_PARAMNOTFOUND; may be null
WINOLEAUTAPI DispGetParam(DISPPARAMS* pdispparams, UINT position, VARTYPE vtTarg, VARIANT* pvarResult, UINT* puArgErr);
/// Makes an object to fill with an error's texts.
WINOLEAUTAPI CreateErrorInfo(ICreateErrorInfo** pperrinfo);
/// Keeps the error for the calling thread. @param perrinfo  null forgets it
WINOLEAUTAPI SetErrorInfo(ULONG dwReserved, IErrorInfo* perrinfo);
/// Hands out the calling thread's error and forgets it. @return S_FALSE when there is none
WINOLEAUTAPI GetErrorInfo(ULONG dwReserved, IErrorInfo** pperrinfo);
