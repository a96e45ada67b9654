#include "CAtlStringA.h"

#include "CAtlString.h"
#include "UniCharUtils.h"
#include "ZoltaAssert.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cctype>
#include <cstdio>
#include <cwchar>
#include <new>
#include <ostream>
#include <string>
#include <string_view>

#include <strings.h>

namespace {

// The shared empty block: header, then the one zero character.
struct NilBlock {
    CAtlStringAData header;
    char terminator;
};
static_assert(offsetof(NilBlock, terminator) == sizeof(CAtlStringAData),
              "the characters must follow the header directly");

NilBlock g_nilBlock = {{-1, 0, 0}, 0};

void FreeData(CAtlStringAData* pData)
{
    ::operator delete(pData);
}

bool IsWhitespace(char ch, const void*)
{
    return std::isspace(static_cast<unsigned char>(ch)) != 0;
}

bool IsTargetChar(char ch, const void* context)
{
    return ch == *static_cast<const char*>(context);
}

bool IsInTargetList(char ch, const void* context)
{
    return ch != 0 && std::strchr(static_cast<const char*>(context), ch) != nullptr;
}

int CompareStrings(const char* s1, const char* s2)
{
    return std::strcmp(s1, s2);
}

} // namespace

CAtlStringAData* const CAtlStringA::_afxDataANil = &g_nilBlock.header;

// ---------------------------------------------------------------------------------------------
// Block management

void CAtlStringA::Init()
{
    m_pchData = _afxDataANil->data();
}

CAtlStringAData* CAtlStringA::GetData() const
{
    ZOLTA_ASSERT_TEXT(m_pchData != nullptr, "m_pchData != __null");
    return reinterpret_cast<CAtlStringAData*>(m_pchData) - 1;
}

void CAtlStringA::AllocBuffer(int nLen)
{
    ZOLTA_ASSERT_TEXT(nLen >= 0, "nLen >= 0");
    ZOLTA_ASSERT_TEXT(nLen <= 2147483647 - 1, "nLen <= 2147483647-1");
    if (nLen == 0) {
        Init();
        return;
    }
    // Exactly as long as asked for: no spare capacity.
    const size_t bytes = sizeof(CAtlStringAData) + (static_cast<size_t>(nLen) + 1);
    CAtlStringAData* pData = static_cast<CAtlStringAData*>(::operator new(bytes));
    pData->nRefs = 1;
    pData->nDataLength = nLen;
    pData->nAllocLength = nLen;
    pData->data()[nLen] = 0;
    m_pchData = pData->data();
}

void CAtlStringA::Release()
{
    CAtlStringAData* pData = GetData();
    if (pData == _afxDataANil)
        return;
    ZOLTA_ASSERT_TEXT(pData->nRefs != 0, "GetData()->nRefs != 0");
    if (--pData->nRefs <= 0)
        FreeData(pData);
    Init();
}

void CAtlStringA::Release(CAtlStringAData* pData)
{
    if (pData == _afxDataANil)
        return;
    ZOLTA_ASSERT_TEXT(pData->nRefs != 0, "pData->nRefs != 0");
    if (--pData->nRefs <= 0)
        FreeData(pData);
}

void CAtlStringA::CopyBeforeWrite()
{
    CAtlStringAData* pData = GetData();
    if (pData->nRefs > 1) {
        Release();
        AllocBuffer(pData->nDataLength);
        if (GetData() != _afxDataANil)
            std::memcpy(m_pchData, pData->data(), (static_cast<size_t>(pData->nDataLength) + 1));
    }
    ZOLTA_ASSERT_TEXT(GetData()->nRefs <= 1, "GetData()->nRefs <= 1");
}

void CAtlStringA::AllocBeforeWrite(int nLen)
{
    CAtlStringAData* pData = GetData();
    if (pData->nRefs > 1 || nLen > pData->nAllocLength) {
        Release();
        AllocBuffer(nLen);
    }
}

// Sets the length and terminator; the empty block is left untouched (its values never change).
void CAtlStringA::SetLengthAndTerminate(int nLength)
{
    CAtlStringAData* pData = GetData();
    if (pData == _afxDataANil)
        return;
    pData->nDataLength = nLength;
    m_pchData[nLength] = 0;
}

void CAtlStringA::AssignCopy(int nSrcLen, const char* lpszSrcData)
{
    AllocBeforeWrite(nSrcLen);
    if (nSrcLen > 0)
        std::memmove(m_pchData, lpszSrcData, static_cast<size_t>(nSrcLen));
    SetLengthAndTerminate(nSrcLen);
}

