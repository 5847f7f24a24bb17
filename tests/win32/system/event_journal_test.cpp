// The system journal itself, run for the test in a mount namespace of its own.
#include <sys/wait.h>

#include <climits>
#include <vector>

#include "tests/win32/system/support.h"
#include "tkwin32/event_log.h"

using namespace tk::test;

namespace {

constexpr const char* kRole = "TK_JOURNAL_ROLE";

// Started as root: covers /run, runs a journal that keeps everything in memory, runs this program again beside it, and
// asks the journal what it got.
constexpr const char* kScript = R"sh(
mount -t tmpfs t /run && mount -t tmpfs t /etc/systemd || exit 77
mkdir -p /run/systemd/journal /run/log/journal
printf '[Journal]\nStorage=volatile\nReadKMsg=no\nAudit=no\nForwardToSyslog=no\nRateLimitBurst=0\n' > /etc/systemd/journald.conf
/lib/systemd/systemd-journald >/dev/null 2>&1 & JOURNAL=$!
TRIES=0
while [ ! -S /run/systemd/journal/socket ]; do
    TRIES=$((TRIES + 1)); [ $TRIES -gt 100 ] && { kill $JOURNAL; exit 77; }
    sleep 0.05
done
sleep 0.3
"$PROGRAM" --gtest_filter=EventJournal.GetsRecordsWithTheirFields --gtest_output= --gtest_brief=1 >&2; RESULT=$?
sleep 0.5
journalctl --no-pager -o json TK_EVENT_ID=1073741836 > "$FOLDER/short.json"
journalctl --no-pager -o cat TK_EVENT_ID=7 > "$FOLDER/long.txt"
journalctl --no-pager -o cat -t "$SOURCE" -p 4..4 > "$FOLDER/warning.txt"
kill $JOURNAL; wait $JOURNAL
exit $RESULT
)sh";

void Report(HANDLE log, WORD type, DWORD id, std::vector<LPCSTR> strings, std::string data) {
    EXPECT_TRUE(ReportEvent(log, type, 3, id, nullptr, static_cast<WORD>(strings.size()),
                            static_cast<DWORD>(data.size()), strings.data(), data.data()));
}

/// What the program does when it runs beside the journal.
void WriteRecords() {
    HANDLE log = RegisterEventSource(nullptr, "库存");
    ASSERT_NE(log, nullptr);
    Report(log, EVENTLOG_ERROR_TYPE, 0x4000000C, {"连接失败", "\r\n", "拒绝访问。\r\n"}, "abc");
    Report(log, EVENTLOG_INFORMATION_TYPE, 7, {std::string(600'000, 'x').c_str()}, "");
    Report(log, EVENTLOG_WARNING_TYPE, 8, {"警告"}, "");
    EXPECT_TRUE(DeregisterEventSource(log));
    EXPECT_NE(access(tk::system::EventLogPath().c_str(), F_OK), 0) << "nothing goes to the file";
}

int RunShell(const char* command) {
    const int status = std::system(command);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool Contains(const std::string& text, const char8_t* part) {
    return text.find(Utf8(part)) != std::string::npos;
}

}  // namespace

TEST(EventJournal, GetsRecordsWithTheirFields) {
    if (std::getenv(kRole) != nullptr) {
        WriteRecords();
        return;
    }
    if (geteuid() != 0) GTEST_SKIP() << "needs root for a mount namespace of its own";
    if (access("/lib/systemd/systemd-journald", X_OK) != 0) GTEST_SKIP() << "needs systemd-journald";
    if (RunShell("unshare -m true 2>/dev/null") != 0) GTEST_SKIP() << "mount namespaces are not allowed here";

    const TempFolder folder;
    char program[PATH_MAX] = {};
    ASSERT_GT(readlink("/proc/self/exe", program, sizeof program - 1), 0);
    WriteFile(folder / "run.sh", kScript);
    const Variable role(kRole, "write");
    const Variable log("TKKERNEL_EVENT_LOG", nullptr);
    const Variable state("XDG_STATE_HOME", folder.Path());
    const Variable programName("PROGRAM", program);
    const Variable folderName("FOLDER", folder.Path());
    const Variable source("SOURCE", Utf8(u8"库存"));
    const int result = RunShell(("unshare -m sh " + (folder / "run.sh")).c_str());
    if (result == 77) GTEST_SKIP() << "the journal cannot be started here";
    ASSERT_EQ(result, 0);

    const std::string record = ReadFile(folder / "short.json");
    EXPECT_TRUE(Contains(record, u8"\"MESSAGE\":\"连接失败\\n拒绝访问。\"")) << record;
    EXPECT_TRUE(Contains(record, u8"\"PRIORITY\":\"3\"")) << record;
    EXPECT_TRUE(Contains(record, u8"\"SYSLOG_IDENTIFIER\":\"库存\"")) << record;
    EXPECT_TRUE(Contains(record, u8"\"TK_EVENT_SOURCE\":\"库存\"")) << record;
    EXPECT_TRUE(Contains(record, u8"\"TK_EVENT_TYPE\":\"1\"")) << record;
    EXPECT_TRUE(Contains(record, u8"\"TK_EVENT_CATEGORY\":\"3\"")) << record;
    EXPECT_TRUE(Contains(record, u8"\"TK_EVENT_STRING_1\":\"连接失败\"")) << record;
    EXPECT_TRUE(Contains(record, u8"\"TK_EVENT_STRING_2\":[13,10]")) << record;
    EXPECT_TRUE(Contains(record, u8"\"TK_EVENT_DATA\":\"YWJj\"")) << record;
    EXPECT_EQ(ReadFile(folder / "long.txt"), std::string(600'000, 'x') + "\n");
    EXPECT_EQ(ReadFile(folder / "warning.txt"), Utf8(u8"警告\n"));
}

TEST(EventJournal, ThatDoesNotRunLeavesTheRecordToTheFile) {
    if (access("/run/systemd/journal/socket", F_OK) == 0) GTEST_SKIP() << "the journal runs on this machine";
    const TempFolder folder;
    const Variable log("TKKERNEL_EVENT_LOG", nullptr);
    const Variable state("XDG_STATE_HOME", folder.Path());
    HANDLE source = RegisterEventSource(nullptr, "app");
    ASSERT_NE(source, nullptr);
    EXPECT_TRUE(ReportEvent(source, 1, 0, 1, nullptr, 0, 0, nullptr, nullptr));
    EXPECT_TRUE(DeregisterEventSource(source));
    EXPECT_NE(ReadFile(folder / "tkkernel/events.jsonl"), "");
}
