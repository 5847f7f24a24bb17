// ado/objects/command_text.h - from a command and its options to the SQL that is sent.
#pragma once

#include <windows.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ado/odbc/session.h"

namespace tk::ado {

/// CommandTypeEnum and ExecuteOptionEnum, both in one number.
enum CommandOption : LONG {
    kCommandText = 1,
    kCommandTable = 2,
    kCommandStoredProc = 4,
    kCommandUnknown = 8,
    kCommandFile = 0x100,
    kCommandTableDirect = 0x200,
    kExecuteAsync = 0x10,
    kFetchAsync = 0x20,
    kFetchNonBlocking = 0x40,
    kExecuteNoRecords = 0x80,
};

/// ParameterDirectionEnum.
enum ParameterDirection : LONG {
    kDirectionUnknown = 0,
    kDirectionInput = 1,
    kDirectionOutput = 2,
    kDirectionInputOutput = 3,
    kDirectionReturnValue = 4
};

struct Command {
    enum class Kind : unsigned char { Text, Table, Procedure };
    Kind kind = Kind::Text;
    std::string text;  // UTF-8: the statement, or the name
    bool asynchronousFetch = false;
    bool noRecords = false;
};

/// @param options  -1 or 0: nothing said
/// @throws AdoError 3001 for kinds that contradict each other, 3251 for what is not offered
Command MakeCommand(std::u16string_view text, LONG options);

/// True for a text that is one name, bare or in quotes.
bool IsSingleName(std::u16string_view text);

/// A table's name, bare or in double quotes, as a statement on a session's database has it.
std::string TableName(const std::string& name, const Session& session);

/// What is sent for a command, and which of its parameters go where.
struct CommandSql {
    std::string text;
    std::vector<std::size_t> marks;    // the parameter of each mark
    std::vector<std::size_t> fromRow;  // the parameters that the first row of the result gives values to
};

/// The text of a command on a session's database: a quoted name in the quotes of that database, a call in its form.
/// @param directions  of the command's parameters, in their order
/// @throws AdoError when the database cannot be asked
CommandSql SqlOf(const Command& command, Session& session, std::span<const LONG> directions = {});

}  // namespace tk::ado