void CAtlStringA::ConcatCopy(int nSrc1Len, const char* lpszSrc1Data, int nSrc2Len, const char* lpszSrc2Data)
{
    const int nNewLen = nSrc1Len + nSrc2Len;
    if (nNewLen == 0)
        return;
    AllocBuffer(nNewLen);
    std::memcpy(m_pchData, lpszSrc1Data, static_cast<size_t>(nSrc1Len));
    std::memcpy(m_pchData + nSrc1Len, lpszSrc2Data, static_cast<size_t>(nSrc2Len));
}

void CAtlStringA::ConcatInPlace(int nSrcLen, const char* lpszSrcData)
{
    if (nSrcLen == 0)
        return;
    CAtlStringAData* pOldData = GetData();
    if (pOldData->nRefs > 1 || pOldData->nDataLength + nSrcLen > pOldData->nAllocLength) {
        // One allocation of exactly the sum; the old block stays alive until both parts are copied.
        ConcatCopy(pOldData->nDataLength, m_pchData, nSrcLen, lpszSrcData);
        Release(pOldData);
    } else {
        std::memcpy(m_pchData + pOldData->nDataLength, lpszSrcData, static_cast<size_t>(nSrcLen));
        pOldData->nDataLength += nSrcLen;
        m_pchData[pOldData->nDataLength] = 0;
    }
}

void CAtlStringA::AllocCopy(CAtlStringA& dest, int nCopyLen, int nCopyIndex, int nExtraLen) const
{
    const int nNewLen = nCopyLen + nExtraLen;
    if (nNewLen == 0) {
        dest.Init();
        return;
    }
    dest.AllocBuffer(nNewLen);
    std::memcpy(dest.m_pchData, m_pchData + nCopyIndex, static_cast<size_t>(nCopyLen));
}

// Plain narrowing: each wide character keeps its low 8 bits, one byte per character.
void CAtlStringA::AssignNarrowed(int nSrcLen, const wchar_t* lpszSrcData)
{
    AllocBeforeWrite(nSrcLen);
    for (int i = 0; i < nSrcLen; ++i)
        m_pchData[i] = static_cast<char>(static_cast<unsigned char>(lpszSrcData[i] & 0xFF));
    SetLengthAndTerminate(nSrcLen);
}

// ---------------------------------------------------------------------------------------------
// Construction and assignment

CAtlStringA::CAtlStringA()
{
    Init();
}

CAtlStringA::CAtlStringA(const CAtlStringA& stringSrc)
{
    ZOLTA_ASSERT_TEXT(stringSrc.GetData()->nRefs != 0, "stringSrc.GetData()->nRefs != 0");
    if (stringSrc.GetData()->nRefs >= 0) {
        m_pchData = stringSrc.m_pchData;
        ++GetData()->nRefs;
    } else {
        // Locked buffers and the empty block are never shared.
        Init();
        AssignCopy(stringSrc.GetData()->nDataLength, stringSrc.m_pchData);
    }
}

CAtlStringA::CAtlStringA(const char* lpsz)
{
    Init();
    if (lpsz != nullptr)
        AssignCopy(static_cast<int>(std::strlen(lpsz)), lpsz);
}

CAtlStringA::CAtlStringA(const char* lpch, int nLength)
{
    Init();
    if (nLength != 0) {
        ZOLTA_ASSERT_TEXT(lpch != nullptr, "lpch != __null");
        AllocBuffer(nLength);
        std::memcpy(m_pchData, lpch, static_cast<size_t>(nLength));
    }
}

CAtlStringA::CAtlStringA(char ch, int nRepeat)
{
    Init();
    if (nRepeat >= 1) {
        AllocBuffer(nRepeat);
        std::memset(m_pchData, ch, static_cast<size_t>(nRepeat));
    }
}

CAtlStringA::CAtlStringA(const wchar_t* lpsz)
{
    Init();
    if (lpsz == nullptr)
        return;
    // UTF-8; a surrogate (length -1) gives an empty string.
    const int nLength = WCA32Utf8Length(lpsz);
    if (nLength > 0) {
        AllocBuffer(nLength);
        WCA32toCA(lpsz, m_pchData, nLength);
    }
}

CAtlStringA::CAtlStringA(const wchar_t* lpch, int nLength)
{
    Init();
    if (nLength != 0) {
        ZOLTA_ASSERT_TEXT(lpch != nullptr, "lpch != __null");
        AssignNarrowed(nLength, lpch);
    }
}

CAtlStringA::CAtlStringA(const CAtlString& stringSrc)
{
    Init();
    AssignNarrowed(stringSrc.GetLength(), stringSrc.GetString());
}

CAtlStringA::CAtlStringA(const QString& str)
{
    Init();
    const QByteArray utf8 = str.toUtf8();
    AssignCopy(static_cast<int>(utf8.size()), utf8.constData());
}

