#include "CAtlString.h"

#include "CAtlStringA.h"
#include "UniCharUtils.h"
#include "ZoltaAssert.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <new>
#include <ostream>
#include <string>
#include <string_view>

namespace {

// The shared empty block: header, then the one zero character.
struct NilBlock {
    CAtlStringData header;
    wchar_t terminator;
};
static_assert(offsetof(NilBlock, terminator) == sizeof(CAtlStringData),
              "the characters must follow the header directly");

NilBlock g_nilBlock = {{-1, 0, 0}, 0};

void FreeData(CAtlStringData* pData)
{
    ::operator delete(pData);
}

bool IsWhitespace(wchar_t ch, const void*)
{
    return std::iswspace(static_cast<wint_t>(ch)) != 0;
}

bool IsTargetChar(wchar_t ch, const void* context)
{
    return ch == *static_cast<const wchar_t*>(context);
}

bool IsInTargetList(wchar_t ch, const void* context)
{
    return ch != 0 && std::wcschr(static_cast<const wchar_t*>(context), ch) != nullptr;
}

// A copy of the format in which every "%s" reads "%ls", so that "%s" takes a wide string as
// the 8-bit family of printf functions would take a narrow one. Purely textual.
std::wstring WidenStringConversions(const wchar_t* format)
{
    std::wstring result;
    for (const wchar_t* p = format; *p != 0; ++p) {
        if (p[0] == L'%' && p[1] == L's') {
            result += L"%ls";
            ++p;
        } else {
            result += *p;
        }
    }
    return result;
}

int CompareStrings(const wchar_t* s1, const wchar_t* s2)
{
    return std::wcscmp(s1, s2);
}

} // namespace

CAtlStringData* const CAtlString::_afxDataNil = &g_nilBlock.header;

// ---------------------------------------------------------------------------------------------
// Block management

void CAtlString::Init()
{
    m_pchData = _afxDataNil->data();
}

CAtlStringData* CAtlString::GetData() const
{
    ZOLTA_ASSERT_TEXT(m_pchData != nullptr, "m_pchData != __null");
    return reinterpret_cast<CAtlStringData*>(m_pchData) - 1;
}

void CAtlString::AllocBuffer(int nLen)
{
    ZOLTA_ASSERT_TEXT(nLen >= 0, "nLen >= 0");
    ZOLTA_ASSERT_TEXT(nLen <= 2147483647 - 1, "nLen <= 2147483647-1");
    if (nLen == 0) {
        Init();
        return;
    }
    // Exactly as long as asked for: no spare capacity.
    const size_t bytes = sizeof(CAtlStringData) + (static_cast<size_t>(nLen) + 1) * sizeof(wchar_t);
    CAtlStringData* pData = static_cast<CAtlStringData*>(::operator new(bytes));
    pData->nRefs = 1;
    pData->nDataLength = nLen;
    pData->nAllocLength = nLen;
    pData->data()[nLen] = 0;
    m_pchData = pData->data();
}

void CAtlString::Release()
{
    CAtlStringData* pData = GetData();
    if (pData == _afxDataNil)
        return;
    ZOLTA_ASSERT_TEXT(pData->nRefs != 0, "GetData()->nRefs != 0");
    if (--pData->nRefs <= 0)
        FreeData(pData);
    Init();
}

void CAtlString::Release(CAtlStringData* pData)
{
    if (pData == _afxDataNil)
        return;
    ZOLTA_ASSERT_TEXT(pData->nRefs != 0, "pData->nRefs != 0");
    if (--pData->nRefs <= 0)
        FreeData(pData);
}

void CAtlString::CopyBeforeWrite()
{
    CAtlStringData* pData = GetData();
    if (pData->nRefs > 1) {
        Release();
        AllocBuffer(pData->nDataLength);
        if (GetData() != _afxDataNil)
            std::memcpy(m_pchData, pData->data(), (static_cast<size_t>(pData->nDataLength) + 1) * sizeof(wchar_t));
    }
    ZOLTA_ASSERT_TEXT(GetData()->nRefs <= 1, "GetData()->nRefs <= 1");
}

void CAtlString::AllocBeforeWrite(int nLen)
{
    CAtlStringData* pData = GetData();
    if (pData->nRefs > 1 || nLen > pData->nAllocLength) {
        Release();
        AllocBuffer(nLen);
    }
}

// Sets the length and terminator; the empty block is left untouched (its values never change).
void CAtlString::SetLengthAndTerminate(int nLength)
{
    CAtlStringData* pData = GetData();
    if (pData == _afxDataNil)
        return;
    pData->nDataLength = nLength;
    m_pchData[nLength] = 0;
}

void CAtlString::AssignCopy(int nSrcLen, const wchar_t* lpszSrcData)
{
    AllocBeforeWrite(nSrcLen);
    if (nSrcLen > 0)
        std::memmove(m_pchData, lpszSrcData, static_cast<size_t>(nSrcLen) * sizeof(wchar_t));
    SetLengthAndTerminate(nSrcLen);
}

