// Primary keys, foreign keys and indexes. Each needs the table restriction: without it the answer is empty.
#include <algorithm>
#include <set>
#include <string>

#include "ado/odbc/odbc_api.h"
#include "ado/schema/file_catalog.h"
#include "ado/schema/key_rows.h"
#include "ado/schema/schema_table.h"

namespace tk::ado {
namespace {

using Type = SchemaType;

std::string CatalogOf(Session& session, const std::string& given) {
    return given.empty() ? session.CurrentCatalog() : given;
}

// --- primary keys ---

constexpr SchemaColumn kPrimaryColumns[] = {
    {u"TABLE_CATALOG", Type::Text, 1},   {u"TABLE_SCHEMA", Type::Text, 2}, {u"TABLE_NAME", Type::Text, 3},
    {u"COLUMN_NAME", Type::Text, 4},     {u"COLUMN_GUID", Type::Guid},     {u"COLUMN_PROPID", Type::UnsignedLong},
    {u"ORDINAL", Type::UnsignedLong, 5}, {u"PK_NAME", Type::Text, 6},
};
constexpr unsigned char kPrimaryRestrictions[] = {0, 1, 2};
constexpr unsigned char kPrimaryOrder[] = {0, 1, 2, 6};

constexpr std::size_t kKeyColumn = 4;
constexpr std::size_t kKeyPlace = 5;
constexpr std::size_t kKeyName = 6;

/// A driver that calls every key the same numbers its columns as the table has them; the index behind it knows better.
void OrderByIndex(const std::shared_ptr<Session>& session, CatalogCall call, CatalogRows& key) {
    constexpr std::size_t kIndex = 6, kPlace = 8, kColumn = 9;
    call.function = CatalogCall::Function::Statistics;
    const CatalogRows parts = CallForTable(session, call);
    for (CatalogRow& row : key) {
        for (const CatalogRow& part : parts) {
            if (part.Text(kIndex) != row.Text(kKeyName) || part.Text(kColumn) != row.Text(kKeyColumn)) continue;
            row.Set(kKeyPlace, SchemaValue::Of(part.Number(kPlace)));
            break;
        }
    }
    std::ranges::stable_sort(key, {}, [](const CatalogRow& row) { return row.Number(kKeyPlace); });
}

CatalogRows ReadPrimaryKeys(const std::shared_ptr<Session>& session, const Restrictions& restrictions) {
    if (restrictions.Text(2).empty() || !TellsKeys(*session)) return {};
    return PrimaryKeyRows(session, restrictions.Text(0), restrictions.Text(1), restrictions.Text(2));
}

// --- foreign keys ---

SchemaValue Rule(const CatalogRow& row, std::size_t column) {
    // By ODBC's numbers; "restrict" is reported as no action.
    static constexpr const char* kRules[] = {"CASCADE", "NO ACTION", "SET NULL", "NO ACTION", "SET DEFAULT"};
    const auto number = row.Number(column);
    if (!number || *number < 0 || *number >= static_cast<long long>(std::size(kRules))) return SchemaValue();
    return SchemaValue::Text(kRules[*number]);
}
SchemaValue UpdateRule(const CatalogRow& row) {
    return Rule(row, 10);
}
SchemaValue DeleteRule(const CatalogRow& row) {
    return Rule(row, 11);
}
SchemaValue Deferrability(const CatalogRow& row) {
    const auto number = row.Number(14);
    return number && *number >= 5 && *number <= 7 ? SchemaValue::Number(*number - 4) : SchemaValue();
}

constexpr SchemaColumn kForeignColumns[] = {
    {u"PK_TABLE_CATALOG", Type::Text, 1},
    {u"PK_TABLE_SCHEMA", Type::Text, 2},
    {u"PK_TABLE_NAME", Type::Text, 3},
    {u"PK_COLUMN_NAME", Type::Text, 4},
    {u"PK_COLUMN_GUID", Type::Guid},
    {u"PK_COLUMN_PROPID", Type::UnsignedLong},
    {u"FK_TABLE_CATALOG", Type::Text, 5},
    {u"FK_TABLE_SCHEMA", Type::Text, 6},
    {u"FK_TABLE_NAME", Type::Text, 7},
    {u"FK_COLUMN_NAME", Type::Text, 8},
    {u"FK_COLUMN_GUID", Type::Guid},
    {u"FK_COLUMN_PROPID", Type::UnsignedLong},
    {u"ORDINAL", Type::UnsignedLong, 9},
    {u"UPDATE_RULE", Type::Text, 0, &UpdateRule},
    {u"DELETE_RULE", Type::Text, 0, &DeleteRule},
    {u"PK_NAME", Type::Text, 13},
    {u"FK_NAME", Type::Text, 12},
    {u"DEFERRABILITY", Type::Small, 0, &Deferrability},
};
constexpr unsigned char kForeignRestrictions[] = {0, 1, 2, 6, 7, 8};
// Columns of one key stay together and in order.
constexpr unsigned char kForeignOrder[] = {6, 7, 8, 16, 12};

/// One driver joins tables by names without their case: beside a table whose name differs in that alone, it tells the
/// keys of both twice.
void DropRepeated(CatalogRows& rows) {
    constexpr std::size_t kName = 12;
    constexpr std::size_t kWhatTells[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, kName};
    std::set<std::string> seen;
    std::erase_if(
        rows, [&](const CatalogRow& row) { return row.Text(kName) && !seen.insert(TextsOf(row, kWhatTells)).second; });
}

CatalogRows ReadForeignKeys(const std::shared_ptr<Session>& session, const Restrictions& restrictions) {
    const KeyedTable referred = {restrictions.Text(0), restrictions.Text(1), restrictions.Text(2)};
    const KeyedTable referring = {restrictions.Text(3), restrictions.Text(4), restrictions.Text(5)};
    if ((referred.name.empty() && referring.name.empty()) || !TellsKeys(*session)) return {};
    return ForeignKeyRows(session, referred, referring);
}

// --- indexes ---

// What stands where in the answer of SQLStatistics, and behind it what is found out here.
enum StatisticsColumn : std::size_t {
    kNonUnique = 4,
    kQualifier = 5,
    kIndexName = 6,
    kIndexType = 7,
    kColumnName = 9,
    kSortSequence = 10,
    kIsPrimary = 20,
    kNullOrder = 21,
};

SchemaValue IndexSchema(const CatalogRow& row) {
    const auto qualifier = row.Text(kQualifier);
    // Some servers qualify an index by its table, which is no schema.
    const bool isSchema = qualifier && !qualifier->empty() && qualifier != row.Text(3);
    return SchemaValue::Of(isSchema ? qualifier : row.Text(2));
}
SchemaValue PrimaryKey(const CatalogRow& row) {
    return SchemaValue::Flag(row.Number(kIsPrimary).value_or(0) != 0);
}
SchemaValue Unique(const CatalogRow& row) {
    return SchemaValue::Flag(row.Number(kNonUnique).value_or(1) == 0);
}
SchemaValue Clustered(const CatalogRow& row) {
    return SchemaValue::Flag(row.Number(kIndexType).value_or(0) == 1);
}
SchemaValue IndexType(const CatalogRow& row) {
    switch (row.Number(kIndexType).value_or(0)) {
        case 2:
            return SchemaValue::Number(2);
        case 3:
            return SchemaValue::Number(4);
        default:
            return SchemaValue::Number(1);
    }
}
SchemaValue False(const CatalogRow&) {
    return SchemaValue::Flag(false);
}
SchemaValue True(const CatalogRow&) {
    return SchemaValue::Flag(true);
}
SchemaValue Collation(const CatalogRow& row) {
    const auto sequence = row.Text(kSortSequence);
    if (sequence == "A") return SchemaValue::Number(1);
    return sequence == "D" ? SchemaValue::Number(2) : SchemaValue();
}

constexpr SchemaColumn kIndexColumns[] = {
    {u"TABLE_CATALOG", Type::Text, 1},
    {u"TABLE_SCHEMA", Type::Text, 2},
    {u"TABLE_NAME", Type::Text, 3},
    {u"INDEX_CATALOG", Type::Text, 1},
    {u"INDEX_SCHEMA", Type::Text, 0, &IndexSchema},
    {u"INDEX_NAME", Type::Text, 6},
    {u"PRIMARY_KEY", Type::Flag, 0, &PrimaryKey},
    {u"UNIQUE", Type::Flag, 0, &Unique},
    {u"CLUSTERED", Type::Flag, 0, &Clustered},
    {u"TYPE", Type::UnsignedSmall, 0, &IndexType},
    {u"FILL_FACTOR", Type::Long},
    {u"INITIAL_SIZE", Type::Long},
    {u"NULLS", Type::Long},
    {u"SORT_BOOKMARKS", Type::Flag, 0, &False},
    {u"AUTO_UPDATE", Type::Flag, 0, &True},
    {u"NULL_COLLATION", Type::Long, kNullOrder},
    {u"ORDINAL_POSITION", Type::UnsignedLong, 8},
    {u"COLUMN_NAME", Type::Text, 9},
    {u"COLUMN_GUID", Type::Guid},
    {u"COLUMN_PROPID", Type::UnsignedLong},
    {u"COLLATION", Type::Small, 0, &Collation},
    {u"CARDINALITY", Type::UnsignedHuge, 11},
    {u"PAGES", Type::Long, 12},
    {u"FILTER_CONDITION", Type::Text, 13},
};
constexpr unsigned char kIndexRestrictions[] = {0, 1, 5, 9, 2};
constexpr unsigned char kIndexOrder[] = {7, 9, 3, 4, 5, 16};

/// Where NULL comes in the order of an index, for all of the database alike.
LONG NullOrderOf(Session& session) {
    constexpr LONG kEnd = 1, kHigh = 2, kLow = 4, kStart = 8;
    switch (session.InfoNumber(SQL_NULL_COLLATION)) {
        case SQL_NC_LOW:
            return kLow;
        case SQL_NC_START:
            return kStart;
        case SQL_NC_END:
            return kEnd;
        default:
            return kHigh;
    }
}

/// The columns of each index and of the key, to tell which index is the key's.
bool IsKey(const CatalogRows& all, const CatalogRow& row, const CatalogRows& key) {
    if (key.empty() || row.Number(kNonUnique).value_or(1) != 0) return false;
    const auto name = row.Text(kIndexName);
    if (const auto keyName = key.front().Text(kKeyName); keyName && name) {
        if (*keyName == *name) return true;
    }
    std::vector<std::string_view> columns;
    for (const CatalogRow& other : all) {
        if (other.Text(kIndexName) == name) columns.push_back(other.Text(kColumnName).value_or(""));
    }
    if (columns.size() != key.size()) return false;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i] != key[i].Text(kKeyColumn)) return false;
    }
    return true;
}

