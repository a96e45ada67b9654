// CAtlStringA: the 8-bit class, where it differs from the wide one and how it converts.

#include "AssertionPattern.h"
#include "libZoltaAtl/CAtlString.h"
#include "libZoltaAtl/CAtlStringA.h"

#include <QString>

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstring>
#include <string>

namespace {

void FormatVia(CAtlStringA& target, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    target.FormatV(format, args);
    va_end(args);
}

}  // namespace

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
    EXPECT_EQ(CAtlStringA("abc").Find(""), 0);
    EXPECT_EQ(CAtlStringA("abc").Find("", 2), 2);
    EXPECT_EQ(CAtlStringA("abc").Find("", 3), -1);
}

TEST(CAtlStringAText, MidAbortsPastTheEnd)
{
    const CAtlStringA s("abcdef");
    EXPECT_DEATH(s.Mid(7), AssertionPattern("nFirst + nCount <= GetData()->nDataLength"));
    EXPECT_DEATH(s.Mid(10, 1), AssertionPattern("nFirst + nCount <= GetData()->nDataLength"));
}

TEST(CAtlStringAText, Spans)
{
    const CAtlStringA s("123abc456");
    EXPECT_EQ(s.SpanIncluding("0123456789"), "123");
    EXPECT_EQ(s.SpanExcluding("abc"), "123");
    EXPECT_EQ(s.SpanIncluding("xyz"), "");
    EXPECT_EQ(s.SpanExcluding("xyz").GetString(), s.GetString());
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

TEST(CAtlStringADeath, WideAndFormatArgumentsNameTheirOwnExpression)
{
    const char* nullNarrow = nullptr;
    const wchar_t* nullWide = nullptr;
    CAtlStringA s("abc");
    EXPECT_DEATH(CAtlStringA(nullWide, 1), AssertionPattern("lpch != __null"));
    EXPECT_DEATH(s += nullWide, AssertionPattern("uca != __null"));
    EXPECT_DEATH(s.Replace(nullNarrow, "x"), AssertionPattern("caOld != __null"));
    EXPECT_DEATH(s.Replace("x", nullNarrow), AssertionPattern("caNew != __null"));
    EXPECT_DEATH(FormatVia(s, nullNarrow), AssertionPattern("caFormat != __null"));
}
