// tools/tkdb/write_rows.h - every record of a recordset through a writer.
#pragma once

#include <tkkernel/tkkernel.h>

#include "tools/tkdb/result_writer.h"

namespace tk::tools {

/// Writes columns and rows from the current record on; stops early when the user wants it or the file takes no more.
/// Lets the recordset's exceptions pass.
/// @param maxRows  0 writes all of them
/// @return rows written
long WriteRows(CTRecordset& records, Format format, std::FILE* out, Charset charset, long maxRows);

}  // namespace tk::tools
