// The shape of every schema rowset: its columns, their types, how many restrictions it takes.
#include <gtest/gtest.h>

#include "database_test.h"

namespace tk::ado::test {
namespace {

using namespace recordset;

class SchemaShapeTest : public DatabaseTest {};

TEST_F(SchemaShapeTest, HasTheColumnsOfItsDescription) {
    static constexpr struct {
        LONG schema;
        const char* label;
        std::size_t restrictions;
        const char* columns;
    } kRows[] = {
        {1, "catalogs", 1, "CATALOG_NAME:202 DESCRIPTION:202"},
        {4, "columns", 4,
         "TABLE_CATALOG:202 TABLE_SCHEMA:202 TABLE_NAME:202 COLUMN_NAME:202 COLUMN_GUID:72 COLUMN_PROPID:19 "
         "ORDINAL_POSITION:19 COLUMN_HASDEFAULT:11 COLUMN_DEFAULT:202 COLUMN_FLAGS:19 IS_NULLABLE:11 DATA_TYPE:18 "
         "TYPE_GUID:72 CHARACTER_MAXIMUM_LENGTH:19 CHARACTER_OCTET_LENGTH:19 NUMERIC_PRECISION:18 NUMERIC_SCALE:2 "
         "DATETIME_PRECISION:19 CHARACTER_SET_CATALOG:202 CHARACTER_SET_SCHEMA:202 CHARACTER_SET_NAME:202 "
         "COLLATION_CATALOG:202 COLLATION_SCHEMA:202 COLLATION_NAME:202 DOMAIN_CATALOG:202 DOMAIN_SCHEMA:202 "
         "DOMAIN_NAME:202 DESCRIPTION:202"},
        {10, "table constraints", 7,
         "CONSTRAINT_CATALOG:202 CONSTRAINT_SCHEMA:202 CONSTRAINT_NAME:202 TABLE_CATALOG:202 TABLE_SCHEMA:202 "
         "TABLE_NAME:202 CONSTRAINT_TYPE:202 IS_DEFERRABLE:11 INITIALLY_DEFERRED:11 DESCRIPTION:202"},
        {12, "indexes", 5,
         "TABLE_CATALOG:202 TABLE_SCHEMA:202 TABLE_NAME:202 INDEX_CATALOG:202 INDEX_SCHEMA:202 INDEX_NAME:202 "
         "PRIMARY_KEY:11 UNIQUE:11 CLUSTERED:11 TYPE:18 FILL_FACTOR:3 INITIAL_SIZE:3 NULLS:3 SORT_BOOKMARKS:11 "
         "AUTO_UPDATE:11 NULL_COLLATION:3 ORDINAL_POSITION:19 COLUMN_NAME:202 COLUMN_GUID:72 COLUMN_PROPID:19 "
         "COLLATION:2 CARDINALITY:21 PAGES:3 FILTER_CONDITION:202"},
        {13, "column privileges", 6,
         "GRANTOR:202 GRANTEE:202 TABLE_CATALOG:202 TABLE_SCHEMA:202 TABLE_NAME:202 COLUMN_NAME:202 COLUMN_GUID:72 "
         "COLUMN_PROPID:19 PRIVILEGE_TYPE:202 IS_GRANTABLE:11"},
        {16, "procedures", 4,
         "PROCEDURE_CATALOG:202 PROCEDURE_SCHEMA:202 PROCEDURE_NAME:202 PROCEDURE_TYPE:2 PROCEDURE_DEFINITION:202 "
         "DESCRIPTION:202 DATE_CREATED:7 DATE_MODIFIED:7"},
        {17, "schemata", 3,
         "CATALOG_NAME:202 SCHEMA_NAME:202 SCHEMA_OWNER:202 DEFAULT_CHARACTER_SET_CATALOG:202 "
         "DEFAULT_CHARACTER_SET_SCHEMA:202 DEFAULT_CHARACTER_SET_NAME:202"},
        {20, "tables", 4,
         "TABLE_CATALOG:202 TABLE_SCHEMA:202 TABLE_NAME:202 TABLE_TYPE:202 TABLE_GUID:72 DESCRIPTION:202 "
         "TABLE_PROPID:19 DATE_CREATED:7 DATE_MODIFIED:7"},
        {22, "provider types", 2,
         "TYPE_NAME:202 DATA_TYPE:18 COLUMN_SIZE:19 LITERAL_PREFIX:202 LITERAL_SUFFIX:202 CREATE_PARAMS:202 "
         "IS_NULLABLE:11 CASE_SENSITIVE:11 SEARCHABLE:19 UNSIGNED_ATTRIBUTE:11 FIXED_PREC_SCALE:11 "
         "AUTO_UNIQUE_VALUE:11 LOCAL_TYPE_NAME:202 MINIMUM_SCALE:2 MAXIMUM_SCALE:2 GUID:72 TYPELIB:202 VERSION:202 "
         "IS_LONG:11 BEST_MATCH:11"},
        {23, "views", 3,
         "TABLE_CATALOG:202 TABLE_SCHEMA:202 TABLE_NAME:202 VIEW_DEFINITION:202 CHECK_OPTION:11 IS_UPDATABLE:11 "
         "DESCRIPTION:202 DATE_CREATED:7 DATE_MODIFIED:7"},
        {26, "procedure parameters", 4,
         "PROCEDURE_CATALOG:202 PROCEDURE_SCHEMA:202 PROCEDURE_NAME:202 PARAMETER_NAME:202 ORDINAL_POSITION:18 "
         "PARAMETER_TYPE:18 PARAMETER_HASDEFAULT:11 PARAMETER_DEFAULT:202 IS_NULLABLE:11 DATA_TYPE:18 "
         "CHARACTER_MAXIMUM_LENGTH:19 CHARACTER_OCTET_LENGTH:19 NUMERIC_PRECISION:18 NUMERIC_SCALE:2 DESCRIPTION:202 "
         "TYPE_NAME:202 LOCAL_TYPE_NAME:202"},
        {27, "foreign keys", 6,
         "PK_TABLE_CATALOG:202 PK_TABLE_SCHEMA:202 PK_TABLE_NAME:202 PK_COLUMN_NAME:202 PK_COLUMN_GUID:72 "
         "PK_COLUMN_PROPID:19 FK_TABLE_CATALOG:202 FK_TABLE_SCHEMA:202 FK_TABLE_NAME:202 FK_COLUMN_NAME:202 "
         "FK_COLUMN_GUID:72 FK_COLUMN_PROPID:19 ORDINAL:19 UPDATE_RULE:202 DELETE_RULE:202 PK_NAME:202 FK_NAME:202 "
         "DEFERRABILITY:2"},
        {28, "primary keys", 3,
         "TABLE_CATALOG:202 TABLE_SCHEMA:202 TABLE_NAME:202 COLUMN_NAME:202 COLUMN_GUID:72 COLUMN_PROPID:19 ORDINAL:19 "
         "PK_NAME:202"},
        {29, "procedure columns", 4,
         "PROCEDURE_CATALOG:202 PROCEDURE_SCHEMA:202 PROCEDURE_NAME:202 COLUMN_NAME:202 COLUMN_GUID:72 "
         "COLUMN_PROPID:19 ROWSET_NUMBER:19 ORDINAL_POSITION:19 IS_NULLABLE:11 DATA_TYPE:18 TYPE_GUID:72 "
         "CHARACTER_MAXIMUM_LENGTH:19 CHARACTER_OCTET_LENGTH:19 NUMERIC_PRECISION:18 NUMERIC_SCALE:2 DESCRIPTION:202"},
    };
    const Object connection = Connect();
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        const Outcome outcome = connection.Call(connection::kOpenSchema, {Number(row.schema)});
        ASSERT_TRUE(outcome.Ok()) << outcome;
        const Object rows = outcome.Result();
        EXPECT_EQ(rows.Get(kLockType).Long(), 1);
        const Object fields = rows.Get(kFields).Result();
        std::string columns;
        for (LONG i = 0; i < fields.Get(collection::kCount).Long(); ++i) {
            const Object field = fields.Get(collection::kItem, {Number(i)}).Result();
            columns += (i == 0 ? "" : " ") + field.Get(field::kName).Utf8() + ":" +
                       std::to_string(field.Get(field::kType).Long());
        }
        EXPECT_EQ(columns, row.columns);
        const auto ask = [&](std::size_t restrictions) {
            return connection
                .Call(connection::kOpenSchema, {Number(row.schema), Array(std::vector<Value>(restrictions))})
                .Error();
        };
        EXPECT_EQ(ask(row.restrictions), 0u);
        EXPECT_EQ(ask(row.restrictions + 1), 3001u);
    }
}

TEST_F(SchemaShapeTest, IsOfferedForNoOtherNumber) {
    const Object connection = Connect();
    for (LONG schema = -1; schema < 45; ++schema) {
        const bool isOffered = (schema >= 26 && schema <= 29) || schema == 1 || schema == 4 || schema == 10 ||
                               schema == 12 || schema == 13 || schema == 16 || schema == 17 || schema == 20 ||
                               schema == 22 || schema == 23;
        EXPECT_EQ(connection.Call(connection::kOpenSchema, {Number(schema)}).Error(), isOffered ? 0u : 3251u) << schema;
    }
}

}  // namespace
}  // namespace tk::ado::test
