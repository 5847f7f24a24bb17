// A recordset as XML.
#include <algorithm>
#include <charconv>
#include <optional>
#include <set>

#include "ado/cursor/text.h"
#include "ado/persist/hex.h"
#include "ado/persist/messages.h"
#include "ado/persist/recordset_file.h"
#include "ado/persist/saved_column.h"
#include "ado/persist/saved_types.h"
#include "ado/persist/saved_value.h"
#include "ado/persist/xml_names.h"
#include "ado/persist/xml_text.h"
#include "ado/rowset/value.h"

namespace tk::ado {
namespace {

using namespace xml;

/// How a column goes into the file.
struct ColumnPlan {
    const Column* column = nullptr;
    std::string name;   // of its attribute
    std::string start;  // " name='"
    PlainColumn plain;
};

PlainColumn PlainOf(const Column& column) {
    const SavedType* const type = FindSavedType(column.dbType);
    PlainColumn plain;
    const bool isKnown = type != nullptr && type->kind == column.kind;
    plain.dbType = isKnown ? column.dbType : column.kind == CellKind::Bytes ? LONG{kTypeBinary} : LONG{kTypeWChar};
    if (IsSizedType(plain.dbType) && column.definedSize >= 0) plain.size = column.definedSize;
    if (column.precision != 255) plain.precision = column.precision;
    if (column.scale != 255) plain.scale = column.scale;
    plain.attributes = column.attributes & kSayableAttributes;
    plain.isKey = column.isKey;
    plain.isAutoIncrement = column.isAutoIncrement;
    return plain;
}

class XmlWriter {
public:
    XmlWriter(const SavedSet& set, FileWriter& file)
        : set_(set), file_(file), current_(set.feed.Rows()), original_(set.feed.Rows()) {
        const std::vector<Column>& columns = set.feed.Rows().Columns();
        if (columns.size() > kMostColumns) file_.Fail(kTextTooManyColumns);
        plans_.resize(columns.size());
        for (std::size_t i = 0; i < columns.size(); ++i) {
            plans_[i].column = &columns[i];
            plans_[i].plain = PlainOf(columns[i]);
        }
        ChooseNames();
    }

    void Write() {
        WriteSchema();
        file_.Write("<rs:data>\n");
        for (SavedRow row; set_.feed.Next(row);)
            WriteRow(row);
        file_.Write("</rs:data>\n</xml>\n");
    }

private:
    using Values = std::span<const SavedValue>;

    /// A name that XML knows stays; of two that are alike the first one does.
    void ChooseNames() {
        std::set<std::string> taken;
        for (ColumnPlan& plan : plans_) {
            if (!IsXmlName(plan.column->name)) continue;
            std::string name = ToUtf8(plan.column->name);
            if (taken.insert(name).second) plan.name = std::move(name);
        }
        for (std::size_t i = 0; i < plans_.size(); ++i) {
            std::string& name = plans_[i].name;
            if (name.empty()) {
                name = "c" + std::to_string(i);
                while (!taken.insert(name).second)
                    name += '_';
            }
            plans_[i].start = " " + name + "='";
        }
    }

    void Attribute(std::string_view name, std::string_view value) {
        file_.Write(" ");
        file_.Write(name);
        file_.Write("='");
        file_.Write(XmlAttribute(value));
        file_.Write("'");
    }
    void Attribute(std::string_view name, LONG value) { Attribute(name, std::to_string(value)); }
    void NotEmpty(std::string_view name, const std::string& value) {
        if (!value.empty()) Attribute(name, value);
    }

