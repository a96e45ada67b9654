#include "libZoltaAtl/CAtlStringA.h"
#include "gallery/CGalleryMetadata.h"
#include "foundation/CZoltaDirectoryPath.h"
#include "gallery/GalleryLanguage.h"
#include "foundation/IZOLTAXMLWriter.h"
#include "gallery/lom/LomMetadata.h"
#include "ManifestTestTree.h"
#include "support/TestEnvironment.h"
#include "ziparchive/ZipHelpers.h"

#include <tinyxml2.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using manifest_test::DumpBlock;
using manifest_test::DumpMetadata;

const std::string kBlank = "\xEF\xBF\xBE";

struct MetadataDeleter {
    void operator()(CGalleryMetadata* metadata) const { CGalleryMetadata::Destroy(metadata); }
};
using MetadataPtr = std::unique_ptr<CGalleryMetadata, MetadataDeleter>;

MetadataPtr NewMetadata()
{
    CGalleryMetadata* metadata = nullptr;
    EXPECT_EQ(S_OK, CGalleryMetadata::Create(&metadata));
    return MetadataPtr(metadata);
}

std::string WriteToString(const CGalleryMetadata& metadata, bool embedded)
{
    IZOLTAXMLWriter* writer = nullptr;
    EXPECT_EQ(S_OK, CreateStringWriter(&writer));
    EXPECT_EQ(S_OK, WriteLom(metadata, writer, embedded));
    CAtlStringA text;
    EXPECT_EQ(S_OK, writer->GetResult(&text));
    writer->Release();
    return std::string(text.GetString(), static_cast<std::size_t>(text.GetLength()));
}

const tinyxml2::XMLElement* Walk(const tinyxml2::XMLElement* from, std::vector<const char*> names)
{
    for (const char* name : names) {
        if (!from)
            return nullptr;
        from = from->FirstChildElement(name);
    }
    return from;
}

std::string TextAt(const tinyxml2::XMLElement* from, std::vector<const char*> names)
{
    const tinyxml2::XMLElement* element = Walk(from, names);
    return element && element->GetText() ? element->GetText() : std::string("<missing>");
}

int CountChildren(const tinyxml2::XMLElement* parent, const char* name)
{
    int count = 0;
    for (auto* child = parent ? parent->FirstChildElement(name) : nullptr; child;
         child = child->NextSiblingElement(name))
        ++count;
    return count;
}

int CountAnywhere(const tinyxml2::XMLElement* element, const char* name)
{
    int count = std::string(element->Name()) == name ? 1 : 0;
    for (auto* child = element->FirstChildElement(); child; child = child->NextSiblingElement())
        count += CountAnywhere(child, name);
    return count;
}

void FillRecord(CGalleryMetadata& metadata)
{
    EXPECT_EQ(S_OK, metadata.SetIdentifier(L"urn:item:1"));
    EXPECT_EQ(S_OK, metadata.m_titles->Add(L"en", L"Lion & \"Tiger\""));
    EXPECT_EQ(S_OK, metadata.m_titles->Add(L"de", L"L\u00f6we"));
    EXPECT_EQ(S_OK, metadata.m_keywords->Add(L"en", L"cat"));
    EXPECT_EQ(S_OK, metadata.m_keywords->Add(L"en", L"big <cat>"));
    EXPECT_EQ(S_OK, metadata.m_keywords->Add(L"fr", L"f\u00e9lin"));
    EXPECT_EQ(S_OK, metadata.SetSortKey(L"0001"));
    EXPECT_EQ(S_OK, metadata.SetVersion(L"2.5"));
    EXPECT_EQ(S_OK, metadata.SetFormat(L"application/x-zoltaworks-galleryitem;x-original-type=png"));
    EXPECT_EQ(S_OK, metadata.SetOriginalId(L"urn:item:0"));
    EXPECT_EQ(S_OK, metadata.SetShowInLanguages(L"en;de"));
    EXPECT_EQ(S_OK, metadata.SetHideInLanguages(L"fr-CA"));
    EXPECT_EQ(S_OK, metadata.m_minimumVersions->Add(L"firefox", L"3.0"));
    EXPECT_EQ(S_OK, metadata.m_maximumVersions->Add(L"firefox", L"99"));
    EXPECT_EQ(S_OK, metadata.m_maximumVersions->Add(L"opera", L"12"));
}