void CAtlString::ConcatCopy(int nSrc1Len, const wchar_t* lpszSrc1Data, int nSrc2Len, const wchar_t* lpszSrc2Data)
{
    const int nNewLen = nSrc1Len + nSrc2Len;
    if (nNewLen == 0)
        return;
    AllocBuffer(nNewLen);
    std::memcpy(m_pchData, lpszSrc1Data, static_cast<size_t>(nSrc1Len) * sizeof(wchar_t));
    std::memcpy(m_pchData + nSrc1Len, lpszSrc2Data, static_cast<size_t>(nSrc2Len) * sizeof(wchar_t));
}

void CAtlString::ConcatInPlace(int nSrcLen, const wchar_t* lpszSrcData)
{
    if (nSrcLen == 0)
        return;
    CAtlStringData* pOldData = GetData();
    if (pOldData->nRefs > 1 || pOldData->nDataLength + nSrcLen > pOldData->nAllocLength) {
        // One allocation of exactly the sum; the old block stays alive until both parts are copied.
        ConcatCopy(pOldData->nDataLength, m_pchData, nSrcLen, lpszSrcData);
        Release(pOldData);
    } else {
        std::memcpy(m_pchData + pOldData->nDataLength, lpszSrcData, static_cast<size_t>(nSrcLen) * sizeof(wchar_t));
        pOldData->nDataLength += nSrcLen;
        m_pchData[pOldData->nDataLength] = 0;
    }
}

void CAtlString::AllocCopy(CAtlString& dest, int nCopyLen, int nCopyIndex, int nExtraLen) const
{
    const int nNewLen = nCopyLen + nExtraLen;
    if (nNewLen == 0) {
        dest.Init();
        return;
    }
    dest.AllocBuffer(nNewLen);
    std::memcpy(dest.m_pchData, m_pchData + nCopyIndex, static_cast<size_t>(nCopyLen) * sizeof(wchar_t));
}

// Rule of the 8-bit road: the length is the byte count, the bytes are decoded as UTF-8. With
// multi-byte sequences fewer characters are decoded than the length says; the rest stays zero.
void CAtlString::AssignFromUtf8Bytes(const char* bytes, int nLength)
{
    AllocBeforeWrite(nLength);
    if (nLength > 0) {
        std::wmemset(m_pchData, 0, static_cast<size_t>(nLength));
        CAtoWCA32(bytes, m_pchData, nLength);
    }
    SetLengthAndTerminate(nLength);
}

// ---------------------------------------------------------------------------------------------
// Construction and assignment

CAtlString::CAtlString()
{
    Init();
}

CAtlString::CAtlString(const CAtlString& stringSrc)
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

CAtlString::CAtlString(const wchar_t* lpsz)
{
    Init();
    if (lpsz != nullptr)
        AssignCopy(static_cast<int>(std::wcslen(lpsz)), lpsz);
}

CAtlString::CAtlString(const wchar_t* lpch, int nLength)
{
    Init();
    if (nLength != 0) {
        ZOLTA_ASSERT_TEXT(lpch != nullptr, "lpch != __null");
        AllocBuffer(nLength);
        std::memcpy(m_pchData, lpch, static_cast<size_t>(nLength) * sizeof(wchar_t));
    }
}

CAtlString::CAtlString(wchar_t ch, int nRepeat)
{
    Init();
    if (nRepeat >= 1) {
        AllocBuffer(nRepeat);
        std::wmemset(m_pchData, ch, static_cast<size_t>(nRepeat));
    }
}

CAtlString::CAtlString(const char* lpsz)
{
    Init();
    if (lpsz != nullptr)
        AssignFromUtf8Bytes(lpsz, static_cast<int>(std::strlen(lpsz)));
}

CAtlString::CAtlString(const char* lpch, int nLength)
{
    Init();
    if (nLength != 0) {
        ZOLTA_ASSERT_TEXT(lpch != nullptr, "lpch != __null");
        AssignFromUtf8Bytes(lpch, nLength);
    }
}

CAtlString::CAtlString(const CAtlStringA& stringSrc)
{
    Init();
    const char* bytes = stringSrc;
    AssignFromUtf8Bytes(bytes, static_cast<int>(std::strlen(bytes)));
}

CAtlString::CAtlString(const QString& str)
{
    Init();
    const int nLength = static_cast<int>(str.length());
    if (nLength > 0) {
        AllocBuffer(nLength);
        // Characters outside the BMP take two QChars but one wide character.
        const int nWritten = static_cast<int>(str.toWCharArray(m_pchData));
        if (nWritten == 0)
            Release();
        else
            SetLengthAndTerminate(nWritten);
    }
}

CAtlString::~CAtlString()
{
    Release();
}

