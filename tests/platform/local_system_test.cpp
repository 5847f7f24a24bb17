#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <limits>
#include <string>

#include "tkkernel/platform.h"

namespace {

/// A file of this test in the system's folder for such files.
class TemporaryFile {
public:
    TemporaryFile() {
        char folder[512] = {};
        GetTempPathA(sizeof(folder), folder);
        folder_ = folder;
        path_ = folder_ + "tkkernel_file_test_" + std::to_string(GetCurrentProcessId()) + ".txt";
        if (std::FILE* file = std::fopen(path_.c_str(), "w")) std::fclose(file);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() { std::remove(path_.c_str()); }

    const std::string& Path() const { return path_; }
    const std::string& Folder() const { return folder_; }

private:
    std::string folder_;
    std::string path_;
};

TEST(GetComputerNameA, IsTheNameThePlatformGives) {
    char name[128] = {};
    DWORD size = sizeof(name);
    ASSERT_TRUE(::GetComputerNameA(name, &size));
    EXPECT_STREQ(GetComputerNameA(), name);
    EXPECT_NE(name[0], '\0');
}

TEST(IsFileExist, FindsFilesAndNoFolders) {
    const TemporaryFile file;
    EXPECT_EQ(IsFileExist(file.Path().c_str()), 1);
    EXPECT_EQ(IsFileExist((file.Path() + "x").c_str()), 0);
    EXPECT_EQ(IsFileExist(file.Folder().c_str()), 0);
    EXPECT_EQ(IsFileExist((file.Folder() + "no such folder/file").c_str()), 0);
    EXPECT_EQ(IsFileExist(""), 0);
    EXPECT_EQ(IsFileExist(nullptr), 0);
    EXPECT_EQ(IsFileExist(std::string(5000, 'x').c_str()), 0);
}

TEST(IsValidMemory, IsAlwaysOne) {
    EXPECT_EQ(IsValidMemory(nullptr, 0), 1);
    EXPECT_EQ(IsValidMemory(nullptr, 0xFFFFFFFF), 1);
    EXPECT_EQ(IsValidMemory(reinterpret_cast<const void*>(1), 8), 1);
}

TEST(IsValidAddress, LooksAtTheMemory) {
    const char constant[] = "read-only is enough";
    char buffer[16] = {};
    EXPECT_EQ(IsValidAddress(constant, sizeof(constant)), 1);
    EXPECT_EQ(IsValidAddress(buffer, sizeof(buffer)), 1);
    EXPECT_EQ(IsValidAddress(nullptr, 0), 0);
    EXPECT_EQ(IsValidAddress(nullptr, 1), 0);
    EXPECT_EQ(IsValidAddress(reinterpret_cast<const void*>(16), 4), 0);
    EXPECT_EQ(IsValidAddress(reinterpret_cast<const void*>(std::numeric_limits<std::uintptr_t>::max() - 2), 16), 0);
}

TEST(IsValidString, LooksUpToTheTerminator) {
    EXPECT_EQ(IsValidString("abc", -1), 1);
    EXPECT_EQ(IsValidString("abc", 2), 1);
    EXPECT_EQ(IsValidString("abc", 0), 1);
    EXPECT_EQ(IsValidString("abc", 1000000), 1) << "the terminator comes first";
    EXPECT_EQ(IsValidString(nullptr, -1), 0);
    EXPECT_EQ(IsValidString(nullptr, 0), 0);
    EXPECT_EQ(IsValidString(reinterpret_cast<const char*>(16), -1), 0);
}

}  // namespace
