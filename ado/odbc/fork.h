// ado/odbc/fork.h - tells a child process that it is one: threads and connections of the parent are not its own.
#pragma once

namespace tk::ado {

/// A number that is another one in every child process; costs a load, unlike asking the system for the process.
unsigned ForkGeneration() noexcept;

}  // namespace tk::ado
