#include "ado/odbc/session_facts.h"

#include "ado/odbc/session.h"

namespace tk::ado {
namespace {

constexpr int kServicesOff = -2;  // the connection string's way to say: no pooling

std::shared_ptr<const SessionFacts> WorkOut(const SessionSettings& settings, SessionKey key) {
    ResolvedConnection resolved = Resolve(settings.connection, settings.user, settings.password);
    if (resolved.isPersistedFile) throw AdoError(ErrorNumber::ProviderNotFound, u"MSPersist");
    auto facts = std::make_shared<SessionFacts>();
    facts->key = std::move(key);
    facts->properties = std::move(resolved.properties);
    facts->request.loginTimeoutSeconds = facts->properties.connectTimeoutSeconds.value_or(settings.loginTimeoutSeconds);
    facts->request.readOnly = facts->properties.mode ? IsReadOnlyMode(*facts->properties.mode) : settings.readOnly;
    facts->request.likely = &ProfileOf(resolved.odbc);
    AddLoginTimeout(resolved.odbc, facts->request.loginTimeoutSeconds);
    facts->request.lockMilliseconds = TakeLockTime(resolved.odbc);
    facts->request.odbcString = resolved.odbc.ToOdbc();
    facts->display =
        facts->properties.persistSecurityInfo ? settings.connection.Text() : settings.connection.WithoutPassword();
    facts->isKept = facts->properties.oleDbServices != kServicesOff;
    return facts;
}

}  // namespace

SessionKey KeyOf(const SessionSettings& settings) {
    std::string key = settings.connection.Text();
    key.push_back('\0');
    key.append(settings.user).push_back('\0');
    key.append(settings.password).push_back('\0');
    key.push_back(settings.readOnly ? 'r' : 'w');
    return std::make_shared<const std::string>(std::move(key));
}

std::shared_ptr<Lease> TakeLease(const SessionSettings& settings) {
    SessionKey key = settings.key != nullptr ? settings.key : KeyOf(settings);
    if (auto idle = SessionCache::Instance().Take(key)) {
        return std::make_shared<Lease>(std::move(idle), std::move(key), true);
    }
    return OpenLease(WorkOut(settings, std::move(key)));
}

std::shared_ptr<Lease> OpenLease(const std::shared_ptr<const SessionFacts>& facts) {
    auto connection = std::make_unique<PhysicalConnection>(facts->request);
    connection->facts = facts;
    return std::make_shared<Lease>(std::move(connection), facts->isKept ? facts->key : nullptr, false);
}

std::shared_ptr<Lease> TakeSideLease(const SessionFacts& facts, const char* keywords) {
    const auto key = std::make_shared<const std::string>(*facts.key + '\0' + keywords);
    if (auto idle = SessionCache::Instance().Take(key)) return std::make_shared<Lease>(std::move(idle), key, true);
    PhysicalConnection::Request request = facts.request;
    request.odbcString.append(keywords).append(";");
    auto connection = std::make_unique<PhysicalConnection>(request);
    return std::make_shared<Lease>(std::move(connection), facts.isKept ? key : nullptr, false);
}

}  // namespace tk::ado
