// Indexes: their names and columns on each system, and the statements that create them.
#include <map>

#include "catalog/catalog_fixture.h"

namespace tk::test {
namespace {

constexpr char kListFailed[] = "筛选数据对象出错";
constexpr char kUnknownDbms[] = "无法识别的数据库管理系统(DBMS SYSTEM ERROR)!\r\n";
constexpr char kCreated[] = "返回编码:[0x00000000]操作完全成功。";

/// One row of an indexes rowset.
Row IndexRow(const char* index, const char* column, bool primary = false) {
    return {{"INDEX_NAME", index == nullptr ? Null() : Text(index)},
            {"PRIMARY_KEY", Flag(primary)},
            {"COLUMN_NAME", Text(column)}};
}

class IndexScripts : public CatalogTest {
protected:
    /// The rows that a rowset of all indexes of any table holds, and those of each index.
    void ShowIndexes(std::vector<Row> rows) {
        all_ = std::move(rows);
        connection_->On(Call(19)) = Script();
        connection_->On(Call(19)).Does([this](const Arguments& arguments) {
            const std::string sent = Describe(*arguments.at(1));
            std::vector<Row> shown;
            for (const Row& row : all_) {
                const bool any = sent.starts_with("VARIANT[] {EMPTY, EMPTY, EMPTY, EMPTY, ");
                if (any || sent.find(", " + Describe(row[0].second) + ", EMPTY") != std::string::npos) {
                    shown.push_back(row);
                }
            }
            ShowInRecordset(std::move(shown));
            recordsets_->Give(records_.Get());
            return Object(rowset_.Get());
        });
    }

    void TearDown() override {
        connection_->On(Call(19)) = Script();
        CatalogTest::TearDown();
    }

    /// How DB2's own tables are asked.
    static std::string Db2Query(const std::string& table, const std::string& index) {
        return "records.call 1022 (BSTR \"SELECT COLNAMES FROM SYSIBM.SYSINDEXES WHERE TBNAME='" + table +
               "' AND NAME='" + index + "'\", BSTR \"DSN=stock\", I4 0, I4 1, I4 1)";
    }

