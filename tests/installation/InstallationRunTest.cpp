#include "installation/CGalleryInstallation.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryManifestIO.h"
#include "support/GallerySourceBuilder.h"
#include "ProgressRecorder.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

const PackageSpec kDog{"pkg.dog", "1.0", "dog.png", "woof v1", "Dog"};
const PackageSpec kCat{"pkg.cat", "1.0", "cat.png", "meow v1", "Cat"};
const PackageSpec kCow{"pkg.cow", "1.0", "cow.png", "moo v1", "Cow"};

// A local source with two categories: "cat.pets" (a zip and a folder package, a French string
// package) and "cat.farm" (one zip package).
struct RunFixture : ::testing::Test {
    std::string source = MakeScratchDir("source");
    std::string gallery = MakeScratchDir("gallery");
    ProgressRecorder recorder;
    std::unique_ptr<CGalleryInstallation> installation;

    void SetUp() override
    {
        WritePackageZip(source, "dog.zip", kDog);
        WritePackageFolder(source, "catpkg", kCat);
        WritePackageZip(source, "cow.zip", kCow);
        WriteCatalogue(source + "/pets_fr.xml", "fr", kDog, "Chien");
        WriteDocument("1.0", "1.0");
    }

    void WriteDocument(const std::string& dogVersion, const std::string& petsVersion,
                       const std::vector<std::string>& removals = {})
    {
        CategorySpec pets{"cat.pets",
                          petsVersion,
                          {{"en", "Pets"}},
                          {{"dog.zip", "pkg.dog", dogVersion, ""}, {"catpkg", "pkg.cat", "1.0", ""}},
                          {{"fr", "pets_fr.xml"}},
                          ""};
        CategorySpec farm{"cat.farm", "1.0", {{"en", "Farm"}}, {{"cow.zip", "pkg.cow", "1.0", ""}}, {}, ""};
        ASSERT_TRUE(WriteFile(source + "/gallery_categories.xml", CategoriesXml({pets, farm}, removals)));
    }

    void Open(const std::string& from)
    {
        installation = CGalleryInstallation::Create();
        ASSERT_TRUE(installation);
        installation->SetObserver(&recorder);
        ASSERT_EQ(S_OK, installation->Open(CZoltaDirectoryPath(gallery.c_str()), CAtlString(from.c_str()), true));
        recorder.Clear();
    }

    void Open() { Open(source); }

    HRESULT RunWith(int petsAction, int farmAction)
    {
        installation->CategoryById(L"cat.pets")->SetAction(petsAction);
        installation->CategoryById(L"cat.farm")->SetAction(farmAction);
        return installation->Run();
    }

    std::string Manifest() const { return ReadFile(gallery + "/imsmanifest.xml"); }
};

}  // namespace

TEST_F(RunFixture, InstallCopiesContentRecordsAndReportsEachFileInOrder)
{
    Open();
    ASSERT_EQ(S_OK, RunWith(1, 0));

    EXPECT_EQ("woof v1", ReadFile(gallery + "/dog.png"));
    EXPECT_EQ("meow v1", ReadFile(gallery + "/cat.png"));
    EXPECT_FALSE(Exists(gallery + "/cow.png"));
    EXPECT_TRUE(Exists(InstallRecordPath(gallery, "pkg.cat")));
    EXPECT_TRUE(Contains(Manifest(), "dog.png"));
    EXPECT_EQ(S_FALSE, installation->CategoryById(L"cat.farm")->GetResult());

    // A local source: each file moves the total by one; two files of two.
    const auto events = recorder.Events();
    ASSERT_EQ(8u, events.size());
    const int expectedStages[] = {1, 1, 2, 2, 1, 1, 2, 2};
    const int expectedPercents[] = {0, 100, 0, 100, 0, 100, 0, 100};
    for (std::size_t i = 0; i < events.size(); ++i) {
        EXPECT_EQ(expectedStages[i], events[i].stage) << i;
        EXPECT_EQ(expectedPercents[i], events[i].percent) << i;
        EXPECT_EQ(i < 4 ? 50 : 100, events[i].overall) << i;
        EXPECT_EQ("cat.pets", events[i].category);
    }
    EXPECT_EQ("dog.zip", events[0].item);
    EXPECT_EQ("catpkg", events[4].item);

    // Opened again, the category is installed and current.
    Open();
    const CGalleryCategory* pets = installation->CategoryById(L"cat.pets");
    EXPECT_TRUE(pets->IsInstalled());
    EXPECT_FALSE(pets->IsUpdateAvailable());
    EXPECT_FALSE(installation->CategoryById(L"cat.farm")->IsInstalled());
}