CatalogRows AskStatistics(const std::shared_ptr<Session>& session, const Restrictions& restrictions) {
    CatalogCall call;
    call.function = CatalogCall::Function::Statistics;
    call.catalog = CatalogOf(*session, restrictions.Text(0));
    call.schema = restrictions.Text(1);
    call.table = restrictions.Text(4);
    CatalogRows rows = CallForTable(session, call);
    const CatalogRows key = PrimaryKeyRows(session, restrictions.Text(0), restrictions.Text(1), call.table);
    std::vector<bool> isKey;
    for (const CatalogRow& row : rows)
        isKey.push_back(IsKey(rows, row, key));
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i].Set(kIsPrimary, SchemaValue::Flag(isKey[i]));
    return rows;
}

CatalogRows ReadIndexes(const std::shared_ptr<Session>& session, const Restrictions& restrictions) {
    const std::string table = restrictions.Text(4);
    if (table.empty() || !TellsKeys(*session)) return {};
    const std::string schema = restrictions.Text(1);
    const DriverProfile& profile = session->Profile();
    CatalogRows rows = AsksFiles(*session) ? FileIndexes(session, table)
                       : profile.indexQuery != nullptr
                           ? SelectRows(session, profile.indexQuery, profile.indexQueryColumns, {table, schema, schema})
                           : AskStatistics(session, restrictions);
    const LONG nullOrder = NullOrderOf(*session);
    for (CatalogRow& row : rows)
        row.Set(kNullOrder, SchemaValue::Number(nullOrder));
    return rows;
}

