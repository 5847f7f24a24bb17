// ado/odbc/connection_string.h - the connection string applications already have, and what becomes of it for ODBC.
//
//   ConnectionString text = ConnectionString::Parse("Provider=SQLOLEDB;Data Source=db1,1433;Initial Catalog=stock");
//   ResolvedConnection target = Resolve(text, "sa", "secret");   // Driver={FreeTDS};Server=db1;Port=1433;...
//
// All texts are UTF-8. Grammar: pairs `key=value` between semicolons; a fragment without '=' is ignored; '==' in a key
// stands for one '='; values may be "...", '...' (the quote doubled inside) or {...} ('}' doubled inside); keys compare
// without case; of a repeated key the last value counts, of Provider the first.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tk::ado {

struct DriverProfile;

class ConnectionString {
public:
    struct Pair {
        std::string key;
        std::string value;      // without its quotes
        bool isBraced = false;  // was {...}: printed so again
    };

    ConnectionString() = default;

    /// Never fails: what is no pair is ignored.
    static ConnectionString Parse(std::string_view text);

    /// As it was given to Parse.
    const std::string& Text() const noexcept { return text_; }

    const std::vector<Pair>& Pairs() const noexcept { return pairs_; }

    /// The value of a key, without case; null when the string does not have it.
    const std::string* Find(std::string_view key) const noexcept;

    /// The value of the first of several spellings that is present; "" when none is.
    std::string Get(std::initializer_list<std::string_view> spellings) const;

    /// Sets or replaces; does not change Text().
    void Set(std::string_view key, std::string_view value);
    void SetIfAbsent(std::string_view key, std::string_view value);
    void Remove(std::string_view key);

    /// Pairs printed for SQLDriverConnect: values in braces where ODBC needs them.
    std::string ToOdbc() const;

    /// Text() without the password's value; everything else as given.
    std::string WithoutPassword() const;

    /// The provider as the string names it; "MSDASQL" when it names none, or that one with a version tail.
    std::string Provider() const;

private:
    std::string text_;
    std::vector<Pair> pairs_;
};

/// What the properties of a connection keep from its string; everything else goes to the driver.
struct ConnectionProperties {
    std::string provider = "MSDASQL";
    std::string dataSource;  // as the string names it: DSN, server or file
    std::string initialCatalog;
    std::string userId;
    std::string location;
    std::string extendedProperties;
    std::optional<std::string> dbmsName;  // overrides what "DBMS Name" reports
    bool persistSecurityInfo = false;
    std::optional<int> connectTimeoutSeconds;
    std::optional<int> mode;  // ConnectModeEnum
    int localeIdentifier = 0;
    int oleDbServices = -1;  // -2 switches the session cache off
};

/// ConnectModeEnum: reading is asked for, writing is not.
constexpr bool IsReadOnlyMode(int mode) noexcept {
    return (mode & 3) == 1;
}

/// A string made ready for SQLDriverConnect.
struct ResolvedConnection {
    ConnectionString odbc;
    ConnectionProperties properties;
    bool isPersistedFile = false;  // provider MSPersist: there is no database behind it
};

/// The properties alone; needs no driver and never fails.
ConnectionProperties ReadProperties(const ConnectionString& text);

/// Maps provider names to installed drivers, merges Extended Properties, takes out what is not the driver's, and adds
/// the user and password where given.
/// @throws AdoError ProviderNotFound when the provider is unknown or no driver for it is installed
ResolvedConnection Resolve(const ConnectionString& text, std::string_view user, std::string_view password);

/// For the drivers that wait for locks themselves, deaf to cancellation: tells the driver to wait only a moment.
/// @return the milliseconds that are left to wait by LockWait; 0: the driver's own waiting is enough
int TakeLockTime(ConnectionString& odbc);

/// The profile of the driver that the string will load; the safe one where that is not known before connecting.
const DriverProfile& ProfileOf(const ConnectionString& odbc);

/// For the drivers that ignore the login time-out of ODBC and have a keyword for it.
void AddLoginTimeout(ConnectionString& odbc, int seconds);

}  // namespace tk::ado
