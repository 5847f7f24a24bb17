#include "ado/cursor/criteria.h"

#include <algorithm>

#include "ado/cursor/clause.h"
#include "ado/cursor/columns.h"
#include "ado/cursor/text.h"

namespace tk::ado {
namespace {

using Alternatives = std::vector<std::vector<Clause>>;

/// A text nests no deeper than this; nobody writes such a filter by hand.
constexpr int kDeepest = 200;

bool IsBlank(char16_t unit) {
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r') || unit == u'\u3000';
}
bool IsDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

/// Ends a word that is a name or a keyword.
bool EndsWord(char16_t unit) {
    return IsBlank(unit) || std::u16string_view(u"<>=()'[]").find(unit) != std::u16string_view::npos;
}

class CriteriaText {
public:
    CriteriaText(std::u16string_view text, const std::vector<Column>& columns) : text_(text), columns_(columns) {}

    Alternatives TakeFilter() {
        Alternatives all = TakeAlternatives(0);
        ExpectEnd();
        return all;
    }
    Alternatives TakeSingleClause() {
        Alternatives all(1);
        all[0].push_back(TakeClause());
        ExpectEnd();
        return all;
    }

private:
    Alternatives TakeAlternatives(int depth) {
        Alternatives all = TakeConjunction(depth);
        while (TakeKeyword(u"OR")) {
            Alternatives more = TakeConjunction(depth);
            std::ranges::move(more, std::back_inserter(all));
        }
        return all;
    }

    Alternatives TakeConjunction(int depth) {
        Alternatives all = TakePart(depth);
        while (TakeKeyword(u"AND")) {
            Alternatives more = TakePart(depth);
            // Contract: (a OR b) AND c is refused; it has to be written (a AND c) OR (b AND c).
            if (all.size() != 1 || more.size() != 1) Refuse();
            std::ranges::move(more[0], std::back_inserter(all[0]));
        }
        return all;
    }

    Alternatives TakePart(int depth) {
        if (!TakeSign(u'(')) {
            Alternatives all(1);
            all[0].push_back(TakeClause());
            return all;
        }
        if (depth == kDeepest) Refuse();
        Alternatives all = TakeAlternatives(depth + 1);
        if (!TakeSign(u')')) Refuse();
        return all;
    }

    Clause TakeClause() {
        const std::size_t column = FindColumn(columns_, TakeName());
        if (TakeKeyword(u"IS")) {
            const bool negated = TakeKeyword(u"NOT");
            if (!TakeKeyword(u"NULL")) Refuse();
            return Clause(column, columns_[column], negated ? Operator::NotEqual : Operator::Equal, Literal{});
        }
        const Operator op = TakeOperator();
        return Clause(column, columns_[column], op, TakeLiteral());
    }

    std::u16string_view TakeName() {
        SkipBlanks();
        if (TakeSign(u'[')) {
            const std::size_t end = text_.find(u']', at_);
            if (end == std::u16string_view::npos || end == at_) Refuse();
            const std::u16string_view name = text_.substr(at_, end - at_);
            at_ = end + 1;
            return name;
        }
        const std::u16string_view name = PeekWord();
        if (name.empty()) Refuse();
        at_ += name.size();
        return name;
    }

    Operator TakeOperator() {
        if (TakeKeyword(u"LIKE")) return Operator::Like;
        if (TakeSign(u'=')) return Operator::Equal;
        if (TakeSign(u'<')) {
            // The two signs of an operator stand together.
            if (TakeNext(u'=')) return Operator::LessOrEqual;
            return TakeNext(u'>') ? Operator::NotEqual : Operator::Less;
        }
        if (TakeSign(u'>')) return TakeNext(u'=') ? Operator::GreaterOrEqual : Operator::Greater;
        Refuse();
    }

    Literal TakeLiteral() {
        SkipBlanks();
        if (at_ == text_.size()) Refuse();
        if (text_[at_] == u'\'') return TakeQuoted();
        if (text_[at_] == u'#') return TakeHashed();
        if (TakeKeyword(u"NULL")) return Literal{};
        if (TakeKeyword(u"TRUE")) return Literal{Literal::Form::True, {}};
        if (TakeKeyword(u"FALSE")) return Literal{Literal::Form::False, {}};
        return TakeNumber();
    }

