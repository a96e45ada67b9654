#include "foundation/CSettingsStore.h"
#include "gallery/CGalleryMultiproc.h"
#include "gallery/GalleryIdentifiers.h"
#include "gallery/GalleryInitializeThread.h"
#include "gallery/GalleryLibrary.h"
#include "gallery/GalleryPlaces.h"
#include "gallery/cache/ManifestCache.h"
#include "ManifestTestTree.h"

#include <gtest/gtest.h>

#include <QDir>

#include <algorithm>
#include <string>

namespace {

using namespace manifest_test;
using curatool::test::MakeScratchDir;

// A gallery folder with a manifest of one organization, one category and `activities` items.
std::string MakeGallery(const std::string& folder, const wchar_t* identifier, int activities = 1)
{
    EXPECT_TRUE(CZoltaDirectoryPath(folder.c_str()).Create());
    CGalleryManifest manifest;
    EXPECT_EQ(manifest.m_metadata->SetIdentifier(identifier), S_OK);
    CGalleryFolder* root =
        AddCategory(AddOrganization(manifest, L"urn:organization", L"Organization"), L"urn:root", L"Root");
    for (int i = 0; i < activities; ++i)
        AddActivity(root, (L"urn:item" + std::to_wstring(i)).c_str(), L"item.png", L"Item");
    const std::string path = folder + "/imsmanifest.xml";
    EXPECT_EQ(CGalleryManifestIO::Save(manifest, W(path).GetString(), false), S_OK);
    return path;
}

bool IsOpen(const std::string& path)
{
    return g_galleryList && std::any_of(g_galleryList->begin(), g_galleryList->end(),
                                        [&path](const auto& manifest) { return U(manifest->GetPath()) == path; });
}

// Each case starts as a first start: a home of its own, no gallery settings.
class GalleryInitializeTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_oldHome = qgetenv("HOME");
        m_home = MakeScratchDir("home");
        qputenv("HOME", QByteArray::fromStdString(m_home));
        CSettingsStore::DeleteSection(true, kGallerySettingsSection);
        CSettingsStore::DeleteSection(true, kUserGalleriesSection);
        g_noCache = false;
    }

    void TearDown() override
    {
        GalleryLibraryShutdown();
        CSettingsStore::DeleteSection(true, kGallerySettingsSection);
        CSettingsStore::DeleteSection(true, kUserGalleriesSection);
        g_noCache = false;
        qputenv("HOME", m_oldHome);
    }

    void SetSetting(const wchar_t* key, const std::string& value)
    {
        ASSERT_EQ(CSettingsStore::WriteString(true, kGallerySettingsSection, key, W(value)), 0);
    }

    QByteArray m_oldHome;
    std::string m_home;
};

TEST_F(GalleryInitializeTest, FirstStartCreatesMyContentOnce)
{
    const std::string userFolder = U(GetUserGalleryFolder().GetPath().GetString());
    EXPECT_EQ(userFolder, m_home + "/.ZOLTA Technologies Inc/ZOLTA Tavolite Software/Gallery");
    ASSERT_FALSE(QDir(QString::fromStdString(userFolder)).exists());

    ASSERT_EQ(GalleryLibraryInitialize(), S_OK);
    EXPECT_EQ(g_initializeThread, nullptr);
    EXPECT_TRUE(QDir(QString::fromStdString(userFolder)).exists());
    const CZoltaFilePath myContent = GetMyContentManifestPath();
    ASSERT_TRUE(myContent.Exists());
    ASSERT_TRUE(g_myContent);
    EXPECT_EQ(U(g_myContent->GetPath()), userFolder + "/My Content/imsmanifest.xml");
    EXPECT_EQ(U(g_language.GetString()), "en");
    EXPECT_FALSE(g_enableContentCreatorTools);

    CGalleryManifest reopened;
    ASSERT_EQ(CGalleryManifestIO::Open(reopened, myContent.GetPath().GetString(), nullptr, false), S_OK);
    const std::string base = U(PLACEHOLDER_URI_BASE);
    EXPECT_EQ(U(reopened.m_metadata->m_identifier), base + "/default?manifest=My%20Content");
    ASSERT_EQ(reopened.m_organizations->GetCount(), 1u);
    const CGalleryOrganization* organization = reopened.m_organizations->GetAt(0);
    EXPECT_EQ(U(organization->m_metadata->m_identifier), base + "/default?organization=My%20Content");
    EXPECT_EQ(U(organization->m_metadata->m_titles->Lookup(L"en")), "My Content");
    ASSERT_EQ(organization->m_items->GetCount(), 1u);
    const CGalleryFolder* root = organization->m_items->GetAt(0);
    EXPECT_EQ(U(root->m_metadata->m_identifier), base + "/My%20Content");
    EXPECT_EQ(U(root->m_metadata->m_titles->Lookup(L"en")), "My Content");
    EXPECT_EQ(root->m_children->GetCount(), 0u);
    EXPECT_EQ(root->m_activities->GetCount(), 0u);
    // Its cache was written beside the other per-user files.
    EXPECT_TRUE(GetManifestCachePath(myContent.GetPath()).Exists());

    // A second start leaves the existing collection alone.
    GalleryLibraryShutdown();
    ASSERT_EQ(GalleryLibraryInitialize(), S_OK);
    EXPECT_FALSE(g_myContent);
}

