// The bundled sample (samples/collection with its data in samples/source) installed through the
// controller as the console install does it. Expectations are read from the sample itself: the
// categories document and its string catalogues.

#include "configuration/CConfiguration.h"
#include "gallery/CGalleryI18N.h"
#include "installation/CGalleryInstallation.h"
#include "gallery/CGalleryManifestIO.h"
#include "installation/CInstallationController.h"
#include "installation/InstalledXmlWriter.h"
#include "ProgressRecorder.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"
#include "support/ZipTestSupport.h"

#include <QProcess>
#include <QStandardPaths>

#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <filesystem>
#include <map>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

const std::string kSampleCollection = std::string(CURATOOL_SOURCE_DIR) + "/samples/collection";
const std::string kSampleSource = std::string(CURATOOL_SOURCE_DIR) + "/samples/source";

// The sample collection loaded as `-configuration samples/collection` does, a copy of the sample
// source, and a controller aimed at an empty gallery folder.
struct SampleFixture : ::testing::Test {
    std::string source = MakeScratchDir("sample-source");
    std::string gallery = MakeScratchDir("sample-gallery");
    std::shared_ptr<CConfiguration> configuration = std::make_shared<CConfiguration>();
    std::unique_ptr<CInstallationController> controller;
    InstalledXmlWriter writer;
    ProgressRecorder progress;

    void SetUp() override
    {
        fs::copy(kSampleSource, source, fs::copy_options::recursive | fs::copy_options::overwrite_existing);
        ASSERT_TRUE(configuration->OpenCollectionDirectory(W(kSampleCollection)));
        configuration->SetInstallDirectory(CZoltaDirectoryPath(W(gallery)));
        controller = std::make_unique<CInstallationController>(configuration);
        writer.SetConfiguration(configuration);
        controller->AddObserver(&writer);
        ASSERT_TRUE(controller->FindSource(W(source))) << "gallery_categories.xml must name the collection's gallery";
    }
};

}  // namespace

TEST_F(SampleFixture, InstallAllGivesACurrentGalleryWithEveryPackageAndTranslation)
{
    ASSERT_TRUE(controller->InstallAll(&progress));
    EXPECT_TRUE(progress.OfStage(eGalleryInstallationProgressFailed).empty());
    EXPECT_TRUE(ziptest::ReadTree(kSampleSource) == ziptest::ReadTree(source)) << "the source is only read";

    // Every category of the document is recorded, every package has its record, and every title
    // of every string catalogue reached the merged manifest with its UTF-8 bytes.
    tinyxml2::XMLDocument document;
    ASSERT_EQ(tinyxml2::XML_SUCCESS, document.LoadFile((source + "/gallery_categories.xml").c_str()));
    const std::string info = ReadFile(gallery + "/Uninstall/updateinfo.xml");
    const std::string merged = ReadFile(gallery + "/imsmanifest.xml");
    std::map<std::string, int> titlesByLanguage;
    int categories = 0;
    for (auto* category = document.RootElement()->FirstChildElement("categories")->FirstChildElement(); category;
         category = category->NextSiblingElement(), ++categories)
    {
        EXPECT_TRUE(Contains(info, "<category id=\"" + std::string(category->Attribute("id")) + "\" version=\"" +
                                       category->Attribute("version") + "\"/>"))
            << info;
        for (auto* file = category->FirstChildElement("files")->FirstChildElement(); file;
             file = file->NextSiblingElement())
            EXPECT_TRUE(Exists(U(CGalleryManifestIO::GetInstallRecordPath(
                                     CZoltaDirectoryPath(W(gallery + "/Uninstall")), W(file->Attribute("id")))
                                     .GetPath())))
                << file->GetText();
        const auto* strings = category->FirstChildElement("strings");
        ASSERT_NE(nullptr, strings) << "every sample category has a string package";
        for (auto* string = strings->FirstChildElement(); string; string = string->NextSiblingElement()) {
            CGalleryI18N catalogue;
            ASSERT_EQ(S_OK, catalogue.Load(W(source + "/" + string->GetText()))) << string->GetText();
            for (const auto& manifest : catalogue.GetManifests())
                for (const auto& item : manifest->m_items)
                    for (const CAtlString& title : item->m_titles) {
                        EXPECT_TRUE(Contains(merged, ">" + U(title) + "<")) << U(title);
                        ++titlesByLanguage[U(catalogue.GetLanguage())];
                    }
        }
    }
    EXPECT_EQ(configuration->GetGallery()->GetCategories().size(), std::size_t(categories));
    EXPECT_GT(titlesByLanguage["de"], 0) << "a German catalogue belongs to the sample";

    // Fresh means current, string versions included: opened again, nothing is offered.
    ASSERT_TRUE(controller->Open(&progress));
    const CGalleryInstallation* installation = controller->GetInstallation();
    ASSERT_NE(nullptr, installation);
    for (int i = 0; i < installation->CategoryCount(); ++i) {
        EXPECT_TRUE(installation->Category(i)->IsInstalled()) << U(installation->Category(i)->GetId());
        EXPECT_FALSE(installation->Category(i)->IsUpdateAvailable()) << U(installation->Category(i)->GetId());
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
    for (const auto& entry : fs::recursive_directory_iterator(kSampleSource)) {
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
    EXPECT_TRUE(ziptest::ReadTree(kSampleSource) == ziptest::ReadTree(out))
        << "run scripts/make-sample-source.py and commit its output";
}