    Literal TakeQuoted() {
        Literal literal{Literal::Form::Text, {}};
        for (++at_; at_ < text_.size(); ++at_) {
            if (text_[at_] == u'\'') {
                if (at_ + 1 == text_.size() || text_[at_ + 1] != u'\'') {
                    ++at_;
                    return literal;
                }
                ++at_;
            }
            literal.text += text_[at_];
        }
        Refuse();
    }

    Literal TakeHashed() {
        // #'...'# is a text that begins and ends with a quote; it may hold '#'.
        const std::size_t start = at_ + 1;
        const bool quoted = start < text_.size() && text_[start] == u'\'';
        const std::size_t end = quoted ? text_.find(u"'#", start + 1) : text_.find(u'#', start);
        if (end == std::u16string_view::npos) Refuse();
        const std::size_t length = end - start + (quoted ? 1 : 0);
        at_ = start + length + 1;
        return Literal{quoted ? Literal::Form::Text : Literal::Form::Hashed,
                       std::u16string(text_.substr(start, length))};
    }

    Literal TakeNumber() {
        Literal literal{Literal::Form::Number, {}};
        if (Peek() == u'-' || Peek() == u'+') literal.text += Take();
        if (Peek() == u'$') Take();
        if (literal.text.empty() && (Peek() == u'-' || Peek() == u'+')) literal.text += Take();
        const std::size_t before = literal.text.size();
        TakeDigits(literal.text);
        bool digits = literal.text.size() > before;
        if (Peek() == u'.') {
            const std::size_t point = literal.text.size();
            literal.text += Take();
            TakeDigits(literal.text);
            digits = digits || literal.text.size() > point + 1;
        }
        if (!digits) Refuse();
        if (Peek() == u'e' || Peek() == u'E') {
            literal.text += Take();
            if (Peek() == u'-' || Peek() == u'+') literal.text += Take();
            const std::size_t exponent = literal.text.size();
            TakeDigits(literal.text);
            if (literal.text.size() == exponent) Refuse();
        }
        if (at_ < text_.size() && !IsBlank(text_[at_]) && text_[at_] != u')') Refuse();
        return literal;
    }

    void TakeDigits(std::u16string& digits) {
        while (IsDigit(Peek()))
            digits += Take();
    }
    char16_t Peek() const { return at_ < text_.size() ? text_[at_] : u'\0'; }
    char16_t Take() { return text_[at_++]; }

    std::u16string_view PeekWord() const {
        std::size_t end = at_;
        while (end < text_.size() && !EndsWord(text_[end]))
            ++end;
        return text_.substr(at_, end - at_);
    }
    bool TakeKeyword(std::u16string_view keyword) {
        SkipBlanks();
        const std::u16string_view word = PeekWord();
        if (!SameName(word, keyword)) return false;
        at_ += word.size();
        return true;
    }
    bool TakeNext(char16_t sign) {
        if (Peek() != sign || at_ == text_.size()) return false;
        ++at_;
        return true;
    }
    bool TakeSign(char16_t sign) {
        SkipBlanks();
        return TakeNext(sign);
    }
    void SkipBlanks() {
        while (at_ < text_.size() && IsBlank(text_[at_]))
            ++at_;
    }
    void ExpectEnd() {
        SkipBlanks();
        if (at_ != text_.size()) Refuse();
    }
    [[noreturn]] void Refuse() const { throw AdoError(ErrorNumber::InvalidArgument, std::u16string(text_)); }

    std::u16string_view text_;
    const std::vector<Column>& columns_;
    std::size_t at_ = 0;
};

}  // namespace

Criteria::Criteria(Alternatives alternatives) : alternatives_(std::move(alternatives)) {}
Criteria::Criteria(Criteria&&) noexcept = default;
Criteria& Criteria::operator=(Criteria&&) noexcept = default;
Criteria::~Criteria() = default;

Criteria Criteria::ParseFilter(std::u16string_view text, const std::vector<Column>& columns) {
    return Criteria(CriteriaText(text, columns).TakeFilter());
}

Criteria Criteria::ParseFind(std::u16string_view text, const std::vector<Column>& columns) {
    return Criteria(CriteriaText(text, columns).TakeSingleClause());
}

bool Criteria::Matches(const RowStore& rows, std::size_t row) const {
    return std::ranges::any_of(alternatives_, [&](const std::vector<Clause>& parts) {
        return std::ranges::all_of(parts, [&](const Clause& clause) { return clause.Matches(rows, row); });
    });
}

}  // namespace tk::ado
