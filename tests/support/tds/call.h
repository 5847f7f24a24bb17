// tests/support/tds/call.h - calls of procedures, as they come by themselves or as texts.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/tds/wire_type.h"

namespace tk::test::tds {

struct Argument {
    std::string name;  // with its @; empty: by its place
    bool isOutput = false;
    WireType type = NVarCharType(4000);
    Cell value;
};

struct Call {
    std::string name;
    std::vector<Argument> arguments;
};

/// The calls of a message, behind its headers. Numbers of procedures become names.
/// @throws ProtocolError
std::vector<Call> ReadCalls(std::string_view message);

/// Skips the headers of a message. @throws ProtocolError
std::string_view WithoutHeaders(std::string_view message);

/// "EXEC name 1, @b = 'x'", "sp_helptext \"name\"". The name has no owner in front.
/// @throws SqlError when it is no call
Call ParseCall(std::string_view text);

/// The name without brackets, quotes, what stands before its last point, and ";1".
std::string PlainName(std::string_view name);

}  // namespace tk::test::tds
