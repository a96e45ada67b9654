#include "libZoltaAtl/CAtlString.h"
#include "gallery/sax/ZOLTASaxDecodeText.h"

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
    const bool result = DecodeTextBytes(ZOLTASaxString(raw.data(), static_cast<std::uint32_t>(raw.size())), out);
    if (ok)
        *ok = result;
    return out;
}

struct DecodeCase {
    const char* raw;
    const wchar_t* expected;
};

TEST(DecodeText, EntitiesReferencesCommentsAndUtf8)
{
    const DecodeCase cases[] = {
        {"a&amp;b&quot;c&apos;d&lt;e&gt;f", L"a&b\"c'd<e>f"},
        {"x&#x4a;y", L"xJy"},
        {"&#x141;", L"A"},  // cut to the low byte
        // A reference ends behind the next semicolon, or at the end of the text.
        {"&amp;x;y", L"&x;y"},
        {"&#x41 junk;z", L"Az"},
        {"&#x41", L"A"},
        // One bad ampersand empties the whole text.
        {"&unknown; text", L""},
        {"fish & chips", L""},
        {"&#x;", L""},
        {"&#X41;", L""},
        {"trailing &", L""},
        {"&am", L""},
        // A zero byte ends the text.
        {"ab&#x0;cd", L"ab"},
        {"ab&#x100;cd", L"ab"},
        {"a<!--xy-->b", L"ab"},
        {"a<!--x-->b", L"ab"},
        {"a<!-- &bad; -->b", L"ab"},
        {"caf\xC3\xA9 \xE4\xB8\xAD \xF0\x9F\x98\x80", L"caf\u00E9 \u4E2D \U0001F600"},
        {"&#xC3;&#xA9;", L"\u00E9"},  // references build UTF-8 sequences
        {"\xEF\xBF\xBE", L"\xFFFE"},  // the blank marker survives
    };
    for (const DecodeCase& c : cases)
        EXPECT_EQ(Decode(c.raw), CAtlString(c.expected)) << c.raw;

    bool ok = true;
    EXPECT_EQ(DecodeBytes("text &#65; more", &ok), "");
    EXPECT_FALSE(ok);
    EXPECT_TRUE(DecodeText(ZOLTASaxString()).IsEmpty());
    EXPECT_TRUE(DecodeText(ZOLTASaxString("abc", 0)).IsEmpty());
    EXPECT_TRUE(DecodeText(ZOLTASaxString(nullptr, 3)).IsEmpty());
}

TEST(DecodeText, BytesBehindTheReversedMarkerAreCopiedVerbatim)
{
    EXPECT_EQ(DecodeBytes("a]]>&amp;b"), "a&amp;b");
    // "<![CDATA[" ends verbatim mode; the byte behind it comes out twice.
    EXPECT_EQ(DecodeBytes("]]>x<![CDATA[y&lt;"), "x<yy<");
}

}  // namespace
