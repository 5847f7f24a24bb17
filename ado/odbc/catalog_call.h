// ado/odbc/catalog_call.h - one catalog function of ODBC on a statement handle.
#pragma once

#include "ado/odbc/odbc_api.h"
#include "ado/odbc/statement.h"

namespace tk::ado {

/// Empty texts are sent as null, "unrestricted"; the lists of catalogs and of schemas are asked for in ODBC's own way.
SQLRETURN RunCatalogCall(SQLHSTMT statement, const CatalogCall& call);

}  // namespace tk::ado
