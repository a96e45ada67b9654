#include "gallery/CGalleryInstalledManifest.h"
#include "gallery/IGalleryManifestOpenObserver.h"
#include "ManifestTestTree.h"
#include "ziparchive/ZipHelpers.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace manifest_test;
using curatool::test::Exists;
using curatool::test::MakeScratchDir;
using curatool::test::ReadFile;
using curatool::test::WriteFile;

namespace {

// A gallery with two organizations, nested categories and activities, and metadata in most fields.
void BuildSample(CGalleryManifest& manifest)
{
    EXPECT_EQ(S_OK, manifest.m_metadata->SetIdentifier(L"urn:gallery:sample"));
    EXPECT_EQ(S_OK, manifest.m_metadata->SetVersion(L"1.2"));
    EXPECT_EQ(S_OK, manifest.m_metadata->m_titles->Add(L"en", L"Sample gallery"));
    EXPECT_EQ(S_OK, manifest.m_stringVersions->Add(L"de", L"1.5"));
    CGalleryOrganization* animals = AddOrganization(manifest, L"urn:org:animals", L"Animals & Co");
    CGalleryFolder* mammals = AddCategory(animals, L"urn:cat:mammals", L"Mammals");
    CGalleryFolder* cats = AddCategory(mammals, L"urn:cat:cats", L"Cats");
    CGalleryActivity* lion = AddActivity(cats, L"urn:act:lion", L"lion.png", L"Lion <big>");
    EXPECT_EQ(S_OK, lion->m_metadata->m_titles->Add(L"de", L"L\u00f6we"));
    EXPECT_EQ(S_OK, lion->m_metadata->m_keywords->Add(L"en", L"mane"));
    EXPECT_EQ(S_OK, lion->m_metadata->m_keywords->Add(L"en", L"savanna"));
    EXPECT_EQ(S_OK, lion->m_metadata->SetSortKey(L"aa01"));
    EXPECT_EQ(S_OK, lion->m_metadata->SetVersion(L"3.1"));
    EXPECT_EQ(S_OK, lion->m_metadata->SetOriginalId(L"urn:act:lion-old"));
    EXPECT_EQ(S_OK, lion->m_metadata->m_maximumVersions->Add(L"firefox", L"99"));
    AddActivity(mammals, L"urn:act:whale", L"sea/whale.png", L"Whale");
    CGalleryOrganization* maps = AddOrganization(manifest, L"urn:org:maps", L"Maps");
    maps->m_readOnly = true;
    AddActivity(AddCategory(maps, L"urn:cat:europe", L"Europe"), L"urn:act:france", L"france.svg", L"France");
}

class RecordingObserver : public IGalleryManifestOpenObserver {
public:
    HRESULT OnManifestProgress(float fraction) override
    {
        fractions.push_back(fraction);
        return fractions.size() >= stopAfter ? E_ABORT : S_OK;
    }
    std::vector<float> fractions;
    std::size_t stopAfter = static_cast<std::size_t>(-1);
};

std::string Xml(const std::string& organizations, const std::string& resources)
{
    return "<?xml version=\"1.0\"?><manifest identifier=\"id1\"><metadata><lom:lom><lom:general><lom:identifier>"
           "<lom:entry>urn:m</lom:entry></lom:identifier></lom:general></lom:lom></metadata>"
           "<organizations>" +
           organizations + "</organizations><resources>" + resources + "</resources></manifest>";
}

const std::string kOneActivity =
    "<organization identifier=\"o1\"><item identifier=\"c1\"><title>Cat</title>"
    "<item identifier=\"a1\" identifierref=\"r1\"><metadata/></item><metadata/></item><metadata/></organization>";

HRESULT OpenText(CGalleryManifest& manifest, const std::string& xml, const std::string& name = "case")
{
    const std::string folder = MakeScratchDir(name);
    EXPECT_TRUE(WriteFile(folder + "/imsmanifest.xml", xml));
    return CGalleryManifestIO::Open(manifest, W(folder + "/imsmanifest.xml").GetString(), nullptr, false);
}

TEST(ManifestRoundTripTest, TreeToXmlToTreeToXmlIsStable)
{
    const std::string folder = MakeScratchDir("roundtrip");
    const std::string path = folder + "/imsmanifest.xml";
    CGalleryManifest original;
    BuildSample(original);
    ASSERT_EQ(S_OK, CGalleryManifestIO::Save(original, W(path).GetString(), false));
    const std::string first = ReadFile(path);
    EXPECT_FALSE(Exists(folder + "/imsmanifest_temp.xml"));

    CGalleryManifest reread;
    ASSERT_EQ(S_OK, CGalleryManifestIO::Open(reread, W(path).GetString(), nullptr, false));
    EXPECT_EQ(U(reread.GetPath()), path);
    const auto lion = [](const CGalleryManifest& m) {
        return m.GetOrganizations()->GetAt(0)->m_items->GetAt(0)->m_children->GetAt(0)->m_activities->GetAt(0);
    };
    EXPECT_EQ("lion.png", U(lion(reread)->m_href));
    EXPECT_EQ(DumpMetadata(*lion(original)->m_metadata), DumpMetadata(*lion(reread)->m_metadata));
    EXPECT_TRUE(reread.GetOrganizations()->GetAt(1)->m_readOnly);

    const std::string copy = folder + "/second.xml";
    ASSERT_EQ(S_OK, CGalleryManifestIO::Save(reread, W(copy).GetString(), false));
    EXPECT_EQ(first, ReadFile(copy));
    CGalleryManifest again;
    ASSERT_EQ(S_OK, CGalleryManifestIO::Open(again, W(copy).GetString(), nullptr, false));
    EXPECT_EQ(Dump(reread), Dump(again));
}

TEST(ManifestRoundTripTest, WrittenIdentifiersComeFromOneCounterAndEmptyPartsAreFixed)
{
    CGalleryManifest manifest;
    BuildSample(manifest);
    const std::string xml = DocumentOf(manifest);
    EXPECT_EQ(0u, xml.find("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><manifest identifier=\"id1\" "
                           "version=\"2006-01\" zoltagallery:filesource=\""));
    EXPECT_NE(std::string::npos, xml.find("<organizations default=\"id2\"><organization identifier=\"id2\" "
                                          "zoltagallery:readonly=\"false\"><title>Animals &amp; Co</title>"
                                          "<item identifier=\"id3\"><title>Mammals</title><item identifier=\"id4\">"));
    // Category id4 (Cats) holds the lion: item id5, resource id6; then the whale of Mammals: id7/id8.
    EXPECT_NE(std::string::npos, xml.find("<item identifier=\"id5\" identifierref=\"id6\">"));
    EXPECT_NE(std::string::npos, xml.find("<item identifier=\"id7\" identifierref=\"id8\">"));
    EXPECT_NE(std::string::npos, xml.find("<organization identifier=\"id9\" zoltagallery:readonly=\"true\">"));
    EXPECT_NE(std::string::npos, xml.find("<resource identifier=\"id6\" type=\"webcontent\" adlcp:scormType=\"asset\" "
                                          "href=\"lion.png\"><file href=\"lion.png\"/></resource>"));
    EXPECT_NE(std::string::npos, xml.find("<zoltagallery:stringversions><lom:string language=\"de\">1.5</lom:string>"));

    // An empty manifest writes the fixed parts only, and opens.
    const std::string folder = MakeScratchDir("empty");
    CGalleryManifest empty;
    ASSERT_EQ(S_OK, CGalleryManifestIO::Save(empty, W(folder + "/imsmanifest.xml").GetString(), false));
    const std::string emptyXml = ReadFile(folder + "/imsmanifest.xml");
    EXPECT_EQ(std::string::npos, emptyXml.find("stringversions"));
    EXPECT_NE(std::string::npos, emptyXml.find("<metadata schema=\"ADL SCORM\" schemaversion=\"CAM 1.3\"><lom:lom>"));
    EXPECT_NE(std::string::npos, emptyXml.find("<organizations/><resources/></manifest>"));
    CGalleryManifest reread;
    ASSERT_EQ(S_OK, CGalleryManifestIO::Open(reread, W(folder).GetString(), nullptr, false));
    EXPECT_EQ(0u, reread.GetOrganizations()->GetCount());
}

TEST(ManifestReadTest, TitlesResourcesAndReadOnlyAsTheReaderTakesThem)
{
    const std::string organizations =
        "<organization identifier=\"o1\" zoltagallery:readonly=\"TRUE\"><title>Org</title>"
        "<item identifier=\"c1\"><title>Cat</title><metadata><lom:lom><lom:general>"
        "<lom:title><lom:string language=\"en\">X</lom:string><lom:string>  Ok</lom:string></lom:title>"
        "</lom:general></lom:lom></metadata>"
        "<item identifier=\"a1\" identifierref=\"shared\"><title>  Plain title  </title><metadata/></item>"
        "<item identifier=\"a2\" identifierref=\"own\"><metadata/></item>"
        "<item identifier=\"a3\" identifierref=\"shared\"><metadata/></item>"
        "</item><metadata/></organization>";
    CGalleryManifest manifest;
    ASSERT_EQ(S_OK, OpenText(manifest, Xml(organizations, "<resource identifier=\"shared\" href=\"s.png\"/>"
                                                          "<resource identifier=\"own\" href=\"o.png\"/>"
                                                          "<resource identifier=\"shared\" href=\"late.png\"/>")));
    EXPECT_STREQ(L"urn:m", manifest.GetIdentifier());
    const CGalleryOrganization* organization = manifest.GetOrganizations()->GetAt(0);
    EXPECT_FALSE(organization->m_readOnly) << "only an exact \"true\"";
    const CGalleryFolder* category = organization->m_items->GetAt(0);
    // A language string shorter than two characters is kept empty; an activity takes its title element.
    EXPECT_EQ("{en=;en=Ok;}", DumpBlock(category->m_metadata->m_titles));
    const CGalleryActivity* activity = category->m_activities->GetAt(0);
    EXPECT_EQ("a1", U(activity->m_metadata->m_identifier));
    EXPECT_EQ("{en=Plain title;}", DumpBlock(activity->m_metadata->m_titles));
    // One resource serves every activity naming it; a later one of the same identifier is ignored.
    EXPECT_EQ("s.png", U(activity->m_href));
    EXPECT_EQ("o.png", U(category->m_activities->GetAt(1)->m_href));
    EXPECT_EQ("s.png", U(category->m_activities->GetAt(2)->m_href));
}

TEST(ManifestReadTest, StructuralFaultsFailTheOpen)
{
    const std::string faults[] = {
        // an identifierref without its resource
        Xml(kOneActivity, "<resource identifier=\"other\" href=\"x\"/>"),
        // an item without identifier and without lom:entry
        Xml("<organization identifier=\"o1\"><item identifier=\"\"><title>Cat</title><metadata/></item>"
            "<metadata/></organization>",
            ""),
        // an activity outside any category
        Xml("<organization identifier=\"o1\"><item identifier=\"a\" identifierref=\"r\"><metadata/></item>"
            "<metadata/></organization>",
            ""),
        Xml("<organization identifier=\"o\"><organization identifier=\"p\"></organization></organization>", ""),
        "<manifest><organizations>",
    };
    for (const std::string& xml : faults) {
        CGalleryManifest manifest;
        EXPECT_EQ(E_FAIL, OpenText(manifest, xml)) << xml;
    }
    CGalleryManifest whole;
    EXPECT_EQ(S_OK, OpenText(whole, Xml(kOneActivity, "<resource identifier=\"r1\" href=\"x\"/>")));
}

TEST(ManifestReadTest, ObserverSeesProgressAndCanStopTheParse)
{
    const std::string folder = MakeScratchDir("observer");
    CGalleryManifest sample;
    BuildSample(sample);
    ASSERT_EQ(S_OK, CGalleryManifestIO::Save(sample, W(folder + "/imsmanifest.xml").GetString(), false));

    RecordingObserver observer;
    CGalleryManifest manifest;
    ASSERT_EQ(S_OK, CGalleryManifestIO::Open(manifest, W(folder).GetString(), &observer, false));
    ASSERT_FALSE(observer.fractions.empty());
    EXPECT_TRUE(std::is_sorted(observer.fractions.begin(), observer.fractions.end()));
    EXPECT_GT(observer.fractions.back(), 0.99f);

    RecordingObserver cancelling;
    cancelling.stopAfter = 3;
    CGalleryManifest stopped;
    EXPECT_EQ(E_ABORT, CGalleryManifestIO::Open(stopped, W(folder).GetString(), &cancelling, false));
    EXPECT_EQ(3u, cancelling.fractions.size());
    CGalleryManifestIO::Close(stopped);
}

TEST(ManifestOpenTest, MissingFilesAndBadArguments)
{
    const std::string folder = MakeScratchDir("missing");
    CGalleryManifest manifest;
    EXPECT_EQ(E_INVALIDARG, CGalleryManifestIO::Open(manifest, nullptr, nullptr, false));
    EXPECT_EQ(E_INVALIDARG, CGalleryManifestIO::Save(manifest, nullptr, false));
    EXPECT_EQ(S_FALSE, CGalleryManifestIO::Open(manifest, W(folder).GetString(), nullptr, false));
    EXPECT_EQ(folder + "/imsmanifest.xml", U(manifest.GetPath()));
    EXPECT_EQ(S_FALSE, CGalleryManifestIO::Open(manifest, W(folder + "/none.xml").GetString(), nullptr, false));
    EXPECT_EQ(folder + "/none.xml", U(manifest.GetPath()));

    CGalleryManifest archive;
    // An archive that can't be extracted is no package.
    EXPECT_EQ(E_FAIL, CGalleryManifestIO::Open(archive, W(folder + "/absent.zip").GetString(), nullptr, false));
    EXPECT_EQ(0u, archive.GetOrganizations()->GetCount());
    EXPECT_TRUE(archive.m_extracted);
    const std::string extraction = U(CGalleryManifestIO::GetFolder(archive).GetPath().GetString());
    EXPECT_TRUE(std::filesystem::is_directory(extraction));
    CGalleryManifestIO::Close(archive);
    EXPECT_FALSE(std::filesystem::exists(extraction));
}

TEST(ManifestOpenTest, ReadOnlyFileMakesEveryOrganizationReadOnly)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "the superuser may write any file";
    const std::string folder = MakeScratchDir("readonly");
    CGalleryManifest sample;
    BuildSample(sample);
    const std::string path = folder + "/imsmanifest.xml";
    ASSERT_EQ(S_OK, CGalleryManifestIO::Save(sample, W(path).GetString(), false));
    ASSERT_EQ(0, chmod(path.c_str(), 0444));
    CGalleryManifest manifest;
    ASSERT_EQ(S_OK, CGalleryManifestIO::Open(manifest, W(path).GetString(), nullptr, false));
    for (std::uint32_t i = 0; i < manifest.GetOrganizations()->GetCount(); ++i)
        EXPECT_TRUE(manifest.GetOrganizations()->GetAt(i)->m_readOnly);
}

