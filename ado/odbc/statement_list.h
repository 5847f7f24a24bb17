// ado/odbc/statement_list.h - a text of several statements, taken apart: for a driver that must not be given one.
//
// The words and quotes are MariaDB's: '...' and "..." with backslashes, `...`, comments from # or -- to the end of the
// line and between slash and star. Where the server takes backslashes as they are (NO_BACKSLASH_ESCAPES), a text that
// ends in one is read too far, and what is sent is a syntax error.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tk::ado {

struct ListedStatement {
    std::string text;
    std::size_t markers = 0;  // its '?'

    /// Defines a routine, a trigger or an event whose statements end in semicolons too: a driver that looks for those
    /// has to be told by preparing it that this is one statement, and must not be asked for further results.
    bool isProgram = false;
};

/// The statements of a text, without the comments around them. Empty for a text that can be sent as it is: one usual
/// statement without semicolons in front of it or inside.
///
/// A routine goes on until every BEGIN, IF, CASE and loop in it has its END. Where one of several may have results in a
/// row (CALL, also in braces, IF, LOOP and their like), the whole text is one block, which the server runs: BEGIN NOT
/// ATOMIC ... END. The rest of such results would stay on the connection, and closing any other handle would swallow
/// one of them. So does one of the statements whose rows the driver does not see (OPTIMIZE, REPAIR, VALUES and some
/// other ones), also where it is all of the text.
std::vector<ListedStatement> ListStatements(std::string_view sql);

}  // namespace tk::ado
