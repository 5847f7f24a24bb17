#include "ado/schema/file_catalog.h"

#include "ado/odbc/ascii.h"
#include "ado/odbc/odbc_api.h"
#include "ado/schema/declared_type.h"

namespace tk::ado {
namespace {

/// A text as a literal.
std::string Quoted(std::string_view text) {
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? std::string("''") : std::string(1, c);
    return quoted + "'";
}

/// The one table or view of exactly this name, as a row of name and type. Much quicker than a look through
/// sqlite_master, which is as long as the schema.
std::string TableNamed(const std::string& name) {
    const std::string literal = Quoted(name);
    return "(select name, type from pragma_table_list(" + literal + ") where schema = 'main' and name = " + literal +
           " and name not in ('sqlite_master', 'sqlite_schema'))";
}

/// By ODBC's numbers.
int RuleNumber(const std::optional<std::string_view>& rule) {
    static constexpr struct {
        std::string_view text;
        int number;
    } kRules[] = {{"CASCADE", 0}, {"RESTRICT", 1}, {"SET NULL", 2}, {"SET DEFAULT", 4}};
    for (const auto& row : kRules) {
        if (rule && EqualsNoCase(*rule, row.text)) return row.number;
    }
    return 3;
}

/// What stands behind WHERE in the text of an index.
std::optional<std::string_view> ConditionOf(const std::optional<std::string_view>& text) {
    constexpr std::string_view kWord = "WHERE";
    if (!text) return std::nullopt;
    const auto isPartOfName = [](char c) { return IsOfWord(c) || c == '$'; };
    char quote = '\0';
    int depth = 0;
    for (std::size_t i = 0; i < text->size(); ++i) {
        const char c = (*text)[i];
        if (quote != '\0') {
            if (c == quote) quote = '\0';
        } else if (c == '"' || c == '\'' || c == '`' || c == '[') {
            quote = c == '[' ? ']' : c;
        } else if (c == '(' || c == ')') {
            depth += c == '(' ? 1 : -1;
        } else if (depth == 0 && i > 0 && !isPartOfName((*text)[i - 1]) && StartsWithNoCase(text->substr(i), kWord) &&
                   (i + kWord.size() == text->size() || !isPartOfName((*text)[i + kWord.size()]))) {
            return Trim(text->substr(i + kWord.size()));
        }
    }
    return std::nullopt;
}

bool IsTextType(int type) {
    return type == SQL_CHAR || type == SQL_VARCHAR || type == SQL_LONGVARCHAR || type == SQL_WCHAR ||
           type == SQL_WVARCHAR || type == SQL_WLONGVARCHAR;
}

/// Texts and bytes without a declared length: they have that of their type.
bool IsLongType(int type) {
    return type == SQL_LONGVARCHAR || type == SQL_WLONGVARCHAR || type == SQL_LONGVARBINARY;
}
constexpr long long kLongest = 2147483647;

}  // namespace

bool AsksFiles(const Session& session) {
    return session.Profile().keySource == KeySource::Pragma;
}

void ExpectReadableFile(const std::shared_ptr<Session>& session) {
    SelectRows(session, "select 1 from sqlite_master limit 1", {});
}

CatalogRows FileTables(const std::shared_ptr<Session>& session, const std::string& table) {
    constexpr std::size_t kName = 3, kType = 4;
    std::string sql =
        "select name, case when substr(name, 1, 7) = 'sqlite_' then 'SYSTEM TABLE' else upper(type) end "
        "from sqlite_master where type in ('table', 'view')";
    if (!table.empty()) sql += " and name = " + Quoted(table);
    return SelectRows(session, sql, {kName, kType});
}

CatalogRows FileColumns(const std::shared_ptr<Session>& session, const std::string& table) {
    // As SQLColumns numbers them; behind those what the others are made of.
    enum Column : std::size_t {
        kTable = 3,
        kName,
        kSqlType,
        kTypeName,
        kSize,
        kDigits = 9,
        kNullable = 11,
        kDefault = 13,
        kOctets = 16,
        kOrdinal,
        kIsNullable,
        kNotNull = 20,
        kKey
    };
    const std::string sql =
        "select m.name, c.name, c.type, c.dflt_value, c.cid + 1, c.\"notnull\", c.pk from " +
        (table.empty() ? std::string("(select name from sqlite_master where type in ('table', 'view') order by name)")
                       : TableNamed(table)) +
        " m join pragma_table_xinfo(m.name, 'main') c where c.hidden <> 1";
    CatalogRows rows = SelectRows(session, sql, {kTable, kName, kTypeName, kDefault, kOrdinal, kNotNull, kKey});
    for (CatalogRow& row : rows) {
        const DeclaredType type = ReadDeclaredType(row.Text(kTypeName).value_or(""));
        const bool isKey = row.Number(kKey).value_or(0) != 0;
        const bool isNullable = row.Number(kNotNull).value_or(0) == 0 && !(isKey && type.sqlType == SQL_INTEGER);
        const long long size = IsLongType(type.sqlType) ? kLongest : type.size;
        // A character takes up to four bytes.
        const long long octets = IsTextType(type.sqlType) ? 4LL * size : size;
        row.Set(kSqlType, SchemaValue::Number(type.sqlType));
        row.Set(kSize, SchemaValue::Number(size));
        row.Set(kDigits, SchemaValue::Number(type.digits));
        row.Set(kNullable, SchemaValue::Number(isNullable ? 1 : 0));
        row.Set(kOctets, SchemaValue::Number(octets > kLongest ? kLongest : octets));
        row.Set(kIsNullable, SchemaValue::Text(isNullable ? "YES" : "NO"));
    }
    return rows;
}

CatalogRows FilePrimaryKeys(const std::shared_ptr<Session>& session, const std::string& table) {
    constexpr std::size_t kTable = 3, kName = 4, kPlace = 5;
    return SelectRows(session,
                      "select m.name, c.name, c.pk from " + TableNamed(table) +
                          " m join pragma_table_xinfo(m.name, 'main') c where m.type <> 'view' and c.pk > 0 "
                          "order by c.pk",
                      {kTable, kName, kPlace});
}

CatalogRows FileForeignKeys(const std::shared_ptr<Session>& session, const std::string& table) {
    // As SQLForeignKeys numbers them; behind those what the others are made of.
    enum Column : std::size_t {
        kOther = 3,
        kTo,
        kTable = 7,
        kFrom,
        kPlace,
        kUpdate,
        kDelete,
        kName,
        kDeferrability = 14,
        kKey = 20,
        kUpdateText,
        kDeleteText
    };
    constexpr int kNotDeferrable = 7;
    // A reference without columns means the key of the other table.
    std::string sql =
        "select f.\"table\", coalesce(f.\"to\", (select c.name from pragma_table_xinfo(f.\"table\") c where "
        "c.pk = f.seq + 1)), m.name, f.\"from\", f.seq + 1, f.id, f.on_update, f.on_delete "
        "from sqlite_master m join pragma_foreign_key_list(m.name) f where m.type = 'table'";
    if (!table.empty()) sql += " and m.name = " + Quoted(table);
    sql += " order by m.name, f.id, f.seq";
    CatalogRows rows = SelectRows(session, sql, {kOther, kTo, kTable, kFrom, kPlace, kKey, kUpdateText, kDeleteText});
    for (CatalogRow& row : rows) {
        row.Set(kUpdate, SchemaValue::Number(RuleNumber(row.Text(kUpdateText))));
        row.Set(kDelete, SchemaValue::Number(RuleNumber(row.Text(kDeleteText))));
        // Keys have no names here; one made of table and number keeps the columns of a key together.
        row.SetMadeText(kName, "FK_" + std::string(row.Text(kTable).value_or("")) + "_" +
                                   std::to_string(row.Number(kKey).value_or(0)));
        row.Set(kDeferrability, SchemaValue::Number(kNotDeferrable));
    }
    return rows;
}

CatalogRows FileIndexes(const std::shared_ptr<Session>& session, const std::string& table) {
    // As SQLStatistics numbers them; behind those what others are made of.
    enum Column : std::size_t {
        kTable = 3,
        kNonUnique,
        kIndex = 6,
        kKind,
        kPlace,
        kName,
        kSequence,
        kFilter = 13,
        kIsPrimary = 20,
        kText = 22
    };
    constexpr int kOtherKind = 3;
    CatalogRows rows = SelectRows(
        session,
        "select m.name, i.\"unique\" = 0, i.name, x.seqno + 1, x.name, iif(x.desc, 'D', 'A'), i.origin = 'pk', "
        "iif(i.partial, (select sql from sqlite_master s where s.type = 'index' and s.name = i.name), null) from " +
            TableNamed(table) +
            " m join pragma_index_list(m.name, 'main') i join pragma_index_xinfo(i.name, 'main') x where x.key = 1 "
            "order by i.name, x.seqno",
        {kTable, kNonUnique, kIndex, kPlace, kName, kSequence, kIsPrimary, kText});
    for (CatalogRow& row : rows) {
        row.Set(kKind, SchemaValue::Number(kOtherKind));
        row.Set(kFilter, SchemaValue::Of(ConditionOf(row.Text(kText))));
    }
    return rows;
}

}  // namespace tk::ado
