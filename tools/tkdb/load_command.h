// tools/tkdb/load_command.h - tkdb load: how many requests a pool of sessions serves, and how long each one takes.
#pragma once

#include <string>
#include <vector>

namespace tk::tools {

struct LoadOptions {
    std::vector<std::string> statements;  // taken in turn; those with rows are read to their end
    int threads = 4;
    int sessions = 4;
    int seconds = 10;      // 0: until the count is reached
    long requests = 0;     // of all threads; 0: until the time is over
    std::string plot;      // a file for the picture of the latencies; none when empty
    bool metrics = false;  // the counters of the pool, as Prometheus takes them, instead of the words
};

/// Prints what was found. The user may stop it: what was measured until then is printed as well.
int RunLoad(const std::string& connection, const LoadOptions& options);

}  // namespace tk::tools
