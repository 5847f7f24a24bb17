#include <dlfcn.h>
#include <process.h>
#include <pwd.h>
#include <sys/syscall.h>
#include <sys/utsname.h>
#include <sys/wait.h>

#include <atomic>
#include <cerrno>
#include <cstring>

#include "tests/win32/system/support.h"

using namespace tk::test;

namespace {

/// What this machine is called; null: what it is.
const char* nodeName = nullptr;

}  // namespace

/// In front of the system's.
__attribute__((visibility("default"))) int uname(utsname* names) noexcept {
    static const auto own = reinterpret_cast<int (*)(utsname*)>(dlsym(RTLD_NEXT, "uname"));
    const int result = own(names);
    if (nodeName != nullptr) std::strcpy(names->nodename, nodeName);
    return result;
}

TEST(LastError, BelongsToTheThread) {
    SetLastError(5);
    EXPECT_EQ(OnThread([] {
                  const DWORD fresh = GetLastError();
                  SetLastError(6);
                  return fresh;
              }),
              0u);
    EXPECT_EQ(GetLastError(), 5u);
}

TEST(Process, NumbersAreTheKernels) {
    EXPECT_EQ(GetCurrentProcessId(), static_cast<DWORD>(getpid()));
    EXPECT_EQ(_getpid(), getpid());
    EXPECT_EQ(GetCurrentThreadId(), static_cast<DWORD>(syscall(SYS_gettid)));
    const DWORD other = OnThread([] { return GetCurrentThreadId(); });
    EXPECT_NE(other, GetCurrentThreadId());
}

