// A recordset as a table-gram. A column whose values turn out not to fit its coding is written as text instead, with a
// note of what it is; that costs a second pass, and only then.
#include <algorithm>
#include <cstring>
#include <string>
#include <tuple>

#include "ado/cursor/text.h"
#include "ado/persist/gram_encoder.h"
#include "ado/persist/messages.h"
#include "ado/persist/recordset_file.h"
#include "ado/persist/saved_column.h"
#include "ado/rowset/type_map.h"

namespace tk::ado {
namespace {

using namespace gram;

constexpr std::size_t kMostOfRecord = 0xFFFF;  // bytes that a record's size can say

/// The bytes of one record, built in memory.
class Record {
public:
    void Byte(unsigned value) { bytes_.push_back(static_cast<char>(value)); }
    void Short(std::size_t value) { Number(static_cast<std::uint16_t>(value)); }
    void Long(std::uint32_t value) { Number(value); }
    void Bytes(std::string_view bytes) { bytes_.append(bytes); }
    void Text(std::u16string_view text) {
        Short(std::min<std::size_t>(text.size(), kMostOfRecord));
        isTooLong_ = isTooLong_ || text.size() > kMostOfRecord;
        bytes_.append(reinterpret_cast<const char*>(text.data()), text.size() * 2);
    }
    void Text(const std::string& utf8) { Text(ToUtf16(utf8)); }

    void Property(std::uint32_t id, std::uint32_t value) {
        Long(id);
        Short(sizeof value);
        Long(value);
    }
    void Flag(std::uint32_t id, bool value) {
        Long(id);
        Short(sizeof(std::uint16_t));
        Short(value ? 0xFFFF : 0);
    }
    void TextProperty(std::uint32_t id, const std::string& utf8) {
        const std::u16string text = ToUtf16(utf8);
        Long(id);
        Short(text.size() * 2);
        isTooLong_ = isTooLong_ || text.size() * 2 > kMostOfRecord;
        bytes_.append(reinterpret_cast<const char*>(text.data()), text.size() * 2);
    }

    /// With its token and size.
    void WriteTo(FileWriter& file, Token token) const {
        if (isTooLong_ || bytes_.size() > kMostOfRecord) file.Fail(kTextTooManyColumns);
        Record head;
        head.Byte(token);
        head.Short(bytes_.size());
        file.Write(head.bytes_);
        file.Write(bytes_);
    }

private:
    template <class Value>
    void Number(Value value) {
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        bytes_.append(bytes, sizeof value);
    }

    std::string bytes_;
    bool isTooLong_ = false;
};

/// How one column goes into the file.
struct ColumnPlan {
    const Column* column = nullptr;
    PlainColumn plain;
    std::uint32_t maximum = kNoMaximum;
    GramColumn gram;
    bool isLoose = false;  // as text, whatever it is
    bool willBeLoose = false;
};

void MakePlan(ColumnPlan& plan) {
    const Column& column = *plan.column;
    const SavedType* const type = FindSavedType(column.dbType);
    if (type == nullptr || type->kind != column.kind) plan.isLoose = true;
    PlainColumn& plain = plan.plain;
    plain.attributes = column.attributes;
    plan.maximum = kNoMaximum;
    if (plan.isLoose) {
        plain.dbType = column.kind == CellKind::Bytes ? kTypeBinary : kTypeWChar;
        plain.attributes = (column.attributes & ~kFieldFixed) | kFieldIsNullable | kFieldMayBeNull;
        plain.size.reset();
    } else {
        plain.dbType = IsTextType(column.dbType) ? LONG{kTypeWChar} : column.dbType;
        plain.size = column.definedSize;
        const LONG described = IsSizedType(column.dbType) ? column.definedSize : type->size;
        if (described >= 0) plan.maximum = static_cast<std::uint32_t>(described);
    }
    plain.precision = column.precision;
    plain.scale = column.scale;
    plain.isKey = (plain.attributes & kFieldKeyColumn) != 0;
    plain.isAutoIncrement = column.isAutoIncrement;
    CodingOf(plain.dbType, plain.attributes, plan.maximum, plan.gram);
    plan.gram.isNullable = (plain.attributes & (kFieldIsNullable | kFieldMayBeNull)) != 0;
    plan.gram.precision = column.precision;
    if (plan.maximum == kNoMaximum) plain.size.reset();
}

class GramWriter {
public:
    GramWriter(const SavedSet& set, FileWriter& file)
        : set_(set), file_(file), encoder_(file), current_(set.feed.Rows()), original_(set.feed.Rows()) {
        const std::vector<Column>& columns = set.feed.Rows().Columns();
        if (columns.empty() || columns.size() > kMostColumns) file_.Fail(kTextTooManyColumns);
        plans_.resize(columns.size());
        for (std::size_t i = 0; i < columns.size(); ++i)
            plans_[i].column = &columns[i];
    }

