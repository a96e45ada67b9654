#include "installation/CGalleryInstallation.h"
#include "support/GallerySourceBuilder.h"
#include "ProgressRecorder.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

using namespace curatool::test;

namespace {

// A source folder holding only a categories document, and an empty gallery.
struct CategoriesFixture : ::testing::Test {
    std::string source = MakeScratchDir("source");
    std::string gallery = MakeScratchDir("gallery");
    std::unique_ptr<CGalleryInstallation> installation = CGalleryInstallation::Create();
    ProgressRecorder recorder;

    HRESULT OpenWith(const std::string& document)
    {
        EXPECT_TRUE(WriteFile(source + "/gallery_categories.xml", document));
        installation->SetObserver(&recorder);
        return installation->Open(CZoltaDirectoryPath(gallery.c_str()), CAtlString(source.c_str()), true);
    }
};

CategorySpec TwoFileCategory()
{
    return {"cat.animals",
            "1.1",
            {{"en", "Animals"}, {"fr", "Animaux"}},
            {{"animals1.zip", "pkg.animals1", "1.1", "en:1.0;fr:1.0"}, {"animals2.zip", "pkg.animals2", "1.0", ""}},
            {{"fr", "animals_fr.zip"}},
            "size=\"2048\" count=\"12\" disksize=\"4096\""};
}

}  // namespace

TEST_F(CategoriesFixture, ReadsCategoriesFilesTitlesAndNumbersInDocumentOrder)
{
    CategorySpec empty{"cat.empty", "1.0", {{"en", "Empty"}}, {}, {}, "size=\"abc\""};
    ASSERT_EQ(S_OK, OpenWith(CategoriesXml({TwoFileCategory(), empty})));
    ASSERT_EQ(2, installation->CategoryCount());
    EXPECT_EQ(nullptr, installation->Category(2));

    const CGalleryCategory* animals = installation->Category(0);
    EXPECT_EQ("1.1", U(animals->GetVersion()));
    EXPECT_EQ(12, animals->GetCount());
    EXPECT_EQ(4096, animals->GetDiskSize());
    EXPECT_EQ("Animals", U(animals->GetTitle(L"en_GB")));
    EXPECT_EQ(S_FALSE, animals->GetResult());
    ASSERT_EQ(2u, animals->GetFiles().size());
    const CGalleryCategoryFile& first = animals->GetFiles()[0];
    EXPECT_EQ("pkg.animals1", U(first.GetId()));
    EXPECT_TRUE(first.NeedsUpdate());
    EXPECT_EQ("1.0", U(first.GetStrings().at(CAtlString(L"fr"))));
    EXPECT_EQ("animals_fr.zip", U(animals->GetStrings().at(CAtlString(L"fr"))));

    EXPECT_EQ(0, installation->Category(1)->GetSize());
    EXPECT_FALSE(installation->Category(1)->IsUpdateAvailable());

    // The document is kept beside the records, and reading is reported from 0 to 100.
    EXPECT_TRUE(Exists(gallery + "/Uninstall/gallery_categories.xml"));
    const auto reading = recorder.OfStage(eGalleryInstallationProgressReading);
    ASSERT_EQ(2u, reading.size());
    EXPECT_EQ(100, reading[1].percent);
    EXPECT_EQ("gallery_categories.xml", reading[0].item);
}

TEST_F(CategoriesFixture, ComparesInstalledVersionsAsPlainText)
{
    // Installed: animals1 at 1.1 with only English strings; animals2 at "9.0", which sorts after
    // the offered "10.0" as text, so it is not out of date.
    WriteInstallRecord(gallery, {"pkg.animals1", "1.1", "a.png", "x", "A", "", {{"en", "1.0"}}});
    WriteInstallRecord(gallery, {"pkg.animals2", "9.0", "b.png"});
    CategorySpec category = TwoFileCategory();
    category.files[1].version = "10.0";
    ASSERT_EQ(S_OK, OpenWith(CategoriesXml({category})));

    const CGalleryCategory* animals = installation->Category(0);
    EXPECT_TRUE(animals->IsInstalled());
    EXPECT_EQ("9.0", U(animals->GetInstalledVersion()));
    const CGalleryCategoryFile& first = animals->GetFiles()[0];
    EXPECT_TRUE(first.NeedsUpdate()) << "French strings are not installed";
    EXPECT_EQ(InstallRecordPath(gallery, "pkg.animals1"), U(first.GetInstalledPath().GetPath()));
    EXPECT_FALSE(animals->GetFiles()[1].NeedsUpdate());
}

