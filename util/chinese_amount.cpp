#include <cmath>
#include <cstdint>
#include <limits>

#include "tkkernel/util.h"
#include "util/messages.h"
#include "util/number_text.h"
#include "util/text_builder.h"

namespace tk::util {
namespace {

constexpr int kFixedForm = 2;
constexpr int kGroups = 3;
constexpr int kPlaces = 4;  // in a group
constexpr std::uint64_t kTwelvePlaces = 1'000'000'000'000;

/// A magnitude as "%12.2f" prints it, in parts.
struct Amount {
    std::uint64_t whole;  // its last twelve digits
    bool hasTens;         // the whole number is printed with more than one digit
    unsigned jiao;
    unsigned fen;
};

/// The last twelve digits of a whole number, exactly.
std::uint64_t LastTwelveDigits(double whole) {
    char text[std::numeric_limits<double>::max_exponent10 + 2];
    const char* const end = std::to_chars(text, text + sizeof(text), whole, std::chars_format::fixed, 0).ptr;
    std::uint64_t number = 0;
    std::from_chars(end - 12, end, number);
    return number;
}

Amount Parts(double magnitude) {
    // Contract: digits beyond the twelve that the form has places for are dropped without notice.
    if (magnitude >= kFirstWithoutFraction) return {LastTwelveDigits(magnitude), true, 0, 0};
    const std::uint64_t hundredths = ScaledExactly(magnitude, 100);
    const std::uint64_t whole = hundredths / 100;
    const auto fraction = static_cast<unsigned>(hundredths % 100);
    return {whole % kTwelvePlaces, whole >= 10, fraction / 10, fraction % 10};
}

/// A group of four digits, the highest first.
struct Group {
    unsigned digits[kPlaces];
    bool IsEmpty() const { return (digits[0] | digits[1] | digits[2] | digits[3]) == 0; }
};

struct Groups {
    Group group[kGroups];
};

Groups Split(std::uint64_t whole) {
    Groups groups;
    for (int at = kGroups - 1; at >= 0; --at) {
        const auto four = static_cast<unsigned>(whole % 10000);
        whole /= 10000;
        groups.group[at] = {{four / 1000, four / 100 % 10, four / 10 % 10, four % 10}};
    }
    return groups;
}

/// Every place is written from the first group that is not empty on, zeros too.
void AddFixedForm(TextBuilder& text, const Amount& amount) {
    const Groups groups = Split(amount.whole);
    bool begun = false;
    for (int at = 0; at < kGroups; ++at) {
        const Group& group = groups.group[at];
        begun = begun || !group.IsEmpty();
        if (!begun) continue;
        for (int place = 0; place < kPlaces; ++place) {
            text.Add(kCapitalDigits[group.digits[place]]);
            if (place < kPlaces - 1) text.Add(kPlaceUnits[place]);
        }
        text.Add(kGroupUnits[at]);
    }
    text.Add(kCapitalDigits[amount.jiao]);
    text.Add(kJiao);
    text.Add(kCapitalDigits[amount.fen]);
    text.Add(kFen);
}

/// Writes the groups that are not empty, one zero for zeros between digits.
void AddGroups(TextBuilder& text, const Groups& groups) {
    bool zeroPending = false;
    bool written = false;
    for (int at = 0; at < kGroups; ++at) {
        const Group& group = groups.group[at];
        // Contract: an empty group leaves no zero behind: 100010000 has one only for the zeros before its 1.
        if (group.IsEmpty()) continue;
        for (int place = 0; place < kPlaces; ++place) {
            const bool isLast = place == kPlaces - 1;
            if (group.digits[place] == 0) {
                // Contract: the last zero of a group does not count.
                zeroPending = zeroPending || !isLast;
                continue;
            }
            if (zeroPending && written) text.Add(kCapitalDigits[0]);
            zeroPending = false;
            text.Add(kCapitalDigits[group.digits[place]]);
            if (!isLast) text.Add(kPlaceUnits[place]);
            written = true;
        }
        text.Add(kGroupUnits[at]);
    }
}

void AddUsualForm(TextBuilder& text, const Amount& amount) {
    const Groups groups = Split(amount.whole);
    AddGroups(text, groups);
    if (groups.group[kGroups - 1].IsEmpty() && amount.hasTens) text.Add(kGroupUnits[kGroups - 1]);
    if (amount.jiao != 0 || amount.fen != 0) {
        // Contract: a zero in the last place is read out before the fraction, and a zero in its first place once more.
        if (amount.hasTens && amount.whole % 10 == 0) text.Add(kCapitalDigits[0]);
        text.Add(kCapitalDigits[amount.jiao]);
        if (amount.jiao != 0) text.Add(kJiao);
        if (amount.fen != 0) {
            text.Add(kCapitalDigits[amount.fen]);
            text.Add(kFen);
        }
    }
    // Contract: the end mark stands behind fractions as well.
    text.Add(kWhole);
}

}  // namespace
}  // namespace tk::util

CString UpperCurrency(double nAmount, int nMode) {
    using namespace tk::util;
    if (nAmount == 0 || !std::isfinite(nAmount)) return kZeroAmount;
    TextBuilder text;
    if (nAmount < 0) text.Add(kBelowZero);
    const Amount amount = Parts(std::fabs(nAmount));
    if (nMode == kFixedForm) {
        AddFixedForm(text, amount);
    } else {
        AddUsualForm(text, amount);
    }
    return text.Take();
}
