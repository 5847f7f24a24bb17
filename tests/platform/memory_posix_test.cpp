// The address tests at the edge of mapped memory, and file names in the encoding of the file system.
#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>
#include <csignal>

#include <cstdio>
#include <cstring>
#include <string>

#include "tkkernel/platform.h"

namespace {

/// Two pages, of which the second may not be touched.
class Edge {
public:
    Edge() : size_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
        memory_ =
            static_cast<char*>(mmap(nullptr, 2 * size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        std::memset(memory_, 'x', size_);
        mprotect(memory_ + size_, size_, PROT_NONE);
    }
    Edge(const Edge&) = delete;
    Edge& operator=(const Edge&) = delete;
    ~Edge() { munmap(memory_, 2 * size_); }

    void Protect(int protection) { mprotect(memory_, size_, protection); }
    char* End() const { return memory_ + size_; }
    unsigned Size() const { return static_cast<unsigned>(size_); }

private:
    std::size_t size_;
    char* memory_;
};

TEST(IsValidAddress, SeesEveryByteOfTheRange) {
    Edge edge;
    EXPECT_EQ(IsValidAddress(edge.End() - 8, 8), 1);
    EXPECT_EQ(IsValidAddress(edge.End() - 8, 9), 0);
    EXPECT_EQ(IsValidAddress(edge.End() - edge.Size(), edge.Size()), 1);
    EXPECT_EQ(IsValidAddress(edge.End(), 1), 0);
    EXPECT_EQ(IsValidAddress(edge.End() - 8, 0x7FFFFFFF), 0);
    edge.Protect(PROT_READ);
    EXPECT_EQ(IsValidAddress(edge.End() - 8, 8), 1) << "reading is enough";
    edge.Protect(PROT_NONE);
    EXPECT_EQ(IsValidAddress(edge.End() - 8, 1), 0);
}

TEST(IsValidString, StopsAtTheEndOfTheMemory) {
    Edge edge;
    EXPECT_EQ(IsValidString(edge.End() - 8, 8), 1);
    EXPECT_EQ(IsValidString(edge.End() - 8, 9), 0);
    EXPECT_EQ(IsValidString(edge.End() - 8, -1), 0) << "no terminator before the end";
    edge.End()[-1] = '\0';
    EXPECT_EQ(IsValidString(edge.End() - 8, -1), 1);
    EXPECT_EQ(IsValidString(edge.End() - 8, 100), 1);
}

TEST(IsValidClass, NeedsTheWholeHeaderOfAnObject) {
    Edge edge;
    EXPECT_EQ(IsValidClass(reinterpret_cast<CObject*>(edge.End() - sizeof(CObject) / 2), RUNTIME_CLASS(CObject)), 0);
}

volatile std::sig_atomic_t faults = 0;

TEST(IsValidAddress, RaisesNoSignal) {
    struct sigaction count = {};
    struct sigaction before = {};
    count.sa_handler = [](int) {
        faults = faults + 1;
        _exit(3);
    };
    sigaction(SIGSEGV, &count, &before);
    Edge edge;
    EXPECT_EQ(IsValidAddress(edge.End(), 1), 0);
    EXPECT_EQ(IsValidAddress(nullptr, 1), 0);
    EXPECT_EQ(IsValidString(edge.End() - 4, -1), 0);
    sigaction(SIGSEGV, &before, nullptr);
    EXPECT_EQ(faults, 0);
}

TEST(IsFileExist, TurnsTheNameIntoTheFileSystemsEncoding) {
    const std::string folder = "/tmp/tkkernel_name_test_" + std::to_string(getpid());
    const std::string utf8 = folder + "\xE5\xBA\x93\xE5\xAD\x98.txt";
    std::FILE* file = std::fopen(utf8.c_str(), "w");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    EXPECT_EQ(IsFileExist((folder + "库存.txt").c_str()), 1);
    std::remove(utf8.c_str());
    EXPECT_EQ(IsFileExist((folder + "库存.txt").c_str()), 0);
}

}  // namespace
