// Look-ups of hosts: literal addresses and the names of every machine; and a system that does not answer, in whose
// place this program stands.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "tests/win32/system/resolver_support.h"
#include "tests/win32/system/support.h"
#include "tkwin32/resolver.h"
#include "winsock2.h"

using namespace tk::test;

namespace {

std::vector<std::string> AddressesOf(const hostent* entry) {
    std::vector<std::string> addresses;
    if (entry == nullptr) return addresses;
    EXPECT_EQ(entry->h_addrtype, AF_INET);
    EXPECT_EQ(entry->h_length, 4);
    for (char** address = entry->h_addr_list; *address != nullptr; ++address) {
        in_addr number{};
        std::memcpy(&number, *address, sizeof number);
        addresses.emplace_back(inet_ntoa(number));
    }
    return addresses;
}

class Limit {
public:
    explicit Limit(DWORD limitMs) : before_(SetResolveLimit(limitMs)) {}
    Limit(const Limit&) = delete;
    Limit& operator=(const Limit&) = delete;
    ~Limit() { SetResolveLimit(before_); }

private:
    DWORD before_;
};

}  // namespace

TEST(Resolver, KnowsTheMachineItself) {
    const auto addresses = AddressesOf(gethostbyname("localhost"));
    ASSERT_FALSE(addresses.empty());
    EXPECT_EQ(addresses[0], "127.0.0.1");
}

TEST(Resolver, TakesADottedAddressAsItIs) {
    const hostent* entry = gethostbyname("10.1.2.3");
    ASSERT_NE(entry, nullptr);
    EXPECT_STREQ(entry->h_name, "10.1.2.3");
    EXPECT_EQ(entry->h_aliases[0], nullptr);
    EXPECT_EQ(AddressesOf(entry), std::vector<std::string>{"10.1.2.3"});
}

TEST(Resolver, FindsANameForTheLoopAddress) {
    in_addr loop{};
    inet_aton("127.0.0.1", &loop);
    const hostent* entry = gethostbyaddr(reinterpret_cast<const char*>(&loop), 4, AF_INET);
    ASSERT_NE(entry, nullptr);
    EXPECT_STREQ(entry->h_name, "localhost");
    EXPECT_EQ(gethostbyaddr(reinterpret_cast<const char*>(&loop), 3, AF_INET), nullptr);
    EXPECT_EQ(gethostbyaddr(reinterpret_cast<const char*>(&loop), 4, AF_INET6), nullptr);
    EXPECT_EQ(gethostbyaddr(nullptr, 4, AF_INET), nullptr);
    EXPECT_EQ(WSAGetLastError(), WSAEFAULT);
}

TEST(Resolver, GivesEachThreadAnAnswerOfItsOwn) {
    const hostent* mine = gethostbyname("10.1.2.3");
    const hostent* theirs = OnThread([] { return gethostbyname("10.4.5.6"); });
    EXPECT_NE(mine, theirs);
    EXPECT_EQ(AddressesOf(mine), std::vector<std::string>{"10.1.2.3"});
}

TEST(Resolver, TellsWhyThereIsNoAnswer) {
    const SilentSystem system;
    system.Answer(HOST_NOT_FOUND);
    EXPECT_EQ(gethostbyname("nobody.example"), nullptr);
    EXPECT_EQ(WSAGetLastError(), WSAHOST_NOT_FOUND);
    system.Answer(NO_DATA);
    EXPECT_EQ(gethostbyname("nobody.example"), nullptr);
    EXPECT_EQ(WSAGetLastError(), WSANO_DATA);
    system.Answer(TRY_AGAIN);
    EXPECT_EQ(gethostbyname("nobody.example"), nullptr);
    EXPECT_EQ(WSAGetLastError(), WSATRY_AGAIN);
    system.Answer(NO_RECOVERY);
    EXPECT_EQ(gethostbyname("nobody.example"), nullptr);
    EXPECT_EQ(WSAGetLastError(), WSANO_RECOVERY);
}

TEST(Resolver, GivesUpWhenTheSystemDoesNotAnswer) {
    SilentSystem system;
    const Limit limit(20);
    EXPECT_EQ(gethostbyname("silent.example"), nullptr);
    EXPECT_EQ(WSAGetLastError(), WSATRY_AGAIN);
    in_addr address{};
    inet_aton("192.0.2.1", &address);
    EXPECT_EQ(gethostbyaddr(reinterpret_cast<const char*>(&address), 4, AF_INET), nullptr);
    EXPECT_EQ(WSAGetLastError(), WSATRY_AGAIN);
    EXPECT_TRUE(system.WaitForQuestions(2));
}

TEST(Resolver, AsksNoFurtherWhileManyQuestionsAreOpen) {
    SilentSystem system;
    {
        const Limit limit(1);
        for (int i = 0; i < 16; ++i)
            EXPECT_EQ(gethostbyname("silent.example"), nullptr);
        ASSERT_TRUE(system.WaitForQuestions(16));
        EXPECT_EQ(gethostbyname("silent.example"), nullptr);
        EXPECT_EQ(WSAGetLastError(), WSATRY_AGAIN);
        EXPECT_EQ(system.Questions(), 16);
    }
    EXPECT_FALSE(AddressesOf(gethostbyname("10.1.2.3")).empty()) << "an address needs no question";
    system.Answer(HOST_NOT_FOUND);
    ASSERT_TRUE(system.WaitForIdle());
    EXPECT_EQ(gethostbyname("nobody.example"), nullptr);
    EXPECT_EQ(WSAGetLastError(), WSAHOST_NOT_FOUND) << "asked again once the open ones ended";
}
