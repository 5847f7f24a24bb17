#include "ado/rowset/known_results.h"

#include <algorithm>
#include <new>
#include <utility>

#include "ado/odbc/ascii.h"
#include "ado/odbc/coarse_clock.h"
#include "ado/odbc/column_attribute.h"

namespace tk::ado {
namespace {

constexpr std::int64_t kTrusted = kSecond;

/// What the name of a type leaves open about a column.
struct OpenFacts {
    bool size;
    bool digits;
};

OpenFacts OpenFactsOf(CellKind kind) noexcept {
    switch (kind) {
        case CellKind::Boolean:
        case CellKind::Integer16:
        case CellKind::Integer32:
        case CellKind::Integer64:
        case CellKind::Real32:
        case CellKind::Real64:
        case CellKind::Date:
            return {false, false};
        case CellKind::Time:
        case CellKind::Timestamp:
            return {false, true};
        case CellKind::Text:
        case CellKind::Bytes:
            return {true, false};
        case CellKind::Decimal:
        case CellKind::Guid:
            break;
    }
    return {true, true};
}

using Room = std::array<char, 256>;

bool HasText(StatementHandle& handle, int number, SQLUSMALLINT attribute, std::string_view wanted) noexcept {
    Room room;
    return TextAttribute(handle.Get(), number, attribute, room) == wanted;
}

bool HasNumber(StatementHandle& handle, int number, SQLUSMALLINT attribute, SQLLEN wanted) noexcept {
    return NumberAttribute(handle.Get(), number, attribute, ~wanted) == wanted;
}

/// False where columns get their names from the table, as by "*" and "with ... table item".
bool NamesItsColumns(std::string_view sql) noexcept {
    return sql.find('*') == std::string_view::npos && !ContainsNoCase(sql, "table");
}

}  // namespace

std::size_t KnownResults::PlaceOf(std::uint64_t form) const noexcept {
    return static_cast<std::size_t>(std::ranges::find(forms_, form) - forms_.begin());
}

std::shared_ptr<const KnownResults::Known> KnownResults::Find(std::uint64_t form) const noexcept {
    const std::lock_guard lock(mutex_);
    const std::size_t place = PlaceOf(form);
    return place < kKept ? known_[place] : nullptr;
}

void KnownResults::Keep(std::uint64_t form, std::shared_ptr<const Known> known) noexcept {
    const std::lock_guard lock(mutex_);
    std::size_t place = PlaceOf(form);
    if (place == kKept) {
        place = oldest_;
        oldest_ = (oldest_ + 1) % kKept;
    }
    forms_[place] = form;
    known_[place].swap(known);
}

bool KnownResults::IsAsBefore(StatementHandle& handle, const Known& known, std::size_t column) noexcept {
    const int number = static_cast<int>(column) + 1;
    const ToldColumn& told = known.shape->told[column];
    const OpenFacts open = OpenFactsOf(known.shape->columns[column].kind);
    return HasText(handle, number, SQL_DESC_LOCAL_TYPE_NAME, known.typeNames[column]) &&
           (!open.size || HasNumber(handle, number, SQL_COLUMN_PRECISION, static_cast<SQLLEN>(told.size))) &&
           (!open.digits || HasNumber(handle, number, SQL_COLUMN_SCALE, told.digits)) &&
           (known.namesItsColumns || HasText(handle, number, SQL_DESC_LABEL, told.name));
}

std::shared_ptr<const ResultShape> KnownResults::Recognise(StatementHandle& handle, std::uint64_t form,
                                                           int count) noexcept {
    const auto known = Find(form);
    if (known == nullptr || known->typeNames.size() != static_cast<std::size_t>(count)) return nullptr;
    if (CoarseNow() - known->described >= kTrusted) return nullptr;
    for (std::size_t column = 0; column < known->typeNames.size(); ++column) {
        if (IsAsBefore(handle, *known, column)) continue;
        Keep(form, nullptr);  // where it differs every time, it is not tried every time
        return nullptr;
    }
    return known->shape;
}

void KnownResults::Remember(StatementHandle& handle, std::uint64_t form, std::string_view sql,
                            const std::shared_ptr<const ResultShape>& shape) noexcept try {
    auto known = std::make_shared<Known>();
    known->shape = shape;
    known->namesItsColumns = NamesItsColumns(sql);
    known->described = CoarseNow();
    if (Find(form) != nullptr) {
        known->typeNames.reserve(shape->told.size());
        for (std::size_t column = 0; column < shape->told.size(); ++column) {
            Room room;
            const auto name = TextAttribute(handle.Get(), static_cast<int>(column) + 1, SQL_DESC_LOCAL_TYPE_NAME, room);
            // Many types may share the name of those that the driver does not know.
            if (!name || *name == handle.Profile().opaqueType) return;
            known->typeNames.emplace_back(*name);
        }
    }
    Keep(form, std::move(known));
} catch (const std::bad_alloc&) {  // it is described again the next time
}

void KnownResults::Forget() noexcept {
    const std::lock_guard lock(mutex_);
    forms_.fill(0);
    for (auto& known : known_)
        known.reset();
}

}  // namespace tk::ado
