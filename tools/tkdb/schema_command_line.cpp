#include "tools/tkdb/schema_command_line.h"

#include "tools/tkdb/copy_command.h"

namespace tk::tools {
namespace {

constexpr const char* kDialectHelp = "mssql, sybase, db2 or oracle";

}  // namespace

SchemaCommandLine::SchemaCommandLine(CLI::App& app)
    : tables_(Add(app, "tables", "List the tables")),
      views_(Add(app, "views", "List the views, or print the text of some")),
      describe_(Add(app, "describe", "List the columns of a table")),
      script_(Add(app, "script", "Print CREATE TABLE and CREATE INDEX statements")),
      indexes_(Add(app, "indexes", "Print CREATE INDEX statements")),
      count_(Add(app, "count", "Count the rows of tables")),
      convert_(app.add_subcommand("convert", "Print a table script in another dialect")),
      copy_(app.add_subcommand("copy", "Carry tables with their rows to another data source")) {
    for (CLI::App* each : {tables_, views_, describe_, count_})
        AddFormat(each);
    AddNames(views_, "Views whose texts to print (default: their names)");
    describe_->add_option("table", name_, "The table or view")->required();
    for (CLI::App* each : {script_, indexes_, count_})
        AddNames(each, "Tables (default: all of them)");
    copy_->add_option("places", places_, "Connection string of the source, tables, connection string of the target")
        ->required()
        ->expected(3, -1);
    copy_->add_flag("--replace", replace_, "Drop a table of the target that has other rows");
    convert_->add_option("file", file_, "The script (default: standard input)");
    convert_->add_option("--from", from_, kDialectHelp)
        ->required()
        ->transform(CLI::CheckedTransformer(DialectNames(), CLI::ignore_case));
    convert_->add_option("--to", to_, kDialectHelp)
        ->required()
        ->transform(CLI::CheckedTransformer(DialectNames(), CLI::ignore_case));
}

CLI::App* SchemaCommandLine::Add(CLI::App& app, const char* name, const char* help) {
    CLI::App* const command = app.add_subcommand(name, help);
    command->add_option("connection", connection_, "Connection string")->required();
    command
        ->add_option("--dialect", dialect_, std::string(kDialectHelp) + " (default: the database's own, if it is one)")
        ->transform(CLI::CheckedTransformer(DialectNames(), CLI::ignore_case));
    return command;
}

void SchemaCommandLine::AddNames(CLI::App* command, const char* help) {
    command->add_option("names", names_, help);
}

void SchemaCommandLine::AddFormat(CLI::App* command) {
    command->add_option("--format", format_, "table, csv, json or markdown")
        ->transform(CLI::CheckedTransformer(FormatNames(), CLI::ignore_case));
}

std::optional<int> SchemaCommandLine::Run() const {
    const std::string connection = InDialect(connection_, dialect_);
    if (tables_->parsed()) return ListTables(connection, format_);
    if (views_->parsed()) return PrintViews(connection, names_, format_);
    if (describe_->parsed()) return DescribeTable(connection, name_, format_);
    if (script_->parsed()) return PrintScripts(connection, names_);
    if (indexes_->parsed()) return PrintIndexes(connection, names_);
    if (count_->parsed()) return CountRows(connection, names_, format_);
    if (convert_->parsed()) return PrintConverted(file_, from_, to_);
    if (copy_->parsed()) {
        return CopyTables(places_.front(), {places_.begin() + 1, places_.end() - 1}, places_.back(), replace_);
    }
    return std::nullopt;
}

}  // namespace tk::tools
