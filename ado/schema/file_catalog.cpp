#include "ado/schema/file_catalog.h"

#include "ado/cursor/text.h"
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

Value TextCell(const std::optional<std::u16string>& text) {
    return text ? Value::Text(*text) : Value::Null();
}
Value NumberCell(long long number) {
    return Value(static_cast<LONG>(number));
}

/// Cells numbered as the catalog function numbers them; NULL unless set.
class RowMaker {
public:
    explicit RowMaker(std::size_t columns) : cells_(columns, Value::Null()) {}
    RowMaker& Set(std::size_t column, Value value) {
        cells_[column - 1] = std::move(value);
        return *this;
    }
    CatalogRow Take() { return CatalogRow(std::move(cells_)); }

private:
    std::vector<Value> cells_;
};

/// By ODBC's numbers.
int RuleNumber(const std::optional<std::u16string>& rule) {
    static constexpr struct {
        std::u16string_view text;
        int number;
    } kRules[] = {{u"CASCADE", 0}, {u"RESTRICT", 1}, {u"SET NULL", 2}, {u"SET DEFAULT", 4}};
    for (const auto& row : kRules) {
        if (rule && SameName(*rule, row.text)) return row.number;
    }
    return 3;
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
    SelectRows(session, "select count(*) from sqlite_master");
}

CatalogRows FileTables(const std::shared_ptr<Session>& session, const std::string& table) {
    enum Answer : std::size_t { kTable = 1, kKind };
    std::string sql =
        "select name, case when substr(name, 1, 7) = 'sqlite_' then 'SYSTEM TABLE' else upper(type) end "
        "from sqlite_master where type in ('table', 'view')";
    if (!table.empty()) sql += " and name = " + Quoted(table);
    CatalogRows rows;
    for (const CatalogRow& answer : SelectRows(session, sql)) {
        rows.push_back(RowMaker(5).Set(3, TextCell(answer.Text(kTable))).Set(4, TextCell(answer.Text(kKind))).Take());
    }
    return rows;
}

CatalogRows FileColumns(const std::shared_ptr<Session>& session, const std::string& table) {
    enum Answer : std::size_t { kTable = 1, kOrdinal, kName, kType, kNotNull, kDefault, kKey };
    std::string sql =
        "select m.name, c.cid, c.name, c.type, c.\"notnull\", c.dflt_value, c.pk "
        "from sqlite_master m join pragma_table_xinfo(m.name) c "
        "where m.type in ('table', 'view') and c.hidden <> 1";
    if (!table.empty()) sql += " and m.name = " + Quoted(table);
    sql += " order by m.name, c.cid";
    CatalogRows rows;
    for (const CatalogRow& answer : SelectRows(session, sql)) {
        const std::string declaration = ToUtf8(answer.Text(kType).value_or(u""));
        const DeclaredType type = ReadDeclaredType(declaration);
        const bool isKey = answer.Number(kKey).value_or(0) != 0;
        const bool isNullable = answer.Number(kNotNull).value_or(0) == 0 && !(isKey && type.sqlType == SQL_INTEGER);
        const long long size = IsLongType(type.sqlType) ? kLongest : type.size;
        // A character takes up to four bytes.
        const long long octets = IsTextType(type.sqlType) ? 4LL * size : size;
        rows.push_back(RowMaker(18)
                           .Set(3, TextCell(answer.Text(kTable)))
                           .Set(4, TextCell(answer.Text(kName)))
                           .Set(5, NumberCell(type.sqlType))
                           .Set(6, Value::Text(ToUtf16(declaration)))
                           .Set(7, NumberCell(size))
                           .Set(9, NumberCell(type.digits))
                           .Set(11, NumberCell(isNullable ? 1 : 0))
                           .Set(13, TextCell(answer.Text(kDefault)))
                           .Set(16, NumberCell(octets > kLongest ? kLongest : octets))
                           .Set(17, NumberCell(answer.Number(kOrdinal).value_or(0) + 1))
                           .Set(18, Value::Text(isNullable ? u"YES" : u"NO"))
                           .Take());
    }
    return rows;
}