TEST(LomMetadataWriteTest, EmptyRecordWritesTheWholeTemplateWithBlanks)
{
    const MetadataPtr metadata = NewMetadata();
    const std::string xml = WriteToString(*metadata, false);
    tinyxml2::XMLDocument document;
    ASSERT_EQ(tinyxml2::XML_SUCCESS, document.Parse(xml.c_str(), xml.size())) << xml;
    const tinyxml2::XMLElement* lom = document.RootElement();
    ASSERT_STREQ("lom:lom", lom->Name());
    EXPECT_NE(nullptr, lom->Attribute("xmlns:lom"));
    EXPECT_NE(nullptr, lom->Attribute("xmlns:zoltagallery"));

    EXPECT_EQ("URI", TextAt(lom, {"lom:metaMetadata", "lom:identifier", "lom:catalog"}));
    EXPECT_NE(std::string::npos,
              TextAt(lom, {"lom:metaMetadata", "lom:identifier", "lom:entry"}).find("/metadata/MDO_01"));
    EXPECT_EQ(2, CountChildren(Walk(lom, {"lom:metaMetadata"}), "lom:metadataSchema"));
    EXPECT_EQ("URI", TextAt(lom, {"lom:general", "lom:identifier", "lom:category"}));
    EXPECT_EQ(kBlank, TextAt(lom, {"lom:general", "lom:identifier", "lom:entry"}));
    EXPECT_EQ(kBlank, TextAt(lom, {"lom:general", "lom:title", "lom:string"}));
    EXPECT_STREQ("en", Walk(lom, {"lom:general", "lom:title", "lom:string"})->Attribute("language"));
    EXPECT_EQ(kBlank, TextAt(lom, {"lom:general", "lom:description", "lom:string"}));
    EXPECT_EQ(1, CountChildren(Walk(lom, {"lom:general"}), "lom:keyword"));
    EXPECT_EQ(kBlank, TextAt(lom, {"lom:general", "lom:keyword", "lom:string"}));
    EXPECT_EQ(nullptr, Walk(lom, {"lom:general", "zoltagallery:sortoverride"}));
    EXPECT_EQ(nullptr, Walk(lom, {"lom:general", "zoltagallery:originalid"}));
    EXPECT_EQ(kBlank, TextAt(lom, {"lom:technical", "lom:format"}));
    EXPECT_EQ(0, CountAnywhere(lom, "lom:requirement"));
    EXPECT_EQ("no", TextAt(lom, {"lom:rights", "lom:cost", "lom:value"}));
    EXPECT_EQ("LOMv1.0", TextAt(lom, {"lom:rights", "lom:cost", "lom:source"}));
    EXPECT_EQ("yes", TextAt(lom, {"lom:rights", "lom:copyrightAndOtherRestrictions", "lom:value"}));
    EXPECT_EQ(kBlank, TextAt(lom, {"lom:rights", "lom:description", "lom:string"}));
    EXPECT_EQ(0, CountAnywhere(lom, "zoltagallery:creationdate"));
    EXPECT_EQ(kBlank, TextAt(lom, {"lom:lifeCycle", "lom:version", "lom:string"}));
    EXPECT_EQ("final", TextAt(lom, {"lom:lifeCycle", "lom:status", "lom:value"}));
}

