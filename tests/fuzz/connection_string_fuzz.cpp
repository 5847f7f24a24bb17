// Any bytes as a connection string: parsing never fails, what is printed for ODBC reads there as the same pairs, and
// the password never shows.
#include "ado/odbc/connection_string.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

using tk::ado::ConnectionString;
using Pair = ConnectionString::Pair;

void Require(bool holds) {
    if (!holds) std::abort();
}

/// As ODBC reads it: a key ends at the first '=', quotes mean nothing, and only a value that opens with a brace may
/// hold a semicolon.
std::vector<Pair> ReadAsOdbc(std::string_view text) {
    std::vector<Pair> pairs;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t sign = text.find('=', at);
        Require(sign != std::string_view::npos);
        Pair pair;
        pair.key = text.substr(at, sign - at);
        at = sign + 1;
        if (at < text.size() && text[at] == '{') {
            for (++at; at < text.size(); ++at) {
                if (text[at] == '}' && (at + 1 == text.size() || text[++at] != '}')) break;
                pair.value.push_back(text[at]);
            }
        } else {
            const std::size_t end = std::min(text.find(';', at), text.size());
            pair.value = text.substr(at, end - at);
            at = end;
        }
        Require(at < text.size() && text[at] == ';');
        ++at;
        pairs.push_back(std::move(pair));
    }
    return pairs;
}

void RequireNoPassword(const ConnectionString& text) {
    Require(text.Find("PWD") == nullptr && text.Find("Password") == nullptr);
    if (const std::string* inner = text.Find("Extended Properties")) RequireNoPassword(ConnectionString::Parse(*inner));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = ConnectionString::Parse({reinterpret_cast<const char*>(data), size});
    std::vector<Pair> expected = text.Pairs();
    std::erase_if(expected, [](const Pair& pair) { return pair.key.find('=') != std::string::npos; });
    Require(std::ranges::equal(ReadAsOdbc(text.ToOdbc()), expected, [](const Pair& read, const Pair& meant) {
        return read.key == meant.key && read.value == meant.value;
    }));
    RequireNoPassword(ConnectionString::Parse(text.WithoutPassword()));
    (void)tk::ado::ReadProperties(text);
    return 0;
}
