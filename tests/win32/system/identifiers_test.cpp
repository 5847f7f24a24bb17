#include <algorithm>
#include <vector>

#include "tests/win32/system/support.h"
#include "tests/win32/system/tiny_server.h"

using namespace tk::test;

namespace {

constexpr GUID kSample = {0x0123ABCD, 0x45EF, 0x6789, {0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10}};

}  // namespace

TEST(GuidText, IsBracedAndInCapitals) {
    OLECHAR buffer[40] = {};
    EXPECT_EQ(StringFromGUID2(kSample, buffer, 39), 39);
    EXPECT_EQ(std::u16string(buffer), u"{0123ABCD-45EF-6789-FEDC-BA9876543210}");
    EXPECT_EQ(StringFromGUID2(kSample, buffer, 38), 0);
    EXPECT_EQ(StringFromGUID2(kSample, nullptr, 39), 0);
    EXPECT_EQ(StringFromGUID2(GUID_NULL, buffer, 40), 39);
    EXPECT_EQ(std::u16string(buffer), u"{00000000-0000-0000-0000-000000000000}");

    LPOLESTR text = nullptr;
    ASSERT_EQ(StringFromCLSID(kSample, &text), S_OK);
    EXPECT_EQ(std::u16string(text), u"{0123ABCD-45EF-6789-FEDC-BA9876543210}");
    CoTaskMemFree(text);
    ASSERT_EQ(StringFromIID(IID_IUnknown, &text), S_OK);
    EXPECT_EQ(std::u16string(text), u"{00000000-0000-0000-C000-000000000046}");
    CoTaskMemFree(text);
    EXPECT_EQ(StringFromCLSID(kSample, nullptr), E_INVALIDARG);
}

TEST(GuidText, IsReadInEitherCaseAndNothingElse) {
    constexpr auto kNoClass = static_cast<HRESULT>(0x800401F3);
    static const struct {
        const char16_t* text;
        HRESULT asClass;
        HRESULT asInterface;
    } kRows[] = {
        {u"{0123ABCD-45EF-6789-FEDC-BA9876543210}", S_OK, S_OK},
        {u"{0123abcd-45ef-6789-fedc-ba9876543210}", S_OK, S_OK},
        {u"0123ABCD-45EF-6789-FEDC-BA9876543210", kNoClass, static_cast<HRESULT>(0x800401F4)},
        {u"{0123ABCD-45EF-6789-FEDC-BA987654321}", kNoClass, static_cast<HRESULT>(0x800401F4)},
        {u"{0123ABCD-45EF-6789-FEDC-BA98765432100}", kNoClass, static_cast<HRESULT>(0x800401F4)},
        {u"{0123ABCD-45EF-6789-FEDC-BA987654321G}", kNoClass, static_cast<HRESULT>(0x800401F4)},
        {u"{0123ABCD+45EF-6789-FEDC-BA9876543210}", kNoClass, static_cast<HRESULT>(0x800401F4)},
        {u"{0123ABCD-45EF-6789-FEDC-BA9876543210", kNoClass, static_cast<HRESULT>(0x800401F4)},
        {u"{0123ABCD-45EF-6789-FEDC-BA9876543210} ", kNoClass, static_cast<HRESULT>(0x800401F4)},
        {u"{\uFF10123ABCD-45EF-6789-FEDC-BA987654321}", kNoClass, static_cast<HRESULT>(0x800401F4)},
        {u"{", kNoClass, static_cast<HRESULT>(0x800401F4)},
        {u"", kNoClass, static_cast<HRESULT>(0x800401F4)},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(std::string(row.text, row.text + std::char_traits<char16_t>::length(row.text)));
        GUID guid = IID_IUnknown;
        EXPECT_EQ(CLSIDFromString(row.text, &guid), row.asClass);
        EXPECT_EQ(guid, row.asClass == S_OK ? kSample : GUID_NULL);
        guid = IID_IUnknown;
        EXPECT_EQ(IIDFromString(row.text, &guid), row.asInterface);
        EXPECT_EQ(guid, row.asInterface == S_OK ? kSample : GUID_NULL);
    }
}

