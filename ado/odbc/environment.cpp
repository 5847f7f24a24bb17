#include "ado/odbc/environment.h"

#include <cstring>
#include <mutex>

#include "ado/odbc/ascii.h"
#include "ado/odbc/odbc_handle.h"

namespace tk::ado {
namespace {

std::mutex listMutex;  // SQLDrivers and SQLDataSources keep their position in the environment

/// Splits the driver attributes, `Key=value` texts one after the other, each with its NUL.
std::string AttributeValue(const char* list, std::size_t size, std::string_view key) {
    const char* end = list + size;
    while (list < end && *list != '\0') {
        const std::string_view pair(list, strnlen(list, static_cast<std::size_t>(end - list)));
        const std::size_t sign = pair.find('=');
        if (sign != std::string_view::npos && EqualsNoCase(pair.substr(0, sign), key)) {
            return std::string(pair.substr(sign + 1));
        }
        list += pair.size() + 1;
    }
    return {};
}

}  // namespace

SQLHENV SharedEnvironment() {
    static std::mutex mutex;
    static SQLHENV environment = nullptr;
    const std::lock_guard lock(mutex);
    if (environment != nullptr) return environment;
    SQLHANDLE handle = nullptr;
    if (!SQL_SUCCEEDED(Odbc().AllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &handle))) throw MakeError({});
    auto* version = reinterpret_cast<SQLPOINTER>(static_cast<SQLULEN>(SQL_OV_ODBC3));
    const SQLRETURN result = Odbc().SetEnvAttr(handle, SQL_ATTR_ODBC_VERSION, version, 0);
    if (!SQL_SUCCEEDED(result)) {
        const auto records = ReadDiagnostics(SQL_HANDLE_ENV, handle);
        Odbc().FreeHandle(SQL_HANDLE_ENV, handle);
        throw MakeError(records);
    }
    environment = handle;
    return environment;
}

std::vector<InstalledDriver> InstalledDrivers() {
    std::vector<InstalledDriver> drivers;
    SQLHENV environment = SharedEnvironment();
    const std::lock_guard lock(listMutex);
    SQLUSMALLINT direction = SQL_FETCH_FIRST;
    for (;;) {
        char name[256] = {};
        char attributes[4096] = {};
        SQLSMALLINT nameLength = 0;
        SQLSMALLINT attributesLength = 0;
        // Two NULs always remain at the end of the attributes.
        const SQLRETURN result =
            Odbc().Drivers(environment, direction, reinterpret_cast<SQLCHAR*>(name), sizeof name, &nameLength,
                           reinterpret_cast<SQLCHAR*>(attributes), sizeof attributes - 2, &attributesLength);
        if (!SQL_SUCCEEDED(result)) break;
        drivers.push_back({name, AttributeValue(attributes, sizeof attributes, "Driver")});
        direction = SQL_FETCH_NEXT;
    }
    return drivers;
}

std::string DriverOfDataSource(const std::string& dataSource) {
    SQLHENV environment = SharedEnvironment();
    const std::lock_guard lock(listMutex);
    SQLUSMALLINT direction = SQL_FETCH_FIRST;
    for (;;) {
        char name[256] = {};
        char driver[512] = {};
        SQLSMALLINT nameLength = 0;
        SQLSMALLINT driverLength = 0;
        const SQLRETURN result =
            Odbc().DataSources(environment, direction, reinterpret_cast<SQLCHAR*>(name), sizeof name, &nameLength,
                               reinterpret_cast<SQLCHAR*>(driver), sizeof driver, &driverLength);
        if (!SQL_SUCCEEDED(result)) return {};
        if (EqualsNoCase(name, dataSource)) return driver;
        direction = SQL_FETCH_NEXT;
    }
}

}  // namespace tk::ado
