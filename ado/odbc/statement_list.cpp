#include "ado/odbc/statement_list.h"

#include <algorithm>
#include <cctype>

#include "ado/odbc/ascii.h"

namespace tk::ado {
namespace {

// Before these, CREATE and ALTER are about something else than a program.
constexpr std::string_view kOtherObjects[] = {"database", "index", "role", "schema", "sequence",
                                              "server",   "table", "user", "view"};
constexpr std::string_view kProgramObjects[] = {"event", "function", "package", "procedure", "trigger"};
constexpr std::string_view kBlockWords[] = {"call", "case", "declare", "for", "if", "loop", "repeat", "while"};

// Statements with rows of which the driver does not know that: it would leave them on the connection, where no other
// statement has a place any more. A second word: only before that.
struct Words {
    std::string_view first;
    std::string_view second = {};
};
constexpr Words kHiddenRows[] = {
    {"cache", "index"},   {"help"},   {"load", "index"}, {"optimize"}, {"repair"},
    {"set", "statement"}, {"values"}, {"xa", "recover"},
};

// Inside of a program: what END may be followed by, what a statement follows, and what a FOR that is no loop goes with.
constexpr std::string_view kEnded[] = {"case", "for", "if", "loop", "repeat", "while"};
constexpr std::string_view kBeforeStatements[] = {"begin", "do", "else", "loop", "repeat", "then"};
constexpr std::string_view kBehindOtherFor[] = {"each", "share", "update"};

template <std::size_t count>
bool IsOneOf(std::string_view word, const std::string_view (&words)[count]) noexcept {
    return std::ranges::any_of(words, [word](std::string_view each) { return EqualsNoCase(each, word); });
}

bool IsWordLetter(char letter) noexcept {
    return IsOfWord(letter) || letter == '$';
}

struct Token {
    std::size_t begin = 0;
    std::size_t end = 0;      // equal to begin: the text is over
    std::string_view word{};  // of letters and digits; empty for quoted names and texts, signs, executable comments
    char sign = 0;            // the sign, where it is one

    bool IsLast() const noexcept { return begin == end; }
};

class Tokens {
public:
    explicit Tokens(std::string_view sql) noexcept : sql_(sql) {}

    /// The token at a place or behind it.
    Token At(std::size_t at) const noexcept {
        at = SkipBlanks(at);
        if (at >= sql_.size()) return {sql_.size(), sql_.size()};
        const char first = sql_[at];
        if (first == '\'' || first == '"' || first == '`') return {at, QuoteEnd(at)};
        if (IsExecutable(sql_.substr(at))) return {at, After("*/", at + 2)};
        if (!IsWordLetter(first)) return {at, at + 1, {}, first};
        std::size_t end = at;
        while (end < sql_.size() && IsWordLetter(sql_[end]))
            ++end;
        return {at, end, sql_.substr(at, end - at)};
    }

    Token After(const Token& token) const noexcept { return At(token.end); }

private:
    std::size_t SkipBlanks(std::size_t at) const noexcept {
        while (at < sql_.size()) {
            const std::string_view rest = sql_.substr(at);
            if (std::isspace(static_cast<unsigned char>(rest[0])) != 0) {
                ++at;
            } else if (rest[0] == '#' || IsLineComment(rest)) {
                at = After("\n", at);
            } else if (rest.starts_with("/*") && !IsExecutable(rest)) {
                at = After("*/", at + 2);
            } else {
                break;
            }
        }
        return at;
    }

    /// A comment that the server reads: taken for a word of the statement that it is in, or for a statement.
    static bool IsExecutable(std::string_view rest) noexcept {
        return rest.starts_with("/*!") || rest.starts_with("/*M!");
    }

    /// "--" counts only in front of a blank or a control character: 5--3 is 8.
    static bool IsLineComment(std::string_view rest) noexcept {
        return rest.starts_with("--") && (rest.size() == 2 || static_cast<unsigned char>(rest[2]) <= ' ');
    }

    std::size_t After(std::string_view end, std::size_t from) const noexcept {
        const std::size_t found = sql_.find(end, from);
        return found == std::string_view::npos ? sql_.size() : found + end.size();
    }

    /// Behind the closing quote. A doubled one reads as two texts in a row, which is the same to us.
    std::size_t QuoteEnd(std::size_t at) const noexcept {
        const char quote = sql_[at];
        for (++at; at < sql_.size(); ++at) {
            if (sql_[at] == quote) return at + 1;
            if (sql_[at] == '\\' && quote != '`') ++at;
        }
        return sql_.size();
    }

