// A recordset from a table-gram.
#include <algorithm>
#include <optional>

#include "ado/cursor/text.h"
#include "ado/persist/gram_decoder.h"
#include "ado/persist/messages.h"
#include "ado/persist/recordset_file.h"
#include "ado/persist/saved_column.h"
#include "ado/rowset/type_map.h"

namespace tk::ado {
namespace {

using namespace gram;

/// Reads the parts of one record; what it promises but does not hold is an error.
class Part {
public:
    Part(GramSource& source, const char* bytes, std::size_t size) : source_(source), left_(bytes, size) {}

    std::string_view Bytes(std::size_t size) {
        if (size > left_.size()) source_.Fail(kTextDamaged);
        const std::string_view taken = left_.substr(0, size);
        left_.remove_prefix(size);
        return taken;
    }
    template <class Number>
    Number Get() {
        Number number;
        std::memcpy(&number, Bytes(sizeof number).data(), sizeof number);
        return number;
    }
    std::u16string Text() { return Units(Get<std::uint16_t>()); }
    std::u16string Units(std::size_t count) {
        const std::string_view bytes = Bytes(count * 2);
        std::u16string text(count, u'\0');
        std::memcpy(text.data(), bytes.data(), bytes.size());
        return text;
    }
    bool IsEmpty() const noexcept { return left_.empty(); }
    [[noreturn]] void Fail(std::u16string_view reason) const { source_.Fail(reason); }

private:
    GramSource& source_;
    std::string_view left_;
};

class GramReader {
public:
    explicit GramReader(ByteSource& source)
        : source_(source), decoder_(source_), limit_(PlausibleBytes(source.Size())) {}

    LoadedRows Read() {
        if (std::string_view(source_.Take(kHeaderBytes.size()), kHeaderBytes.size()) != kHeaderBytes) {
            source_.Fail(kTextNotSavedRows);
        }
        unsigned token = ReadDescriptions();
        MakeColumns();
        rows_.emplace(columns_, keptAsText_);
        versions_.emplace(columns_, keptAsText_);
        while (token != kEnd) {
            ReadRow(token);
            if (rows_->Bytes() + versions_->Bytes() > limit_) source_.Fail(kTextImplausible);
            token = source_.Get<std::uint8_t>();
        }
        if (!source_.AtEnd()) source_.Fail(kTextBehindEnd);
        loaded_.versions = versions_->Finish(columns_);
        loaded_.rows = rows_->Finish(std::move(columns_));
        return std::move(loaded_);
    }

private:
    struct Table {
        std::u16string name;
    };
    /// A column as described; what has been said beside the descriptors is added when all is known.
    struct Described {
        PlainColumn plain;
        std::uint32_t maximum = kNoMaximum;
        std::u16string name;
        std::string baseCatalog;
        std::string baseSchema;
        std::string baseTable;
        std::string baseColumn;
        bool isVisible = true;
    };
    struct Figure {
        std::uint32_t id;
        std::int32_t value;
    };

    /// @return the token of what follows the descriptions
    unsigned ReadDescriptions() {
        bool hasResult = false;
        for (;;) {
            const unsigned token = source_.Get<std::uint8_t>();
            const bool isRecord = token == kHandlerOptions || token == kResultDescriptor ||
                                  token == kRecordsetContext || token == kTableDescriptor || token == kColumnDescriptor;
            if (!isRecord) {
                if (!hasResult || described_.empty()) source_.Fail(kTextNoSchema);
                return token;
            }
            const std::size_t size = source_.Get<std::uint16_t>();
            Part part(source_, source_.Take(size), size);
            switch (token) {
                case kResultDescriptor:
                    if (hasResult) source_.Fail(kTextDamaged);
                    hasResult = true;
                    ReadResult(part);
                    break;
                case kRecordsetContext:
                    ReadSets(part);
                    break;
                case kTableDescriptor:
                    ReadTable(part);
                    break;
                case kColumnDescriptor:
                    ReadColumn(part);
                    break;
                default:
                    break;
            }
        }
    }

