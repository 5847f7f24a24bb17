// tkkernel/util.h - error texts and the event log, automation values as text and numbers, strings and lists, dates and
// numbers by formats, Chinese numerals, amounts and initials.
//
//   CString text = VariantToTrimString(value);          // "1.5"
//   CStringArray fields;
//   StringToArray(fields, "code,name,price", ",");
//   if (!Load(fields)) AddErrorLog("Load failed.", 1, 0, NULL);
//   CString price = DoubleToString(1234.5, "#,##0.00");  // "1,234.50"
//   CString day = DateToString(date, "YYYY-MM-DD");
//
// Text: 8-bit GBK, zero-terminated. A null text counts as an empty one unless a function says otherwise. Positions,
// lengths and counts of characters are in bytes. Separators, patterns and single characters are searched as bytes, so
// one may be found inside a double-byte character; functions that step by whole characters say so.
// Failures: nothing here raises; every function has a value that says it could not.
// Ownership: texts and lists are values; a VARIANT returned by value belongs to the caller, who clears it.
// Threads: all functions are reentrant and keep no state between calls.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <afx.h>
#include <afxcoll.h>
#include <afxdisp.h>

#include "tkkernel/export.h"

// ---- error text and event logging -------------------------------------------------------------

/// The running program's path in parts, each zero-terminated and cut at a character boundary when it is too long.
struct _tagPATHITEM {
    char szFullPath[256];  ///< as the system reports it
    char szDrive[4];       ///< letter and colon; empty where paths have no drive
    char szDir[256];       ///< with its leading and trailing separator
    char szFileName[32];   ///< without the extension; the event source of every log record
    char szExt[8];         ///< with its leading point
    char szHome[256];      ///< drive and directory: the folder that holds the program
};

/// The system's message for a code, after "the error code in eight hexadecimal digits".
/// @return the message with the line break the system ends it with; "" for a code the system has no text for
TKKERNEL_API CString LookupErrorText(DWORD nCode);

/// LookupErrorText of the calling thread's last error code.
TKKERNEL_API CString GetLastErrorText();

/// As above.
/// @param pCode  receives the code before its text is looked up; may be null
TKKERNEL_API CString GetLastErrorText(DWORD* pCode);

/// The exception's own message, at most 255 bytes.
/// @param e  borrowed: the caller still deletes it; null gives ""
TKKERNEL_API CString GetExceptionError(CException* e);

/// The message for a fault that carries none, at most 255 bytes.
/// @param szWhere  the service that faulted
/// @param szWhat   the place of the fault
TKKERNEL_API CString GetExceptionError(const char* szWhere, const char* szWhat);

/// Splits the path of the running program.
/// @return 1 with all six parts filled; 0 when the path cannot be had: szFullPath is empty, the rest untouched
TKKERNEL_API int GetAppName(_tagPATHITEM* pItem);

/// Writes one record to the application event log: source szFileName ("UnknownService" when the program's path cannot
/// be had), category 0, three strings: szFirst, a line break, szSecond. Type 1 (error) sounds one beep first.
/// @param nType           1 error, 2 warning, 4 information
/// @param nLength, pData  raw data of the record in bytes; a null pData means none
/// @return nonzero, also when the record itself was refused; 0 when the log cannot be opened
TKKERNEL_API int AddLog(const char* szFirst, const char* szSecond, DWORD nEventId, WORD nType, WORD nLength,
                        void* pData);

/// AddLog of an error with the identifier 0x4000000C; beeps.
/// @param bLastError  nonzero: the second text is GetLastErrorText(); 0: it is empty
TKKERNEL_API int AddErrorLog(const char* szText, int bLastError, WORD nLength, void* pData);

/// AddLog of a warning with the identifier 0x4000000C.
TKKERNEL_API int AddWarnLog(const char* szFirst, const char* szSecond, WORD nLength, void* pData);

/// AddLog of an information with the identifier 0x4000000C.
TKKERNEL_API int AddInforLog(const char* szFirst, const char* szSecond, WORD nLength, void* pData);

/// Logs a fault that carries no message; the second text is GetLastErrorText(). Beeps.
/// @param pMessage  receives the first text, also when the log cannot be opened; may be null
TKKERNEL_API int AddExcepLog(const char* szWhere, const char* szWhat, CString* pMessage = NULL);

/// Logs an exception with its own message; the second text is GetLastErrorText(). Beeps.
/// @param e         borrowed: the caller still deletes it
/// @param pMessage  receives the first text, also when the log cannot be opened; may be null
TKKERNEL_API int AddExcepLog(CException* e, const char* szWhere, CString* pMessage = NULL);

