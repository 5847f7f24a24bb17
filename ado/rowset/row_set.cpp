#include "ado/rowset/row_set.h"

#include <malloc.h>
#include <tkwin32/text.h>

#include <algorithm>

#include "ado/rowset/date_value.h"
#include "ado/rowset/moment_fields.h"
#include "ado/rowset/origins.h"
#include "ado/rowset/row_set_impl.h"
#include "ado/rowset/type_map.h"
#include "ado/rowset/value.h"

namespace tk::ado {
namespace {

// Rows of one chunk of a set that is built here.
constexpr std::size_t kBuiltRows = 256;

constexpr int kFirstYear = 100;
constexpr DATE kBeforeAll = -657435;
constexpr DATE kAfterAll = 2958466;

constexpr std::size_t kLargeBytes = std::size_t{16} * 1024 * 1024;

Cell MomentCell(int year, int month, int day, int hour, int minute, int second, unsigned fraction) noexcept {
    const CalendarTime time = {year, month, day, hour, minute, second, static_cast<int>(fraction)};
    // A date outside the automation range sorts before or after all others; Read gives its text.
    const auto date = ToAutomationDate(time);
    return {Cell::Form::Date, time.nanosecond, date.value_or(year < kFirstYear ? kBeforeAll : kAfterAll), {}};
}

Cell FixedCell(const RowLayout& layout, const Chunk& chunk, CellKind kind, std::size_t row, std::size_t slot) noexcept {
    const auto integer = [](long long value) { return Cell{Cell::Form::Integer, value, 0, {}}; };
    const auto real = [](double value) { return Cell{Cell::Form::Real, 0, value, {}}; };
    switch (kind) {
        case CellKind::Integer16:
            return integer(chunk.Fixed<short>(layout, row, slot));
        case CellKind::Integer32:
            return integer(chunk.Fixed<std::int32_t>(layout, row, slot));
        case CellKind::Integer64:
            return integer(chunk.Fixed<std::int64_t>(layout, row, slot));
        case CellKind::Real32:
            return real(static_cast<double>(chunk.Fixed<float>(layout, row, slot)));
        case CellKind::Real64:
            return real(chunk.Fixed<double>(layout, row, slot));
        case CellKind::Boolean:
            return {Cell::Form::Boolean, chunk.Fixed<unsigned char>(layout, row, slot) != 0 ? 1 : 0, 0, {}};
        case CellKind::Date: {
            const auto date = chunk.Fixed<SQL_DATE_STRUCT>(layout, row, slot);
            if (const auto number = TextNumberOf(date)) [[unlikely]]
                return {Cell::Form::Text, 0, 0, chunk.Text(*number)};
            return MomentCell(date.year, date.month, date.day, 0, 0, 0, 0);
        }
        case CellKind::Timestamp: {
            const auto stamp = chunk.Fixed<SQL_TIMESTAMP_STRUCT>(layout, row, slot);
            if (const auto number = TextNumberOf(stamp)) [[unlikely]]
                return {Cell::Form::Text, 0, 0, chunk.Text(*number)};
            return MomentCell(stamp.year, stamp.month, stamp.day, stamp.hour, stamp.minute, stamp.second,
                              stamp.fraction);
        }
        default:
            return {};
    }
}

}  // namespace

void RowSet::Impl::ThrowIfFailed() const {
    const std::lock_guard lock(mutex);
    if (error != nullptr) throw AdoError(*error);
}

const Chunk& RowSet::Impl::LocateElsewhere(std::size_t row) const {
    if (current != nullptr && current->Covers(row)) [[likely]]
        return *current;
    if (builder != nullptr && row >= sealedRows) SealBuilt();
    std::unique_lock lock(mutex, std::defer_lock);
    if (!isComplete.load(std::memory_order_acquire)) lock.lock();
    for (const std::size_t index : {currentIndex + 1, currentIndex - 1}) {
        if (current != nullptr && index < chunks.size() && chunks[index]->Covers(row)) return Go(index);
    }
    const auto after = std::ranges::upper_bound(chunks, row, {}, [](const auto& each) { return each->FirstRow(); });
    return Go(static_cast<std::size_t>(after - chunks.begin()) - 1);
}

const Chunk& RowSet::Impl::Go(std::size_t index) const noexcept {
    currentIndex = index;
    current = chunks[index].get();
    return *current;
}

void RowSet::Impl::SealBuilt() const {
    const std::size_t rows = arrived.load(std::memory_order_relaxed);
    if (rows == sealedRows) return;
    chunks.push_back(builder->Seal(sealedRows, rows - sealedRows, {}));
    sealedRows = rows;
    current = nullptr;
}

Cell RowSet::Impl::At(std::size_t row, std::size_t column) const {
    const Chunk& chunk = Locate(row);
    const RowLayout::Place& place = layout.At(column);
    const std::size_t inside = row - chunk.FirstRow();
    const CellKind kind = columns[column].kind;
    if (place.isVariable) return CellFromText(kind, chunk.Variable(layout, inside, place.slot));
    if (chunk.IsNullFixed(inside, place.slot)) return {};
    return FixedCell(layout, chunk, kind, inside, place.slot);
}

std::string RowSet::Impl::MomentText(std::size_t row, std::size_t column) const {
    const Chunk& chunk = Locate(row);
    const std::size_t inside = row - chunk.FirstRow();
    const std::size_t slot = layout.At(column).slot;
    if (columns[column].kind == CellKind::Date) {
        const auto date = chunk.Fixed<SQL_DATE_STRUCT>(layout, inside, slot);
        return FormatCalendarTime({date.year, date.month, date.day, 0, 0, 0, 0}, CalendarForm::Date);
    }
    const auto stamp = chunk.Fixed<SQL_TIMESTAMP_STRUCT>(layout, inside, slot);
    return FormatCalendarTime(
        {stamp.year, stamp.month, stamp.day, stamp.hour, stamp.minute, stamp.second, static_cast<int>(stamp.fraction)},
        CalendarForm::DateTime);
}

RowSet::RowSet(std::shared_ptr<Impl> impl) : impl_(std::move(impl)), columnCount_(impl_->shape->columns.size()) {}

std::shared_ptr<RowSet> RowSet::Make(std::shared_ptr<Impl> impl) {
    struct Made final : RowSet {  // in one piece of memory with its count
        explicit Made(std::shared_ptr<Impl> inside) : RowSet(std::move(inside)) {}
    };
    return std::make_shared<Made>(std::move(impl));
}

RowSet::~RowSet() {
    impl_->Stop();
    const bool isLarge = impl_->isComplete && MemoryBytes() >= kLargeBytes;
    impl_.reset();
    // The rows were allocated by a worker: the C library would keep them for that thread.
    if (isLarge) malloc_trim(0);
}

std::shared_ptr<RowSet> RowSet::Build(std::vector<Column> columns) {
    auto impl = std::make_shared<Impl>(
        std::make_shared<const ResultShape>(std::vector<ToldColumn>(), std::move(columns), true));
    impl->builder = std::make_unique<ChunkBuilder>(impl->layout);
    impl->isComplete = true;
    impl->areOriginsKnown = true;
    return Make(std::move(impl));
}

std::shared_ptr<RowSet> RowSet::Assemble(std::vector<Column> columns, RowLayout layout,
                                         std::vector<std::unique_ptr<Chunk>> chunks) {
    auto impl = std::make_shared<Impl>(std::make_shared<const ResultShape>(std::move(columns), std::move(layout)));
    impl->arrived = chunks.empty() ? 0 : chunks.back()->FirstRow() + chunks.back()->Rows();
    impl->chunks = std::move(chunks);
    impl->isComplete = true;
    impl->areOriginsKnown = true;
    return Make(std::move(impl));
}

void RowSet::Append(std::span<const VARIANT> values) {
    std::vector<std::pair<bool, std::string>> cells(impl_->Columns().size());
    for (std::size_t i = 0; i < cells.size() && i < values.size(); ++i) {
        cells[i].first = TextFromVariant(values[i], cells[i].second);
        // As a database keeps it that keeps moments as texts.
        const CellKind kind = impl_->columns[i].kind;
        if (values[i].vt == VT_DATE && (kind == CellKind::Date || kind == CellKind::Time)) {
            const CalendarForm form = kind == CellKind::Date ? CalendarForm::Date : CalendarForm::Time;
            cells[i].second = FormatCalendarTime(FromAutomationDate(values[i].date), form);
        }
    }
    for (const auto& [hasValue, text] : cells) {
        if (hasValue) {
            impl_->builder->AddBytes(text.data(), text.size());
        } else {
            impl_->builder->AddNull();
        }
    }
    impl_->arrived.fetch_add(1, std::memory_order_release);
    if (impl_->arrived - impl_->sealedRows >= kBuiltRows) impl_->SealBuilt();
}

void RowSet::AppendTexts(std::span<const std::optional<std::string_view>> cells) {
    for (const std::optional<std::string_view>& cell : cells) {
        if (cell) {
            impl_->builder->AddBytes(cell->data(), cell->size());
        } else {
            impl_->builder->AddNull();
        }
    }
    impl_->arrived.fetch_add(1, std::memory_order_release);
    if (impl_->arrived - impl_->sealedRows >= kBuiltRows) impl_->SealBuilt();
}

const std::vector<Column>& RowSet::Columns() const noexcept {
    return impl_->Columns();
}

void RowSet::Impl::DescribeOrigins(LONG timeoutSeconds) {
    if (areOriginsKnown) return;
    std::unique_ptr<std::vector<Column>> early;
    {
        const std::lock_guard lock(mutex);
        early = std::move(describedEarly);
    }
    const auto session = origin.lock();
    if (early != nullptr) {
        TakeOrigins(std::move(*early));
    } else if (session != nullptr && !text.empty()) {
        std::vector<Column> described = shape->columns;
        tk::ado::DescribeOrigins(*session, text, described, timeoutSeconds);
        TakeOrigins(std::move(described));
    }
    areOriginsKnown = true;
}

void RowSet::Impl::BeforeSettingsChange() noexcept try {
    if (areOriginsKnown) return;
    {
        // A clone has asked for it again since: the first answer counts.
        const std::lock_guard lock(mutex);
        if (describedEarly != nullptr) return;
    }
    const auto session = origin.lock();
    if (session == nullptr || text.empty()) return;
    auto described = std::make_unique<std::vector<Column>>(shape->columns);
    try {
        tk::ado::DescribeOrigins(*session, text, *described, kUsualWaitSeconds);
    } catch (const AdoError&) {
        // Left as it is: later the answer may be that of another table.
    }
    const std::lock_guard lock(mutex);
    describedEarly = std::move(described);
} catch (...) {
    areOriginsKnown = true;  // no memory: better not written at all than to another table
}

void RowSet::DescribeOrigins(LONG timeoutSeconds) {
    impl_->DescribeOrigins(timeoutSeconds);
}

void RowSet::DescribeBeforeSettingsChange() {
    const auto session = impl_->origin.lock();
    if (session != nullptr && !impl_->areOriginsKnown) session->WatchSettings(impl_);
}

bool RowSet::HasRow(std::size_t row) {
    if (row < impl_->arrived.load(std::memory_order_acquire)) [[likely]]
        return true;
    impl_->WaitFor(row + 1);
    if (row < impl_->arrived.load(std::memory_order_acquire)) return true;
    impl_->ThrowIfFailed();
    return false;
}

std::size_t RowSet::ArrivedRows() const noexcept {
    return impl_->arrived.load(std::memory_order_acquire);
}

std::size_t RowSet::CountRows() {
    impl_->WaitFor(kAllRows);
    impl_->ThrowIfFailed();
    return ArrivedRows();
}

bool RowSet::IsComplete() const noexcept {
    return impl_->HasAllRows();
}

void RowSet::Cancel() {
    impl_->Stop();
}

void RowSet::Interrupt() noexcept {
    impl_->Interrupt();
}

bool RowSet::Impl::ReadPlain(std::size_t row, std::size_t column, VARIANT& value) const {
    const PlainCell form = shape->plain[column];
    if (form == PlainCell::None) return false;
    const Chunk& chunk = Locate(row);
    const RowLayout::Place& place = layout.At(column);
    const std::size_t inside = row - chunk.FirstRow();
    if (place.isVariable) {
        const std::string_view text = chunk.Variable(layout, inside, place.slot);
        if (text.data() != nullptr) return ReadPlainText(form, text, value);
        value.vt = VT_NULL;
        return true;
    }
    if (chunk.IsNullFixed(inside, place.slot)) {
        value.vt = VT_NULL;
        return true;
    }
    switch (form) {
        case PlainCell::Long:
            value.vt = VT_I4;
            value.lVal = chunk.Fixed<std::int32_t>(layout, inside, place.slot);
            return true;
        case PlainCell::Double:
            value.vt = VT_R8;
            value.dblVal = chunk.Fixed<double>(layout, inside, place.slot);
            return true;
        case PlainCell::Moment:
            return ReadPlainMoment(chunk.Fixed<SQL_TIMESTAMP_STRUCT>(layout, inside, place.slot), value);
        case PlainCell::None:
            break;
    }
    return false;
}

void RowSet::Read(std::size_t row, std::size_t column, VARIANT& value) const {
    if (impl_->ReadPlain(row, column, value)) [[likely]]
        return;
    impl_->ReadOther(row, column, value);
}

void RowSet::Impl::ReadOther(std::size_t row, std::size_t column, VARIANT& value) const {
    const Cell cell = At(row, column);
    if (cell.form == Cell::Form::Date && (cell.real <= kBeforeAll || cell.real >= kAfterAll)) [[unlikely]] {
        value.vt = VT_EMPTY;
        value.bstrVal = MakeBstr(MomentText(row, column));
        value.vt = VT_BSTR;
        return;
    }
    MakeVariant(cell, columns[column], value);
}

Cell RowSet::At(std::size_t row, std::size_t column) const {
    return impl_->At(row, column);
}

std::optional<std::string_view> RowSet::TextAt(std::size_t row, std::size_t column) const {
    const CellKind kind = impl_->columns[column].kind;
    const RowLayout::Place& place = impl_->layout.At(column);
    if ((kind != CellKind::Text && kind != CellKind::Guid) || !place.isVariable) return std::nullopt;
    const Chunk& chunk = impl_->Locate(row);
    return chunk.Variable(impl_->layout, row - chunk.FirstRow(), place.slot);
}

bool RowSet::IsNull(std::size_t row, std::size_t column) const {
    return impl_->At(row, column).form == Cell::Form::Null;
}

LONG RowSet::ActualSize(std::size_t row, std::size_t column) const {
    const Cell cell = impl_->At(row, column);
    const Column& described = impl_->columns[column];
    switch (cell.form) {
        case Cell::Form::Null:
            return 0;
        case Cell::Form::Bytes:
            return static_cast<LONG>(cell.text.size());
        case Cell::Form::Text:
            if (described.dbType == kTypeWChar) return static_cast<LONG>(text::Utf8ToUtf16Length(cell.text) * 2);
            return static_cast<LONG>(text::Utf8ToGbkLength(cell.text));
        default:
            return described.definedSize;
    }
}

const RowLayout& RowSet::Layout() const noexcept {
    return impl_->layout;
}

const Chunk& RowSet::ChunkOf(std::size_t row) const {
    return impl_->Locate(row);
}

std::size_t RowSet::MemoryBytes() const {
    const std::lock_guard lock(impl_->mutex);
    std::size_t bytes = impl_->chunks.capacity() * sizeof(impl_->chunks[0]);
    for (const auto& chunk : impl_->chunks)
        bytes += chunk->Bytes();
    return bytes;
}

void RowSet::WaitForOutputs() {
    impl_->WaitForEnd();
    impl_->ThrowIfFailed();
}

std::unique_ptr<Statement> RowSet::TakeNextResult() {
    impl_->WaitForEnd();
    if (impl_->nextError != nullptr) throw AdoError(*std::exchange(impl_->nextError, nullptr));
    return std::move(impl_->next);
}

}  // namespace tk::ado
