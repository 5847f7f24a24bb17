// end_to_end.h - what the behaviour suite for real databases has to know about one of them.
//
// The suite (end_to_end_test.cpp) is built once for each database system; a program defines TheSystem().
#pragma once

#include <string>

namespace tk::test {

struct System {
    std::string connection;      // a database the tests may do with as they like
    const char* dbmsName;        // what the property says
    const char* tag;             // its first three characters
    const char* createStock;     // id, name, price, amount, total, made, note, sold
    const char* unknownTable;    // a part of the driver's text about a table that does not exist
    const char* duplicateKey;    // a part of its text about a primary key that exists already
    std::string odbcDataSource;  // the entry "stock" of an odbc.ini, without its heading
    const char* dataSourceUser;
    const char* dataSourcePassword;
    bool hasSeveralResults;  // two statements in one text
    bool tellsNotNull;       // of the columns of a query
};

/// Made at the first call; fails the program when the system cannot be had.
const System& TheSystem();

}  // namespace tk::test
