// tests/ado/cursor/sample_rows.h - small row sets made in memory, without any database.
#pragma once

#include <windows.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "ado/cursor/row_store.h"
#include "ado/cursor/text.h"
#include "ado/cursor/value.h"
#include "ado/objects/fields.h"

namespace tk::ado::test {

inline Value Number(LONG number) {
    return Value(number);
}
inline Value Text(std::u16string_view text) {
    return Value::Text(text);
}
inline Value Null() {
    return Value::Null();
}

inline Value Date(double date) {
    Value value;
    VARIANT* place = value.Out();
    place->vt = VT_DATE;
    place->date = date;
    return value;
}

inline Value Decimal(std::u16string_view digits) {
    HRESULT result = S_OK;
    return Value::Text(digits).As(VT_DECIMAL, result);
}

constexpr LONG kInteger = 3;
constexpr LONG kDouble = 5;
constexpr LONG kBoolean = 11;
constexpr LONG kNumeric = 131;
constexpr LONG kTimestamp = 135;
constexpr LONG kVarWChar = 202;
constexpr LONG kVarBinary = 204;

struct ColumnSample {
    const char16_t* name;
    LONG type;
};

inline std::vector<Column> Columns(std::initializer_list<ColumnSample> samples) {
    std::vector<Column> columns;
    for (const ColumnSample& sample : samples)
        columns.push_back(MakeColumn(sample.name, sample.type, 50, 0x60));
    return columns;
}

inline std::shared_ptr<RowSet> Rows(std::vector<Column> columns, const std::vector<std::vector<Value>>& rows) {
    auto set = RowSet::Build(std::move(columns));
    for (const auto& row : rows) {
        std::vector<VARIANT> borrowed;
        for (const Value& value : row)
            borrowed.push_back(value.Get());
        set->Append(borrowed);
    }
    return set;
}

/// One integer column "id" that counts from 1.
inline std::shared_ptr<RowStore> Counted(LONG count) {
    std::vector<std::vector<Value>> rows;
    for (LONG i = 1; i <= count; ++i)
        rows.push_back({Number(i)});
    return std::make_shared<RowStore>(Rows(Columns({{u"id", kInteger}}), rows));
}

/// The goods that most tests look at.
///   id  name     price  born                 flag  code
///   1   Apple    1.50   2003-07-04           yes   NULL
///   2   banana   2.25   2003-07-04 13:05:09  no    A1
///   3   NULL     NULL   NULL                 NULL  a1
///   4   中国茶    10     1899-12-29 06:00     yes   b%2
///   5   O'Neil   -3.75  2010-01-02           no    '#x
inline std::shared_ptr<RowStore> Goods() {
    const auto yes = Value::Boolean(true);
    const auto no = Value::Boolean(false);
    return std::make_shared<RowStore>(
        Rows(Columns({{u"id", kInteger},
                      {u"name", kVarWChar},
                      {u"price", kNumeric},
                      {u"born", kTimestamp},
                      {u"flag", kBoolean},
                      {u"item code", kVarWChar}}),
             {
                 {Number(1), Text(u"Apple"), Decimal(u"1.50"), Date(37806.0), yes, Null()},
                 {Number(2), Text(u"banana"), Decimal(u"2.25"), Date(37806.0 + 47109.0 / 86400), no, Text(u"A1")},
                 {Number(3), Null(), Null(), Null(), Null(), Text(u"a1")},
                 {Number(4), Text(u"中国茶"), Decimal(u"10"), Date(-1.25), yes, Text(u"b%2")},
                 {Number(5), Text(u"O'Neil"), Decimal(u"-3.75"), Date(40180.0), no, Text(u"'#x'")},
             }));
}

/// The number of the error that work throws; 0 for none.
template <class Work>
int ErrorOf(Work&& work) {
    try {
        work();
        return 0;
    } catch (const AdoError& error) {
        return static_cast<int>(error.Code() & 0xFFFF);
    }
}

}  // namespace tk::ado::test