TEST_F(CategoriesFixture, CurrentStringsAndOlderOfferLeaveAFileAlone)
{
    WriteInstallRecord(gallery, {"pkg.animals1", "1.2", "a.png", "x", "A", "", {{"en", "1.0"}, {"fr", "1.1"}}});
    WriteInstallRecord(gallery, {"pkg.animals2", "1.0", "b.png"});
    ASSERT_EQ(S_OK, OpenWith(CategoriesXml({TwoFileCategory()})));
    const CGalleryCategory* animals = installation->Category(0);
    EXPECT_FALSE(animals->GetFiles()[0].NeedsUpdate());
    EXPECT_FALSE(animals->IsUpdateAvailable());
    EXPECT_EQ("1.2", U(animals->GetInstalledVersion()));

    // A file that never arrived offers the half-installed category again.
    std::filesystem::remove(InstallRecordPath(gallery, "pkg.animals2"));
    installation = CGalleryInstallation::Create();
    ASSERT_EQ(S_OK, OpenWith(CategoriesXml({TwoFileCategory()})));
    EXPECT_TRUE(installation->Category(0)->IsInstalled());
    EXPECT_TRUE(installation->Category(0)->IsUpdateAvailable());
}

TEST(CategoryFileStrings, PairsLanguagesAndVersionsWithEitherSeparator)
{
    auto parsed = CGalleryCategoryFile::ParseStrings(L"en:1.2;fr:1.1:de;2.0");
    EXPECT_EQ(3u, parsed.size());
    EXPECT_EQ("1.1", U(parsed[CAtlString(L"fr")]));
    EXPECT_EQ("2.0", U(parsed[CAtlString(L"de")]));
    EXPECT_TRUE(CGalleryCategoryFile::ParseStrings(L"en").empty());
    parsed = CGalleryCategoryFile::ParseStrings(L"en:1.0;en:2.0;fr");
    ASSERT_EQ(1u, parsed.size());
    EXPECT_EQ("2.0", U(parsed[CAtlString(L"en")]));
}

TEST_F(CategoriesFixture, MissingAndEmptyAttributesStopTheReading)
{
    CategorySpec good{"cat.a", "1.0", {{"en", "A"}}, {{"a.zip", "pkg.a", "1.0", ""}}, {}, ""};
    CategorySpec noVersion = good;
    noVersion.id = "cat.b";
    noVersion.version = "";
    EXPECT_EQ(E_FAIL, OpenWith(CategoriesXml({good, noVersion})));
    EXPECT_EQ(2, installation->CategoryCount()) << "categories read so far stay";

    installation = CGalleryInstallation::Create();
    std::string document = CategoriesXml({good});
    document.replace(document.find(" version=\"1.0\">"), 15, ">");
    EXPECT_EQ(E_INVALIDARG, OpenWith(document)) << "file without version";

    installation = CGalleryInstallation::Create();
    EXPECT_EQ(E_FAIL, OpenWith("<gallery><categories><c id=\"x\" version=\"1\"><files/></c></categories></gallery>"))
        << "no title";
    // A document that can't stand for the source never replaces the stored copy; without one
    // the open fails with the document's own failure.
    const std::string stored = ReadFile(gallery + "/Uninstall/gallery_categories.xml");
    for (const auto& [broken, expected] :
         {std::pair{"<gallery><other/></gallery>", E_FAIL}, std::pair{"<gallery><categories>", E_INVALIDARG}})
    {
        installation = CGalleryInstallation::Create();
        EXPECT_EQ(E_FAIL, OpenWith(broken)) << broken << ": the stored copy is read, and it has no title";
        EXPECT_EQ(stored, ReadFile(gallery + "/Uninstall/gallery_categories.xml"));
        std::filesystem::remove(gallery + "/Uninstall/gallery_categories.xml");
        installation = CGalleryInstallation::Create();
        EXPECT_EQ(expected, OpenWith(broken)) << broken;
        ASSERT_TRUE(WriteFile(gallery + "/Uninstall/gallery_categories.xml", stored));
    }
}

