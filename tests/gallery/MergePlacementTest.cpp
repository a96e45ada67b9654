// How content files reach the gallery: moved out of a temporary extraction, copied from a folder
// package, and never through a link that stands in the gallery.
#include "gallery/GalleryContentFiles.h"
#include "ManifestTestTree.h"
#include "ziparchive/ZipHelpers.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>

using namespace manifest_test;
using curatool::test::Exists;
using curatool::test::MakeScratchDir;
using curatool::test::ReadFile;
using curatool::test::WriteFile;

namespace fs = std::filesystem;

namespace {

// A package folder with one activity per href, each file holding its own name; and that
// folder zipped beside it, dated a year back.
std::string WritePackage(const std::string& name, const std::vector<std::wstring>& hrefs)
{
    const std::string folder = MakeScratchDir(name);
    CGalleryManifest manifest;
    Ok(manifest.m_metadata->SetIdentifier(W("urn:pkg:" + name).GetString()));
    CGalleryOrganization* organization = AddOrganization(manifest, L"urn:org", L"Organization");
    CGalleryFolder* category = AddCategory(organization, L"urn:cat", L"Category");
    int n = 0;
    for (const std::wstring& href : hrefs) {
        AddActivity(category, W("urn:a:" + name + std::to_string(n++)).GetString(), href.c_str(), L"Item");
        EXPECT_TRUE(WriteFile(folder + "/" + U(href.c_str()), U(href.c_str())));
        fs::last_write_time(folder + "/" + U(href.c_str()),
                            fs::file_time_type::clock::now() - std::chrono::hours(24 * 365));
    }
    EXPECT_EQ(S_OK, CGalleryManifestIO::Save(manifest, W(folder + "/imsmanifest.xml").GetString(), false));
    EXPECT_TRUE(ZipAddDirectory(CZoltaDirectoryPath(W(folder)), CZoltaFilePath(W(folder + ".zip"))));
    return folder;
}

class MergePlacementTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        gallery = MakeScratchDir("gallery");
        outside = MakeScratchDir("outside");
        ASSERT_TRUE(WriteFile(outside + "/victim.png", "ORIGINAL"));
        ASSERT_EQ(S_FALSE, CGalleryManifestIO::Open(installed, W(gallery).GetString(), nullptr, false));
    }
    void TearDown() override { CGalleryManifestIO::Close(installed); }

    // Opens the package (a folder or a ".zip") and installs it; the extraction, if any, is left open
    // until after the check of what it holds.
    HRESULT Install(const std::string& path, std::string* extraction = nullptr)
    {
        CGalleryManifest package;
        EXPECT_EQ(S_OK, CGalleryManifestIO::Open(package, W(path).GetString(), nullptr, false));
        if (extraction)
            *extraction = U(CGalleryManifestIO::GetFolder(package).GetPath().GetString());
        const HRESULT result = CGalleryManifestIO::MergeFrom(installed, &package, nullptr);
        CGalleryManifestIO::Close(package);
        return result;
    }

    CGalleryManifest installed;
    std::string gallery;
    std::string outside;
};

TEST_F(MergePlacementTest, ArchivesAndFoldersArriveWholeAndNewlyDatedWhileFolderSourcesStay)
{
    const std::string zipped = WritePackage("zipped", {L"z1.png", L"pictures/z2.png"});
    const std::string plain = WritePackage("plain", {L"f1.png", L"pictures/f2.png"});
    std::string extraction;
    ASSERT_EQ(S_OK, Install(zipped + ".zip", &extraction));
    ASSERT_EQ(S_OK, Install(plain));

    const auto now = fs::file_time_type::clock::now();
    for (const std::string name : {"z1.png", "pictures/z2.png", "f1.png", "pictures/f2.png"}) {
        EXPECT_EQ(name, ReadFile(gallery + "/" + name));
        EXPECT_LT(now - fs::last_write_time(gallery + "/" + name), std::chrono::hours(1)) << name;
        EXPECT_FALSE(Exists(gallery + "/." + fs::path(name).filename().string() + ".curatool-new")) << name;
    }
    // A folder package is the user's: it keeps its files. The extraction is gone with its close.
    EXPECT_EQ("f1.png", ReadFile(plain + "/f1.png"));
    EXPECT_EQ("pictures/f2.png", ReadFile(plain + "/pictures/f2.png"));
    EXPECT_FALSE(extraction.empty());
    EXPECT_FALSE(Exists(extraction));
}

