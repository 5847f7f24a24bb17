#include "support/tds/batch_text.h"

#include <sqlite3.h>

#include <algorithm>

#include "support/tds/wire_type.h"
#include "support/tds/words.h"

namespace tk::test::tds {
namespace {

bool IsHex(std::string_view word) {
    return word.size() >= 2 && word[0] == '0' && (word[1] == 'x' || word[1] == 'X') &&
           std::ranges::all_of(word.substr(2), [](char c) {
               return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
           });
}

std::string InOurWords(const Word& word) {
    if (word.text.starts_with("@@")) return "tds_" + std::string(word.text.substr(2)) + "()";
    if (IsHex(word.text))
        return std::string("x'") + (word.text.size() % 2 != 0 ? "0" : "") + std::string(word.text.substr(2)) + "'";
    if (word.text.size() > 1 && (word.text[0] == 'N' || word.text[0] == 'n') && word.text[1] == '\'') {
        return std::string(word.text.substr(1));
    }
    return std::string(word.text);
}

}  // namespace

std::vector<std::string> SplitBatch(std::string_view text, std::string_view database) {
    const std::vector<Word> words = WordsOf(text);
    std::vector<std::string> statements;
    std::string statement;
    const char* end = text.data();
    const auto isMark = [&](std::size_t i, std::string_view mark) { return i < words.size() && words[i].text == mark; };
    const auto isNamed = [&](std::size_t i, std::string_view name) {
        return i < words.size() && words[i].text[0] != '\'' && EqualWords(words[i].Plain(), name);
    };
    for (std::size_t i = 0; i < words.size(); ++i) {
        // Blanks count between some words; what a column is called by itself is its text.
        const char* const begin = words[i].text.data();
        if (begin != end && !statement.empty()) statement += ' ';
        end = begin + words[i].text.size();
        const bool startsName = i == 0 || !isMark(i - 1, ".");
        std::size_t skipped = 0;
        if (startsName && isNamed(i, database) && isMark(i + 1, ".")) {
            if (isMark(i + 2, ".")) skipped = 3;
            if (isNamed(i + 2, "dbo") && isMark(i + 3, ".")) skipped = 4;
        } else if (startsName && isNamed(i, "dbo") && isMark(i + 1, ".")) {
            skipped = 2;
        }
        if (skipped != 0 && i + skipped < words.size()) {
            i += skipped - 1;
            end = words[i].text.data() + words[i].text.size();
            continue;
        }
        // SQLite takes but numbers in the parentheses of a type.
        const bool isNoLimit = isNamed(i, "max") && i > 0 && isMark(i - 1, "(") && isMark(i + 1, ")");
        statement += isNoLimit ? std::to_string(kMax) : InOurWords(words[i]);
        // The statements of a trigger do not end it.
        if (words[i].text != ";" || sqlite3_complete(statement.c_str()) == 0) continue;
        if (statement != ";") statements.push_back(statement);
        statement.clear();
    }
    if (!statement.empty()) statements.push_back(statement);
    return statements;
}

}  // namespace tk::test::tds