    void ReadResult(Part& part) {
        if (part.Bytes(kResultMark.size()) != kResultMark) part.Fail(kTextUnknownPart);
        part.Bytes(3);  // info, cursor model, normalization
        part.Get<std::uint16_t>();
        columnCount_ = part.Get<std::uint16_t>();
        part.Bytes(3 * sizeof(std::uint16_t));  // computed columns, tables, order
        part.Get<std::uint32_t>();              // rows
        if (columnCount_ == 0 || columnCount_ > kMostColumns) part.Fail(kTextImplausible);
        if (!part.IsEmpty()) ReadSets(part);
    }

    void ReadSets(Part& part) {
        const std::size_t sets = part.Get<std::uint16_t>();
        for (std::size_t set = 0; set < sets; ++set) {
            const std::string_view mark = part.Bytes(16);
            const std::size_t count = part.Get<std::uint16_t>();
            for (std::size_t i = 0; i < count; ++i) {
                const auto id = part.Get<std::uint32_t>();
                const std::size_t size = part.Get<std::uint16_t>();
                ReadProperty(mark, id, part, size);
            }
        }
    }

    void ReadProperty(std::string_view mark, std::uint32_t id, Part& part, std::size_t size) {
        WriteRules& rules = loaded_.rules;
        const bool isText = mark == kCursorSet && (id == kUniqueTable || id == kUniqueSchema || id == kUniqueCatalog);
        if (isText) {
            if (size % 2 != 0) part.Fail(kTextDamaged);
            const std::string text = ToUtf8(part.Units(size / 2));
            (id == kUniqueTable    ? rules.uniqueTable
             : id == kUniqueSchema ? rules.uniqueSchema
                                   : rules.uniqueCatalog) = text;
            return;
        }
        if (size != sizeof(std::int32_t)) {
            part.Bytes(size);
            return;
        }
        const auto value = part.Get<std::int32_t>();
        if (mark == kFigureSet) {
            figures_.push_back({id, value});
        } else if (mark == kCursorSet && id == kUpdateResync) {
            if (value >= 0 && value <= 15) rules.updateResync = value;
        } else if (mark == kCursorSet && id == kUpdateCriteria) {
            if (value >= kCriteriaKey && value <= kCriteriaTimeStamp) rules.updateCriteria = value;
        } else if (mark == kRowsetSet && id == kCommandTimeout) {
            if (value >= 0) rules.timeoutSeconds = value;
        }
    }

    void ReadTable(Part& part) {
        if (part.Get<std::uint16_t>() != tables_.size() + 1) part.Fail(kTextDamaged);
        part.Text();
        tables_.push_back({part.Text()});
        part.Get<std::uint16_t>();  // code page
        part.Get<std::uint16_t>();  // columns
        const std::size_t keys = part.Get<std::uint16_t>();
        part.Bytes(keys * sizeof(std::uint16_t));
    }

