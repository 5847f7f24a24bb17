// Saving and loading take little beside the rows themselves, however many there are.
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "saved_rows.h"

namespace {

// What this program's own code holds on the heap; the XML library's memory comes from malloc and is counted there.
std::atomic<std::size_t> held = 0;
std::atomic<std::size_t> peak = 0;

void Count(std::size_t size) noexcept {
    const std::size_t now = held.fetch_add(size) + size;
    std::size_t before = peak.load();
    while (before < now && !peak.compare_exchange_weak(before, now)) {}
}

}  // namespace

void* operator new(std::size_t size) {
    void* const memory = std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    Count(malloc_usable_size(memory));
    return memory;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    void* const memory = std::malloc(size);
    if (memory != nullptr) Count(malloc_usable_size(memory));
    return memory;
}
void operator delete(void* memory) noexcept {
    if (memory != nullptr) held.fetch_sub(malloc_usable_size(memory));
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    operator delete(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}

namespace tk::ado::test {
namespace {

constexpr std::size_t kMostBeside = 64 * 1024 * 1024;
constexpr LONG kRows = 300'000;

std::shared_ptr<RowStore> ManyRows() {
    auto set = RowSet::Build(Columns(
        {{u"id", kInteger}, {u"name", kVarWChar}, {u"price", kDouble}, {u"cost", kNumeric}, {u"stamp", kTimestamp}}));
    const Value price = Value::Real(12.25);
    const Value cost = Decimal(u"9.99");
    const Value stamp = Date(45000.5);
    for (LONG i = 0; i < kRows; ++i) {
        const Value id = Number(i);
        const Value name = Text(u"item " + NumberText(i));
        const VARIANT row[] = {id.Get(), name.Get(), price.Get(), cost.Get(), stamp.Get()};
        set->Append(row);
    }
    return std::make_shared<RowStore>(set);
}

TEST(SavedRecordsetMemory, IsBoundedBesideTheRows) {
    const tk::test::TemporaryFolder folder;
    const auto store = ManyRows();
    store->HasRow(kRows - 1);
    for (const PersistFormat format : kBothFormats) {
        SCOPED_TRACE(format == PersistFormat::Xml ? "XML" : "binary");
        const std::string path = (folder.Path() / "rows").string();
        std::size_t before = held;
        peak = before;
        SaveStore(*store, path, format);
        EXPECT_LT(peak - before, std::size_t{4} * 1024 * 1024) << "saving";
        before = held;
        peak = before;
        const struct mallinfo2 heapBefore = ::mallinfo2();
        const LoadedFile loaded = LoadRows(path);
        const struct mallinfo2 heapAfter = ::mallinfo2();
        const std::size_t rows = loaded.rows.rows->MemoryBytes();
        EXPECT_EQ(loaded.rows.rows->CountRows(), static_cast<std::size_t>(kRows));
        EXPECT_LT(peak - before, rows + std::size_t{16} * 1024 * 1024) << "loading";
        EXPECT_LT(heapAfter.uordblks + heapAfter.hblkhd - heapBefore.uordblks - heapBefore.hblkhd, rows + kMostBeside);
        // The rows themselves are no larger for having been in a file.
        EXPECT_LT(rows, store->Fetched().MemoryBytes() * 5 / 4);
    }
}

}  // namespace
}  // namespace tk::ado::test
