#include "tools/tkdb/terminal_text.h"

#include <gtest/gtest.h>

namespace tk::tools {
namespace {

TEST(DisplayWidth, CountsWideAndCombiningCharacters) {
    EXPECT_EQ(DisplayWidth(""), 0u);
    EXPECT_EQ(DisplayWidth("abc"), 3u);
    EXPECT_EQ(DisplayWidth("\xE4\xB8\xAD"), 2u);      // U+4E2D
    EXPECT_EQ(DisplayWidth("e\xCC\x81"), 1u);         // e with a combining acute accent
    EXPECT_EQ(DisplayWidth("\xF0\xA0\x80\x80"), 2u);  // U+20000
    EXPECT_EQ(DisplayWidth("\xEF\xBC\xA1"), 2u);      // full-width A
}

TEST(DisplayWidth, StopsAtTheEndOfAHalfCharacter) {
    for (const char* half : {"\xE4", "\xE4\xB8", "\xF0\xA0\x80", "\xC3"}) {
        SCOPED_TRACE(half);
        EXPECT_LE(DisplayWidth(half), 2u);
        EXPECT_EQ(DisplayWidth(std::string("ab") + half), 2 + DisplayWidth(half));
    }
}

TEST(TerminalText, GoesToGbkAndBack) {
    const std::string utf8 = "\xE4\xB8\xAD\xE6\x96\x87 abc";
    EXPECT_EQ(TerminalToGbk(utf8), "中文 abc");
    EXPECT_EQ(GbkToTerminal("中文 abc"), utf8);
}

}  // namespace
}  // namespace tk::tools
