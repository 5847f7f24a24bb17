#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "tkkernel/platform.h"

namespace {

constexpr GUID kGuid = {0x00000514, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};
constexpr GUID kNone = {};

TEST(StringFromGuid, WritesTheBracedUpperCaseForm) {
    EXPECT_STREQ(StringFromGuid(kGuid), "{00000514-0000-0010-8000-00AA006D2EA4}");
    EXPECT_STREQ(StringFromGuid(kNone), "{00000000-0000-0000-0000-000000000000}");
    constexpr GUID kAll = {0xFFFFFFFF, 0xABCD, 0xEF01, {0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0x01}};
    EXPECT_STREQ(StringFromGuid(kAll), "{FFFFFFFF-ABCD-EF01-2345-6789ABCDEF01}");
    EXPECT_EQ(StringFromGuid(kAll).GetLength(), 38);
}

TEST(StringToGuid, ReadsTheBracedFormOfEitherCase) {
    EXPECT_TRUE(IsEqualGUID(StringToGuid("{00000514-0000-0010-8000-00AA006D2EA4}"), kGuid));
    EXPECT_TRUE(IsEqualGUID(StringToGuid("{00000514-0000-0010-8000-00aa006d2ea4}"), kGuid));
}

TEST(StringToGuid, IsZeroForAMalformedText) {
    const struct {
        const char* label;
        const char* text;
    } kRows[] = {
        {"empty", ""},
        {"null", nullptr},
        {"no braces", "00000514-0000-0010-8000-00AA006D2EA4"},
        {"one brace", "{00000514-0000-0010-8000-00AA006D2EA4"},
        {"a digit short", "{00000514-0000-0010-8000-00AA006D2EA}"},
        {"no digit", "{0000051G-0000-0010-8000-00AA006D2EA4}"},
        {"misplaced hyphen", "{000005140-000-0010-8000-00AA006D2EA4}"},
        {"a class nobody knows", "No.Such.Class"},
        {"Chinese", "库存"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_TRUE(IsEqualGUID(StringToGuid(row.text), kNone));
    }
}

TEST(CreateGuid, GivesADifferentOneEachTime) {
    std::set<std::string> seen;
    for (int i = 0; i < 1000; ++i) {
        const GUID guid = CreateGuid();
        const CString text = StringFromGuid(guid);
        EXPECT_TRUE(seen.insert(static_cast<LPCTSTR>(text)).second);
        EXPECT_TRUE(IsEqualGUID(StringToGuid(text), guid));
    }
    EXPECT_EQ(seen.count("{00000000-0000-0000-0000-000000000000}"), 0U);
}

TEST(StringFromUuid, WritesTheBareLowerCaseForm) {
    EXPECT_STREQ(StringFromUuid(kGuid), "00000514-0000-0010-8000-00aa006d2ea4");
    EXPECT_STREQ(StringFromUuid(kNone), "00000000-0000-0000-0000-000000000000");
}

TEST(StringToUuid, ReadsTheBareFormOfEitherCase) {
    EXPECT_TRUE(IsEqualGUID(StringToUuid("00000514-0000-0010-8000-00AA006D2EA4"), kGuid));
    EXPECT_TRUE(IsEqualGUID(StringToUuid("00000514-0000-0010-8000-00aa006d2ea4"), kGuid));
}

TEST(StringToUuid, IsZeroForAMalformedText) {
    for (const char* text : {"", "{00000514-0000-0010-8000-00AA006D2EA4}", "00000514-0000-0010-8000-00AA006D2EA",
                             "00000514-0000-0010-8000-00AA006D2EAG", "00000514000000108000-00AA006D2EA4", "库存"}) {
        SCOPED_TRACE(text);
        EXPECT_TRUE(IsEqualGUID(StringToUuid(text), kNone));
    }
    EXPECT_TRUE(IsEqualGUID(StringToUuid(nullptr), kNone));
}

TEST(StringToUuid, UndoesStringFromUuid) {
    for (int i = 0; i < 100; ++i) {
        const GUID uuid = CreateUuid();
        EXPECT_TRUE(IsEqualGUID(StringToUuid(StringFromUuid(uuid)), uuid));
    }
}

TEST(CreateUuid, MakesEachOnce) {
    std::set<std::string> texts;
    for (int i = 0; i < 1000; ++i)
        texts.emplace(StringFromUuid(CreateUuid()));
    EXPECT_EQ(texts.size(), 1000u);
}

TEST(CLSIDExist, IsZeroForAClassThatIsNotRegistered) {
    GUID unknown = {0x5B3A2D31, 0x7C42, 0x4E0A, {0x9D, 0x10, 0x42, 0x8F, 0x55, 0x10, 0x77, 0xA1}};
    EXPECT_EQ(CLSIDExist(unknown), 0);
    GUID none = {};
    EXPECT_EQ(CLSIDExist(none), 0);
}

}  // namespace