TEST_F(GalleryInitializeTest, SettingsChooseTheDefaultRegisteredAndSharedGalleriesAndTheFlags)
{
    const std::string defaultPath = MakeGallery(MakeScratchDir("default") + "/Mine", L"urn:default");
    SetSetting(L"DefaultManifest", defaultPath);
    ASSERT_EQ(CSettingsStore::WriteInt(true, kGallerySettingsSection, L"EnableContentCreatorTools", 1), 0);
    ASSERT_EQ(CSettingsStore::WriteString(true, kLanguageSettingsSection, L"LanguageID", L"fr-CA"), 0);
    const std::string registered = MakeGallery(MakeScratchDir("registered") + "/Team", L"urn:team");
    const CAtlString section = CAtlString(kUserGalleriesSection) + L"\\{1234}";
    ASSERT_EQ(CSettingsStore::WriteString(true, section, L"ImsManifestXml", W(registered)), 0);
    const CAtlString broken = CAtlString(kUserGalleriesSection) + L"\\{5678}";
    ASSERT_EQ(CSettingsStore::WriteString(true, broken, L"ImsManifestXml", L"/nowhere/imsmanifest.xml"), 0);
    CZoltaDirectoryPath sharedFolder = GetInstallationBaseFolder();
    sharedFolder.Append(L"Gallery");
    const std::string shared = MakeGallery(U(sharedFolder.GetPath().GetString()), L"urn:shared");
    EXPECT_EQ(U(GetSharedGalleryManifestPath().GetPath().GetString()), shared);

    ASSERT_EQ(GalleryLibraryInitialize(), S_OK);
    ASSERT_TRUE(g_defaultManifest);
    EXPECT_EQ(U(g_defaultManifest->GetPath()), defaultPath);
    EXPECT_STREQ(g_defaultManifest->m_metadata->m_identifier, L"urn:default");
    EXPECT_TRUE(IsOpen(defaultPath));
    EXPECT_TRUE(g_enableContentCreatorTools);
    EXPECT_FALSE(g_browseChunking);
    EXPECT_EQ(U(g_language.GetString()), "fr-CA");
    CSettingsStore::DeleteSection(true, kLanguageSettingsSection);
    ASSERT_TRUE(g_sharedGallery);
    EXPECT_STREQ(g_sharedGallery->m_metadata->m_identifier, L"urn:shared");
    EXPECT_TRUE(IsOpen(registered));
    EXPECT_FALSE(IsOpen("/nowhere/imsmanifest.xml"));

    // Registered galleries open only with the cache allowed.
    GalleryLibraryShutdown();
    g_noCache = true;
    ASSERT_EQ(GalleryLibraryInitialize(), S_OK);
    EXPECT_FALSE(IsOpen(registered));
    sharedFolder.Remove();
}

TEST_F(GalleryInitializeTest, RepositoriesAreScannedMissingEntriesAndCvsSkipped)
{
    const std::string repository = MakeScratchDir("repository");
    const std::string first = MakeGallery(repository + "/First Collection", L"urn:first");
    const std::string cvs = MakeGallery(repository + "/CVS", L"urn:cvs");
    ASSERT_TRUE(CZoltaDirectoryPath((repository + "/No Manifest").c_str()).Create());
    SetSetting(L"Repositories", repository + "/missing|  |" + repository + "|");

    std::vector<CZoltaDirectoryPath> repositories;
    CGalleryInitializeThread::GetRepositories(repositories);
    ASSERT_EQ(repositories.size(), 1u);
    EXPECT_EQ(U(repositories[0].GetPath().GetString()), repository);
    std::vector<CZoltaFilePath> manifests;
    CGalleryInitializeThread::ScanGalleryFolder(repositories[0], manifests);
    ASSERT_EQ(manifests.size(), 1u);
    EXPECT_EQ(U(manifests[0].GetPath().GetString()), first);

    ASSERT_EQ(GalleryLibraryInitialize(), S_OK);
    EXPECT_TRUE(IsOpen(first));
    EXPECT_FALSE(IsOpen(cvs));
    // Opened with the cache allowed: the cache now exists and serves the next start.
    EXPECT_TRUE(GetManifestCachePath(W(first)).Exists());
    GalleryLibraryShutdown();
    ASSERT_EQ(GalleryLibraryInitialize(), S_OK);
    bool fromCache = false;
    for (const auto& manifest : *g_galleryList)
        fromCache |= U(manifest->GetPath()) == first && U(manifest->m_cachePath) != "";
    EXPECT_TRUE(fromCache);
}

