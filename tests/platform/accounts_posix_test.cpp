// Paging through the accounts: this program answers for the platform.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <lm.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tkkernel/platform.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Page {
    NET_API_STATUS status;
    std::vector<std::u16string> names;
    DWORD nextIndex;
};

/// The pages in their order, and what was asked.
struct Accounts {
    std::vector<Page> pages;
    std::size_t next = 0;
    std::vector<std::string> requests;
    int freed = 0;
    int given = 0;
};
Accounts* accounts = nullptr;

}  // namespace

NET_API_STATUS NetQueryDisplayInformation(LPCWSTR server, DWORD level, DWORD index, DWORD entries, DWORD length,
                                          LPDWORD count, PVOID* buffer) {
    accounts->requests.push_back((server != nullptr ? "elsewhere " : "here ") + std::to_string(level) + " " +
                                 std::to_string(index) + " " + std::to_string(entries) + " " + std::to_string(length));
    *count = 0;
    *buffer = nullptr;
    if (accounts->next >= accounts->pages.size()) return NERR_Success;
    Page& page = accounts->pages[accounts->next++];
    auto* users = static_cast<NET_DISPLAY_USER*>(std::calloc(page.names.size() + 1, sizeof(NET_DISPLAY_USER)));
    for (std::size_t i = 0; i < page.names.size(); ++i) {
        users[i].usri1_name = page.names[i].data();
        users[i].usri1_next_index = page.nextIndex - static_cast<DWORD>(page.names.size() - 1 - i);
    }
    *count = static_cast<DWORD>(page.names.size());
    *buffer = users;
    ++accounts->given;
    return page.status;
}

NET_API_STATUS NetApiBufferFree(LPVOID buffer) {
    if (buffer != nullptr) ++accounts->freed;
    std::free(buffer);
    return NERR_Success;
}

namespace {

class GetAllAccountsByPages : public testing::Test {
protected:
    GetAllAccountsByPages() { accounts = &accounts_; }
    ~GetAllAccountsByPages() override {
        EXPECT_EQ(accounts_.freed, accounts_.given) << "every block is given back once";
        accounts = nullptr;
    }

    std::vector<std::string> Names() {
        CStringArray names;
        names.Add("left over");
        EXPECT_EQ(GetAllAccounts(names), 1);
        std::vector<std::string> copy;
        for (int i = 0; i < names.GetSize(); ++i)
            copy.emplace_back(names[i]);
        return copy;
    }

    Accounts accounts_;
};

TEST_F(GetAllAccountsByPages, GoesOnAtTheLastEntrysNextIndex) {
    accounts_.pages = {
        {ERROR_MORE_DATA, {u"chen", u"\u674E"}, 7}, {ERROR_MORE_DATA, {u"wang"}, 11}, {0, {u"zhao"}, 12}};
    EXPECT_THAT(Names(), ElementsAre("chen", "李", "wang", "zhao"));
    EXPECT_THAT(accounts_.requests,
                ElementsAre("here 1 0 100 4294967295", "here 1 7 100 4294967295", "here 1 11 100 4294967295"));
}

TEST_F(GetAllAccountsByPages, StopsAfterTheLastPage) {
    accounts_.pages = {{0, {u"chen"}, 3}, {0, {u"never asked for"}, 4}};
    EXPECT_THAT(Names(), ElementsAre("chen"));
}

TEST_F(GetAllAccountsByPages, IsTrueAndEmptyWhenTheFirstRequestFails) {
    accounts_.pages = {{ERROR_ACCESS_DENIED, {u"not given"}, 1}};
    EXPECT_THAT(Names(), IsEmpty());
    EXPECT_EQ(accounts_.requests.size(), 1u);
}

TEST_F(GetAllAccountsByPages, KeepsWhatItHasWhenALaterRequestFails) {
    accounts_.pages = {{ERROR_MORE_DATA, {u"chen"}, 1}, {ERROR_ACCESS_DENIED, {u"not given"}, 2}};
    EXPECT_THAT(Names(), ElementsAre("chen"));
}

TEST_F(GetAllAccountsByPages, EndsWhenMoreIsPromisedButNothingComes) {
    accounts_.pages = {{ERROR_MORE_DATA, {u"chen"}, 1}, {ERROR_MORE_DATA, {}, 0}, {0, {u"never"}, 2}};
    EXPECT_THAT(Names(), ElementsAre("chen"));
    EXPECT_EQ(accounts_.requests.size(), 2u);
}

TEST_F(GetAllAccountsByPages, EndsWhereTheNextPageWouldBeTheSameOne) {
    accounts_.pages = {{ERROR_MORE_DATA, {u"chen"}, 7}, {ERROR_MORE_DATA, {u"wang"}, 7}, {0, {u"never"}, 8}};
    EXPECT_THAT(Names(), ElementsAre("chen", "wang"));
    EXPECT_EQ(accounts_.requests.size(), 2u);
}

}  // namespace
