#include "ado/objects/credential_memory.h"

namespace tk::ado {

CredentialMemory& CredentialMemory::Instance() {
    static CredentialMemory memory;
    return memory;
}

void CredentialMemory::Remember(const std::string& shown, const SessionSettings& settings) {
    const bool opensByItself =
        settings.user.empty() && settings.password.empty() && shown == settings.connection.Text();
    if (opensByItself) return;
    const std::lock_guard lock(mutex_);
    known_[shown] = settings;
}

void CredentialMemory::Complete(SessionSettings& settings) const {
    if (!settings.user.empty() || !settings.password.empty()) return;
    const std::lock_guard lock(mutex_);
    const auto found = known_.find(settings.connection.Text());
    if (found == known_.end()) return;
    settings.connection = found->second.connection;
    settings.user = found->second.user;
    settings.password = found->second.password;
}

}  // namespace tk::ado
