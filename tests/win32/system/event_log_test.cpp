#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>

#include <map>
#include <vector>

#include "tests/win32/system/support.h"
#include "tkwin32/event_log.h"

using namespace tk::test;
using tk::system::EventLogReading;
using tk::system::EventRecord;

namespace {

/// The log in a file of the test's own.
class EventLogFile : public ::testing::Test {
protected:
    std::vector<EventRecord> Records(EventLogReading* reading = nullptr) {
        std::vector<EventRecord> records;
        const auto result = tk::system::ReadEventLog(path_, [&](const EventRecord& record) {
            records.push_back(record);
            return true;
        });
        if (reading != nullptr) *reading = result;
        return records;
    }

    TempFolder folder_;
    std::string path_ = folder_ / "logs/events.jsonl";
    Variable variable_{"TKKERNEL_EVENT_LOG", path_};
};

BOOL Report(const char* source, std::vector<LPCSTR> strings, WORD type = EVENTLOG_ERROR_TYPE, DWORD id = 0x4000000C,
            const std::string& data = {}) {
    HANDLE log = RegisterEventSource(nullptr, source);
    if (log == nullptr) return FALSE;
    std::string bytes = data;
    const BOOL written =
        ReportEvent(log, type, 0, id, nullptr, static_cast<WORD>(strings.size()), static_cast<DWORD>(bytes.size()),
                    strings.data(), bytes.empty() ? nullptr : bytes.data());
    EXPECT_TRUE(DeregisterEventSource(log));
    return written;
}

}  // namespace

TEST_F(EventLogFile, KeepsARecordALineInUtf8) {
    ASSERT_TRUE(Report("库存", {"连接失败", "\r\n", "错误[0x00000005]:拒绝访问。\r\n"}, 1, 0x4000000C,
                       std::string("\0\1\2\377", 4)));
    const std::string line = ReadFile(path_);
    const std::string tail = std::string(Utf8(u8"\",\"source\":\"库存\",\"type\":\"error\",\"category\":0,"
                                              u8"\"id\":1073741836,\"pid\":")) +
                             std::to_string(getpid()) +
                             Utf8(
                                 u8",\"strings\":[\"连接失败\",\"\\r\\n\",\"错误[0x00000005]:拒绝访问。\\r\\n\"],"
                                 u8"\"data\":\"AAEC/w==\"}\n");
    ASSERT_EQ(line.substr(0, 9), "{\"time\":\"");
    EXPECT_EQ(line.substr(9 + 27), tail);

    const auto records = Records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].source, Utf8(u8"库存"));
    EXPECT_EQ(records[0].type, 1);
    EXPECT_EQ(records[0].id, 0x4000000Cu);
    EXPECT_EQ(records[0].process, static_cast<DWORD>(getpid()));
    ASSERT_EQ(records[0].strings.size(), 3u);
    EXPECT_EQ(records[0].strings[0], Utf8(u8"连接失败"));
    EXPECT_EQ(records[0].strings[1], "\r\n");
    EXPECT_EQ(records[0].data, (std::vector<BYTE>{0, 1, 2, 255}));
    EXPECT_EQ(records[0].time.size(), 27u);
    EXPECT_EQ(records[0].time[10], 'T');
    EXPECT_EQ(records[0].time.back(), 'Z');
}

TEST_F(EventLogFile, AppendsAndIsReadInOrder) {
    for (DWORD i = 0; i < 5; ++i)
        ASSERT_TRUE(Report("app", {"x"}, EVENTLOG_INFORMATION_TYPE, i));
    DWORD expected = 0;
    for (const EventRecord& record : Records())
        EXPECT_EQ(record.id, expected++);
    EXPECT_EQ(expected, 5u);
    std::size_t seen = 0;
    const auto reading = tk::system::ReadEventLog(path_, [&](const EventRecord&) { return ++seen < 2; });
    EXPECT_EQ(seen, 2u) << "the visitor ends the reading";
    EXPECT_EQ(reading.records, 2u);
    struct stat state {};
    stat(path_.c_str(), &state);
    EXPECT_EQ(state.st_mode & 0777, 0600u) << "nobody else's business";
}

TEST_F(EventLogFile, NamesItsTypes) {
    static const struct {
        WORD type;
        const char* name;
    } kRows[] = {
        {0, "success"},       {1, "error"},          {2, "warning"}, {4, "information"},
        {8, "audit-success"}, {16, "audit-failure"}, {3, "3"},
    };
    for (const auto& row : kRows) {
        unlink(path_.c_str());
        ASSERT_TRUE(Report("app", {}, row.type));
        EXPECT_NE(ReadFile(path_).find(std::string("\"type\":\"") + row.name + "\""), std::string::npos);
        ASSERT_EQ(Records().size(), 1u);
        EXPECT_EQ(Records()[0].type, row.type);
    }
}

