#include "driver/postgres_system.h"

#include "driver/end_to_end.h"

namespace tk::test {

PostgresServer& TheServer() {
    static PostgresServer server;
    return server;
}

const System& TheSystem() {
    static const System system = {
        .connection = TheServer().ConnectionString(),
        .dbmsName = "PostgreSQL",
        .tag = "Pos",
        .createStock =
            "create table stock (id integer primary key, name varchar(20), price double precision, "
            "amount smallint, total bigint, made timestamp, note text, sold boolean)",
        .unknownTable = "no_such_table",
        .duplicateKey = "duplicate key",
        .odbcDataSource = "Driver=PostgreSQL Unicode\nServername=127.0.0.1\nPort=" +
                          std::to_string(TheServer().Port()) + "\nDatabase=postgres\nBoolsAsChar=0\n",
        .dataSourceUser = "tester",
        .dataSourcePassword = "pw",
        .hasSeveralResults = true,
        .tellsNotNull = true,
    };
    return system;
}

}  // namespace tk::test
