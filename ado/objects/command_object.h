// ado/objects/command_object.h - the Command object: a text, its parameters, and how it is run; and its Parameters.
//
// Threads: one caller at a time, except State and Cancel, which any thread may use while a call runs.
#pragma once

#include <mutex>

#include "ado/objects/collection.h"
#include "ado/objects/connection.h"
#include "ado/objects/execution.h"
#include "ado/objects/parameter_object.h"
#include "ado/objects/rowset_properties.h"

namespace tk::ado {

/// Asked from an IUnknown, tells a Command of this server; gives the Command itself.
inline constexpr IID kCommandObject = {0xD6A3710B, 0x28C4, 0x4F5E, {0xB0, 0x79, 0x1A, 0x93, 0x6D, 0x42, 0x8F, 0xE5}};

class CommandObject final : public Automation<CommandObject>, public PropertySource {
public:
    static constexpr const OLECHAR* kClassName = OLESTR("ADODB.Command");
    static std::span<const Member<CommandObject>> Members();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;

    // --- for the recordset ---

    /// @throws AdoError 3709 without an open connection
    const Ref<Connection>& OpenConnection() const;
    const std::u16string& Text() const noexcept { return text_; }
    LONG Timeout() const noexcept { return timeout_; }
    const RowsetSettings& Settings() const noexcept { return settings_; }

    /// @param options  as Execute's; -1: as CommandType says
    /// @param values  instead of the parameters' own, for this execution; empty: none are given
    Execution MakeExecution(LONG options, std::vector<Value> values);

    // --- for its Parameters ---

    std::vector<Ref<ParameterObject>>& List() noexcept { return parameters_; }
    void MarkOwn() noexcept { isDescribed_ = false; }

    /// Asks the database once, where the program has not declared anything itself.
    void DescribeIfUnknown();

    /// Asks the database for the parameters, in place of what is there. @throws AdoError
    void DescribeParameters();
    std::shared_ptr<ErrorList> ErrorRecords() const { return Errors(); }

    // --- PropertySource ---
    std::size_t PropertyCount() override;
    PropertyInfo DescribeProperty(std::size_t index) override;
    Value ReadProperty(std::size_t index) override;
    void WriteProperty(std::size_t index, const Value& value) override;
    std::shared_ptr<ErrorList> PropertyErrors() const override { return Errors(); }

protected:
    std::shared_ptr<ErrorList> Errors() const override;

private:
    void GetParameters(Call& call);
    void GetActiveConnection(Call& call);
    void PutActiveConnection(Call& call);
    void GetCommandText(Call& call);
    void PutCommandText(Call& call);
    void GetCommandTimeout(Call& call);
    void PutCommandTimeout(Call& call);
    void GetPrepared(Call& call);
    void PutPrepared(Call& call);
    void Execute(Call& call);
    void CreateParameter(Call& call);
    void GetCommandType(Call& call);
    void PutCommandType(Call& call);
    void GetName(Call& call);
    void PutName(Call& call);
    void GetState(Call& call);
    void Cancel(Call& call);
    void GetProperties(Call& call);

    /// What the database told of the former text is not true of another one.
    void ForgetDescribed();
    Command MakePlan(LONG options) const;
    void DescribeProcedure(Session& session, const Command& plan);
    void DescribeText(Session& session, const Command& plan);
    Statement Run(Session& session, const Command& plan, const CommandSql& sql, std::span<const Value> values,
                  LONG limit) const;
    void TakeOutputs(RowSet* rows, const ParameterOutputs* outputs, const CommandSql& sql) const;

    std::u16string text_;
    std::u16string name_;
    LONG type_ = kCommandUnknown;
    LONG timeout_ = 30;
    bool prepared_ = false;
    Ref<Connection> connection_;
    std::vector<Ref<ParameterObject>> parameters_;
    bool isDescribed_ = false;  // the parameters are the database's, not the program's
    RowsetSettings settings_;

    mutable std::mutex guard_;  // running_, for State and Cancel
    std::shared_ptr<Session> running_;
};

class ParameterList final : public Collection<ParameterList> {
public:
    static constexpr const OLECHAR* kClassName = OLESTR("ADODB.Parameters");
    static std::span<const Member<ParameterList>> Members();

    explicit ParameterList(Ref<CommandObject> owner) : owner_(std::move(owner)) {}

    std::size_t ItemCount() const;
    std::size_t FindItem(const VARIANT& index) const;
    Ref<ParameterObject> MakeItem(std::size_t index) const { return owner_->List()[index]; }

protected:
    std::shared_ptr<ErrorList> Errors() const override { return owner_->ErrorRecords(); }

private:
    void Append(Call& call);
    void Delete(Call& call);
    void Describe(Call& call);

    Ref<CommandObject> owner_;
};

}  // namespace tk::ado
