#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tkkernel/util.h"
#include "util/platform_calls.h"

namespace {

using namespace tk::test;

TEST(GetAppName, HasFieldsOfFixedWidth) {
    static_assert(sizeof(_tagPATHITEM) == 256 + 4 + 256 + 32 + 8 + 256);
    static_assert(offsetof(_tagPATHITEM, szHome) == 256 + 4 + 256 + 32 + 8);
}

TEST(GetAppName, SplitsTheProgramsPath) {
    for (const SamplePath& sample : {kSamplePath, kSamplePathWithoutExtension}) {
        SCOPED_TRACE(sample.full);
        PlatformCalls calls;
        calls.programPath = sample.full;
        _tagPATHITEM item;
        EXPECT_EQ(GetAppName(&item), 1);
        EXPECT_STREQ(item.szFullPath, sample.full);
        EXPECT_STREQ(item.szDrive, sample.drive);
        EXPECT_STREQ(item.szDir, sample.folder);
        EXPECT_STREQ(item.szFileName, sample.name);
        EXPECT_STREQ(item.szExt, sample.extension);
        EXPECT_STREQ(item.szHome, sample.home);
    }
}

TEST(GetAppName, LeavesTheOtherFieldsAloneOnFailure) {
    PlatformCalls calls;
    calls.programPath = "";
    _tagPATHITEM item;
    std::memset(&item, 'x', sizeof(item));
    EXPECT_EQ(GetAppName(&item), 0);
    EXPECT_STREQ(item.szFullPath, "");
    EXPECT_EQ(item.szFullPath[1], 'x');
    EXPECT_EQ(item.szDrive[0], 'x');
    EXPECT_EQ(item.szDir[0], 'x');
    EXPECT_EQ(item.szFileName[0], 'x');
    EXPECT_EQ(item.szExt[0], 'x');
    EXPECT_EQ(item.szHome[0], 'x');
}

TEST(GetAppName, CutsEachPartToItsWidth) {
    const std::string path = LongFolder() + std::string(40, 'n') + ".extension";
    PlatformCalls calls;
    calls.programPath = path.c_str();
    _tagPATHITEM item;
    EXPECT_EQ(GetAppName(&item), 1);
    EXPECT_EQ(item.szFullPath, path.substr(0, 255));
    EXPECT_EQ(item.szFileName, std::string(31, 'n'));
    EXPECT_STREQ(item.szExt, ".extens");
    EXPECT_EQ(item.szHome, LongFolder().substr(0, 255));
}

TEST(GetAppName, CutsALongFolderToTheWidthOfItsFields) {
    const std::string home = LongFolder() + std::string(100, 'b') + LongFolder().back();
    const std::string path = home + "n.exe";
    PlatformCalls calls;
    calls.programPath = path.c_str();
    _tagPATHITEM item;
    EXPECT_EQ(GetAppName(&item), 1);
    EXPECT_EQ(item.szFullPath, path.substr(0, 255));
    EXPECT_STREQ(item.szDrive, kSamplePath.drive);
    EXPECT_EQ(item.szDir, home.substr(std::strlen(kSamplePath.drive), 255));
    EXPECT_EQ(item.szHome, home.substr(0, 255));
    EXPECT_STREQ(item.szFileName, "n");
    EXPECT_STREQ(item.szExt, ".exe");
}

TEST(GetAppName, TakesThePartThatFitsOfALongPath) {
    const std::string path = LongFolder() + std::string(600 - LongFolder().size(), 'n');
    PlatformCalls calls;
    calls.programPath = path.c_str();
    _tagPATHITEM item;
    std::memset(&item, 'x', sizeof(item));
    EXPECT_EQ(GetAppName(&item), 1);
    EXPECT_EQ(std::string(item.szFullPath, strnlen(item.szFullPath, sizeof(item.szFullPath))), path.substr(0, 255));
    EXPECT_LT(strnlen(item.szDrive, sizeof(item.szDrive)), sizeof(item.szDrive));
    EXPECT_LT(strnlen(item.szDir, sizeof(item.szDir)), sizeof(item.szDir));
    EXPECT_LT(strnlen(item.szFileName, sizeof(item.szFileName)), sizeof(item.szFileName));
    EXPECT_LT(strnlen(item.szExt, sizeof(item.szExt)), sizeof(item.szExt));
    EXPECT_LT(strnlen(item.szHome, sizeof(item.szHome)), sizeof(item.szHome));
    EXPECT_EQ(item.szFileName, std::string(31, 'n'));
}

TEST(GetAppName, CutsBehindWholeCharacters) {
    std::string name;
    for (int i = 0; i < 20; ++i)
        name += "库";
    const std::string path = kSamplePath.home + name + ".abc" + "库存存";
    PlatformCalls calls;
    calls.programPath = path.c_str();
    _tagPATHITEM item;
    EXPECT_EQ(GetAppName(&item), 1);
    EXPECT_EQ(item.szFileName, name.substr(0, 30));
    EXPECT_EQ(item.szExt, std::string(".abc库"));
}

TEST(GetAppName, KnowsThisProgram) {
    _tagPATHITEM item;
    EXPECT_EQ(GetAppName(&item), 1);
    EXPECT_STREQ(item.szFileName, "util_test");
    EXPECT_EQ(std::string(item.szDrive) + item.szDir, item.szHome);
    EXPECT_EQ(std::string(item.szHome) + item.szFileName + item.szExt, item.szFullPath);
}

TEST(GetAppName, AcceptsNull) {
    EXPECT_EQ(GetAppName(nullptr), 0);
}

}  // namespace
