#include "ado/odbc/connection_string.h"

#include <algorithm>

#include "ado/odbc/ascii.h"

namespace tk::ado {
namespace {

/// One pair as it stands in the text: [begin, end) covers it with its semicolon.
struct Item {
    ConnectionString::Pair pair;
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// Reads the items of a connection string from left to right.
class Scanner {
public:
    explicit Scanner(std::string_view text) : text_(text) {}

    bool Next(Item& item) {
        while (at_ < text_.size()) {
            item = {};
            item.begin = at_;
            if (ReadKey(item.pair.key)) {
                ReadValue(item.pair);
                item.end = at_;
                return true;
            }
        }
        return false;
    }

private:
    /// False when the fragment up to the next semicolon has no '='; it is passed over then.
    bool ReadKey(std::string& key) {
        std::string read;
        while (at_ < text_.size() && text_[at_] != ';') {
            if (text_[at_] == '=') {
                if (at_ + 1 < text_.size() && text_[at_ + 1] == '=') {
                    ++at_;
                } else {
                    ++at_;
                    key = Trim(read);
                    if (!key.empty()) return true;
                    SkipFragment();
                    return false;
                }
            }
            read.push_back(text_[at_++]);
        }
        SkipFragment();
        return false;
    }

    void SkipFragment() {
        at_ = text_.find(';', at_);
        at_ = at_ == std::string_view::npos ? text_.size() : at_ + 1;
    }

    void ReadValue(ConnectionString::Pair& pair) {
        const std::size_t start = text_.find_first_not_of(" \t\r\n", at_);
        if (start != std::string_view::npos) {
            const char quote = text_[start];
            if ((quote == '"' || quote == '\'') && ReadQuoted(start, quote, pair.value)) return;
            if (quote == '{' && ReadQuoted(start, '}', pair.value)) {
                pair.isBraced = true;
                return;
            }
        }
        const std::size_t from = at_;
        SkipFragment();
        const bool hasSemicolon = at_ > from && text_[at_ - 1] == ';';
        pair.value = Trim(text_.substr(from, at_ - from - (hasSemicolon ? 1 : 0)));
    }

    /// The text between start and the closing sign, which is doubled inside; false when it is never closed.
    bool ReadQuoted(std::size_t start, char close, std::string& value) {
        std::string read;
        for (std::size_t i = start + 1; i < text_.size(); ++i) {
            if (text_[i] != close) {
                read.push_back(text_[i]);
            } else if (i + 1 < text_.size() && text_[i + 1] == close) {
                read.push_back(text_[i++]);
            } else {
                value = std::move(read);
                at_ = i + 1;
                SkipFragment();
                return true;
            }
        }
        return false;
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

bool IsPasswordKey(std::string_view key) {
    return EqualsNoCase(key, "PWD") || EqualsNoCase(key, "Password");
}

bool NeedsBraces(const ConnectionString::Pair& pair) {
    const std::string& value = pair.value;
    if (value.empty()) return false;
    const bool isDriver = EqualsNoCase(pair.key, "Driver");
    const bool isStatement = EqualsNoCase(pair.key, "INITSTMT") || EqualsNoCase(pair.key, "ConnSettings");
    return pair.isBraced || isStatement || value.find(';') != std::string::npos || value.front() == '{' ||
           value.front() == ' ' || value.back() == ' ' || (isDriver && value.find(' ') != std::string::npos);
}

std::string Quoted(std::string_view value) {
    std::string text = "\"";
    for (const char letter : value) {
        if (letter == '"') text.push_back('"');
        text.push_back(letter);
    }
    return text.append("\"");
}

}  // namespace

ConnectionString ConnectionString::Parse(std::string_view text) {
    ConnectionString parsed;
    parsed.text_ = text;
    Scanner scanner(text);
    for (Item item; scanner.Next(item);) {
        const auto same = std::ranges::find_if(parsed.pairs_,
                                               [&](const Pair& pair) { return EqualsNoCase(pair.key, item.pair.key); });
        if (same == parsed.pairs_.end()) {
            parsed.pairs_.push_back(std::move(item.pair));
        } else if (!EqualsNoCase(item.pair.key, "Provider")) {
            *same = std::move(item.pair);
        }
    }
    return parsed;
}

const std::string* ConnectionString::Find(std::string_view key) const noexcept {
    for (const Pair& pair : pairs_) {
        if (EqualsNoCase(pair.key, key)) return &pair.value;
    }
    return nullptr;
}

std::string ConnectionString::Get(std::initializer_list<std::string_view> spellings) const {
    for (const std::string_view key : spellings) {
        if (const std::string* value = Find(key)) return *value;
    }
    return {};
}

void ConnectionString::Set(std::string_view key, std::string_view value) {
    for (Pair& pair : pairs_) {
        if (EqualsNoCase(pair.key, key)) {
            pair.value = value;
            pair.isBraced = false;
            return;
        }
    }
    pairs_.push_back({std::string(key), std::string(value), false});
}

void ConnectionString::SetIfAbsent(std::string_view key, std::string_view value) {
    if (Find(key) == nullptr) Set(key, value);
}

void ConnectionString::Remove(std::string_view key) {
    std::erase_if(pairs_, [&](const Pair& pair) { return EqualsNoCase(pair.key, key); });
}

std::string ConnectionString::ToOdbc() const {
    std::string text;
    for (const Pair& pair : pairs_) {
        if (pair.key.find('=') != std::string::npos) continue;  // ODBC cannot say such a key
        text.append(pair.key).append("=");
        if (NeedsBraces(pair)) {
            text.push_back('{');
            for (const char letter : pair.value) {
                if (letter == '}') text.push_back('}');
                text.push_back(letter);
            }
            text.push_back('}');
        } else {
            text.append(pair.value);
        }
        text.push_back(';');
    }
    return text;
}

std::string ConnectionString::WithoutPassword() const {
    std::string kept;
    std::size_t from = 0;
    Scanner scanner(text_);
    for (Item item; scanner.Next(item);) {
        if (IsPasswordKey(item.pair.key)) {
            kept.append(text_, from, item.begin - from);
            from = item.end;
        } else if (EqualsNoCase(item.pair.key, "Extended Properties")) {
            const std::string inner = Parse(item.pair.value).WithoutPassword();
            if (inner == item.pair.value) continue;
            kept.append(text_, from, item.begin - from);
            kept.append(item.pair.key).append("=").append(Quoted(inner)).append(";");
            from = item.end;
        }
    }
    return kept.append(text_, from, std::string::npos);
}

std::string ConnectionString::Provider() const {
    const std::string* provider = Find("Provider");
    if (provider == nullptr || provider->empty()) return "MSDASQL";
    if (StartsWithNoCase(*provider, "MSDASQL")) {
        const std::string_view tail = std::string_view(*provider).substr(7);
        if (tail.find_first_not_of(".0123456789") == std::string_view::npos) return "MSDASQL";
    }
    return *provider;
}

}  // namespace tk::ado