TEST_F(CategoriesFixture, OnlyMandatoryRemovalsAreCollected)
{
    CategorySpec good{"cat.a", "1.0", {{"en", "A"}}, {}, {}, ""};
    std::string document = CategoriesXml({good}, {"old.one", "old.two"});
    document.insert(document.find("</gallery>"), "<removals><r id=\"not.this\"/></removals>");
    ASSERT_EQ(S_OK, OpenWith(document));
    ASSERT_EQ(2u, installation->GetRemovals().size());
    EXPECT_EQ("old.one", U(installation->GetRemovals()[0]));
    EXPECT_EQ("old.two", U(installation->GetRemovals()[1]));
}

TEST_F(CategoriesFixture, ASecondOpenFailsAndAMissingSourceFallsBackToTheKeptCopy)
{
    CategorySpec good{"cat.a", "1.0", {{"en", "A"}}, {}, {}, ""};
    ASSERT_EQ(S_OK, OpenWith(CategoriesXml({good})));
    EXPECT_EQ(E_FAIL, installation->Open(CZoltaDirectoryPath(gallery.c_str()), CAtlString(source.c_str()), true));

    // The source loses its document; the copy in Uninstall serves.
    std::remove((source + "/gallery_categories.xml").c_str());
    installation = CGalleryInstallation::Create();
    ASSERT_EQ(S_OK, installation->Open(CZoltaDirectoryPath(gallery.c_str()), CAtlString(source.c_str()), true));
    EXPECT_EQ(1, installation->CategoryCount());

    // Without any copy the open fails.
    const std::string otherGallery = MakeScratchDir("other");
    installation = CGalleryInstallation::Create();
    EXPECT_TRUE(
        FAILED(installation->Open(CZoltaDirectoryPath(otherGallery.c_str()), CAtlString(source.c_str()), true)));
}

TEST(FormatByteSize, ShowsAFractionOnlyBelowTenUnits)
{
    EXPECT_EQ("1023 bytes", U(FormatByteSize(1023)));
    EXPECT_EQ("1.0 KB", U(FormatByteSize(1024)));
    EXPECT_EQ("10.0 KB", U(FormatByteSize(10239))) << "rounded in printing, still below the threshold";
    EXPECT_EQ("10 KB", U(FormatByteSize(10240)));
    EXPECT_EQ("1.5 MB", U(FormatByteSize(1572864)));
    EXPECT_EQ("1023 MB", U(FormatByteSize(1073741823)));
    EXPECT_EQ("4.0 GB", U(FormatByteSize(4294967295u)));
}

TEST(SourceKinds, UrlTestAndEncoding)
{
    EXPECT_TRUE(CGalleryInstallation::IsUrl(nullptr));
    EXPECT_TRUE(CGalleryInstallation::IsUrl(L"file:///x"));
    EXPECT_TRUE(CGalleryInstallation::IsUrl(L"://x"));
    EXPECT_FALSE(CGalleryInstallation::IsUrl(L"C:/x"));
    EXPECT_FALSE(CGalleryInstallation::IsUrl(L"a b://x"));
    EXPECT_EQ("sub/my%20file%C3%A9(1).zip", U(CGalleryInstallation::EncodeUrlName(L"sub\\my file\u00e9(1).zip")));
}

TEST_F(CategoriesFixture, NeedsAnInstallFolderAndMakesAMissingOne)
{
    ASSERT_TRUE(
        WriteFile(source + "/gallery_categories.xml", CategoriesXml({{"c", "1.0", {{"en", "C"}}, {}, {}, ""}})));
    EXPECT_EQ(E_INVALIDARG, installation->Open(CZoltaDirectoryPath(), CAtlString(source.c_str()), true));
    installation = CGalleryInstallation::Create();
    const std::string deep = gallery + "/new/deeper";
    ASSERT_EQ(S_OK, installation->Open(CZoltaDirectoryPath(deep.c_str()), CAtlString(source.c_str()), true));
    EXPECT_TRUE(Exists(deep + "/Uninstall/gallery_categories.xml"));
}