CatalogRows FilePrimaryKeys(const std::shared_ptr<Session>& session, const std::string& table) {
    enum Answer : std::size_t { kTable = 1, kName, kKey };
    CatalogRows rows;
    for (const CatalogRow& answer :
         SelectRows(session,
                    "select m.name, c.name, c.pk from sqlite_master m join pragma_table_xinfo(m.name) c "
                    "where m.type = 'table' and c.pk > 0 and m.name = " +
                        Quoted(table) + " order by c.pk")) {
        rows.push_back(RowMaker(6)
                           .Set(3, TextCell(answer.Text(kTable)))
                           .Set(4, TextCell(answer.Text(kName)))
                           .Set(5, NumberCell(answer.Number(kKey).value_or(1)))
                           .Take());
    }
    return rows;
}

CatalogRows FileForeignKeys(const std::shared_ptr<Session>& session, const std::string& table) {
    enum Answer : std::size_t { kTable = 1, kKey, kPart, kOther, kFrom, kTo, kUpdate, kDelete, kImplied };
    // A reference without columns means the key of the other table.
    std::string sql =
        "select m.name, f.id, f.seq, f.\"table\", f.\"from\", f.\"to\", f.on_update, f.on_delete, "
        "(select c.name from pragma_table_xinfo(f.\"table\") c where c.pk = f.seq + 1) "
        "from sqlite_master m join pragma_foreign_key_list(m.name) f where m.type = 'table'";
    if (!table.empty()) sql += " and m.name = " + Quoted(table);
    sql += " order by m.name, f.id, f.seq";
    CatalogRows rows;
    for (const CatalogRow& answer : SelectRows(session, sql)) {
        const auto column = answer.Text(kTo) ? answer.Text(kTo) : answer.Text(kImplied);
        // Keys have no names here; one made of table and number keeps the columns of a key together.
        const std::u16string name =
            u"FK_" + answer.Text(kTable).value_or(u"") + u"_" + NumberText(answer.Number(kKey).value_or(0));
        rows.push_back(RowMaker(14)
                           .Set(3, TextCell(answer.Text(kOther)))
                           .Set(4, TextCell(column))
                           .Set(7, TextCell(answer.Text(kTable)))
                           .Set(8, TextCell(answer.Text(kFrom)))
                           .Set(9, NumberCell(answer.Number(kPart).value_or(0) + 1))
                           .Set(10, NumberCell(RuleNumber(answer.Text(kUpdate))))
                           .Set(11, NumberCell(RuleNumber(answer.Text(kDelete))))
                           .Set(12, Value::Text(name))
                           .Set(14, NumberCell(7))
                           .Take());
    }
    return rows;
}

CatalogRows FileIndexes(const std::shared_ptr<Session>& session, const std::string& table) {
    enum Answer : std::size_t { kIndex = 1, kUnique, kPart, kName, kDescending };
    CatalogRows rows;
    for (const CatalogRow& answer : SelectRows(
             session, "select i.name, i.\"unique\", x.seqno, x.name, x.desc from pragma_index_list(" + Quoted(table) +
                          ") i join pragma_index_xinfo(i.name) x where x.key = 1 "
                          "order by i.name, x.seqno")) {
        constexpr int kOtherKind = 3;
        rows.push_back(RowMaker(13)
                           .Set(3, Value::Text(ToUtf16(table)))
                           .Set(4, NumberCell(answer.Number(kUnique).value_or(0) == 0 ? 1 : 0))
                           .Set(6, TextCell(answer.Text(kIndex)))
                           .Set(7, NumberCell(kOtherKind))
                           .Set(8, NumberCell(answer.Number(kPart).value_or(0) + 1))
                           .Set(9, TextCell(answer.Text(kName)))
                           .Set(10, Value::Text(answer.Number(kDescending).value_or(0) != 0 ? u"D" : u"A"))
                           .Take());
    }
    return rows;
}

}  // namespace tk::ado