    void Write() {
        // The first pass finds every column that has to be written as text; a second one is the last.
        while (!WriteOnce()) {
            for (ColumnPlan& plan : plans_)
                plan.isLoose = plan.isLoose || plan.willBeLoose;
            set_.feed.Restart();
            file_.Restart();
        }
    }

private:
    using Values = std::span<const SavedValue>;

    bool WriteOnce() {
        for (ColumnPlan& plan : plans_)
            MakePlan(plan);
        mapBytes_ = 0;
        for (const ColumnPlan& plan : plans_)
            mapBytes_ += plan.gram.isNullable ? 1 : 0;
        mapBytes_ = MapBytes(mapBytes_);
        WriteDescriptions();
        isWhole_ = true;
        for (SavedRow row; set_.feed.Next(row);)
            WriteRow(row);
        Put(kEnd);
        return isWhole_;
    }

    void WriteDescriptions() {
        file_.Write(kHeaderBytes);
        Record options;
        options.Bytes(kHandlerMark);
        options.Byte(1);
        for (int text = 0; text < 3; ++text)
            options.Text(std::u16string_view());
        options.Short(0);
        options.WriteTo(file_, kHandlerOptions);
        FindTables();
        WriteResult();
        WriteContext();
        for (std::size_t table = 0; table < tables_.size(); ++table)
            WriteTable(table);
        for (std::size_t i = 0; i < plans_.size(); ++i)
            WriteColumn(i);
    }

    void FindTables() {
        tables_.clear();
        for (const ColumnPlan& plan : plans_) {
            const Column& column = *plan.column;
            if (column.baseTable.empty()) continue;
            Table table{column.baseCatalog, column.baseSchema, column.baseTable};
            if (std::ranges::find(tables_, table) == tables_.end()) tables_.push_back(std::move(table));
        }
    }

    std::size_t TableOf(const Column& column) const {
        const Table table{column.baseCatalog, column.baseSchema, column.baseTable};
        return static_cast<std::size_t>(std::ranges::find(tables_, table) - tables_.begin());
    }

    void WriteResult() {
        Record record;
        record.Bytes(kResultMark);
        for (int byte = 0; byte < 3; ++byte)
            record.Byte(0);
        record.Short(plans_.size());
        record.Short(plans_.size());
        record.Short(0);
        record.Short(tables_.size());
        record.Short(0);
        record.Long(0);  // rows: told by the end
        CountFigures();
        record.Short(figureCount_ == 0 ? 1 : 2);
        record.Bytes(kCursorSet);
        record.Short(7);
        record.Property(kAutoRecalc, 1);
        record.Property(kUpdateResync, static_cast<std::uint32_t>(set_.rules.updateResync));
        record.TextProperty(kUniqueTable, set_.rules.uniqueTable);
        record.TextProperty(kUniqueSchema, set_.rules.uniqueSchema);
        record.TextProperty(kUniqueCatalog, set_.rules.uniqueCatalog);
        record.TextProperty(kResyncCommand, {});
        record.TextProperty(kReshapeName, {});
        AddFigures(record);
        record.WriteTo(file_, kResultDescriptor);
    }

    /// What there is to say beside the descriptors.
    void CountFigures() {
        figureCount_ = 0;
        ForEachFigure([&](std::size_t, const ColumnFigure&, LONG) { ++figureCount_; });
    }

    void AddFigures(Record& record) {
        if (figureCount_ == 0) return;
        if (figureCount_ > kMostOfRecord) file_.Fail(kTextTooManyColumns);
        record.Bytes(kFigureSet);
        record.Short(figureCount_);
        ForEachFigure([&](std::size_t column, const ColumnFigure& figure, LONG value) {
            record.Property(static_cast<std::uint32_t>((column + 1) << 8) | static_cast<std::uint32_t>(figure.number),
                            static_cast<std::uint32_t>(value));
        });
    }

