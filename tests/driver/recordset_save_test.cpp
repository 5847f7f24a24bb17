// Recordsets as files, and deleting by a criterion: what is asked, removed and sent, in order.
#include <unistd.h>

#include <cstdio>
#include <functional>

#include "driver/driver_fixture.h"
#include "support/temporary_folder.h"

namespace {

// The user of these tests: every question is written down, and answered with this.
struct User {
    int answer = IDNO;
    std::vector<std::pair<std::string, UINT>> asked;
};
User* user = nullptr;

}  // namespace

// Stands in front of the platform's own for this program.
int MessageBoxA(HWND, LPCSTR text, LPCSTR, UINT type) {
    if (user == nullptr) return 0;
    user->asked.emplace_back(text, type);
    return user->answer;
}

namespace tk::test {
namespace {

constexpr char kQuestion[] = "该文件已经存在是否删除?";

bool Exists(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}

void Write(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "w");
    ASSERT_NE(file, nullptr);
    std::fputs("before", file);
    std::fclose(file);
}

struct Form {
    const char* label;
    int (CTRecordset::*save)(const char*, int);
    const char* number;
    const char* context;
};

class RecordsetSave : public DriverTest, public ::testing::WithParamInterface<Form> {
protected:
    void SetUp() override {
        ::user = &user_;
        Bind(recordset_);
        records_->On(Call(1057)).Does([this](const Arguments&) {
            existedWhenSaved_ = Exists(path_);
            Write(path_);
            return Nothing();
        });
    }
    void TearDown() override {
        ::user = nullptr;
        recordset_held_.reset();
        DriverTest::TearDown();
    }

    int Save(const char* path, int ask) { return (recordset_.*GetParam().save)(path, ask); }
    std::string SaveLine() const { return "records.call 1057 (BSTR \"" + path_ + "\", I4 " + GetParam().number + ")"; }

    User user_;
    TemporaryFolder folder_;
    std::string path_ = folder_.File("orders.dat");
    bool existedWhenSaved_ = false;
    std::unique_ptr<CTRecordset> recordset_held_ = std::make_unique<CTRecordset>();
    CTRecordset& recordset_ = *recordset_held_;
};

TEST_P(RecordsetSave, SendsPathAndForm) {
    EXPECT_EQ(Save(path_.c_str(), 0), 1);
    EXPECT_THAT(journal_.Take(), ElementsAre(SaveLine()));
    EXPECT_THAT(user_.asked, IsEmpty());
}

TEST_P(RecordsetSave, DeletesTheFileThatWasThereWithoutAQuestion) {
    Write(path_);
    EXPECT_EQ(Save(path_.c_str(), 0), 1);
    EXPECT_FALSE(existedWhenSaved_);
    EXPECT_THAT(user_.asked, IsEmpty());
}

TEST_P(RecordsetSave, AsksBeforeItDeletes) {
    Write(path_);
    user_.answer = IDYES;
    EXPECT_EQ(Save(path_.c_str(), 1), 1);
    ASSERT_EQ(user_.asked.size(), 1u);
    EXPECT_EQ(user_.asked[0].first, kQuestion);
    EXPECT_EQ(user_.asked[0].second, 36u);  // yes and no, with the question mark
    EXPECT_FALSE(existedWhenSaved_);
}

TEST_P(RecordsetSave, TheAnswerNoLeavesTheFileAndSendsNothing) {
    for (const int answer : {IDNO, 0}) {  // 0: the box could not be shown
        Write(path_);
        user_.answer = answer;
        EXPECT_EQ(Save(path_.c_str(), 1), 0);
        EXPECT_TRUE(Exists(path_));
        EXPECT_THAT(journal_.Take(), IsEmpty());
    }
}

TEST_P(RecordsetSave, DoesNotAskWhenThereIsNoFile) {
    EXPECT_EQ(Save(path_.c_str(), 1), 1);
    EXPECT_THAT(user_.asked, IsEmpty());
}

TEST_P(RecordsetSave, ThatThereWasNoFileIsNoErrorOfTheThread) {
    for (const int ask : {0, 1}) {
        std::remove(path_.c_str());
        SetLastError(0);
        EXPECT_EQ(Save(path_.c_str(), ask), 1);
        EXPECT_EQ(GetLastError(), 0u);
    }
}

TEST_P(RecordsetSave, AFailureHasItsContextAndTheFileIsGone) {
    Write(path_);
    records_->On(Call(1057)).Fails("磁盘已满");
    EXPECT_EQ(Save(path_.c_str(), 0), 0);
    EXPECT_EQ(ErrorOf(recordset_), Failure("磁盘已满", GetParam().context));
    EXPECT_FALSE(Exists(path_));
}

TEST_P(RecordsetSave, NullAndEmptyPathsReachTheObject) {
    EXPECT_EQ(Save(nullptr, 1), 1);
    EXPECT_EQ(journal_.Take().at(0), std::string("records.call 1057 (BSTR null, I4 ") + GetParam().number + ")");
    EXPECT_EQ(Save("", 1), 1);
    EXPECT_EQ(journal_.Take().at(0), std::string("records.call 1057 (BSTR \"\", I4 ") + GetParam().number + ")");
    EXPECT_THAT(user_.asked, IsEmpty());
}

TEST_P(RecordsetSave, WithoutAnObjectItFails) {
    CTRecordset empty;
    EXPECT_EQ((empty.*GetParam().save)(path_.c_str(), 0), 0);
    EXPECT_THAT(ErrorOf(empty), ::testing::EndsWith(std::string("\r\n") + GetParam().context));
}

INSTANTIATE_TEST_SUITE_P(Forms, RecordsetSave,
                         ::testing::Values(Form{"Xml", &CTRecordset::SaveAsXML, "1", "SaveAsXML!"},
                                           Form{"Binary", &CTRecordset::SaveAsFile, "0", "SaveAsFile!"}),
                         [](const auto& form) { return form.param.label; });

// ---- deleting ----------------------------------------------------------------------------------------------------

class RecordsetDelete : public DriverTest {
protected:
    void SetUp() override { Bind(recordset_); }
    void TearDown() override {
        recordset_held_.reset();
        DriverTest::TearDown();
    }