    void WriteSchema() {
        file_.Write("<xml xmlns:s='");
        file_.Write(kSchemaSpace);
        file_.Write("'\n\txmlns:dt='");
        file_.Write(kTypeSpace);
        file_.Write("'\n\txmlns:rs='");
        file_.Write(kRowsetSpace);
        file_.Write("'\n\txmlns:z='#RowsetSchema'>\n<s:Schema id='RowsetSchema'>\n");
        file_.Write("\t<s:ElementType name='row' content='eltOnly'");
        const WriteRules usual;
        Attribute("rs:CommandTimeout", set_.rules.timeoutSeconds);
        if (set_.isUpdatable) Attribute("rs:updatable", "true");
        if (set_.rules.updateCriteria != usual.updateCriteria) {
            Attribute("rs:UpdateCriteria", set_.rules.updateCriteria);
        }
        if (set_.rules.updateResync != usual.updateResync) Attribute("rs:UpdateResync", set_.rules.updateResync);
        NotEmpty("rs:UniqueTable", set_.rules.uniqueTable);
        NotEmpty("rs:UniqueSchema", set_.rules.uniqueSchema);
        NotEmpty("rs:UniqueCatalog", set_.rules.uniqueCatalog);
        file_.Write(">\n");
        for (std::size_t i = 0; i < plans_.size(); ++i)
            WriteColumn(i);
        file_.Write("\t\t<s:extends type='rs:rowbase'/>\n\t</s:ElementType>\n</s:Schema>\n");
    }

    void WriteColumn(std::size_t number) {
        const ColumnPlan& plan = plans_[number];
        const Column& column = *plan.column;
        file_.Write("\t\t<s:AttributeType");
        Attribute("name", plan.name);
        const std::string name = ToUtf8(column.name);
        if (name != plan.name) Attribute("rs:name", name);
        Attribute("rs:number", static_cast<LONG>(number) + 1);
        WriteFlags(kColumnFlags, plan.plain.attributes);
        NotEmpty("rs:basecatalog", column.baseCatalog);
        NotEmpty("rs:baseschema", column.baseSchema);
        NotEmpty("rs:basetable", column.baseTable);
        NotEmpty("rs:basecolumn", column.baseColumn);
        if (column.isKey) Attribute("rs:keycolumn", "true");
        if (column.isAutoIncrement) Attribute("rs:autoincrement", "true");
        WriteFigures(plan);
        file_.Write(">\n\t\t\t<s:datatype");
        const SavedType& type = *FindSavedType(plan.plain.dbType);
        Attribute("dt:type", type.xmlType);
        if (!type.xmlMore.empty()) Attribute("rs:dbtype", type.xmlMore);
        if (const LONG size = type.xmlSize != 0 ? type.xmlSize : plan.plain.size.value_or(0); size != 0) {
            Attribute("dt:maxLength", size);
        }
        if (plan.plain.scale) Attribute("rs:scale", *plan.plain.scale);
        if (plan.plain.precision) Attribute("rs:precision", *plan.plain.precision);
        WriteFlags(kTypeFlags, plan.plain.attributes);
        if ((plan.plain.attributes & kFieldMayBeNull) == 0) Attribute("rs:maybenull", "false");
        file_.Write("/>\n\t\t</s:AttributeType>\n");
    }

    void WriteFlags(std::span<const Flag> flags, LONG attributes) {
        for (const Flag& flag : flags) {
            if ((attributes & flag.bit) == 0) continue;
            file_.Write(" rs:");
            file_.Write(flag.name);
            file_.Write("='true'");
        }
    }

    void WriteFigures(const ColumnPlan& plan) {
        // 0 is no length that can be written: a reader takes the column for one without a limit.
        PlainColumn read = plan.plain;
        if (read.size == 0) read.size.reset();
        const Column derived = ColumnOf(read);
        bool isFirst = true;
        for (const ColumnFigure& figure : ColumnFigures()) {
            const LONG value = figure.read(*plan.column);
            if (value == figure.read(derived)) continue;
            if (isFirst) Attribute("xmlns:x", kOwnSpace);
            isFirst = false;
            Attribute("x:" + std::string(figure.name), value);
        }
    }

    void WriteRow(const SavedRow& row) {
        switch (row.state) {
            case RowState::Unchanged:
                file_.Write("\t");
                PutRow(current_.Read(row, RowVersion::Current));
                file_.Write("\n");
                return;
            case RowState::Inserted:
                file_.Write("\t<rs:insert>");
                PutRow(current_.Read(row, RowVersion::Current), row.row);
                file_.Write("</rs:insert>\n");
                return;
            case RowState::Deleted:
                file_.Write("\t<rs:delete>");
                PutRow(original_.Read(row, RowVersion::Original));
                file_.Write("</rs:delete>\n");
                return;
            case RowState::Updated: {
                const Values before = original_.Read(row, RowVersion::Original);
                const Values after = current_.Read(row, RowVersion::Current);
                file_.Write("\t<rs:update><rs:original>");
                PutRow(before);
                file_.Write("</rs:original>");
                PutChanges(before, after);
                file_.Write("</rs:update>\n");
                return;
            }
        }
    }

