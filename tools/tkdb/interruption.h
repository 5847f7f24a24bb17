// tools/tkdb/interruption.h - lets a long work end in order when the user stops the program.
//
//   Interruption interruption;
//   while (!Interruption::Wanted() && ...) ...
#pragma once

#include <csignal>

namespace tk::tools {

/// While it lives, the first SIGINT or SIGTERM only sets the wish; the second ends the program at once.
class Interruption {
public:
    Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    static bool Wanted() noexcept;

private:
    struct sigaction interrupt_ = {};
    struct sigaction terminate_ = {};
};

}  // namespace tk::tools
