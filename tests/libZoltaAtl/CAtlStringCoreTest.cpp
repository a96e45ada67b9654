// What both string classes share through their one core: the block model (shared empty block,
// exact allocation, copy-on-write, locking, the raw buffer) and the text algorithms. Each case runs
// for CAtlString and CAtlStringA; where they differ deliberately, see their own test files.

#include "AssertionPattern.h"
#include "libZoltaAtl/CAtlString.h"
#include "libZoltaAtl/CAtlStringA.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <unordered_map>

namespace {

template <class S>
struct Traits;
template <>
struct Traits<CAtlString> {
    using Char = wchar_t;
    static CAtlStringData* Nil() { return CAtlString::_afxDataNil; }
};
template <>
struct Traits<CAtlStringA> {
    using Char = char;
    static CAtlStringAData* Nil() { return CAtlStringA::_afxDataANil; }
};

template <class S>
class StringCoreTest : public ::testing::Test {
protected:
    using Char = typename Traits<S>::Char;
    // ASCII text in the class under test; it converts to `const Char*` for the pointer overloads.
    static S T(const char* ascii) { return S(ascii); }
    static Char C(char ascii) { return static_cast<Char>(ascii); }
    static auto* Nil() { return Traits<S>::Nil(); }
    static void ExpectNilUntouched()
    {
        EXPECT_EQ(Nil()->nRefs, -1);
        EXPECT_EQ(Nil()->nDataLength, 0);
        EXPECT_EQ(Nil()->nAllocLength, 0);
        EXPECT_EQ(Nil()->data()[0], 0);
    }
};

using StringClasses = ::testing::Types<CAtlString, CAtlStringA>;
TYPED_TEST_SUITE(StringCoreTest, StringClasses);

TYPED_TEST(StringCoreTest, EveryRoadToEmptyEndsAtTheOneSharedBlock)
{
    using S = TypeParam;
    auto T = TestFixture::T;
    EXPECT_EQ(S().GetData(), this->Nil());
    S emptied = T("text");
    emptied.Empty();
    EXPECT_EQ(emptied.GetData(), this->Nil());
    S released = T("text");
    released.Release();
    EXPECT_EQ(released.GetData(), this->Nil());
    released.AllocBuffer(0);
    EXPECT_EQ(released.GetData(), this->Nil());
    EXPECT_EQ(T("").GetData(), this->Nil());
    EXPECT_EQ(S(T("abc").GetString(), 0).GetData(), this->Nil());
    EXPECT_EQ(T("abc").Mid(3).GetData(), this->Nil());

    // Operations on empty strings never write the shared block.
    {
        S s;
        S copy(s);
        S assigned;
        assigned = s;
        s.ReleaseBuffer();
        s.GetBufferSetLength(0);
        s.LockBuffer();
        s.UnlockBuffer();
        s.FreeExtra();
        s.Trim();
        s.MakeReverse();
        s.Remove(this->C('x'));
        s.Empty();
        s.Release();
        S::Release(s.GetData());
        EXPECT_EQ(copy.GetData(), this->Nil());
        EXPECT_EQ(assigned.GetData(), this->Nil());
    }
    this->ExpectNilUntouched();
}

TYPED_TEST(StringCoreTest, BlocksAreExactlyAsLongAsTheTextAndAppendsInsideThemStayInPlace)
{
    auto T = TestFixture::T;
    TypeParam s = T("abc");
    EXPECT_EQ(s.GetData()->nAllocLength, 3);
    EXPECT_EQ(s.GetData()->nRefs, 1);
    EXPECT_EQ(s.GetString()[3], 0);
    auto before = s.GetString();
    s += T("d");
    EXPECT_NE(s.GetString(), before) << "an append that does not fit moves to a new block";
    EXPECT_EQ(s.GetData()->nAllocLength, 4);
    EXPECT_EQ((T("ab") + T("cde")).GetData()->nAllocLength, 5);

    s.GetBuffer(10);
    s.ReleaseBuffer(2);
    before = s.GetString();
    s += T("cd");
    s.Append(T("e").GetString());
    s += this->C('f');
    EXPECT_EQ(s.GetString(), before);
    EXPECT_EQ(s, T("abcdef"));
    EXPECT_EQ(s.GetData()->nAllocLength, 10);
    // Appending a string to itself reads all of it before any of it moves.
    s += s;
    EXPECT_EQ(s, T("abcdefabcdef"));

    s.FreeExtra();
    EXPECT_EQ(s.GetData()->nAllocLength, 12);
}

TYPED_TEST(StringCoreTest, CopiesShareUntilOneOfThemWrites)
{
    auto T = TestFixture::T;
    TypeParam original = T("shared");
    TypeParam copy(original);
    TypeParam assigned;
    assigned = original;
    EXPECT_EQ(copy.GetString(), original.GetString());
    EXPECT_EQ(original.GetData()->nRefs, 3);

    copy.SetAt(0, this->C('S'));
    EXPECT_EQ(copy, T("Shared"));
    EXPECT_EQ(original, T("shared"));
    EXPECT_EQ(original.GetData()->nRefs, 2);
    EXPECT_EQ(copy.GetData()->nRefs, 1);

    assigned.MakeUpper();
    EXPECT_EQ(original, T("shared"));
    EXPECT_EQ(original.GetData()->nRefs, 1);

    original = original;  // self-assignment keeps the block
    EXPECT_EQ(original.GetData()->nRefs, 1);
    EXPECT_EQ(original, T("shared"));

    // GetBuffer makes a private block only when asked for room.
    TypeParam shared(original);
    EXPECT_EQ(shared.GetBuffer(), original.GetString()) << "without an argument the block stays shared";
    auto* buffer = shared.GetBuffer(2);
    EXPECT_NE(buffer, original.GetString());
    EXPECT_EQ(shared.GetData()->nAllocLength, 6) << "never smaller than the text";
    EXPECT_EQ(original.GetData()->nRefs, 1);
    shared.GetBuffer(12);
    EXPECT_EQ(shared.GetData()->nAllocLength, 12);
    EXPECT_EQ(shared.GetLength(), 6);
    buffer = shared.GetBufferSetLength(3);
    EXPECT_EQ(buffer[3], 0);
    EXPECT_EQ(shared, T("sha"));
}

TYPED_TEST(StringCoreTest, LockedBuffersAreCopiedByValueAndKeepTheirAllocation)
{
    auto T = TestFixture::T;
    TypeParam locked = T("locked");
    auto* characters = locked.LockBuffer();
    EXPECT_EQ(locked.GetData()->nRefs, -1);

    TypeParam copied(locked);
    EXPECT_NE(copied.GetString(), characters);
    EXPECT_EQ(copied, T("locked"));
    TypeParam assigned = T("other");
    assigned = locked;
    EXPECT_NE(assigned.GetString(), characters);
    EXPECT_EQ(assigned, T("locked"));

    // Assigning into a locked buffer copies into it and it stays locked.
    TypeParam source = T("new");
    locked = source;
    EXPECT_EQ(locked.GetString(), characters);
    EXPECT_EQ(locked.GetData()->nRefs, -1);
    EXPECT_EQ(source.GetData()->nRefs, 1);
    EXPECT_EQ(locked, T("new"));

    locked.Empty();
    EXPECT_EQ(locked.GetString(), characters);
    EXPECT_EQ(locked.GetData()->nAllocLength, 6);
    EXPECT_EQ(locked.GetData()->nRefs, -1);
    locked.UnlockBuffer();
    EXPECT_EQ(locked.GetData()->nRefs, 1);
}

TYPED_TEST(StringCoreTest, ArrayHelpersConstructReleaseAndShare)
{
    using S = TypeParam;
    auto T = TestFixture::T;
    alignas(S) unsigned char storage[2 * sizeof(S)];
    S* elements = reinterpret_cast<S*>(storage);
    ConstructElements(elements, 2);
    EXPECT_EQ(elements[1].GetData(), this->Nil());
    const S sources[2] = {T("a"), T("b")};
    CopyElements(elements, sources, 2);
    EXPECT_EQ(elements[1].GetString(), sources[1].GetString());
    EXPECT_EQ(sources[1].GetData()->nRefs, 2);
    DestructElements(elements, 2);
    EXPECT_EQ(elements[1].GetData(), this->Nil());
    EXPECT_EQ(sources[1].GetData()->nRefs, 1);
    S* none = nullptr;
    ConstructElements(none, 0);
    DestructElements(none, 0);
    CopyElements(none, none, 0);
}

TYPED_TEST(StringCoreTest, MidLeftRightClampAndShareWholeResults)
{
    auto T = TestFixture::T;
    const TypeParam s = T("abcdef");
    EXPECT_EQ(s.Mid(2, 3), T("cde"));
    EXPECT_EQ(s.Mid(4, 100), T("ef"));
    EXPECT_EQ(s.Mid(-3, 2), T("ab"));
    EXPECT_EQ(s.Mid(2, -1), T(""));
    EXPECT_EQ(s.Mid(3), T("def"));
    EXPECT_EQ(s.Mid(6), T(""));
    EXPECT_EQ(s.Mid(1, 2147483647), T("bcdef"));
    EXPECT_EQ(s.Mid(0).GetString(), s.GetString());
    EXPECT_EQ(s.Mid(-1, 10).GetString(), s.GetString());
    EXPECT_EQ(s.Left(99).GetString(), s.GetString());
    EXPECT_EQ(s.Right(6).GetString(), s.GetString());
    EXPECT_NE(s.Left(5).GetString(), s.GetString());
    EXPECT_EQ(s.Left(2), T("ab"));
    EXPECT_EQ(s.Right(2), T("ef"));
    EXPECT_EQ(s.Left(-1), T(""));
    EXPECT_EQ(s.Right(-1), T(""));
}

TYPED_TEST(StringCoreTest, FindCharactersAndStrings)
{
    auto T = TestFixture::T;
    auto C = TestFixture::C;
    const TypeParam s = T("a/b/c");
    EXPECT_EQ(s.Find(C('/')), 1);
    EXPECT_EQ(s.Find(C('/'), 2), 3);
    EXPECT_EQ(s.Find(C('/'), 4), -1);
    EXPECT_EQ(s.Find(C('/'), 99), -1);
    EXPECT_EQ(s.Find(C('x')), -1);
    EXPECT_EQ(s.ReverseFind(C('/')), 3);
    EXPECT_EQ(s.ReverseFind(C('x')), -1);
    EXPECT_EQ(s.FindOneOf(T("cb")), 2);
    EXPECT_EQ(s.FindOneOf(T("xyz")), -1);
    EXPECT_EQ(s.Find(T("b/")), 2);
    EXPECT_EQ(s.Find(T("/"), 2), 3);
    EXPECT_EQ(s.Find(T("/c"), 4), -1);
    EXPECT_EQ(T("").Find(T("")), -1);
}

TYPED_TEST(StringCoreTest, ReplaceCharactersAndStrings)
{
    auto T = TestFixture::T;
    auto C = TestFixture::C;
    TypeParam s = T("a.b.c");
    TypeParam copy(s);
    EXPECT_EQ(s.Replace(C('.'), C('.')), 0);
    EXPECT_EQ(s.GetString(), copy.GetString());
    EXPECT_EQ(s.Replace(C('.'), C('/')), 2);
    EXPECT_EQ(s, T("a/b/c"));
    EXPECT_EQ(copy, T("a.b.c"));
    EXPECT_EQ(s.Replace(C('x'), C('y')), 0);

    s = T("one two one two one");
    EXPECT_EQ(s.Replace(T("one"), T("1")), 3);
    EXPECT_EQ(s.Replace(T("two"), T("three")), 2);
    EXPECT_EQ(s, T("1 three 1 three 1"));
    EXPECT_EQ(s.Replace(T(" "), T("")), 4);
    EXPECT_EQ(s.Replace(T("1"), T("1")), 0);
    EXPECT_EQ(s.Replace(T("zzz"), T("y")), 0);
    EXPECT_EQ(s.Replace(T(""), T("y")), 0);
    EXPECT_EQ(s, T("1three1three1"));

    TypeParam overlapping = T("aaaaa");
    EXPECT_EQ(overlapping.Replace(T("aa"), T("b")), 2);
    EXPECT_EQ(overlapping, T("bba"));
    TypeParam whole = T("abc");
    copy = whole;
    EXPECT_EQ(whole.Replace(T("abc"), T("")), 1);
    EXPECT_TRUE(whole.IsEmpty());
    EXPECT_EQ(copy, T("abc"));
}

TYPED_TEST(StringCoreTest, RemoveInsertDelete)
{
    auto T = TestFixture::T;
    auto C = TestFixture::C;
    TypeParam s = T("a-b-c");
    TypeParam copy(s);
    EXPECT_EQ(s.Remove(C('-')), 2);
    EXPECT_EQ(s, T("abc"));
    EXPECT_EQ(copy, T("a-b-c"));
    EXPECT_EQ(s.Remove(C('x')), 0);

    EXPECT_EQ(s.Insert(1, C('X')), 4);
    EXPECT_EQ(s.Insert(-5, T("<<")), 6);
    EXPECT_EQ(s.Insert(100, T(">")), 7);
    EXPECT_EQ(s, T("<<aXbc>"));
    EXPECT_EQ(s.Insert(2, T("")), 7);
    EXPECT_EQ(s.Insert(0, s.GetString() + 5), 9) << "inserting a piece of itself";
    EXPECT_EQ(s, T("c><<aXbc>"));

    EXPECT_EQ(s.Delete(0, 0), 9);
    EXPECT_EQ(s.Delete(9, 1), 9);
    EXPECT_EQ(s.Delete(20), 9);
    EXPECT_EQ(s.Delete(-3, 4), 5);
    EXPECT_EQ(s, T("aXbc>"));
    EXPECT_EQ(s.Delete(3, 100), 3);
    EXPECT_EQ(s, T("aXb"));
}

TYPED_TEST(StringCoreTest, TrimCaseAndReverse)
{
    auto T = TestFixture::T;
    auto C = TestFixture::C;
    const TypeParam s = T(" \t\n text \r\n");
    EXPECT_EQ(TypeParam(s).TrimLeft(), T("text \r\n"));
    EXPECT_EQ(TypeParam(s).TrimRight(), T(" \t\n text"));
    EXPECT_EQ(TypeParam(s).Trim(), T("text"));
    EXPECT_EQ(T("xxaxx").TrimLeft(C('x')), T("axx"));
    EXPECT_EQ(T("xxaxx").TrimRight(C('x')), T("xxa"));
    EXPECT_EQ(T("xxaxx").Trim(C('x')), T("a"));
    EXPECT_EQ(T("<[a]>").TrimLeft(T("[<")), T("a]>"));
    EXPECT_EQ(T("<[a]>").TrimRight(T("]>")), T("<[a"));
    EXPECT_EQ(T("<[a]>").Trim(T("<>[]")), T("a"));
    EXPECT_EQ(T("   ").Trim(), T(""));
    EXPECT_EQ(T("abc").Trim(T("")), T("abc"));

    TypeParam mixed = T("MiXeD 123");
    const TypeParam copy(mixed);
    EXPECT_EQ(mixed.MakeUpper(), T("MIXED 123"));
    EXPECT_EQ(mixed.MakeLower(), T("mixed 123"));
    EXPECT_EQ(copy, T("MiXeD 123"));
    EXPECT_EQ(T("abcde").MakeReverse(), T("edcba"));
    EXPECT_EQ(T("abcd").MakeReverse(), T("dcba"));
    EXPECT_EQ(T("a").MakeReverse(), T("a"));
}

TYPED_TEST(StringCoreTest, AppendConcatenateCompareAndHash)
{
    auto T = TestFixture::T;
    auto C = TestFixture::C;
    TypeParam s = T("a");
    s += T("b");
    s += T("c").GetString();
    s += C('d');
    s.Append(T("e").GetString()).AppendChar(C('f')).Append(T("ghi").GetString(), 1);
    EXPECT_EQ(s, T("abcdefg"));
    const TypeParam x = T("x");
    EXPECT_EQ(x + x, T("xx"));
    EXPECT_EQ(x + C('y'), T("xy"));
    EXPECT_EQ(C('y') + x, T("yx"));
    EXPECT_EQ(x + T("yz").GetString(), T("xyz"));
    EXPECT_EQ(T("yz").GetString() + x, T("yzx"));

    const TypeParam apple = T("apple");
    const TypeParam Apple = T("Apple");
    EXPECT_LT(apple.Compare(T("banana")), 0);
    EXPECT_GT(apple.Compare(Apple), 0);
    EXPECT_EQ(apple.Compare(T("apple")), 0);
    EXPECT_EQ(apple.CompareNoCase(T("APPLE")), 0);
    EXPECT_EQ(apple.Collate(T("APPLE"), false), 0);
    EXPECT_NE(apple.Collate(T("APPLE"), true), 0);
    EXPECT_EQ(apple.CollateNoCase(T("aPPle")), 0);
    // Operators are case-sensitive, with a pointer on either side.
    EXPECT_TRUE(apple == T("apple").GetString() && T("apple").GetString() == apple && apple != Apple);
    EXPECT_TRUE(Apple < apple && apple > Apple.GetString() && apple <= apple && apple >= Apple && !(apple < apple));

    std::unordered_map<TypeParam, int> hashed{{T("key"), 7}};
    EXPECT_EQ(hashed.at(T("k") + T("ey")), 7);
    std::map<TypeParam, int> ordered{{T("b"), 2}, {T("a"), 1}};
    EXPECT_EQ(ordered.begin()->first, T("a"));
}

TYPED_TEST(StringCoreTest, ContractViolationsNameTheBrokenExpression)
{
    using S = TypeParam;
    auto T = TestFixture::T;
    EXPECT_DEATH(
        {
            alignas(S) unsigned char raw[sizeof(S)] = {};
            reinterpret_cast<S*>(raw)->GetLength();
        },
        AssertionPattern("m_pchData != __null"));
    EXPECT_DEATH(S().AllocBuffer(-1), AssertionPattern("nLen >= 0"));
    EXPECT_DEATH(S().AllocBuffer(2147483647), AssertionPattern("nLen <= 2147483647-1"));
    EXPECT_DEATH(S().GetBuffer(-1), AssertionPattern("nMinBufLength >= 0"));
    EXPECT_DEATH(T("ab").GetBufferSetLength(-1), AssertionPattern("nNewLength >= 0"));
    EXPECT_DEATH(T("ab").ReleaseBuffer(3), AssertionPattern("nNewLength <= GetData()->nAllocLength"));
    EXPECT_DEATH(T("ab").UnlockBuffer(), AssertionPattern("GetData()->nRefs == -1"));
    EXPECT_DEATH(
        {
            S s = T("ab");
            s.GetData()->nRefs = 0;
            s.Release();
        },
        AssertionPattern("GetData()->nRefs != 0"));
    EXPECT_DEATH(
        {
            S s = T("ab");
            s.GetData()->nRefs = 0;
            S::Release(s.GetData());
        },
        AssertionPattern("pData->nRefs != 0"));
    S* none = nullptr;
    EXPECT_DEATH(ConstructElements(none, 1), AssertionPattern("nCount == 0 || pElements != __null"));
    EXPECT_DEATH(DestructElements(none, 1), AssertionPattern("nCount == 0 || pElements != __null"));
    S one;
    EXPECT_DEATH(CopyElements(none, &one, 1), AssertionPattern("nCount == 0 || pDest != __null"));
    EXPECT_DEATH(CopyElements(&one, none, 1), AssertionPattern("nCount == 0 || pSrc != __null"));

    const typename TestFixture::Char* null = nullptr;
    S s = T("abc");
    EXPECT_DEATH(S(null, 2), AssertionPattern("lpch != __null"));
    EXPECT_DEATH(s.GetAt(-1), AssertionPattern("nIndex >= 0"));
    EXPECT_DEATH(s.GetAt(3), AssertionPattern("nIndex < GetData()->nDataLength"));
    EXPECT_DEATH(s[3], AssertionPattern("nIndex < GetData()->nDataLength"));
    EXPECT_DEATH(s.SetAt(3, this->C('x')), AssertionPattern("nIndex < GetData()->nDataLength"));
    EXPECT_DEATH(s.Append(null), AssertionPattern("pszSrc != __null"));
    EXPECT_DEATH(s += null, AssertionPattern("lpsz != __null"));
    EXPECT_DEATH(s.Find(null), AssertionPattern("sub != __null"));
    EXPECT_DEATH(s.TrimLeft(null), AssertionPattern("lpszTargets != __null"));
    EXPECT_DEATH(s.TrimRight(null), AssertionPattern("lpszTargetList != __null"));
    EXPECT_DEATH(s.Format(null), AssertionPattern("lpszFormat != __null"));
}

}  // namespace
