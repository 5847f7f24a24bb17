#include "ado/cursor/block_writer.h"

#include <algorithm>

#include "ado/cursor/array_text.h"
#include "ado/cursor/column_block.h"
#include "ado/cursor/row_transaction.h"
#include "ado/cursor/text.h"
#include "ado/odbc/odbc_api.h"
#include "ado/odbc/quoted_name.h"

namespace tk::ado {
namespace {

constexpr LONG kReadCommitted = 0x1000;

/// A list of rows longer than this is refused by one of the servers, and gains nothing at the others.
constexpr std::size_t kMostListed = 1000;

/// A statement ends with the row that makes its arrays this long.
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
    rowsPerList_ = std::clamp<std::size_t>(session_->Profile().mostParameters / names.size(), 1, kMostListed);
    // A single bit is told by a type of its own.
    hasParameterArrays_ = session_->Profile().hasParameterArrays &&
                          std::ranges::none_of(columns_, [](const Column& c) { return c.sqlType == SQL_BIT; });
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

const std::string& BlockWriter::TextFor(std::size_t rows) {
    if (listRows_ == rows) return list_;
    listRows_ = rows;
    std::string marks = "(?";
    for (std::size_t i = 1; i < columns_.size(); ++i)
        marks += ", ?";
    marks += ")";
    list_ = head_ + "VALUES ";
    list_.reserve(list_.size() + rows * (marks.size() + 2));
    for (std::size_t i = 0; i < rows; ++i)
        list_.append(i == 0 ? "" : ", ").append(marks);
    return list_;
}

void BlockWriter::Write(RowStore& rows, std::span<const std::size_t> list) {
    RowTransaction transaction(*session_, kReadCommitted, timeoutSeconds_, RowTransaction::Inside::IsUndone);
    while (!list.empty()) {
        const std::size_t written = !arrays_.empty()      ? WriteArrays(rows, list)
                                    : hasParameterArrays_ ? WriteColumns(rows, list)
                                                          : WriteValues(rows, list);
        list = list.subspan(written);
    }
    transaction.Keep();
}

std::size_t BlockWriter::WriteValues(RowStore& rows, std::span<const std::size_t> list) {
    list = list.first(std::min(rowsPerList_, list.size()));
    std::vector<Parameter> parameters;
    parameters.reserve(list.size() * columns_.size());
    for (const std::size_t row : list) {
        for (std::size_t i = 0; i < columns_.size(); ++i)
            parameters.push_back({nullptr, rows.At(row, i), &columns_[i]});
    }
    Send(TextFor(list.size()), parameters);
    return list.size();
}

std::size_t BlockWriter::WriteArrays(RowStore& rows, std::span<const std::size_t> list) {
    std::vector<ArrayText> arrays(columns_.size());
    const std::size_t most = std::min<std::size_t>(list.size(), session_->Profile().mostRows);
    std::size_t count = 0;
    for (std::size_t bytes = 0; count < most && bytes < kManyBytes; ++count) {
        bytes = 0;
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            arrays[i].Append(rows.At(list[count], i), columns_[i]);
            bytes += arrays[i].Size();
        }
    }
    std::vector<Parameter> parameters(columns_.size());
    for (std::size_t i = 0; i < columns_.size(); ++i)
        parameters[i].cell = {Cell::Form::Text, 0, 0, arrays[i].Finish()};
    Send(head_ + arrays_, parameters);
    return count;
}

std::size_t BlockWriter::WriteColumns(RowStore& rows, std::span<const std::size_t> list) {
    std::vector<ColumnBlock> blocks(columns_.size());
    const std::size_t most = std::min<std::size_t>(list.size(), session_->Profile().mostRows);
    std::size_t count = 0;
    // One long value makes room for as many of all the others.
    const auto fits = [&](std::size_t row) {
        std::size_t bytes = 0;
        for (std::size_t i = 0; i < columns_.size(); ++i)
            bytes += blocks[i].SizeWith(rows.At(row, i));
        return bytes < kManyBytes;
    };
    do {
        for (std::size_t i = 0; i < columns_.size(); ++i)
            blocks[i].Append(rows.At(list[count], i), columns_[i]);
        ++count;
    } while (count < most && fits(list[count]));
    const bool isMixed = std::ranges::any_of(blocks, &ColumnBlock::IsMixed);
    if (isMixed || count == 1) return WriteValues(rows, list.first(count));
    std::vector<Parameter> parameters(columns_.size());
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        parameters[i].column = &columns_[i];
        parameters[i].array = &blocks[i].Finish();
    }
    Send(TextFor(1), parameters);
    return count;
}

void BlockWriter::Send(const std::string& text, const std::vector<Parameter>& parameters) {
    const ExecuteOptions options{timeoutSeconds_, 0, true};
    session_->Execute(text, std::span<const Parameter>(parameters), options);
}

}  // namespace tk::ado
