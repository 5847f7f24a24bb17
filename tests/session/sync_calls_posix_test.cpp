// What the events, semaphores and timers ask of the platform, call by call, and what they make of every answer: this
// program answers in the platform's place.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/noted_calls.h"
#include "tkkernel/sync.h"
#include "tkkernel/util.h"

namespace {

using testing::ElementsAre;

HANDLE Handle(LONG_PTR number) {
    return reinterpret_cast<HANDLE>(number);
}
long long Number(HANDLE handle) {
    return reinterpret_cast<LONG_PTR>(handle);
}

/// An answer, and the last error code it leaves behind.
template <typename Result>
struct Answer {
    Result result;
    DWORD code = 0;
};

/// The answers, and the questions in order.
struct Platform : tk::test::NotedCalls {
    Answer<HANDLE> created{Handle(8)};
    Answer<HANDLE> opened{Handle(12)};
    Answer<BOOL> done{TRUE};  // set, reset, released, stopped, closed
    Answer<DWORD> waited{WAIT_OBJECT_0};
    Answer<BOOL> read{TRUE};       // a date as a number
    Answer<BOOL> converted{TRUE};  // local time
    Answer<BOOL> timed{TRUE};
};
Platform* platform = nullptr;

template <typename Result>
Result Give(const Answer<Result>& answer) {
    SetLastError(answer.code);
    return answer.result;
}

const char* Named(const char* name) {
    return name != nullptr ? name : "(null)";
}

}  // namespace

HANDLE CreateEventA(LPSECURITY_ATTRIBUTES security, BOOL manual, BOOL signalled, LPCSTR name) {
    platform->Note("create event %d %d %d %s", security != nullptr, manual, signalled, Named(name));
    return Give(platform->created);
}
HANDLE OpenEventA(DWORD access, BOOL inherit, LPCSTR name) {
    platform->Note("open event %X %d %s", access, inherit, Named(name));
    return Give(platform->opened);
}
BOOL SetEvent(HANDLE event) {
    platform->Note("set %lld", Number(event));
    return Give(platform->done);
}
BOOL ResetEvent(HANDLE event) {
    platform->Note("reset %lld", Number(event));
    return Give(platform->done);
}
HANDLE CreateSemaphoreA(LPSECURITY_ATTRIBUTES security, LONG count, LONG most, LPCSTR name) {
    platform->Note("create semaphore %d %d %d %s", security != nullptr, count, most, Named(name));
    return Give(platform->created);
}
HANDLE OpenSemaphoreA(DWORD access, BOOL inherit, LPCSTR name) {
    platform->Note("open semaphore %X %d %s", access, inherit, Named(name));
    return Give(platform->opened);
}
BOOL ReleaseSemaphore(HANDLE semaphore, LONG count, LPLONG before) {
    platform->Note("release %lld %d %d", Number(semaphore), count, before != nullptr);
    return Give(platform->done);
}
HANDLE CreateWaitableTimerA(LPSECURITY_ATTRIBUTES security, BOOL manual, LPCSTR name) {
    platform->Note("create timer %d %d '%s'", security != nullptr, manual, Named(name));
    return Give(platform->created);
}
BOOL SystemTimeToFileTime(const SYSTEMTIME* parts, FILETIME* number) {
    platform->Note("read %d-%d-%d %d:%d:%d.%d", parts->wYear, parts->wMonth, parts->wDay, parts->wHour, parts->wMinute,
                   parts->wSecond, parts->wMilliseconds);
    *number = {0xFFFFFFF0, 7};
    return Give(platform->read);
}
BOOL LocalFileTimeToFileTime(const FILETIME* local, FILETIME* universal) {
    platform->Note("convert %X %X", local->dwHighDateTime, local->dwLowDateTime);
    *universal = {0xFFFFFFF8, 5};
    return Give(platform->converted);
}
BOOL SetWaitableTimer(HANDLE timer, const LARGE_INTEGER* due, LONG period, PTIMERAPCROUTINE routine, LPVOID argument,
                      BOOL resume) {
    platform->Note("time %lld at %llX every %d, %d %d %d", Number(timer),
                   static_cast<unsigned long long>(due->QuadPart), period, routine != nullptr, argument != nullptr,
                   resume);
    return Give(platform->timed);
}
BOOL CancelWaitableTimer(HANDLE timer) {
    platform->Note("stop %lld", Number(timer));
    return Give(platform->done);
}
DWORD WaitForSingleObject(HANDLE object, DWORD timeout) {
    platform->Note("wait %lld %u", Number(object), timeout);
    return Give(platform->waited);
}
BOOL CloseHandle(HANDLE object) {
    platform->Note("close %lld", Number(object));
    return Give(platform->done);
}

