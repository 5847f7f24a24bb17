// ado/odbc/waiting_socket.h - the network connection that a thread waits for inside of a driver.
//
// A driver does not tell its socket. The system tells which call a thread is in, and with what; the descriptor that is
// found there is duplicated and the thread looked at again: as long as it is in the same call, the duplicate is what it
// waits for, whatever happens to the number of the descriptor meanwhile.
//
// Needs /proc/self/task/N/syscall and /proc/self/mem, which a process that may not be dumped only has as root: nothing
// is found without them.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "win32/system/file_descriptor.h"

namespace tk::ado {

class WaitingSocket {
public:
    /// Nothing while the thread does not wait, or waits for something else.
    /// @param thread  of this process, by its number in the system
    static std::optional<WaitingSocket> Find(pid_t thread) noexcept;

    /// True while the thread is in the same call as when it was found, and nothing has come.
    bool IsWaitedFor() const noexcept;

    int Get() const noexcept { return socket_.Get(); }

    /// Ends the connection. Whoever waits for it finds that it is lost; the descriptor stays theirs.
    void ShutDown() const noexcept;

private:
    /// What the system tells of the call that a thread is in.
    struct CallText {
        std::array<char, 256> text;
        std::size_t size = 0;
        std::string_view View() const noexcept { return {text.data(), size}; }
    };

    WaitingSocket(pid_t thread, const CallText& call, system::FileDescriptor socket) noexcept;

    static CallText Read(pid_t thread) noexcept;

    pid_t thread_;
    CallText call_;
    system::FileDescriptor socket_;
    std::uint64_t received_;
};

}  // namespace tk::ado
