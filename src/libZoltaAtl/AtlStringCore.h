#pragma once

// The algorithms CAtlString and CAtlStringA share, written once over the string class. Internal to
// libZoltaAtl: only the two string sources include it. What differs between the classes is kept
// in their StringTraits below (and in their own sources, for the conversions); everything else
// must behave the same for both, so a fault here is fixed for both.

#include "libZoltaAtl/CAtlString.h"
#include "libZoltaAtl/CAtlStringA.h"
#include "libZoltaAtl/ZoltaAssert.h"

#include <cctype>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <new>
#include <string>

#include <strings.h>

namespace zolta_detail {

// The C library's functions for one character type. Searches stop at the first zero, as the
// string functions do: a string holding a zero is searched only up to it.
template <class Char>
struct CharOps;

template <>
struct CharOps<wchar_t> {
    static size_t Length(const wchar_t* s) { return std::wcslen(s); }
    static const wchar_t* FindChar(const wchar_t* s, wchar_t ch) { return std::wcschr(s, ch); }
    static const wchar_t* FindLastChar(const wchar_t* s, wchar_t ch) { return std::wcsrchr(s, ch); }
    static const wchar_t* FindText(const wchar_t* s, const wchar_t* sub) { return std::wcsstr(s, sub); }
    static const wchar_t* FindOneOf(const wchar_t* s, const wchar_t* set) { return std::wcspbrk(s, set); }
    static int Compare(const wchar_t* s1, const wchar_t* s2) { return std::wcscmp(s1, s2); }
    static int CompareNoCase(const wchar_t* s1, const wchar_t* s2) { return wcscasecmp(s1, s2); }
    static bool IsSpace(wchar_t ch) { return std::iswspace(static_cast<wint_t>(ch)) != 0; }
    static wchar_t ToUpper(wchar_t ch) { return static_cast<wchar_t>(std::towupper(static_cast<wint_t>(ch))); }
    static wchar_t ToLower(wchar_t ch) { return static_cast<wchar_t>(std::towlower(static_cast<wint_t>(ch))); }
    static int Print(wchar_t* buffer, size_t nSize, const wchar_t* format, va_list args)
    {
        return std::vswprintf(buffer, nSize, format, args);
    }
};

template <>
struct CharOps<char> {
    static size_t Length(const char* s) { return std::strlen(s); }
    static const char* FindChar(const char* s, char ch) { return std::strchr(s, ch); }
    static const char* FindLastChar(const char* s, char ch) { return std::strrchr(s, ch); }
    static const char* FindText(const char* s, const char* sub) { return std::strstr(s, sub); }
    static const char* FindOneOf(const char* s, const char* set) { return std::strpbrk(s, set); }
    static int Compare(const char* s1, const char* s2) { return std::strcmp(s1, s2); }
    static int CompareNoCase(const char* s1, const char* s2) { return strcasecmp(s1, s2); }
    static bool IsSpace(char ch) { return std::isspace(static_cast<unsigned char>(ch)) != 0; }
    static char ToUpper(char ch) { return static_cast<char>(std::toupper(static_cast<unsigned char>(ch))); }
    static char ToLower(char ch) { return static_cast<char>(std::tolower(static_cast<unsigned char>(ch))); }
    static int Print(char* buffer, size_t nSize, const char* format, va_list args)
    {
        return std::vsnprintf(buffer, nSize, format, args);
    }
};

// The one empty block of a class: header, then the one zero character. Constant-initialised,
// never freed, its count never changed.
template <class Data, class Char>
struct EmptyBlock {
    Data header;
    Char terminator;
};

template <class Data, class Char>
inline EmptyBlock<Data, Char> g_emptyBlock = {{-1, 0, 0}, 0};

// The block type, the empty block and the deliberate differences of each class.
template <class String>
struct StringTraits;

template <>
struct StringTraits<CAtlString> : CharOps<wchar_t> {
    using Char = wchar_t;
    using Data = CAtlStringData;
    static Data* Nil() { return CAtlString::_afxDataNil; }

    // ReleaseBuffer(-1) measures a buffer that has no length yet.
    static constexpr bool kReleaseBufferMeasuresEmpty = true;

    // A start past the end gives an empty string.
    static void CheckMidRange(int nFirst, int nCount, int nLength)
    {
        ZOLTA_ASSERT_TEXT((nCount == 0) || (static_cast<int64_t>(nFirst) + nCount <= nLength),
                          "(nCount == 0) || (nFirst + nCount <= GetData()->nDataLength)");
    }

    // MakeReverse parks the front character in a signed 8-bit value on its way to the back.
    static wchar_t ParkedForReverse(wchar_t ch) { return static_cast<wchar_t>(static_cast<signed char>(ch)); }

    // 8-bit text: the length is the byte count and the bytes are decoded as UTF-8, which is exact
    // for ASCII only (defined in CAtlString.cpp).
    using OtherChar = char;
    using OtherString = CAtlStringA;
    static size_t OtherLength(const char* ca) { return std::strlen(ca); }
    static void AssignOtherText(CAtlString& s, const char* ca, int nLength);
    static wchar_t FromOtherChar(char ch) { return static_cast<wchar_t>(static_cast<unsigned char>(ch)); }
    static constexpr const char* kAppendOtherTextCheck = "ca != __null";
    static constexpr const char* kConcatOtherTextCheck = "str != __null";

    // "%s" takes a wide string: the format is adapted textually (defined in CAtlString.cpp).
    static std::wstring AdaptFormat(const wchar_t* format);

    // The names the contract checks use for arguments.
    static constexpr const char* kReplaceOldCheck = "lpszOld != __null";
    static constexpr const char* kReplaceNewCheck = "lpszNew != __null";
    static constexpr const char* kFormatVCheck = "format != __null";
};

template <>
struct StringTraits<CAtlStringA> : CharOps<char> {
    using Char = char;
    using Data = CAtlStringAData;
    static Data* Nil() { return CAtlStringA::_afxDataANil; }

    // ReleaseBuffer(-1) keeps the current length and never measures.
    static constexpr bool kReleaseBufferMeasuresEmpty = false;

    // A start past the end is a contract violation.
    static void CheckMidRange(int nFirst, int nCount, int nLength)
    {
        ZOLTA_ASSERT_TEXT(static_cast<int64_t>(nFirst) + nCount <= nLength,
                          "nFirst + nCount <= GetData()->nDataLength");
    }

    static char ParkedForReverse(char ch) { return ch; }

    // Wide text is narrowed: each character keeps its low 8 bits (not UTF-8, unlike the
    // constructor from a bare wide pointer; defined in CAtlStringA.cpp).
    using OtherChar = wchar_t;
    using OtherString = CAtlString;
    static size_t OtherLength(const wchar_t* uca) { return std::wcslen(uca); }
    static void AssignOtherText(CAtlStringA& s, const wchar_t* uca, int nLength);
    static char FromOtherChar(wchar_t ch) { return static_cast<char>(static_cast<unsigned char>(ch & 0xFF)); }
    static constexpr const char* kAppendOtherTextCheck = "uca != __null";
    static constexpr const char* kConcatOtherTextCheck = "lpsz != __null";