namespace {

std::string TextOf(DWORD code) {
    return std::string(LookupErrorText(code));
}

/// What no handle is.
const HANDLE kNoHandles[] = {nullptr, INVALID_HANDLE_VALUE};

class SyncCalls : public testing::Test {
protected:
    SyncCalls() { platform = &platform_; }
    ~SyncCalls() override { platform = nullptr; }

    /// What was asked since the last time.
    std::vector<std::string> Asked() { return platform_.Take(); }

    Platform platform_;
};

using EventCalls = SyncCalls;
using SemaphoreCalls = SyncCalls;
using TimerCalls = SyncCalls;

TEST_F(EventCalls, MakeANewOneWithOneCall) {
    CTEvent event;
    EXPECT_TRUE(event.OpenEventA("库存"));
    EXPECT_THAT(Asked(), ElementsAre("create event 0 0 0 库存"));
    EXPECT_TRUE(event.OpenEventA(nullptr));
    EXPECT_THAT(Asked(), ElementsAre("create event 0 0 0 (null)")) << "the handle from before is not closed";
    platform_.created.code = 5;
    EXPECT_TRUE(event.OpenEventA("a")) << "183 is the only code that counts";
    EXPECT_THAT(Asked(), ElementsAre("create event 0 0 0 a"));
}

TEST_F(EventCalls, OpenOneThatIsThereWithAllRightsAndInheritable) {
    platform_.created.code = 183;
    CTEvent event;
    EXPECT_TRUE(event.OpenEventA("a"));
    EXPECT_THAT(Asked(), ElementsAre("create event 0 0 0 a", "open event 1F0003 1 a")) << "and nothing is closed";
    event.SetEvent();
    EXPECT_THAT(Asked(), ElementsAre("set 12"));
}

TEST_F(EventCalls, OpenWhatCannotBeCreated) {
    for (const HANDLE none : kNoHandles) {
        platform_.created = {none, 5};
        platform_.opened = {Handle(12), 5};
        CTEvent event;
        Asked();
        EXPECT_TRUE(event.OpenEventA("a")) << "the code does not count here";
        EXPECT_THAT(Asked(), ElementsAre("create event 0 0 0 a", "open event 1F0003 1 a"));
        EXPECT_STREQ(event.GetLastErrorString(), "");
        for (const HANDLE neither : kNoHandles) {
            platform_.opened = {neither, 6};
            EXPECT_FALSE(event.OpenEventA("b"));
            EXPECT_STREQ(event.GetLastErrorString(), TextOf(6).c_str()) << "why it could not be opened";
            EXPECT_STREQ(event.GetEventName(), "b");
            event.CloseEvent();
            EXPECT_EQ(platform_.calls.back(), "close " + std::to_string(Number(neither))) << "the handle is that one";
        }
        platform_.opened = {Handle(12)};
        EXPECT_TRUE(event.OpenEventA("b"));
        EXPECT_STREQ(event.GetLastErrorString(), TextOf(6).c_str()) << "what succeeds leaves the text alone";
    }
}

TEST_F(EventCalls, SetAndResetWithTheReasonOfAFailure) {
    CTEvent event;
    ASSERT_TRUE(event.OpenEventA("a"));
    EXPECT_TRUE(event.SetEvent());
    EXPECT_TRUE(event.ResetEvent());
    EXPECT_THAT(Asked(), ElementsAre("create event 0 0 0 a", "set 8", "reset 8"));
    EXPECT_STREQ(event.GetLastErrorString(), "");
    platform_.done = {FALSE, 5};
    EXPECT_FALSE(event.SetEvent());
    EXPECT_STREQ(event.GetLastErrorString(), TextOf(5).c_str());
    platform_.done.code = 6;
    EXPECT_FALSE(event.ResetEvent());
    EXPECT_STREQ(event.GetLastErrorString(), TextOf(6).c_str());
    platform_.done = {TRUE};
    EXPECT_TRUE(event.SetEvent());
    EXPECT_TRUE(event.ResetEvent());
    EXPECT_TRUE(event.OpenEventA("a"));
    EXPECT_STREQ(event.GetLastErrorString(), TextOf(6).c_str()) << "what succeeds leaves the text alone";
}

TEST_F(EventCalls, PassEveryWaitButOneThatRanOut) {
    static constexpr struct {
        DWORD result;
        int passed;
    } kRows[] = {{WAIT_OBJECT_0, TRUE}, {WAIT_ABANDONED, TRUE}, {WAIT_FAILED, TRUE}, {WAIT_TIMEOUT, FALSE}};
    CTEvent event;
    ASSERT_TRUE(event.OpenEventA("a"));
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.result);
        platform_.waited.result = row.result;
        EXPECT_EQ(event.WaitForEvent(0), row.passed);
        EXPECT_EQ(platform_.calls.back(), "wait 8 0");
    }
    EXPECT_STREQ(event.GetLastErrorString(), "");
}