    template <class Work>
    void ForEachFigure(Work work) const {
        for (std::size_t i = 0; i < plans_.size(); ++i) {
            const Column derived = ColumnOf(plans_[i].plain);
            for (const ColumnFigure& figure : ColumnFigures()) {
                const LONG value = figure.read(*plans_[i].column);
                if (value != figure.read(derived)) work(i, figure, value);
            }
        }
    }

    void WriteContext() {
        Record record;
        record.Short(2);
        record.Bytes(kRowsetSet);
        record.Short(4);
        record.Flag(kCanChange, set_.isUpdatable);
        record.Flag(kCanBatch, set_.isUpdatable);
        record.Property(kCommandTimeout, static_cast<std::uint32_t>(set_.rules.timeoutSeconds));
        record.Property(kMaxRows, 0);
        record.Bytes(kCursorSet);
        record.Short(5);
        record.Property(kBatchSize, 15);
        record.Property(kUpdateCriteria, static_cast<std::uint32_t>(set_.rules.updateCriteria));
        record.Property(kBackgroundFetch, 15);
        record.Property(kInitialFetch, 50);
        record.Property(kThreadPriority, 3);
        record.WriteTo(file_, kRecordsetContext);
    }

    void WriteTable(std::size_t number) {
        const auto& [catalog, schema, name] = tables_[number];
        std::string full;
        if (!catalog.empty()) full += Quoted(catalog) + ".";
        if (!schema.empty()) full += Quoted(schema);
        if (!full.empty()) full += ".";
        full += Quoted(name);
        std::vector<std::size_t> keys;
        std::size_t columns = 0;
        for (std::size_t i = 0; i < plans_.size(); ++i) {
            const Column& column = *plans_[i].column;
            if (column.baseTable.empty() || TableOf(column) != number) continue;
            ++columns;
            if (column.isKey) keys.push_back(i + 1);
        }
        Record record;
        record.Short(number + 1);
        record.Text(full);
        record.Text(name);
        record.Short(0);
        record.Short(columns);
        record.Short(keys.size());
        for (const std::size_t key : keys)
            record.Short(key);
        record.WriteTo(file_, kTableDescriptor);
    }

    static std::string Quoted(const std::string& name) {
        std::string quoted = "\"";
        for (const char letter : name)
            quoted.append(letter == '"' ? 2 : 1, letter);
        return quoted + "\"";
    }

    void WriteColumn(std::size_t number) {
        const ColumnPlan& plan = plans_[number];
        const Column& column = *plan.column;
        const bool hasBase = !column.baseColumn.empty();
        const bool hasName = !hasBase || ToUtf16(column.baseColumn) != column.name;
        std::uint32_t presence = 0;
        if (hasName) presence |= kHasFriendlyName;
        if (!column.baseTable.empty()) presence |= kHasTable;
        if (hasBase) presence |= kHasBaseName;
        if (!column.baseCatalog.empty()) presence |= kHasCatalog;
        if (!column.baseSchema.empty()) presence |= kHasSchema;
        if (column.isAutoIncrement) presence |= kHasAutoIncrement;
        Record record;
        record.Byte(presence >> 16);
        record.Byte(presence >> 8 & 0xFF);
        record.Byte(presence & 0xFF);
        record.Short(number + 1);
        if (hasName) record.Text(column.name);
        if (!column.baseTable.empty()) record.Short(TableOf(column) + 1);
        if (hasBase) record.Text(column.baseColumn);
        record.Short(static_cast<std::size_t>(plan.plain.dbType));
        record.Long(plan.maximum);
        record.Long(column.precision);
        record.Long(column.scale);
        record.Long(static_cast<std::uint32_t>(plan.plain.attributes));
        if (!column.baseCatalog.empty()) record.Text(column.baseCatalog);
        if (!column.baseSchema.empty()) record.Text(column.baseSchema);
        if (column.isAutoIncrement) record.Short(0xFFFF);
        record.Short(0xFFFF);
        record.WriteTo(file_, kColumnDescriptor);
    }