    /// @param inserted  the number of a new row: a NULL that was set is told from a column that was not
    void PutRow(Values values, std::optional<std::size_t> inserted = std::nullopt) {
        file_.Write("<z:row");
        inHex_.clear();
        std::string nulls;
        for (std::size_t i = 0; i < plans_.size(); ++i) {
            if (values[i].form != SavedValue::Form::Null) {
                PutValue(plans_[i], values[i]);
            } else if (inserted && set_.feed.Rows().WasGiven(*inserted, i)) {
                nulls += (nulls.empty() ? "" : " ") + plans_[i].name;
            }
        }
        NotEmpty("rs:forcenull", nulls);
        EndRow();
    }

    void PutChanges(Values before, Values after) {
        file_.Write("<z:row");
        inHex_.clear();
        std::string nulls;
        for (std::size_t i = 0; i < plans_.size(); ++i) {
            if (IsSameValue(before[i], after[i])) continue;
            if (after[i].form == SavedValue::Form::Null) {
                nulls += (nulls.empty() ? "" : " ") + plans_[i].name;
            } else {
                PutValue(plans_[i], after[i]);
            }
        }
        NotEmpty("rs:forcenull", nulls);
        EndRow();
    }

    void EndRow() {
        if (!inHex_.empty()) {
            Attribute("xmlns:x", kOwnSpace);
            Attribute("x:" + std::string(kHexList), inHex_);
        }
        file_.Write("/>");
    }

    void PutValue(const ColumnPlan& plan, const SavedValue& value) {
        file_.Write(plan.start);
        const CellKind kind = plan.column->kind;
        char buffer[64];
        std::string_view text = TextOf(value, kind, buffer);
        switch (kind) {
            case CellKind::Bytes:
                PutDigits(text);
                break;
            case CellKind::Boolean: {
                const Cell cell = CellFromText(kind, text);
                if (cell.form != Cell::Form::Boolean) {
                    PutText(plan, text);
                    break;
                }
                file_.Write(cell.integer != 0 ? "True" : "False");
                break;
            }
            case CellKind::Date:
            case CellKind::Time:
            case CellKind::Timestamp:
                PutMoment(plan, text);
                break;
            default:
                PutText(plan, text);
                break;
        }
        file_.Write("'");
    }

    void PutText(const ColumnPlan& plan, std::string_view text) {
        XmlFit fit = FitOf(text);
        std::string mended;
        if (fit == XmlFit::IllFormed) {
            // What nobody can read as text is handed out with U+FFFD in its places, and so it is saved.
            mended = ToUtf8(ToUtf16(text));
            text = mended;
            fit = FitOf(text);
        }
        if (fit != XmlFit::Never) return PutXmlText(file_, text, fit);
        inHex_ += (inHex_.empty() ? "" : " ") + plan.name;
        PutDigits(text);
    }

    void PutDigits(std::string_view bytes) {
        constexpr std::size_t kPiece = FileWriter::kRoom / 2;
        while (!bytes.empty()) {
            const std::string_view piece = bytes.substr(0, kPiece);
            char* const at = file_.Room(piece.size() * 2);
            PutHex(piece, at);
            file_.Commit(at + piece.size() * 2);
            bytes.remove_prefix(piece.size());
        }
    }

    void PutMoment(const ColumnPlan& plan, std::string_view text) {
        constexpr std::size_t kBlank = 10;
        constexpr std::size_t kLongest = 48;
        if (text.size() <= kBlank || text.size() > kLongest || text[kBlank] != ' ' || !ParseCalendarTime(text)) {
            return PutText(plan, text);
        }
        char* const at = file_.Room(text.size());
        std::copy(text.begin(), text.end(), at);
        at[kBlank] = 'T';
        file_.Commit(at + text.size());
    }

    const SavedSet& set_;
    FileWriter& file_;
    RowReader current_;
    RowReader original_;
    std::vector<ColumnPlan> plans_;
    std::string inHex_;
};

}  // namespace

void WriteXml(const SavedSet& set, FileWriter& file) {
    XmlWriter(set, file).Write();
}

}  // namespace tk::ado
