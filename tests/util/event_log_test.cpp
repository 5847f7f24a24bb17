#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <afxdisp.h>

#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "tkkernel/util.h"
#include "util/platform_calls.h"
#include "util/values.h"

namespace {

using namespace tk::test;
using testing::ElementsAre;

constexpr DWORD kFixedId = 0x4000000C;

std::string Reason(DWORD code) {
    return Std(LookupErrorText(code));
}

constexpr DWORD kUnknownCode = 0x2FFFFFFF;

/// Keeps threads waiting until as many have arrived as it takes.
class Gate {
public:
    explicit Gate(int arrivals) : missing_(arrivals) {}

    /// Does not wait.
    void Arrive() {
        const std::lock_guard guard(lock_);
        --missing_;
        changed_.notify_all();
    }
    /// @return whether all the others came, which is waited for ten seconds at most
    bool ArriveAndWait() {
        Arrive();
        std::unique_lock guard(lock_);
        return changed_.wait_for(guard, std::chrono::seconds(10), [this] { return missing_ <= 0; });
    }

private:
    std::mutex lock_;
    std::condition_variable changed_;
    int missing_;
};

class EventLog : public testing::Test {
protected:
    EventLog() { calls_.programPath = kSamplePath.full; }

    /// The one record that was written.
    LogRecord Only() {
        const auto records = calls_.Records();
        EXPECT_EQ(records.size(), 1U);
        return records.empty() ? LogRecord() : records.front();
    }