    std::unique_ptr<CTRecordset> recordset_held_ = std::make_unique<CTRecordset>();
    CTRecordset& recordset_ = *recordset_held_;
};

TEST_F(RecordsetDelete, DeletesAndMovesOnceForEachRecordOfTheFilter) {
    records_->On(Get(1010)).Returns(Long(2));
    EXPECT_EQ(recordset_.Delete("AMOUNT = 0"), 2);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.put 1030 (BSTR \"AMOUNT = 0\")", "records.get 1010",
                                             "records.get 1006", "records.call 1015 (I4 1)", "records.call 1018",
                                             "records.call 1015 (I4 1)", "records.call 1018"));
}

TEST_F(RecordsetDelete, AFilterThatMatchesNothingDeletesNothing) {
    const struct {
        const char* label;
        long count;
        bool eof;
    } kRows[] = {{"no record", 0, false}, {"no record, at the end", 0, true}, {"at the end", 3, true}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        records_->On(Get(1010)).Returns(Long(row.count));
        records_->On(Get(1006)).Returns(Flag(row.eof));
        EXPECT_EQ(recordset_.Delete("A = 1"), 0);
        EXPECT_THAT(journal_.Take(),
                    ElementsAre("records.put 1030 (BSTR \"A = 1\")", "records.get 1010", "records.get 1006"));
    }
}

TEST_F(RecordsetDelete, ARefusedFilterDeletesNothing) {
    records_->On(Get(1010)).Returns(Long(5));
    records_->On(Put(1030)).Fails("条件错误");
    EXPECT_EQ(recordset_.Delete("A = = 1"), 0);
    EXPECT_EQ(ErrorOf(recordset_), Failure("条件错误", "A = = 1"));
    EXPECT_THAT(journal_.Take(), ElementsAre("records.put 1030 (BSTR \"A = = 1\")"));
}

TEST_F(RecordsetDelete, AFailureInTheMiddleGivesZeroWithTheCriterion) {
    records_->On(Get(1010)).Returns(Long(3));
    records_->On(Call(1015)).Returns(Nothing()).Then().Fails("记录已锁定");
    EXPECT_EQ(recordset_.Delete("A = 1"), 0);
    EXPECT_EQ(ErrorOf(recordset_), Failure("记录已锁定", "A = 1"));
    EXPECT_THAT(journal_.Take(),
                ElementsAre("records.put 1030 (BSTR \"A = 1\")", "records.get 1010", "records.get 1006",
                            "records.call 1015 (I4 1)", "records.call 1018", "records.call 1015 (I4 1)"));
}

TEST_F(RecordsetDelete, ACountThatCannotBeReadDeletesNothing) {
    records_->On(Get(1010)).Fails("断开");
    EXPECT_EQ(recordset_.Delete("A = 1"), -1);
    EXPECT_EQ(ErrorOf(recordset_), Failure("断开", "GetRecordCount!"));
    EXPECT_THAT(journal_.Take(),
                ElementsAre("records.put 1030 (BSTR \"A = 1\")", "records.get 1010", "records.get 1006"));
}

}  // namespace
}  // namespace tk::test
