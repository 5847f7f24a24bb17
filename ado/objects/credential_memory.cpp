#include "ado/objects/credential_memory.h"

#include <algorithm>

#include "ado/cursor/text.h"

namespace tk::ado {
namespace {

/// Everything that settings are made of, in one text.
std::u16string NameOf(const OpenRequest& request) {
    std::u16string name(request.text);
    for (const std::u16string_view part : {request.provider, request.user, request.password})
        name.append(1, u'\0').append(part);
    name.push_back(u'\0');
    name.push_back(request.readOnly ? u'r' : u'w');
    name.push_back(static_cast<char16_t>(request.loginTimeoutSeconds));
    name.push_back(static_cast<char16_t>(request.loginTimeoutSeconds >> 16));
    return name;
}

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

CredentialMemory& CredentialMemory::Instance() {
    // Never destroyed: recordsets of static objects may still open.
    static CredentialMemory& memory = *new CredentialMemory;
    return memory;
}

std::shared_ptr<const SessionSettings> CredentialMemory::Prepare(const OpenRequest& request) {
    std::u16string name = NameOf(request);
    const std::lock_guard lock(mutex_);
    const auto found = std::ranges::find(recent_, name, &Recent::name);
    if (found != recent_.end()) return found->settings;
    auto settings = std::make_shared<SessionSettings>(Parse(request));
    Complete(*settings);
    recent_[nextRecent_] = {std::move(name), settings};
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
