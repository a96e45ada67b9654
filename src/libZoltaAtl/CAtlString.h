#pragma once

// Reference-counted, copy-on-write string of 32-bit wide characters. Every message, path and key
// of the system travels as a CAtlString. Reference counts are plain integers: a string that
// crosses threads must be copied by value first.

#include "libZoltaAtl/CAtlStringA.h"

#include <QString>

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string_view>

// Header in front of the characters of every block. nRefs -1 marks a locked buffer or the
// shared empty block.
struct CAtlStringData {
    int32_t nRefs;
    int32_t nDataLength;
    int32_t nAllocLength;

    wchar_t* data() { return reinterpret_cast<wchar_t*>(this + 1); }
};

class CAtlString {
public:
    // The one shared empty block: never freed, its count never changed.
    static CAtlStringData* const _afxDataNil;

    CAtlString();
    CAtlString(const CAtlString& stringSrc);
    CAtlString(const wchar_t* lpsz);
    CAtlString(const wchar_t* lpch, int nLength);
    explicit CAtlString(wchar_t ch, int nRepeat = 1);
    // 8-bit sources: length is the byte count, bytes decoded as UTF-8 (exact for ASCII only;
    // non-ASCII text goes through QString).
    CAtlString(const char* lpsz);
    CAtlString(const char* lpch, int nLength);
    CAtlString(const CAtlStringA& stringSrc);
    CAtlString(const QString& str);
    ~CAtlString();

    CAtlString& operator=(const CAtlString& stringSrc);
    CAtlString& operator=(wchar_t ch);
    CAtlString& operator=(const wchar_t* lpsz);
    CAtlString& operator=(const char* lpsz);
    CAtlString& operator=(const CAtlStringA& stringSrc);
    CAtlString& operator=(const QString& str);

    // Length and index access.
    int GetLength() const;
    bool IsEmpty() const;
    void Empty();
    wchar_t GetAt(int nIndex) const;
    wchar_t operator[](int nIndex) const;
    void SetAt(int nIndex, wchar_t ch);
    operator const wchar_t*() const { return m_pchData; }
    const wchar_t* GetString() const { return m_pchData; }

    // Qt edge.
    QString ToQString() const;

    // Exact UTF-8 in both directions, by way of QString (unlike the 8-bit constructors above,
    // which are exact for ASCII only). nLength -1 measures up to the terminator.
    static CAtlString FromUtf8(const char* utf8, int nLength = -1);
    CAtlStringA ToUtf8() const;

    // Raw buffer access.
    wchar_t* GetBuffer(int nMinBufLength);
    wchar_t* GetBuffer();  // the characters as they stand, possibly shared: read only
    wchar_t* GetBufferSetLength(int nNewLength);
    void ReleaseBuffer(int nNewLength = -1);
    wchar_t* LockBuffer();
    void UnlockBuffer();
    void FreeExtra();
    void Truncate(int nNewLength);

    // Appending.
    CAtlString& Append(const CAtlString& str);
    CAtlString& Append(const wchar_t* pszSrc);
    CAtlString& Append(const wchar_t* pszSrc, int nLength);
    CAtlString& Append(const char* ca);
    CAtlString& Append(const CAtlStringA& str);
    CAtlString& AppendChar(wchar_t ch);
    CAtlString& operator+=(const CAtlString& str);
    CAtlString& operator+=(const wchar_t* lpsz);
    CAtlString& operator+=(wchar_t ch);
    CAtlString& operator+=(char ch);
    CAtlString& operator+=(const char* ca);
    CAtlString& operator+=(const CAtlStringA& str);

    friend CAtlString operator+(const CAtlString& string1, const CAtlString& string2);
    friend CAtlString operator+(const CAtlString& string, wchar_t ch);
    friend CAtlString operator+(wchar_t ch, const CAtlString& string);
    friend CAtlString operator+(const CAtlString& string, const wchar_t* lpsz);
    friend CAtlString operator+(const wchar_t* lpsz, const CAtlString& string);
    friend CAtlString operator+(const CAtlString& string, const char* str);
    friend CAtlString operator+(const char* str, const CAtlString& string);
    friend CAtlString operator+(const CAtlString& string, const CAtlStringA& str);

    // Extraction.
    CAtlString Mid(int nFirst, int nCount) const;
    CAtlString Mid(int nFirst) const;
    CAtlString Left(int nCount) const;
    CAtlString Right(int nCount) const;

    // Searching: index of the match, -1 for none.
    int Find(wchar_t ch, int nStart = 0) const;
    int Find(const wchar_t* sub, int nStart = 0) const;
    int Find(const char* sub, int nStart = 0) const;
    int ReverseFind(wchar_t ch) const;
    int FindOneOf(const wchar_t* lpszCharSet) const;
    int FindOneOf(const char* lpszCharSet) const;

    // Editing in place; counts and lengths are returned.
    int Replace(wchar_t chOld, wchar_t chNew);
    int Replace(const wchar_t* lpszOld, const wchar_t* lpszNew);
    int Remove(wchar_t chRemove);
    int Insert(int nIndex, wchar_t ch);
    int Insert(int nIndex, const wchar_t* pstr);
    int Delete(int nIndex, int nCount = 1);

