#include "gallery/CGalleryI18N.h"
#include "ManifestTestTree.h"
#include "ziparchive/ZipHelpers.h"

#include <gtest/gtest.h>

using namespace manifest_test;
using curatool::test::MakeScratchDir;
using curatool::test::WriteFile;

namespace {

const char kCatalogue[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                          "<i18n xmlns=\"urn:gallery\" language=\"de\">\n"
                          "<manifest id=\"urn:other\" languagestringversion=\"9\"><item "
                          "id=\"urn:cat:animals\"><title>Falsch</title></item></manifest>\n"
                          "<manifest id=\"URN:GALLERY:Sample\" languagestringversion=\"2.0\">\n"
                          "<item id=\"URN:CAT:ANIMALS\"><title>Tiere</title><keyword>Zoo</keyword><keyword>Fell &amp; "
                          "Federn</keyword></item>\n"
                          "<item id=\"urn:a:lion\"><title>L&#xC3;&#xB6;we</title></item>\n"
                          "<item id=\"urn:a:lion\"><title>Zweiter</title></item>\n"
                          "<item id=\"urn:a:x\"><title>Y</title></item>\n"
                          "<item id=\"urn:org:main\"><title>Organisation</title></item>\n"
                          "<item id=\"urn:nowhere\"><title>Niemand</title></item>\n"
                          "</manifest>\n"
                          "<title>outside any item</title>\n"
                          "</i18n>\n";

void BuildTree(CGalleryManifest& manifest)
{
    EXPECT_EQ(S_OK, manifest.m_metadata->SetIdentifier(L"urn:gallery:sample"));
    EXPECT_EQ(S_OK, manifest.m_stringVersions->Add(L"de", L"1.0"));
    CGalleryOrganization* organization = AddOrganization(manifest, L"urn:org:main", L"Main");
    CGalleryFolder* animals = AddCategory(organization, L"urn:cat:animals", L"Animals");
    EXPECT_EQ(S_OK, animals->m_metadata->m_titles->Add(L"de", L"Alt"));
    EXPECT_EQ(S_OK, animals->m_metadata->m_keywords->Add(L"de", L"alt"));
    EXPECT_EQ(S_OK, animals->m_metadata->m_keywords->Add(L"en", L"fur"));
    CGalleryActivity* lion = AddActivity(animals, L"urn:a:lion", L"lion.png", L"Lion");
    EXPECT_EQ(S_OK, lion->m_metadata->m_keywords->Add(L"de", L"Katze"));
    AddActivity(AddCategory(animals, L"urn:cat:deep", L"Deep"), L"urn:a:x", L"x.png", L"Ex");
}

std::string WriteCatalogue(const std::string& name, const std::string& text = kCatalogue)
{
    const std::string folder = MakeScratchDir(name);
    EXPECT_TRUE(WriteFile(folder + "/i18n.xml", text));
    return folder + "/i18n.xml";
}

TEST(I18NTest, ApplyReplacesTheCatalogueLanguageByIdentifierWithoutRegardToCase)
{
    CGalleryI18N catalogue;
    ASSERT_EQ(S_OK, catalogue.Load(W(WriteCatalogue("i18n-apply"))));
    EXPECT_EQ(CAtlString(L"de"), catalogue.GetLanguage());
    ASSERT_EQ(2u, catalogue.GetManifests().size());
    const auto& second = *catalogue.GetManifests()[1];
    EXPECT_EQ(CAtlString(L"2.0"), second.m_languageStringVersion);
    ASSERT_EQ(6u, second.m_items.size());
    // The stray title after the last manifest still lands on the item that was open.
    EXPECT_EQ(2u, second.m_items[5]->m_titles.size());

    CGalleryManifest unrelated;
    BuildTree(unrelated);
    EXPECT_EQ(S_OK, unrelated.m_metadata->SetIdentifier(L"urn:gallery:unrelated"));
    const std::string before = Dump(unrelated);
    EXPECT_EQ(S_OK, catalogue.Apply(unrelated));
    EXPECT_EQ(before, Dump(unrelated)) << "a catalogue for another manifest changes nothing";

    CGalleryManifest manifest;
    BuildTree(manifest);
    ASSERT_EQ(S_OK, catalogue.Apply(manifest));
    EXPECT_EQ("{de=2.0;}", DumpBlock(manifest.m_stringVersions));
    const CGalleryOrganization* organization = manifest.GetOrganizations()->GetAt(0);
    EXPECT_EQ("{en=Main;}", DumpBlock(organization->m_metadata->m_titles));  // organizations are not walked
    const CGalleryFolder* animals = organization->m_items->GetAt(0);
    EXPECT_EQ("{en=Animals;de=Tiere;}", DumpBlock(animals->m_metadata->m_titles));
    EXPECT_EQ("{en=fur;de=Zoo;de=Fell & Federn;}", DumpBlock(animals->m_metadata->m_keywords));
    const CGalleryActivity* lion = animals->m_activities->GetAt(0);
    EXPECT_EQ("{en=Lion;de=L\xC3\xB6we;}", DumpBlock(lion->m_metadata->m_titles));  // the first item wins
    EXPECT_EQ("{de=Katze;}", DumpBlock(lion->m_metadata->m_keywords));              // no keywords given: kept
    const CGalleryActivity* deep = animals->m_children->GetAt(0)->m_activities->GetAt(0);
    EXPECT_EQ("{en=Ex;de=Y;}", DumpBlock(deep->m_metadata->m_titles));  // one character, taken as it is
}

TEST(I18NTest, RegionalCatalogueKeepsTheGeneralTextForTheOtherRegion)
{
    CGalleryManifest manifest;
    EXPECT_EQ(S_OK, manifest.m_metadata->SetIdentifier(L"m"));
    CGalleryFolder* category = AddCategory(AddOrganization(manifest, L"o", L"Org"), L"c", L"Cat");
    EXPECT_EQ(S_OK, category->m_metadata->m_titles->Add(L"zh", L"General"));
    CGalleryI18N catalogue;
    ASSERT_EQ(S_OK, catalogue.Load(W(WriteCatalogue(
                        "i18n-zh", "<i18n language=\"zh-CN\"><manifest id=\"m\" languagestringversion=\"3\">"
                                   "<item id=\"c\"><title>Simplified</title></item></manifest></i18n>"))));
    ASSERT_EQ(S_OK, catalogue.Apply(manifest));
    EXPECT_EQ("{en=Cat;zh-TW=General;zh-CN=Simplified;}", DumpBlock(category->m_metadata->m_titles));
}

TEST(I18NTest, LoadFromArchiveAndRefusals)
{
    const std::string file = WriteCatalogue("i18n-zip");
    const std::string folder = std::filesystem::path(file).parent_path().string();
    ASSERT_TRUE(ZipAddFileRelative(CZoltaFilePath(W(file)), CZoltaFilePath(W(folder + "/de.zip"))));
    CGalleryI18N fromZip;
    ASSERT_EQ(S_OK, fromZip.Load(W(folder + "/de.zip")));
    EXPECT_EQ(CAtlString(L"de"), fromZip.GetLanguage());

    ASSERT_TRUE(WriteFile(folder + "/other.xml", "<x/>"));
    ASSERT_TRUE(ZipAddFileRelative(CZoltaFilePath(W(folder + "/other.xml")), CZoltaFilePath(W(folder + "/no.zip"))));
    CGalleryI18N refused;
    EXPECT_EQ(E_FAIL, refused.Load(W(folder + "/no.zip")));
    EXPECT_EQ(E_FAIL, refused.Load(W(folder + "/missing.zip")));
    EXPECT_EQ(E_FAIL, refused.Load(W(folder + "/missing.xml")));
    ASSERT_TRUE(WriteFile(folder + "/i18n.txt", kCatalogue));
    EXPECT_EQ(E_FAIL, refused.Load(W(folder + "/i18n.txt")));
    ASSERT_TRUE(WriteFile(folder + "/broken.xml", "<i18n language=\"de\"><manifest"));
    EXPECT_EQ(E_FAIL, refused.Load(W(folder + "/broken.xml")));
}

}  // namespace
