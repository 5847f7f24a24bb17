#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <vector>

#include "tests/win32/system/support.h"

namespace {

constexpr DWORD kSystem = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;

std::string Owned(DWORD length, char* text) {
    if (length == 0) return "?" + std::to_string(GetLastError());
    const std::string result(text, length);
    EXPECT_EQ(text[length], 0);
    LocalFree(text);
    return result;
}

std::string SystemText(DWORD code, DWORD language = 0, DWORD flags = kSystem) {
    char* text = nullptr;
    const DWORD length = FormatMessage(flags, nullptr, code, language, reinterpret_cast<LPSTR>(&text), 0, nullptr);
    return Owned(length, text);
}

std::string Filled(const char* format, const std::vector<DWORD_PTR>& values, DWORD flags = 0) {
    char* text = nullptr;
    auto* arguments = reinterpret_cast<va_list*>(const_cast<DWORD_PTR*>(values.data()));
    const DWORD length = FormatMessage(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY | flags, format, 0,
        0, reinterpret_cast<LPSTR>(&text), 0, arguments);
    return Owned(length, text);
}

std::string FilledFromList(const char* format, ...) {
    va_list values;
    va_start(values, format);
    char* text = nullptr;
    const DWORD length = FormatMessage(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_STRING, format, 0, 0,
                                       reinterpret_cast<LPSTR>(&text), 0, &values);
    va_end(values);
    return Owned(length, text);
}

DWORD_PTR Word(const void* text) {
    return reinterpret_cast<DWORD_PTR>(text);
}

}  // namespace

TEST(SystemMessage, IsChineseAndEndsInALineBreak) {
    static const struct {
        DWORD code;
        const char* text;
    } kRows[] = {
        {0, "操作成功完成。\r\n"},
        {2, "系统找不到指定的文件。\r\n"},
        {5, "拒绝访问。\r\n"},
        {6, "句柄无效。\r\n"},
        {14, "存储空间不足，无法完成此操作。\r\n"},
        {34, "驱动器中的软盘不对。将 %2 插入(卷序列号: %3)驱动器 %1。\r\n"},
        {87, "参数不正确。\r\n"},
        {126, "找不到指定的模块。\r\n"},
        {183, "当文件已存在时，无法创建该文件。\r\n"},
        {998, "内存位置访问无效。\r\n"},
        {1113, "在多字节的目标代码页中，没有此 Unicode 字符可以映射到的字符。\r\n"},
        {1460, "由于超时时间已过，该操作返回。\r\n"},
        {1722, "RPC 服务器不可用。\r\n"},
        {10054, "远程主机强迫关闭了一个现有的连接。\r\n"},
        {10061, "由于目标计算机积极拒绝，无法连接。\r\n"},
        {11001, "不知道这样的主机。\r\n"},
        {0x80004005, "未指定的错误\r\n"},
        {0x80020009, "发生意外。\r\n"},
        {0x8002000E, "无效的参数数目。\r\n"},
        {0x80040154, "没有注册类\r\n"},
        {0x800401F0, "尚未调用 CoInitialize。\r\n"},
        {0x80010106, "无法在设置线程模式后对其加以更改。\r\n"},
        {0x80070005, "拒绝访问。\r\n"},
        {0x8007000E, "存储空间不足，无法完成此操作。\r\n"},
        {0x80070057, "参数不正确。\r\n"},
        {0x800706BA, "RPC 服务器不可用。\r\n"},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(SystemText(row.code), row.text) << row.code;
}

TEST(SystemMessage, OfAnUnknownCodeIsAnError) {
    for (const DWORD code : {35u, 65535u, 9998u, 0x80040E14u, 0x8007FFFFu, 0xFFFFFFFFu, 0x00070005u}) {
        SetLastError(0);
        EXPECT_EQ(SystemText(code), "?317") << code;
    }
}

TEST(SystemMessage, OfEveryCodeOfTheRangeIsWholeOrNotThere) {
    int known = 0;
    const auto look = [&](DWORD code) {
        char buffer[1024];
        const DWORD length = FormatMessage(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0,
                                           buffer, sizeof buffer, nullptr);
        if (length == 0) {
            ASSERT_EQ(GetLastError(), 317u) << code;
            return;
        }
        ++known;
        ASSERT_EQ(length, std::strlen(buffer)) << code;
        ASSERT_STREQ(buffer + length - 2, "\r\n") << code;
        WCHAR wide[1024];
        const DWORD units = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0,
                                           wide, 1024, nullptr);
        ASSERT_EQ(std::count(buffer, buffer + length, '?'), std::count(wide, wide + units, u'?'))
            << code << ": every character is in the code page";
        ASSERT_EQ(std::string(buffer, length - 2).find_first_of("\r\n"), std::string::npos) << code;
    };
    for (DWORD code = 0; code < 0x10000; ++code)
        look(code);
    for (DWORD facility : {0u, 1u, 2u, 3u, 4u, 8u}) {
        for (DWORD code = 0; code < 0x10000; ++code)
            look(0x80000000 | facility << 16 | code);
    }
    EXPECT_GT(known, 600);
}

