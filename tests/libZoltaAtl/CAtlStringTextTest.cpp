// CAtlString as text: conversions, extraction, searching, editing, comparison, formatting.

#include "AssertionPattern.h"
#include "CAtlString.h"
#include "CAtlStringA.h"

#include <QString>

#include <gtest/gtest.h>

#include <cstdarg>
#include <map>
#include <string>
#include <unordered_map>

namespace {

void FormatVia(CAtlString& target, const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    target.FormatV(format, args);
    va_end(args);
}

} // namespace

TEST(CAtlStringConversion, EightBitTextTakesItsByteCountAsLength)
{
    EXPECT_EQ(CAtlString("plain ascii"), L"plain ascii");
    EXPECT_EQ(CAtlString("abcdef", 3), L"abc");

    // One two-byte UTF-8 character: one wide character decoded, length still 2.
    const CAtlString eAcute("\xC3\xA9");
    EXPECT_EQ(eAcute.GetLength(), 2);
    EXPECT_EQ(eAcute.GetAt(0), static_cast<wchar_t>(0xE9));
    EXPECT_EQ(eAcute.GetString()[2], L'\0');

    const CAtlString fromNarrowClass(CAtlStringA("x\xE2\x82\xACy"));
    EXPECT_EQ(fromNarrowClass.GetLength(), 5);
    EXPECT_EQ(fromNarrowClass.GetAt(0), L'x');
    EXPECT_EQ(fromNarrowClass.GetAt(1), static_cast<wchar_t>(0x20AC));
    EXPECT_EQ(fromNarrowClass.GetAt(2), L'y');

    CAtlString assigned(L"previous");
    assigned = "\xC3\xA9";
    EXPECT_EQ(assigned.GetLength(), 2);
    EXPECT_EQ(assigned.GetAt(0), static_cast<wchar_t>(0xE9));

    EXPECT_TRUE(CAtlString(static_cast<const char*>(nullptr)).IsEmpty());
    EXPECT_TRUE(CAtlString(static_cast<const wchar_t*>(nullptr)).IsEmpty());
}

TEST(CAtlStringConversion, QStringCarriesAnyTextBothWays)
{
    const QString text = QString::fromUtf8("caf\xC3\xA9 \xF0\x9F\x98\x80 \xE2\x82\xAC");
    const CAtlString wide(text);
    EXPECT_EQ(wide.GetLength(), 8) << "a character beyond the BMP is one wide character";
    EXPECT_EQ(wide.GetAt(5), static_cast<wchar_t>(0x1F600));
    EXPECT_EQ(wide.ToQString(), text);

    CAtlString assigned(L"x");
    assigned = text;
    EXPECT_EQ(assigned, wide);
    EXPECT_TRUE(CAtlString(QString()).IsEmpty());
    EXPECT_EQ(CAtlString().ToQString(), QString());
}

TEST(CAtlStringConversion, Utf8HelpersAreExactWhereThe8BitRoadIsNot)
{
    const char* utf8 = "caf\xC3\xA9 \xF0\x9F\x98\x80";
    const CAtlString decoded = CAtlString::FromUtf8(utf8);
    EXPECT_EQ(decoded.GetLength(), 6);
    EXPECT_EQ(decoded, L"caf\u00E9 \U0001F600");
    EXPECT_EQ(decoded.ToUtf8(), utf8);
    EXPECT_EQ(CAtlString::FromUtf8(utf8, 3), L"caf");
    EXPECT_TRUE(CAtlString::FromUtf8(nullptr).IsEmpty());
    EXPECT_TRUE(CAtlString().ToUtf8().IsEmpty());
}

TEST(CAtlStringConversion, CharacterRepeatAndCountedConstructors)
{
    EXPECT_EQ(CAtlString(L'x', 3), L"xxx");
    EXPECT_EQ(CAtlString(L'x'), L"x");
    EXPECT_TRUE(CAtlString(L'x', 0).IsEmpty());
    const wchar_t withZero[] = {L'a', L'\0', L'b'};
    EXPECT_EQ(CAtlString(withZero, 3).GetLength(), 3);
}