enum : LONG { kIndexes = 12, kForeignKeys = 27, kPrimaryKeys = 28 };

constexpr SchemaTable kTablesOfSchemas[] = {
    {kIndexes, kIndexColumns, kIndexRestrictions, kIndexOrder, &ReadIndexes},
    {kForeignKeys, kForeignColumns, kForeignRestrictions, kForeignOrder, &ReadForeignKeys},
    {kPrimaryKeys, kPrimaryColumns, kPrimaryRestrictions, kPrimaryOrder, &ReadPrimaryKeys},
};

}  // namespace

bool TellsKeys(const Session& session) {
    return session.Profile().keySource != KeySource::Nothing;
}

CatalogRows PrimaryKeyRows(const std::shared_ptr<Session>& session, const std::string& catalog,
                           const std::string& schema, const std::string& table) {
    if (AsksFiles(*session)) return FilePrimaryKeys(session, table);
    const DriverProfile& profile = session->Profile();
    if (profile.keyQuery != nullptr) {
        return SelectRows(session, profile.keyQuery, profile.keyQueryColumns, {table, schema, schema});
    }
    CatalogCall call;
    call.function = CatalogCall::Function::PrimaryKeys;
    call.catalog = CatalogOf(*session, catalog);
    call.schema = schema;
    call.table = table;
    CatalogRows rows = CallForTable(session, call);
    if (rows.size() > 1 && rows.front().Text(kKeyName) == "PRIMARY") OrderByIndex(session, call, rows);
    return rows;
}

CatalogRows ForeignKeyRows(const std::shared_ptr<Session>& session, const KeyedTable& referred,
                           const KeyedTable& referring) {
    if (AsksFiles(*session)) return FileForeignKeys(session, referring.name);
    CatalogCall call;
    call.function = CatalogCall::Function::ForeignKeys;
    if (!referred.name.empty()) {
        call.catalog = CatalogOf(*session, referred.catalog);
        call.schema = referred.schema;
        call.table = referred.name;
    }
    if (!referring.name.empty()) {
        call.foreignCatalog = CatalogOf(*session, referring.catalog);
        call.foreignSchema = referring.schema;
        call.foreignTable = referring.name;
    }
    CatalogRows rows = CallForTable(session, call, call.foreignTable.empty() ? CalledTable{} : kForeignTable);
    DropRepeated(rows);
    return rows;
}

std::span<const SchemaTable> KeySchemas() {
    return kTablesOfSchemas;
}

}  // namespace tk::ado
