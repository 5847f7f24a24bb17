#include "util/slow_reference.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tk::test {

std::string TwelvePointTwo(double value) {
    char text[400];
    std::snprintf(text, sizeof(text), "%12.2f", value);
    return text;
}

std::string TrimZeros(const std::string& text) {
    const auto isZero = [](const std::string& number) { return std::strtod(number.c_str(), nullptr) == 0; };
    if (text.find('.') == std::string::npos) return isZero(text) ? "" : text;
    std::string rest = text;
    while (rest.back() == '0')
        rest.pop_back();
    if (rest.back() != '.') return rest;
    rest.pop_back();
    return isZero(rest) ? "" : rest;
}

double RoundDigits(std::string text, int decimals) {
    const std::size_t point = text.find('.');
    if (point == std::string::npos) return std::atof(text.c_str());
    const std::string unchanged = text;
    const bool minus = text[0] == '-';
    if (minus || text[0] == '+') text[0] = '0';
    const std::size_t dropped = point + 1 + static_cast<std::size_t>(decimals);
    if (dropped >= text.size() || text[dropped] < '0' || text[dropped] > '9') return std::atof(unchanged.c_str());
    const bool up = text[dropped] >= '5';
    for (std::size_t i = dropped; i < text.size(); ++i)
        text[i] = '0';
    if (up) {
        std::size_t at = dropped - 1;
        for (;;) {
            if (text[at] != '.') {
                if (text[at] < '0' || text[at] > '9') break;
                if (text[at] != '9') {
                    ++text[at];
                    break;
                }
                text[at] = '0';
            }
            if (at == 0) {
                text.insert(text.begin(), '1');
                break;
            }
            --at;
        }
    }
    const double value = std::atof(text.c_str());
    return minus ? -value : value;
}

double RoundCurrencyText(long long units) {
    // Four decimals, or fewer when they are zeros, as the platform prints an amount.
    const bool below = units < 0;
    const unsigned long long magnitude =
        below ? 0ULL - static_cast<unsigned long long>(units) : static_cast<unsigned long long>(units);
    char buffer[40];
    std::snprintf(buffer, sizeof(buffer), "%s%llu.%04llu", below ? "-" : "", magnitude / 10000, magnitude % 10000);
    std::string text = buffer;
    while (text.back() == '0')
        text.pop_back();
    if (text.back() == '.') text.pop_back();

    return RoundDigits(text, 2);
}

std::vector<std::string> Split(const std::string& text, const std::string& separator) {
    std::vector<std::string> pieces;
    if (text.empty()) return pieces;
    if (separator.empty()) return {text};
    std::string piece;
    std::size_t at = 0;
    while (at < text.size()) {
        if (text.compare(at, separator.size(), separator) == 0) {
            if (!piece.empty()) pieces.push_back(piece);
            piece.clear();
            at += separator.size();
        } else {
            piece += text[at++];
        }
    }
    pieces.push_back(piece);
    return pieces;
}

std::string Join(const std::vector<std::string>& pieces, const std::string& separator) {
    std::string text;
    for (std::size_t i = 0; i < pieces.size(); ++i)
        text += (i == 0 ? "" : separator) + pieces[i];
    return text;
}

std::string ReplaceAndDropTail(const std::string& text, const std::string& oldText, const std::string& newText) {
    std::string result;
    std::string pending;
    if (oldText.empty() || newText.size() > text.size()) return result;
    for (std::size_t at = 0; at < text.size();) {
        if (text.compare(at, oldText.size(), oldText) == 0) {
            result += pending + newText;
            pending.clear();
            at += oldText.size();
        } else {
            pending += text[at++];
        }
    }
    return result;
}

Random::Random() {
    const char* wanted = std::getenv("TK_TEST_SEED");
    seed_ = wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : std::random_device()();
    engine_.seed(seed_);
}

std::string Random::TextOf(const char* alphabet, int maximum) {
    const int length = Below(maximum + 1);
    const int letters = static_cast<int>(std::strlen(alphabet));
    std::string text;
    for (int i = 0; i < length; ++i)
        text += alphabet[Below(letters)];
    return text;
}

}  // namespace tk::test
