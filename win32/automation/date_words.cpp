#include "win32/automation/date_words.h"

#include <algorithm>

#include "win32/automation/locale_facts.h"

namespace tk::automation {

namespace {

struct Word {
    std::u16string_view text;
    DateTokenKind kind;
    int value;
};

constexpr int Value(DateMark mark) {
    return static_cast<int>(mark);
}

// A longer word stands before those it begins with.
constexpr Word kChineseWords[] = {
    {u"上午", DateTokenKind::HalfDay, 0},
    {u"下午", DateTokenKind::HalfDay, 12},
    {u"星期一", DateTokenKind::Weekday, 1},
    {u"星期二", DateTokenKind::Weekday, 2},
    {u"星期三", DateTokenKind::Weekday, 3},
    {u"星期四", DateTokenKind::Weekday, 4},
    {u"星期五", DateTokenKind::Weekday, 5},
    {u"星期六", DateTokenKind::Weekday, 6},
    {u"星期日", DateTokenKind::Weekday, 0},
    {u"星期天", DateTokenKind::Weekday, 0},
    {u"十二月", DateTokenKind::Month, 12},
    {u"十一月", DateTokenKind::Month, 11},
    {u"十月", DateTokenKind::Month, 10},
    {u"九月", DateTokenKind::Month, 9},
    {u"八月", DateTokenKind::Month, 8},
    {u"七月", DateTokenKind::Month, 7},
    {u"六月", DateTokenKind::Month, 6},
    {u"五月", DateTokenKind::Month, 5},
    {u"四月", DateTokenKind::Month, 4},
    {u"三月", DateTokenKind::Month, 3},
    {u"二月", DateTokenKind::Month, 2},
    {u"一月", DateTokenKind::Month, 1},
    {u"年", DateTokenKind::Mark, Value(DateMark::Year)},
    {u"月", DateTokenKind::Mark, Value(DateMark::Month)},
    {u"日", DateTokenKind::Mark, Value(DateMark::Day)},
    {u"号", DateTokenKind::Mark, Value(DateMark::Day)},
    {u"时", DateTokenKind::Mark, Value(DateMark::Hour)},
    {u"時", DateTokenKind::Mark, Value(DateMark::Hour)},
    {u"点", DateTokenKind::Mark, Value(DateMark::Hour)},
    {u"分", DateTokenKind::Mark, Value(DateMark::Minute)},
    {u"秒", DateTokenKind::Mark, Value(DateMark::Second)},
};

// Whole, or cut to three letters.
constexpr Word kEnglishNames[] = {
    {u"january", DateTokenKind::Month, 1},    {u"february", DateTokenKind::Month, 2},
    {u"march", DateTokenKind::Month, 3},      {u"april", DateTokenKind::Month, 4},
    {u"may", DateTokenKind::Month, 5},        {u"june", DateTokenKind::Month, 6},
    {u"july", DateTokenKind::Month, 7},       {u"august", DateTokenKind::Month, 8},
    {u"september", DateTokenKind::Month, 9},  {u"october", DateTokenKind::Month, 10},
    {u"november", DateTokenKind::Month, 11},  {u"december", DateTokenKind::Month, 12},
    {u"sunday", DateTokenKind::Weekday, 0},   {u"monday", DateTokenKind::Weekday, 1},
    {u"tuesday", DateTokenKind::Weekday, 2},  {u"wednesday", DateTokenKind::Weekday, 3},
    {u"thursday", DateTokenKind::Weekday, 4}, {u"friday", DateTokenKind::Weekday, 5},
    {u"saturday", DateTokenKind::Weekday, 6},
};
constexpr std::size_t kShortName = 3;

constexpr Word kHalfDays[] = {
    {u"am", DateTokenKind::HalfDay, 0},
    {u"pm", DateTokenKind::HalfDay, 12},
    {u"a", DateTokenKind::HalfDay, 0},
    {u"p", DateTokenKind::HalfDay, 12},
};

constexpr bool IsLetter(char16_t character) {
    const char16_t lower = LowerAscii(character);
    return lower >= u'a' && lower <= u'z';
}

const Word* FindEnglish(std::u16string_view lower) {
    for (const Word& word : kHalfDays) {
        if (word.text == lower) return &word;
    }
    for (const Word& word : kEnglishNames) {
        if (word.text == lower || word.text.substr(0, kShortName) == lower) return &word;
    }
    return nullptr;
}

const Word* FindChinese(std::u16string_view text) {
    for (const Word& word : kChineseWords) {
        if (text.starts_with(word.text)) return &word;
    }
    return nullptr;
}

std::size_t CutNumber(std::u16string_view text, DateTokens& tokens) {
    constexpr std::size_t kMostDigits = 4;
    int value = 0;
    std::size_t digits = 0;
    for (; digits < text.size() && IsDigit(Narrow(text[digits])); ++digits) {
        if (digits == kMostDigits) return 0;
        value = value * 10 + (Narrow(text[digits]) - u'0');
    }
    return tokens.Add({DateTokenKind::Number, value, static_cast<int>(digits)}) ? digits : 0;
}

std::size_t CutEnglish(std::u16string_view text, DateTokens& tokens) {
    char16_t lower[16];
    std::size_t length = 0;
    for (; length < text.size() && IsLetter(Narrow(text[length])); ++length) {
        if (length == std::size(lower)) return 0;
        lower[length] = LowerAscii(Narrow(text[length]));
    }
    const Word* word = FindEnglish({lower, length});
    return word != nullptr && tokens.Add({word->kind, word->value, 0}) ? length : 0;
}

// Returns how many characters became a token; 0 ends the attempt.
std::size_t CutOne(std::u16string_view text, DateTokens& tokens) {
    constexpr std::u16string_view kSeparators = u"-/.:,";
    const char16_t first = Narrow(text[0]);
    if (IsDigit(first)) return CutNumber(text, tokens);
    if (IsLetter(first)) return CutEnglish(text, tokens);
    if (kSeparators.find(first) != kSeparators.npos) {
        return tokens.Add({DateTokenKind::Separator, first, 0}) ? 1 : 0;
    }
    const Word* word = FindChinese(text);
    return word != nullptr && tokens.Add({word->kind, word->value, 0}) ? word->text.size() : 0;
}

}  // namespace

bool CutDateText(std::u16string_view text, DateTokens& tokens) noexcept {
    while (!text.empty()) {
        if (Narrow(text[0]) == u' ') {
            text.remove_prefix(1);
            continue;
        }
        const std::size_t taken = CutOne(text, tokens);
        if (taken == 0) return false;
        text.remove_prefix(taken);
    }
    return true;
}

}  // namespace tk::automation
