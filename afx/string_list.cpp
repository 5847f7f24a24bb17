#include <new>
#include <utility>

#include "afx_exception.h"
#include "afx_string_list.h"

IMPLEMENT_DYNAMIC(CStringList, CObject)

struct CStringList::Node {
    Node* previous;
    Node* next;
    CString text;
};

CStringList::CStringList(int nBlockSize) {
    static_cast<void>(nBlockSize);
}

CStringList::~CStringList() {
    RemoveAll();
}

CStringList::Node* CStringList::Checked(POSITION position) {
    if (position == nullptr) AfxThrowInvalidArgException();
    return reinterpret_cast<Node*>(position);
}

POSITION CStringList::Link(CString&& text, Node* previous, Node* next) {
    Node* const node = new (std::nothrow) Node{previous, next, std::move(text)};
    if (node == nullptr) AfxThrowMemoryException();
    (previous == nullptr ? head_ : previous->next) = node;
    (next == nullptr ? tail_ : next->previous) = node;
    ++count_;
    return reinterpret_cast<POSITION>(node);
}

void CStringList::Unlink(Node* node) noexcept {
    (node->previous == nullptr ? head_ : node->previous->next) = node->next;
    (node->next == nullptr ? tail_ : node->next->previous) = node->previous;
    --count_;
    delete node;
}

CString& CStringList::GetHead() {
    return GetAt(GetHeadPosition());
}
const CString& CStringList::GetHead() const {
    return GetAt(GetHeadPosition());
}
CString& CStringList::GetTail() {
    return GetAt(GetTailPosition());
}
const CString& CStringList::GetTail() const {
    return GetAt(GetTailPosition());
}

CString CStringList::RemoveHead() {
    CString text(std::move(GetHead()));
    Unlink(head_);
    return text;
}

CString CStringList::RemoveTail() {
    CString text(std::move(GetTail()));
    Unlink(tail_);
    return text;
}

POSITION CStringList::AddHead(LPCTSTR newElement) {
    return Link(CString(newElement), nullptr, head_);
}
POSITION CStringList::AddTail(LPCTSTR newElement) {
    return Link(CString(newElement), tail_, nullptr);
}
POSITION CStringList::AddHead(const CString& newElement) {
    return Link(CString(newElement), nullptr, head_);
}
POSITION CStringList::AddTail(const CString& newElement) {
    return Link(CString(newElement), tail_, nullptr);
}

void CStringList::AddHead(const CStringList* pNewList) {
    if (pNewList == nullptr) AfxThrowInvalidArgException();
    const Node* node = pNewList->tail_;
    for (int left = pNewList->count_; left > 0; --left, node = node->previous)
        AddHead(node->text);
}

void CStringList::AddTail(const CStringList* pNewList) {
    if (pNewList == nullptr) AfxThrowInvalidArgException();
    const Node* node = pNewList->head_;
    for (int left = pNewList->count_; left > 0; --left, node = node->next)
        AddTail(node->text);
}

void CStringList::RemoveAll() noexcept {
    while (head_ != nullptr)
        Unlink(head_);  // moves head_ on NOLINT(clang-analyzer-cplusplus.NewDelete)
}

POSITION CStringList::GetHeadPosition() const noexcept {
    return reinterpret_cast<POSITION>(head_);
}
POSITION CStringList::GetTailPosition() const noexcept {
    return reinterpret_cast<POSITION>(tail_);
}

const CString& CStringList::GetNext(POSITION& rPosition) const {
    const Node* const node = Checked(rPosition);
    rPosition = reinterpret_cast<POSITION>(node->next);
    return node->text;
}

CString& CStringList::GetNext(POSITION& rPosition) {
    Node* const node = Checked(rPosition);
    rPosition = reinterpret_cast<POSITION>(node->next);
    return node->text;
}

const CString& CStringList::GetPrev(POSITION& rPosition) const {
    const Node* const node = Checked(rPosition);
    rPosition = reinterpret_cast<POSITION>(node->previous);
    return node->text;
}

CString& CStringList::GetPrev(POSITION& rPosition) {
    Node* const node = Checked(rPosition);
    rPosition = reinterpret_cast<POSITION>(node->previous);
    return node->text;
}

CString& CStringList::GetAt(POSITION position) {
    return Checked(position)->text;
}
const CString& CStringList::GetAt(POSITION position) const {
    return Checked(position)->text;
}
void CStringList::SetAt(POSITION position, LPCTSTR newElement) {
    Checked(position)->text = newElement;
}
void CStringList::RemoveAt(POSITION position) {
    Unlink(Checked(position));
}

POSITION CStringList::InsertBefore(POSITION position, LPCTSTR newElement) {
    if (position == nullptr) return AddHead(newElement);
    Node* const node = Checked(position);
    return Link(CString(newElement), node->previous, node);
}

POSITION CStringList::InsertAfter(POSITION position, LPCTSTR newElement) {
    if (position == nullptr) return AddTail(newElement);
    Node* const node = Checked(position);
    return Link(CString(newElement), node, node->next);
}

POSITION CStringList::Find(LPCTSTR searchValue, POSITION startAfter) const {
    Node* node = startAfter == nullptr ? head_ : Checked(startAfter)->next;
    while (node != nullptr && node->text != searchValue)
        node = node->next;
    return reinterpret_cast<POSITION>(node);
}

POSITION CStringList::FindIndex(int nIndex) const noexcept {
    if (nIndex < 0 || nIndex >= count_) return nullptr;
    Node* node = head_;
    while (nIndex-- > 0)
        node = node->next;
    return reinterpret_cast<POSITION>(node);
}
