// Calls: of prepared statements, of the catalog, of procedures that a test has defined.
#include <sqlite3.h>

#include <algorithm>

#include "support/tds/catalog_procedures.h"
#include "support/tds/messages.h"
#include "support/tds/sql_session.h"
#include "support/tds/words.h"

namespace tk::test::tds {
namespace {

const std::string& TextAt(const Call& call, std::size_t place) {
    const std::string* text =
        place < call.arguments.size() ? std::get_if<std::string>(&call.arguments[place].value) : nullptr;
    if (text == nullptr) throw NoParameterError(call.name, "@stmt");
    return *text;
}

std::int64_t HandleAt(const Call& call, std::size_t place) {
    const std::int64_t* handle =
        place < call.arguments.size() ? std::get_if<std::int64_t>(&call.arguments[place].value) : nullptr;
    if (handle == nullptr) throw NoParameterError(call.name, "@handle");
    return *handle;
}

/// The names of a list of declarations: "@P1 int,@P2 nvarchar(20)".
std::vector<std::string> DeclaredNames(const Call& call, std::size_t place) {
    std::vector<std::string> names;
    if (place >= call.arguments.size()) return names;
    const auto* declarations = std::get_if<std::string>(&call.arguments[place].value);
    if (declarations == nullptr) return names;
    for (const Word& word : WordsOf(*declarations)) {
        if (word.text.starts_with('@')) names.emplace_back(word.text);
    }
    return names;
}

std::span<Argument> From(Call& call, std::size_t place) {
    return std::span(call.arguments).subspan(std::min(place, call.arguments.size()));
}

constexpr std::int32_t kFailed = -6;  // the status of a procedure that was left by an error

/// Gives the arguments that came without names those of their places.
void NameArguments(Call& call, std::span<const char* const> names) {
    for (std::size_t i = 0; i < call.arguments.size() && i < names.size(); ++i) {
        if (call.arguments[i].name.empty()) call.arguments[i].name = names[i];
    }
}

}  // namespace

void SqlSession::RunCall(Call& call, Answer& answer) {
    isCancelled_ = false;
    std::int32_t status = 0;
    try {
        status = RunProcedure(call, answer);
    } catch (const SqlError& error) {
        answer.Error(error);
        status = error.number;
    }
    answer.ReturnStatus(status);
    for (const Argument& argument : call.arguments) {
        if (argument.isOutput) answer.ReturnValue(argument.name, argument.type, argument.value);
    }
    answer.EndCall();
}

std::int32_t SqlSession::RunProcedure(Call& call, Answer& answer) {
    const auto is = [&](std::string_view name) { return EqualWords(call.name, name); };
    if (is("sp_executesql")) {
        const Prepared prepared{TextAt(call, 0), DeclaredNames(call, 1)};
        return RunPrepared(prepared, From(call, 2), answer);
    }
    if (is("sp_prepare") || is("sp_prepexec")) {
        const Prepared prepared{TextAt(call, 2), DeclaredNames(call, 1)};
        prepared_[++lastHandle_] = prepared;
        Argument& handle = call.arguments[0];
        handle.value = lastHandle_;
        // The driver forgets a handle that comes behind rows which it does not read to their end.
        answer.ReturnValue(handle.name, handle.type, handle.value);
        handle.isOutput = false;
        if (is("sp_prepexec")) return RunPrepared(prepared, From(call, 3), answer);
        DescribePrepared(prepared, answer);
        return 0;
    }
    if (is("sp_execute")) {
        const auto known = prepared_.find(HandleAt(call, 0));
        if (known == prepared_.end()) throw NoHandleError(HandleAt(call, 0));
        return RunPrepared(known->second, From(call, 1), answer);
    }
    if (is("sp_unprepare")) {
        if (prepared_.erase(HandleAt(call, 0)) == 0) throw NoHandleError(HandleAt(call, 0));
        return 0;
    }
    if (const CatalogProcedure* procedure = FindCatalogProcedure(call.name)) {
        NameArguments(call, procedure->parameters);
        RunFixed(procedure->sql, procedure->columns, call.arguments, answer);
        return 0;
    }
    return RunDefined(call, answer);
}

std::int32_t SqlSession::RunDefined(Call& call, Answer& answer) {
    Argument name;
    name.name = "@name";
    name.value = call.name;
    const std::span<const Argument> asked(&name, 1);
    const auto rows = Select("select statements, outputs from tds_procedures where name = @name collate nocase", asked);
    if (rows.empty()) throw NoProcedureError(call.name);
    std::vector<std::string> names;
    for (const NamedCells& row :
         Select("select name from tds_parameters where procedure = @name collate nocase order by place", asked)) {
        names.push_back(std::get<std::string>(row[0].second));
    }
    for (std::size_t i = 0; i < call.arguments.size() && i < names.size(); ++i) {
        if (call.arguments[i].name.empty()) call.arguments[i].name = names[i];
    }
    if (!RunBatch(std::get<std::string>(rows[0][0].second), call.arguments, answer)) return kFailed;
    const auto* outputs = std::get_if<std::string>(&rows[0][1].second);
    if (outputs == nullptr || outputs->empty()) return 0;
    std::int32_t status = 0;
    const auto given = Select(*outputs, call.arguments);
    if (given.empty()) return status;
    for (const auto& [column, value] : given[0]) {
        if (EqualWords(column, "@RETURN_VALUE")) status = static_cast<std::int32_t>(std::get<std::int64_t>(value));
        for (Argument& argument : call.arguments) {
            if (argument.isOutput && EqualWords(argument.name, column)) argument.value = value;
        }
    }
    return status;
}

}  // namespace tk::test::tds
