#include "libZoltaAtl/CAtlString.h"
#include "gallery/CGalleryIdentifierIndex.h"
#include "gallery/CGalleryImageRegistry.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryMetadata.h"
#include "gallery/GalleryIdentifiers.h"
#include "gallery/GalleryLanguage.h"
#include "gallery/GalleryObjectOrder.h"
#include "gallery/GalleryText.h"
#include "ManifestTestTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <regex>
#include <set>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using namespace manifest_test;

static_assert(std::is_trivially_copyable_v<CGalleryActivity>);
static_assert(std::is_trivially_copyable_v<CGalleryFolder>);
static_assert(std::is_trivially_copyable_v<CGalleryOrganization>);
static_assert(std::is_trivially_copyable_v<CGalleryMetadata>);
static_assert(std::is_trivially_copyable_v<LanguageStringBlock>);
static_assert(sizeof(LanguageStringBlock) == sizeof(void*));

CGalleryActivity* NewActivity(const wchar_t* identifier, const wchar_t* title = nullptr)
{
    CGalleryActivity* activity = nullptr;
    EXPECT_EQ(CGalleryActivity::Create(&activity), S_OK);
    EXPECT_EQ(activity->m_metadata->SetIdentifier(identifier), S_OK);
    if (title) {
        EXPECT_EQ(activity->m_metadata->m_titles->Add(L"en", title), S_OK);
    }
    return activity;
}

TEST(GalleryLists, AddFindRemoveAndBounds)
{
    CGalleryFolder* folder = NewCategory(L"root", L"Category");
    for (int i = 0; i < 40; ++i)
        ASSERT_EQ(folder->AddActivity(NewActivity((L"id" + std::to_wstring(i)).c_str())), S_OK);
    CGalleryActivityList& list = *folder->m_activities;
    EXPECT_EQ(list.GetCount(), 40u);
    EXPECT_EQ(list.GetAt(39)->m_parent, folder);
    EXPECT_EQ(list.Find(L"id17"), list.GetAt(17));
    EXPECT_EQ(list.Find(L"ID17"), nullptr);
    EXPECT_TRUE(list.Contains(L"id0"));
    EXPECT_FALSE(list.Contains(L"id40"));
    EXPECT_FALSE(list.Contains(nullptr));
    EXPECT_EQ(list.Add(nullptr), E_INVALIDARG);
    EXPECT_THROW(list.GetAt(40), std::out_of_range);
    EXPECT_THROW(list.RemoveAt(40), std::out_of_range);

    CGalleryActivity* removed = list.RemoveAt(0);
    EXPECT_EQ(std::wstring(removed->GetIdentifier()), L"id0");
    EXPECT_EQ(list.GetCount(), 39u);
    EXPECT_EQ(std::wstring(list.GetAt(0)->GetIdentifier()), L"id1");
    CGalleryActivity::Destroy(removed);
    CGalleryFolder::Destroy(folder);
}

TEST(GalleryLists, SubtreeMovesBetweenManifestsWithoutCopies)
{
    auto* source = new CGalleryManifest;
    CGalleryManifest target;
    CGalleryOrganization* from = AddOrganization(*source, L"from", L"From");
    CGalleryOrganization* to = AddOrganization(target, L"to", L"To");
    CGalleryFolder* moving = NewCategory(L"moving", L"Category");
    CGalleryActivity* activity = NewActivity(L"a", L"Apple");
    ASSERT_EQ(moving->AddActivity(activity), S_OK);
    ASSERT_EQ(from->AddItem(moving), S_OK);

    CGalleryFolder* detached = from->m_items->RemoveAt(0);
    ASSERT_EQ(to->AddItem(detached), S_OK);
    delete source;  // frees only what stayed behind

    EXPECT_EQ(to->m_items->Find(L"moving"), moving);
    EXPECT_EQ(moving->m_organization, to);
    EXPECT_EQ(activity->m_parent, moving);
    EXPECT_EQ(std::wstring(activity->m_metadata->m_titles->Lookup(L"en")), L"Apple");
}

