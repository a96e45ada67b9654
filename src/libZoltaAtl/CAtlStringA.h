#pragma once

// Reference-counted, copy-on-write string of 8-bit characters: file contents, UTF-8 and anything
// handed to 8-bit system calls. Reference counts are plain integers: a string that crosses
// threads must be copied by value first.

#include <QString>

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string_view>

class CAtlString;

namespace zolta_detail {
template <class String>
struct StringCore;
}

// Header in front of the characters of every block. nRefs -1 marks a locked buffer or the
// shared empty block.
struct CAtlStringAData {
    int32_t nRefs;
    int32_t nDataLength;
    int32_t nAllocLength;

    char* data() { return reinterpret_cast<char*>(this + 1); }
};

class CAtlStringA {
public:
    // The one shared empty block: never freed, its count never changed.
    static CAtlStringAData* const _afxDataANil;

    CAtlStringA();
    CAtlStringA(const CAtlStringA& stringSrc);
    CAtlStringA(const char* lpsz);
    CAtlStringA(const char* lpch, int nLength);
    explicit CAtlStringA(char ch, int nRepeat = 1);
    // UTF-8 of the wide text; a surrogate code point gives an empty string.
    CAtlStringA(const wchar_t* lpsz);
    // Plain narrowing: each wide character keeps its low 8 bits.
    CAtlStringA(const wchar_t* lpch, int nLength);
    CAtlStringA(const CAtlString& stringSrc);
    // The UTF-8 bytes of the text.
    CAtlStringA(const QString& str);
    ~CAtlStringA();

    CAtlStringA& operator=(const CAtlStringA& stringSrc);
    CAtlStringA& operator=(char ch);
    CAtlStringA& operator=(const char* lpsz);
    CAtlStringA& operator=(const wchar_t* lpsz);          // plain narrowing
    CAtlStringA& operator=(const CAtlString& stringSrc);  // plain narrowing
    CAtlStringA& operator=(const QString& str);           // UTF-8

    // Length and index access.
    int GetLength() const;
    bool IsEmpty() const;
    void Empty();
    char GetAt(int nIndex) const;
    char operator[](int nIndex) const;
    void SetAt(int nIndex, char ch);
    operator const char*() const { return m_pchData; }
    const char* GetString() const { return m_pchData; }

    // Raw buffer access.
    char* GetBuffer(int nMinBufLength);
    char* GetBuffer();  // the characters as they stand, possibly shared: read only
    char* GetBufferSetLength(int nNewLength);
    void ReleaseBuffer(int nNewLength = -1);  // -1 keeps the current length, never measures
    char* LockBuffer();
    void UnlockBuffer();
    void FreeExtra();

    // Appending; wide arguments are narrowed to their low 8 bits.
    CAtlStringA& Append(const CAtlStringA& str);
    CAtlStringA& Append(const char* pszSrc);
    CAtlStringA& Append(const char* pszSrc, int nLength);
    CAtlStringA& Append(const wchar_t* lpsz);
    CAtlStringA& AppendChar(char ch);
    CAtlStringA& operator+=(const CAtlStringA& str);
    CAtlStringA& operator+=(const char* lpsz);
    CAtlStringA& operator+=(char ch);
    CAtlStringA& operator+=(wchar_t ch);
    CAtlStringA& operator+=(const wchar_t* lpsz);
    CAtlStringA& operator+=(const CAtlString& str);

    friend CAtlStringA operator+(const CAtlStringA& string1, const CAtlStringA& string2);
    friend CAtlStringA operator+(const CAtlStringA& string, char ch);
    friend CAtlStringA operator+(char ch, const CAtlStringA& string);
    friend CAtlStringA operator+(const CAtlStringA& string, const char* lpsz);
    friend CAtlStringA operator+(const char* lpsz, const CAtlStringA& string);
    friend CAtlStringA operator+(const CAtlStringA& string, const wchar_t* lpsz);
    friend CAtlStringA operator+(const wchar_t* lpsz, const CAtlStringA& string);
    friend CAtlStringA operator+(const CAtlStringA& string, const CAtlString& str);

    // Extraction.
    CAtlStringA Mid(int nFirst, int nCount) const;
    CAtlStringA Mid(int nFirst) const;
    CAtlStringA Left(int nCount) const;
    CAtlStringA Right(int nCount) const;
    CAtlStringA SpanIncluding(const char* lpszCharSet) const;
    CAtlStringA SpanExcluding(const char* lpszCharSet) const;

