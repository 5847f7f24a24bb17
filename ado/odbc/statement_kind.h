// ado/odbc/statement_kind.h - what can be told of a statement from its text: enough to decide how to run it.
//
// A guess, taken where a wrong one costs time but never a wrong result.
#pragma once

#include <cstdint>
#include <string_view>

namespace tk::ado {

struct StatementKind {
    bool isReading = false;       // one SELECT or its like: running it twice does no harm
    bool readsTables = false;     // one SELECT or its like that names a table; it may change the session
    bool isLikelyLarge = false;   // reads from a table and names nothing that would limit the rows
    bool takesLimit = false;      // a SELECT that a LIMIT can be written behind
    bool defines = false;         // CREATE, ALTER or DROP
    bool mayDefine = false;       // may change tables, or which ones are meant, as far as its words tell
    bool changesSession = false;  // may leave settings, temporary tables or locks behind on the connection
    std::uint64_t form = 0;       // StatementForm of the text; 0 also for one that only writes
};

StatementKind Inspect(std::string_view sql) noexcept;

/// The first word of a statement that changes rows or tables, as it is written; empty for others.
std::string_view ChangingWord(std::string_view sql) noexcept;

}  // namespace tk::ado
