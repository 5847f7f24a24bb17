// Accounts of this machine: this program answers in the place of the account database.
#include <gtest/gtest.h>
#include <pwd.h>

#include <cerrno>
#include <deque>
#include <vector>

#include "lm.h"
#include "tests/win32/system/support.h"

using namespace tk::test;

namespace {

struct Person {
    std::string name;
    uid_t number;
    std::string details;
};

std::deque<Person>* people = nullptr;
std::size_t place = 0;

}  // namespace

#define IN_FRONT extern "C" __attribute__((visibility("default")))

IN_FRONT void setpwent() {
    place = 0;
}
IN_FRONT void endpwent() {}
IN_FRONT int getpwent_r(passwd* entry, char*, std::size_t size, passwd** found) {
    *found = nullptr;
    if (people == nullptr || place >= people->size()) return ENOENT;
    Person& person = (*people)[place];
    if (person.name.size() + person.details.size() + 2 > size) return ERANGE;
    ++place;
    *entry = {};
    entry->pw_name = person.name.data();
    entry->pw_uid = person.number;
    entry->pw_gecos = person.details.data();
    *found = entry;
    return 0;
}

namespace {

class Accounts : public ::testing::Test {
protected:
    Accounts() { people = &people_; }
    ~Accounts() override { people = nullptr; }

    struct Page {
        NET_API_STATUS status;
        std::vector<std::u16string> names;
        DWORD next = 0;
    };

    static Page Ask(DWORD index, DWORD entries, DWORD bytes = MAX_PREFERRED_LENGTH) {
        DWORD count = 99;
        void* buffer = &count;
        Page page{NetQueryDisplayInformation(nullptr, 1, index, entries, bytes, &count, &buffer), {}, 0};
        EXPECT_EQ(buffer != nullptr, count != 0);
        const auto* users = static_cast<const NET_DISPLAY_USER*>(buffer);
        for (DWORD i = 0; i < count; ++i) {
            page.names.emplace_back(users[i].usri1_name);
            page.next = users[i].usri1_next_index;
        }
        NetApiBufferFree(buffer);
        return page;
    }

    std::deque<Person> people_;
};

using Names = std::vector<std::u16string>;

}  // namespace

TEST_F(Accounts, AreThoseOfPeopleByName) {
    people_ = {{"zhao", 1001, ""},
               {"daemon", 1, ""},
               {"root", 0, "root"},
               {"nobody", 65534, ""},
               {"chen", 1000, "Chen Wei,,,"},
               {"zhao", 1001, "once more"},
               {"\xE6\x9D\x8E", 1002, ""}};
    const Page page = Ask(0, 100);
    EXPECT_EQ(page.status, NERR_Success);
    EXPECT_EQ(page.names, (Names{u"chen", u"root", u"zhao", u"李"}));
    EXPECT_EQ(page.next, 4u);
}

TEST_F(Accounts, ComeInPages) {
    for (uid_t i = 0; i < 250; ++i)
        people_.push_back({"user" + std::to_string(1000 + i), 1000 + i, ""});
    Page page = Ask(0, 100);
    EXPECT_EQ(page.status, ERROR_MORE_DATA);
    EXPECT_EQ(page.names.size(), 100u);
    EXPECT_EQ(page.names.front(), u"user1000");
    EXPECT_EQ(page.next, 100u);
    page = Ask(page.next, 100);
    EXPECT_EQ(page.status, ERROR_MORE_DATA);
    EXPECT_EQ(page.names.front(), u"user1100");
    page = Ask(page.next, 100);
    EXPECT_EQ(page.status, NERR_Success);
    EXPECT_EQ(page.names.size(), 50u);
    EXPECT_EQ(page.names.back(), u"user1249");
    page = Ask(page.next, 100);
    EXPECT_EQ(page.status, NERR_Success);
    EXPECT_TRUE(page.names.empty());
}

TEST_F(Accounts, KeepToTheBytesThatArePreferred) {
    people_ = {{"a", 1000, ""}, {"b", 1001, ""}, {"c", 1002, ""}};
    EXPECT_EQ(Ask(0, 100, 0).names, Names{u"a"}) << "one is given always";
    EXPECT_EQ(Ask(0, 100, 0).status, ERROR_MORE_DATA);
    EXPECT_EQ(Ask(1, 100, 2 * (sizeof(NET_DISPLAY_USER) + 8)).names, (Names{u"b", u"c"}));
    EXPECT_EQ(Ask(0, 0).status, ERROR_MORE_DATA);
    EXPECT_TRUE(Ask(0, 0).names.empty());
}

TEST_F(Accounts, TellTheNameAndTheNumberOfAPerson) {
    people_ = {{"chen", 1000, "Chen Wei,room 3"}};
    DWORD count = 0;
    void* buffer = nullptr;
    ASSERT_EQ(NetQueryDisplayInformation(u"localhost", 1, 0, 1, MAX_PREFERRED_LENGTH, &count, &buffer), NERR_Success);
    const auto& user = *static_cast<const NET_DISPLAY_USER*>(buffer);
    EXPECT_EQ(std::u16string(user.usri1_full_name), u"Chen Wei");
    EXPECT_EQ(std::u16string(user.usri1_comment), u"");
    EXPECT_EQ(user.usri1_user_id, 1000u);
    EXPECT_EQ(user.usri1_flags, UF_SCRIPT | UF_NORMAL_ACCOUNT);
    NetApiBufferFree(buffer);
}

TEST_F(Accounts, RefuseWhatTheyDoNotKnow) {
    DWORD count = 7;
    void* buffer = &count;
    EXPECT_EQ(NetQueryDisplayInformation(u"\\\\stock2", 1, 0, 1, 1, &count, &buffer), NERR_InvalidComputer);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(NetQueryDisplayInformation(nullptr, 2, 0, 1, 1, &count, &buffer), 124u);
    EXPECT_EQ(NetQueryDisplayInformation(nullptr, 1, 0, 1, 1, nullptr, &buffer), 87u);
    EXPECT_EQ(NetQueryDisplayInformation(nullptr, 1, 0, 1, 1, &count, nullptr), 87u);
    EXPECT_EQ(NetApiBufferFree(nullptr), NERR_Success);
}

TEST_F(Accounts, GrowWithLongEntries) {
    people_ = {{"chen", 1000, std::string(20000, 'x')}};
    EXPECT_EQ(Ask(0, 10).names, Names{u"chen"});
}
