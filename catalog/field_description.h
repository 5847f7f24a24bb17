// field_description.h - one row of a columns rowset: a column of a table, with its texts whole.
//
// The records of the interface (_tagFIELDINFO) hold 63 bytes of each text; scripts are written from the whole texts.
#pragma once

#include "tkkernel/driver.h"

namespace tk::catalog {

struct FieldDescription {
    CString name;
    CString type;  // spelled in the dialect of the recordset's tag
    int size = 0;
    int precision = 0;
    int scale = 0;
    int hasDefault = 0;  // as a VARIANT_BOOL: -1 or 0
    CString defaultText;
    int nullable = 0;  // as a VARIANT_BOOL: -1 or 0
    unsigned int flags = 0;
    CString catalog;
    CString table;
    CString schema;
    int ordinal = 0;

    const char* NullText() const noexcept { return nullable != 0 ? "" : " NOT NULL"; }
};

/// Reads the current row.
/// @return false at the end of the rows, or with the reason in the recordset's last-error text
bool DescribeField(CTRecordset& columns, FieldDescription& field);

/// Fills everything but the key mark. Texts beyond 63 bytes are cut behind a whole character.
void StoreField(const FieldDescription& field, _tagFIELDINFO& record);

/// The boolean in a value: of a number the low 16 bits, of everything else false.
VARIANT_BOOL BooleanPart(const VARIANT& value) noexcept;

}  // namespace tk::catalog