    static const char* AdaptFormat(const char* format) { return format; }

    static constexpr const char* kReplaceOldCheck = "caOld != __null";
    static constexpr const char* kReplaceNewCheck = "caNew != __null";
    static constexpr const char* kFormatVCheck = "caFormat != __null";
};

template <class String>
struct StringCore {
    using Traits = StringTraits<String>;
    using Char = typename Traits::Char;
    using Data = typename Traits::Data;

    using NilBlock = EmptyBlock<Data, Char>;
    static_assert(offsetof(NilBlock, terminator) == sizeof(Data), "the characters must follow the header directly");

    static constexpr Char kEmptyText[1] = {0};

    static void CopyChars(Char* dest, const Char* src, int nCount)
    {
        std::memcpy(dest, src, static_cast<size_t>(nCount) * sizeof(Char));
    }

    static void MoveChars(Char* dest, const Char* src, int nCount)
    {
        std::memmove(dest, src, static_cast<size_t>(nCount) * sizeof(Char));
    }

    static int LengthOf(const Char* s) { return static_cast<int>(Traits::Length(s)); }

    // -----------------------------------------------------------------------------------------
    // Blocks

    static void Init(String& s) { s.m_pchData = Traits::Nil()->data(); }

    static Data* GetData(const String& s)
    {
        ZOLTA_ASSERT_TEXT(s.m_pchData != nullptr, "m_pchData != __null");
        return reinterpret_cast<Data*>(s.m_pchData) - 1;
    }

    static bool IsNil(const String& s) { return GetData(s) == Traits::Nil(); }

    static void AllocBuffer(String& s, int nLen)
    {
        ZOLTA_ASSERT_TEXT(nLen >= 0, "nLen >= 0");
        ZOLTA_ASSERT_TEXT(nLen <= 2147483647 - 1, "nLen <= 2147483647-1");
        if (nLen == 0) {
            Init(s);
            return;
        }
        // Exactly as long as asked for: no spare capacity.
        const size_t bytes = sizeof(Data) + (static_cast<size_t>(nLen) + 1) * sizeof(Char);
        Data* pData = static_cast<Data*>(::operator new(bytes));
        pData->nRefs = 1;
        pData->nDataLength = nLen;
        pData->nAllocLength = nLen;
        pData->data()[nLen] = 0;
        s.m_pchData = pData->data();
    }

    static void Release(String& s)
    {
        Data* pData = GetData(s);
        if (pData == Traits::Nil())
            return;
        ZOLTA_ASSERT_TEXT(pData->nRefs != 0, "GetData()->nRefs != 0");
        if (--pData->nRefs <= 0)
            ::operator delete(pData);
        Init(s);
    }

    static void Release(Data* pData)
    {
        if (pData == Traits::Nil())
            return;
        ZOLTA_ASSERT_TEXT(pData->nRefs != 0, "pData->nRefs != 0");
        if (--pData->nRefs <= 0)
            ::operator delete(pData);
    }

    static void CopyBeforeWrite(String& s)
    {
        Data* pData = GetData(s);
        if (pData->nRefs > 1) {
            Release(s);
            AllocBuffer(s, pData->nDataLength);
            if (!IsNil(s))
                CopyChars(s.m_pchData, pData->data(), pData->nDataLength + 1);
        }
        ZOLTA_ASSERT_TEXT(GetData(s)->nRefs <= 1, "GetData()->nRefs <= 1");
    }

    static void AllocBeforeWrite(String& s, int nLen)
    {
        Data* pData = GetData(s);
        if (pData->nRefs > 1 || nLen > pData->nAllocLength) {
            Release(s);
            AllocBuffer(s, nLen);
        }
    }

    // Sets the length and terminator; the empty block is left untouched (its values never change).
    static void SetLengthAndTerminate(String& s, int nLength)
    {
        Data* pData = GetData(s);
        if (pData == Traits::Nil())
            return;
        pData->nDataLength = nLength;
        s.m_pchData[nLength] = 0;
    }

    static void AssignCopy(String& s, int nSrcLen, const Char* lpszSrcData)
    {
        AllocBeforeWrite(s, nSrcLen);
        if (nSrcLen > 0)
            MoveChars(s.m_pchData, lpszSrcData, nSrcLen);
        SetLengthAndTerminate(s, nSrcLen);
    }

    static void ConcatCopy(String& s, int nSrc1Len, const Char* lpszSrc1Data, int nSrc2Len, const Char* lpszSrc2Data)
    {
        const int nNewLen = nSrc1Len + nSrc2Len;
        if (nNewLen == 0)
            return;
        AllocBuffer(s, nNewLen);
        CopyChars(s.m_pchData, lpszSrc1Data, nSrc1Len);
        CopyChars(s.m_pchData + nSrc1Len, lpszSrc2Data, nSrc2Len);
    }

    static void ConcatInPlace(String& s, int nSrcLen, const Char* lpszSrcData)
    {
        if (nSrcLen == 0)
            return;
        Data* pOldData = GetData(s);
        if (pOldData->nRefs > 1 || pOldData->nDataLength + nSrcLen > pOldData->nAllocLength) {
            // One allocation of exactly the sum; the old block stays alive until both parts are copied.
            ConcatCopy(s, pOldData->nDataLength, s.m_pchData, nSrcLen, lpszSrcData);
            Release(pOldData);
        } else {
            CopyChars(s.m_pchData + pOldData->nDataLength, lpszSrcData, nSrcLen);
            pOldData->nDataLength += nSrcLen;
            s.m_pchData[pOldData->nDataLength] = 0;
        }
    }

    // A new string of nCount characters of s from nIndex.
    static String CopyOfRange(const String& s, int nIndex, int nCount)
    {
        String dest;
        if (nCount != 0) {
            AllocBuffer(dest, nCount);
            CopyChars(dest.m_pchData, s.m_pchData + nIndex, nCount);
        }
        return dest;
    }

    // -----------------------------------------------------------------------------------------
    // Construction and assignment

    static void ConstructCopy(String& s, const String& src)
    {
        ZOLTA_ASSERT_TEXT(GetData(src)->nRefs != 0, "stringSrc.GetData()->nRefs != 0");
        if (GetData(src)->nRefs >= 0) {
            s.m_pchData = src.m_pchData;
            ++GetData(s)->nRefs;
        } else {
            // Locked buffers and the empty block are never shared.
            Init(s);
            AssignCopy(s, GetData(src)->nDataLength, src.m_pchData);
        }
    }

    static void ConstructText(String& s, const Char* lpsz)
    {
        Init(s);
        if (lpsz != nullptr)
            AssignCopy(s, LengthOf(lpsz), lpsz);
    }

