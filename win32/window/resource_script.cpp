#include "win32/window/resource_script.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "tkwin32/menus.h"
#include "tkwin32/text.h"

namespace tk::window {
namespace {

constexpr int kDeepest = 16;

struct Token {
    enum Kind { kWord, kText, kMark } kind;
    std::string text;  // a text in GBK; a word and a mark as they stand
};

std::string Capitals(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return text;
}

bool IsBlank(char character) noexcept {
    return character == ' ' || character == '\t' || character == '\r' || character == '\n' || character == '\f';
}

/// Splits a script into its tokens; directives are carried out on the way.
class Reader {
public:
    using Include = std::string (*)(const std::string&, void*);

    Reader(Include include, void* data) : include_(include), data_(data) {}

    void Read(std::string_view content, int depth = 0) {
        if (content.starts_with("\xEF\xBB\xBF")) content.remove_prefix(3);
        bool lineStart = true;
        for (std::size_t at = 0; at < content.size();) {
            const char character = content[at];
            if (character == '\n') lineStart = true;
            if (IsBlank(character)) {
                ++at;
            } else if (content.substr(at, 2) == "//") {
                at = std::min(content.find('\n', at), content.size());
            } else if (content.substr(at, 2) == "/*") {
                const auto end = content.find("*/", at + 2);
                at = end == std::string_view::npos ? content.size() : end + 2;
            } else if (character == '#' && lineStart && depth < kDeepest) {
                const auto end = std::min(content.find('\n', at), content.size());
                Directive(content.substr(at + 1, end - at - 1), depth);
                at = end;
            } else {
                lineStart = false;
                at = character == '"' ? ReadText(content, at) : ReadWord(content, at);
            }
        }
    }

    std::optional<UINT> NumberOf(const std::string& word, int depth = 0) const {
        if (const auto named = names_.find(word); named != names_.end() && depth < kDeepest) {
            return NumberOf(named->second, depth + 1);
        }
        const bool hexadecimal = word.starts_with("0x") || word.starts_with("0X");
        const char* const begin = word.data() + (hexadecimal ? 2 : 0);
        const char* end = word.data() + word.size();
        if (end != begin && (end[-1] == 'L' || end[-1] == 'U')) --end;
        UINT number = 0;
        const auto read = std::from_chars(begin, end, number, hexadecimal ? 16 : 10);
        if (read.ec != std::errc() || read.ptr != end || begin == end) return std::nullopt;
        return number;
    }

    const std::vector<Token>& Tokens() const { return tokens_; }

private:
    void Directive(std::string_view line, int depth) {
        Reader words(nullptr, nullptr);
        words.gbk_ = gbk_;
        words.Read(line.substr(0, line.find("//")), kDeepest);
        const auto& tokens = words.tokens_;
        if (tokens.empty()) return;
        if (tokens[0].text == "define" && tokens.size() >= 3 && tokens[1].kind == Token::kWord) {
            // A number in parentheses is a number too.
            const std::size_t value = tokens[2].text == "(" && tokens.size() > 3 ? 3 : 2;
            names_.try_emplace(tokens[1].text, tokens[value].text);
        } else if (tokens[0].text == "include" && tokens.size() == 2 && tokens[1].kind == Token::kText &&
                   depth + 1 < kDeepest && include_ != nullptr) {
            Read(include_(text::GbkToUtf8(tokens[1].text), data_), depth + 1);
        } else if (tokens[0].text == "pragma" && tokens.size() >= 4 && tokens[1].text == "code_page") {
            gbk_ = tokens[3].text == "936";
        }
    }

    std::size_t ReadText(std::string_view content, std::size_t at) {
        std::string text;
        for (++at; at < content.size() && content[at] != '\n'; ++at) {
            const char character = content[at];
            if (gbk_ && text::IsGbkLead(character) && at + 1 < content.size()) {
                text.append(content.substr(at, 2));
                ++at;
            } else if (character == '"') {
                if (content.substr(at, 2) != "\"\"") break;
                text += '"';
                ++at;
            } else if (character == '\\' && at + 1 < content.size()) {
                AppendEscape(content[++at], text);
            } else {
                text += character;
            }
        }
        tokens_.push_back({Token::kText, gbk_ ? text : text::Utf8ToGbk(text)});
        return std::min(at + 1, content.size());
    }

    static void AppendEscape(char character, std::string& text) {
        switch (character) {
            case 'n':
                text += '\n';
                break;
            case 'r':
                text += '\r';
                break;
            case 't':
                text += '\t';
                break;
            case '\\':
            case '"':
                text += character;
                break;
            default:
                text += '\\';
                text += character;
        }
    }

    std::size_t ReadWord(std::string_view content, std::size_t at) {
        constexpr std::string_view kMarks = "{},()|";
        if (kMarks.find(content[at]) != std::string_view::npos) {
            tokens_.push_back({Token::kMark, std::string(1, content[at])});
            return at + 1;
        }
        std::size_t end = at;
        while (end < content.size() && !IsBlank(content[end]) && content[end] != '"' &&
               kMarks.find(content[end]) == std::string_view::npos) {
            ++end;
        }
        tokens_.push_back({Token::kWord, std::string(content.substr(at, end - at))});
        return end;
    }

