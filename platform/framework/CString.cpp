#include "qvb/CString.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr char kWhitespace[] = " \t\n\r\v\f";
constexpr std::size_t kWhitespaceLength = sizeof(kWhitespace) - 1;

[[noreturn]] void indexFault(const char* what, int index, std::size_t length) {
    std::fprintf(stderr, "CString::%s: index %d out of range (length %zu)\n", what, index, length);
    std::abort();
}

int sign(int v) {
    return (v > 0) - (v < 0);
}

char foldLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

char foldUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}

bool inSet(char c, const char* set, std::size_t setLength) {
    return std::memchr(set, static_cast<unsigned char>(c), setLength) != nullptr;
}

// Appends the formatted text to *out; on an encoding error nothing is appended.
void formatInto(std::string* out, const char* format, va_list args) {
    if (format == nullptr) return;
    char small[256];
    va_list first;
    va_copy(first, args);
    const int n = std::vsnprintf(small, sizeof small, format, first);
    va_end(first);
    if (n < 0) return;
    if (static_cast<std::size_t>(n) < sizeof small) {
        out->append(small, static_cast<std::size_t>(n));
        return;
    }
    std::string big(static_cast<std::size_t>(n) + 1, '\0');
    va_list second;
    va_copy(second, args);
    std::vsnprintf(&big[0], big.size(), format, second);
    va_end(second);
    big.resize(static_cast<std::size_t>(n));
    out->append(big);
}

}  // namespace

CString::CString(const char* psz) {
    if (psz != nullptr) m_str.assign(psz);
}

CString::CString(const char* pch, int nLength) {
    if (pch != nullptr && nLength > 0)
        m_str.assign(pch, strnlen(pch, static_cast<std::size_t>(nLength)));
}

CString::CString(char ch, int nRepeat) {
    if (nRepeat > 0) m_str.assign(static_cast<std::size_t>(nRepeat), ch);
}

CString& CString::operator=(const char* psz) {
    if (psz == nullptr) {
        m_str.clear();
    } else {
        m_str.assign(psz);  // copes with psz pointing into m_str
    }
    return *this;
}

CString& CString::operator=(char ch) {
    m_str.assign(1, ch);
    return *this;
}

char CString::GetAt(int nIndex) const {
    if (nIndex < 0 || static_cast<std::size_t>(nIndex) > m_str.size()) {
        indexFault("GetAt", nIndex, m_str.size());
    }
    return m_str.c_str()[nIndex];
}

void CString::SetAt(int nIndex, char ch) {
    if (nIndex < 0 || static_cast<std::size_t>(nIndex) >= m_str.size()) {
        indexFault("SetAt", nIndex, m_str.size());
    }
    m_str[static_cast<std::size_t>(nIndex)] = ch;
}

int CString::Compare(const char* psz) const {
    // strcmp compares as unsigned char, which is the order wanted.
    return sign(std::strcmp(m_str.c_str(), psz != nullptr ? psz : ""));
}

int CString::CompareNoCase(const char* psz) const {
    const unsigned char* a = reinterpret_cast<const unsigned char*>(m_str.c_str());
    const unsigned char* b = reinterpret_cast<const unsigned char*>(psz != nullptr ? psz : "");
    for (;; ++a, ++b) {
        const unsigned char ca = static_cast<unsigned char>(foldLower(static_cast<char>(*a)));
        const unsigned char cb = static_cast<unsigned char>(foldLower(static_cast<char>(*b)));
        if (ca != cb) return ca < cb ? -1 : 1;
        if (ca == 0) return 0;
    }
}

CString& CString::operator+=(const CString& str) {
    m_str.append(str.m_str);
    return *this;
}

CString& CString::operator+=(const char* psz) {
    if (psz != nullptr) m_str.append(psz);
    return *this;
}

CString& CString::operator+=(char ch) {
    m_str.push_back(ch);
    return *this;
}

