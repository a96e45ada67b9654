// Where the wide and the 8-bit class differ on purpose: their conversions, the default of
// ReleaseBuffer, the empty substring, Mid past the end, MakeReverse's narrowing and "%s" in Format.

#include "AssertionPattern.h"
#include "libZoltaAtl/CAtlString.h"
#include "libZoltaAtl/CAtlStringA.h"

#include <QString>

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstring>
#include <cwchar>
#include <string>

namespace {

template <class S, class Char>
void FormatVia(S& target, const Char* format, ...)
{
    va_list args;
    va_start(args, format);
    target.FormatV(format, args);
    va_end(args);
}

}  // namespace

TEST(CAtlStringConversion, EightBitTextTakesItsByteCountAsLength)
{
    EXPECT_EQ(CAtlString("plain ascii"), L"plain ascii");
    EXPECT_EQ(CAtlString("abcdef", 3), L"abc");

    // One two-byte UTF-8 character: one wide character decoded, length still 2.
    const CAtlString eAcute("\xC3\xA9");
    EXPECT_EQ(eAcute.GetLength(), 2);
    EXPECT_EQ(eAcute.GetAt(0), static_cast<wchar_t>(0xE9));
    EXPECT_EQ(eAcute.GetString()[2], L'\0');
    CAtlString assigned(L"previous");
    assigned = "\xC3\xA9";
    EXPECT_EQ(assigned.GetLength(), 2);
    EXPECT_EQ(assigned.GetAt(0), static_cast<wchar_t>(0xE9));

    const CAtlString fromNarrowClass(CAtlStringA("x\xE2\x82\xACy"));
    EXPECT_EQ(fromNarrowClass.GetLength(), 5);
    EXPECT_EQ(fromNarrowClass.GetAt(1), static_cast<wchar_t>(0x20AC));
    EXPECT_EQ(fromNarrowClass.GetAt(2), L'y');

    EXPECT_TRUE(CAtlString(static_cast<const char*>(nullptr)).IsEmpty());
    EXPECT_TRUE(CAtlString(static_cast<const wchar_t*>(nullptr)).IsEmpty());
    EXPECT_EQ(CAtlString(L'x', 3), L"xxx");
    EXPECT_TRUE(CAtlString(L'x', 0).IsEmpty());
    const wchar_t withZero[] = {L'a', L'\0', L'b'};
    EXPECT_EQ(CAtlString(withZero, 3).GetLength(), 3);
}

TEST(CAtlStringConversion, WidePointerIsUtf8ButWideStringsAndCountsAreNarrowedToTheLowByte)
{
    EXPECT_EQ(CAtlStringA(L"caf\u00E9 \u20AC \U0001F600"), "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80");
    EXPECT_TRUE(CAtlStringA(static_cast<const wchar_t*>(nullptr)).IsEmpty());
    const wchar_t withSurrogate[] = {L'a', static_cast<wchar_t>(0xD800), L'b', 0};
    EXPECT_TRUE(CAtlStringA(withSurrogate).IsEmpty());

    const CAtlString wide(L"caf\u00E9\u0141");
    EXPECT_EQ(CAtlStringA(wide), "caf\xE9\x41");
    EXPECT_EQ(CAtlStringA(L"\u0141bc", 2), "\x41"
                                           "b");
    CAtlStringA assigned;
    assigned = L"\u00E9t\u00E9";
    EXPECT_EQ(assigned, "\xE9t\xE9");
    assigned = wide;
    EXPECT_EQ(assigned, "caf\xE9\x41");
    CAtlStringA appended("x");
    appended += L"\u00E9";
    appended += wide;
    appended += L'\u0142';
    EXPECT_EQ(appended, "x\xE9"
                        "caf\xE9\x41\x42");
    EXPECT_EQ(CAtlStringA("a") + L"\u00E9", "a\xE9");
    EXPECT_EQ(L"\u00E9" + CAtlStringA("a"), "\xE9"
                                            "a");
    EXPECT_EQ(CAtlStringA("a") + wide, "acaf\xE9\x41");
}

TEST(CAtlStringConversion, QStringAndTheUtf8HelpersCarryAnyText)
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

    const CAtlStringA bytes(text);
    EXPECT_EQ(bytes, "caf\xC3\xA9 \xF0\x9F\x98\x80 \xE2\x82\xAC");
    CAtlStringA assignedBytes;
    assignedBytes = text;
    EXPECT_EQ(assignedBytes, bytes);

    const char* utf8 = "caf\xC3\xA9 \xF0\x9F\x98\x80";
    const CAtlString decoded = CAtlString::FromUtf8(utf8);
    EXPECT_EQ(decoded, L"caf\u00E9 \U0001F600");
    EXPECT_EQ(decoded.ToUtf8(), utf8);
    EXPECT_EQ(CAtlString::FromUtf8(utf8, 3), L"caf");
    EXPECT_TRUE(CAtlString::FromUtf8(nullptr).IsEmpty());
    EXPECT_TRUE(CAtlString().ToUtf8().IsEmpty());
}

