#include "ado/objects/execution.h"

#include <utility>

namespace tk::ado {
namespace {

Statement Run(Session& session, const Command& command, const ExecuteOptions& options) {
    if (command.kind == Command::Kind::Text) return session.Execute(command.text, options);
    return session.Execute(SqlOf(command, session).text, options);
}

}  // namespace

Executed RunWithoutRecords(Session& session, const Command& command, LONG timeoutSeconds) {
    ExecuteOptions options;
    options.timeoutSeconds = timeoutSeconds;
    options.wantsRows = false;
    Statement statement = Run(session, command, options);
    Executed executed;
    executed.affected = statement.RowsAffected();
    executed.warnings = statement.TakeWarnings();
    statement.TakeRest(session.Running());
    return executed;
}

Execution MakeExecution(Command command, LONG timeoutSeconds) {
    Execution execution;
    execution.asynchronousFetch = command.asynchronousFetch;
    execution.noRecords = command.noRecords;
    execution.run = [command = std::move(command), timeoutSeconds](Session& session, LONG limit) {
        return Run(session, command, {timeoutSeconds, limit, false, !command.noRecords});
    };
    return execution;
}

Executed RunOn(const std::shared_ptr<Session>& session, const Execution& execution, LONG limit) {
    Executed executed;
    Statement statement = execution.run(*session, limit);
    executed.affected = statement.RowsAffected();
    executed.warnings = statement.TakeWarnings();
    const std::shared_ptr<const ParameterOutputs> outputs = statement.Outputs();
    const bool isFetched = statement.HasRows() && (!execution.noRecords || execution.takeOutputs);
    if (isFetched) {
        executed.rows = RowSet::Fetch(std::move(statement), session, FetchOptions{execution.asynchronousFetch, limit});
    } else if (!execution.noRecords) {
        executed.statement = std::make_unique<Statement>(std::move(statement));
    } else {
        statement.TakeRest(session->Running());
    }
    if (execution.takeOutputs) {
        // They may come behind all rows, and whoever cancels the call ends the wait for that.
        if (executed.rows) session->FinishBackgroundWork(0);
        execution.takeOutputs(executed.rows.get(), outputs.get());
    }
    if (execution.noRecords && executed.rows) {
        if (const auto next = executed.rows->TakeNextResult()) next->TakeRest(session->Running());
        executed.rows.reset();
    }
    return executed;
}

}  // namespace tk::ado
