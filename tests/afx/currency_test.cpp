#include <afxdisp.h>
#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr long long kMost = std::numeric_limits<long long>::max();
constexpr long long kLeast = std::numeric_limits<long long>::min();

COleCurrency Amount(long long tenThousandths) {
    CY amount;
    amount.int64 = tenThousandths;
    return COleCurrency(amount);
}

TEST(Currency, CountsTenThousandths) {
    EXPECT_EQ(COleCurrency().m_cur.int64, 0);
    EXPECT_EQ(COleCurrency(12, 7500).m_cur.int64, 127500);
    EXPECT_EQ(COleCurrency(-12, -7500).m_cur.int64, -127500);
    EXPECT_EQ(COleCurrency(1, 20000).m_cur.int64, 30000);
    EXPECT_EQ(static_cast<CURRENCY>(Amount(5)).int64, 5);
    COleCurrency set;
    set.SetCurrency(2, 5);
    EXPECT_EQ(set.m_cur.int64, 20005);
}

TEST(Currency, ComesFromVariants) {
    VARIANT value = {};
    value.vt = VT_I4;
    value.lVal = 5;
    EXPECT_EQ(COleCurrency(value).m_cur.int64, 50000);
    value.vt = VT_EMPTY;
    EXPECT_EQ(COleCurrency(value).GetStatus(), COleCurrency::null);
    value.vt = VT_NULL;
    EXPECT_EQ(COleCurrency(value).GetStatus(), COleCurrency::null);
    value.vt = VT_ERROR;
    EXPECT_EQ(COleCurrency(value).GetStatus(), COleCurrency::invalid);
}

TEST(Currency, Calculates) {
    EXPECT_EQ((Amount(15000) + Amount(5000)).m_cur.int64, 20000);
    EXPECT_EQ((Amount(15000) - Amount(20000)).m_cur.int64, -5000);
    EXPECT_EQ((Amount(15000) * 3L).m_cur.int64, 45000);
    EXPECT_EQ((Amount(10000) / 3L).m_cur.int64, 3333);
    EXPECT_EQ((Amount(-10000) / 3L).m_cur.int64, -3333);
    EXPECT_EQ((-Amount(5)).m_cur.int64, -5);
    COleCurrency amount = Amount(10);
    amount += Amount(5);
    amount -= Amount(3);
    amount *= 10L;
    amount /= 4L;
    EXPECT_EQ(amount.m_cur.int64, 30);
}

TEST(Currency, IsInvalidWhereTheResultDoesNotFit) {
    EXPECT_EQ((Amount(kMost) + Amount(1)).GetStatus(), COleCurrency::invalid);
    EXPECT_EQ((Amount(kLeast) - Amount(1)).GetStatus(), COleCurrency::invalid);
    EXPECT_EQ((Amount(kMost) * 2L).GetStatus(), COleCurrency::invalid);
    EXPECT_EQ((-Amount(kLeast)).GetStatus(), COleCurrency::invalid);
    EXPECT_EQ((Amount(kLeast) / -1L).GetStatus(), COleCurrency::invalid);
    EXPECT_EQ((Amount(1) / 0L).GetStatus(), COleCurrency::invalid);
    COleCurrency null;
    null.SetStatus(COleCurrency::null);
    EXPECT_EQ((null + Amount(1)).GetStatus(), COleCurrency::null);
    EXPECT_EQ(((Amount(1) / 0L) + Amount(1)).GetStatus(), COleCurrency::invalid);
}

TEST(Currency, Compares) {
    EXPECT_TRUE(Amount(1) == Amount(1));
    EXPECT_TRUE(Amount(1) != Amount(2));
    EXPECT_TRUE(Amount(-1) < Amount(1));
    EXPECT_TRUE(Amount(2) > Amount(1));
    EXPECT_TRUE(Amount(1) <= Amount(1));
    EXPECT_TRUE(Amount(1) >= Amount(1));
}

TEST(Currency, IsReadAndWritten) {
    COleCurrency amount;
    EXPECT_TRUE(amount.ParseCurrency("12.75"));
    EXPECT_EQ(amount.m_cur.int64, 127500);
    EXPECT_STREQ(amount.Format(), "12.75");
    EXPECT_FALSE(amount.ParseCurrency("no amount"));
    EXPECT_EQ(amount.GetStatus(), COleCurrency::invalid);
    EXPECT_STREQ(amount.Format(), "Invalid Currency");
    EXPECT_FALSE(amount.ParseCurrency(nullptr));
    amount.SetStatus(COleCurrency::null);
    EXPECT_STREQ(amount.Format(), "");
}

}  // namespace
