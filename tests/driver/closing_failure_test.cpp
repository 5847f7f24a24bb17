// Servers and exceptions that behave worse than the interfaces they implement promise.
#include <comdef.h>

#include <cstring>
#include <string>

#include "driver/driver_fixture.h"
#include "support/wine.h"
#include "tkkernel/util.h"

namespace tk::test {
namespace {

constexpr HRESULT kServersOwnCode = static_cast<HRESULT>(0x80040205);

class ClosingFailure : public DriverTest {
protected:
    static COleVariant ThrowServersOwnError(const Arguments&) { throw _com_error(kServersOwnCode); }

    void SetUp() override {
        DriverTest::SetUp();
        records_->On(Get(1054)).Returns(Long(1));
        records_->On(Call(1014)).Does(ThrowServersOwnError);
        connection_->On(Get(18)).Returns(Long(1));
        connection_->On(Call(5)).Does(ThrowServersOwnError);
    }
};

TEST_F(ClosingFailure, ARecordsetKeepsTheMessageOfTheServersOwnError) {
    CTRecordset recordset(records_.Share());
    EXPECT_EQ(recordset.Close(), 0);
    EXPECT_EQ(ErrorOf(recordset), "IDispatch error #5");
}

TEST_F(ClosingFailure, ADatabaseKeepsTheMessageOfTheServersOwnError) {
    class Database : public CTDatabase {
    public:
        explicit Database(IDispatch* connection) { dispatch_.AttachDispatch(connection); }
    } database(connection_.Share());
    database.Close();
    EXPECT_EQ(ErrorOf(database), "IDispatch error #5");
}

TEST_F(ClosingFailure, TheSystemsTextOfACodeComesWithoutItsLineBreak) {
    records_->On(Call(1014)).Does([](const Arguments&) -> COleVariant { throw _com_error(E_ACCESSDENIED); });
    CTRecordset recordset(records_.Share());
    EXPECT_EQ(recordset.Close(), 0);
    EXPECT_EQ("错误[0x80070005]:" + ErrorOf(recordset) + "\r\n", std::string(LookupErrorText(0x80070005)));
    EXPECT_TRUE(ErrorOf(recordset) == "拒绝访问。" || RunsUnderWine()) << "Wine speaks the language of its host";
}

TEST_F(ClosingFailure, ACodeThatTheSystemDoesNotKnowIsShownAsANumber) {
    records_->On(Call(1014)).Does([](const Arguments&) -> COleVariant {
        throw _com_error(static_cast<HRESULT>(0x800A0BB9));
    });
    CTRecordset recordset(records_.Share());
    EXPECT_EQ(recordset.Close(), 0);
    EXPECT_EQ(ErrorOf(recordset), "Unknown error 0x800A0BB9");
}

TEST_F(ClosingFailure, DestructorsSurviveTheServersOwnError) {
    { CTRecordset recordset(records_.Share()); }
    EXPECT_EQ(records_->References(), 1u);
}

// Breaks its promise to end the text.
class UnendedException : public CException {
public:
    explicit UnendedException(const char* character) : character_(character) {}
    BOOL GetErrorMessage(LPTSTR text, UINT size, PUINT) override {
        for (UINT i = 0; i < size; ++i)
            text[i] = character_[i % character_.size()];
        return TRUE;
    }

private:
    const std::string character_;
};

TEST_F(ClosingFailure, AnExceptionThatFillsTheWholeBufferIsCut) {
    class Driver : public CTDataDriver {
    public:
        using CTDataDriver::ThrowException;
    } driver;
    UnendedException letters("x");
    driver.ThrowException(&letters, "end");
    EXPECT_EQ(ErrorOf(driver), std::string(255, 'x') + "\r\nend");
    UnendedException characters("库");
    driver.ThrowException(&characters, "end");
    EXPECT_EQ(ErrorOf(driver).size(), 254 + std::strlen("\r\nend")) << "no half of the last one";
}

}  // namespace
}  // namespace tk::test
