// Recordset: a Command object as its source.
#include "ado/objects/command_object.h"
#include "ado/objects/recordset.h"

namespace tk::ado {

Ref<CommandObject> Recordset::KnownCommand(const Value& given) {
    if (given.Type() != VT_DISPATCH && given.Type() != VT_UNKNOWN) return {};
    return KnownObject<CommandObject>(given.Get().punkVal, kCommandObject);
}

void Recordset::SetCommand(Ref<CommandObject> command) {
    command_ = std::move(command);
}

void Recordset::OpenCommand(Call& call, Ref<CommandObject> command, LONG cursorType, LONG lock, LONG options) {
    // The command brings its connection.
    if (!call.IsNothing(1)) throw AdoError(ErrorNumber::BoundToCommand);
    const Ref<Connection> connection = command->OpenConnection();
    Execution execution = command->MakeExecution(options, {});
    LetGo();
    command_ = std::move(command);
    connection_ = connection;
    connectionText_.clear();
    source_ = command_->Text();
    if (cursorType != -1) cursorType_ = cursorType;
    if (lock != -1) wantedLock_ = lock;
    settings_ = command_->Settings();
    settings_.rules.timeoutSeconds = command_->Timeout();
    OpenExecution(connection, std::move(execution));
}

void Recordset::PutRefSource(Call& call) {
    IUnknown* const given = call.Object(0);
    ExpectClosed();
    auto command = KnownObject<CommandObject>(given, kCommandObject);
    if (!command) throw AdoError(ErrorNumber::InvalidArgument);
    source_ = command->Text();
    command_ = std::move(command);
}

void Recordset::GetActiveCommand(Call& call) {
    call.ReturnObject(command_);
}

}  // namespace tk::ado