TEST_F(RunFixture, UpdateInstallsOnlyTheChangedFile)
{
    Open();
    ASSERT_EQ(S_OK, RunWith(1, 1));
    const auto catRecordTime = fs::last_write_time(InstallRecordPath(gallery, "pkg.cat"));

    PackageSpec dog2 = kDog;
    dog2.version = "1.1";
    dog2.contentBytes = "woof v2";
    WritePackageZip(source, "dog.zip", dog2);
    WriteDocument("1.1", "1.1");
    Open();
    const CGalleryCategory* pets = installation->CategoryById(L"cat.pets");
    ASSERT_TRUE(pets->IsUpdateAvailable());
    EXPECT_TRUE(pets->GetFiles()[0].NeedsUpdate());
    EXPECT_FALSE(pets->GetFiles()[1].NeedsUpdate());
    EXPECT_FALSE(installation->CategoryById(L"cat.farm")->IsUpdateAvailable());

    ASSERT_EQ(S_OK, RunWith(3, 0));
    EXPECT_EQ("woof v2", ReadFile(gallery + "/dog.png"));
    EXPECT_EQ(catRecordTime, fs::last_write_time(InstallRecordPath(gallery, "pkg.cat")));
    for (const auto& event : recorder.Events())
        EXPECT_EQ("dog.zip", event.item);
    // The total counts every file of an updated category, so one of two ends at 50.
    EXPECT_EQ(50, recorder.Events().back().overall);

    Open();
    EXPECT_EQ("1.1", U(installation->CategoryById(L"cat.pets")->GetInstalledVersion()));
}

TEST_F(RunFixture, UninstallRemovesRecordsAndContentAndKeepsTheRest)
{
    Open();
    ASSERT_EQ(S_OK, RunWith(1, 1));
    Open();
    ASSERT_EQ(S_OK, RunWith(4, 0));

    EXPECT_FALSE(Exists(InstallRecordPath(gallery, "pkg.cat")));
    EXPECT_TRUE(Exists(InstallRecordPath(gallery, "pkg.cow")));
    EXPECT_FALSE(Exists(gallery + "/dog.png"));
    EXPECT_TRUE(Exists(gallery + "/cow.png"));
    EXPECT_FALSE(Contains(Manifest(), "dog.png"));
    EXPECT_TRUE(Contains(Manifest(), "cow.png"));

    const auto removing = recorder.OfStage(eGalleryInstallationProgressUninstalling);
    ASSERT_EQ(4u, removing.size());
    EXPECT_EQ(InstallRecordPath(gallery, "pkg.dog"), removing[0].item);
    EXPECT_EQ(50, removing[1].overall);
    EXPECT_EQ(100, removing[3].overall);

    Open();
    EXPECT_FALSE(installation->CategoryById(L"cat.pets")->IsInstalled());
}

TEST_F(RunFixture, StringPackagesReachRecordAndManifestExceptWithActionTwo)
{
    Open();
    ASSERT_EQ(S_OK, RunWith(2, 0));
    EXPECT_TRUE(Exists(gallery + "/dog.png"));
    EXPECT_FALSE(Contains(ReadFile(InstallRecordPath(gallery, "pkg.dog")), "Chien"));

    Open();
    ASSERT_EQ(S_OK, RunWith(1, 0));
    EXPECT_TRUE(Contains(ReadFile(InstallRecordPath(gallery, "pkg.dog")), "Chien"));
    EXPECT_TRUE(Contains(Manifest(), "Chien"));
    // String packages make no progress events of their own.
    for (const auto& event : recorder.Events())
        EXPECT_NE("pets_fr.xml", event.item);
}

TEST_F(RunFixture, NothingSelectedStillAppliesMandatoryRemovals)
{
    Open();
    ASSERT_EQ(S_OK, RunWith(1, 1));
    WriteDocument("1.0", "1.0", {"pkg.cow"});
    Open();
    EXPECT_EQ(S_FALSE, RunWith(0, 0));
    EXPECT_TRUE(recorder.Events().empty());
    EXPECT_FALSE(Exists(gallery + "/cow.png"));
    EXPECT_TRUE(Exists(gallery + "/dog.png"));
}

