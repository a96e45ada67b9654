// UTF-8 <-> 32-bit conversions and their length rules.

#include "AssertionPattern.h"
#include "libZoltaAtl/UniCharUtils.h"

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

// Decodes bytes with room for as many characters as bytes; unwritten slots stay 0x7777.
std::vector<wchar_t> Decode(const std::string& bytes)
{
    std::vector<wchar_t> out(bytes.size() + 1, static_cast<wchar_t>(0x7777));
    CAtoWCA32(bytes.data(), out.data(), static_cast<int>(bytes.size()));
    return out;
}

// Encodes into exactly count bytes; unwritten bytes stay '#'.
std::string Encode(const std::wstring& text, int count)
{
    std::string out(static_cast<size_t>(count), '#');
    std::wstring source = text;
    source.resize(static_cast<size_t>(count) > text.size() ? static_cast<size_t>(count) : text.size(), L'\0');
    WCA32toCA(source.data(), out.data(), count);
    return out;
}

constexpr wchar_t kUntouched = static_cast<wchar_t>(0x7777);

}  // namespace

TEST(UniCharUtilsDecode, IllegalOrTruncatedSequencesStopAndKeepWhatWasWritten)
{
    const char* illegal[] = {
        "ab\xC0\x80z",              // overlong
        "ab\xED\xA0\x80z",          // encoded surrogate
        "ab\xF5\x80\x80\x80z",      // beyond U+10FFFF
        "ab\x80z",                  // stray trail byte
        "ab\xC3z",                  // lead without its trail byte
        "ab\xF8\x88\x80\x80\x80z",  // five-byte form
    };
    for (const char* bytes : illegal) {
        const std::vector<wchar_t> out = Decode(bytes);
        EXPECT_EQ(out[0], L'a') << bytes;
        EXPECT_EQ(out[1], L'b') << bytes;
        EXPECT_EQ(out[2], kUntouched) << bytes;
    }

    // A sequence that would reach past the count stops the conversion too.
    std::vector<wchar_t> out(4, kUntouched);
    CAtoWCA32("x\xE2\x82\xAC", out.data(), 3);
    EXPECT_EQ(out[0], L'x');
    EXPECT_EQ(out[1], kUntouched);
    // A count of zero or less writes nothing, and no call writes a terminator.
    CAtoWCA32("abc", out.data() + 1, 0);
    CAtoWCA32("abc", out.data() + 1, -4);
    EXPECT_EQ(out[1], kUntouched);
    EXPECT_EQ(Decode("ab")[2], kUntouched);
}

TEST(UniCharUtilsEncode, OutOfRangeValuesSurrogatesShortBuffersAndTheLength)
{
    // Scalar values are checked against Qt below; up to 0x1FFFFF still takes four bytes.
    EXPECT_EQ(Encode(std::wstring(1, static_cast<wchar_t>(0x1FFFFF)), 4), "\xF7\xBF\xBF\xBF");
    // Larger values become U+FFFD squeezed into two bytes.
    EXPECT_EQ(Encode(std::wstring(1, static_cast<wchar_t>(0x200000)) + L"z", 3), "\xFF\xBDz");
    EXPECT_EQ(Encode(std::wstring(1, static_cast<wchar_t>(-1)), 2), "\xFF\xBD");

    // Stops at surrogates and before a character that does not fit.
    std::wstring withSurrogate = L"ab";
    withSurrogate += static_cast<wchar_t>(0xDC00);
    withSurrogate += L"cd";
    EXPECT_EQ(Encode(withSurrogate, 5), "ab###");

    EXPECT_EQ(Encode(L"a\u20AC", 3), "a##") << "no partial sequence";
    EXPECT_EQ(Encode(L"abc", 0), "");

    // The length counts in step with the encoder.
    EXPECT_EQ(WCA32Utf8Length(nullptr), 0);
    EXPECT_EQ(WCA32Utf8Length(L""), 0);
    const wchar_t huge[] = {static_cast<wchar_t>(0x110000), static_cast<wchar_t>(0x200000), 0};
    EXPECT_EQ(WCA32Utf8Length(huge), 4 + 2);
    const wchar_t surrogate[] = {L'a', static_cast<wchar_t>(0xD800), 0};
    EXPECT_EQ(WCA32Utf8Length(surrogate), -1);
}

TEST(UniCharUtilsAllocating, NewBlocksAreTerminatedAndRoundTrip)
{
    char* utf8 = WCA32toNewCA(L"x\u00E9\U0001F600");
    ASSERT_NE(utf8, nullptr);
    EXPECT_STREQ(utf8, "x\xC3\xA9\xF0\x9F\x98\x80");

    wchar_t* wide = CAtoNewWCA32(utf8);
    ASSERT_NE(wide, nullptr);
    EXPECT_STREQ(wide, L"x\u00E9\U0001F600");
    std::free(wide);
    std::free(utf8);

    char* empty = WCA32toNewCA(nullptr);
    ASSERT_NE(empty, nullptr);
    EXPECT_STREQ(empty, "");
    std::free(empty);
}

TEST(UniCharUtilsDeath, NullBuffersAreAssertionFailures)
{
    wchar_t wide[4] = {};
    char narrow[4] = {};
    EXPECT_DEATH(CAtoWCA32(nullptr, wide, 1), AssertionPattern("ca != __null"));
    EXPECT_DEATH(CAtoWCA32("a", nullptr, 1), AssertionPattern("wca != __null"));
    EXPECT_DEATH(WCA32toCA(nullptr, narrow, 1), AssertionPattern("wca != __null"));
    EXPECT_DEATH(WCA32toCA(L"a", nullptr, 1), AssertionPattern("ca != __null"));
}

TEST(UniCharUtilsRoundTrip, EveryScalarValueAgreesWithQtsUtf8)
{
    for (uint32_t cp = 1; cp <= 0x10FFFF; ++cp) {
        if (cp >= 0xD800 && cp <= 0xDFFF)
            continue;
        const wchar_t text[2] = {static_cast<wchar_t>(cp), 0};
        const auto asUtf16 = QChar::fromUcs4(static_cast<char32_t>(cp));
        const QByteArray expected = QStringView(asUtf16).toUtf8();
        ASSERT_EQ(WCA32Utf8Length(text), expected.size()) << std::hex << cp;

        char bytes[4] = {};
        WCA32toCA(text, bytes, static_cast<int>(expected.size()));
        ASSERT_EQ(QByteArray(bytes, static_cast<int>(expected.size())), expected) << std::hex << cp;

        wchar_t decoded[4] = {};
        CAtoWCA32(bytes, decoded, static_cast<int>(expected.size()));
        ASSERT_EQ(static_cast<uint32_t>(decoded[0]), cp);
    }
}