/// Three tones of 2300 Hz for 50 ms, 100 ms apart; blocks for all of them.
/// @return 1
TKKERNEL_API int MsgBeep();

/// Plays nCount rising sweeps (800 to 2250 Hz in steps of 50, 10 ms each) on a thread of its own, and returns at once.
/// Several calls sound at the same time. A count below 1 plays nothing.
TKKERNEL_API void OnWarningMessage(int nCount);

// ---- variants ---------------------------------------------------------------------------------

/// The display text of a value.
/// Numbers with a fraction and currency: "%12.2f" without the zeros at its end, its leading blanks kept; zero is "".
/// Dates: "YYYY-MM-DD hh:mm:ss". Booleans: "True", "False". An array of bytes: the bytes up to the first zero one.
/// @return "" for VT_EMPTY, VT_NULL and every type without a text
TKKERNEL_API CString VariantToString(const VARIANT& value);

/// The value as part of an SQL statement: as VariantToString, but dates and texts in single quotes, the quotes inside a
/// text doubled; types without a display text are coerced to one and quoted.
/// @return "" for VT_EMPTY and VT_NULL (not the word NULL) and for what cannot be coerced
TKKERNEL_API CString VARIANTToString(const VARIANT& value);

/// VariantToString without white space at both ends.
TKKERNEL_API CString VariantToTrimString(const VARIANT& value);

/// The value as a 32-bit integer, fractions cut towards zero; currency is rounded to two decimals first; of a decimal
/// the first ten characters of its text count.
/// @return 2147483647 for VT_EMPTY, VT_NULL, texts (they are not parsed), values out of range and every other type
TKKERNEL_API long VariantToLong(const VARIANT& value);

/// The value as a double; a date is its day number, currency is rounded to two decimals, a decimal loses its fraction.
/// @return 2147483647.0 for VT_EMPTY, VT_NULL, texts (they are not parsed) and every other type
TKKERNEL_API double VariantToDouble(const VARIANT& value);

/// @param destination  overwritten, not cleared: it may be uninitialised, and what it owned is lost
TKKERNEL_API void StringToVariant(VARIANT& destination, const char* szText);

/// Compares two values of one type. Small integers give their difference; true sorts before false; texts follow the
/// system's order.
/// @return -1 for different types; 0 for VT_EMPTY, VT_NULL, VT_CY and every type without an order
TKKERNEL_API int CompareVariant(const VARIANT& first, const VARIANT& second);

/// Clears the destination and gives it a deep copy of the source; it stays cleared when the source cannot be copied.
TKKERNEL_API void CopyVariant(VARIANT& destination, const VARIANT& source);

/// The platform's sum of two values; texts are joined.
/// @return owned by the caller; VT_EMPTY when the two cannot be added
TKKERNEL_API VARIANT VariantPlus(const VARIANT& first, const VARIANT& second);

/// @return "" when the platform cannot convert it
TKKERNEL_API CString DecimalToString(DECIMAL value);
/// @return 0.0 when the platform cannot convert it
TKKERNEL_API double DecimalToDouble(DECIMAL value);
/// @return zero when the text is no number
TKKERNEL_API DECIMAL StringToDecimal(const char* szText);
/// @return 0.0 when the text is no number
TKKERNEL_API double StringToDouble(const char* szText);

/// Cuts the zeros at the end of a number's text, and the point with them; leading blanks stay.
/// @param text  left as it is
/// @return "" when nothing but an integer part of zero is left
TKKERNEL_API CString TruncDouble(CString& text);

// ---- strings and lists: splitting and joining ----------------------------------------------------

/// Splits a text at a separator of one or more characters. Empty pieces are dropped, except the last one.
/// @param array  emptied first; an empty text adds nothing, an empty separator adds the whole text
/// @note "a;;b" gives a, b; "a;b;" gives a, b and an empty text.
TKKERNEL_API void StringToArray(CStringArray& array, const char* szText, const char* szSeparator);

/// Reads zero-terminated texts packed one after another.
/// @param array    emptied first
/// @param nLength  bytes in the buffer, terminators included; empty texts are kept
TKKERNEL_API void StringToArray(CStringArray& array, const char* pBuffer, int nLength);

/// The elements with the separator between them.
TKKERNEL_API CString ArrayToString(const CStringArray& array, const char* szSeparator);

/// Adds the pairs of "key=value;key=value" to a map; a later value of a key replaces an earlier one.
/// Items without "=" are passed over; nothing is trimmed, quoted or escaped.
/// @param map  not emptied
TKKERNEL_API void StringToMap(CMapStringToString& map, const char* szText);

