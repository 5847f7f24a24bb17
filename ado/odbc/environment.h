// ado/odbc/environment.h - the process's one ODBC environment, and what is installed on this machine.
#pragma once

#include <string>
#include <vector>

#include "ado/odbc/odbc_api.h"

namespace tk::ado {

/// Allocated at first use and kept: freeing it would unload the drivers.
/// @throws AdoError when the driver manager refuses
SQLHENV SharedEnvironment();

struct InstalledDriver {
    std::string name;     // as Driver={...} takes it
    std::string library;  // the shared object's file, "" when not told
};

/// Drivers the driver manager knows.
std::vector<InstalledDriver> InstalledDrivers();

/// The driver of a data source as its entry names it; "" when there is no such data source.
std::string DriverOfDataSource(const std::string& dataSource);

}  // namespace tk::ado
