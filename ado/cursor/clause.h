// ado/cursor/clause.h - one comparison of a filter, made ready to be asked of many rows.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "ado/cursor/row_store.h"

namespace tk::ado {

enum class Operator : unsigned char { Less, Greater, LessOrEqual, GreaterOrEqual, NotEqual, Equal, Like };

/// The right side of a clause as it was written.
struct Literal {
    enum class Form : unsigned char { Text, Hashed, Number, True, False, Null } form = Form::Null;
    std::u16string text;  // Text, Hashed: without delimiters; Number: digits with sign, without '$'
};

/// How texts are told apart without regard to case.
class TextPattern {
public:
    enum class Span : unsigned char { Whole, Start, Anywhere };

    TextPattern() = default;
    TextPattern(std::u16string_view text, Span span);

    bool Matches(std::string_view utf8) const;

private:
    Span span_ = Span::Whole;
    bool bytewise_ = false;  // no character but ASCII has two cases: the bytes can be compared as they are
    std::string bytes_;      // ASCII in upper case
    std::u16string units_;   // in upper case
};

struct Clause {
    enum class Test : unsigned char { Null, NotNull, Number, Date, TextOrder, Pattern, Never };

    /// @throws AdoError 3001 when no value of the column can be compared with the literal in this way
    Clause(std::size_t column, const Column& description, Operator op, const Literal& literal);

    bool Matches(const RowStore& rows, std::size_t row) const;

    std::size_t column;
    Operator op;
    Test test = Test::Never;
    bool negated = false;  // Pattern: <>
    Cell::Form numberForm = Cell::Form::Null;
    long long integer = 0;       // Number
    std::string digits;          // Number as a decimal
    double real = 0;             // Number with an exponent
    long double asReal = 0;      // Number, to compare reals with
    long long milliseconds = 0;  // Date
    std::u16string text;         // TextOrder
    TextPattern pattern;

private:
    void SetNumber(const Literal& literal, CellKind kind);
    void SetDate(const Literal& literal);
    void SetText(const Literal& literal);
    bool MeetsOrder(int order) const noexcept;
};

}  // namespace tk::ado