    std::string_view sql_;
};

/// Where a statement ends and how it is made.
struct Extent {
    std::size_t end = 0;        // behind its last token, whatever semicolons follow
    std::size_t markers = 0;    // up to there
    bool hasSemicolon = false;  // between its tokens
};

/// CREATE or ALTER of a routine, trigger or event; or a block of the other dialect, where BEGIN starts no transaction.
bool IsProgram(const Tokens& tokens, Token token) noexcept {
    if (EqualsNoCase(token.word, "begin")) {
        const Token next = tokens.After(token);
        return !next.IsLast() && next.sign != ';' && !EqualsNoCase(next.word, "not") &&
               !EqualsNoCase(next.word, "work");
    }
    if (!EqualsNoCase(token.word, "create") && !EqualsNoCase(token.word, "alter")) return false;
    for (token = tokens.After(token); !IsOneOf(token.word, kProgramObjects); token = tokens.After(token)) {
        if (token.IsLast() || token.sign == ';' || token.sign == '(' || IsOneOf(token.word, kOtherObjects))
            return false;
    }
    return true;
}

/// Counts what is open in a program: its statements end in semicolons, and it goes on until everything is closed.
class ProgramReader {
public:
    explicit ProgramReader(const Tokens& tokens) noexcept : tokens_(tokens) {}

    bool IsInside() const noexcept { return open_ > 0; }

    void Read(const Token& token) noexcept {
        const bool isOfEnd = EqualsNoCase(previous_.word, "end") && IsOneOf(token.word, kEnded);  // END IF
        if (EqualsNoCase(token.word, "end")) {
            if (open_ > 0) --open_;
        } else if (!isOfEnd && IsOpening(token)) {
            ++open_;
        }
        previous_ = token;
    }

private:
    bool IsOpening(const Token& token) const noexcept {
        if (EqualsNoCase(token.word, "begin") || EqualsNoCase(token.word, "case")) return true;
        if (EqualsNoCase(token.word, "if")) return IsConditional(token);
        if (!StartsStatement()) return false;
        if (EqualsNoCase(token.word, "for")) return !IsOneOf(tokens_.After(token).word, kBehindOtherFor);
        if (EqualsNoCase(token.word, "repeat")) return tokens_.After(token).sign != '(';  // the function
        return EqualsNoCase(token.word, "loop") || EqualsNoCase(token.word, "while");
    }

    /// A loop stands where a statement may: also behind the parentheses or words of a heading, which end before it.
    bool StartsStatement() const noexcept {
        return previous_.sign == ';' || previous_.sign == ':' || previous_.sign == ')' || open_ == 0 ||
               IsOneOf(previous_.word, kBeforeStatements);
    }

    /// IF ... THEN, not the function of three arguments, nor IF [NOT] EXISTS in front of a name.
    bool IsConditional(const Token& token) const noexcept {
        Token next = tokens_.After(token);
        if (EqualsNoCase(next.word, "not")) next = tokens_.After(next);
        if (EqualsNoCase(next.word, "exists")) return tokens_.After(next).sign == '(';
        if (next.sign != '(') return true;
        int depth = 0;
        for (; !next.IsLast(); next = tokens_.After(next)) {
            depth += (next.sign == '(') - (next.sign == ')');
            if (depth == 0) break;
            if (depth == 1 && next.sign == ',') return false;
        }
        return true;
    }

