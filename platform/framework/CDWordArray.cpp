#include "qvb/CDWordArray.h"

#include "qvb/CArray.h"

IMPLEMENT_DYNAMIC(CDWordArray, CObject)

CDWordArray::CDWordArray() = default;
CDWordArray::CDWordArray(const CDWordArray& other) = default;
CDWordArray::CDWordArray(CDWordArray&& other) noexcept = default;
CDWordArray& CDWordArray::operator=(const CDWordArray& other) = default;
CDWordArray& CDWordArray::operator=(CDWordArray&& other) noexcept = default;
CDWordArray::~CDWordArray() = default;

void CDWordArray::SetSize(int nNewSize, int /*nGrowBy*/) {
    qvb_array::SetSize(m_data, nNewSize);
}

void CDWordArray::RemoveAll() {
    qvb_array::SetSize(m_data, 0);
}

void CDWordArray::FreeExtra() {
    m_data.shrink_to_fit();
}

DWORD CDWordArray::GetAt(int nIndex) const {
    return m_data[qvb_array::Checked(m_data, nIndex, "CDWordArray::GetAt")];
}

void CDWordArray::SetAt(int nIndex, DWORD newElement) {
    m_data[qvb_array::Checked(m_data, nIndex, "CDWordArray::SetAt")] = newElement;
}

DWORD& CDWordArray::ElementAt(int nIndex) {
    return m_data[qvb_array::Checked(m_data, nIndex, "CDWordArray::ElementAt")];
}

const DWORD& CDWordArray::ElementAt(int nIndex) const {
    return m_data[qvb_array::Checked(m_data, nIndex, "CDWordArray::ElementAt")];
}

void CDWordArray::SetAtGrow(int nIndex, DWORD newElement) {
    qvb_array::SetAtGrow(m_data, nIndex, newElement, "CDWordArray::SetAtGrow");
}

int CDWordArray::Add(DWORD newElement) {
    return qvb_array::Add(m_data, newElement);
}

int CDWordArray::Append(const CDWordArray& src) {
    return qvb_array::Append(m_data, src.m_data);
}

void CDWordArray::Copy(const CDWordArray& src) {
    if (&src != this) m_data = src.m_data;
}

void CDWordArray::InsertAt(int nIndex, DWORD newElement, int nCount) {
    qvb_array::InsertAt(m_data, nIndex, newElement, nCount, "CDWordArray::InsertAt");
}

void CDWordArray::InsertAt(int nStartIndex, const CDWordArray* pNewArray) {
    if (pNewArray != nullptr) {
        qvb_array::InsertAt(m_data, nStartIndex, pNewArray->m_data, "CDWordArray::InsertAt");
    }
}

void CDWordArray::RemoveAt(int nIndex, int nCount) {
    qvb_array::RemoveAt(m_data, nIndex, nCount, "CDWordArray::RemoveAt");
}
