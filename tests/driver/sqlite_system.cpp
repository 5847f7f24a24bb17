#include "driver/end_to_end.h"
#include "support/temporary_folder.h"

namespace tk::test {

const System& TheSystem() {
    static const TemporaryFolder folder;
    static const System system = {
        .connection = "Driver=SQLite3;Database=" + folder.File("stock.db") + ";Timeout=5000",
        .dbmsName = "SQLite",
        .tag = "SQL",
        .createStock =
            "create table stock (id integer primary key, name varchar(20), price double, amount smallint, "
            "total bigint, made timestamp, note text, sold boolean)",
        .unknownTable = "no such table",
        .duplicateKey = "UNIQUE constraint failed",
        .odbcDataSource = "Driver=SQLite3\nDatabase=" + folder.File("stock.db") + "\nTimeout=5000\n",
        .dataSourceUser = "",
        .dataSourcePassword = "",
        .hasSeveralResults = false,
        .tellsNotNull = false,
    };
    return system;
}

}  // namespace tk::test