TEST(CAtlStringExtraction, MidLeftRightClampAndShareWholeResults)
{
    const CAtlString s(L"abcdef");
    EXPECT_EQ(s.Mid(2, 3), L"cde");
    EXPECT_EQ(s.Mid(4, 100), L"ef");
    EXPECT_EQ(s.Mid(-3, 2), L"ab");
    EXPECT_EQ(s.Mid(2, -1), L"");
    EXPECT_EQ(s.Mid(3), L"def");
    EXPECT_EQ(s.Mid(6), L"");
    EXPECT_EQ(s.Mid(10), L"") << "a start past the end gives an empty string on the wide class";
    EXPECT_EQ(s.Mid(10, 2), L"");
    EXPECT_EQ(s.Mid(1, 2147483647), L"bcdef");

    // Whole results share the block.
    EXPECT_EQ(s.Mid(0).GetString(), s.GetString());
    EXPECT_EQ(s.Mid(-1, 10).GetString(), s.GetString());
    EXPECT_EQ(s.Left(6).GetString(), s.GetString());
    EXPECT_EQ(s.Left(99).GetString(), s.GetString());
    EXPECT_EQ(s.Right(6).GetString(), s.GetString());
    EXPECT_NE(s.Left(5).GetString(), s.GetString());

    EXPECT_EQ(s.Left(2), L"ab");
    EXPECT_EQ(s.Right(2), L"ef");
    EXPECT_EQ(s.Left(-1), L"");
    EXPECT_EQ(s.Right(-1), L"");
}

TEST(CAtlStringSearch, FindCharactersAndStringsButNeverTheEmptySubstring)
{
    const CAtlString s(L"a/b/c");
    EXPECT_EQ(s.Find(L'/'), 1);
    EXPECT_EQ(s.Find(L'/', 2), 3);
    EXPECT_EQ(s.Find(L'/', 4), -1);
    EXPECT_EQ(s.Find(L'/', 99), -1);
    EXPECT_EQ(s.Find(L'x'), -1);
    EXPECT_EQ(s.ReverseFind(L'/'), 3);
    EXPECT_EQ(s.ReverseFind(L'x'), -1);
    EXPECT_EQ(s.FindOneOf(L"cb"), 2);
    EXPECT_EQ(s.FindOneOf("xyz"), -1);

    EXPECT_EQ(s.Find(L"b/"), 2);
    EXPECT_EQ(s.Find(L"/", 2), 3);
    EXPECT_EQ(s.Find(L"/c", 4), -1);
    EXPECT_EQ(s.Find("b/c"), 2) << "8-bit arguments are converted first";

    EXPECT_EQ(CAtlString(L"").Find(L""), -1);
    EXPECT_EQ(CAtlString(L"abc").Find(L""), -1);
    EXPECT_EQ(CAtlString(L"abc").Find(L"", 1), -1);
    EXPECT_EQ(CAtlString(L"abc").Find(""), -1);
}

TEST(CAtlStringEditing, ReplaceCharactersAndStrings)
{
    CAtlString s(L"a.b.c");
    CAtlString copy(s);
    EXPECT_EQ(s.Replace(L'.', L'.'), 0);
    EXPECT_EQ(s.GetString(), copy.GetString());

    EXPECT_EQ(s.Replace(L'.', L'/'), 2);
    EXPECT_EQ(s, L"a/b/c");
    EXPECT_EQ(copy, L"a.b.c");
    EXPECT_EQ(s.Replace(L'x', L'y'), 0);

    s = L"one two one two one";
    EXPECT_EQ(s.Replace(L"one", L"1"), 3);
    EXPECT_EQ(s, L"1 two 1 two 1");
    EXPECT_EQ(s.Replace(L"two", L"three"), 2);
    EXPECT_EQ(s, L"1 three 1 three 1");
    EXPECT_EQ(s.Replace(L" ", L""), 4);
    EXPECT_EQ(s, L"1three1three1");
    EXPECT_EQ(s.Replace(L"1", L"1"), 0);
    EXPECT_EQ(s, L"1three1three1");
    EXPECT_EQ(s.Replace(L"zzz", L"y"), 0);
    EXPECT_EQ(s.Replace(L"", L"y"), 0);
    EXPECT_EQ(s, L"1three1three1");

    CAtlString overlapping(L"aaaaa");
    EXPECT_EQ(overlapping.Replace(L"aa", L"b"), 2);
    EXPECT_EQ(overlapping, L"bba");

    CAtlString whole(L"abc");
    copy = whole;
    EXPECT_EQ(whole.Replace(L"abc", L""), 1);
    EXPECT_TRUE(whole.IsEmpty());
    EXPECT_EQ(copy, L"abc");
}

