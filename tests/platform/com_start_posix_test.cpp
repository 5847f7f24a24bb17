// What the start functions ask for, and what they do about each failure: this program answers in the platform's place.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <afxole.h>
#include <afxsock.h>
#include <ole2.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tkkernel/platform.h"
#include "tkkernel/util.h"
#include "util/platform_calls.h"

namespace {

using testing::ElementsAre;

/// The answers, and the questions in order.
struct Platform {
    bool sockets = true;
    HRESULT apartment = S_OK;
    HRESULT oleApartment = S_OK;
    HRESULT security = S_OK;
    std::vector<std::string> calls;
};
Platform* platform = nullptr;

std::string Printed(const char* format, auto... values) {
    char text[200];
    std::snprintf(text, sizeof(text), format, values...);
    return text;
}

}  // namespace

BOOL AfxSocketInit(WSAData*) {
    platform->calls.push_back("sockets");
    return platform->sockets;
}

BOOL AfxOleInit() {
    platform->calls.push_back("ole");
    return SUCCEEDED(platform->oleApartment);
}

HRESULT CoInitializeEx(LPVOID reserved, DWORD flags) {
    platform->calls.push_back(Printed("apartment %d %u", reserved != nullptr, flags));
    return platform->apartment;
}

void CoUninitialize() {
    platform->calls.push_back("leave");
}

HRESULT CoInitializeSecurity(PSECURITY_DESCRIPTOR descriptor, LONG services, SOLE_AUTHENTICATION_SERVICE* service,
                             void* reserved1, DWORD authentication, DWORD impersonation, void* list, DWORD capabilities,
                             void* reserved3) {
    platform->calls.push_back(Printed("security %d %d %d %d %u %u %d %u %d", descriptor != nullptr, services,
                                      service != nullptr, reserved1 != nullptr, authentication, impersonation,
                                      list != nullptr, capabilities, reserved3 != nullptr));
    return platform->security;
}

int MessageBoxA(HWND, LPCSTR text, LPCSTR, UINT type) {
    platform->calls.push_back(Printed("box %u ", type & MB_ICONMASK) + text);
    return IDOK;
}

namespace {

constexpr char kSecurity[] = "security 0 -1 0 0 2 3 0 0 0";

class ComStart : public testing::Test {
protected:
    ComStart() { platform = &answers_; }
    ~ComStart() override { platform = nullptr; }

    std::string LoggedText(std::size_t string) {
        const auto records = log_.Records();
        EXPECT_EQ(records.size(), 1U);
        return records.empty() ? "" : records[0].strings.at(string);
    }

    Platform answers_;
    tk::test::PlatformCalls log_;
};

TEST_F(ComStart, StartsAService) {
    EXPECT_EQ(AfxIDispatchInit(), 1);
    EXPECT_THAT(answers_.calls, ElementsAre("sockets", "apartment 0 8", kSecurity));
    EXPECT_TRUE(log_.Records().empty());
}

TEST_F(ComStart, AcceptsAThreadThatHadStarted) {
    answers_.apartment = S_FALSE;
    EXPECT_EQ(AfxIDispatchInit(), 1);
}

TEST_F(ComStart, LogsMissingSocketsWithTheLastError) {
    answers_.sockets = false;
    SetLastError(5);
    EXPECT_EQ(AfxIDispatchInit(), 0);
    EXPECT_THAT(answers_.calls, ElementsAre("sockets"));
    EXPECT_EQ(LoggedText(0), "SOCKET INIT FAILED.");
    EXPECT_STREQ(LookupErrorText(5), LoggedText(2).c_str());
}

TEST_F(ComStart, LogsAFailedApartment) {
    answers_.apartment = RPC_E_CHANGED_MODE;
    EXPECT_EQ(AfxIDispatchInit(), 0);
    EXPECT_THAT(answers_.calls, ElementsAre("sockets", "apartment 0 8"));
    EXPECT_STREQ(LookupErrorText(0x80010106), LoggedText(0).c_str());
    EXPECT_EQ(LoggedText(2), "") << "the last error is left out";
}

TEST_F(ComStart, LogsFailedSecurity) {
    answers_.security = RPC_E_TOO_LATE;
    EXPECT_EQ(AfxIDispatchInit(), 0);
    EXPECT_STREQ(LookupErrorText(0x80010119), LoggedText(0).c_str());
}

TEST_F(ComStart, StartsAProgramWithWindows) {
    EXPECT_EQ(AfxIDispatchUIInit(), 1);
    EXPECT_THAT(answers_.calls, ElementsAre("ole", "sockets", kSecurity));
}

TEST_F(ComStart, ShowsWhatFailed) {
    SetLastError(5);
    answers_.oleApartment = E_FAIL;
    EXPECT_EQ(AfxIDispatchUIInit(), 0);
    EXPECT_THAT(answers_.calls, ElementsAre("ole", "box 16 " + std::string(LookupErrorText(5))));

    answers_ = {};
    answers_.sockets = false;
    SetLastError(6);
    EXPECT_EQ(AfxIDispatchUIInit(), 0);
    EXPECT_THAT(answers_.calls, ElementsAre("ole", "sockets", "box 16 " + std::string(LookupErrorText(6))));

    answers_ = {};
    answers_.security = RPC_E_TOO_LATE;
    EXPECT_EQ(AfxIDispatchUIInit(), 0);
    EXPECT_THAT(answers_.calls,
                ElementsAre("ole", "sockets", kSecurity, "box 16 " + std::string(LookupErrorText(0x80010119))));
    EXPECT_TRUE(log_.Records().empty());
}

TEST_F(ComStart, GivesTheResultOfAFurtherThread) {
    EXPECT_EQ(AfxDispatchInit(), 0) << "S_OK is 0";
    EXPECT_THAT(answers_.calls, ElementsAre("sockets", "apartment 0 8"));
    answers_.apartment = S_FALSE;
    EXPECT_EQ(AfxDispatchInit(), 1);
    EXPECT_TRUE(log_.Records().empty());
}

TEST_F(ComStart, GivesZeroWhenAFurtherThreadFails) {
    answers_.apartment = RPC_E_CHANGED_MODE;
    EXPECT_EQ(AfxDispatchInit(), 0);
    EXPECT_STREQ(LookupErrorText(0x80010106), LoggedText(0).c_str());

    answers_ = {};
    answers_.sockets = false;
    EXPECT_EQ(AfxDispatchInit(), 0);
    EXPECT_THAT(answers_.calls, ElementsAre("sockets"));
    EXPECT_EQ(log_.Records().size(), 2U);
}

TEST_F(ComStart, LeavesCom) {
    AfxIDispatchTerm();
    EXPECT_THAT(answers_.calls, ElementsAre("leave"));
}

TEST_F(ComStart, SettlesSecurityWithADescriptorAndALevel) {
    int descriptor = 0;
    answers_.security = RPC_E_TOO_LATE;
    EXPECT_EQ(AfxISecurityInit(&descriptor, 6), static_cast<long>(RPC_E_TOO_LATE));
    EXPECT_LT(AfxISecurityInit(&descriptor, 6), 0) << "failures stay negative in a wider type";
    answers_.security = S_OK;
    EXPECT_EQ(AfxISecurityInit(nullptr, 1), 0);
    EXPECT_THAT(answers_.calls, ElementsAre("security 1 -1 0 0 6 3 0 0 0", "security 1 -1 0 0 6 3 0 0 0",
                                            "security 0 -1 0 0 1 3 0 0 0"));
}

}  // namespace