    // Searching: index of the match, -1 for none.
    int Find(char ch, int nStart = 0) const;
    int Find(const char* sub, int nStart = 0) const;
    int ReverseFind(char ch) const;
    int FindOneOf(const char* lpszCharSet) const;

    // Editing in place; counts and lengths are returned.
    int Replace(char chOld, char chNew);
    int Replace(const char* lpszOld, const char* lpszNew);
    int Remove(char chRemove);
    int Insert(int nIndex, char ch);
    int Insert(int nIndex, const char* pstr);
    int Delete(int nIndex, int nCount = 1);

    CAtlStringA& TrimLeft();
    CAtlStringA& TrimLeft(char chTarget);
    CAtlStringA& TrimLeft(const char* lpszTargets);
    CAtlStringA& TrimRight();
    CAtlStringA& TrimRight(char chTarget);
    CAtlStringA& TrimRight(const char* lpszTargetList);
    CAtlStringA& Trim();
    CAtlStringA& Trim(char chTarget);
    CAtlStringA& Trim(const char* lpszTargets);

    CAtlStringA& MakeUpper();
    CAtlStringA& MakeLower();
    CAtlStringA& MakeReverse();

    // Comparison without locale: strcmp / strcasecmp.
    int Compare(const char* lpsz) const;
    int CompareNoCase(const char* lpsz) const;
    int Collate(const char* lpsz, bool bCaseSensitive = true) const;
    int CollateNoCase(const char* lpsz) const;

    // printf-style. Pass strings as GetString(), never the object.
    void Format(const char* lpszFormat, ...);
    void FormatV(const char* caFormat, va_list args);
    void AppendFormat(const char* format, ...);
    void AppendFormatV(const char* caFormat, va_list args);

    // Block-level operations, public for the collection helpers and for checks of the layout.
    CAtlStringAData* GetData() const;
    void AllocBuffer(int nLen);
    void Release();
    static void Release(CAtlStringAData* pData);
    void CopyBeforeWrite();
    void AllocBeforeWrite(int nLen);
    void ConcatInPlace(int nSrcLen, const char* lpszSrcData);

    friend void ConstructElements(CAtlStringA* pElements, int nCount);
    friend void DestructElements(CAtlStringA* pElements, int nCount);
    friend void CopyElements(CAtlStringA* pDest, const CAtlStringA* pSrc, int nCount);

private:
    // The shared algorithms of both string classes work on the block directly.
    friend struct zolta_detail::StringCore<CAtlStringA>;

    char* m_pchData;
};

void ConstructElements(CAtlStringA* pElements, int nCount);
void DestructElements(CAtlStringA* pElements, int nCount);
void CopyElements(CAtlStringA* pDest, const CAtlStringA* pSrc, int nCount);

// Case-sensitive comparisons, string with string and string with pointer in both orders.
bool operator==(const CAtlStringA& s1, const CAtlStringA& s2);
bool operator==(const CAtlStringA& s1, const char* s2);
bool operator==(const char* s1, const CAtlStringA& s2);
bool operator!=(const CAtlStringA& s1, const CAtlStringA& s2);
bool operator!=(const CAtlStringA& s1, const char* s2);
bool operator!=(const char* s1, const CAtlStringA& s2);
bool operator<(const CAtlStringA& s1, const CAtlStringA& s2);
bool operator<(const CAtlStringA& s1, const char* s2);
bool operator<(const char* s1, const CAtlStringA& s2);
bool operator>(const CAtlStringA& s1, const CAtlStringA& s2);
bool operator>(const CAtlStringA& s1, const char* s2);
bool operator>(const char* s1, const CAtlStringA& s2);
bool operator<=(const CAtlStringA& s1, const CAtlStringA& s2);
bool operator<=(const CAtlStringA& s1, const char* s2);
bool operator<=(const char* s1, const CAtlStringA& s2);
bool operator>=(const CAtlStringA& s1, const CAtlStringA& s2);
bool operator>=(const CAtlStringA& s1, const char* s2);
bool operator>=(const char* s1, const CAtlStringA& s2);

// Readable values in test failure messages.
void PrintTo(const CAtlStringA& str, std::ostream* os);

// Lets CAtlStringA key unordered containers; hashes the bytes in use.
template <>
struct std::hash<CAtlStringA> {
    size_t operator()(const CAtlStringA& str) const noexcept
    {
        return std::hash<std::string_view>()(std::string_view(str.GetString(), static_cast<size_t>(str.GetLength())));
    }
};