TEST(CAtlStringEditing, RemoveInsertDelete)
{
    CAtlString s(L"a-b-c");
    CAtlString copy(s);
    EXPECT_EQ(s.Remove(L'-'), 2);
    EXPECT_EQ(s, L"abc");
    EXPECT_EQ(copy, L"a-b-c");
    EXPECT_EQ(s.Remove(L'x'), 0);

    EXPECT_EQ(s.Insert(1, L'X'), 4);
    EXPECT_EQ(s, L"aXbc");
    EXPECT_EQ(s.Insert(-5, L"<<"), 6);
    EXPECT_EQ(s, L"<<aXbc");
    EXPECT_EQ(s.Insert(100, L">"), 7);
    EXPECT_EQ(s, L"<<aXbc>");
    EXPECT_EQ(s.Insert(2, L""), 7);
    EXPECT_EQ(s.Insert(0, s.GetString() + 5), 9) << "inserting a piece of itself";
    EXPECT_EQ(s, L"c><<aXbc>");

    EXPECT_EQ(s.Delete(0, 0), 9);
    EXPECT_EQ(s.Delete(9, 1), 9);
    EXPECT_EQ(s.Delete(20), 9);
    EXPECT_EQ(s, L"c><<aXbc>");
    EXPECT_EQ(s.Delete(-3, 4), 5);
    EXPECT_EQ(s, L"aXbc>");
    EXPECT_EQ(s.Delete(3, 100), 3);
    EXPECT_EQ(s, L"aXb");
}

TEST(CAtlStringEditing, TrimWhitespaceCharactersAndLists)
{
    CAtlString s(L" \t\n text \r\n");
    EXPECT_EQ(CAtlString(s).TrimLeft(), L"text \r\n");
    EXPECT_EQ(CAtlString(s).TrimRight(), L" \t\n text");
    EXPECT_EQ(s.Trim(), L"text");

    EXPECT_EQ(CAtlString(L"xxaxx").TrimLeft(L'x'), L"axx");
    EXPECT_EQ(CAtlString(L"xxaxx").TrimRight(L'x'), L"xxa");
    EXPECT_EQ(CAtlString(L"xxaxx").Trim(L'x'), L"a");
    EXPECT_EQ(CAtlString(L"<[a]>").TrimLeft(L"[<"), L"a]>");
    EXPECT_EQ(CAtlString(L"<[a]>").TrimRight(L"]>"), L"<[a");
    EXPECT_EQ(CAtlString(L"<[a]>").Trim(L"<>[]"), L"a");
    EXPECT_EQ(CAtlString(L"   ").Trim(), L"");
    EXPECT_EQ(CAtlString(L"abc").Trim(L""), L"abc");
}

TEST(CAtlStringEditing, CaseMapping)
{
    CAtlString s(L"MiXeD 123");
    CAtlString copy(s);
    EXPECT_EQ(s.MakeUpper(), L"MIXED 123");
    EXPECT_EQ(s.MakeLower(), L"mixed 123");
    EXPECT_EQ(copy, L"MiXeD 123");
}

