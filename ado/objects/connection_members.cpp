// The members of a Connection by id.
#include "ado/objects/connection.h"

namespace tk::ado {

std::span<const Member<Connection>> Connection::Members() {
    static constexpr Member<Connection> kMembers[] = {
        {0, kGet, OLESTR("ConnectionString"), &Connection::GetConnectionString},
        {0, kPut, OLESTR("ConnectionString"), &Connection::PutConnectionString, 1},
        {2, kGet, OLESTR("CommandTimeout"), &Connection::GetCommandTimeout},
        {2, kPut, OLESTR("CommandTimeout"), &Connection::PutCommandTimeout, 1},
        {3, kGet, OLESTR("ConnectionTimeout"), &Connection::GetConnectionTimeout},
        {3, kPut, OLESTR("ConnectionTimeout"), &Connection::PutConnectionTimeout, 1},
        {4, kGet, OLESTR("Version"), &Connection::GetVersion},
        {5, kMethod, OLESTR("Close"), &Connection::Close},
        {6, kMethod, OLESTR("Execute"), &Connection::Execute, 1, 3},
        {7, kMethod, OLESTR("BeginTrans"), &Connection::BeginTrans},
        {8, kMethod, OLESTR("CommitTrans"), &Connection::CommitTrans},
        {9, kMethod, OLESTR("RollbackTrans"), &Connection::RollbackTrans},
        {10, kMethod, OLESTR("Open"), &Connection::OpenMember, 0, 4},
        {11, kGet, OLESTR("Errors"), &Connection::GetErrors},
        {12, kGet, OLESTR("DefaultDatabase"), &Connection::GetDefaultDatabase},
        {12, kPut, OLESTR("DefaultDatabase"), &Connection::PutDefaultDatabase, 1},
        {13, kGet, OLESTR("IsolationLevel"), &Connection::GetIsolationLevel},
        {13, kPut, OLESTR("IsolationLevel"), &Connection::PutIsolationLevel, 1},
        {14, kGet, OLESTR("Attributes"), &Connection::GetAttributes},
        {14, kPut, OLESTR("Attributes"), &Connection::PutAttributes, 1},
        {15, kGet, OLESTR("CursorLocation"), &Connection::GetCursorLocation},
        {15, kPut, OLESTR("CursorLocation"), &Connection::PutCursorLocation, 1},
        {16, kGet, OLESTR("Mode"), &Connection::GetMode},
        {16, kPut, OLESTR("Mode"), &Connection::PutMode, 1},
        {17, kGet, OLESTR("Provider"), &Connection::GetProvider},
        {17, kPut, OLESTR("Provider"), &Connection::PutProvider, 1},
        {18, kGet, OLESTR("State"), &Connection::GetState},
        {19, kMethod, OLESTR("OpenSchema"), &Connection::OpenSchema, 1, 3},
        {21, kMethod, OLESTR("Cancel"), &Connection::Cancel},
        {500, kGet, OLESTR("Properties"), &Connection::GetProperties},
        // Not of the object model: asked for by its name.
        {0x7001, kMethod, OLESTR("InsertRows"), &Connection::InsertRows, 2, 3},
    };
    static_assert(IsMemberTable(kMembers));
    return kMembers;
}

}  // namespace tk::ado
