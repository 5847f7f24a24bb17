#include "support/tds/sql_functions.h"

#include <sqlite3.h>

#include <algorithm>

#include "support/tds/declared_type.h"
#include "support/tds/words.h"

namespace tk::test::tds {
namespace {

using Context = sqlite3_context;
using Values = sqlite3_value**;

std::string TextOf(sqlite3_value* value) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
    return text == nullptr ? "" : text;
}

void GiveText(Context* context, std::string_view text) {
    sqlite3_result_text(context, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

const ServerSettings& SettingsOf(Context* context) {
    return *static_cast<const ServerSettings*>(sqlite3_user_data(context));
}

void DatabaseName(Context* context, int, Values) {
    GiveText(context, SettingsOf(context).database);
}
void UserName(Context* context, int, Values) {
    GiveText(context, "dbo");
}
void LoginName(Context* context, int, Values) {
    GiveText(context, SettingsOf(context).user);
}
void Version(Context* context, int, Values) {
    GiveText(context, "Microsoft SQL Server 2019 (RTM) - 15.0.2000.5 (X64)");
}
void ServerName(Context* context, int, Values) {
    GiveText(context, "TDSTEST");
}
void LastIdentity(Context* context, int, Values) {
    sqlite3_result_int64(context, sqlite3_last_insert_rowid(sqlite3_context_db_handle(context)));
}
void TransactionCount(Context* context, int, Values) {
    sqlite3_result_int(context, sqlite3_get_autocommit(sqlite3_context_db_handle(context)) == 0 ? 1 : 0);
}
void One(Context* context, int, Values) {
    sqlite3_result_int(context, 1);
}

void Like(Context* context, int, Values values) {
    const std::string pattern = TextOf(values[0]);
    sqlite3_result_int(context, pattern.empty() || IsLike(pattern, TextOf(values[1])) ? 1 : 0);
}

void Type(Context* context, int, Values values) {
    const DeclaredType type = ReadDeclaredType(TextOf(values[0]));
    const std::string what = TextOf(values[1]);
    const int odbcType = type.name->odbcType;
    const bool isMoment = type.IsMoment();
    // A length without limit changes the kind of text.
    const bool isMax = type.length == kMax && type.name->unit != 0;
    constexpr int kDateTime = 9;
    if (what == "name") return GiveText(context, type.name->name == "integer" ? "int" : type.name->name);
    if (what == "odbc") return sqlite3_result_int(context, odbcType);
    if (what == "precision") return sqlite3_result_int64(context, isMax ? 0 : type.Precision());
    if (what == "length") return sqlite3_result_int64(context, type.Bytes());
    if (what == "scale" && type.Scale() >= 0) return sqlite3_result_int(context, type.Scale());
    if (what == "radix" && type.Radix() > 0) return sqlite3_result_int(context, type.Radix());
    if (what == "sql") return sqlite3_result_int(context, isMoment ? kDateTime : odbcType);
    if (what == "sub" && isMoment) return sqlite3_result_int(context, odbcType - 90);
    if (what == "octets" && type.name->unit != 0) return sqlite3_result_int64(context, type.Bytes());
    if (what == "server") return sqlite3_result_int(context, type.name->serverType);
}

/// The names of the constraints of a table: the key's first, then those of the foreign keys.
std::vector<std::string> ConstraintNames(const std::string& sql) {
    std::vector<std::string> names(1);
    std::string given;
    int depth = 0;
    const std::vector<Word> words = WordsOf(sql);
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string_view word = words[i].text;
        if (word == "(") ++depth;
        if (word == ")") --depth;
        if (word == "," && depth == 1) given.clear();
        if (EqualWords(word, "constraint") && i + 1 < words.size()) given = words[i + 1].Plain();
        if (EqualWords(word, "primary")) names[0] = std::exchange(given, {});
        if (EqualWords(word, "references")) names.push_back(std::exchange(given, {}));
    }
    return names;
}

void KeyName(Context* context, int, Values values) {
    const std::vector<std::string> names = ConstraintNames(TextOf(values[0]));
    const auto number = static_cast<std::size_t>(sqlite3_value_int(values[1]));
    if (number < names.size() && !names[number].empty()) GiveText(context, names[number]);
}

void Missing(Context* context, int, Values values) {
    const std::string text = "no such object: " + TextOf(values[0]);
    sqlite3_result_error(context, text.c_str(), static_cast<int>(text.size()));
}

struct Function {
    const char* name;
    int arguments;
    void (*run)(Context*, int, Values);
};

constexpr Function kFunctions[] = {
    {"db_name", 0, &DatabaseName},
    {"user_name", 0, &UserName},
    {"schema_name", 0, &UserName},
    {"suser_sname", 0, &LoginName},
    {"suser_name", 0, &LoginName},
    {"tds_version", 0, &Version},
    {"tds_servername", 0, &ServerName},
    {"tds_identity", 0, &LastIdentity},
    {"scope_identity", 0, &LastIdentity},
    {"tds_spid", 0, &One},
    {"tds_like", 2, &Like},
    {"tds_type", 2, &Type},
    {"tds_missing", 1, &Missing},
    {"tds_key_name", 2, &KeyName},
    {"tds_trancount", 0, &TransactionCount},
};

// What sp_datatype_info tells, by the name of the type.
constexpr char kTypesTable[] =
    "create temp table tds_types (name, odbc, size, prefix, suffix, arguments, is_text, scale, radix, sql, sub, money)";
constexpr char kTypeRow[] =
    "insert into tds_types select n, tds_type(n, 'odbc'), coalesce(nullif(%u, 0), tds_type(n, 'precision')), %Q, %Q, "
    "%Q, "
    "%d, tds_type(n, 'scale'), tds_type(n, 'radix'), tds_type(n, 'sql'), tds_type(n, 'sub'), %d from (select %Q n)";

/// The largest length or precision of a type that is declared with one; 0: it is not.
unsigned LargestSize(const TypeName& type) {
    constexpr unsigned kMostBytes = 8000, kMostDigits = 38;
    if (type.arguments == nullptr) return 0;
    if (type.unit != 0) return kMostBytes / type.unit;
    return type.token == Token::Decimal || type.token == Token::Numeric ? kMostDigits : 0;
}

/// Without the names that only SQLite has.
void FillTypes(sqlite3* database) {
    sqlite3_exec(database, kTypesTable, nullptr, nullptr, nullptr);
    for (const TypeName& type : AllTypeNames()) {
        if (type.name == "integer" || type.name == "double" || type.name == "blob") continue;
        const bool isQuoted = type.prefix != nullptr && std::string_view(type.prefix).ends_with('\'');
        char* const sql = sqlite3_mprintf(kTypeRow, LargestSize(type), type.prefix, isQuoted ? "'" : nullptr,
                                          type.arguments, isQuoted && type.unit != 0 ? 1 : 0,
                                          type.token == Token::Money ? 1 : 0, std::string(type.name).c_str());
        sqlite3_exec(database, sql, nullptr, nullptr, nullptr);
        sqlite3_free(sql);
    }
}

/// The size of the first character, its escapes with it, and what it stands for; an empty one stands for any.
struct PatternPart {
    std::size_t size;
    std::string_view character;
};

std::size_t CharacterSize(std::string_view text) {
    std::size_t size = 1;
    while (size < text.size() && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80)
        ++size;
    return size;
}

PatternPart FirstPart(std::string_view pattern) {
    if (pattern[0] == '_') return {1, {}};
    if (pattern[0] == '\\' && pattern.size() > 1) {
        const std::size_t size = CharacterSize(pattern.substr(1));
        return {size + 1, pattern.substr(1, size)};
    }
    if (pattern[0] == '[' && pattern.size() > 2 && pattern[2] == ']') return {3, pattern.substr(1, 1)};
    const std::size_t size = CharacterSize(pattern);
    return {size, pattern.substr(0, size)};
}

}  // namespace

bool IsLike(std::string_view pattern, std::string_view text) {
    std::string_view patternAfterStar;
    std::string_view textAfterStar;
    bool hasStar = false;
    for (;;) {
        if (!pattern.empty() && pattern[0] == '%') {
            pattern.remove_prefix(1);
            patternAfterStar = pattern;
            textAfterStar = text;
            hasStar = true;
            continue;
        }
        if (text.empty()) return pattern.empty();
        const std::size_t size = CharacterSize(text);
        if (!pattern.empty()) {
            const PatternPart part = FirstPart(pattern);
            if (part.character.empty() || EqualWords(part.character, text.substr(0, size))) {
                pattern.remove_prefix(part.size);
                text.remove_prefix(size);
                continue;
            }
        }
        if (!hasStar || textAfterStar.empty()) return false;
        textAfterStar.remove_prefix(CharacterSize(textAfterStar));
        pattern = patternAfterStar;
        text = textAfterStar;
    }
}

bool IsGivenName(sqlite3_stmt* statement, std::string_view name) {
    const std::vector<Word> words = WordsOf(sqlite3_sql(statement));
    // What names itself is the text of an expression, which is no word behind AS or another expression.
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (words[i].Plain() != name || words[i - 1].text == "." || words[i - 1].text == ",") continue;
        if (!EqualWords(words[i - 1].text, "select") && words[i - 1].text != "(") return true;
    }
    return false;
}

void AddFunctions(sqlite3* database, const ServerSettings& settings) {
    auto* data = const_cast<ServerSettings*>(&settings);
    for (const Function& function : kFunctions) {
        sqlite3_create_function_v2(database, function.name, function.arguments, SQLITE_UTF8, data, function.run,
                                   nullptr, nullptr, nullptr);
    }
    FillTypes(database);
}

}  // namespace tk::test::tds