TEST(CAtlStringEditing, MakeReverseIsExactForAsciiAndNarrowsWhatTravelsFromTheFront)
{
    EXPECT_EQ(CAtlString(L"abcde").MakeReverse(), L"edcba");
    EXPECT_EQ(CAtlString(L"abcd").MakeReverse(), L"dcba");
    EXPECT_EQ(CAtlString(L"a").MakeReverse(), L"a");

    // U+0141 keeps its low byte 0x41 when it moves from the front to the back.
    EXPECT_EQ(CAtlString(L"\u0141xy").MakeReverse(), L"yxA");
    // From the back to the front nothing is lost.
    EXPECT_EQ(CAtlString(L"ab\u0141").MakeReverse(), L"\u0141ba");
    // The byte is signed: 0xE9 comes back sign-extended.
    const CAtlString reversed = CAtlString(L"\u00E9z").MakeReverse();
    EXPECT_EQ(reversed.GetAt(0), L'z');
    EXPECT_EQ(reversed.GetAt(1), static_cast<wchar_t>(-23));
}

TEST(CAtlStringAppending, AllArgumentKindsAppendAndConcatenate)
{
    CAtlString s(L"a");
    s += CAtlString(L"b");
    s += L"c";
    s += L'd';
    s += 'e';
    s += "f";
    s += CAtlStringA("g");
    s.Append(L"h").Append("i").Append(CAtlStringA("j")).AppendChar(L'k').Append(L"lmn", 1);
    EXPECT_EQ(s, L"abcdefghijkl");

    const CAtlString base(L"x");
    EXPECT_EQ(base + base, L"xx");
    EXPECT_EQ(base + L'y', L"xy");
    EXPECT_EQ(L'y' + base, L"yx");
    EXPECT_EQ(base + L"yz", L"xyz");
    EXPECT_EQ(L"yz" + base, L"yzx");
    EXPECT_EQ(base + "yz", L"xyz");
    EXPECT_EQ("yz" + base, L"yzx");
    EXPECT_EQ(base + CAtlStringA("q"), L"xq");
    EXPECT_EQ(base + L"", L"x");
}

TEST(CAtlStringComparison, CaseSensitiveOperatorsAndExplicitCaseFolding)
{
    const CAtlString apple(L"apple");
    const CAtlString Apple(L"Apple");
    EXPECT_LT(apple.Compare(L"banana"), 0);
    EXPECT_GT(apple.Compare(L"Apple"), 0);
    EXPECT_EQ(apple.Compare(L"apple"), 0);
    EXPECT_EQ(apple.CompareNoCase(L"APPLE"), 0);
    EXPECT_EQ(apple.Collate(L"APPLE", false), 0);
    EXPECT_NE(apple.Collate(L"APPLE", true), 0);
    EXPECT_EQ(apple.CollateNoCase(L"aPPle"), 0);

    EXPECT_TRUE(apple == L"apple");
    EXPECT_TRUE(L"apple" == apple);
    EXPECT_TRUE(apple == "apple");
    EXPECT_TRUE(apple != Apple);
    EXPECT_TRUE(Apple < apple);
    EXPECT_TRUE(L"Apple" < apple);
    EXPECT_TRUE(apple > L"Apple");
    EXPECT_TRUE(L"b" > apple);
    EXPECT_TRUE(apple <= apple);
    EXPECT_TRUE(apple <= L"apple");
    EXPECT_TRUE(L"apple" >= apple);
    EXPECT_TRUE(apple >= Apple);
    EXPECT_FALSE(apple < L"apple");
}

TEST(CAtlStringComparison, StringsKeyOrderedAndUnorderedMaps)
{
    std::unordered_map<CAtlString, int> hashed;
    hashed[CAtlString(L"key")] = 1;
    CAtlString built(L"k");
    built += L"ey";
    EXPECT_EQ(hashed.count(built), 1u);
    EXPECT_EQ(std::hash<CAtlString>()(built), std::hash<CAtlString>()(CAtlString(L"key")));

    std::map<CAtlString, int> ordered{{CAtlString(L"b"), 2}, {CAtlString(L"a"), 1}};
    EXPECT_EQ(ordered.begin()->first, L"a");
}