// The sample tree saved into a new folder beside its content files, and opened from there.
std::string OpenSampleFolder(const std::string& name, CGalleryManifest& opened)
{
    const std::string source = MakeScratchDir(name);
    EXPECT_TRUE(WriteFile(source + "/lion.png", "LION"));
    EXPECT_TRUE(WriteFile(source + "/sea/whale.png", "WHALE"));
    EXPECT_TRUE(WriteFile(source + "/france.svg", "FRANCE"));
    CGalleryManifest sample;
    BuildSample(sample);
    EXPECT_EQ(S_OK, CGalleryManifestIO::Save(sample, W(source + "/imsmanifest.xml").GetString(), false));
    EXPECT_EQ(S_OK, CGalleryManifestIO::Open(opened, W(source).GetString(), nullptr, false));
    return source;
}

TEST(ManifestContainerTest, SavedToAnArchiveOrANewFolderTheContentFilesGoAlong)
{
    CGalleryManifest saved;
    const std::string source = OpenSampleFolder("archive-source", saved);
    const std::string target = MakeScratchDir("archive-target") + "/pack.gallery";
    ASSERT_EQ(S_OK, CGalleryManifestIO::Save(saved, W(target).GetString(), false));

    CGalleryManifest opened;
    ASSERT_EQ(S_OK, CGalleryManifestIO::Open(opened, W(target).GetString(), nullptr, false));
    EXPECT_TRUE(opened.m_extracted);
    EXPECT_EQ(Dump(saved), Dump(opened));
    const std::string extraction = U(CGalleryManifestIO::GetFolder(opened).GetPath().GetString());
    EXPECT_EQ("WHALE", ReadFile(extraction + "/sea/whale.png"));
    CGalleryManifestIO::Close(opened);
    EXPECT_FALSE(std::filesystem::exists(extraction));

    const std::string copy = MakeScratchDir("folder-target") + "/copy";
    ASSERT_EQ(S_OK, CGalleryManifestIO::Save(saved, W(copy).GetString(), false));
    EXPECT_EQ("LION", ReadFile(copy + "/lion.png"));
    EXPECT_EQ("WHALE", ReadFile(copy + "/sea/whale.png"));
    EXPECT_TRUE(Exists(copy + "/imsmanifest.xml"));
    EXPECT_EQ(source + "/imsmanifest.xml", U(saved.GetPath()));
    // Saving onto its own folder leaves the files as they are.
    ASSERT_EQ(S_OK, CGalleryManifestIO::Save(saved, W(source).GetString(), false));
    EXPECT_EQ("LION", ReadFile(source + "/lion.png"));
}