TEST(SystemMessage, IsThereInTheSystemsLanguagesOnly) {
    for (const DWORD language : {0u, 0x400u, 0x800u, 0x4u, 0x804u})
        EXPECT_EQ(SystemText(5, language), "拒绝访问。\r\n");
    EXPECT_EQ(SystemText(5, 0x409), "?1815");
    EXPECT_EQ(SystemText(9998, 0x409), "?317");
}

TEST(SystemMessage, FitsOrIsRefused) {
    constexpr DWORD kFlags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    char buffer[16] = "untouched";
    EXPECT_EQ(FormatMessage(kFlags, nullptr, 5, 0, buffer, 13, nullptr), 12u);
    EXPECT_STREQ(buffer, "拒绝访问。\r\n");
    EXPECT_EQ(FormatMessage(kFlags, nullptr, 5, 0, buffer, 12, nullptr), 0u);
    EXPECT_EQ(GetLastError(), 122u);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(FormatMessage(kFlags, nullptr, 5, 0, buffer, 0, nullptr), 0u);
    EXPECT_EQ(FormatMessage(kFlags, nullptr, 5, 0, nullptr, 16, nullptr), 0u);
    EXPECT_EQ(GetLastError(), 87u);
    WCHAR wide[16];
    EXPECT_EQ(FormatMessageW(kFlags, nullptr, 5, 0, wide, 8, nullptr), 7u);
    EXPECT_EQ(std::u16string(wide), u"拒绝访问。\r\n");
    EXPECT_EQ(FormatMessageW(kFlags, nullptr, 5, 0, wide, 7, nullptr), 0u);
    EXPECT_EQ(GetLastError(), 122u);
}

TEST(SystemMessage, NeedsASourceThatExists) {
    EXPECT_EQ(SystemText(5, 0, FORMAT_MESSAGE_ALLOCATE_BUFFER), "?87");
    EXPECT_EQ(SystemText(5, 0, FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_HMODULE), "?1813");
    EXPECT_EQ(SystemText(5, 0, kSystem | FORMAT_MESSAGE_FROM_HMODULE), "拒绝访问。\r\n");
    EXPECT_EQ(SystemText(5, 0, FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_STRING), "?87");
    EXPECT_EQ(SystemText(193, 0, FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM), "?87")
        << "an insert without a value";
}

TEST(SystemMessage, OnOneLineEndsInABlank) {
    EXPECT_EQ(SystemText(5, 0, kSystem | FORMAT_MESSAGE_MAX_WIDTH_MASK), "拒绝访问。 ");
}

