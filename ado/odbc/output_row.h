// ado/odbc/output_row.h - output values that a driver gives as a result of their own, behind the others.
//
// Such a driver fills the output parameters as well, but leaves the place of a NULL as it was: an output then looks
// like an empty text, an input and output like its input. The row tells them apart.
#pragma once

#include "ado/odbc/statement_impl.h"

namespace tk::ado {

/// Takes the values when the current result is that row, and steps to the next result then.
/// @return false when there is none
/// @throws AdoError with the driver's diagnostics
bool PassOutputRow(Statement::Impl& statement);

}  // namespace tk::ado
