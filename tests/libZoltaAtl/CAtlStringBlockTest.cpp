// The block model of CAtlString: shared empty block, exact allocation, copy-on-write, locking
// and the raw buffer protocol.

#include "AssertionPattern.h"
#include "CAtlString.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <new>

namespace {

void ExpectNilUntouched()
{
    EXPECT_EQ(CAtlString::_afxDataNil->nRefs, -1);
    EXPECT_EQ(CAtlString::_afxDataNil->nDataLength, 0);
    EXPECT_EQ(CAtlString::_afxDataNil->nAllocLength, 0);
    EXPECT_EQ(CAtlString::_afxDataNil->data()[0], L'\0');
}

} // namespace

TEST(CAtlStringBlock, EveryRoadToEmptyEndsAtTheOneSharedBlock)
{
    CAtlString byDefault;
    EXPECT_EQ(byDefault.GetData(), CAtlString::_afxDataNil);

    CAtlString emptied(L"text");
    emptied.Empty();
    EXPECT_EQ(emptied.GetData(), CAtlString::_afxDataNil);

    CAtlString released(L"text");
    released.Release();
    EXPECT_EQ(released.GetData(), CAtlString::_afxDataNil);

    CAtlString allocated(L"text");
    allocated.Release();
    allocated.AllocBuffer(0);
    EXPECT_EQ(allocated.GetData(), CAtlString::_afxDataNil);

    EXPECT_EQ(CAtlString(L"").GetData(), CAtlString::_afxDataNil);
    EXPECT_EQ(CAtlString(L"abc", 0).GetData(), CAtlString::_afxDataNil);
    EXPECT_EQ(CAtlString(L"abc").Mid(3).GetData(), CAtlString::_afxDataNil);
    ExpectNilUntouched();
}

TEST(CAtlStringBlock, OperationsOnEmptyStringsNeverWriteTheSharedBlock)
{
    {
        CAtlString s;
        CAtlString copy(s);
        CAtlString assigned;
        assigned = s;
        s.ReleaseBuffer();
        s.GetBufferSetLength(0);
        s.LockBuffer();
        s.UnlockBuffer();
        s.FreeExtra();
        s.Trim();
        s.MakeReverse();
        s.Remove(L'x');
        s.Empty();
        s.Release();
        CAtlString::Release(s.GetData());
        EXPECT_EQ(copy.GetData(), CAtlString::_afxDataNil);
        EXPECT_EQ(assigned.GetData(), CAtlString::_afxDataNil);
    }
    ExpectNilUntouched();
}

TEST(CAtlStringBlock, BlocksAreExactlyAsLongAsTheTextAndAppendsInsideThemStayInPlace)
{
    CAtlString s(L"abc");
    EXPECT_EQ(s.GetData()->nAllocLength, 3);
    EXPECT_EQ(s.GetData()->nRefs, 1);
    EXPECT_EQ(s.GetString()[3], L'\0');
    const wchar_t* before = s.GetString();
    s += L"d";
    EXPECT_NE(s.GetString(), before) << "an append that does not fit moves to a new block";
    EXPECT_EQ(s.GetData()->nAllocLength, 4);
    EXPECT_EQ((CAtlString(L"ab") + CAtlString(L"cde")).GetData()->nAllocLength, 5);

    s.GetBuffer(10);
    s.ReleaseBuffer(2);
    before = s.GetString();
    s += L"cd";
    s.Append(L"e");
    s += L'f';
    EXPECT_EQ(s.GetString(), before);
    EXPECT_EQ(s, L"abcdef");
    EXPECT_EQ(s.GetData()->nAllocLength, 10);
    // Appending a string to itself reads all of it before any of it moves.
    s += s;
    EXPECT_EQ(s, L"abcdefabcdef");
}

