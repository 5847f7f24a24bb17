// catalog_fixture.h - a scripted database whose Connection opens one rowset and whose Recordset walks it.
//
//   Database database;
//   Open(database, "Microsoft SQL Server");
//   Show({{{"TABLE_NAME", Text("ORDERS")}}});
//   database.GetAllTables(names);
//   EXPECT_THAT(Calls(), ElementsAre("connection.get 18", ...));
#pragma once

#include "driver/driver_fixture.h"

namespace tk::test {

using Row = std::vector<std::pair<const char*, COleVariant>>;

inline Lines TextsOf(const CStringArray& values) {
    Lines texts;
    for (int i = 0; i < values.GetSize(); ++i)
        texts.emplace_back(values.GetAt(i));
    return texts;
}

class CatalogTest : public DriverTest {
protected:
    /// Opens a database that calls itself so; "User Name" is "dbo" and "User ID" is "sa".
    void Open(CTDatabase& database, const char* dbmsName) {
        DriverTest::Open(database,
                         {{"DBMS Name", Text(dbmsName)}, {"User Name", Text("dbo")}, {"User ID", Text("sa")}});
        connection_->On(Get(0)).Returns(Text("DSN=stock"));
    }

    /// The next schema rowset, and the recordset that the next walk creates, show these rows.
    void Show(std::vector<Row> rows) {
        connection_->On(Call(19)) = Script();
        connection_->On(Call(19)).Returns(Object(rowset_.Get()));
        ShowInRecordset(std::move(rows));
        recordsets_->Give(records_.Get());
    }

    /// records_ shows these rows and stands on the first one.
    void ShowInRecordset(std::vector<Row> rows) {
        rows_.clear();
        at_ = 0;
        for (Row& row : rows)
            rows_.push_back(MakeFields(std::move(row)));
        for (const Member member : {Get(0), Get(1006), Get(1010), Call(1017), Call(1018), Call(1020)})
            records_->On(member) = Script();
        records_->On(Get(0)).Does(
            [this](const Arguments&) { return Object(at_ < rows_.size() ? rows_[at_].Get() : nothing_.Get()); });
        records_->On(Get(1006)).Does([this](const Arguments&) { return Flag(at_ >= rows_.size()); });
        records_->On(Get(1010)).Does([this](const Arguments&) { return Long(static_cast<long>(rows_.size())); });
        records_->On(Call(1017)).Does([this](const Arguments& arguments) {
            at_ = static_cast<std::size_t>(V_I4(arguments.at(0)));
            return Nothing();
        });
        records_->On(Call(1018)).Does([this](const Arguments&) { return ++at_, Nothing(); });
        records_->On(Call(1020)).Does([this](const Arguments&) { return at_ = 0, Nothing(); });
    }

    /// What the objects were sent, without the reading of fields.
    Lines Calls() {
        Lines lines = journal_.Take();
        std::erase_if(lines, [](const std::string& line) { return line.starts_with("field"); });
        return lines;
    }

    void TearDown() override {
        EXPECT_LE(rowset_->References(), 2u) << "besides the script and this test nobody holds the rowset";
        rows_.clear();
        nothing_ = {};
        rowset_ = {};
        DriverTest::TearDown();
    }

    Held<ScriptedObject> rowset_ = Make("rowset");
    std::vector<Held<ScriptedObject>> rows_;
    Held<ScriptedObject> nothing_ = MakeFields({});  // the fields where there is no row
    std::size_t at_ = 0;
};

}  // namespace tk::test
