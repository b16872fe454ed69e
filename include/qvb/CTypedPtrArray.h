// A type-safe face over a pointer array: CTypedPtrArray<CPtrArray, HISTORYLOG*> stores
// HISTORYLOG* where the base stores void*. The caller owns what the pointers point to.
#pragma once

template <class BASE_CLASS, class TYPE>
class CTypedPtrArray : public BASE_CLASS {
public:
    TYPE GetAt(int nIndex) const { return static_cast<TYPE>(BASE_CLASS::GetAt(nIndex)); }
    // The element is stored as void*; every object pointer has its representation.
    TYPE& ElementAt(int nIndex) { return reinterpret_cast<TYPE&>(BASE_CLASS::ElementAt(nIndex)); }
    void SetAt(int nIndex, TYPE ptr) { BASE_CLASS::SetAt(nIndex, ptr); }
    void SetAtGrow(int nIndex, TYPE newElement) { BASE_CLASS::SetAtGrow(nIndex, newElement); }
    int Add(TYPE newElement) { return BASE_CLASS::Add(newElement); }
    int Append(const CTypedPtrArray& src) { return BASE_CLASS::Append(src); }
    void Copy(const CTypedPtrArray& src) { BASE_CLASS::Copy(src); }
    void InsertAt(int nIndex, TYPE newElement, int nCount = 1) {
        BASE_CLASS::InsertAt(nIndex, newElement, nCount);
    }
    void InsertAt(int nStartIndex, const CTypedPtrArray* pNewArray) {
        BASE_CLASS::InsertAt(nStartIndex, pNewArray);
    }
    TYPE operator[](int nIndex) const { return GetAt(nIndex); }
    TYPE& operator[](int nIndex) { return ElementAt(nIndex); }
};
