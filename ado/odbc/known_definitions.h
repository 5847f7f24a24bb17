// ado/odbc/known_definitions.h - what a connection knows of its tables, for a driver that describes them as they were
// when the connection last used them: it shows new values under former names then, once, or reads past their end.
//
//   if (definitions.MayBeOutdated()) { begin a transaction; definitions.Follow(...); run the query; end it; }
//
// Follow makes the driver see them as they are, and takes the lock of a reader by that: until the transaction ends,
// nobody changes them.
//
// A version tells definitions apart. It is recorded no later than the driver reads them: where it is found unchanged
// behind a query, the query has shown them as they were all the time.
//
// Threads: Defining and Passing any; the rest is the session's.
#pragma once

#include <cstdint>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <vector>

#include "ado/odbc/driver_profile.h"
#include "ado/odbc/odbc_handle.h"

namespace tk::ado {

class KnownDefinitions {
public:
    /// Lives around every statement, on whichever connection of the process, that may define tables or make visible
    /// what has been defined.
    class Defining {
    public:
        /// @param isLikely  waits a moment for queries that pass
        explicit Defining(bool isLikely) noexcept;
        ~Defining();
        Defining(const Defining&) = delete;
        Defining& operator=(const Defining&) = delete;

    private:
        std::unique_lock<std::shared_timed_mutex> gate_;
    };

    /// Lives around a query that goes by what is known, from before MayBeOutdated is asked: who is likely to define
    /// tables in this process waits a moment for its end. A query that cannot pass is to be held.
    class Passing {
    public:
        Passing() noexcept;
        bool Passes() const noexcept { return gate_.owns_lock(); }

    private:
        std::shared_lock<std::shared_timed_mutex> gate_;
    };

    /// They are changed by the connection itself, or changed back.
    void Forget() noexcept { databases_.clear(); }

    /// What sessions of this process have done is known at once, what other processes have some milliseconds later.
    bool MayBeOutdated() const noexcept;

    /// Makes the driver see what others have changed, in every database that a text may use.
    /// @param alsoAttached  there may be others than the main one
    /// @param isInTransaction  keeps the locks: only databases that the text does use are looked at
    /// @return true when definitions have changed, or were not known
    /// @throws AdoError, of a lock that another connection has, for one, in a database that the text uses: then nothing
    ///         is known that was not before
    bool Follow(SQLHDBC connection, const DefinitionQueries& queries, bool alsoAttached, bool isInTransaction,
                const std::string& text);

    /// As Follow, in the main database, without a comparison.
    static void Refresh(SQLHDBC connection, const DefinitionQueries& queries);

private:
    struct Database {
        std::string name;
        std::string version = {};  // one that was undone is used again, which is why Forget is there
        std::uint64_t seen = 0;    // what sessions of the process had done
        std::int64_t time = 0;     // by CoarseNow
    };
    static bool IsOutdated(const Database& database) noexcept;

    std::vector<Database> databases_;
};

}  // namespace tk::ado
