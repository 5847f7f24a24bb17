#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tkkernel/platform.h"

namespace {

/// Owns a BSTR for the length of a check.
class Owned {
public:
    explicit Owned(BSTR text) : text_(text) {}
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned() { SysFreeString(text_); }
    BSTR Get() const { return text_; }
    std::basic_string<OLECHAR> Text() const { return {text_, SysStringLen(text_)}; }

private:
    BSTR text_;
};

using Wide = std::basic_string<OLECHAR>;

TEST(StringCopy, MakesABstrOfAText) {
    EXPECT_EQ(Owned(StringCopy("abc")).Text(), Wide(OLESTR("abc")));
    EXPECT_EQ(Owned(StringCopy("库存")).Text(), Wide(OLESTR("\u5E93\u5B58")));
    const Owned empty(StringCopy(""));
    EXPECT_NE(empty.Get(), nullptr);
    EXPECT_EQ(empty.Text(), Wide());
    EXPECT_EQ(Owned(StringCopy(nullptr)).Text(), Wide());
}

TEST(BstrCopy, ConsumesItsArgument) {
    // The leak checker finds what is not freed here, the address checker what is freed twice.
    EXPECT_STREQ(BstrCopy(SysAllocString(OLESTR("\u5E93\u5B58"))), "库存");
    EXPECT_STREQ(BstrCopy(SysAllocString(OLESTR(""))), "");
    EXPECT_STREQ(BstrCopy(nullptr), "");
}

TEST(BstrCopy, KeepsTextBehindAZeroCharacter) {
    const CString text = BstrCopy(SysAllocStringLen(OLESTR("a\0b"), 3));
    EXPECT_EQ(text.GetLength(), 3);
    EXPECT_EQ(text.GetAt(2), 'b');
}

TEST(BstrCopy, UndoesStringCopy) {
    for (const char* text : {"", "a", "库存", "a long text that needs more room than a short one: 库存"}) {
        EXPECT_STREQ(BstrCopy(StringCopy(text)), text);
    }
}

TEST(StringToSysString, ConvertsAGivenLength) {
    const struct {
        const char* label;
        const char* text;
        long length;
        Wide result;
    } kRows[] = {
        {"to the terminator", "abc", -1, OLESTR("abc")},
        {"any negative length", "abc", -2, OLESTR("abc")},
        {"a part", "abc", 2, OLESTR("ab")},
        {"nothing", "abc", 0, OLESTR("")},
        {"Chinese by bytes", "库存", 2, OLESTR("\u5E93")},
        {"half a character at the end is nobody's", "库存", 3, OLESTR("\u5E93?")},
        {"half a character alone", "库存", 1, OLESTR("?")},
        {"Chinese to the terminator", "库存", -1, OLESTR("\u5E93\u5B58")},
        {"zero characters are kept", "a\0b", 3, Wide(OLESTR("a\0b"), 3)},
        {"empty", "", -1, OLESTR("")},
        {"null", nullptr, -1, OLESTR("")},
        {"null with a length", nullptr, 5, OLESTR("")},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        long length = 999;
        EXPECT_EQ(Owned(StringToSysString(row.text, row.length, &length)).Text(), row.result);
        EXPECT_EQ(length, static_cast<long>(row.result.size())) << "the terminator is not counted";
        EXPECT_EQ(Owned(StringToSysString(row.text, row.length, nullptr)).Text(), row.result);
    }
}

TEST(SysStringToString, ConvertsAGivenLength) {
    const struct {
        const char* label;
        const OLECHAR* text;
        long length;
        std::string result;
    } kRows[] = {
        {"to the terminator", OLESTR("abc"), -1, "abc"},
        {"any negative length", OLESTR("abc"), -9, "abc"},
        {"a part", OLESTR("abc"), 2, "ab"},
        {"nothing", OLESTR("abc"), 0, ""},
        {"Chinese by units", OLESTR("\u5E93\u5B58"), 1, "库"},
        {"Chinese to the terminator", OLESTR("\u5E93\u5B58"), -1, "库存"},
        {"zero characters are kept", OLESTR("a\0b"), 3, std::string("a\0b", 3)},
        {"empty", OLESTR(""), -1, ""},
        {"null", nullptr, -1, ""},
        {"null with a length", nullptr, 5, ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const auto units = static_cast<UINT>(row.length > 0 ? row.length : 4);
        const Owned text(row.text == nullptr ? nullptr
                         : row.length > 0    ? SysAllocStringLen(row.text, units)
                                             : SysAllocString(row.text));
        long length = 999;
        char* converted = SysStringToString(text.Get(), row.length, &length);
        ASSERT_NE(converted, nullptr);
        EXPECT_EQ(std::string(converted, static_cast<std::size_t>(length)), row.result);
        EXPECT_EQ(converted[length], '\0');
        std::free(converted);

        converted = SysStringToString(text.Get(), row.length, nullptr);
        EXPECT_STREQ(converted, row.result.c_str());
        std::free(converted);
    }
}

}  // namespace
