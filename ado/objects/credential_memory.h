// ado/objects/credential_memory.h - from what a connection is opened with to the settings of its session.
//
// A program opens a connection, reads its ConnectionString, which never shows the password, and opens recordsets with
// that text. Within the process that has to work, so the full settings are kept, in memory only, under the shown text.
// Programs open with the same few texts again and again, so the last ones are not parsed again.
//
// Threads: any.
#pragma once

#include <array>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "ado/odbc/session.h"

namespace tk::ado {

/// What an open is asked for, as the object model has it.
struct OpenRequest {
    std::u16string_view text;
    std::u16string_view provider;  // for a text that names none
    std::u16string_view user;
    std::u16string_view password;
    LONG loginTimeoutSeconds = 15;
    bool readOnly = false;
};

class CredentialMemory {
public:
    static CredentialMemory& Instance();

    /// The settings of the request; one that names neither user nor password gets those that its text, as it is shown,
    /// was opened with before.
    std::shared_ptr<const SessionSettings> Prepare(const OpenRequest& request);

    /// After a successful open.
    /// @param shown  the connection's string as it is shown
    void Remember(const std::string& shown, const SessionSettings& settings);

private:
    static constexpr std::size_t kMostKnown = 1024;  // beyond them the one unused longest is forgotten
    static constexpr std::size_t kMostRecent = 8;

    struct Known {
        std::string shown;
        SessionSettings settings;
    };
    struct Recent {
        std::u16string text;
        std::u16string provider;
        std::u16string user;
        std::u16string password;
        std::shared_ptr<const SessionSettings> settings;  // null: an unused place

        bool Answers(const OpenRequest& request) const noexcept;
    };

    void Complete(SessionSettings& settings);

    std::mutex mutex_;
    std::list<Known> known_;  // only those whose shown text does not open by itself; the last used first
    std::unordered_map<std::string_view, std::list<Known>::iterator> byShown_;
    std::array<Recent, kMostRecent> recent_;
    std::size_t nextRecent_ = 0;
};

}  // namespace tk::ado