    static void ConstructCounted(String& s, const Char* lpch, int nLength)
    {
        Init(s);
        if (nLength != 0) {
            ZOLTA_ASSERT_TEXT(lpch != nullptr, "lpch != __null");
            AllocBuffer(s, nLength);
            CopyChars(s.m_pchData, lpch, nLength);
        }
    }

    static void ConstructRepeated(String& s, Char ch, int nRepeat)
    {
        Init(s);
        if (nRepeat >= 1) {
            AllocBuffer(s, nRepeat);
            std::char_traits<Char>::assign(s.m_pchData, static_cast<size_t>(nRepeat), ch);
        }
    }

    static String& Assign(String& s, const String& src)
    {
        if (s.m_pchData == src.m_pchData)
            return s;
        const bool targetLocked = GetData(s)->nRefs < 0 && !IsNil(s);
        if (targetLocked || GetData(src)->nRefs < 0) {
            AssignCopy(s, GetData(src)->nDataLength, src.m_pchData);
        } else {
            Release(s);
            s.m_pchData = src.m_pchData;
            ++GetData(s)->nRefs;
        }
        return s;
    }

    static String& AssignText(String& s, const Char* lpsz)
    {
        AssignCopy(s, lpsz != nullptr ? LengthOf(lpsz) : 0, lpsz);
        return s;
    }

    // -----------------------------------------------------------------------------------------
    // Length and index access

    static void Empty(String& s)
    {
        Data* pData = GetData(s);
        if (pData->nDataLength == 0)
            return;
        if (pData->nRefs >= 0)
            Release(s);
        else
            AssignCopy(s, 0, kEmptyText);  // a locked buffer keeps its allocation
    }

    static Char GetAt(const String& s, int nIndex)
    {
        ZOLTA_ASSERT_TEXT(nIndex >= 0, "nIndex >= 0");
        ZOLTA_ASSERT_TEXT(nIndex < GetData(s)->nDataLength, "nIndex < GetData()->nDataLength");
        return s.m_pchData[nIndex];
    }

    static void SetAt(String& s, int nIndex, Char ch)
    {
        ZOLTA_ASSERT_TEXT(nIndex >= 0, "nIndex >= 0");
        ZOLTA_ASSERT_TEXT(nIndex < GetData(s)->nDataLength, "nIndex < GetData()->nDataLength");
        CopyBeforeWrite(s);
        s.m_pchData[nIndex] = ch;
    }

    // -----------------------------------------------------------------------------------------
    // Raw buffer access

    static Char* GetBuffer(String& s, int nMinBufLength)
    {
        ZOLTA_ASSERT_TEXT(nMinBufLength >= 0, "nMinBufLength >= 0");
        Data* pOldData = GetData(s);
        if (pOldData->nRefs > 1 || nMinBufLength > pOldData->nAllocLength) {
            const int nOldLen = pOldData->nDataLength;
            if (nMinBufLength < nOldLen)
                nMinBufLength = nOldLen;
            AllocBuffer(s, nMinBufLength);
            if (!IsNil(s)) {
                CopyChars(s.m_pchData, pOldData->data(), nOldLen + 1);
                GetData(s)->nDataLength = nOldLen;
            }
            Release(pOldData);
        }
        return s.m_pchData;
    }

    static Char* GetBufferSetLength(String& s, int nNewLength)
    {
        ZOLTA_ASSERT_TEXT(nNewLength >= 0, "nNewLength >= 0");
        GetBuffer(s, nNewLength);
        SetLengthAndTerminate(s, nNewLength);
        return s.m_pchData;
    }

    static void ReleaseBuffer(String& s, int nNewLength)
    {
        CopyBeforeWrite(s);
        Data* pData = GetData(s);
        if (nNewLength == -1) {
            // Keeps the length a GetBuffer caller had.
            nNewLength = pData->nDataLength;
            if (Traits::kReleaseBufferMeasuresEmpty && nNewLength == 0) {
                const size_t measured = Traits::Length(s.m_pchData);
                nNewLength = measured < static_cast<size_t>(pData->nAllocLength) ? static_cast<int>(measured)
                                                                                 : pData->nAllocLength;
            }
        }
        ZOLTA_ASSERT_TEXT(nNewLength <= pData->nAllocLength, "nNewLength <= GetData()->nAllocLength");
        ZOLTA_ASSERT_TEXT(nNewLength >= 0, "nNewLength >= 0");
        SetLengthAndTerminate(s, nNewLength);
    }

    static Char* LockBuffer(String& s)
    {
        Char* lpsz = GetBuffer(s, 0);
        if (!IsNil(s))
            GetData(s)->nRefs = -1;
        return lpsz;
    }

    static void UnlockBuffer(String& s)
    {
        ZOLTA_ASSERT_TEXT(GetData(s)->nRefs == -1, "GetData()->nRefs == -1");
        if (!IsNil(s))
            GetData(s)->nRefs = 1;
    }

    static void FreeExtra(String& s)
    {
        Data* pOldData = GetData(s);
        if (pOldData->nDataLength == pOldData->nAllocLength)
            return;
        AllocBuffer(s, pOldData->nDataLength);
        CopyChars(s.m_pchData, pOldData->data(), pOldData->nDataLength);
        Release(pOldData);
    }

    // -----------------------------------------------------------------------------------------
    // Appending and concatenation

    // nullText names the argument as the caller's contract spells it.
    static String& AppendText(String& s, const Char* lpsz, const char* nullText)
    {
        ZOLTA_ASSERT_TEXT(lpsz != nullptr, nullText);
        ConcatInPlace(s, LengthOf(lpsz), lpsz);
        return s;
    }

    static String& AppendCounted(String& s, const Char* pszSrc, int nLength)
    {
        ZOLTA_ASSERT_TEXT(pszSrc != nullptr, "pszSrc != __null");
        ZOLTA_ASSERT_TEXT(nLength >= 0, "nLength >= 0");
        ConcatInPlace(s, nLength, pszSrc);
        return s;
    }

    static String& AppendString(String& s, const String& str)
    {
        ConcatInPlace(s, GetData(str)->nDataLength, str.m_pchData);
        return s;
    }

    static String& AppendChar(String& s, Char ch)
    {
        ConcatInPlace(s, 1, &ch);
        return s;
    }

    // A new block of exactly the sum of the lengths.
    static String Concat(int nLen1, const Char* p1, int nLen2, const Char* p2)
    {
        String s;
        ConcatCopy(s, nLen1, p1, nLen2, p2);
        return s;
    }

    static String Concat(const String& s1, const String& s2)
    {
        return Concat(GetData(s1)->nDataLength, s1.m_pchData, GetData(s2)->nDataLength, s2.m_pchData);
    }

