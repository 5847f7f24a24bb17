#include "ado/odbc/file_identity.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <thread>

namespace tk::ado {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

long long Now() {
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void Write(const fs::path& path) {
    std::ofstream(path, std::ios::app) << "a";
}

/// A folder on each of two file systems: the temporary one and the one in memory.
class FileIdentityTest : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        std::string pattern = (fs::path(GetParam()) / "tkfile-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) GTEST_SKIP() << "nothing can be written to " << GetParam();
        folder_ = fs::canonical(pattern);
        file_ = folder_ / "data" / "test.db";
        other_ = folder_ / "data" / "other.db";
        MakeFiles();
    }
    void TearDown() override {
        std::error_code ignored;
        if (!folder_.empty()) fs::remove_all(folder_, ignored);
    }

    void MakeFiles() const {
        fs::remove_all(folder_ / "data");
        fs::create_directory(folder_ / "data");
        Write(file_);
        Write(other_);
    }

    /// Puts another folder with another file in the place of the one that the file is in; and back.
    void SwapFolder() const {
        fs::rename(folder_ / "data", folder_ / "former");
        fs::create_directory(folder_ / "data");
        Write(file_);
    }
    void SwapBack() const {
        fs::remove_all(folder_ / "data");
        fs::rename(folder_ / "former", folder_ / "data");
    }

    /// Waits until a change of the file has another time than those before, and asks once: the next one may ask the
    /// file itself.
    static long long Settle(FileIdentity& identity) {
        std::this_thread::sleep_for(40ms);
        const auto now = Now();
        EXPECT_TRUE(identity.IsStillThere(now));
        return now;
    }

    fs::path folder_;
    fs::path file_;
    fs::path other_;
};

INSTANTIATE_TEST_SUITE_P(FileSystems, FileIdentityTest, testing::Values("/tmp", "/dev/shm"));

class FileInMemoryTest : public FileIdentityTest {};
INSTANTIATE_TEST_SUITE_P(FileSystems, FileInMemoryTest, testing::Values("/dev/shm"));

TEST(FileIdentity, IsNoneOfAnEmptyNameOrAFileThatIsNotThere) {
    EXPECT_FALSE(FileIdentity().IsKnown());
    EXPECT_FALSE(FileIdentity("").IsKnown());
    EXPECT_FALSE(FileIdentity("/nowhere/test.db").IsKnown());
}

TEST_P(FileIdentityTest, NoticesAtOnceThatTheNameLeadsElsewhere) {
    const struct {
        const char* label;
        void (*change)(const fs::path& file, const fs::path& other);
    } rows[] = {
        {"removed", [](auto& file, auto&) { fs::remove(file); }},
        {"renamed", [](auto& file, auto&) { fs::rename(file, file.string() + ".old"); }},
        {"another renamed over it", [](auto& file, auto& other) { fs::rename(other, file); }},
        {"another in its place",
         [](auto& file, auto& other) {
             fs::rename(file, file.string() + ".old");
             fs::rename(other, file);
         }},
        {"made anew",
         [](auto& file, auto&) {
             fs::rename(file, file.string() + ".old");
             Write(file);
         }},
        {"removed, and still there under another name",
         [](auto& file, auto&) {
             fs::create_hard_link(file, file.string() + ".link");
             fs::remove(file);
         }},
        {"a link to another in its place",
         [](auto& file, auto& other) {
             fs::remove(file);
             fs::create_symlink(other, file);
         }},
    };
    for (const bool isSettled : {false, true}) {
        for (const auto& row : rows) {
            SCOPED_TRACE(row.label + std::string(isSettled ? ", long after its last change" : ""));
            MakeFiles();
            FileIdentity identity(file_);
            ASSERT_TRUE(identity.IsKnown());
            const auto now = isSettled ? Settle(identity) : Now();
            EXPECT_TRUE(identity.IsStillThere(now));
            row.change(file_, other_);
            EXPECT_FALSE(identity.IsStillThere(now));
        }
    }
}

TEST_P(FileIdentityTest, IsTheSameWhateverElseIsDoneToTheFile) {
    FileIdentity identity(file_);
    const auto now = Settle(identity);
    Write(file_);
    EXPECT_TRUE(identity.IsStillThere(now));
    fs::create_hard_link(file_, folder_ / "data" / "again.db");
    EXPECT_TRUE(identity.IsStillThere(now));
    fs::permissions(file_, fs::perms::owner_read);
    EXPECT_TRUE(identity.IsStillThere(now));
    fs::rename(file_, folder_ / "data" / "away.db");
    EXPECT_FALSE(identity.IsStillThere(now));
    fs::rename(folder_ / "data" / "away.db", file_);
    EXPECT_TRUE(identity.IsStillThere(now));
}

TEST_P(FileIdentityTest, NoticesAFolderThatWasRenamedAfterAMillisecond) {
    FileIdentity identity(file_);
    const auto now = Settle(identity);
    SwapFolder();
    EXPECT_FALSE(identity.IsStillThere(now + 1000));
}

// What is not noticed shows that the path is not walked.
TEST_P(FileInMemoryTest, AsksTheFileItselfWithinAMillisecond) {
    struct statfs system = {};
    ASSERT_EQ(statfs(folder_.c_str(), &system), 0);
    if (system.f_type != TMPFS_MAGIC) GTEST_SKIP() << "another file system is mounted there";
    FileIdentity identity(file_);
    const auto now = Settle(identity);
    SwapFolder();
    EXPECT_TRUE(identity.IsStillThere(now + 999));
    EXPECT_FALSE(identity.IsStillThere(now + 1000));
}

// Its next change may have the same time: what is noticed shows that the path is walked.
TEST_P(FileIdentityTest, DoesNotAskAFileThatHasJustChanged) {
    FileIdentity identity(file_);
    int noticed = 0;
    for (int i = 0; i < 200; ++i) {
        const auto now = Now();
        Write(file_);
        EXPECT_TRUE(identity.IsStillThere(now));
        SwapFolder();
        noticed += !identity.IsStillThere(now);
        SwapBack();
    }
    EXPECT_GT(noticed, 0);  // not all: a step of the clock may come in between
}

TEST_P(FileIdentityTest, NoticesAtOnceThatALinkInThePathLeadsElsewhere) {
    fs::create_directory(folder_ / "second");
    Write(folder_ / "second" / "test.db");
    const fs::path current = folder_ / "current";
    fs::create_directory_symlink(folder_ / "data", current);
    FileIdentity identity(current / "test.db");
    const auto now = Settle(identity);
    fs::remove(current);
    fs::create_directory_symlink(folder_ / "second", current);
    EXPECT_FALSE(identity.IsStillThere(now));
}

TEST_P(FileIdentityTest, AgreesWithTheFileSystemThroughRandomChanges) {
    std::mt19937 random(20261122);
    const fs::path away = folder_ / "data" / "away.db";
    std::error_code ignored;  // as a change may find nothing to work on
    int there = 0;
    int gone = 0;
    for (int round = 0; round < 40; ++round) {
        MakeFiles();
        struct stat first = {};
        ASSERT_EQ(stat(file_.c_str(), &first), 0);
        FileIdentity identity(file_);
        for (int i = 0; i < 20; ++i) {
            switch (random() % 8) {
                case 0:
                    fs::rename(file_, away, ignored);
                    break;
                case 1:
                    fs::rename(away, file_, ignored);
                    break;
                case 2:
                    fs::rename(other_, file_, ignored);
                    break;
                case 3:
                    Write(file_);
                    break;
                case 4:
                    Write(other_);
                    break;
                case 5:
                    fs::create_hard_link(file_, other_, ignored);
                    break;
                case 6:
                    fs::remove(other_, ignored);
                    break;
                default:
                    std::this_thread::sleep_for(std::chrono::microseconds(random() % 30'000));
                    break;
            }
            struct stat status = {};
            const bool isThere =
                stat(file_.c_str(), &status) == 0 && status.st_dev == first.st_dev && status.st_ino == first.st_ino;
            ASSERT_EQ(identity.IsStillThere(Now()), isThere) << "round " << round << ", change " << i;
            ++(isThere ? there : gone);
        }
    }
    EXPECT_GT(there, 100);
    EXPECT_GT(gone, 100);
}

TEST_P(FileIdentityTest, LeavesTheLocksOfTheProcessOnTheFileAlone) {
    const int file = open(file_.c_str(), O_RDWR | O_CLOEXEC);
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    ASSERT_EQ(fcntl(file, F_SETLK, &lock), 0);
    { FileIdentity identity(file_); }
    const pid_t child = fork();
    if (child == 0) {
        const int own = open(file_.c_str(), O_RDWR | O_CLOEXEC);
        struct flock wanted = {};
        wanted.l_type = F_WRLCK;
        const bool isAsked = fcntl(own, F_GETLK, &wanted) == 0;
        _exit(isAsked && wanted.l_type != F_UNLCK ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "the lock is gone";
    close(file);
}

}  // namespace
}  // namespace tk::ado
