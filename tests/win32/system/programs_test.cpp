// Command lines, and programs that are started.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/win32/system/support.h"
#include "win32/system/command_line.h"
#include "windows.h"

using namespace tk::test;

namespace {

/// The file's content once it is there and ends in a line break.
std::string Await(const std::string& path) {
    for (int i = 0; i < 1000; ++i) {
        std::string content = ReadFile(path);
        if (content.ends_with('\n')) return content;
        usleep(10000);
    }
    return "never written";
}

}  // namespace

TEST(WinExec, StartsAProgramWithItsArguments) {
    const TempFolder folder;
    WriteFile(folder / "note", "#!/bin/sh\nprintf '%s|%s|%s\\n' \"$#\" \"$1\" \"$2\" > \"$3\"\n");
    chmod((folder / "note").c_str(), 0755);
    const Variable path("PATH", folder.Path() + ":/usr/bin:/bin");
    EXPECT_EQ(WinExec(("note \"two words\" 库存 " + (folder / "out")).c_str(), SW_SHOW), 33u);
    EXPECT_EQ(Await(folder / "out"), std::string("3|two words|") + Utf8(u8"库存") + "\n");
}

TEST(WinExec, TellsWhyAProgramDoesNotStart) {
    const TempFolder folder;
    WriteFile(folder / "data", "no program");
    EXPECT_EQ(WinExec("tk-no-such-program", SW_SHOW), 2u);
    EXPECT_EQ(WinExec((folder / "missing/program").c_str(), SW_SHOW), 2u);
    EXPECT_EQ(WinExec((folder / "data/program").c_str(), SW_SHOW), 3u);
    EXPECT_EQ(WinExec((folder / "data").c_str(), SW_SHOW), 5u);
    EXPECT_EQ(WinExec(folder.Path().c_str(), SW_SHOW), 5u);
    EXPECT_EQ(WinExec("", SW_SHOW), 2u);
    EXPECT_EQ(WinExec("\"\"", SW_SHOW), 2u);
    EXPECT_EQ(WinExec(nullptr, SW_SHOW), 2u);
}

TEST(WinExec, TakesTheFirstAdministratorOfDataSources) {
    const TempFolder folder;
    const Variable path("PATH", folder.Path());
    const Variable display("DISPLAY", ":77");
    EXPECT_EQ(WinExec("C:\\WINDOWS\\system32\\ODBCAD32.EXE", SW_SHOW), 2u);
    for (const char* name : {"ODBCConfig", "ODBCManageDataSourcesQ4"}) {
        WriteFile(folder / name, std::string("#!/bin/sh\necho ") + name + " > " + (folder / "out") + "\n");
        chmod((folder / name).c_str(), 0755);
    }
    EXPECT_EQ(WinExec("C:\\WINDOWS\\system32\\ODBCAD32.EXE", SW_SHOW), 33u);
    EXPECT_EQ(Await(folder / "out"), "ODBCManageDataSourcesQ4\n");
}

TEST(GetWindowsDirectory, IsAName) {
    char folder[32] = {};
    EXPECT_EQ(GetWindowsDirectory(folder, sizeof folder), 10u);
    EXPECT_STREQ(folder, "C:\\WINDOWS");
    EXPECT_EQ(GetWindowsDirectory(folder, 10), 11u);
    EXPECT_EQ(GetWindowsDirectory(nullptr, 0), 11u);
}

TEST(CommandLine, IsSplitAsThePlatformSplitsIt) {
    static const struct {
        const char* label;
        const char* line;
        std::vector<std::string> words;
    } kRows[] = {
        {"nothing", "", {}},
        {"blanks", " \t ", {}},
        {"words", "a  b\tc", {"a", "b", "c"}},
        {"quoted blanks", "\"a b\" c", {"a b", "c"}},
        {"quotes inside", "a\"b c\"d", {"ab cd"}},
        {"an empty word", "a \"\" b", {"a", "", "b"}},
        {"backslashes count for themselves", "C:\\a\\b \\\\s\\t\\", {"C:\\a\\b", "\\\\s\\t\\"}},
        {"an escaped mark", "a\\\"b", {"a\"b"}},
        {"two backslashes before a mark", "\"a\\\\\" b", {"a\\", "b"}},
        {"three before a mark", "a\\\\\\\"b", {"a\\\"b"}},
        {"a mark that is not closed", "\"a b", {"a b"}},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(tk::system::SplitCommandLine(row.line), row.words);
    }
}