CAtlString& CAtlString::operator=(const CAtlString& stringSrc)
{
    if (m_pchData == stringSrc.m_pchData)
        return *this;
    const bool targetLocked = GetData()->nRefs < 0 && GetData() != _afxDataNil;
    if (targetLocked || stringSrc.GetData()->nRefs < 0) {
        AssignCopy(stringSrc.GetData()->nDataLength, stringSrc.m_pchData);
    } else {
        Release();
        m_pchData = stringSrc.m_pchData;
        ++GetData()->nRefs;
    }
    return *this;
}

CAtlString& CAtlString::operator=(wchar_t ch)
{
    AssignCopy(1, &ch);
    return *this;
}

CAtlString& CAtlString::operator=(const wchar_t* lpsz)
{
    AssignCopy(lpsz != nullptr ? static_cast<int>(std::wcslen(lpsz)) : 0, lpsz);
    return *this;
}

CAtlString& CAtlString::operator=(const char* lpsz)
{
    AssignFromUtf8Bytes(lpsz, lpsz != nullptr ? static_cast<int>(std::strlen(lpsz)) : 0);
    return *this;
}

CAtlString& CAtlString::operator=(const CAtlStringA& stringSrc)
{
    return *this = static_cast<const char*>(stringSrc);
}

CAtlString& CAtlString::operator=(const QString& str)
{
    return *this = CAtlString(str);
}

// ---------------------------------------------------------------------------------------------
// Length and index access

int CAtlString::GetLength() const
{
    return GetData()->nDataLength;
}

bool CAtlString::IsEmpty() const
{
    return GetData()->nDataLength == 0;
}

void CAtlString::Empty()
{
    CAtlStringData* pData = GetData();
    if (pData->nDataLength == 0)
        return;
    if (pData->nRefs >= 0)
        Release();
    else
        *this = L""; // a locked buffer keeps its allocation
}

wchar_t CAtlString::GetAt(int nIndex) const
{
    ZOLTA_ASSERT_TEXT(nIndex >= 0, "nIndex >= 0");
    ZOLTA_ASSERT_TEXT(nIndex < GetData()->nDataLength, "nIndex < GetData()->nDataLength");
    return m_pchData[nIndex];
}

wchar_t CAtlString::operator[](int nIndex) const
{
    return GetAt(nIndex);
}

void CAtlString::SetAt(int nIndex, wchar_t ch)
{
    ZOLTA_ASSERT_TEXT(nIndex >= 0, "nIndex >= 0");
    ZOLTA_ASSERT_TEXT(nIndex < GetData()->nDataLength, "nIndex < GetData()->nDataLength");
    CopyBeforeWrite();
    m_pchData[nIndex] = ch;
}

QString CAtlString::ToQString() const
{
    return QString::fromWCharArray(m_pchData, GetLength());
}

CAtlString CAtlString::FromUtf8(const char* utf8, int nLength)
{
    if (utf8 == nullptr)
        return CAtlString();
    return CAtlString(QString::fromUtf8(utf8, nLength < 0 ? static_cast<qsizetype>(std::strlen(utf8)) : nLength));
}

CAtlStringA CAtlString::ToUtf8() const
{
    return CAtlStringA(ToQString());
}

// ---------------------------------------------------------------------------------------------
// Raw buffer access

wchar_t* CAtlString::GetBuffer(int nMinBufLength)
{
    ZOLTA_ASSERT_TEXT(nMinBufLength >= 0, "nMinBufLength >= 0");
    CAtlStringData* pOldData = GetData();
    if (pOldData->nRefs > 1 || nMinBufLength > pOldData->nAllocLength) {
        const int nOldLen = pOldData->nDataLength;
        if (nMinBufLength < nOldLen)
            nMinBufLength = nOldLen;
        AllocBuffer(nMinBufLength);
        if (GetData() != _afxDataNil) {
            std::memcpy(m_pchData, pOldData->data(), (static_cast<size_t>(nOldLen) + 1) * sizeof(wchar_t));
            GetData()->nDataLength = nOldLen;
        }
        Release(pOldData);
    }
    return m_pchData;
}

wchar_t* CAtlString::GetBuffer()
{
    return m_pchData;
}

wchar_t* CAtlString::GetBufferSetLength(int nNewLength)
{
    ZOLTA_ASSERT_TEXT(nNewLength >= 0, "nNewLength >= 0");
    GetBuffer(nNewLength);
    SetLengthAndTerminate(nNewLength);
    return m_pchData;
}

