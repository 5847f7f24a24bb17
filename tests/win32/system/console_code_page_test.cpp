#include <windows.h>

#include <wincon.h>

#include "tests/win32/system/support.h"

using namespace tk::test;

namespace {

TEST(ConsoleCodePage, IsThatOfTheTerminalsLocale) {
    static const struct {
        const char* label;
        const char* all;
        const char* type;
        const char* language;
        UINT codePage;
    } kRows[] = {
        {"nothing said", nullptr, nullptr, nullptr, 65001},
        {"plain", "C", nullptr, nullptr, 65001},
        {"UTF-8", nullptr, nullptr, "zh_CN.UTF-8", 65001},
        {"GBK", nullptr, nullptr, "zh_CN.GBK", 936},
        {"GB18030", nullptr, nullptr, "zh_CN.GB18030", 936},
        {"as normalised names write it", nullptr, nullptr, "zh_CN.gb2312", 936},
        {"with a modifier", nullptr, nullptr, "zh_CN.GBK@stroke", 936},
        {"bare Chinese", nullptr, nullptr, "zh_CN", 936},
        {"bare Chinese with a modifier", nullptr, nullptr, "zh_CN@pinyin", 936},
        {"another bare language", nullptr, nullptr, "de_DE", 65001},
        {"the general one wins", "C.UTF-8", "zh_CN.GBK", "zh_CN.GBK", 65001},
        {"that of characters comes next", nullptr, "zh_CN.GBK", "C.UTF-8", 936},
        {"an empty one says nothing", "", "", "zh_CN.GBK", 936},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const Variable all("LC_ALL", row.all);
        const Variable type("LC_CTYPE", row.type);
        const Variable language("LANG", row.language);
        EXPECT_EQ(GetConsoleOutputCP(), row.codePage);
        EXPECT_EQ(GetConsoleCP(), row.codePage);
    }
}

}  // namespace
