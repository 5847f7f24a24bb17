#include "driver/driver_fixture.h"

namespace tk::test {
namespace {

class Database : public CTDatabase {
public:
    std::string Tag() const { return std::string(dbmsTag_); }
};

class DatabaseSchema : public DriverTest {};

TEST_F(DatabaseSchema, SendsOnlyTheArgumentsItWasGiven) {
    Database database;
    Open(database);
    connection_->On(Call(19)).Returns(Object(records_.Get()));
    {
        Held<IDispatch> rowset(database.OpenSchema(20));
        EXPECT_EQ(rowset.Get(), records_.Get());
    }
    EXPECT_THAT(journal_.Take(), ElementsAre("connection.call 19 (I4 20)", "connection.get 18"));
    { Held<IDispatch> rowset(database.OpenSchema(4, Text("表"))); }
    EXPECT_THAT(journal_.Take(), ElementsAre("connection.call 19 (I4 4, BSTR \"表\")", "connection.get 18"));
    { Held<IDispatch> rowset(database.OpenSchema(-1, Nothing(), Text("{guid}"))); }
    EXPECT_THAT(journal_.Take(),
                ElementsAre("connection.call 19 (I4 -1, EMPTY, BSTR \"{guid}\")", "connection.get 18"));
    EXPECT_EQ(records_->References(), 2u);
}

TEST_F(DatabaseSchema, CreatesTheConnectionWhenThereIsNone) {
    connections_->Give(connection_.Get());
    connection_->On(Call(19)).Returns(Object(nullptr));
    Database database;
    EXPECT_EQ(database.OpenSchema(20), nullptr);
    EXPECT_THAT(journal_.Take(),
                ElementsAre("connection.put 15 (I4 3)", "connection.put 2 (I4 1800)", "connection.put 3 (I4 20)",
                            "connection.call 19 (I4 20)", "connection.get 18"));
}

TEST_F(DatabaseSchema, ACopyAsksTheConnectionItSharesAndChangesNothingThere) {
    Database database;
    Open(database, {{"DBMS Name", Text("DB2/NT")}});
    for (const long property : {15L, 2L, 3L})
        connection_->On(Put(property)).Fails("对象已打开");
    connection_->On(Call(19)).Returns(Object(records_.Get()));
    {
        Database copy(database);
        Held<IDispatch> rowset(copy.OpenSchema(20));
        EXPECT_EQ(rowset.Get(), records_.Get()) << ErrorOf(copy);
        EXPECT_THAT(journal_.Take(), ElementsAre("connection.call 19 (I4 20)", "connection.get 18"));
        EXPECT_EQ(ErrorOf(copy), "");
        EXPECT_EQ(connections_->Created(), 1);
    }
    EXPECT_EQ(records_->References(), 2u);
}

TEST_F(DatabaseSchema, ACopyOfADatabaseWithoutAnObjectCreatesItsOwn) {
    CTDatabase database;
    CTDatabase copy(database);
    connections_->Give(connection_.Get());
    connection_->On(Call(19)).Returns(Object(nullptr));
    EXPECT_EQ(copy.OpenSchema(20), nullptr);
    EXPECT_THAT(journal_.Take(),
                ElementsAre("connection.put 15 (I4 3)", "connection.put 2 (I4 1800)", "connection.put 3 (I4 20)",
                            "connection.call 19 (I4 20)", "connection.get 18"));
    EXPECT_EQ(database.GetDispatch(), nullptr);
}

TEST_F(DatabaseSchema, GivesNullWhenTheConnectionCannotBeCreated) {
    connections_->Refuse(E_ACCESSDENIED);
    Database database;
    EXPECT_EQ(database.OpenSchema(20), nullptr);
    EXPECT_THAT(ErrorOf(database), ::testing::StartsWith("错误[0x80070005]:"));
}

TEST_F(DatabaseSchema, RefreshesTheTag) {
    Database database;
    Open(database, {{"DBMS Name", Text("DB2/NT")}});
    EXPECT_EQ(database.Tag(), "DB2");
    connection_->On(Call(19)).Returns(Object(nullptr));
    connection_->On(Get(18)).Returns(Long(0));
    database.OpenSchema(20);
    EXPECT_EQ(database.Tag(), "") << "a closed connection tells no name";
    connection_->On(Get(18)).Returns(Long(1));
    database.OpenSchema(20);
    EXPECT_EQ(database.Tag(), "DB2");
}

TEST_F(DatabaseSchema, WordsTheFailureOfTheShortFormDifferently) {
    Database database;
    Open(database);
    connection_->On(Call(19)).Fails("不支持");
    EXPECT_EQ(database.OpenSchema(20, Nothing(), Nothing()), nullptr);
    EXPECT_EQ(ErrorOf(database), Failure("不支持", "OpenSchema 出错!"));
    EXPECT_EQ(database.OpenSchema(20, Nothing()), nullptr);
    EXPECT_EQ(ErrorOf(database), Failure("不支持", "OpenSchema 出错!"));
    EXPECT_EQ(database.OpenSchema(20), nullptr);
    EXPECT_EQ(ErrorOf(database), Failure("不支持", "OpenSchema 时出错"));
}

TEST_F(DatabaseSchema, ADefaultThatIsRefusedIsAFailureOfTheSchema) {
    connections_->Give(connection_.Get());
    connection_->On(Put(15)).Fails("不允许");
    Database database;
    EXPECT_EQ(database.OpenSchema(20), nullptr);
    EXPECT_EQ(ErrorOf(database), Failure("不允许", "OpenSchema 时出错"));
}

TEST_F(DatabaseSchema, AFailureBehindTheRowsetGivesTheRowsetBack) {
    Database database;
    Open(database);
    connection_->On(Call(19)).Returns(Object(records_.Get()));
    connection_->On(Get(18)).Fails("断开").Then().Returns(Long(0));
    EXPECT_EQ(database.OpenSchema(20), nullptr);
    EXPECT_EQ(ErrorOf(database), Failure("断开", "OpenSchema 时出错"));
    EXPECT_EQ(records_->References(), 2u);
}

}  // namespace
}  // namespace tk::test
