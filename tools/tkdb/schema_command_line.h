// tools/tkdb/schema_command_line.h - the subcommands that tell of a database's tables, or carry them elsewhere.
//
//   SchemaCommandLine schema(app);
//   app.parse(argc, argv);
//   if (const auto code = schema.Run()) return *code;
#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

#include "tools/tkdb/schema_commands.h"

namespace tk::tools {

class SchemaCommandLine {
public:
    /// Adds the subcommands.
    explicit SchemaCommandLine(CLI::App& app);
    SchemaCommandLine(const SchemaCommandLine&) = delete;
    SchemaCommandLine& operator=(const SchemaCommandLine&) = delete;

    /// Runs the one that was parsed. @return its exit code; nothing when it was none of these
    std::optional<int> Run() const;

private:
    CLI::App* Add(CLI::App& app, const char* name, const char* help);
    void AddNames(CLI::App* command, const char* help);
    void AddFormat(CLI::App* command);

    CLI::App* tables_;
    CLI::App* views_;
    CLI::App* describe_;
    CLI::App* script_;
    CLI::App* indexes_;
    CLI::App* count_;
    CLI::App* convert_;
    CLI::App* copy_;

    std::string connection_;
    std::vector<std::string> names_;
    std::string name_;
    std::string file_ = "-";
    std::vector<std::string> places_;  // source, tables, target
    bool replace_ = false;
    Format format_ = Format::Table;
    Dialect dialect_ = Dialect::OfTheDatabase;
    Dialect from_ = Dialect::OfTheDatabase;
    Dialect to_ = Dialect::OfTheDatabase;
};

}  // namespace tk::tools