    static String Concat(const String& s1, const Char* lpsz)
    {
        ZOLTA_ASSERT_TEXT(lpsz != nullptr, "lpsz != __null");
        return Concat(GetData(s1)->nDataLength, s1.m_pchData, LengthOf(lpsz), lpsz);
    }

    static String Concat(const Char* lpsz, const String& s2)
    {
        ZOLTA_ASSERT_TEXT(lpsz != nullptr, "lpsz != __null");
        return Concat(LengthOf(lpsz), lpsz, GetData(s2)->nDataLength, s2.m_pchData);
    }

    static String Concat(const String& s1, Char ch) { return Concat(GetData(s1)->nDataLength, s1.m_pchData, 1, &ch); }
    static String Concat(Char ch, const String& s2) { return Concat(1, &ch, GetData(s2)->nDataLength, s2.m_pchData); }

    // Text of the other width, converted by the class's own rule first.
    using OtherChar = typename Traits::OtherChar;
    using OtherString = typename Traits::OtherString;

    static String FromOtherText(const OtherChar* text)
    {
        String s;
        Traits::AssignOtherText(s, text, static_cast<int>(Traits::OtherLength(text)));
        return s;
    }

    static void ConstructOtherCounted(String& s, const OtherChar* lpch, int nLength)
    {
        Init(s);
        if (nLength != 0) {
            ZOLTA_ASSERT_TEXT(lpch != nullptr, "lpch != __null");
            Traits::AssignOtherText(s, lpch, nLength);
        }
    }

    static String& AssignOtherText(String& s, const OtherChar* text)
    {
        Traits::AssignOtherText(s, text, text != nullptr ? static_cast<int>(Traits::OtherLength(text)) : 0);
        return s;
    }

    static String& AppendOtherText(String& s, const OtherChar* text)
    {
        ZOLTA_ASSERT_TEXT(text != nullptr, Traits::kAppendOtherTextCheck);
        return AppendString(s, FromOtherText(text));
    }

    static String ConcatOtherText(const String& s1, const OtherChar* text)
    {
        ZOLTA_ASSERT_TEXT(text != nullptr, Traits::kConcatOtherTextCheck);
        return Concat(s1, FromOtherText(text));
    }

    static String ConcatOtherText(const OtherChar* text, const String& s2)
    {
        ZOLTA_ASSERT_TEXT(text != nullptr, Traits::kConcatOtherTextCheck);
        return Concat(FromOtherText(text), s2);
    }

    // -----------------------------------------------------------------------------------------
    // Extraction

    static String Mid(const String& s, int nFirst, int nCount)
    {
        const int nLength = GetData(s)->nDataLength;
        if (nFirst < 0)
            nFirst = 0;
        if (nCount < 0)
            nCount = 0;
        if (static_cast<int64_t>(nFirst) + nCount > nLength)
            nCount = nLength - nFirst;
        if (nFirst > nLength)
            nCount = 0;
        Traits::CheckMidRange(nFirst, nCount, nLength);
        if (nFirst == 0 && nCount == nLength)
            return s;
        return CopyOfRange(s, nFirst, nCount);
    }

    static String Mid(const String& s, int nFirst)
    {
        return Mid(s, nFirst, GetData(s)->nDataLength - (nFirst < 0 ? 0 : nFirst));
    }

    static String Left(const String& s, int nCount)
    {
        if (nCount < 0)
            nCount = 0;
        if (nCount >= GetData(s)->nDataLength)
            return s;
        return CopyOfRange(s, 0, nCount);
    }

    static String Right(const String& s, int nCount)
    {
        if (nCount < 0)
            nCount = 0;
        const int nLength = GetData(s)->nDataLength;
        if (nCount >= nLength)
            return s;
        return CopyOfRange(s, nLength - nCount, nCount);
    }

    // -----------------------------------------------------------------------------------------
    // Searching

    static int IndexOf(const String& s, const Char* found)
    {
        return found == nullptr ? -1 : static_cast<int>(found - s.m_pchData);
    }

    static int Find(const String& s, Char ch, int nStart)
    {
        if (nStart < 0)
            nStart = 0;
        if (nStart >= GetData(s)->nDataLength)
            return -1;
        return IndexOf(s, Traits::FindChar(s.m_pchData + nStart, ch));
    }

    static int ReverseFind(const String& s, Char ch) { return IndexOf(s, Traits::FindLastChar(s.m_pchData, ch)); }

    static int FindOneOf(const String& s, const Char* lpszCharSet)
    {
        ZOLTA_ASSERT_TEXT(lpszCharSet != nullptr, "lpszCharSet != __null");
        return IndexOf(s, Traits::FindOneOf(s.m_pchData, lpszCharSet));
    }

    // -----------------------------------------------------------------------------------------
    // Editing

    static int Replace(String& s, Char chOld, Char chNew)
    {
        if (chOld == chNew)
            return 0;
        CopyBeforeWrite(s);
        int nCount = 0;
        const int nLength = GetData(s)->nDataLength;
        for (int i = 0; i < nLength; ++i) {
            if (s.m_pchData[i] == chOld) {
                s.m_pchData[i] = chNew;
                ++nCount;
            }
        }
        return nCount;
    }

    static int Replace(String& s, const Char* lpszOld, const Char* lpszNew)
    {
        ZOLTA_ASSERT_TEXT(lpszOld != nullptr, Traits::kReplaceOldCheck);
        ZOLTA_ASSERT_TEXT(lpszNew != nullptr, Traits::kReplaceNewCheck);
        const size_t nOldLength = Traits::Length(lpszOld);
        String result;
        int nCount = 0;
        const Char* position = s.m_pchData;
        // An empty old text would match everywhere without moving on.
        if (nOldLength > 0 && Traits::Compare(lpszOld, lpszNew) != 0) {
            const int nNewLength = LengthOf(lpszNew);
            while (const Char* match = Traits::FindText(position, lpszOld)) {
                ConcatInPlace(result, static_cast<int>(match - position), position);
                ConcatInPlace(result, nNewLength, lpszNew);
                ++nCount;
                position = match + nOldLength;
            }
        }
        ConcatInPlace(result, LengthOf(position), position);
        Assign(s, result);
        return nCount;
    }

    static int Remove(String& s, Char chRemove)
    {
        CopyBeforeWrite(s);
        Data* pData = GetData(s);
        if (pData == Traits::Nil())
            return 0;
        Char* source = s.m_pchData;
        Char* dest = s.m_pchData;
        Char* const end = s.m_pchData + pData->nDataLength;
        for (; source < end; ++source) {
            if (*source != chRemove)
                *dest++ = *source;
        }
        *dest = 0;
        const int nCount = static_cast<int>(source - dest);
        pData->nDataLength -= nCount;
        return nCount;
    }

    static int Insert(String& s, int nIndex, Char ch)
    {
        const Char text[2] = {ch, 0};
        return Insert(s, nIndex, text);
    }