void CAtlString::ReleaseBuffer(int nNewLength)
{
    CopyBeforeWrite();
    CAtlStringData* pData = GetData();
    if (nNewLength == -1) {
        // Keeps the length a GetBuffer caller had; measures only a buffer that had none.
        nNewLength = pData->nDataLength;
        if (nNewLength == 0) {
            const size_t measured = std::wcslen(m_pchData);
            nNewLength = measured < static_cast<size_t>(pData->nAllocLength) ? static_cast<int>(measured)
                                                                           : pData->nAllocLength;
        }
    }
    ZOLTA_ASSERT_TEXT(nNewLength <= pData->nAllocLength, "nNewLength <= GetData()->nAllocLength");
    ZOLTA_ASSERT_TEXT(nNewLength >= 0, "nNewLength >= 0");
    SetLengthAndTerminate(nNewLength);
}

wchar_t* CAtlString::LockBuffer()
{
    wchar_t* lpsz = GetBuffer(0);
    if (GetData() != _afxDataNil)
        GetData()->nRefs = -1;
    return lpsz;
}

void CAtlString::UnlockBuffer()
{
    ZOLTA_ASSERT_TEXT(GetData()->nRefs == -1, "GetData()->nRefs == -1");
    if (GetData() != _afxDataNil)
        GetData()->nRefs = 1;
}

void CAtlString::FreeExtra()
{
    CAtlStringData* pOldData = GetData();
    if (pOldData->nDataLength == pOldData->nAllocLength)
        return;
    AllocBuffer(pOldData->nDataLength);
    std::memcpy(m_pchData, pOldData->data(), static_cast<size_t>(pOldData->nDataLength) * sizeof(wchar_t));
    Release(pOldData);
}

void CAtlString::Truncate(int nNewLength)
{
    ZOLTA_ASSERT_TEXT(nNewLength <= GetLength(), "nNewLength <= GetLength()");
    GetBuffer(nNewLength);
    ReleaseBuffer(nNewLength);
}

// ---------------------------------------------------------------------------------------------
// Appending

CAtlString& CAtlString::Append(const CAtlString& str)
{
    ConcatInPlace(str.GetLength(), str.m_pchData);
    return *this;
}

CAtlString& CAtlString::Append(const wchar_t* pszSrc)
{
    ZOLTA_ASSERT_TEXT(pszSrc != nullptr, "pszSrc != __null");
    ConcatInPlace(static_cast<int>(std::wcslen(pszSrc)), pszSrc);
    return *this;
}

CAtlString& CAtlString::Append(const wchar_t* pszSrc, int nLength)
{
    ZOLTA_ASSERT_TEXT(pszSrc != nullptr, "pszSrc != __null");
    ZOLTA_ASSERT_TEXT(nLength >= 0, "nLength >= 0");
    ConcatInPlace(nLength, pszSrc);
    return *this;
}

CAtlString& CAtlString::Append(const char* ca)
{
    ZOLTA_ASSERT_TEXT(ca != nullptr, "ca != __null");
    return Append(CAtlString(ca));
}

CAtlString& CAtlString::Append(const CAtlStringA& str)
{
    return Append(CAtlString(str));
}

CAtlString& CAtlString::AppendChar(wchar_t ch)
{
    ConcatInPlace(1, &ch);
    return *this;
}

CAtlString& CAtlString::operator+=(const CAtlString& str)
{
    return Append(str);
}

CAtlString& CAtlString::operator+=(const wchar_t* lpsz)
{
    ZOLTA_ASSERT_TEXT(lpsz != nullptr, "lpsz != __null");
    ConcatInPlace(static_cast<int>(std::wcslen(lpsz)), lpsz);
    return *this;
}

CAtlString& CAtlString::operator+=(wchar_t ch)
{
    return AppendChar(ch);
}

CAtlString& CAtlString::operator+=(char ch)
{
    return AppendChar(static_cast<wchar_t>(static_cast<unsigned char>(ch)));
}

CAtlString& CAtlString::operator+=(const char* ca)
{
    ZOLTA_ASSERT_TEXT(ca != nullptr, "ca != __null");
    return Append(CAtlString(ca));
}

CAtlString& CAtlString::operator+=(const CAtlStringA& str)
{
    return Append(CAtlString(str));
}

CAtlString operator+(const CAtlString& string1, const CAtlString& string2)
{
    CAtlString s;
    s.ConcatCopy(string1.GetLength(), string1.m_pchData, string2.GetLength(), string2.m_pchData);
    return s;
}

CAtlString operator+(const CAtlString& string, wchar_t ch)
{
    CAtlString s;
    s.ConcatCopy(string.GetLength(), string.m_pchData, 1, &ch);
    return s;
}

CAtlString operator+(wchar_t ch, const CAtlString& string)
{
    CAtlString s;
    s.ConcatCopy(1, &ch, string.GetLength(), string.m_pchData);
    return s;
}

CAtlString operator+(const CAtlString& string, const wchar_t* lpsz)
{
    ZOLTA_ASSERT_TEXT(lpsz != nullptr, "lpsz != __null");
    CAtlString s;
    s.ConcatCopy(string.GetLength(), string.m_pchData, static_cast<int>(std::wcslen(lpsz)), lpsz);
    return s;
}

