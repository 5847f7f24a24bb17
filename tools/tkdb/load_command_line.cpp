#include "tools/tkdb/load_command_line.h"

namespace tk::tools {

LoadCommandLine::LoadCommandLine(CLI::App& app)
    : command_(app.add_subcommand("load", "Put load on a pool of sessions and measure it")) {
    constexpr int kMostThreads = 1024;
    constexpr int kMostSessions = 32767;
    command_->add_option("connection", connection_, "Connection string or data source name")->required();
    command_->add_option("sql", options_.statements, "Statements, taken in turn; those with rows are read to their end")
        ->required();
    command_->add_option("--threads", options_.threads, "Borrowers at once")->check(CLI::Range(1, kMostThreads));
    command_->add_option("--sessions", options_.sessions, "Sessions of the pool, 4 at least")
        ->check(CLI::Range(1, kMostSessions));
    auto* seconds = command_->add_option("--seconds", options_.seconds, "How long")->check(CLI::PositiveNumber);
    command_->add_option("--requests", options_.requests, "How many requests, instead of how long")
        ->check(CLI::PositiveNumber)
        ->excludes(seconds);
    command_->add_option("--plot", options_.plot, "Write a picture of the latencies (SVG)");
    command_->add_flag("--metrics", options_.metrics, "Print the counters of the pool as Prometheus takes them");
}

std::optional<int> LoadCommandLine::Run() const {
    if (!command_->parsed()) return std::nullopt;
    return RunLoad(connection_, options_);
}

}  // namespace tk::tools
