#include "ado/odbc/statement_kind.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <iterator>
#include <optional>

#include "ado/odbc/ascii.h"
#include "ado/odbc/statement_form.h"

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
    kGives = 128,  // as the first word: as kReads, but some drivers do not know that
    kEnds = 256,   // a SELECT that has it may end in something that no LIMIT comes behind
};

/// The last eight letters of a word as one number, without case: what tells short words apart.
constexpr std::uint64_t AddLetter(std::uint64_t letters, char letter) noexcept {
    return letters << 8 |
           (static_cast<unsigned char>(letter) | 0x20u);  // nothing else becomes the same as in a keyword
}

constexpr std::uint64_t LettersOf(std::string_view word) noexcept {
    std::uint64_t letters = 0;
    for (const char letter : word)
        letters = AddLetter(letters, letter);
    return letters;
}

struct Word {
    std::string_view text;
    std::uint16_t flags;
    std::uint64_t letters = LettersOf(text);
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
    {"fetch", kLimits | kEnds},
    {"for", kLimits | kEnds},
    {"from", kFrom},
    {"get_lock", kTouches},
    {"global", kTouches},
    {"grant", kDefines},
    {"group", kLimits},
    {"having", kLimits},
    {"insert", kWrites},
    {"into", kTouches | kLimits | kEnds},
    {"limit", kLimits | kEnds},
    {"lock", kEnds},
    {"max", kLimitsCall},
    {"merge", kWrites},
    {"min", kLimitsCall},
    {"offset", kEnds},
    {"procedure", kEnds},
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
    {"values", kGives},
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

enum class Letter : std::uint8_t { Plain, OfWord, Special };

/// What a character does: most, such as blanks and commas, only end words.
constexpr auto kLetters = [] {
    std::array<Letter, 256> letters{};
    for (unsigned letter = 0; letter < letters.size(); ++letter) {
        if (IsOfWord(static_cast<char>(letter))) letters[letter] = Letter::OfWord;
    }
    for (const unsigned char letter : std::string_view("'\"`[-/;@#"))
        letters[letter] = Letter::Special;
    return letters;
}();

constexpr Letter LetterOf(char letter) noexcept {
    return kLetters[static_cast<unsigned char>(letter)];
}

/// A word of a statement, found where it begins.
class FoundWord {
public:
    FoundWord(std::string_view sql, std::size_t at) noexcept {
        // Kept in registers: this loop goes over nearly all of the text.
        const char* const begin = sql.data() + at;
        const char* const limit = sql.data() + sql.size();
        const char* end = begin;
        while (end != limit && LetterOf(*end) == Letter::OfWord)
            ++end;
        text_ = {begin, end};
        end_ = at + text_.size();
    }

    std::size_t End() const noexcept { return end_; }
    std::string_view Text() const noexcept { return text_; }

    std::uint16_t Flags() const noexcept {
        if (text_.empty()) return 0;
        if (text_.size() > kLongestWord)
            return ContainsNoCase(text_, "advisory") ? std::uint16_t{kTouches} : std::uint16_t{0};
        const auto letter = static_cast<unsigned char>(LowerAscii(text_[0]) - 'a');
        if (letter >= kInitials.size()) return 0;
        const Initial& initial = kInitials[letter];
        if ((initial.lengths >> text_.size() & 1) == 0) return 0;
        const std::uint64_t letters = LettersOf(text_);
        for (std::size_t i = initial.begin; i < initial.end; ++i) {
            const Word& word = kWords[i];
            if (word.letters != letters || word.text.size() != text_.size()) continue;
            if (text_.size() <= sizeof letters || EqualsNoCase(word.text, text_)) return word.flags;
        }
        return 0;
    }

private:
    std::string_view text_;
    std::size_t end_;
};

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
    const FoundWord first(sql, 0);
    if ((first.Flags() & kWrites) == 0) return false;
    for (const char special : {';', '@', '#'}) {
        if (sql.find(special, first.End()) != std::string_view::npos) return false;
    }
    return true;
}

