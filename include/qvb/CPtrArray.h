// A growable array of untyped pointers; the caller owns what they point to. Index rules
// as for CArray (see CArray.h).
#pragma once

#include <vector>

#include "qvb/CObject.h"
#include "qvb/QvbVersion.h"
#include "qvb/WinTypes.h"

class QVB_API CPtrArray : public CObject {
    DECLARE_DYNAMIC(CPtrArray)

public:
    CPtrArray();
    CPtrArray(const CPtrArray& other);
    CPtrArray(CPtrArray&& other) noexcept;
    CPtrArray& operator=(const CPtrArray& other);
    CPtrArray& operator=(CPtrArray&& other) noexcept;
    ~CPtrArray() override;

    int GetSize() const { return static_cast<int>(m_data.size()); }
    int GetCount() const { return GetSize(); }
    int GetUpperBound() const { return GetSize() - 1; }
    BOOL IsEmpty() const { return m_data.empty() ? TRUE : FALSE; }

    void SetSize(int nNewSize, int nGrowBy = -1);
    void RemoveAll();
    void FreeExtra();

    void* GetAt(int nIndex) const;
    void SetAt(int nIndex, void* newElement);
    void*& ElementAt(int nIndex);
    void* const& ElementAt(int nIndex) const;
    void*& operator[](int nIndex) { return ElementAt(nIndex); }
    void* operator[](int nIndex) const { return GetAt(nIndex); }

    // Null when empty.
    void** GetData() { return m_data.empty() ? nullptr : m_data.data(); }
    void* const* GetData() const { return m_data.empty() ? nullptr : m_data.data(); }

    void SetAtGrow(int nIndex, void* newElement);
    int Add(void* newElement);
    // Returns the index of the first appended element.
    int Append(const CPtrArray& src);
    void Copy(const CPtrArray& src);

    void InsertAt(int nIndex, void* newElement, int nCount = 1);
    void InsertAt(int nStartIndex, const CPtrArray* pNewArray);
    void RemoveAt(int nIndex, int nCount = 1);

private:
    std::vector<void*> m_data;
};
