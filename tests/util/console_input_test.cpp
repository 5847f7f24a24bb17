#include <gtest/gtest.h>

#include <conio.h>

#include <cstring>

#include "tkkernel/util.h"

namespace {

TEST(GetInput, PutsAZeroInPlaceOfTheTerminator) {
    char buffer[] = "xxxx";
    ASSERT_EQ(_ungetch('\r'), '\r');
    EXPECT_EQ(GetInput(buffer, 4, '\r'), 0);
    EXPECT_STREQ(buffer, "");
    EXPECT_STREQ(buffer + 1, "xxx");
}

TEST(GetInput, EndsAtTheMaximumWithoutATerminator) {
    char buffer[] = "xxxx";
    ASSERT_EQ(_ungetch('k'), 'k');
    EXPECT_EQ(GetInput(buffer, 1, '\r'), 1);
    EXPECT_STREQ(buffer, "kxxx");
}

TEST(GetInput, ReadsNothingWithoutRoom) {
    char buffer[] = "xxxx";
    EXPECT_EQ(GetInput(buffer, 0, '\r'), 0);
    EXPECT_EQ(GetInput(buffer, -1, '\r'), 0);
    EXPECT_EQ(GetInput(nullptr, 4, '\r'), 0);
    EXPECT_STREQ(buffer, "xxxx");
}

}  // namespace
