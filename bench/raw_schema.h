// bench/raw_schema.h - a schema listed by bare calls on the driver manager, as a careful program makes them.
//
// A source of its own: the driver manager's header and the platform's declare the same names.
#pragma once

#include <memory>
#include <string>

namespace tk::bench {

class RawSchema {
public:
    virtual ~RawSchema() = default;

    virtual void Execute(const std::string& sql) = 0;

    /// True where databases stand for schemata.
    virtual bool HasCatalogs() const = 0;

    /// True for a database in a file, whose driver tells columns wrong: queries stand in for its catalog functions.
    virtual bool IsFile() const = 0;

    /// The columns of all tables, asked for table by table, and in one question. @return how many
    virtual long Each() = 0;
    virtual long Whole() = 0;
};

/// @param schema  where the tables are; not looked at for a file
/// @throws std::runtime_error
std::unique_ptr<RawSchema> MakeRawSchema(const std::string& connection, const std::string& schema);

}  // namespace tk::bench
