// The wrappers read and fail without leaving a code of their own in the thread's last error, which the report of a
// statement without an answer looks at.
#include <comdef.h>

#include "driver/driver_fixture.h"

namespace tk::test {
namespace {

constexpr DWORD kBefore = 0x2ABCDEF0;  // no function of the platform sets it
constexpr HRESULT kCodeWithoutText = static_cast<HRESULT>(0x80040E99);
constexpr char kNotOpened[] = "数据库没有打开或打开失败,系统没有合法调用Open方法！";
constexpr char kTwenty[] = "库存货物名称规格型号单位数量价格金额备注";

class DriverLastError : public DriverTest {
protected:
    void SetUp() override {
        Open(*database_);
        Bind(*recordset_);
        SetLastError(kBefore);
    }
    void TearDown() override {
        recordset_.reset();
        database_.reset();
        DriverTest::TearDown();
    }

    std::unique_ptr<CTDatabase> database_ = std::make_unique<CTDatabase>();
    std::unique_ptr<CTRecordset> recordset_ = std::make_unique<CTRecordset>();
};

TEST_F(DriverLastError, IsKeptByReading) {
    records_->On(Get(0)).Returns(Object(MakeFields({{kTwenty, Text(kTwenty)}}).Get()));
    static const struct {
        const char* label;
        void (*read)(CTRecordset& records);
    } kRows[] = {
        {"by name", [](CTRecordset& records) { EXPECT_STREQ(records.GetStringValue(kTwenty), kTwenty); }},
        {"by position", [](CTRecordset& records) { EXPECT_STREQ(records.GetStringValue(0L), kTwenty); }},
        {"as a literal",
         [](CTRecordset& records) {
             EXPECT_EQ(std::string(records.GetStringValueStr(0L)), "'" + std::string(kTwenty) + "'");
         }},
        {"a character", [](CTRecordset& records) { EXPECT_EQ(records.GetCharValue(0L), kTwenty[0]); }},
        {"a number", [](CTRecordset& records) { EXPECT_EQ(records.GetDoubleValue(0L), 0.0); }},
        {"the name", [](CTRecordset& records) { EXPECT_STREQ(records.GetFieldName(0), kTwenty); }},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        SetLastError(kBefore);
        row.read(*recordset_);
        EXPECT_EQ(GetLastError(), kBefore);
    }
}

TEST_F(DriverLastError, IsKeptByFailures) {
    static const struct {
        const char* label;
        void (*fail)(Script& script);
    } kFailures[] = {
        {"with a text", [](Script& script) { script.Fails(kTwenty); }},
        {"without a text", [](Script& script) { script.Fails(nullptr); }},
        {"with a code alone", [](Script& script) { script.FailsWith(E_ACCESSDENIED); }},
        {"with a code that has no text", [](Script& script) { script.FailsWith(kCodeWithoutText); }},
    };
    for (const auto& failure : kFailures) {
        SCOPED_TRACE(failure.label);
        for (ScriptedObject* object : {connection_.Get(), records_.Get()}) {
            for (const Member member : {Call(6), Call(19), Call(1022), Get(0)}) {
                object->On(member) = Script();
                failure.fail(object->On(member));
            }
        }
        EXPECT_EQ(database_->ExecuteSQL(kTwenty), 0);
        EXPECT_EQ(GetLastError(), kBefore) << "a statement";
        EXPECT_EQ(database_->OpenSchema(20), nullptr);
        EXPECT_EQ(GetLastError(), kBefore) << "a schema";
        EXPECT_EQ(recordset_->OpenSQL(kTwenty, 1), 0);
        EXPECT_EQ(GetLastError(), kBefore) << "a query";
        EXPECT_STREQ(recordset_->GetStringValue(kTwenty), "");
        EXPECT_EQ(GetLastError(), kBefore) << "a field";
    }
}

TEST_F(DriverLastError, IsKeptByAServersOwnErrorWhileClosing) {
    records_->On(Get(1054)).Returns(Long(1));
    records_->On(Call(1014)).Does([](const Arguments&) -> COleVariant { throw _com_error(kCodeWithoutText); });
    EXPECT_EQ(recordset_->Close(), 0);
    EXPECT_EQ(GetLastError(), kBefore);
}

TEST_F(DriverLastError, ThatIsNoErrorStaysNoneForTheReportOfADatabaseNeverOpened) {
    for (const char* reason : {kTwenty, static_cast<const char*>(nullptr)}) {
        records_->On(Call(1022)) = Script();
        if (reason != nullptr) {
            records_->On(Call(1022)).Fails(reason);
        } else {
            records_->On(Call(1022)).FailsWith(kCodeWithoutText);
        }
        SetLastError(0);
        EXPECT_EQ(recordset_->OpenSQL("x", 1), 0);
        CTDatabase other;
        EXPECT_EQ(other.ExecuteSQL("x"), 0);
        EXPECT_EQ(ErrorOf(other), kNotOpened);
    }
}

TEST_F(DriverLastError, ThatTheServerSetIsNotTakenAway) {
    records_->On(Call(1022)).Does([](const Arguments&) -> COleVariant {
        SetLastError(5);
        return Nothing();
    });
    EXPECT_EQ(recordset_->OpenSQL(kTwenty, 1), 1);
    EXPECT_EQ(GetLastError(), 5u);
}

}  // namespace
}  // namespace tk::test
