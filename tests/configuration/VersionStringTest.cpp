#include "CVersionString.h"

#include "CollectionFixture.h"

#include <gtest/gtest.h>

using curatool::test::Narrow;
using curatool::test::Wide;

namespace {

CVersionString Version(const char* text)
{
    return CVersionString(Wide(text));
}

void ExpectNumbers(const CVersionString& version, int major, int minor, int revision, int build)
{
    EXPECT_EQ(major, version.GetMajor());
    EXPECT_EQ(minor, version.GetMinor());
    EXPECT_EQ(revision, version.GetRevision());
    EXPECT_EQ(build, version.GetBuild());
}

}  // namespace

TEST(VersionStringParse, DottedTextIgnoresLeadingZeros)
{
    const CVersionString plain = Version("1.0.0.0");
    const CVersionString padded = Version("01.00.00.00");
    EXPECT_TRUE(plain.IsValid());
    EXPECT_TRUE(padded.IsValid());
    EXPECT_TRUE(plain == padded);
    EXPECT_EQ("1.0.0.0", Narrow(plain.ToString()));
    EXPECT_EQ("1.0.0.0", Narrow(padded.ToString()));
    EXPECT_EQ("01.00.00.00", Narrow(padded.GetText()));
}

TEST(VersionStringParse, TooFewDottedPartsAreInvalid)
{
    const CVersionString version = Version("1.2.3");
    EXPECT_FALSE(version.IsValid());
    ExpectNumbers(version, 1, 2, 3, -1);
    EXPECT_EQ("1.2.3", Narrow(version.ToString()));
    EXPECT_EQ("1.2.3.-1", Narrow(version.GetFormatted()));
    EXPECT_FALSE(Version("1..2.3").IsValid());
}

TEST(VersionStringParse, NonNumericPartKeepsItsFieldAndCountsAsParsed)
{
    const CVersionString version = Version("7.x.3.4");
    EXPECT_TRUE(version.IsValid());
    ExpectNumbers(version, 7, 0, 3, 4);
}

TEST(VersionStringParse, PackedSevenDigitsCutRevisionFirst)
{
    const CVersionString version = Version("1907024");
    EXPECT_TRUE(version.IsValid());
    ExpectNumbers(version, 1, 90, 24, 70);
}

TEST(VersionStringParse, PackedEightToElevenDigits)
{
    ExpectNumbers(Version("12345678"), 1, 23, 456, 78);
    // Digits left of the major cut are ignored.
    ExpectNumbers(Version("12345678901"), 34, 56, 789, 1);
}

TEST(VersionStringParse, PackedTwelveAndMoreDigits)
{
    ExpectNumbers(Version("123456789012"), 1, 234, 5678, 9012);
    ExpectNumbers(Version("999123456789012"), 991, 234, 5678, 9012);
}

TEST(VersionStringParse, ShortTextWithoutDotsIsNeverParsed)
{
    const CVersionString version = Version("abc");
    EXPECT_FALSE(version.IsValid());
    ExpectNumbers(version, 0, 0, 0, 0);
    EXPECT_EQ("abc", Narrow(version.ToString()));
    EXPECT_FALSE(Version("").IsValid());
    EXPECT_FALSE(Version("123456").IsValid());
}

TEST(VersionStringParse, ReusedObjectKeepsTheLastSuccessfulParse)
{
    CVersionString version = Version("1.2.3.4");
    version = Wide("abc");
    EXPECT_TRUE(version.IsValid());
    ExpectNumbers(version, 1, 2, 3, 4);
    EXPECT_EQ("abc", Narrow(version.GetText()));
    EXPECT_EQ("1.2.3.4", Narrow(version.ToString()));
}

TEST(VersionStringParse, EightBitTextParsesAlike)
{
    CVersionString version;
    version = CAtlStringA("2.10.0.7");
    EXPECT_TRUE(version.IsValid());
    ExpectNumbers(version, 2, 10, 0, 7);
}

TEST(VersionStringCompare, ValidVersionsCompareByNumberNotByText)
{
    EXPECT_TRUE(Version("1.2.3.4") < Version("1.2.3.10"));
    EXPECT_TRUE(Version("1.2.3.10") > Version("1.2.3.4"));
    EXPECT_TRUE(Version("1.9.0.0") < Version("2.0.0.0"));
    EXPECT_FALSE(Version("2.0.0.0") < Version("2.0.0.0"));
    EXPECT_FALSE(Version("2.0.0.0") > Version("2.0.0.0"));
    EXPECT_TRUE(Version("1907024") == Version("1.90.24.70"));
}

TEST(VersionStringCompare, InvalidIsBelowEveryValidVersion)
{
    const CVersionString invalid = Version("1.2.3");
    const CVersionString valid = Version("1.0.0.0");
    EXPECT_TRUE(invalid < valid);
    EXPECT_FALSE(valid < invalid);
    EXPECT_TRUE(valid > invalid);
    EXPECT_FALSE(invalid > valid);
    EXPECT_FALSE(invalid == valid);
    EXPECT_FALSE(valid == invalid);
}

TEST(VersionStringCompare, TwoInvalidVersionsCompareAsText)
{
    EXPECT_TRUE(Version("abc") < Version("abd"));
    EXPECT_TRUE(Version("abd") > Version("abc"));
    EXPECT_TRUE(Version("abc") == Version("abc"));
    EXPECT_FALSE(Version("abc") == Version("ABC"));
    EXPECT_TRUE(Version("") < Version("abc"));
}
