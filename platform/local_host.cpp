// Before the platform's other headers, which would bring the older network functions.
#include <winsock2.h>

#include "platform/local_host.h"

#include "tkkernel/platform.h"

namespace tk::platform {
namespace {

constexpr int kHostNameRoom = 32;  // Contract: a longer name of the machine cannot be had

constexpr char Lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A')) : character;
}

bool SameName(const char* first, const char* second) {
    for (; Lower(*first) == Lower(*second); ++first, ++second) {
        if (*first == '\0') return true;
    }
    return false;
}

}  // namespace

int IsLocalHost(const char* host) {
    if (host == nullptr) return 0;
    // No look-up for these two.
    if (SameName(host, "127.0.0.1") || SameName(host, "localhost")) return 1;
    char name[kHostNameRoom] = {};
    if (gethostname(name, sizeof(name)) != 0) return -1;
    if (SameName(host, name)) return 1;
    const hostent* entry = gethostbyname(name);
    if (entry == nullptr) return -1;
    if (entry->h_addrtype != AF_INET) return 0;
    for (char** address = entry->h_addr_list; *address != nullptr; ++address) {
        in_addr number = {};
        std::memcpy(&number, *address, sizeof(number));
        if (SameName(host, inet_ntoa(number))) return 1;
    }
    return 0;
}

}  // namespace tk::platform

int LocalHost(const char* szHost) {
    return tk::platform::IsLocalHost(szHost);
}
