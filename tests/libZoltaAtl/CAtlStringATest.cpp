// CAtlStringA: the 8-bit class, where it differs from the wide one and how it converts.

#include "AssertionPattern.h"
#include "CAtlString.h"
#include "CAtlStringA.h"

#include <QString>

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstring>
#include <string>
#include <unordered_map>

namespace {

void FormatVia(CAtlStringA& target, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    target.FormatV(format, args);
    va_end(args);
}

} // namespace

TEST(CAtlStringABlock, SharedEmptyBlockSharingAndLocking)
{
    CAtlStringA empty;
    EXPECT_EQ(empty.GetData(), CAtlStringA::_afxDataANil);
    CAtlStringA emptied("x");
    emptied.Empty();
    EXPECT_EQ(emptied.GetData(), CAtlStringA::_afxDataANil);
    emptied.AllocBuffer(0);
    EXPECT_EQ(emptied.GetData(), CAtlStringA::_afxDataANil);

    CAtlStringA original("abc");
    EXPECT_EQ(original.GetData()->nAllocLength, 3);
    CAtlStringA copy(original);
    EXPECT_EQ(copy.GetString(), original.GetString());
    copy.SetAt(0, 'X');
    EXPECT_EQ(original, "abc");
    EXPECT_EQ(copy, "Xbc");

    char* locked = original.LockBuffer();
    CAtlStringA byValue(original);
    EXPECT_NE(byValue.GetString(), locked);
    original = CAtlStringA("z");
    EXPECT_EQ(original.GetString(), locked);
    EXPECT_EQ(original.GetData()->nRefs, -1);
    original.UnlockBuffer();
    EXPECT_EQ(original.GetData()->nRefs, 1);

    EXPECT_EQ(CAtlStringA::_afxDataANil->nRefs, -1);
    EXPECT_EQ(CAtlStringA::_afxDataANil->nDataLength, 0);
    EXPECT_EQ(CAtlStringA::_afxDataANil->data()[0], '\0');
}

TEST(CAtlStringABlock, ArrayHelpersConstructReleaseAndShare)
{
    alignas(CAtlStringA) unsigned char storage[2 * sizeof(CAtlStringA)];
    CAtlStringA* elements = reinterpret_cast<CAtlStringA*>(storage);
    ConstructElements(elements, 2);
    EXPECT_EQ(elements[1].GetData(), CAtlStringA::_afxDataANil);
    const CAtlStringA sources[2] = {CAtlStringA("a"), CAtlStringA("b")};
    CopyElements(elements, sources, 2);
    EXPECT_EQ(elements[1].GetString(), sources[1].GetString());
    DestructElements(elements, 2);
    EXPECT_EQ(elements[1].GetData(), CAtlStringA::_afxDataANil);
    EXPECT_EQ(sources[1].GetData()->nRefs, 1);
}

TEST(CAtlStringABlock, ReleaseBufferDefaultNeverMeasures)
{
    CAtlStringA fresh;
    std::strcpy(fresh.GetBuffer(10), "hello");
    fresh.ReleaseBuffer();
    EXPECT_EQ(fresh.GetLength(), 0) << "the caller must give the length";

    CAtlStringA explicitLength;
    std::strcpy(explicitLength.GetBuffer(10), "hello");
    explicitLength.ReleaseBuffer(5);
    EXPECT_EQ(explicitLength, "hello");

    CAtlStringA existing("ab");
    std::strcpy(existing.GetBuffer(10), "hello");
    existing.ReleaseBuffer();
    EXPECT_EQ(existing, "he");

    explicitLength.FreeExtra();
    EXPECT_EQ(explicitLength.GetData()->nAllocLength, 5);
}

TEST(CAtlStringAConversion, WidePointerIsEncodedAsUtf8)
{
    EXPECT_EQ(CAtlStringA(L"caf\u00E9 \u20AC \U0001F600"), "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80");
    EXPECT_EQ(CAtlStringA(L"plain"), "plain");
    EXPECT_TRUE(CAtlStringA(static_cast<const wchar_t*>(nullptr)).IsEmpty());

    const wchar_t withSurrogate[] = {L'a', static_cast<wchar_t>(0xD800), L'b', 0};
    EXPECT_TRUE(CAtlStringA(withSurrogate).IsEmpty());
}

