#include "ado/cursor/clause.h"

#include <algorithm>
#include <charconv>

#include "ado/cursor/compare.h"
#include "ado/cursor/text.h"
#include "ado/odbc/ascii.h"

namespace tk::ado {
namespace {

[[noreturn]] void Refuse(const Literal& literal) {
    throw AdoError(ErrorNumber::InvalidArgument, literal.text);
}

std::u16string Folded(std::u16string_view text) {
    std::u16string folded(text);
    for (char16_t& unit : folded)
        unit = FoldUnit(unit);
    return folded;
}

char FoldByte(char byte) noexcept {
    return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 32) : byte;
}

/// Neither the unit nor its upper case differ from it, or it is ASCII.
bool HasOneCase(char16_t unit) {
    if (unit < 0x80) return true;
    char16_t lower = unit;
    CharLowerBuffW(&lower, 1);
    return lower == unit && FoldUnit(unit) == unit;
}

template <class View, class Fold>
bool MatchesFolded(View text, View pattern, TextPattern::Span span, Fold fold) {
    if (text.size() < pattern.size()) return false;
    const auto same = [&](auto a, auto b) { return fold(a) == b; };
    switch (span) {
        case TextPattern::Span::Whole:
            return text.size() == pattern.size() && std::equal(text.begin(), text.end(), pattern.begin(), same);
        case TextPattern::Span::Start:
            return std::equal(pattern.begin(), pattern.end(), text.begin(), [&](auto b, auto a) { return same(a, b); });
        case TextPattern::Span::Anywhere:
            return std::search(text.begin(), text.end(), pattern.begin(), pattern.end(), same) != text.end();
    }
    return false;
}

bool IsWildcard(char16_t unit) {
    return unit == u'*' || unit == u'%';
}

}  // namespace

TextPattern::TextPattern(std::u16string_view text, Span span) : span_(span), units_(Folded(text)) {
    bytewise_ = std::ranges::all_of(text, HasOneCase);
    if (bytewise_) bytes_ = ToUtf8(units_);
}

bool TextPattern::Matches(std::string_view utf8) const {
    if (bytewise_) return MatchesFolded<std::string_view>(utf8, bytes_, span_, FoldByte);
    thread_local std::u16string units;
    StoreUtf16(utf8, units);
    return MatchesFolded<std::u16string_view>(units, units_, span_, FoldUnit);
}

Clause::Clause(std::size_t columnIndex, const Column& description, Operator comparison, const Literal& literal)
    : column(columnIndex), op(comparison) {
    if (literal.form == Literal::Form::Null) {
        if (op != Operator::Equal && op != Operator::NotEqual) Refuse(literal);
        test = op == Operator::Equal ? Test::Null : Test::NotNull;
        return;
    }
    switch (description.kind) {
        case CellKind::Text:
        case CellKind::Guid:
            SetText(literal);
            return;
        case CellKind::Bytes:
            Refuse(literal);
        case CellKind::Date:
        case CellKind::Time:
        case CellKind::Timestamp:
            SetDate(literal);
            return;
        default:
            SetNumber(literal, description.kind);
            return;
    }
}

void Clause::SetNumber(const Literal& literal, CellKind kind) {
    if (op == Operator::Like || literal.form == Literal::Form::Hashed) Refuse(literal);
    test = Test::Number;
    digits = ToUtf8(literal.text);
    // A flag may be spelt as a text, too.
    const bool isWord = kind == CellKind::Boolean && literal.form == Literal::Form::Text;
    const bool isTrue = literal.form == Literal::Form::True || (isWord && EqualsNoCase(digits, "true"));
    const bool isFalse = literal.form == Literal::Form::False || (isWord && EqualsNoCase(digits, "false"));
    if (isTrue || isFalse) {
        numberForm = Cell::Form::Boolean;
        integer = isTrue ? -1 : 0;
        return;
    }
    if (!digits.empty() && digits.front() == '+') digits.erase(0, 1);
    const char* const end = digits.data() + digits.size();
    if (const auto whole = std::from_chars(digits.data(), end, integer); whole.ec == std::errc() && whole.ptr == end) {
        numberForm = Cell::Form::Integer;
        asReal = static_cast<long double>(integer);
        return;
    }
    const auto number = std::from_chars(digits.data(), end, real);
    if (number.ec != std::errc() || number.ptr != end || digits.find_first_not_of("0123456789+-.eE") != digits.npos) {
        Refuse(literal);
    }
    // As a column of reals would hold it: 0.1 has to meet 0.1.
    asReal = real;
    numberForm = digits.find_first_of("eE") == std::string::npos ? Cell::Form::Decimal : Cell::Form::Real;
}

