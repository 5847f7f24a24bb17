#include <afxdisp.h>
#include <gtest/gtest.h>
#include <objbase.h>

#include <utility>

#include "afx/recording_dispatch.h"

namespace {

TEST(DispatchHolder, TakesOverOrBorrows) {
    RecordingDispatch object;
    {
        COleDispatchDriver owner(&object);
        EXPECT_TRUE(owner.m_bAutoRelease);
        EXPECT_EQ(static_cast<IDispatch*>(owner), &object);
        EXPECT_EQ(object.references, 1);
    }
    EXPECT_EQ(object.references, 0);
    {
        COleDispatchDriver borrower(&object, FALSE);
        EXPECT_EQ(borrower.m_lpDispatch, &object);
    }
    EXPECT_EQ(object.references, 0);
}

TEST(DispatchHolder, SharesByCopying) {
    RecordingDispatch object;
    {
        COleDispatchDriver first(&object);
        COleDispatchDriver second(first);
        EXPECT_EQ(object.references, 2);
        COleDispatchDriver third;
        third = second;
        EXPECT_EQ(object.references, 3);
        third = *&third;
        EXPECT_EQ(object.references, 3);
        second = COleDispatchDriver();
        EXPECT_EQ(object.references, 2);
        EXPECT_EQ(second.m_lpDispatch, nullptr);
    }
    EXPECT_EQ(object.references, 0);
}

TEST(DispatchHolder, ACopyOfABorrowerOwnsItsReference) {
    RecordingDispatch object;
    {
        const COleDispatchDriver borrower(&object, FALSE);
        const COleDispatchDriver copy(borrower);
        EXPECT_TRUE(copy.m_bAutoRelease);
        EXPECT_EQ(object.references, 2);
    }
    EXPECT_EQ(object.references, 1);
}

TEST(DispatchHolder, MovesWithoutTouchingTheCount) {
    RecordingDispatch object;
    COleDispatchDriver first(&object);
    COleDispatchDriver second(std::move(first));
    EXPECT_EQ(object.references, 1);
    EXPECT_EQ(first.m_lpDispatch, nullptr);  // NOLINT(bugprone-use-after-move)
    first = std::move(second);
    EXPECT_EQ(object.references, 1);
    EXPECT_EQ(first.m_lpDispatch, &object);
}

TEST(DispatchHolder, AttachesDetachesAndReleases) {
    RecordingDispatch first;
    RecordingDispatch second;
    COleDispatchDriver driver;
    EXPECT_EQ(driver.m_lpDispatch, nullptr);
    EXPECT_TRUE(driver.m_bAutoRelease);
    driver.AttachDispatch(&first);
    driver.AttachDispatch(&second, FALSE);
    EXPECT_EQ(first.references, 0);
    EXPECT_EQ(driver.DetachDispatch(), &second);
    EXPECT_EQ(second.references, 1);
    EXPECT_EQ(driver.DetachDispatch(), nullptr);
    driver.AttachDispatch(&second);
    driver.ReleaseDispatch();
    EXPECT_EQ(second.references, 0);
    driver.ReleaseDispatch();
    EXPECT_EQ(second.references, 0);
}

// A class of this program's own.
constexpr CLSID kClass = {0x3B2E1A77, 0x61C4, 0x4F0D, {0x9A, 0x10, 0x5D, 0x3E, 0x77, 0x21, 0x0C, 0x42}};
constexpr char kClassText[] = "{3B2E1A77-61C4-4F0D-9A10-5D3E77210C42}";

class Factory : public IClassFactory {
public:
    virtual ~Factory() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        *object = nullptr;
        if (!IsEqualIID(riid, IID_IUnknown) && !IsEqualIID(riid, IID_IClassFactory)) return E_NOINTERFACE;
        *object = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID riid, void** object) override {
        return made.QueryInterface(riid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

    RecordingDispatch made;
};

class DispatchCreation : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)));
        ASSERT_EQ(CoRegisterClassObject(kClass, &factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie), S_OK);
    }
    void TearDown() override {
        CoRevokeClassObject(cookie);
        CoUninitialize();
    }

    Factory factory;
    DWORD cookie = 0;
};

TEST_F(DispatchCreation, HoldsTheNewObject) {
    {
        COleDispatchDriver driver;
        EXPECT_TRUE(driver.CreateDispatch(kClass));
        EXPECT_EQ(driver.m_lpDispatch, &factory.made);
        EXPECT_EQ(factory.made.references, 2);
        EXPECT_TRUE(driver.CreateDispatch(kClassText)) << "again: the one held so far is released";
        EXPECT_EQ(factory.made.references, 2);
    }
    EXPECT_EQ(factory.made.references, 1);
}

TEST_F(DispatchCreation, TellsWhyItFailed) {
    COleDispatchDriver driver(&factory.made, FALSE);
    COleException error;
    CLSID unknown = kClass;
    unknown.Data1 = 1;
    EXPECT_FALSE(driver.CreateDispatch(unknown, &error));
    EXPECT_EQ(error.m_sc, REGDB_E_CLASSNOTREG);
    EXPECT_FALSE(driver.CreateDispatch(unknown));
    EXPECT_FALSE(driver.CreateDispatch("no such program id", &error));
    EXPECT_EQ(error.m_sc, CO_E_CLASSSTRING);
    EXPECT_FALSE(driver.CreateDispatch("no such program id"));
    EXPECT_EQ(driver.m_lpDispatch, &factory.made) << "what was held stays";
}

}  // namespace