TEST(CAtlStringAConversion, WideStringsAndCountedPointersAreNarrowedToTheLowByte)
{
    const CAtlString wide(L"caf\u00E9\u0141");
    EXPECT_EQ(CAtlStringA(wide), "caf\xE9\x41");
    EXPECT_EQ(CAtlStringA(L"\u0141bc", 2), "\x41" "b");

    CAtlStringA assigned;
    assigned = L"\u00E9t\u00E9";
    EXPECT_EQ(assigned, "\xE9t\xE9");
    assigned = wide;
    EXPECT_EQ(assigned, "caf\xE9\x41");

    CAtlStringA appended("x");
    appended += L"\u00E9";
    appended += wide;
    appended += L'\u0142';
    EXPECT_EQ(appended, "x\xE9" "caf\xE9\x41\x42");
    EXPECT_EQ(CAtlStringA("a") + L"\u00E9", "a\xE9");
    EXPECT_EQ(L"\u00E9" + CAtlStringA("a"), "\xE9" "a");
    EXPECT_EQ(CAtlStringA("a") + wide, "acaf\xE9\x41");
}

TEST(CAtlStringAConversion, QStringGivesItsUtf8Bytes)
{
    const QString text = QString::fromUtf8("\xC3\xA9t\xC3\xA9 \xF0\x9F\x98\x80");
    const CAtlStringA bytes(text);
    EXPECT_EQ(bytes, "\xC3\xA9t\xC3\xA9 \xF0\x9F\x98\x80");
    CAtlStringA assigned;
    assigned = text;
    EXPECT_EQ(assigned, bytes);
    // Round trip of non-ASCII text through the roads meant for it.
    EXPECT_EQ(CAtlString(QString::fromUtf8(bytes.GetString())).ToQString(), text);
}

TEST(CAtlStringAText, FindWithEmptySubstringFindsTheStartInside)
{
    EXPECT_EQ(CAtlStringA("").Find(""), -1);
    EXPECT_EQ(CAtlStringA("abc").Find(""), 0);
    EXPECT_EQ(CAtlStringA("abc").Find("", 2), 2);
    EXPECT_EQ(CAtlStringA("abc").Find("", 3), -1);
    EXPECT_EQ(CAtlStringA("abcabc").Find("bc", 2), 4);
    EXPECT_EQ(CAtlStringA("abcabc").Find('c', 3), 5);
    EXPECT_EQ(CAtlStringA("abcabc").ReverseFind('a'), 3);
    EXPECT_EQ(CAtlStringA("abcabc").FindOneOf("xc"), 2);
    EXPECT_EQ(CAtlStringA("abcabc").Find("x"), -1);
}

TEST(CAtlStringAText, MidSharesWholeResultsAndAbortsPastTheEnd)
{
    const CAtlStringA s("abcdef");
    EXPECT_EQ(s.Mid(2, 3), "cde");
    EXPECT_EQ(s.Mid(4, 99), "ef");
    EXPECT_EQ(s.Mid(-1, 2), "ab");
    EXPECT_EQ(s.Mid(6), "");
    EXPECT_EQ(s.Mid(0).GetString(), s.GetString());
    EXPECT_EQ(s.Left(10).GetString(), s.GetString());
    EXPECT_EQ(s.Right(2), "ef");
    EXPECT_DEATH(s.Mid(7), AssertionPattern("nFirst + nCount <= GetData()->nDataLength"));
    EXPECT_DEATH(s.Mid(10, 1), AssertionPattern("nFirst + nCount <= GetData()->nDataLength"));
}

TEST(CAtlStringAText, SpansTrimsAndEdits)
{
    const CAtlStringA s("123abc456");
    EXPECT_EQ(s.SpanIncluding("0123456789"), "123");
    EXPECT_EQ(s.SpanExcluding("abc"), "123");
    EXPECT_EQ(s.SpanIncluding("xyz"), "");
    EXPECT_EQ(s.SpanExcluding("xyz").GetString(), s.GetString());

    EXPECT_EQ(CAtlStringA(" \t text \n").Trim(), "text");
    EXPECT_EQ(CAtlStringA("--a--").TrimLeft('-'), "a--");
    EXPECT_EQ(CAtlStringA("--a-+").TrimRight("+-"), "--a");

    CAtlStringA edited("a.b.c");
    EXPECT_EQ(edited.Replace('.', '/'), 2);
    EXPECT_EQ(edited.Replace("/", "::"), 2);
    EXPECT_EQ(edited, "a::b::c");
    EXPECT_EQ(edited.Replace("::", "::"), 0);
    EXPECT_EQ(edited.Remove(':'), 4);
    EXPECT_EQ(edited.Insert(1, '-'), 4);
    EXPECT_EQ(edited.Insert(99, "!"), 5);
    EXPECT_EQ(edited, "a-bc!");
    EXPECT_EQ(edited.Delete(1), 4);
    EXPECT_EQ(edited, "abc!");
    EXPECT_EQ(edited.MakeReverse(), "!cba");
    EXPECT_EQ(edited.MakeUpper(), "!CBA");
    EXPECT_EQ(edited.MakeLower(), "!cba");
}