TEST(CAtlStringBlock, CopiesShareUntilOneOfThemWrites)
{
    CAtlString original(L"shared");
    CAtlString copy(original);
    CAtlString assigned;
    assigned = original;
    EXPECT_EQ(copy.GetString(), original.GetString());
    EXPECT_EQ(assigned.GetString(), original.GetString());
    EXPECT_EQ(original.GetData()->nRefs, 3);

    copy.SetAt(0, L'S');
    EXPECT_NE(copy.GetString(), original.GetString());
    EXPECT_EQ(copy, L"Shared");
    EXPECT_EQ(original, L"shared");
    EXPECT_EQ(original.GetData()->nRefs, 2);
    EXPECT_EQ(copy.GetData()->nRefs, 1);

    assigned.MakeUpper();
    EXPECT_EQ(original, L"shared");
    EXPECT_EQ(original.GetData()->nRefs, 1);

    original = original; // self-assignment keeps the block
    EXPECT_EQ(original.GetData()->nRefs, 1);
    EXPECT_EQ(original, L"shared");
}

TEST(CAtlStringBlock, GetBufferMakesAPrivateBlockOnlyWhenAskedForRoom)
{
    CAtlString original(L"text");
    CAtlString copy(original);
    EXPECT_EQ(copy.GetBuffer(), original.GetString()) << "without an argument the block stays shared";
    EXPECT_EQ(original.GetData()->nRefs, 2);

    wchar_t* buffer = copy.GetBuffer(2);
    EXPECT_NE(buffer, original.GetString());
    EXPECT_EQ(copy.GetData()->nAllocLength, 4) << "never smaller than the text";
    EXPECT_EQ(copy.GetLength(), 4);
    EXPECT_EQ(std::wcscmp(buffer, L"text"), 0);
    EXPECT_EQ(original.GetData()->nRefs, 1);

    copy.GetBuffer(12);
    EXPECT_EQ(copy.GetData()->nAllocLength, 12);
    EXPECT_EQ(copy.GetLength(), 4);

    buffer = copy.GetBufferSetLength(3);
    EXPECT_EQ(copy.GetLength(), 3);
    EXPECT_EQ(buffer[3], L'\0');
    EXPECT_EQ(copy, L"tex");
}

TEST(CAtlStringBlock, ReleaseBufferDefaultKeepsALengthAndMeasuresOnlyWhenThereIsNone)
{
    CAtlString fresh;
    std::wcscpy(fresh.GetBuffer(10), L"hello");
    fresh.ReleaseBuffer();
    EXPECT_EQ(fresh.GetLength(), 5);
    EXPECT_EQ(fresh, L"hello");

    CAtlString existing(L"ab");
    std::wcscpy(existing.GetBuffer(10), L"hello");
    existing.ReleaseBuffer();
    EXPECT_EQ(existing.GetLength(), 2);
    EXPECT_EQ(existing, L"he");

    CAtlString explicitLength(L"ab");
    std::wcscpy(explicitLength.GetBuffer(10), L"hello");
    explicitLength.ReleaseBuffer(4);
    EXPECT_EQ(explicitLength, L"hell");

    // A length of 0 is measured again: the characters behind the terminator come back.
    CAtlString remeasured;
    wchar_t* buffer = remeasured.GetBufferSetLength(3);
    std::wcscpy(buffer, L"xyz");
    remeasured.ReleaseBuffer(0);
    EXPECT_TRUE(remeasured.IsEmpty());
    buffer[0] = L'x';
    remeasured.ReleaseBuffer();
    EXPECT_EQ(remeasured, L"xyz");
}

TEST(CAtlStringBlock, LockedBuffersAreCopiedByValueAndKeepTheirAllocation)
{
    CAtlString locked(L"locked");
    wchar_t* characters = locked.LockBuffer();
    EXPECT_EQ(locked.GetData()->nRefs, -1);

    CAtlString copied(locked);
    EXPECT_NE(copied.GetString(), characters);
    EXPECT_EQ(copied, L"locked");
    EXPECT_EQ(copied.GetData()->nRefs, 1);

    CAtlString assigned(L"other");
    assigned = locked;
    EXPECT_NE(assigned.GetString(), characters);
    EXPECT_EQ(assigned, L"locked");

    // Assigning into a locked buffer copies into it and it stays locked.
    CAtlString source(L"new");
    locked = source;
    EXPECT_EQ(locked.GetString(), characters);
    EXPECT_EQ(locked.GetData()->nRefs, -1);
    EXPECT_EQ(source.GetData()->nRefs, 1);
    EXPECT_EQ(locked, L"new");

    locked.Empty();
    EXPECT_EQ(locked.GetString(), characters);
    EXPECT_EQ(locked.GetLength(), 0);
    EXPECT_EQ(locked.GetData()->nAllocLength, 6);
    EXPECT_EQ(locked.GetData()->nRefs, -1);

    locked.UnlockBuffer();
    EXPECT_EQ(locked.GetData()->nRefs, 1);
}

