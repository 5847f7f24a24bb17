#include <utility>

#include "afx_exception.h"
#include "afx_map.h"

IMPLEMENT_DYNAMIC(CMapStringToString, CObject)

struct CMapStringToString::Association {
    Association* next;
    UINT hash;  // as HashKey gives it; the bucket is its remainder
    CString key;
    CString value;
};

namespace {

// A walk that has not begun; no entry has this address.
const POSITION kBeforeStart = reinterpret_cast<POSITION>(static_cast<INT_PTR>(-1));

}  // namespace

CMapStringToString::CMapStringToString(int nBlockSize) {
    static_cast<void>(nBlockSize);
}

CMapStringToString::~CMapStringToString() {
    RemoveAll();
}

// Contract: hash * 33 + byte and nothing better; the order of a walk, and so of texts made from a map, follows from it.
UINT CMapStringToString::HashKey(LPCTSTR key) const noexcept {
    UINT hash = 0;
    for (; key != nullptr && *key != '\0'; ++key)
        hash = hash * 33 + static_cast<unsigned char>(*key);
    return hash;
}

CMapStringToString::Association* CMapStringToString::FindAssociation(LPCTSTR key, UINT hash) const noexcept {
    if (buckets_.empty()) return nullptr;
    for (Association* entry = buckets_[hash % tableSize_]; entry != nullptr; entry = entry->next) {
        if (entry->hash == hash && entry->key == key) return entry;
    }
    return nullptr;
}

BOOL CMapStringToString::Lookup(LPCTSTR key, CString& rValue) const {
    const Association* const entry = FindAssociation(key, HashKey(key));
    if (entry == nullptr) return FALSE;
    rValue = entry->value;
    return TRUE;
}

BOOL CMapStringToString::LookupKey(LPCTSTR key, LPCTSTR& rKey) const {
    const Association* const entry = FindAssociation(key, HashKey(key));
    if (entry == nullptr) return FALSE;
    rKey = entry->key;
    return TRUE;
}

CString& CMapStringToString::operator[](LPCTSTR key) {
    const UINT hash = HashKey(key);
    if (Association* const entry = FindAssociation(key, hash)) return entry->value;
    try {
        if (buckets_.empty()) buckets_.resize(tableSize_);
        Association*& head = buckets_[hash % tableSize_];
        // Contract: a new entry goes in front of its chain.
        head = new Association{head, hash, CString(key), CString()};
        ++count_;
        return head->value;
    } catch (const std::exception&) {
        AfxThrowMemoryException();
    }
}

BOOL CMapStringToString::RemoveKey(LPCTSTR key) {
    const UINT hash = HashKey(key);
    if (buckets_.empty()) return FALSE;
    for (Association** link = &buckets_[hash % tableSize_]; *link != nullptr; link = &(*link)->next) {
        if ((*link)->hash != hash || (*link)->key != key) continue;
        Association* const entry = *link;
        *link = entry->next;
        delete entry;
        if (--count_ == 0) RemoveAll();
        return TRUE;
    }
    return FALSE;
}

void CMapStringToString::RemoveAll() noexcept {
    for (Association* entry : buckets_) {
        while (entry != nullptr)
            delete std::exchange(entry, entry->next);
    }
    std::vector<Association*>().swap(buckets_);
    count_ = 0;
}

CMapStringToString::Association* CMapStringToString::FirstFrom(UINT bucket) const noexcept {
    for (; bucket < buckets_.size(); ++bucket) {
        if (buckets_[bucket] != nullptr) return buckets_[bucket];
    }
    return nullptr;
}

POSITION CMapStringToString::GetStartPosition() const noexcept {
    return count_ == 0 ? nullptr : kBeforeStart;
}

void CMapStringToString::GetNextAssoc(POSITION& rNextPosition, CString& rKey, CString& rValue) const {
    if (rNextPosition == nullptr) AfxThrowInvalidArgException();
    const Association* entry =
        rNextPosition == kBeforeStart ? FirstFrom(0) : reinterpret_cast<Association*>(rNextPosition);
    if (entry == nullptr) AfxThrowInvalidArgException();  // emptied since the walk began
    Association* const next = entry->next != nullptr ? entry->next : FirstFrom(entry->hash % tableSize_ + 1);
    rNextPosition = reinterpret_cast<POSITION>(next);
    rKey = entry->key;
    rValue = entry->value;
}

void CMapStringToString::InitHashTable(UINT hashSize, BOOL bAllocNow) {
    if (hashSize == 0) AfxThrowInvalidArgException();
    std::vector<Association*> fresh;
    try {
        if (bAllocNow || count_ > 0) fresh.resize(hashSize);
    } catch (const std::exception&) {
        AfxThrowMemoryException();
    }
    for (Association* entry : buckets_) {
        while (entry != nullptr) {
            Association* const moved = std::exchange(entry, entry->next);
            moved->next = std::exchange(fresh[moved->hash % hashSize], moved);
        }
    }
    buckets_ = std::move(fresh);
    tableSize_ = hashSize;
}
