// A byte string in the caller's ANSI code page. Bytes are compared as unsigned char;
// case folding is ASCII only (locale-aware casing is a platform service).
//
// A text never contains a zero byte: the length is always that of the zero-terminated
// buffer. Where a length is handed in together with the bytes, the text ends at the
// first zero among them.
//
// Arguments that select positions are clamped instead of failing:
// Mid/Left/Right/Delete/Insert never throw and never touch memory outside the text.
// Only an index handed to GetAt/SetAt/operator[] is checked strictly; a bad one stops
// the process, since it is a caller bug.
#pragma once

#include <cstdarg>
#include <string>
#include <utility>

#include "qvb/QvbVersion.h"
#include "qvb/WinTypes.h"

class QVB_API CString {
public:
    CString() noexcept = default;
    CString(const CString&) = default;
    CString(CString&&) noexcept = default;
    CString(const char* psz);  // null gives the empty text
    CString(const char* pch, int nLength);
    explicit CString(char ch, int nRepeat = 1);
    ~CString() = default;

    CString& operator=(const CString&) = default;
    CString& operator=(CString&&) noexcept = default;
    CString& operator=(const char* psz);
    CString& operator=(char ch);

    int GetLength() const { return static_cast<int>(m_str.size()); }
    BOOL IsEmpty() const { return m_str.empty() ? TRUE : FALSE; }
    void Empty() { m_str.clear(); }

    // Index GetLength() reads the terminating zero.
    char GetAt(int nIndex) const;
    void SetAt(int nIndex, char ch);
    char operator[](int nIndex) const { return GetAt(nIndex); }

    // Never null.
    operator const char*() const { return m_str.c_str(); }
    const char* GetString() const { return m_str.c_str(); }

    // <0, 0, >0. A null argument compares as the empty text.
    int Compare(const char* psz) const;
    int CompareNoCase(const char* psz) const;

    CString& operator+=(const CString& str);
    CString& operator+=(const char* psz);
    CString& operator+=(char ch);

    // -1 when not found or when nStart is negative or past the end.
    int Find(char ch, int nStart = 0) const;
    int Find(const char* pszSub, int nStart = 0) const;
    int ReverseFind(char ch) const;

    CString Mid(int nFirst) const;
    CString Mid(int nFirst, int nCount) const;
    CString Left(int nCount) const;
    CString Right(int nCount) const;
    CString SpanIncluding(const char* pszCharSet) const;
    CString SpanExcluding(const char* pszCharSet) const;

    // Without an argument these trim space, \t, \n, \r, \v and \f.
    CString& Trim();
    CString& Trim(char chTarget);
    CString& Trim(const char* pszTargets);
    CString& TrimLeft();
    CString& TrimLeft(char chTarget);
    CString& TrimLeft(const char* pszTargets);
    CString& TrimRight();
    CString& TrimRight(char chTarget);
    CString& TrimRight(const char* pszTargets);

    CString& MakeUpper();
    CString& MakeLower();
    CString& MakeReverse();

    // printf-style, of any length. An argument may point into this string itself.
    void Format(const char* pszFormat, ...) __attribute__((format(printf, 2, 3)));
    void AppendFormat(const char* pszFormat, ...) __attribute__((format(printf, 2, 3)));
    void FormatV(const char* pszFormat, va_list args) __attribute__((format(printf, 2, 0)));
    void AppendFormatV(const char* pszFormat, va_list args) __attribute__((format(printf, 2, 0)));

    // Both return the number of replacements; an empty or null pszOld replaces nothing.
    int Replace(const char* pszOld, const char* pszNew);
    int Replace(char chOld, char chNew);
    int Remove(char ch);

    // Both return the new length. The index is clamped to [0, GetLength()].
    int Insert(int nIndex, char ch);
    int Insert(int nIndex, const char* psz);
    int Delete(int nIndex, int nCount = 1);

    // A writable buffer of at least nMinBufLength + 1 bytes holding the text. While it is
    // out, GetLength() may count the added room; ReleaseBuffer sets the real length:
    // -1 for the length up to the first zero, otherwise nNewLength (clamped to the buffer,
    // and cut at a zero byte within it).
    char* GetBuffer(int nMinBufLength);
    void ReleaseBuffer(int nNewLength = -1);
    // As GetBuffer, with the length set to nNewLength at once (added bytes are zero).
    char* GetBufferSetLength(int nNewLength);

private:
    CString& TrimLeftSet(const char* set, std::size_t setLength);
    CString& TrimRightSet(const char* set, std::size_t setLength);

    std::string m_str;
};

inline bool operator==(const CString& a, const CString& b) {
    return a.GetLength() == b.GetLength() && a.Compare(b) == 0;
}
inline bool operator==(const CString& a, const char* b) {
    return a.Compare(b) == 0;
}
inline bool operator==(const char* a, const CString& b) {
    return b.Compare(a) == 0;
}
inline bool operator!=(const CString& a, const CString& b) {
    return !(a == b);
}
inline bool operator!=(const CString& a, const char* b) {
    return a.Compare(b) != 0;
}
inline bool operator!=(const char* a, const CString& b) {
    return b.Compare(a) != 0;
}
inline bool operator<(const CString& a, const CString& b) {
    return a.Compare(b) < 0;
}
inline bool operator<(const CString& a, const char* b) {
    return a.Compare(b) < 0;
}
inline bool operator<(const char* a, const CString& b) {
    return b.Compare(a) > 0;
}
inline bool operator>(const CString& a, const CString& b) {
    return a.Compare(b) > 0;
}
inline bool operator>(const CString& a, const char* b) {
    return a.Compare(b) > 0;
}
inline bool operator>(const char* a, const CString& b) {
    return b.Compare(a) < 0;
}
inline bool operator<=(const CString& a, const CString& b) {
    return a.Compare(b) <= 0;
}
inline bool operator<=(const CString& a, const char* b) {
    return a.Compare(b) <= 0;
}
inline bool operator<=(const char* a, const CString& b) {
    return b.Compare(a) >= 0;
}
inline bool operator>=(const CString& a, const CString& b) {
    return a.Compare(b) >= 0;
}
inline bool operator>=(const CString& a, const char* b) {
    return a.Compare(b) >= 0;
}
inline bool operator>=(const char* a, const CString& b) {
    return b.Compare(a) <= 0;
}

inline CString operator+(const CString& a, const CString& b) {
    CString r(a);
    r += b;
    return r;
}
inline CString operator+(CString&& a, const CString& b) {
    a += b;
    return std::move(a);
}
inline CString operator+(const CString& a, const char* b) {
    CString r(a);
    r += b;
    return r;
}
inline CString operator+(CString&& a, const char* b) {
    a += b;
    return std::move(a);
}
inline CString operator+(const char* a, const CString& b) {
    CString r(a);
    r += b;
    return r;
}
inline CString operator+(const CString& a, char b) {
    CString r(a);
    r += b;
    return r;
}
inline CString operator+(CString&& a, char b) {
    a += b;
    return std::move(a);
}
inline CString operator+(char a, const CString& b) {
    CString r(a);
    r += b;
    return r;
}
