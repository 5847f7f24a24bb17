// Records as texts and deletion by a criterion, on a real database; the same for every system.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <afxdisp.h>

#include <memory>

#include "driver/end_to_end.h"
#include "support/registered_class.h"
#include "support/scripted_object.h"
#include "support/temporary_folder.h"
#include "tkkernel/driver.h"

namespace tk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using Lines = std::vector<std::string>;

Lines TextsOf(const CStringArray& values) {
    Lines texts;
    for (int i = 0; i < values.GetSize(); ++i)
        texts.emplace_back(values.GetAt(i));
    return texts;
}

class Export : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(database_->Open(TheSystem().connection.c_str()), 1) << database_->GetLastErrorString();
        database_->ExecuteSQL("drop table if exists stock");
        ASSERT_EQ(database_->ExecuteSQL(TheSystem().createStock), 1) << database_->GetLastErrorString();
        for (const char* row :
             {"(1, '螺丝', 1.5, 10, 5, '2020-02-29 13:45:06', 'It''s', NULL)", "(2, '', 0.0, 0, 0, NULL, NULL, NULL)",
              "(3, ' nut ', -2.25, NULL, 7, '1999-12-31 00:00:00', '誠|', NULL)"}) {
            ASSERT_EQ(database_->ExecuteEx("insert into stock values %s", row), 1) << database_->GetLastErrorString();
        }
    }

    void Open(CTRecordset& records, const char* sql, int readOnly = 1) {
        ASSERT_EQ(records.OpenDatabase(database_.get()), 1) << records.GetLastErrorString();
        ASSERT_EQ(records.OpenSQL(sql, readOnly), 1) << records.GetLastErrorString();
    }

    Apartment apartment_;
    std::unique_ptr<CTDatabase> database_ = std::make_unique<CTDatabase>();
};

constexpr char kAll[] = "select id, name, price, amount, made, note from stock order by id";

TEST_F(Export, OneColumnOfEveryRecord) {
    CTRecordset records;
    Open(records, kAll);
    records.MoveNext();
    CStringArray values;
    EXPECT_EQ(records.SelectOneColumn("NAME", values), 3);
    EXPECT_EQ(records.SelectOneColumn(2L, values), 0) << "the recordset stands behind its last record";
    records.MoveFirst();
    EXPECT_EQ(records.SelectOneColumn(2L, values), 3);
    EXPECT_THAT(TextsOf(values), ElementsAre("螺丝", "", " nut ", "        1.5", "", "       -2.25"));
}

TEST_F(Export, TheCurrentRecord) {
    CTRecordset records;
    Open(records, kAll);
    EXPECT_STREQ(records.GetCurRecordToString(","), "1,'螺丝',        1.5,10,'2020-02-29 13:45:06','It''s'");
    CStringArray values;
    EXPECT_EQ(records.SelectCurRecordToString(values, 1), 1);
    EXPECT_THAT(TextsOf(values), ElementsAre("1", "'螺丝'", "        1.5", "10", "'2020-02-29 13:45:06'", "'It''s'"));
    records.MoveNext();
    EXPECT_STREQ(records.GetCurRecordToString(","), "2,'',,0");
    EXPECT_EQ(records.SelectCurRecordToString(values, 1), 1);
    EXPECT_THAT(TextsOf(values), ElementsAre("2", "''", "", "0", "", "")) << "a null is nothing, an empty text quotes";
    records.MoveNext();
    EXPECT_EQ(records.SelectCurRecordToTrimString(values), 1);
    EXPECT_THAT(TextsOf(values), ElementsAre("3", "nut", "-2.25", "", "1999-12-31 00:00:00", "誠|"));
    records.MoveNext();
    EXPECT_STREQ(records.GetCurRecordToString(","), "");
    EXPECT_EQ(records.SelectCurRecordToString(values, 0), 0);
}

TEST_F(Export, RecordAfterRecord) {
    CTRecordset records;
    Open(records, kAll);
    for (int round = 0; round < 2; ++round) {
        CString text;
        Lines lines;
        for (int more = records.SelectFirstRecordToString(6, text, "|", 0); more != 0;
             more = records.SelectNextRecordToString(6, text, "|", 0)) {
            lines.emplace_back(text);
        }
        EXPECT_THAT(lines, ElementsAre("1|螺丝|        1.5|10|2020-02-29 13:45:06|It's", "2|||0",
                                       "3| nut |       -2.25||1999-12-31 00:00:00|誠"))
            << "a bar at the end of the last value goes with the separators";
        EXPECT_EQ(records.SelectFirstRecordToString(6, text, "|", 0), 0) << "behind the last record";
        EXPECT_EQ(records.SelectNextRecordToString(6, text, "|", 0), 0);
        EXPECT_THAT(std::string(records.GetLastErrorString()),
                    EndsWith("\r\n 操作 SelectNextRecordToString 数据库出现异常!"));
        records.MoveFirst();
    }
}

TEST_F(Export, EmptyResultsHaveNothing) {
    CTRecordset records;
    Open(records, "select * from stock where id > 100");
    CStringArray values;
    CString text("before");
    EXPECT_EQ(records.SelectOneColumn(0L, values), 0);
    EXPECT_STREQ(records.GetCurRecordToString(","), "");
    EXPECT_EQ(records.SelectCurRecordToString(values, 0), 0);
    EXPECT_EQ(records.SelectFirstRecordToString(1, text, ",", 0), 0);
    EXPECT_STREQ(text, "");
}

