#include "ado/odbc/column_attribute.h"

namespace tk::ado {

std::string TextAttribute(SQLHSTMT statement, int number, SQLUSMALLINT attribute) {
    char buffer[512] = {};
    SQLSMALLINT length = 0;
    const SQLRETURN result = Odbc().ColAttribute(statement, static_cast<SQLUSMALLINT>(number), attribute, buffer,
                                                 sizeof buffer - 1, &length, nullptr);
    return SQL_SUCCEEDED(result) ? std::string(buffer) : std::string();
}

SQLLEN NumberAttribute(SQLHSTMT statement, int number, SQLUSMALLINT attribute, SQLLEN otherwise) {
    SQLLEN value = otherwise;
    const SQLRETURN result =
        Odbc().ColAttribute(statement, static_cast<SQLUSMALLINT>(number), attribute, nullptr, 0, nullptr, &value);
    return SQL_SUCCEEDED(result) ? value : otherwise;
}

}  // namespace tk::ado
