// Merging packages into a gallery: records, tree, and how content files arrive (moved out of an
// extraction, copied from a folder package, never through a link or outside the gallery).
#include "gallery/CGalleryMergeIndex.h"
#include "gallery/GalleryContentFiles.h"
#include "ManifestTestTree.h"
#include "ziparchive/ZipHelpers.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <utility>
#include <vector>

using namespace manifest_test;
using curatool::test::Exists;
using curatool::test::MakeScratchDir;
using curatool::test::ReadFile;
using curatool::test::WriteFile;

namespace fs = std::filesystem;

namespace {

struct PackageSpec {
    std::wstring id;
    std::wstring category;
    std::vector<std::pair<std::wstring, std::wstring>> activities;  // identifier, href
    std::wstring parent{};                                          // optional shared parent category
    std::wstring title = L"Package title";
};

// Writes a package folder: its manifest and one file per activity holding "<href>@<package id>",
// dated a year back; and that folder zipped beside it.
std::string WritePackage(const std::string& name, const PackageSpec& offer)
{
    const std::string folder = MakeScratchDir(name);
    CGalleryManifest manifest;
    Ok(manifest.m_metadata->SetIdentifier(offer.id.c_str()));
    Ok(manifest.m_metadata->SetVersion(L"1.0"));
    CGalleryOrganization* organization = AddOrganization(manifest, L"urn:org:shared", L"Shared organization");
    CGalleryFolder* category = offer.parent.empty()
                                   ? AddCategory(organization, offer.category.c_str(), offer.title.c_str())
                                   : AddCategory(AddCategory(organization, offer.parent.c_str(), offer.title.c_str()),
                                                 offer.category.c_str(), offer.title.c_str());
    for (const auto& [id, href] : offer.activities) {
        AddActivity(category, id.c_str(), href.c_str(), (L"Title of " + id).c_str());
        if (href.find(L"..") == std::wstring::npos && href[0] != L'/') {
            const std::string file = folder + "/" + U(href.c_str());
            EXPECT_TRUE(WriteFile(file, U(href.c_str()) + "@" + U(offer.id.c_str())));
            fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::hours(24 * 365));
        }
    }
    EXPECT_EQ(S_OK, CGalleryManifestIO::Save(manifest, W(folder + "/imsmanifest.xml").GetString(), false));
    EXPECT_TRUE(ZipAddDirectory(CZoltaDirectoryPath(W(folder)), CZoltaFilePath(W(folder + ".zip"))));
    return folder;
}

// A package "urn:pkg:<name>" of one category with an activity per href.
std::string WriteHrefPackage(const std::string& name, const std::vector<std::wstring>& hrefs)
{
    PackageSpec offer{W("urn:pkg:" + name).GetString(), L"urn:cat", {}};
    for (const std::wstring& href : hrefs)
        offer.activities.emplace_back(W("urn:a:" + name + std::to_string(offer.activities.size())).GetString(), href);
    return WritePackage(name, offer);
}

class MergeTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        gallery = MakeScratchDir("gallery");
        ASSERT_EQ(S_FALSE, CGalleryManifestIO::Open(installed, W(gallery).GetString(), nullptr, false));
    }
    void TearDown() override { CGalleryManifestIO::Close(installed); }

    // Opens the package (a folder or a ".zip") and merges it; the extraction, if any, is closed after.
    HRESULT Install(const std::string& path, CGalleryFolder** firstItem = nullptr, std::string* extraction = nullptr)
    {
        CGalleryManifest package;
        EXPECT_EQ(S_OK, CGalleryManifestIO::Open(package, W(path).GetString(), nullptr, false));
        if (extraction)
            *extraction = U(CGalleryManifestIO::GetFolder(package).GetPath().GetString());
        const HRESULT result = CGalleryManifestIO::MergeFrom(installed, &package, firstItem);
        CGalleryManifestIO::Close(package);
        return result;
    }

    std::string RecordOf(const wchar_t* id)
    {
        return U(CGalleryManifestIO::GetInstallRecordPath(CGalleryManifestIO::GetUninstallFolder(installed), id)
                     .GetPath()
                     .GetString());
    }

    HRESULT Uninstall(const wchar_t* id)
    {
        EXPECT_TRUE(std::filesystem::remove(RecordOf(id)));
        return CGalleryManifestIO::RebuildFromInstalled(installed);
    }

    CGalleryOrganization* Organization() { return installed.GetOrganizations()->GetAt(0); }

    std::string gallery;
    CGalleryManifest installed;
};