TEST(CAtlStringBlock, ReleaseBufferDefaultMeasuresOnlyTheWideEmptyString)
{
    CAtlString fresh;
    std::wcscpy(fresh.GetBuffer(10), L"hello");
    fresh.ReleaseBuffer();
    EXPECT_EQ(fresh, L"hello");
    CAtlStringA freshA;
    std::strcpy(freshA.GetBuffer(10), "hello");
    freshA.ReleaseBuffer();
    EXPECT_EQ(freshA.GetLength(), 0) << "the caller must give the length";
    std::strcpy(freshA.GetBuffer(10), "hello");
    freshA.ReleaseBuffer(5);
    EXPECT_EQ(freshA, "hello");

    // Both keep a length they have.
    CAtlString existing(L"ab");
    std::wcscpy(existing.GetBuffer(10), L"hello");
    existing.ReleaseBuffer();
    EXPECT_EQ(existing, L"he");
    CAtlStringA existingA("ab");
    std::strcpy(existingA.GetBuffer(10), "hello");
    existingA.ReleaseBuffer();
    EXPECT_EQ(existingA, "he");

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

TEST(CAtlStringText, EmptySubstringMidPastTheEndAndSpans)
{
    EXPECT_EQ(CAtlString(L"abc").Find(L""), -1);
    EXPECT_EQ(CAtlString(L"abc").Find(L"", 1), -1);
    EXPECT_EQ(CAtlString(L"abc").Find(""), -1);
    EXPECT_EQ(CAtlStringA("abc").Find(""), 0);
    EXPECT_EQ(CAtlStringA("abc").Find("", 2), 2);
    EXPECT_EQ(CAtlStringA("abc").Find("", 3), -1);
    EXPECT_EQ(CAtlString(L"a/b/c").Find("b/c"), 2) << "8-bit arguments are converted first";
    EXPECT_EQ(CAtlString(L"a/b/c").FindOneOf("xyc"), 4);

    EXPECT_EQ(CAtlString(L"abcdef").Mid(10), L"");
    EXPECT_EQ(CAtlString(L"abcdef").Mid(10, 2), L"");
    const CAtlStringA s("abcdef");
    EXPECT_DEATH(s.Mid(7), AssertionPattern("nFirst + nCount <= GetData()->nDataLength"));
    EXPECT_DEATH(s.Mid(10, 1), AssertionPattern("nFirst + nCount <= GetData()->nDataLength"));

    const CAtlStringA digits("123abc456");
    EXPECT_EQ(digits.SpanIncluding("0123456789"), "123");
    EXPECT_EQ(digits.SpanExcluding("abc"), "123");
    EXPECT_EQ(digits.SpanIncluding("xyz"), "");
    EXPECT_EQ(digits.SpanExcluding("xyz").GetString(), digits.GetString());
}

TEST(CAtlStringEditing, MakeReverseNarrowsWhatTravelsFromTheFrontAndAppendsConvert8BitText)
{
    // U+0141 keeps its low byte 0x41 when it moves from the front to the back.
    EXPECT_EQ(CAtlString(L"\u0141xy").MakeReverse(), L"yxA");
    // From the back to the front nothing is lost.
    EXPECT_EQ(CAtlString(L"ab\u0141").MakeReverse(), L"\u0141ba");
    // The byte is signed: 0xE9 comes back sign-extended.
    const CAtlString reversed = CAtlString(L"\u00E9z").MakeReverse();
    EXPECT_EQ(reversed.GetAt(0), L'z');
    EXPECT_EQ(reversed.GetAt(1), static_cast<wchar_t>(-23));

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

TEST(CAtlStringFormat, WidePercentSTakesAWideStringAndLongResultsGrowTheBuffer)
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
    EXPECT_EQ(s.Mid(1, 5000), longText.c_str());
    EXPECT_EQ(s.GetData()->nAllocLength, 5002);

    // The 8-bit class leaves its format alone.
    CAtlStringA narrow;
    narrow.Format("%s=%d", "n", 5);
    EXPECT_EQ(narrow, "n=5");
    narrow.AppendFormat(" %%s");
    EXPECT_EQ(narrow, "n=5 %s");
    const std::string longNarrow(3000, 'q');
    FormatVia(narrow, "<%s>", longNarrow.c_str());
    EXPECT_EQ(narrow.GetLength(), 3002);
    EXPECT_EQ(narrow.GetData()->nAllocLength, 3002);

    // vswprintf rejects a narrow character that is not valid in any locale, at every size: the
    // buffer doubles until realloc fails and the target stays as it was.
    CAtlString unchanged(L"unchanged");
    unchanged.Format(L"%c", 0xFF);
    EXPECT_EQ(unchanged, L"unchanged");
    unchanged.AppendFormat(L"%c", 0xFF);
    EXPECT_EQ(unchanged, L"unchanged");
}

TEST(CAtlStringDeath, EachClassNamesItsOwnExpression)
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

    CAtlStringA a("abc");
    EXPECT_DEATH(CAtlStringA(nullWide, 1), AssertionPattern("lpch != __null"));
    EXPECT_DEATH(a += nullWide, AssertionPattern("uca != __null"));
    EXPECT_DEATH(a.Replace(nullNarrow, "x"), AssertionPattern("caOld != __null"));
    EXPECT_DEATH(a.Replace("x", nullNarrow), AssertionPattern("caNew != __null"));
    EXPECT_DEATH(FormatVia(a, nullNarrow), AssertionPattern("caFormat != __null"));
}
