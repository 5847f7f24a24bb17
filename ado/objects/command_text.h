// ado/objects/command_text.h - from a command and its options to the SQL that is sent.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

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

struct Command {
    std::string sql;  // UTF-8
    bool asynchronousFetch = false;
    bool noRecords = false;
};

/// @param options  -1 or 0: nothing said
/// @throws AdoError 3001 for kinds that contradict each other, 3251 for what is not offered
Command MakeCommand(std::u16string_view text, LONG options);

}  // namespace tk::ado
