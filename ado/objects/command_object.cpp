#include "ado/objects/command_object.h"

#include "ado/cursor/columns.h"
#include "ado/cursor/text.h"
#include "ado/objects/arrays.h"
#include "ado/objects/recordset.h"

namespace tk::ado {
namespace {

constexpr LONG kKinds =
    kCommandText | kCommandTable | kCommandStoredProc | kCommandUnknown | kCommandFile | kCommandTableDirect;

bool IsOutput(LONG direction) noexcept {
    return direction == kDirectionOutput || direction == kDirectionInputOutput || direction == kDirectionReturnValue;
}

}  // namespace

HRESULT CommandObject::QueryInterface(REFIID iid, void** object) {
    if (object != nullptr && iid == kCommandObject) {
        *object = this;
        AddRef();
        return S_OK;
    }
    return AutomationObject::QueryInterface(iid, object);
}

std::shared_ptr<ErrorList> CommandObject::Errors() const {
    return connection_ ? connection_->ErrorRecords() : nullptr;
}

const Ref<Connection>& CommandObject::OpenConnection() const {
    if (!connection_) throw AdoError(ErrorNumber::InvalidConnection);
    connection_->OpenedSession(ErrorNumber::InvalidConnection);
    return connection_;
}

Command CommandObject::MakePlan(LONG options) const {
    if (text_.empty()) throw AdoError(ErrorNumber::InvalidArgument);
    if (options == -1) options = 0;
    if ((options & kKinds) == 0) options |= type_;
    // One name with parameters is no table.
    const bool isUnknown = (options & kKinds) == kCommandUnknown;
    if (isUnknown && !parameters_.empty() && IsSingleName(text_)) {
        options = (options & ~kKinds) | kCommandStoredProc;
    }
    return MakeCommand(text_, options);
}

Execution CommandObject::MakeExecution(LONG options, std::vector<Value> values) {
    const Command plan = MakePlan(options);
    // Declared parameters keep their places; without any the values are the parameters.
    if (!parameters_.empty() && values.size() > parameters_.size()) throw AdoError(ErrorNumber::InvalidArgument);
    for (const auto& parameter : parameters_)
        parameter->ExpectComplete();
    // Taken over by the parameters' own rules, but not kept.
    for (std::size_t i = 0; i < values.size() && i < parameters_.size(); ++i) {
        if (values[i].Type() == VT_ERROR) continue;
        const Ref<ParameterObject> checked = Make<ParameterObject>(parameters_[i]->Declaration());
        checked->SetValue(values[i]);
        values[i] = checked->GetValue();
    }
    Execution execution;
    execution.asynchronousFetch = plan.asynchronousFetch;
    execution.noRecords = plan.noRecords;
    const auto sql = std::make_shared<CommandSql>();
    const Ref<CommandObject> self(this);
    execution.run = [self, plan, sql, values = std::move(values)](Session& session, LONG limit) {
        std::vector<LONG> directions;
        for (const auto& parameter : self->parameters_)
            directions.push_back(parameter->Declaration().direction);
        if (directions.empty()) directions.assign(values.size(), kDirectionInput);
        *sql = SqlOf(plan, session, directions);
        return self->Run(session, plan, *sql, values, limit);
    };
    const bool hasOutputs = std::ranges::any_of(
        parameters_, [](const auto& parameter) { return IsOutput(parameter->Declaration().direction); });
    if (hasOutputs) {
        execution.takeOutputs = [self, sql](RowSet* rows, const ParameterOutputs* outputs) {
            self->TakeOutputs(rows, outputs, *sql);
        };
    }
    return execution;
}

Statement CommandObject::Run(Session& session, const Command& plan, const CommandSql& sql,
                             std::span<const Value> values, LONG limit) const {
    std::vector<Column> columns(sql.marks.size());
    std::vector<Parameter> bound;
    for (std::size_t mark = 0; mark < sql.marks.size(); ++mark) {
        const std::size_t place = sql.marks[mark];
        Parameter parameter;
        const bool isGiven = place < values.size() && values[place].Type() != VT_ERROR;
        static const Value kNull = Value::Null();
        parameter.value = isGiven ? &values[place].Get() : &kNull.Get();
        if (place < parameters_.size()) {
            const ParameterDeclaration& declaration = parameters_[place]->Declaration();
            if (!isGiven) parameter.value = &parameters_[place]->GetValue().Get();
            columns[mark] = ColumnOf(declaration);
            parameter.column = &columns[mark];
            const bool byRow = std::ranges::find(sql.fromRow, place) != sql.fromRow.end();
            const bool isPureOutput =
                declaration.direction == kDirectionOutput || declaration.direction == kDirectionReturnValue;
            if (byRow && isPureOutput) parameter.value = &kNull.Get();
            if (!byRow && isPureOutput) parameter.direction = Parameter::Direction::Output;
            if (!byRow && declaration.direction == kDirectionInputOutput) {
                parameter.direction = Parameter::Direction::InputOutput;
            }
        }
        bound.push_back(parameter);
    }
    return session.Execute(sql.text, std::span<const Parameter>(bound),
                           ExecuteOptions{timeout_, limit, prepared_, !plan.noRecords});
}

void CommandObject::TakeOutputs(RowSet* rows, const ParameterOutputs* outputs, const CommandSql& sql) const {
    // Some drivers give the values with the statement's last result.
    if (rows != nullptr) rows->WaitForOutputs();
    for (std::size_t mark = 0; outputs != nullptr && mark < sql.marks.size(); ++mark) {
        if (sql.marks[mark] >= parameters_.size()) continue;
        ParameterObject& parameter = *parameters_[sql.marks[mark]];
        if (!IsOutput(parameter.Declaration().direction)) continue;
        Value value;
        outputs->Read(mark, ColumnOf(parameter.Declaration()), *value.Out());
        parameter.TakeOutput(std::move(value));
    }
    for (std::size_t i = 0; i < sql.fromRow.size(); ++i) {
        if (sql.fromRow[i] >= parameters_.size()) continue;
        ParameterObject& parameter = *parameters_[sql.fromRow[i]];
        Value value = Value::Null();
        if (rows != nullptr && rows->HasRow(0) && i < rows->Columns().size()) rows->Read(0, i, *value.Out());
        const Column column = ColumnOf(parameter.Declaration());
        parameter.TakeOutput(ConvertForColumn(value.Get(), column));
    }
}

void CommandObject::ForgetDescribed() {
    if (!std::exchange(isDescribed_, false)) return;
    parameters_.clear();
}

void CommandObject::GetParameters(Call& call) {
    auto list = Make<ParameterList>(Ref<CommandObject>(this));
    if (call.Count() == 0) return call.ReturnObject(std::move(list));
    // The default member of the default member: command("name").
    call.ReturnObject(list->MakeItem(WithIndex(call, 0, [&](const VARIANT& index) { return list->FindItem(index); })));
}

void CommandObject::GetActiveConnection(Call& call) {
    call.ReturnObject(connection_);
}

void CommandObject::PutActiveConnection(Call& call) {
    Ref<Connection> connection = call.IsNothing(0) ? Ref<Connection>() : ConnectionOf(call.Variant(0));
    ForgetDescribed();
    connection_ = std::move(connection);
}

void CommandObject::GetCommandText(Call& call) {
    call.ReturnText(text_);
}

void CommandObject::PutCommandText(Call& call) {
    text_ = call.Text(0);
    ForgetDescribed();
}

void CommandObject::GetCommandTimeout(Call& call) {
    call.ReturnLong(timeout_);
}

void CommandObject::PutCommandTimeout(Call& call) {
    const LONG seconds = call.Long(0);
    if (seconds < 0) throw AdoError(ErrorNumber::InvalidArgument, NumberText(seconds));
    timeout_ = seconds;
}

void CommandObject::GetPrepared(Call& call) {
    call.ReturnBoolean(prepared_);
}
void CommandObject::PutPrepared(Call& call) {
    prepared_ = call.Boolean(0);
}

void CommandObject::Execute(Call& call) {
    const LONG options = call.Long(2, -1);
    const Ref<Connection> connection = OpenConnection();
    std::vector<Value> values;
    if (!call.IsNothing(1)) values = ListItems(call.PlainValue(1));
    Execution execution = MakeExecution(options, std::move(values));
    const auto session = connection->OpenedSession(ErrorNumber::InvalidConnection);
    struct Running {
        CommandObject& command;
        Running(CommandObject& owner, std::shared_ptr<Session> used) : command(owner) {
            const std::lock_guard lock(command.guard_);
            command.running_ = std::move(used);
        }
        ~Running() {
            const std::lock_guard lock(command.guard_);
            command.running_.reset();
        }
    } running(*this, session);
    LONG affected = -1;
    Ref<Recordset> result = Recordset::FromCommand(connection, session, text_, std::move(execution), affected);
    if (result) result->SetCommand(Ref<CommandObject>(this));
    call.Store(0, Value(affected));
    call.ReturnObject(std::move(result));
}

void CommandObject::CreateParameter(Call& call) {
    ParameterDeclaration declaration;
    declaration.name = call.Text(0, u"");
    declaration.type = call.Long(1, 0);
    declaration.direction = call.Long(2, kDirectionInput);
    declaration.size = call.Long(3, 0);
    ExpectDirection(declaration.direction);
    if (declaration.size < 0) throw AdoError(ErrorNumber::InvalidArgument, NumberText(declaration.size));
    if (declaration.type != 0) ColumnOf(declaration);
    auto parameter = Make<ParameterObject>(std::move(declaration));
    if (!call.IsOmitted(4)) parameter->SetValue(call.PlainValue(4));
    call.ReturnObject(std::move(parameter));
}

void CommandObject::GetCommandType(Call& call) {
    call.ReturnLong(type_);
}

void CommandObject::PutCommandType(Call& call) {
    static constexpr LONG kTypes[] = {kCommandText,    kCommandTable, kCommandStoredProc,
                                      kCommandUnknown, kCommandFile,  kCommandTableDirect};
    const LONG type = call.Long(0);
    if (type != -1 && std::ranges::find(kTypes, type) == std::end(kTypes)) {
        throw AdoError(ErrorNumber::InvalidArgument, NumberText(type));
    }
    type_ = type == -1 ? static_cast<LONG>(kCommandUnknown) : type;
    ForgetDescribed();
}

void CommandObject::GetName(Call& call) {
    call.ReturnText(name_);
}
void CommandObject::PutName(Call& call) {
    name_ = call.Text(0);
}

void CommandObject::GetState(Call& call) {
    const std::lock_guard lock(guard_);
    call.ReturnLong(running_ ? kStateExecuting : kStateClosed);
}

void CommandObject::Cancel(Call&) {
    std::shared_ptr<Session> session;
    {
        const std::lock_guard lock(guard_);
        session = running_;
    }
    if (session) session->Cancel();
}

void CommandObject::GetProperties(Call& call) {
    call.ReturnObject(Make<tk::ado::Properties>(Ref<AutomationObject>(this), *this));
}

std::size_t CommandObject::PropertyCount() {
    return RowsetPropertyCount();
}
PropertyInfo CommandObject::DescribeProperty(std::size_t index) {
    return DescribeRowsetProperty(index);
}
Value CommandObject::ReadProperty(std::size_t index) {
    return ReadRowsetProperty(index, settings_, {kLockReadOnly, 0});
}
void CommandObject::WriteProperty(std::size_t index, const Value& value) {
    WriteRowsetProperty(index, settings_, value);
}

}  // namespace tk::ado
