#include "CAtlString.h"
#include "ZOLTASaxDecodeText.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

// Decodes from an exact-size copy, so that reads past the slice leave the allocation.
CAtlString Decode(const std::string& raw)
{
    std::unique_ptr<char[]> bytes(new char[raw.size() ? raw.size() : 1]);
    std::copy(raw.begin(), raw.end(), bytes.get());
    return DecodeText(ZOLTASaxString(bytes.get(), static_cast<std::uint32_t>(raw.size())));
}

std::string DecodeBytes(const std::string& raw, bool* ok = nullptr)
{
    std::string out = "untouched";
    const bool result = DecodeTextBytes(ZOLTASaxString(raw.data(), raw.size()), out);
    if (ok)
        *ok = result;
    return out;
}

TEST(DecodeTextEntities, FiveNamedEntities)
{
    EXPECT_EQ(Decode("a&amp;b&quot;c&apos;d&lt;e&gt;f"), CAtlString(L"a&b\"c'd<e>f"));
}

TEST(DecodeTextEntities, HexadecimalReferenceKeepsOneByte)
{
    EXPECT_EQ(Decode("&#x41;"), CAtlString(L"A"));
    EXPECT_EQ(Decode("x&#x4a;y"), CAtlString(L"xJy"));
    // The value is cut to its low byte: 0x141 becomes "A".
    EXPECT_EQ(Decode("&#x141;"), CAtlString(L"A"));
}

TEST(DecodeTextEntities, ReferenceEndsBehindTheNextSemicolon)
{
    EXPECT_EQ(Decode("&amp;x;y"), CAtlString(L"&x;y"));
    EXPECT_EQ(Decode("&#x41 junk;z"), CAtlString(L"Az"));
    EXPECT_EQ(Decode("&#x41"), CAtlString(L"A"));
}

TEST(DecodeTextEntities, OneBadAmpersandEmptiesTheWholeText)
{
    bool ok = true;
    EXPECT_EQ(DecodeBytes("text &#65; more", &ok), "");
    EXPECT_FALSE(ok);
    EXPECT_TRUE(Decode("&unknown; text").IsEmpty());
    EXPECT_TRUE(Decode("fish & chips").IsEmpty());
    EXPECT_TRUE(Decode("&#x;").IsEmpty());
    EXPECT_TRUE(Decode("&#X41;").IsEmpty());
    EXPECT_TRUE(Decode("trailing &").IsEmpty());
    EXPECT_TRUE(Decode("&am").IsEmpty());
}

TEST(DecodeTextEntities, ZeroByteEndsTheText)
{
    EXPECT_EQ(Decode("ab&#x0;cd"), CAtlString(L"ab"));
    EXPECT_EQ(Decode("ab&#x100;cd"), CAtlString(L"ab"));
}

TEST(DecodeTextMarkup, CommentsDisappearWhole)
{
    EXPECT_EQ(Decode("a<!--xy-->b"), CAtlString(L"ab"));
    EXPECT_EQ(Decode("a<!--x-->b"), CAtlString(L"ab"));
    EXPECT_EQ(Decode("a<!-- &bad; -->b"), CAtlString(L"ab"));
}

TEST(DecodeTextMarkup, BytesBehindTheReversedMarkerAreCopiedVerbatim)
{
    EXPECT_EQ(DecodeBytes("a]]>&amp;b"), "a&amp;b");
    // "<![CDATA[" ends verbatim mode; the byte behind it comes out twice.
    EXPECT_EQ(DecodeBytes("]]>x<![CDATA[y&lt;"), "x<yy<");
}

TEST(DecodeTextMarkup, EmptyOrInvalidSliceGivesEmptyText)
{
    EXPECT_TRUE(DecodeText(ZOLTASaxString()).IsEmpty());
    EXPECT_TRUE(DecodeText(ZOLTASaxString("abc", 0)).IsEmpty());
    EXPECT_TRUE(DecodeText(ZOLTASaxString(nullptr, 3)).IsEmpty());
}

TEST(DecodeTextUtf8, MultiByteSequencesBecomeOneCharacterEach)
{
    const CAtlString text = Decode("caf\xC3\xA9 \xE4\xB8\xAD \xF0\x9F\x98\x80");
    EXPECT_EQ(text.GetLength(), 8);
    EXPECT_EQ(text, CAtlString(L"caf\u00E9 \u4E2D \U0001F600"));
}

TEST(DecodeTextUtf8, HexReferencesBuildUtf8Sequences)
{
    EXPECT_EQ(Decode("&#xC3;&#xA9;"), CAtlString(L"\u00E9"));
}

TEST(DecodeTextUtf8, BlankMarkerSurvives)
{
    const CAtlString text = Decode("\xEF\xBF\xBE");
    ASSERT_EQ(text.GetLength(), 1);
    EXPECT_EQ(text[0], static_cast<wchar_t>(0xFFFE));
}

}  // namespace
