// ado/persist/xml_names.h - the name spaces of a recordset in XML, and the flags of its columns.
#pragma once

#include <string_view>

#include "ado/persist/saved_column.h"
#include "ado/rowset/type_map.h"

namespace tk::ado::xml {

inline constexpr std::string_view kSchemaSpace = "uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882";
inline constexpr std::string_view kTypeSpace = "uuid:C2F41010-65B3-11d1-A29F-00AA00C14882";
inline constexpr std::string_view kRowsetSpace = "urn:schemas-microsoft-com:rowset";
/// Ours: the figures of a column that nothing else says, and the list of values in hexadecimal digits.
inline constexpr std::string_view kOwnSpace = "urn:tkkernel32:recordset";
inline constexpr std::string_view kHexList = "hex";

/// A flag of a column, as an attribute of name space rs that is 'true' or missing.
struct Flag {
    std::string_view name;
    LONG bit;
};

/// In the order in which they are written, rs:number before them.
inline constexpr Flag kColumnFlags[] = {
    {"nullable", kFieldIsNullable},
    {"maydefer", kFieldMayDefer},
    {"write", kFieldUpdatable},
    {"writeunknown", kFieldUnknownUpdatable},
    {"rowid", 0x100},
    {"rowver", 0x200},
};
inline constexpr Flag kTypeFlags[] = {{"fixedlength", kFieldFixed}, {"long", kFieldLong}};

/// What the flags together with rs:maybenull and rs:keycolumn can say.
inline constexpr LONG kSayableAttributes = kFieldIsNullable | kFieldMayDefer | kFieldUpdatable |
                                           kFieldUnknownUpdatable | 0x100 | 0x200 | kFieldFixed | kFieldLong |
                                           kFieldMayBeNull;

}  // namespace tk::ado::xml
