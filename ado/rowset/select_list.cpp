// Reads the list of a SELECT far enough to tell a column from an expression, and a column's name from its alias.
#include <algorithm>
#include <span>

#include "ado/odbc/ascii.h"
#include "ado/rowset/origins.h"

namespace tk::ado {
namespace {

struct Token {
    enum class Kind : unsigned char { End, Name, Sign, Literal } kind = Kind::End;
    std::string text;
    bool isQuoted = false;

    bool IsWord(std::string_view word) const { return kind == Kind::Name && !isQuoted && EqualsNoCase(text, word); }
    bool IsSign(char sign) const { return kind == Kind::Sign && text[0] == sign; }
};

class Tokens {
public:
    explicit Tokens(std::string_view sql) : sql_(sql) {}

    Token Next() {
        SkipBlanks();
        if (at_ >= sql_.size()) return {};
        const char first = sql_[at_];
        if (first == '"' || first == '`') return {Token::Kind::Name, Quoted(first), true};
        if (first == '[') return {Token::Kind::Name, Quoted(']'), true};
        if (first == '\'') return {Token::Kind::Literal, Quoted('\''), true};
        if (!IsNameLetter(first)) return {Token::Kind::Sign, std::string(1, sql_[at_++]), false};
        const std::size_t start = at_;
        while (at_ < sql_.size() && IsNameLetter(sql_[at_]))
            ++at_;
        const bool isNumber = first >= '0' && first <= '9';
        return {isNumber ? Token::Kind::Literal : Token::Kind::Name, std::string(sql_.substr(start, at_ - start)),
                false};
    }

private:
    static bool IsNameLetter(char letter) { return IsOfWord(letter) || letter == '$'; }

    void SkipBlanks() {
        for (;;) {
            at_ = std::min(sql_.find_first_not_of(" \t\r\n", at_), sql_.size());
            if (sql_.substr(at_, 2) == "--") {
                at_ = std::min(sql_.find('\n', at_), sql_.size());
            } else if (sql_.substr(at_, 2) == "/*") {
                const std::size_t end = sql_.find("*/", at_ + 2);
                at_ = end == std::string_view::npos ? sql_.size() : end + 2;
            } else {
                return;
            }
        }
    }

    std::string Quoted(char close) {
        std::string text;
        for (++at_; at_ < sql_.size(); ++at_) {
            if (sql_[at_] == close) {
                if (at_ + 1 >= sql_.size() || sql_[at_ + 1] != close) break;
                ++at_;
            }
            text.push_back(sql_[at_]);
        }
        if (at_ < sql_.size()) ++at_;
        return text;
    }

