#include "driver/driver_fixture.h"
#include "tkkernel/platform.h"

namespace tk::test {
namespace {

class DatabaseQuestions : public DriverTest {};

TEST_F(DatabaseQuestions, EachReadsItsProperty) {
    CTDatabase database;
    Open(database, {{"User Name", Text("dbo")},
                    {"User ID", Text("sa")},
                    {"Password", Text("密码")},
                    {"Data Source Name", Text("stock")},
                    {"Provider Friendly Name", Text("驱动")},
                    {"Current Catalog", Text("pubs")},
                    {"DBMS Name", Text("Microsoft SQL Server")}});
    EXPECT_STREQ(database.GetCurSchema(), "dbo");
    EXPECT_STREQ(database.GetUser(), "sa");
    EXPECT_STREQ(database.GetPassword(), "密码");
    EXPECT_STREQ(database.GetServer(), "stock");
    EXPECT_STREQ(database.GetDriverName(), "驱动");
    EXPECT_STREQ(database.GetDatabaseName(), "pubs");
    EXPECT_STREQ(database.GetCurDbName(), "pubs");
    EXPECT_STREQ(database.GetDbmsName(), "Microsoft SQL Server");
    EXPECT_STREQ(database.GetDBMS(), "Mic");
    journal_.Take();
    database.GetUser();
    EXPECT_THAT(journal_.Take(), ElementsAre("connection.get 18"));
}

TEST_F(DatabaseQuestions, TheTagHasAtMostThreeBytes) {
    static const struct {
        const char* name;
        const char* tag;
    } kRows[] = {{"MS Jet", "MS "}, {"DB2", "DB2"}, {"Or", "Or"}, {"", ""}, {"ADAPTIVE SERVER", "ADA"}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.name);
        CTDatabase database;
        Open(database, {{"DBMS Name", Text(row.name)}});
        EXPECT_STREQ(database.GetDBMS(), row.tag);
        EXPECT_STREQ(database.GetDbmsName(), row.name);
    }
}

TEST_F(DatabaseQuestions, NamesAreLookedUpExactly) {
    CTDatabase database;
    Open(database, {{"User ID", Text("sa")}});
    for (const char* name : {"user id", "USER ID", "User ID ", "", "User"}) {
        SCOPED_TRACE(name);
        EXPECT_STREQ(database.GetPropertyValue(name), "");
    }
    EXPECT_STREQ(database.GetPropertyValue(nullptr), "");
    EXPECT_STREQ(database.GetPropertyValue("User ID"), "sa");
}

TEST_F(DatabaseQuestions, AClosedConnectionAnswersNothingAndForgetsNothing) {
    CTDatabase database;
    Open(database, {{"User ID", Text("sa")}, {"DBMS Name", Text("ORACLE")}});
    for (const long state : {0L, 2L, 3L, 5L}) {
        connection_->On(Get(18)).Returns(Long(state));
        EXPECT_STREQ(database.GetUser(), "") << state;
        EXPECT_STREQ(database.GetDBMS(), "") << state;
    }
    connection_->On(Get(18)).Returns(Long(1));
    EXPECT_STREQ(database.GetUser(), "sa");
}

TEST_F(DatabaseQuestions, AStateThatCannotBeReadReachesTheCaller) {
    CTDatabase database;
    Open(database, {{"User ID", Text("sa")}});
    const std::string before = ErrorOf(database);
    connection_->On(Get(18)).Fails("断开");
    try {
        database.GetPropertyValue("User ID");
        ADD_FAILURE() << "no exception";
    } catch (COleDispatchException* e) {
        EXPECT_STREQ(e->m_strDescription, "断开");
        e->Delete();
    }
    EXPECT_EQ(ErrorOf(database), before);
}

TEST_F(DatabaseQuestions, AnUnopenedDatabaseAnswersNothing) {
    CTDatabase database;
    EXPECT_STREQ(database.GetUser(), "");
    EXPECT_STREQ(database.GetDBMS(), "");
    EXPECT_STREQ(database.GetCurDbName(), "(Unknown)");
    EXPECT_STREQ(database.GetConnectionType(), "ADO");
}

TEST_F(DatabaseQuestions, TheDatabaseNameIsTheFirstOfFour) {
    ASSERT_EQ("誠"[1], '\\') << "the rows below need a character with that second byte";
    using Properties = std::vector<std::pair<const char*, COleVariant>>;
    static const struct {
        const char* label;
        Properties properties;
        const char* name;
    } kRows[] = {
        {"catalog", {{"Current Catalog", Text("pubs")}, {"Server Name", Text("S")}}, "pubs"},
        {"file", {{"Current Catalog", Text("C:\\data\\stock.mdb")}}, "stock.mdb"},
        {"file in the root", {{"Current Catalog", Text("\\stock.mdb")}}, "stock.mdb"},
        {"slashes stay", {{"Current Catalog", Text("/var/stock.db")}}, "/var/stock.db"},
        {"folder only", {{"Current Catalog", Text("C:\\data\\")}, {"Server Name", Text("S")}}, "S"},
        {"no backslash by character", {{"Current Catalog", Text("目誠")}}, "目誠"},
        {"Chinese folder", {{"Current Catalog", Text("C:\\誠\\庫誠.mdb")}}, "庫誠.mdb"},
        {"server", {{"Current Catalog", Text("")}, {"Server Name", Text("S")}}, "S"},
        {"source", {{"Server Name", Text("")}, {"Data Source Name", Text("D")}}, "D"},
        {"a backslash in the server stays", {{"Server Name", Text("host\\instance")}}, "host\\instance"},
        {"nothing",
         {{"Current Catalog", Text("")}, {"Server Name", Text("")}, {"Data Source Name", Text("")}},
         "(Unknown)"},
        {"no such properties", {}, "(Unknown)"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        CTDatabase database;
        Open(database, row.properties);
        EXPECT_STREQ(database.GetCurDbName(), row.name);
        EXPECT_STREQ(database.GetDatabaseName(), row.name);
    }
}

TEST_F(DatabaseQuestions, TheConnectionTypeLooksAtThreeCharacters) {
    static const struct {
        const char* properties;
        const char* type;
    } kRows[] = {{"DSN=stock", "ODBC"}, {"dsn=stock", "ODBC"}, {"DsN", "ODBC"},   {"DSNX", "ODBC"},
                 {"DS", "ADO"},         {"", "ADO"},           {" DSN=x", "ADO"}, {"Driver=x;DSN=y", "ADO"}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.properties);
        CTDatabase database;
        Open(database, {{"Extended Properties", Text(row.properties)}});
        EXPECT_STREQ(database.GetConnectionType(), row.type);
    }
}

TEST_F(DatabaseQuestions, TheClientIsThisComputer) {
    CTDatabase database;
    EXPECT_STREQ(database.GetClient(), GetComputerNameA());
    EXPECT_STRNE(database.GetClient(), "");
    EXPECT_THAT(journal_.Lines(), IsEmpty());
}

TEST_F(DatabaseQuestions, PropertiesStayThoseOfTheLastSuccessfulOpen) {
    CTDatabase database;
    Open(database, {{"User ID", Text("sa")}});
    connection_->On(Call(10)).Fails("失败");
    EXPECT_EQ(database.Open("again"), 0);
    EXPECT_STREQ(database.GetUser(), "sa");
}

}  // namespace
}  // namespace tk::test
