// afx_string_list.h - CStringList, a doubly linked list of texts.
//
//   for (POSITION position = list.GetHeadPosition(); position != nullptr;) Use(list.GetNext(position));
//
// A position stays valid until its own element is removed. A null position, or an element asked of an empty list,
// raises CInvalidArgException.
// Threads: one caller at a time per object.
#pragma once

#include "afx_object.h"
#include "afx_position.h"
#include "afxstr.h"

class AFX_API CStringList : public CObject {
    DECLARE_DYNAMIC(CStringList)
public:
    /// @param nBlockSize  accepted and not needed
    explicit CStringList(int nBlockSize = 10);
    ~CStringList() override;

    int GetCount() const noexcept { return count_; }
    int GetSize() const noexcept { return count_; }
    BOOL IsEmpty() const noexcept { return count_ == 0; }

    CString& GetHead();
    const CString& GetHead() const;
    CString& GetTail();
    const CString& GetTail() const;
    CString RemoveHead();
    CString RemoveTail();

    POSITION AddHead(LPCTSTR newElement);
    POSITION AddTail(LPCTSTR newElement);
    POSITION AddHead(const CString& newElement);
    POSITION AddTail(const CString& newElement);
    /// Adds every element of another list, keeping its order; the list itself is allowed.
    void AddHead(const CStringList* pNewList);
    void AddTail(const CStringList* pNewList);
    void RemoveAll() noexcept;

    POSITION GetHeadPosition() const noexcept;
    POSITION GetTailPosition() const noexcept;
    CString& GetNext(POSITION& rPosition);
    const CString& GetNext(POSITION& rPosition) const;
    CString& GetPrev(POSITION& rPosition);
    const CString& GetPrev(POSITION& rPosition) const;

    CString& GetAt(POSITION position);
    const CString& GetAt(POSITION position) const;
    void SetAt(POSITION position, LPCTSTR newElement);
    void RemoveAt(POSITION position);
    /// A null position inserts at the head, or at the tail.
    POSITION InsertBefore(POSITION position, LPCTSTR newElement);
    POSITION InsertAfter(POSITION position, LPCTSTR newElement);

    /// @param startAfter  null: from the head
    POSITION Find(LPCTSTR searchValue, POSITION startAfter = nullptr) const;
    /// Counts from the head, from 0; null when there is no such element.
    POSITION FindIndex(int nIndex) const noexcept;

private:
    struct Node;

    static Node* Checked(POSITION position);
    POSITION Link(CString&& text, Node* previous, Node* next);
    void Unlink(Node* node) noexcept;

    Node* head_ = nullptr;
    Node* tail_ = nullptr;
    int count_ = 0;
};
