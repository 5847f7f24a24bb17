#include "ado/objects/credential_memory.h"

#include <algorithm>

#include "ado/cursor/text.h"
#include "ado/odbc/session_facts.h"

namespace tk::ado {
namespace {

SessionSettings Parse(const OpenRequest& request) {
    SessionSettings settings;
    settings.connection = ConnectionString::Parse(ToUtf8(request.text));
    if (!request.provider.empty()) settings.connection.SetIfAbsent("Provider", ToUtf8(request.provider));
    settings.user = ToUtf8(request.user);
    settings.password = ToUtf8(request.password);
    settings.loginTimeoutSeconds = request.loginTimeoutSeconds;
    settings.readOnly = request.readOnly;
    return settings;
}

}  // namespace

bool CredentialMemory::Recent::Answers(const OpenRequest& request) const noexcept {
    return settings != nullptr && SameText(text, request.text) && SameText(provider, request.provider) &&
           SameText(user, request.user) && SameText(password, request.password) &&
           settings->readOnly == request.readOnly && settings->loginTimeoutSeconds == request.loginTimeoutSeconds;
}

CredentialMemory& CredentialMemory::Instance() {
    // Never destroyed: recordsets of static objects may still open.
    static CredentialMemory& memory = *new CredentialMemory;
    return memory;
}

std::shared_ptr<const SessionSettings> CredentialMemory::Prepare(const OpenRequest& request) {
    const std::lock_guard lock(mutex_);
    const auto found = std::ranges::find_if(recent_, [&](const Recent& each) { return each.Answers(request); });
    if (found != recent_.end()) return found->settings;
    auto settings = std::make_shared<SessionSettings>(Parse(request));
    Complete(*settings);
    settings->key = KeyOf(*settings);
    recent_[nextRecent_] = {std::u16string(request.text), std::u16string(request.provider),
                            std::u16string(request.user), std::u16string(request.password), settings};
    nextRecent_ = (nextRecent_ + 1) % kMostRecent;
    return settings;
}

void CredentialMemory::Complete(SessionSettings& settings) {
    if (!settings.user.empty() || !settings.password.empty()) return;
    const auto found = byShown_.find(settings.connection.Text());
    if (found == byShown_.end()) return;
    known_.splice(known_.begin(), known_, found->second);
    const SessionSettings& full = found->second->settings;
    settings.connection = full.connection;
    settings.user = full.user;
    settings.password = full.password;
}

void CredentialMemory::Remember(const std::string& shown, const SessionSettings& settings) {
    const bool opensByItself =
        settings.user.empty() && settings.password.empty() && shown == settings.connection.Text();
    if (opensByItself) return;
    const std::lock_guard lock(mutex_);
    const auto found = byShown_.find(shown);
    if (found != byShown_.end()) {
        const SessionSettings& known = found->second->settings;
        if (known.connection.Text() == settings.connection.Text() && known.user == settings.user &&
            known.password == settings.password) {
            return;
        }
        const auto outdated = found->second;
        byShown_.erase(found);  // its name is a view into the other
        known_.erase(outdated);
    }
    // What was prepared with the former settings is not right any more.
    recent_.fill({});
    if (known_.size() >= kMostKnown) {
        byShown_.erase(known_.back().shown);
        known_.pop_back();
    }
    known_.push_front({shown, settings});
    byShown_.emplace(known_.front().shown, known_.begin());
}

}  // namespace tk::ado
