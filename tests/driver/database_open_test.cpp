#include "driver/driver_fixture.h"

namespace tk::test {
namespace {

class Database : public CTDatabase {
public:
    using CTDatabase::CTDatabase;
    using CTDatabase::OnInitDispatch;
    using CTDatabase::OnInvoke;
    int Initialised() const { return initialised_; }
    std::string Tag() const { return std::string(dbmsTag_); }
};

class DatabaseOpen : public DriverTest {
protected:
    void Announce() {
        connection_->On(Get(18)).Returns(Long(1));
        connection_->On(Get(500)).Returns(Object(MakeProperties({{"DBMS Name", Text("ORACLE")}}).Get()));
        connections_->Give(connection_.Get());
    }

    /// The lines of an open behind the creation: the open itself, the properties, and the state for the tag.
    static Lines Opening(const std::string& arguments) {
        return {"connection.call 10 (" + arguments + ")",
                "connection.get 500",
                "properties.get 1",
                "properties.get 0 (I4 0)",
                "property.get 0",
                "property.get 1610743810",
                "properties.get 1",
                "connection.get 18"};
    }

    /// The three defaults come first at the first open.
    static Lines FirstOpening(const std::string& arguments) {
        Lines lines = {"connection.put 15 (I4 3)", "connection.put 2 (I4 1800)", "connection.put 3 (I4 20)"};
        for (auto& line : Opening(arguments))
            lines.push_back(line);
        return lines;
    }
};

TEST_F(DatabaseOpen, CreatesNothingBeforeTheFirstOpen) {
    {
        CTDatabase database;
        EXPECT_EQ(database.IsOpen(), 0);
        EXPECT_EQ(database.GetState(), 0);
        database.Close();
        EXPECT_EQ(ErrorOf(database), "");
    }
    EXPECT_EQ(connections_->Created(), 0);
}

TEST_F(DatabaseOpen, SendsDefaultsThenTheStringThenReadsProperties) {
    Announce();
    Database database;
    EXPECT_EQ(database.Open("Driver=SQLite3;Database=库.db"), 1);
    EXPECT_EQ(journal_.Take(), FirstOpening("BSTR \"Driver=SQLite3;Database=库.db\", BSTR null, BSTR null, I4 -1"));
    EXPECT_EQ(database.Tag(), "ORA");
    EXPECT_EQ(database.Initialised(), 1);
    EXPECT_EQ(database.IsOpen(), 1);
    EXPECT_EQ(ErrorOf(database), "返回编码:[0x00000000]操作完全成功。");
}

TEST_F(DatabaseOpen, EveryWayToOpenSendsItsOwnText) {
    static const struct {
        const char* label;
        int (*open)(CTDatabase&);
        const char* arguments;
    } kRows[] = {
        {"data source", [](CTDatabase& d) { return d.Open("stock", "sa", "密码"); },
         "BSTR \"DSN=stock;UID=sa;PWD=密码\", BSTR \"sa\", BSTR \"密码\", I4 -1"},
        {"data source, all null", [](CTDatabase& d) { return d.Open(nullptr, nullptr, nullptr); },
         "BSTR \"DSN=;UID=;PWD=\", BSTR null, BSTR null, I4 -1"},
        {"data source, percent signs", [](CTDatabase& d) { return d.Open("100%s", "%n", "%"); },
         "BSTR \"DSN=100%s;UID=%n;PWD=%\", BSTR \"%n\", BSTR \"%\", I4 -1"},
        {"string, null", [](CTDatabase& d) { return d.Open(static_cast<const char*>(nullptr)); },
         "BSTR null, BSTR null, BSTR null, I4 -1"},
        {"string, empty", [](CTDatabase& d) { return d.Open(""); }, "BSTR \"\", BSTR null, BSTR null, I4 -1"},
        {"Jet file", [](CTDatabase& d) { return d.OpenDAO("C:\\data\\stock.mdb", "me", "pw"); },
         "BSTR \"Provider=Microsoft.Jet.OLEDB.4.0;User ID=me;Data Source=C:\\data\\stock.mdb;Mode=Share Deny None;"
         "Extended Properties=\"\";Jet OLEDB:System database=\"\";Jet OLEDB:Registry Path=\"\";"
         "Jet OLEDB:Database Password=\"pw\";J\", BSTR \"me\", BSTR \"pw\", I4 -1"},
        {"Jet file without user", [](CTDatabase& d) { return d.OpenDAO("a.mdb", nullptr, nullptr); },
         "BSTR \"Provider=Microsoft.Jet.OLEDB.4.0;User ID=Admin;Data Source=a.mdb;Mode=Share Deny None;"
         "Extended Properties=\"\";Jet OLEDB:System database=\"\";Jet OLEDB:Registry Path=\"\";"
         "Jet OLEDB:Database Password=\"\";J\", BSTR null, BSTR null, I4 -1"},
        {"Jet file with empty user", [](CTDatabase& d) { return d.OpenDAO(nullptr, "", ""); },
         "BSTR \"Provider=Microsoft.Jet.OLEDB.4.0;User ID=;Data Source=;Mode=Share Deny None;"
         "Extended Properties=\"\";Jet OLEDB:System database=\"\";Jet OLEDB:Registry Path=\"\";"
         "Jet OLEDB:Database Password=\"\";J\", BSTR \"\", BSTR \"\", I4 -1"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        Announce();
        {
            CTDatabase database;
            EXPECT_EQ(row.open(database), 1);
            EXPECT_EQ(journal_.Take(), FirstOpening(row.arguments));
        }
        journal_.Take();
    }
}

TEST_F(DatabaseOpen, ALongConnectionStringIsSentWhole) {
    Announce();
    const std::string text = "Driver=SQLite3;Description=" + std::string(20000, 'x');
    CTDatabase database;
    EXPECT_EQ(database.Open(text.c_str()), 1);
    EXPECT_EQ(journal_.Take(), FirstOpening("BSTR \"" + text + "\", BSTR null, BSTR null, I4 -1"));
}

TEST_F(DatabaseOpen, AppliesTheDefaultsOnce) {
    Announce();
    CTDatabase database;
    database.Open("first");
    database.Close();
    journal_.Take();
    EXPECT_EQ(database.Open("second"), 1);
    EXPECT_EQ(journal_.Take(), Opening("BSTR \"second\", BSTR null, BSTR null, I4 -1"));
    EXPECT_EQ(connections_->Created(), 1);
}

TEST_F(DatabaseOpen, OnInitDispatchCreatesOnce) {
    Announce();
    Database database;
    EXPECT_EQ(database.OnInitDispatch(), 1);
    EXPECT_EQ(database.OnInitDispatch(), 1);
    EXPECT_THAT(journal_.Take(),
                ElementsAre("connection.put 15 (I4 3)", "connection.put 2 (I4 1800)", "connection.put 3 (I4 20)"));
}

TEST_F(DatabaseOpen, AFailingCreationKeepsItsOwnText) {
    connections_->Refuse(static_cast<HRESULT>(0x80070005));
    Database database;
    EXPECT_EQ(database.Open("x"), 0);
    EXPECT_EQ(database.Initialised(), 0);
    EXPECT_THAT(ErrorOf(database), ::testing::StartsWith("错误[0x80070005]:"));
    EXPECT_THAT(journal_.Take(), IsEmpty());
}

TEST_F(DatabaseOpen, AFailingOpenNamesTheServersReason) {
    Announce();
    connection_->On(Call(10)).Fails("用户 'sa' 登录失败。");
    CTDatabase database;
    EXPECT_EQ(database.Open("x"), 0);
    EXPECT_EQ(ErrorOf(database), Failure("用户 'sa' 登录失败。", "打开数据库失败"));
}

TEST_F(DatabaseOpen, AFailureBehindTheOpenFailsTheOpen) {
    Announce();
    connection_->On(Get(500)).Fails("没有属性");
    CTDatabase database;
    EXPECT_EQ(database.Open("x"), 0);
    EXPECT_EQ(ErrorOf(database), Failure("没有属性", "打开数据库失败"));
}

TEST_F(DatabaseOpen, AFailureOfTheStateBehindTheOpenFailsTheOpen) {
    Announce();
    connection_->On(Get(18)).Fails("断开");
    CTDatabase database;
    EXPECT_EQ(database.Open("x"), 0);
    EXPECT_EQ(ErrorOf(database), Failure("断开", "打开数据库失败"));
    EXPECT_EQ(journal_.Take(), FirstOpening("BSTR \"x\", BSTR null, BSTR null, I4 -1"));
}

TEST_F(DatabaseOpen, TheNextOpenReplacesPropertiesAndTag) {
    Database database;
    Open(database, {{"A", Text("1")}, {"DBMS Name", Text("DB2")}});
    EXPECT_EQ(database.Tag(), "DB2");
    connection_->On(Get(500)).Returns(Object(MakeProperties({{"B", Text("2")}, {"DBMS Name", Text("ORACLE")}}).Get()));
    EXPECT_EQ(database.Open("x"), 1);
    EXPECT_STREQ(database.GetPropertyValue("A"), "");
    EXPECT_STREQ(database.GetPropertyValue("B"), "2");
    EXPECT_EQ(database.Tag(), "ORA");
}

TEST_F(DatabaseOpen, PropertiesThatCannotBeReadAreNoFailureOfTheOpen) {
    Announce();
    auto properties = MakeProperties({});
    properties->On(Get(1)).Fails("不可读");
    connection_->On(Get(500)).Returns(Object(properties.Get()));
    CTDatabase database;
    EXPECT_EQ(database.Open("x"), 1);
    EXPECT_EQ(ErrorOf(database), Failure("不可读", "操作 GetPropertyValue 出现异常!"));
}

TEST_F(DatabaseOpen, ADefaultThatIsRefusedFailsTheOpenAndIsTriedAgain) {
    Announce();
    connection_->On(Put(2)).Fails("不允许").Then();
    Database database;
    EXPECT_EQ(database.Open("x"), 0);
    EXPECT_EQ(ErrorOf(database), Failure("不允许", "打开数据库失败"));
    EXPECT_EQ(database.Initialised(), 0);
    journal_.Take();
    EXPECT_EQ(database.Open("x"), 1);
    EXPECT_EQ(journal_.Take(), FirstOpening("BSTR \"x\", BSTR null, BSTR null, I4 -1"));
}

TEST_F(DatabaseOpen, TheObjectStaysUsableAfterAFailure) {
    Announce();
    connection_->On(Call(10)).Fails("first").Then();
    CTDatabase database;
    EXPECT_EQ(database.Open("x"), 0);
    EXPECT_EQ(database.Open("x"), 1);
    EXPECT_EQ(database.IsOpen(), 1);
}

TEST_F(DatabaseOpen, AFailureWithoutTextLeavesTheFirstLineEmpty) {
    Announce();
    connection_->On(Call(10)).Fails("");
    CTDatabase database;
    EXPECT_EQ(database.Open("x"), 0);
    EXPECT_THAT(ErrorOf(database), ::testing::EndsWith("\r\n打开数据库失败"));
}

// ---- closing ---------------------------------------------------------------------------------------------------

TEST_F(DatabaseOpen, CloseAsksTheStateFirst) {
    CTDatabase database;
    Open(database);
    database.Close();
    EXPECT_THAT(journal_.Take(), ElementsAre("connection.get 18", "connection.call 5"));
    connection_->On(Get(18)).Returns(Long(0));
    database.Close();
    EXPECT_THAT(journal_.Take(), ElementsAre("connection.get 18"));
    EXPECT_EQ(database.IsOpen(), 0);
}

TEST_F(DatabaseOpen, CloseClosesInEveryStateButZero) {
    CTDatabase database;
    Open(database);
    connection_->On(Get(18)).Returns(Long(2));
    database.Close();
    EXPECT_THAT(journal_.Take(), ElementsAre("connection.get 18", "connection.call 5"));
    EXPECT_EQ(database.IsOpen(), 0) << "connecting is not open";
}

TEST_F(DatabaseOpen, AFailingCloseLeavesItsReason) {
    CTDatabase database;
    Open(database);
    connection_->On(Call(5)).Fails("事务未结束");
    database.Close();
    EXPECT_EQ(ErrorOf(database), Failure("事务未结束", "数据库没有打开或打开失败,无法关闭!"));
}

TEST_F(DatabaseOpen, CloseBearsAStateThatCannotBeRead) {
    CTDatabase database;
    Open(database);
    connection_->On(Get(18)).Fails("断开");
    database.Close();
    EXPECT_EQ(ErrorOf(database), Failure("断开", "数据库没有打开或打开失败,无法关闭!"));
    EXPECT_THAT(journal_.Take(), ElementsAre("connection.get 18"));
}

TEST_F(DatabaseOpen, TheDestructorClosesAndReleasesAlsoWhenClosingFails) {
    {
        CTDatabase database;
        Open(database);
        connection_->On(Call(5)).Fails("事务未结束");
    }
    EXPECT_THAT(journal_.Take(), ElementsAre("connection.get 18", "connection.call 5"));
    EXPECT_EQ(connection_->References(), 1u);
}

TEST_F(DatabaseOpen, TheDestructorBearsAStateThatCannotBeRead) {
    {
        CTDatabase database;
        Open(database);
        connection_->On(Get(18)).FailsWith(E_FAIL);
    }
    EXPECT_EQ(connection_->References(), 1u);
}

TEST_F(DatabaseOpen, ACopySharesTheConnectionAndClosesIt) {
    Database database;
    Open(database);
    {
        Database copy(database);
        EXPECT_EQ(copy.GetDispatch(), database.GetDispatch());
        EXPECT_EQ(copy.Tag(), "Mic");
        EXPECT_EQ(copy.Initialised(), 0);
        EXPECT_EQ(connection_->References(), 3u);
        EXPECT_EQ(copy.IsOpen(), 1);
        EXPECT_STREQ(copy.GetPropertyValue("DBMS Name"), "");
        journal_.Take();
    }
    EXPECT_THAT(journal_.Take(), ElementsAre("connection.get 18", "connection.call 5"));
    EXPECT_EQ(connection_->References(), 2u);
}

TEST_F(DatabaseOpen, OpeningACopyAppliesTheDefaultsToTheSharedObject) {
    CTDatabase database;
    Open(database);
    CTDatabase copy(database);
    EXPECT_EQ(copy.Open("x"), 1);
    EXPECT_EQ(connections_->Created(), 1);
    EXPECT_EQ(journal_.Take().front(), "connection.put 15 (I4 3)");
}

TEST_F(DatabaseOpen, OpeningACopyGivesItTheTagOfTheConnection) {
    Database database;
    Open(database);
    Database copy(database);
    EXPECT_EQ(copy.Tag(), "Mic");
    connection_->On(Get(500)).Returns(Object(MakeProperties({{"DBMS Name", Text("ORACLE")}}).Get()));
    EXPECT_EQ(copy.Open("x"), 1);
    EXPECT_EQ(copy.Tag(), "ORA");
}

TEST_F(DatabaseOpen, AnUnopenedCopyOfAnUnopenedDatabaseIsHarmless) {
    CTDatabase database;
    CTDatabase copy(database);
    EXPECT_EQ(copy.IsOpen(), 0);
}

}  // namespace
}  // namespace tk::test
