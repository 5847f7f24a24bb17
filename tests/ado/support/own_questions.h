// tests/ado/support/own_questions.h - what a session asks of a file database by itself, when some milliseconds have
// gone since it last looked for changed tables: not what tests count.
#pragma once

#include <string_view>

#include "ado/odbc/driver_profile.h"
#include "ado/odbc/odbc_api.h"

namespace tk::test {

inline bool IsOwnQuestion(const SQLCHAR* text) {
    const ado::DefinitionQueries& own = *ado::FindProfile("sqlite").definitions;
    const std::string_view asked = reinterpret_cast<const char*>(text);
    return asked == own.databases || asked == own.hold || asked == own.release || asked.ends_with(own.version.back) ||
           (asked.starts_with(own.tables.front) && asked.ends_with(" limit 1"));
}

}  // namespace tk::test
