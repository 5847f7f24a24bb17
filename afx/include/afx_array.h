// afx_array.h - CStringArray, CDWordArray, CByteArray and the template behind them.
//
//   CDWordArray ids;
//   ids.SetAtGrow(3, 7);  // 0, 0, 0, 7
//
// An index outside the array raises CInvalidArgException; so does a negative size.
// Threads: one caller at a time per object.
#pragma once

#include <cstddef>
#include <exception>
#include <utility>
#include <vector>

#include "afx_exception.h"
#include "afx_object.h"
#include "afxstr.h"

/// A growable array. TYPE is what is kept, ARG_TYPE how an element is passed.
template <class TYPE, class ARG_TYPE = const TYPE&>
class CArray : public CObject {
public:
    int GetSize() const noexcept { return static_cast<int>(elements_.size()); }
    int GetCount() const noexcept { return GetSize(); }
    BOOL IsEmpty() const noexcept { return elements_.empty(); }
    int GetUpperBound() const noexcept { return GetSize() - 1; }
    /// @param nGrowBy  accepted and not needed: room grows in proportion to the size
    void SetSize(int nNewSize, int nGrowBy = -1) {
        static_cast<void>(nGrowBy);
        if (nNewSize < 0) AfxThrowInvalidArgException();
        Guarded([&] { elements_.resize(static_cast<std::size_t>(nNewSize)); });
    }
    void FreeExtra() {
        Guarded([&] { elements_.shrink_to_fit(); });
    }
    void RemoveAll() noexcept { std::vector<TYPE>().swap(elements_); }

    const TYPE& GetAt(int nIndex) const { return elements_[Checked(nIndex)]; }
    TYPE& ElementAt(int nIndex) { return elements_[Checked(nIndex)]; }
    const TYPE& ElementAt(int nIndex) const { return elements_[Checked(nIndex)]; }
    const TYPE& operator[](int nIndex) const { return elements_[Checked(nIndex)]; }
    TYPE& operator[](int nIndex) { return elements_[Checked(nIndex)]; }
    /// The elements in a row; null when there are none.
    const TYPE* GetData() const noexcept { return elements_.empty() ? nullptr : elements_.data(); }
    TYPE* GetData() noexcept { return elements_.empty() ? nullptr : elements_.data(); }

    void SetAt(int nIndex, ARG_TYPE newElement) { elements_[Checked(nIndex)] = newElement; }
    void SetAtGrow(int nIndex, ARG_TYPE newElement) {
        if (nIndex < 0) AfxThrowInvalidArgException();
        TYPE element(newElement);  // may lie in this array, which is about to move
        if (nIndex >= GetSize()) SetSize(nIndex + 1);
        elements_[static_cast<std::size_t>(nIndex)] = std::move(element);
    }
    /// @return the index of the new element
    int Add(ARG_TYPE newElement) {
        Guarded([&] { elements_.emplace_back(newElement); });
        return GetSize() - 1;
    }
    /// @return the index of the first element of the appended array
    int Append(const CArray& source) {
        const int first = GetSize();
        const std::size_t count = source.elements_.size();  // of an array appended to itself too
        Guarded([&] {
            elements_.reserve(elements_.size() + count);
            for (std::size_t i = 0; i < count; ++i)
                elements_.push_back(source.elements_[i]);
        });
        return first;
    }
    void Copy(const CArray& source) {
        Guarded([&] { elements_ = source.elements_; });
    }

    /// Makes room before the element at an index; beyond the end the array grows up to it.
    void InsertAt(int nIndex, ARG_TYPE newElement, int nCount = 1) {
        if (nIndex < 0 || nCount < 0) AfxThrowInvalidArgException();
        const TYPE element(newElement);
        if (nIndex > GetSize()) SetSize(nIndex);
        Guarded([&] { elements_.insert(elements_.begin() + nIndex, static_cast<std::size_t>(nCount), element); });
    }
    void InsertAt(int nStartIndex, const CArray* pNewArray) {
        if (nStartIndex < 0 || pNewArray == nullptr) AfxThrowInvalidArgException();
        const std::vector<TYPE> added(pNewArray->elements_);
        if (nStartIndex > GetSize()) SetSize(nStartIndex);
        Guarded([&] { elements_.insert(elements_.begin() + nStartIndex, added.begin(), added.end()); });
    }
    void RemoveAt(int nIndex, int nCount = 1) {
        if (nIndex < 0 || nCount < 0 || nCount > GetSize() - nIndex) AfxThrowInvalidArgException();
        elements_.erase(elements_.begin() + nIndex, elements_.begin() + nIndex + nCount);
    }

private:
    std::size_t Checked(int index) const {
        if (index < 0 || static_cast<std::size_t>(index) >= elements_.size()) AfxThrowInvalidArgException();
        return static_cast<std::size_t>(index);
    }
    template <class Work>
    static void Guarded(Work&& work) {
        try {
            work();
        } catch (const std::exception&) {  // bad_alloc, or a length beyond what a vector can hold
            AfxThrowMemoryException();
        }
    }

    std::vector<TYPE> elements_;
};

class AFX_API CStringArray : public CArray<CString, const CString&> {
    DECLARE_DYNAMIC(CStringArray)
public:
    CStringArray() = default;
};

class AFX_API CDWordArray : public CArray<DWORD, DWORD> {
    DECLARE_DYNAMIC(CDWordArray)
public:
    CDWordArray() = default;
};

class AFX_API CByteArray : public CArray<BYTE, BYTE> {
    DECLARE_DYNAMIC(CByteArray)
public:
    CByteArray() = default;
};