const PackageSpec kAnimals{
    L"urn:pkg:animals", L"urn:cat:animals", {{L"urn:a:lion", L"lion.png"}, {L"urn:a:cat", L"sub/cat.png"}}};
const PackageSpec kMaps{L"urn:pkg:maps", L"urn:cat:maps", {{L"urn:a:france", L"france.svg"}}};
const PackageSpec kSounds{
    L"urn:pkg:sounds", L"urn:cat:sounds", {{L"urn:a:roar", L"roar.wav"}, {L"urn:a:bell", L"bell.wav"}}};

TEST(InstallRecordNameTest, HashesOfIdentifierAndReversedIdentifier)
{
    // 5381*33 + 'a' = 177670; "ab": 177670*33 + 'b' = 5863208; "ba": (5381*33 + 'b')*33 + 'a' = 5863240.
    EXPECT_EQ(CAtlString(L"imsmanifest597728597748.xml"), CGalleryManifestIO::GetInstallRecordName(L"ab"));
    EXPECT_EQ(CAtlString(L"imsmanifest2b6062b606.xml"), CGalleryManifestIO::GetInstallRecordName(L"a"));
}

TEST_F(MergeTest, FirstInstallWritesRecordFilesAndTree)
{
    const std::string package = WritePackage("pkg-animals", kAnimals);
    CGalleryFolder* first = nullptr;
    EXPECT_EQ(E_INVALIDARG, CGalleryManifestIO::MergeFrom(installed, nullptr, nullptr));
    ASSERT_EQ(S_OK, Install(package, &first));
    EXPECT_EQ(ReadFile(package + "/imsmanifest.xml"), ReadFile(RecordOf(L"urn:pkg:animals")));
    EXPECT_EQ("lion.png@urn:pkg:animals", ReadFile(gallery + "/lion.png"));
    EXPECT_EQ("sub/cat.png@urn:pkg:animals", ReadFile(gallery + "/sub/cat.png"));
    ASSERT_EQ(1u, installed.GetOrganizations()->GetCount());
    ASSERT_EQ(1u, Organization()->m_items->GetCount());
    EXPECT_EQ(Organization()->m_items->GetAt(0), first);
    EXPECT_STREQ(L"urn:cat:animals", first->GetIdentifier());
    EXPECT_EQ(2u, first->m_activities->GetCount());
    Dump(installed);  // back references
}

TEST_F(MergeTest, SecondInstallOfTheSameIdentifierReplacesRecordAndRefreshesKnownObjects)
{
    ASSERT_EQ(S_OK, Install(WritePackage("pkg-v1", kAnimals)));
    PackageSpec update = kAnimals;
    update.title = L"Renamed";
    update.activities = {{L"urn:a:lion", L"lion2.png"}, {L"urn:a:tiger", L"tiger.png"}};
    const std::string package = WritePackage("pkg-v2", update);
    EXPECT_EQ(S_GALLERY_RECORD_REPLACED, Install(package));
    EXPECT_EQ(ReadFile(package + "/imsmanifest.xml"), ReadFile(RecordOf(L"urn:pkg:animals")));

    ASSERT_EQ(1u, Organization()->m_items->GetCount());
    const CGalleryFolder* category = Organization()->m_items->GetAt(0);
    EXPECT_EQ("{en=Renamed;}", DumpBlock(category->m_metadata->m_titles));
    ASSERT_EQ(3u, category->m_activities->GetCount());
    EXPECT_EQ("lion2.png", U(category->m_activities->GetAt(0)->m_href));
    EXPECT_STREQ(L"urn:a:cat", category->m_activities->GetAt(1)->GetIdentifier());
    EXPECT_STREQ(L"urn:a:tiger", category->m_activities->GetAt(2)->GetIdentifier());
}

