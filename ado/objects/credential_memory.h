// ado/objects/credential_memory.h - which user and password belong to a connection string that is shown without them.
//
// A program opens a connection, reads its ConnectionString, which never shows the password, and opens recordsets with
// that text. Within the process that has to work, so the full settings are kept, in memory only, under the shown text.
//
// Threads: any.
#pragma once

#include <map>
#include <mutex>
#include <string>

#include "ado/odbc/session.h"

namespace tk::ado {

class CredentialMemory {
public:
    static CredentialMemory& Instance();

    /// After a successful open.
    /// @param shown  the connection's string as it is shown
    void Remember(const std::string& shown, const SessionSettings& settings);

    /// Before an open: gives settings that name neither user nor password what the same shown text was opened with.
    void Complete(SessionSettings& settings) const;

private:
    mutable std::mutex mutex_;
    std::map<std::string, SessionSettings> known_;  // only those whose shown text does not open by itself
};

}  // namespace tk::ado
