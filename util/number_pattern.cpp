#include "util/number_pattern.h"

#include <algorithm>
#include <cmath>

#include "util/decimal_digits.h"
#include "util/messages.h"
#include "util/text.h"

namespace tk::util {
namespace {

constexpr std::size_t kMostSections = 3;  // for positive, negative and zero numbers
constexpr std::size_t kThousands = 3;
constexpr std::size_t kTenThousands = 4;

constexpr bool IsPlace(std::string_view text, std::size_t at) {
    return at < text.size() && (text[at] == '0' || text[at] == '#');
}

/// One part of a pattern: literal text around at most one number.
struct Section {
    bool isEmpty = true;
    bool hasPlaces = false;
    std::string_view prefix;  // as written, with its quotes
    std::string_view suffix;
    std::size_t shift = 0;  // 2 for percent, 3 for per mille
    std::size_t groupSize = 0;
    std::size_t leastWhole = 0;
    std::size_t leastFraction = 0;
    std::size_t mostFraction = 0;
};

struct Pattern {
    Section sections[kMostSections];
    std::size_t count = 0;
};

/// Reads a pattern from left to right; every step leaves the position behind what it took.
class Reader {
public:
    explicit Reader(std::string_view text) : text_(text) {}

    bool ReadPattern(Pattern& pattern) {
        do {
            if (pattern.count == kMostSections || !ReadSection(pattern.sections[pattern.count++])) return false;
        } while (at_ < text_.size() && text_[at_++] == ';');
        return pattern.sections[0].hasPlaces;
    }

private:
    bool AtNumber() const { return IsPlace(text_, at_) || (At('.') && IsPlace(text_, at_ + 1)); }
    bool AtEnd() const { return at_ == text_.size() || text_[at_] == ';'; }
    bool At(char ch) const { return at_ < text_.size() && text_[at_] == ch; }

    bool ReadSection(Section& section) {
        const std::size_t begin = at_;
        while (!AtEnd() && !AtNumber()) {
            if (!SkipLiteral()) return false;
        }
        section.prefix = text_.substr(begin, at_ - begin);
        if (AtNumber()) {
            section.hasPlaces = true;
            ReadWhole(section);
            if (At('.') && IsPlace(text_, at_ + 1)) ReadFraction(section);
            const std::size_t behind = at_;
            ReadSign(section);
            while (!AtEnd()) {
                if (IsPlace(text_, at_) || !SkipLiteral()) return false;  // one number a section
            }
            section.suffix = text_.substr(behind, at_ - behind);
        }
        section.isEmpty = at_ == begin;
        return true;
    }

    void ReadWhole(Section& section) {
        std::size_t places = 0;
        std::size_t optional = 0;
        std::size_t comma = 0;  // places before the last one
        for (;; ++at_) {
            if (IsPlace(text_, at_)) {
                if (text_[at_] == '#' && optional == places) ++optional;
                ++places;
            } else if (places > 0 && At(',') && IsPlace(text_, at_ + 1)) {
                comma = places;
            } else {
                break;
            }
        }
        section.leastWhole = places - optional;
        if (comma > 0) section.groupSize = places - comma == kTenThousands ? kTenThousands : kThousands;
    }

    void ReadFraction(Section& section) {
        for (++at_; IsPlace(text_, at_); ++at_) {
            ++section.mostFraction;
            if (text_[at_] == '0') section.leastFraction = section.mostFraction;
        }
    }

    /// A sign of a share right behind the places, or behind blanks. What it means is read here, what it looks like is
    /// literal text.
    void ReadSign(Section& section) {
        const std::size_t sign = std::min(text_.find_first_not_of(' ', at_), text_.size());
        const std::string_view rest = text_.substr(sign);
        if (rest.starts_with('%')) {
            section.shift = 2;
            at_ = sign + 1;
        } else if (rest.starts_with(kPerMille)) {
            section.shift = 3;
            at_ = sign + std::string_view(kPerMille).size();
        }
    }

    bool SkipLiteral() {
        const char ch = text_[at_];
        if (ch == '%') return false;
        if (ch == '"' || ch == '\'') {
            const std::size_t close = text_.find(ch, at_ + 1);  // no second byte of a character equals a quote
            if (close == std::string_view::npos) return false;
            at_ = close + 1;
            return true;
        }
        if (ch == '\\' && ++at_ == text_.size()) return false;
        at_ += CharacterLength(text_, at_);
        return true;
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

/// Literal text that Reader has let pass, without its quotes.
void AddLiteral(TextBuilder& result, std::string_view text) {
    char quote = '\0';
    for (std::size_t at = 0; at < text.size();) {
        const char ch = text[at];
        if (quote != '\0' ? ch == quote : ch == '"' || ch == '\'') {
            quote = quote == '\0' ? ch : '\0';
            ++at;
            continue;
        }
        if (quote == '\0' && ch == '\\') ++at;
        const std::size_t length = CharacterLength(text, at);
        result.Add(text.substr(at, length));
        at += length;
    }
}

void AddWhole(TextBuilder& result, const Section& section, std::string_view digits) {
    std::size_t left = std::max(digits.size(), section.leastWhole);
    for (; left > 0; --left) {
        result.Add(left > digits.size() ? '0' : digits[digits.size() - left]);
        if (section.groupSize != 0 && left > 1 && (left - 1) % section.groupSize == 0) result.Add(',');
    }
}

void AddFraction(TextBuilder& result, const Section& section, std::string_view digits) {
    while (digits.size() > section.leastFraction && digits.back() == '0')
        digits.remove_suffix(1);
    const std::size_t missing = section.leastFraction - std::min(section.leastFraction, digits.size());
    if (digits.empty() && missing == 0) return;
    result.Add('.');
    result.Add(digits);
    result.AddFill('0', missing);
}

const Section& SectionFor(const Pattern& pattern, double value) {
    const std::size_t index = value > 0 ? 0 : value < 0 ? 1 : 2;
    return pattern.sections[index < pattern.count && !pattern.sections[index].isEmpty ? index : 0];
}

void Print(const Pattern& pattern, double value, TextBuilder& result) {
    const Section& section = SectionFor(pattern, value);
    if (!section.hasPlaces) return AddLiteral(result, section.prefix);
    const DecimalDigits digits(std::fabs(value), section.shift, section.mostFraction);
    if (value != 0) {
        // What prints as zero is one, and has no sign.
        if (digits.IsZero() && &SectionFor(pattern, 0) != &section) return Print(pattern, 0, result);
        if (value < 0 && &section == pattern.sections && !digits.IsZero()) result.Add('-');
    }
    AddLiteral(result, section.prefix);
    AddWhole(result, section, digits.Whole());
    AddFraction(result, section, digits.Fraction());
    AddLiteral(result, section.suffix);
}

}  // namespace

bool FormatByPattern(double value, std::string_view format, TextBuilder& result) {
    if (format.starts_with('%')) return false;  // the quick way to printf's formats: no pattern begins so
    Pattern pattern;
    if (!Reader(format).ReadPattern(pattern)) return false;
    Print(pattern, value, result);
    return true;
}

}  // namespace tk::util
