// tests/support/tds/batch_text.h - the statements of a batch, in SQLite's words.
//
// The server speaks SQLite's SQL. Of the language of its model it takes what the product and its driver send by
// themselves and what is cheap: N'…', 0x…, @@functions, the database and owner in front of names. Statements are told
// apart by semicolons.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tk::test::tds {

std::vector<std::string> SplitBatch(std::string_view text, std::string_view database);

}  // namespace tk::test::tds