    void ReadColumn(Part& part) {
        if (described_.size() == columnCount_) part.Fail(kTextDamaged);
        std::uint32_t presence = 0;
        for (const char byte : part.Bytes(3))
            presence = presence << 8 | static_cast<unsigned char>(byte);
        if ((presence & ~std::uint32_t{kKnownPresence}) != 0) part.Fail(kTextUnknownPart);
        const auto has = [&](Presence flag) { return (presence & flag) != 0; };
        Described column;
        if (part.Get<std::uint16_t>() != described_.size() + 1) part.Fail(kTextBadColumn);
        if (has(kHasFriendlyName)) column.name = part.Text();
        if (has(kHasTable)) {
            const std::size_t table = part.Get<std::uint16_t>();
            // 0: of no table.
            if (table > tables_.size()) part.Fail(kTextBadColumn);
            if (table != 0) column.baseTable = ToUtf8(tables_[table - 1].name);
        }
        if (has(kHasTableOrdinal)) part.Get<std::uint16_t>();
        if (has(kHasBaseName)) {
            const std::u16string base = part.Text();
            column.baseColumn = ToUtf8(base);
            if (!has(kHasFriendlyName)) column.name = base;
        }
        column.plain.dbType = part.Get<std::uint16_t>();
        column.maximum = part.Get<std::uint32_t>();
        column.plain.precision = Digits(part.Get<std::uint32_t>());
        column.plain.scale = Digits(part.Get<std::uint32_t>());
        column.plain.attributes = part.Get<std::int32_t>();
        if (has(kHasCatalog)) column.baseCatalog = ToUtf8(part.Text());
        if (has(kHasSchema)) column.baseSchema = ToUtf8(part.Text());
        if (has(kHasAutoIncrement)) column.plain.isAutoIncrement = part.Get<std::uint16_t>() != 0;
        column.isVisible = part.Get<std::uint16_t>() != 0;
        if (has(kHasCalculation)) part.Text();
        column.plain.isKey = (column.plain.attributes & kFieldKeyColumn) != 0;
        if (column.maximum <= 0x7FFFFFFF) column.plain.size = static_cast<LONG>(column.maximum);
        described_.push_back(std::move(column));
    }

    static LONG Digits(std::uint32_t value) noexcept {
        return static_cast<LONG>(std::min<std::uint32_t>(value, kNoDigits));
    }

    void MakeColumns() {
        if (described_.size() != columnCount_) source_.Fail(kTextBadColumn);
        std::vector<std::size_t> places;  // of each described column among the visible ones
        for (Described& from : described_) {
            GramColumn gram;
            if (FindSavedType(from.plain.dbType) == nullptr ||
                !CodingOf(from.plain.dbType, from.plain.attributes, from.maximum, gram)) {
                source_.Fail(from.name + std::u16string(u" ") + std::u16string(kTextBadColumn));
            }
            gram.isNullable = (from.plain.attributes & (kFieldIsNullable | kFieldMayBeNull)) != 0;
            gram.target = from.isVisible ? columns_.size() : kNowhere;
            places.push_back(gram.target);
            grams_.push_back(gram);
            if (!from.isVisible) continue;
            Column column = ColumnOf(from.plain);
            column.name = std::move(from.name);
            column.baseCatalog = std::move(from.baseCatalog);
            column.baseSchema = std::move(from.baseSchema);
            column.baseTable = std::move(from.baseTable);
            column.baseColumn = std::move(from.baseColumn);
            natural_.push_back(column.kind);
            columns_.push_back(std::move(column));
        }
        if (columns_.empty()) source_.Fail(kTextNoSchema);
        ApplyFigures(places);
        for (std::size_t i = 0; i < columns_.size(); ++i)
            keptAsText_.push_back(IsKeptAsText(columns_[i], natural_[i]));
        presentBytes_ = 0;
        for (const GramColumn& gram : grams_)
            presentBytes_ += gram.isNullable ? 1 : 0;
        presentBytes_ = MapBytes(presentBytes_);
        changed_.resize(columns_.size());
    }

    void ApplyFigures(const std::vector<std::size_t>& places) {
        for (const Figure& said : figures_) {
            const std::size_t ordinal = said.id >> 8;
            const auto known = ColumnFigures();
            const auto figure = std::ranges::find(known, static_cast<int>(said.id & 0xFF), &ColumnFigure::number);
            if (ordinal == 0 || ordinal > places.size() || figure == known.end()) continue;
            if (places[ordinal - 1] == kNowhere) continue;
            Column& column = columns_[places[ordinal - 1]];
            if (!SetFigure(column, *figure, said.value)) source_.Fail(kTextBadColumn);
            // The kind goes with the type unless it is told by itself.
            const SavedType* const type = FindSavedType(column.dbType);
            if (figure->name == "dbtype" && type != nullptr) column.kind = type->kind;
        }
    }

