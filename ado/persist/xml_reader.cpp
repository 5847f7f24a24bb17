// A recordset from XML.
#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <unordered_map>

#include "ado/cursor/text.h"
#include "ado/odbc/ascii.h"
#include "ado/persist/hex.h"
#include "ado/persist/messages.h"
#include "ado/persist/recordset_file.h"
#include "ado/persist/row_collector.h"
#include "ado/persist/saved_column.h"
#include "ado/persist/saved_types.h"
#include "ado/persist/xml_names.h"
#include "ado/persist/xml_parser.h"
#include "ado/rowset/cell_reader.h"
#include "ado/rowset/date_value.h"

namespace tk::ado {
namespace {

using namespace xml;

constexpr std::size_t kMostDepth = 64;

bool IsTrue(std::string_view text) noexcept {
    return EqualsNoCase(text, "true") || text == "1" || text == "-1";
}

std::optional<LONG> NumberOf(std::string_view text) noexcept {
    long long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    if (number < std::numeric_limits<LONG>::min() || number > std::numeric_limits<LONG>::max()) return std::nullopt;
    return static_cast<LONG>(number);
}

class XmlReader final : public ElementHandler {
public:
    explicit XmlReader(ByteSource& source) : source_(source), limit_(PlausibleBytes(source.Size())) {}

    LoadedRows Read() {
        ParseXml(source_, *this);
        if (!rows_) source_.Fail(kTextNotSavedRows);
        loaded_.versions = versions_->Finish(columns_);
        loaded_.rows = rows_->Finish(std::move(columns_));
        return std::move(loaded_);
    }

    void Begin(const char* given, const char** attributes) override {
        if (places_.size() >= kMostDepth) source_.Fail(kTextTooDeep);
        places_.push_back(Enter(given, attributes));
    }

    void End() override {
        // An update is a row as it was and a row as it is.
        if (places_.back() == Place::Update && !hasNew_) source_.Fail(kTextDamaged);
        places_.pop_back();
    }

private:
    enum class Place : unsigned char {
        Document,
        Schema,
        RowType,
        AttributeType,
        Data,
        Update,
        Original,
        Insert,
        Delete,
        Row,
        Ignored,
    };

    struct Described {
        std::string attribute;
        std::optional<std::string> name;  // the true one, where it is not the attribute's
        LONG number = std::numeric_limits<LONG>::max();
        std::string type;
        std::string more;
        PlainColumn plain;
        std::string baseCatalog;
        std::string baseSchema;
        std::string baseTable;
        std::string baseColumn;
        std::vector<std::pair<const ColumnFigure*, LONG>> figures;
    };

    /// @return where the children of the element are
    Place Enter(const char* given, const char** attributes) {
        if (places_.empty()) return Place::Document;
        const Place parent = places_.back();
        // Nearly every element is a row among the data.
        if (parent == Place::Data && IsRow(given)) {
            TakeRow(attributes, *rows_);
            return Place::Row;
        }
        const Name name = NameOf(given);
        const bool inSchema = EqualsNoCase(name.space, kSchemaSpace);
        const bool inRowset = EqualsNoCase(name.space, kRowsetSpace);
        switch (parent) {
            case Place::Document:
                if (inSchema && name.local == "Schema") return EnterSchema();
                if (inRowset && name.local == "data") return EnterData();
                return Place::Ignored;
            case Place::Schema:
            case Place::RowType:
                if (inSchema && name.local == "ElementType") {
                    if (parent == Place::RowType) source_.Fail(kTextChildRows);
                    return EnterRowType(attributes);
                }
                if (inSchema && name.local == "AttributeType") return EnterColumn(attributes);
                return Place::Ignored;
            case Place::AttributeType:
                if (inSchema && name.local == "datatype") TakeColumnAttributes(attributes);
                return Place::Ignored;
            case Place::Data:
                if (inRowset && name.local == "insert") return Place::Insert;
                if (inRowset && name.local == "delete") return Place::Delete;
                if (inRowset && name.local == "update") {
                    hasOld_ = hasNew_ = false;
                    return Place::Update;
                }
                source_.Fail(kTextUnknownPart);
            case Place::Insert:
            case Place::Delete:
                ExpectRow(given);
                TakeRow(attributes, *rows_);
                loaded_.changes.push_back({rows_->Rows() - 1,
                                           parent == Place::Insert ? RowState::Inserted : RowState::Deleted, 0,
                                           Changed()});
                return Place::Row;
            case Place::Update:
                return EnterUpdate(given, inRowset && name.local == "original", attributes);
            case Place::Original:
                ExpectRow(given);
                if (std::exchange(hasOld_, true)) source_.Fail(kTextDamaged);
                TakeRow(attributes, *rows_);
                return Place::Row;
            case Place::Row:
                source_.Fail(kTextChildRows);
            case Place::Ignored:
                break;
        }
        return Place::Ignored;
    }