CAtlStringA::~CAtlStringA()
{
    Release();
}

CAtlStringA& CAtlStringA::operator=(const CAtlStringA& stringSrc)
{
    if (m_pchData == stringSrc.m_pchData)
        return *this;
    const bool targetLocked = GetData()->nRefs < 0 && GetData() != _afxDataANil;
    if (targetLocked || stringSrc.GetData()->nRefs < 0) {
        AssignCopy(stringSrc.GetData()->nDataLength, stringSrc.m_pchData);
    } else {
        Release();
        m_pchData = stringSrc.m_pchData;
        ++GetData()->nRefs;
    }
    return *this;
}

CAtlStringA& CAtlStringA::operator=(char ch)
{
    AssignCopy(1, &ch);
    return *this;
}

CAtlStringA& CAtlStringA::operator=(const char* lpsz)
{
    AssignCopy(lpsz != nullptr ? static_cast<int>(std::strlen(lpsz)) : 0, lpsz);
    return *this;
}

CAtlStringA& CAtlStringA::operator=(const wchar_t* lpsz)
{
    AssignNarrowed(lpsz != nullptr ? static_cast<int>(std::wcslen(lpsz)) : 0, lpsz);
    return *this;
}

CAtlStringA& CAtlStringA::operator=(const CAtlString& stringSrc)
{
    AssignNarrowed(stringSrc.GetLength(), stringSrc.GetString());
    return *this;
}

CAtlStringA& CAtlStringA::operator=(const QString& str)
{
    return *this = CAtlStringA(str);
}

// ---------------------------------------------------------------------------------------------
// Length and index access

int CAtlStringA::GetLength() const
{
    return GetData()->nDataLength;
}

bool CAtlStringA::IsEmpty() const
{
    return GetData()->nDataLength == 0;
}

void CAtlStringA::Empty()
{
    CAtlStringAData* pData = GetData();
    if (pData->nDataLength == 0)
        return;
    if (pData->nRefs >= 0)
        Release();
    else
        *this = ""; // a locked buffer keeps its allocation
}

char CAtlStringA::GetAt(int nIndex) const
{
    ZOLTA_ASSERT_TEXT(nIndex >= 0, "nIndex >= 0");
    ZOLTA_ASSERT_TEXT(nIndex < GetData()->nDataLength, "nIndex < GetData()->nDataLength");
    return m_pchData[nIndex];
}

char CAtlStringA::operator[](int nIndex) const
{
    return GetAt(nIndex);
}

void CAtlStringA::SetAt(int nIndex, char ch)
{
    ZOLTA_ASSERT_TEXT(nIndex >= 0, "nIndex >= 0");
    ZOLTA_ASSERT_TEXT(nIndex < GetData()->nDataLength, "nIndex < GetData()->nDataLength");
    CopyBeforeWrite();
    m_pchData[nIndex] = ch;
}

// ---------------------------------------------------------------------------------------------
// Raw buffer access

char* CAtlStringA::GetBuffer(int nMinBufLength)
{
    ZOLTA_ASSERT_TEXT(nMinBufLength >= 0, "nMinBufLength >= 0");
    CAtlStringAData* pOldData = GetData();
    if (pOldData->nRefs > 1 || nMinBufLength > pOldData->nAllocLength) {
        const int nOldLen = pOldData->nDataLength;
        if (nMinBufLength < nOldLen)
            nMinBufLength = nOldLen;
        AllocBuffer(nMinBufLength);
        if (GetData() != _afxDataANil) {
            std::memcpy(m_pchData, pOldData->data(), (static_cast<size_t>(nOldLen) + 1));
            GetData()->nDataLength = nOldLen;
        }
        Release(pOldData);
    }
    return m_pchData;
}

char* CAtlStringA::GetBuffer()
{
    return m_pchData;
}

char* CAtlStringA::GetBufferSetLength(int nNewLength)
{
    ZOLTA_ASSERT_TEXT(nNewLength >= 0, "nNewLength >= 0");
    GetBuffer(nNewLength);
    SetLengthAndTerminate(nNewLength);
    return m_pchData;
}

void CAtlStringA::ReleaseBuffer(int nNewLength)
{
    CopyBeforeWrite();
    CAtlStringAData* pData = GetData();
    // The default keeps the current length; the buffer is never measured.
    if (nNewLength == -1)
        nNewLength = pData->nDataLength;
    ZOLTA_ASSERT_TEXT(nNewLength <= pData->nAllocLength, "nNewLength <= GetData()->nAllocLength");
    ZOLTA_ASSERT_TEXT(nNewLength >= 0, "nNewLength >= 0");
    SetLengthAndTerminate(nNewLength);
}

