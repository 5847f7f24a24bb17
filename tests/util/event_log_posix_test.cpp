// The writers with nobody in between: what the log's own file holds afterwards.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <afxdisp.h>

#include <string>
#include <string_view>
#include <vector>

#include "support/environment.h"
#include "support/temporary_folder.h"
#include "tkkernel/util.h"
#include "tkwin32/event_log.h"
#include "tkwin32/text.h"

namespace {

using namespace tk::test;
using testing::ElementsAre;
using tk::system::EventRecord;
using tk::text::GbkToUtf8;

std::string Utf8(const CString& text) {
    return GbkToUtf8(std::string_view(text, static_cast<std::size_t>(text.GetLength())));
}

class EventLogFile : public testing::Test {
protected:
    /// The one record in the file.
    EventRecord Only() {
        std::vector<EventRecord> records;
        const auto reading = tk::system::ReadEventLog(path_, [&](const EventRecord& record) {
            records.push_back(record);
            return true;
        });
        EXPECT_EQ(reading.damaged, 0U);
        EXPECT_EQ(records.size(), 1U);
        return records.size() == 1 ? records.front() : EventRecord();
    }

    static void ExpectFixedParts(const EventRecord& record, int type) {
        EXPECT_EQ(record.source, "util_test");
        EXPECT_EQ(record.type, type);
        EXPECT_EQ(record.category, 0);
        EXPECT_EQ(record.id, 0x4000000CU);
    }

private:
    TemporaryFolder folder_;
    const std::string path_ = folder_.File("events.jsonl");
    Variable log_{"TKKERNEL_EVENT_LOG", path_.c_str()};
};

TEST_F(EventLogFile, KeepsAnErrorWithItsReasonAndItsData) {
    char data[] = {'a', '\0', '\xFF', 'z'};
    SetLastError(5);
    EXPECT_NE(AddErrorLog("打开\"库存\"失败", 1, 3, data), 0);
    const EventRecord record = Only();
    ExpectFixedParts(record, EVENTLOG_ERROR_TYPE);
    EXPECT_THAT(record.strings, ElementsAre(GbkToUtf8("打开\"库存\"失败"), "\r\n", Utf8(LookupErrorText(5))));
    EXPECT_THAT(record.data, ElementsAre('a', 0, 0xFF));
}

TEST_F(EventLogFile, KeepsAWarningWithoutData) {
    EXPECT_NE(AddWarnLog("第一", "第二", 0, nullptr), 0);
    const EventRecord record = Only();
    ExpectFixedParts(record, EVENTLOG_WARNING_TYPE);
    EXPECT_THAT(record.strings, ElementsAre(GbkToUtf8("第一"), "\r\n", GbkToUtf8("第二")));
    EXPECT_THAT(record.data, ElementsAre());
}

TEST_F(EventLogFile, KeepsAnException) {
    COleDispatchException exception("连接失败");
    SetLastError(2);
    EXPECT_NE(AddExcepLog(&exception, "服务"), 0);
    const EventRecord record = Only();
    ExpectFixedParts(record, EVENTLOG_ERROR_TYPE);
    EXPECT_THAT(record.strings, ElementsAre(GbkToUtf8("服务出现异常,以至于面临崩溃危险:\r\n连接失败"), "\r\n",
                                            Utf8(LookupErrorText(2))));
    EXPECT_THAT(record.data, ElementsAre());
}

TEST_F(EventLogFile, KeepsTheCallersIdentifierAndType) {
    EXPECT_NE(AddLog("a", "b", 0x12345678, EVENTLOG_INFORMATION_TYPE, 0, nullptr), 0);
    const EventRecord record = Only();
    EXPECT_EQ(record.type, EVENTLOG_INFORMATION_TYPE);
    EXPECT_EQ(record.category, 0);
    EXPECT_EQ(record.id, 0x12345678U);
    EXPECT_THAT(record.strings, ElementsAre("a", "\r\n", "b"));
}

}  // namespace