TEST_F(Export, LongWalksGiveEveryRecord) {
    database_->BeginTrans();
    for (int i = 10; i < 2500; ++i)
        database_->ExecSQL("insert into stock (id, name, price) values (%d, '名称 %d', %d.25)", i, i, i);
    database_->CommitTrans();
    CTRecordset records;
    Open(records, "select id, name, price from stock where id >= 10 order by id");
    CString text;
    int id = 10;
    for (int more = records.SelectFirstRecordToString(3, text, ";", 1); more != 0;
         more = records.SelectNextRecordToString(3, text, ";", 1), ++id) {
        CString expected;
        expected.Format("%d;'名称 %d';%12.2f", id, id, id + 0.25);
        ASSERT_STREQ(text, expected);
    }
    EXPECT_EQ(id, 2500);
}

TEST_F(Export, NullStringsFollowTheColumns) {
    database_->ExecuteSQL("drop table if exists part");
    ASSERT_EQ(database_->ExecuteSQL("create table part (code integer not null, note varchar(20))"), 1);
    CTRecordset records;
    Open(records, "select code, note from part");
    EXPECT_STREQ(records.GetNullString(1), "");
    EXPECT_STREQ(records.GetNullString(0), TheSystem().tellsNotNull ? " NOT NULL" : "");
    try {
        records.GetNullString(2);
        ADD_FAILURE() << "no exception";
    } catch (CException* e) {
        e->Delete();
    }
}

TEST_F(Export, DeleteRemovesWhatTheCriterionShows) {
    CTRecordset records;
    Open(records, "select * from stock order by id", 0);
    EXPECT_EQ(records.Delete("id > 100"), 0);
    EXPECT_EQ(records.Delete("amount = 0 and"), 0) << "a criterion that is refused deletes nothing";
    EXPECT_EQ(records.Delete("id > 1"), 2) << records.GetLastErrorString();
    EXPECT_STREQ(records.GetFilter(), "id > 1");
    EXPECT_NE(records.GetEof(), 0);
    CTRecordset left;
    Open(left, kAll);
    EXPECT_EQ(left.GetRecordCount(), 1);
    EXPECT_EQ(left.GetIntValue("id"), 1);
}

TEST_F(Export, DeleteOfAReadOnlyRecordsetFails) {
    CTRecordset records;
    Open(records, kAll);
    EXPECT_EQ(records.Delete("id = 1"), 0);
    EXPECT_THAT(std::string(records.GetLastErrorString()), EndsWith("\r\nid = 1"));
    CTRecordset left;
    Open(left, kAll);
    EXPECT_EQ(left.GetRecordCount(), 3);
}

TEST_F(Export, LongNamesAndValuesAreReadByTheNameOfTheirColumn) {
    // Around the size of the buffers that the short way through the columns has.
    for (const std::size_t length : {31u, 127u, 255u, 256u, 257u, 600u}) {
        SCOPED_TRACE(length);
        const std::string value = std::string(length - 2, 'x') + "库";
        const std::string name(std::min<std::size_t>(length, 60), 'n');
        CTRecordset records;
        Open(records, ("select '" + value + "' as " + name).c_str());
        EXPECT_EQ(std::string(records.GetStringValue(name.c_str())), value);
        EXPECT_EQ(std::string(records.GetCurRecordToString(",")), "'" + value + "'");
        CStringArray values;
        EXPECT_EQ(records.SelectOneColumn(std::string(length + 700, 'n').c_str(), values), 1);
        EXPECT_THAT(TextsOf(values), ElementsAre("")) << "no such column";
    }
}

TEST_F(Export, SavedRecordsAreOpenedAgainWhereverTheyAre) {
    const TemporaryFolder folder;
    const struct {
        int (CTRecordset::*save)(const char*, int);
        const char* name;
    } forms[] = {{&CTRecordset::SaveAsXML, "库存 清单.xml"}, {&CTRecordset::SaveAsFile, "库存 清单.dat"}};
    for (const auto& form : forms) {
        SCOPED_TRACE(form.name);
        const std::string path = folder.File(form.name);
        Lines expected;
        CTRecordset records;
        Open(records, kAll);
        CString text;
        for (int more = records.SelectFirstRecordToString(6, text, "|", 1); more != 0;
             more = records.SelectNextRecordToString(6, text, "|", 1)) {
            expected.emplace_back(text);
        }
        ASSERT_EQ((records.*form.save)(path.c_str(), 0), 1) << records.GetLastErrorString();
        ASSERT_EQ((records.*form.save)(path.c_str(), 0), 1) << "over the old file";
        CTRecordset saved;
        COleDispatchDriver source;
        ASSERT_NE(source.CreateDispatch("ADODB.Recordset"), 0);
        constexpr DISPID kOpen = 1022;
        const COleVariant file(path.c_str());
        const COleVariant provider("Provider=MSPersist");
        source.InvokeHelper(kOpen, DISPATCH_METHOD, VT_EMPTY, nullptr,
                            reinterpret_cast<const BYTE*>(VTS_VARIANT VTS_VARIANT VTS_I4 VTS_I4 VTS_I4),
                            static_cast<const VARIANT*>(&file), static_cast<const VARIANT*>(&provider), 3L, 1L, 256L);
        ASSERT_EQ(saved.OpenDispatch(source.m_lpDispatch), 1) << saved.GetLastErrorString();
        Lines found;
        for (int more = saved.SelectFirstRecordToString(6, text, "|", 1); more != 0;
             more = saved.SelectNextRecordToString(6, text, "|", 1)) {
            found.emplace_back(text);
        }
        EXPECT_EQ(found, expected);
        EXPECT_EQ(found.size(), 3u);
    }
    CTRecordset records;
    Open(records, kAll);
    EXPECT_EQ(records.SaveAsFile("/no such folder/库存", 0), 0);
    EXPECT_THAT(std::string(records.GetLastErrorString()), ::testing::HasSubstr("SaveAsFile!"));
}

}  // namespace
}  // namespace tk::test
