// A file appears whole or not at all, whatever fails on the way.
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "ado/persist/file_calls.h"
#include "saved_rows.h"

namespace tk::ado::test {
namespace {

class FileWriterTest : public testing::Test {
protected:
    void TearDown() override { Files() = calls_; }

    std::string Target() const { return (folder_.Path() / "target.xml").string(); }

    std::size_t FilesInFolder() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder_.Path()), std::filesystem::directory_iterator()));
    }
    void Put(const std::string& text) const { std::ofstream(Target(), std::ios::binary) << text; }
    mode_t ModeOf(const std::string& path) const {
        struct stat found = {};
        EXPECT_EQ(::stat(path.c_str(), &found), 0);
        return found.st_mode & 07777;
    }

    const FileCalls calls_ = Files();
    tk::test::TemporaryFolder folder_;
};

TEST_F(FileWriterTest, PutsANewFileInPlaceAtTheEnd) {
    const mode_t mask = ::umask(027);
    FileWriter file(Target(), FileWriter::Existing::Refuse);
    file.Write("one ");
    EXPECT_FALSE(std::filesystem::exists(Target()));
    file.Write(std::string(1'000'000, 'x'));
    file.Finish();
    ::umask(mask);
    EXPECT_EQ(ReadFile(Target()), "one " + std::string(1'000'000, 'x'));
    EXPECT_EQ(ModeOf(Target()), 0640u);
    EXPECT_EQ(FilesInFolder(), 1u);
}

// Some file systems take names in UTF-8 only.
TEST_F(FileWriterTest, HidesALongNameByWholeCharacters) {
    static FileCalls own;
    static std::string opened;
    own = calls_;
    Files().open = [](const char* path, int flags, mode_t mode) {
        if ((flags & O_CREAT) != 0) opened = path;
        return own.open(path, flags, mode);
    };
    std::string name;
    for (int i = 0; i < 80; ++i)
        name += "\xE5\xBA\x93";
    for (const std::size_t before : {0u, 1u, 2u}) {
        SCOPED_TRACE(before);
        const std::string target = std::string(before, 'x') + name;
        FileWriter file((folder_.Path() / target).string(), FileWriter::Existing::Replace);
        file.Finish();
        const std::string hidden = std::filesystem::path(opened).filename().string();
        const std::string kept = hidden.substr(1, hidden.find(".tk-") - 1);
        EXPECT_EQ(kept, target.substr(0, before + (200 - before) / 3 * 3));
        EXPECT_TRUE(std::filesystem::exists(folder_.Path() / target));
    }
}

TEST_F(FileWriterTest, KeepsThePermissionsOfAFileItReplaces) {
    Put("old");
    ASSERT_EQ(::chmod(Target().c_str(), 0604), 0);
    FileWriter file(Target(), FileWriter::Existing::Replace);
    file.Write("new");
    EXPECT_EQ(ReadFile(Target()), "old");
    file.Finish();
    EXPECT_EQ(ReadFile(Target()), "new");
    EXPECT_EQ(ModeOf(Target()), 0604u);
}

TEST_F(FileWriterTest, WritesThroughASymbolicLink) {
    Put("old");
    const std::string link = (folder_.Path() / "link").string();
    ASSERT_EQ(::symlink("target.xml", link.c_str()), 0);
    FileWriter file(link, FileWriter::Existing::Replace);
    file.Write("new");
    file.Finish();
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(ReadFile(Target()), "new");
}

TEST_F(FileWriterTest, RefusesAnExistingFileWhenItIsToBeNew) {
    Put("old");
    EXPECT_EQ(ErrorOf([&] { FileWriter(Target(), FileWriter::Existing::Refuse); }), 3004);
    EXPECT_EQ(ReadFile(Target()), "old");
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(FileWriterTest, RefusesAFileThatAppearedInTheMeantime) {
    FileWriter file(Target(), FileWriter::Existing::Refuse);
    file.Write("ours");
    Put("theirs");
    EXPECT_EQ(ErrorOf([&] { file.Finish(); }), 3004);
    EXPECT_EQ(ReadFile(Target()), "theirs");
}

TEST_F(FileWriterTest, TellsTheSystemsReason) {
    const struct {
        const char* label;
        std::string path;
        const char16_t* reason;
    } rows[] = {
        {"no folder", (folder_.Path() / "none" / "x").string(), u"No such file or directory"},
        {"a folder", folder_.Path().string(), u"不是普通文件"},
        {"a device", "/dev/null", u"不是普通文件"},
        {"a file as folder", Target() + "/x", u"Not a directory"},
    };
    Put("old");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        try {
            FileWriter file(row.path, FileWriter::Existing::Replace);
            ADD_FAILURE();
        } catch (const AdoError& error) {
            EXPECT_EQ(error.Code() & 0xFFFF, 3004);
            EXPECT_NE(error.Description().find(row.reason), std::u16string::npos) << ToUtf8(error.Description());
            EXPECT_NE(error.Description().find(ToUtf16(row.path)), std::u16string::npos);
        }
    }
}