TEST_F(SyncCalls, WaitsAreAsLongAsTheyAreSaidToBe) {
    CTEvent event;
    CTSemaphore semaphore;
    platform_.waited.result = WAIT_TIMEOUT;
    event.WaitForEvent(0x80000001);
    event.WaitForEvent(INFINITE);
    semaphore.WaitSemaphore(250);
    EXPECT_THAT(Asked(), ElementsAre("wait 0 2147483649", "wait 0 4294967295", "wait 0 250"));
    // Longer than 32 bits can say: not short.
    event.WaitForEvent(0x100000000);
    semaphore.WaitSemaphore(0x100000001);
    EXPECT_THAT(Asked(), ElementsAre("wait 0 4294967295", "wait 0 4294967295"));
}

TEST_F(EventCalls, CloseAHandleAndKeepIt) {
    {
        CTEvent event;
        ASSERT_TRUE(event.OpenEventA("a"));
        platform_.done = {TRUE};
        EXPECT_TRUE(event.CloseEvent());
        platform_.done = {FALSE, 6};
        EXPECT_FALSE(event.CloseEvent());
        EXPECT_STREQ(event.GetLastErrorString(), "") << "closing sets no text";
        EXPECT_THAT(Asked(), ElementsAre("create event 0 0 0 a", "close 8", "close 8"));
    }
    EXPECT_THAT(Asked(), ElementsAre("close 8")) << "and at its end once more";
}

TEST_F(EventCalls, CopyTheTextsAndTheHandleAsTheyAre) {
    {
        CTEvent event;
        ASSERT_TRUE(event.OpenEventA("a"));
        platform_.done = {FALSE, 5};
        EXPECT_FALSE(event.SetEvent());
        Asked();
        const CTEvent copied(event);
        CTEvent assigned;
        platform_.created.result = Handle(16);
        ASSERT_TRUE(assigned.OpenEventA("b"));
        assigned = event;
        EXPECT_THAT(Asked(), ElementsAre("create event 0 0 0 b")) << "neither duplicated nor closed";
        for (CTEvent other : {copied, assigned}) {
            EXPECT_STREQ(other.GetEventName(), "a");
            EXPECT_STREQ(other.GetLastErrorString(), TextOf(5).c_str());
            other.ResetEvent();
            EXPECT_EQ(platform_.calls.back(), "reset 8");
        }
        Asked();
    }
    EXPECT_THAT(Asked(), ElementsAre("close 8", "close 8", "close 8"));
}

