// ado/odbc/column_attribute.h - what a driver says of one column of a result.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "ado/odbc/odbc_api.h"

namespace tk::ado {

/// @param number  of the column, from 1
/// @return UTF-8; empty when the driver does not say
std::string TextAttribute(SQLHSTMT statement, int number, SQLUSMALLINT attribute);

/// The same without an allocation. @param room  that the text is in, not empty; at most 32766 bytes are used
/// @return nullopt when the driver does not say, or more than there is room for
std::optional<std::string_view> TextAttribute(SQLHSTMT statement, int number, SQLUSMALLINT attribute,
                                              std::span<char> room) noexcept;

SQLLEN NumberAttribute(SQLHSTMT statement, int number, SQLUSMALLINT attribute, SQLLEN otherwise);

}  // namespace tk::ado
