#include <afxmt.h>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "afx/raises.h"

namespace {

// Whether another thread can enter right now.
bool CanEnter(CCriticalSection& section) {
    bool entered = false;
    std::thread([&] {
        entered = section.Lock(0);
        if (entered) section.Unlock();
    }).join();
    return entered;
}

TEST(CriticalSection, LetsItsOwnerInAgain) {
    CCriticalSection section;
    EXPECT_TRUE(section.Lock());
    EXPECT_TRUE(section.Lock());
    EXPECT_FALSE(CanEnter(section));
    EXPECT_TRUE(section.Unlock());
    EXPECT_FALSE(CanEnter(section));
    EXPECT_TRUE(section.Unlock());
    EXPECT_TRUE(CanEnter(section));
    EXPECT_TRUE(section.IsKindOf(RUNTIME_CLASS(CSyncObject)));
    EXPECT_NE(static_cast<CRITICAL_SECTION*>(section), nullptr);
}

TEST(CriticalSection, ExcludesOtherThreads) {
    CCriticalSection section;
    int count = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 10000; ++i) {
                CSingleLock lock(&section, TRUE);
                ++count;
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(count, 40000);
}

TEST(SingleLock, LeavesWithItsScope) {
    CCriticalSection section;
    {
        CSingleLock lock(&section);
        EXPECT_FALSE(lock.IsLocked());
        EXPECT_TRUE(CanEnter(section));
        EXPECT_TRUE(lock.Lock());
        EXPECT_TRUE(lock.Lock()) << "counts once";
        EXPECT_TRUE(lock.IsLocked());
        EXPECT_FALSE(CanEnter(section));
        EXPECT_TRUE(lock.Unlock());
        EXPECT_TRUE(CanEnter(section));
        EXPECT_TRUE(lock.Unlock());
        EXPECT_TRUE(lock.Lock(INFINITE));
    }
    EXPECT_TRUE(CanEnter(section));
    EXPECT_EQ(Raised([] { CSingleLock lock(nullptr); }), "CInvalidArgException");
}

}  // namespace