TEST(CAtlStringAText, AppendingComparingAndHashing)
{
    CAtlStringA s("a");
    s += "b";
    s += 'c';
    s += CAtlStringA("d");
    s.Append("e").Append("fg", 1).AppendChar('h');
    EXPECT_EQ(s, "abcdefh");
    EXPECT_EQ("x" + s + 'y', "xabcdefhy");
    EXPECT_EQ('x' + CAtlStringA("y"), "xy");

    EXPECT_EQ(CAtlStringA("abc").CompareNoCase("ABC"), 0);
    EXPECT_LT(CAtlStringA("ABC").Compare("abc"), 0);
    EXPECT_TRUE(CAtlStringA("a") < "b");
    EXPECT_TRUE("b" > CAtlStringA("a"));
    EXPECT_TRUE(CAtlStringA("a") != CAtlStringA("A"));

    std::unordered_map<CAtlStringA, int> hashed{{CAtlStringA("key"), 7}};
    EXPECT_EQ(hashed.at(CAtlStringA("k") + "ey"), 7);
}

TEST(CAtlStringAText, FormatDoublesWithoutRewritingTheFormat)
{
    CAtlStringA s;
    s.Format("%s=%d", "n", 5);
    EXPECT_EQ(s, "n=5");
    s.AppendFormat(" %%s");
    EXPECT_EQ(s, "n=5 %s");
    const std::string longText(3000, 'q');
    FormatVia(s, "<%s>", longText.c_str());
    EXPECT_EQ(s.GetLength(), 3002);
    EXPECT_EQ(s.GetData()->nAllocLength, 3002);
}

TEST(CAtlStringADeath, NullArgumentsAndBadIndexesAreAssertionFailures)
{
    const char* nullNarrow = nullptr;
    const wchar_t* nullWide = nullptr;
    CAtlStringA s("abc");
    EXPECT_DEATH(CAtlStringA(nullNarrow, 1), AssertionPattern("lpch != __null"));
    EXPECT_DEATH(CAtlStringA(nullWide, 1), AssertionPattern("lpch != __null"));
    EXPECT_DEATH(s.GetAt(3), AssertionPattern("nIndex < GetData()->nDataLength"));
    EXPECT_DEATH(s.SetAt(-1, 'x'), AssertionPattern("nIndex >= 0"));
    EXPECT_DEATH(s.Append(nullNarrow), AssertionPattern("pszSrc != __null"));
    EXPECT_DEATH(s += nullNarrow, AssertionPattern("lpsz != __null"));
    EXPECT_DEATH(s += nullWide, AssertionPattern("uca != __null"));
    EXPECT_DEATH(s.Find(nullNarrow), AssertionPattern("sub != __null"));
    EXPECT_DEATH(s.Replace(nullNarrow, "x"), AssertionPattern("caOld != __null"));
    EXPECT_DEATH(s.Replace("x", nullNarrow), AssertionPattern("caNew != __null"));
    EXPECT_DEATH(s.TrimLeft(nullNarrow), AssertionPattern("lpszTargets != __null"));
    EXPECT_DEATH(s.TrimRight(nullNarrow), AssertionPattern("lpszTargetList != __null"));
    EXPECT_DEATH(s.Format(nullNarrow), AssertionPattern("lpszFormat != __null"));
    EXPECT_DEATH(FormatVia(s, nullNarrow), AssertionPattern("caFormat != __null"));
    EXPECT_DEATH(s.UnlockBuffer(), AssertionPattern("GetData()->nRefs == -1"));
    EXPECT_DEATH(s.ReleaseBuffer(4), AssertionPattern("nNewLength <= GetData()->nAllocLength"));
}
