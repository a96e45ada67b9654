// The bundled sample (samples/collection with its data in samples/source) installed through the
// controller as the console install does it. Expectations are read from the sample itself: the
// categories document, the packages (opened with the manifest reader) and the string catalogues.

#include "CConfiguration.h"
#include "CGalleryData.h"
#include "CGalleryFolder.h"
#include "CGalleryI18N.h"
#include "CGalleryInstallation.h"
#include "CGalleryManifest.h"
#include "CGalleryManifestIO.h"
#include "CGalleryMetadata.h"
#include "CInstallationController.h"
#include "GalleryContentFiles.h"
#include "InstalledXmlWriter.h"
#include "ProgressRecorder.h"
#include "TestEnvironment.h"
#include "TestText.h"

#include <QProcess>
#include <QStandardPaths>

#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

const std::string kSampleCollection = std::string(CURATOOL_SOURCE_DIR) + "/samples/collection";
const std::string kSampleSource = std::string(CURATOOL_SOURCE_DIR) + "/samples/source";

bool Contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

// The title of one language exactly as stored, empty when the block has none.
std::string TitleIn(const LanguageStringBlock* titles, const std::string& language)
{
    if (!titles)
        return std::string();
    const CAtlString key = CAtlString::FromUtf8(language.c_str());
    const int index = titles->FindLanguage(key, 3);
    return index < 0 ? std::string() : U(titles->GetValue(index));
}

struct ObjectInfo
{
    bool isActivity = false;
    std::string href;
    std::map<std::string, std::string> titles;  // only the languages asked for
};

// Every category and activity of a manifest, by stable identifier.
std::map<std::string, ObjectInfo> CollectObjects(const CGalleryManifest& manifest,
                                                 const std::set<std::string>& languages)
{
    std::map<std::string, ObjectInfo> objects;
    auto describe = [&](const CGalleryObject& object, ObjectInfo info) {
        for (const std::string& language : languages)
            info.titles[language] = TitleIn(object.m_metadata->m_titles, language);
        objects[U(object.m_metadata->m_identifier)] = info;
    };
    std::function<void(const CGalleryFolder&)> walk = [&](const CGalleryFolder& folder) {
        describe(folder, ObjectInfo());
        for (std::uint32_t i = 0; i < folder.m_activities->GetCount(); ++i)
        {
            const CGalleryActivity& activity = *folder.m_activities->GetAt(i);
            describe(activity, ObjectInfo{true, U(activity.m_href), {}});
        }
        for (std::uint32_t i = 0; i < folder.m_children->GetCount(); ++i)
            walk(*folder.m_children->GetAt(i));
    };
    const CGalleryOrganizationList& organizations = *manifest.GetOrganizations();
    for (std::uint32_t o = 0; o < organizations.GetCount(); ++o)
    {
        const CGalleryFolderList& roots = *organizations.GetAt(o)->m_items;
        for (std::uint32_t i = 0; i < roots.GetCount(); ++i)
            walk(*roots.GetAt(i));
    }
    return objects;
}

// Identifiers of the root categories of all organizations, in order.
std::vector<std::string> RootCategoryIds(const CGalleryManifest& manifest)
{
    std::vector<std::string> ids;
    const CGalleryOrganizationList& organizations = *manifest.GetOrganizations();
    for (std::uint32_t o = 0; o < organizations.GetCount(); ++o)
        for (std::uint32_t i = 0; i < organizations.GetAt(o)->m_items->GetCount(); ++i)
            ids.push_back(U(organizations.GetAt(o)->m_items->GetAt(i)->m_metadata->m_identifier));
    return ids;
}

struct SamplePackage
{
    std::string file;                              // relative to the source
    std::string id;                                // the manifest's identifier
    std::map<std::string, ObjectInfo> objects;     // its categories and activities
    std::map<std::string, std::string> contents;   // href -> bytes
    std::set<std::string> rootCategories;
};