    static int Insert(String& s, int nIndex, const Char* pstr)
    {
        if (nIndex < 0)
            nIndex = 0;
        const int nInsertLength = pstr != nullptr ? LengthOf(pstr) : 0;
        int nNewLength = GetData(s)->nDataLength;
        if (nInsertLength <= 0)
            return nNewLength;

        // The text may be a piece of this very string, which is about to move.
        const std::basic_string<Char> inserted(pstr, static_cast<size_t>(nInsertLength));
        CopyBeforeWrite(s);
        if (nIndex > nNewLength)
            nIndex = nNewLength;
        nNewLength += nInsertLength;

        Data* pOldData = GetData(s);
        if (pOldData->nAllocLength < nNewLength) {
            Char* pstrOld = s.m_pchData;
            AllocBuffer(s, nNewLength);
            CopyChars(s.m_pchData, pstrOld, pOldData->nDataLength + 1);
            Release(pOldData);
        }
        MoveChars(s.m_pchData + nIndex + nInsertLength, s.m_pchData + nIndex, nNewLength - nIndex - nInsertLength + 1);
        CopyChars(s.m_pchData + nIndex, inserted.data(), nInsertLength);
        GetData(s)->nDataLength = nNewLength;
        return nNewLength;
    }

    static int Delete(String& s, int nIndex, int nCount)
    {
        if (nIndex < 0)
            nIndex = 0;
        const int nLength = GetData(s)->nDataLength;
        if (nCount <= 0 || nIndex >= nLength)
            return nLength;
        if (nCount > nLength - nIndex)
            nCount = nLength - nIndex;
        CopyBeforeWrite(s);
        MoveChars(s.m_pchData + nIndex, s.m_pchData + nIndex + nCount, nLength - (nIndex + nCount) + 1);
        GetData(s)->nDataLength = nLength - nCount;
        return nLength - nCount;
    }

    // -----------------------------------------------------------------------------------------
    // Trimming: whitespace, one character, or any of a list of characters

    template <class Matches>
    static String& TrimLeftWhile(String& s, Matches matches)
    {
        CopyBeforeWrite(s);
        const int nLength = GetData(s)->nDataLength;
        int nSkip = 0;
        while (nSkip < nLength && matches(s.m_pchData[nSkip]))
            ++nSkip;
        if (nSkip == 0)
            return s;
        const int nNewLength = nLength - nSkip;
        MoveChars(s.m_pchData, s.m_pchData + nSkip, nNewLength + 1);
        GetData(s)->nDataLength = nNewLength;
        return s;
    }

    template <class Matches>
    static String& TrimRightWhile(String& s, Matches matches)
    {
        CopyBeforeWrite(s);
        const int nLength = GetData(s)->nDataLength;
        int nNewLength = nLength;
        while (nNewLength > 0 && matches(s.m_pchData[nNewLength - 1]))
            --nNewLength;
        if (nNewLength != nLength)
            SetLengthAndTerminate(s, nNewLength);
        return s;
    }

    static auto IsSpace()
    {
        return [](Char ch) { return Traits::IsSpace(ch); };
    }
    static auto IsTarget(Char chTarget)
    {
        return [chTarget](Char ch) { return ch == chTarget; };
    }
    static auto IsInList(const Char* list)
    {
        return [list](Char ch) { return ch != 0 && Traits::FindChar(list, ch) != nullptr; };
    }

    static String& TrimLeft(String& s) { return TrimLeftWhile(s, IsSpace()); }
    static String& TrimLeft(String& s, Char chTarget) { return TrimLeftWhile(s, IsTarget(chTarget)); }
    static String& TrimLeft(String& s, const Char* lpszTargets)
    {
        ZOLTA_ASSERT_TEXT(lpszTargets != nullptr, "lpszTargets != __null");
        return TrimLeftWhile(s, IsInList(lpszTargets));
    }

    static String& TrimRight(String& s) { return TrimRightWhile(s, IsSpace()); }
    static String& TrimRight(String& s, Char chTarget) { return TrimRightWhile(s, IsTarget(chTarget)); }
    static String& TrimRight(String& s, const Char* lpszTargetList)
    {
        ZOLTA_ASSERT_TEXT(lpszTargetList != nullptr, "lpszTargetList != __null");
        return TrimRightWhile(s, IsInList(lpszTargetList));
    }

    // -----------------------------------------------------------------------------------------
    // Case and order

    // Applies convert to each character in use; the result depends on the C locale.
    template <class Convert>
    static String& MakeEach(String& s, Convert convert)
    {
        CopyBeforeWrite(s);
        const int nLength = GetData(s)->nDataLength;
        for (int i = 0; i < nLength; ++i)
            s.m_pchData[i] = convert(s.m_pchData[i]);
        return s;
    }

    static String& MakeUpper(String& s)
    {
        return MakeEach(s, [](Char ch) { return Traits::ToUpper(ch); });
    }
    static String& MakeLower(String& s)
    {
        return MakeEach(s, [](Char ch) { return Traits::ToLower(ch); });
    }

    static String& MakeReverse(String& s)
    {
        CopyBeforeWrite(s);
        Char* chars = s.m_pchData;
        for (int front = 0, back = GetData(s)->nDataLength - 1; front < back; ++front, --back) {
            const Char parked = Traits::ParkedForReverse(chars[front]);
            chars[front] = chars[back];
            chars[back] = parked;
        }
        return s;
    }

    static int Collate(const String& s, const Char* lpsz, bool bCaseSensitive)
    {
        ZOLTA_ASSERT_TEXT(lpsz != nullptr, "lpsz != __null");
        return bCaseSensitive ? Traits::Compare(s.m_pchData, lpsz) : Traits::CompareNoCase(s.m_pchData, lpsz);
    }

    // Three-way comparisons behind the relational operators. With the pointer first, the string's
    // own comparison is taken and its sign turned round.
    static int CompareStrings(const String& s1, const String& s2)
    {
        return Traits::Compare(s1.m_pchData, s2.m_pchData);
    }
    static int CompareStrings(const String& s1, const Char* s2) { return Collate(s1, s2, true); }
    static int CompareStrings(const Char* s1, const String& s2)
    {
        const int nReversed = Collate(s2, s1, true);
        return (nReversed < 0) - (nReversed > 0);
    }

    // -----------------------------------------------------------------------------------------
    // Formatting

    // Formats into a malloc block that doubles until the text fits; nullptr when memory runs out.
    static Char* FormatToNewBuffer(const Char* format, va_list args)
    {
        size_t nSize = 256;
        Char* buffer = static_cast<Char*>(std::malloc(nSize * sizeof(Char)));
        if (buffer == nullptr)
            return nullptr;
        for (;;) {
            va_list argsCopy;
            va_copy(argsCopy, args);
            const int nWritten = Traits::Print(buffer, nSize, format, argsCopy);
            va_end(argsCopy);
            if (nWritten >= 0 && static_cast<size_t>(nWritten) < nSize)
                return buffer;
            if (nSize > SIZE_MAX / 2 / sizeof(Char)) {
                std::free(buffer);
                return nullptr;
            }
            nSize *= 2;
            Char* grown = static_cast<Char*>(std::realloc(buffer, nSize * sizeof(Char)));
            if (grown == nullptr) {
                std::free(buffer);
                return nullptr;
            }
            buffer = grown;
        }
    }

