// CAtlString where it differs from the 8-bit class: its conversions, the raw buffer, the empty
// substring, MakeReverse's narrowing and "%s" taking a wide string.

#include "AssertionPattern.h"
#include "libZoltaAtl/CAtlString.h"
#include "libZoltaAtl/CAtlStringA.h"

#include <QString>

#include <gtest/gtest.h>

#include <cstdarg>
#include <cwchar>
#include <string>

namespace {

void FormatVia(CAtlString& target, const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    target.FormatV(format, args);
    va_end(args);
}

}  // namespace

TEST(CAtlStringConversion, EightBitTextTakesItsByteCountAsLengthAndOtherConstructors)
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

    EXPECT_EQ(CAtlString(L'x', 3), L"xxx");
    EXPECT_EQ(CAtlString(L'x'), L"x");
    EXPECT_TRUE(CAtlString(L'x', 0).IsEmpty());
    const wchar_t withZero[] = {L'a', L'\0', L'b'};
    EXPECT_EQ(CAtlString(withZero, 3).GetLength(), 3);
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

TEST(CAtlStringText, EmptySubstringIsNeverFoundAndAStartPastTheEndGivesNothing)
{
    EXPECT_EQ(CAtlString(L"abc").Find(L""), -1);
    EXPECT_EQ(CAtlString(L"abc").Find(L"", 1), -1);
    EXPECT_EQ(CAtlString(L"abc").Find(""), -1);
    EXPECT_EQ(CAtlString(L"a/b/c").Find("b/c"), 2) << "8-bit arguments are converted first";
    EXPECT_EQ(CAtlString(L"a/b/c").FindOneOf("xyc"), 4);
    EXPECT_EQ(CAtlString(L"abcdef").Mid(10), L"");
    EXPECT_EQ(CAtlString(L"abcdef").Mid(10, 2), L"");
}

TEST(CAtlStringBlock, ReleaseBufferDefaultKeepsALengthAndMeasuresOnlyWhenThereIsNone)
{
    CAtlString fresh;
    std::wcscpy(fresh.GetBuffer(10), L"hello");
    fresh.ReleaseBuffer();
    EXPECT_EQ(fresh, L"hello");

    CAtlString existing(L"ab");
    std::wcscpy(existing.GetBuffer(10), L"hello");
    existing.ReleaseBuffer();
    EXPECT_EQ(existing, L"he");

    // A length of 0 is measured again: the characters behind the terminator come back.
    CAtlString remeasured;
    wchar_t* buffer = remeasured.GetBufferSetLength(3);
    std::wcscpy(buffer, L"xyz");
    remeasured.ReleaseBuffer(0);
    EXPECT_TRUE(remeasured.IsEmpty());
    buffer[0] = L'x';
    remeasured.ReleaseBuffer();
    EXPECT_EQ(remeasured, L"xyz");

    remeasured.Truncate(1);
    EXPECT_EQ(remeasured, L"x");
    EXPECT_DEATH(remeasured.Truncate(2), AssertionPattern("nNewLength <= GetLength()"));
}

TEST(CAtlStringEditing, MakeReverseIsExactForAsciiAndNarrowsWhatTravelsFromTheFront)
{
    // U+0141 keeps its low byte 0x41 when it moves from the front to the back.
    EXPECT_EQ(CAtlString(L"\u0141xy").MakeReverse(), L"yxA");
    // From the back to the front nothing is lost.
    EXPECT_EQ(CAtlString(L"ab\u0141").MakeReverse(), L"\u0141ba");
    // The byte is signed: 0xE9 comes back sign-extended.
    const CAtlString reversed = CAtlString(L"\u00E9z").MakeReverse();
    EXPECT_EQ(reversed.GetAt(0), L'z');
    EXPECT_EQ(reversed.GetAt(1), static_cast<wchar_t>(-23));
}

TEST(CAtlStringAppending, EightBitArgumentsAreConvertedFirst)
{
    CAtlString s(L"a");
    s += 'e';
    s += "f";
    s += CAtlStringA("g");
    s.Append("i").Append(CAtlStringA("j"));
    EXPECT_EQ(s, L"aefgij");
    const CAtlString base(L"x");
    EXPECT_EQ(base + "yz", L"xyz");
    EXPECT_EQ("yz" + base, L"yzx");
    EXPECT_EQ(base + CAtlStringA("q"), L"xq");
    EXPECT_TRUE(base == "x");
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

TEST(CAtlStringTextDeath, EightBitAndFormatArgumentsNameTheirOwnExpression)
{
    const wchar_t* nullWide = nullptr;
    const char* nullNarrow = nullptr;
    CAtlString s(L"abc");
    EXPECT_DEATH(CAtlString(nullNarrow, 2), AssertionPattern("lpch != __null"));
    EXPECT_DEATH(s + nullWide, AssertionPattern("lpsz != __null"));
    EXPECT_DEATH(s += nullNarrow, AssertionPattern("ca != __null"));
    EXPECT_DEATH(s.Append(nullNarrow), AssertionPattern("ca != __null"));
    EXPECT_DEATH(s + nullNarrow, AssertionPattern("str != __null"));
    EXPECT_DEATH(s.Replace(nullWide, L"x"), AssertionPattern("lpszOld != __null"));
    EXPECT_DEATH(s.Replace(L"x", nullWide), AssertionPattern("lpszNew != __null"));
    EXPECT_DEATH(s.AppendFormat(nullWide), AssertionPattern("format != __null"));
    EXPECT_DEATH(FormatVia(s, nullWide), AssertionPattern("format != __null"));
}
