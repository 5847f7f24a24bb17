#include <signal.h>
#include <sys/mman.h>

#include <cerrno>
#include <cstring>

#include "tests/win32/system/support.h"
#include "tkwin32/memory_test.h"

using tk::system::IsReadable;

namespace {

/// Four pages: one that can only be read, one that can be written, one that cannot be touched, one that can be written.
class Pages : public ::testing::Test {
protected:
    Pages() {
        size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        base = static_cast<char*>(mmap(nullptr, 4 * size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        std::memset(base, 'x', 4 * size);
        mprotect(base, size, PROT_READ);
        mprotect(base + 2 * size, size, PROT_NONE);
    }
    ~Pages() override { munmap(base, 4 * size); }

    std::size_t size;
    char* base;
};

/// Fails the test on any fault the look itself would cause.
class NoSignals {
public:
    NoSignals() {
        struct sigaction action {};
        action.sa_handler = [](int) {
            constexpr char kText[] = "a look at memory raised a signal\n";
            static_cast<void>(!write(2, kText, sizeof kText - 1));
            _exit(99);
        };
        sigaction(SIGSEGV, &action, &segmentation_);
        sigaction(SIGBUS, &action, &bus_);
    }
    ~NoSignals() {
        sigaction(SIGSEGV, &segmentation_, nullptr);
        sigaction(SIGBUS, &bus_, nullptr);
    }

private:
    struct sigaction segmentation_ {};
    struct sigaction bus_ {};
};

}  // namespace

TEST_F(Pages, AreReadableUpToTheirBorders) {
    const NoSignals guard;
    const struct {
        const char* label;
        const char* address;
        std::size_t size;
        bool readable;
    } kRows[] = {
        {"both pages whole", base, 2 * size, true},
        {"one byte too many", base, 2 * size + 1, false},
        {"the last byte", base + 2 * size - 1, 1, true},
        {"over the border", base + 2 * size - 1, 2, false},
        {"the first byte of the forbidden page", base + 2 * size, 1, false},
        {"the last byte of it", base + 3 * size - 1, 1, false},
        {"the byte behind it", base + 3 * size, 1, true},
        {"all four", base, 4 * size, false},
        {"the last page", base + 3 * size, size, true},
        {"odd addresses at a border", base + 2 * size - 7, 7, true},
        {"odd addresses over a border", base + 2 * size - 7, 8, false},
        {"nothing at a forbidden address", base + 2 * size, 0, true},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(IsReadable(row.address, row.size), row.readable);
        EXPECT_EQ(IsBadReadPtr(row.address, row.size), row.readable ? FALSE : TRUE);
    }
}

TEST_F(Pages, AreWritableWhereTheMapSaysSo) {
    const struct {
        const char* label;
        char* address;
        std::size_t size;
        BOOL bad;
    } kRows[] = {
        {"the writable page", base + size, size, FALSE},
        {"its last byte", base + 2 * size - 1, 1, FALSE},
        {"over its end", base + size, size + 1, TRUE},
        {"the read-only page", base, 1, TRUE},
        {"from read-only into writable", base + size - 1, 2, TRUE},
        {"the forbidden page", base + 2 * size, 1, TRUE},
        {"the last page", base + 3 * size, size, FALSE},
        {"nothing", base, 0, FALSE},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(IsBadWritePtr(row.address, row.size), row.bad);
    }
}

TEST_F(Pages, OfTextAreReadUpToTheTerminator) {
    const NoSignals guard;
    char* end = base + 2 * size;
    EXPECT_TRUE(IsBadStringPtr(end - 4, 5)) << "no terminator before the forbidden page";
    EXPECT_FALSE(IsBadStringPtr(end - 4, 4)) << "that many can be read";
    EXPECT_TRUE(IsBadStringPtr(base, static_cast<UINT_PTR>(-1)));
    end[-1] = 0;
    EXPECT_FALSE(IsBadStringPtr(end - 4, static_cast<UINT_PTR>(-1)));
    EXPECT_FALSE(IsBadStringPtr(base, static_cast<UINT_PTR>(-1))) << "over two pages";
    EXPECT_TRUE(IsBadStringPtr(end, 1));
    EXPECT_FALSE(IsBadStringPtr(end, 0));
    auto* wide = reinterpret_cast<WCHAR*>(end - 4);
    EXPECT_TRUE(IsBadStringPtrW(wide, 3));
    std::memset(end - 2, 0, 2);
    EXPECT_FALSE(IsBadStringPtrW(wide, 3));
    EXPECT_FALSE(IsBadStringPtrW(reinterpret_cast<WCHAR*>(end - 3), 1));
}

TEST(IsReadable, KnowsAddressesThatAreNone) {
    const NoSignals guard;
    EXPECT_FALSE(IsReadable(nullptr, 1));
    EXPECT_FALSE(IsReadable(nullptr, 0));
    EXPECT_FALSE(IsReadable(reinterpret_cast<void*>(1), 1));
    EXPECT_FALSE(IsReadable(reinterpret_cast<void*>(0xFFFFFFFFFFFFFFFF), 1)) << "the last address";
    EXPECT_FALSE(IsReadable(reinterpret_cast<void*>(0xFFFFFFFFFFFFFFF0), 64)) << "address and size run over";
    EXPECT_FALSE(IsReadable(reinterpret_cast<void*>(0x8000000000000000), 8)) << "no address at all";
    int local = 0;
    EXPECT_TRUE(IsReadable(&local, sizeof local));
    EXPECT_FALSE(IsReadable(&local, SIZE_MAX)) << "more than there is";
    EXPECT_TRUE(IsReadable("text", 5));
    EXPECT_TRUE(IsReadable(reinterpret_cast<void*>(&IsBadReadPtr), 1));
    EXPECT_FALSE(IsBadReadPtr(nullptr, 0)) << "the platform's own asks nothing for no bytes";
    EXPECT_TRUE(IsBadReadPtr(nullptr, 1));
    EXPECT_TRUE(IsBadWritePtr(nullptr, 1));
    EXPECT_FALSE(IsBadWritePtr(&local, sizeof local));
    EXPECT_TRUE(IsBadWritePtr(&local, SIZE_MAX));
}

TEST(IsReadable, LeavesErrorsAndSignalsAlone) {
    sigset_t before;
    sigset_t after;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    errno = 1234;
    SetLastError(4321);
    int local = 0;
    EXPECT_TRUE(IsReadable(&local, 4));
    EXPECT_FALSE(IsReadable(nullptr, 4));
    EXPECT_FALSE(IsReadable(reinterpret_cast<void*>(8), 4));
    EXPECT_EQ(errno, 1234);
    EXPECT_EQ(GetLastError(), 4321u);
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    for (int number = 1; number < 64; ++number)
        EXPECT_EQ(sigismember(&before, number), sigismember(&after, number));
}

TEST(IsReadable, IsNotFooledByAFileThatEndsBeforeItsMapping) {
    const NoSignals guard;
    const tk::test::TempFolder folder;
    const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    tk::test::WriteFile(folder / "short", std::string(10, 'x'));
    FILE* file = std::fopen((folder / "short").c_str(), "r");
    void* mapping = mmap(nullptr, 2 * size, PROT_READ, MAP_PRIVATE, fileno(file), 0);
    std::fclose(file);
    ASSERT_NE(mapping, MAP_FAILED);
    EXPECT_TRUE(IsReadable(mapping, size));
    EXPECT_FALSE(IsReadable(mapping, size + 1)) << "touching it would be a bus error";
    munmap(mapping, 2 * size);
}
