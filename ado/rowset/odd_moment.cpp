#include "ado/rowset/odd_moment.h"

#include <ctime>

#include <cmath>
#include <cstdio>

#include "ado/rowset/cell_reader.h"

namespace tk::ado {
namespace {

constexpr unsigned kLastYear = 9999;

unsigned MonthAndDay(std::time_t time) noexcept {
    std::tm fields = {};
    localtime_r(&time, &fields);
    return static_cast<unsigned>(fields.tm_mon + 1) * 32u + static_cast<unsigned>(fields.tm_mday);
}

/// One cell of the block in another C type; the position is set anew, as a cell is given once.
template <class Value>
Value ReadAs(Statement::Impl& statement, std::size_t row, int column, SQLSMALLINT cType) {
    Value value = {};
    SQLHSTMT handle = statement.handle->Get();
    SQLRETURN result = Odbc().SetPos(handle, row + 1, SQL_POSITION, SQL_LOCK_NO_CHANGE);
    if (!SQL_SUCCEEDED(result)) statement.Fail(result);
    SQLLEN indicator = 0;
    result = Odbc().GetData(handle, static_cast<SQLUSMALLINT>(column), cType, &value, sizeof value, &indicator);
    if (!SQL_SUCCEEDED(result)) statement.Fail(result);
    return value;
}

std::string ReadText(Statement::Impl& statement, std::size_t row, int column) {
    const SQLRETURN result = Odbc().SetPos(statement.handle->Get(), row + 1, SQL_POSITION, SQL_LOCK_NO_CHANGE);
    if (!SQL_SUCCEEDED(result)) statement.Fail(result);
    std::string text;
    ReadWholeCell(statement, column, SQL_C_CHAR, text);
    return text;
}

}  // namespace

void DoubtfulMoments::FindToday() noexcept {
    constexpr std::time_t kHour = 3600;
    const std::time_t now = std::time(nullptr);
    today_ = MonthAndDay(now);
    before_ = MonthAndDay(now - kHour);
}

std::optional<std::string> ReadOddMoment(Statement::Impl& statement, std::size_t row, int column) {
    const auto months = ReadAs<SQL_INTERVAL_STRUCT>(statement, row, column, SQL_C_INTERVAL_YEAR_TO_MONTH);
    if (months.interval_type != SQL_IS_YEAR_TO_MONTH) {  // no year and month at the beginning of its text
        const auto number = ReadAs<double>(statement, row, column, SQL_C_DOUBLE);
        if (!std::isinf(number)) return std::nullopt;
        return number < 0 ? "-infinity" : "infinity";
    }
    const unsigned year = months.intval.year_month.year;
    if (year > kLastYear) {  // all that the driver tells
        char text[32];
        std::snprintf(text, sizeof text, "%u-%02u", year, static_cast<unsigned>(months.intval.year_month.month));
        return text;
    }
    std::string text = ReadText(statement, row, column);
    if (text.ends_with("BC")) return text;
    return std::nullopt;
}

}  // namespace tk::ado
