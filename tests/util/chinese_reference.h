// tests/util/chinese_reference.h - amounts and initials once more, on texts, step by step as the rules are worded.
#pragma once

#include <string>

namespace tk::test {

/// @param mode  2: every place written; others: the usual form
std::string AmountInCapitals(double amount, int mode);

std::string Initials(const std::string& text);

}  // namespace tk::test
