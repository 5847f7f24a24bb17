#include "ado/cursor/block_writer.h"

#include <algorithm>

#include "ado/cursor/array_text.h"
#include "ado/cursor/row_transaction.h"
#include "ado/cursor/text.h"
#include "ado/odbc/quoted_name.h"

namespace tk::ado {
namespace {

constexpr LONG kReadCommitted = 0x1000;

/// A list of rows longer than this is refused by one of the servers, and gains nothing at the others.
constexpr std::size_t kMostRows = 1000;

// A statement ends with the row that makes it this long, or has this many rows.
constexpr std::size_t kRowsPerArray = 5000;
constexpr std::size_t kManyBytes = std::size_t{4} * 1024 * 1024;
constexpr std::size_t kMostArrays = 100;

}  // namespace

BlockWriter::BlockWriter(std::shared_ptr<Session> session, const std::string& table,
                         std::span<const std::u16string> names, LONG timeoutSeconds)
    : session_(std::move(session)), timeoutSeconds_(timeoutSeconds) {
    std::string list;
    for (const std::u16string& name : names)
        list += (list.empty() ? "" : ", ") + QuotedName(ToUtf8(name), session_->Quote());
    const ExecuteOptions options{timeoutSeconds_, 0, false};
    columns_ = session_->Execute("SELECT " + list + " FROM " + table + " WHERE 1 = 0", options).Columns();
    head_ = "INSERT INTO " + table + " (" + list + ") ";
    if (session_->Profile().arrayTypeQuery != nullptr) ReadArrayTypes(table, names);
    rowsPerStatement_ = std::clamp<std::size_t>(session_->Profile().mostParameters / names.size(), 1, kMostRows);
}

/// A table with a column that has no arrays of its type, or with more columns than a call of a function takes, gets
/// its values one by one.
void BlockWriter::ReadArrayTypes(const std::string& table, std::span<const std::u16string> names) {
    if (names.size() > kMostArrays) return;
    Parameter parameter;
    parameter.cell = {Cell::Form::Text, 0, 0, table};
    const ExecuteOptions options{timeoutSeconds_, 0, true};
    const auto types = RowSet::Fetch(
        session_->Execute(session_->Profile().arrayTypeQuery, std::span<const Parameter>(&parameter, 1), options),
        session_, {});
    std::string arrays;
    for (const std::u16string& name : names) {
        const std::string wanted = ToUtf8(name);
        std::size_t row = 0;
        while (types->HasRow(row) && types->At(row, 0).text != wanted)
            ++row;
        if (!types->HasRow(row)) return;
        arrays.append(arrays.empty() ? "" : ", ").append("CAST(? AS ").append(types->At(row, 1).text).append(")");
    }
    arrays_ = "SELECT * FROM unnest(" + arrays + ")";
}

std::string BlockWriter::TextFor(std::size_t rows) const {
    std::string marks = "(?";
    for (std::size_t i = 1; i < columns_.size(); ++i)
        marks += ", ?";
    marks += ")";
    std::string text = head_ + "VALUES ";
    text.reserve(head_.size() + rows * (marks.size() + 2));
    for (std::size_t i = 0; i < rows; ++i)
        text.append(i == 0 ? "" : ", ").append(marks);
    return text;
}

void BlockWriter::Write(RowStore& rows, std::span<const std::size_t> list) {
    RowTransaction transaction(*session_, kReadCommitted, timeoutSeconds_, RowTransaction::Inside::IsUndone);
    arrays_.empty() ? WriteValues(rows, list) : WriteArrays(rows, list);
    transaction.Keep();
}

void BlockWriter::WriteValues(RowStore& rows, std::span<const std::size_t> list) {
    const ExecuteOptions options{timeoutSeconds_, 0, true};
    std::vector<Parameter> parameters;
    std::string text;
    std::size_t textRows = 0;
    while (!list.empty()) {
        const auto part = list.first(std::min(rowsPerStatement_, list.size()));
        list = list.subspan(part.size());
        parameters.clear();
        for (const std::size_t row : part) {
            for (std::size_t i = 0; i < columns_.size(); ++i)
                parameters.push_back({nullptr, rows.At(row, i), &columns_[i]});
        }
        if (textRows != part.size()) text = TextFor(textRows = part.size());
        session_->Execute(text, std::span<const Parameter>(parameters), options);
    }
}

void BlockWriter::WriteArrays(RowStore& rows, std::span<const std::size_t> list) {
    const ExecuteOptions options{timeoutSeconds_, 0, true};
    const std::string text = head_ + arrays_;
    std::vector<ArrayText> arrays(columns_.size());
    std::vector<Parameter> parameters(columns_.size());
    while (!list.empty()) {
        const std::size_t most = std::min(list.size(), kRowsPerArray);
        std::size_t count = 0;
        std::size_t bytes = 0;
        while (count < most && bytes < kManyBytes) {
            bytes = 0;
            for (std::size_t i = 0; i < columns_.size(); ++i) {
                arrays[i].Append(rows.At(list[count], i), columns_[i]);
                bytes += arrays[i].Size();
            }
            ++count;
        }
        list = list.subspan(count);
        for (std::size_t i = 0; i < columns_.size(); ++i)
            parameters[i].cell = {Cell::Form::Text, 0, 0, arrays[i].Finish()};
        session_->Execute(text, std::span<const Parameter>(parameters), options);
        for (ArrayText& array : arrays)
            array.Clear();
    }
}

}  // namespace tk::ado
