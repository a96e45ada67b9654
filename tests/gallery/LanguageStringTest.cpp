#include "CAtlString.h"
#include "GalleryLanguage.h"
#include "GalleryText.h"
#include "LanguageStringBlock.h"

#include <gtest/gtest.h>

#include <cwchar>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using Pairs = std::vector<std::pair<std::wstring, std::wstring>>;

// A block on the stack, freed with the fixture.
class BlockTest : public ::testing::Test
{
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

// ---- Packed form ----

TEST_F(BlockTest, PackedLayoutIsKeyValuePairsClosedByOneZero)
{
    EXPECT_EQ(block.GetSizeInChars(), 1u);
    EXPECT_EQ(block.GetData()[0], 0);
    Fill({{L"en", L"Dog"}, {L"fr", L""}});
    const std::wstring expected(L"en\0Dog\0fr\0\0\0", 12);
    ASSERT_EQ(block.GetSizeInChars(), expected.size());
    EXPECT_EQ(std::wstring(block.GetData(), block.GetSizeInChars()), expected);
}

TEST_F(BlockTest, AddRejectsBlankKeysAndTakesNullValuesAsEmpty)
{
    EXPECT_EQ(block.Add(nullptr, L"x"), E_INVALIDARG);
    EXPECT_EQ(block.Add(L"", L"x"), E_INVALIDARG);
    EXPECT_EQ(block.Add(L"\xFFFE", L"x"), E_INVALIDARG);
    EXPECT_EQ(block.Add(L"en", nullptr), S_OK);
    EXPECT_EQ(Contents(), (Pairs{{L"en", L""}}));
}

TEST_F(BlockTest, BlankMarkerValueIsKeptAsItIs)
{
    Fill({{L"en", L"\xFFFE"}});
    EXPECT_TRUE(IsBlankText(block.GetValue(0)));
    EXPECT_EQ(std::wstring(block.GetValue(0)), L"\xFFFE");
}

TEST_F(BlockTest, RemoveAppendClearAndIndexChecks)
{
    Fill({{L"en", L"a"}, {L"fr", L"b"}, {L"de", L"c"}});
    EXPECT_EQ(block.Remove(1), S_OK);
    EXPECT_EQ(Contents(), (Pairs{{L"en", L"a"}, {L"de", L"c"}}));
    EXPECT_THROW(block.GetKey(2), std::out_of_range);
    EXPECT_THROW(block.GetValue(-1), std::out_of_range);
    EXPECT_THROW(block.Remove(5), std::out_of_range);

    LanguageStringBlock other{};
    EXPECT_EQ(block.Append(other), S_FALSE);
    ASSERT_EQ(other.Add(L"es", L"d"), S_OK);
    EXPECT_EQ(block.Append(other), S_OK);
    EXPECT_EQ(Contents(), (Pairs{{L"en", L"a"}, {L"de", L"c"}, {L"es", L"d"}}));
    other.Clear();

    block.Clear();
    EXPECT_EQ(block.GetCount(), 0);
    EXPECT_EQ(block.GetSizeInChars(), 1u);
}

TEST_F(BlockTest, CopyFromMakesAnIndependentCopy)
{
    Fill({{L"en", L"a"}, {L"fr", L"b"}});
    LanguageStringBlock copy{};
    ASSERT_EQ(copy.CopyFrom(block), S_OK);
    block.Clear();
    EXPECT_EQ(copy.GetCount(), 2);
    EXPECT_EQ(std::wstring(copy.GetValue(1)), L"b");
    copy.Clear();
}

TEST_F(BlockTest, CreateAndDestroyOnTheHeap)
{
    LanguageStringBlock* created = nullptr;
    ASSERT_EQ(LanguageStringBlock::Create(&created), S_OK);
    EXPECT_EQ(LanguageStringBlock::Create(&created), E_INVALIDARG);
    EXPECT_EQ(LanguageStringBlock::Create(nullptr), E_INVALIDARG);
    EXPECT_EQ(created->GetCount(), 0);
    ASSERT_EQ(created->Add(L"en", L"x"), S_OK);
    LanguageStringBlock::Destroy(created);
    EXPECT_EQ(created, nullptr);
}

// ---- Matching ----

TEST(MatchLanguage, Levels)
{
    EXPECT_EQ(MatchLanguage(L"zh-CN", L"zh_TW"), 1);
    EXPECT_EQ(MatchLanguage(L"zh", L"zh-TW"), 2);
    EXPECT_EQ(MatchLanguage(L"zh-TW", L"zh"), 2);
    EXPECT_EQ(MatchLanguage(L"EN", L"en"), 3);
    EXPECT_EQ(MatchLanguage(L"en-ca", L"en_CA"), 3);
    EXPECT_EQ(MatchLanguage(L"de", L"en"), 0);
}

TEST(MatchLanguage, SubtagsCompareOverTheShorterLength)
{
    EXPECT_EQ(MatchLanguage(L"e", L"en"), 3);
    EXPECT_EQ(MatchLanguage(L"en-C", L"en-CA"), 3);
    // Any further subtag of one side meeting any of the other counts.
    EXPECT_EQ(MatchLanguage(L"zh-Hant-TW", L"zh-TW"), 3);
}

TEST(MatchLanguage, BlankGivesZero)
{
    EXPECT_EQ(MatchLanguage(nullptr, L"en"), 0);
    EXPECT_EQ(MatchLanguage(L"en", L""), 0);
    EXPECT_EQ(MatchLanguage(L"\xFFFE", L"\xFFFE"), 0);
}

// ---- FindLanguage and Lookup ----

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

TEST_F(BlockTest, LookupFallsBackToEnglishThenPlainKeyThenFirstPair)
{
    Fill({{L"fr-CA", L"Chien"}, {L"de", L"Hund"}, {L"en-GB", L"Dog"}});
    EXPECT_EQ(std::wstring(block.Lookup(L"fr")), L"Chien");
    EXPECT_EQ(std::wstring(block.Lookup(L"es")), L"Dog");
    block.Clear();

    Fill({{L"fr-CA", L"Chien"}, {L"de", L"Hund"}});
    EXPECT_EQ(std::wstring(block.Lookup(L"es")), L"Hund");
    block.Clear();

    // Only "fr-CA" for "de": no English, no key without "-", so the first pair.
    Fill({{L"fr-CA", L"Chien"}});
    EXPECT_EQ(std::wstring(block.Lookup(L"de")), L"Chien");
    block.Clear();
    EXPECT_EQ(std::wstring(block.Lookup(L"de")), L"");
}

TEST_F(BlockTest, LookupWithBlankLanguageUsesTheCurrentLanguage)
{
    Fill({{L"en", L"Dog"}, {L"de", L"Hund"}});
    SetCurrentLanguage(L"de_DE");
    EXPECT_EQ(std::wstring(block.Lookup(nullptr)), L"Hund");
    EXPECT_EQ(std::wstring(block.Lookup(L"\xFFFE")), L"Hund");
    EXPECT_EQ(GetCurrentLanguage(), CAtlString(L"de_DE"));
}

// ---- ReplaceLanguage ----

TEST_F(BlockTest, ReplacingChineseOfOneRegionKeepsTheGeneralTextForTheOther)
{
    Fill({{L"en", L"Dog"}, {L"zh", L"gou"}});
    ASSERT_EQ(block.ReplaceLanguage(L"zh-CN", {CAtlString(L"new")}), S_OK);
    EXPECT_EQ(Contents(), (Pairs{{L"en", L"Dog"}, {L"zh-TW", L"gou"}, {L"zh-CN", L"new"}}));
}

TEST_F(BlockTest, ReplacingPortugueseOfOneRegionKeepsTheGeneralTextForTheOther)
{
    Fill({{L"pt", L"cao"}});
    ASSERT_EQ(block.ReplaceLanguage(L"pt_BR", {CAtlString(L"novo")}), S_OK);
    EXPECT_EQ(Contents(), (Pairs{{L"pt-PT", L"cao"}, {L"pt_BR", L"novo"}}));
}

TEST_F(BlockTest, ReplacingTheGeneralLanguageDropsEveryRegion)
{
    Fill({{L"zh", L"a"}, {L"zh-TW", L"b"}, {L"en", L"c"}});
    ASSERT_EQ(block.ReplaceLanguage(L"zh", {CAtlString(L"x"), CAtlString(L"y")}), S_OK);
    EXPECT_EQ(Contents(), (Pairs{{L"en", L"c"}, {L"zh", L"x"}, {L"zh", L"y"}}));
}

TEST_F(BlockTest, ReplacingLeavesOtherRegionsOfTheSameLanguage)
{
    Fill({{L"fr-FR", L"a"}, {L"fr-CA", L"b"}, {L"fr", L"c"}});
    ASSERT_EQ(block.ReplaceLanguage(L"fr-CA", {CAtlString(L"x")}), S_OK);
    EXPECT_EQ(Contents(), (Pairs{{L"fr-FR", L"a"}, {L"fr-CA", L"x"}}));
}

TEST_F(BlockTest, ReplacingWithABlankLanguageFails)
{
    Fill({{L"en", L"a"}});
    EXPECT_EQ(block.ReplaceLanguage(L"", {CAtlString(L"x")}), E_INVALIDARG);
    EXPECT_EQ(block.GetCount(), 1);
}

// ---- Iteration ----

TEST_F(BlockTest, IteratorVisitsPairsInOrder)
{
    Fill({{L"en", L"a"}, {L"fr", L"b"}});
    LanguageStringBlock::Iterator it(&block);
    Pairs seen;
    while (it.Next())
        seen.emplace_back(it.Key(), it.Value());
    EXPECT_EQ(seen, Contents());
    LanguageStringBlock::Iterator none(nullptr);
    EXPECT_FALSE(none.Next());
}

TEST_F(BlockTest, IteratorSkipsLanguagesBelowTheMinimumVersion)
{
    Fill({{L"en", L"a"}, {L"fr", L"b"}, {L"de", L"c"}});
    LanguageStringBlock versions{};
    ASSERT_EQ(versions.Add(L"fr", L"1.9"), S_OK);
    ASSERT_EQ(versions.Add(L"de", L"1.10"), S_OK);
    LanguageStringBlock::Iterator it(&block, &versions, L"1.10");
    std::vector<std::wstring> keys;
    while (it.Next())
        keys.emplace_back(it.Key());
    EXPECT_EQ(keys, (std::vector<std::wstring>{L"en", L"de"}));
    versions.Clear();
}

TEST(StringVersions, CompareNumericallyPartByPart)
{
    EXPECT_LT(CompareStringVersions(L"1.9", L"1.10"), 0);
    EXPECT_EQ(CompareStringVersions(L"2", L"2.0.0"), 0);
    EXPECT_GT(CompareStringVersions(L"3.0.1", L"3"), 0);
}

// ---- Blank rule and hash ----

TEST(GalleryText, BlankRule)
{
    EXPECT_TRUE(IsBlankText(nullptr));
    EXPECT_TRUE(IsBlankText(L""));
    EXPECT_TRUE(IsBlankText(L"\xFFFE"));
    EXPECT_FALSE(IsBlankText(L"\xFFFE\xFFFE"));
    EXPECT_FALSE(IsBlankText(L" "));
}

TEST(GalleryText, HashStepsOverWideCharacters)
{
    EXPECT_EQ(GalleryStringHash(L""), 5381u);
    EXPECT_EQ(GalleryStringHash(L"a"), 5381u * 33u + 'a');
    EXPECT_EQ(GalleryStringHash(L"ab", 0), ('a' * 33u) + 'b');
    // Characters beyond 8 bits take part in full.
    EXPECT_NE(GalleryStringHash(L"\x4E2D"), GalleryStringHash(L"\x2D"));
    // Wraps modulo 2^32 on long text.
    const std::wstring longText(1000, L'z');
    std::uint32_t expected = 5381;
    for (wchar_t c : longText)
        expected = expected * 33u + static_cast<std::uint32_t>(c);
    EXPECT_EQ(GalleryStringHash(longText.c_str()), expected);
}

TEST(GalleryText, AssignCopiesAndFreeLeavesTheSharedEmptyString)
{
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