    bool IsRow(const char* given) const noexcept {
        const Name name = NameOf(given);
        return name.local == rowName_ && name.space != kRowsetSpace;
    }

    void ExpectRow(const char* given) const {
        if (!IsRow(given)) source_.Fail(kTextUnknownPart);
    }

    Place EnterSchema() {
        if (rows_ || std::exchange(hasSchema_, true)) source_.Fail(kTextMisplaced);
        return Place::Schema;
    }

    Place EnterRowType(const char** attributes) {
        if (std::exchange(hasRowType_, true)) source_.Fail(kTextChildRows);
        WriteRules& rules = loaded_.rules;
        for (; attributes[0] != nullptr; attributes += 2) {
            const Name name = NameOf(attributes[0]);
            const std::string_view value = attributes[1];
            const auto take = [&](LONG& target, LONG least, LONG most) {
                const auto number = NumberOf(value);
                if (number && *number >= least && *number <= most) target = *number;
            };
            if (name.space.empty() && name.local == "name") rowName_ = value;
            if (!EqualsNoCase(name.space, kRowsetSpace)) continue;
            if (name.local == "CommandTimeout") take(rules.timeoutSeconds, 0, std::numeric_limits<LONG>::max());
            if (name.local == "UpdateCriteria") take(rules.updateCriteria, kCriteriaKey, kCriteriaTimeStamp);
            if (name.local == "UpdateResync") take(rules.updateResync, 0, 15);
            if (name.local == "UniqueTable") rules.uniqueTable = value;
            if (name.local == "UniqueSchema") rules.uniqueSchema = value;
            if (name.local == "UniqueCatalog") rules.uniqueCatalog = value;
        }
        return Place::RowType;
    }

    Place EnterColumn(const char** attributes) {
        if (described_.size() == kMostColumns) source_.Fail(kTextImplausible);
        described_.emplace_back();
        described_.back().plain.attributes = kFieldMayBeNull;
        TakeColumnAttributes(attributes);
        if (described_.back().attribute.empty()) source_.Fail(kTextBadColumn);
        return Place::AttributeType;
    }

    /// Of AttributeType or of datatype inside it: hand-made files say the type in either.
    void TakeColumnAttributes(const char** attributes) {
        Described& column = described_.back();
        for (; attributes[0] != nullptr; attributes += 2) {
            const Name name = NameOf(attributes[0]);
            const std::string_view value = attributes[1];
            if (name.space.empty() && name.local == "name") {
                column.attribute = value;
            } else if (EqualsNoCase(name.space, kTypeSpace)) {
                if (name.local == "type") column.type = value;
                if (name.local == "maxLength") TakeSize(column, value);
            } else if (EqualsNoCase(name.space, kRowsetSpace)) {
                TakeRowsetAttribute(column, name.local, value);
            } else if (name.space == kOwnSpace) {
                TakeFigure(column, name.local, value);
            }
        }
    }

    void TakeSize(Described& column, std::string_view value) {
        const auto size = NumberOf(value);
        if (size && *size > 0) column.plain.size = size;
    }

