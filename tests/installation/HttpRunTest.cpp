#include "installation/CGalleryInstallation.h"
#include "support/GallerySourceBuilder.h"
#include "support/LocalHttpServer.h"
#include "ProgressRecorder.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace curatool::test;

namespace {

const PackageSpec kDog{"pkg.dog", "1.0", "dog.png", "woof", "Dog"};
const PackageSpec kCow{"pkg.cow", "1.0", "cow.png", "moo", "Cow"};
const char kDogName[] = "my dog \xC3\xA9.zip";  // a space and a non-ASCII letter to encode

// A source served over HTTP: names that need encoding, a string package in a subfolder.
struct HttpRunFixture : ::testing::Test {
    std::string source = MakeScratchDir("source");
    std::string gallery = MakeScratchDir("gallery");
    ProgressRecorder recorder;
    std::unique_ptr<CGalleryInstallation> installation = CGalleryInstallation::Create();

    void SetUp() override
    {
        WritePackageZip(source, kDogName, kDog);
        WritePackageZip(source, "cow.zip", kCow);
        WriteCatalogue(source + "/i18n/pets_fr.xml", "fr", kDog, "Chien");
        CategorySpec pets{"cat.pets",
                          "1.0",
                          {{"en", "Pets"}},
                          {{kDogName, "pkg.dog", "1.0", ""}, {"cow.zip", "pkg.cow", "1.0", ""}},
                          {{"fr", "i18n/pets_fr.xml"}},
                          ""};
        ASSERT_TRUE(WriteFile(source + "/gallery_categories.xml", CategoriesXml({pets})));
    }

    HRESULT OpenAndRun(const std::string& url, int prefetch)
    {
        installation->SetObserver(&recorder);
        installation->SetPrefetch(prefetch);
        const HRESULT opened = installation->Open(CZoltaDirectoryPath(gallery.c_str()), CAtlString(url.c_str()), true);
        if (FAILED(opened))
            return opened;
        installation->Category(0)->SetAction(1);
        recorder.Clear();
        return installation->Run();
    }

    void ExpectInstalled()
    {
        EXPECT_EQ("woof", ReadFile(gallery + "/dog.png"));
        EXPECT_EQ("moo", ReadFile(gallery + "/cow.png"));
        EXPECT_TRUE(Contains(ReadFile(gallery + "/imsmanifest.xml"), "Chien"));
        EXPECT_EQ(std::vector<std::string>{},
                  FilesBelow(installation->GetDownloadDirectory().GetPath().ToQString().toStdString()))
            << "every fetched file goes once it is used";
    }
};

}  // namespace

TEST_F(HttpRunFixture, FetchesEncodedNamesInstallsAndAppliesStrings)
{
    LocalHttpServer server(source);
    ASSERT_TRUE(server.IsRunning());
    ASSERT_EQ(S_OK, OpenAndRun(server.Url(), 0));
    ExpectInstalled();
    // Per file: its download line, then its install line, before the next file starts.
    const auto events = recorder.Events();
    const auto firstCow = std::find_if(events.begin(), events.end(), [](const auto& e) { return e.item == "cow.zip"; });
    ASSERT_NE(events.end(), firstCow);
    EXPECT_TRUE(std::any_of(events.begin(), firstCow, [](const auto& e) {
        return e.stage == eGalleryInstallationProgressInstalling && e.percent == 100;
    }));
    EXPECT_EQ(100, events.back().overall);
}

TEST_F(HttpRunFixture, PrefetchFetchesEverythingBeforeInstalling)
{
    LocalHttpServer server(source);
    ASSERT_TRUE(server.IsRunning());
    ASSERT_EQ(S_OK, OpenAndRun(server.Url(), 1));
    ExpectInstalled();
    const auto events = recorder.Events();
    const auto firstInstall = std::find_if(
        events.begin(), events.end(), [](const auto& e) { return e.stage == eGalleryInstallationProgressInstalling; });
    ASSERT_NE(events.end(), firstInstall);
    EXPECT_TRUE(std::any_of(events.begin(), firstInstall, [](const auto& e) { return e.item == "cow.zip"; }));
    EXPECT_TRUE(std::any_of(events.begin(), firstInstall, [](const auto& e) { return e.item == "i18n/pets_fr.xml"; }));
}

TEST_F(HttpRunFixture, AnUnreachableSourceFailsOpenUnlessACopyIsKept)
{
    std::string url;
    {
        LocalHttpServer server(source);
        ASSERT_TRUE(server.IsRunning());
        url = server.Url();
        ASSERT_EQ(S_OK, OpenAndRun(url, 0));
    }
    // The server is gone: the kept copy serves, the packages fail.
    installation = CGalleryInstallation::Create();
    EXPECT_EQ(E_FAIL, OpenAndRun(url, 0));
    EXPECT_EQ(2u, recorder.OfStage(eGalleryInstallationProgressFailed).size());

    installation = CGalleryInstallation::Create();
    EXPECT_TRUE(FAILED(
        installation->Open(CZoltaDirectoryPath(MakeScratchDir("fresh").c_str()), CAtlString(url.c_str()), true)));
}