TEST_F(SemaphoreCalls, OpenFirstWithAllRightsAndNotInheritable) {
    CTSemaphore semaphore;
    EXPECT_TRUE(semaphore.OpenSemaphoreA("闸门"));
    EXPECT_THAT(Asked(), ElementsAre("open semaphore 1F0003 0 闸门"));
    platform_.opened.code = 183;
    EXPECT_TRUE(semaphore.OpenSemaphoreA(nullptr)) << "2 is the only code that counts";
    EXPECT_THAT(Asked(), ElementsAre("open semaphore 1F0003 0 (null)")) << "the handle from before is not closed";
    EXPECT_STREQ(semaphore.GetEventName(), "");
}

TEST_F(SemaphoreCalls, CreateWhatIsNotThere) {
    for (const HANDLE none : kNoHandles) {
        platform_.opened = {none, 5};
        platform_.created = {Handle(8), 183};
        CTSemaphore semaphore;
        EXPECT_TRUE(semaphore.OpenSemaphoreA("a")) << "the code does not count here";
        EXPECT_THAT(Asked(), ElementsAre("open semaphore 1F0003 0 a", "create semaphore 0 0 2147483647 a"));
        EXPECT_STREQ(semaphore.GetLastErrorString(), "");
        for (const HANDLE neither : kNoHandles) {
            platform_.created = {neither, 6};
            EXPECT_FALSE(semaphore.OpenSemaphoreA("b"));
            EXPECT_STREQ(semaphore.GetLastErrorString(), TextOf(6).c_str()) << "why it could not be created";
            EXPECT_STREQ(semaphore.GetEventName(), "b");
        }
        Asked();
    }
}

TEST_F(SemaphoreCalls, CreateWhatIsThereWhenACodeIsLeftOver) {
    platform_.opened.code = 2;
    CTSemaphore semaphore;
    EXPECT_TRUE(semaphore.OpenSemaphoreA("a"));
    semaphore.SetSemaphore();
    EXPECT_THAT(Asked(), ElementsAre("open semaphore 1F0003 0 a", "create semaphore 0 0 2147483647 a", "release 8 1 0"))
        << "the first handle is not closed";
}

TEST_F(SemaphoreCalls, PutBackWhatAWaitTook) {
    static constexpr struct {
        DWORD waited;
        BOOL released;
        int passed;
    } kRows[] = {
        {WAIT_OBJECT_0, TRUE, TRUE},    {WAIT_OBJECT_0, FALSE, FALSE}, {WAIT_ABANDONED, TRUE, TRUE},
        {WAIT_ABANDONED, FALSE, FALSE}, {WAIT_FAILED, TRUE, TRUE},     {WAIT_FAILED, FALSE, FALSE},
    };
    CTSemaphore semaphore;
    ASSERT_TRUE(semaphore.OpenSemaphoreA("a"));
    Asked();
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.waited);
        platform_.waited.result = row.waited;
        platform_.done = {row.released, 6};
        EXPECT_EQ(semaphore.WaitSemaphore(7), row.passed);
        EXPECT_THAT(Asked(), ElementsAre("wait 12 7", "release 12 1 0"));
    }
    platform_.waited.result = WAIT_TIMEOUT;
    platform_.done = {TRUE};
    EXPECT_FALSE(semaphore.WaitSemaphore(7));
    EXPECT_THAT(Asked(), ElementsAre("wait 12 7")) << "nothing was taken";
    EXPECT_STREQ(semaphore.GetLastErrorString(), "");
}

TEST_F(SemaphoreCalls, SetAndCloseWithThePlatformsResult) {
    CTSemaphore semaphore;
    ASSERT_TRUE(semaphore.OpenSemaphoreA("a"));
    for (const BOOL result : {TRUE, FALSE}) {
        platform_.done = {result, 6};
        EXPECT_EQ(semaphore.SetSemaphore(), result);
        EXPECT_EQ(semaphore.CloseSemaphore(), result);
    }
    EXPECT_THAT(Asked(),
                ElementsAre("open semaphore 1F0003 0 a", "release 12 1 0", "close 12", "release 12 1 0", "close 12"));
    EXPECT_STREQ(semaphore.GetLastErrorString(), "") << "neither sets a text";
}

