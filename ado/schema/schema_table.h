// ado/schema/schema_table.h - a schema rowset as data: its columns, restrictions and order, and where its rows come
// from.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "ado/cursor/value.h"
#include "ado/schema/catalog_rows.h"

namespace tk::ado {

/// The types that columns of schema rowsets have.
enum class SchemaType : unsigned char {
    Text,
    Guid,
    Flag,
    Small,  // 16 bits
    UnsignedSmall,
    Long,  // 32 bits
    UnsignedLong,
    UnsignedHuge,  // 64 bits
    Date,
};

struct SchemaColumn {
    const char16_t* name;
    SchemaType type = SchemaType::Text;
    unsigned char source = 0;                              // column of the catalog function; 0: always NULL
    SchemaValue (*make)(const CatalogRow& row) = nullptr;  // instead of the plain value
};

/// Restrictions as given by the caller, by number.
class Restrictions {
public:
    /// @param given  outlives this
    explicit Restrictions(const std::vector<Value>& given);

    /// The text asked for, UTF-8; empty when this one does not restrict.
    std::string Text(std::size_t number) const;

    /// Whether a value passes: texts exactly, NULL only where NULL is asked for.
    bool Allows(std::size_t number, const SchemaValue& value) const;

    /// Whether it restricts at all.
    bool IsGiven(std::size_t number) const noexcept { return wanted_[number].form != Wanted::Form::Anything; }

    std::size_t Count() const noexcept { return wanted_.size(); }

private:
    struct Wanted {
        enum class Form : unsigned char { Anything, Null, Text, Number, Nothing } form = Form::Anything;
        std::string text;
        std::optional<double> number;
    };
    static Wanted Read(const Value& given);

    std::vector<Wanted> wanted_;
};

struct SchemaTable {
    LONG schema;
    std::span<const SchemaColumn> columns;
    std::span<const unsigned char> restrictions;  // columns, from 0, in the order of the restrictions
    std::span<const unsigned char> order;         // columns, from 0; empty: as the driver gives them
    CatalogRows (*read)(const std::shared_ptr<Session>& session, const Restrictions& restrictions);

    /// Another text by which a row passes a restriction, where it has one.
    SchemaValue (*otherwise)(const CatalogRow& row, std::size_t restriction) = nullptr;
};

/// The tables by subject.
std::span<const SchemaTable> ObjectSchemas();      // catalogs, schemata, tables, views
std::span<const SchemaTable> ColumnSchemas();      // columns, provider types
std::span<const SchemaTable> KeySchemas();         // primary keys, foreign keys, indexes
std::span<const SchemaTable> ConstraintSchemas();  // constraints of tables, rights to columns
std::span<const SchemaTable> ProcedureSchemas();   // procedures, their parameters and results

}  // namespace tk::ado