TEST_F(MergeTest, PackagesSharingAParentCategoryGrowOneTree)
{
    PackageSpec first = kAnimals;
    first.parent = L"urn:cat:nature";
    PackageSpec second = kMaps;
    second.parent = L"urn:cat:nature";
    second.title = L"Second title";
    ASSERT_EQ(S_OK, Install(WritePackage("pkg-first", first)));
    ASSERT_EQ(S_OK, Install(WritePackage("pkg-second", second)));
    ASSERT_EQ(1u, installed.GetOrganizations()->GetCount());
    ASSERT_EQ(1u, Organization()->m_items->GetCount());
    const CGalleryFolder* nature = Organization()->m_items->GetAt(0);
    EXPECT_EQ("{en=Second title;}", DumpBlock(nature->m_metadata->m_titles));
    ASSERT_EQ(2u, nature->m_children->GetCount());
    EXPECT_STREQ(L"urn:cat:animals", nature->m_children->GetAt(0)->GetIdentifier());
    EXPECT_STREQ(L"urn:cat:maps", nature->m_children->GetAt(1)->GetIdentifier());
    Dump(installed);
}

TEST_F(MergeTest, MergedThenRemovedPackageLeavesTheGalleryAsBefore)
{
    ASSERT_EQ(S_OK, Install(WritePackage("pkg-a", kAnimals)));
    ASSERT_EQ(S_OK, Install(WritePackage("pkg-b", kMaps)));
    ASSERT_EQ(S_OK, CGalleryManifestIO::RebuildFromInstalled(installed));
    const std::map<std::string, std::string> before = Snapshot(gallery);
    const std::string treeBefore = Dump(installed);

    ASSERT_EQ(S_OK, Install(WritePackage("pkg-c", kSounds)));
    ASSERT_EQ(S_OK, CGalleryManifestIO::Save(installed, installed.GetPath(), false));
    EXPECT_TRUE(Exists(gallery + "/roar.wav"));
    ASSERT_NE(before, Snapshot(gallery));

    ASSERT_EQ(S_OK, Uninstall(L"urn:pkg:sounds"));
    EXPECT_EQ(before, Snapshot(gallery));
    EXPECT_EQ(treeBefore, Dump(installed));

    CGalleryManifest reread;
    ASSERT_EQ(S_OK, CGalleryManifestIO::Open(reread, W(gallery).GetString(), nullptr, false));
    EXPECT_EQ(DocumentOf(installed), DocumentOf(reread));
}

TEST_F(MergeTest, RebuildKeepsTheManifestIdentityAndEveryFileNoRecordListed)
{
    EXPECT_EQ(S_OK, installed.m_metadata->SetIdentifier(L"urn:gallery:main"));
    ASSERT_EQ(S_OK, Install(WritePackage("pkg-a", kAnimals)));
    ASSERT_TRUE(WriteFile(gallery + "/stray.txt", "left over"));
    ASSERT_TRUE(WriteFile(gallery + "/notes", "no dot, not listed"));
    ASSERT_EQ(S_OK, CGalleryManifestIO::RebuildFromInstalled(installed));
    EXPECT_STREQ(L"urn:gallery:main", installed.GetIdentifier());
    EXPECT_STREQ(L"urn:gallery:main", installed.m_metadata->m_originalId);
    EXPECT_EQ("left over", ReadFile(gallery + "/stray.txt"));
    EXPECT_TRUE(Exists(gallery + "/notes"));
    EXPECT_TRUE(Exists(gallery + "/lion.png"));
    EXPECT_TRUE(Exists(gallery + "/imsmanifest.xml"));
    EXPECT_TRUE(Exists(RecordOf(L"urn:pkg:animals")));
}