TEST(GuidText, OfNothingIsTheNullIdentifier) {
    GUID guid = kSample;
    EXPECT_EQ(CLSIDFromString(nullptr, &guid), S_OK);
    EXPECT_EQ(guid, GUID_NULL);
    guid = kSample;
    EXPECT_EQ(IIDFromString(nullptr, &guid), S_OK);
    EXPECT_EQ(guid, GUID_NULL);
    EXPECT_EQ(CLSIDFromString(u"x", nullptr), E_INVALIDARG);
    EXPECT_EQ(IIDFromString(u"x", nullptr), E_INVALIDARG);
}

TEST(GuidText, MayBeAProgId) {
    const Variable files("TKKERNEL_CLASSES", nullptr);
    GUID guid{};
    EXPECT_EQ(CLSIDFromString(u"ADODB.Connection", &guid), S_OK);
    EXPECT_EQ(guid.Data1, 0x00000514u);
    EXPECT_EQ(CLSIDFromString(u"No.Such.Name", &guid), static_cast<HRESULT>(0x800401F3));
    EXPECT_EQ(guid, GUID_NULL);
}

TEST(NewGuid, IsRandomAndMarkedSo) {
    std::vector<std::string> seen;
    for (int i = 0; i < 1000; ++i) {
        GUID guid{};
        ASSERT_EQ(i % 2 == 0 ? CoCreateGuid(&guid) : UuidCreate(&guid), S_OK);
        EXPECT_EQ(guid.Data3 >> 12, 4);
        EXPECT_EQ(guid.Data4[0] >> 6, 2);
        seen.emplace_back(reinterpret_cast<const char*>(&guid), sizeof guid);
    }
    std::sort(seen.begin(), seen.end());
    EXPECT_EQ(std::adjacent_find(seen.begin(), seen.end()), seen.end());
    EXPECT_EQ(CoCreateGuid(nullptr), E_INVALIDARG);
}

TEST(UuidText, IsSmallWithoutBraces) {
    RPC_CSTR text = nullptr;
    ASSERT_EQ(UuidToString(&kSample, &text), RPC_S_OK);
    EXPECT_STREQ(reinterpret_cast<const char*>(text), "0123abcd-45ef-6789-fedc-ba9876543210");
    EXPECT_EQ(RpcStringFree(&text), RPC_S_OK);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(RpcStringFree(&text), RPC_S_OK);
    ASSERT_EQ(UuidToString(nullptr, &text), RPC_S_OK);
    EXPECT_STREQ(reinterpret_cast<const char*>(text), "00000000-0000-0000-0000-000000000000");
    RpcStringFree(&text);
}

TEST(UuidText, IsReadWithoutBracesOnly) {
    static const struct {
        const char* text;
        RPC_STATUS status;
    } kRows[] = {
        {"0123abcd-45ef-6789-fedc-ba9876543210", 0},
        {"0123ABCD-45EF-6789-FEDC-BA9876543210", 0},
        {"{0123ABCD-45EF-6789-FEDC-BA9876543210}", 1705},
        {"0123ABCD45EF6789FEDCBA9876543210", 1705},
        {"订单", 1705},
        {"", 1705},
    };
    for (const auto& row : kRows) {
        UUID uuid = IID_IUnknown;
        std::string text = row.text;
        EXPECT_EQ(UuidFromString(reinterpret_cast<RPC_CSTR>(text.data()), &uuid), row.status) << row.text;
        EXPECT_EQ(uuid, row.status == 0 ? kSample : IID_IUnknown) << row.text;
    }
    UUID uuid = kSample;
    EXPECT_EQ(UuidFromString(nullptr, &uuid), RPC_S_OK);
    EXPECT_EQ(uuid, GUID_NULL);
}