    std::string_view sql_;
    std::size_t at_ = 0;
};

/// name { '.' name } [ [AS] alias ], or name '.' '*': the last name before the alias; "" for anything else.
std::string ColumnOf(const std::vector<Token>& item) {
    std::size_t at = 0;
    std::string name;
    for (;;) {
        if (at >= item.size()) return {};
        if (item[at].IsSign('*')) return at + 1 == item.size() ? "*" : "";
        if (item[at].kind != Token::Kind::Name) return {};
        name = item[at++].text;
        if (at >= item.size() || !item[at].IsSign('.')) break;
        ++at;
    }
    if (at == item.size()) return name;
    if (item[at].IsWord("as")) ++at;
    const bool hasAlias =
        at + 1 == item.size() && (item[at].kind == Token::Kind::Name || item[at].kind == Token::Kind::Literal);
    return hasAlias ? name : std::string();
}

/// TOP n, TOP (n), with PERCENT or WITH TIES behind it; the token behind all of it. A column may have the name.
Token SkipTop(Tokens& tokens, Token token) {
    if (!token.IsWord("top")) return token;
    Tokens ahead = tokens;
    Token next = ahead.Next();
    if (next.IsSign('(')) {
        while (next.kind != Token::Kind::End && !next.IsSign(')'))
            next = ahead.Next();
    } else if (next.kind != Token::Kind::Literal) {
        return token;
    }
    next = ahead.Next();
    if (next.IsWord("percent")) next = ahead.Next();
    if (next.IsWord("with")) {
        ahead.Next();
        next = ahead.Next();
    }
    tokens = ahead;
    return next;
}

struct TablesRead {
    std::vector<std::vector<std::string>> names;  // in parts
    int queries = 0;                              // among the tables and around them
};

TablesRead ReadFrom(std::string_view sql) {
    static constexpr std::string_view kEnds[] = {"where", "group", "having", "order", "limit", "window", "union"};
    static constexpr std::string_view kBeforeTables[] = {"lateral", "only", "oj"};
    const auto isAny = [](const Token& token, std::span<const std::string_view> words) {
        return std::ranges::any_of(words, [&](std::string_view word) { return token.IsWord(word); });
    };
    struct Level {
        bool isQuery = false;  // and no list of arguments
        bool isList = false;   // of tables: a comma goes to the next one
    };
    Tokens tokens(sql);
    TablesRead read;
    std::vector<Level> levels(1);
    bool isAwaited = false;  // a table comes next
    for (Token token = tokens.Next(); token.kind != Token::Kind::End;) {
        Level& level = levels.back();
        if (token.IsSign('(')) {
            levels.push_back({isAwaited, isAwaited});
        } else if (token.IsSign(')')) {
            if (levels.size() > 1) levels.pop_back();
            isAwaited = false;
        } else if (token.IsWord("select")) {
            level = {true, false};
            ++read.queries;
            isAwaited = false;
        } else if (level.isQuery && (token.IsWord("from") || token.IsWord("join") || token.IsWord("straight_join"))) {
            level.isList = isAwaited = true;
        } else if (level.isList && token.IsSign(',')) {
            isAwaited = true;
        } else if (level.isQuery && isAny(token, kEnds)) {
            if (levels.size() == 1) break;
            level.isList = isAwaited = false;
        } else if (isAwaited && token.kind == Token::Kind::Name && !isAny(token, kBeforeTables)) {
            std::vector<std::string> name{std::move(token.text)};
            token = tokens.Next();
            while (token.IsSign('.')) {
                token = tokens.Next();
                const bool isLeftOut = token.IsSign('.');
                name.push_back(isLeftOut ? std::string() : token.text);
                if (!isLeftOut) token = tokens.Next();
            }
            if (!token.IsSign('(')) read.names.push_back(std::move(name));  // no function that gives rows
            isAwaited = false;
            continue;
        }
        token = tokens.Next();
    }
    return read;
}

}  // namespace

std::vector<std::string> ReadSelectList(std::string_view sql) {
    Tokens tokens(sql);
    if (!tokens.Next().IsWord("select")) return {};
    std::vector<std::string> columns;
    std::vector<Token> item;
    int depth = 0;
    Token token = tokens.Next();
    if (token.IsWord("distinct") || token.IsWord("all")) token = tokens.Next();
    token = SkipTop(tokens, token);
    for (; token.kind != Token::Kind::End; token = tokens.Next()) {
        if (token.IsSign('(')) ++depth;
        if (token.IsSign(')')) --depth;
        if (depth == 0 && token.IsWord("from")) break;
        if (depth == 0 && token.IsSign(',')) {
            columns.push_back(ColumnOf(item));
            item.clear();
        } else {
            item.push_back(token);
        }
    }
    if (token.kind == Token::Kind::End) return {};  // no table
    columns.push_back(ColumnOf(item));
    // The names of a compound select are those of its first part, the values are not.
    for (; token.kind != Token::Kind::End; token = tokens.Next()) {
        if (token.IsWord("union") || token.IsWord("except") || token.IsWord("intersect")) return {};
    }
    return columns;
}

std::vector<std::string> ReadTables(std::string_view sql) {
    std::vector<std::string> tables;
    for (std::vector<std::string>& name : ReadFrom(sql).names)
        tables.push_back(std::move(name.back()));
    return tables;
}

std::vector<std::string> ReadOnlyTable(std::string_view sql) {
    TablesRead read = ReadFrom(sql);
    return read.names.size() == 1 && read.queries == 1 ? std::move(read.names[0]) : std::vector<std::string>();
}

}  // namespace tk::ado
