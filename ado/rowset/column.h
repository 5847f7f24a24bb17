// ado/rowset/column.h - what is known about one column of a result.
#pragma once

#include <windows.h>

#include <string>

namespace tk::ado {

/// How the cells of a column are kept.
enum class CellKind : unsigned char {
    Integer16,
    Integer32,
    Integer64,
    Real32,
    Real64,
    Boolean,
    Text,  // UTF-8
    Bytes,
    Decimal,    // text as the driver gives it
    Date,       // SQL_DATE_STRUCT
    Time,       // SQL_TIME_STRUCT
    Timestamp,  // SQL_TIMESTAMP_STRUCT, nanoseconds kept
    Guid,
};

struct Column {
    std::u16string name;
    LONG type = 0;    // ADO data type of Field.Type (200 …)
    LONG dbType = 0;  // plain OLE DB code (129, 130, 128 for texts and bytes)
    CellKind kind = CellKind::Text;
    LONG definedSize = 0;  // bytes of fixed types, characters of texts, bytes of binaries
    BYTE precision = 255;
    BYTE scale = 255;
    LONG attributes = 0;  // FieldAttribute bits
    bool isUnsigned = false;
    bool isAutoIncrement = false;  // known after RowSet::DescribeOrigins
    bool isCaseSensitive = false;
    bool isExpression = false;  // no base table: a computed value; always known for 64-bit integers, for others after
                                // RowSet::DescribeOrigins
    int searchable = 4;         // 1 no, 2 like only, 3 all but like, 4 all
    int sqlType = 0;            // as the driver describes it

    // Known after RowSet::DescribeOrigins only; UTF-8, empty when the database does not say.
    std::string baseCatalog;
    std::string baseSchema;
    std::string baseTable;
    std::string baseColumn;
    std::string qualifier;  // in front of the table's name in statements, where the driver knows no schemas
    bool isOpaque = false;  // of a type without "=": compared as text
    bool isKey = false;     // part of the base table's key, which the result holds whole
};

}  // namespace tk::ado
