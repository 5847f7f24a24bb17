// Servers and exceptions that behave worse than the interfaces they implement promise.
#include <comdef.h>

#include <cstring>
#include <string>

#include "driver/driver_fixture.h"

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