TEST(ManifestContainerTest, HostileHrefNeverLeavesTheTargetFolder)
{
    const std::string root = MakeScratchDir("hostile-save");
    ASSERT_TRUE(WriteFile(root + "/victim.txt", "ORIGINAL"));
    ASSERT_TRUE(WriteFile(root + "/source/victim.txt", "EVIL"));
    for (const std::wstring& href : {std::wstring(L"../victim.txt"), std::wstring(W(root + "/victim.txt").GetString())})
    {
        CGalleryManifest manifest;
        EXPECT_EQ(S_OK, manifest.SetPath(W(root + "/source/imsmanifest.xml").GetString()));
        CGalleryOrganization* organization = AddOrganization(manifest, L"o", L"Org");
        AddActivity(AddCategory(organization, L"c", L"Cat"), L"a", href.c_str(), L"Evil");
        EXPECT_EQ(E_FAIL, CGalleryManifestIO::Save(manifest, W(root + "/target/inner").GetString(), false));
        EXPECT_EQ("ORIGINAL", ReadFile(root + "/victim.txt"));
        EXPECT_FALSE(Exists(root + "/target/victim.txt"));
    }
}

TEST(InstalledManifestTest, HeadReaderStopsOnceIdentifierAndVersionAreKnownAndNeedsBoth)
{
    CGalleryManifest sample;
    BuildSample(sample);
    std::string xml = DocumentOf(sample);
    // Damage far behind the head: the reader never gets there.
    xml.resize(xml.size() - 40);
    xml += "<broken";
    const std::string folder = MakeScratchDir("head");
    ASSERT_TRUE(WriteFile(folder + "/imsmanifest.xml", xml));
    CGalleryInstalledManifest head;
    ASSERT_EQ(S_OK, head.Load(W(folder + "/imsmanifest.xml")));
    EXPECT_EQ(CAtlString(L"urn:gallery:sample"), head.GetId());
    EXPECT_EQ(CAtlString(L"1.2"), head.GetVersion());
    ASSERT_EQ(1u, head.GetStringVersions().size());
    EXPECT_EQ(CAtlString(L"1.5"), head.GetStringVersions().at(CAtlString(L"de")));
    EXPECT_EQ(W(folder + "/imsmanifest.xml"), head.GetFilePath());

    // A head without version fails, as does a missing file.
    ASSERT_TRUE(WriteFile(folder + "/a.xml", "<manifest><metadata><lom:lom><lom:general><lom:identifier>"
                                             "<lom:entry>x</lom:entry></lom:identifier></lom:general>"
                                             "</lom:lom></metadata></manifest>"));
    CGalleryInstalledManifest failing;
    EXPECT_EQ(E_FAIL, failing.Load(W(folder + "/a.xml")));
    EXPECT_EQ(E_FAIL, failing.Load(W(folder + "/missing.xml")));
}

}  // namespace
