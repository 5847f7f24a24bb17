// The members of a Command and of its Parameters by id.
#include "ado/objects/command_object.h"

namespace tk::ado {

std::span<const Member<CommandObject>> CommandObject::Members() {
    using Self = CommandObject;
    // The small ids are those of later type libraries, the large ones those of the first.
    static constexpr Member<CommandObject> kMembers[] = {
        {0, kGet, OLESTR("Parameters"), &Self::GetParameters, 0, 1},
        {1, kGet, OLESTR("ActiveConnection"), &Self::GetActiveConnection},
        {1, kPut, OLESTR("ActiveConnection"), &Self::PutActiveConnection, 1},
        {1, kPutRef, OLESTR("ActiveConnection"), &Self::PutActiveConnection, 1},
        {2, kGet, OLESTR("CommandText"), &Self::GetCommandText},
        {2, kPut, OLESTR("CommandText"), &Self::PutCommandText, 1},
        {3, kGet, OLESTR("CommandTimeout"), &Self::GetCommandTimeout},
        {3, kPut, OLESTR("CommandTimeout"), &Self::PutCommandTimeout, 1},
        {4, kGet, OLESTR("Prepared"), &Self::GetPrepared},
        {4, kPut, OLESTR("Prepared"), &Self::PutPrepared, 1},
        {5, kMethod, OLESTR("Execute"), &Self::Execute, 0, 3},
        {6, kMethod, OLESTR("CreateParameter"), &Self::CreateParameter, 0, 5},
        {7, kGet, OLESTR("CommandType"), &Self::GetCommandType},
        {7, kPut, OLESTR("CommandType"), &Self::PutCommandType, 1},
        {8, kGet, OLESTR("Name"), &Self::GetName},
        {8, kPut, OLESTR("Name"), &Self::PutName, 1},
        {9, kGet, OLESTR("State"), &Self::GetState},
        {10, kMethod, OLESTR("Cancel"), &Self::Cancel},
        {500, kGet, OLESTR("Properties"), &Self::GetProperties},
        {0x60030000, kGet, OLESTR("ActiveConnection"), &Self::GetActiveConnection},
        {0x60030000, kPut, OLESTR("ActiveConnection"), &Self::PutActiveConnection, 1},
        {0x60030000, kPutRef, OLESTR("ActiveConnection"), &Self::PutActiveConnection, 1},
        {0x60030003, kGet, OLESTR("CommandText"), &Self::GetCommandText},
        {0x60030003, kPut, OLESTR("CommandText"), &Self::PutCommandText, 1},
        {0x60030005, kGet, OLESTR("CommandTimeout"), &Self::GetCommandTimeout},
        {0x60030005, kPut, OLESTR("CommandTimeout"), &Self::PutCommandTimeout, 1},
        {0x60030007, kGet, OLESTR("Prepared"), &Self::GetPrepared},
        {0x60030007, kPut, OLESTR("Prepared"), &Self::PutPrepared, 1},
        {0x60030009, kMethod, OLESTR("Execute"), &Self::Execute, 0, 3},
        {0x6003000A, kMethod, OLESTR("CreateParameter"), &Self::CreateParameter, 0, 5},
        {0x6003000C, kGet, OLESTR("CommandType"), &Self::GetCommandType},
        {0x6003000C, kPut, OLESTR("CommandType"), &Self::PutCommandType, 1},
        {0x6003000E, kGet, OLESTR("Name"), &Self::GetName},
        {0x6003000E, kPut, OLESTR("Name"), &Self::PutName, 1},
        {0x60040000, kGet, OLESTR("State"), &Self::GetState},
        {0x60040001, kMethod, OLESTR("Cancel"), &Self::Cancel},
    };
    static_assert(IsMemberTable(kMembers));
    return kMembers;
}

std::span<const Member<ParameterList>> ParameterList::Members() {
    using Self = ParameterList;
    static constexpr Member<ParameterList> kMembers[] = {
        {DISPID_NEWENUM, kGet, OLESTR("_NewEnum"), &Self::GetNewEnum},
        {0, kGet, OLESTR("Item"), &Self::GetItem, 1},
        {1, kGet, OLESTR("Count"), &Self::GetCount},
        {2, kMethod, OLESTR("Refresh"), &Self::Describe},
        {0x60020000, kGet, OLESTR("Count"), &Self::GetCount},
        {0x60020002, kMethod, OLESTR("Refresh"), &Self::Describe},
        {0x60030000, kMethod, OLESTR("Append"), &Self::Append, 1},
        {0x60030001, kMethod, OLESTR("Delete"), &Self::Delete, 1},
    };
    static_assert(IsMemberTable(kMembers));
    return kMembers;
}

}  // namespace tk::ado
