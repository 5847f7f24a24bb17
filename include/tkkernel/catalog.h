// tkkernel/catalog.h - what a column's type code means, and values as parts of an SQL statement.
//
//   CString where = MakeEqualString("CODE,KIND", ChangeToSqlFormat(code, "Mic") + ",2", " AND ");
//   if (IsStringType(recordset.GetFieldType(key))) ...          // its literal needs quotes
//
// Type codes are those of ADO's DataTypeEnum; "variant types" are the VT_ codes of a VARIANT.
// Text: 8-bit GBK, zero-terminated; a null text counts as an empty one.
// Failures: nothing here raises; what is not known gives the value named for it.
// Threads: all functions are reentrant and keep no state between calls.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <afx.h>

#include "tkkernel/export.h"

// ---- type codes -------------------------------------------------------------------------------

/// The variant type in which values of a column of that type travel.
/// @return VT_EMPTY for what has none: binary (128) and GUID (72) columns, codes below 0 and above 203
/// @note A small integer (2) gives VT_I1 and a tiny one (16) gives VT_I2.
TKKERNEL_API unsigned short DBTypeToVT(long nType);

/// @return 1 for the type codes of texts, dates and times, whose literals stand in quotes; else 0
TKKERNEL_API int IsStringType(long nType);

/// @return 1 for the variant types of dates and texts, whose literals stand in quotes; else 0
TKKERNEL_API int IsTextType(unsigned int vt);

/// @return the word for numbers (booleans and currency among them), dates or texts; "" for every other variant type
TKKERNEL_API CString GetTypeName(unsigned int vt);

// ---- SQL literals -----------------------------------------------------------------------------

/// The value as an SQL literal: "null", the display text of a number (with its leading blanks, and "" for a fraction
/// that prints as zero), 'YYYY/MM/DD' of a date, a text in single quotes.
/// @param value   stays the caller's
/// @param szDbms  not consulted
/// @return "" for every other type: objects, errors, arrays, references
/// @note Quotes inside a text are not doubled: a text that nobody vetted does not belong here.
TKKERNEL_API CString ChangeToSqlFormat(VARIANT value, const char* szDbms);

/// "A=1 AND B=2" from "A,B", "1,2" and " AND ". Empty pieces of both lists are dropped before they are paired.
/// @param szValues  inserted as they are; a name without a value gets an empty one, values without a name are dropped
/// @return "" when there is no name
TKKERNEL_API CString MakeEqualString(const char* szNames, const char* szValues, const char* szJoin);