/// "key=value;key=value" in the map's own order.
TKKERNEL_API CString MapToString(const CMapStringToString& map);

/// Takes the first token off a text.
/// @param text  loses the token and the character behind it; stays as it is when the character does not occur
/// @return the token; "" when the character does not occur, so the last token stays in the text
TKKERNEL_API CString DivideString(CString& text, char ch);

/// The number of fields that a character separates.
/// @return occurrences plus one; 0 when it does not occur
TKKERNEL_API int CountSubString(const char* szText, char ch);

// ---- strings and lists: searching and cutting out -------------------------------------------------

/// @return position of the first occurrence of the pattern in the text, or -1
TKKERNEL_API int FindStringPos(const char* szPattern, const char* szText);

/// As FindStringPos without regard to case; note the order of the arguments.
/// @return -1 also for an empty pattern
TKKERNEL_API int FindStringNoCase(const char* szText, const char* szPattern);

/// @return the text before the first occurrence of the pattern; "" when it does not occur
TKKERNEL_API CString FindString(const char* szPattern, const char* szText);

/// The text between a head and the first tail after it.
/// @param szHead  empty: from the beginning
/// @param szTail  empty: up to the end
/// @return "" when one of them is missing
TKKERNEL_API CString GetUnit(const char* szHead, const char* szText, const char* szTail);

/// As GetUnit, for loops.
/// @param nPosition  receives where to go on: just after the tail; just after the head when the tail is missing; -1
///                   when the head is missing
TKKERNEL_API CString GetUnitPos(const char* szHead, const char* szText, const char* szTail, int& nPosition);

/// As GetUnitPos without regard to case; the result keeps the case of the text.
TKKERNEL_API CString GetUnitNoCase(const char* szHead, const char* szText, const char* szTail, int& nPosition);

/// The text beside the first occurrence of a mark.
/// @param bBefore  nonzero: at most the last nCount bytes before it; 0: at most the first nCount bytes after it
/// @param nCount   negative: all of them
/// @return "" when the mark does not occur
TKKERNEL_API CString GetSubString(const char* szMark, const char* szText, int bBefore, int nCount);

// ---- strings and lists: trimming and replacing -----------------------------------------------------

/// Removes leading characters that are in a set, in place, by whole characters.
/// @return bytes removed; -1 when there were none, or when buffer or set is null or empty
TKKERNEL_API int TrimLeft(char* pBuffer, const char* szSet);

/// As TrimLeft, at the end.
TKKERNEL_API int TrimRight(char* pBuffer, const char* szSet);

/// Cuts the characters equal to ch off the end, and the character before them as well.
/// @note "ab00" without "0" is "a", "abc" is "ab"; a text of nothing but ch is "". Never halves a character.
TKKERNEL_API CString TruncString(const char* szText, char ch);

/// Replaces every occurrence in place, by whole characters.
TKKERNEL_API void ReplaceTextA(CString& text, const char* szOld, const char* szNew);

/// Copies a text up to the end of its last occurrence of szOld, each occurrence replaced.
/// @return what follows the last occurrence is dropped; "" without any occurrence, for an empty szOld, and when szNew
///         is longer than the whole text
TKKERNEL_API CString ReplaceString(const char* szText, const char* szOld, const char* szNew);

// ---- strings and lists: lists ----------------------------------------------------------------------

/// @return 1 when an element equals the text, else 0
TKKERNEL_API int StringInArray(const CStringArray& array, const char* szText);
/// @return index of the first element that equals the text, or -1
TKKERNEL_API int StringInArrayPos(const CStringArray& array, const char* szText);
/// @return 1 when the value is in the list, else 0
TKKERNEL_API int DWordInArray(const CDWordArray& array, DWORD nValue);
/// Sorts ascending by the bytes of the texts.
TKKERNEL_API void SortArray(CStringArray& array);

// ---- strings and lists: characters and the console ---------------------------------------------------

/// @return '0' to '9' for 0 to 9; from 10 on the value plus 55, 'A' to 'F' for 10 to 15
TKKERNEL_API char DecToHex(int nValue);
/// @return the code minus 55 above '9', else minus 48; lower-case letters are not supported
TKKERNEL_API int HexToDec(char ch);

/// Reads characters from the console without showing them.
/// @param pBuffer       nMaximum bytes
/// @param chTerminator  ends the input; a zero byte is stored in its place
/// @return characters before the terminator, or before the end of the input; else nMaximum, and no terminator is stored
TKKERNEL_API int GetInput(char* pBuffer, int nMaximum, char chTerminator);

