// Save and Open of files as programs call them.
#include <fstream>
#include <iterator>

#include "../objects/database_test.h"

namespace tk::ado::test {
namespace {

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class RecordsetSave : public DatabaseTest {
protected:
    std::u16string Path(const char* name) const { return ToUtf16((folder_ / name).string()); }

    Object OpenGoods(LONG lock) {
        const Object on = Connect();
        CreateGoods(on);
        return Query(on, u"select id, name, price, stock from goods order by id", lock);
    }

    Object Query(const Object& on, std::u16string_view sql, LONG lock) {
        Object rows = Object::Create(kRecordsetClass);
        rows.Put(recordset::kCursorLocation, Number(3));
        const Outcome opened =
            rows.Call(recordset::kOpen, {Text(sql), on.AsValue(), Number(3), Number(lock), Number(1)});
        EXPECT_TRUE(opened.Ok()) << opened;
        return rows;
    }

    static Outcome OpenFile(const Object& rows, const std::u16string& path, LONG lock = -1) {
        return rows.Call(recordset::kOpen, {Text(path), Omitted(), Number(-1), Number(lock), Number(256)});
    }

    static std::string Cell(const Object& rows, const char16_t* name) {
        return rows.Get(recordset::kCollect, {Text(name)}).Utf8();
    }
};

TEST_F(RecordsetSave, WritesAFileThatOpensAgain) {
    for (const LONG format : {0, 1}) {
        SCOPED_TRACE(format);
        const std::u16string path = Path(format == 0 ? "goods.adtg" : "goods.xml");
        {
            const Object rows = format == 0 ? OpenGoods(1) : Query(Connect(), u"select * from goods order by id", 1);
            rows.Call(recordset::kMoveLast);
            const Outcome saved = rows.Call(recordset::kSave, {Text(path), Number(format)});
            ASSERT_TRUE(saved.Ok()) << saved;
            EXPECT_EQ(rows.Get(recordset::kAbsolutePosition).Long(), 1);
        }
        const Object rows = Object::Create(kRecordsetClass);
        const Outcome opened = OpenFile(rows, path);
        ASSERT_TRUE(opened.Ok()) << opened;
        EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), 3);
        EXPECT_EQ(rows.Get(recordset::kState).Long(), 1);
        EXPECT_EQ(Cell(rows, u"name"), "苹果");
        rows.Call(recordset::kMoveNext);
        EXPECT_EQ(Cell(rows, u"price"), "2.25");
        EXPECT_EQ(Cell(rows, u"stock"), "NULL");
        EXPECT_EQ(rows.Get(recordset::kSource).Utf8(), ToUtf8(path));
        EXPECT_EQ(rows.Get(recordset::kActiveConnection).value.Type(), VT_DISPATCH);
        EXPECT_FALSE(rows.Get(recordset::kActiveConnection).Result());
    }
}

TEST_F(RecordsetSave, OpensAFileByProviderAndByNameAlone) {
    ASSERT_TRUE(OpenGoods(1).Call(recordset::kSave, {Text(Path("goods"))}).Ok());
    const struct {
        const char* label;
        std::vector<Value> arguments;
    } rows[] = {
        {"the name alone", {Text(Path("goods"))}},
        {"as a file", {Text(Path("goods")), Omitted(), Number(0), Number(1), Number(256)}},
        {"the provider", {Text(Path("goods")), Text(u"Provider=MSPersist")}},
        {"the provider of a version, as a file",
         {Text(Path("goods")), Text(u"provider=mspersist.1;"), Number(3), Number(4), Number(256)}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        const Object opened = Object::Create(kRecordsetClass);
        const Outcome outcome = opened.Call(recordset::kOpen, row.arguments);
        ASSERT_TRUE(outcome.Ok()) << outcome;
        EXPECT_EQ(opened.Get(recordset::kRecordCount).Long(), 3);
    }
    const Object other = Object::Create(kRecordsetClass);
    EXPECT_EQ(
        other.Call(recordset::kOpen, {Text(Path("goods")), Connect().AsValue(), Number(3), Number(1), Number(256)})
            .Error(),
        3001u);
    EXPECT_EQ(other.Call(recordset::kOpen, {Text(Path("goods")), Omitted(), Number(3), Number(1), Number(257)}).Error(),
              3001u);
    EXPECT_EQ(
        other.Call(recordset::kOpen, {Text(Path("missing")), Omitted(), Number(3), Number(1), Number(256)}).Error(),
        3002u);
    EXPECT_EQ(other.Call(recordset::kOpen, {Text(Path("missing"))}).Error(), 3709u);
    EXPECT_EQ(other.Get(recordset::kState).Long(), 0);
}

TEST_F(RecordsetSave, RefusesDestinationsThatCannotBe) {
    const Object rows = OpenGoods(1);
    ASSERT_TRUE(rows.Call(recordset::kSave, {Text(Path("held"))}).Ok());
    std::ofstream(folder_ / "there") << "somebody's";
    EXPECT_EQ(rows.Call(recordset::kSave, {Text(Path("there"))}).Error(), 3004u);
    EXPECT_EQ(ReadFile(folder_ / "there"), "somebody's");
    EXPECT_EQ(rows.Call(recordset::kSave, {Text(Path("none/x"))}).Error(), 3004u);
    EXPECT_EQ(rows.Call(recordset::kSave, {Text(ToUtf16(folder_.string()))}).Error(), 3004u);
    EXPECT_EQ(rows.Call(recordset::kSave, {Text(Path("x")), Number(2)}).Error(), 3001u);
    EXPECT_EQ(rows.Call(recordset::kSave, {Number(7)}).Error(), 3001u);
    EXPECT_EQ(rows.Call(recordset::kSave, {rows.AsValue()}).Error(), 3251u);
    EXPECT_EQ(Object::Create(kRecordsetClass).Call(recordset::kSave, {Text(Path("x"))}).Error(), 3704u);
    const Object fresh = Query(Connect(), u"select 1", 1);
    EXPECT_EQ(fresh.Call(recordset::kSave).Error(), 3001u);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "x"));
}

