// Before the platform's other headers, which would bring the older network functions.
#include <winsock2.h>

#include <cstring>
#include <string>

#include "tkkernel/platform.h"
#include "util/text.h"

namespace tk::platform {
namespace {

constexpr std::size_t kHostNameRoom = 79;

/// Reads four decimal numbers with points between them: leading zeros do not make them octal.
/// @return false for anything else
bool ReadAddress(const std::string& text, in_addr& address) {
    unsigned char numbers[4] = {};
    int part = 0;
    int digits = 0;
    unsigned number = 0;
    for (const char character : text + '.') {
        if (character == '.') {
            if (digits == 0 || part == 4 || number > 255) return false;
            numbers[part++] = static_cast<unsigned char>(number);
            digits = 0;
            number = 0;
        } else if (character >= '0' && character <= '9' && digits < 3) {
            number = number * 10 + static_cast<unsigned>(character - '0');
            ++digits;
        } else {
            return false;
        }
    }
    static_assert(sizeof(address) == sizeof(numbers));
    std::memcpy(&address, numbers, sizeof(address));
    return part == 4;
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
    const std::string name(tk::util::WholeCharacters(tk::util::View(host), tk::platform::kHostNameRoom));
    return tk::platform::AddressesOf(name.c_str());
}

CString GetHostInfor() {
    const CString name = GetComputerNameA();
    const CString addresses = GetHostAddr(nullptr);
    return addresses.IsEmpty() ? name : name + ":" + addresses;
}
