// ado/objects/execution.h - something that can be run on a connection, once or again: a text, or a Command object.
#pragma once

#include <functional>
#include <memory>

#include "ado/objects/command_text.h"
#include "ado/odbc/session.h"
#include "ado/rowset/row_set.h"

namespace tk::ado {

struct Execution {
    /// @param limit  rows wanted at most, 0 for all
    std::function<Statement(Session& session, LONG limit)> run;

    /// Takes output values once the first result is there; empty when there are none.
    /// @param rows  of the first result; null when it has none
    std::function<void(RowSet* rows, const ParameterOutputs* outputs)> takeOutputs;

    bool asynchronousFetch = false;
    bool noRecords = false;
};

/// The execution of a text without parameters.
Execution MakeExecution(Command command, LONG timeoutSeconds);

/// What an execution gave: rows, or the statement that may have more results.
struct Executed {
    std::shared_ptr<RowSet> rows;
    std::unique_ptr<Statement> statement;
    std::vector<ErrorRecord> warnings;
    LONG affected = -1;
};

/// Runs a command whose rows nobody wants, where the driver has results in a row to the last of them.
Executed RunWithoutRecords(Session& session, const Command& command, LONG timeoutSeconds);

Executed RunOn(const std::shared_ptr<Session>& session, const Execution& execution, LONG limit);

}  // namespace tk::ado