TEST_F(GalleryInitializeTest, CancelStopsOpeningAndAParseInProgress)
{
    const std::string large = MakeGallery(MakeScratchDir("large") + "/Large", L"urn:large", 2000);
    CGalleryInitializeThread thread;
    EXPECT_TRUE(thread.OpenGallery(W(large)));
    EXPECT_EQ(thread.OnManifestProgress(0.5f), S_OK);

    thread.Cancel();
    EXPECT_EQ(thread.OnManifestProgress(0.5f), E_ABORT);
    EXPECT_FALSE(thread.OpenGallery(W(large)));
    // The observer ends a parse that is under way at its next end tag.
    CGalleryManifest parsing;
    EXPECT_LT(CGalleryManifestIO::Open(parsing, W(large).GetString(), &thread, false), 0);

    // A cancelled run opens nothing and says so.
    EXPECT_EQ(thread.Run(), E_ABORT);
    EXPECT_FALSE(g_sharedGallery);
    EXPECT_FALSE(g_defaultManifest);
    ASSERT_NE(g_galleryList, nullptr);
    EXPECT_TRUE(g_galleryList->empty());
}

TEST_F(GalleryInitializeTest, AnOldMyContentFolderIsImportedOnceIntoTheRootCategory)
{
    // The product looks for the old folder at "/dev/null", no folder: nothing to import.
    ASSERT_EQ(GalleryLibraryInitialize(), S_OK);
    GalleryLibraryShutdown();

    const std::string old = MakeScratchDir("old-my-content");
    ASSERT_TRUE(curatool::test::WriteFile(old + "/frog.galleryitem", "frog"));
    ASSERT_TRUE(curatool::test::WriteFile(old + "/sub/owl.galleryitem", "owl"));
    ASSERT_TRUE(curatool::test::WriteFile(old + "/lesson.doc", "not an item"));
    ASSERT_TRUE(curatool::test::WriteFile(
        old + "/cat/catalogue.xml", "<content><items><record><name>Pond</name><file>pond.png</file></record>"
                                    "<record><name>Gone</name><file>absent.png</file></record></items></content>"));
    ASSERT_TRUE(curatool::test::WriteFile(old + "/cat/pond.png", "pond"));

    const auto importOnce = [&] {
        CGalleryInitializeThread thread;
        thread.SetOldMyContentFolder(CZoltaDirectoryPath(old.c_str()));
        ASSERT_EQ(thread.Run(), S_OK);
        GalleryLibraryShutdown();
    };
    importOnce();
    importOnce();  // a second start finds the items there already

    CGalleryManifest reopened;
    const CZoltaFilePath myContent = GetMyContentManifestPath();
    ASSERT_EQ(CGalleryManifestIO::Open(reopened, myContent.GetPath().GetString(), nullptr, false), S_OK);
    const CGalleryFolder* root = reopened.m_organizations->GetAt(0)->m_items->GetAt(0);
    std::vector<std::string> imported;
    for (std::uint32_t i = 0; i < root->m_activities->GetCount(); ++i) {
        const CGalleryActivity* activity = root->m_activities->GetAt(i);
        imported.push_back(U(activity->m_metadata->m_titles->Lookup(L"en")) + "=" + U(activity->m_href));
        EXPECT_EQ(curatool::test::ReadFile(U(myContent.GetFolder().GetFile(activity->m_href).GetPath().GetString())),
                  U(activity->m_href).substr(0, U(activity->m_href).find('.')));
    }
    std::sort(imported.begin(), imported.end());
    EXPECT_EQ(imported, (std::vector<std::string>{"Pond=pond.png", "frog=frog.galleryitem", "owl=owl.galleryitem"}));
}

TEST_F(GalleryInitializeTest, MultiprocOpensOneListInOrderSkippingFailuresUntilCancelled)
{
    const std::string first = MakeGallery(MakeScratchDir("multi-a") + "/A", L"urn:a");
    const std::string second = MakeGallery(MakeScratchDir("multi-b") + "/B", L"urn:b");
    CGalleryMultiproc opener({W(first), W(MakeScratchDir("multi-none") + "/imsmanifest.xml"), W(second)});
    opener.Start(false);
    opener.Wait();
    EXPECT_EQ(opener.Result(), S_OK);
    ASSERT_EQ(opener.GetOpened().size(), 2u);
    EXPECT_STREQ(opener.GetOpened()[0]->m_metadata->m_identifier, L"urn:a");
    EXPECT_STREQ(opener.GetOpened()[1]->m_metadata->m_identifier, L"urn:b");

    CGalleryMultiproc cancelled({W(first)});
    cancelled.Cancel();
    EXPECT_EQ(cancelled.Run(), E_ABORT);
    EXPECT_TRUE(cancelled.GetOpened().empty());
}

}  // namespace
