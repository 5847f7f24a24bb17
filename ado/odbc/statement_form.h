// ado/odbc/statement_form.h - what texts have in common that differ only in their values.
#pragma once

#include <cstdint>
#include <string_view>

namespace tk::ado {

/// A number for a text without its numbers and quoted texts: "where id = 17" and "where id = 4" have the same. 0 for a
/// text of which that cannot be told whatever system it is for: with comments, backslashes or other quotes inside
/// quotes, dollar signs, several statements, characters spelt by numbers.
std::uint64_t StatementForm(std::string_view sql) noexcept;

}  // namespace tk::ado