struct SampleCategory
{
    std::string id;
    std::string version;
    std::vector<SamplePackage> packages;
    // language -> (object identifier -> translated title)
    std::map<std::string, std::map<std::string, std::string>> translations;
};

// What the sample source offers, read through the document and the program's own readers.
struct SampleSource
{
    std::vector<SampleCategory> categories;
    std::set<std::string> languages{"en"};

    explicit SampleSource(const std::string& root)
    {
        tinyxml2::XMLDocument document;
        EXPECT_EQ(tinyxml2::XML_SUCCESS, document.LoadFile((root + "/gallery_categories.xml").c_str()));
        const tinyxml2::XMLElement* list =
            document.RootElement() ? document.RootElement()->FirstChildElement("categories") : nullptr;
        if (!list)
        {
            ADD_FAILURE() << "no categories element";
            return;
        }
        for (const tinyxml2::XMLElement* element = list->FirstChildElement(); element;
             element = element->NextSiblingElement())
        {
            SampleCategory category{element->Attribute("id"), element->Attribute("version"), {}, {}};
            for (const tinyxml2::XMLElement* file = element->FirstChildElement("files")->FirstChildElement(); file;
                 file = file->NextSiblingElement())
            {
                category.packages.push_back(ReadPackage(root, file->GetText()));
                EXPECT_STREQ(category.packages.back().id.c_str(), file->Attribute("id"))
                    << "a file's id ties it to the installed manifest";
            }
            if (const tinyxml2::XMLElement* strings = element->FirstChildElement("strings"))
                for (const tinyxml2::XMLElement* string = strings->FirstChildElement(); string;
                     string = string->NextSiblingElement())
                    ReadCatalogue(root + "/" + string->GetText(), category);
            categories.push_back(std::move(category));
        }
    }

    const SampleCategory* Find(const std::string& id) const
    {
        for (const SampleCategory& category : categories)
            if (category.id == id)
                return &category;
        return nullptr;
    }

private:
    SamplePackage ReadPackage(const std::string& root, const std::string& file)
    {
        SamplePackage package{file, {}, {}, {}, {}};
        CGalleryManifest manifest;
        EXPECT_EQ(S_OK, CGalleryManifestIO::Open(manifest, CAtlString::FromUtf8((root + "/" + file).c_str()),
                                                 nullptr, false))
            << file;
        package.id = U(manifest.m_metadata->m_identifier);
        package.objects = CollectObjects(manifest, {"en"});
        const std::string folder = U(CGalleryManifestIO::GetFolder(manifest).GetPath());
        for (const auto& [id, object] : package.objects)
            if (object.isActivity)
                package.contents[object.href] = ReadFile(folder + "/" + object.href);
        for (const std::string& id : RootCategoryIds(manifest))
            package.rootCategories.insert(id);
        CGalleryManifestIO::Close(manifest);
        EXPECT_FALSE(package.contents.empty()) << file;
        return package;
    }

    void ReadCatalogue(const std::string& path, SampleCategory& category)
    {
        CGalleryI18N catalogue;
        ASSERT_EQ(S_OK, catalogue.Load(CAtlString::FromUtf8(path.c_str()))) << path;
        const std::string language = U(catalogue.GetLanguage());
        languages.insert(language);
        for (const auto& manifest : catalogue.GetManifests())
            for (const auto& item : manifest->m_items)
                if (!item->m_titles.empty())
                    category.translations[language][U(item->m_id)] = U(item->m_titles.front());
    }
};

// Every regular file below `root` with its bytes, by relative path.
std::map<std::string, std::string> Snapshot(const std::string& root)
{
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(root))
        if (entry.is_regular_file())
            files[fs::relative(entry.path(), root).string()] = ReadFile(entry.path().string());
    return files;
}

// The sample collection loaded as `-configuration samples/collection` does, a copy of the sample
// source, and a controller aimed at an empty gallery folder.
struct SampleFixture : ::testing::Test
{
    std::string source = MakeScratchDir("sample-source");
    std::string gallery = MakeScratchDir("sample-gallery");
    std::shared_ptr<CConfiguration> configuration = std::make_shared<CConfiguration>();
    std::unique_ptr<CInstallationController> controller;
    InstalledXmlWriter writer;
    ProgressRecorder progress;

