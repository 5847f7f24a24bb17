#include <gtest/gtest.h>

#include <string>

#include "tkkernel/platform.h"

namespace {

bool IsAddress(const std::string& text) {
    int points = 0;
    for (const char character : text) {
        if (character == '.') {
            ++points;
        } else if (character < '0' || character > '9') {
            return false;
        }
    }
    return points == 3;
}

class Hosts : public testing::Test {
protected:
    Hosts() { EXPECT_GE(AfxDispatchInit(), 0); }
    ~Hosts() override { AfxIDispatchTerm(); }
};

TEST_F(Hosts, GiveTheAddressesOfAName) {
    EXPECT_STREQ(GetHostAddr("localhost"), "127.0.0.1") << "no separator behind the last one";
    EXPECT_STREQ(GetHostAddr("10.1.2.3"), "10.1.2.3");
}

TEST_F(Hosts, GiveTheOwnAddressesWithoutAName) {
    const CString own = GetHostAddr(GetComputerNameA());
    EXPECT_STREQ(GetHostAddr(""), own);
    EXPECT_STREQ(GetHostAddr(nullptr), own);
}

TEST_F(Hosts, UseTheFirst79CharactersOfAName) {
    const std::string address = std::string("127.0.0.1");
    // Leading zeros make no other number, but a longer text; what is behind the 79th character is cut.
    EXPECT_STREQ(GetHostAddr(std::string(300, 'x').c_str()), "");
    EXPECT_STREQ(GetHostAddr((address + std::string(70, ' ') + "nonsense").c_str()),
                 GetHostAddr((address + std::string(70, ' ')).c_str()));
}

TEST_F(Hosts, HaveNamesByAddress) {
    EXPECT_STRNE(GetHostName("127.0.0.1"), "");
}

TEST_F(Hosts, ReadTheNumbersOfAnAddressAsDecimalOnes) {
    EXPECT_STREQ(GetHostName("127.000.000.001"), GetHostName("127.0.0.1"));
    EXPECT_STREQ(GetHostName("127.0.0.009"), GetHostName("127.0.0.9")) << "no digit of an octal number";
}

TEST_F(Hosts, HaveTheOwnNameForEverythingThatIsNoAddress) {
    const CString own = GetComputerNameA();
    for (const char* text :
         {"", "localhost", "no.such.host", "127.0.0", "127.0.0.1.1", "127.0.0.1 ", " 127.0.0.1", "127.0.0.256", "1",
          "0x7f.0.0.1", "127..0.1", ".0.0.1", "127.0.0.", "1234.0.0.1", "0127.0.0.1", "a.b.c.d", "库存"}) {
        SCOPED_TRACE(text);
        EXPECT_STREQ(GetHostName(text), own);
    }
    EXPECT_STREQ(GetHostName(nullptr), own);
}

TEST_F(Hosts, TellOfThisComputer) {
    const CString infor = GetHostInfor();
    const CString name = GetComputerNameA();
    const CString addresses = GetHostAddr(nullptr);
    EXPECT_STREQ(infor, addresses.IsEmpty() ? name : name + ":" + addresses);
    if (!addresses.IsEmpty()) {
        EXPECT_TRUE(
            IsAddress(std::string(addresses, static_cast<std::size_t>(addresses.Find(';') < 0 ? addresses.GetLength()
                                                                                              : addresses.Find(';')))));
    }
}

}  // namespace
