// What ODBC drivers and the driver manager lose by themselves, told to the leak checker: memory that only they can free
// and that is lost although every handle was freed. Compiled into programs that talk to real databases.
#include <dlfcn.h>

// psqlodbc loses the parsed column list of a statement whose rows are changed through another statement.
// The MariaDB driver loses a kilobyte with every connection, inside its SQLDriverConnect.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
    return "leak:psqlodbcw.so\n"
           "leak:libmaodbc.so\n";
}

// Programs whose output is compared say nothing of it.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_options() {
    return "print_suppressions=0";
}

namespace {

// The driver manager's configuration library keeps what it read from odbc.ini for later, and loses it when the last
// driver that uses it is unloaded. Held here, it keeps it to the end.
[[maybe_unused]] void* const kConfigurationLibrary = dlopen("libodbcinst.so.2", RTLD_LAZY | RTLD_NODELETE);

}  // namespace