TEST(LomMetadataWriteTest, EmbeddedTreeBrowserRequirementsCreationDateAndRawVersion)
{
    const MetadataPtr metadata = NewMetadata();
    EXPECT_EQ(S_OK, metadata->m_maximumVersions->Add(L"opera", L"12"));
    EXPECT_EQ(S_OK, metadata->m_minimumVersions->Add(L"firefox", L"3"));
    EXPECT_EQ(S_OK, metadata->m_maximumVersions->Add(L"firefox", L"9"));
    metadata->m_creationTime = static_cast<std::uint32_t>(ParseDate(CAtlString(L"2006-11-27T08:09:10")));
    std::string xml = WriteToString(*metadata, true);
    EXPECT_EQ(0u, xml.find("<lom:lom><lom:metaMetadata>")) << "an embedded tree declares no namespaces";
    EXPECT_NE(std::string::npos,
              xml.find("<zoltagallery:creationdate>2006-11-27T08:09:10</zoltagallery:creationdate>"));

    // Requirements follow the union of both maps.
    tinyxml2::XMLDocument document;
    ASSERT_EQ(tinyxml2::XML_SUCCESS, document.Parse(xml.c_str(), xml.size()));
    const tinyxml2::XMLElement* technical = Walk(document.RootElement(), {"lom:technical"});
    ASSERT_EQ(2, CountChildren(technical, "lom:requirement"));
    const tinyxml2::XMLElement* first = technical->FirstChildElement("lom:requirement");
    const tinyxml2::XMLElement* second = first->NextSiblingElement("lom:requirement");
    EXPECT_EQ("firefox", TextAt(first, {"lom:orComposite", "lom:name", "lom:value"}));
    EXPECT_EQ("browser", TextAt(first, {"lom:orComposite", "lom:type", "lom:value"}));
    EXPECT_EQ("3", TextAt(first, {"lom:orComposite", "lom:minimumVersion"}));
    EXPECT_EQ("9", TextAt(first, {"lom:orComposite", "lom:maximumVersion"}));
    // A browser that only has a maximum still gets its requirement, without a minimum.
    EXPECT_EQ("opera", TextAt(second, {"lom:orComposite", "lom:name", "lom:value"}));
    EXPECT_EQ(nullptr, Walk(second, {"lom:orComposite", "lom:minimumVersion"}));
    EXPECT_EQ("12", TextAt(second, {"lom:orComposite", "lom:maximumVersion"}));

    // The version goes out without escaping.
    EXPECT_EQ(S_OK, metadata->SetVersion(L"1<2"));
    xml = WriteToString(*metadata, true);
    EXPECT_NE(std::string::npos, xml.find("<lom:string language=\"en\">1<2</lom:string></lom:version>")) << xml;
}

TEST(LomMetadataReadTest, MissingElementsKeepFieldsAndCreationDateTimeIsRead)
{
    const MetadataPtr metadata = NewMetadata();
    FillRecord(*metadata);
    const char xml[] =
        "<lom:lom><lom:lifeCycle><zoltagallery:creationdatetime>2007-01-02</zoltagallery:creationdatetime>"
        "</lom:lifeCycle><lom:technical><lom:requirement><lom:orComposite>"
        "<lom:type><lom:value>BROWSER</lom:value></lom:type><lom:name><lom:value>safari</lom:value></lom:name>"
        "<lom:minimumVersion>4</lom:minimumVersion></lom:orComposite><lom:orComposite>"
        "<lom:type><lom:value>os</lom:value></lom:type><lom:name><lom:value>linux</lom:value></lom:name>"
        "<lom:minimumVersion>2</lom:minimumVersion></lom:orComposite></lom:requirement></lom:technical></lom:lom>";
    tinyxml2::XMLDocument document;
    ASSERT_EQ(tinyxml2::XML_SUCCESS, document.Parse(xml));
    ASSERT_EQ(S_OK, LoadMetadataXml(*metadata, document.RootElement()));
    EXPECT_STREQ(L"urn:item:1", metadata->m_identifier);
    EXPECT_EQ(2, metadata->m_titles->GetCount());
    EXPECT_EQ(3, metadata->m_keywords->GetCount());
    EXPECT_STREQ(L"2.5", metadata->m_version);
    EXPECT_EQ(static_cast<std::uint32_t>(ParseDate(CAtlString(L"2007-01-02"))), metadata->m_creationTime);
    // Only browser requirements count, the type compared without regard to case.
    ASSERT_EQ(1, metadata->m_minimumVersions->GetCount());
    EXPECT_STREQ(L"safari", metadata->m_minimumVersions->GetKey(0));
    EXPECT_EQ(0, metadata->m_maximumVersions->GetCount());
    EXPECT_EQ(E_POINTER, LoadMetadataXml(*metadata, nullptr));
}

