// ado/cursor/criteria.h - the texts of Filter and Find: read once, then asked of one row after the other, in place.
//
//   const Criteria criteria = Criteria::ParseFilter(u"price > 3 AND name LIKE '中%'", store.Columns());
//   if (criteria.Matches(store, row)) ...
//
//   filter := and { OR and }     and := part { AND part }     part := clause | '(' filter ')'
//   clause := name op value | name IS [NOT] NULL              op := < > <= >= <> = LIKE
//   name   := word | [anything but ]]     value := 'text' | #date# | #'text'# | number | $number | TRUE | FALSE | NULL
//
// A part in parentheses that holds an OR may itself only be joined by OR. LIKE takes * or % at the end or at both ends.
// Texts compare without regard to case. A NULL meets nothing but "= NULL" and IS NULL.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "ado/cursor/row_store.h"

namespace tk::ado {

struct Clause;

class Criteria {
public:
    /// @throws AdoError 3001 for a text outside the grammar or a value that no value of the column can be compared
    /// with,
    ///   3265 for an unknown column
    static Criteria ParseFilter(std::u16string_view text, const std::vector<Column>& columns);

    /// Exactly one clause.
    static Criteria ParseFind(std::u16string_view text, const std::vector<Column>& columns);

    Criteria(Criteria&&) noexcept;
    Criteria& operator=(Criteria&&) noexcept;
    ~Criteria();

    bool Matches(const RowStore& rows, std::size_t row) const;

private:
    explicit Criteria(std::vector<std::vector<Clause>> alternatives);
    std::vector<std::vector<Clause>> alternatives_;  // OR of ANDs
};

}  // namespace tk::ado
