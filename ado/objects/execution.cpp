#include "ado/objects/execution.h"

namespace tk::ado {

Execution MakeExecution(const Command& command, LONG timeoutSeconds) {
    Execution execution;
    execution.asynchronousFetch = command.asynchronousFetch;
    execution.noRecords = command.noRecords;
    execution.run = [command, timeoutSeconds](Session& session, LONG limit) {
        return session.Execute(SqlOf(command, session).text, ExecuteOptions{timeoutSeconds, limit});
    };
    return execution;
}

Executed RunOn(const std::shared_ptr<Session>& session, const Execution& execution, LONG limit) {
    Executed executed;
    Statement statement = execution.run(*session, limit);
    executed.affected = statement.RowsAffected();
    executed.warnings = statement.Warnings();
    const std::shared_ptr<const ParameterOutputs> outputs = statement.Outputs();
    const bool isFetched = statement.HasRows() && (!execution.noRecords || execution.takeOutputs);
    if (isFetched) {
        executed.rows = RowSet::Fetch(std::move(statement), session, FetchOptions{execution.asynchronousFetch, limit});
    }
    if (execution.takeOutputs) execution.takeOutputs(executed.rows.get(), outputs.get());
    if (execution.noRecords) {
        executed.rows.reset();
    } else if (!isFetched) {
        executed.statement = std::make_unique<Statement>(std::move(statement));
    }
    return executed;
}

}  // namespace tk::ado
