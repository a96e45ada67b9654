#include "configuration/CVersionString.h"

#include "CollectionFixture.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <vector>

using curatool::test::U;
using curatool::test::W;

namespace {

CVersionString Version(const char* text)
{
    return CVersionString(W(text));
}

std::array<int, 4> Numbers(const CVersionString& version)
{
    return {version.GetMajor(), version.GetMinor(), version.GetRevision(), version.GetBuild()};
}

}  // namespace

TEST(VersionStringParse, DottedAndPackedForms)
{
    struct Case {
        const char* text;
        bool valid;
        std::optional<std::array<int, 4>> numbers;
        const char* shown;
    };
    for (const Case& c : {
             Case{"01.00.00.00", true, std::array{1, 0, 0, 0}, "1.0.0.0"},  // leading zeros do not count
             Case{"1.2.3", false, std::array{1, 2, 3, -1}, "1.2.3"},        // too few parts
             Case{"7.x.3.4", true, std::array{7, 0, 3, 4}, nullptr},        // a non-numeric part keeps its field
             Case{"1907024", true, std::array{1, 90, 24, 70}, nullptr},     // seven digits: revision is cut first
             Case{"12345678901", true, std::array{34, 56, 789, 1},
                  nullptr},  // digits left of the major cut are ignored
             Case{"123456789012", true, std::array{1, 234, 5678, 9012}, nullptr},
             Case{"999123456789012", true, std::array{991, 234, 5678, 9012}, nullptr},
             Case{"abc", false, std::array{0, 0, 0, 0}, "abc"},  // short text without dots is never parsed
             Case{"123456", false, std::nullopt, nullptr},
             Case{"1..2.3", false, std::nullopt, nullptr},
         })
    {
        const CVersionString version = Version(c.text);
        EXPECT_EQ(c.valid, version.IsValid()) << c.text;
        if (c.numbers) {
            EXPECT_EQ(*c.numbers, Numbers(version)) << c.text;
        }
        if (c.shown) {
            EXPECT_EQ(c.shown, U(version.ToString())) << c.text;
        }
        EXPECT_EQ(c.text, U(version.GetText())) << c.text;
    }
    EXPECT_EQ("1.2.3.-1", U(Version("1.2.3").GetFormatted()));
}

TEST(VersionStringParse, ReusedObjectKeepsTheLastSuccessfulParse)
{
    CVersionString version = Version("1.2.3.4");
    version = W("abc");
    EXPECT_TRUE(version.IsValid());
    EXPECT_EQ((std::array<int, 4>{1, 2, 3, 4}), Numbers(version));
    EXPECT_EQ("abc", U(version.GetText()));
    EXPECT_EQ("1.2.3.4", U(version.ToString()));

    version = CAtlStringA("2.10.0.7");  // 8-bit text parses alike
    EXPECT_EQ((std::array<int, 4>{2, 10, 0, 7}), Numbers(version));
}

TEST(VersionStringCompare, NumbersThenValidityThenText)
{
    // Each pair is strictly ascending.
    for (const auto& [low, high] :
         std::vector<std::pair<const char*, const char*>>{{"1.2.3.4", "1.2.3.10"},  // by number, not by text
                                                          {"1.9.0.0", "2.0.0.0"},
                                                          {"1.2.3", "1.0.0.0"},  // invalid is below every valid version
                                                          {"abc", "abd"},        // two invalid ones compare as text
                                                          {"", "abc"},
                                                          {"ABC", "abc"}})
    {
        SCOPED_TRACE(std::string(low) + " < " + high);
        EXPECT_TRUE(Version(low) < Version(high) && Version(high) > Version(low));
        EXPECT_FALSE(Version(high) < Version(low) || Version(low) > Version(high) || Version(low) == Version(high));
    }
    EXPECT_FALSE(Version("2.0.0.0") < Version("2.0.0.0"));
    EXPECT_TRUE(Version("1907024") == Version("1.90.24.70"));
    EXPECT_TRUE(Version("1.0.0.0") == Version("01.00.00.00"));
}