TEST_F(MergePlacementTest, LinksInTheGalleryAreReplacedOrRefusedNeverWrittenThrough)
{
    // A link at a target name and one at the name a file is put beside its target first, for a
    // package that moves its files and one that copies them.
    for (const std::string kind : {"zip", "folder"}) {
        const std::string name = "linked" + kind;
        const std::string package = WritePackage(name, {W(name + "1.png").GetString(), W(name + "2.png").GetString()});
        fs::create_symlink(outside + "/victim.png", gallery + "/" + name + "1.png");
        fs::create_symlink(outside + "/victim.png", gallery + "/." + name + "2.png.curatool-new");
        // The first leads to a file that no record lists: it is in the way.
        EXPECT_EQ(E_FAIL, Install(kind == "zip" ? package + ".zip" : package)) << kind;
        // Leading nowhere, it is in nobody's way, and the name is taken over.
        fs::remove(gallery + "/" + name + "1.png");
        fs::create_symlink(outside + "/missing.png", gallery + "/" + name + "1.png");
        EXPECT_EQ(S_OK, Install(kind == "zip" ? package + ".zip" : package)) << kind;
        EXPECT_FALSE(fs::is_symlink(gallery + "/" + name + "1.png")) << kind;
        EXPECT_EQ(name + "1.png", ReadFile(gallery + "/" + name + "1.png")) << kind;
        EXPECT_EQ(name + "2.png", ReadFile(gallery + "/" + name + "2.png")) << kind;
        EXPECT_FALSE(Exists(outside + "/missing.png")) << kind;
        EXPECT_EQ("ORIGINAL", ReadFile(outside + "/victim.png")) << kind;
    }

    // A linked folder that stays inside the gallery is a place like any other; one leading out is not.
    fs::create_directories(gallery + "/real");
    fs::create_directory_symlink(gallery + "/real", gallery + "/inner");
    fs::create_directory_symlink(outside, gallery + "/away");
    EXPECT_EQ(S_OK, Install(WritePackage("inner", {L"inner/a.png"}) + ".zip"));
    EXPECT_EQ("inner/a.png", ReadFile(gallery + "/real/a.png"));
    EXPECT_EQ(E_FAIL, Install(WritePackage("away", {L"away/b.png"}) + ".zip"));
    EXPECT_FALSE(Exists(outside + "/b.png"));
}

TEST(PathInsideTest, NamesDecideUnlessALinkOrADotStandsBetween)
{
    const std::string root = MakeScratchDir("inside");
    const std::string outside = MakeScratchDir("beyond");
    fs::create_directories(root + "/real/deeper");
    fs::create_directory_symlink(outside, root + "/away");
    fs::create_directory_symlink(root + "/real", root + "/back");
    const struct {
        std::string inner;
        bool inside;
    } cases[] = {
        {root, true},
        {root + "/", true},
        {root + "/real/deeper/file.png", true},
        {root + "/missing/more/file.png", true},
        {root + "//real///deeper", true},
        {root + "/back/deeper", true},
        {root + "/away", false},
        {root + "/away/file.png", false},
        {root + "/missing/../../file.png", false},
        {root + "/real/../real/x", true},
        {root + "/back/../..", false},
        {outside, false},
        {root + "x", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.inside, IsPathInside(W(c.inner), W(root))) << c.inner;
    EXPECT_TRUE(IsPathInside(W(root + "/real/x"), W(root + "/")));
    EXPECT_FALSE(IsPathInside(W(root + "/real"), W(root + "/away")));
}

}  // namespace
