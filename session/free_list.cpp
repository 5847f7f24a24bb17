#include <algorithm>

#include "tkkernel/session_parts.h"

namespace tk::session {
namespace {

constexpr std::size_t kBlock = 10;

}  // namespace

std::size_t FreeList::At(std::size_t place) const noexcept {
    const std::size_t index = head_ + place;
    return index < ring_.size() ? index : index - ring_.size();
}

void FreeList::Reserve(std::size_t count) {
    if (count <= ring_.size()) return;
    std::rotate(ring_.begin(), ring_.begin() + static_cast<std::ptrdiff_t>(head_), ring_.end());
    head_ = 0;
    ring_.resize(count);
}

void FreeList::Append(CTDataDriver* session) {
    const std::size_t count = GetCount();
    if (count == ring_.size()) Reserve(count + std::max(kBlock, count / 2));
    ring_[At(count)] = session;
    if (count == 0) headSession_.store(session, std::memory_order_relaxed);
    count_.store(count + 1, std::memory_order_relaxed);
}

CTDataDriver* FreeList::TakeHead() noexcept {
    const std::size_t count = GetCount();
    if (count == 0) return nullptr;
    CTDataDriver* const session = ring_[head_];
    head_ = At(1);
    headSession_.store(count > 1 ? ring_[head_] : nullptr, std::memory_order_relaxed);
    count_.store(count - 1, std::memory_order_relaxed);
    return session;
}

void FreeList::RemoveAll() noexcept {
    head_ = 0;
    headSession_.store(nullptr, std::memory_order_relaxed);
    count_.store(0, std::memory_order_relaxed);
}

}  // namespace tk::session
