// afx_map.h - CMapStringToString, a hash map from text to text with a known order.
//
//   POSITION position = map.GetStartPosition();
//   while (position != nullptr) map.GetNextAssoc(position, key, value);
//
// Order: 17 buckets unless InitHashTable says otherwise; a key goes to bucket HashKey(key) % buckets, in front of the
// keys that are there already. The walk goes from bucket 0 up, through each chain from its head. Applications depend on
// it. An entry may be removed during a walk once GetNextAssoc has given it out. Threads: one caller at a time per
// object.
#pragma once

#include <vector>

#include "afx_object.h"
#include "afx_position.h"
#include "afxstr.h"

class AFX_API CMapStringToString : public CObject {
    DECLARE_DYNAMIC(CMapStringToString)
public:
    /// @param nBlockSize  accepted and not needed
    explicit CMapStringToString(int nBlockSize = 10);
    ~CMapStringToString() override;

    int GetCount() const noexcept { return count_; }
    int GetSize() const noexcept { return count_; }
    BOOL IsEmpty() const noexcept { return count_ == 0; }
    BOOL Lookup(LPCTSTR key, CString& rValue) const;
    /// Gives the map's own copy of the key, valid as long as the entry.
    BOOL LookupKey(LPCTSTR key, LPCTSTR& rKey) const;

    /// The value of a key, which is added with an empty one when it is new.
    CString& operator[](LPCTSTR key);
    void SetAt(LPCTSTR key, LPCTSTR newValue) { (*this)[key] = newValue; }
    BOOL RemoveKey(LPCTSTR key);
    void RemoveAll() noexcept;

    /// Null when the map is empty.
    POSITION GetStartPosition() const noexcept;
    /// Gives one entry and steps to the next; the position becomes null after the last. Null raises
    /// CInvalidArgException.
    void GetNextAssoc(POSITION& rNextPosition, CString& rKey, CString& rValue) const;

    UINT GetHashTableSize() const noexcept { return tableSize_; }
    /// Sets the number of buckets; entries that are there are filed anew, in their order. 0 raises
    /// CInvalidArgException.
    void InitHashTable(UINT hashSize, BOOL bAllocNow = TRUE);
    /// hash = hash * 33 + byte, from 0, in 32 bits.
    UINT HashKey(LPCTSTR key) const noexcept;

private:
    struct Association;

    Association* FindAssociation(LPCTSTR key, UINT hash) const noexcept;
    Association* FirstFrom(UINT bucket) const noexcept;

    std::vector<Association*> buckets_;  // empty until the first entry
    UINT tableSize_ = 17;
    int count_ = 0;
};
