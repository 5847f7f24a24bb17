#include <algorithm>
#include <mutex>
#include <thread>

#include "tkkernel/session_parts.h"

namespace tk::session {
namespace {

constexpr std::size_t kBlock = 10;

}  // namespace

std::size_t FreeList::At(std::size_t place) const noexcept {
    const std::size_t index = head_ + place;
    return index < ring_.size() ? index : index - ring_.size();
}

void Latch::Wait() noexcept {
    do
        std::this_thread::yield();
    while (shut_.exchange(true, std::memory_order_acquire));
}

void FreeList::Reserve(std::size_t count) {
    const std::lock_guard shut(latch_);
    Grow(count);
}

void FreeList::Grow(std::size_t count) {
    if (count <= ring_.size()) return;
    std::rotate(ring_.begin(), ring_.begin() + static_cast<std::ptrdiff_t>(head_), ring_.end());
    head_ = 0;
    ring_.resize(count);
}

void FreeList::Append(CTDataDriver* session) {
    const std::lock_guard shut(latch_);
    const std::size_t count = GetCount();
    if (count == ring_.size()) Grow(count + std::max(kBlock, count / 2));
    ring_[At(count)] = session;
    count_.store(count + 1, std::memory_order_relaxed);
}

CTDataDriver* FreeList::TakeHead() {
    const std::lock_guard shut(latch_);
    const std::size_t count = GetCount();
    if (count == 0) return nullptr;
    CTDataDriver* const session = ring_[head_];
    head_ = At(1);
    count_.store(count - 1, std::memory_order_relaxed);
    return session;
}

void FreeList::PutBack(CTDataDriver* session) {
    const std::lock_guard shut(latch_);
    const std::size_t count = GetCount();
    head_ = head_ != 0 ? head_ - 1 : ring_.size() - 1;
    ring_[head_] = session;
    count_.store(count + 1, std::memory_order_relaxed);
}

CTDataDriver* FreeList::GetHead() {
    const std::lock_guard shut(latch_);
    return GetCount() != 0 ? ring_[head_] : nullptr;
}

void FreeList::RemoveAll() {
    const std::lock_guard shut(latch_);
    head_ = 0;
    count_.store(0, std::memory_order_relaxed);
}

}  // namespace tk::session