// ---- strings and lists: plain helpers ---------------------------------------------------------------

/// @return 1 when the character occurs in the text, else 0
TKKERNEL_API int IsExist(const char* szText, char ch);
/// The text without any ch; double-byte characters stay whole.
TKKERNEL_API CString CutString(const char* szText, char ch);

/// Copies at most nCount leading bytes; the target, which may overlap the source, is terminated.
/// @return bytes copied
TKKERNEL_API int StringLeft(const char* pSource, char* pTarget, int nCount);
/// Keeps at most nCount leading bytes.
/// @return bytes kept
TKKERNEL_API int StringLeft(char* pBuffer, int nCount);
/// Copies at most nCount trailing bytes; the target, which may overlap the source, is terminated.
/// @return bytes copied
TKKERNEL_API int StringRight(const char* pSource, char* pTarget, int nCount);
/// Keeps at most nCount trailing bytes.
/// @return bytes kept
TKKERNEL_API int StringRight(char* pBuffer, int nCount);

/// @return 1 when the text is not empty and all 0 to 9, else 0
TKKERNEL_API int IsDigit(const char* szText);
/// Two upper-case hexadecimal digits for each byte.
TKKERNEL_API CString StringToHexString(const char* szText);
/// The bytes of pairs of hexadecimal digits of either case; reading stops at the first pair that is none.
TKKERNEL_API CString HexStringToString(const char* szText);
/// The value of up to two pairs of hexadecimal digits, high byte first: "1A2B" is 0x1A2B, "1A" 0x1A, "1A2" 0x1A02.
TKKERNEL_API unsigned short StringToWord(const char* szText);

/// A number in base 2 to 36, digits in upper case; base 16 is "0x" and eight digits.
/// @return "" for another base
TKKERNEL_API CString NumberToString(unsigned int nNumber, int nBase);
/// The inverse; digits of either case, in base 16 after an optional "0x"; reading stops at the first other character.
/// @return 4294967295 when the number is too large; 0 for another base
TKKERNEL_API unsigned int StringToNumber(const char* szText, int nBase);

/// @return usable bytes of a block from malloc; 0 for null
TKKERNEL_API int GetMemoryLength(void* pMemory);
/// @return bytes of a text; 0 for null
TKKERNEL_API int StrLen(const char* szText);
/// @return UTF-16 units of a text; 0 for null
TKKERNEL_API int WStrLen(const OLECHAR* szText);

// ---- dates and numbers: dates -----------------------------------------------------------------------

/// A date by a format of its own: YYYY the year, YY its last two digits, MM month, DD day, hh hour (0 to 23), mm
/// minute, ss second, each of these with two digits, W the day of the week as one Chinese numeral. Everything else
/// stays as it is.
/// @param szFormat  null or empty: "YYYY/MM/DD hh:mm:ss"
/// @return "" for a date outside the years 100 to 9999
/// @note W is one day ahead: two for Sunday, three for Monday, ... "day" for Friday; Saturday is one.
TKKERNEL_API CString DateToString(DATE date, const char* szFormat);

/// The current local time by strftime's letters, in English whatever the locale is: aAbBcdHIjmMpSUwWxXyY and %%.
/// Others stay as they are.
TKKERNEL_API CString GetCurDate(const char* szFormat);

/// A date as an SQL literal, in at most 63 bytes: what is longer is cut.
/// @param szText   a date's text, taken as it is; with a percent sign in it a format of GetCurDate
/// @param bOracle  nonzero: TO_DATE with the text in quotes and the format "YYYY-MM-DD HH24:MI:SS"; 0: the text in
/// quotes
/// @return "" for an empty text
/// @note Quotes inside the text are not doubled: it must not come from outside the program.
TKKERNEL_API CString GetDateString(const char* szText, int bOracle);

/// The date of a text, read by the rules of the system's language.
/// @return 0.0 when the text is no date
TKKERNEL_API DATE StringToDate(const char* szText);

/// Universal time to the time of China, eight hours later, in place. Month, day and hour are first reduced by 13, 32
/// and 24; when one of them is then below 1 nothing more happens, so the hour after midnight stays as it is.
/// @param pYear  years since 2000, as a signed byte that wraps around
/// @note Past the end of a month the day wraps but the month stays; only December goes on to January of the next year.
///       A null pointer leaves everything as it is.
TKKERNEL_API void GetLocalDate(char* pYear, char* pMonth, char* pDay, char* pHour);
/// The same for the date of a text, with the full year; minute and second stay.
/// @return the zero date when the text is no date; of the status invalid behind the year 9999
TKKERNEL_API COleDateTime GetLocalDate(const char* szText);
/// The same for a date.
/// @return the zero date for a null pointer and for a date that is not valid
TKKERNEL_API COleDateTime GetLocalDate(COleDateTime* pDate);

