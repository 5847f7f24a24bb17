// ado/objects/rowset_properties.h - the dynamic properties that a Recordset has, and a Command before it is opened.
#pragma once

#include <string>

#include "ado/cursor/row_writer.h"
#include "ado/objects/properties.h"

namespace tk::ado {

/// What the writable ones keep.
struct RowsetSettings {
    WriteRules rules;
    LONG batchSize = 15;
    LONG autoRecalc = 1;
    LONG initialFetchSize = 50;
    LONG backgroundFetchSize = 15;
    LONG backgroundThreadPriority = 3;
    bool maintainChangeStatus = false;
};

/// What some of the others tell of.
struct RowsetFacts {
    LONG lock = 1;  // LockTypeEnum
    LONG maxRecords = 0;
};

std::size_t RowsetPropertyCount() noexcept;
PropertyInfo DescribeRowsetProperty(std::size_t index);
Value ReadRowsetProperty(std::size_t index, const RowsetSettings& settings, const RowsetFacts& facts);

/// For a writable one, with a value of its type. @throws AdoError 3001 for a value out of range
void WriteRowsetProperty(std::size_t index, RowsetSettings& settings, const Value& value);

}  // namespace tk::ado
