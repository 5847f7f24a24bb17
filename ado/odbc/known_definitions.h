// ado/odbc/known_definitions.h - what a connection knows of its tables, for a driver that describes them as they were
// when the connection last used them: a query then shows new values under former names, until it is run once more.
//
//   if (definitions.MayBeOutdated() && definitions.Follow(...)) ...   // behind a query: run it again
//
// A version tells definitions apart. It is recorded no later than the driver reads them, so when it is found unchanged
// behind a query, the query's columns are those of its rows.
//
// Threads: NoteDefined any; the rest is the session's.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ado/odbc/driver_profile.h"
#include "ado/odbc/odbc_handle.h"

namespace tk::ado {

class KnownDefinitions {
public:
    /// Around every statement, on whichever connection of the process, that may define tables or make visible what has
    /// been defined; also when it fails.
    static void NoteDefined() noexcept;

    /// They are about to be changed by the connection itself.
    void Forget() noexcept;

    /// False before the first Follow, and after Forget.
    bool AreKnown() const noexcept { return !databases_.empty(); }

    /// What sessions of this process have done is known at once, what other processes have some milliseconds later.
    bool MayBeOutdated() const noexcept;

    /// Makes the driver see what others have changed. Takes the locks of a reader, which it keeps in a transaction.
    /// @param alsoAttached  looks at all databases that the connection can name
    /// @param text  for which the look is made; an attached database that cannot be read matters if the text uses it
    /// @return true when definitions have changed, or were not known
    /// @throws AdoError, of a lock that another connection has, for one: then nothing is known that was not before
    bool Follow(SQLHDBC connection, const DefinitionQueries& queries, bool alsoAttached, const std::string& text);

    /// Makes it see them without a comparison.
    /// @throws AdoError as Follow
    static void Refresh(SQLHDBC connection, const DefinitionQueries& queries);

private:
    /// What was found; a version that was undone is used again, which is why Forget is there.
    struct Database {
        std::string name;
        std::string version;
        bool operator==(const Database&) const = default;
    };

    std::uint64_t seen_ = 0;  // what NoteDefined had counted
    std::int64_t time_ = 0;   // by CoarseNow
    std::vector<Database> databases_;
};

}  // namespace tk::ado
