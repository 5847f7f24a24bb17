// client_members.h - every forwarding member of a client, called with fixed arguments, its result as a text.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tkkernel/session.h"

namespace tk::test {

enum class Needs { Connection, Recordset };

struct ClientMember {
    const char* place;  // in messages
    std::string (*call)(CTDataClient&);
    Needs needs;
    const char* refused;           // the result without the loan, and after a fault
    bool letsFailuresOut = false;  // a failure of the automation object reaches the client as an exception
};

/// Those that use what is held.
const std::vector<ClientMember>& ClientMembers();
/// Those that borrow a recordset.
const std::vector<ClientMember>& OpeningMembers();

}  // namespace tk::test
