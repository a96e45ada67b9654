#include "installation/CGalleryInstallation.h"
#include "support/GallerySourceBuilder.h"
#include "installation/RunJournal.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

const PackageSpec kOwl{"pkg.owl", "1.0", "owl.png", "hoot", "Owl"};
const PackageSpec kFox{"pkg.fox", "1.0", "fox.png", "yip", "Fox"};

// A gallery of two installed packages, and the means to stage what a killed run leaves behind.
struct InterruptedGallery : ::testing::Test {
    std::string source = MakeScratchDir("journal-source");
    std::string gallery = MakeScratchDir("journal-gallery");
    std::unique_ptr<CGalleryInstallation> installation;

    void SetUp() override
    {
        WritePackageZip(source, "owl.zip", kOwl);
        WritePackageZip(source, "fox.zip", kFox);
        CategorySpec wild{
            "cat.wild", "1.0", {{"en", "Wild"}}, {{"owl.zip", "pkg.owl", "1.0", ""}, {"fox.zip", "pkg.fox", "1.0", ""}},
            {},         ""};
        ASSERT_TRUE(WriteFile(source + "/gallery_categories.xml", CategoriesXml({wild})));
    }

    HRESULT Open()
    {
        installation = CGalleryInstallation::Create();
        return installation->Open(CZoltaDirectoryPath(gallery.c_str()), CAtlString(source.c_str()), true);
    }

    void InstallEverything()
    {
        ASSERT_EQ(S_OK, Open());
        installation->CategoryById(L"cat.wild")->SetAction(1);
        ASSERT_EQ(S_OK, installation->Run());
        installation.reset();
    }

    std::string Journal() const { return gallery + "/Uninstall/run_journal.txt"; }
    std::string Manifest() const { return ReadFile(gallery + "/imsmanifest.xml"); }
};

TEST_F(InterruptedGallery, RecordsWrittenBeforeTheManifestWasSavedAreDroppedAndInstalledAgain)
{
    InstallEverything();
    EXPECT_FALSE(fs::exists(Journal())) << "a finished run leaves no journal";

    // Killed after both packages were merged but before the merged manifest was written.
    ASSERT_TRUE(fs::remove(gallery + "/imsmanifest.xml"));  // a new gallery had none yet
    ASSERT_TRUE(WriteFile(Journal(), fs::path(InstallRecordPath(gallery, "pkg.owl")).filename().string() + "\n" +
                                         fs::path(InstallRecordPath(gallery, "pkg.fox")).filename().string() + "\n"));

    ASSERT_EQ(S_OK, Open());
    CGalleryCategory* wild = installation->CategoryById(L"cat.wild");
    EXPECT_FALSE(wild->IsInstalled());
    EXPECT_FALSE(fs::exists(InstallRecordPath(gallery, "pkg.owl")));
    EXPECT_FALSE(fs::exists(gallery + "/owl.png")) << "files of dropped records go with the rebuild";
    EXPECT_FALSE(fs::exists(Journal()));

    wild->SetAction(1);
    ASSERT_EQ(S_OK, installation->Run());
    EXPECT_NE(std::string::npos, Manifest().find("href=\"owl.png\""));
    EXPECT_NE(std::string::npos, Manifest().find("href=\"fox.png\""));
    EXPECT_EQ("hoot", ReadFile(gallery + "/owl.png"));
}

TEST_F(InterruptedGallery, ARemovalKilledBeforeTheRebuildIsCompletedOnTheNextOpen)
{
    InstallEverything();
    // The removal had deleted the fox's record; the manifest still lists the fox.
    ASSERT_TRUE(fs::remove(InstallRecordPath(gallery, "pkg.fox")));
    ASSERT_TRUE(WriteFile(Journal(), ""));

    ASSERT_EQ(S_OK, Open());
    EXPECT_EQ(std::string::npos, Manifest().find("fox.png"));
    EXPECT_FALSE(fs::exists(gallery + "/fox.png"));
    EXPECT_EQ("hoot", ReadFile(gallery + "/owl.png"));
    EXPECT_TRUE(installation->CategoryById(L"cat.wild")->IsInstalled());
}

TEST_F(InterruptedGallery, AJournalNeverReachesOutsideTheUninstallFolder)
{
    InstallEverything();
    const std::string outside = MakeScratchDir("journal-outside");
    ASSERT_TRUE(WriteFile(outside + "/imsmanifestabc.xml", "keep"));
    ASSERT_TRUE(WriteFile(gallery + "/kept/imsmanifestdef.xml", "keep"));
    ASSERT_TRUE(
        WriteFile(Journal(), "../kept/imsmanifestdef.xml\n" + outside + "/imsmanifestabc.xml\n..\nnotarecord.xml\n"));

    ASSERT_EQ(S_OK, Open());
    EXPECT_EQ("keep", ReadFile(outside + "/imsmanifestabc.xml"));
    EXPECT_EQ("keep", ReadFile(gallery + "/kept/imsmanifestdef.xml"));
    EXPECT_TRUE(fs::exists(InstallRecordPath(gallery, "pkg.owl")));
    EXPECT_FALSE(fs::exists(Journal()));
}

}  // namespace