TEST(MessageText, IsFilledFromValues) {
    const std::string tooLong(5000, 'x');
    const struct {
        const char* label;
        const char* format;
        std::vector<DWORD_PTR> values;
        std::string text;
    } kRows[] = {
        {"texts in any order", "%2在%1", {Word("仓库"), Word("订单")}, "订单在仓库"},
        {"numbers", "%1!d! %1!u! %1!x! %1!08X!", {static_cast<DWORD_PTR>(-2)}, "-2 4294967294 fffffffe FFFFFFFE"},
        {"64 bits", "%1!I64d! %1!I64x!", {0x123456789A}, "78187493530 123456789a"},
        {"characters", "%1!c!%2!c!", {'a', 'b'}, "ab"},
        {"a wide text", "%1!S!|%1!ws!|%2!hs!", {Word(u"订单"), Word("仓")}, "订单|订单|仓"},
        {"width and precision", "[%1!8s!][%1!-8s!][%1!.3s!]", {Word("abcde")}, "[   abcde][abcde   ][abc]"},
        {"width from the values",
         "%1!*.*s! %4 %5!*s!",
         {4, 2, Word("Bill"), Word("Bob"), 6, Word("Bill")},
         "  Bi Bob   Bill"},
        {"escapes", "a%%b%nc%td%!e%.f%r%bg", {}, "a%b\r\nc\td!e.f\r g"},
        {"a null text", "%1|%1!.3s!", {0}, "(null)|(nu"},
        {"the end without a line break", "abc%0def\r\n", {}, "abc"},
        {"line breaks", "a\nb\rc\r\nd", {}, "a\r\nb\r\nc\r\nd"},
        {"a long text", "%1", {Word(tooLong.c_str())}, tooLong},
        {"a number behind ten", "%10%11", {0, 0, 0, 0, 0, 0, 0, 0, 0, Word("x"), Word("y")}, "xy"},
        {"a text cut within a character", "%1!.3s!", {Word("订单")}, "订"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(Filled(row.format, row.values), row.text);
    }
}

TEST(MessageText, IsFilledFromAnArgumentList) {
    EXPECT_EQ(FilledFromList("%2 %1 %2 %3!d!", "a", "b", -7), "b a b -7");
    EXPECT_EQ(FilledFromList("no values"), "no values");
}

TEST(MessageText, KeepsItsInsertsWhenAsked) {
    EXPECT_EQ(Filled("%1 %2!d! %n%99", {}, FORMAT_MESSAGE_IGNORE_INSERTS), "%1 %2!d! \r\n%99");
}

TEST(MessageText, RefusesFormatsThatAreNone) {
    for (const char* format : {"%1!", "%1!d", "%1!q!", "%1!999999d!", "%", "%1!-", "%1!.*", "%1!*"}) {
        EXPECT_EQ(Filled(format, {1, 1, 1}), "?87") << format;
    }
}

TEST(MessageText, IsBrokenIntoLinesOfAWidth) {
    EXPECT_EQ(Filled("one two three four", {}, 9), "one two\r\nthree\r\nfour");
    EXPECT_EQ(Filled("one\r\ntwo three", {}, 9), "one two\r\nthree");
    EXPECT_EQ(Filled("unbreakable", {}, 4), "unbreakable");
    EXPECT_EQ(Filled("one\r\ntwo%nthree", {}, FORMAT_MESSAGE_MAX_WIDTH_MASK), "one two\r\nthree");
}

TEST(MessageText, InUtf16TakesUtf16) {
    WCHAR buffer[64];
    const DWORD_PTR values[] = {Word(u"订单"), Word("仓")};
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY, u"%1 %2!S!", 0, 0,
                                        buffer, 64, reinterpret_cast<va_list*>(const_cast<DWORD_PTR*>(values)));
    EXPECT_EQ(length, 4u);
    EXPECT_EQ(std::u16string(buffer), u"订单 仓");
    LPWSTR allocated = nullptr;
    EXPECT_EQ(FormatMessageW(kSystem, nullptr, 0x80040154, 0, reinterpret_cast<LPWSTR>(&allocated), 0, nullptr), 7u);
    EXPECT_EQ(std::u16string(allocated), u"没有注册类\r\n");
    LocalFree(allocated);
}
