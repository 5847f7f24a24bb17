// dbms_tag.h - which database system a tag stands for; every member that speaks a dialect asks here.
//
//   switch (DbmsOf(dbmsTag_)) { case Dbms::SqlServer: ...; default: SetErrorString(kUnknownRdbms, ""); }
#pragma once

namespace tk::catalog {

enum class Dbms { Unknown, SqlServer, Sybase, Db2, Oracle };

/// @param tag  compared whole, ignoring case: "ora" is Oracle, "ORACLE" is Unknown; null counts as an empty text
Dbms DbmsOf(const char* tag) noexcept;

}  // namespace tk::catalog