TEST(GalleryLists, DeeplyNestedTreesAreFreedWithoutRecursion)
{
    CGalleryFolder* root = NewCategory(L"0", L"Category");
    CGalleryFolder* current = root;
    for (int depth = 1; depth < 200000; ++depth) {
        CGalleryFolder* child = nullptr;
        ASSERT_EQ(CGalleryFolder::Create(&child), S_OK);
        ASSERT_EQ(current->AddChild(child), S_OK);
        current = child;
    }
    CGalleryManifest manifest;
    CGalleryOrganization* organization = AddOrganization(manifest, L"o", L"O");
    ASSERT_EQ(organization->AddItem(root), S_OK);
    EXPECT_EQ(current->m_organization, organization);
}

TEST(GalleryOrdering, CompareTitlesIsATotalOrderWithBlanksFirst)
{
    EXPECT_EQ(CompareTitles(nullptr, L""), 0);
    EXPECT_EQ(CompareTitles(L"\xFFFE", nullptr), 0);
    EXPECT_LT(CompareTitles(L"", L"a"), 0);
    EXPECT_GT(CompareTitles(L"a", L"\xFFFE"), 0);
    // Collation of the lowered texts ties; the exact comparison decides.
    EXPECT_NE(CompareTitles(L"abc", L"ABC"), 0);
    EXPECT_EQ(CompareTitles(L"abc", L"ABC"), -CompareTitles(L"ABC", L"abc"));
    EXPECT_LT(CompareTitles(L"apple", L"Banana"), 0);

    const std::vector<std::wstring> texts = {L"b",  L"B",   L"a", L"A",      L"ab", L"aB",
                                             L"Ab", L"a b", L"",  L"\u00E9", L"e",  L"E"};
    for (const auto& x : texts) {
        for (const auto& y : texts) {
            const int xy = CompareTitles(x.c_str(), y.c_str());
            EXPECT_EQ(xy, -CompareTitles(y.c_str(), x.c_str()));
            EXPECT_EQ(xy == 0, x == y) << "texts must only tie with themselves";
            for (const auto& z : texts) {
                if (xy < 0 && CompareTitles(y.c_str(), z.c_str()) < 0) {
                    EXPECT_LT(CompareTitles(x.c_str(), z.c_str()), 0);
                }
            }
        }
    }
}

TEST(GalleryOrdering, CompareObjectsBySortKeyTitleTimeIdentifierAddress)
{
    CGalleryActivity* zebra = NewActivity(L"1", L"Zebra");
    CGalleryActivity* apple = NewActivity(L"2", L"apple");
    EXPECT_LT(CompareObjects(apple, zebra), 0);
    EXPECT_EQ(S_OK, zebra->m_metadata->SetSortKey(L"aaa"));
    EXPECT_LT(CompareObjects(zebra, apple), 0);
    // A blank sort key falls back to the title.
    EXPECT_EQ(S_OK, zebra->m_metadata->SetSortKey(L"\xFFFE"));
    EXPECT_GT(CompareObjects(zebra, apple), 0);

    CGalleryActivity* early = NewActivity(L"b", L"Same");
    CGalleryActivity* late = NewActivity(L"a", L"Same");
    early->m_metadata->m_creationTime = 10;
    late->m_metadata->m_creationTime = 20;
    EXPECT_LT(CompareObjects(early, late), 0);
    late->m_metadata->m_creationTime = 10;
    EXPECT_GT(CompareObjects(early, late), 0);  // identifiers "b" > "a"
    EXPECT_EQ(S_OK, early->m_metadata->SetIdentifier(L"a"));
    EXPECT_EQ(CompareObjects(early, late), -CompareObjects(late, early));
    EXPECT_NE(CompareObjects(early, late), 0);
    EXPECT_EQ(CompareObjects(early, early), 0);

    EXPECT_GT(CompareObjects(nullptr, early), 0);
    EXPECT_LT(CompareObjects(early, nullptr), 0);
    for (CGalleryActivity* a : {zebra, apple, early, late})
        CGalleryActivity::Destroy(a);
}