    // On a failed allocation the target stays as it was.
    static const Char* FormatText(const Char* format) { return format; }
    static const Char* FormatText(const std::basic_string<Char>& format) { return format.c_str(); }

    static void FormatV(String& s, const Char* format, va_list args, bool bAppend)
    {
        ZOLTA_ASSERT_TEXT(format != nullptr, Traits::kFormatVCheck);
        const auto adapted = Traits::AdaptFormat(format);
        Char* buffer = FormatToNewBuffer(FormatText(adapted), args);
        if (buffer == nullptr)
            return;
        if (bAppend)
            ConcatInPlace(s, LengthOf(buffer), buffer);
        else
            AssignText(s, buffer);
        std::free(buffer);
    }

    // -----------------------------------------------------------------------------------------
    // Array helpers

    static void ConstructElements(String* pElements, int nCount)
    {
        ZOLTA_ASSERT_TEXT(nCount == 0 || pElements != nullptr, "nCount == 0 || pElements != __null");
        for (int i = 0; i < nCount; ++i)
            Init(pElements[i]);
    }

    static void DestructElements(String* pElements, int nCount)
    {
        ZOLTA_ASSERT_TEXT(nCount == 0 || pElements != nullptr, "nCount == 0 || pElements != __null");
        for (int i = 0; i < nCount; ++i)
            Release(pElements[i]);
    }

    static void CopyElements(String* pDest, const String* pSrc, int nCount)
    {
        ZOLTA_ASSERT_TEXT(nCount == 0 || pDest != nullptr, "nCount == 0 || pDest != __null");
        ZOLTA_ASSERT_TEXT(nCount == 0 || pSrc != nullptr, "nCount == 0 || pSrc != __null");
        for (int i = 0; i < nCount; ++i)
            pDest[i] = pSrc[i];
    }
};

}  // namespace zolta_detail

// Defines the six relations of two operand types from a three-way comparison of them.
#define ZOLTA_STRING_RELATIONS(Left, Right, compare)                                                                   \
    bool operator==(Left s1, Right s2)                                                                                 \
    {                                                                                                                  \
        return compare(s1, s2) == 0;                                                                                   \
    }                                                                                                                  \
    bool operator!=(Left s1, Right s2)                                                                                 \
    {                                                                                                                  \
        return compare(s1, s2) != 0;                                                                                   \
    }                                                                                                                  \
    bool operator<(Left s1, Right s2)                                                                                  \
    {                                                                                                                  \
        return compare(s1, s2) < 0;                                                                                    \
    }                                                                                                                  \
    bool operator>(Left s1, Right s2)                                                                                  \
    {                                                                                                                  \
        return compare(s1, s2) > 0;                                                                                    \
    }                                                                                                                  \
    bool operator<=(Left s1, Right s2)                                                                                 \
    {                                                                                                                  \
        return compare(s1, s2) <= 0;                                                                                   \
    }                                                                                                                  \
    bool operator>=(Left s1, Right s2)                                                                                 \
    {                                                                                                                  \
        return compare(s1, s2) >= 0;                                                                                   \
    }

