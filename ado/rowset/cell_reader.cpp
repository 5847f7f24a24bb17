#include "ado/rowset/cell_reader.h"

#include <algorithm>
#include <cstring>

namespace tk::ado {

bool ReadWholeCell(Statement::Impl& statement, int number, SQLSMALLINT cType, std::string& value) {
    constexpr std::size_t kFirst = 4096;
    constexpr std::size_t kMostPieces = std::size_t{1} << 22;  // a driver that never ends must not hang us
    const std::size_t terminator = cType == SQL_C_BINARY ? 0 : 1;
    value.clear();
    std::size_t size = kFirst;
    for (std::size_t piece = 0; piece < kMostPieces; ++piece) {
        const std::size_t filled = value.size();
        value.resize(filled + size);
        SQLLEN indicator = 0;
        const SQLRETURN result = Odbc().GetData(statement.handle->Get(), static_cast<SQLUSMALLINT>(number), cType,
                                                value.data() + filled, static_cast<SQLLEN>(size), &indicator);
        if (result == SQL_NO_DATA) {
            value.resize(filled);
            return true;
        }
        if (!SQL_SUCCEEDED(result)) statement.Fail(result);
        if (indicator == SQL_NULL_DATA) {
            value.clear();
            return false;
        }
        const std::size_t room = size - terminator;
        const bool isWhole = indicator >= 0 && static_cast<std::size_t>(indicator) <= room;
        if (isWhole) {
            value.resize(filled + static_cast<std::size_t>(indicator));
            return true;
        }
        value.resize(filled + room);  // a cut piece is full
        // The driver has told what is left, or not: ask for that, or for twice as much.
        size = indicator >= 0 ? static_cast<std::size_t>(indicator) - room + terminator : size * 2;
    }
    statement.Fail(SQL_ERROR);
}

void NormalizeGuid(std::string& text) {
    constexpr std::size_t kDigits = 32;
    std::string digits;
    for (const char letter : text) {
        if (letter == '{' || letter == '}' || letter == '-') continue;
        const bool isHex =
            (letter >= '0' && letter <= '9') || (letter >= 'a' && letter <= 'f') || (letter >= 'A' && letter <= 'F');
        if (!isHex) return;
        digits.push_back(letter >= 'a' ? static_cast<char>(letter - 'a' + 'A') : letter);
    }
    if (digits.size() != kDigits) return;
    for (const std::size_t at : {20u, 16u, 12u, 8u})
        digits.insert(at, 1, '-');
    text = "{" + digits + "}";
}

}  // namespace tk::ado
