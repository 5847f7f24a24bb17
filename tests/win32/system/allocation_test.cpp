#include <cstring>

#include "tests/win32/system/support.h"

TEST(LocalAlloc, ZeroesWhenAskedAndKeepsContentWhenResized) {
    auto* block = static_cast<char*>(LocalAlloc(LPTR, 16));
    ASSERT_NE(block, nullptr);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(block[i], 0);
    std::memcpy(block, "0123456789abcde", 16);
    block = static_cast<char*>(LocalReAlloc(block, 4096, LMEM_ZEROINIT));
    EXPECT_STREQ(block, "0123456789abcde");
    EXPECT_GE(LocalSize(block), 4096u);
    EXPECT_EQ(block[4095], 0);
    EXPECT_EQ(LocalFree(block), nullptr);
}

TEST(LocalAlloc, OfNothingStillHasAnAddress) {
    HLOCAL block = LocalAlloc(LMEM_FIXED, 0);
    EXPECT_NE(block, nullptr);
    LocalFree(block);
    EXPECT_EQ(LocalFree(nullptr), nullptr);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // these end the program for such a request
TEST(LocalAlloc, OfTooMuchIsAnErrorOfMemory) {
    volatile SIZE_T size = static_cast<SIZE_T>(1) << 62;
    SetLastError(0);
    EXPECT_EQ(LocalAlloc(LMEM_FIXED, size), nullptr);
    EXPECT_EQ(GetLastError(), 8u);
}
#endif

TEST(LocalAlloc, ResizesNoBlockThatIsNone) {
    SetLastError(0);
    EXPECT_EQ(LocalReAlloc(nullptr, 4, 0), nullptr);
    EXPECT_EQ(GetLastError(), 6u);
}

TEST(GlobalAlloc, LocksToTheSameBlockAndUnlocksWithoutAnError) {
    HGLOBAL handle = GlobalAlloc(GHND, 10);
    auto* bytes = static_cast<char*>(GlobalLock(handle));
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(bytes[9], 0);
    SetLastError(77);
    EXPECT_EQ(GlobalUnlock(handle), FALSE);
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_GE(GlobalSize(handle), 10u);
    EXPECT_EQ(GlobalFree(handle), nullptr);
}

TEST(CoTaskMem, GrowsAndFreesByResizingToNothing) {
    auto* text = static_cast<char*>(CoTaskMemAlloc(4));
    std::memcpy(text, "abc", 4);
    text = static_cast<char*>(CoTaskMemRealloc(text, 4000));
    EXPECT_STREQ(text, "abc");
    EXPECT_EQ(CoTaskMemRealloc(text, 0), nullptr);
    CoTaskMemFree(nullptr);
    void* fresh = CoTaskMemRealloc(nullptr, 0);
    EXPECT_NE(fresh, nullptr);
    CoTaskMemFree(fresh);
}