    void SetUp() override
    {
        fs::copy(kSampleSource, source, fs::copy_options::recursive | fs::copy_options::overwrite_existing);
        ASSERT_TRUE(configuration->OpenCollectionDirectory(CAtlString::FromUtf8(kSampleCollection.c_str())));
        configuration->SetInstallDirectory(CZoltaDirectoryPath(CAtlString::FromUtf8(gallery.c_str())));
        controller = std::make_unique<CInstallationController>(configuration);
        writer.SetConfiguration(configuration);
        controller->AddObserver(&writer);
        ASSERT_TRUE(controller->FindSource(CAtlString::FromUtf8(source.c_str())))
            << "gallery_categories.xml must name the collection's gallery";
    }

    std::vector<std::string> installedRoots;

    std::map<std::string, ObjectInfo> InstalledObjects(const std::set<std::string>& languages)
    {
        CGalleryManifest manifest;
        EXPECT_EQ(S_OK, CGalleryManifestIO::Open(
                            manifest, CAtlString::FromUtf8((gallery + "/imsmanifest.xml").c_str()), nullptr, false));
        auto objects = CollectObjects(manifest, languages);
        installedRoots = RootCategoryIds(manifest);
        CGalleryManifestIO::Close(manifest);
        return objects;
    }

    std::string UpdateInfo() const { return ReadFile(gallery + "/Uninstall/updateinfo.xml"); }
};

}  // namespace