TEST_F(EventLogFile, TakesEveryByteOfATextAndNullTexts) {
    std::string all;
    for (int byte = 1; byte < 0x80; ++byte)
        all += static_cast<char>(byte);
    ASSERT_TRUE(Report("a\"b\\c", {all.c_str(), nullptr, ""}));
    EXPECT_EQ(ReadFile(path_).find('\n'), ReadFile(path_).size() - 1) << "one line";
    const auto records = Records();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].source, "a\"b\\c");
    EXPECT_EQ(records[0].strings, (std::vector<std::string>{all, "", ""}));
}

TEST_F(EventLogFile, StartsANewLineBehindATornRecord) {
    ASSERT_TRUE(Report("app", {"first"}));
    {
        std::ofstream torn(path_, std::ios::app | std::ios::binary);
        torn << "{\"time\":\"2003-07-04T05:06:07.000000Z\",\"sour";
    }
    EventLogReading reading;
    EXPECT_EQ(Records(&reading).size(), 1u);
    EXPECT_EQ(reading.damaged, 0u) << "it may still be written";
    ASSERT_TRUE(Report("app", {"second"}));
    const auto records = Records(&reading);
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[1].strings[0], "second");
    EXPECT_EQ(reading.damaged, 1u);
}

TEST_F(EventLogFile, TakesManyProcessesAndThreadsWithoutMixing) {
    constexpr int kProcesses = 6;
    constexpr int kThreads = 4;
    constexpr int kEach = 40;
    const auto write = [](int process) {
        std::thread threads[kThreads];
        for (int t = 0; t < kThreads; ++t) {
            threads[t] = std::thread([process, t] {
                // Long enough to be more than one page and many pipe buffers.
                const std::string text(static_cast<std::size_t>(10 + t * 9000), static_cast<char>('a' + process));
                for (int i = 0; i < kEach; ++i)
                    Report("app", {text.c_str()}, 4, static_cast<DWORD>(process * kThreads + t));
            });
        }
        for (auto& thread : threads)
            thread.join();
    };
    std::vector<pid_t> children;
    for (int process = 0; process < kProcesses; ++process) {
        const pid_t child = fork();
        if (child == 0) {
            write(process);
            _exit(0);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    EventLogReading reading;
    std::map<DWORD, int> counts;
    for (const EventRecord& record : Records(&reading)) {
        const auto process = static_cast<int>(record.id) / kThreads;
        const std::size_t size = 10 + (record.id % kThreads) * 9000;
        EXPECT_EQ(record.strings.at(0), std::string(size, static_cast<char>('a' + process)));
        ++counts[record.id];
    }
    EXPECT_EQ(reading.damaged, 0u);
    EXPECT_EQ(counts.size(), static_cast<std::size_t>(kProcesses * kThreads));
    for (const auto& [id, count] : counts)
        EXPECT_EQ(count, kEach) << id;
}

TEST_F(EventLogFile, WaitsForAHolderButNotForEver) {
    ASSERT_TRUE(Report("app", {"first"}));
    const int holder = open(path_.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(holder, LOCK_EX), 0);
    const ULONGLONG before = GetTickCount64();
    EXPECT_TRUE(Report("app", {"second"}));
    const ULONGLONG waited = GetTickCount64() - before;
    EXPECT_GE(waited, 500u);
    EXPECT_LT(waited, 20'000u);
    close(holder);
    EXPECT_EQ(Records().size(), 2u);
}

TEST_F(EventLogFile, OfOneSourceIsSharedByThreads) {
    HANDLE log = RegisterEventSource(nullptr, "app");
    std::thread threads[4];
    for (auto& thread : threads) {
        thread = std::thread([log] {
            LPCSTR text = "x";
            for (int i = 0; i < 50; ++i)
                EXPECT_TRUE(ReportEvent(log, 4, 1, 2, nullptr, 1, 0, &text, nullptr));
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_TRUE(DeregisterEventSource(log));
    EXPECT_EQ(Records().size(), 200u);
    EXPECT_EQ(Records()[0].category, 1);
}

TEST_F(EventLogFile, RefusesWhatItCannotWrite) {
    EXPECT_EQ(RegisterEventSource(nullptr, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), 87u);
    EXPECT_EQ(RegisterEventSource(nullptr, ""), nullptr);
    EXPECT_EQ(RegisterEventSource("\\\\warehouse", "app"), nullptr);
    EXPECT_EQ(GetLastError(), 1722u);
    HANDLE log = RegisterEventSource("\\\\localhost", "app");
    ASSERT_NE(log, nullptr);
    int user = 0;
    EXPECT_FALSE(ReportEvent(log, 1, 0, 1, &user, 0, 0, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), 87u);
    EXPECT_FALSE(ReportEvent(log, 1, 0, 1, nullptr, 1, 0, nullptr, nullptr));
    EXPECT_FALSE(ReportEvent(log, 1, 0, 1, nullptr, 0, 1, nullptr, nullptr));
    EXPECT_TRUE(DeregisterEventSource(log));
    EXPECT_FALSE(DeregisterEventSource(log)) << "closed twice";
    EXPECT_EQ(GetLastError(), 6u);
    EXPECT_FALSE(ReportEvent(log, 1, 0, 1, nullptr, 0, 0, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), 6u);
    EXPECT_FALSE(DeregisterEventSource(nullptr));
    EXPECT_TRUE(Records().empty());
}

TEST_F(EventLogFile, ThatCannotBeOpenedIsAnError) {
    WriteFile(folder_ / "file", "");
    const Variable below("TKKERNEL_EVENT_LOG", folder_ / "file/events.jsonl");
    EXPECT_EQ(RegisterEventSource(nullptr, "app"), nullptr);
    EXPECT_EQ(GetLastError(), 3u);
    const Variable folder("TKKERNEL_EVENT_LOG", folder_.Path());
    EXPECT_EQ(RegisterEventSource(nullptr, "app"), nullptr);
    EXPECT_EQ(GetLastError(), 5u);
}

TEST_F(EventLogFile, ThatIsFullFailsTheReportAlone) {
    const Variable full("TKKERNEL_EVENT_LOG", "/dev/full");
    HANDLE log = RegisterEventSource(nullptr, "app");
    ASSERT_NE(log, nullptr);
    EXPECT_FALSE(ReportEvent(log, 1, 0, 1, nullptr, 0, 0, nullptr, nullptr));
    EXPECT_EQ(GetLastError(), 112u);
    EXPECT_TRUE(DeregisterEventSource(log));
}

TEST(EventLogPath, IsNamedOrInTheStateFolder) {
    const Variable log("TKKERNEL_EVENT_LOG", "/a/b.jsonl");
    const Variable state("XDG_STATE_HOME", "/state");
    const Variable home("HOME", "/home/liu");
    EXPECT_EQ(tk::system::EventLogPath(), "/a/b.jsonl");
    const Variable noLog("TKKERNEL_EVENT_LOG", "");
    EXPECT_EQ(tk::system::EventLogPath(), "/state/tkkernel/events.jsonl");
    const Variable noState("XDG_STATE_HOME", "relative");
    EXPECT_EQ(tk::system::EventLogPath(), "/home/liu/.local/state/tkkernel/events.jsonl");
    const Variable noHome("HOME", nullptr);
    EXPECT_EQ(tk::system::EventLogPath(), "/var/tmp/tkkernel-" + std::to_string(geteuid()) + "/events.jsonl");
}

TEST(EventRecordLine, IsReadWithOtherOrderAndBlanksAndRefusedWhenDamaged) {
    using tk::system::ParseEventRecord;
    const auto record = ParseEventRecord(
        " { \"strings\" : [ \"a\\u0041\\/\" , \"\" ] , \"later\":\"x\", \"data\":\"QQ==\",\"time\":\"t\" , \"id\": 7 "
        "}\r");
    ASSERT_TRUE(record);
    EXPECT_EQ(record->strings, (std::vector<std::string>{"aA/", ""}));
    EXPECT_EQ(record->data, std::vector<BYTE>{'A'});
    EXPECT_EQ(record->id, 7u);
    for (const char* line : {
             "",
             "{}",
             "{\"time\":\"t\"",
             "{\"time\":\"t\"}}",
             "{\"time\":\"t\",}",
             "{\"time\":\"t\",\"id\":-1}",
             "{\"time\":\"t\",\"id\":4294967296}",
             "{\"time\":\"t\",\"category\":65536}",
             "{\"time\":\"t\",\"id\":}",
             "{\"time\":\"t\",\"strings\":[\"a\" \"b\"]}",
             "{\"time\":\"t\",\"strings\":[\"a\"",
             "{\"time\":\"t\",\"strings\":[\"\\x\"]}",
             "{\"time\":\"t\",\"strings\":[\"\\u12\"]}",
             "{\"time\":\"t\",\"strings\":[\"\\u4E00\"]}",
             "{\"time\":\"t\",\"data\":\"QQ=\"}",
             "{\"time\":\"t\",\"data\":\"Q===\"}",
             "{\"time\":\"t\",\"data\":\"QQ==QQ==\"}",
             "{\"time\":\"t\",\"data\":\"Q?==\"}",
             "{\"time\":\"t\",\"type\":\"odd\"}",
             "{\"time\":\"t\\",
             "no record",
         }) {
        EXPECT_FALSE(ParseEventRecord(line)) << line;
    }
}

TEST(EventRecordLine, CarriesDataOfEveryLength) {
    for (std::size_t size = 0; size < 70; ++size) {
        EventRecord record;
        record.time = "t";
        for (std::size_t i = 0; i < size; ++i)
            record.data.push_back(static_cast<BYTE>(i * 37 + size));
        const auto back = tk::system::ParseEventRecord(tk::system::FormatEventRecord(record));
        ASSERT_TRUE(back) << size;
        EXPECT_EQ(back->data, record.data) << size;
    }
}

TEST(EventLogReadingOf, AMissingFileSaysSo) {
    const auto reading = tk::system::ReadEventLog("/no/such/file", [](const EventRecord&) { return true; });
    EXPECT_FALSE(reading.opened);
    EXPECT_EQ(reading.records, 0u);
}
