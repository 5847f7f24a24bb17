// Which device a serial port is.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tk::system {

/// @param name  UTF-8
/// @return the device of a port; empty when the port map says that there is none; nothing for a name that is no port's
std::optional<std::string> PortDevice(std::string_view name);

/// Whether a device is there. The system keeps devices of ports that have no chip.
bool HasPort(const std::string& device);

}  // namespace tk::system
