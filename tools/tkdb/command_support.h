// tools/tkdb/command_support.h - what every command needs: a connection, and a way to say why not.
#pragma once

#include <tkkernel/tkkernel.h>

#include <string>
#include <system_error>
#include <vector>

namespace tk::tools {

/// Exit codes of the program.
enum ExitCode {
    kSuccess = 0,
    kDatabaseRefused = 1,
    kWrongUsage = 2,
    kNotWritten = 3,    // a file or standard output
    kInterrupted = 130  // what a shell reports for a program that was stopped at the keyboard
};

/// Prints the reason. @return the exit code for it
int Refuse(const CString& error);
/// The same for an exception, which is deleted.
int Refuse(CException* e);

/// Prints that a file, or something else that takes output, could not be written. @return the exit code for it
int Unwritable(const std::string& what, const std::string& reason);
/// The same for an error of the system.
int Unwritable(const std::string& what, const std::error_code& error);

/// @param connection  in the terminal's character set
bool OpenDatabase(CTDatabase& database, const std::string& connection);

/// The names of the columns, in UTF-8; lets exceptions pass.
std::vector<std::string> ColumnNames(CTRecordset& records);

}  // namespace tk::tools
