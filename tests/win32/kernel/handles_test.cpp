#include <cstdint>
#include <set>

#include "tests/win32/kernel/support.h"

using namespace tk::test;

namespace {

using Handles = KernelObjects;

HANDLE Number(std::uintptr_t number) {
    return reinterpret_cast<HANDLE>(number);
}

}  // namespace

TEST_F(Handles, ThatNameNothingAreRefusedEverywhere) {
    HANDLE closed = CreateEvent(nullptr, TRUE, TRUE, nullptr);
    ASSERT_TRUE(CloseHandle(closed));
    const struct {
        const char* label;
        HANDLE handle;
    } kRows[] = {
        {"null", nullptr},
        {"invalid", INVALID_HANDLE_VALUE},
        {"this process", GetCurrentProcess()},
        {"this thread", Number(static_cast<std::uintptr_t>(-2))},
        {"closed", closed},
        {"small", Number(4)},
        {"odd", Number(0x100001)},
        {"never made", Number(0x7FFFFFFC)},
        {"beyond 31 bits", Number(0x123456789ABCu)},
        {"a pointer", &closed},
        {"a function", reinterpret_cast<HANDLE>(&CloseHandle)},
    };
    const auto refused = [](BOOL done) { return !done && GetLastError() == ERROR_INVALID_HANDLE; };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        SetLastError(0);
        EXPECT_TRUE(refused(SetEvent(row.handle)));
        SetLastError(0);
        EXPECT_TRUE(refused(ResetEvent(row.handle)));
        SetLastError(0);
        EXPECT_TRUE(refused(PulseEvent(row.handle)));
        SetLastError(0);
        EXPECT_TRUE(refused(ReleaseSemaphore(row.handle, 1, nullptr)));
        SetLastError(0);
        EXPECT_TRUE(refused(ReleaseMutex(row.handle)));
        SetLastError(0);
        EXPECT_TRUE(refused(CancelWaitableTimer(row.handle)));
        SetLastError(0);
        const LARGE_INTEGER due = {};
        EXPECT_TRUE(refused(SetWaitableTimer(row.handle, &due, 0, nullptr, nullptr, FALSE)));
        SetLastError(0);
        EXPECT_TRUE(refused(CloseHandle(row.handle)));
        DWORD flags = 0;
        SetLastError(0);
        EXPECT_TRUE(refused(GetHandleInformation(row.handle, &flags)));
        SetLastError(0);
        EXPECT_TRUE(refused(SetHandleInformation(row.handle, 1, 1)));
        HANDLE copy = nullptr;
        SetLastError(0);
        EXPECT_TRUE(refused(DuplicateHandle(GetCurrentProcess(), row.handle, GetCurrentProcess(), &copy, 0, FALSE,
                                            DUPLICATE_SAME_ACCESS)));
        SetLastError(0);
        EXPECT_EQ(WaitForSingleObject(row.handle, 0), WAIT_FAILED);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        const Handle good = CreateEvent(nullptr, TRUE, TRUE, nullptr);
        const HANDLE both[] = {good, row.handle};
        SetLastError(0);
        EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 0), WAIT_FAILED) << "one wrong handle is enough";
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    }
}

TEST_F(Handles, AreMultiplesOfFourThatFitALong) {
    for (int i = 0; i < 3000; ++i) {
        const Handle handle = AutoEvent();
        const auto number = reinterpret_cast<std::uintptr_t>(static_cast<HANDLE>(handle));
        ASSERT_NE(number, 0u);
        ASSERT_EQ(number & 3, 0u);
        ASSERT_LE(number, 0x7FFFFFFFu);
    }
}

TEST_F(Handles, AreNotFoundByNumbersThatLookAlike) {
    const Handle event = AutoEvent();
    const auto number = reinterpret_cast<std::uintptr_t>(static_cast<HANDLE>(event));
    for (const std::uintptr_t other : {number + 1, number + 2, number + 3, number | 0x80000000u,
                                       number | std::uintptr_t{1} << 32, number | std::uintptr_t{1} << 63}) {
        SetLastError(0);
        EXPECT_FALSE(SetEvent(Number(other))) << other;
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        EXPECT_FALSE(CloseHandle(Number(other)));
    }
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
}

TEST_F(Handles, AreNotGivenOutAgainSoon) {
    std::set<HANDLE> seen;
    for (int i = 0; i < 100'000; ++i) {
        const HANDLE handle = CreateEvent(nullptr, FALSE, FALSE, nullptr);
        ASSERT_TRUE(seen.insert(handle).second) << i;
        ASSERT_TRUE(CloseHandle(handle));
        ASSERT_FALSE(SetEvent(handle));
    }
}

