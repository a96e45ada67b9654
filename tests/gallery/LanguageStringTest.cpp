#include "libZoltaAtl/CAtlString.h"
#include "gallery/GalleryLanguage.h"
#include "gallery/GalleryText.h"
#include "gallery/LanguageStringBlock.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using Pairs = std::vector<std::pair<std::wstring, std::wstring>>;

// A block on the stack, freed with the fixture.
class BlockTest : public ::testing::Test {
protected:
    void TearDown() override
    {
        block.Clear();
        SetCurrentLanguage(L"");
    }

    void Fill(const Pairs& pairs)
    {
        for (const auto& [key, value] : pairs)
            ASSERT_EQ(block.Add(key.c_str(), value.c_str()), S_OK);
    }

    Pairs Contents() const
    {
        Pairs pairs;
        for (int i = 0; i < block.GetCount(); ++i)
            pairs.emplace_back(block.GetKey(i), block.GetValue(i));
        return pairs;
    }

    LanguageStringBlock block{};
};

TEST_F(BlockTest, PackedLayoutIsKeyValuePairsClosedByOneZero)
{
    EXPECT_EQ(block.GetSizeInChars(), 1u);
    EXPECT_EQ(block.GetData()[0], 0);
    // Blank keys are refused; a null value is taken as empty, the blank marker kept as it is.
    EXPECT_EQ(block.Add(nullptr, L"x"), E_INVALIDARG);
    EXPECT_EQ(block.Add(L"", L"x"), E_INVALIDARG);
    EXPECT_EQ(block.Add(L"\xFFFE", L"x"), E_INVALIDARG);
    Fill({{L"en", L"Dog"}});
    EXPECT_EQ(block.Add(L"fr", nullptr), S_OK);
    EXPECT_EQ(block.Add(L"de", L"\xFFFE"), S_OK);
    const std::wstring expected(L"en\0Dog\0fr\0\0de\0\xFFFE\0\0", 17);
    ASSERT_EQ(block.GetSizeInChars(), expected.size());
    EXPECT_EQ(std::wstring(block.GetData(), block.GetSizeInChars()), expected);
}

TEST_F(BlockTest, RemoveAppendCopyAndIndexChecks)
{
    Fill({{L"en", L"a"}, {L"fr", L"b"}, {L"de", L"c"}});
    EXPECT_EQ(block.Remove(1), S_OK);
    EXPECT_EQ(Contents(), (Pairs{{L"en", L"a"}, {L"de", L"c"}}));
    EXPECT_THROW(block.GetKey(2), std::out_of_range);
    EXPECT_THROW(block.GetValue(-1), std::out_of_range);
    EXPECT_THROW(static_cast<void>(block.Remove(5)), std::out_of_range);  // throws before any result

    LanguageStringBlock* other = nullptr;
    ASSERT_EQ(LanguageStringBlock::Create(&other), S_OK);
    EXPECT_EQ(LanguageStringBlock::Create(&other), E_INVALIDARG) << "created once";
    EXPECT_EQ(LanguageStringBlock::Create(nullptr), E_INVALIDARG);
    EXPECT_EQ(block.Append(*other), S_FALSE);
    ASSERT_EQ(other->Add(L"es", L"d"), S_OK);
    EXPECT_EQ(block.Append(*other), S_OK);
    EXPECT_EQ(Contents(), (Pairs{{L"en", L"a"}, {L"de", L"c"}, {L"es", L"d"}}));

    // A copy replaces what was there and outlives its source.
    ASSERT_EQ(other->CopyFrom(block), S_OK);
    block.Clear();
    EXPECT_EQ(block.GetCount(), 0);
    EXPECT_EQ(block.GetSizeInChars(), 1u);
    EXPECT_EQ(other->GetCount(), 3);
    EXPECT_EQ(std::wstring(other->GetValue(2)), L"d");
    LanguageStringBlock::Destroy(other);
    EXPECT_EQ(other, nullptr);
}

