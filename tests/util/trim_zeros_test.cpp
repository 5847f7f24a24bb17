#include <gtest/gtest.h>

#include "tkkernel/util.h"
#include "util/slow_reference.h"
#include "util/values.h"

namespace {

using namespace tk::test;

TEST(TruncDouble, CutsZerosAndABarePoint) {
    const struct {
        const char* label;
        const char* text;
        const char* result;
    } kRows[] = {
        {"zeros at the end", "1.500", "1.5"},
        {"nothing to cut", "1.25", "1.25"},
        {"the point goes with its zeros", "2.00", "2"},
        {"a bare point", "2.", "2"},
        {"zero is empty", "0.00", ""},
        {"minus zero is empty", "-0.00", ""},
        {"blanks before zero", "        0.00", ""},
        {"leading blanks stay", "        1.50", "        1.5"},
        {"zeros inside stay", "100.100", "100.1"},
        {"zeros of the whole part stay", "100.00", "100"},
        {"below one", "0.50", "0.5"},
        {"no whole part", ".50", ".5"},
        {"a point alone", ".", ""},
        {"without a point it stays", "1500", "1500"},
        {"without a point zero is empty", "000", ""},
        {"no number is zero", "abc", ""},
        {"number first", "12abc", "12abc"},
        {"whole part beyond 32 bits", "4294967296.00", "4294967296"},
        {"whole part beyond 64 bits", "18446744073709551616.00", "18446744073709551616"},
        {"no point, beyond 32 bits", "4294967296", "4294967296"},
        {"plus sign", "+0.0", ""},
        {"plus sign, not zero", "+3.0", "+3"},
        {"other text behind the zeros", "1.50 ", "1.50 "},
        {"two points", "1.2.00", "1.2"},
        {"an exponent is cut like any zeros", "1.5e10", "1.5e1"},
        {"empty", "", ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        CString text(row.text);
        EXPECT_STREQ(TruncDouble(text), row.result);
        EXPECT_STREQ(text, row.text) << "the argument stays";
    }
}

TEST(TruncDouble, AgreesWithTheRuleOnAnyNumber) {
    Random random;
    SCOPED_TRACE(testing::Message() << "TK_TEST_SEED=" << random.Seed());
    for (int i = 0; i < 50000; ++i) {
        std::string number = random.TextOf(" ", 3) + (random.Below(3) == 0 ? "-" : "") + random.TextOf("00123", 5);
        if (random.Below(4) != 0) number += "." + random.TextOf("00012", 5);
        CString text(number.c_str());
        ASSERT_EQ(Std(TruncDouble(text)), TrimZeros(number)) << '"' << number << '"';
    }
}

}  // namespace