char* CAtlStringA::LockBuffer()
{
    char* lpsz = GetBuffer(0);
    if (GetData() != _afxDataANil)
        GetData()->nRefs = -1;
    return lpsz;
}

void CAtlStringA::UnlockBuffer()
{
    ZOLTA_ASSERT_TEXT(GetData()->nRefs == -1, "GetData()->nRefs == -1");
    if (GetData() != _afxDataANil)
        GetData()->nRefs = 1;
}

void CAtlStringA::FreeExtra()
{
    CAtlStringAData* pOldData = GetData();
    if (pOldData->nDataLength == pOldData->nAllocLength)
        return;
    AllocBuffer(pOldData->nDataLength);
    std::memcpy(m_pchData, pOldData->data(), static_cast<size_t>(pOldData->nDataLength));
    Release(pOldData);
}

// ---------------------------------------------------------------------------------------------
// Appending

CAtlStringA& CAtlStringA::Append(const CAtlStringA& str)
{
    ConcatInPlace(str.GetLength(), str.m_pchData);
    return *this;
}

CAtlStringA& CAtlStringA::Append(const char* pszSrc)
{
    ZOLTA_ASSERT_TEXT(pszSrc != nullptr, "pszSrc != __null");
    ConcatInPlace(static_cast<int>(std::strlen(pszSrc)), pszSrc);
    return *this;
}

CAtlStringA& CAtlStringA::Append(const char* pszSrc, int nLength)
{
    ZOLTA_ASSERT_TEXT(pszSrc != nullptr, "pszSrc != __null");
    ZOLTA_ASSERT_TEXT(nLength >= 0, "nLength >= 0");
    ConcatInPlace(nLength, pszSrc);
    return *this;
}

CAtlStringA& CAtlStringA::Append(const wchar_t* uca)
{
    ZOLTA_ASSERT_TEXT(uca != nullptr, "uca != __null");
    return Append(CAtlStringA(uca, static_cast<int>(std::wcslen(uca))));
}

CAtlStringA& CAtlStringA::AppendChar(char ch)
{
    ConcatInPlace(1, &ch);
    return *this;
}

CAtlStringA& CAtlStringA::operator+=(const CAtlStringA& str)
{
    return Append(str);
}

CAtlStringA& CAtlStringA::operator+=(const char* lpsz)
{
    ZOLTA_ASSERT_TEXT(lpsz != nullptr, "lpsz != __null");
    ConcatInPlace(static_cast<int>(std::strlen(lpsz)), lpsz);
    return *this;
}

CAtlStringA& CAtlStringA::operator+=(char ch)
{
    return AppendChar(ch);
}

CAtlStringA& CAtlStringA::operator+=(wchar_t ch)
{
    return AppendChar(static_cast<char>(static_cast<unsigned char>(ch & 0xFF)));
}

CAtlStringA& CAtlStringA::operator+=(const wchar_t* uca)
{
    ZOLTA_ASSERT_TEXT(uca != nullptr, "uca != __null");
    return Append(CAtlStringA(uca, static_cast<int>(std::wcslen(uca))));
}

CAtlStringA& CAtlStringA::operator+=(const CAtlString& str)
{
    return Append(CAtlStringA(str));
}

CAtlStringA operator+(const CAtlStringA& string1, const CAtlStringA& string2)
{
    CAtlStringA s;
    s.ConcatCopy(string1.GetLength(), string1.m_pchData, string2.GetLength(), string2.m_pchData);
    return s;
}

CAtlStringA operator+(const CAtlStringA& string, char ch)
{
    CAtlStringA s;
    s.ConcatCopy(string.GetLength(), string.m_pchData, 1, &ch);
    return s;
}

CAtlStringA operator+(char ch, const CAtlStringA& string)
{
    CAtlStringA s;
    s.ConcatCopy(1, &ch, string.GetLength(), string.m_pchData);
    return s;
}

CAtlStringA operator+(const CAtlStringA& string, const char* lpsz)
{
    ZOLTA_ASSERT_TEXT(lpsz != nullptr, "lpsz != __null");
    CAtlStringA s;
    s.ConcatCopy(string.GetLength(), string.m_pchData, static_cast<int>(std::strlen(lpsz)), lpsz);
    return s;
}

CAtlStringA operator+(const char* lpsz, const CAtlStringA& string)
{
    ZOLTA_ASSERT_TEXT(lpsz != nullptr, "lpsz != __null");
    CAtlStringA s;
    s.ConcatCopy(static_cast<int>(std::strlen(lpsz)), lpsz, string.GetLength(), string.m_pchData);
    return s;
}

