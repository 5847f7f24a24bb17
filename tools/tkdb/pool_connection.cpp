#include "tools/tkdb/pool_connection.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace tk::tools {
namespace {

constexpr std::size_t kLongestText = 127;  // of what a pool keeps, in bytes
constexpr std::string_view kBlanks = " \t\r\n";

std::string_view Trim(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

std::string Upper(std::string_view text) {
    std::string upper(text);
    std::ranges::transform(upper, upper.begin(),
                           [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return upper;
}

/// One "name=value" of a connection string.
struct Item {
    std::string name;      // in capitals
    std::string value;     // without the signs around it
    std::string_view raw;  // as it stands there, with them
    std::string_view rawValue;
};

/// Reads the items from left to right. A piece without '=' is none.
class Items {
public:
    explicit Items(std::string_view text) : text_(text) {}

    bool HasOpenBrace() const { return hasOpenBrace_; }

    bool Next(Item& item) {
        while (at_ < text_.size()) {
            const std::size_t begin = at_;
            const std::size_t equals = text_.find('=', begin);
            const std::size_t semicolon = std::min(text_.find(';', begin), text_.size());
            if (equals > semicolon) {
                at_ = semicolon + 1;
                continue;
            }
            item.name = Upper(Trim(text_.substr(begin, equals - begin)));
            const std::size_t value = std::min(text_.find_first_not_of(kBlanks, equals + 1), text_.size());
            const std::size_t end = ReadValue(value, item.value);
            item.raw = Trim(text_.substr(begin, end - begin));
            item.rawValue = Trim(text_.substr(equals + 1, end - equals - 1));
            at_ = end + 1;
            if (!item.name.empty()) return true;
        }
        return false;
    }

private:
    /// @return where the item ends
    std::size_t ReadValue(std::size_t at, std::string& value) {
        const char first = at < text_.size() ? text_[at] : '\0';
        if (first == '{' || first == '"' || first == '\'') {
            const char last = first == '{' ? '}' : first;
            value.clear();
            for (std::size_t i = at + 1; i < text_.size(); ++i) {
                if (text_[i] == last) {
                    if (i + 1 == text_.size() || text_[i + 1] != last)
                        return std::min(text_.find(';', i), text_.size());
                    ++i;  // doubled, it stands for itself
                }
                value += text_[i];
            }
            hasOpenBrace_ |= first == '{';
        }
        const std::size_t end = std::min(text_.find(';', at), text_.size());
        value = Trim(text_.substr(at, end - at));
        return end;
    }

    std::string_view text_;
    std::size_t at_ = 0;
    bool hasOpenBrace_ = false;
};

/// One value by several names: the first of these that is given counts.
class Synonyms {
public:
    explicit Synonyms(std::initializer_list<const char*> names)
        : names_(names.begin(), names.end()), values_(names_.size()) {}

    bool Take(const Item& item) {
        const auto name = std::ranges::find(names_, item.name);
        if (name == names_.end()) return false;
        values_[static_cast<std::size_t>(name - names_.begin())] = item.value;
        return true;
    }

    std::string Value() const {
        for (const auto& value : values_) {
            if (value) return *value;
        }
        return {};
    }

private:
    std::vector<std::string> names_;
    std::vector<std::optional<std::string>> values_;
};

std::string ReasonAgainst(const PoolConnection& pool) {
    const struct {
        const char* name;
        const std::string& text;
    } parts[] = {{"connection string", pool.text}, {"user", pool.user}, {"password", pool.password}};
    for (const auto& part : parts) {
        if (part.text.size() > kLongestText) {
            return fmt::format("a pool takes a {} of up to {} bytes, not {}", part.name, kLongestText,
                               part.text.size());
        }
        // The pool writes them as they are into a connection string of its own.
        if (&part.text == &pool.text) continue;
        const std::size_t semicolon = part.text.find(';');
        if (semicolon != std::string::npos && part.text.find('=', semicolon) != std::string::npos) {
            return fmt::format("a pool takes no {} with a semicolon and an equals sign behind it", part.name);
        }
    }
    return {};
}

}  // namespace

std::optional<PoolConnection> ForPool(const std::string& connection, std::string& reason) {
    PoolConnection pool;
    if (connection.find('=') == std::string::npos) {
        pool.text = Trim(connection);
    } else {
        Synonyms users{"USER ID", "UID", "USER"};
        Synonyms passwords{"PASSWORD", "PWD"};
        std::string source;
        Items items(connection);
        for (Item item; items.Next(item);) {
            if (users.Take(item) || passwords.Take(item)) continue;
            if (item.name == "DSN") {
                source = item.rawValue;
            } else {
                pool.text.append(";").append(item.raw);
            }
        }
        if (items.HasOpenBrace()) {
            reason = "a brace in the connection string is not closed";
            return std::nullopt;
        }
        pool.text.insert(0, source);
        pool.user = users.Value();
        pool.password = passwords.Value();
    }
    reason = ReasonAgainst(pool);
    return reason.empty() ? std::optional(pool) : std::nullopt;
}

}  // namespace tk::tools