TEST_F(Handles, OfAnotherKindAreRefused) {
    const Handle event = AutoEvent();
    const Handle semaphore = CreateSemaphore(nullptr, 0, 1, nullptr);
    const Handle mutex = CreateMutex(nullptr, FALSE, nullptr);
    const Handle timer = CreateWaitableTimer(nullptr, TRUE, nullptr);
    for (HANDLE handle : {static_cast<HANDLE>(semaphore), static_cast<HANDLE>(mutex), static_cast<HANDLE>(timer)}) {
        EXPECT_FALSE(SetEvent(handle));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    }
    EXPECT_FALSE(ReleaseSemaphore(event, 1, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(ReleaseMutex(event));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(CancelWaitableTimer(event));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(Handles, AreDuplicatedWithRightsAndFlags) {
    const Handle event = AutoEvent();
    HANDLE same = nullptr;
    HANDLE onlyWaits = nullptr;
    ASSERT_TRUE(
        DuplicateHandle(GetCurrentProcess(), event, GetCurrentProcess(), &same, 0, TRUE, DUPLICATE_SAME_ACCESS));
    ASSERT_TRUE(DuplicateHandle(GetCurrentProcess(), event, GetCurrentProcess(), &onlyWaits, SYNCHRONIZE, FALSE, 0));
    EXPECT_TRUE(SetEvent(same));
    EXPECT_EQ(WaitForSingleObject(onlyWaits, 0), WAIT_OBJECT_0) << "the same object";
    EXPECT_FALSE(SetEvent(onlyWaits));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    HANDLE more = nullptr;
    EXPECT_FALSE(
        DuplicateHandle(GetCurrentProcess(), onlyWaits, GetCurrentProcess(), &more, EVENT_ALL_ACCESS, FALSE, 0));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    DWORD flags = 77;
    EXPECT_TRUE(GetHandleInformation(same, &flags));
    EXPECT_EQ(flags, static_cast<DWORD>(HANDLE_FLAG_INHERIT));
    EXPECT_TRUE(GetHandleInformation(onlyWaits, &flags));
    EXPECT_EQ(flags, 0u);

    HANDLE moved = nullptr;
    ASSERT_TRUE(DuplicateHandle(GetCurrentProcess(), same, GetCurrentProcess(), &moved, 0, FALSE,
                                DUPLICATE_SAME_ACCESS | DUPLICATE_CLOSE_SOURCE));
    EXPECT_FALSE(SetEvent(same)) << "closed with the duplication";
    EXPECT_TRUE(SetEvent(moved));
    EXPECT_TRUE(CloseHandle(moved));
    EXPECT_FALSE(DuplicateHandle(GetCurrentProcess(), onlyWaits, GetCurrentProcess(), &more, EVENT_ALL_ACCESS, FALSE,
                                 DUPLICATE_CLOSE_SOURCE));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(CloseHandle(onlyWaits)) << "closed all the same";
    EXPECT_TRUE(SetEvent(event)) << "the object is still there";
    EXPECT_FALSE(DuplicateHandle(event, event, GetCurrentProcess(), &more, 0, FALSE, DUPLICATE_SAME_ACCESS));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE) << "no process";
}

TEST_F(Handles, ThatAreProtectedStayOpen) {
    const HANDLE event = CreateEvent(nullptr, FALSE, FALSE, nullptr);
    ASSERT_TRUE(SetHandleInformation(event, HANDLE_FLAG_PROTECT_FROM_CLOSE, HANDLE_FLAG_PROTECT_FROM_CLOSE));
    EXPECT_FALSE(CloseHandle(event));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_TRUE(SetEvent(event));
    EXPECT_FALSE(SetHandleInformation(event, 4, 4));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    ASSERT_TRUE(SetHandleInformation(event, HANDLE_FLAG_PROTECT_FROM_CLOSE, 0));
    EXPECT_TRUE(CloseHandle(event));
}

TEST_F(Handles, InheritWhatTheirAttributesSay) {
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, nullptr, TRUE};
    const Handle event = CreateEvent(&attributes, FALSE, FALSE, nullptr);
    DWORD flags = 0;
    EXPECT_TRUE(GetHandleInformation(event, &flags));
    EXPECT_EQ(flags, static_cast<DWORD>(HANDLE_FLAG_INHERIT));
}

TEST_F(Handles, MayBeClosedWhileOthersWorkOnThem) {
    for (const char* name : {static_cast<const char*>(nullptr), "concurrent"}) {
        SCOPED_TRACE(name == nullptr ? "unnamed" : name);
        for (int round = 0; round < 40; ++round) {
            const HANDLE event = CreateEventA(nullptr, FALSE, FALSE, name);
            ASSERT_NE(event, nullptr);
            std::atomic<int> closed{0};
            std::vector<std::thread> threads;
            for (int i = 0; i < 3; ++i) {
                threads.emplace_back([&] {
                    while (SetEvent(event) && WaitForSingleObject(event, 0) != WAIT_FAILED) {
                        if (closed.load() > 1) ADD_FAILURE() << "closed twice";
                    }
                });
            }
            for (int i = 0; i < 2; ++i) {
                threads.emplace_back([&] {
                    if (CloseHandle(event)) ++closed;
                });
            }
            for (std::thread& thread : threads)
                thread.join();
            ASSERT_EQ(closed.load(), 1);
        }
    }
}

TEST_F(Handles, ByTheHundredThousandRunOutCleanly) {
    std::vector<HANDLE> handles;
    for (HANDLE handle = CreateEvent(nullptr, FALSE, FALSE, nullptr); handle != nullptr;
         handle = CreateEvent(nullptr, FALSE, FALSE, nullptr)) {
        handles.push_back(handle);
        ASSERT_LE(handles.size(), 300'000u);
    }
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_GE(handles.size(), 200'000u);
    for (HANDLE handle : handles)
        ASSERT_TRUE(CloseHandle(handle));
    EXPECT_TRUE(Handle(AutoEvent()) != nullptr) << "there is room again";
}
