// What an OLE DB connection string means for ODBC: one row for each known provider.
#include <tkwin32/text.h>

#include <algorithm>
#include <charconv>

#include "ado/error.h"
#include "ado/odbc/ascii.h"
#include "ado/odbc/connection_string.h"
#include "ado/odbc/driver_profile.h"
#include "ado/odbc/environment.h"

namespace tk::ado {
namespace {

/// How a provider's data source becomes the driver's keywords.
enum class SourceForm : unsigned char {
    AsGiven,    // MSDASQL: a data source name, everything else untouched
    HostComma,  // "host,port"
    HostColon,  // "host:port", or a Port key
    HostPort,   // a Server and a Port key
    VendorTds,  // the server maker's own driver: "host,port" stays whole
    File,       // DBQ
    Oracle,     // a service name: DBQ
    Db2,        // a data source if there is one of that name, else a database at Location
    Persisted,
};

struct Extra {
    const char* key;
    const char* value;
};

constexpr Extra kNoExtras[] = {{nullptr, nullptr}};
constexpr Extra kTds7[] = {{"TDS_Version", "7.4"}, {"ClientCharset", "UTF-8"}, {nullptr, nullptr}};
constexpr Extra kTds5[] = {{"TDS_Version", "5.0"}, {"ClientCharset", "UTF-8"}, {nullptr, nullptr}};
constexpr Extra kPostgres[] = {{"BoolsAsChar", "0"}, {nullptr, nullptr}};
constexpr Extra kMaria[] = {{"INITSTMT", "SET sql_mode=CONCAT(@@sql_mode,',ANSI_QUOTES')"}, {nullptr, nullptr}};

struct ProviderRule {
    const char* provider;    // matches with any version tail of digits and points
    const char* driverWord;  // a registered driver whose name holds it is taken
    SourceForm form;
    const char* defaultPort;
    const Extra* extras;
};

// A provider with several rows takes the first whose driver is installed.
constexpr ProviderRule kProviders[] = {
    {"MSDASQL", nullptr, SourceForm::AsGiven, nullptr, kNoExtras},
    {"SQLOLEDB", "SQL Server", SourceForm::VendorTds, nullptr, kNoExtras},
    {"SQLOLEDB", "FreeTDS", SourceForm::HostComma, "1433", kTds7},
    {"SQLNCLI", "SQL Server", SourceForm::VendorTds, nullptr, kNoExtras},
    {"SQLNCLI", "FreeTDS", SourceForm::HostComma, "1433", kTds7},
    {"MSOLEDBSQL", "SQL Server", SourceForm::VendorTds, nullptr, kNoExtras},
    {"MSOLEDBSQL", "FreeTDS", SourceForm::HostComma, "1433", kTds7},
    {"ASEOLEDB", "FreeTDS", SourceForm::HostColon, "5000", kTds5},
    {"Sybase.ASEOLEDBProvider", "FreeTDS", SourceForm::HostColon, "5000", kTds5},
    {"Sybase ASE OLE DB Provider", "FreeTDS", SourceForm::HostColon, "5000", kTds5},
    {"MSDAORA", "Oracle", SourceForm::Oracle, nullptr, kNoExtras},
    {"OraOLEDB.Oracle", "Oracle", SourceForm::Oracle, nullptr, kNoExtras},
    {"IBMDADB2", "DB2", SourceForm::Db2, nullptr, kNoExtras},
    {"DB2OLEDB", "DB2", SourceForm::Db2, nullptr, kNoExtras},
    {"Microsoft.Jet.OLEDB", "MDBTools", SourceForm::File, nullptr, kNoExtras},
    {"Microsoft.ACE.OLEDB", "MDBTools", SourceForm::File, nullptr, kNoExtras},
    {"PGNP", "PostgreSQL Unicode", SourceForm::HostPort, "5432", kPostgres},
    {"PGOLEDB", "PostgreSQL Unicode", SourceForm::HostPort, "5432", kPostgres},
    {"PostgreSQL OLE DB Provider", "PostgreSQL Unicode", SourceForm::HostPort, "5432", kPostgres},
    {"MySQLProv", "MariaDB Unicode", SourceForm::HostPort, "3306", kMaria},
    {"MySqlOLEDB", "MariaDB Unicode", SourceForm::HostPort, "3306", kMaria},
    {"MSPersist", nullptr, SourceForm::Persisted, nullptr, kNoExtras},
};

// Keys that OLE DB or this library understands; no driver sees them.
constexpr const char* kOurKeys[] = {
    "Provider",
    "Data Source",
    "Initial Catalog",
    "User ID",
    "Password",
    "Extended Properties",
    "Integrated Security",
    "Persist Security Info",
    "PersistSecurityInfo",
    "Connect Timeout",
    "Connection Timeout",
    "General Timeout",
    "Mode",
    "Prompt",
    "Locale Identifier",
    "Location",
    "OLE DB Services",
    "Application Name",
    "Workstation ID",
    "DBMS Name",
    "Window Handle",
    "Cache Authentication",
    "Encrypt Password",
    "Mask Password",
    "Impersonation Level",
    "Protection Level",
    "Bind Flags",
    "Lock Owner",
    "Initialization Catalog",
    "Auto Translate",
    "Packet Size",
    "Use Procedure for Prepare",
    "Use Encryption for Data",
    "Tag with column collation when possible",
    "DataTypeCompatibility",
    "Trust Server Certificate",
    "Replication server name connect option",
    "File Name",
    "Remote Provider",
    "Remote Server",
    "URL",
};

// With any provider but MSDASQL these are other spellings of properties too.
constexpr const char* kAliasKeys[] = {
    "Server", "Address", "Addr",        "Network Address", "Database",           "User", "UID",
    "PWD",    "Port",    "Server Port", "Network Library", "Trusted_Connection", "App",  "WSID"};

bool IsOneOf(std::string_view key, std::span<const char* const> keys) {
    return std::ranges::any_of(keys, [&](const char* known) { return EqualsNoCase(key, known); });
}

bool MatchesProvider(std::string_view given, std::string_view known) {
    return StartsWithNoCase(given, known) &&
           given.substr(known.size()).find_first_not_of(".0123456789") == std::string_view::npos;
}

bool IsTrue(std::string_view value) {
    return EqualsNoCase(value, "true") || EqualsNoCase(value, "yes") || EqualsNoCase(value, "sspi") || value == "1";
}

std::optional<int> ReadInteger(const std::string* value) {
    if (value == nullptr) return std::nullopt;
    const std::string_view text = Trim(*value);
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

/// ConnectModeEnum: a number, or words with bars between them.
std::optional<int> ReadMode(const std::string* value) {
    static constexpr struct {
        std::string_view word;
        int bits;
    } kWords[] = {
        {"Read", 1},
        {"Write", 2},
        {"ReadWrite", 3},
        {"Share Deny Read", 4},
        {"Share Deny Write", 8},
        {"Share Exclusive", 0xC},
        {"Share Deny None", 0x10},
    };
    if (const auto number = ReadInteger(value)) return number;
    if (value == nullptr) return std::nullopt;
    int mode = 0;
    std::string_view rest = *value;
    for (bool isLast = false; !isLast;) {
        const std::size_t bar = rest.find('|');
        isLast = bar == std::string_view::npos;
        const std::string_view word = Trim(rest.substr(0, bar));
        const auto known = std::ranges::find_if(kWords, [&](const auto& row) { return EqualsNoCase(row.word, word); });
        if (known == std::end(kWords)) return std::nullopt;
        mode |= known->bits;
        if (!isLast) rest.remove_prefix(bar + 1);
    }
    return mode;
}

/// Cuts "host,port" in two; the port is empty when there is none.
std::pair<std::string, std::string> SplitPort(const std::string& source, char separator) {
    const std::size_t at = source.rfind(separator);
    if (at == std::string::npos) return {source, {}};
    return {std::string(Trim(source.substr(0, at))), std::string(Trim(source.substr(at + 1)))};
}

/// The string with the pairs of its Extended Properties added; what the string itself says counts first.
ConnectionString MergeExtended(const ConnectionString& text) {
    ConnectionString merged = text;
    const std::string* inner = text.Find("Extended Properties");
    if (inner == nullptr) return merged;
    const ConnectionString extended = ConnectionString::Parse(*inner);
    for (const auto& pair : extended.Pairs())
        merged.SetIfAbsent(pair.key, pair.value);
    return merged;
}

/// The rule and the driver for a provider that is not MSDASQL.
const ProviderRule& FindRule(const std::string& provider, std::string& driver) {
    const ProviderRule* known = nullptr;
    const auto drivers = [&] {
        const bool mapped = std::ranges::any_of(kProviders, [&](const ProviderRule& rule) {
            return rule.driverWord != nullptr && MatchesProvider(provider, rule.provider);
        });
        return mapped ? InstalledDrivers() : std::vector<InstalledDriver>{};
    }();
    for (const ProviderRule& rule : kProviders) {
        if (!MatchesProvider(provider, rule.provider)) continue;
        if (rule.driverWord == nullptr) return rule;
        known = &rule;
        const auto found = std::ranges::find_if(
            drivers, [&](const InstalledDriver& each) { return ContainsNoCase(each.name, rule.driverWord); });
        if (found == drivers.end()) continue;
        driver = found->name;
        return rule;
    }
    throw AdoError(
        ErrorNumber::ProviderNotFound,
        text::Utf8ToUtf16(provider) + (known == nullptr ? u"" : u" → " + text::Utf8ToUtf16(known->driverWord)));
}

void SetIfGiven(ConnectionString& odbc, std::string_view key, const std::string& value) {
    if (!value.empty()) odbc.Set(key, value);
}

void MapSource(const ProviderRule& rule, const ConnectionString& text, ConnectionString& odbc) {
    const std::string source = text.Get({"Data Source", "Server", "Address", "Addr", "Network Address"});
    const std::string catalog = text.Get({"Initial Catalog", "Database"});
    switch (rule.form) {
        case SourceForm::HostComma:
        case SourceForm::HostColon:
        case SourceForm::HostPort: {
            const char separator = rule.form == SourceForm::HostColon ? ':' : ',';
            auto [host, port] = SplitPort(source, separator);
            if (port.empty()) port = text.Get({"Port", "Server Port"});
            SetIfGiven(odbc, "Server", host);
            // A named instance finds its port itself.
            if (port.empty() && host.find('\\') == std::string::npos) port = rule.defaultPort;
            SetIfGiven(odbc, "Port", port);
            SetIfGiven(odbc, "Database", catalog);
            break;
        }
        case SourceForm::VendorTds:
            SetIfGiven(odbc, "Server", source);
            SetIfGiven(odbc, "Database", catalog);
            break;
        case SourceForm::File:
        case SourceForm::Oracle:
            SetIfGiven(odbc, "DBQ", source);
            break;
        case SourceForm::Db2: {
            const std::string location = text.Get({"Location"});
            if (location.empty() && !DriverOfDataSource(source).empty()) {
                odbc.Remove("Driver");
                odbc.Set("DSN", source);
                break;
            }
            const auto [host, port] = SplitPort(location, ':');
            SetIfGiven(odbc, "Database", source.empty() ? catalog : source);
            SetIfGiven(odbc, "Hostname", host);
            SetIfGiven(odbc, "Port", port);
            if (!host.empty()) odbc.Set("Protocol", "TCPIP");
            break;
        }
        case SourceForm::AsGiven:
        case SourceForm::Persisted:
            break;
    }
    if (rule.form == SourceForm::HostComma || rule.form == SourceForm::VendorTds) {
        const bool trusted = IsTrue(text.Get({"Integrated Security", "Trusted_Connection"}));
        if (trusted) odbc.Set("Trusted_Connection", "yes");
        SetIfGiven(odbc, "APP", text.Get({"Application Name", "App"}));
        SetIfGiven(odbc, "WSID", text.Get({"Workstation ID", "WSID"}));
    }
    for (const Extra* extra = rule.extras; extra->key != nullptr; ++extra) {
        const std::string* given = text.Find(extra->key);
        odbc.Set(extra->key, given != nullptr ? *given : extra->value);
    }
}

/// Everything of the string that is the driver's own.
void PassOn(const ConnectionString& text, bool isPlainOdbc, ConnectionString& odbc) {
    for (const auto& pair : text.Pairs()) {
        if (IsOneOf(pair.key, kOurKeys) || StartsWithNoCase(pair.key, "Jet OLEDB:")) continue;
        if (!isPlainOdbc && (IsOneOf(pair.key, kAliasKeys) || odbc.Find(pair.key) != nullptr)) continue;
        odbc.Set(pair.key, pair.value);
    }
}

void MapPlainOdbc(const ConnectionString& text, ConnectionString& odbc) {
    // Driver and DSN have to stand first for the driver manager.
    for (const char* key : {"Driver", "DSN", "FileDSN"}) {
        if (const std::string* value = text.Find(key)) odbc.Set(key, *value);
    }
    const bool isNamed = !odbc.Pairs().empty();
    const std::string source = text.Get({"Data Source"});
    if (!isNamed && !source.empty()) odbc.Set("DSN", source);
    PassOn(text, true, odbc);
    if (const std::string catalog = text.Get({"Initial Catalog"}); !catalog.empty()) {
        odbc.SetIfAbsent("DATABASE", catalog);
    }
}

void SetLogin(const ConnectionString& text, std::string_view user, std::string_view password, bool isFile,
              ConnectionString& odbc) {
    std::string uid = text.Get({"User ID", "UID", "User"});
    std::string pwd = text.Get({"Password", "PWD"});
    if (!user.empty()) uid = user;
    if (!password.empty()) pwd = password;
    odbc.Remove("User");
    if (isFile) {  // such a driver knows no users
        odbc.Remove("UID");
        odbc.Remove("PWD");
        return;
    }
    SetIfGiven(odbc, "UID", uid);
    SetIfGiven(odbc, "PWD", pwd);
}

}  // namespace

const DriverProfile& ProfileOf(const ConnectionString& odbc) {
    std::string driver = odbc.Get({"Driver"});
    if (driver.empty()) {
        const std::string* source = odbc.Find("DSN");
        if (source != nullptr) driver = DriverOfDataSource(*source);
    }
    if (driver.empty()) return FindProfile({});
    const DriverProfile& byName = FindProfile(driver);
    if (byName.fetchMode != FetchMode::GetOnly) return byName;
    for (const InstalledDriver& each : InstalledDrivers()) {
        if (EqualsNoCase(each.name, driver)) return FindProfile(each.library + " " + driver);
    }
    return byName;
}

void AddLoginTimeout(ConnectionString& odbc, int seconds) {
    const char* keyword = ProfileOf(odbc).loginTimeoutKeyword;
    if (keyword != nullptr && seconds > 0) odbc.SetIfAbsent(keyword, std::to_string(seconds));
}

int TakeLockTime(ConnectionString& odbc) {
    constexpr int kMoment = 100;
    const char* keyword = ProfileOf(odbc).lockTimeKeyword;
    if (keyword == nullptr) return 0;
    const int whole = ReadInteger(odbc.Find(keyword)).value_or(0);
    if (whole <= kMoment) return 0;
    odbc.Set(keyword, std::to_string(kMoment));
    return whole - kMoment;
}

ConnectionProperties ReadProperties(const ConnectionString& given) {
    ConnectionProperties properties;
    properties.provider = given.Provider();
    // What stands inside Extended Properties counts where the string itself does not say it.
    const ConnectionString text = MergeExtended(given);
    properties.dataSource = text.Get({"Data Source", "DSN", "Server", "Address", "Addr", "Network Address", "DBQ"});
    properties.initialCatalog = text.Get({"Initial Catalog", "Database"});
    properties.userId = text.Get({"User ID", "UID", "User"});
    properties.location = text.Get({"Location"});
    properties.extendedProperties = text.Get({"Extended Properties"});
    properties.persistSecurityInfo = IsTrue(text.Get({"Persist Security Info", "PersistSecurityInfo"}));
    if (const std::string* name = text.Find("DBMS Name")) properties.dbmsName = *name;
    properties.connectTimeoutSeconds = ReadInteger(text.Find("Connect Timeout"));
    if (!properties.connectTimeoutSeconds) {
        properties.connectTimeoutSeconds = ReadInteger(text.Find("Connection Timeout"));
    }
    properties.mode = ReadMode(text.Find("Mode"));
    properties.localeIdentifier = ReadInteger(text.Find("Locale Identifier")).value_or(0);
    properties.oleDbServices = ReadInteger(text.Find("OLE DB Services")).value_or(-1);
    return properties;
}

ResolvedConnection Resolve(const ConnectionString& given, std::string_view user, std::string_view password) {
    ResolvedConnection resolved;
    resolved.properties = ReadProperties(given);
    if (given.Find("Provider") != nullptr && given.Find("File Name") != nullptr) {
        throw AdoError(ErrorNumber::InvalidArgument, u"Provider, File Name");
    }
    const ConnectionString text = MergeExtended(given);
    if (!user.empty()) resolved.properties.userId = user;

    std::string driver;
    const ProviderRule& rule = FindRule(resolved.properties.provider, driver);
    ConnectionString& odbc = resolved.odbc;
    resolved.isPersistedFile = rule.form == SourceForm::Persisted;
    if (resolved.isPersistedFile) return resolved;
    if (rule.form == SourceForm::AsGiven) {
        MapPlainOdbc(text, odbc);
    } else {
        odbc.Set("Driver", driver);
        MapSource(rule, text, odbc);
        PassOn(text, false, odbc);
    }
    const DriverProfile& profile = ProfileOf(odbc);
    SetLogin(text, user, password, profile.isFileDatabase, odbc);
    const bool isDataSource = odbc.Find("Driver") == nullptr;
    for (const DefaultKeyword& keyword : profile.defaults) {
        if (!isDataSource || keyword.alsoForDataSources) odbc.SetIfAbsent(keyword.key, keyword.value);
    }
    return resolved;
}

}  // namespace tk::ado