CAtlString operator+(const wchar_t* lpsz, const CAtlString& string)
{
    ZOLTA_ASSERT_TEXT(lpsz != nullptr, "lpsz != __null");
    CAtlString s;
    s.ConcatCopy(static_cast<int>(std::wcslen(lpsz)), lpsz, string.GetLength(), string.m_pchData);
    return s;
}

CAtlString operator+(const CAtlString& string, const char* str)
{
    ZOLTA_ASSERT_TEXT(str != nullptr, "str != __null");
    return string + CAtlString(str);
}

CAtlString operator+(const char* str, const CAtlString& string)
{
    ZOLTA_ASSERT_TEXT(str != nullptr, "str != __null");
    return CAtlString(str) + string;
}

CAtlString operator+(const CAtlString& string, const CAtlStringA& str)
{
    return string + CAtlString(str);
}

// ---------------------------------------------------------------------------------------------
// Extraction

CAtlString CAtlString::Mid(int nFirst, int nCount) const
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
    ZOLTA_ASSERT_TEXT((nCount == 0) || (static_cast<int64_t>(nFirst) + nCount <= nLength),
                      "(nCount == 0) || (nFirst + nCount <= GetData()->nDataLength)");
    if (nFirst == 0 && nCount == nLength)
        return *this;
    CAtlString dest;
    AllocCopy(dest, nCount, nFirst, 0);
    return dest;
}

CAtlString CAtlString::Mid(int nFirst) const
{
    return Mid(nFirst, GetData()->nDataLength - (nFirst < 0 ? 0 : nFirst));
}

CAtlString CAtlString::Left(int nCount) const
{
    if (nCount < 0)
        nCount = 0;
    if (nCount >= GetData()->nDataLength)
        return *this;
    CAtlString dest;
    AllocCopy(dest, nCount, 0, 0);
    return dest;
}

CAtlString CAtlString::Right(int nCount) const
{
    if (nCount < 0)
        nCount = 0;
    const int nLength = GetData()->nDataLength;
    if (nCount >= nLength)
        return *this;
    CAtlString dest;
    AllocCopy(dest, nCount, nLength - nCount, 0);
    return dest;
}

// ---------------------------------------------------------------------------------------------
// Searching

int CAtlString::Find(wchar_t ch, int nStart) const
{
    if (nStart < 0)
        nStart = 0;
    if (nStart >= GetData()->nDataLength)
        return -1;
    const wchar_t* lpsz = std::wcschr(m_pchData + nStart, ch);
    return lpsz == nullptr ? -1 : static_cast<int>(lpsz - m_pchData);
}

int CAtlString::Find(const wchar_t* sub, int nStart) const
{
    ZOLTA_ASSERT_TEXT(sub != nullptr, "sub != __null");
    if (*sub == 0)
        return -1;
    const std::wstring_view text(m_pchData, static_cast<size_t>(GetLength()));
    const size_t found = text.find(sub, static_cast<size_t>(nStart));
    return found == std::wstring_view::npos ? -1 : static_cast<int>(found);
}

int CAtlString::Find(const char* sub, int nStart) const
{
    ZOLTA_ASSERT_TEXT(sub != nullptr, "sub != __null");
    return Find(CAtlString(sub).GetString(), nStart);
}

int CAtlString::ReverseFind(wchar_t ch) const
{
    const wchar_t* lpsz = std::wcsrchr(m_pchData, ch);
    return lpsz == nullptr ? -1 : static_cast<int>(lpsz - m_pchData);
}

int CAtlString::FindOneOf(const wchar_t* lpszCharSet) const
{
    ZOLTA_ASSERT_TEXT(lpszCharSet != nullptr, "lpszCharSet != __null");
    const wchar_t* lpsz = std::wcspbrk(m_pchData, lpszCharSet);
    return lpsz == nullptr ? -1 : static_cast<int>(lpsz - m_pchData);
}

int CAtlString::FindOneOf(const char* lpszCharSet) const
{
    ZOLTA_ASSERT_TEXT(lpszCharSet != nullptr, "lpszCharSet != __null");
    return FindOneOf(CAtlString(lpszCharSet).GetString());
}

// ---------------------------------------------------------------------------------------------
// Editing

int CAtlString::Replace(wchar_t chOld, wchar_t chNew)
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