CAtlStringA operator+(const CAtlStringA& string, const wchar_t* lpsz)
{
    ZOLTA_ASSERT_TEXT(lpsz != nullptr, "lpsz != __null");
    return string + CAtlStringA(lpsz, static_cast<int>(std::wcslen(lpsz)));
}

CAtlStringA operator+(const wchar_t* lpsz, const CAtlStringA& string)
{
    ZOLTA_ASSERT_TEXT(lpsz != nullptr, "lpsz != __null");
    return CAtlStringA(lpsz, static_cast<int>(std::wcslen(lpsz))) + string;
}

CAtlStringA operator+(const CAtlStringA& string, const CAtlString& str)
{
    return string + CAtlStringA(str);
}

// ---------------------------------------------------------------------------------------------
// Extraction

CAtlStringA CAtlStringA::Mid(int nFirst, int nCount) const
{
    const int nLength = GetData()->nDataLength;
    if (nFirst < 0)
        nFirst = 0;
    if (nCount < 0)
        nCount = 0;
    if (static_cast<int64_t>(nFirst) + nCount > nLength)
        nCount = nLength - nFirst;
    if (nFirst > nLength)
        nCount = 0;
    // Unlike the wide class, a start past the end is a contract violation here.
    ZOLTA_ASSERT_TEXT(static_cast<int64_t>(nFirst) + nCount <= nLength, "nFirst + nCount <= GetData()->nDataLength");
    if (nFirst == 0 && nCount == nLength)
        return *this;
    CAtlStringA dest;
    AllocCopy(dest, nCount, nFirst, 0);
    return dest;
}

CAtlStringA CAtlStringA::Mid(int nFirst) const
{
    return Mid(nFirst, GetData()->nDataLength - (nFirst < 0 ? 0 : nFirst));
}

CAtlStringA CAtlStringA::Left(int nCount) const
{
    if (nCount < 0)
        nCount = 0;
    if (nCount >= GetData()->nDataLength)
        return *this;
    CAtlStringA dest;
    AllocCopy(dest, nCount, 0, 0);
    return dest;
}

CAtlStringA CAtlStringA::Right(int nCount) const
{
    if (nCount < 0)
        nCount = 0;
    const int nLength = GetData()->nDataLength;
    if (nCount >= nLength)
        return *this;
    CAtlStringA dest;
    AllocCopy(dest, nCount, nLength - nCount, 0);
    return dest;
}

// ---------------------------------------------------------------------------------------------
// Searching

int CAtlStringA::Find(char ch, int nStart) const
{
    if (nStart < 0)
        nStart = 0;
    if (nStart >= GetData()->nDataLength)
        return -1;
    const char* lpsz = std::strchr(m_pchData + nStart, ch);
    return lpsz == nullptr ? -1 : static_cast<int>(lpsz - m_pchData);
}

int CAtlStringA::Find(const char* sub, int nStart) const
{
    ZOLTA_ASSERT_TEXT(sub != nullptr, "sub != __null");
    if (nStart < 0)
        nStart = 0;
    if (nStart >= GetData()->nDataLength)
        return -1;
    // strstr: an empty sub matches at the start position.
    const char* lpsz = std::strstr(m_pchData + nStart, sub);
    return lpsz == nullptr ? -1 : static_cast<int>(lpsz - m_pchData);
}

int CAtlStringA::ReverseFind(char ch) const
{
    const char* lpsz = std::strrchr(m_pchData, ch);
    return lpsz == nullptr ? -1 : static_cast<int>(lpsz - m_pchData);
}

int CAtlStringA::FindOneOf(const char* lpszCharSet) const
{
    ZOLTA_ASSERT_TEXT(lpszCharSet != nullptr, "lpszCharSet != __null");
    const char* lpsz = std::strpbrk(m_pchData, lpszCharSet);
    return lpsz == nullptr ? -1 : static_cast<int>(lpsz - m_pchData);
}

// ---------------------------------------------------------------------------------------------
// Editing

int CAtlStringA::Replace(char chOld, char chNew)
{
    if (chOld == chNew)
        return 0;
    CopyBeforeWrite();
    int nCount = 0;
    const int nLength = GetData()->nDataLength;
    for (int i = 0; i < nLength; ++i) {
        if (m_pchData[i] == chOld) {
            m_pchData[i] = chNew;
            ++nCount;
        }
    }
    return nCount;
}