// ---- dates and numbers: numbers ---------------------------------------------------------------------

/// An integer by a format.
/// @param szFormat  null or empty: plain digits; with a "/" the text before it for nonzero, behind it for zero; else a
///                  format of DoubleToString
TKKERNEL_API CString IntToString(int nValue, const char* szFormat);

/// A number by a format, which is one of these:
/// - the two names of amounts in Chinese capitals, a bracketed four-character word for "capital currency" with the
///   numeral one or two: UpperCurrency of mode 1 or 2;
/// - a pattern of digit places: 0 a digit, # a digit where there is one, a comma between places groups by thousands (by
///   ten thousands where four places follow it), a point before the decimals: "#,##0.00", "000", "0.##". A percent or
///   per mille sign right behind the places multiplies by 100 or 1000. Other characters stand for themselves; "..." and
///   '...' quote, a backslash quotes one character. Semicolons part the patterns for positive, negative and zero
///   numbers; an empty one is the first. Halves of the number's shortest decimal text go away from zero; what prints as
///   zero has no minus sign. "#,##0.00;(#,##0.00);-" prints 1,234.50 and (1,234.50) and -;
/// - a format of printf with one conversion out of d i u o x X f F e E g G, with flags, width and precision up to 512,
///   sizes like l, ll and I64, and %% for the sign: "%.2f", "%08X", "%5.1f%%". Integer letters cut the fraction, and
///   the bits of a negative number are those of 32 bits where it fits. Rounding is printf's, on the exact value.
///
/// Text around the number may be Chinese. The form is the same in every locale.
/// @return "" for an empty or malformed format, for a number that is not finite (but UpperCurrency has a text for it)
///         and for integer letters beyond 64 bits
TKKERNEL_API CString DoubleToString(double nValue, const char* szFormat);

/// A number's text rounded on its digits, halves away from zero: "2.345" to two decimals is 2.35.
/// @param nDecimals  below 0 counts as 0
/// @return the number that atof reads from the rounded digits, or from the text where it has no more decimals
TKKERNEL_API double Round(const char* szText, int nDecimals);

/// The run-time library's rand() brought into a range. It is not seeded here.
/// @return nMinimum when nMaximum lies below it
TKKERNEL_API int GetRandom(int nMinimum, int nMaximum);

/// Inverse hyperbolic functions, as their formulas with logarithms; arguments are not checked.
TKKERNEL_API double Arsinh(double x);
TKKERNEL_API double Arcosh(double x);
TKKERNEL_API double Artanh(double x);
/// Radians to degrees, and back.
TKKERNEL_API double DEG(double x);
TKKERNEL_API double RAD(double x);

/// A value by a format: integers and booleans (-1 is true) as IntToString, numbers with a fraction and VT_DECIMAL as
/// DoubleToString, dates as DateToString, texts as they are.
/// @param value  stays the caller's
/// @return "" for currency, 131 and every other type
TKKERNEL_API CString FormatVariant(VARIANT value, const char* szFormat);

// ---- Chinese numerals, amounts and initials ---------------------------------------------------------

/// One numeral out of zero to ten: the number modulo 11.
/// @return "" for a negative number
TKKERNEL_API CString NumberToChinese(short nNumber);

/// An amount of yuan as cheques and invoices spell it, in capital numerals, rounded to two decimals as printf rounds.
/// @param nMode  2: every place from the first group of four that is not zero, jiao and fen always, no end mark;
///               others: the usual form, which ends in the end mark, behind jiao and fen too
/// @return zero yuan, zero jiao, zero fen for 0 and what is not finite; a negative amount's text begins with the word
///         for "negative". Of more than twelve whole digits the last twelve are written.
TKKERNEL_API CString UpperCurrency(double nAmount, int nMode);

/// The initials of the pinyin of a text, for search keys. Bytes below 0x80 are copied; a double-byte character gives
/// the letter of its place in GB2312, those behind the common ones Z; those before the first ideograph, and half a
/// character at the end, give nothing.
/// @param nLength  bytes; the text may hold NULs. Below 1, or with a null pointer: the empty text
/// @return the initials; a text without double-byte characters with "v" in front, so "" gives "v"
TKKERNEL_API CString ToPyHead(const char* pText, int nLength);
/// The same of a whole text.
TKKERNEL_API CString ToPyHead(CString& text);
