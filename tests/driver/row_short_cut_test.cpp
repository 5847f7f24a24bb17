// What a recordset object offers beside IDispatch is used, and never changes a result.
#include <functional>

#include "driver/driver_fixture.h"
#include "tkkernel/row_access.h"

namespace tk::test {
namespace {

/// One row of fields that can be read directly; refuses what a test tells it to.
class Rows final : public IRowAccess {
public:
    struct Field {
        std::u16string name;
        COleVariant value;
        const char* utf8 = nullptr;  // set for text fields
        ULONG length = 0;
    };

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    HRESULT STDMETHODCALLTYPE GetValue(LONG index, VARIANT* value) override {
        ++calls;
        VariantInit(value);
        if (refuses || index < 0 || index >= static_cast<LONG>(fields.size())) return E_FAIL;
        return VariantCopy(value, &fields[index].value);
    }
    HRESULT STDMETHODCALLTYPE FindField(const OLECHAR* name, UINT length, LONG* index) override {
        ++calls;
        const std::u16string wanted(reinterpret_cast<const char16_t*>(name), length);
        for (std::size_t i = 0; !refuses && i < fields.size(); ++i) {
            if (fields[i].name != wanted) continue;
            *index = static_cast<LONG>(i);
            return S_OK;
        }
        return E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE GetText(LONG index, const char** text, ULONG* length) override {
        ++calls;
        if (refuses || index < 0 || index >= static_cast<LONG>(fields.size())) return E_FAIL;
        const Field& field = fields[index];
        const bool isNull = V_VT(&field.value) == VT_NULL;
        if (field.utf8 == nullptr && !isNull) return S_FALSE;
        *text = field.utf8;
        *length = field.length;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE MoveNext() override { return ++calls, refuses ? E_FAIL : S_OK; }
    HRESULT STDMETHODCALLTYPE MovePrevious() override { return ++calls, refuses ? E_FAIL : S_OK; }
    HRESULT STDMETHODCALLTYPE GetBof(VARIANT_BOOL* bof) override {
        ++calls;
        *bof = atBeginning ? VARIANT_TRUE : VARIANT_FALSE;
        return refuses ? E_FAIL : S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetEof(VARIANT_BOOL* eof) override {
        ++calls;
        *eof = atEnd ? VARIANT_TRUE : VARIANT_FALSE;
        return refuses ? E_FAIL : S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetFieldCount(LONG* count) override {
        ++calls;
        *count = static_cast<LONG>(fields.size());
        return refuses ? E_FAIL : S_OK;
    }

    std::vector<Field> fields;
    bool refuses = false;
    bool atEnd = false;
    bool atBeginning = false;
    int calls = 0;
    ULONG references = 0;
};

class RowShortCut : public DriverTest {
protected:
    void SetUp() override {
        records_->Offer(IID_IRowAccess, &rows_);
        rows_.fields = {{u"ID", Long(7)},
                        {u"名称", Text("库存 A"), "\xE5\xBA\x93\xE5\xAD\x98 A", 8},
                        {u"PLAIN", Text("plain text"), "plain text", 10},
                        {u"NONE", Null()},
                        {u"TEXT NULL", Null(), nullptr, 0},
                        {u"EMPTY", Text(""), "", 0},
                        {u"PRICE", Real(1.5)}};
        Bind(recordset_);
        std::vector<std::pair<const char*, COleVariant>> late;
        late = {{"ID", Long(-1)}, {"LATE", Text("late")}};
        records_->On(Get(0)).Returns(Object(MakeFields(late).Get()));
    }
    void TearDown() override {
        recordset_held_.reset();
        EXPECT_EQ(rows_.references, 0u);
        DriverTest::TearDown();
    }

    Rows rows_;
    std::unique_ptr<CTRecordset> recordset_held_ = std::make_unique<CTRecordset>();
    CTRecordset& recordset_ = *recordset_held_;
};

TEST_F(RowShortCut, ServesValuesWithoutALateBoundCall) {
    EXPECT_EQ(Describe(recordset_.GetValue("ID")), "I4 7");
    EXPECT_EQ(Describe(recordset_.GetValue(0L)), "I4 7");
    EXPECT_EQ(Describe(recordset_.GetValue(Short(0))), "I4 7");
    EXPECT_EQ(recordset_.GetIntValue("ID"), 7);
    EXPECT_EQ(recordset_.GetDoubleValue(6L), 1.5);
    EXPECT_STREQ(recordset_.GetStringValue("名称"), "库存 A");
    EXPECT_STREQ(recordset_.GetStringValue(1L), "库存 A");
    EXPECT_STREQ(recordset_.GetStringValue("PLAIN"), "plain text");
    EXPECT_STREQ(recordset_.GetStringValue("NONE"), "");
    EXPECT_STREQ(recordset_.GetStringValue("TEXT NULL"), "");
    EXPECT_STREQ(recordset_.GetStringValue("EMPTY"), "");
    EXPECT_STREQ(recordset_.GetStringValue(0L), "7");
    EXPECT_STREQ(recordset_.GetStringValue(6L), "        1.5");
    EXPECT_STREQ(recordset_.GetStringValueStr(1L), "'库存 A'");
    EXPECT_STREQ(recordset_.GetStringValueStr(2L), "'plain text'");
    EXPECT_STREQ(recordset_.GetStringValueStr(3L), "");
    EXPECT_STREQ(recordset_.GetStringValueStr(4L), "");
    EXPECT_STREQ(recordset_.GetStringValueStr(5L), "''");
    EXPECT_STREQ(recordset_.GetStringValueStr(6L), "        1.5");
    EXPECT_EQ(recordset_.GetCharValue("PLAIN"), 'p');
    EXPECT_EQ(recordset_.GetFieldCount(), 7);
    recordset_.MoveNext();
    EXPECT_EQ(recordset_.GetEof(), 0);
    rows_.atEnd = true;
    EXPECT_NE(recordset_.GetEof(), 0);
    recordset_.MovePrevious();
    EXPECT_EQ(recordset_.GetBof(), 0);
    rows_.atBeginning = true;
    EXPECT_NE(recordset_.GetBof(), 0);
    EXPECT_THAT(journal_.Take(), IsEmpty());
}

TEST_F(RowShortCut, IsAskedForOnce) {
    EXPECT_EQ(records_->Asked(IID_IRowAccess), 0) << "not before it is needed";
    for (int i = 0; i < 5; ++i)
        recordset_.GetValue(0L);
    recordset_.GetEof();
    EXPECT_EQ(records_->Asked(IID_IRowAccess), 1);
    EXPECT_EQ(rows_.references, 1u);
}

TEST_F(RowShortCut, ARefusalIsAskedForOnceAsWell) {
    auto plain = Make("plain");
    CTRecordset recordset(static_cast<IDispatch*>(plain.Share()));
    for (int i = 0; i < 5; ++i)
        recordset.GetEof();
    EXPECT_EQ(plain->Asked(IID_IRowAccess), 1);
    EXPECT_EQ(journal_.Take().size(), 5u);
}

TEST_F(RowShortCut, WhatItCannotAnswerGoesTheLateBoundWay) {
    rows_.refuses = true;
    EXPECT_EQ(recordset_.GetIntValue("ID"), -1);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 0", "fields.get 0 (BSTR \"ID\")", "field.get 0"));
    EXPECT_EQ(recordset_.GetIntValue(0L), -1);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 0", "fields.get 0 (I4 0)", "field.get 0"));
    EXPECT_EQ(Describe(recordset_.GetValue(Short(0))), "I4 -1");
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 0", "fields.get 0 (I2 0)", "field.get 0"));
    EXPECT_STREQ(recordset_.GetStringValue("LATE"), "late");
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 0", "fields.get 0 (BSTR \"LATE\")", "field.get 0"));
    EXPECT_STREQ(recordset_.GetStringValue(1L), "late");
    EXPECT_THAT(journal_.Take(), ElementsAre("records.get 0", "fields.get 0 (I4 1)", "field.get 0"));
    recordset_.MoveNext();
    recordset_.GetEof();
    EXPECT_EQ(recordset_.GetFieldCount(), 2);
    EXPECT_THAT(journal_.Take(), ElementsAre("records.call 1018", "records.get 1006", "records.get 0", "fields.get 1"));
    recordset_.MovePrevious();
    recordset_.GetBof();
    EXPECT_THAT(journal_.Take(), ElementsAre("records.call 1019", "records.get 1002"));
}

TEST_F(RowShortCut, FailuresAreThoseOfTheLateBoundCalls) {
    rows_.refuses = true;
    records_->On(Get(0)).Fails("没有当前记录");
    EXPECT_EQ(Describe(recordset_.GetValue("ID")), "EMPTY");
    EXPECT_EQ(ErrorOf(recordset_), Failure("没有当前记录", "可能数据源绑定错误!试着用 OpenField()打开数据源"));
    records_->On(Call(1018)).Fails("已到末尾");
    try {
        recordset_.MoveNext();
        ADD_FAILURE() << "no exception";
    } catch (COleDispatchException* e) {
        EXPECT_STREQ(e->m_strDescription, "已到末尾");
        e->Delete();
    }
}

TEST_F(RowShortCut, NamesItCannotTakeGoTheLateBoundWay) {
    const std::string longName(300, 'N');
    EXPECT_EQ(Describe(recordset_.GetValue(longName.c_str())), "EMPTY");
    EXPECT_EQ(Describe(recordset_.GetValue(static_cast<const char*>(nullptr))), "EMPTY");
    COleVariant late;
    VARIANT value = recordset_.GetValue("LATE");
    late.Attach(value);
    EXPECT_EQ(Describe(late), "BSTR \"late\"");
}

TEST_F(RowShortCut, LiteralsDoubleTheQuotes) {
    rows_.fields.push_back({u"Q", Text("It''s"), "It''s", 5});
    EXPECT_STREQ(recordset_.GetStringValueStr(7L), "'It''''s'");
    rows_.fields.push_back({u"W", Text("'库'"), "'\xE5\xBA\x93'", 5});
    EXPECT_STREQ(recordset_.GetStringValueStr(8L), "'''库'''");
}

TEST_F(RowShortCut, ExportsReadOnItAlone) {
    CString text;
    CStringArray values;
    EXPECT_STREQ(recordset_.GetCurRecordToString("|"), "7|'库存 A'|'plain text'|||''|        1.5");
    EXPECT_EQ(recordset_.SelectCurRecordToString(values, 0), 1);
    EXPECT_EQ(recordset_.SelectCurRecordToTrimString(values), 1);
    EXPECT_STREQ(values.GetAt(6), "1.5");
    EXPECT_EQ(recordset_.SelectNextRecordToString(7, text, "|", 0), 1);
    EXPECT_STREQ(text, "7|库存 A|plain text||||        1.5");
    EXPECT_THAT(journal_.Take(), IsEmpty());
}

TEST_F(RowShortCut, TextsEndWhereTheirVariantEnds) {
    rows_.fields.push_back({u"NUL", Text("ab"), "ab\0cd", 5});
    EXPECT_STREQ(recordset_.GetStringValue("NUL"), "ab");
    EXPECT_EQ(recordset_.GetStringValue("NUL").GetLength(), 2);
    EXPECT_STREQ(recordset_.GetStringValueStr(7L), "'ab'");
}

TEST_F(RowShortCut, TextsOfEveryLengthAndPlaceOfTheFirstWideCharacter) {
    for (std::size_t before = 0; before < 20; ++before) {
        for (std::size_t after = 0; after < 20; ++after) {
            const std::string utf8 = std::string(before, 'a') + "\xE5\xBA\x93" + std::string(after, 'b');
            const std::string gbk = std::string(before, 'a') + "库" + std::string(after, 'b');
            rows_.fields.push_back({u"T", Text(gbk.c_str()), utf8.c_str(), static_cast<ULONG>(utf8.size())});
            EXPECT_EQ(std::string(recordset_.GetStringValue("T")), gbk);
            rows_.fields.pop_back();
        }
    }
}

TEST_F(RowShortCut, LongTextsComeWhole) {
    std::string utf8;
    std::string gbk;
    for (int i = 0; i < 20000; ++i) {
        utf8 += "\xE5\xBA\x93x";
        gbk += "库x";
    }
    rows_.fields.push_back({u"LONG", Text(gbk.c_str()), utf8.c_str(), static_cast<ULONG>(utf8.size())});
    EXPECT_EQ(std::string(recordset_.GetStringValue("LONG")), gbk);
}

TEST_F(RowShortCut, IsGivenBackWithTheWrapper) {
    recordset_.GetValue(0L);
    EXPECT_EQ(rows_.references, 1u);
    CTRecordset copy(recordset_);
    copy.GetValue(0L);
    EXPECT_EQ(rows_.references, 2u) << "a copy asks for itself";
}

}  // namespace
}  // namespace tk::test
