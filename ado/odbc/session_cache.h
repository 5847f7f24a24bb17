// ado/odbc/session_cache.h - idle connections, kept for the next session that asks for the same one.
//
// Every recordset that is opened with a connection string makes its own session; keeping connections makes that cheap.
// A connection is kept for 60 s, at most 16 of them in all, and only when nothing that a session may have changed can
// be on it. A child process never touches the connections of its parent.
//
// Threads: any.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "ado/odbc/fork.h"
#include "ado/odbc/physical_connection.h"

namespace tk::ado {

/// Names the connections that serve the same settings. Shared, since it is long and every open needs it.
using SessionKey = std::shared_ptr<const std::string>;

/// A connection on loan; goes back to the cache, or is closed, when the last user lets go of it.
class Lease {
public:
    Lease(std::unique_ptr<PhysicalConnection> connection, SessionKey key, bool isReused)
        : connection_(std::move(connection)), key_(std::move(key)), isReused_(isReused) {}
    ~Lease();
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;

    PhysicalConnection& operator*() const noexcept { return *connection_; }
    PhysicalConnection* operator->() const noexcept { return connection_.get(); }

    /// True until the first statement: a failure then may only mean that the connection was lost while it was idle.
    bool IsFreshFromCache() const noexcept { return isReused_; }
    void MarkUsed() noexcept { isReused_ = false; }

private:
    std::unique_ptr<PhysicalConnection> connection_;
    SessionKey key_;  // null: not to be kept
    bool isReused_ = false;
};

class SessionCache {
public:
    static SessionCache& Instance();

    /// An idle connection of that key that is still usable, or null.
    std::unique_ptr<PhysicalConnection> Take(const SessionKey& key);

    /// Keeps the connection if it can be used again; closes it otherwise.
    void Return(const SessionKey& key, std::unique_ptr<PhysicalConnection> connection) noexcept;

    /// The idle connections of that key are asked before they are handed out, however short they were idle.
    void Distrust(const SessionKey& key) noexcept;

    /// Closes the idle connections.
    void Clear() noexcept;

    std::size_t IdleCount() const;

    /// For tests: how long an idle connection is kept.
    void SetIdleLimit(long long milliseconds);

private:
    friend class PerProcess<SessionCache>;
    SessionCache();
    ~SessionCache();
    void ShutDown() noexcept;
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tk::ado
