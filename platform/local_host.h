// platform/local_host.h - whether a name means this machine.
#pragma once

namespace tk::platform {

/// @return 1 or 0; -1 when the machine's own name or addresses cannot be had
int IsLocalHost(const char* host);

}  // namespace tk::platform
