#include "win32/text/collation.h"

#include <cstddef>

namespace tk::text {
namespace {

// Hands out the letters of a text one by one, each with its combining marks and with what stood aside before it.
class Letters {
public:
    Letters(std::u16string_view text, const CollationOptions& options) noexcept : text_(text), options_(options) {}

    // What the next letter weighs; primary 0 at the end of the text.
    Weight Next() noexcept {
        aside_ = {};
        Weight letter = {};
        while (at_ < text_.size()) {
            const Weight weight = WeightOf(text_[at_], options_.han);
            if (IsSetAside(weight) && !options_.stringSort) {
                if (letter.primary != 0) break;
                if (aside_.empty()) aside_ = text_.substr(at_, 0);
                ++at_;
                aside_ = {aside_.data(), static_cast<std::size_t>(text_.data() + at_ - aside_.data())};
            } else if (weight.primary == 0) {
                ++at_;
                letter.accents = static_cast<std::uint16_t>(letter.accents + weight.accents);
            } else if (options_.ignoreSymbols && IsSymbol(weight)) {
                ++at_;
            } else {
                if (letter.primary != 0) break;
                ++at_;
                letter.primary = weight.primary;
                letter.form = weight.form;
                letter.accents = static_cast<std::uint16_t>(letter.accents + weight.accents);
            }
        }
        return letter;
    }

    // The stretch with the apostrophes and hyphens in front of the letter handed out last; empty without any.
    std::u16string_view Aside() const noexcept { return aside_; }

private:
    std::u16string_view text_;
    const CollationOptions& options_;
    std::size_t at_ = 0;
    std::u16string_view aside_;
};

// The next apostrophe or hyphen of a stretch, taken from its front; primary 0 when there is none left.
Weight TakeAside(std::u16string_view& stretch) noexcept {
    while (!stretch.empty()) {
        const Weight weight = WeightOf(stretch.front(), HanOrder::Pinyin);
        stretch.remove_prefix(1);
        if (IsSetAside(weight)) return weight;
    }
    return {};
}

// Orders texts by their apostrophes and hyphens. Where only one text has one, it comes first if the other text has one
// further behind, and last if it has none; so the answer may have to wait.
class AsideOrder {
public:
    void Step(std::u16string_view first, std::u16string_view second) noexcept {
        while (order_ == 0 && !(first.empty() && second.empty())) {
            const Weight a = TakeAside(first);
            const Weight b = TakeAside(second);
            if (waiting_ != 0) {
                if ((waiting_ > 0 ? b : a).primary != 0) order_ = -waiting_;
            } else if ((a.primary == 0) != (b.primary == 0)) {
                waiting_ = a.primary != 0 ? 1 : -1;
            } else if (a.primary != b.primary) {
                order_ = a.primary < b.primary ? -1 : 1;
            } else if (a.form != b.form) {
                order_ = a.form < b.form ? -1 : 1;
            }
        }
    }

    int Result() const noexcept { return order_ != 0 ? order_ : waiting_; }

private:
    int order_ = 0;
    int waiting_ = 0;
};

template <class Value>
void Settle(int& order, Value first, Value second) noexcept {
    if (order == 0 && first != second) order = first < second ? -1 : 1;
}

}  // namespace

int Compare(std::u16string_view first, std::u16string_view second, const CollationOptions& options) noexcept {
    Letters left(first, options);
    Letters right(second, options);
    const auto counted = static_cast<std::uint8_t>(~options.ignoredForms);
    int accents = 0;
    int forms = 0;
    AsideOrder aside;
    for (;;) {
        const Weight a = left.Next();
        const Weight b = right.Next();
        if (a.primary != b.primary) return a.primary < b.primary ? -1 : 1;  // the end of a text is below every letter
        Settle(accents, a.accents, b.accents);
        Settle(forms, a.form & counted, b.form & counted);
        if (!options.ignoreSymbols) aside.Step(left.Aside(), right.Aside());
        if (a.primary == 0) break;
    }
    if (accents != 0 && !options.ignoreAccents) return accents;
    if (forms != 0) return forms;
    return aside.Result();
}

}  // namespace tk::text
