// ado/odbc/connect_turn.h - one connect after the other, for a driver that does not bear two.
//
// It sets the locale of the process while it connects, and goes on to read the locale's name, which is gone as soon as
// another thread sets the locale again.
#pragma once

#include <cstdint>

namespace tk::ado {

/// The turn of a thread to connect, while this lives. Whoever has waited a second for another one's takes it over: that
/// one waits for its server, and the driver sets the locale only when it is connected.
///
/// Threads: any; a child process does not wait for threads of its parent.
class ConnectTurn {
public:
    /// @param isNeeded  false: nobody waits for this one, nor does it wait
    explicit ConnectTurn(bool isNeeded);
    ~ConnectTurn();
    ConnectTurn(const ConnectTurn&) = delete;
    ConnectTurn& operator=(const ConnectTurn&) = delete;

private:
    std::uint64_t number_ = 0;  // 0: none was needed
};

}  // namespace tk::ado