TEST_F(RecordsetSave, RewritesTheFileItHoldsWithoutBeingToldWhere) {
    const Object rows = OpenGoods(4);
    ASSERT_TRUE(rows.Call(recordset::kSave, {Text(Path("goods.xml")), Number(1)}).Ok());
    const std::string first = ReadFile(folder_ / "goods.xml");
    rows.Call(recordset::kUpdate, {Text(u"name"), Text(u"pear")});
    const Outcome again = rows.Call(recordset::kSave);
    ASSERT_TRUE(again.Ok()) << again;
    const std::string second = ReadFile(folder_ / "goods.xml");
    EXPECT_NE(first, second);
    EXPECT_NE(second.find("<rs:update>"), std::string::npos);
    // The same file by name, in the other form.
    ASSERT_TRUE(rows.Call(recordset::kSave, {Text(Path("goods.xml")), Number(0)}).Ok());
    EXPECT_EQ(ReadFile(folder_ / "goods.xml").substr(2, 3), "TG!");
    // A file that was opened is held as well, until it is closed.
    const Object opened = Object::Create(kRecordsetClass);
    ASSERT_TRUE(OpenFile(opened, Path("goods.xml"), 4).Ok());
    EXPECT_TRUE(opened.Call(recordset::kSave).Ok());
    opened.Call(recordset::kClose);
    ASSERT_TRUE(OpenFile(opened, Path("goods.xml"), 4).Ok());
    EXPECT_EQ(Cell(opened, u"name"), "pear");
}

TEST_F(RecordsetSave, KeepsPendingChangesThatAreSentLater) {
    for (const LONG format : {0, 1}) {
        SCOPED_TRACE(format);
        const std::u16string path = Path(format == 0 ? "a" : "b");
        {
            const Object on = Connect();
            if (format == 0) {
                CreateGoods(on);
            } else {
                Execute(on, u"delete from goods");
                Execute(on,
                        u"insert into goods values (1, '苹果', 1.5, 10), (2, 'banana', 2.25, NULL), (3, NULL, 10, 7)");
            }
            const Object rows = Query(on, u"select id, name, price, stock from goods order by id", 4);
            rows.Call(recordset::kUpdate, {Text(u"name"), Text(u"梨")});
            rows.Call(recordset::kMoveNext);
            rows.Call(recordset::kDelete);
            rows.Call(recordset::kAddNew, {Array({Text(u"id"), Text(u"name")}), Array({Number(9), Text(u"new")})});
            const Outcome saved = rows.Call(recordset::kSave, {Text(path), Number(format)});
            ASSERT_TRUE(saved.Ok()) << saved;
        }
        const Object rows = Object::Create(kRecordsetClass);
        const Outcome opened = OpenFile(rows, path, 4);
        ASSERT_TRUE(opened.Ok()) << opened;
        EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), 3);
        EXPECT_EQ(rows.Get(recordset::kStatus).Long(), 0x82);
        EXPECT_EQ(Cell(rows, u"name"), "梨");
        const Object on = Connect();
        ASSERT_TRUE(rows.PutRef(recordset::kActiveConnection, on.AsValue()).Ok());
        const Outcome sent = rows.Call(recordset::kUpdateBatch);
        ASSERT_TRUE(sent.Ok()) << sent;
        const Object after = Query(
            on, u"select group_concat(id || ':' || coalesce(name, '-'), ' ') from (select * from goods order by id)",
            1);
        EXPECT_EQ(after.Get(recordset::kCollect, {Number(0)}).Utf8(), "1:梨 3:- 9:new");
    }
}

