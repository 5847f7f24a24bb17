// dialect_rules.h - how a table script of one database system becomes one of another: ordered replacements, as data.
#pragma once

#include <afx.h>

#include <span>

#include "catalog/dbms_tag.h"

namespace tk::catalog {

/// Replaces every occurrence of a text, by character and in one pass from the left.
void ReplaceAll(CString& script, const char* from, const char* to);

struct DialectRule {
    const char* from;
    const char* to;
    void (*apply)(CString& script, const char* from, const char* to) = ReplaceAll;
};

/// The rules in the order in which they apply, each to what the ones before it left.
/// @return none when the target takes the source's scripts as they are
std::span<const DialectRule> DialectRules(Dbms source, Dbms target) noexcept;

}  // namespace tk::catalog
