// tools/tkdb/pool_connection.h - how a pool of sessions is told what a connection string says.
#pragma once

#include <optional>
#include <string>

namespace tk::tools {

/// What CTDataServer::OpenDatabase takes: it makes "DSN=" and the text of its own, and puts the user and the password
/// behind it, which would take the place of those inside.
struct PoolConnection {
    std::string text;
    std::string user;
    std::string password;
};

/// Reads a connection string as ADO does (names in any case, blanks around them, values in braces or quotes), or the
/// name of a data source.
/// @param reason  why a pool cannot be told, when nothing is returned
std::optional<PoolConnection> ForPool(const std::string& connection, std::string& reason);

}  // namespace tk::tools