int CAtlStringA::Replace(const char* lpszOld, const char* lpszNew)
{
    ZOLTA_ASSERT_TEXT(lpszOld != nullptr, "caOld != __null");
    ZOLTA_ASSERT_TEXT(lpszNew != nullptr, "caNew != __null");
    const size_t nOldLength = std::strlen(lpszOld);
    CAtlStringA result;
    int nCount = 0;
    const char* position = m_pchData;
    // An empty old text would match everywhere without moving on.
    if (nOldLength > 0 && std::strcmp(lpszOld, lpszNew) != 0) {
        const int nNewLength = static_cast<int>(std::strlen(lpszNew));
        while (const char* match = std::strstr(position, lpszOld)) {
            result.ConcatInPlace(static_cast<int>(match - position), position);
            result.ConcatInPlace(nNewLength, lpszNew);
            ++nCount;
            position = match + nOldLength;
        }
    }
    result.ConcatInPlace(static_cast<int>(std::strlen(position)), position);
    *this = result;
    return nCount;
}

int CAtlStringA::Remove(char chRemove)
{
    CopyBeforeWrite();
    CAtlStringAData* pData = GetData();
    if (pData == _afxDataANil)
        return 0;
    char* source = m_pchData;
    char* dest = m_pchData;
    char* const end = m_pchData + pData->nDataLength;
    for (; source < end; ++source) {
        if (*source != chRemove)
            *dest++ = *source;
    }
    *dest = 0;
    const int nCount = static_cast<int>(source - dest);
    pData->nDataLength -= nCount;
    return nCount;
}

int CAtlStringA::Insert(int nIndex, char ch)
{
    const char text[2] = {ch, 0};
    return Insert(nIndex, text);
}

int CAtlStringA::Insert(int nIndex, const char* pstr)
{
    if (nIndex < 0)
        nIndex = 0;
    const int nInsertLength = pstr != nullptr ? static_cast<int>(std::strlen(pstr)) : 0;
    int nNewLength = GetData()->nDataLength;
    if (nInsertLength <= 0)
        return nNewLength;

    // The text may be a piece of this very string, which is about to move.
    const std::string inserted(pstr, static_cast<size_t>(nInsertLength));
    CopyBeforeWrite();
    if (nIndex > nNewLength)
        nIndex = nNewLength;
    nNewLength += nInsertLength;

    CAtlStringAData* pOldData = GetData();
    if (pOldData->nAllocLength < nNewLength) {
        char* pstrOld = m_pchData;
        AllocBuffer(nNewLength);
        std::memcpy(m_pchData, pstrOld, (static_cast<size_t>(pOldData->nDataLength) + 1));
        Release(pOldData);
    }
    std::memmove(m_pchData + nIndex + nInsertLength, m_pchData + nIndex,
                 (static_cast<size_t>(nNewLength - nIndex - nInsertLength) + 1));
    std::memcpy(m_pchData + nIndex, inserted.data(), static_cast<size_t>(nInsertLength));
    GetData()->nDataLength = nNewLength;
    return nNewLength;
}

int CAtlStringA::Delete(int nIndex, int nCount)
{
    if (nIndex < 0)
        nIndex = 0;
    const int nLength = GetData()->nDataLength;
    if (nCount <= 0 || nIndex >= nLength)
        return nLength;
    if (nCount > nLength - nIndex)
        nCount = nLength - nIndex;
    CopyBeforeWrite();
    const int nCharsToCopy = nLength - (nIndex + nCount) + 1;
    std::memmove(m_pchData + nIndex, m_pchData + nIndex + nCount, static_cast<size_t>(nCharsToCopy));
    GetData()->nDataLength = nLength - nCount;
    return nLength - nCount;
}

void CAtlStringA::TrimLeftWhile(bool (*matches)(char, const void*), const void* context)
{
    CopyBeforeWrite();
    const int nLength = GetData()->nDataLength;
    int nSkip = 0;
    while (nSkip < nLength && matches(m_pchData[nSkip], context))
        ++nSkip;
    if (nSkip == 0)
        return;
    const int nNewLength = nLength - nSkip;
    std::memmove(m_pchData, m_pchData + nSkip, (static_cast<size_t>(nNewLength) + 1));
    GetData()->nDataLength = nNewLength;
}

void CAtlStringA::TrimRightWhile(bool (*matches)(char, const void*), const void* context)
{
    CopyBeforeWrite();
    const int nLength = GetData()->nDataLength;
    int nNewLength = nLength;
    while (nNewLength > 0 && matches(m_pchData[nNewLength - 1], context))
        --nNewLength;
    if (nNewLength != nLength)
        SetLengthAndTerminate(nNewLength);
}

CAtlStringA& CAtlStringA::TrimLeft()
{
    TrimLeftWhile(IsWhitespace, nullptr);
    return *this;
}

CAtlStringA& CAtlStringA::TrimLeft(char chTarget)
{
    TrimLeftWhile(IsTargetChar, &chTarget);
    return *this;
}

