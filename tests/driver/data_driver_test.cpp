#include <memory>
#include <type_traits>

#include "driver/driver_fixture.h"
#include "support/wine.h"
#include "tkkernel/util.h"

namespace tk::test {
namespace {

/// Opens the protected members of the base.
class Driver : public CTDataDriver {
public:
    using CTDataDriver::CTDataDriver;
    Driver(const Driver& other) : CTDataDriver(other) {}

    using CTDataDriver::GetStandardSQL;
    using CTDataDriver::OnInitCLSID;
    using CTDataDriver::OnInitProperty;
    using CTDataDriver::SetError;
    using CTDataDriver::SetErrorString;
    using CTDataDriver::ThrowException;

    std::string Tag() const { return std::string(dbmsTag_); }
    int Initialised() const { return initialised_; }
    int PropertyCount() const { return properties_.GetCount(); }
    std::string Property(const char* name) const {
        CString value("(none)");
        properties_.Lookup(name, value);
        return std::string(value);
    }
};

class DataDriver : public DriverTest {};

constexpr char kConnectionText[] = "{00000514-0000-0010-8000-00AA006D2EA4}";

TEST_F(DataDriver, StartsWithoutObjectTextAndTag) {
    Driver driver;
    EXPECT_EQ(driver.GetDispatch(), nullptr);
    EXPECT_EQ(ErrorOf(driver), "");
    EXPECT_EQ(driver.Tag(), "");
    EXPECT_EQ(driver.Initialised(), 0);
    EXPECT_EQ(driver.PropertyCount(), 0);
}

TEST_F(DataDriver, TakesOverTheObjectItIsMadeFrom) {
    {
        Driver driver(records_.Share());
        EXPECT_EQ(driver.GetDispatch(), records_.Get());
        EXPECT_EQ(records_->References(), 2u);
        EXPECT_EQ(driver.Tag(), "Mic");
        EXPECT_EQ(driver.Initialised(), 0);
        EXPECT_EQ(ErrorOf(driver), "");
    }
    EXPECT_EQ(records_->References(), 1u);
    EXPECT_THAT(journal_.Lines(), IsEmpty());
}

TEST_F(DataDriver, GetDispatchAddsNoReference) {
    Driver driver(records_.Share());
    driver.GetDispatch();
    EXPECT_EQ(records_->References(), 2u);
}

TEST_F(DataDriver, ACopySharesTheObjectAndNothingElse) {
    Driver driver(records_.Share());
    driver.SetError("first");
    auto properties = MakeProperties({{"User ID", Text("sa")}});
    driver.OnInitProperty(properties.Get());
    {
        Driver copy(driver);
        EXPECT_EQ(copy.GetDispatch(), records_.Get());
        EXPECT_EQ(records_->References(), 3u);
        EXPECT_EQ(ErrorOf(copy), "");
        EXPECT_EQ(copy.Tag(), "Mic");
        EXPECT_EQ(copy.PropertyCount(), 0);
        EXPECT_EQ(copy.Initialised(), 0);
    }
    EXPECT_EQ(records_->References(), 2u);
    EXPECT_EQ(ErrorOf(driver), "first");
    EXPECT_EQ(driver.PropertyCount(), 1);
}

TEST_F(DataDriver, DeletingThroughTheBaseClosesWhatIsOpen) {
    static_assert(std::has_virtual_destructor_v<CTDataDriver>);
    auto database = std::make_unique<CTDatabase>();
    Open(*database);
    std::unique_ptr<CTDataDriver> driver = std::move(database);
    driver.reset();
    EXPECT_THAT(journal_.Take(), ElementsAre("connection.get 18", "connection.call 5"));
    auto recordset = std::make_unique<CTRecordset>();
    Bind(*recordset);
    records_->On(Get(1054)).Returns(Long(1));
    driver = std::move(recordset);
    driver.reset();
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 1054", "records.call 1014"));
}

TEST_F(DataDriver, ANullObjectIsNoObject) {
    Driver driver(static_cast<IDispatch*>(nullptr));
    EXPECT_EQ(driver.GetDispatch(), nullptr);
    Driver copy(driver);
    EXPECT_EQ(copy.GetDispatch(), nullptr);
}

TEST_F(DataDriver, CreatesTheObjectOfAClass) {
    connections_->Give(connection_.Get());
    Driver driver;
    EXPECT_EQ(driver.OnInitCLSID(kConnectionText), 1);
    EXPECT_EQ(driver.GetDispatch(), connection_.Get());
    EXPECT_EQ(ErrorOf(driver), "返回编码:[0x00000000]操作完全成功。");
    EXPECT_EQ(driver.Initialised(), 0) << "the callers store the result there";
    EXPECT_THAT(journal_.Lines(), IsEmpty());
}

TEST_F(DataDriver, KeepsTheObjectItHoldsInsteadOfCreatingOne) {
    Driver driver(records_.Share());
    EXPECT_EQ(driver.OnInitCLSID(kConnectionText), 1);
    EXPECT_EQ(driver.GetDispatch(), records_.Get());
    EXPECT_EQ(connections_->Created(), 0);
    EXPECT_EQ(ErrorOf(driver), "返回编码:[0x00000000]操作完全成功。");
}

TEST_F(DataDriver, ReportsTheCodeAClassCannotBeCreatedWith) {
    connections_->Refuse(static_cast<HRESULT>(0x80070005));
    Driver driver;
    EXPECT_EQ(driver.OnInitCLSID(kConnectionText), 0);
    EXPECT_EQ(driver.GetDispatch(), nullptr);
    EXPECT_THAT(ErrorOf(driver), ::testing::StartsWith("错误[0x80070005]:"));
}

TEST_F(DataDriver, ReportsAClassTextThatNamesNone) {
    const bool worded = !LookupErrorText(static_cast<DWORD>(CO_E_CLASSSTRING)).IsEmpty();
    EXPECT_TRUE(worded || RunsUnderWine()) << "Wine alone has no words for it";
    for (const char* text : {"", "nonsense", "{00000514-0000", "No.Such.Class", static_cast<const char*>(nullptr)}) {
        SCOPED_TRACE(text);
        Driver driver;
        EXPECT_EQ(driver.OnInitCLSID(text), 0);
        EXPECT_EQ(ErrorOf(driver) != "", worded) << ErrorOf(driver);
    }
}

TEST_F(DataDriver, PutsNamesBetweenDoubleQuotes) {
    static const struct {
        const char* label;
        const char* name;
        const char* quoted;
    } kRows[] = {
        {"plain", "ORDERS", "\"ORDERS\""},   {"empty", "", "\"\""},
        {"null", nullptr, "\"\""},           {"quote inside", "A\"B", "\"A\"B\""},
        {"percent", "50%s%n", "\"50%s%n\""}, {"Chinese", "库存", "\"库存\""},
    };
    Driver driver;
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_STREQ(driver.GetStandardSQL(row.name), row.quoted);
    }
}

TEST_F(DataDriver, SetErrorFormatsAndReturnsZero) {
    Driver driver;
    EXPECT_EQ(driver.SetError("%s 第%d行 %.1f%%", "错误", 7, 2.5), 0);
    EXPECT_EQ(ErrorOf(driver), "错误 第7行 2.5%");
    EXPECT_EQ(driver.SetError(""), 0);
    EXPECT_EQ(ErrorOf(driver), "");
}

TEST_F(DataDriver, SetErrorOfNullLeavesTheText) {
    Driver driver;
    driver.SetError("kept");
    EXPECT_EQ(driver.SetError(nullptr), 0);
    EXPECT_EQ(ErrorOf(driver), "kept");
}

TEST_F(DataDriver, SetErrorTakesTextsOfAnyLength) {
    const std::string text(100000, 'x');
    Driver driver;
    driver.SetError("[%s]", text.c_str());
    EXPECT_EQ(ErrorOf(driver), "[" + text + "]");
}

TEST_F(DataDriver, SetErrorMayFormatTheTextItReplaces) {
    Driver driver;
    driver.SetError("inner");
    const CString before = driver.GetLastErrorString();
    driver.SetError("<%s>", static_cast<const char*>(before));
    EXPECT_EQ(ErrorOf(driver), "<inner>");
}

TEST_F(DataDriver, SetErrorStringJoinsTwoLines) {
    Driver driver;
    EXPECT_EQ(driver.SetErrorString("上", "下"), 0);
    EXPECT_EQ(ErrorOf(driver), "上\r\n下");
    EXPECT_EQ(driver.SetErrorString(nullptr, nullptr), 0);
    EXPECT_EQ(ErrorOf(driver), "\r\n");
    driver.SetErrorString("100%s", "%n");
    EXPECT_EQ(ErrorOf(driver), "100%s\r\n%n");
}

// ---- exceptions ------------------------------------------------------------------------------------------------

TEST_F(DataDriver, ThrowExceptionWritesTheTextAndTheContextAndThrowsNothing) {
    Driver driver;
    auto* e = new COleDispatchException("服务器没有响应", 0, 0);
    EXPECT_EQ(driver.ThrowException(e, "打开"), 0);
    EXPECT_EQ(ErrorOf(driver), "服务器没有响应\r\n打开");
    e->Delete();
}

TEST_F(DataDriver, ThrowExceptionOfAnExceptionWithoutTextLeavesTheFirstLineEmpty) {
    Driver driver;
    auto* e = new COleDispatchException("", 0, 0);
    EXPECT_EQ(driver.ThrowException(e, "打开"), 0);
    EXPECT_EQ(ErrorOf(driver), "\r\n打开");
    e->Delete();
}

TEST_F(DataDriver, ThrowExceptionBearsNulls) {
    Driver driver;
    EXPECT_EQ(driver.ThrowException(nullptr, nullptr), 0);
    EXPECT_EQ(ErrorOf(driver), "\r\n");
}

TEST_F(DataDriver, ThrowExceptionCutsLongTextsBehindAWholeCharacter) {
    // 255 bytes have room for 127 double-byte characters and one byte more.
    std::string text;
    for (int i = 0; i < 200; ++i)
        text += "库";
    Driver driver;
    auto* e = new COleDispatchException(text.c_str(), 0, 0);
    driver.ThrowException(e, "X");
    EXPECT_EQ(ErrorOf(driver), text.substr(0, 254) + "\r\nX");
    e->Delete();
    e = new COleDispatchException(("a" + text).c_str(), 0, 0);
    driver.ThrowException(e, "X");
    EXPECT_EQ(ErrorOf(driver), "a" + text.substr(0, 254) + "\r\nX");
    e->Delete();
}

TEST_F(DataDriver, ThrowExceptionKeepsAContextOfAnyLength) {
    const std::string sql(5000, 's');
    Driver driver;
    auto* e = new COleDispatchException("E", 0, 0);
    driver.ThrowException(e, sql.c_str());
    EXPECT_EQ(ErrorOf(driver), "E\r\n" + sql);
    e->Delete();
}

// ---- provider properties ---------------------------------------------------------------------------------------

TEST_F(DataDriver, ReadsEveryPropertyByNumberValueFirst) {
    auto properties = MakeProperties({{"User ID", Text("sa")}, {"Max Rows", Long(7)}});
    Driver driver;
    EXPECT_EQ(driver.OnInitProperty(properties.Get()), 1);
    EXPECT_EQ(driver.Property("User ID"), "sa");
    EXPECT_EQ(driver.Property("Max Rows"), "7");
    EXPECT_EQ(driver.PropertyCount(), 2);
    EXPECT_EQ(properties->References(), 1u) << "the caller keeps his reference";
    EXPECT_THAT(journal_.Lines(), ElementsAre("properties.get 1", "properties.get 0 (I4 0)", "property.get 0",
                                              "property.get 1610743810", "properties.get 1", "properties.get 0 (I4 1)",
                                              "property.get 0", "property.get 1610743810", "properties.get 1"));
}

TEST_F(DataDriver, ConvertsPropertyValuesToText) {
    auto properties = MakeProperties({{"bool", Flag(true)},
                                      {"null", Null()},
                                      {"empty", Nothing()},
                                      {"short", Short(-3)},
                                      {"chinese", Text("系统")},
                                      {"nothing", Text(nullptr)}});
    Driver driver;
    EXPECT_EQ(driver.OnInitProperty(properties.Get()), 1);
    static const struct {
        const char* name;
        const char* text;
    } kRows[] = {{"bool", "True"}, {"null", ""}, {"empty", ""}, {"short", "-3"}, {"chinese", "系统"}, {"nothing", ""}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(driver.Property(row.name), row.text);
    }
}

TEST_F(DataDriver, TheLastOfTwoPropertiesOfOneNameStays) {
    auto properties = MakeProperties({{"A", Text("1")}, {"A", Text("2")}, {"a", Text("3")}});
    Driver driver;
    EXPECT_EQ(driver.OnInitProperty(properties.Get()), 1);
    EXPECT_EQ(driver.PropertyCount(), 2);
    EXPECT_EQ(driver.Property("A"), "2");
    EXPECT_EQ(driver.Property("a"), "3");
}

TEST_F(DataDriver, AnEmptyCollectionEmptiesTheMapAndGivesZero) {
    Driver driver;
    driver.OnInitProperty(MakeProperties({{"A", Text("1")}}).Get());
    EXPECT_EQ(driver.OnInitProperty(MakeProperties({}).Get()), 0);
    EXPECT_EQ(driver.PropertyCount(), 0);
}

TEST_F(DataDriver, AnAddressThatIsNoneLeavesTheMap) {
    Driver driver;
    driver.OnInitProperty(MakeProperties({{"A", Text("1")}}).Get());
    journal_.Take();
    for (const std::uintptr_t address : {std::uintptr_t{0}, std::uintptr_t{1}, std::uintptr_t{0x10}}) {
        EXPECT_EQ(driver.OnInitProperty(reinterpret_cast<IDispatch*>(address)), 0);
    }
    EXPECT_EQ(driver.Property("A"), "1");
    EXPECT_EQ(ErrorOf(driver), "");
    EXPECT_THAT(journal_.Lines(), IsEmpty());
}

TEST_F(DataDriver, WhatWasReadBeforeAFailureStays) {
    auto properties = MakeProperties({{"A", Text("1")}, {"B", Text("2")}});
    auto first = Make("property");
    first->On(Get(0)).Returns(Text("1"));
    first->On(Get(0x60020002)).Returns(Text("A"));
    properties->On(Get(0)).Does(nullptr).Returns(Object(first.Get())).Then().Fails("没有权限");
    Driver driver;
    driver.OnInitProperty(MakeProperties({{"Old", Text("0")}}).Get());
    EXPECT_EQ(driver.OnInitProperty(properties.Get()), 0);
    EXPECT_EQ(driver.PropertyCount(), 1);
    EXPECT_EQ(driver.Property("A"), "1");
    EXPECT_EQ(ErrorOf(driver), Failure("没有权限", "操作 GetPropertyValue 出现异常!"));
    EXPECT_EQ(properties->References(), 1u);
}

TEST_F(DataDriver, TheMapIsEmptiedBeforeTheFirstCall) {
    auto properties = MakeProperties({});
    properties->On(Get(1)).Fails("没有权限");
    Driver driver;
    driver.OnInitProperty(MakeProperties({{"Old", Text("0")}}).Get());
    EXPECT_EQ(driver.OnInitProperty(properties.Get()), 0);
    EXPECT_EQ(driver.PropertyCount(), 0);
    EXPECT_EQ(ErrorOf(driver), Failure("没有权限", "操作 GetPropertyValue 出现异常!"));
}

TEST_F(DataDriver, APropertyThatCannotBeReadEndsTheReading) {
    static const struct {
        const char* label;
        Member member;
    } kRows[] = {{"value", Get(0)}, {"name", Get(0x60020002)}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        auto first = Make("property");
        first->On(Get(0)).Returns(Text("1"));
        first->On(Get(0x60020002)).Returns(Text("A"));
        auto second = Make("property");
        second->On(Get(0x60020002)).Returns(Text("B"));
        second->On(row.member).Fails("不可读");
        auto properties = Make("properties");
        properties->On(Get(1)).Returns(Long(3));
        properties->On(Get(0)).Returns(Object(first.Get())).Then().Returns(Object(second.Get()));
        Driver driver;
        EXPECT_EQ(driver.OnInitProperty(properties.Get()), 0);
        EXPECT_EQ(driver.PropertyCount(), 1);
        EXPECT_EQ(driver.Property("A"), "1");
        EXPECT_EQ(ErrorOf(driver), Failure("不可读", "操作 GetPropertyValue 出现异常!"));
    }
}

}  // namespace
}  // namespace tk::test