TEST_F(MergeTest, HostileHrefsNeverTouchAnythingOutsideTheGallery)
{
    const std::string victims = MakeScratchDir("victims");
    const std::string victim = victims + "/victim.txt";
    ASSERT_TRUE(WriteFile(victim, "ORIGINAL"));
    ASSERT_TRUE(WriteFile(victim + ".bak", "x"));
    const std::string name = std::filesystem::path(victims).filename().string();
    const std::string relativeVictim = "../" + name + "/victim.txt";
    const std::vector<std::wstring> hrefs = {W(relativeVictim).GetString(), W(victim).GetString(),
                                             W("sub/../../" + name + "/victim.txt").GetString()};
    for (const std::wstring& href : hrefs) {
        PackageSpec hostile = kMaps;
        hostile.activities = {{L"urn:a:evil", href}};
        const std::string package = WritePackage("pkg-hostile", hostile);
        EXPECT_EQ(E_FAIL, Install(package));
        EXPECT_EQ("ORIGINAL", ReadFile(victim));
    }
    // A record that names the outside file: the rebuild keeps it and deletes nothing there.
    ASSERT_EQ(S_OK, CGalleryManifestIO::RebuildFromInstalled(installed));
    EXPECT_EQ("ORIGINAL", ReadFile(victim));
    EXPECT_TRUE(Exists(victim + ".bak"));
}

TEST_F(MergeTest, LinkedSubFolderCannotCarryACopyOutside)
{
    const std::string outside = MakeScratchDir("outside");
    std::filesystem::create_directory_symlink(outside, gallery + "/sub");
    const std::string package = WritePackage("pkg-link", kAnimals);
    EXPECT_EQ(E_FAIL, Install(package));
    EXPECT_FALSE(Exists(outside + "/cat.png"));

    // Nor can it make folders out there on the way to a deeper name.
    PackageSpec deep = kMaps;
    deep.activities = {{L"urn:a:deep", L"sub/made/here.png"}};
    EXPECT_EQ(E_FAIL, Install(WritePackage("pkg-deep", deep)));
    EXPECT_FALSE(std::filesystem::exists(outside + "/made"));
}

TEST_F(MergeTest, IndexStaysRightWhenTheTreeIsEditedBetweenMerges)
{
    ASSERT_EQ(S_OK, Install(WritePackage("pkg-a", kAnimals)));
    ASSERT_EQ(S_OK, Install(WritePackage("pkg-b", kMaps)));
    // Someone else takes the first root category out of the tree.
    CGalleryFolder* removed = Organization()->m_items->RemoveAt(0);
    CGalleryFolder::Destroy(removed);
    ASSERT_EQ(1u, Organization()->m_items->GetCount());

    ASSERT_EQ(S_GALLERY_RECORD_REPLACED, Install(WritePackage("pkg-a2", kAnimals)));
    ASSERT_EQ(S_GALLERY_RECORD_REPLACED, Install(WritePackage("pkg-b2", kMaps)));
    ASSERT_EQ(2u, Organization()->m_items->GetCount());
    EXPECT_STREQ(L"urn:cat:maps", Organization()->m_items->GetAt(0)->GetIdentifier());
    EXPECT_STREQ(L"urn:cat:animals", Organization()->m_items->GetAt(1)->GetIdentifier());
    EXPECT_EQ(1u, Organization()->m_items->GetAt(0)->m_activities->GetCount());
}

TEST_F(MergeTest, ArchivesAndFoldersArriveWholeAndNewlyDatedWhileFolderSourcesStay)
{
    const std::string zipped = WriteHrefPackage("zipped", {L"z1.png", L"pictures/z2.png"});
    const std::string plain = WriteHrefPackage("plain", {L"f1.png", L"pictures/f2.png"});
    std::string extraction;
    ASSERT_EQ(S_OK, Install(zipped + ".zip", nullptr, &extraction));
    ASSERT_EQ(S_OK, Install(plain));

    const auto now = fs::file_time_type::clock::now();
    for (const std::string name : {"zipped:z1.png", "zipped:pictures/z2.png", "plain:f1.png", "plain:pictures/f2.png"})
    {
        const std::string file = name.substr(name.find(':') + 1);
        EXPECT_EQ(file + "@urn:pkg:" + name.substr(0, name.find(':')), ReadFile(gallery + "/" + file));
        EXPECT_LT(now - fs::last_write_time(gallery + "/" + file), std::chrono::hours(1)) << name;
        EXPECT_FALSE(Exists(gallery + "/." + fs::path(file).filename().string() + ".curatool-new")) << name;
    }
    // A folder package is the user's: it keeps its files. The extraction is gone with its close.
    EXPECT_EQ("f1.png@urn:pkg:plain", ReadFile(plain + "/f1.png"));
    EXPECT_EQ("pictures/f2.png@urn:pkg:plain", ReadFile(plain + "/pictures/f2.png"));
    EXPECT_FALSE(extraction.empty());
    EXPECT_FALSE(Exists(extraction));
}