int CAtlString::Replace(const wchar_t* lpszOld, const wchar_t* lpszNew)
{
    ZOLTA_ASSERT_TEXT(lpszOld != nullptr, "lpszOld != __null");
    ZOLTA_ASSERT_TEXT(lpszNew != nullptr, "lpszNew != __null");
    const size_t nOldLength = std::wcslen(lpszOld);
    CAtlString result;
    int nCount = 0;
    const wchar_t* position = m_pchData;
    // An empty old text would match everywhere without moving on.
    if (nOldLength > 0 && std::wcscmp(lpszOld, lpszNew) != 0) {
        const int nNewLength = static_cast<int>(std::wcslen(lpszNew));
        while (const wchar_t* match = std::wcsstr(position, lpszOld)) {
            result.ConcatInPlace(static_cast<int>(match - position), position);
            result.ConcatInPlace(nNewLength, lpszNew);
            ++nCount;
            position = match + nOldLength;
        }
    }
    result.ConcatInPlace(static_cast<int>(std::wcslen(position)), position);
    *this = result;
    return nCount;
}

int CAtlString::Remove(wchar_t chRemove)
{
    CopyBeforeWrite();
    CAtlStringData* pData = GetData();
    if (pData == _afxDataNil)
        return 0;
    wchar_t* source = m_pchData;
    wchar_t* dest = m_pchData;
    wchar_t* const end = m_pchData + pData->nDataLength;
    for (; source < end; ++source) {
        if (*source != chRemove)
            *dest++ = *source;
    }
    *dest = 0;
    const int nCount = static_cast<int>(source - dest);
    pData->nDataLength -= nCount;
    return nCount;
}

int CAtlString::Insert(int nIndex, wchar_t ch)
{
    const wchar_t text[2] = {ch, 0};
    return Insert(nIndex, text);
}

int CAtlString::Insert(int nIndex, const wchar_t* pstr)
{
    if (nIndex < 0)
        nIndex = 0;
    const int nInsertLength = pstr != nullptr ? static_cast<int>(std::wcslen(pstr)) : 0;
    int nNewLength = GetData()->nDataLength;
    if (nInsertLength <= 0)
        return nNewLength;

    // The text may be a piece of this very string, which is about to move.
    const std::wstring inserted(pstr, static_cast<size_t>(nInsertLength));
    CopyBeforeWrite();
    if (nIndex > nNewLength)
        nIndex = nNewLength;
    nNewLength += nInsertLength;

    CAtlStringData* pOldData = GetData();
    if (pOldData->nAllocLength < nNewLength) {
        wchar_t* pstrOld = m_pchData;
        AllocBuffer(nNewLength);
        std::memcpy(m_pchData, pstrOld, (static_cast<size_t>(pOldData->nDataLength) + 1) * sizeof(wchar_t));
        Release(pOldData);
    }
    std::memmove(m_pchData + nIndex + nInsertLength, m_pchData + nIndex,
                 (static_cast<size_t>(nNewLength - nIndex - nInsertLength) + 1) * sizeof(wchar_t));
    std::memcpy(m_pchData + nIndex, inserted.data(), static_cast<size_t>(nInsertLength) * sizeof(wchar_t));
    GetData()->nDataLength = nNewLength;
    return nNewLength;
}

int CAtlString::Delete(int nIndex, int nCount)
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
    std::memmove(m_pchData + nIndex, m_pchData + nIndex + nCount, static_cast<size_t>(nCharsToCopy) * sizeof(wchar_t));
    GetData()->nDataLength = nLength - nCount;
    return nLength - nCount;
}

void CAtlString::TrimLeftWhile(bool (*matches)(wchar_t, const void*), const void* context)
{
    CopyBeforeWrite();
    const int nLength = GetData()->nDataLength;
    int nSkip = 0;
    while (nSkip < nLength && matches(m_pchData[nSkip], context))
        ++nSkip;
    if (nSkip == 0)
        return;
    const int nNewLength = nLength - nSkip;
    std::memmove(m_pchData, m_pchData + nSkip, (static_cast<size_t>(nNewLength) + 1) * sizeof(wchar_t));
    GetData()->nDataLength = nNewLength;
}

void CAtlString::TrimRightWhile(bool (*matches)(wchar_t, const void*), const void* context)
{
    CopyBeforeWrite();
    const int nLength = GetData()->nDataLength;
    int nNewLength = nLength;
    while (nNewLength > 0 && matches(m_pchData[nNewLength - 1], context))
        --nNewLength;
    if (nNewLength != nLength)
        SetLengthAndTerminate(nNewLength);
}

CAtlString& CAtlString::TrimLeft()
{
    TrimLeftWhile(IsWhitespace, nullptr);
    return *this;
}

CAtlString& CAtlString::TrimLeft(wchar_t chTarget)
{
    TrimLeftWhile(IsTargetChar, &chTarget);
    return *this;
}

CAtlString& CAtlString::TrimLeft(const wchar_t* lpszTargets)
{
    ZOLTA_ASSERT_TEXT(lpszTargets != nullptr, "lpszTargets != __null");
    TrimLeftWhile(IsInTargetList, lpszTargets);
    return *this;
}

CAtlString& CAtlString::TrimRight()
{
    TrimRightWhile(IsWhitespace, nullptr);
    return *this;
}

