#include "ado/odbc/spare_objects.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

/// Knows how many of its kind there are.
struct Counted {
    explicit Counted(std::atomic<int>& count) : alive(count) { ++alive; }
    ~Counted() { --alive; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    std::atomic<int>& alive;
    int users = 0;  // not atomic: the thread sanitizer sees two at once
};

using Spares = tk::ado::SpareObjects<Counted, 2>;

}  // namespace

TEST(SpareObjects, GiveBackWhatWasKeptAndNothingElse) {
    std::atomic<int> alive = 0;
    Spares spares;
    EXPECT_EQ(spares.Take(), nullptr);
    auto object = std::make_unique<Counted>(alive);
    const Counted* const same = object.get();
    spares.Keep(std::move(object));
    EXPECT_EQ(spares.Take().get(), same);
    EXPECT_EQ(spares.Take(), nullptr);
}

TEST(SpareObjects, EndWhatIsTooManyAndTheRestWithThem) {
    std::atomic<int> alive = 0;
    {
        Spares spares;
        for (int i = 0; i < 3; ++i)
            spares.Keep(std::make_unique<Counted>(alive));
        EXPECT_EQ(alive, 2);
        spares.Clear();
        EXPECT_EQ(alive, 0);
        spares.Keep(std::make_unique<Counted>(alive));
        EXPECT_EQ(alive, 1);
    }
    EXPECT_EQ(alive, 0);
}

TEST(SpareObjects, HaveOneUserAtATime) {
    constexpr int kRounds = 20000;
    std::atomic<int> alive = 0;
    std::atomic<int> shared = 0;
    {
        Spares spares;
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                for (int round = 0; round < kRounds; ++round) {
                    auto object = spares.Take();
                    if (object == nullptr) object = std::make_unique<Counted>(alive);
                    if (++object->users != 1) ++shared;
                    --object->users;
                    spares.Keep(std::move(object));
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_LE(alive, 2);
    }
    EXPECT_EQ(shared, 0);
    EXPECT_EQ(alive, 0);
}