TEST_F(RecordsetSave, SavesWhatATextFilterShowsInTheOrderOfTheSort) {
    const Object rows = OpenGoods(1);
    ASSERT_TRUE(rows.Put(recordset::kSort, Text(u"price desc")).Ok());
    const Outcome filtered = rows.Put(recordset::kFilter, Text(u"price > 2"));
    ASSERT_TRUE(filtered.Ok()) << filtered;
    ASSERT_EQ(rows.Get(recordset::kRecordCount).Long(), 2);
    ASSERT_TRUE(rows.Call(recordset::kSave, {Text(Path("some"))}).Ok());
    const Object opened = Object::Create(kRecordsetClass);
    ASSERT_TRUE(OpenFile(opened, Path("some")).Ok());
    EXPECT_EQ(opened.Get(recordset::kRecordCount).Long(), 2);
    EXPECT_EQ(Cell(opened, u"id"), "3");
    opened.Call(recordset::kMoveNext);
    EXPECT_EQ(Cell(opened, u"id"), "2");
}

TEST_F(RecordsetSave, SavesAllRowsUnderAFilterByState) {
    const Object rows = OpenGoods(4);
    rows.Put(recordset::kFilter, Number(1));
    EXPECT_EQ(rows.Get(recordset::kRecordCount).Long(), 0);
    const Outcome saved = rows.Call(recordset::kSave, {Text(Path("all"))});
    ASSERT_TRUE(saved.Ok()) << saved;
    const Object opened = Object::Create(kRecordsetClass);
    ASSERT_TRUE(OpenFile(opened, Path("all")).Ok());
    EXPECT_EQ(opened.Get(recordset::kRecordCount).Long(), 3);
}

TEST_F(RecordsetSave, SavesFieldsOfTheProgramsOwn) {
    const Object rows = Object::Create(kRecordsetClass);
    const Object fields = rows.Get(recordset::kFields).Result();
    fields.Call(collection::kAppend, {Text(u"序号"), Number(3)});
    fields.Call(collection::kAppend, {Text(u"unit price"), Number(6)});
    fields.Call(collection::kAppend, {Text(u"note"), Number(202), Number(30)});
    ASSERT_TRUE(rows.Call(recordset::kOpen).Ok());
    rows.Call(recordset::kAddNew,
              {Array({Number(0), Number(1), Number(2)}), Array({Number(1), Text(u"12.5"), Text(u"甲")})});
    for (const LONG format : {0, 1}) {
        const std::u16string path = Path(format == 0 ? "own.adtg" : "own.xml");
        const Outcome saved = rows.Call(recordset::kSave, {Text(path), Number(format)});
        ASSERT_TRUE(saved.Ok()) << saved;
        const Object opened = Object::Create(kRecordsetClass);
        ASSERT_TRUE(OpenFile(opened, path).Ok());
        EXPECT_EQ(opened.Get(recordset::kRecordCount).Long(), 1);
        EXPECT_EQ(Cell(opened, u"unit price"), rows.Get(recordset::kCollect, {Text(u"unit price")}).Utf8());
        EXPECT_EQ(Cell(opened, u"note"), "甲");
        const Object field = opened.Get(recordset::kFields, {Text(u"unit price")}).Result();
        EXPECT_EQ(field.Get(field::kType).Long(), 6);
    }
}

TEST_F(RecordsetSave, SavesRowsThatAreStillArriving) {
    const Object on = Connect();
    Execute(on, u"create table many (id integer primary key, name varchar(20))");
    Execute(on,
            u"with recursive s(n) as (select 1 union all select n + 1 from s where n < 50000) "
            u"insert into many select n, 'item ' || n from s");
    Object rows = Object::Create(kRecordsetClass);
    rows.Put(recordset::kCursorLocation, Number(3));
    ASSERT_TRUE(
        rows.Call(recordset::kOpen, {Text(u"select * from many"), on.AsValue(), Number(3), Number(1), Number(33)})
            .Ok());
    ASSERT_TRUE(rows.Call(recordset::kSave, {Text(Path("many"))}).Ok());
    const Object opened = Object::Create(kRecordsetClass);
    ASSERT_TRUE(OpenFile(opened, Path("many")).Ok());
    EXPECT_EQ(opened.Get(recordset::kRecordCount).Long(), 50000);
    opened.Call(recordset::kMoveLast);
    EXPECT_EQ(Cell(opened, u"name"), "item 50000");
}

}  // namespace
}  // namespace tk::ado::test
