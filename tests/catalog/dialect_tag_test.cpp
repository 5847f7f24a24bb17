// Which dialect a connection speaks.
#include "driver/driver_fixture.h"

namespace tk::test {
namespace {

class DialectOfAConnection : public DriverTest {};

TEST_F(DialectOfAConnection, IsTheStoredTagAndAsksTheConnectionNothing) {
    CTDatabase database;
    Open(database, {{"DBMS Name", Text("DB2/NT")}});
    connection_->On(Get(18)).Returns(Long(0));
    EXPECT_STREQ(database.VeriFySQLPragramer("\"价\" long varchar", "ora"), "\"价\" LONG");
    EXPECT_THAT(journal_.Take(), IsEmpty());
    EXPECT_STREQ(CTDatabase().VeriFySQLPragramer("int", "ORA"), "") << "the tag of an unopened database is empty";
    const CTDatabase copied(database);
    EXPECT_STREQ(CTDatabase(copied).VeriFySQLPragramer("int", "ADA"), "INT") << "that of a copy is Mic";
}

}  // namespace
}  // namespace tk::test
