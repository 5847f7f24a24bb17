#include <fcntl.h>
#include <sys/wait.h>

#include <climits>

#include "tests/win32/system/support.h"

using namespace tk::test;

namespace {

std::string ProgramFile() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    return std::string(path, static_cast<std::size_t>(length));
}

}  // namespace

TEST(Module, OfTheProgramHasItsFilesName) {
    char name[512];
    const std::string expected = ProgramFile();
    EXPECT_EQ(GetModuleFileName(nullptr, name, sizeof name), expected.size());
    EXPECT_EQ(std::string(name), expected);
    EXPECT_EQ(GetModuleFileName(GetModuleHandle(nullptr), name, sizeof name), expected.size());
    EXPECT_EQ(std::string(name), expected);
}

TEST(Module, NameIsCutAtTheBufferWithAnError) {
    char name[512];
    const std::string expected = ProgramFile();
    const auto exact = static_cast<DWORD>(expected.size() + 1);
    SetLastError(0);
    EXPECT_EQ(GetModuleFileName(nullptr, name, exact), expected.size());
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(GetModuleFileName(nullptr, name, exact - 1), exact - 1);
    EXPECT_EQ(GetLastError(), 122u);
    EXPECT_EQ(std::string(name), expected.substr(0, expected.size() - 1));
    EXPECT_EQ(GetModuleFileName(nullptr, name, 1), 1u);
    EXPECT_STREQ(name, "");
    EXPECT_EQ(GetModuleFileName(nullptr, name, 0), 0u);
    EXPECT_EQ(GetModuleFileName(nullptr, nullptr, 10), 0u);
    EXPECT_EQ(GetLastError(), 87u);
    EXPECT_EQ(GetModuleFileName(reinterpret_cast<HMODULE>(8), name, 10), 0u);
    EXPECT_EQ(GetLastError(), 126u);
}

// A program of another name can only be another process: this test copies itself and looks at its own name there.
TEST(Module, NameIsInGbkAndCutBehindAWholeCharacter) {
    if (const char* role = std::getenv("TK_MODULE_ROLE")) {
        char name[512];
        const DWORD length = GetModuleFileName(nullptr, name, sizeof name);
        const std::string whole(name, length);
        const DWORD cut = GetModuleFileName(nullptr, name, length - 4);  // within the last character of the file name
        WriteFile(role, whole + "\n" + std::to_string(length - cut) + "\n" + name);
        return;
    }
    const TempFolder folder;
    const std::string program = folder / Utf8(u8"订单系统.exe");
    WriteFile(program, ReadFile(ProgramFile()));
    chmod(program.c_str(), 0700);
    const Variable role("TK_MODULE_ROLE", folder / "result");
    const pid_t child = fork();
    if (child == 0) {
        execl(program.c_str(), program.c_str(), "--gtest_filter=Module.NameIsInGbkAndCutBehindAWholeCharacter",
              "--gtest_output=", "--gtest_brief=1", nullptr);
        _exit(127);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    EXPECT_EQ(ReadFile(folder / "result"), folder / "订单系统.exe\n4\n" + (folder / "订单系"));
}

TEST(Module, IsLoadedAskedAndFreed) {
    HMODULE module = LoadLibrary(TINY_SERVER);
    ASSERT_NE(module, nullptr);
    char name[512];
    EXPECT_GT(GetModuleFileName(module, name, sizeof name), 0u);
    EXPECT_STREQ(name, TINY_SERVER);
    EXPECT_NE(GetProcAddress(module, "DllGetClassObject"), nullptr);
    EXPECT_EQ(GetProcAddress(module, "NoSuchFunction"), nullptr);
    EXPECT_EQ(GetLastError(), 127u);
    EXPECT_EQ(GetProcAddress(module, reinterpret_cast<LPCSTR>(17)), nullptr) << "by ordinal";
    EXPECT_EQ(LoadLibrary(TINY_SERVER), module);
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(GetModuleHandle(TINY_SERVER), module);
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_FALSE(FreeLibrary(module));
    EXPECT_EQ(GetLastError(), 6u);
    EXPECT_EQ(GetProcAddress(module, "DllGetClassObject"), nullptr);
    EXPECT_EQ(GetLastError(), 6u);
}

TEST(Module, IsFoundWithoutItsExtension) {
    const std::string path = TINY_SERVER;
    HMODULE module = LoadLibrary(path.substr(0, path.size() - 3).c_str());
    ASSERT_NE(module, nullptr);
    EXPECT_TRUE(FreeLibrary(module));
}

TEST(Module, ThatCannotBeLoadedTellsWhy) {
    const TempFolder folder;
    WriteFile(folder / "text.so", "this is text");
    const struct {
        const char* label;
        std::string name;
        DWORD error;
    } kRows[] = {
        {"missing", folder / "missing.so", 126},
        {"unknown", "tk-no-such-library", 126},
        {"no shared object", folder / "text.so", 193},
        {"no name", "", 87},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(LoadLibrary(row.name.c_str()), nullptr);
        EXPECT_EQ(GetLastError(), row.error);
    }
    EXPECT_EQ(LoadLibrary(nullptr), nullptr);
    EXPECT_EQ(GetModuleHandle("tk-no-such-library"), nullptr);
    EXPECT_EQ(GetLastError(), 126u);
    EXPECT_FALSE(FreeLibrary(GetModuleHandle(nullptr))) << "it was not loaded by hand";
}