TEST(Process, ThreadNumberIsNewInAForkedChild) {
    GetCurrentThreadId();
    const pid_t child = fork();
    if (child == 0) _exit(GetCurrentThreadId() == static_cast<DWORD>(syscall(SYS_gettid)) ? 0 : 1);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(Process, IsOfTheNtFamily) {
    EXPECT_LT(GetVersion(), 0x80000000u);
    EXPECT_GE(LOBYTE(LOWORD(GetVersion())), 5);
}

TEST(Names, OfTheComputerFitOrTellTheirSize) {
    char own[256] = {};
    gethostname(own, sizeof own - 1);
    const std::string full = own;
    const std::string expected = full.substr(0, full.find('.'));
    char name[256] = {};
    DWORD size = sizeof name;
    ASSERT_TRUE(GetComputerName(name, &size));
    EXPECT_EQ(std::string(name), expected);
    EXPECT_EQ(size, expected.size());
    size = static_cast<DWORD>(expected.size());
    EXPECT_FALSE(GetComputerName(name, &size));
    EXPECT_EQ(GetLastError(), 111u);
    EXPECT_EQ(size, expected.size() + 1);
    EXPECT_TRUE(GetComputerName(name, &size));
    size = 0;
    EXPECT_FALSE(GetComputerName(nullptr, &size));
}

TEST(Names, OfTheComputerAreItsOwnWithoutTheDomain) {
    const struct {
        const char* label;
        const char* node;
        const char* name;
    } kRows[] = {
        {"no domain", "stock1", "stock1"},
        {"a domain", "stock1.example.com", "stock1"},
        {"Chinese", "\xE5\xBA\x93\xE5\xAD\x98.local", "库存"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        nodeName = row.node;
        char name[16] = {};
        DWORD size = sizeof name;
        EXPECT_TRUE(GetComputerName(name, &size));
        EXPECT_STREQ(name, row.name);
        EXPECT_EQ(size, std::strlen(row.name));
        std::memset(name, 'x', sizeof name);
        size = static_cast<DWORD>(std::strlen(row.name));
        EXPECT_FALSE(GetComputerName(name, &size));
        EXPECT_EQ(name[0], 'x') << "a name that does not fit is not cut";
        nodeName = nullptr;
    }
}

TEST(Names, OfTheUserFitOrTellTheirSize) {
    const std::string expected = getpwuid(geteuid())->pw_name;
    char name[256] = {};
    DWORD size = sizeof name;
    ASSERT_TRUE(GetUserName(name, &size));
    EXPECT_EQ(std::string(name), expected);
    EXPECT_EQ(size, expected.size() + 1) << "with the terminator";
    size = static_cast<DWORD>(expected.size());
    EXPECT_FALSE(GetUserName(name, &size));
    EXPECT_EQ(GetLastError(), 122u);
    EXPECT_EQ(size, expected.size() + 1);
    EXPECT_TRUE(GetUserName(name, &size)) << "that is enough";
}

TEST(MulDiv, RoundsTheWholeProduct) {
    static const struct {
        int number, numerator, denominator, result;
    } kRows[] = {
        {7, 1, 2, 4},
        {-7, 1, 2, -4},
        {7, -1, 2, -4},
        {-7, -1, 2, 4},
        {7, 1, -2, -4},
        {5, 1, 3, 2},
        {2'000'000'000, 3, 6, 1'000'000'000},
        {2'147'483'647, 2'147'483'647, 2'147'483'647, 2'147'483'647},
        {2'147'483'647, 2, 1, -1},
        {-2'147'483'647 - 1, 1, 1, -2'147'483'647 - 1},
        {-2'147'483'647 - 1, 1, -1, -1},
        {1, 1, 0, -1},
        {0, 5, 7, 0},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(MulDiv(row.number, row.numerator, row.denominator), row.result)
            << row.number << " * " << row.numerator << " / " << row.denominator;
    }
}

TEST(BeginThread, RunsTheFunctionWithItsArgument) {
    std::atomic<int> value = 0;
    const auto work = [](void* argument) { static_cast<std::atomic<int>*>(argument)->store(42); };
    EXPECT_NE(_beginthread(work, 0, &value), static_cast<UINT_PTR>(-1));
    for (int i = 0; i < 5000 && value != 42; ++i)
        Sleep(1);
    EXPECT_EQ(value, 42);
    std::atomic<int> second = 0;
    EXPECT_NE(_beginthread(work, 1, &second), static_cast<UINT_PTR>(-1)) << "a stack too small is made large enough";
    for (int i = 0; i < 5000 && second != 42; ++i)
        Sleep(1);
    EXPECT_EQ(second, 42);
    EXPECT_EQ(_beginthread(nullptr, 0, nullptr), static_cast<UINT_PTR>(-1));
    EXPECT_EQ(errno, EINVAL);
}

TEST(SecurityDescriptor, TakesAListThatLetsEverybodyIn) {
    SECURITY_DESCRIPTOR descriptor;
    ASSERT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    EXPECT_EQ(descriptor.Revision, 1);
    EXPECT_EQ(descriptor.Control, 0);
    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE));
    EXPECT_EQ(descriptor.Control, 0x4);
    EXPECT_EQ(descriptor.Dacl, nullptr);
    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, TRUE));
    EXPECT_EQ(descriptor.Control, 0xC);
    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, FALSE, nullptr, TRUE));
    EXPECT_EQ(descriptor.Control, 0);
    EXPECT_FALSE(InitializeSecurityDescriptor(&descriptor, 2));
    EXPECT_EQ(GetLastError(), 1305u);
    EXPECT_FALSE(InitializeSecurityDescriptor(nullptr, 1));
    SECURITY_DESCRIPTOR blank{};
    EXPECT_FALSE(SetSecurityDescriptorDacl(&blank, TRUE, nullptr, FALSE));
    EXPECT_EQ(GetLastError(), 1305u);
}

TEST(OutputDebugString, SpeaksOnlyWhenAsked) {
    {
        const Variable silent("TKKERNEL_DEBUG_OUTPUT", nullptr);
        ::testing::internal::CaptureStderr();
        OutputDebugString("订单");
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    }
    const Variable loud("TKKERNEL_DEBUG_OUTPUT", "1");
    ::testing::internal::CaptureStderr();
    OutputDebugString("订单\n");
    OutputDebugString(nullptr);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), Utf8(u8"订单\n"));
}

TEST(Beep, TakesItsTimeAndNeverFails) {
    const ULONGLONG before = GetTickCount64();
    EXPECT_TRUE(Beep(2300, 30));
    EXPECT_TRUE(Beep(0, 10)) << "no such tone";
    EXPECT_TRUE(Beep(40'000, 10));
    EXPECT_GE(GetTickCount64() - before, 49u);
    EXPECT_TRUE(Beep(2300, 0));
}
