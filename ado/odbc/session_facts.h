// ado/odbc/session_facts.h - what a connection string comes to, and the connections that sessions of it get.
//
// Threads: any.
#pragma once

#include <memory>
#include <string>

#include "ado/odbc/connection_string.h"
#include "ado/odbc/physical_connection.h"
#include "ado/odbc/session_cache.h"

namespace tk::ado {

struct SessionSettings;

/// Worked out once for a connection string and kept with its connections.
struct SessionFacts {
    SessionKey key;
    PhysicalConnection::Request request;
    ConnectionProperties properties;
    std::string display;
    bool isKept = true;  // in the cache, after the session
};

/// The key of everything that settings are made of.
SessionKey KeyOf(const SessionSettings& settings);

/// An idle connection of these settings, or a new one; its facts stand with it.
/// @throws AdoError
std::shared_ptr<Lease> TakeLease(const SessionSettings& settings);

/// A new connection, whatever lies idle.
/// @throws AdoError
std::shared_ptr<Lease> OpenLease(const std::shared_ptr<const SessionFacts>& facts);

/// The second connection of a session, whose driver steps through large results instead of holding them.
/// @throws AdoError
std::shared_ptr<Lease> TakeSideLease(const SessionFacts& facts, const char* keywords);

}  // namespace tk::ado