TEST(LomMetadataFileTest, ExistingFileIsUpdatedInPlaceKeepingUnknownElementsOrFailsUntouched)
{
    const std::string folder = curatool::test::MakeScratchDir("lom-update");
    const std::string path = folder + "/item.xml";
    ASSERT_TRUE(curatool::test::WriteFile(
        path, "<?xml version=\"1.0\"?><lom:lom><lom:general><lom:identifier><lom:entry>old</lom:entry></lom:identifier>"
              "<lom:title><lom:string language=\"en\">Old</lom:string><lom:string "
              "language=\"fr\">Vieux</lom:string></lom:title>"
              "<lom:keyword><lom:string language=\"en\">k1</lom:string></lom:keyword>"
              "<lom:keyword><lom:string language=\"en\">k2</lom:string></lom:keyword>"
              "<zoltagallery:sortoverride><lom:string language=\"en\">zz</lom:string></zoltagallery:sortoverride>"
              "<custom:note>keep me</custom:note></lom:general>"
              "<lom:technical><lom:format>image/png</lom:format></lom:technical></lom:lom>"));
    const MetadataPtr metadata = NewMetadata();
    EXPECT_EQ(S_OK, metadata->SetIdentifier(L"new"));
    EXPECT_EQ(S_OK, metadata->m_titles->Add(L"de", L"Neu"));
    EXPECT_EQ(S_OK, metadata->m_keywords->Add(L"de", L"s1"));
    EXPECT_EQ(S_OK, metadata->SetVersion(L"3"));
    EXPECT_EQ(S_OK, metadata->SetHideInLanguages(L"fr"));
    ASSERT_EQ(S_OK, SaveMetadataXml(*metadata, CAtlString(QString::fromStdString(path))));

    tinyxml2::XMLDocument document;
    ASSERT_EQ(tinyxml2::XML_SUCCESS, document.LoadFile(path.c_str()));
    const tinyxml2::XMLElement* lom = document.RootElement();
    EXPECT_EQ("new", TextAt(lom, {"lom:general", "lom:identifier", "lom:entry"}));
    EXPECT_EQ(1, CountChildren(Walk(lom, {"lom:general", "lom:title"}), "lom:string"));
    EXPECT_EQ("Neu", TextAt(lom, {"lom:general", "lom:title", "lom:string"}));
    EXPECT_EQ(1, CountChildren(Walk(lom, {"lom:general"}), "lom:keyword"));
    EXPECT_EQ("s1", TextAt(lom, {"lom:general", "lom:keyword", "lom:string"}));
    EXPECT_EQ(nullptr, Walk(lom, {"lom:general", "zoltagallery:sortoverride"}));
    EXPECT_EQ("fr", TextAt(lom, {"lom:general", "zoltagallery:hideinlanguages"}));
    EXPECT_EQ("3", TextAt(lom, {"lom:lifeCycle", "lom:version", "lom:string"}));
    EXPECT_EQ("keep me", TextAt(lom, {"lom:general", "custom:note"}));
    EXPECT_EQ("image/png", TextAt(lom, {"lom:technical", "lom:format"}));

    // A broken existing file fails the save and stays as it was.
    ASSERT_TRUE(curatool::test::WriteFile(folder + "/metadata.xml", "<lom:lom><unclosed>"));
    EXPECT_EQ(E_FAIL, SaveMetadataXml(*metadata, CAtlString(QString::fromStdString(folder))));
    EXPECT_EQ("<lom:lom><unclosed>", curatool::test::ReadFile(folder + "/metadata.xml"));
}