StatementKind Read(std::string_view sql) noexcept {
    StatementKind kind;
    bool limited = false;
    bool hasFrom = false;
    bool ended = false;
    bool isSeveral = false;
    bool defines = false;
    bool hasComment = false;
    bool isSelect = false;
    bool isExplain = false;
    bool endsOtherwise = false;
    bool hasCall = false;
    bool isFirst = true;
    std::uint16_t first = 0;
    for (std::size_t at = 0; at < sql.size();) {
        switch (LetterOf(sql[at])) {
            case Letter::Plain:
                ++at;
                continue;
            case Letter::Special:
                if (sql[at] == ';') ended = true;
                if (const std::string_view two = sql.substr(at, 2); two == "--" || two == "/*") hasComment = true;
                // Variables, temporary tables of some systems, assignments inside a SELECT.
                if (sql[at] == '@' || sql[at] == '#') kind.changesSession = true;
                at = SkipToken(sql, at);
                hasCall = hasCall || sql.substr(at, 1) == "(";  // by a quoted name
                continue;
            case Letter::OfWord:
                break;
        }
        const FoundWord word(sql, at);
        at = word.End();
        // What follows in a statement that writes changes nothing about it, so its words are not looked up.
        const std::uint16_t flags = (first & kWrites) != 0 ? std::uint16_t{0} : word.Flags();
        if (ended) isSeveral = kind.changesSession = true;  // anything can be in the second one
        const bool isCall = sql.substr(at, 1) == "(";
        hasCall = hasCall || isCall;
        if (isFirst) {
            first = flags;
            limited = (flags & kLimits) != 0;
            isSelect = EqualsNoCase(word.Text(), "select");
            isExplain = EqualsNoCase(word.Text(), "explain");
            for (const std::string_view defining : {"create", "alter", "drop"})
                defines = defines || EqualsNoCase(word.Text(), defining);
            isFirst = false;
        } else if (flags != 0) {
            if ((flags & kTouches) != 0) kind.changesSession = true;
            if ((flags & kWrites) != 0 && !isCall) first = kWrites;
            if ((flags & kLimits) != 0 || ((flags & kLimitsCall) != 0 && isCall)) limited = true;
            if ((flags & kFrom) != 0) hasFrom = true;
            if ((flags & kEnds) != 0) endsOtherwise = true;
        }
    }
    if ((first & (kReads | kGives | kWrites | kDefines)) == 0) kind.changesSession = true;
    kind.defines = defines;
    // EXPLAIN may run what it explains. A SELECT from nowhere may be made for what its function does.
    kind.mayDefine =
        kind.changesSession || (first & kDefines) != 0 || isExplain || (hasCall && !hasFrom && (first & kWrites) == 0);
    kind.isReading = (first & kReads) != 0 && !kind.changesSession;
    // A column may be called like what makes it a writing statement elsewhere.
    const bool mayWrite = isSelect && (first & kWrites) != 0;
    kind.readsTables = (mayWrite || ((first & kReads) != 0 && hasFrom)) && !isSeveral;
    kind.isLikelyLarge = kind.isReading && hasFrom && !limited;
    kind.takesLimit = kind.isReading && isSelect && !ended && !hasComment && !endsOtherwise;
    return kind;
}

/// The kinds of the forms that were met last: applications send the same texts with other values. One word a place: the
/// form, its lowest bits replaced by those of the kind.
class KnownKinds {
public:
    std::optional<StatementKind> Find(std::uint64_t form) const noexcept {
        const std::uint64_t word = words_[Place(form)].load(std::memory_order_relaxed);
        if ((word ^ form) >> kBits != 0) return std::nullopt;
        StatementKind kind;
        for (std::size_t i = 0; i < kBits; ++i)
            kind.*kMembers[i] = (word >> i & 1) != 0;
        return kind;
    }

    void Keep(std::uint64_t form, const StatementKind& kind) noexcept {
        std::uint64_t word = form >> kBits << kBits;
        for (std::size_t i = 0; i < kBits; ++i)
            word |= std::uint64_t{kind.*kMembers[i]} << i;
        words_[Place(form)].store(word, std::memory_order_relaxed);
    }

private:
    static constexpr bool StatementKind::*kMembers[] = {&StatementKind::isReading,     &StatementKind::readsTables,
                                                        &StatementKind::isLikelyLarge, &StatementKind::takesLimit,
                                                        &StatementKind::defines,       &StatementKind::mayDefine,
                                                        &StatementKind::changesSession};
    static constexpr std::size_t kBits = std::size(kMembers);
    static constexpr std::size_t kPlaces = 256;
    static std::size_t Place(std::uint64_t form) noexcept { return form >> kBits & (kPlaces - 1); }

    std::array<std::atomic<std::uint64_t>, kPlaces> words_{};
};

constinit KnownKinds knownKinds;

}  // namespace

StatementKind Inspect(std::string_view sql) noexcept {
    if (OnlyWrites(sql)) return {};
    const std::uint64_t form = StatementForm(sql);
    auto kind = form != 0 ? knownKinds.Find(form) : std::nullopt;
    if (!kind) {
        kind = Read(sql);
        if (form != 0) knownKinds.Keep(form, *kind);
    }
    kind->form = form;
    return *kind;
}

std::string_view ChangingWord(std::string_view sql) noexcept {
    std::size_t at = 0;
    while (at < sql.size() && LetterOf(sql[at]) != Letter::OfWord)
        at = SkipToken(sql, at);
    const FoundWord word(sql, at);
    return (word.Flags() & (kWrites | kDefines)) != 0 ? word.Text() : std::string_view();
}

}  // namespace tk::ado
