#include "qvb/CPtrArray.h"

#include "qvb/CArray.h"

IMPLEMENT_DYNAMIC(CPtrArray, CObject)

CPtrArray::CPtrArray() = default;
CPtrArray::CPtrArray(const CPtrArray& other) = default;
CPtrArray::CPtrArray(CPtrArray&& other) noexcept = default;
CPtrArray& CPtrArray::operator=(const CPtrArray& other) = default;
CPtrArray& CPtrArray::operator=(CPtrArray&& other) noexcept = default;
CPtrArray::~CPtrArray() = default;

void CPtrArray::SetSize(int nNewSize, int /*nGrowBy*/) {
    qvb_array::SetSize(m_data, nNewSize);
}

void CPtrArray::RemoveAll() {
    qvb_array::SetSize(m_data, 0);
}

void CPtrArray::FreeExtra() {
    m_data.shrink_to_fit();
}

void* CPtrArray::GetAt(int nIndex) const {
    return m_data[qvb_array::Checked(m_data, nIndex, "CPtrArray::GetAt")];
}

void CPtrArray::SetAt(int nIndex, void* newElement) {
    m_data[qvb_array::Checked(m_data, nIndex, "CPtrArray::SetAt")] = newElement;
}

void*& CPtrArray::ElementAt(int nIndex) {
    return m_data[qvb_array::Checked(m_data, nIndex, "CPtrArray::ElementAt")];
}

void* const& CPtrArray::ElementAt(int nIndex) const {
    return m_data[qvb_array::Checked(m_data, nIndex, "CPtrArray::ElementAt")];
}

void CPtrArray::SetAtGrow(int nIndex, void* newElement) {
    qvb_array::SetAtGrow(m_data, nIndex, newElement, "CPtrArray::SetAtGrow");
}

int CPtrArray::Add(void* newElement) {
    return qvb_array::Add(m_data, newElement);
}

int CPtrArray::Append(const CPtrArray& src) {
    return qvb_array::Append(m_data, src.m_data);
}

void CPtrArray::Copy(const CPtrArray& src) {
    if (&src != this) m_data = src.m_data;
}

void CPtrArray::InsertAt(int nIndex, void* newElement, int nCount) {
    qvb_array::InsertAt(m_data, nIndex, newElement, nCount, "CPtrArray::InsertAt");
}

void CPtrArray::InsertAt(int nStartIndex, const CPtrArray* pNewArray) {
    if (pNewArray != nullptr) {
        qvb_array::InsertAt(m_data, nStartIndex, pNewArray->m_data, "CPtrArray::InsertAt");
    }
}

void CPtrArray::RemoveAt(int nIndex, int nCount) {
    qvb_array::RemoveAt(m_data, nIndex, nCount, "CPtrArray::RemoveAt");
}