TEST_F(RunFixture, FailedFilesDoNotStopTheRunAndSetTheResult)
{
    fs::remove(source + "/dog.zip");
    Open();
    EXPECT_EQ(S_FALSE, RunWith(1, 0)) << "one failure beside one success";
    EXPECT_TRUE(Exists(gallery + "/cat.png"));
    const auto failed = recorder.OfStage(eGalleryInstallationProgressFailed);
    ASSERT_EQ(1u, failed.size());
    EXPECT_EQ("dog.zip", failed[0].item);
    EXPECT_EQ(S_OK, installation->CategoryById(L"cat.pets")->GetResult()) << "the last file tells";

    fs::remove(source + "/cow.zip");
    Open();
    EXPECT_EQ(E_FAIL, RunWith(0, 1)) << "only failures";
    EXPECT_TRUE(FAILED(installation->CategoryById(L"cat.farm")->GetResult()));
}

TEST_F(RunFixture, HostileNamesFailAloneAndWriteNothingOutside)
{
    const std::string outside = MakeScratchDir("outside");
    WritePackageZip(outside, "evil.zip", {"pkg.evil", "1.0", "evil.png"});
    const std::string relative = "../" + fs::path(outside).filename().string() + "/evil.zip";
    CategorySpec bad{"cat.bad",
                     "1.0",
                     {{"en", "Bad"}},
                     {{relative, "pkg.evil", "1.0", ""},
                      {outside + "/evil.zip", "pkg.evil2", "1.0", ""},
                      {"sub/../../x.zip", "pkg.evil3", "1.0", ""},
                      {"dog.zip", "pkg.dog", "1.0", ""}},
                     {{"fr", "../pets_fr.xml"}},
                     ""};
    ASSERT_TRUE(WriteFile(source + "/gallery_categories.xml", CategoriesXml({bad})));
    Open();
    installation->Category(0)->SetAction(1);
    EXPECT_EQ(S_FALSE, installation->Run());
    EXPECT_EQ(3u, recorder.OfStage(eGalleryInstallationProgressFailed).size());
    EXPECT_TRUE(Exists(gallery + "/dog.png"));
    EXPECT_FALSE(Exists(gallery + "/evil.png"));
    EXPECT_FALSE(Exists(InstallRecordPath(gallery, "pkg.evil")));
    EXPECT_EQ(1u, std::distance(fs::directory_iterator(outside), fs::directory_iterator()));
}

namespace {

// Cancels the run when the first file starts installing.
class CancellingObserver : public ProgressRecorder {
public:
    CGalleryInstallation* installation = nullptr;
    void Progress(eGalleryInstallationProgress stage, CGalleryCategory* category, const wchar_t* item, int percent,
                  int overall) override
    {
        ProgressRecorder::Progress(stage, category, item, percent, overall);
        if (stage == eGalleryInstallationProgressInstalling && percent == 0)
            installation->Cancel();
    }
};

}  // namespace

TEST_F(RunFixture, CancelStopsAtTheNextStepAndLeavesAReadableManifest)
{
    Open();
    ASSERT_EQ(S_OK, RunWith(0, 1));
    Open();
    CancellingObserver cancelling;
    cancelling.installation = installation.get();
    installation->SetObserver(&cancelling);
    EXPECT_EQ(E_ABORT, RunWith(1, 0));

    const CGalleryCategory* pets = installation->CategoryById(L"cat.pets");
    EXPECT_EQ(E_ABORT, pets->GetResult());
    EXPECT_EQ(1u, cancelling.OfStage(eGalleryInstallationProgressFailed).size());
    EXPECT_EQ(0u, cancelling.OfStage(eGalleryInstallationProgressDownloading).size() % 2);
    EXPECT_FALSE(Exists(gallery + "/cat.png")) << "the second file is never started";

    // The gallery as it was: the manifest opens and still holds the farm.
    CGalleryManifest manifest;
    EXPECT_EQ(S_OK,
              CGalleryManifestIO::Open(manifest, CAtlString((gallery + "/imsmanifest.xml").c_str()), nullptr, false));
    CGalleryManifestIO::Close(manifest);
    EXPECT_TRUE(Contains(Manifest(), "cow.png"));
}

TEST_F(RunFixture, ACategoryWithoutFilesNeedsNoDivisionAndTheDownloadFolderGoesWithTheEngine)
{
    ASSERT_TRUE(WriteFile(source + "/gallery_categories.xml",
                          CategoriesXml({{"cat.none", "1.0", {{"en", "None"}}, {}, {}, ""}})));
    Open();
    installation->Category(0)->SetAction(1);
    EXPECT_EQ(S_FALSE, installation->Run());
    EXPECT_TRUE(recorder.Events().empty());
    const std::string folder = U(installation->GetDownloadDirectory().GetPath());
    EXPECT_TRUE(fs::is_directory(folder));
    installation.reset();
    EXPECT_FALSE(fs::exists(folder));
}