TEST(CAtlStringFormat, PercentSTakesAWideStringAndLongResultsGrowTheBuffer)
{
    CAtlString s;
    s.Format(L"%s=%d", L"width", 42);
    EXPECT_EQ(s, L"width=42");
    s.Format(L"%ls|%c|%5.2f", L"wide", L'w', 3.14159);
    EXPECT_EQ(s, L"wide|w| 3.14");
    s.Format(L"100%%s");
    EXPECT_EQ(s, L"100%ls") << "the rewrite is textual";
    s.AppendFormat(L" and %s", L"more");
    EXPECT_EQ(s, L"100%ls and more");
    FormatVia(s, L"%s-%s", L"a", L"b");
    EXPECT_EQ(s, L"a-b");

    const std::wstring longText(5000, L'z');
    s.Format(L"[%s]", longText.c_str());
    EXPECT_EQ(s.GetLength(), 5002);
    EXPECT_EQ(s.Mid(1, 5000), longText.c_str());
    EXPECT_EQ(s.GetData()->nAllocLength, 5002);
}

TEST(CAtlStringFormat, AFormatThatNeverSucceedsLeavesTheTargetUnchanged)
{
    // vswprintf rejects a narrow character that is not valid in any locale, at every size.
    CAtlString s(L"unchanged");
    s.Format(L"%c", 0xFF);
    EXPECT_EQ(s, L"unchanged");
    s.AppendFormat(L"%c", 0xFF);
    EXPECT_EQ(s, L"unchanged");
}

TEST(CAtlStringTextDeath, NullArgumentsAndBadIndexesAreAssertionFailures)
{
    const wchar_t* nullWide = nullptr;
    const char* nullNarrow = nullptr;
    CAtlString s(L"abc");
    EXPECT_DEATH(CAtlString(nullWide, 2), AssertionPattern("lpch != __null"));
    EXPECT_DEATH(CAtlString(nullNarrow, 2), AssertionPattern("lpch != __null"));
    EXPECT_DEATH(s.GetAt(-1), AssertionPattern("nIndex >= 0"));
    EXPECT_DEATH(s.GetAt(3), AssertionPattern("nIndex < GetData()->nDataLength"));
    EXPECT_DEATH(s[3], AssertionPattern("nIndex < GetData()->nDataLength"));
    EXPECT_DEATH(s.SetAt(3, L'x'), AssertionPattern("nIndex < GetData()->nDataLength"));
    EXPECT_DEATH(s.Append(nullWide), AssertionPattern("pszSrc != __null"));
    EXPECT_DEATH(s += nullWide, AssertionPattern("lpsz != __null"));
    EXPECT_DEATH(s + nullWide, AssertionPattern("lpsz != __null"));
    EXPECT_DEATH(s += nullNarrow, AssertionPattern("ca != __null"));
    EXPECT_DEATH(s.Append(nullNarrow), AssertionPattern("ca != __null"));
    EXPECT_DEATH(s + nullNarrow, AssertionPattern("str != __null"));
    EXPECT_DEATH(s.Find(nullWide), AssertionPattern("sub != __null"));
    EXPECT_DEATH(s.Replace(nullWide, L"x"), AssertionPattern("lpszOld != __null"));
    EXPECT_DEATH(s.Replace(L"x", nullWide), AssertionPattern("lpszNew != __null"));
    EXPECT_DEATH(s.TrimLeft(nullWide), AssertionPattern("lpszTargets != __null"));
    EXPECT_DEATH(s.TrimRight(nullWide), AssertionPattern("lpszTargetList != __null"));
    EXPECT_DEATH(s.Format(nullWide), AssertionPattern("lpszFormat != __null"));
    EXPECT_DEATH(s.AppendFormat(nullWide), AssertionPattern("format != __null"));
    EXPECT_DEATH(FormatVia(s, nullWide), AssertionPattern("format != __null"));
}
