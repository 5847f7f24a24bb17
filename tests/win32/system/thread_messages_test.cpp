#include <atomic>
#include <thread>
#include <vector>

#include "tests/win32/system/support.h"
#include "tkwin32/thread_messages.h"

using namespace tk::test;

namespace {

constexpr DWORD kNoSuchThread = 0x7FFFFFFF;

/// Every test has a thread of its own, hence a queue of its own.
template <typename Work>
void OnFreshThread(Work work) {
    std::thread(work).join();
}

bool Peek(MSG* message, UINT remove = PM_REMOVE, UINT first = 0, UINT last = 0) {
    return PeekMessage(message, nullptr, first, last, remove) != FALSE;
}

TEST(ThreadMessages, AThreadWithoutAQueueGetsNone) {
    SetLastError(0);
    EXPECT_FALSE(PostThreadMessage(kNoSuchThread, WM_USER, 0, 0));
    EXPECT_EQ(GetLastError(), 1444u);
    OnFreshThread([] {
        EXPECT_FALSE(PostThreadMessage(GetCurrentThreadId(), WM_USER, 0, 0)) << "it has not looked yet";
        MSG message;
        EXPECT_FALSE(Peek(&message, PM_NOREMOVE));
        EXPECT_TRUE(PostThreadMessage(GetCurrentThreadId(), WM_USER, 0, 0));
    });
}

TEST(ThreadMessages, TheQueueEndsWithItsThread) {
    DWORD id = 0;
    OnFreshThread([&] {
        MSG message;
        Peek(&message);
        id = GetCurrentThreadId();
        EXPECT_TRUE(PostThreadMessage(id, WM_USER, 0, 0));
    });
    EXPECT_FALSE(PostThreadMessage(id, WM_USER, 0, 0));
    EXPECT_EQ(GetLastError(), 1444u);
}

TEST(ThreadMessages, ArriveInOrderWithWhatTheyCarry) {
    OnFreshThread([] {
        MSG message;
        Peek(&message);
        const DWORD before = GetTickCount();
        EXPECT_TRUE(PostThreadMessage(GetCurrentThreadId(), WM_USER + 200, 1, -2));
        EXPECT_TRUE(PostThreadMessage(GetCurrentThreadId(), WM_USER + 201, ~WPARAM{0}, 4));
        ASSERT_TRUE(Peek(&message, PM_NOREMOVE));
        EXPECT_EQ(message.message, 1224u);
        ASSERT_TRUE(Peek(&message));
        EXPECT_EQ(message.hwnd, nullptr);
        EXPECT_EQ(message.message, 1224u);
        EXPECT_EQ(message.wParam, 1u);
        EXPECT_EQ(message.lParam, -2);
        EXPECT_LT(message.time - before, 60000u);
        EXPECT_EQ(message.pt.x, 0);
        ASSERT_EQ(GetMessage(&message, nullptr, 0, 0), TRUE);
        EXPECT_EQ(message.message, 1225u);
        EXPECT_EQ(message.wParam, ~WPARAM{0});
        EXPECT_FALSE(Peek(&message));
    });
}

TEST(ThreadMessages, AFilterLeavesTheOthers) {
    OnFreshThread([] {
        MSG message;
        Peek(&message);
        for (const UINT number : {WM_USER, WM_USER + 1, WM_USER + 2})
            PostThreadMessage(GetCurrentThreadId(), number, 0, 0);
        ASSERT_TRUE(Peek(&message, PM_REMOVE, WM_USER + 1, WM_USER + 1));
        EXPECT_EQ(message.message, WM_USER + 1);
        EXPECT_FALSE(Peek(&message, PM_REMOVE, WM_USER + 1, WM_USER + 1));
        EXPECT_FALSE(Peek(&message, PM_REMOVE, WM_USER + 3, WM_USER + 9));
        ASSERT_EQ(GetMessage(&message, nullptr, WM_USER + 1, WM_USER + 9), TRUE);
        EXPECT_EQ(message.message, WM_USER + 2);
        ASSERT_TRUE(Peek(&message));
        EXPECT_EQ(message.message, WM_USER);
    });
}

TEST(ThreadMessages, QuitComesLastAndEndsTheLoop) {
    OnFreshThread([] {
        MSG message;
        PostQuitMessage(7);
        PostThreadMessage(GetCurrentThreadId(), WM_USER, 0, 0);
        ASSERT_EQ(GetMessage(&message, nullptr, 0, 0), TRUE);
        EXPECT_EQ(message.message, WM_USER);
        ASSERT_TRUE(Peek(&message, PM_NOREMOVE, WM_USER, WM_USER)) << "no filter keeps it back";
        EXPECT_EQ(GetMessage(&message, nullptr, WM_USER, WM_USER), FALSE);
        EXPECT_EQ(message.message, WM_QUIT);
        EXPECT_EQ(message.wParam, 7u);
        EXPECT_FALSE(Peek(&message));
        PostThreadMessage(GetCurrentThreadId(), WM_QUIT, 8, 0);
        EXPECT_EQ(GetMessage(&message, nullptr, WM_USER, WM_USER), FALSE);
        EXPECT_EQ(message.wParam, 8u);
    });
}

TEST(ThreadMessages, AFullQueueTakesNoMore) {
    OnFreshThread([] {
        MSG message;
        Peek(&message);
        for (int i = 0; i < 10000; ++i)
            ASSERT_TRUE(PostThreadMessage(GetCurrentThreadId(), WM_USER, i, 0));
        EXPECT_FALSE(PostThreadMessage(GetCurrentThreadId(), WM_USER, 0, 0));
        EXPECT_EQ(GetLastError(), 1816u);
        ASSERT_TRUE(Peek(&message));
        EXPECT_EQ(message.wParam, 0u);
        EXPECT_TRUE(PostThreadMessage(GetCurrentThreadId(), WM_USER, 0, 0));
    });
}

TEST(ThreadMessages, WindowsHaveNone) {
    OnFreshThread([] {
        MSG message;
        const HWND window = reinterpret_cast<HWND>(static_cast<LONG_PTR>(0x1234));
        EXPECT_EQ(GetMessage(&message, window, 0, 0), -1);
        EXPECT_EQ(GetLastError(), 1400u);
        EXPECT_FALSE(PeekMessage(&message, window, 0, 0, PM_REMOVE));
        EXPECT_EQ(GetMessage(nullptr, nullptr, 0, 0), -1);
        EXPECT_EQ(GetLastError(), 998u);
        EXPECT_FALSE(PeekMessage(nullptr, nullptr, 0, 0, PM_REMOVE));
        EXPECT_FALSE(PeekMessage(&message, reinterpret_cast<HWND>(static_cast<LONG_PTR>(-1)), 0, 0, PM_REMOVE));
        PostThreadMessage(GetCurrentThreadId(), WM_USER, 0, 0);
        EXPECT_TRUE(PeekMessage(&message, reinterpret_cast<HWND>(static_cast<LONG_PTR>(-1)), 0, 0, PM_REMOVE));
    });
}

TEST(ThreadMessages, AWaitingThreadWakesForEachOfManyPosters) {
    constexpr int kPosters = 4;
    constexpr int kEach = 500;
    std::atomic<DWORD> reader = 0;
    std::vector<int> last(kPosters, -1);
    std::thread reading([&] {
        MSG message;
        Peek(&message, PM_NOREMOVE);
        reader = GetCurrentThreadId();
        for (int i = 0; i < kPosters * kEach; ++i) {
            ASSERT_EQ(GetMessage(&message, nullptr, 0, 0), TRUE);
            EXPECT_EQ(message.lParam, ++last[message.wParam]) << "each poster's messages stay in order";
        }
    });
    std::vector<std::thread> posters;
    for (int poster = 0; poster < kPosters; ++poster) {
        posters.emplace_back([&, poster] {
            while (reader == 0)
                std::this_thread::yield();
            for (int i = 0; i < kEach; ++i)
                EXPECT_TRUE(PostThreadMessage(reader, WM_USER, poster, i));
        });
    }
    for (auto& poster : posters)
        poster.join();
    reading.join();
    for (const int number : last)
        EXPECT_EQ(number, kEach - 1);
}

}  // namespace