int CString::Find(char ch, int nStart) const {
    if (nStart < 0 || static_cast<std::size_t>(nStart) >= m_str.size()) return -1;
    const std::size_t at = m_str.find(ch, static_cast<std::size_t>(nStart));
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

int CString::Find(const char* pszSub, int nStart) const {
    if (pszSub == nullptr || nStart < 0 || static_cast<std::size_t>(nStart) > m_str.size())
        return -1;
    const std::size_t at = m_str.find(pszSub, static_cast<std::size_t>(nStart));
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

int CString::ReverseFind(char ch) const {
    const std::size_t at = m_str.rfind(ch);
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

CString CString::Mid(int nFirst) const {
    return Mid(nFirst, GetLength());
}

CString CString::Mid(int nFirst, int nCount) const {
    const int length = GetLength();
    nFirst = std::max(nFirst, 0);
    nCount = std::max(nCount, 0);
    if (nFirst >= length) return CString();
    nCount = std::min(nCount, length - nFirst);  // no overflow: length - nFirst > 0
    CString r;
    r.m_str.assign(m_str, static_cast<std::size_t>(nFirst), static_cast<std::size_t>(nCount));
    return r;
}

CString CString::Left(int nCount) const {
    return Mid(0, nCount);
}

CString CString::Right(int nCount) const {
    const int length = GetLength();
    nCount = std::max(0, std::min(nCount, length));
    return Mid(length - nCount, nCount);
}

CString CString::SpanIncluding(const char* pszCharSet) const {
    if (pszCharSet == nullptr) return CString();
    return Left(static_cast<int>(std::strspn(m_str.c_str(), pszCharSet)));
}

CString CString::SpanExcluding(const char* pszCharSet) const {
    if (pszCharSet == nullptr) return *this;
    return Left(static_cast<int>(std::strcspn(m_str.c_str(), pszCharSet)));
}

CString& CString::TrimLeftSet(const char* set, std::size_t setLength) {
    std::size_t n = 0;
    while (n < m_str.size() && inSet(m_str[n], set, setLength)) ++n;
    m_str.erase(0, n);
    return *this;
}

CString& CString::TrimRightSet(const char* set, std::size_t setLength) {
    std::size_t n = m_str.size();
    while (n > 0 && inSet(m_str[n - 1], set, setLength)) --n;
    m_str.resize(n);
    return *this;
}

CString& CString::Trim() {
    return TrimRight().TrimLeft();
}
CString& CString::Trim(char chTarget) {
    return TrimRight(chTarget).TrimLeft(chTarget);
}
CString& CString::Trim(const char* pszTargets) {
    return TrimRight(pszTargets).TrimLeft(pszTargets);
}
CString& CString::TrimLeft() {
    return TrimLeftSet(kWhitespace, kWhitespaceLength);
}
CString& CString::TrimLeft(char chTarget) {
    return TrimLeftSet(&chTarget, 1);
}
CString& CString::TrimRight() {
    return TrimRightSet(kWhitespace, kWhitespaceLength);
}
CString& CString::TrimRight(char chTarget) {
    return TrimRightSet(&chTarget, 1);
}

CString& CString::TrimLeft(const char* pszTargets) {
    if (pszTargets == nullptr) return *this;
    return TrimLeftSet(pszTargets, std::strlen(pszTargets));
}

CString& CString::TrimRight(const char* pszTargets) {
    if (pszTargets == nullptr) return *this;
    return TrimRightSet(pszTargets, std::strlen(pszTargets));
}

CString& CString::MakeUpper() {
    for (char& c : m_str) c = foldUpper(c);
    return *this;
}

CString& CString::MakeLower() {
    for (char& c : m_str) c = foldLower(c);
    return *this;
}

CString& CString::MakeReverse() {
    std::reverse(m_str.begin(), m_str.end());
    return *this;
}

void CString::Format(const char* pszFormat, ...) {
    va_list args;
    va_start(args, pszFormat);
    FormatV(pszFormat, args);
    va_end(args);
}

void CString::AppendFormat(const char* pszFormat, ...) {
    va_list args;
    va_start(args, pszFormat);
    AppendFormatV(pszFormat, args);
    va_end(args);
}

void CString::FormatV(const char* pszFormat, va_list args) {
    // Into a fresh string: an argument may be this string's own text.
    std::string text;
    formatInto(&text, pszFormat, args);
    m_str.swap(text);
}

void CString::AppendFormatV(const char* pszFormat, va_list args) {
    std::string text;
    formatInto(&text, pszFormat, args);
    m_str.append(text);
}

int CString::Replace(const char* pszOld, const char* pszNew) {
    if (pszOld == nullptr || *pszOld == '\0') return 0;
    // Copies first: either text may point into this string.
    const std::string oldText(pszOld);
    const std::string newText(pszNew != nullptr ? pszNew : "");
    std::size_t at = m_str.find(oldText);
    if (at == std::string::npos) return 0;
    std::string result;
    std::size_t from = 0;
    int count = 0;
    for (; at != std::string::npos; at = m_str.find(oldText, from)) {
        result.append(m_str, from, at - from);
        result.append(newText);
        from = at + oldText.size();
        ++count;
    }
    result.append(m_str, from, std::string::npos);
    m_str.swap(result);
    return count;
}

int CString::Replace(char chOld, char chNew) {
    if (chOld == chNew) return 0;
    int count = 0;
    for (char& c : m_str) {
        if (c == chOld) {
            c = chNew;
            ++count;
        }
    }
    return count;
}

int CString::Remove(char ch) {
    const std::size_t before = m_str.size();
    m_str.erase(std::remove(m_str.begin(), m_str.end(), ch), m_str.end());
    return static_cast<int>(before - m_str.size());
}

int CString::Insert(int nIndex, char ch) {
    nIndex = std::max(0, std::min(nIndex, GetLength()));
    m_str.insert(static_cast<std::size_t>(nIndex), 1, ch);
    return GetLength();
}

int CString::Insert(int nIndex, const char* psz) {
    if (psz == nullptr) return GetLength();
    nIndex = std::max(0, std::min(nIndex, GetLength()));
    m_str.insert(static_cast<std::size_t>(nIndex), psz);  // copes with psz pointing into m_str
    return GetLength();
}

int CString::Delete(int nIndex, int nCount) {
    const int length = GetLength();
    nIndex = std::max(nIndex, 0);
    if (nCount > 0 && nIndex < length) {
        m_str.erase(static_cast<std::size_t>(nIndex),
                    static_cast<std::size_t>(std::min(nCount, length - nIndex)));
    }
    return GetLength();
}

char* CString::GetBuffer(int nMinBufLength) {
    if (nMinBufLength > GetLength()) m_str.resize(static_cast<std::size_t>(nMinBufLength));
    return &m_str[0];
}

void CString::ReleaseBuffer(int nNewLength) {
    std::size_t n = m_str.size();
    if (nNewLength >= 0) n = std::min(n, static_cast<std::size_t>(nNewLength));
    m_str.resize(strnlen(m_str.data(), n));
}

char* CString::GetBufferSetLength(int nNewLength) {
    m_str.resize(static_cast<std::size_t>(std::max(nNewLength, 0)));
    return &m_str[0];
}
