// ado/objects/open_rows.h - what an open recordset shares with its clones and views: the rows and where they come from.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "ado/cursor/row_store.h"
#include "ado/cursor/row_writer.h"
#include "ado/objects/connection.h"
#include "ado/objects/ref.h"

namespace tk::ado {

/// Runs a command on an open connection; empty when it had no rows.
using RunCommand = std::function<std::shared_ptr<RowSet>(const Connection& connection)>;

struct OpenRows {
    OpenRows(std::shared_ptr<RowSet> fetched, Ref<Connection> source)
        : store(std::make_shared<RowStore>(std::move(fetched))), connection(std::move(source)) {}

    std::shared_ptr<RowStore> store;
    Ref<Connection> connection;  // none: disconnected, or never connected
    RunCommand runAgain;         // empty: there is nothing to run
    bool asynchronous = false;   // RecordCount and State tell of the fetch
    bool isFabricated = false;   // fields of the program's own: nothing to write back to
    WriteRules rules;            // changed by the recordset's properties

    /// Set by Connection.Close, from whatever thread; the recordset lets go of the rows when it is used next.
    std::atomic<bool> closed{false};
};

}  // namespace tk::ado
