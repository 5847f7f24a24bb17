// Connecting to the server, what it says of itself, and losing it.
#include <cstdlib>

#include "support/server_process.h"
#include "tds_test.h"

namespace tk::ado::test {
namespace {

using TdsConnectionTest = TdsTest;

std::string PropertyOf(const Object& connection, std::u16string_view name) {
    return connection.Get(connection::kProperties).Result().Get(collection::kItem, {Text(name)}).Result().Get(0).Utf8();
}

TEST_F(TdsConnectionTest, IsToldTheNameOfTheSystem) {
    EXPECT_EQ(PropertyOf(connection_, u"DBMS Name"), "Microsoft SQL Server");
    EXPECT_EQ(PropertyOf(connection_, u"Current Catalog"), "test");
    EXPECT_EQ(connection_.Get(connection::kDefaultDatabase).Utf8(), "test");
    EXPECT_NE(AskFor(u"select @@version").find("Microsoft SQL Server"), std::string::npos);
    EXPECT_EQ(AskFor(u"select db_name()"), "test");
}

TEST_F(TdsConnectionTest, RefusesAWrongPassword) {
    const Object refused = Object::Create(kConnectionClass);
    const Outcome outcome = refused.Call(connection::kOpen, {Text(ConnectionText()), Text(u"sa"), Text(u"wrong")});
    EXPECT_FALSE(outcome.Ok());
    EXPECT_EQ(outcome.Error(), 0x80040E4Du) << outcome;
    EXPECT_EQ(refused.Get(connection::kState).Long(), 0);
    // The driver does not know the code of the server's texts before it is connected; what is not Chinese remains.
    EXPECT_NE(outcome.description.find(u"'sa'"), std::u16string::npos) << outcome;
}

TEST_F(TdsConnectionTest, RefusesADatabaseThatIsNotThere) {
    const Object refused = Object::Create(kConnectionClass);
    std::u16string text = ConnectionText();
    text.replace(text.find(u"Database=test"), 13, u"Database=nosuch");
    const Outcome outcome = refused.Call(connection::kOpen, {Text(text)});
    EXPECT_FALSE(outcome.Ok());
    EXPECT_NE(outcome.description.find(u"'nosuch'"), std::u16string::npos) << outcome;
}

TEST(TdsConnection, FailsAtAPortWhereNobodyListens) {
    const std::string port = std::to_string(tk::test::FreePort());
    const Object refused = Object::Create(kConnectionClass);
    const Outcome outcome = refused.Call(
        connection::kOpen, {Text(ToUtf16("Driver=FreeTDS;Server=127.0.0.1;Port=" + port + ";UID=sa;PWD=pw"))});
    EXPECT_FALSE(outcome.Ok());
    EXPECT_EQ(refused.Get(connection::kState).Long(), 0);
    EXPECT_EQ(outcome.Error(), 0x80004005u) << outcome;
}

TEST_F(TdsConnectionTest, OpensByTheNameOfAProvider) {
    const Object opened = Object::Create(kConnectionClass);
    const std::string port = std::to_string(server_.Port());
    const Outcome outcome =
        opened.Call(connection::kOpen, {Text(ToUtf16("Provider=SQLOLEDB.1;Data Source=127.0.0.1," + port +
                                                     ";Initial Catalog=test;User ID=sa;Password=pw"))});
    ASSERT_TRUE(outcome.Ok()) << outcome;
    EXPECT_EQ(Ask(opened, u"select N'中文'"), ToUtf8(u"中文"));
}

TEST_F(TdsConnectionTest, NoticesThatTheServerIsGone) {
    EXPECT_EQ(AskFor(u"select 1"), "1");
    server_.CutConnections();
    const Outcome lost = connection_.Call(connection::kExecute, {Text(u"insert into nosuch values (1)")});
    EXPECT_FALSE(lost.Ok());
    // The server still listens: a new connection is served.
    EXPECT_EQ(Ask(Connect(), u"select 2"), "2");
}

}  // namespace
}  // namespace tk::ado::test
