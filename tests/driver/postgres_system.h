// postgres_system.h - the server behind the tests of this program.
#pragma once

#include "support/postgres_server.h"

namespace tk::test {

PostgresServer& TheServer();

}  // namespace tk::test