TEST_F(FileWriterTest, CannotWriteIntoAFolderWithoutTheRight) {
    if (::geteuid() == 0) {
        // The superuser may write anywhere: the system's refusal is played.
        Files().open = [](const char*, int, mode_t) { return errno = EACCES, -1; };
    }
    ASSERT_EQ(::chmod(folder_.Path().c_str(), 0500), 0);
    try {
        FileWriter file(Target(), FileWriter::Existing::Refuse);
        ADD_FAILURE();
    } catch (const AdoError& error) {
        EXPECT_EQ(error.Code() & 0xFFFF, 3004);
        EXPECT_NE(error.Description().find(u"Permission denied"), std::u16string::npos);
    }
    ::chmod(folder_.Path().c_str(), 0700);
}

int fileCallsLeft = 0;  // until one fails
int fileCallError = 0;

bool FailsNow() {
    if (--fileCallsLeft != 0) return false;
    errno = fileCallError;
    return true;
}

TEST_F(FileWriterTest, LeavesTheTargetAloneWhicheverCallFails) {
    static FileCalls real;
    real = Files();
    Files().open = [](const char* path, int flags, mode_t mode) {
        return FailsNow() ? -1 : real.open(path, flags, mode);
    };
    Files().write = [](int file, const void* data, std::size_t size) {
        return FailsNow() ? -1 : real.write(file, data, size);
    };
    Files().changeMode = [](int file, mode_t mode) { return FailsNow() ? -1 : real.changeMode(file, mode); };
    Files().sync = [](int file) { return FailsNow() ? -1 : real.sync(file); };
    Files().close = [](int file) { return FailsNow() ? (real.close(file), -1) : real.close(file); };
    Files().rename = [](const char* from, const char* to) { return FailsNow() ? -1 : real.rename(from, to); };
    for (const int error : {ENOSPC, EIO, EDQUOT}) {
        fileCallError = error;
        int failures = 0;
        for (int call = 1; call < 40; ++call) {
            fileCallsLeft = call;
            Put("old");
            bool failed = false;
            try {
                SaveStore(*Goods(), Target(), PersistFormat::Binary);
            } catch (const AdoError& caught) {
                EXPECT_EQ(caught.Code() & 0xFFFF, 3004);
                failed = true;
            }
            if (failed) {
                ++failures;
                EXPECT_EQ(ReadFile(Target()), "old") << "call " << call;
            } else {
                EXPECT_EQ(Load(ReadFile(Target())).rows.rows->CountRows(), 5u);
            }
            fileCallsLeft = 0;
            EXPECT_EQ(FilesInFolder(), 1u) << "call " << call;
            if (!failed && fileCallsLeft <= 0 && call > 20) break;
        }
        // Opening, writing, permissions, syncing, closing, renaming.
        EXPECT_GE(failures, 6);
    }
}

TEST_F(FileWriterTest, SurvivesALimitOfTheFilesSize) {
    // Under the limit the system sends a signal that would end the process; here it is a failed write.
    std::vector<std::vector<Value>> rows(20'000, {Number(1), Text(u"some text that takes room in the file")});
    RowStore store(Rows(Columns({{u"id", kInteger}, {u"name", kVarWChar}}), rows));
    Put("old");
    rlimit before = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    for (const PersistFormat format : kBothFormats) {
        const rlimit small = {300'000, before.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
        const int number = ErrorOf([&] { SaveStore(store, Target(), format); });
        ::setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_EQ(number, 3004);
        EXPECT_EQ(ReadFile(Target()), "old");
        EXPECT_EQ(FilesInFolder(), 1u);
    }
    SaveStore(store, Target(), PersistFormat::Binary);
    EXPECT_EQ(LoadRows(Target()).rows.rows->CountRows(), 20'000u);
}

TEST_F(FileWriterTest, SurvivesAFullDisk) {
    // /dev/full takes no byte: every write fails as on a full disk.
    static FileCalls real;
    real = Files();
    Files().write = [](int, const void* data, std::size_t size) {
        const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
        const ssize_t done = ::write(full, data, size);
        const int error = errno;
        ::close(full);
        errno = error;
        return done;
    };
    Put("old");
    try {
        SaveStore(*Goods(), Target(), PersistFormat::Xml);
        ADD_FAILURE();
    } catch (const AdoError& error) {
        EXPECT_NE(error.Description().find(u"No space left on device"), std::u16string::npos)
            << ToUtf8(error.Description());
    }
    EXPECT_EQ(ReadFile(Target()), "old");
}

TEST_F(FileWriterTest, AKilledWriterLeavesTheOldFile) {
    Put("old");
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        static FileCalls real;
        real = Files();
        Files().sync = [](int) -> int {
            ::kill(::getpid(), SIGKILL);
            return -1;
        };
        SaveStore(*Goods(), Target(), PersistFormat::Xml);
        ::_exit(0);
    }
    int state = 0;
    ASSERT_EQ(::waitpid(child, &state, 0), child);
    EXPECT_TRUE(WIFSIGNALED(state));
    EXPECT_EQ(ReadFile(Target()), "old");
    // The next one is not in the way of what was left behind.
    SaveStore(*Goods(), Target(), PersistFormat::Xml);
    EXPECT_EQ(LoadRows(Target()).rows.rows->CountRows(), 5u);
}

}  // namespace
}  // namespace tk::ado::test
