// A growable array of any copyable, default-constructible element type, with the
// framework's interface. Elements are real objects: they are constructed, copied and
// destroyed properly, so a struct holding CStrings is fine.
//
// Index rules shared by all the framework arrays:
// - GetAt/SetAt/ElementAt/operator[] need an index in [0, GetSize()); anything else is a
//   caller bug and stops the process rather than touching foreign memory.
// - SetSize, SetAtGrow and InsertAt past the end grow the array; new elements are
//   value-initialised (zero for numbers and pointers).
// - RemoveAt needs its first index in range; a count reaching past the end is cut short.
// - nGrowBy is accepted for compatibility; storage grows geometrically regardless.
// Running out of memory, including sizes past INT_MAX, throws std::bad_alloc.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "qvb/CObject.h"

// The algorithms behind CArray, also used by CDWordArray and CPtrArray.
namespace qvb_array {

[[noreturn]] inline void IndexFault(const char* what, int index, std::size_t size) {
    std::fprintf(stderr, "%s: index %d out of range (size %zu)\n", what, index, size);
    std::abort();
}

template <class T>
std::size_t Checked(const std::vector<T>& v, int index, const char* what) {
    if (index < 0 || static_cast<std::size_t>(index) >= v.size()) IndexFault(what, index, v.size());
    return static_cast<std::size_t>(index);
}

// Sizes are ints in the interface, so an array never outgrows one.
inline std::size_t CheckedSize(long long size) {
    if (size > INT_MAX) throw std::bad_alloc();
    return static_cast<std::size_t>(size);
}

template <class T>
void SetSize(std::vector<T>& v, int newSize) {
    if (newSize <= 0) {
        std::vector<T>().swap(v);  // size 0 releases the storage
    } else {
        v.resize(static_cast<std::size_t>(newSize));
    }
}

template <class T>
int Add(std::vector<T>& v, const T& element) {
    CheckedSize(static_cast<long long>(v.size()) + 1);
    v.push_back(element);  // push_back copes with element referring into v
    return static_cast<int>(v.size()) - 1;
}

template <class T>
int Append(std::vector<T>& v, const std::vector<T>& src) {
    const int oldSize = static_cast<int>(v.size());
    CheckedSize(static_cast<long long>(v.size()) + static_cast<long long>(src.size()));
    if (&src == &v) {
        const std::vector<T> copy(src);
        v.insert(v.end(), copy.begin(), copy.end());
    } else {
        v.insert(v.end(), src.begin(), src.end());
    }
    return oldSize;
}

template <class T>
void SetAtGrow(std::vector<T>& v, int index, const T& element, const char* what) {
    if (index < 0) IndexFault(what, index, v.size());
    if (static_cast<std::size_t>(index) >= v.size()) {
        T copy(element);  // element may refer into v, which is about to move
        v.resize(CheckedSize(static_cast<long long>(index) + 1));
        v[static_cast<std::size_t>(index)] = std::move(copy);
    } else {
        v[static_cast<std::size_t>(index)] = element;
    }
}

template <class T>
void InsertAt(std::vector<T>& v, int index, const T& element, int count, const char* what) {
    if (index < 0) IndexFault(what, index, v.size());
    if (count <= 0) return;
    T copy(element);
    const long long start = std::max<long long>(index, static_cast<long long>(v.size()));
    CheckedSize(start + count);
    if (static_cast<std::size_t>(index) > v.size()) v.resize(static_cast<std::size_t>(index));
    v.insert(v.begin() + index, static_cast<std::size_t>(count), copy);
}

template <class T>
void InsertAt(std::vector<T>& v, int index, const std::vector<T>& src, const char* what) {
    if (index < 0) IndexFault(what, index, v.size());
    if (src.empty()) return;
    if (&src == &v) {
        const std::vector<T> copy(src);
        InsertAt(v, index, copy, what);
        return;
    }
    const long long start = std::max<long long>(index, static_cast<long long>(v.size()));
    CheckedSize(start + static_cast<long long>(src.size()));
    if (static_cast<std::size_t>(index) > v.size()) v.resize(static_cast<std::size_t>(index));
    v.insert(v.begin() + index, src.begin(), src.end());
}

template <class T>
void RemoveAt(std::vector<T>& v, int index, int count, const char* what) {
    const bool inRange =
        index >= 0 && (static_cast<std::size_t>(index) < v.size() ||
                       (static_cast<std::size_t>(index) == v.size() && count <= 0));
    if (!inRange) IndexFault(what, index, v.size());
    if (count <= 0) return;
    const std::size_t n = std::min(static_cast<std::size_t>(count), v.size() - index);
    v.erase(v.begin() + index, v.begin() + index + static_cast<std::ptrdiff_t>(n));
}

}  // namespace qvb_array

