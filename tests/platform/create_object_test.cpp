#include <gtest/gtest.h>

#include <string>

#include "support/registered_class.h"
#include "support/scripted_object.h"
#include "tkkernel/platform.h"
#include "tkkernel/util.h"

namespace {

using namespace tk::test;

constexpr CLSID kClass = {0x5B3A2D11, 0x7C42, 0x4E0A, {0x9D, 0x10, 0x42, 0x8F, 0x55, 0x10, 0x77, 0xA1}};
constexpr char kClassText[] = "{5B3A2D11-7C42-4E0A-9D10-428F551077A1}";
constexpr IID kOffered = {0x5B3A2D12, 0x7C42, 0x4E0A, {0x9D, 0x10, 0x42, 0x8F, 0x55, 0x10, 0x77, 0xA1}};
constexpr CLSID kUnknownClass = {0x5B3A2D13, 0x7C42, 0x4E0A, {0x9D, 0x10, 0x42, 0x8F, 0x55, 0x10, 0x77, 0xA1}};
constexpr char kNotStarted[] = "无法初始化OLE引擎,进程没有调用CoInitialize(NULL)函数!";

class CreateObject : public testing::Test {
protected:
    ~CreateObject() override { EXPECT_EQ(object_.References(), 1U) << "a reference was not given back"; }