    /// Texts may stand for values of every kind but bytes; all other codings are of their own kind.
    bool IsKeptAsText(const Column& column, CellKind natural) const {
        const bool fits = natural == CellKind::Text ? column.kind != CellKind::Bytes : column.kind == natural;
        if (!fits) source_.Fail(column.name + std::u16string(u" ") + std::u16string(kTextBadColumn));
        return FixedWidthOf(natural) == 0;
    }

    void ReadRow(unsigned token) {
        switch (token) {
            case kRow:
                ReadWhole();
                mayChange_ = true;
                return;
            case kInsert:
                ReadMaps();
                TakeMapped(*rows_);
                rows_->EndRow();
                loaded_.changes.push_back({rows_->Rows() - 1, RowState::Inserted, 0, changed_});
                mayChange_ = false;
                return;
            case kUpdate: {
                ExpectRow();
                ReadMaps();
                LoadedChange change{rows_->Rows() - 1, RowState::Updated, versions_->Rows(), {}};
                TakeMapped(*versions_);
                versions_->EndRow();
                change.changed = changed_;
                loaded_.changes.push_back(std::move(change));
                return;
            }
            case kDelete:
                ExpectRow();
                loaded_.changes.push_back({rows_->Rows() - 1, RowState::Deleted, 0, {}});
                return;
            case kRow | kOfChildren:
            case kInsert | kOfChildren:
            case kUpdate | kOfChildren:
            case kDelete | kOfChildren:
                source_.Fail(kTextChildRows);
            default:
                source_.Fail(kTextUnknownPart);
        }
    }

    /// A row changes once at most.
    void ExpectRow() {
        if (!mayChange_) source_.Fail(kTextDamaged);
        mayChange_ = false;
    }

    void ReadWhole() {
        present_.assign(source_.Take(presentBytes_), presentBytes_);
        std::size_t bit = 0;
        for (const GramColumn& gram : grams_) {
            const bool isThere = !gram.isNullable || IsSet(present_, bit);
            bit += gram.isNullable ? 1 : 0;
            TakeOne(gram, isThere, *rows_);
        }
        rows_->EndRow();
    }

    void ReadMaps() {
        const std::size_t size = MapBytes(grams_.size());
        present_.assign(source_.Take(size), size);
        nulls_.assign(source_.Take(size), size);
    }

    void TakeMapped(RowCollector& rows) {
        for (std::size_t i = 0; i < grams_.size(); ++i) {
            const bool isSet = IsSet(present_, i);
            if (grams_[i].target != kNowhere) changed_[grams_[i].target] = isSet;
            TakeOne(grams_[i], isSet && !IsSet(nulls_, i), rows);
        }
    }

    void TakeOne(const GramColumn& gram, bool isThere, RowCollector& rows) {
        if (gram.target == kNowhere) [[unlikely]] {
            if (isThere) decoder_.Skip(gram);
        } else if (isThere) {
            decoder_.Take(gram, rows);
        } else {
            rows.AddNull(gram.target);
        }
    }

    static bool IsSet(const std::string& map, std::size_t bit) noexcept {
        return (static_cast<unsigned char>(map[bit / 8]) & 0x80u >> bit % 8) != 0;
    }

    GramSource source_;
    Decoder decoder_;
    std::uint64_t limit_;
    LoadedRows loaded_;
    std::size_t columnCount_ = 0;
    std::vector<Table> tables_;
    std::vector<Described> described_;
    std::vector<Figure> figures_;
    std::vector<Column> columns_;
    std::vector<CellKind> natural_;
    std::vector<GramColumn> grams_;
    std::vector<bool> keptAsText_;
    std::vector<bool> changed_;
    std::size_t presentBytes_ = 0;
    std::string present_;
    std::string nulls_;
    bool mayChange_ = false;
    std::optional<RowCollector> rows_;
    std::optional<RowCollector> versions_;
};

}  // namespace

LoadedRows ReadTableGram(ByteSource& source) {
    return GramReader(source).Read();
}

}  // namespace tk::ado