template <class TYPE, class ARG_TYPE = const TYPE&>
class CArray : public CObject {
    static_assert(!std::is_same<TYPE, bool>::value, "CArray<bool> is not supported; use BOOL");

public:
    CArray() = default;
    CArray(const CArray&) = default;
    CArray(CArray&&) noexcept = default;
    CArray& operator=(const CArray&) = default;
    CArray& operator=(CArray&&) noexcept = default;
    ~CArray() override = default;

    int GetSize() const { return static_cast<int>(m_data.size()); }
    int GetCount() const { return GetSize(); }
    int GetUpperBound() const { return GetSize() - 1; }
    BOOL IsEmpty() const { return m_data.empty() ? TRUE : FALSE; }

    void SetSize(int nNewSize, int nGrowBy = -1) {
        (void)nGrowBy;
        qvb_array::SetSize(m_data, nNewSize);
    }
    void RemoveAll() { qvb_array::SetSize(m_data, 0); }
    void FreeExtra() { m_data.shrink_to_fit(); }

    const TYPE& GetAt(int nIndex) const {
        return m_data[qvb_array::Checked(m_data, nIndex, "CArray::GetAt")];
    }
    void SetAt(int nIndex, ARG_TYPE newElement) {
        m_data[qvb_array::Checked(m_data, nIndex, "CArray::SetAt")] = newElement;
    }
    TYPE& ElementAt(int nIndex) {
        return m_data[qvb_array::Checked(m_data, nIndex, "CArray::ElementAt")];
    }
    const TYPE& ElementAt(int nIndex) const {
        return m_data[qvb_array::Checked(m_data, nIndex, "CArray::ElementAt")];
    }
    TYPE& operator[](int nIndex) { return ElementAt(nIndex); }
    const TYPE& operator[](int nIndex) const { return GetAt(nIndex); }

    // Null when empty.
    TYPE* GetData() { return m_data.empty() ? nullptr : m_data.data(); }
    const TYPE* GetData() const { return m_data.empty() ? nullptr : m_data.data(); }

    void SetAtGrow(int nIndex, ARG_TYPE newElement) {
        qvb_array::SetAtGrow<TYPE>(m_data, nIndex, newElement, "CArray::SetAtGrow");
    }
    int Add(ARG_TYPE newElement) { return qvb_array::Add<TYPE>(m_data, newElement); }
    // Returns the index of the first appended element.
    int Append(const CArray& src) { return qvb_array::Append(m_data, src.m_data); }
    void Copy(const CArray& src) {
        if (&src != this) m_data = src.m_data;
    }

    void InsertAt(int nIndex, ARG_TYPE newElement, int nCount = 1) {
        qvb_array::InsertAt<TYPE>(m_data, nIndex, newElement, nCount, "CArray::InsertAt");
    }
    void InsertAt(int nStartIndex, const CArray* pNewArray) {
        if (pNewArray != nullptr)
            qvb_array::InsertAt(m_data, nStartIndex, pNewArray->m_data, "CArray::InsertAt");
    }
    void RemoveAt(int nIndex, int nCount = 1) {
        qvb_array::RemoveAt(m_data, nIndex, nCount, "CArray::RemoveAt");
    }

private:
    std::vector<TYPE> m_data;
};
