// ado/odbc/server_call.h - a limit for calls of a driver whose server says nothing any more.
//
//   const ServerCall call(profile, timeoutSeconds, &handle);
//   result = odbc.ExecDirect(...);
//
// Time limits are kept by the servers, and drivers wait for what they say: a server that hangs without ending, or that
// the network no longer leads to, would be waited for without end. Some time after the limit the server is asked for a
// sign of life (see ServerLife). As long as it gives one the call goes on, however long it takes: to undo a large
// change, for one. When it gives none twice in a row, the connection that the caller waits for is shut down, and the
// driver finds it lost. What was being done may still be done by a server that goes on later.
//
// Nothing is done for drivers without a server. Inside of another such call on the same thread that one's limit holds,
// or that it has none.
// Entering and leaving take neither a lock nor, but for the first time on a thread, a call of the system.
#pragma once

#include <windows.h>

#include <string_view>

#include "ado/odbc/driver_profile.h"

namespace tk::ado {

class StatementHandle;

class ServerCall {
public:
    /// For a call that nobody has set a limit for: the usual one.
    explicit ServerCall(const DriverProfile& profile) noexcept {
        if (profile.lifeQuestion) Enter(*profile.lifeQuestion, UsualSeconds(), nullptr);
    }

    /// The limit for what nobody waits for, and for questions that a server that lives answers at once.
    static LONG ShortSeconds() noexcept;

    /// @param seconds  0: no limit
    /// @param handle  of the statement that the call is for, which ends as "time is over"; it is not shut down while
    ///                another thread cancels it inside the driver. It outlives this. Null: the call cannot be cancelled
    explicit ServerCall(const DriverProfile& profile, LONG seconds, StatementHandle* handle = nullptr) noexcept {
        if (profile.lifeQuestion) Enter(*profile.lifeQuestion, seconds, handle);
    }
    ~ServerCall() {
        if (isEntered_) Leave();
    }

    /// The statement that the call is for, once it is known.
    void Name(StatementHandle& handle) noexcept;

    /// True when the connection was shut down.
    bool WasCut() const noexcept;
    ServerCall(const ServerCall&) = delete;
    ServerCall& operator=(const ServerCall&) = delete;

    /// For tests.
    /// @param milliseconds  how long after the limit the server is asked, and how long it has for each answer; 5 s each
    /// @param usualSeconds  the limit where none is given
    static void SetPatience(int milliseconds, LONG usualSeconds) noexcept;

private:
    static LONG UsualSeconds() noexcept;
    void Enter(std::string_view question, LONG seconds, StatementHandle* handle) noexcept;
    static void Leave() noexcept;

    bool isEntered_ = false;
};

}  // namespace tk::ado