    void TakeRowsetAttribute(Described& column, std::string_view name, std::string_view value) {
        for (const auto flags : {std::span<const Flag>(kColumnFlags), std::span<const Flag>(kTypeFlags)}) {
            for (const Flag& flag : flags) {
                if (flag.name == name && IsTrue(value)) column.plain.attributes |= flag.bit;
            }
        }
        const auto digits = [&]() -> std::optional<LONG> {
            const auto number = NumberOf(value);
            return number && *number >= 0 && *number <= 255 ? number : std::nullopt;
        };
        if (name == "maybenull" && !IsTrue(value)) column.plain.attributes &= ~kFieldMayBeNull;
        if (name == "keycolumn") column.plain.isKey = IsTrue(value);
        if (name == "autoincrement") column.plain.isAutoIncrement = IsTrue(value);
        if (name == "name") column.name = value;
        if (name == "number") column.number = NumberOf(value).value_or(column.number);
        if (name == "dbtype") column.more = value;
        if (name == "precision") column.plain.precision = digits();
        if (name == "scale") column.plain.scale = digits();
        if (name == "basecatalog") column.baseCatalog = value;
        if (name == "baseschema") column.baseSchema = value;
        if (name == "basetable") column.baseTable = value;
        if (name == "basecolumn") column.baseColumn = value;
    }

    void TakeFigure(Described& column, std::string_view name, std::string_view value) {
        const auto known = ColumnFigures();
        const auto figure = std::ranges::find(known, name, &ColumnFigure::name);
        const auto number = NumberOf(value);
        if (figure == known.end()) return;
        if (!number) source_.Fail(kTextBadColumn);
        column.figures.emplace_back(&*figure, *number);
    }

    Place EnterData() {
        if (rows_) source_.Fail(kTextMisplaced);
        if (described_.empty()) source_.Fail(kTextNoSchema);
        std::ranges::stable_sort(described_, {}, &Described::number);
        for (const Described& from : described_)
            columns_.push_back(MakeColumn(from));
        for (std::size_t i = 0; i < described_.size(); ++i) {
            if (!byName_.emplace(described_[i].attribute, i).second) source_.Fail(kTextBadColumn);
        }
        cells_.resize(columns_.size());
        marks_.resize(columns_.size());
        const std::vector<bool> asText(columns_.size(), true);
        rows_.emplace(columns_, asText);
        versions_.emplace(columns_, asText);
        return Place::Data;
    }

    Column MakeColumn(const Described& from) {
        PlainColumn plain = from.plain;
        plain.dbType = from.type.empty() ? LONG{kTypeWChar} : FindXmlType(from.type, from.more).dbType;
        Column column = ColumnOf(plain);
        column.name = ToUtf16(from.name.value_or(from.attribute));
        column.baseCatalog = from.baseCatalog;
        column.baseSchema = from.baseSchema;
        column.baseTable = from.baseTable;
        column.baseColumn = from.baseColumn;
        for (const auto& [figure, value] : from.figures) {
            if (!SetFigure(column, *figure, value)) source_.Fail(kTextBadColumn);
            const SavedType* const type = FindSavedType(column.dbType);
            if (figure->name == "dbtype" && type != nullptr) column.kind = type->kind;
        }
        return column;
    }

    Place EnterUpdate(const char* given, bool isOriginal, const char** attributes) {
        if (isOriginal) {
            if (hasOld_) source_.Fail(kTextDamaged);
            return Place::Original;
        }
        ExpectRow(given);
        if (!hasOld_ || std::exchange(hasNew_, true)) source_.Fail(kTextDamaged);
        LoadedChange change{rows_->Rows() - 1, RowState::Updated, versions_->Rows(), {}};
        TakeRow(attributes, *versions_);
        change.changed = Changed();
        loaded_.changes.push_back(std::move(change));
        return Place::Row;
    }

    /// The columns that the row just taken gives, if only as NULL.
    std::vector<bool> Changed() const {
        std::vector<bool> changed(columns_.size());
        for (std::size_t i = 0; i < changed.size(); ++i)
            changed[i] = cells_[i] != nullptr || (marks_[i] & kForcedNull) != 0;
        return changed;
    }

