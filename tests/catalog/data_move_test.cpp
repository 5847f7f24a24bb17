// The thread that copies rows into a list and reports each one by a message.
#include <thread>

#include "catalog/catalog_fixture.h"

namespace tk::test {
namespace {

class Mover : public CTDatabase {
public:
    using CTDatabase::OnDataMove;
};

/// What a caller hands to the thread.
struct Block {
    DWORD notifiedThread;
    CStringList* rows;
    CString* names;
    IDispatch* source;
    CTDatabase* database;
};

class DataMove : public CatalogTest {
protected:
    void SetUp() override {
        Open(database_, "Oracle");
        MSG message;
        while (PeekMessage(&message, nullptr, 0, 0, PM_REMOVE)) {}
    }
    void TearDown() override {
        database_held_.reset();
        CatalogTest::TearDown();
    }

    /// Shows rows of three columns, two of which need quotes.
    void ShowRows(int count) {
        std::vector<Row> rows;
        for (int i = 1; i <= count; ++i)
            rows.push_back({{"ID", Long(i)}, {"名称", Text("螺丝")}, {"NOTE", Text("It's")}});
        ShowInRecordset(std::move(rows));
        recordsets_->Give(records_.Get());
    }

    Block TheBlock() { return {GetCurrentThreadId(), &moved_, &names_, rowset_.Get(), &database_}; }

    /// Runs the body on a thread of its own.
    static unsigned Run(Block block) {
        unsigned result = 1;
        std::thread([&] { result = Mover::OnDataMove(&block); }).join();
        return result;
    }

    Lines Moved() const {
        Lines lines;
        for (POSITION at = moved_.GetHeadPosition(); at != nullptr;)
            lines.emplace_back(moved_.GetNext(at));
        return lines;
    }

    /// The messages of this thread, which are gone afterwards.
    static std::vector<UINT> Messages() {
        std::vector<UINT> numbers;
        MSG message;
        while (PeekMessage(&message, nullptr, 0, 0, PM_REMOVE)) {
            EXPECT_EQ(message.wParam, 0u);
            EXPECT_EQ(message.lParam, 0);
            numbers.push_back(message.message);
        }
        return numbers;
    }

    CStringList moved_;
    CString names_ = "before";
    std::unique_ptr<CTDatabase> database_held_ = std::make_unique<CTDatabase>();
    CTDatabase& database_ = *database_held_;
};

TEST_F(DataMove, MovesAsManyRowsAsThereAreFields) {
    moved_.AddTail("before");
    ShowRows(5);
    EXPECT_EQ(Run(TheBlock()), 0u);
    EXPECT_THAT(Moved(), ElementsAre("before", "1,'螺丝','It''s'", "2,'螺丝','It''s'", "3,'螺丝','It''s'"));
    EXPECT_STREQ(names_, "ID,名称,NOTE");
    EXPECT_THAT(Messages(), ElementsAre(1224u, 1224u, 1224u));
    EXPECT_EQ(at_, 3u) << "moved on behind the last one as well";
}

TEST_F(DataMove, OpensTheSourceOnTheDatabaseAndClosesIt) {
    ShowRows(5);
    records_->On(Get(1054)).Returns(Long(1));
    Run(TheBlock());
    Lines lines = Calls();
    std::erase_if(lines, [](const std::string& line) { return line == "records.get 0"; });
    EXPECT_THAT(lines, ElementsAre("connection.get 0", "connection.get 18", "records.putref 1056 (UNKNOWN rowset)",
                                   "records.get 1006", "records.call 1018", "records.get 1006", "records.call 1018",
                                   "records.get 1006", "records.call 1018", "records.get 1054", "records.call 1014"));
}

TEST_F(DataMove, FewerRowsThanFieldsEndTheWork) {
    ShowRows(1);
    records_->On(Call(1018)) = Script();
    records_->On(Call(1018)).Does([this](const Arguments&) { return ++at_, Nothing(); }).Then().Fails("BOF 或 EOF");
    EXPECT_EQ(Run(TheBlock()), 0u);
    EXPECT_THAT(Moved(), ElementsAre("1,'螺丝','It''s'", "")) << "an empty text from behind the last row";
    EXPECT_THAT(Messages(), ElementsAre(1224u));
}

TEST_F(DataMove, WithoutARecordsetNothingMoves) {
    recordsets_->Give(records_.Get());
    records_->On(PutRef(1056)).Fails("没有接口");
    EXPECT_EQ(Run(TheBlock()), 0u);
    Block block = TheBlock();
    recordsets_->Give(records_.Get());
    block.source = nullptr;
    EXPECT_EQ(Run(block), 0u);
    EXPECT_THAT(Moved(), IsEmpty());
    EXPECT_STREQ(names_, "before");
    EXPECT_THAT(Messages(), IsEmpty());
}

TEST_F(DataMove, AnIncompleteBlockIsLeftAlone) {
    EXPECT_EQ(Mover::OnDataMove(nullptr), 0u);
    Block blocks[] = {TheBlock(), TheBlock(), TheBlock()};
    blocks[0].rows = nullptr;
    blocks[1].names = nullptr;
    blocks[2].database = nullptr;
    for (const Block& block : blocks)
        EXPECT_EQ(Run(block), 0u);
    EXPECT_THAT(journal_.Take(), IsEmpty());
}

TEST_F(DataMove, AThreadOfAnotherApartmentDoesNothing) {
    ASSERT_EQ(CoInitialize(nullptr), RPC_E_CHANGED_MODE) << "this thread has another kind of apartment";
    Block block = TheBlock();
    EXPECT_EQ(Mover::OnDataMove(&block), 0u);
    EXPECT_THAT(journal_.Take(), IsEmpty());
}

TEST_F(DataMove, TheThreadKeepsItsApartment) {
    ShowRows(3);
    std::thread([this] {
        Block block = TheBlock();
        EXPECT_EQ(Mover::OnDataMove(&block), 0u);
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
        CoUninitialize();
    }).join();
}

TEST_F(DataMove, NobodyToNotifyIsNoFailure) {
    ShowRows(3);
    Block block = TheBlock();
    block.notifiedThread = 0x7FFFFFFF;
    EXPECT_EQ(Run(block), 0u);
    EXPECT_EQ(moved_.GetCount(), 3);
    EXPECT_THAT(Messages(), IsEmpty());
}

}  // namespace
}  // namespace tk::test
