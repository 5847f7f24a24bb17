// tools/tkdb/load_command_line.h - the options of tkdb load.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "tools/tkdb/load_command.h"

namespace tk::tools {

class LoadCommandLine {
public:
    explicit LoadCommandLine(CLI::App& app);

    /// Runs the command when it was given. @return its exit code; nothing otherwise
    std::optional<int> Run() const;

private:
    CLI::App* command_;
    std::string connection_;
    LoadOptions options_;
};

}  // namespace tk::tools