CAtlString& CAtlString::TrimRight(wchar_t chTarget)
{
    TrimRightWhile(IsTargetChar, &chTarget);
    return *this;
}

CAtlString& CAtlString::TrimRight(const wchar_t* lpszTargetList)
{
    ZOLTA_ASSERT_TEXT(lpszTargetList != nullptr, "lpszTargetList != __null");
    TrimRightWhile(IsInTargetList, lpszTargetList);
    return *this;
}

CAtlString& CAtlString::Trim()
{
    return TrimRight().TrimLeft();
}

CAtlString& CAtlString::Trim(wchar_t chTarget)
{
    return TrimRight(chTarget).TrimLeft(chTarget);
}

CAtlString& CAtlString::Trim(const wchar_t* lpszTargets)
{
    return TrimRight(lpszTargets).TrimLeft(lpszTargets);
}

CAtlString& CAtlString::MakeUpper()
{
    CopyBeforeWrite();
    const int nLength = GetData()->nDataLength;
    for (int i = 0; i < nLength; ++i)
        m_pchData[i] = static_cast<wchar_t>(std::towupper(static_cast<wint_t>(m_pchData[i])));
    return *this;
}

CAtlString& CAtlString::MakeLower()
{
    CopyBeforeWrite();
    const int nLength = GetData()->nDataLength;
    for (int i = 0; i < nLength; ++i)
        m_pchData[i] = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(m_pchData[i])));
    return *this;
}

CAtlString& CAtlString::MakeReverse()
{
    CopyBeforeWrite();
    const int nLength = GetData()->nDataLength;
    if (nLength < 2)
        return *this;
    wchar_t* front = m_pchData;
    wchar_t* back = m_pchData + nLength - 1;
    while (front < back) {
        // The front character is parked in a signed 8-bit value on its way to the back.
        const signed char parked = static_cast<signed char>(*front);
        *front = *back;
        *back = static_cast<wchar_t>(parked);
        ++front;
        --back;
    }
    return *this;
}

// ---------------------------------------------------------------------------------------------
// Comparison

int CAtlString::Compare(const wchar_t* lpsz) const
{
    return Collate(lpsz, true);
}

int CAtlString::CompareNoCase(const wchar_t* lpsz) const
{
    return Collate(lpsz, false);
}

int CAtlString::Collate(const wchar_t* lpsz, bool bCaseSensitive) const
{
    ZOLTA_ASSERT_TEXT(lpsz != nullptr, "lpsz != __null");
    return bCaseSensitive ? std::wcscmp(m_pchData, lpsz) : wcscasecmp(m_pchData, lpsz);
}

int CAtlString::CollateNoCase(const wchar_t* lpsz) const
{
    return Collate(lpsz, false);
}

// ---------------------------------------------------------------------------------------------
// Formatting

// Formats into a malloc block that doubles until the text fits; nullptr when memory runs out.
wchar_t* CAtlString::FormatToNewBuffer(const wchar_t* format, va_list args)
{
    const std::wstring widened = WidenStringConversions(format);
    size_t nSize = 256;
    wchar_t* buffer = static_cast<wchar_t*>(std::malloc(nSize * sizeof(wchar_t)));
    if (buffer == nullptr)
        return nullptr;
    for (;;) {
        va_list argsCopy;
        va_copy(argsCopy, args);
        const int nWritten = std::vswprintf(buffer, nSize, widened.c_str(), argsCopy);
        va_end(argsCopy);
        if (nWritten >= 0 && static_cast<size_t>(nWritten) < nSize)
            return buffer;
        if (nSize > SIZE_MAX / 2 / sizeof(wchar_t)) {
            std::free(buffer);
            return nullptr;
        }
        nSize *= 2;
        wchar_t* grown = static_cast<wchar_t*>(std::realloc(buffer, nSize * sizeof(wchar_t)));
        if (grown == nullptr) {
            std::free(buffer);
            return nullptr;
        }
        buffer = grown;
    }
}

void CAtlString::Format(const wchar_t* lpszFormat, ...)
{
    ZOLTA_ASSERT_TEXT(lpszFormat != nullptr, "lpszFormat != __null");
    va_list args;
    va_start(args, lpszFormat);
    FormatV(lpszFormat, args);
    va_end(args);
}

void CAtlString::FormatV(const wchar_t* format, va_list args)
{
    ZOLTA_ASSERT_TEXT(format != nullptr, "format != __null");
    wchar_t* buffer = FormatToNewBuffer(format, args);
    if (buffer == nullptr)
        return;
    *this = buffer;
    std::free(buffer);
}

void CAtlString::AppendFormat(const wchar_t* format, ...)
{
    ZOLTA_ASSERT_TEXT(format != nullptr, "format != __null");
    va_list args;
    va_start(args, format);
    AppendFormatV(format, args);
    va_end(args);
}