    Include include_;
    void* data_;
    bool gbk_ = false;
    std::map<std::string, std::string> names_;
    std::vector<Token> tokens_;
};

/// Finds the blocks among the tokens.
class Parser {
public:
    explicit Parser(const Reader& reader) : reader_(reader), tokens_(reader.Tokens()) {}

    ResourceScript Parse() {
        ResourceScript script;
        for (; at_ < tokens_.size(); ++at_) {
            if (IsWord("STRINGTABLE")) {
                if (SkipToBlock()) ReadTexts(script.texts);
            } else if (IsWord("MENU") && at_ > 0) {
                const Token& name = tokens_[at_ - 1];
                const auto number = reader_.NumberOf(name.text);
                MenuTemplate menu;
                if (SkipToBlock()) ReadItems(menu.items, 0);
                script.menus.emplace(number ? std::to_string(*number) : Capitals(name.text), std::move(menu));
            }
        }
        return script;
    }

private:
    bool IsWord(const char* word) const {
        return at_ < tokens_.size() && tokens_[at_].kind == Token::kWord && Capitals(tokens_[at_].text) == word;
    }
    bool IsMark(char mark) const {
        return at_ < tokens_.size() && tokens_[at_].kind == Token::kMark && tokens_[at_].text[0] == mark;
    }
    bool IsBegin() const { return IsWord("BEGIN") || IsMark('{'); }
    bool IsEnd() const { return IsWord("END") || IsMark('}'); }

    /// Behind the BEGIN of the statement at hand; its options are passed over.
    bool SkipToBlock() {
        while (at_ < tokens_.size() && !IsBegin() && !IsEnd())
            ++at_;
        if (!IsBegin()) return false;
        ++at_;
        return true;
    }

    void ReadTexts(std::map<UINT, std::string>& texts) {
        std::optional<UINT> number;
        for (; at_ < tokens_.size() && !IsEnd(); ++at_) {
            const Token& token = tokens_[at_];
            if (token.kind == Token::kWord) {
                number = reader_.NumberOf(token.text);
            } else if (token.kind == Token::kText && number) {
                texts[*number] += token.text;  // texts side by side are one
            }
        }
    }

    /// Up to the END of the block, which stays the token at hand.
    void ReadItems(std::vector<MenuTemplate::Item>& items, int depth) {
        for (; at_ < tokens_.size() && !IsEnd(); ++at_) {
            if (IsWord("MENUITEM")) {
                ReadItem(items);
            } else if (IsWord("POPUP") && depth < kDeepest) {
                MenuTemplate::Item popup{MF_POPUP, 0, {}, {}};
                ++at_;
                if (at_ < tokens_.size() && tokens_[at_].kind == Token::kText) popup.text = tokens_[at_].text;
                for (; at_ < tokens_.size() && !IsBegin() && !IsEnd(); ++at_)
                    popup.flags |= FlagAtHand();
                if (!IsBegin()) return;
                ++at_;
                ReadItems(popup.items, depth + 1);
                items.push_back(std::move(popup));
            }
        }
    }

    void ReadItem(std::vector<MenuTemplate::Item>& items) {
        MenuTemplate::Item item{MF_STRING, 0, {}, {}};
        if (at_ + 1 < tokens_.size() && Capitals(tokens_[at_ + 1].text) == "SEPARATOR" &&
            tokens_[at_ + 1].kind == Token::kWord) {
            ++at_;
            item.flags = MF_SEPARATOR;
            items.push_back(item);
            return;
        }
        bool commandRead = false;
        // The last token of the item stays the one at hand.
        for (; at_ + 1 < tokens_.size(); ++at_) {
            const Token& next = tokens_[at_ + 1];
            const std::string word = Capitals(next.text);
            const bool isWord = next.kind == Token::kWord;
            if (isWord && (word == "MENUITEM" || word == "POPUP" || word == "END" || word == "BEGIN")) break;
            if (next.kind == Token::kMark && (word == "}" || word == "{")) break;
            if (next.kind == Token::kText) item.text += next.text;
            if (!isWord) continue;
            if (const auto number = reader_.NumberOf(next.text); number && !commandRead) {
                item.command = *number;
                commandRead = true;
            } else {
                item.flags |= FlagOf(word);
            }
        }
        items.push_back(std::move(item));
    }

    UINT FlagAtHand() const { return tokens_[at_].kind == Token::kWord ? FlagOf(Capitals(tokens_[at_].text)) : 0; }
    static UINT FlagOf(const std::string& word) {
        if (word == "GRAYED") return MF_GRAYED;
        if (word == "INACTIVE") return MF_DISABLED;
        return word == "CHECKED" ? MF_CHECKED : 0;
    }

    const Reader& reader_;
    const std::vector<Token>& tokens_;
    std::size_t at_ = 0;
};

}  // namespace

ResourceScript ParseResourceScript(std::string_view content, std::string (*include)(const std::string&, void*),
                                   void* data) {
    Reader reader(include, data);
    reader.Read(content);
    return Parser(reader).Parse();
}

}  // namespace tk::window