TEST(GalleryOrdering, ObjectTitles)
{
    SetCurrentLanguage(L"fr");
    CGalleryActivity* activity = NewActivity(L"x", L"Dog");
    EXPECT_EQ(S_OK, activity->m_metadata->m_titles->Add(L"fr", L"Chien"));
    EXPECT_EQ(GetObjectTitle(activity), CAtlString(L"Chien"));
    EXPECT_EQ(S_OK, activity->m_metadata->SetIdentifier(MyContentCategoryIdentifier().GetString()));
    EXPECT_EQ(GetObjectTitle(activity), CAtlString(L"My Content"));
    SetCurrentLanguage(L"");
    CGalleryActivity::Destroy(activity);

    CGalleryManifest manifest;
    EXPECT_EQ(S_OK, manifest.SetPath(L"/galleries/Physical Content/imsmanifest.xml"));
    EXPECT_EQ(GetObjectTitle(&manifest), CAtlString(L"Physical Content"));
    EXPECT_TRUE(GetObjectTitle(nullptr).IsEmpty());
}

TEST(GalleryIdentifierText, GeneratedIdentifiersHaveTheirFixedShape)
{
    const std::wstring base(PLACEHOLDER_URI_BASE);
    const std::wregex uuid(L"[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}");
    const std::wstring typed(NewGalleryIdentifier(L"picture").GetString());
    ASSERT_EQ(typed.rfind(base + L"/uniqueid?type=picture&id=", 0), 0u) << typed;
    EXPECT_TRUE(std::regex_match(typed.substr(typed.find(L"&id=") + 4), uuid));
    EXPECT_NE(std::wstring(NewGalleryIdentifier(L"\xFFFE").GetString()).find(L"type=unknown&"), std::wstring::npos);
    EXPECT_NE(NewGalleryIdentifier(L"x"), NewGalleryIdentifier(L"x"));

    const std::wstring compound(NewActivityIdentifier().GetString());
    const std::size_t split = compound.rfind(L'/');
    EXPECT_EQ(compound.rfind(base + L"/uniqueid?type=activity&id=", 0), 0u);
    EXPECT_TRUE(std::regex_match(compound.substr(split + 1), uuid));
    EXPECT_EQ(NewActivityIdentifier(L"t", L"i"), CAtlString(L"t/i"));

    const std::wstring random(NewRandomIdentifier().GetString());
    EXPECT_EQ(random.rfind(base + L"/randomid?id=", 0), 0u);
    EXPECT_EQ(MyContentCategoryIdentifier(), CAtlString(PLACEHOLDER_URI_BASE) + L"/My%20Content");
}

TEST(GalleryIdentifierText, IndexFindsEveryObjectAndTheFirstOfDuplicates)
{
    CGalleryManifest manifest;
    CGalleryOrganization* organization = AddOrganization(manifest, L"org", L"Org");
    CGalleryFolder* root = NewCategory(L"root", L"Category");
    CGalleryFolder* child = NewCategory(L"dup", L"Category");
    CGalleryActivity* first = NewActivity(L"dup");
    EXPECT_EQ(S_OK, organization->AddItem(root));
    EXPECT_EQ(S_OK, root->AddActivity(first));
    EXPECT_EQ(S_OK, root->AddChild(child));
    EXPECT_EQ(S_OK, child->AddActivity(NewActivity(L"leaf")));

    CGalleryIdentifierIndex index;
    index.Build(manifest);
    EXPECT_EQ(index.GetCount(), 4u);
    EXPECT_EQ(index.Find(L"org"), organization);
    EXPECT_EQ(index.Find(L"dup"), first);
    EXPECT_EQ(index.Find(L"leaf"), child->m_activities->GetAt(0));
    EXPECT_EQ(index.Find(L"none"), nullptr);
    EXPECT_EQ(GalleryIdentifierHash()(L"ab"), GalleryStringHash(L"ab", 0));
}

}  // namespace
