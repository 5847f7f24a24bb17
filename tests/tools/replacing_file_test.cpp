#include "tools/tkdb/replacing_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

namespace tk::tools {
namespace {

namespace fs = std::filesystem;

class Replacing : public ::testing::Test {
protected:
    void SetUp() override {
        char folder[] = "/tmp/tkdb-file-XXXXXX";
        ASSERT_NE(mkdtemp(folder), nullptr);
        folder_ = folder;
        target_ = folder_ / "target";
    }
    void TearDown() override { fs::remove_all(folder_); }

    static void Write(const fs::path& path, const char* text) { std::ofstream(path) << text; }
    static std::string Content(const fs::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    long Entries() const { return std::distance(fs::directory_iterator(folder_), fs::directory_iterator()); }

    static int CodeOf(const fs::path& path) {
        try {
            ReplacingFile file(path);
            file.Commit();
        } catch (const std::system_error& e) {
            return e.code().value();
        }
        return 0;
    }

    fs::path folder_;
    fs::path target_;
};

TEST_F(Replacing, TakesItsPlaceAtTheCommit) {
    Write(target_, "before");
    {
        ReplacingFile file(target_);
        std::fputs("after", file.Open());
        EXPECT_EQ(file.Open(), file.Open()) << "one stream";
        EXPECT_EQ(Content(target_), "before");
        file.Commit();
        EXPECT_EQ(Content(target_), "after");
    }
    EXPECT_EQ(Entries(), 1);
}

TEST_F(Replacing, WithoutACommitNothingChanges) {
    Write(target_, "before");
    {
        ReplacingFile file(target_);
        std::fputs("after", file.Open());
    }
    EXPECT_EQ(Content(target_), "before");
    EXPECT_EQ(Entries(), 1);
}

TEST_F(Replacing, TakesAFileThatSomebodyElseWrote) {
    {
        ReplacingFile file(target_);
        EXPECT_FALSE(fs::exists(file.Path()));
        Write(file.Path(), "by hand");
        EXPECT_EQ(file.Size(), 7u);
        file.Commit();
    }
    EXPECT_EQ(Content(target_), "by hand");
    EXPECT_EQ(Entries(), 1);
}

TEST_F(Replacing, FailsWhenNothingWasWritten) {
    EXPECT_EQ(CodeOf(target_), ENOENT);
    EXPECT_EQ(Entries(), 0);
}

TEST_F(Replacing, KeepsPermissionsAndLinks) {
    Write(target_, "before");
    fs::permissions(target_, fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("target", folder_ / "link");
    {
        ReplacingFile file(folder_ / "link");
        std::fputs("after", file.Open());
        file.Commit();
    }
    EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
    EXPECT_EQ(Content(target_), "after");
    EXPECT_EQ(fs::status(target_).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(Replacing, NewFilesHaveTheUsersMask) {
    const mode_t before = umask(027);
    {
        ReplacingFile file(target_);
        std::fputs("x", file.Open());
        file.Commit();
    }
    umask(before);
    EXPECT_EQ(static_cast<unsigned>(fs::status(target_).permissions()), 0640u);
}

TEST_F(Replacing, RefusesWhatIsNoFile) {
    EXPECT_EQ(CodeOf(folder_), EISDIR);
    EXPECT_EQ(CodeOf("/dev/null"), EINVAL);
    EXPECT_EQ(CodeOf(folder_ / "missing" / "file"), ENOENT);
    EXPECT_EQ(CodeOf(folder_ / "new" / ""), EISDIR);
    EXPECT_NE(CodeOf(""), 0);
    EXPECT_EQ(Entries(), 0);
}

TEST_F(Replacing, TellsAFullDisk) {
    Write(target_, "before");
    ReplacingFile file(target_);
    // A stream onto a device without room stands for the disk.
    std::FILE* stream = std::freopen("/dev/full", "w", file.Open());
    ASSERT_NE(stream, nullptr);
    std::fputs("after", stream);
    EXPECT_THROW(file.Commit(), std::system_error);
    EXPECT_EQ(Content(target_), "before");
}

}  // namespace
}  // namespace tk::tools