    PlatformCalls calls_;
};

TEST_F(EventLog, AddLogWritesWhatTheCallerGives) {
    char data[] = {'a', '\0', 'b'};
    EXPECT_EQ(AddLog("第一", "第二", 0x12345678, 4, 3, data), 7);
    EXPECT_EQ(Only(),
              (LogRecord{"stock.v2", 4, 0, 0x12345678, false, {"第一", "\r\n", "第二"}, std::string("a\0b", 3)}));
    EXPECT_THAT(calls_.Steps(), ElementsAre("open", "report", "close"));
}

TEST_F(EventLog, AddLogBeepsForErrorsAlone) {
    for (const int type : {2, 4, 0, 8, 16}) {
        AddLog("a", "b", 1, static_cast<WORD>(type), 0, nullptr);
    }
    EXPECT_THAT(calls_.Steps(), testing::Not(testing::Contains(testing::StartsWith("beep"))));
    AddLog("a", "b", 1, 1, 0, nullptr);
    const auto steps = calls_.Steps();
    ASSERT_GE(steps.size(), 4U);
    EXPECT_THAT(std::vector<std::string>(steps.end() - 4, steps.end()),
                ElementsAre("beep 2300 50", "open", "report", "close"));
}

TEST_F(EventLog, AddErrorLogAppendsTheLastErrorWhenAsked) {
    SetLastError(5);
    EXPECT_EQ(AddErrorLog("失败", 1, 0, nullptr), 7);
    EXPECT_EQ(Only(), (LogRecord{"stock.v2", 1, 0, kFixedId, false, {"失败", "\r\n", Reason(5)}, ""}));
    EXPECT_THAT(calls_.Steps(), ElementsAre("beep 2300 50", "open", "report", "close"));
}

TEST_F(EventLog, AddErrorLogTakesAnyFlagButZero) {
    SetLastError(5);
    EXPECT_EQ(AddErrorLog("x", -1, 0, nullptr), 7);
    EXPECT_THAT(Only().strings, ElementsAre("x", "\r\n", Reason(5)));
}

TEST_F(EventLog, AddErrorLogHasNoReasonForAnUnknownCode) {
    SetLastError(kUnknownCode);
    EXPECT_EQ(AddErrorLog("x", 1, 0, nullptr), 7);
    EXPECT_THAT(Only().strings, ElementsAre("x", "\r\n", ""));
}

TEST_F(EventLog, AddErrorLogLeavesTheLastErrorOut) {
    char data[] = "xyz";
    SetLastError(5);
    EXPECT_EQ(AddErrorLog("失败", 0, 2, data), 7);
    EXPECT_EQ(Only(), (LogRecord{"stock.v2", 1, 0, kFixedId, false, {"失败", "\r\n", ""}, "xy"}));
}

TEST_F(EventLog, AddWarnLogDoesNotBeep) {
    EXPECT_EQ(AddWarnLog("a", "b", 0, nullptr), 7);
    EXPECT_EQ(Only(), (LogRecord{"stock.v2", 2, 0, kFixedId, false, {"a", "\r\n", "b"}, ""}));
    EXPECT_THAT(calls_.Steps(), ElementsAre("open", "report", "close"));
}

TEST_F(EventLog, AddInforLogDoesNotBeep) {
    char data[] = "d";
    EXPECT_EQ(AddInforLog("a", "b", 1, data), 7);
    EXPECT_EQ(Only(), (LogRecord{"stock.v2", 4, 0, kFixedId, false, {"a", "\r\n", "b"}, "d"}));
    EXPECT_THAT(calls_.Steps(), ElementsAre("open", "report", "close"));
}

TEST_F(EventLog, AddExcepLogNamesTheServiceAndThePlace) {
    CString message("old");
    SetLastError(5);
    EXPECT_EQ(AddExcepLog("服务", "位置", &message), 7);
    EXPECT_STREQ(message, "服务出现异常,以至于面临崩溃危险[异常位置:位置]");
    EXPECT_EQ(Only(), (LogRecord{"stock.v2",
                                 1,
                                 0,
                                 kFixedId,
                                 false,
                                 {"服务出现异常,以至于面临崩溃危险[异常位置:位置]", "\r\n", Reason(5)},
                                 ""}));
    EXPECT_THAT(calls_.Steps(), ElementsAre("beep 2300 50", "open", "report", "close"));
}

TEST_F(EventLog, AddExcepLogQuotesTheException) {
    COleDispatchException exception("连接失败");
    CString message;
    SetLastError(2);
    EXPECT_EQ(AddExcepLog(&exception, "服务", &message), 7);
    EXPECT_STREQ(message, "服务出现异常,以至于面临崩溃危险:\r\n连接失败");
    EXPECT_EQ(Only(), (LogRecord{"stock.v2",
                                 1,
                                 0,
                                 kFixedId,
                                 false,
                                 {"服务出现异常,以至于面临崩溃危险:\r\n连接失败", "\r\n", Reason(2)},
                                 ""}));
}

TEST_F(EventLog, AddExcepLogNeedsNoPlaceForItsMessage) {
    COleDispatchException exception("x");
    EXPECT_EQ(AddExcepLog(&exception, "a"), 7);
    EXPECT_EQ(AddExcepLog("a", "b"), 7);
    EXPECT_EQ(calls_.Records().size(), 2U);
}

TEST_F(EventLog, AddExcepLogNeedsNoPlaceForItsMessageWhenTheLogDoesNotOpen) {
    calls_.logOpens = false;
    COleDispatchException exception("x");
    EXPECT_EQ(AddExcepLog(&exception, "a", nullptr), 0);
    EXPECT_EQ(AddExcepLog("a", "b", nullptr), 0);
    EXPECT_THAT(calls_.Records(), ElementsAre());
}

/// An exception whose message costs a call that fails.
class CostlyException : public CException {
public:
    CostlyException() : CException(FALSE) {}
    ~CostlyException() override = default;
    BOOL GetErrorMessage(LPTSTR text, UINT, PUINT) override {
        text[0] = 'x';
        SetLastError(2);
        return TRUE;
    }
};

TEST_F(EventLog, AddExcepLogTakesTheLastErrorWhenItsMessageIsComposed) {
    CostlyException exception;
    SetLastError(5);
    EXPECT_EQ(AddExcepLog(&exception, "服务"), 7);
    EXPECT_THAT(Only().strings, ElementsAre("服务出现异常,以至于面临崩溃危险:\r\nx", "\r\n", Reason(2)));
}

TEST_F(EventLog, GivesItsMessageAlsoWhenTheLogDoesNotOpen) {
    calls_.logOpens = false;
    CString message;
    EXPECT_EQ(AddExcepLog("a", "b", &message), 0);
    EXPECT_STREQ(message, "a出现异常,以至于面临崩溃危险[异常位置:b]");
    COleDispatchException exception("x");
    EXPECT_EQ(AddExcepLog(&exception, "a", &message), 0);
    EXPECT_STREQ(message, "a出现异常,以至于面临崩溃危险:\r\nx");
    EXPECT_THAT(calls_.Steps(), ElementsAre("beep 2300 50", "open", "beep 2300 50", "open"));
}

TEST_F(EventLog, DoesNothingMoreWhenTheLogDoesNotOpen) {
    calls_.logOpens = false;
    EXPECT_EQ(AddLog("a", "b", 1, 2, 0, nullptr), 0);
    EXPECT_EQ(AddErrorLog("a", 0, 0, nullptr), 0);
    EXPECT_EQ(AddWarnLog("a", "b", 0, nullptr), 0);
    EXPECT_EQ(AddInforLog("a", "b", 0, nullptr), 0);
    EXPECT_THAT(calls_.Steps(), ElementsAre("open", "beep 2300 50", "open", "open", "open"));
}

TEST_F(EventLog, DoesNotLookAtTheOutcomeOfTheWrite) {
    calls_.recordIsTaken = false;
    EXPECT_EQ(AddWarnLog("a", "b", 0, nullptr), 7);
    calls_.closeResult = 0;
    EXPECT_EQ(AddWarnLog("a", "b", 0, nullptr), 0) << "the result is that of the close";
}

TEST_F(EventLog, NamesAnUnknownService) {
    calls_.programPath = "";
    EXPECT_EQ(AddWarnLog("a", "b", 0, nullptr), 7);
    EXPECT_EQ(Only().source, "UnknownService");
}

TEST_F(EventLog, FetchesItsSourceBeforeTheAlarm) {
    calls_.onStep = [this](const std::string& step) {
        if (step.starts_with("beep")) calls_.programPath = kSamplePathWithoutExtension.full;
    };
    AddErrorLog("a", 0, 0, nullptr);
    EXPECT_EQ(Only().source, "stock.v2");
}

TEST_F(EventLog, CutsALongSourceToTheWidthOfItsField) {
    const std::string path = LongFolder() + std::string(40, 'n') + ".exe";
    calls_.programPath = path.c_str();
    AddWarnLog("a", "b", 0, nullptr);
    EXPECT_EQ(Only().source, std::string(31, 'n'));
}

TEST_F(EventLog, TakesNullTextsForEmptyOnes) {
    AddWarnLog(nullptr, nullptr, 5, nullptr);
    EXPECT_EQ(Only(), (LogRecord{"stock.v2", 2, 0, kFixedId, false, {"", "\r\n", ""}, ""}));
}

TEST_F(EventLog, PassesFormatCharactersThrough) {
    AddWarnLog("%s%n%1", "100%", 0, nullptr);
    EXPECT_THAT(Only().strings, ElementsAre("%s%n%1", "\r\n", "100%"));
}

TEST_F(EventLog, CutsALongExceptionMessageBehindAWholeCharacter) {
    std::string where;
    for (int i = 0; i < 200; ++i)
        where += "库";
    CString message;
    AddExcepLog(where.c_str(), "b", &message);
    EXPECT_EQ(Std(message), where.substr(0, 254));
    EXPECT_EQ(Only().strings.at(0), where.substr(0, 254));

    COleDispatchException exception("x");
    AddExcepLog(&exception, where.c_str(), &message);
    EXPECT_EQ(Std(message), where.substr(0, 254));
    EXPECT_EQ(calls_.Records().back().strings.at(0), Std(message));
}

TEST_F(EventLog, WritesLongTextsOfCallersWhole) {
    const std::string text(2000, 'x');
    AddWarnLog(text.c_str(), text.c_str(), 0, nullptr);
    EXPECT_THAT(Only().strings, ElementsAre(text, "\r\n", text));
}

TEST_F(EventLog, MsgBeepSoundsThreeTones) {
    EXPECT_EQ(MsgBeep(), 1);
    EXPECT_THAT(calls_.Steps(), ElementsAre("beep 2300 50", "sleep 100", "beep 2300 50", "sleep 100", "beep 2300 50"));
}

TEST_F(EventLog, OnWarningMessageSweepsInTheBackground) {
    std::vector<std::string> sweep;
    for (int hertz = 800; hertz < 2300; hertz += 50)
        sweep.push_back("beep " + std::to_string(hertz) + " 10");
    ASSERT_EQ(sweep.size(), 30U);
    OnWarningMessage(2);
    ASSERT_TRUE(calls_.WaitForTones(60));
    const auto tones = calls_.Tones();
    EXPECT_EQ(std::vector<std::string>(tones.begin(), tones.begin() + 30), sweep);
    EXPECT_EQ(std::vector<std::string>(tones.begin() + 30, tones.end()), sweep);
}

TEST_F(EventLog, OnWarningMessageDoesNotWaitForItsSweep) {
    Gate called(2);  // the first tone waits until the call has returned
    bool wentOn = false;
    calls_.onStep = [&, first = true](const std::string& step) mutable {
        if (!first || !step.starts_with("beep")) return;
        first = false;
        wentOn = called.ArriveAndWait();
    };
    OnWarningMessage(1);
    called.Arrive();
    ASSERT_TRUE(calls_.WaitForTones(30));
    EXPECT_TRUE(wentOn);
}

TEST_F(EventLog, OnWarningMessageSoundsSeveralSweepsAtOnce) {
    Gate both(2);  // the first tones wait for each other
    std::mutex lock;
    std::map<std::thread::id, int> tones;
    bool together = true;
    calls_.onStep = [&](const std::string& step) {
        if (!step.starts_with("beep")) return;
        bool first;
        {
            const std::lock_guard guard(lock);
            first = ++tones[std::this_thread::get_id()] == 1;
        }
        if (!first) return;
        const bool met = both.ArriveAndWait();
        const std::lock_guard guard(lock);
        together = together && met;
    };
    OnWarningMessage(1);
    OnWarningMessage(1);
    ASSERT_TRUE(calls_.WaitForTones(60));
    EXPECT_TRUE(together);
    ASSERT_EQ(tones.size(), 2U);
    for (const auto& [thread, count] : tones)
        EXPECT_EQ(count, 30);
}

TEST_F(EventLog, OnWarningMessagePlaysNothingForACountBelowOne) {
    OnWarningMessage(0);
    OnWarningMessage(-5);
    OnWarningMessage(1);  // the only one that plays; were there others, they would have begun before it
    ASSERT_TRUE(calls_.WaitForTones(30));
    EXPECT_EQ(calls_.Tones().size(), 30U);
}

TEST_F(EventLog, WritersMayRunOnManyThreads) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int count = 0; count < 50; ++count)
                AddWarnLog("a", "b", 0, nullptr);
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(calls_.Records().size(), 200U);
}

TEST(EventLogOfThePlatform, TakesRecords) {
    EXPECT_NE(AddInforLog("a test of the library", "库存", 0, nullptr), 0);
}

}  // namespace
