#include "support/tds/catalog_procedures.h"

#include <algorithm>

#include "support/tds/words.h"

namespace tk::test::tds {
namespace {

// What is the server's own in the file is no part of the database; "dbo" owns the rest.
#define TDS_OBJECTS                                                                                              \
    "(select name, type, sql from sqlite_master where type in ('table', 'view') and name not like 'sqlite\\_%' " \
    "escape '\\' and name not like 'tds\\_%' escape '\\')"

// --- tables ---

constexpr const char* kTablesParameters[] = {"@table_name", "@table_owner", "@table_qualifier", "@table_type"};
constexpr FixedColumn kTables[] = {
    {"TABLE_QUALIFIER", "sysname"}, {"TABLE_OWNER", "sysname"},  {"TABLE_NAME", "sysname"},
    {"TABLE_TYPE", "varchar(32)"},  {"REMARKS", "varchar(254)"},
};
// Three ways to ask are no questions for tables, but for the databases, the owners and the kinds of tables.
constexpr char kTablesSql[] =
    "select db_name(), null, null, null, null where @table_qualifier = '%' and @table_name = '' and @table_owner = '' "
    "union all select null, 'dbo', null, null, null where @table_owner = '%' and @table_name = '' and "
    "@table_qualifier = '' "
    "union all select null, null, null, column1, null from (values ('SYSTEM TABLE'), ('TABLE'), ('VIEW')) "
    "where @table_type = '%' and @table_name = '' and @table_owner = '' and @table_qualifier = '' "
    "union all select * from (select db_name(), 'dbo', name, upper(type), null from " TDS_OBJECTS
    " where not (coalesce(@table_name, '%') = '' and '%' in (@table_qualifier, @table_owner, @table_type)) "
    "and tds_like(@table_name, name) and tds_like(@table_owner, 'dbo') and tds_like(@table_qualifier, db_name()) "
    "and (coalesce(@table_type, '') in ('', '%') or instr(upper(@table_type), '''' || upper(type) || '''')) "
    "order by type, name)";

// --- columns ---

constexpr const char* kColumnsParameters[] = {"@table_name", "@table_owner", "@table_qualifier", "@column_name",
                                              "@ODBCVer"};
constexpr FixedColumn kColumns[] = {
    {"TABLE_QUALIFIER", "sysname"},
    {"TABLE_OWNER", "sysname"},
    {"TABLE_NAME", "sysname"},
    {"COLUMN_NAME", "sysname"},
    {"DATA_TYPE", "smallint"},
    {"TYPE_NAME", "sysname"},
    {"PRECISION", "int"},
    {"LENGTH", "int"},
    {"SCALE", "smallint"},
    {"RADIX", "smallint"},
    {"NULLABLE", "smallint"},
    {"REMARKS", "varchar(254)"},
    {"COLUMN_DEF", "nvarchar(4000)"},
    {"SQL_DATA_TYPE", "smallint"},
    {"SQL_DATETIME_SUB", "smallint"},
    {"CHAR_OCTET_LENGTH", "int"},
    {"ORDINAL_POSITION", "int"},
    {"IS_NULLABLE", "varchar(254)"},
    {"SS_DATA_TYPE", "tinyint"},
};
constexpr char kColumnsSql[] =
    "select db_name(), 'dbo', t.name, c.name, tds_type(c.type, 'odbc'), tds_type(c.type, 'name') || "
    "iif(c.pk and lower(c.type) = 'integer', ' identity', ''), "
    "tds_type(c.type, 'precision'), tds_type(c.type, 'length'), tds_type(c.type, 'scale'), tds_type(c.type, 'radix'), "
    "c.\"notnull\" = 0 and c.pk = 0, null, '(' || c.dflt_value || ')', tds_type(c.type, 'sql'), "
    "tds_type(c.type, 'sub'), tds_type(c.type, 'octets'), c.cid + 1, iif(c.\"notnull\" or c.pk, 'NO', 'YES'), "
    "tds_type(c.type, 'server') from " TDS_OBJECTS
    " t join pragma_table_xinfo(t.name) c where tds_like(@table_name, t.name) and tds_like(@table_owner, 'dbo') "
    "and tds_like(@column_name, c.name) order by t.name, c.cid";

// --- keys and indexes ---

constexpr const char* kTableParameters[] = {"@table_name", "@table_owner", "@table_qualifier"};
constexpr FixedColumn kKeys[] = {
    {"TABLE_QUALIFIER", "sysname"}, {"TABLE_OWNER", "sysname"}, {"TABLE_NAME", "sysname"},
    {"COLUMN_NAME", "sysname"},     {"KEY_SEQ", "smallint"},    {"PK_NAME", "sysname"},
};
constexpr char kKeysSql[] =
    "select db_name(), 'dbo', t.name, c.name, c.pk, coalesce(tds_key_name(t.sql, 0), 'PK_' || t.name) from " TDS_OBJECTS
    " t join pragma_table_info(t.name) c where t.name = @table_name collate nocase and tds_like(@table_owner, 'dbo') "
    "and c.pk > 0 order by c.pk";

constexpr const char* kForeignParameters[] = {"@pktable_name", "@pktable_owner", "@pktable_qualifier",
                                              "@fktable_name", "@fktable_owner", "@fktable_qualifier"};
constexpr FixedColumn kForeignKeys[] = {
    {"PKTABLE_QUALIFIER", "sysname"}, {"PKTABLE_OWNER", "sysname"},     {"PKTABLE_NAME", "sysname"},
    {"PKCOLUMN_NAME", "sysname"},     {"FKTABLE_QUALIFIER", "sysname"}, {"FKTABLE_OWNER", "sysname"},
    {"FKTABLE_NAME", "sysname"},      {"FKCOLUMN_NAME", "sysname"},     {"KEY_SEQ", "smallint"},
    {"UPDATE_RULE", "smallint"},      {"DELETE_RULE", "smallint"},      {"FK_NAME", "sysname"},
    {"PK_NAME", "sysname"},           {"DEFERRABILITY", "smallint"},
};
#define TDS_RULE(column) \
    "case " column " when 'CASCADE' then 0 when 'SET NULL' then 2 when 'SET DEFAULT' then 3 else 1 end"
// SQLite numbers the foreign keys of a table from its last one.
constexpr char kForeignKeysSql[] =
    "select db_name(), 'dbo', p.name, coalesce(k.\"to\", (select name from pragma_table_info(p.name) where "
    "pk = k.seq + 1)), db_name(), 'dbo', t.name, k.\"from\", k.seq + 1, " TDS_RULE("k.on_update") ", " TDS_RULE(
        "k.on_delete") ", coalesce(tds_key_name(t.sql, (select count(distinct id) from "
                       "pragma_foreign_key_list(t.name)) - k.id), 'FK_' || t.name || '_' || k.id) fk, "
                       "coalesce(tds_key_name(p.sql, 0), 'PK_' || p.name), 7 from " TDS_OBJECTS
    " t join pragma_foreign_key_list(t.name) k join " TDS_OBJECTS
    " p on p.name = k.\"table\" collate nocase where coalesce(@pktable_name, '') in ('', p.name) and "
    "coalesce(@fktable_name, '') in ('', t.name) order by t.name, fk, k.seq";

constexpr const char* kStatisticsParameters[] = {"@table_name", "@table_owner", "@table_qualifier",
                                                 "@index_name", "@is_unique",   "@accuracy"};
constexpr FixedColumn kStatistics[] = {
    {"TABLE_QUALIFIER", "sysname"},
    {"TABLE_OWNER", "sysname"},
    {"TABLE_NAME", "sysname"},
    {"NON_UNIQUE", "smallint"},
    {"INDEX_QUALIFIER", "sysname"},
    {"INDEX_NAME", "sysname"},
    {"TYPE", "smallint"},
    {"SEQ_IN_INDEX", "smallint"},
    {"COLUMN_NAME", "sysname"},
    {"COLLATION", "char(1)"},
    {"CARDINALITY", "int"},
    {"PAGES", "int"},
    {"FILTER_CONDITION", "varchar(128)"},
};
// The key is what the rows are stored by. The first row is of the table.
constexpr char kStatisticsSql[] =
    "with t as (select * from " TDS_OBJECTS
    " where type = 'table' and name = @table_name collate nocase and tds_like(@table_owner, 'dbo')), "
    "i as (select t.name as tab, l.\"unique\" as is_unique, case l.origin when 'pk' then "
    "coalesce(tds_key_name(t.sql, 0), 'PK_' || t.name) when 'u' then replace(l.name, 'sqlite_autoindex', 'UQ') else "
    "l.name end as ind, iif(l.origin = 'pk', 1, 3) as kind, x.seqno + 1 as place, x.name as col, "
    "iif(x.desc, 'D', 'A') as dir from t join pragma_index_list(t.name) l join pragma_index_xinfo(l.name) x "
    "where x.key and x.name is not null "
    "union all select t.name, 1, coalesce(tds_key_name(t.sql, 0), 'PK_' || t.name), 1, 1, c.name, 'A' from t join "
    "pragma_table_info(t.name) c where c.pk and lower(c.type) = 'integer' and not exists (select 1 from "
    "pragma_index_list(t.name) where origin = 'pk')) "
    "select db_name(), 'dbo', name, null, null, null, 0, null, null, null, 0, 0, null from t "
    "union all select * from (select db_name(), 'dbo', tab, is_unique = 0, tab, ind, kind, place, col, dir, null, "
    "null, "
    "null from i where (coalesce(@is_unique, 'N') <> 'Y' or is_unique) and tds_like(@index_name, ind) "
    "order by is_unique desc, kind, ind, place)";

constexpr const char* kSpecialParameters[] = {"@table_name", "@table_owner", "@table_qualifier", "@col_type",
                                              "@scope",      "@nullable",    "@ODBCVer"};
constexpr FixedColumn kSpecialColumns[] = {
    {"SCOPE", "smallint"}, {"COLUMN_NAME", "sysname"}, {"DATA_TYPE", "smallint"}, {"TYPE_NAME", "sysname"},
    {"PRECISION", "int"},  {"LENGTH", "int"},          {"SCALE", "smallint"},     {"PSEUDO_COLUMN", "smallint"},
};
constexpr char kSpecialColumnsSql[] =
    "select 0, c.name, tds_type(c.type, 'odbc'), tds_type(c.type, 'name'), tds_type(c.type, 'precision'), "
    "tds_type(c.type, 'length'), tds_type(c.type, 'scale'), 1 from " TDS_OBJECTS
    " t join pragma_table_info(t.name) c where t.name = @table_name collate nocase and c.pk > 0 and "
    "coalesce(@col_type, 'R') = 'R' order by c.pk";

// --- procedures ---

constexpr const char* kProceduresParameters[] = {"@sp_name", "@sp_owner", "@sp_qualifier"};
constexpr FixedColumn kProcedures[] = {
    {"PROCEDURE_QUALIFIER", "sysname"}, {"PROCEDURE_OWNER", "sysname"}, {"PROCEDURE_NAME", "nvarchar(134)"},
    {"NUM_INPUT_PARAMS", "int"},        {"NUM_OUTPUT_PARAMS", "int"},   {"NUM_RESULT_SETS", "int"},
    {"REMARKS", "varchar(254)"},        {"PROCEDURE_TYPE", "smallint"},
};
constexpr char kProceduresSql[] =
    "select db_name(), 'dbo', name || ';1', -1, -1, -1, null, 2 from tds_procedures where tds_like(@sp_name, name) and "
    "tds_like(@sp_owner, 'dbo') order by name";

constexpr const char* kArgumentsParameters[] = {"@procedure_name", "@procedure_owner", "@procedure_qualifier",
                                                "@column_name", "@ODBCVer"};
constexpr FixedColumn kArguments[] = {
    {"PROCEDURE_QUALIFIER", "sysname"},
    {"PROCEDURE_OWNER", "sysname"},
    {"PROCEDURE_NAME", "nvarchar(134)"},
    {"COLUMN_NAME", "sysname"},
    {"COLUMN_TYPE", "smallint"},
    {"DATA_TYPE", "smallint"},
    {"TYPE_NAME", "sysname"},
    {"PRECISION", "int"},
    {"LENGTH", "int"},
    {"SCALE", "smallint"},
    {"RADIX", "smallint"},
    {"NULLABLE", "smallint"},
    {"REMARKS", "varchar(254)"},
    {"COLUMN_DEF", "nvarchar(4000)"},
    {"SQL_DATA_TYPE", "smallint"},
    {"SQL_DATETIME_SUB", "smallint"},
    {"CHAR_OCTET_LENGTH", "int"},
    {"ORDINAL_POSITION", "int"},
    {"IS_NULLABLE", "varchar(254)"},
    {"SS_DATA_TYPE", "tinyint"},
};
// An argument that gives something back is told as one that goes both ways; the status comes first.
constexpr char kArgumentsSql[] =
    "select db_name(), 'dbo', procedure || ';1', name, case when place = 0 then 5 when is_output then 2 else 1 end, "
    "tds_type(type, 'odbc'), tds_type(type, 'name'), tds_type(type, 'precision'), tds_type(type, 'length'), "
    "tds_type(type, 'scale'), tds_type(type, 'radix'), place <> 0, null, null, tds_type(type, 'sql'), "
    "tds_type(type, 'sub'), tds_type(type, 'octets'), place, iif(place = 0, 'NO', 'YES'), tds_type(type, 'server') "
    "from "
    "(select name as procedure, '@RETURN_VALUE' as name, 0 as place, 'int' as type, 0 as is_output from tds_procedures "
    "union all select procedure, name, place, type, is_output from tds_parameters) "
    "where tds_like(@procedure_name, procedure) and tds_like(@column_name, name) order by procedure, place";

// --- types and databases ---

constexpr const char* kTypesParameters[] = {"@data_type", "@ODBCVer"};
constexpr FixedColumn kTypes[] = {
    {"TYPE_NAME", "sysname"},
    {"DATA_TYPE", "smallint"},
    {"PRECISION", "int"},
    {"LITERAL_PREFIX", "varchar(32)"},
    {"LITERAL_SUFFIX", "varchar(32)"},
    {"CREATE_PARAMS", "varchar(32)"},
    {"NULLABLE", "smallint"},
    {"CASE_SENSITIVE", "smallint"},
    {"SEARCHABLE", "smallint"},
    {"UNSIGNED_ATTRIBUTE", "smallint"},
    {"MONEY", "smallint"},
    {"AUTO_INCREMENT", "smallint"},
    {"LOCAL_TYPE_NAME", "sysname"},
    {"MINIMUM_SCALE", "smallint"},
    {"MAXIMUM_SCALE", "smallint"},
    {"SQL_DATA_TYPE", "smallint"},
    {"SQL_DATETIME_SUB", "smallint"},
    {"NUM_PREC_RADIX", "int"},
    {"INTERVAL_PRECISION", "smallint"},
    {"USERTYPE", "smallint"},
};
constexpr char kTypesSql[] =
    "select name, odbc, size, prefix, suffix, arguments, 1, 0, iif(is_text or radix is not null, 3, 2), "
    "iif(radix is null, null, name = 'tinyint'), money, iif(radix is null, null, 0), name, scale, "
    "iif(arguments = 'precision,scale', 38, scale), sql, sub, radix, null, 0 from tds_types "
    "where coalesce(@data_type, 0) in (0, odbc) order by odbc, name";

constexpr FixedColumn kDatabases[] = {
    {"DATABASE_NAME", "sysname"}, {"DATABASE_SIZE", "int"}, {"REMARKS", "varchar(254)"}};
constexpr char kDatabasesSql[] = "select db_name(), 8192, null";

// --- texts ---

constexpr const char* kTextParameters[] = {"@objname"};
constexpr FixedColumn kTexts[] = {{"Text", "nvarchar(255)"}};
// In rows of 255 characters. A view has its own text unless it was given another.
constexpr char kTextSql[] =
    "with recursive text(whole) as (select coalesce((select text from tds_sources where name = @objname collate "
    "nocase), "
    "(select sql from " TDS_OBJECTS
    " where type = 'view' and name = @objname collate nocase), tds_missing(@objname))), "
    "part(at) as (select 1 from text where whole is not null union all select at + 255 from part, text where at + 255 "
    "<= "
    "length(whole)) select substr(whole, at, 255) from part, text order by at";

constexpr CatalogProcedure kCatalogProcedures[] = {
    {"sp_tables", kTablesParameters, kTables, kTablesSql},
    {"sp_columns", kColumnsParameters, kColumns, kColumnsSql},
    {"sp_pkeys", kTableParameters, kKeys, kKeysSql},
    {"sp_fkeys", kForeignParameters, kForeignKeys, kForeignKeysSql},
    {"sp_statistics", kStatisticsParameters, kStatistics, kStatisticsSql},
    {"sp_special_columns", kSpecialParameters, kSpecialColumns, kSpecialColumnsSql},
    {"sp_stored_procedures", kProceduresParameters, kProcedures, kProceduresSql},
    {"sp_sproc_columns", kArgumentsParameters, kArguments, kArgumentsSql},
    {"sp_datatype_info", kTypesParameters, kTypes, kTypesSql},
    {"sp_datatype_info_100", kTypesParameters, kTypes, kTypesSql},
    {"sp_databases", {}, kDatabases, kDatabasesSql},
    {"sp_helptext", kTextParameters, kTexts, kTextSql},
};

}  // namespace

const CatalogProcedure* FindCatalogProcedure(std::string_view name) {
    const auto* const known = std::ranges::find_if(
        kCatalogProcedures, [&](const CatalogProcedure& each) { return EqualWords(each.name, name); });
    return known != std::end(kCatalogProcedures) ? known : nullptr;
}

}  // namespace tk::test::tds