TEST_F(MergeTest, LinksInTheGalleryAreReplacedOrRefusedNeverWrittenThrough)
{
    const std::string outside = MakeScratchDir("outside");
    ASSERT_TRUE(WriteFile(outside + "/victim.png", "ORIGINAL"));
    // A link at a target name and one at the name a file is put beside its target first, for a
    // package that moves its files and one that copies them.
    for (const std::string kind : {"zip", "folder"}) {
        const std::string name = "linked" + kind;
        const std::string package =
            WriteHrefPackage(name, {W(name + "1.png").GetString(), W(name + "2.png").GetString()});
        const std::string path = kind == "zip" ? package + ".zip" : package;
        fs::create_symlink(outside + "/victim.png", gallery + "/" + name + "1.png");
        fs::create_symlink(outside + "/victim.png", gallery + "/." + name + "2.png.curatool-new");
        // The first leads to a file that no record lists: it is in the way.
        EXPECT_EQ(E_FAIL, Install(path)) << kind;
        // Leading nowhere, it is in nobody's way, and the name is taken over.
        fs::remove(gallery + "/" + name + "1.png");
        fs::create_symlink(outside + "/missing.png", gallery + "/" + name + "1.png");
        EXPECT_EQ(S_OK, Install(path)) << kind;
        EXPECT_FALSE(fs::is_symlink(gallery + "/" + name + "1.png")) << kind;
        EXPECT_EQ(name + "1.png@urn:pkg:" + name, ReadFile(gallery + "/" + name + "1.png")) << kind;
        EXPECT_EQ(name + "2.png@urn:pkg:" + name, ReadFile(gallery + "/" + name + "2.png")) << kind;
        EXPECT_FALSE(Exists(outside + "/missing.png")) << kind;
        EXPECT_EQ("ORIGINAL", ReadFile(outside + "/victim.png")) << kind;
    }

    // A linked folder that stays inside the gallery is a place like any other; one leading out is not.
    fs::create_directories(gallery + "/real");
    fs::create_directory_symlink(gallery + "/real", gallery + "/inner");
    fs::create_directory_symlink(outside, gallery + "/away");
    EXPECT_EQ(S_OK, Install(WriteHrefPackage("inner", {L"inner/a.png"}) + ".zip"));
    EXPECT_EQ("inner/a.png@urn:pkg:inner", ReadFile(gallery + "/real/a.png"));
    EXPECT_EQ(E_FAIL, Install(WriteHrefPackage("away", {L"away/b.png"}) + ".zip"));
    EXPECT_FALSE(Exists(outside + "/b.png"));
}

TEST(MergeIndexTest, FirstChildOfAnIdentifierWinsAndStaleTablesAreRebuilt)
{
    CGalleryManifest manifest;
    CGalleryOrganization* organization = AddOrganization(manifest, L"o", L"Org");
    CGalleryFolder* first = AddCategory(organization, L"dup", L"First");
    AddCategory(organization, L"dup", L"Second");
    CGalleryFolder* other = AddCategory(organization, L"other", L"Other");
    CGalleryMergeIndex index;
    EXPECT_EQ(first, index.Find(*organization->m_items, L"dup"));
    EXPECT_EQ(other, index.Find(*organization->m_items, L"other"));
    EXPECT_EQ(nullptr, index.Find(*organization->m_items, L"none"));
    // The same count after a removal and an addition, with the new child at the old slot's address.
    CGalleryFolder* gone = organization->m_items->RemoveAt(2);
    CGalleryFolder::Destroy(gone);
    CGalleryFolder* replacement = AddCategory(organization, L"fresh", L"Fresh");
    EXPECT_EQ(replacement, index.Find(*organization->m_items, L"fresh"));
    EXPECT_EQ(nullptr, index.Find(*organization->m_items, L"other"));
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
