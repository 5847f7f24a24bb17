#include <afx.h>
#include <gtest/gtest.h>

namespace {

class Ledger : public CObject {
    DECLARE_DYNAMIC(Ledger)
};
IMPLEMENT_DYNAMIC(Ledger, CObject)

class CashLedger : public Ledger {
    DECLARE_DYNAMIC(CashLedger)
    int balance_[4] = {};
};
IMPLEMENT_DYNAMIC(CashLedger, Ledger)

TEST(RuntimeClass, KnowsNameSizeAndBase) {
    const CRuntimeClass* const type = RUNTIME_CLASS(CashLedger);
    EXPECT_STREQ(type->m_lpszClassName, "CashLedger");
    EXPECT_EQ(type->m_nObjectSize, static_cast<int>(sizeof(CashLedger)));
    EXPECT_EQ(type->m_pBaseClass, RUNTIME_CLASS(Ledger));
    EXPECT_EQ(RUNTIME_CLASS(CObject)->m_pBaseClass, nullptr);
    EXPECT_TRUE(type->IsDerivedFrom(RUNTIME_CLASS(CObject)));
    EXPECT_TRUE(type->IsDerivedFrom(type));
    EXPECT_FALSE(RUNTIME_CLASS(Ledger)->IsDerivedFrom(type));
    EXPECT_FALSE(type->IsDerivedFrom(nullptr));
}

TEST(RuntimeClass, IsThatOfTheObjectNotOfThePointer) {
    CashLedger cash;
    CObject* const object = &cash;
    EXPECT_EQ(object->GetRuntimeClass(), RUNTIME_CLASS(CashLedger));
    EXPECT_TRUE(object->IsKindOf(RUNTIME_CLASS(Ledger)));
    EXPECT_EQ(CObject().GetRuntimeClass(), RUNTIME_CLASS(CObject));
}

TEST(DownCast, GivesNullForWhatTheObjectIsNot) {
    Ledger plain;
    CashLedger cash;
    CObject* none = nullptr;
    EXPECT_EQ(DYNAMIC_DOWNCAST(CashLedger, &plain), nullptr);
    EXPECT_EQ(DYNAMIC_DOWNCAST(Ledger, &cash), &cash);
    EXPECT_EQ(DYNAMIC_DOWNCAST(Ledger, none), nullptr);
    EXPECT_EQ(STATIC_DOWNCAST(CashLedger, static_cast<CObject*>(&cash)), &cash);
}

}  // namespace
