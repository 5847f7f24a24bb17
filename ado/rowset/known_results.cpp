#include "ado/rowset/known_results.h"

#include <time.h>

#include <optional>
#include <utility>

#include "ado/odbc/column_attribute.h"

namespace tk::ado {
namespace {

constexpr long long kTrusted = 1000;  // milliseconds

long long Now() noexcept {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return time.tv_sec * 1000LL + time.tv_nsec / 1'000'000;
}

/// What the name of a type leaves open about a column.
struct OpenFacts {
    bool size;
    bool digits;
};

OpenFacts OpenFactsOf(int sqlType) noexcept {
    switch (sqlType) {
        case SQL_BIT:
        case SQL_TINYINT:
        case SQL_SMALLINT:
        case SQL_INTEGER:
        case SQL_BIGINT:
        case SQL_REAL:
        case SQL_FLOAT:
        case SQL_DOUBLE:
        case SQL_TYPE_DATE:
            return {false, false};
        case SQL_TYPE_TIME:
        case SQL_TYPE_TIMESTAMP:
            return {false, true};
        case SQL_CHAR:
        case SQL_VARCHAR:
        case SQL_LONGVARCHAR:
        case SQL_WCHAR:
        case SQL_WVARCHAR:
        case SQL_WLONGVARCHAR:
        case SQL_BINARY:
        case SQL_VARBINARY:
        case SQL_LONGVARBINARY:
            return {true, false};
        default:
            return {true, true};
    }
}

/// Nullopt when the driver fails, or has more than fits.
std::optional<std::string_view> ShortText(StatementHandle& handle, int number, SQLUSMALLINT attribute,
                                          std::array<char, 256>& room) noexcept {
    room.front() = room.back() = '\0';
    SQLSMALLINT length = 0;
    const SQLRETURN result =
        Odbc().ColAttribute(handle.Get(), static_cast<SQLUSMALLINT>(number), attribute, room.data(),
                            static_cast<SQLSMALLINT>(room.size() - 1), &length, nullptr);
    if (result != SQL_SUCCESS) return std::nullopt;
    return std::string_view(room.data());
}

bool HasText(StatementHandle& handle, int number, SQLUSMALLINT attribute, std::string_view wanted) noexcept {
    std::array<char, 256> room;
    const auto text = ShortText(handle, number, attribute, room);
    return text && *text == wanted;
}

bool HasNumber(StatementHandle& handle, int number, SQLUSMALLINT attribute, SQLLEN wanted) noexcept {
    return NumberAttribute(handle.Get(), number, attribute, ~wanted) == wanted;
}

}  // namespace

std::shared_ptr<const KnownResults::Known> KnownResults::Find(std::uint64_t form) const {
    const std::lock_guard lock(mutex_);
    const auto& known = known_[form / 2 % kKept];  // forms are odd
    return known != nullptr && known->form == form ? known : nullptr;
}

bool KnownResults::IsAsBefore(StatementHandle& handle, const Known& known, std::size_t column) {
    const int number = static_cast<int>(column) + 1;
    const ToldColumn& told = known.shape->told[column];
    const OpenFacts open = OpenFactsOf(told.sqlType);
    return HasText(handle, number, SQL_DESC_LOCAL_TYPE_NAME, known.typeNames[column]) &&
           (!open.size || HasNumber(handle, number, SQL_COLUMN_PRECISION, static_cast<SQLLEN>(told.size))) &&
           (!open.digits || HasNumber(handle, number, SQL_COLUMN_SCALE, told.digits)) &&
           (known.namesItsColumns || HasText(handle, number, SQL_DESC_LABEL, told.name));
}

std::shared_ptr<const ResultShape> KnownResults::Recognise(StatementHandle& handle, std::uint64_t form,
                                                           int count) const {
    const auto known = Find(form);
    if (known == nullptr || known->typeNames.size() != static_cast<std::size_t>(count)) return nullptr;
    if (Now() - known->described >= kTrusted) return nullptr;
    for (std::size_t column = 0; column < known->typeNames.size(); ++column) {
        if (!IsAsBefore(handle, *known, column)) return nullptr;
    }
    return known->shape;
}

void KnownResults::Remember(StatementHandle& handle, std::uint64_t form, std::string_view sql,
                            std::shared_ptr<const ResultShape> shape) {
    auto known = std::make_shared<Known>();
    known->form = form;
    known->namesItsColumns = sql.find('*') == std::string_view::npos;
    known->described = Now();
    if (Find(form) != nullptr) {
        const std::size_t columns = shape->told.size();
        known->typeNames.reserve(columns);
        for (std::size_t column = 0; column < columns; ++column) {
            std::array<char, 256> room;
            const auto name = ShortText(handle, static_cast<int>(column) + 1, SQL_DESC_LOCAL_TYPE_NAME, room);
            if (!name) return;
            known->typeNames.emplace_back(*name);
        }
    }
    known->shape = std::move(shape);
    const std::lock_guard lock(mutex_);
    known_[form / 2 % kKept] = std::move(known);
}

void KnownResults::Forget() noexcept {
    const std::lock_guard lock(mutex_);
    for (auto& known : known_)
        known.reset();
}

}  // namespace tk::ado
