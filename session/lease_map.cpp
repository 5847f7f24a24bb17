#include <algorithm>
#include <utility>

#include "tkkernel/session_parts.h"

namespace tk::session {
namespace {

constexpr std::size_t kBlock = 10;

}  // namespace

void LeaseMap::Reserve(std::size_t count) {
    if (count <= allocated_) return;
    const std::size_t more = std::max(kBlock, count - allocated_);
    blocks_.push_back(std::make_unique<Entry[]>(more));
    for (std::size_t i = more; i > 0; --i) {
        Entry& entry = blocks_.back()[i - 1];
        entry.next = std::exchange(unused_, &entry);
    }
    allocated_ += more;
}

const LeaseMap::Entry* LeaseMap::Find(CTDataDriver* session) const noexcept {
    const Entry* entry = buckets_[BucketOf(session)];
    while (entry != nullptr && entry->session != session)
        entry = entry->next;
    return entry;
}

bool LeaseMap::Set(CTDataDriver* session, const Lease& lease) {
    Entry*& chain = buckets_[BucketOf(session)];
    for (Entry* entry = chain; entry != nullptr; entry = entry->next) {
        if (entry->session == session) {
            entry->lease = lease;
            return true;
        }
    }
    if (unused_ == nullptr) Reserve(allocated_ + kBlock);
    Entry* const entry = std::exchange(unused_, unused_->next);
    *entry = {session, lease, chain};
    chain = entry;
    ++count_;
    return false;
}

bool LeaseMap::Remove(CTDataDriver* session) noexcept {
    for (Entry** link = &buckets_[BucketOf(session)]; *link != nullptr; link = &(*link)->next) {
        Entry* const entry = *link;
        if (entry->session != session) continue;
        *link = entry->next;
        entry->next = std::exchange(unused_, entry);
        --count_;
        return true;
    }
    return false;
}

void LeaseMap::RemoveAll() noexcept {
    for (Entry*& chain : buckets_) {
        while (chain != nullptr) {
            Entry* const entry = std::exchange(chain, chain->next);
            entry->next = std::exchange(unused_, entry);
        }
    }
    count_ = 0;
}

}  // namespace tk::session