    Apartment apartment_;
    RegisteredClass classes_{kClass};
    Held<ScriptedObject> held_ = ScriptedObject::Make("object", nullptr);
    ScriptedObject& object_ = *held_.Get();
};

TEST_F(CreateObject, FillsADriverThatReleases) {
    classes_.Give(&object_);
    CString error("untouched");
    {
        COleDispatchDriver driver;
        driver.m_bAutoRelease = FALSE;
        EXPECT_EQ(CreateIDispatch(&driver, kClassText, error), 1);
        EXPECT_EQ(driver.m_lpDispatch, static_cast<IDispatch*>(&object_));
        EXPECT_TRUE(driver.m_bAutoRelease);
        EXPECT_EQ(object_.References(), 2U);
    }
    EXPECT_STREQ(error, "untouched");
}

TEST_F(CreateObject, GivesTheTextOfTheCodeThatCreationFailedWith) {
    const struct {
        const char* label;
        HRESULT refused;
    } kRows[] = {
        {"access denied", E_ACCESSDENIED},
        {"no memory", E_OUTOFMEMORY},
        {"file not found as a result code is no missing start", static_cast<HRESULT>(0x80070002)},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        classes_.Refuse(row.refused);
        COleDispatchDriver driver;
        CString error;
        EXPECT_EQ(CreateIDispatch(&driver, kClassText, error), 0);
        EXPECT_EQ(driver.m_lpDispatch, nullptr);
        EXPECT_STREQ(error, LookupErrorText(static_cast<DWORD>(row.refused)));
        EXPECT_STRNE(error, "");
    }
}

TEST_F(CreateObject, NamesAMissingStartOfCom) {
    classes_.Refuse(CO_E_NOTINITIALIZED);
    COleDispatchDriver driver;
    CString error;
    EXPECT_EQ(CreateIDispatch(&driver, kClassText, error), 0);
    EXPECT_STREQ(error, kNotStarted);
}

TEST_F(CreateObject, TellsAnUnknownClassAndAMalformedName) {
    COleDispatchDriver driver;
    CString error;
    EXPECT_EQ(CreateIDispatch(&driver, "{5B3A2D13-7C42-4E0A-9D10-428F551077A1}", error), 0);
    EXPECT_STREQ(error, LookupErrorText(static_cast<DWORD>(REGDB_E_CLASSNOTREG)));
    for (const char* name : {"No.Such.Class", "{5B3A2D13", ""}) {
        SCOPED_TRACE(name);
        error = "old";
        EXPECT_EQ(CreateIDispatch(&driver, name, error), 0);
        EXPECT_STREQ(error, LookupErrorText(static_cast<DWORD>(CO_E_CLASSSTRING)));
    }
    EXPECT_EQ(CreateIDispatch(&driver, nullptr, error), 0);
    EXPECT_EQ(CreateIDispatch(static_cast<COleDispatchDriver*>(nullptr), kClassText, error), 0);
    EXPECT_STREQ(error, LookupErrorText(static_cast<DWORD>(E_POINTER)));
    EXPECT_EQ(classes_.Created(), 0);
}

TEST_F(CreateObject, CreatesByClass) {
    classes_.Give(&object_);
    const Held<IUnknown> created(CreateIDispatch(kClass, IID_IDispatch));
    EXPECT_EQ(created.Get(), static_cast<IUnknown*>(&object_));
}

TEST_F(CreateObject, LeavesTheCodeInTheLastError) {
    classes_.Refuse(E_ACCESSDENIED);
    EXPECT_EQ(CreateIDispatch(kClass, IID_IDispatch), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(E_ACCESSDENIED));

    classes_.Give(&object_);
    EXPECT_EQ(CreateIDispatch(kClass, kOffered), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(E_NOINTERFACE));

    EXPECT_EQ(CreateIDispatch(kUnknownClass, IID_IDispatch), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(REGDB_E_CLASSNOTREG));

    EXPECT_EQ(CreateIDispatch("No.Such.Class", IID_IDispatch), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(CO_E_CLASSSTRING));
    EXPECT_EQ(CreateIDispatch(kClassText, IID_IDispatch), nullptr) << "an identifier is no name";
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(CO_E_CLASSSTRING));
    EXPECT_EQ(CreateIDispatchEx(kClassText, IID_IDispatch, "", nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(CO_E_CLASSSTRING));
    EXPECT_EQ(CreateIDispatch("", IID_IDispatch), nullptr);
    EXPECT_EQ(CreateIDispatch(static_cast<const char*>(nullptr), IID_IDispatch), nullptr);
}

TEST_F(CreateObject, QueriesAnInterfaceOfWhatItCreates) {
    object_.Offer(kOffered, static_cast<IDispatch*>(&object_));
    classes_.Give(&object_);
    const Held<IUnknown> queried(QueryIDispatch(kClass, kOffered));
    EXPECT_EQ(queried.Get(), static_cast<IUnknown*>(&object_));
    EXPECT_EQ(object_.Asked(kOffered), 1);
    EXPECT_EQ(object_.References(), 2U) << "the creation's own reference is given back";
}

TEST_F(CreateObject, QueriesNothingThatIsNotThere) {
    classes_.Give(&object_);
    EXPECT_EQ(QueryIDispatch(kClass, kOffered), nullptr);

    classes_.Refuse(E_ACCESSDENIED);
    EXPECT_EQ(QueryIDispatch(kClass, kOffered), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(E_ACCESSDENIED));
}

TEST_F(CreateObject, DisconnectsWithoutReleasing) {
    ReleaseIDispatch(&object_);
    EXPECT_EQ(object_.References(), 1U);
    ReleaseIDispatch(nullptr);
}

TEST_F(CreateObject, OnTheMachineItselfIsLocal) {
    for (const char* host : {static_cast<const char*>(nullptr), "", "127.0.0.1", "LOCALHOST"}) {
        SCOPED_TRACE(host != nullptr ? host : "null");
        classes_.Give(&object_);
        const Held<IUnknown> created(CreateIDispatchEx(kClass, IID_IDispatch, host, nullptr, nullptr, nullptr));
        EXPECT_EQ(created.Get(), static_cast<IUnknown*>(&object_));
    }
    MULTI_QI result = {nullptr, nullptr, E_FAIL};
    classes_.Give(&object_);
    EXPECT_EQ(CreateIDispatchEx(&result, 1L, kClass, IID_IDispatch, "localhost", nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(result.hr, S_OK);
    ASSERT_EQ(result.pItf, static_cast<IUnknown*>(&object_));
    result.pItf->Release();
}

TEST_F(CreateObject, ThroughAQueueIsNotOffered) {
    EXPECT_EQ(CreateIDispatchQueue(kClass, IID_IDispatch, "", "", "", ""), nullptr);
    EXPECT_EQ(CreateIDispatchQueue(kClass, IID_IDispatch, "stock2", "li", "STOCK", "pw"), nullptr);
    EXPECT_EQ(CreateIDispatchQueue(GUID{}, GUID{}, nullptr, nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(classes_.Created(), 0);
}

TEST_F(CreateObject, HasNoAccountToSetOnAnObjectOfThisProcess) {
    EXPECT_EQ(AfxSetSecurity(&object_, "li", "STOCK", "pw"), static_cast<long>(E_NOINTERFACE));
}

TEST(LocalHost, KnowsTheFixedNamesInEitherCase) {
    EXPECT_EQ(LocalHost("127.0.0.1"), 1);
    EXPECT_EQ(LocalHost("localhost"), 1);
    EXPECT_EQ(LocalHost("LOCALHOST"), 1);
}

}  // namespace