CAtlStringA& CAtlStringA::TrimLeft(const char* lpszTargets)
{
    ZOLTA_ASSERT_TEXT(lpszTargets != nullptr, "lpszTargets != __null");
    TrimLeftWhile(IsInTargetList, lpszTargets);
    return *this;
}

CAtlStringA& CAtlStringA::TrimRight()
{
    TrimRightWhile(IsWhitespace, nullptr);
    return *this;
}

CAtlStringA& CAtlStringA::TrimRight(char chTarget)
{
    TrimRightWhile(IsTargetChar, &chTarget);
    return *this;
}

CAtlStringA& CAtlStringA::TrimRight(const char* lpszTargetList)
{
    ZOLTA_ASSERT_TEXT(lpszTargetList != nullptr, "lpszTargetList != __null");
    TrimRightWhile(IsInTargetList, lpszTargetList);
    return *this;
}

CAtlStringA& CAtlStringA::Trim()
{
    return TrimRight().TrimLeft();
}

CAtlStringA& CAtlStringA::Trim(char chTarget)
{
    return TrimRight(chTarget).TrimLeft(chTarget);
}

CAtlStringA& CAtlStringA::Trim(const char* lpszTargets)
{
    return TrimRight(lpszTargets).TrimLeft(lpszTargets);
}

CAtlStringA& CAtlStringA::MakeUpper()
{
    CopyBeforeWrite();
    const int nLength = GetData()->nDataLength;
    for (int i = 0; i < nLength; ++i)
        m_pchData[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(m_pchData[i])));
    return *this;
}

CAtlStringA& CAtlStringA::MakeLower()
{
    CopyBeforeWrite();
    const int nLength = GetData()->nDataLength;
    for (int i = 0; i < nLength; ++i)
        m_pchData[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(m_pchData[i])));
    return *this;
}

CAtlStringA& CAtlStringA::MakeReverse()
{
    CopyBeforeWrite();
    const int nLength = GetData()->nDataLength;
    for (int front = 0, back = nLength - 1; front < back; ++front, --back) {
        const char parked = m_pchData[front];
        m_pchData[front] = m_pchData[back];
        m_pchData[back] = parked;
    }
    return *this;
}

// ---------------------------------------------------------------------------------------------
// Comparison

int CAtlStringA::Compare(const char* lpsz) const
{
    return Collate(lpsz, true);
}

int CAtlStringA::CompareNoCase(const char* lpsz) const
{
    return Collate(lpsz, false);
}

int CAtlStringA::Collate(const char* lpsz, bool bCaseSensitive) const
{
    ZOLTA_ASSERT_TEXT(lpsz != nullptr, "lpsz != __null");
    return bCaseSensitive ? std::strcmp(m_pchData, lpsz) : strcasecmp(m_pchData, lpsz);
}

int CAtlStringA::CollateNoCase(const char* lpsz) const
{
    return Collate(lpsz, false);
}

// ---------------------------------------------------------------------------------------------
// Formatting

// Formats into a malloc block that doubles until the text fits; nullptr when memory runs out.
char* CAtlStringA::FormatToNewBuffer(const char* caFormat, va_list args)
{
    size_t nSize = 256;
    char* buffer = static_cast<char*>(std::malloc(nSize));
    if (buffer == nullptr)
        return nullptr;
    for (;;) {
        va_list argsCopy;
        va_copy(argsCopy, args);
        const int nWritten = std::vsnprintf(buffer, nSize, caFormat, argsCopy);
        va_end(argsCopy);
        if (nWritten >= 0 && static_cast<size_t>(nWritten) < nSize)
            return buffer;
        if (nSize > SIZE_MAX / 2) {
            std::free(buffer);
            return nullptr;
        }
        nSize *= 2;
        char* grown = static_cast<char*>(std::realloc(buffer, nSize));
        if (grown == nullptr) {
            std::free(buffer);
            return nullptr;
        }
        buffer = grown;
    }
}

void CAtlStringA::Format(const char* lpszFormat, ...)
{
    ZOLTA_ASSERT_TEXT(lpszFormat != nullptr, "lpszFormat != __null");
    va_list args;
    va_start(args, lpszFormat);
    FormatV(lpszFormat, args);
    va_end(args);
}

void CAtlStringA::FormatV(const char* caFormat, va_list args)
{
    ZOLTA_ASSERT_TEXT(caFormat != nullptr, "caFormat != __null");
    char* buffer = FormatToNewBuffer(caFormat, args);
    if (buffer == nullptr)
        return;
    *this = buffer;
    std::free(buffer);
}

