// Before the platform's other headers, which would bring the older network functions.
#include <winsock2.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "tkkernel/platform.h"

namespace tk::platform {
namespace {

constexpr std::size_t kHostNameRoom = 79;

/// Whether a text is four decimal numbers with points between them.
bool IsDottedAddress(const std::string& text) {
    int parts = 1;
    int digits = 0;
    for (const char character : text) {
        if (character == '.') {
            if (digits == 0) return false;
            ++parts;
            digits = 0;
        } else if (character >= '0' && character <= '9' && digits < 3) {
            ++digits;
        } else {
            return false;
        }
    }
    return parts == 4 && digits != 0;
}

/// @return false for numbers that no address has
bool ReadAddress(const std::string& text, in_addr& address) {
    if (!IsDottedAddress(text)) return false;
    // The one address whose number is the failure of the reading.
    if (text == "255.255.255.255") {
        std::memset(&address, 0xFF, sizeof(address));
        return true;
    }
    const unsigned long number = inet_addr(text.c_str());
    if (static_cast<std::uint32_t>(number) == 0xFFFFFFFFu) return false;
    address.s_addr = static_cast<decltype(address.s_addr)>(number);
    return true;
}

CString AddressesOf(const char* host) {
    const hostent* entry = gethostbyname(host);
    CString addresses;
    if (entry == nullptr || entry->h_addrtype != AF_INET) return addresses;
    for (char** address = entry->h_addr_list; *address != nullptr; ++address) {
        in_addr number = {};
        std::memcpy(&number, *address, sizeof(number));
        addresses += inet_ntoa(number);
        addresses += ";";
    }
    addresses.TrimRight(';');
    return addresses;
}

}  // namespace
}  // namespace tk::platform

CString GetHostName(const char* szAddress) {
    in_addr address = {};
    if (szAddress == nullptr || !tk::platform::ReadAddress(szAddress, address)) return GetComputerNameA();
    const hostent* entry = gethostbyaddr(reinterpret_cast<const char*>(&address), sizeof(address), AF_INET);
    return entry != nullptr ? CString(entry->h_name) : CString();
}

CString GetHostAddr(const char* szHost) {
    const CString host = szHost != nullptr && *szHost != '\0' ? CString(szHost) : GetComputerNameA();
    const std::string name(
        host, std::min<std::size_t>(static_cast<std::size_t>(host.GetLength()), tk::platform::kHostNameRoom));
    return tk::platform::AddressesOf(name.c_str());
}

CString GetHostInfor() {
    const CString name = GetComputerNameA();
    const CString addresses = GetHostAddr(nullptr);
    return addresses.IsEmpty() ? name : name + ":" + addresses;
}
