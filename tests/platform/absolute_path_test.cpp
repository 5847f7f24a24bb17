#include <gtest/gtest.h>

#include "tkkernel/platform.h"

namespace {

constexpr char kNoDrive[] = "无盘符错误!";
constexpr char kWrongTarget[] = "目标路径错误!";

TEST(GetAbsolutePath, LeadsFromTheBaseToTheTarget) {
    static const struct {
        const char* label;
        const char* base;
        const char* target;
        const char* result;
    } kRows[] = {
        {"a name", "C:\\stock", "data", "C:\\stock\\data"},
        {"a base that ends in a separator", "C:\\stock\\", "data\\a.mdb", "C:\\stock\\data\\a.mdb"},
        {"the folder above", "C:\\stock\\bin", "..\\data", "C:\\stock\\data"},
        {"the same folder", "C:\\stock", ".\\data\\.", "C:\\stock\\data"},
        {"up to the root", "C:\\stock", "..", "C:\\"},
        {"slashes as well", "C:/stock/bin", "../data/x", "C:\\stock\\data\\x"},
        {"doubled separators", "C:\\\\stock\\\\", "data\\\\x\\", "C:\\stock\\data\\x"},
        {"a drive alone is its root", "C:", "data", "C:\\data"},
        {"from the root of the drive", "D:\\stock\\bin", "\\data", "D:\\data"},
        {"a slash in front is the root of the drive too", "D:\\stock", "/data", "D:\\data"},
        {"another drive", "C:\\stock", "D:\\data\\..\\x", "D:\\x"},
        {"another drive needs no base", "", "d:\\data", "d:\\data"},
        {"a share", "\\\\server\\public\\stock", "..\\data", "\\\\server\\public\\data"},
        {"a share as the target", nullptr, "\\\\server\\public\\x", "\\\\server\\public\\x"},
        {"the root of a share", "\\\\server\\public\\a\\b", "\\c", "\\\\server\\public\\c"},
        {"without drives", "/opt/stock/bin", "../data", "/opt/stock/data"},
        {"without drives, with backslashes", "/opt/stock", "data\\x", "/opt/stock/data/x"},
        {"without drives, from the root", "/opt/stock", "/data", "/data"},
        {"without drives, without a base", nullptr, "/data/./x", "/data/x"},
        {"without drives, up to the root", "/opt", "..", "/"},
        {"the second byte of a character is no separator", "C:\\诚\\a", "..\\誠", "C:\\诚\\誠"},
        {"names with points", "C:\\a.b\\..c", "...", "C:\\a.b\\..c\\..."},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(GetAbsolutePath(row.base, row.target), row.result);
    }
}

TEST(GetAbsolutePath, SaysThatThereIsNoDrive) {
    for (const char* base : {static_cast<const char*>(nullptr), "", "stock", "..\\stock", "\\stock", "C:stock"}) {
        SCOPED_TRACE(base != nullptr ? base : "null");
        EXPECT_STREQ(GetAbsolutePath(base, "data"), kNoDrive);
        EXPECT_STREQ(GetAbsolutePath(base, "\\data"), kNoDrive);
    }
}

TEST(GetAbsolutePath, SaysThatTheTargetIsWrong) {
    static const struct {
        const char* label;
        const char* base;
        const char* target;
    } kRows[] = {
        {"null", "C:\\stock", nullptr},
        {"empty", "C:\\stock", ""},
        {"empty without a base", nullptr, ""},
        {"above the root", "C:\\stock", "..\\.."},
        {"above the root of its own drive", "C:\\stock", "D:\\.."},
        {"above the root of a share", "\\\\server\\public", ".."},
        {"above the root of the system", "/opt", "../../etc"},
        {"relative to a drive", "C:\\stock", "D:data"},
        {"a base that leads out", "C:\\..\\stock", "data"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(GetAbsolutePath(row.base, row.target), kWrongTarget);
    }
}

TEST(NumberToChar, WritesTheDigitsOfUpTo36) {
    for (int number = 0; number < 10; ++number)
        EXPECT_EQ(NumberToChar(number), '0' + number);
    for (int number = 10; number < 36; ++number)
        EXPECT_EQ(NumberToChar(number), 'A' + number - 10);
    for (const int number : {-1, 36, 255, -2147483647 - 1, 2147483647})
        EXPECT_EQ(NumberToChar(number), '\0') << number;
}

}  // namespace
