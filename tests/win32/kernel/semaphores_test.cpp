#include "tests/win32/kernel/support.h"

using namespace tk::test;

namespace {

class Semaphores : public KernelObjects, public testing::WithParamInterface<const char*> {
protected:
    Handle Make(LONG count, LONG most) { return CreateSemaphoreA(nullptr, count, most, GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(UnnamedAndNamed, Semaphores, testing::Values(nullptr, "Stock.Places"),
                         [](const auto& row) { return std::string(row.param == nullptr ? "Unnamed" : "Named"); });

}  // namespace

TEST_P(Semaphores, CountDownToNothing) {
    const Handle semaphore = Make(2, 5);
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_TIMEOUT);
    LONG before = -1;
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 3, &before));
    EXPECT_EQ(before, 0);
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 2, &before));
    EXPECT_EQ(before, 3);
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_OBJECT_0);
}

TEST_P(Semaphores, RefuseMoreThanTheirMaximum) {
    const Handle semaphore = Make(4, 5);
    LONG before = -1;
    EXPECT_FALSE(ReleaseSemaphore(semaphore, 2, &before));
    EXPECT_EQ(GetLastError(), ERROR_TOO_MANY_POSTS);
    EXPECT_EQ(before, -1) << "nothing changed";
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 1, &before));
    EXPECT_EQ(before, 4);
    EXPECT_FALSE(ReleaseSemaphore(semaphore, 0x7FFFFFFF, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_TOO_MANY_POSTS) << "no overflow";
    for (const LONG count : {0, -1}) {
        EXPECT_FALSE(ReleaseSemaphore(semaphore, count, nullptr));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
}

TEST_P(Semaphores, LookAtTheCountBeforeTheHandle) {
    EXPECT_FALSE(ReleaseSemaphore(nullptr, 0, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_FALSE(ReleaseSemaphore(nullptr, 1, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_P(Semaphores, TakeTheirWholeMaximumAtOnceWhileSomebodyWaits) {
    const Handle semaphore = Make(0, 2);
    Waiter waiter([&] { return WaitForSingleObject(semaphore, INFINITE); });
    waiter.UntilAsleep();
    EXPECT_FALSE(ReleaseSemaphore(semaphore, 3, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_TOO_MANY_POSTS);
    EXPECT_FALSE(waiter.IsDone());
    LONG before = -1;
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 2, &before));
    EXPECT_EQ(before, 0);
    EXPECT_EQ(waiter.Result(), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_TIMEOUT);
}

TEST_F(KernelObjects, OfWhichOneMayOnlyWaitAreNotReleased) {
    const Handle semaphore = CreateSemaphoreA(nullptr, 1, 2, "Stock.Places");
    const Handle waitsOnly = OpenSemaphoreA(SYNCHRONIZE, FALSE, "Stock.Places");
    EXPECT_FALSE(ReleaseSemaphore(waitsOnly, 1, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(WaitForSingleObject(waitsOnly, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(waitsOnly, 0), WAIT_TIMEOUT);
}

TEST_P(Semaphores, ReachTheLargestCount) {
    const Handle semaphore = Make(0x7FFFFFFF, 0x7FFFFFFF);
    EXPECT_FALSE(ReleaseSemaphore(semaphore, 1, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_TOO_MANY_POSTS);
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_OBJECT_0);
    LONG before = 0;
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 1, &before));
    EXPECT_EQ(before, 0x7FFFFFFE);
}

TEST_P(Semaphores, AreNotMadeFromImpossibleCounts) {
    static const struct {
        const char* label;
        LONG count;
        LONG most;
    } kRows[] = {
        {"more than the maximum", 2, 1}, {"negative", -1, 1}, {"no maximum", 0, 0}, {"a negative maximum", 0, -5}};
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.label);
        EXPECT_EQ(CreateSemaphoreA(nullptr, row.count, row.most, GetParam()), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
}

TEST_P(Semaphores, LetAsManyThroughAsAreReleased) {
    const Handle semaphore = Make(0, 10);
    std::vector<std::unique_ptr<Waiter>> waiters;
    for (int i = 0; i < 3; ++i) {
        waiters.push_back(std::make_unique<Waiter>([&] { return WaitForSingleObject(semaphore, INFINITE); }));
        waiters.back()->UntilAsleep();
    }
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 2, nullptr));
    EXPECT_EQ(waiters[0]->Result(), WAIT_OBJECT_0);
    EXPECT_EQ(waiters[1]->Result(), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_TIMEOUT);
    EXPECT_FALSE(waiters[2]->IsDone());
    LONG before = -1;
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 2, &before));
    EXPECT_EQ(before, 0);
    EXPECT_EQ(waiters[2]->Result(), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_OBJECT_0) << "one of the two was left";
}

TEST_P(Semaphores, NeverLetInMoreThanTheyHave) {
    const Handle semaphore = Make(3, 3);
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 2000; ++round) {
                ASSERT_EQ(WaitForSingleObject(semaphore, 60000), WAIT_OBJECT_0);
                const int now = ++inside;
                for (int before = most.load(); before < now && !most.compare_exchange_weak(before, now);) {}
                if (round % 16 == 0) std::this_thread::yield();
                --inside;
                ASSERT_TRUE(ReleaseSemaphore(semaphore, 1, nullptr));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_LE(most.load(), 3);
    LONG before = 0;
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 1, &before));
    EXPECT_EQ(before, 2) << "every place was given back";
}