TEST(CAtlStringBlock, FreeExtraAndTruncateShrinkTheBlock)
{
    CAtlString s(L"abc");
    s.GetBuffer(20);
    s.ReleaseBuffer(3);
    EXPECT_EQ(s.GetData()->nAllocLength, 20);
    s.FreeExtra();
    EXPECT_EQ(s.GetData()->nAllocLength, 3);
    EXPECT_EQ(s, L"abc");

    s.Truncate(1);
    EXPECT_EQ(s, L"a");
    s.Truncate(0);
    EXPECT_TRUE(s.IsEmpty());
}

TEST(CAtlStringBlock, ArrayHelpersConstructReleaseAndShare)
{
    alignas(CAtlString) unsigned char storage[3 * sizeof(CAtlString)];
    CAtlString* elements = reinterpret_cast<CAtlString*>(storage);
    ConstructElements(elements, 3);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(elements[i].GetData(), CAtlString::_afxDataNil);

    const CAtlString sources[3] = {CAtlString(L"a"), CAtlString(L"b"), CAtlString(L"c")};
    CopyElements(elements, sources, 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(elements[i].GetString(), sources[i].GetString());
        EXPECT_EQ(sources[i].GetData()->nRefs, 2);
    }
    DestructElements(elements, 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(elements[i].GetData(), CAtlString::_afxDataNil);
        EXPECT_EQ(sources[i].GetData()->nRefs, 1);
    }
    CAtlString* none = nullptr;
    ConstructElements(none, 0);
    DestructElements(none, 0);
    CopyElements(none, none, 0);
}

TEST(CAtlStringBlockDeath, ContractViolationsNameTheBrokenExpression)
{
    EXPECT_DEATH(
        {
            alignas(CAtlString) unsigned char raw[sizeof(CAtlString)] = {};
            reinterpret_cast<CAtlString*>(raw)->GetLength();
        },
        AssertionPattern("m_pchData != __null"));
    EXPECT_DEATH(CAtlString().AllocBuffer(-1), AssertionPattern("nLen >= 0"));
    EXPECT_DEATH(CAtlString().AllocBuffer(2147483647), AssertionPattern("nLen <= 2147483647-1"));
    EXPECT_DEATH(CAtlString().GetBuffer(-1), AssertionPattern("nMinBufLength >= 0"));
    EXPECT_DEATH(CAtlString(L"ab").GetBufferSetLength(-1), AssertionPattern("nNewLength >= 0"));
    EXPECT_DEATH(CAtlString(L"ab").ReleaseBuffer(3), AssertionPattern("nNewLength <= GetData()->nAllocLength"));
    EXPECT_DEATH(CAtlString(L"ab").UnlockBuffer(), AssertionPattern("GetData()->nRefs == -1"));
    EXPECT_DEATH(CAtlString(L"ab").Truncate(3), AssertionPattern("nNewLength <= GetLength()"));
    EXPECT_DEATH(
        {
            CAtlString s(L"ab");
            s.GetData()->nRefs = 0;
            s.Release();
        },
        AssertionPattern("GetData()->nRefs != 0"));
    EXPECT_DEATH(
        {
            CAtlString s(L"ab");
            s.GetData()->nRefs = 0;
            CAtlString::Release(s.GetData());
        },
        AssertionPattern("pData->nRefs != 0"));
    CAtlString* none = nullptr;
    EXPECT_DEATH(ConstructElements(none, 1), AssertionPattern("nCount == 0 || pElements != __null"));
    EXPECT_DEATH(DestructElements(none, 1), AssertionPattern("nCount == 0 || pElements != __null"));
    CAtlString one;
    EXPECT_DEATH(CopyElements(none, &one, 1), AssertionPattern("nCount == 0 || pDest != __null"));
    EXPECT_DEATH(CopyElements(&one, none, 1), AssertionPattern("nCount == 0 || pSrc != __null"));
}