TEST_F(SampleFixture, InstallAllGivesACurrentGalleryWithEveryActivityAndTranslation)
{
    // Every category of the collection is in the source, with packages and string packages.
    const SampleSource sample(source);
    const auto& shortIds = configuration->GetGallery()->GetCategories();
    ASSERT_FALSE(shortIds.empty());
    EXPECT_EQ(shortIds.size(), sample.categories.size());
    for (const auto& [shortId, guid] : shortIds)
    {
        const SampleCategory* category = sample.Find(U(guid));
        ASSERT_NE(nullptr, category) << U(shortId) << " has no category in the source";
        EXPECT_FALSE(category->packages.empty()) << U(shortId);
        EXPECT_FALSE(category->translations.empty()) << U(shortId) << " has no string package";
    }
    EXPECT_TRUE(sample.languages.count("de")) << "a German catalogue belongs to the sample";

    ASSERT_TRUE(controller->InstallAll(&progress));
    EXPECT_TRUE(progress.OfStage(eGalleryInstallationProgressFailed).empty());
    EXPECT_TRUE(Snapshot(kSampleSource) == Snapshot(source)) << "the source is only read";

    // Every object of every package is in the merged manifest, every content file is the
    // package's, every package has its record and every category its line in updateinfo.xml.
    const auto installed = InstalledObjects(sample.languages);
    const std::string info = UpdateInfo();
    std::size_t activities = 0;
    std::set<std::string> roots;
    std::size_t packageRoots = 0;
    for (const SampleCategory& category : sample.categories)
    {
        EXPECT_TRUE(Contains(info, "<category id=\"" + category.id + "\" version=\"" + category.version + "\"/>"))
            << info;
        for (const SamplePackage& package : category.packages)
        {
            for (const auto& [id, object] : package.objects)
            {
                const auto found = installed.find(id);
                ASSERT_NE(installed.end(), found) << id << " of " << package.file;
                EXPECT_EQ(object.isActivity, found->second.isActivity) << id;
                EXPECT_EQ(object.titles.at("en"), found->second.titles.at("en")) << id;
                activities += object.isActivity;
            }
            for (const auto& [href, bytes] : package.contents)
                EXPECT_EQ(bytes, ReadFile(gallery + "/" + href)) << href;
            EXPECT_TRUE(Exists(U(CGalleryManifestIO::GetInstallRecordPath(
                                        CZoltaDirectoryPath(CAtlString::FromUtf8((gallery + "/Uninstall").c_str())),
                                        CAtlString::FromUtf8(package.id.c_str()))
                                        .GetPath())))
                << package.file;
            roots.insert(package.rootCategories.begin(), package.rootCategories.end());
            packageRoots += package.rootCategories.size();
        }
    }
    EXPECT_EQ(activities, std::size_t(std::count_if(installed.begin(), installed.end(),
                                                    [](const auto& entry) { return entry.second.isActivity; })));

    // Packages that share a root category merge into one.
    EXPECT_LT(roots.size(), packageRoots) << "the sample should have packages sharing a category";
    std::sort(installedRoots.begin(), installedRoots.end());
    EXPECT_EQ(std::vector<std::string>(roots.begin(), roots.end()), installedRoots);

    // The string packages were applied: every translated title is in the merged manifest, in its
    // language, and its UTF-8 bytes survived.
    const std::string merged = ReadFile(gallery + "/imsmanifest.xml");
    std::size_t translated = 0;
    for (const SampleCategory& category : sample.categories)
        for (const auto& [language, titles] : category.translations)
            for (const auto& [id, title] : titles)
            {
                const auto found = installed.find(id);
                ASSERT_NE(installed.end(), found) << id;
                EXPECT_EQ(title, found->second.titles.at(language)) << id << " in " << language;
                EXPECT_TRUE(Contains(merged, ">" + title + "<")) << title;
                ++translated;
            }
    EXPECT_GT(translated, 0u);

    // Fresh means current, string versions included: opened again, nothing is offered.
    ASSERT_TRUE(controller->Open(&progress));
    const CGalleryInstallation* installation = controller->GetInstallation();
    ASSERT_NE(nullptr, installation);
    for (int i = 0; i < installation->CategoryCount(); ++i)
    {
        const CGalleryCategory* category = installation->Category(i);
        EXPECT_TRUE(category->IsInstalled()) << U(category->GetId());
        EXPECT_FALSE(category->IsUpdateAvailable()) << U(category->GetId()) << ": a catalogue not recorded?";
    }
    controller->SelectUpdates();
    EXPECT_FALSE(controller->HasChanges());
}

TEST(SampleArchives, PackagesPassAnOutsideZipTester)
{
    const QString unzip = QStandardPaths::findExecutable(QStringLiteral("unzip"));
    if (unzip.isEmpty())
        GTEST_SKIP() << "unzip is not installed";
    std::size_t archives = 0;
    for (const auto& entry : fs::recursive_directory_iterator(kSampleSource))
    {
        if (entry.path().extension() != ".zip")
            continue;
        QProcess process;
        process.start(unzip, {QStringLiteral("-tq"), QString::fromStdString(entry.path().string())});
        ASSERT_TRUE(process.waitForFinished(30000));
        EXPECT_EQ(0, process.exitCode()) << entry.path() << process.readAllStandardOutput().toStdString();
        ++archives;
    }
    EXPECT_GT(archives, 0u);
}

TEST(SampleArchives, TheGeneratorReproducesTheCommittedSource)
{
    const QString python = QStandardPaths::findExecutable(QStringLiteral("python3"));
    if (python.isEmpty())
        GTEST_SKIP() << "python3 is not installed";
    const std::string out = MakeScratchDir("regenerated");
    QProcess process;
    process.start(python, {QString::fromStdString(std::string(CURATOOL_SOURCE_DIR) + "/scripts/make-sample-source.py"),
                           QStringLiteral("--out"), QString::fromStdString(out)});
    ASSERT_TRUE(process.waitForFinished(60000));
    ASSERT_EQ(0, process.exitCode()) << process.readAllStandardError().toStdString();
    EXPECT_TRUE(Snapshot(kSampleSource) == Snapshot(out)) << "run scripts/make-sample-source.py and commit its output";
}