    const Tokens& tokens_;
    Token previous_;
    int open_ = 0;
};

/// How far a statement reaches that begins with a token: to the next semicolon, to the one behind a program, or to the
/// end of the text.
enum class Reach { Statement, Program, Text };

Extent Measure(const Tokens& tokens, Token token, Reach reach) noexcept {
    Extent extent;
    ProgramReader program(tokens);
    bool ended = false;
    for (; !token.IsLast(); token = tokens.After(token)) {
        if (reach == Reach::Program) program.Read(token);
        if (token.sign == ';') {
            if (reach == Reach::Statement || (reach == Reach::Program && !program.IsInside())) break;
            ended = true;
            continue;
        }
        extent.hasSemicolon = extent.hasSemicolon || ended;
        extent.markers += token.sign == '?';
        extent.end = token.end;
    }
    return extent;
}

/// Of several statements, or with results in a row.
bool IsBlock(const Tokens& tokens, const Token& first) noexcept {
    const Token next = tokens.After(first);
    if (EqualsNoCase(first.word, "set")) return EqualsNoCase(next.word, "statement");
    return IsOneOf(first.word, kBlockWords) || (!first.word.empty() && next.sign == ':');
}

/// Inside of a block the driver looks for rows, whatever the statement.
bool HidesRows(const Tokens& tokens, Token first) noexcept {
    while (first.sign == '(')
        first = tokens.After(first);
    return std::ranges::any_of(kHiddenRows, [&](const Words& each) {
        return EqualsNoCase(each.first, first.word) &&
               (each.second.empty() || EqualsNoCase(each.second, tokens.After(first).word));
    });
}

bool IsAnonymousBlock(const Tokens& tokens, const Token& first) noexcept {
    return EqualsNoCase(first.word, "begin") && EqualsNoCase(tokens.After(first).word, "not");
}

/// The brace that closes the one at a token; the last token when its statement has none.
Token ClosingBrace(const Tokens& tokens, Token token) noexcept {
    int depth = 0;
    for (; !token.IsLast() && token.sign != ';'; token = tokens.After(token)) {
        depth += (token.sign == '{') - (token.sign == '}');
        if (depth == 0) return token;
    }
    return {};
}

/// With blanks for the braces of {call name(...)}: a driver takes them off a text that is nothing else, but the server
/// does not know them.
std::string WithoutCallBraces(std::string_view sql) {
    std::string text(sql);
    const Tokens tokens(sql);
    bool begins = true;  // a statement
    for (Token token = tokens.At(0); !token.IsLast(); token = tokens.After(token)) {
        if (begins && token.sign == '{' && EqualsNoCase(tokens.After(token).word, "call")) {
            const Token closing = ClosingBrace(tokens, token);
            if (!closing.IsLast()) text[token.begin] = text[closing.begin] = ' ';
        }
        begins = token.sign == ';';
    }
    return text;
}

/// The whole text as one block; a block in it is only "BEGIN" there.
std::string BlockOf(std::string_view sql, const Tokens& tokens, const Token& inner, std::size_t end) {
    std::string text = "BEGIN NOT ATOMIC ";
    const std::size_t begin = tokens.At(0).begin;
    std::size_t from = begin;
    if (IsAnonymousBlock(tokens, inner)) {
        text.append(sql.substr(begin, inner.end - begin));
        from = tokens.After(tokens.After(inner)).end;  // behind NOT ATOMIC
    }
    return text.append(sql.substr(from, end - from)).append("\n;END");
}

}  // namespace

std::vector<ListedStatement> ListStatements(std::string_view sql) {
    std::vector<ListedStatement> list;
    if (sql.find(';') == std::string_view::npos && !HidesRows(Tokens(sql), Tokens(sql).At(0))) return list;
    std::string plain;
    if (sql.find('{') != std::string_view::npos) sql = plain = WithoutCallBraces(sql);
    const Tokens tokens(sql);
    bool isSendable = true;  // as one, as it is
    std::size_t markers = 0;
    for (Token first = tokens.At(0); !first.IsLast();) {
        if (first.sign == ';') {
            isSendable = isSendable && !list.empty();  // none has come yet
            first = tokens.After(first);
            continue;
        }
        const bool isProgram = IsProgram(tokens, first);
        const bool isAnonymous = !isProgram && IsAnonymousBlock(tokens, first);
        const bool hidesRows = !isProgram && HidesRows(tokens, first);
        const bool isBlock = !isProgram && (isAnonymous || hidesRows || IsBlock(tokens, first));
        const Extent extent = Measure(tokens, first,
                                      isProgram ? Reach::Program
                                      : isBlock ? Reach::Text
                                                : Reach::Statement);
        markers += extent.markers;
        if (isBlock && (hidesRows || !list.empty() || (extent.hasSemicolon && !isAnonymous))) {
            return {{BlockOf(sql, tokens, first, extent.end), markers}};
        }
        list.push_back({std::string(sql.substr(first.begin, extent.end - first.begin)), extent.markers,
                        isProgram && extent.hasSemicolon});
        isSendable = isSendable && list.size() == 1 && (!extent.hasSemicolon || (isAnonymous && first.begin == 0));
        first = tokens.At(extent.end);
    }
    if (isSendable) list.clear();
    return list;
}

}  // namespace tk::ado