// Defines, for one string class, every member and friend that is a shared algorithm unchanged, so
// that the forwarding is written once too. Each class source expands it once, with `Core` naming
// its StringCore; what differs between the classes stays written out in their sources.
#define ZOLTA_STRING_SHARED_MEMBERS(String, Char, Data)                                                                \
    Data* String::GetData() const                                                                                      \
    {                                                                                                                  \
        return Core::GetData(*this);                                                                                   \
    }                                                                                                                  \
    void String::AllocBuffer(int nLen)                                                                                 \
    {                                                                                                                  \
        Core::AllocBuffer(*this, nLen);                                                                                \
    }                                                                                                                  \
    void String::Release()                                                                                             \
    {                                                                                                                  \
        Core::Release(*this);                                                                                          \
    }                                                                                                                  \
    void String::Release(Data* pData)                                                                                  \
    {                                                                                                                  \
        Core::Release(pData);                                                                                          \
    }                                                                                                                  \
    void String::CopyBeforeWrite()                                                                                     \
    {                                                                                                                  \
        Core::CopyBeforeWrite(*this);                                                                                  \
    }                                                                                                                  \
    void String::AllocBeforeWrite(int nLen)                                                                            \
    {                                                                                                                  \
        Core::AllocBeforeWrite(*this, nLen);                                                                           \
    }                                                                                                                  \
    void String::ConcatInPlace(int nSrcLen, const Char* lpszSrcData)                                                   \
    {                                                                                                                  \
        Core::ConcatInPlace(*this, nSrcLen, lpszSrcData);                                                              \
    }                                                                                                                  \
                                                                                                                       \
    String::String()                                                                                                   \
    {                                                                                                                  \
        Core::Init(*this);                                                                                             \
    }                                                                                                                  \
    String::String(const String& stringSrc)                                                                            \
    {                                                                                                                  \
        Core::ConstructCopy(*this, stringSrc);                                                                         \
    }                                                                                                                  \
    String::String(const Char* lpsz)                                                                                   \
    {                                                                                                                  \
        Core::ConstructText(*this, lpsz);                                                                              \
    }                                                                                                                  \
    String::String(const Char* lpch, int nLength)                                                                      \
    {                                                                                                                  \
        Core::ConstructCounted(*this, lpch, nLength);                                                                  \
    }                                                                                                                  \
    String::String(Char ch, int nRepeat)                                                                               \
    {                                                                                                                  \
        Core::ConstructRepeated(*this, ch, nRepeat);                                                                   \
    }                                                                                                                  \
    String::~String()                                                                                                  \
    {                                                                                                                  \
        Core::Release(*this);                                                                                          \
    }                                                                                                                  \
    String& String::operator=(const String& stringSrc)                                                                 \
    {                                                                                                                  \
        return Core::Assign(*this, stringSrc);                                                                         \
    }                                                                                                                  \
    String& String::operator=(const Char* lpsz)                                                                        \
    {                                                                                                                  \
        return Core::AssignText(*this, lpsz);                                                                          \
    }                                                                                                                  \
    String& String::operator=(Char ch)                                                                                 \
    {                                                                                                                  \
        Core::AssignCopy(*this, 1, &ch);                                                                               \
        return *this;                                                                                                  \
    }                                                                                                                  \
                                                                                                                       \
    int String::GetLength() const                                                                                      \
    {                                                                                                                  \
        return GetData()->nDataLength;                                                                                 \
    }                                                                                                                  \
    bool String::IsEmpty() const                                                                                       \
    {                                                                                                                  \
        return GetData()->nDataLength == 0;                                                                            \
    }                                                                                                                  \
    void String::Empty()                                                                                               \
    {                                                                                                                  \
        Core::Empty(*this);                                                                                            \
    }                                                                                                                  \
    Char String::GetAt(int nIndex) const                                                                               \
    {                                                                                                                  \
        return Core::GetAt(*this, nIndex);                                                                             \
    }                                                                                                                  \
    Char String::operator[](int nIndex) const                                                                          \
    {                                                                                                                  \
        return Core::GetAt(*this, nIndex);                                                                             \
    }                                                                                                                  \
    void String::SetAt(int nIndex, Char ch)                                                                            \
    {                                                                                                                  \
        Core::SetAt(*this, nIndex, ch);                                                                                \
    }                                                                                                                  \
                                                                                                                       \
    Char* String::GetBuffer(int nMinBufLength)                                                                         \
    {                                                                                                                  \
        return Core::GetBuffer(*this, nMinBufLength);                                                                  \
    }                                                                                                                  \
    Char* String::GetBuffer()                                                                                          \
    {                                                                                                                  \
        return m_pchData;                                                                                              \
    }                                                                                                                  \
    Char* String::GetBufferSetLength(int nNewLength)                                                                   \
    {                                                                                                                  \
        return Core::GetBufferSetLength(*this, nNewLength);                                                            \
    }                                                                                                                  \
    void String::ReleaseBuffer(int nNewLength)                                                                         \
    {                                                                                                                  \
        Core::ReleaseBuffer(*this, nNewLength);                                                                        \
    }                                                                                                                  \
    Char* String::LockBuffer()                                                                                         \
    {                                                                                                                  \
        return Core::LockBuffer(*this);                                                                                \
    }                                                                                                                  \
    void String::UnlockBuffer()                                                                                        \
    {                                                                                                                  \
        Core::UnlockBuffer(*this);                                                                                     \
    }                                                                                                                  \
    void String::FreeExtra()                                                                                           \
    {                                                                                                                  \
        Core::FreeExtra(*this);                                                                                        \
    }                                                                                                                  \
                                                                                                                       \
    String& String::Append(const String& str)                                                                          \
    {                                                                                                                  \
        return Core::AppendString(*this, str);                                                                         \
    }                                                                                                                  \
    String& String::Append(const Char* pszSrc)                                                                         \
    {                                                                                                                  \
        return Core::AppendText(*this, pszSrc, "pszSrc != __null");                                                    \
    }                                                                                                                  \
    String& String::Append(const Char* pszSrc, int nLength)                                                            \
    {                                                                                                                  \
        return Core::AppendCounted(*this, pszSrc, nLength);                                                            \
    }                                                                                                                  \
    String& String::AppendChar(Char ch)                                                                                \
    {                                                                                                                  \
        return Core::AppendChar(*this, ch);                                                                            \
    }                                                                                                                  \
    String& String::operator+=(const String& str)                                                                      \
    {                                                                                                                  \
        return Append(str);                                                                                            \
    }                                                                                                                  \
    String& String::operator+=(const Char* lpsz)                                                                       \
    {                                                                                                                  \
        return Core::AppendText(*this, lpsz, "lpsz != __null");                                                        \
    }                                                                                                                  \
    String& String::operator+=(Char ch)                                                                                \
    {                                                                                                                  \
        return AppendChar(ch);                                                                                         \
    }                                                                                                                  \
    String operator+(const String& string1, const String& string2)                                                     \
    {                                                                                                                  \
        return Core::Concat(string1, string2);                                                                         \
    }                                                                                                                  \
    String operator+(const String& string, Char ch)                                                                    \
    {                                                                                                                  \
        return Core::Concat(string, ch);                                                                               \
    }                                                                                                                  \
    String operator+(Char ch, const String& string)                                                                    \
    {                                                                                                                  \
        return Core::Concat(ch, string);                                                                               \
    }                                                                                                                  \
    String operator+(const String& string, const Char* lpsz)                                                           \
    {                                                                                                                  \
        return Core::Concat(string, lpsz);                                                                             \
    }                                                                                                                  \
    String operator+(const Char* lpsz, const String& string)                                                           \
    {                                                                                                                  \
        return Core::Concat(lpsz, string);                                                                             \
    }                                                                                                                  \
    String::String(const Core::OtherChar* lpch, int nLength)                                                           \
    {                                                                                                                  \
        Core::ConstructOtherCounted(*this, lpch, nLength);                                                             \
    }                                                                                                                  \
    String& String::operator=(const Core::OtherChar* text)                                                             \
    {                                                                                                                  \
        return Core::AssignOtherText(*this, text);                                                                     \
    }                                                                                                                  \
    String& String::Append(const Core::OtherChar* text)                                                                \
    {                                                                                                                  \
        return Core::AppendOtherText(*this, text);                                                                     \
    }                                                                                                                  \
    String& String::operator+=(const Core::OtherChar* text)                                                            \
    {                                                                                                                  \
        return Core::AppendOtherText(*this, text);                                                                     \
    }                                                                                                                  \
    String& String::operator+=(Core::OtherChar ch)                                                                     \
    {                                                                                                                  \
        return AppendChar(Core::Traits::FromOtherChar(ch));                                                            \
    }                                                                                                                  \
    String& String::operator+=(const Core::OtherString& str)                                                           \
    {                                                                                                                  \
        return Append(String(str));                                                                                    \
    }                                                                                                                  \
    String operator+(const String& string, const Core::OtherString& str)                                               \
    {                                                                                                                  \
        return string + String(str);                                                                                   \
    }                                                                                                                  \
    String operator+(const String& string, const Core::OtherChar* text)                                                \
    {                                                                                                                  \
        return Core::ConcatOtherText(string, text);                                                                    \
    }                                                                                                                  \
    String operator+(const Core::OtherChar* text, const String& string)                                                \
    {                                                                                                                  \
        return Core::ConcatOtherText(text, string);                                                                    \
    }                                                                                                                  \
                                                                                                                       \
    String String::Mid(int nFirst, int nCount) const                                                                   \
    {                                                                                                                  \
        return Core::Mid(*this, nFirst, nCount);                                                                       \
    }                                                                                                                  \
    String String::Mid(int nFirst) const                                                                               \
    {                                                                                                                  \
        return Core::Mid(*this, nFirst);                                                                               \
    }                                                                                                                  \
    String String::Left(int nCount) const                                                                              \
    {                                                                                                                  \
        return Core::Left(*this, nCount);                                                                              \
    }                                                                                                                  \
    String String::Right(int nCount) const                                                                             \
    {                                                                                                                  \
        return Core::Right(*this, nCount);                                                                             \
    }                                                                                                                  \
    int String::Find(Char ch, int nStart) const                                                                        \
    {                                                                                                                  \
        return Core::Find(*this, ch, nStart);                                                                          \
    }                                                                                                                  \
    int String::ReverseFind(Char ch) const                                                                             \
    {                                                                                                                  \
        return Core::ReverseFind(*this, ch);                                                                           \
    }                                                                                                                  \
    int String::FindOneOf(const Char* lpszCharSet) const                                                               \
    {                                                                                                                  \
        return Core::FindOneOf(*this, lpszCharSet);                                                                    \
    }                                                                                                                  \
                                                                                                                       \
    int String::Replace(Char chOld, Char chNew)                                                                        \
    {                                                                                                                  \
        return Core::Replace(*this, chOld, chNew);                                                                     \
    }                                                                                                                  \
    int String::Replace(const Char* lpszOld, const Char* lpszNew)                                                      \
    {                                                                                                                  \
        return Core::Replace(*this, lpszOld, lpszNew);                                                                 \
    }                                                                                                                  \
    int String::Remove(Char chRemove)                                                                                  \
    {                                                                                                                  \
        return Core::Remove(*this, chRemove);                                                                          \
    }                                                                                                                  \
    int String::Insert(int nIndex, Char ch)                                                                            \
    {                                                                                                                  \
        return Core::Insert(*this, nIndex, ch);                                                                        \
    }                                                                                                                  \
    int String::Insert(int nIndex, const Char* pstr)                                                                   \
    {                                                                                                                  \
        return Core::Insert(*this, nIndex, pstr);                                                                      \
    }                                                                                                                  \
    int String::Delete(int nIndex, int nCount)                                                                         \
    {                                                                                                                  \
        return Core::Delete(*this, nIndex, nCount);                                                                    \
    }                                                                                                                  \
    String& String::TrimLeft()                                                                                         \
    {                                                                                                                  \
        return Core::TrimLeft(*this);                                                                                  \
    }                                                                                                                  \
    String& String::TrimLeft(Char chTarget)                                                                            \
    {                                                                                                                  \
        return Core::TrimLeft(*this, chTarget);                                                                        \
    }                                                                                                                  \
    String& String::TrimLeft(const Char* lpszTargets)                                                                  \
    {                                                                                                                  \
        return Core::TrimLeft(*this, lpszTargets);                                                                     \
    }                                                                                                                  \
    String& String::TrimRight()                                                                                        \
    {                                                                                                                  \
        return Core::TrimRight(*this);                                                                                 \
    }                                                                                                                  \
    String& String::TrimRight(Char chTarget)                                                                           \
    {                                                                                                                  \
        return Core::TrimRight(*this, chTarget);                                                                       \
    }                                                                                                                  \
    String& String::TrimRight(const Char* lpszTargetList)                                                              \
    {                                                                                                                  \
        return Core::TrimRight(*this, lpszTargetList);                                                                 \
    }                                                                                                                  \
    String& String::Trim()                                                                                             \
    {                                                                                                                  \
        return TrimRight().TrimLeft();                                                                                 \
    }                                                                                                                  \
    String& String::Trim(Char chTarget)                                                                                \
    {                                                                                                                  \
        return TrimRight(chTarget).TrimLeft(chTarget);                                                                 \
    }                                                                                                                  \
    String& String::Trim(const Char* lpszTargets)                                                                      \
    {                                                                                                                  \
        return TrimRight(lpszTargets).TrimLeft(lpszTargets);                                                           \
    }                                                                                                                  \
    String& String::MakeUpper()                                                                                        \
    {                                                                                                                  \
        return Core::MakeUpper(*this);                                                                                 \
    }                                                                                                                  \
    String& String::MakeLower()                                                                                        \
    {                                                                                                                  \
        return Core::MakeLower(*this);                                                                                 \
    }                                                                                                                  \
    String& String::MakeReverse()                                                                                      \
    {                                                                                                                  \
        return Core::MakeReverse(*this);                                                                               \
    }                                                                                                                  \
                                                                                                                       \
    int String::Compare(const Char* lpsz) const                                                                        \
    {                                                                                                                  \
        return Core::Collate(*this, lpsz, true);                                                                       \
    }                                                                                                                  \
    int String::CompareNoCase(const Char* lpsz) const                                                                  \
    {                                                                                                                  \
        return Core::Collate(*this, lpsz, false);                                                                      \
    }                                                                                                                  \
    int String::Collate(const Char* lpsz, bool bCaseSensitive) const                                                   \
    {                                                                                                                  \
        return Core::Collate(*this, lpsz, bCaseSensitive);                                                             \
    }                                                                                                                  \
    int String::CollateNoCase(const Char* lpsz) const                                                                  \
    {                                                                                                                  \
        return Core::Collate(*this, lpsz, false);                                                                      \
    }                                                                                                                  \
    ZOLTA_STRING_RELATIONS(const String&, const String&, Core::CompareStrings)                                         \
    ZOLTA_STRING_RELATIONS(const String&, const Char*, Core::CompareStrings)                                           \
    ZOLTA_STRING_RELATIONS(const Char*, const String&, Core::CompareStrings)                                           \
                                                                                                                       \
    void String::Format(const Char* lpszFormat, ...)                                                                   \
    {                                                                                                                  \
        ZOLTA_ASSERT_TEXT(lpszFormat != nullptr, "lpszFormat != __null");                                              \
        va_list args;                                                                                                  \
        va_start(args, lpszFormat);                                                                                    \
        FormatV(lpszFormat, args);                                                                                     \
        va_end(args);                                                                                                  \
    }                                                                                                                  \
    void String::AppendFormat(const Char* format, ...)                                                                 \
    {                                                                                                                  \
        ZOLTA_ASSERT_TEXT(format != nullptr, "format != __null");                                                      \
        va_list args;                                                                                                  \
        va_start(args, format);                                                                                        \
        AppendFormatV(format, args);                                                                                   \
        va_end(args);                                                                                                  \
    }                                                                                                                  \
    void String::FormatV(const Char* format, va_list args)                                                             \
    {                                                                                                                  \
        Core::FormatV(*this, format, args, false);                                                                     \
    }                                                                                                                  \
    void String::AppendFormatV(const Char* format, va_list args)                                                       \
    {                                                                                                                  \
        Core::FormatV(*this, format, args, true);                                                                      \
    }                                                                                                                  \
                                                                                                                       \
    void ConstructElements(String* pElements, int nCount)                                                              \
    {                                                                                                                  \
        Core::ConstructElements(pElements, nCount);                                                                    \
    }                                                                                                                  \
    void DestructElements(String* pElements, int nCount)                                                               \
    {                                                                                                                  \
        Core::DestructElements(pElements, nCount);                                                                     \
    }                                                                                                                  \
    void CopyElements(String* pDest, const String* pSrc, int nCount)                                                   \
    {                                                                                                                  \
        Core::CopyElements(pDest, pSrc, nCount);                                                                       \
    }