TEST(LomMetadataFileTest, NewFileIsReadBackFromBufferTreeAndArchiveAndAMissingEntryFails)
{
    const std::string folder = curatool::test::MakeScratchDir("lom-archive");
    const MetadataPtr metadata = NewMetadata();
    FillRecord(*metadata);
    const CAtlString folderPath(QString::fromStdString(folder));
    ASSERT_EQ(S_OK, SaveMetadataXml(*metadata, folderPath));  // a missing file is written whole
    const std::string written = curatool::test::ReadFile(folder + "/metadata.xml");
    EXPECT_EQ(0u, written.find("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><lom:lom xmlns:lom="));
    const MetadataPtr fromBuffer = NewMetadata();
    ASSERT_EQ(S_OK, LoadMetadataFromBuffer(*fromBuffer, written.data(), written.size()));
    EXPECT_EQ(DumpMetadata(*metadata), DumpMetadata(*fromBuffer));
    // Through a parsed tree the record and its document stay the same.
    tinyxml2::XMLDocument document;
    ASSERT_EQ(tinyxml2::XML_SUCCESS, document.Parse(written.c_str(), written.size()));
    const MetadataPtr fromTree = NewMetadata();
    ASSERT_EQ(S_OK, LoadMetadataXml(*fromTree, document.RootElement()));
    EXPECT_EQ(DumpMetadata(*metadata), DumpMetadata(*fromTree));
    EXPECT_EQ(WriteToString(*metadata, false), WriteToString(*fromTree, false));

    const CZoltaFilePath archive(CAtlString(QString::fromStdString(folder + "/item.zip")));
    ASSERT_TRUE(ZipAddFileRelative(CZoltaDirectoryPath(folderPath).GetFile(L"metadata.xml"), archive));
    const MetadataPtr loaded = NewMetadata();
    ASSERT_EQ(S_OK, LoadMetadataFromArchive(*loaded, archive.GetPath()));
    EXPECT_STREQ(L"urn:item:1", loaded->m_identifier);
    EXPECT_EQ(DumpBlock(metadata->m_keywords), DumpBlock(loaded->m_keywords));

    ASSERT_TRUE(curatool::test::WriteFile(folder + "/other.txt", "x"));
    const CZoltaFilePath empty(CAtlString(QString::fromStdString(folder + "/empty.zip")));
    ASSERT_TRUE(ZipAddFileRelative(CZoltaDirectoryPath(folderPath).GetFile(L"other.txt"), empty));
    EXPECT_EQ(E_FAIL, LoadMetadataFromArchive(*loaded, empty.GetPath()));
    EXPECT_EQ(E_FAIL, LoadMetadataFromBuffer(*loaded, "<lom:lom><open>", 15));
}

TEST(LomMetadataVisibilityTest, HideListOutranksShowListAndBlankMeansCurrentLanguage)
{
    const MetadataPtr metadata = NewMetadata();
    EXPECT_TRUE(IsVisibleInLanguage(*metadata, L"fr"));
    EXPECT_EQ(S_OK, metadata->SetShowInLanguages(L"en;fr"));
    EXPECT_TRUE(IsVisibleInLanguage(*metadata, L"fr-CA"));  // level 2
    EXPECT_FALSE(IsVisibleInLanguage(*metadata, L"de"));
    EXPECT_EQ(S_OK, metadata->SetHideInLanguages(L"fr"));
    EXPECT_FALSE(IsVisibleInLanguage(*metadata, L"fr"));
    EXPECT_TRUE(IsVisibleInLanguage(*metadata, L"en-GB"));

    EXPECT_EQ(S_OK, metadata->SetHideInLanguages(L""));
    EXPECT_EQ(S_OK, metadata->SetShowInLanguages(L"zh-CN"));
    EXPECT_FALSE(IsVisibleInLanguage(*metadata, L"zh-TW"));  // level 1 only
    EXPECT_TRUE(IsVisibleInLanguage(*metadata, L"zh"));
    const CAtlString previous = GetCurrentLanguage();
    SetCurrentLanguage(L"zh-CN");
    EXPECT_TRUE(IsVisibleInLanguage(*metadata, nullptr));
    SetCurrentLanguage(L"de");
    EXPECT_FALSE(IsVisibleInLanguage(*metadata, L""));
    SetCurrentLanguage(previous.GetString());
}

TEST(LomMetadataCopyTest, RebuildCopyTakesTheIdentifierAsOriginalWhenThereIsNone)
{
    const MetadataPtr source = NewMetadata();
    FillRecord(*source);
    const MetadataPtr target = NewMetadata();
    ASSERT_EQ(S_OK, CopyMetadataForRebuild(*target, *source));
    EXPECT_STREQ(L"urn:item:0", target->m_originalId);
    EXPECT_EQ(DumpBlock(source->m_titles), DumpBlock(target->m_titles));
    EXPECT_EQ(DumpBlock(source->m_maximumVersions), DumpBlock(target->m_maximumVersions));
    EXPECT_STREQ(source->m_format, target->m_format);

    EXPECT_EQ(S_OK, source->SetOriginalId(nullptr));
    ASSERT_EQ(S_OK, CopyMetadataForRebuild(*target, *source));
    EXPECT_STREQ(L"urn:item:1", target->m_originalId);
}

}  // namespace