    void Put(Token token) {
        char* const at = file_.Room(1);
        *at = static_cast<char>(token);
        file_.Commit(at + 1);
    }

    void WriteRow(const SavedRow& row) {
        switch (row.state) {
            case RowState::Unchanged:
                return WriteWhole(current_.Read(row, RowVersion::Current));
            case RowState::Deleted:
                WriteWhole(original_.Read(row, RowVersion::Original));
                return Put(kDelete);
            case RowState::Inserted:
                return WriteInserted(row.row, current_.Read(row, RowVersion::Current));
            case RowState::Updated: {
                const Values before = original_.Read(row, RowVersion::Original);
                WriteWhole(before);
                return WriteChanged(before, current_.Read(row, RowVersion::Current));
            }
        }
    }

    void WriteWhole(Values values) {
        char* at = file_.Room(1 + mapBytes_);
        *at++ = static_cast<char>(kRow);
        // One bit for each column that may be NULL, from the highest on; those to spare are 1.
        std::memset(at, 0xFF, mapBytes_);
        std::size_t bit = 0;
        for (std::size_t i = 0; i < plans_.size(); ++i) {
            const bool isNull = values[i].form == SavedValue::Form::Null;
            if (!plans_[i].gram.isNullable) {
                if (isNull) Loosen(i);
                continue;
            }
            if (isNull) at[bit / 8] = static_cast<char>(at[bit / 8] & ~(0x80 >> bit % 8));
            ++bit;
        }
        file_.Commit(at + mapBytes_);
        for (std::size_t i = 0; i < plans_.size(); ++i) {
            if (values[i].form != SavedValue::Form::Null) PutValue(i, values[i]);
        }
    }

    void WriteInserted(std::size_t row, Values values) {
        const RowStore& rows = set_.feed.Rows();
        const auto isNull = [&](std::size_t i) { return values[i].form == SavedValue::Form::Null; };
        Put(kInsert);
        PutMap([&](std::size_t i) { return !isNull(i) || rows.WasGiven(row, i); });
        PutMap([&](std::size_t i) { return isNull(i) && rows.WasGiven(row, i); });
        for (std::size_t i = 0; i < plans_.size(); ++i) {
            if (!isNull(i)) PutValue(i, values[i]);
        }
    }

    void WriteChanged(Values before, Values after) {
        const auto isChanged = [&](std::size_t i) { return !IsSameValue(before[i], after[i]); };
        const auto isNull = [&](std::size_t i) { return after[i].form == SavedValue::Form::Null; };
        Put(kUpdate);
        PutMap(isChanged);
        PutMap([&](std::size_t i) { return isChanged(i) && isNull(i); });
        for (std::size_t i = 0; i < plans_.size(); ++i) {
            if (isChanged(i) && !isNull(i)) PutValue(i, after[i]);
        }
    }

    template <class Test>
    void PutMap(Test test) {
        const std::size_t size = MapBytes(plans_.size());
        char* const at = file_.Room(size);
        std::memset(at, 0, size);
        for (std::size_t i = 0; i < plans_.size(); ++i) {
            if (test(i)) at[i / 8] = static_cast<char>(at[i / 8] | 0x80 >> i % 8);
        }
        file_.Commit(at + size);
    }

    void PutValue(std::size_t i, const SavedValue& value) {
        if (encoder_.Put(plans_[i].gram, plans_[i].column->kind, value)) [[likely]]
            return;
        // Nothing holds more than a text does.
        if (plans_[i].isLoose) file_.Fail(plans_[i].column->name + std::u16string(u" ") + std::u16string(kTextTooLong));
        Loosen(i);
    }

    void Loosen(std::size_t i) {
        plans_[i].willBeLoose = true;
        isWhole_ = false;
        file_.Discard();
    }

    using Table = std::tuple<std::string, std::string, std::string>;

    const SavedSet& set_;
    FileWriter& file_;
    Encoder encoder_;
    RowReader current_;
    RowReader original_;
    std::vector<ColumnPlan> plans_;
    std::vector<Table> tables_;
    std::size_t mapBytes_ = 0;
    std::size_t figureCount_ = 0;
    bool isWhole_ = true;
};

}  // namespace

void WriteTableGram(const SavedSet& set, FileWriter& file) {
    GramWriter(set, file).Write();
}

}  // namespace tk::ado
