// tkdb - query and maintain any data source of the library from the command line.

#include <tkkernel/tkkernel.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <map>
#include <sstream>

#include "tools/demo/demo.h"
#include "tools/tkdb/commands.h"
#include "tools/tkdb/load_command_line.h"
#include "tools/tkdb/print.h"
#include "tools/tkdb/read_all.h"
#include "tools/tkdb/schema_command_line.h"
#include "tools/tkdb/split_script.h"
#include "tools/tkdb/standard_streams.h"
#include "tools/tkdb/terminal_text.h"

namespace {

using namespace tk::tools;

struct TextCommand {
    TextWork work;
    const char* name;
    const char* help;
};

int RunExec(const std::string& connection, std::vector<std::string> statements, const std::string& file,
            bool transaction) {
    if (!file.empty()) {
        std::string script;
        if (!ReadAll(file, script)) {
            Complain("cannot read {}", file);
            return kWrongUsage;
        }
        for (auto& statement : SplitScript(script))
            statements.push_back(std::move(statement));
    }
    if (statements.empty()) {
        Complain("exec needs a statement or --file");
        return kWrongUsage;
    }
    return ExecuteStatements(connection, statements, transaction);
}

int RunCommandLine(int argc, char** argv) {
    CLI::App app{"tkdb - query and maintain a database through ODBC", "tkdb"};
    app.require_subcommand(1);
    app.set_version_flag("--version", TKDB_VERSION);

    std::string connection;
    std::vector<std::string> statements;
    std::string file;
    std::string sql;
    bool transaction = false;
    long maxRows = 0;
    Format format = Format::Table;

    auto* exec = app.add_subcommand("exec", "Run statements and report the rows they changed");
    exec->add_option("connection", connection, "Connection string, e.g. \"Driver=SQLite3;Database=stock.db\"")
        ->required();
    exec->add_option("sql", statements, "Statements");
    exec->add_option("-f,--file", file, "Read statements from a file (- for standard input)");
    exec->add_flag("-t,--transaction", transaction, "All statements or none");

    auto* query = app.add_subcommand("query", "Run a query and print its rows");
    query->add_option("connection", connection, "Connection string")->required();
    query->add_option("sql", sql, "Query")->required();
    query->add_option("--format", format, "table, csv, json or markdown")
        ->transform(CLI::CheckedTransformer(FormatNames(), CLI::ignore_case));
    query->add_option("--max-rows", maxRows, "Print at most this many rows (0: all)")->check(CLI::NonNegativeNumber);

    const std::map<std::string, ExportFormat> exportFormats{{"csv", ExportFormat::Csv},
                                                            {"json", ExportFormat::Json},
                                                            {"markdown", ExportFormat::Markdown},
                                                            {"xml", ExportFormat::Xml},
                                                            {"adtg", ExportFormat::TableGram}};
    ExportFormat exportFormat = ExportFormat::FromName;
    auto* exports = app.add_subcommand("export", "Write the rows of a query or table to a file, whole or not at all");
    exports->add_option("connection", connection, "Connection string")->required();
    exports->add_option("source", sql, "Query, or the name of a table")->required();
    exports->add_option("--format", exportFormat, "csv, json, xml, adtg or markdown (default: by the file's name)")
        ->transform(CLI::CheckedTransformer(exportFormats, CLI::ignore_case));
    exports->add_option("-o,--output", file, "The file to write or replace")->required();

    const std::vector<TextCommand> textCommands{
        {TextWork::Currency, "currency", "Amounts in Chinese capital numerals"},
        {TextWork::Numeral, "numeral", "Numbers from 0 to 10 as a Chinese numeral, greater ones modulo 11"},
        {TextWork::Pinyin, "pinyin", "The pinyin initials of texts"},
        {TextWork::Date, "date", "Dates by a format of YYYY, YY, MM, DD, hh, mm, ss and W"},
        {TextWork::Number, "number", "Numbers by a pattern such as #,##0.00 or %.2f"},
    };
    std::vector<std::string> texts;
    std::string textFormat;
    int currencyMode = 1;
    auto* text = app.add_subcommand("text", "Convert texts, or each line of standard input");
    text->require_subcommand(1);
    for (const auto& command : textCommands) {
        auto* sub = text->add_subcommand(command.name, command.help);
        sub->add_option("texts", texts, "What to convert");
        if (command.work == TextWork::Currency) {
            sub->add_option("--mode", currencyMode, "1: the usual form; 2: every place")->check(CLI::Range(1, 2));
        }
        if (command.work == TextWork::Date) sub->add_option("--format", textFormat, "Default: YYYY/MM/DD hh:mm:ss");
        if (command.work == TextWork::Number) sub->add_option("--format", textFormat, "Pattern")->required();
    }

    SchemaCommandLine schema(app);
    LoadCommandLine load(app);

    auto* demo = app.add_subcommand("demo", "Load the ISO code lists and work with them");
    demo->add_option("connection", connection, "Connection string (default: an embedded database in a temporary file)");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        std::ostringstream help;
        const bool isHelp = app.exit(e, help, std::cerr) == 0;
        PrintText(help.str());
        return isHelp ? kSuccess : kWrongUsage;
    }

    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {
        Complain("component start-up failed");
        return kDatabaseRefused;
    }
    int code = kSuccess;
    if (exec->parsed()) code = RunExec(connection, statements, file, transaction);
    if (query->parsed()) code = PrintQuery(connection, sql, format, maxRows);
    if (exports->parsed()) code = ExportRows(connection, sql, exportFormat, file);
    for (const auto& command : textCommands) {
        if (text->got_subcommand(command.name)) code = PrintTexts(command.work, texts, currencyMode, textFormat);
    }
    if (const auto done = schema.Run()) code = *done;
    if (const auto done = load.Run()) code = *done;
    if (demo->parsed()) code = RunDemo(connection);
    CoUninitialize();
    return code;
}

}  // namespace

int main(int argc, char** argv) {
    UseTerminalLocale();
    return FinishOutput(RunCommandLine(argc, argv));
}
