// A growable array of DWORDs. Index rules as for CArray (see CArray.h).
#pragma once

#include <vector>

#include "qvb/CObject.h"
#include "qvb/QvbVersion.h"
#include "qvb/WinTypes.h"

class QVB_API CDWordArray : public CObject {
    DECLARE_DYNAMIC(CDWordArray)

public:
    CDWordArray();
    CDWordArray(const CDWordArray& other);
    CDWordArray(CDWordArray&& other) noexcept;
    CDWordArray& operator=(const CDWordArray& other);
    CDWordArray& operator=(CDWordArray&& other) noexcept;
    ~CDWordArray() override;

    int GetSize() const { return static_cast<int>(m_data.size()); }
    int GetCount() const { return GetSize(); }
    int GetUpperBound() const { return GetSize() - 1; }
    BOOL IsEmpty() const { return m_data.empty() ? TRUE : FALSE; }

    void SetSize(int nNewSize, int nGrowBy = -1);
    void RemoveAll();
    void FreeExtra();

    DWORD GetAt(int nIndex) const;
    void SetAt(int nIndex, DWORD newElement);
    DWORD& ElementAt(int nIndex);
    const DWORD& ElementAt(int nIndex) const;
    DWORD& operator[](int nIndex) { return ElementAt(nIndex); }
    DWORD operator[](int nIndex) const { return GetAt(nIndex); }

    // Null when empty.
    DWORD* GetData() { return m_data.empty() ? nullptr : m_data.data(); }
    const DWORD* GetData() const { return m_data.empty() ? nullptr : m_data.data(); }

    void SetAtGrow(int nIndex, DWORD newElement);
    int Add(DWORD newElement);
    // Returns the index of the first appended element.
    int Append(const CDWordArray& src);
    void Copy(const CDWordArray& src);

    void InsertAt(int nIndex, DWORD newElement, int nCount = 1);
    void InsertAt(int nStartIndex, const CDWordArray* pNewArray);
    void RemoveAt(int nIndex, int nCount = 1);

private:
    std::vector<DWORD> m_data;
};
