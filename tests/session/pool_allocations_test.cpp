// Borrowing and returning from a pool that is in use: no memory is asked for.
//
// This program stands in front of the system's malloc, and with it of operator new.
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>

#include "session/steady_object.h"
#include "support/registered_class.h"
#include "tkkernel/session.h"

namespace {

std::atomic<long> allocations = 0;

}  // namespace

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void* malloc(std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_realloc(block, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_memalign(alignment, size);
}
}

namespace tk::test {
namespace {

constexpr int kSessions = 8;
constexpr int kTimes = 1000;

class PoolAllocations : public ::testing::Test {
protected:
    void SetUp() override {
        for (int i = 0; i < kSessions; ++i) {
            connections_.Give(object_.Get());
            recordsets_.Give(object_.Get());
        }
        ASSERT_EQ(server_.OpenDatabase("stock", "", "", kSessions), 1) << server_.GetLastErrorString();
    }

    /// How much is allocated from the second round on.
    template <typename Work>
    static long AllocationsOf(const Work& work) {
        work();
        const long before = allocations;
        for (int i = 0; i < kTimes; ++i)
            work();
        return allocations - before;
    }

    Apartment apartment_;
    Held<SteadyObject> object_{new SteadyObject};
    RegisteredClass connections_{kConnectionClass};
    RegisteredClass recordsets_{kRecordsetClass};
    CTDataServer server_;
};

TEST_F(PoolAllocations, AreSeenHere) {
    EXPECT_EQ(AllocationsOf([] { const CString text('x', 1000); }), kTimes);
}

TEST_F(PoolAllocations, AreNotNeededToBorrowAndToReturn) {
    EXPECT_EQ(AllocationsOf([&] { server_.RevokeDatabase(server_.InvokeDatabase(nullptr)); }), 0);
    EXPECT_EQ(AllocationsOf([&] { server_.RevokeRecordset(server_.InvokeRecordset(nullptr)); }), 0);
    CTDataClient client;
    client.Invoke(&server_);
    EXPECT_EQ(AllocationsOf([&] {
                  client.BeginTrans();
                  client.EndTrans();
              }),
              0);
}

TEST_F(PoolAllocations, AreNotNeededToBorrowAllOfThemInAnyOrder) {
    CTDatabase* lent[kSessions] = {};
    EXPECT_EQ(AllocationsOf([&] {
                  for (auto& each : lent)
                      each = server_.InvokeDatabase(nullptr);
                  for (int i = 0; i < kSessions; ++i)
                      server_.RevokeDatabase(lent[(i * 3) % kSessions]);
              }),
              0);
    EXPECT_NE(lent[kSessions - 1], nullptr);
}

}  // namespace
}  // namespace tk::test