    std::vector<Row> all_;
    CStringArray names_;
};

// ---- columns -----------------------------------------------------------------------------------------------------

TEST_F(IndexScripts, ColumnsOfAnIndexComeFromTheRowsetOfThreeSystems) {
    for (const char* system : {"Microsoft SQL Server", "MS SQL", "Adaptive Server", "oracle"}) {
        SCOPED_TRACE(system);
        CTDatabase database;
        Open(database, system);
        Show({{{"COLUMN_NAME", Text("NAME")}}, {{"COLUMN_NAME", Text("编号")}}, {{"COLUMN_NAME", Text("NAME")}}});
        EXPECT_STREQ(database.GetIndex("订单", "IX", "dbo"), "NAME,编号,NAME");
        EXPECT_THAT(Calls(),
                    ElementsAre("connection.get 18",
                                "connection.call 19 (I4 12, VARIANT[] {EMPTY, BSTR \"dbo\", BSTR \"IX\", EMPTY, BSTR "
                                "\"订单\"})",
                                "connection.get 18", "connection.get 0", "connection.get 18",
                                "records.putref 1056 (UNKNOWN rowset)", "records.get 1006", "records.get 0",
                                "records.call 1018", "records.get 1006", "records.get 0", "records.call 1018",
                                "records.get 1006", "records.get 0", "records.call 1018", "records.get 1006",
                                "records.get 1054"));
        EXPECT_EQ(ErrorOf(database), kCreated);
    }
}

TEST_F(IndexScripts, CommasAtTheEndOfTheColumnsGo) {
    CTDatabase database;
    Open(database, "Oracle");
    static const struct {
        const char* label;
        std::vector<const char*> columns;
        const char* text;
    } kRows[] = {
        {"none", {}, ""},
        {"no names", {"", ""}, ""},
        {"no name at the end", {"A", "", ""}, "A"},
        {"no name in the middle", {"A", "", "B"}, "A,,B"},
        {"a comma in a name stays", {"A,B", "C"}, "A,B,C"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        std::vector<Row> rows;
        for (const char* column : row.columns)
            rows.push_back({{"COLUMN_NAME", Text(column)}});
        Show(std::move(rows));
        EXPECT_STREQ(database.GetIndex("T", "IX", nullptr), row.text);
    }
}

TEST_F(IndexScripts, ColumnsOfADb2IndexComeFromItsOwnTables) {
    static const struct {
        const char* label;
        const char* stored;
        const char* columns;
    } kRows[] = {
        {"ascending", "+ID+NAME", "ID,NAME"},
        {"descending", "-CREATED+ID", "CREATED,ID"},
        {"one", "-A", "A"},
        {"Chinese", "+编号-名称", "编号,名称"},
        {"second bytes are no signs", "+\x81\x7C+\x81\x40", "\x81\x7C,\x81\x40"},
        {"no direction", "A", "A"},
        {"empty", "", ""},
        {"signs only", "+-+", ""},
        {"empty name in the middle", "+A++B", "A,,B"},
        {"signs at the end go", "+A+", "A"},
        {"a sign in a name ends it", "+A-B", "A,B"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        CTDatabase database;
        Open(database, "DB2/NT");
        ShowInRecordset({{{"COLNAMES", Text(row.stored)}}, {{"COLNAMES", Text("+LATER")}}});
        recordsets_->Give(records_.Get());
        EXPECT_STREQ(database.GetIndex("ORDERS", "IX", "never asked"), row.columns);
        EXPECT_THAT(Calls(),
                    ElementsAre("connection.get 0", "connection.get 18", "records.get 1054", "records.put 1051 (I4 3)",
                                Db2Query("ORDERS", "IX"), "records.put 1004 (I4 1000)", "records.get 1006",
                                "records.get 0", "records.get 1054"));
    }
}

TEST_F(IndexScripts, ADb2IndexThatIsNotThereHasNoColumns) {
    CTDatabase database;
    Open(database, "DB2");
    ShowInRecordset({});
    recordsets_->Give(records_.Get());
    EXPECT_STREQ(database.GetIndex("a'b", nullptr, nullptr), "");
    EXPECT_EQ(Calls().at(4), Db2Query("a'b", "")) << "names are inserted as they are";
    records_->On(Call(1022)).Fails("没有权限");
    recordsets_->Give(records_.Get());
    EXPECT_STREQ(database.GetIndex("T", "IX", nullptr), "ERROR!");
    EXPECT_EQ(ErrorOf(database), Failure("没有权限", "Open"));
}

TEST_F(IndexScripts, AnUnknownSystemHasNoColumnsAndAReason) {
    CTDatabase database;
    Open(database, "PostgreSQL");
    EXPECT_STREQ(database.GetIndex("T", "IX", "dbo"), "");
    EXPECT_EQ(ErrorOf(database), kUnknownDbms);
    EXPECT_THAT(journal_.Take(), IsEmpty());
    CTDatabase unopened;
    EXPECT_STREQ(unopened.GetIndex("T", "IX", "dbo"), "");
    EXPECT_EQ(ErrorOf(unopened), kUnknownDbms);
}

// ---- names -------------------------------------------------------------------------------------------------------

TEST_F(IndexScripts, NamesAreThoseOfIndexesThatAreNoKey) {
    CTDatabase database;
    Open(database, "anything");
    names_.Add("IX_BEFORE");
    Show({IndexRow("PK_T", "ID", true), IndexRow("IX_A", "A"), IndexRow("IX_A", "B"), IndexRow("ix_a", "A"),
          IndexRow("", "A"), IndexRow("null", "A"), IndexRow("NULL", "A"), IndexRow("Null", "A"),
          IndexRow(nullptr, "A"), IndexRow("IX_BEFORE", "A"), IndexRow("IX_名称", "名称"),
          IndexRow("PK_T", "ID", true)});
    EXPECT_EQ(database.GetIndexNames("订单", names_, "dbo"), 1);
    EXPECT_THAT(TextsOf(names_), ElementsAre("IX_BEFORE", "IX_A", "ix_a", "IX_名称"));
    const Lines lines = journal_.Take();
    EXPECT_EQ(lines.at(1), "connection.call 19 (I4 12, VARIANT[] {EMPTY, BSTR \"dbo\", EMPTY, EMPTY, BSTR \"订单\"})");
    EXPECT_EQ(lines.at(5), "records.putref 1056 (UNKNOWN rowset)");
    EXPECT_EQ(Lines(lines.begin() + 7, lines.begin() + 13),
              (Lines{"records.get 0", "fields.get 0 (BSTR \"INDEX_NAME\")", "field.get 0", "records.get 0",
                     "fields.get 0 (BSTR \"PRIMARY_KEY\")", "field.get 0"}));
}

TEST_F(IndexScripts, ATableWithoutIndexesIsASuccess) {
    CTDatabase database;
    Open(database, "Oracle");
    Show({});
    EXPECT_EQ(database.GetIndexNames("T", names_, nullptr), 1);
    EXPECT_EQ(names_.GetSize(), 0);
    EXPECT_EQ(journal_.Take().at(1), "connection.call 19 (I4 12, VARIANT[] {EMPTY, EMPTY, EMPTY, EMPTY, BSTR \"T\"})");
}

TEST_F(IndexScripts, WithoutARowsetThereIsNothing) {
    CTDatabase database;
    EXPECT_EQ(database.GetIndexNames("T", names_, nullptr), 0);
    EXPECT_EQ(database.GetIndexesContext("T", names_), 1);
    EXPECT_STREQ(database.GetAllIndexName("T"), "");
    EXPECT_EQ(database.GetAllIndexes(names_), 0);

    Open(database, "Oracle");
    connection_->On(Call(19)).Fails("不支持");
    EXPECT_EQ(database.GetIndexNames("T", names_, nullptr), 0);
    EXPECT_EQ(ErrorOf(database), Failure("不支持", "OpenSchema 出错!"));
    EXPECT_STREQ(database.GetIndex("T", "IX", nullptr), "");
    EXPECT_EQ(database.GetIndexesContext("T", names_), 1);
    EXPECT_STREQ(database.GetAllIndexName("T"), "");
    EXPECT_EQ(names_.GetSize(), 0);

    CTDatabase unbound;
    Open(unbound, "Oracle");
    Show({});
    records_->On(PutRef(1056)).Fails("没有接口");
    EXPECT_EQ(unbound.GetIndexNames("T", names_, nullptr), 0);
    EXPECT_EQ(ErrorOf(unbound), Failure("没有接口", "操作 OpenField 时出现异常!"));
    recordsets_->Give(records_.Get());
    EXPECT_STREQ(unbound.GetIndex("T", "IX", nullptr), "");
}

TEST_F(IndexScripts, AllIndexesAreThoseOfEveryTableInTheCurrentSchema) {
    CTDatabase database;
    Open(database, "Adaptive Server");
    names_.Add("IX");
    std::map<std::string, std::vector<Row>> indexes = {{"A", {IndexRow("IX", "X"), IndexRow("PK_A", "ID", true)}},
                                                       {"B", {}},
                                                       {"C", {IndexRow("IX", "X"), IndexRow("IY", "Y")}}};
    Lines asked;
    connection_->On(Call(19)) = Script();
    connection_->On(Call(19)).Does([&](const Arguments& arguments) {
        recordsets_->Give(records_.Get());
        const std::string sent = Describe(*arguments.at(1));
        asked.push_back(sent);
        if (V_I4(arguments.at(0)) == 20) {
            ShowInRecordset({{{"TABLE_NAME", Text("A")}}, {{"TABLE_NAME", Text("B")}}, {{"TABLE_NAME", Text("C")}}});
        } else {
            ShowInRecordset(indexes.at(std::string(1, sent.at(sent.size() - 3))));
        }
        return Object(rowset_.Get());
    });
    EXPECT_EQ(database.GetAllIndexes(names_), 3);
    EXPECT_THAT(TextsOf(names_), ElementsAre("IX", "IX", "IX", "IY")) << "the same name once for each table";
    EXPECT_THAT(asked, ElementsAre("VARIANT[] {EMPTY, EMPTY, EMPTY, BSTR \"TABLE\"}",
                                   "VARIANT[] {EMPTY, BSTR \"dbo\", EMPTY, EMPTY, BSTR \"A\"}",
                                   "VARIANT[] {EMPTY, BSTR \"dbo\", EMPTY, EMPTY, BSTR \"B\"}",
                                   "VARIANT[] {EMPTY, BSTR \"dbo\", EMPTY, EMPTY, BSTR \"C\"}"));
}

// ---- statements --------------------------------------------------------------------------------------------------

TEST_F(IndexScripts, EveryIndexHasAStatementInCapitals) {
    CTDatabase database;
    Open(database, "Microsoft SQL Server");
    ShowIndexes({IndexRow("PK_t", "id", true), IndexRow("ix_t_name", "name"), IndexRow("ix_t_name", "code"),
                 IndexRow("IX_单价ａ", "单价")});
    names_.Add("before");
    EXPECT_EQ(database.GetIndexesContext("t", names_), 1);
    EXPECT_THAT(TextsOf(names_), ElementsAre("before", "CREATE INDEX \"IX_T_NAME\" ON \"T\" (\"NAME\",\"CODE\")",
                                             "CREATE INDEX \"IX_单价Ａ\" ON \"T\" (\"单价\")"));
    Lines asked = journal_.Take();
    std::erase_if(asked, [](const std::string& line) { return !line.starts_with("connection.call"); });
    EXPECT_THAT(asked, ElementsAre("connection.call 19 (I4 12, VARIANT[] {EMPTY, EMPTY, EMPTY, EMPTY, BSTR \"t\"})",
                                   "connection.call 19 (I4 12, VARIANT[] {EMPTY, EMPTY, BSTR \"ix_t_name\", EMPTY, "
                                   "BSTR \"t\"})",
                                   "connection.call 19 (I4 12, VARIANT[] {EMPTY, EMPTY, BSTR \"IX_单价ａ\", EMPTY, "
                                   "BSTR \"t\"})"));
}

TEST_F(IndexScripts, AKeyAloneGivesNoStatement) {
    CTDatabase database;
    Open(database, "Microsoft SQL Server");
    ShowIndexes({IndexRow("PK_T", "ID", true), IndexRow("PK_T", "KIND", true)});
    EXPECT_EQ(database.GetIndexesContext("T", names_), 1);
    EXPECT_EQ(names_.GetSize(), 0);
    EXPECT_STREQ(database.GetAllIndexName("T"), "");
}

TEST_F(IndexScripts, TheNameOfAllIndexesIsTheirColumns) {
    CTDatabase database;
    Open(database, "Oracle");
    ShowIndexes({IndexRow("IX_1", "A"), IndexRow("IX_1", "b"), IndexRow("PK", "ID", true), IndexRow("IX_2", "A")});
    EXPECT_STREQ(database.GetAllIndexName("T"), "\"A\",\"b\",\"A\"") << "as they are written, and A twice";
}

TEST_F(IndexScripts, NamesAreNeitherEscapedNorGuarded) {
    CTDatabase database;
    Open(database, "Oracle");
    ShowIndexes({IndexRow("i\"x", "a\"b"), IndexRow("%s%d", "c,d")});
    EXPECT_EQ(database.GetIndexesContext(nullptr, names_), 1);
    EXPECT_THAT(TextsOf(names_),
                ElementsAre("CREATE INDEX \"I\"X\" ON \"\" (\"A\"B\")", "CREATE INDEX \"%S%D\" ON \"\" (\"C\",\"D\")"));
}

TEST_F(IndexScripts, ADb2IndexWhoseTablesCannotBeAskedIsAnErrorInTheStatement) {
    CTDatabase database;
    Open(database, "DB2");
    ShowIndexes({IndexRow("IX", "A")});
    records_->On(Call(1022)).Fails("没有权限");
    const auto give = [&] {
        journal_.Take();
        recordsets_->Give(records_.Get());  // for the rowset of names; the query takes the next one
    };
    connection_->On(Call(19)).Does([this](const Arguments&) {
        ShowInRecordset({IndexRow("IX", "A")});
        recordsets_->Give(records_.Get());
        return Object(rowset_.Get());
    });
    give();
    EXPECT_EQ(database.GetIndexesContext("T", names_), 1);
    EXPECT_THAT(TextsOf(names_), ElementsAre("CREATE INDEX \"IX\" ON \"T\" (\"ERROR!\")"));
    give();
    EXPECT_STREQ(database.GetAllIndexName("T"), "\"ERROR!\"");
}

TEST_F(IndexScripts, AnUnknownSystemHasStatementsWithoutColumns) {
    CTDatabase database;
    Open(database, "SQLite");
    ShowIndexes({IndexRow("IX", "A")});
    EXPECT_EQ(database.GetIndexesContext("T", names_), 1);
    EXPECT_THAT(TextsOf(names_), ElementsAre("CREATE INDEX \"IX\" ON \"T\" (\"\")"));
    EXPECT_EQ(ErrorOf(database), kUnknownDbms);
    EXPECT_STREQ(database.GetAllIndexName("T"), "\"\"");
}

TEST_F(IndexScripts, AnExceptionIsReportedAndEndsTheMember) {
    for (const Member member : {Get(1006), Call(1018)}) {
        SCOPED_TRACE(member.id);
        CTDatabase database;
        Open(database, "Oracle");
        const auto show = [&] {
            Show({IndexRow("IX", "A")});
            records_->On(member) = Script();
            records_->On(member).Fails("断开");
        };
        show();
        EXPECT_EQ(database.GetIndexNames("T", names_, nullptr), 0);
        EXPECT_EQ(ErrorOf(database), Failure("断开", kListFailed));
        show();
        EXPECT_STREQ(database.GetIndex("T", "IX", nullptr), "");
        EXPECT_EQ(ErrorOf(database), Failure("断开", kListFailed));
        CStringArray statements;
        show();
        EXPECT_EQ(database.GetIndexesContext("T", statements), 0);
        EXPECT_EQ(ErrorOf(database), Failure("断开", "T"));
        EXPECT_EQ(statements.GetSize(), 0);
        show();
        EXPECT_STREQ(database.GetAllIndexName("T"), "");
        EXPECT_EQ(ErrorOf(database), Failure("断开", "T"));
    }
}

}  // namespace
}  // namespace tk::test
