// ado/odbc/server_probe.h - asks a server for a sign of life on a connection of its own, without waiting.
//
// A server that hangs, or whose machine is gone, may still have its connections accepted by a system: only a byte that
// it sends tells that it lives. Servers of databases speak before they know who asks.
//
// Threads: one at a time.
#pragma once

#include <string_view>

#include "win32/system/file_descriptor.h"

namespace tk::ado {

class ServerProbe {
public:
    enum class State : unsigned char {
        Waiting,
        Alive,  // it has answered, or its machine says that nobody takes connections there, or this one cannot ask
        Silent  // nothing leads there
    };

    /// Begins to connect to the server behind a connected socket.
    /// @param question  what it answers; empty: it speaks first
    ServerProbe(int connected, std::string_view question) noexcept;

    /// Goes on as far as that is possible without waiting.
    State Look() noexcept;

private:
    State Fail(int error) noexcept;
    State Ask() noexcept;

    system::FileDescriptor socket_;
    std::string_view question_;
    bool isAsked_ = false;
    State state_ = State::Waiting;
};

}  // namespace tk::ado