TEST_F(SemaphoreCalls, CopyTheTextsAndTheHandleAsTheyAre) {
    {
        CTSemaphore semaphore;
        platform_.opened = {nullptr, 5};
        platform_.created = {nullptr, 5};
        EXPECT_FALSE(semaphore.OpenSemaphoreA("a"));
        platform_.created = {Handle(8)};
        EXPECT_TRUE(semaphore.OpenSemaphoreA("a"));
        Asked();
        const CTSemaphore copied(semaphore);
        CTSemaphore assigned;
        platform_.opened = {Handle(16)};
        ASSERT_TRUE(assigned.OpenSemaphoreA("b"));
        assigned = semaphore;
        EXPECT_THAT(Asked(), ElementsAre("open semaphore 1F0003 0 b"));
        for (CTSemaphore other : {copied, assigned}) {
            EXPECT_STREQ(other.GetEventName(), "a");
            EXPECT_STREQ(other.GetLastErrorString(), TextOf(5).c_str());
            other.SetSemaphore();
            EXPECT_EQ(platform_.calls.back(), "release 8 1 0");
        }
        Asked();
    }
    EXPECT_THAT(Asked(), ElementsAre()) << "a semaphore is left open by all of them";
}

TEST_F(TimerCalls, MakeConvertAndSet) {
    SYSTEMTIME when = {2003, 12, 3, 31, 23, 59, 58, 999};
    EXPECT_EQ(SetWaitForTimer(when, 1500, 1), Handle(8));
    EXPECT_THAT(Asked(), ElementsAre("create timer 0 1 ''", "read 2003-12-31 23:59:58.999", "convert 7 FFFFFFF0",
                                     "time 8 at 5FFFFFFF8 every 1500, 0 0 1"));
    platform_.timed.code = 50;
    EXPECT_EQ(SetWaitForTimer(when, 0, 0), Handle(8)) << "a machine that cannot be woken is no failure";
    EXPECT_EQ(Asked().back(), "time 8 at 5FFFFFFF8 every 0, 0 0 0");
}

TEST_F(TimerCalls, EndAtTheFirstFailureAndCloseNothing) {
    SYSTEMTIME when = {2003, 12, 3, 31, 23, 59, 58, 999};
    platform_.timed = {FALSE, 87};
    EXPECT_EQ(SetWaitForTimer(when, -1, 0), nullptr);
    EXPECT_EQ(GetLastError(), 87u);
    EXPECT_EQ(Asked().back(), "time 8 at 5FFFFFFF8 every -1, 0 0 0");
    platform_.converted = {FALSE, 87};
    EXPECT_EQ(SetWaitForTimer(when, 0, 0), nullptr);
    EXPECT_EQ(Asked().back(), "convert 7 FFFFFFF0");
    platform_.read = {FALSE, 87};
    EXPECT_EQ(SetWaitForTimer(when, 0, 0), nullptr);
    EXPECT_EQ(Asked().back(), "read 2003-12-31 23:59:58.999");
    platform_.created = {nullptr, 8};
    EXPECT_EQ(SetWaitForTimer(when, 0, 0), nullptr);
    EXPECT_THAT(Asked(), ElementsAre("create timer 0 1 ''"));
}

TEST_F(TimerCalls, RefuseAPeriodThatThePlatformCannotCount) {
    SYSTEMTIME when = {2003, 12, 3, 31, 23, 59, 58, 999};
    for (const long period : {0x80000000L, 0x100000000L, -0x80000001L}) {
        SetLastError(0);
        EXPECT_EQ(SetWaitForTimer(when, period, 0), nullptr);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    }
    EXPECT_THAT(Asked(), ElementsAre()) << "no timer is left behind";
    EXPECT_NE(SetWaitForTimer(when, 0x7FFFFFFF, 0), nullptr);
    EXPECT_EQ(Asked().back(), "time 8 at 5FFFFFFF8 every 2147483647, 0 0 0");
}

TEST_F(TimerCalls, StopATimerAndKeepItsHandle) {
    HANDLE timer = Handle(8);
    EXPECT_TRUE(KillWaitForTimer(timer));
    platform_.done = {FALSE, 6};
    EXPECT_FALSE(KillWaitForTimer(timer));
    EXPECT_EQ(timer, Handle(8));
    EXPECT_THAT(Asked(), ElementsAre("stop 8", "stop 8")) << "and close nothing";
}

}  // namespace
