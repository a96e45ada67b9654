#include "installation/CGalleryInstallation.h"
#include "support/GallerySourceBuilder.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

// Records settle in batches: a run killed in the middle of one leaves some beside their place,
// and a recovery killed in the middle leaves the dropped ones parked under hidden names.
TEST(WaitingRecords, TheNextOpenReleasesTheFilesOfRecordsLeftBesideTheirPlaceOrParked)
{
    const std::string source = MakeScratchDir("waiting-source");
    const std::string gallery = MakeScratchDir("waiting-gallery");
    WritePackageZip(source, "owl.zip", {"pkg.owl", "1.0", "owl.png", "hoot", "Owl"});
    WritePackageZip(source, "fox.zip", {"pkg.fox", "1.0", "fox.png", "yip", "Fox"});
    CategorySpec wild{
        "cat.wild", "1.0", {{"en", "Wild"}}, {{"owl.zip", "pkg.owl", "1.0", ""}, {"fox.zip", "pkg.fox", "1.0", ""}},
        {},         ""};
    ASSERT_TRUE(WriteFile(source + "/gallery_categories.xml", CategoriesXml({wild})));
    const auto installAll = [&] {
        std::unique_ptr<CGalleryInstallation> installation = CGalleryInstallation::Create();
        ASSERT_EQ(S_OK, installation->Open(CZoltaDirectoryPath(gallery.c_str()), CAtlString(source.c_str()), true));
        installation->CategoryById(L"cat.wild")->SetAction(1);
        ASSERT_EQ(S_OK, installation->Run());
    };
    installAll();

    const fs::path owl = InstallRecordPath(gallery, "pkg.owl");
    const fs::path fox = InstallRecordPath(gallery, "pkg.fox");
    const fs::path uninstall = owl.parent_path();
    const fs::path journal = uninstall / "run_journal.txt";
    // The owl's record had not been renamed in; the fox's was parked by a recovery that saved a
    // manifest without it and was killed before its file went.
    fs::rename(owl, uninstall / ("." + owl.filename().string() + ".curatool-new"));
    fs::rename(fox, uninstall / ("." + fox.filename().string()));
    ASSERT_TRUE(fs::remove(gallery + "/imsmanifest.xml"));
    ASSERT_TRUE(WriteFile(journal.string(), owl.filename().string() + "\n" + fox.filename().string() + "\n"));

    std::unique_ptr<CGalleryInstallation> reopened = CGalleryInstallation::Create();
    ASSERT_EQ(S_OK, reopened->Open(CZoltaDirectoryPath(gallery.c_str()), CAtlString(source.c_str()), true));
    EXPECT_FALSE(fs::exists(gallery + "/owl.png"));
    EXPECT_FALSE(fs::exists(gallery + "/fox.png"));
    EXPECT_FALSE(fs::exists(journal));
    std::vector<std::string> hidden;
    for (const auto& entry : fs::directory_iterator(uninstall))
        if (const std::string name = entry.path().filename().string(); name[0] == '.' && name != ".curatool.lock")
            hidden.push_back(name);
    EXPECT_TRUE(hidden.empty()) << hidden.front();
    reopened.reset();

    installAll();
    EXPECT_EQ("hoot", ReadFile(gallery + "/owl.png"));
    EXPECT_EQ("yip", ReadFile(gallery + "/fox.png"));
}

}  // namespace
