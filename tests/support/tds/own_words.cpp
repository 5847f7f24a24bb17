// Statements that SQLite does not have, or has in other words.
#include <sqlite3.h>

#include <charconv>

#include "support/tds/messages.h"
#include "support/tds/sql_session.h"
#include "support/tds/words.h"

namespace tk::test::tds {
namespace {

bool IsTransactionWord(const std::vector<Word>& words, std::size_t place) {
    return place < words.size() &&
           (EqualWords(words[place].text, "transaction") || EqualWords(words[place].text, "tran"));
}

std::string Quoted(const std::string& name) {
    return "\"" + name + "\"";
}

/// RAISERROR (text, level, state)
SqlError Raised(const std::vector<Word>& words) {
    std::vector<Word> values;
    for (const Word& word : words) {
        if (word.text != "(" && word.text != ")" && word.text != "," && word.text != ";") values.push_back(word);
    }
    constexpr std::int32_t kOwnError = 50000;
    SqlError error(kOwnError, values.size() > 1 ? values[1].Plain() : "");
    const auto read = [&](std::size_t place, std::uint8_t& number) {
        if (place >= values.size()) return;
        const std::string_view text = values[place].text;
        std::from_chars(text.data(), text.data() + text.size(), number);
    };
    read(2, error.level);
    read(3, error.state);
    error.endsBatch = false;
    return error;
}

}  // namespace

bool SqlSession::RunOwnWords(const std::string& text, Answer& answer) {
    std::vector<Word> words = WordsOf(text);
    while (!words.empty() && words.back().text == ";")
        words.pop_back();
    if (words.empty()) return true;
    const auto is = [&](std::string_view word) { return EqualWords(words[0].text, word); };
    const auto done = [&] {
        answer.Done(Did::Other, std::nullopt);
        return true;
    };
    // Settings of a session that nothing here depends on.
    if (is("set")) return done();
    if (is("use") && words.size() > 1) {
        const std::string name = words[1].Plain();
        if (!EqualWords(name, settings_.database)) throw NoDatabaseError(name);
        answer.DatabaseIs(name);
        return done();
    }
    if (is("print") && words.size() > 1) {
        answer.Info(0, words[1].Plain());
        return done();
    }
    if (is("raiserror")) {
        const SqlError error = Raised(words);
        constexpr std::uint8_t kFirstError = 11;
        if (error.level >= kFirstError) throw error;
        answer.Info(error.number, error.text);
        return done();
    }
    if (is("waitfor") && words.size() > 2) {
        Wait(words[2].Plain());
        return done();
    }
    if (is("save") && IsTransactionWord(words, 1) && words.size() > 2) {
        Simple(("savepoint " + Quoted(words[2].Plain())).c_str());
        return done();
    }
    if (is("rollback") && IsTransactionWord(words, 1) && words.size() > 2) {
        Simple(("rollback to savepoint " + Quoted(words[2].Plain())).c_str());
        return done();
    }
    if ((is("begin") || is("commit") || is("rollback")) && IsTransactionWord(words, 1)) {
        Simple(is("begin") ? "begin" : is("commit") ? "commit" : "rollback");
        return done();
    }
    const bool isCall =
        is("exec") || is("execute") || words[0].text.starts_with("sp_") || words[0].text.starts_with("SP_");
    if (!isCall) return false;
    Call call = ParseCall(std::string_view(words[0].text.data(), words.back().text.data() + words.back().text.size()));
    RunProcedure(call, answer);
    return true;
}

}  // namespace tk::test::tds