    CAtlString& TrimLeft();
    CAtlString& TrimLeft(wchar_t chTarget);
    CAtlString& TrimLeft(const wchar_t* lpszTargets);
    CAtlString& TrimRight();
    CAtlString& TrimRight(wchar_t chTarget);
    CAtlString& TrimRight(const wchar_t* lpszTargetList);
    CAtlString& Trim();
    CAtlString& Trim(wchar_t chTarget);
    CAtlString& Trim(const wchar_t* lpszTargets);

    CAtlString& MakeUpper();
    CAtlString& MakeLower();
    CAtlString& MakeReverse();  // ASCII only: characters moved from the front keep their low 8 bits

    // Comparison without locale: wcscmp / wcscasecmp.
    int Compare(const wchar_t* lpsz) const;
    int CompareNoCase(const wchar_t* lpsz) const;
    int Collate(const wchar_t* lpsz, bool bCaseSensitive = true) const;
    int CollateNoCase(const wchar_t* lpsz) const;

    // printf-style; "%s" takes a wide string. Pass strings as GetString(), never the object.
    void Format(const wchar_t* lpszFormat, ...);
    void FormatV(const wchar_t* format, va_list args);
    void AppendFormat(const wchar_t* format, ...);
    void AppendFormatV(const wchar_t* format, va_list args);

    // Block-level operations, public for the collection helpers and for checks of the layout.
    CAtlStringData* GetData() const;
    void AllocBuffer(int nLen);
    void Release();
    static void Release(CAtlStringData* pData);
    void CopyBeforeWrite();
    void AllocBeforeWrite(int nLen);
    void ConcatInPlace(int nSrcLen, const wchar_t* lpszSrcData);

    friend void ConstructElements(CAtlString* pElements, int nCount);
    friend void DestructElements(CAtlString* pElements, int nCount);
    friend void CopyElements(CAtlString* pDest, const CAtlString* pSrc, int nCount);

private:
    // The shared algorithms of both string classes work on the block directly.
    friend struct zolta_detail::StringCore<CAtlString>;

    wchar_t* m_pchData;
};

void ConstructElements(CAtlString* pElements, int nCount);
void DestructElements(CAtlString* pElements, int nCount);
void CopyElements(CAtlString* pDest, const CAtlString* pSrc, int nCount);

// Case-sensitive comparisons, string with string and string with pointer in both orders.
bool operator==(const CAtlString& s1, const CAtlString& s2);
bool operator==(const CAtlString& s1, const wchar_t* s2);
bool operator==(const wchar_t* s1, const CAtlString& s2);
bool operator!=(const CAtlString& s1, const CAtlString& s2);
bool operator!=(const CAtlString& s1, const wchar_t* s2);
bool operator!=(const wchar_t* s1, const CAtlString& s2);
bool operator<(const CAtlString& s1, const CAtlString& s2);
bool operator<(const CAtlString& s1, const wchar_t* s2);
bool operator<(const wchar_t* s1, const CAtlString& s2);
bool operator>(const CAtlString& s1, const CAtlString& s2);
bool operator>(const CAtlString& s1, const wchar_t* s2);
bool operator>(const wchar_t* s1, const CAtlString& s2);
bool operator<=(const CAtlString& s1, const CAtlString& s2);
bool operator<=(const CAtlString& s1, const wchar_t* s2);
bool operator<=(const wchar_t* s1, const CAtlString& s2);
bool operator>=(const CAtlString& s1, const CAtlString& s2);
bool operator>=(const CAtlString& s1, const wchar_t* s2);
bool operator>=(const wchar_t* s1, const CAtlString& s2);

// With 8-bit text (ASCII literals, typically): the text is taken as a CAtlString first.
bool operator==(const CAtlString& s1, const char* s2);
bool operator==(const char* s1, const CAtlString& s2);
bool operator!=(const CAtlString& s1, const char* s2);
bool operator!=(const char* s1, const CAtlString& s2);
bool operator<(const CAtlString& s1, const char* s2);
bool operator<(const char* s1, const CAtlString& s2);
bool operator>(const CAtlString& s1, const char* s2);
bool operator>(const char* s1, const CAtlString& s2);
bool operator<=(const CAtlString& s1, const char* s2);
bool operator<=(const char* s1, const CAtlString& s2);
bool operator>=(const CAtlString& s1, const char* s2);
bool operator>=(const char* s1, const CAtlString& s2);

// Readable values in test failure messages (UTF-8).
void PrintTo(const CAtlString& str, std::ostream* os);

// Lets CAtlString key unordered containers; hashes the characters in use.
template <>
struct std::hash<CAtlString> {
    size_t operator()(const CAtlString& str) const noexcept
    {
        return std::hash<std::wstring_view>()(std::wstring_view(str.GetString(), static_cast<size_t>(str.GetLength())));
    }
};