TEST(MatchLanguage, LevelsOverTheShorterSubtagsAndBlankGivesZero)
{
    const struct {
        const wchar_t* a;
        const wchar_t* b;
        int level;
    } cases[] = {
        {L"zh-CN", L"zh_TW", 1},
        {L"zh", L"zh-TW", 2},
        {L"zh-TW", L"zh", 2},
        {L"EN", L"en", 3},
        {L"en-ca", L"en_CA", 3},
        {L"de", L"en", 0},
        // Subtags compare over the shorter length; any further subtag meeting any other counts.
        {L"e", L"en", 3},
        {L"en-C", L"en-CA", 3},
        {L"zh-Hant-TW", L"zh-TW", 3},
        {nullptr, L"en", 0},
        {L"en", L"", 0},
        {L"\xFFFE", L"\xFFFE", 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(MatchLanguage(c.a, c.b), c.level) << (c.a ? c.a : L"(null)") << " / " << c.b;
}

TEST_F(BlockTest, FindLanguagePrefersTheBestLevelThenTheEarliestPair)
{
    Fill({{L"zh", L"general"}, {L"zh-TW", L"tw"}, {L"zh-CN", L"cn"}, {L"zh-CN", L"second"}});
    EXPECT_EQ(block.FindLanguage(L"zh-CN", 1), 2);
    EXPECT_EQ(block.FindLanguage(L"zh-HK", 1), 0);
    EXPECT_EQ(block.FindLanguage(L"zh-HK", 3), -1);
    EXPECT_EQ(block.FindLanguage(L"zh", 3), 0);
    EXPECT_EQ(block.FindLanguage(L"", 1), -1);
    LanguageStringBlock regionsOnly{};
    ASSERT_EQ(regionsOnly.Add(L"pt-BR", L"x"), S_OK);
    EXPECT_EQ(regionsOnly.FindLanguage(L"pt-PT", 2), -1);
    EXPECT_EQ(regionsOnly.FindLanguage(L"pt-PT", 1), 0);
    regionsOnly.Clear();
}

TEST_F(BlockTest, LookupFallsBackToEnglishThenPlainKeyThenFirstPairAndBlankMeansTheCurrentLanguage)
{
    const struct {
        Pairs pairs;
        const wchar_t* language;
        const wchar_t* expected;
    } cases[] = {
        {{{L"fr-CA", L"Chien"}, {L"de", L"Hund"}, {L"en-GB", L"Dog"}}, L"fr", L"Chien"},
        {{{L"fr-CA", L"Chien"}, {L"de", L"Hund"}, {L"en-GB", L"Dog"}}, L"es", L"Dog"},
        {{{L"fr-CA", L"Chien"}, {L"de", L"Hund"}}, L"es", L"Hund"},
        {{{L"fr-CA", L"Chien"}}, L"de", L"Chien"},
        {{}, L"de", L""},
        {{{L"en", L"Dog"}, {L"de", L"Hund"}}, nullptr, L"Hund"},
        {{{L"en", L"Dog"}, {L"de", L"Hund"}}, L"\xFFFE", L"Hund"},
    };
    SetCurrentLanguage(L"de_DE");
    for (const auto& c : cases) {
        block.Clear();
        Fill(c.pairs);
        EXPECT_EQ(std::wstring(block.Lookup(c.language)), c.expected) << &c - cases;
    }
    EXPECT_EQ(GetCurrentLanguage(), CAtlString(L"de_DE"));
}

// A general text stays for the other region of Chinese and Portuguese; the general language
// drops every region; other regions of the same language stay.
TEST_F(BlockTest, ReplaceLanguageKeepsOrDropsRegionsByTheLanguage)
{
    const struct {
        Pairs before;
        const wchar_t* language;
        std::vector<CAtlString> texts;
        Pairs after;
    } cases[] = {
        {{{L"en", L"Dog"}, {L"zh", L"gou"}},
         L"zh-CN",
         {CAtlString(L"new")},
         {{L"en", L"Dog"}, {L"zh-TW", L"gou"}, {L"zh-CN", L"new"}}},
        {{{L"pt", L"cao"}}, L"pt_BR", {CAtlString(L"novo")}, {{L"pt-PT", L"cao"}, {L"pt_BR", L"novo"}}},
        {{{L"zh", L"a"}, {L"zh-TW", L"b"}, {L"en", L"c"}},
         L"zh",
         {CAtlString(L"x"), CAtlString(L"y")},
         {{L"en", L"c"}, {L"zh", L"x"}, {L"zh", L"y"}}},
        {{{L"fr-FR", L"a"}, {L"fr-CA", L"b"}, {L"fr", L"c"}},
         L"fr-CA",
         {CAtlString(L"x")},
         {{L"fr-FR", L"a"}, {L"fr-CA", L"x"}}},
    };
    for (const auto& c : cases) {
        block.Clear();
        Fill(c.before);
        ASSERT_EQ(block.ReplaceLanguage(c.language, c.texts), S_OK);
        EXPECT_EQ(Contents(), c.after) << c.language;
    }
    EXPECT_EQ(block.ReplaceLanguage(L"", {CAtlString(L"x")}), E_INVALIDARG);
    EXPECT_EQ(Contents(), cases[3].after);
}

TEST_F(BlockTest, IteratorVisitsPairsInOrderSkippingLanguagesBelowTheMinimumVersion)
{
    Fill({{L"en", L"a"}, {L"fr", L"b"}, {L"de", L"c"}});
    LanguageStringBlock::Iterator all(&block);
    Pairs seen;
    while (all.Next())
        seen.emplace_back(all.Key(), all.Value());
    EXPECT_EQ(seen, Contents());
    EXPECT_FALSE(LanguageStringBlock::Iterator(nullptr).Next());

    LanguageStringBlock versions{};
    ASSERT_EQ(versions.Add(L"fr", L"1.9"), S_OK);
    ASSERT_EQ(versions.Add(L"de", L"1.10"), S_OK);
    LanguageStringBlock::Iterator it(&block, &versions, L"1.10");
    std::vector<std::wstring> keys;
    while (it.Next())
        keys.emplace_back(it.Key());
    EXPECT_EQ(keys, (std::vector<std::wstring>{L"en", L"de"}));
    versions.Clear();
    // Versions compare numerically part by part.
    EXPECT_LT(CompareStringVersions(L"1.9", L"1.10"), 0);
    EXPECT_EQ(CompareStringVersions(L"2", L"2.0.0"), 0);
    EXPECT_GT(CompareStringVersions(L"3.0.1", L"3"), 0);
}

TEST(GalleryText, BlankRuleHashAndTheSharedEmptyString)
{
    EXPECT_TRUE(IsBlankText(nullptr));
    EXPECT_TRUE(IsBlankText(L""));
    EXPECT_TRUE(IsBlankText(L"\xFFFE"));
    EXPECT_FALSE(IsBlankText(L"\xFFFE\xFFFE"));
    EXPECT_FALSE(IsBlankText(L" "));
    // The hash's formula is pinned by the cache file names; characters beyond 8 bits count in full.
    EXPECT_NE(GalleryStringHash(L"\x4E2D"), GalleryStringHash(L"\x2D"));

    const wchar_t* field = nullptr;
    wchar_t source[] = L"abc";
    ASSERT_EQ(GalleryAssignText(field, source), S_OK);
    source[0] = L'x';
    EXPECT_EQ(std::wstring(field), L"abc");
    GalleryFreeText(field);
    EXPECT_EQ(field, GalleryEmptyString());
    GalleryFreeText(field);
    EXPECT_EQ(field, GalleryEmptyString());
    ASSERT_EQ(GalleryAssignText(field, L""), S_OK);
    EXPECT_EQ(field, GalleryEmptyString());
}

}  // namespace
