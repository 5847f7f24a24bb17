// bench/database/workload.h - what every contender has to do, on the table
//   item (id integer primary key, name varchar(20), price double precision, quantity integer, stamp timestamp)
//
// Each workload returns a figure that depends on every value it read, so that nothing can be skipped.
#pragma once

#include <memory>
#include <string>

namespace tk::bench {

/// Row n (from 1): name "item 000000n" padded to 7 digits, price n * 0.25, quantity n % 1000, stamp 2020-01-01 00:00:00
/// plus n % 86400 seconds.
inline constexpr long kRows = 1'000'000;

struct Checksum {
    double numbers = 0;     // id + price + quantity
    long long texts = 0;    // length of the names (native) or of all cells' names (text)
    long long seconds = 0;  // hour * 3600 + minute * 60 + second of the stamps; 0 in text scans
    long rows = 0;
    bool operator==(const Checksum&) const = default;
};

class Contender {
public:
    virtual ~Contender() = default;
    virtual const char* Name() const = 0;

    /// @param connection  an ODBC connection string
    virtual void Connect(const std::string& connection) = 0;

    /// Reads every row once, each value in its own type.
    virtual Checksum NativeScan() = 0;

    /// Reads every row once, each value as text; only the names' lengths and the rows count.
    virtual Checksum TextScan() = 0;

    /// Materialises the result, walks it forward and then backward, reading every value on both walks.
    virtual Checksum ClientCursor() = 0;

    /// One row by its key, a literal in the statement; the connection is warm.
    virtual Checksum PointQuery(long id) = 0;

    /// n literal INSERT statements into the empty table item_copy, in one transaction; then empties it.
    virtual void Insert(long n) = 0;
};

std::unique_ptr<Contender> MakeRaw();
std::unique_ptr<Contender> MakeSoci();
std::unique_ptr<Contender> MakeSociInto();  // for the text scan
std::unique_ptr<Contender> MakePoco();
std::unique_ptr<Contender> MakeQt();
std::unique_ptr<Contender> MakeTk();

inline constexpr const char* kSelectAll = "SELECT id, name, price, quantity, stamp FROM item";

inline std::string SelectOne(long id) {
    return std::string(kSelectAll) + " WHERE id = " + std::to_string(id);
}

inline std::string InsertOne(long id) {
    const std::string text = std::to_string(id);
    return "INSERT INTO item_copy VALUES (" + text + ",'item " + text + "'," + text + ".25," +
           std::to_string(id % 1000) + ",'2020-01-01 00:00:00')";
}

}  // namespace tk::bench
