// The statements that maintain data and objects: what is sent for each system, blank by blank.
#include "catalog/catalog_fixture.h"

namespace tk::test {
namespace {

class Maintenance : public CatalogTest {
protected:
    void Open(CTDatabase& database, const char* dbmsName) {
        CatalogTest::Open(database, dbmsName);
        connection_->On(Call(6)) = Script();
        connection_->On(Call(6)).Stores(1, Long(3)).Returns(Object(nullptr));
    }

    /// What Connection.Execute gets for a statement.
    static Lines Executed(const char* sql) {
        return {std::string("connection.call 6 (BSTR \"") + sql + "\", VARIANT& EMPTY, I4 129)"};
    }
};

TEST_F(Maintenance, DeleteHasTwoFormsOnEverySystem) {
    static const struct {
        const char* label;
        const char* table;
        const char* where;
        const char* sql;
    } kRows[] = {
        {"every row", "T", "", "DELETE  FROM \"T\" "},
        {"null", "T", nullptr, "DELETE  FROM \"T\" "},
        {"blanks only", "T", "   ", "DELETE  FROM \"T\" "},
        {"condition", "T", "ID=1", "DELETE  FROM \"T\" WHERE ID=1"},
        {"outer blanks stay", "T", "  ID=1 ", "DELETE  FROM \"T\" WHERE   ID=1 "},
        {"a tabulator is no blank", "T", "\t", "DELETE  FROM \"T\" WHERE \t"},
        {"Chinese", "订单", "名称='螺丝'", "DELETE  FROM \"订单\" WHERE 名称='螺丝'"},
        {"an ideographic blank is none", "T", "　", "DELETE  FROM \"T\" WHERE 　"},
        {"percent signs", "%s", "N LIKE '%d%n'", "DELETE  FROM \"%s\" WHERE N LIKE '%d%n'"},
        {"quotes are not doubled", "A\"B", "", "DELETE  FROM \"A\"B\" "},
        {"no table", nullptr, "1=1", "DELETE  FROM \"\" WHERE 1=1"},
    };
    for (const char* system : {"Microsoft SQL Server", "DB2", "unknown"}) {
        CTDatabase database;
        Open(database, system);
        for (const auto& row : kRows) {
            SCOPED_TRACE(row.label);
            EXPECT_EQ(database.Delete(row.table, row.where), 1);
            EXPECT_EQ(journal_.Take(), Executed(row.sql));
        }
    }
}

TEST_F(Maintenance, TruncateTableIsADeleteOnDb2) {
    static const struct {
        const char* system;
        const char* sql;
    } kRows[] = {
        {"Microsoft SQL Server", "TRUNCATE TABLE \"订单\" "},
        {"MS SQL", "TRUNCATE TABLE \"订单\" "},
        {"Adaptive Server", "TRUNCATE TABLE \"订单\" "},
        {"ADA", "TRUNCATE TABLE \"订单\" "},
        {"Oracle", "TRUNCATE TABLE \"订单\" "},
        {"DB2/NT", "DELETE FROM  \"订单\" "},
        {"db2", "DELETE FROM  \"订单\" "},
        {"PostgreSQL", ""},
        {"", ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.system);
        CTDatabase database;
        Open(database, row.system);
        EXPECT_EQ(database.TruncateTable("订单"), 1);
        EXPECT_EQ(journal_.Take(), Executed(row.sql));
    }
}

TEST_F(Maintenance, DroppingEndsWithABlankExceptForTables) {
    static const struct {
        const char* label;
        int (CTDatabase::*drop)(const char*);
        const char* sql;
        const char* nameless;
    } kRows[] = {
        {"table", &CTDatabase::DropTable, "DROP TABLE \"dbo.T\"", "DROP TABLE \"\""},
        {"view", &CTDatabase::DropView, "DROP VIEW \"dbo.T\" ", "DROP VIEW \"\" "},
        {"procedure", &CTDatabase::DropProcedure, "DROP PROCEDURE \"dbo.T\" ", "DROP PROCEDURE \"\" "},
    };
    CTDatabase database;
    Open(database, "Oracle");
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ((database.*row.drop)("dbo.T"), 1);
        EXPECT_EQ(journal_.Take(), Executed(row.sql));
        EXPECT_EQ((database.*row.drop)(""), 1);
        EXPECT_EQ((database.*row.drop)(nullptr), 1);
        Lines twice = Executed(row.nameless);
        twice.push_back(twice.front());
        EXPECT_EQ(journal_.Take(), twice);
    }
}

TEST_F(Maintenance, EachReturnsWhatExecuteSqlReturns) {
    CTDatabase database;
    Open(database, "Oracle");
    connection_->On(Call(6)) = Script();
    connection_->On(Call(6)).Fails("没有权限");
    EXPECT_EQ(database.Delete("T", "A=1"), 0);
    EXPECT_EQ(ErrorOf(database), Failure("没有权限", "DELETE  FROM \"T\" WHERE A=1"));
    EXPECT_EQ(database.TruncateTable("T"), 0);
    EXPECT_EQ(ErrorOf(database), Failure("没有权限", "TRUNCATE TABLE \"T\" "));
    EXPECT_EQ(database.DropTable("T"), 0);
    EXPECT_EQ(ErrorOf(database), Failure("没有权限", "DROP TABLE \"T\""));
    connection_->On(Call(6)) = Script();
    EXPECT_EQ(database.DropView("T"), 0) << "the connection told nothing about rows";
    EXPECT_EQ(database.DropProcedure("T"), 0);
}

TEST_F(Maintenance, AMegabyteOfConditionIsSentWhole) {
    CTDatabase database;
    Open(database, "Oracle");
    CString where("ID IN (0");
    while (where.GetLength() < 1 << 20)
        where += ",1234567";
    where += ")";
    EXPECT_EQ(database.Delete("T", where), 1);
    EXPECT_EQ(journal_.Take(), Executed("DELETE  FROM \"T\" WHERE " + where));
}

TEST_F(Maintenance, AnUnopenedDatabaseRunsNothing) {
    constexpr char kNotOpened[] = "数据库没有打开或打开失败,系统没有合法调用Open方法！";
    CTDatabase database;
    SetLastError(0);
    EXPECT_EQ(database.Delete("T", ""), 0);
    EXPECT_EQ(ErrorOf(database), kNotOpened);
    EXPECT_EQ(database.TruncateTable("T"), 0);
    EXPECT_EQ(database.DropTable("T"), 0);
    EXPECT_EQ(connections_->Created(), 0);
}

}  // namespace
}  // namespace tk::test
