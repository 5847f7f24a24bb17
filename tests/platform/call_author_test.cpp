// Who calls a server's object: a call is put in place by hand.
#include <gtest/gtest.h>

#include <ole2.h>

#include <stdexcept>
#include <string>

#include "support/registered_class.h"
#include "support/scripted_object.h"
#include "tkkernel/platform.h"
#include "util/faults.h"
#include "util/platform_calls.h"

namespace {

using namespace tk::test;

/// The call being served.
class ServedCall final : public IServerSecurity {
public:
    ServedCall() { CoSwitchCallContext(this, &before_); }
    ServedCall(const ServedCall&) = delete;
    ServedCall& operator=(const ServedCall&) = delete;
    ~ServedCall() {
        IUnknown* own = nullptr;
        CoSwitchCallContext(before_, &own);
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        const bool known = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IServerSecurity);
        *object = known ? static_cast<IServerSecurity*>(this) : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE QueryBlanket(DWORD*, DWORD*, OLECHAR** server, DWORD*, DWORD*, void** name,
                                           DWORD*) override {
        if (throws) throw std::runtime_error("the call is broken");
        if (faults) WriteNull();
        static OLECHAR caller[] = OLESTR("STOCK\\\u674E");
        *name = caller;
        if (FAILED(blanket)) return blanket;  // the name does not count then
        // Freed by who asked: the leak checker finds what is not.
        *server = static_cast<OLECHAR*>(CoTaskMemAlloc(8));
        (*server)[0] = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ImpersonateClient() override {
        impersonating = SUCCEEDED(impersonation);
        ++impersonations;
        return impersonation;
    }
    HRESULT STDMETHODCALLTYPE RevertToSelf() override {
        ++reversions;
        if (keeps) throw std::runtime_error("the way back is broken");
        impersonating = false;
        return S_OK;
    }
    BOOL STDMETHODCALLTYPE IsImpersonating() override { return impersonating; }

    HRESULT impersonation = S_OK;
    HRESULT blanket = S_OK;
    bool throws = false;
    bool keeps = false;
    bool faults = false;
    bool impersonating = false;
    int impersonations = 0;
    int reversions = 0;

private:
    IUnknown* before_ = nullptr;
};

TEST(GetCallAuthor, IsNobodyOutsideACall) {
    const Apartment apartment;
    EXPECT_STREQ(GetCallAuthor(), "");
}

TEST(GetCallAuthor, IsTheCallersName) {
    const Apartment apartment;
    ServedCall call;
    EXPECT_STREQ(GetCallAuthor(), "STOCK\\李");
    EXPECT_EQ(call.impersonations, 1);
    EXPECT_FALSE(call.impersonating) << "the thread is itself again";
}

TEST(GetCallAuthor, IsNobodyWhenThePlatformDoesNotTell) {
    const Apartment apartment;
    ServedCall call;
    call.blanket = E_ACCESSDENIED;
    EXPECT_STREQ(GetCallAuthor(), "");
    EXPECT_FALSE(call.impersonating);
    call.blanket = S_OK;
    EXPECT_EQ(call.reversions, 1);
    call.impersonation = E_ACCESSDENIED;
    EXPECT_STREQ(GetCallAuthor(), "");
    EXPECT_EQ(call.reversions, 1) << "there was nothing to go back from";
}

TEST(GetCallAuthor, LogsAFault) {
    const Apartment apartment;
    PlatformCalls log;
    ServedCall call;
    call.throws = true;
    EXPECT_STREQ(GetCallAuthor(), "");
    EXPECT_FALSE(call.impersonating);
    call.throws = false;
    call.faults = true;
    EXPECT_STREQ(GetCallAuthor(), "");
    EXPECT_FALSE(call.impersonating);
    const auto records = log.Records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[1], records[0]);
    EXPECT_EQ(records[0].strings.at(0), "连接点关闭出现异常[异常位置:GetCallAuthor]");
    EXPECT_EQ(records[0].strings.at(2), "") << "the last error is left out";
    EXPECT_EQ(records[0].type, EVENTLOG_ERROR_TYPE);
}

TEST(GetCallAuthor, OutlivesAWayBackThatIsBrokenToo) {
    const Apartment apartment;
    PlatformCalls log;
    ServedCall call;
    call.faults = true;
    call.keeps = true;
    EXPECT_STREQ(GetCallAuthor(), "");
    EXPECT_EQ(call.reversions, 1);
    EXPECT_EQ(log.Records().size(), 1U);
}

}  // namespace
