// warehouse_run.h - the warehouse program, run as a user does.
#pragma once

#include <gtest/gtest.h>

#include "tests/examples/program_run.h"

namespace tk::test {

struct Outcome {
    int code = -1;
    std::string output;
};

/// The program's command line; both of its outputs come in one.
inline std::string Warehouse(const std::string& arguments) {
    return "\"" + std::string(WAREHOUSE_PROGRAM) + "\" " + arguments + " 2>&1";
}

/// The path of one of the program's data files, in quotes.
inline std::string Data(const std::string& name) {
    return '"' + std::string(WAREHOUSE_DATA) + name + '"';
}

inline Outcome RunWarehouse(const std::string& arguments) {
    ProgramRun run(Warehouse(arguments));
    Outcome outcome;
    outcome.output = run.Rest();
    outcome.code = run.Wait();
    return outcome;
}

}  // namespace tk::test
