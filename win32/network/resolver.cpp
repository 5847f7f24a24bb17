#include "tkwin32/resolver.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "winsock2.h"

namespace tk::network {
namespace {

constexpr int kMostGivenUp = 16;
constexpr std::size_t kLargestAnswer = 1 << 20;

/// What is known about a host.
struct Host {
    std::string name;
    std::vector<std::string> aliases;
    std::vector<in_addr> addresses;
};

struct Question {
    std::string name;  // empty: by address
    in_addr address{};
};

/// One look-up, shared by who asked and the thread that asks the system; the last of them frees it.
struct LookUp {
    Question question;
    std::mutex lock;
    std::condition_variable changed;
    bool done = false;
    bool givenUp = false;
    int error = NETDB_SUCCESS;  // h_errno
    Host host;
};

constinit std::atomic<DWORD> limit = kDefaultResolveLimit;
constinit std::atomic<int> givenUp = 0;

Host CopyOf(const hostent& entry) {
    Host host{entry.h_name != nullptr ? entry.h_name : "", {}, {}};
    for (char** alias = entry.h_aliases; alias != nullptr && *alias != nullptr; ++alias)
        host.aliases.emplace_back(*alias);
    for (char** address = entry.h_addr_list; address != nullptr && *address != nullptr; ++address)
        std::memcpy(&host.addresses.emplace_back(), *address, sizeof(in_addr));
    return host;
}

/// Asks the system, however long that takes. @return h_errno
int Ask(const Question& question, Host& host) {
    std::vector<char> buffer(4096);
    for (;;) {
        hostent entry{};
        hostent* found = nullptr;
        int error = NO_RECOVERY;
        const int result = question.name.empty() ? gethostbyaddr_r(&question.address, sizeof(in_addr), AF_INET, &entry,
                                                                   buffer.data(), buffer.size(), &found, &error)
                                                 : gethostbyname2_r(question.name.c_str(), AF_INET, &entry,
                                                                    buffer.data(), buffer.size(), &found, &error);
        if (result == ERANGE && buffer.size() < kLargestAnswer) {
            buffer.resize(buffer.size() * 2);
            continue;
        }
        if (found == nullptr) return error != NETDB_SUCCESS ? error : HOST_NOT_FOUND;
        host = CopyOf(*found);
        return NETDB_SUCCESS;
    }
}

void Run(const std::shared_ptr<LookUp>& lookUp) {
    Host host;
    int error = NO_RECOVERY;
    try {
        error = Ask(lookUp->question, host);
    } catch (const std::bad_alloc&) {
        error = NO_RECOVERY;
    }
    const std::lock_guard guard(lookUp->lock);
    lookUp->error = error;
    lookUp->host = std::move(host);
    lookUp->done = true;
    if (lookUp->givenUp) givenUp.fetch_sub(1);
    lookUp->changed.notify_all();
}

/// @return h_errno
int AskInTime(Question question, Host& host) {
    if (givenUp.load() >= kMostGivenUp) return TRY_AGAIN;
    const auto lookUp = std::make_shared<LookUp>();
    lookUp->question = std::move(question);
    try {
        std::thread(Run, lookUp).detach();
    } catch (const std::system_error&) {
        return NO_RECOVERY;
    }
    std::unique_lock guard(lookUp->lock);
    if (!lookUp->changed.wait_for(guard, std::chrono::milliseconds(limit.load()), [&] { return lookUp->done; })) {
        lookUp->givenUp = true;
        givenUp.fetch_add(1);
        return TRY_AGAIN;
    }
    host = std::move(lookUp->host);
    return lookUp->error;
}

/// A host in the form the callers read.
class Entry {
public:
    hostent* Set(Host host) {
        host_ = std::move(host);
        aliases_.clear();
        addresses_.clear();
        for (std::string& alias : host_.aliases)
            aliases_.push_back(alias.data());
        for (in_addr& address : host_.addresses)
            addresses_.push_back(reinterpret_cast<char*>(&address));
        aliases_.push_back(nullptr);
        addresses_.push_back(nullptr);
        entry_ = {host_.name.data(), aliases_.data(), AF_INET, sizeof(in_addr), addresses_.data()};
        return &entry_;
    }

private:
    Host host_;
    std::vector<char*> aliases_;
    std::vector<char*> addresses_;
    hostent entry_{};
};

int CodeOf(int error) noexcept {
    switch (error) {
        case HOST_NOT_FOUND:
            return WSAHOST_NOT_FOUND;
        case TRY_AGAIN:
            return WSATRY_AGAIN;
        case NO_DATA:
            return WSANO_DATA;
        default:
            return WSANO_RECOVERY;
    }
}

/// The answer stays the thread's until its next question.
hostent* Deliver(int error, Host host) {
    static thread_local Entry entry;
    if (error == NETDB_SUCCESS) return entry.Set(std::move(host));
    WSASetLastError(CodeOf(error));
    return nullptr;
}

}  // namespace
}  // namespace tk::network

using namespace tk::network;

DWORD SetResolveLimit(DWORD limitMs) {
    return limit.exchange(limitMs);
}

hostent* TkGetHostByName(const char* name) {
    char own[256] = {};
    if (name == nullptr || *name == '\0') {
        if (gethostname(own, sizeof own) != 0) return Deliver(NO_RECOVERY, {});
        name = own;
    }
    in_addr address{};
    if (inet_aton(name, &address) != 0) return Deliver(NETDB_SUCCESS, {name, {}, {address}});
    Host host;
    const int error = AskInTime({name, {}}, host);
    return Deliver(error, std::move(host));
}

hostent* TkGetHostByAddr(const char* address, int length, int type) {
    if (address == nullptr || length != static_cast<int>(sizeof(in_addr)) || type != AF_INET) {
        WSASetLastError(WSAEFAULT);
        return nullptr;
    }
    Question question;
    std::memcpy(&question.address, address, sizeof(in_addr));
    Host host;
    const int error = AskInTime(std::move(question), host);
    return Deliver(error, std::move(host));
}
