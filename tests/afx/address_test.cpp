#include <afx.h>
#include <gtest/gtest.h>
#include <oleauto.h>

#include <cstring>
#include <vector>

namespace {

void* const kNowhere = reinterpret_cast<void*>(0x10);

TEST(ValidAddress, NeedsReadableMemory) {
    int number = 0;
    EXPECT_TRUE(AfxIsValidAddress(&number, sizeof(number)));
    EXPECT_TRUE(AfxIsValidAddress(&number, sizeof(number), FALSE));
    EXPECT_FALSE(AfxIsValidAddress(nullptr, 1));
    EXPECT_FALSE(AfxIsValidAddress(nullptr, 0));
    EXPECT_FALSE(AfxIsValidAddress(kNowhere, 4));
    EXPECT_FALSE(AfxIsValidAddress(kNowhere, 4, FALSE));
}

TEST(ValidAddress, TellsReadOnlyMemoryFromWritable) {
    EXPECT_TRUE(AfxIsValidAddress("constant", 4, FALSE));
    EXPECT_FALSE(AfxIsValidAddress("constant", 4, TRUE));
}

TEST(ValidString, ReadsToTheEndOrTheLength) {
    EXPECT_TRUE(AfxIsValidString("stock"));
    EXPECT_TRUE(AfxIsValidString("stock", 2));
    EXPECT_TRUE(AfxIsValidString("stock", 5000)) << "the text ends first";
    EXPECT_TRUE(AfxIsValidString(OLESTR("stock")));
    EXPECT_FALSE(AfxIsValidString(static_cast<LPCSTR>(nullptr)));
    EXPECT_FALSE(AfxIsValidString(static_cast<LPCWSTR>(nullptr)));
    EXPECT_FALSE(AfxIsValidString(static_cast<LPCSTR>(kNowhere)));
    EXPECT_FALSE(AfxIsValidString(static_cast<LPCWSTR>(kNowhere)));
    std::vector<char> text(100000, 'x');
    text.back() = '\0';
    EXPECT_TRUE(AfxIsValidString(text.data()));
}

}  // namespace
