// tests/support/tds/words.h - the words of a statement.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tk::test::tds {

/// A name, number, mark, or something in quotes, as it stands in the text.
struct Word {
    std::string_view text;

    /// '…', N'…' or "…", which is a text where a value stands
    bool IsText() const;
    /// Without what it is quoted by.
    std::string Plain() const;
};

/// Without blanks and comments.
std::vector<Word> WordsOf(std::string_view text);

/// Whether they are the same but for the case of Latin letters.
bool EqualWords(std::string_view left, std::string_view right);

}  // namespace tk::test::tds
