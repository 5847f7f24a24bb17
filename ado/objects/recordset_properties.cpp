// The dynamic properties of a Recordset.
#include "ado/cursor/text.h"
#include "ado/objects/recordset.h"

namespace tk::ado {
namespace {

enum class Kept : unsigned char {
    Constant,
    Criteria,
    Resync,
    UniqueTable,
    UniqueSchema,
    UniqueCatalog,
    Timeout,
    Changes,  // True where the rows can be changed
    Batches,  // True where changes wait for UpdateBatch
    MaximumRows,
};

}  // namespace

struct Recordset::PropertyRow {
    const char16_t* name;
    VARTYPE type;
    Kept kept = Kept::Constant;
    LONG number = 0;
    bool writable = false;
    const char16_t* text = u"";
};

std::span<const Recordset::PropertyRow> Recordset::PropertyRows() {
    constexpr bool kWritable = true;
    static constexpr PropertyRow kRows[] = {
        {u"Update Criteria", VT_I4, Kept::Criteria, 0, kWritable},
        {u"Update Resync", VT_I4, Kept::Resync, 0, kWritable},
        {u"Unique Table", VT_BSTR, Kept::UniqueTable, 0, kWritable},
        {u"Unique Schema", VT_BSTR, Kept::UniqueSchema, 0, kWritable},
        {u"Unique Catalog", VT_BSTR, Kept::UniqueCatalog, 0, kWritable},
        {u"Command Time Out", VT_I4, Kept::Timeout, 0, kWritable},
        {u"Maximum Rows", VT_I4, Kept::MaximumRows},
        {u"Maximum Open Rows", VT_I4},
        {u"Resync Command", VT_BSTR},
        {u"Batch Size", VT_I4, Kept::Constant, 15},
        {u"Auto Recalc", VT_I4, Kept::Constant, 1},
        {u"Initial Fetch Size", VT_I4, Kept::Constant, 50},
        {u"Background Fetch Size", VT_I4, Kept::Constant, 15},
        {u"Background Thread Priority", VT_I4, Kept::Constant, 3},
        {u"Maintain Change Status", VT_BOOL},
        {u"Reshape Name", VT_BSTR},
        {u"Bookmarkable", VT_BOOL, Kept::Constant, 1},
        {u"IRowsetLocate", VT_BOOL, Kept::Constant, 1},
        {u"IRowsetScroll", VT_BOOL, Kept::Constant, 1},
        {u"IRowsetChange", VT_BOOL, Kept::Changes},
        {u"IRowsetUpdate", VT_BOOL, Kept::Batches},
        {u"Hidden Columns", VT_I4},
        {u"Cursor Engine Version", VT_BSTR, Kept::Constant, 0, false, u"28.0"},
        {u"Optimize", VT_BOOL},
        {u"Cache Child Rows", VT_BOOL, Kept::Constant, 1},
        {u"Query Based Updates/Deletes/Inserts", VT_BOOL, Kept::Constant, 1},
        {u"ODBC Concurrency Type", VT_I4, Kept::Constant, 1},
        {u"ODBC Cursor Type", VT_I4},
        {u"BLOB accessibility on Forward-Only cursor", VT_BOOL, Kept::Constant, 1},
        {u"Include SQL_FLOAT, SQL_DOUBLE, and SQL_REAL in QBU where clauses", VT_BOOL},
        {u"Position on the last row after insert", VT_BOOL, Kept::Constant, 1},
        {u"IRowsetChangeExtInfo", VT_BOOL},
        {u"Generate a Rowset that can be marshaled", VT_BOOL},
    };
    return kRows;
}

std::size_t Recordset::PropertyCount() {
    return PropertyRows().size();
}

PropertyInfo Recordset::DescribeProperty(std::size_t index) {
    const PropertyRow& row = PropertyRows()[index];
    return {row.name, row.type, row.writable ? kPropertyReadWrite : kPropertyReadOnly};
}

Value Recordset::ReadProperty(std::size_t index) {
    const PropertyRow& row = PropertyRows()[index];
    const auto text = [](const std::string& utf8) { return Value::Text(ToUtf16(utf8)); };
    switch (row.kept) {
        case Kept::Criteria:
            return Value(rules_.updateCriteria);
        case Kept::Resync:
            return Value(rules_.updateResync);
        case Kept::UniqueTable:
            return text(rules_.uniqueTable);
        case Kept::UniqueSchema:
            return text(rules_.uniqueSchema);
        case Kept::UniqueCatalog:
            return text(rules_.uniqueCatalog);
        case Kept::Timeout:
            return Value(rules_.timeoutSeconds);
        case Kept::Changes:
            return Value::Boolean((IsOpen() ? lock_ : wantedLock_) != kLockReadOnly);
        case Kept::Batches:
            return Value::Boolean((IsOpen() ? lock_ : wantedLock_) == kLockBatchOptimistic);
        case Kept::MaximumRows:
            return Value(maxRecords_);
        case Kept::Constant:
            break;
    }
    if (row.type == VT_BOOL) return Value::Boolean(row.number != 0);
    return row.type == VT_BSTR ? Value::Text(row.text) : Value(row.number);
}

void Recordset::WriteProperty(std::size_t index, const Value& value) {
    const auto number = [&](LONG least, LONG most) {
        if (value.Get().lVal < least || value.Get().lVal > most) throw AdoError(ErrorNumber::InvalidArgument);
        return value.Get().lVal;
    };
    const auto text = [&] { return ToUtf8(ViewOf(value.Get().bstrVal)); };
    switch (PropertyRows()[index].kept) {
        case Kept::Criteria:
            rules_.updateCriteria = number(kCriteriaKey, kCriteriaTimeStamp);
            return;
        case Kept::Resync:
            rules_.updateResync = number(0, 15);
            return;
        case Kept::UniqueTable:
            rules_.uniqueTable = text();
            return;
        case Kept::UniqueSchema:
            rules_.uniqueSchema = text();
            return;
        case Kept::UniqueCatalog:
            rules_.uniqueCatalog = text();
            return;
        case Kept::Timeout:
            rules_.timeoutSeconds = number(0, 0x7FFFFFFF);
            return;
        default:
            throw AdoError(ErrorNumber::FeatureNotAvailable);
    }
}

}  // namespace tk::ado