void CAtlString::AppendFormatV(const wchar_t* format, va_list args)
{
    ZOLTA_ASSERT_TEXT(format != nullptr, "format != __null");
    wchar_t* buffer = FormatToNewBuffer(format, args);
    if (buffer == nullptr)
        return;
    ConcatInPlace(static_cast<int>(std::wcslen(buffer)), buffer);
    std::free(buffer);
}

// ---------------------------------------------------------------------------------------------
// Array helpers

void ConstructElements(CAtlString* pElements, int nCount)
{
    ZOLTA_ASSERT_TEXT(nCount == 0 || pElements != nullptr, "nCount == 0 || pElements != __null");
    for (int i = 0; i < nCount; ++i)
        pElements[i].Init();
}

void DestructElements(CAtlString* pElements, int nCount)
{
    ZOLTA_ASSERT_TEXT(nCount == 0 || pElements != nullptr, "nCount == 0 || pElements != __null");
    for (int i = 0; i < nCount; ++i)
        pElements[i].Release();
}

void CopyElements(CAtlString* pDest, const CAtlString* pSrc, int nCount)
{
    ZOLTA_ASSERT_TEXT(nCount == 0 || pDest != nullptr, "nCount == 0 || pDest != __null");
    ZOLTA_ASSERT_TEXT(nCount == 0 || pSrc != nullptr, "nCount == 0 || pSrc != __null");
    for (int i = 0; i < nCount; ++i)
        pDest[i] = pSrc[i];
}

// ---------------------------------------------------------------------------------------------
// Free comparison operators

bool operator==(const CAtlString& s1, const CAtlString& s2) { return CompareStrings(s1, s2) == 0; }
bool operator==(const CAtlString& s1, const wchar_t* s2) { return s1.Compare(s2) == 0; }
bool operator==(const wchar_t* s1, const CAtlString& s2) { return s2.Compare(s1) == 0; }
bool operator!=(const CAtlString& s1, const CAtlString& s2) { return CompareStrings(s1, s2) != 0; }
bool operator!=(const CAtlString& s1, const wchar_t* s2) { return s1.Compare(s2) != 0; }
bool operator!=(const wchar_t* s1, const CAtlString& s2) { return s2.Compare(s1) != 0; }
bool operator<(const CAtlString& s1, const CAtlString& s2) { return CompareStrings(s1, s2) < 0; }
bool operator<(const CAtlString& s1, const wchar_t* s2) { return s1.Compare(s2) < 0; }
bool operator<(const wchar_t* s1, const CAtlString& s2) { return s2.Compare(s1) > 0; }
bool operator>(const CAtlString& s1, const CAtlString& s2) { return CompareStrings(s1, s2) > 0; }
bool operator>(const CAtlString& s1, const wchar_t* s2) { return s1.Compare(s2) > 0; }
bool operator>(const wchar_t* s1, const CAtlString& s2) { return s2.Compare(s1) < 0; }
bool operator<=(const CAtlString& s1, const CAtlString& s2) { return CompareStrings(s1, s2) <= 0; }
bool operator<=(const CAtlString& s1, const wchar_t* s2) { return s1.Compare(s2) <= 0; }
bool operator<=(const wchar_t* s1, const CAtlString& s2) { return s2.Compare(s1) >= 0; }
bool operator>=(const CAtlString& s1, const CAtlString& s2) { return CompareStrings(s1, s2) >= 0; }
bool operator>=(const CAtlString& s1, const wchar_t* s2) { return s1.Compare(s2) >= 0; }
bool operator>=(const wchar_t* s1, const CAtlString& s2) { return s2.Compare(s1) <= 0; }

bool operator==(const CAtlString& s1, const char* s2) { return s1 == CAtlString(s2); }
bool operator==(const char* s1, const CAtlString& s2) { return CAtlString(s1) == s2; }
bool operator!=(const CAtlString& s1, const char* s2) { return s1 != CAtlString(s2); }
bool operator!=(const char* s1, const CAtlString& s2) { return CAtlString(s1) != s2; }
bool operator<(const CAtlString& s1, const char* s2) { return s1 < CAtlString(s2); }
bool operator<(const char* s1, const CAtlString& s2) { return CAtlString(s1) < s2; }
bool operator>(const CAtlString& s1, const char* s2) { return s1 > CAtlString(s2); }
bool operator>(const char* s1, const CAtlString& s2) { return CAtlString(s1) > s2; }
bool operator<=(const CAtlString& s1, const char* s2) { return s1 <= CAtlString(s2); }
bool operator<=(const char* s1, const CAtlString& s2) { return CAtlString(s1) <= s2; }
bool operator>=(const CAtlString& s1, const char* s2) { return s1 >= CAtlString(s2); }
bool operator>=(const char* s1, const CAtlString& s2) { return CAtlString(s1) >= s2; }

void PrintTo(const CAtlString& str, std::ostream* os)
{
    *os << '"' << str.ToQString().toStdString() << '"';
}
