// tools/tkdb/table_maker.h - the statements that make a table of one data source anew in another.
#pragma once

#include <tkkernel/tkkernel.h>

#include <string>
#include <vector>

namespace tk::tools {

/// GBK, ready to be executed on the target.
struct TableScripts {
    std::string name;  // of the table in the target
    std::string made;  // ... until it is whole: another one where making a table cannot be undone
    std::string create;
    std::vector<std::string> indexes;  // to be executed when the rows are there
    std::vector<std::string> leftOut;  // names of indexes that need more than columns: of some rows, of expressions
};

/// Between two of the four systems that the library writes scripts for: its own script, converted, in capitals.
/// To a database system of another kind: the columns by their types, names as they are.
/// @param scripts  filled
/// @return "" or why not
CString MakeScripts(CTDatabase& source, const std::string& table, CTDatabase& target, TableScripts& scripts);

}  // namespace tk::tools