    void TakeRow(const char** attributes, RowCollector& rows) {
        std::ranges::fill(cells_, nullptr);
        if (std::exchange(hasMarks_, false)) std::ranges::fill(marks_, 0);
        std::size_t expected = 0;
        for (; attributes[0] != nullptr; attributes += 2) {
            // The attributes come in the order of the columns, those that are NULL left out.
            std::size_t guess = expected;
            while (guess < described_.size() && guess < expected + 4 && described_[guess].attribute != attributes[0])
                ++guess;
            if (guess == described_.size() || guess == expected + 4) guess = LookUp(attributes[0], attributes[1]);
            if (guess == kNone) continue;
            cells_[guess] = attributes[1];
            expected = guess + 1;
        }
        for (std::size_t i = 0; i < cells_.size(); ++i) {
            if (cells_[i] == nullptr || (marks_[i] & kForcedNull) != 0) {
                cells_[i] = nullptr;
                rows.AddNull(i);
            } else {
                TakeValue(i, cells_[i], rows);
            }
        }
        rows.EndRow();
        if (rows_->Bytes() + versions_->Bytes() > limit_) source_.Fail(kTextImplausible);
    }

    std::size_t LookUp(const char* given, const char* value) {
        const auto found = byName_.find(std::string_view(given));
        if (found != byName_.end()) return found->second;
        const Name name = NameOf(given);
        if (name.local == "forcenull" && EqualsNoCase(name.space, kRowsetSpace)) MarkColumns(value, kForcedNull);
        if (name.local == kHexList && name.space == kOwnSpace) MarkColumns(value, kInHex);
        return kNone;
    }

    void MarkColumns(std::string_view list, unsigned char mark) {
        constexpr std::string_view kBetween = " \t\r\n,";
        while (!list.empty()) {
            const std::size_t end = std::min(list.find_first_of(kBetween), list.size());
            const auto found = byName_.find(list.substr(0, end));
            if (found != byName_.end()) {
                marks_[found->second] = static_cast<unsigned char>(marks_[found->second] | mark);
                hasMarks_ = true;
            }
            list.remove_prefix(std::min(end + 1, list.size()));
        }
    }

    void TakeValue(std::size_t column, std::string_view value, RowCollector& rows) {
        if ((marks_[column] & kInHex) != 0) [[unlikely]] {
            if (!ReadHex(value, scratch_)) FailValue(column);
            return rows.AddText(scratch_);
        }
        switch (columns_[column].kind) {
            case CellKind::Bytes:
                if (!ReadHex(value, scratch_)) FailValue(column);
                return rows.AddText(scratch_);
            case CellKind::Boolean:
                if (EqualsNoCase(value, "True")) value = "1";
                if (EqualsNoCase(value, "False")) value = "0";
                return rows.AddText(value);
            case CellKind::Date:
            case CellKind::Time:
            case CellKind::Timestamp:
                return TakeMoment(value, rows);
            case CellKind::Guid:
                scratch_ = value;
                NormalizeGuid(scratch_);
                return rows.AddText(scratch_);
            default:
                return rows.AddText(value);
        }
    }

    /// Kept with a blank between date and time, as databases have it.
    void TakeMoment(std::string_view value, RowCollector& rows) {
        constexpr std::size_t kBetween = 10;
        if (value.size() <= kBetween || value[kBetween] != 'T' || !ParseCalendarTime(value)) return rows.AddText(value);
        scratch_ = value;
        scratch_[kBetween] = ' ';
        rows.AddText(scratch_);
    }

    [[noreturn]] void FailValue(std::size_t column) const {
        source_.Fail(columns_[column].name + u" " + std::u16string(kTextBadValue));
    }

    enum Mark : unsigned char { kForcedNull = 1, kInHex = 2 };
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    ByteSource& source_;
    std::uint64_t limit_;
    LoadedRows loaded_;
    std::vector<Place> places_;
    std::string rowName_ = "row";
    bool hasSchema_ = false;
    bool hasRowType_ = false;
    std::vector<Described> described_;
    std::vector<Column> columns_;
    std::unordered_map<std::string_view, std::size_t> byName_;
    std::optional<RowCollector> rows_;
    std::optional<RowCollector> versions_;
    bool hasOld_ = false;
    bool hasNew_ = false;
    std::vector<const char*> cells_;
    std::vector<unsigned char> marks_;
    bool hasMarks_ = false;
    std::string scratch_;
};

}  // namespace

LoadedRows ReadXml(ByteSource& source) {
    return XmlReader(source).Read();
}

}  // namespace tk::ado
