#include "installation/CGalleryInstallation.h"
#include "support/GallerySourceBuilder.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace curatool::test;

// The gallery's manifest can't be replaced (its replacement's name is taken by a folder): the
// run says so, and its journal stays for the next open to complete.
TEST(IgnoredResultsTest, AManifestThatCanNotBeWrittenFailsTheRun)
{
    const std::string source = MakeScratchDir("source");
    const std::string gallery = MakeScratchDir("gallery");
    const PackageSpec cow{"pkg.cow", "1.0", "cow.png", "moo v1", "Cow"};
    WritePackageZip(source, "cow.zip", cow);
    const CategorySpec farm{"cat.farm", "1.0", {{"en", "Farm"}}, {{"cow.zip", "pkg.cow", "1.0", ""}}, {}, ""};
    ASSERT_TRUE(WriteFile(source + "/gallery_categories.xml", CategoriesXml({farm})));

    auto installation = CGalleryInstallation::Create();
    ASSERT_EQ(S_OK, installation->Open(FolderPath(gallery), W(source), true));
    std::filesystem::create_directories(gallery + "/.imsmanifest.xml.curatool-new");
    installation->CategoryById(L"cat.farm")->SetAction(1);
    EXPECT_TRUE(FAILED(installation->Run()));
    EXPECT_TRUE(std::filesystem::exists(gallery + "/Uninstall/run_journal.txt"));
}
