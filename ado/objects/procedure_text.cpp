// The statements that commands become: names in the database's own quotes, and calls of stored procedures.
#include <algorithm>

#include "ado/objects/command_text.h"
#include "ado/odbc/ascii.h"
#include "ado/odbc/procedure_name.h"
#include "ado/rowset/row_set.h"

namespace tk::ado {
namespace {

constexpr char kAnsiQuote = '"';

/// A name that came in double quotes, in the quotes of a database that has others.
std::string Requoted(std::string_view text, const std::string& quote) {
    if (quote.empty() || quote == " " || quote[0] == kAnsiQuote) return std::string(text);
    std::string requoted;
    char inside = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char letter = text[i];
        if (inside == kAnsiQuote && letter == kAnsiQuote) {
            if (i + 1 < text.size() && text[i + 1] == kAnsiQuote) {
                requoted += text[++i];
                continue;
            }
            requoted += quote;
            inside = 0;
        } else if (inside != 0) {
            // The database's quote inside the name is doubled there.
            if (inside == kAnsiQuote && letter == quote[0]) requoted += letter;
            requoted += letter;
            if (letter == inside) inside = 0;
        } else if (letter == kAnsiQuote) {
            requoted += quote;
            inside = letter;
        } else {
            requoted += letter;
            if (letter == '\'' || letter == quote[0]) inside = letter;
        }
    }
    return requoted;
}

/// What becomes of the parameters of a call, by kind.
struct Parts {
    std::vector<std::size_t> returned;
    std::vector<std::size_t> passed;   // all but the return value
    std::vector<std::size_t> inputs;   // those that carry a value in
    std::vector<std::size_t> outputs;  // those that carry one out, the return value first
};

Parts Divide(std::span<const LONG> directions) {
    Parts parts;
    for (std::size_t i = 0; i < directions.size(); ++i) {
        if (directions[i] == kDirectionReturnValue) {
            parts.returned.push_back(i);
            parts.outputs.insert(parts.outputs.begin(), i);
            continue;
        }
        parts.passed.push_back(i);
        if (directions[i] != kDirectionOutput) parts.inputs.push_back(i);
        if (directions[i] == kDirectionOutput || directions[i] == kDirectionInputOutput) parts.outputs.push_back(i);
    }
    return parts;
}

/// "(?, ?)"; nothing when the text has brought its arguments.
std::string Marks(std::size_t count, bool hasArguments, bool always) {
    if (hasArguments || (count == 0 && !always)) return {};
    std::string marks = "(";
    for (std::size_t i = 0; i < count; ++i)
        marks += i == 0 ? "?" : ", ?";
    return marks + ")";
}

bool IsProcedure(Session& session, const ProcedureName& name) {
    std::string folded = name.name;
    if (!name.isQuoted) std::ranges::transform(folded, folded.begin(), LowerAscii);
    const auto asText = [&](const std::string& value) {
        return Parameter{nullptr, Cell{Cell::Form::Text, 0, 0, value}, nullptr, Parameter::Direction::Input};
    };
    const Parameter parameters[] = {asText(folded), asText(name.schema), asText(name.schema)};
    const std::shared_ptr<Session> borrowed(&session, [](Session*) {});
    const auto rows = RowSet::Fetch(
        session.Execute(session.Profile().procedureQuery, std::span<const Parameter>(parameters), ExecuteOptions{}),
        borrowed, {});
    return rows->CountRows() > 0;
}

CommandSql CallOf(const std::string& text, Session& session, std::span<const LONG> directions) {
    const Parts parts = Divide(directions);
    const std::string name = Requoted(text, session.Quote());
    const ProcedureName read = ReadProcedureName(text);
    const bool hasArguments = text.find('(', read.length) != std::string::npos;
    const DriverProfile& profile = session.Profile();
    CommandSql sql;
    if (profile.procedureCall == ProcedureCall::SelectFromOrCall) {
        const bool isProcedure = IsProcedure(session, read);
        sql.marks = isProcedure ? parts.passed : parts.inputs;
        sql.text = (isProcedure ? "CALL " : "SELECT * FROM ") + name + Marks(sql.marks.size(), hasArguments, true);
        sql.fromRow = parts.outputs;
        return sql;
    }
    if (profile.procedureCall == ProcedureCall::EscapeOrSelect && !parts.returned.empty()) {
        sql.marks = parts.inputs;
        sql.text = "SELECT " + name + Marks(sql.marks.size(), hasArguments, true);
        sql.fromRow = parts.returned;
        return sql;
    }
    sql.marks = parts.returned;
    sql.marks.insert(sql.marks.end(), parts.passed.begin(), parts.passed.end());
    sql.text = (parts.returned.empty() ? "{call " : "{? = call ") + name +
               Marks(parts.passed.size(), hasArguments, false) + "}";
    return sql;
}

}  // namespace

std::string TableName(const std::string& name, const Session& session) {
    return Requoted(name, session.Quote());
}

CommandSql SqlOf(const Command& command, Session& session, std::span<const LONG> directions) {
    CommandSql sql;
    switch (command.kind) {
        case Command::Kind::Procedure:
            return CallOf(command.text, session, directions);
        case Command::Kind::Table:
            sql.text = "SELECT * FROM " + TableName(command.text, session);
            break;
        case Command::Kind::Text:
            sql.text = command.text;
            break;
    }
    for (std::size_t i = 0; i < directions.size(); ++i)
        sql.marks.push_back(i);
    return sql;
}

}  // namespace tk::ado
