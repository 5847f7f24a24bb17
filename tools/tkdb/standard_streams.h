// tools/tkdb/standard_streams.h - what the commands print and complain of, and what becomes of it.
//
//   PrintText("1 row(s)\n");
//   ComplainText("cannot read a.sql");   // "tkdb: cannot read a.sql"
//   return FinishOutput(code);           // once, when the command is done
//
// Printing does not fail: that output is lost is told at the end, so that the work on a database goes on. With values
// in the texts: print.h. Nothing of fmt is here, which does not compile where literals are GBK.
#pragma once

#include <string_view>

namespace tk::tools {

/// Writes to standard output; nothing else of the program does.
void PrintText(std::string_view text) noexcept;

/// Writes what still waits, for a reader who is to see it now.
void FlushOutput() noexcept;

/// Writes a line to standard error, behind the program's name.
void ComplainText(std::string_view text) noexcept;

/// Whether some of the output could not be written so far, so that more of it is of no use.
bool IsOutputLost() noexcept;

/// Flushes, and tells the reason when some of the output could not be written; without a word when its
/// reader went away.
/// @param code  of the command
/// @return kNotWritten for a command that succeeded and whose output is lost; else the code
int FinishOutput(int code);

}  // namespace tk::tools
