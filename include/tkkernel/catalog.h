// tkkernel/catalog.h - descriptions of columns, what a column's type code means, and values as parts of SQL statements.
//
//   CString where = MakeEqualString("CODE,KIND", ChangeToSqlFormat(code, "Mic") + ",2", " AND ");
//   if (IsStringType(recordset.GetFieldType(key))) ...          // its literal needs quotes
//
// Type codes are those of ADO's DataTypeEnum; "variant types" are the VT_ codes of a VARIANT.
// Text: 8-bit GBK, zero-terminated; a null text counts as an empty one.
// Failures: functions raise nothing; what is not known gives the value named for it. The array raises exceptions of
// the framework, as the framework's own arrays do.
// Threads: functions are reentrant and keep no state between calls; an array may be used by several threads at once.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <afxcoll.h>
#include <afxmt.h>

#include "tkkernel/export.h"

// ---- field descriptions -----------------------------------------------------------------------

/// One column of a table. The layout is part of the interface; whoever has one filled zeroes it first.
struct _tagFIELDINFO {
    char szName[64];
    char szType[64];  ///< In the dialect of the database system: "VARCHAR (20)".
    int nSize;        ///< CHARACTER_MAXIMUM_LENGTH
    int nPrecision;
    int nScale;
    int nHasDefault;  ///< -1 or 0
    char szDefault[64];
    char szNull[64];      ///< "" when it takes nulls, else " NOT NULL"
    int nNullable;        ///< -1 or 0
    unsigned int nFlags;  ///< Field attributes of ADO, 0x80 long and 0x10 fixed length among them.
    char szCatalog[64];
    char szTable[64];
    char szSchema[64];
    int nOrdinal;     ///< From 1.
    int nPrimaryKey;  ///< 1 or 0; filled by CTDatabase::GetTableStruct alone.
    int nReserved;    ///< 0
};

/// A growable array whose every operation runs inside a critical section of its own.
///
///   CTArray<_tagFIELDINFO, _tagFIELDINFO&> fields;
///   if (database.GetTableStruct("ORDERS", fields)) Show(fields.GetAt(0).szName);
///
/// An index that does not exist raises CInvalidArgException, a failed allocation CMemoryException. A reference that an
/// array gives out is good until the array grows: between Lock and Unlock other threads do not.
template <class TYPE, class ARG_TYPE>
class CTArray {
public:
    CTArray() = default;
    CTArray(const CTArray&) = delete;
    CTArray& operator=(const CTArray&) = delete;
    virtual ~CTArray() = default;

    int GetSize() const {
        const Held held(section_);
        return elements_.GetSize();
    }
    int GetUpperBound() const { return GetSize() - 1; }
    void SetSize(int nNewSize, int nGrowBy = -1) {
        const Held held(section_);
        elements_.SetSize(nNewSize, nGrowBy);
    }
    void RemoveAll() {
        const Held held(section_);
        elements_.RemoveAll();
    }

    TYPE GetAt(int nIndex) const {
        const Held held(section_);
        return elements_.GetAt(nIndex);
    }
    TYPE& ElementAt(int nIndex) {
        const Held held(section_);
        return elements_.ElementAt(nIndex);
    }
    void SetAt(int nIndex, ARG_TYPE newElement) {
        const Held held(section_);
        elements_.SetAt(nIndex, newElement);
    }
    /// Grows the array where it has to; what lies between is zero.
    void SetAtGrow(int nIndex, ARG_TYPE newElement) {
        const Held held(section_);
        elements_.SetAtGrow(nIndex, newElement);
    }
    /// @return the index of the new element
    int Add(ARG_TYPE newElement) {
        const Held held(section_);
        return elements_.Add(newElement);
    }
    TYPE operator[](int nIndex) const { return GetAt(nIndex); }
    TYPE& operator[](int nIndex) { return ElementAt(nIndex); }

    /// Keeps other threads out until Unlock; may be nested.
    void Lock() { section_.Lock(); }
    void Unlock() { section_.Unlock(); }

private:
    class Held {
    public:
        explicit Held(CCriticalSection& section) : section_(section) { section_.Lock(); }
        Held(const Held&) = delete;
        Held& operator=(const Held&) = delete;
        ~Held() { section_.Unlock(); }

    private:
        CCriticalSection& section_;
    };

    mutable CCriticalSection section_;
    CArray<TYPE, ARG_TYPE> elements_;
};

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
