#include <algorithm>

#include "session/held_lock.h"
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
    const Entered entered(section_);
    if (count <= ring_.size()) return;
    std::rotate(ring_.begin(), ring_.begin() + static_cast<std::ptrdiff_t>(head_), ring_.end());
    head_ = 0;
    ring_.resize(count);
}

void FreeList::Append(CTDataDriver* session) {
    const Entered entered(section_);
    const std::size_t count = GetCount();
    if (count == ring_.size()) Reserve(count + std::max(kBlock, count / 2));
    ring_[At(count)] = session;
    count_.store(count + 1, std::memory_order_relaxed);
}

CTDataDriver* FreeList::TakeHead() {
    const Entered entered(section_);
    const std::size_t count = GetCount();
    if (count == 0) return nullptr;
    CTDataDriver* const session = ring_[head_];
    head_ = At(1);
    count_.store(count - 1, std::memory_order_relaxed);
    return session;
}

void FreeList::PutBack(CTDataDriver* session) {
    const Entered entered(section_);
    const std::size_t count = GetCount();
    head_ = head_ != 0 ? head_ - 1 : ring_.size() - 1;
    ring_[head_] = session;
    count_.store(count + 1, std::memory_order_relaxed);
}

CTDataDriver* FreeList::GetHead() {
    const Entered entered(section_);
    return GetCount() != 0 ? ring_[head_] : nullptr;
}

void FreeList::RemoveAll() {
    const Entered entered(section_);
    head_ = 0;
    count_.store(0, std::memory_order_relaxed);
}

}  // namespace tk::session
