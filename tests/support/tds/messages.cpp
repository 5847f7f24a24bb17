#include "support/tds/messages.h"

#include <sqlite3.h>

#include <string_view>

namespace tk::test::tds {
namespace {

constexpr std::uint8_t kLoginLevel = 14;
constexpr std::uint8_t kKeyLevel = 14;
constexpr std::uint8_t kSyntaxLevel = 15;

/// What stands between two texts; empty when they are not there.
std::string Between(std::string_view text, std::string_view before, std::string_view after) {
    const std::size_t start = text.find(before);
    if (start == std::string_view::npos) return {};
    const std::string_view rest = text.substr(start + before.size());
    return std::string(after.empty() ? rest : rest.substr(0, rest.find(after)));
}

SqlError OfStatement(SqlError error) {
    error.endsBatch = false;
    return error;
}

SqlError ConstraintError(sqlite3* database, std::string_view text) {
    const std::string column = Between(text, "failed: ", "");
    const std::string table = column.substr(0, column.find('.'));
    switch (sqlite3_extended_errcode(database)) {
        case SQLITE_CONSTRAINT_PRIMARYKEY:
        case SQLITE_CONSTRAINT_ROWID:
            return OfStatement(
                {2627, "违反了 PRIMARY KEY 约束。不能在对象 'dbo." + table + "' 中插入重复键。", kKeyLevel});
        case SQLITE_CONSTRAINT_UNIQUE:
            return OfStatement({2601, "不能在具有唯一索引的对象 'dbo." + table + "' 中插入重复键的行。", kKeyLevel});
        case SQLITE_CONSTRAINT_NOTNULL:
            return OfStatement({515, "不能将值 NULL 插入列 '" + column.substr(table.empty() ? 0 : table.size() + 1) +
                                         "'，表 'dbo." + table + "'；列不允许有 Null 值。语句失败。"});
        case SQLITE_CONSTRAINT_FOREIGNKEY:
            return OfStatement({547, "语句与 FOREIGN KEY 约束冲突。语句已终止。"});
        case SQLITE_CONSTRAINT_CHECK:
            return OfStatement({547, "语句与 CHECK 约束 \"" + column + "\" 冲突。语句已终止。"});
        default:
            return OfStatement({50000, std::string(text)});
    }
}

struct Pattern {
    std::string_view before;
    std::string_view after;
    std::int32_t number;
    std::uint8_t level;
    const char* head;
    const char* tail;
};

constexpr Pattern kPatterns[] = {
    {"no such table: ", "", 208, 16, "对象名 '", "' 无效。"},
    {"no such object: ", "", 15009, 16, "数据库 'test' 中不存在对象 '", "'，或该对象对于此操作无效。"},
    {"no such view: ", "", 208, 16, "对象名 '", "' 无效。"},
    {"no such column: ", "", 207, 16, "列名 '", "' 无效。"},
    {" has no column named ", "", 207, 16, "列名 '", "' 无效。"},
    {"no such function: ", "", 195, kSyntaxLevel, "'", "' 不是可以识别的内置函数名称。"},
    {"no such savepoint: ", "", 6401, 16, "无法回滚 ", "。找不到该名称的事务或保存点。"},
    {"table ", " already exists", 2714, 16, "数据库中已存在名为 '", "' 的对象。"},
    {"index ", " already exists", 1913, 16, "操作失败，因为已存在名称为 '", "' 的索引。"},
    {"near \"", "\": syntax error", 102, kSyntaxLevel, "'", "' 附近有语法错误。"},
    {"unrecognized token: \"", "\"", 102, kSyntaxLevel, "'", "' 附近有语法错误。"},
};

}  // namespace

SqlError LoginError(const std::string& user) {
    return {18456, "用户 '" + user + "' 登录失败。", kLoginLevel};
}
SqlError ConversionError() {
    return {245, "转换数据类型失败。"};
}
SqlError OverflowError() {
    return {8115, "将表达式转换为数据类型 numeric 时出现算术溢出错误。"};
}
SqlError TruncationError() {
    return {8152, "将截断字符串或二进制数据。"};
}
SqlError NoDatabaseError(const std::string& name) {
    return {911, "数据库 '" + name + "' 不存在。请确保正确地输入了该名称。"};
}
SqlError NoProcedureError(const std::string& name) {
    return {2812, "找不到存储过程 '" + name + "'。"};
}
SqlError NoHandleError(long long handle) {
    return {8179, "找不到句柄为 " + std::to_string(handle) + " 的已准备语句。"};
}
SqlError NoParameterError(const std::string& procedure, const std::string& parameter) {
    return {201, "过程或函数 '" + procedure + "' 需要参数 '" + parameter + "'，但未提供该参数。"};
}
SqlError SyntaxError(const std::string& near) {
    return {102, "'" + near + "' 附近有语法错误。", kSyntaxLevel};
}

SqlError ErrorOf(sqlite3* database) {
    const std::string text = sqlite3_errmsg(database);
    const int code = sqlite3_extended_errcode(database) & 0xFF;
    if (code == SQLITE_CONSTRAINT) return ConstraintError(database, text);
    if (code == SQLITE_BUSY || code == SQLITE_LOCKED) return OfStatement({1222, "已超过了锁请求超时时段。"});
    for (const Pattern& pattern : kPatterns) {
        if (text.find(pattern.before) == std::string::npos || text.find(pattern.after) == std::string::npos) continue;
        const std::string name = Between(text, pattern.before, pattern.after);
        return {pattern.number, pattern.head + name + pattern.tail, pattern.level};
    }
    if (text == "incomplete input") return SyntaxError("");
    return {50000, text};
}

}  // namespace tk::test::tds
