#include "ado/odbc/statement_kind.h"

#include <array>
#include <cstdint>

#include "ado/odbc/ascii.h"

namespace tk::ado {
namespace {

enum WordFlags : std::uint16_t {
    kReads = 1,        // as the first word: a result and no change
    kWrites = 2,       // as the first word: changes rows; anywhere in a statement that reads: no reading statement
    kDefines = 4,      // as the first word: changes tables or the transaction, not the session
    kLimits = 8,       // the rows are few, or cost much before the first one comes
    kTouches = 16,     // leaves something behind on the connection
    kLimitsCall = 32,  // as kLimits when a parenthesis follows
    kFrom = 64,
};

struct Word {
    std::string_view text;
    std::uint16_t flags;
};

constexpr Word kWords[] = {
    {"advisory", kTouches},
    {"alter", kDefines},
    {"analyze", kDefines},
    {"avg", kLimitsCall},
    {"chain", kTouches},
    {"comment", kDefines},
    {"count", kLimitsCall},
    {"create", kDefines},
    {"delete", kWrites},
    {"drop", kDefines},
    {"explain", kReads | kLimits},
    {"fetch", kLimits},
    {"for", kLimits},
    {"from", kFrom},
    {"get_lock", kTouches},
    {"global", kTouches},
    {"grant", kDefines},
    {"group", kLimits},
    {"having", kLimits},
    {"insert", kWrites},
    {"into", kTouches | kLimits},
    {"limit", kLimits},
    {"max", kLimitsCall},
    {"merge", kWrites},
    {"min", kLimitsCall},
    {"release", kDefines},
    {"replace", kWrites},
    {"returning", kLimits},
    {"revoke", kDefines},
    {"rollback", kDefines},
    {"save", kDefines},
    {"savepoint", kDefines},
    {"select", kReads},
    {"session", kTouches},
    {"set_config", kTouches},
    {"sum", kLimitsCall},
    {"system", kTouches},
    {"temp", kTouches},
    {"temporary", kTouches},
    {"top", kLimits},
    {"truncate", kDefines},
    {"update", kWrites},
    {"values", kReads},
    {"where", kLimits},
    {"with", kReads},
};
static_assert(std::ranges::is_sorted(kWords, {}, &Word::text));

constexpr std::size_t kLongestWord = 12;

/// The words above that begin with one letter.
struct Initial {
    std::uint16_t lengths = 0;  // as bits: most words of a statement are names, and this tells them apart
    std::uint8_t begin = 0;
    std::uint8_t end = 0;
};

constexpr auto kInitials = [] {
    std::array<Initial, 26> initials{};
    for (std::size_t i = 0; i < std::size(kWords); ++i) {
        Initial& initial = initials[static_cast<std::size_t>(kWords[i].text[0] - 'a')];
        if (initial.lengths == 0) initial.begin = static_cast<std::uint8_t>(i);
        initial.lengths |= static_cast<std::uint16_t>(1u << kWords[i].text.size());
        initial.end = static_cast<std::uint8_t>(i + 1);
    }
    return initials;
}();

std::uint16_t FlagsOf(std::string_view word) noexcept {
    if (word.size() > kLongestWord)
        return ContainsNoCase(word, "advisory") ? std::uint16_t{kTouches} : std::uint16_t{0};
    const auto letter = static_cast<unsigned char>(LowerAscii(word[0]) - 'a');
    if (letter >= kInitials.size()) return 0;
    const Initial& initial = kInitials[letter];
    if ((initial.lengths >> word.size() & 1) == 0) return 0;
    for (std::size_t i = initial.begin; i < initial.end; ++i) {
        if (kWords[i].text.size() == word.size() && EqualsNoCase(kWords[i].text, word)) return kWords[i].flags;
    }
    return 0;
}

constexpr auto kIsWordLetter = [] {
    std::array<bool, 256> is{};
    for (unsigned letter = 0; letter < is.size(); ++letter) {
        is[letter] = (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
                     (letter >= '0' && letter <= '9') || letter == '_' || letter >= 0x80;
    }
    return is;
}();

constexpr bool IsWordLetter(char letter) noexcept {
    return kIsWordLetter[static_cast<unsigned char>(letter)];
}

/// The place after a quoted part, a comment or the single character at `at`.
std::size_t SkipToken(std::string_view sql, std::size_t at) noexcept {
    const auto after = [&](std::string_view end, std::size_t from) {
        const std::size_t found = sql.find(end, from);
        return found == std::string_view::npos ? sql.size() : found + end.size();
    };
    switch (sql[at]) {
        case '\'':
        case '"':
        case '`':
            return after(sql.substr(at, 1), at + 1);  // a doubled quote is two texts in a row: the same to us
        case '[':
            return after("]", at + 1);
        case '-':
            return sql.substr(at, 2) == "--" ? after("\n", at) : at + 1;
        case '/':
            return sql.substr(at, 2) == "/*" ? after("*/", at + 2) : at + 1;
        default:
            return at + 1;
    }
}

/// A single statement that writes, without variables: its first word says all there is to know. True for many, not for
/// all such statements.
bool OnlyWrites(std::string_view sql) noexcept {
    std::size_t end = 0;
    while (end < sql.size() && IsWordLetter(sql[end]))
        ++end;
    if (end == 0 || (FlagsOf(sql.substr(0, end)) & kWrites) == 0) return false;
    for (const char special : {';', '@', '#'}) {
        if (sql.find(special, end) != std::string_view::npos) return false;
    }
    return true;
}

}  // namespace

StatementKind Inspect(std::string_view sql) noexcept {
    StatementKind kind;
    if (OnlyWrites(sql)) return kind;
    bool limited = false;
    bool hasFrom = false;
    bool ended = false;
    bool isFirst = true;
    std::uint16_t first = 0;
    for (std::size_t at = 0; at < sql.size();) {
        const char letter = sql[at];
        if (!IsWordLetter(letter)) {
            if (letter == ';') ended = true;
            // Variables, temporary tables of some systems, assignments inside a SELECT.
            if (letter == '@' || letter == '#') kind.changesSession = true;
            at = SkipToken(sql, at);
            continue;
        }
        std::size_t end = at;
        while (end < sql.size() && IsWordLetter(sql[end]))
            ++end;
        // What follows in a statement that writes changes nothing about it, so its words are not looked up.
        const std::uint16_t flags = (first & kWrites) != 0 ? std::uint16_t{0} : FlagsOf(sql.substr(at, end - at));
        if (ended) kind.changesSession = true;  // a second statement: anything can be in it
        if (isFirst) {
            first = flags;
            limited = (flags & kLimits) != 0;
            isFirst = false;
        } else if (flags != 0) {
            if ((flags & kTouches) != 0) kind.changesSession = true;
            if ((flags & kWrites) != 0 && sql.substr(end, 1) != "(") first = kWrites;
            if ((flags & kLimits) != 0 || ((flags & kLimitsCall) != 0 && sql.substr(end, 1) == "(")) limited = true;
            if ((flags & kFrom) != 0) hasFrom = true;
        }
        at = end;
    }
    if ((first & (kReads | kWrites | kDefines)) == 0) kind.changesSession = true;
    kind.isReading = (first & kReads) != 0 && !kind.changesSession;
    kind.isLikelyLarge = kind.isReading && hasFrom && !limited;
    return kind;
}

std::string_view ChangingWord(std::string_view sql) noexcept {
    std::size_t at = 0;
    while (at < sql.size() && !IsWordLetter(sql[at]))
        at = SkipToken(sql, at);
    std::size_t end = at;
    while (end < sql.size() && IsWordLetter(sql[end]))
        ++end;
    const std::string_view word = sql.substr(at, end - at);
    return !word.empty() && (FlagsOf(word) & (kWrites | kDefines)) != 0 ? word : std::string_view();
}

}  // namespace tk::ado
