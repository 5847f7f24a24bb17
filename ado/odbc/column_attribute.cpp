#include "ado/odbc/column_attribute.h"

#include <algorithm>

namespace tk::ado {

std::string TextAttribute(SQLHSTMT statement, int number, SQLUSMALLINT attribute) {
    char room[512];
    return std::string(TextAttribute(statement, number, attribute, room).value_or(std::string_view()));
}

std::optional<std::string_view> TextAttribute(SQLHSTMT statement, int number, SQLUSMALLINT attribute,
                                              std::span<char> room) noexcept {
    constexpr std::size_t kMost = 32766;
    // The last byte is not offered: it stays a zero whatever the driver writes.
    const std::size_t size = std::min(room.size(), kMost) - 1;
    room[0] = room[size] = '\0';
    SQLSMALLINT length = 0;
    const SQLRETURN result = Odbc().ColAttribute(statement, static_cast<SQLUSMALLINT>(number), attribute, room.data(),
                                                 static_cast<SQLSMALLINT>(size), &length, nullptr);
    if (!SQL_SUCCEEDED(result)) return std::nullopt;
    const std::string_view text(room.data());
    constexpr std::size_t kCharacter = 4;  // a text is cut in front of one that does not fit
    if (result != SQL_SUCCESS && text.size() + kCharacter >= size) return std::nullopt;
    return text;
}

SQLLEN NumberAttribute(SQLHSTMT statement, int number, SQLUSMALLINT attribute, SQLLEN otherwise) {
    SQLLEN value = otherwise;
    const SQLRETURN result =
        Odbc().ColAttribute(statement, static_cast<SQLUSMALLINT>(number), attribute, nullptr, 0, nullptr, &value);
    return SQL_SUCCEEDED(result) ? value : otherwise;
}

}  // namespace tk::ado