void Clause::SetDate(const Literal& literal) {
    if (op == Operator::Like) Refuse(literal);
    test = Test::Date;
    double date = 0;
    if (literal.form == Literal::Form::Number) {
        // A date may be given by its number of days.
        const std::string number = ToUtf8(literal.text);
        const auto read = std::from_chars(number.data(), number.data() + number.size(), date);
        if (read.ec != std::errc()) Refuse(literal);
    } else if (literal.form == Literal::Form::True || literal.form == Literal::Form::False) {
        Refuse(literal);
    } else {
        // Month, day, year first, as the grammar has it; what is no such date may be one of the system's.
        constexpr LCID kUnitedStates = 0x0409;
        constexpr LCID kChinese = 0x0804;
        const OLECHAR* text = literal.text.c_str();
        if (FAILED(VarDateFromStr(const_cast<OLECHAR*>(text), kUnitedStates, 0, &date)) &&
            FAILED(VarDateFromStr(const_cast<OLECHAR*>(text), kChinese, 0, &date))) {
            Refuse(literal);
        }
    }
    milliseconds = DateMilliseconds(date);
}

void Clause::SetText(const Literal& literal) {
    if (literal.form == Literal::Form::True || literal.form == Literal::Form::False) Refuse(literal);
    if (op != Operator::Like) {
        if (op == Operator::Equal || op == Operator::NotEqual) {
            test = Test::Pattern;
            negated = op == Operator::NotEqual;
            pattern = TextPattern(literal.text, TextPattern::Span::Whole);
        } else {
            test = Test::TextOrder;
            text = literal.text;
        }
        return;
    }
    test = Test::Pattern;
    std::u16string_view inner = literal.text;
    const bool atEnd = !inner.empty() && IsWildcard(inner.back());
    if (atEnd) inner.remove_suffix(1);
    const bool atStart = !inner.empty() && IsWildcard(inner.front());
    if (atStart) inner.remove_prefix(1);
    // Contract: a wildcard at the start alone, or inside, is refused.
    if ((atStart && !atEnd) || std::ranges::any_of(inner, IsWildcard)) Refuse(literal);
    pattern = TextPattern(inner, atStart ? TextPattern::Span::Anywhere
                                 : atEnd ? TextPattern::Span::Start
                                         : TextPattern::Span::Whole);
}

bool Clause::MeetsOrder(int order) const noexcept {
    switch (op) {
        case Operator::Less:
            return order < 0;
        case Operator::Greater:
            return order > 0;
        case Operator::LessOrEqual:
            return order <= 0;
        case Operator::GreaterOrEqual:
            return order >= 0;
        case Operator::NotEqual:
            return order != 0;
        default:
            return order == 0;
    }
}

bool Clause::Matches(const RowStore& rows, std::size_t row) const {
    const Cell cell = rows.At(row, column);
    if (test == Test::Null) return cell.form == Cell::Form::Null;
    if (cell.form == Cell::Form::Null) return false;
    switch (test) {
        case Test::NotNull:
            return true;
        case Test::Number: {
            if (!IsNumber(cell.form)) return false;
            // Any number but 0 is true, whatever the database stores.
            if (numberForm == Cell::Form::Boolean || cell.form == Cell::Form::Boolean) {
                const bool wanted = numberForm == Cell::Form::Decimal ? CompareDecimalDigits(digits, "0") != 0
                                    : numberForm == Cell::Form::Real  ? real != 0
                                                                      : integer != 0;
                const Cell zero{Cell::Form::Integer, 0, 0, {}};
                const int held = CompareNumbers(cell, zero) != 0 ? -1 : 0;
                const int asked = wanted ? -1 : 0;
                return MeetsOrder(held < asked ? -1 : held > asked ? 1 : 0);
            }
            if (cell.form == Cell::Form::Real) return MeetsOrder(cell.real < asReal ? -1 : asReal < cell.real ? 1 : 0);
            return MeetsOrder(CompareNumbers(cell, Cell{numberForm, integer, real, digits}));
        }
        case Test::Date: {
            if (cell.form != Cell::Form::Date) return false;
            const long long held = DateMilliseconds(cell.real);
            return MeetsOrder(held < milliseconds ? -1 : held > milliseconds ? 1 : 0);
        }
        case Test::TextOrder: {
            thread_local std::u16string units;
            StoreUtf16(cell.text, units);
            return MeetsOrder(CompareTexts(units, text));
        }
        case Test::Pattern:
            return pattern.Matches(cell.text) != negated;
        default:
            return false;
    }
}

}  // namespace tk::ado
