// column_type.h - how a database system spells the type of a column: one table for each system, and what walks it.
#pragma once

#include <afx.h>

#include <span>

namespace tk::catalog {

/// A column as its catalog describes it.
struct ColumnType {
    long code;      // ADO's DataTypeEnum
    int size;       // of texts and bytes
    int precision;  // of numbers
    int scale;
    int longFlag;   // 0x80 or 0
    int fixedFlag;  // 0x10 or 0
};

/// What is written into the parentheses of a spelling.
enum class Uses : unsigned char { Nothing, Size, PrecisionScale };

struct TypeRule {
    long code = 0;
    const char* text = nullptr;                                 // a printf format
    Uses uses = Uses::Nothing;                                  //
    const char* longText = nullptr;                             // of a long column, where it differs
    const char* fixedText = nullptr;                            // of a column of fixed length, where it differs
    const char* (*choose)(const ColumnType& column) = nullptr;  // instead of all three
};

// Each sorted by code.
std::span<const TypeRule> SqlServerTypes() noexcept;
std::span<const TypeRule> SybaseTypes() noexcept;
std::span<const TypeRule> Db2Types() noexcept;
std::span<const TypeRule> OracleTypes() noexcept;

/// @return "UNKNOWN" for a code without a rule
CString SpellType(std::span<const TypeRule> rules, const ColumnType& column);

}  // namespace tk::catalog