void CAtlStringA::AppendFormat(const char* format, ...)
{
    ZOLTA_ASSERT_TEXT(format != nullptr, "format != __null");
    va_list args;
    va_start(args, format);
    AppendFormatV(format, args);
    va_end(args);
}

void CAtlStringA::AppendFormatV(const char* caFormat, va_list args)
{
    ZOLTA_ASSERT_TEXT(caFormat != nullptr, "caFormat != __null");
    char* buffer = FormatToNewBuffer(caFormat, args);
    if (buffer == nullptr)
        return;
    ConcatInPlace(static_cast<int>(std::strlen(buffer)), buffer);
    std::free(buffer);
}

// ---------------------------------------------------------------------------------------------
// Extraction by character set

CAtlStringA CAtlStringA::SpanIncluding(const char* lpszCharSet) const
{
    ZOLTA_ASSERT_TEXT(lpszCharSet != nullptr, "lpszCharSet != __null");
    return Left(static_cast<int>(std::strspn(m_pchData, lpszCharSet)));
}

CAtlStringA CAtlStringA::SpanExcluding(const char* lpszCharSet) const
{
    ZOLTA_ASSERT_TEXT(lpszCharSet != nullptr, "lpszCharSet != __null");
    return Left(static_cast<int>(std::strcspn(m_pchData, lpszCharSet)));
}

// ---------------------------------------------------------------------------------------------
// Array helpers

void ConstructElements(CAtlStringA* pElements, int nCount)
{
    ZOLTA_ASSERT_TEXT(nCount == 0 || pElements != nullptr, "nCount == 0 || pElements != __null");
    for (int i = 0; i < nCount; ++i)
        pElements[i].Init();
}

void DestructElements(CAtlStringA* pElements, int nCount)
{
    ZOLTA_ASSERT_TEXT(nCount == 0 || pElements != nullptr, "nCount == 0 || pElements != __null");
    for (int i = 0; i < nCount; ++i)
        pElements[i].Release();
}

void CopyElements(CAtlStringA* pDest, const CAtlStringA* pSrc, int nCount)
{
    ZOLTA_ASSERT_TEXT(nCount == 0 || pDest != nullptr, "nCount == 0 || pDest != __null");
    ZOLTA_ASSERT_TEXT(nCount == 0 || pSrc != nullptr, "nCount == 0 || pSrc != __null");
    for (int i = 0; i < nCount; ++i)
        pDest[i] = pSrc[i];
}

// ---------------------------------------------------------------------------------------------
// Free comparison operators

bool operator==(const CAtlStringA& s1, const CAtlStringA& s2) { return CompareStrings(s1, s2) == 0; }
bool operator==(const CAtlStringA& s1, const char* s2) { return s1.Compare(s2) == 0; }
bool operator==(const char* s1, const CAtlStringA& s2) { return s2.Compare(s1) == 0; }
bool operator!=(const CAtlStringA& s1, const CAtlStringA& s2) { return CompareStrings(s1, s2) != 0; }
bool operator!=(const CAtlStringA& s1, const char* s2) { return s1.Compare(s2) != 0; }
bool operator!=(const char* s1, const CAtlStringA& s2) { return s2.Compare(s1) != 0; }
bool operator<(const CAtlStringA& s1, const CAtlStringA& s2) { return CompareStrings(s1, s2) < 0; }
bool operator<(const CAtlStringA& s1, const char* s2) { return s1.Compare(s2) < 0; }
bool operator<(const char* s1, const CAtlStringA& s2) { return s2.Compare(s1) > 0; }
bool operator>(const CAtlStringA& s1, const CAtlStringA& s2) { return CompareStrings(s1, s2) > 0; }
bool operator>(const CAtlStringA& s1, const char* s2) { return s1.Compare(s2) > 0; }
bool operator>(const char* s1, const CAtlStringA& s2) { return s2.Compare(s1) < 0; }
bool operator<=(const CAtlStringA& s1, const CAtlStringA& s2) { return CompareStrings(s1, s2) <= 0; }
bool operator<=(const CAtlStringA& s1, const char* s2) { return s1.Compare(s2) <= 0; }
bool operator<=(const char* s1, const CAtlStringA& s2) { return s2.Compare(s1) >= 0; }
bool operator>=(const CAtlStringA& s1, const CAtlStringA& s2) { return CompareStrings(s1, s2) >= 0; }
bool operator>=(const CAtlStringA& s1, const char* s2) { return s1.Compare(s2) >= 0; }
bool operator>=(const char* s1, const CAtlStringA& s2) { return s2.Compare(s1) <= 0; }

void PrintTo(const CAtlStringA& str, std::ostream* os)
{
    *os << '"' << std::string_view(str.GetString(), static_cast<size_t>(str.GetLength())) << '"';
}
