#include "tests/win32/system/support.h"

using namespace tk::test;

namespace {

/// A name in GBK below the folder, which has an ASCII name.
std::string Gbk(const TempFolder& folder, const char* name) {
    return folder / name;
}

}  // namespace

TEST(OpenFile, FindsFilesByTheirChineseNamesButNoFolders) {
    const TempFolder folder;
    WriteFile(folder / Utf8(u8"订单.txt"), "1");
    mkdir((folder / Utf8(u8"归档")).c_str(), 0700);
    static const struct {
        const char* label;
        const char* name;
        DWORD error;
    } kRows[] = {
        {"a file", "订单.txt", 0},
        {"a missing file", "订货.txt", 2},
        {"a folder", "归档", 5},
        {"a missing folder", "无/订单.txt", 2},
        {"a file taken for a folder", "订单.txt/x", 3},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        OFSTRUCT found;
        SetLastError(0);
        EXPECT_EQ(OpenFile(Gbk(folder, row.name).c_str(), &found, OF_EXIST), row.error == 0 ? 1 : HFILE_ERROR);
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(found.nErrCode, row.error);
        EXPECT_STREQ(found.szPathName, Gbk(folder, row.name).c_str());
    }
}

TEST(OpenFile, RefusesEmptyNamesAndOtherStyles) {
    OFSTRUCT found;
    EXPECT_EQ(OpenFile("", &found, OF_EXIST), HFILE_ERROR);
    EXPECT_EQ(GetLastError(), 2u);
    EXPECT_EQ(OpenFile(nullptr, &found, OF_EXIST), HFILE_ERROR);
    EXPECT_EQ(OpenFile("/etc/passwd", nullptr, OF_EXIST), HFILE_ERROR);
    EXPECT_EQ(GetLastError(), 87u);
    EXPECT_EQ(OpenFile("/etc/passwd", &found, OF_READ), HFILE_ERROR);
    EXPECT_EQ(GetLastError(), 50u) << "not supported";
}

TEST(OpenFile, CutsALongNameInItsRecordBehindAWholeCharacter) {
    const TempFolder folder;
    std::string name = folder / "";
    while (name.size() < 126)
        name += 'a';
    OFSTRUCT found;
    OpenFile((name + "订单").c_str(), &found, OF_EXIST);
    EXPECT_EQ(std::string(found.szPathName), name) << "127 bytes fit, half a character does not count";
}

TEST(GetFileAttributes, TellsWhatIsThere) {
    const TempFolder folder;
    WriteFile(folder / "plain", "");
    WriteFile(folder / "locked", "");
    chmod((folder / "locked").c_str(), 0400);
    WriteFile(folder / ".hidden", "");
    symlink("plain", (folder / "link").c_str());
    static const struct {
        const char* name;
        DWORD attributes;
    } kRows[] = {
        {"plain", 0x80}, {"locked", 0x1}, {".hidden", 0x2}, {"link", 0x80}, {"", 0x10}, {"missing", 0xFFFFFFFF},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(GetFileAttributes((folder / row.name).c_str()), row.attributes) << row.name;
    EXPECT_EQ(GetLastError(), 2u);
    EXPECT_EQ(GetFileAttributes("/dev/null"), 0x40u);
    EXPECT_EQ(GetFileAttributes(nullptr), INVALID_FILE_ATTRIBUTES);
}

TEST(Files, AreMadeAndRemoved) {
    const TempFolder folder;
    const std::string inner = Gbk(folder, "归档");
    EXPECT_TRUE(CreateDirectory(inner.c_str(), nullptr));
    struct stat state {};
    EXPECT_EQ(stat((folder / Utf8(u8"归档")).c_str(), &state), 0);
    EXPECT_FALSE(CreateDirectory(inner.c_str(), nullptr));
    EXPECT_EQ(GetLastError(), 183u);
    EXPECT_FALSE(CreateDirectory((folder / "no/such").c_str(), nullptr));
    EXPECT_EQ(GetLastError(), 3u);
    WriteFile(folder / Utf8(u8"归档/一.txt"), "x");
    EXPECT_FALSE(RemoveDirectory(inner.c_str()));
    EXPECT_EQ(GetLastError(), 145u);
    EXPECT_FALSE(RemoveDirectory((inner + "/一.txt").c_str()));
    EXPECT_EQ(GetLastError(), 267u);
    EXPECT_TRUE(DeleteFile((inner + "/一.txt").c_str()));
    EXPECT_FALSE(DeleteFile((inner + "/一.txt").c_str()));
    EXPECT_EQ(GetLastError(), 2u);
    EXPECT_FALSE(DeleteFile(inner.c_str())) << "a folder is no file";
    EXPECT_EQ(GetLastError(), 5u);
    EXPECT_TRUE(RemoveDirectory(inner.c_str()));
}

TEST(GetTempPath, EndsInASlashAndTellsTheSizeItNeeds) {
    const Variable folder("TMPDIR", "/var/tmp");
    char path[32];
    EXPECT_EQ(GetTempPath(sizeof path, path), 9u);
    EXPECT_STREQ(path, "/var/tmp/");
    EXPECT_EQ(GetTempPath(10, path), 9u);
    EXPECT_EQ(GetTempPath(9, path), 10u);
    EXPECT_EQ(GetTempPath(0, nullptr), 10u);
    const Variable none("TMPDIR", nullptr);
    EXPECT_EQ(GetTempPath(sizeof path, path), 5u);
    EXPECT_STREQ(path, "/tmp/");
}

TEST(GetCurrentDirectory, IsTheFolderInGbk) {
    const TempFolder folder;
    const std::string inner = folder / Utf8(u8"归档");
    mkdir(inner.c_str(), 0700);
    char before[4096];
    ASSERT_NE(getcwd(before, sizeof before), nullptr);
    ASSERT_EQ(chdir(inner.c_str()), 0);
    char path[4096];
    EXPECT_EQ(GetCurrentDirectory(sizeof path, path), Gbk(folder, "归档").size());
    EXPECT_EQ(std::string(path), Gbk(folder, "归档"));
    ASSERT_EQ(chdir(before), 0);
}
