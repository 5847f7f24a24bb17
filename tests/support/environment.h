// environment.h - what a process finds around it, changed for a while.
#pragma once

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <optional>
#include <string>

namespace tk::test {

/// An environment variable with another value, or without one.
class Variable {
public:
    Variable(const char* name, const char* value) : name_(name) {
        if (const char* before = getenv(name)) before_ = before;
        value != nullptr ? setenv(name, value, 1) : unsetenv(name);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { before_ ? setenv(name_, before_->c_str(), 1) : unsetenv(name_); }

private:
    const char* name_;
    std::optional<std::string> before_;
};

/// Nobody to ask: no display, and standard input from nowhere.
class Alone {
public:
    Alone() : before_(dup(STDIN_FILENO)) {
        const int nowhere = open("/dev/null", O_RDONLY | O_CLOEXEC);
        dup2(nowhere, STDIN_FILENO);
        close(nowhere);
    }
    Alone(const Alone&) = delete;
    Alone& operator=(const Alone&) = delete;
    ~Alone() {
        before_ >= 0 ? dup2(before_, STDIN_FILENO) : close(STDIN_FILENO);
        if (before_ >= 0) close(before_);
    }

private:
    Variable display_{"DISPLAY", nullptr};
    Variable wayland_{"WAYLAND_DISPLAY", nullptr};
    int before_;
};

}  // namespace tk::test
