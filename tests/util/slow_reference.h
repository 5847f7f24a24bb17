// tests/util/slow_reference.h - the rules once more, step by step on texts as they are worded, for comparison.
#pragma once

#include <random>
#include <string>
#include <vector>

namespace tk::test {

/// printf's "%12.2f".
std::string TwelvePointTwo(double value);

/// Trailing zeros of a number's text cut, digit by digit.
std::string TrimZeros(const std::string& text);

/// A number's text rounded on its digits and read by the C library.
double RoundDigits(std::string text, int decimals);

/// A currency amount in ten-thousandths, printed, rounded on its digits and read again.
double RoundCurrencyText(long long units);

std::vector<std::string> Split(const std::string& text, const std::string& separator);
std::string Join(const std::vector<std::string>& pieces, const std::string& separator);
std::string ReplaceAndDropTail(const std::string& text, const std::string& oldText, const std::string& newText);

/// A generator whose seed is printed with a failure; TK_TEST_SEED in the environment repeats one.
class Random {
public:
    Random();
    std::mt19937_64& Engine() { return engine_; }
    unsigned long long Seed() const { return seed_; }
    int Below(int limit) { return static_cast<int>(engine_() % static_cast<unsigned>(limit)); }
    /// A text of up to `maximum` characters of an alphabet.
    std::string TextOf(const char* alphabet, int maximum);

private:
    unsigned long long seed_;
    std::mt19937_64 engine_;
};

}  // namespace tk::test
