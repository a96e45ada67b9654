// The gallery chooser over galleries registered in this process's own settings store, and the
// folder selection's warning loop.

#include "configuration/CConfiguration.h"
#include "ScratchCollection.h"
#include "ui/GalleryChooser.h"
#include "ui/Output.h"
#include "ui/PathSelector.h"
#include "support/ModalAnswerer.h"
#include "support/TestEnvironment.h"
#include "ziparchive/ZipHelpers.h"

#include <QPushButton>

#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

const char kSampleGuid[] = "5a0f3c2e-8d41-4b6a-9c57-2e1d7b9f0a31";
const std::string kSample = CURATOOL_SOURCE_DIR "/samples/collection";

// A collection of its own, `title` in its metadata, registered as installed.
std::shared_ptr<CConfiguration> Register(const std::string& folder)
{
    auto configuration = std::make_shared<CConfiguration>();
    EXPECT_TRUE(configuration->OpenCollectionDirectory(CAtlString(QString::fromStdString(folder))));
    EXPECT_TRUE(configuration->StoreConfiguration());
    configuration->ComposeRepositoryEntry();
    EXPECT_TRUE(configuration->Register());
    return configuration;
}

QStringList Rows(const GalleryChooser& chooser)
{
    QStringList rows;
    for (int i = 0; i < chooser.listWidget->count(); ++i)
        rows << chooser.listWidget->item(i)->text();
    rows.sort();
    return rows;
}

QListWidgetItem* Row(const GalleryChooser& chooser, const QString& start)
{
    for (int i = 0; i < chooser.listWidget->count(); ++i)
        if (chooser.listWidget->item(i)->text().startsWith(start))
            return chooser.listWidget->item(i);
    return nullptr;
}

struct GalleryChooserTest : ::testing::Test {
    void SetUp() override
    {
        Output::Initialize();
        for (const CGalleryRepositoryEntry& entry : CConfiguration::InstalledGalleries())
            EXPECT_TRUE(entry.Remove());
    }
};

TEST_F(GalleryChooserTest, ListsRemovesAndOpensRegisteredGalleries)
{
    Register(kSample);
    Register(WriteCollection("guid-beta", "Beta"));
    // A gallery whose stored collection has gone is not offered.
    const auto gone = Register(WriteCollection("guid-gone", "Gone"));
    fs::remove_all(gone->GetConfigurationDirectory().ToQString().toStdString());

    struct Call {
        QString guid;
        bool gui;
        QWidget* parent;
    };
    std::vector<Call> calls;
    auto chosen = std::make_shared<CConfiguration>();
    GalleryChooser chooser(chosen, [&calls](std::shared_ptr<CConfiguration> configuration, bool gui, QWidget* parent) {
        calls.push_back({configuration->GetGallery()->GetGUID().ToQString(), gui, parent});
        return configuration->Unregister();
    });
    QPushButton* ok = chooser.buttonBox->button(QDialogButtonBox::Ok);

    EXPECT_EQ((QStringList{"Beta (guid-beta)", QString("ZOLTA Sample Collection (%1)").arg(kSampleGuid)}),
              Rows(chooser));
    EXPECT_TRUE(ok->isDefault());
    EXPECT_FALSE(ok->isEnabled());
    EXPECT_FALSE(chooser.uninstallButton->isEnabled());

    chooser.listWidget->setCurrentItem(Row(chooser, "Beta"));
    EXPECT_TRUE(ok->isEnabled());
    EXPECT_TRUE(chooser.uninstallButton->isEnabled());
    ModalAnswerer answers(QMessageBox::No);
    chooser.uninstallButton->click();
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ(2, chooser.listWidget->count());

    answers.box = QMessageBox::Yes;
    chooser.uninstallButton->click();
    ASSERT_EQ(1u, calls.size());
    EXPECT_EQ("guid-beta", calls[0].guid);
    EXPECT_TRUE(calls[0].gui);
    EXPECT_EQ(&chooser, calls[0].parent);
    // Refilled at once, nothing selected.
    EXPECT_EQ((QStringList{QString("ZOLTA Sample Collection (%1)").arg(kSampleGuid)}), Rows(chooser));
    EXPECT_FALSE(ok->isEnabled());
    EXPECT_FALSE(chooser.uninstallButton->isEnabled());

    chooser.listWidget->setCurrentItem(Row(chooser, "ZOLTA"));
    ok->click();
    EXPECT_EQ(GalleryChooser::eListed, chooser.result());
    EXPECT_TRUE(chosen->IsLoaded());
    EXPECT_EQ(kSampleGuid, chosen->GetGallery()->GetGUID().ToQString());
}

TEST_F(GalleryChooserTest, OtherGalleryTakesACollectionFileAndStaysOpenOnABadOne)
{
    const std::string folder = MakeScratchDir("files");
    const std::string archive = folder + "/Sample.gallerycollection";
    ASSERT_TRUE(ZipAddDirectory(CZoltaDirectoryPath(kSample.c_str()), CZoltaFilePath(archive.c_str())));
    ASSERT_TRUE(WriteFile(folder + "/Broken.gallerycollection", "not an archive"));

    auto chosen = std::make_shared<CConfiguration>();
    GalleryChooser chooser(chosen, {});
    chooser.setResult(-1);
    ModalAnswerer answers;
    answers.folder = QString::fromStdString(folder + "/Broken.gallerycollection");
    chooser.openButton->click();
    EXPECT_EQ(QStringList{"Could not load the configuration."}, answers.boxes);
    EXPECT_EQ(-1, chooser.result());

    answers.folder = QString::fromStdString(archive);
    chooser.openButton->click();
    EXPECT_EQ(GalleryChooser::eCollectionFile, chooser.result());
    EXPECT_EQ("ZOLTA Sample Collection", chosen->GetGallery()->GetName().ToQString());
}

TEST(PathSelectorExecTest, WarnsAndAsksAgainUntilAWritableFolderOrACancel)
{
    const std::string good = MakeScratchDir("good-folder");
    const std::string locked = MakeScratchDir("locked-folder");
    chmod(locked.c_str(), 0555);
    // Permissions do not stop root; this folder takes no files from anyone.
    const std::string bad = geteuid() == 0 ? "/proc/self/fdinfo" : locked;

    PathSelector selector;
    ModalAnswerer answers;
    answers.folder = QString::fromStdString(bad);
    // Once warned, the user picks a folder that can be written.
    QObject::connect(&answers.timer, &QTimer::timeout, [&, warned = false]() mutable {
        if (!warned && !answers.boxes.isEmpty())
            warned = true, answers.folder = QString::fromStdString(good);
    });
    EXPECT_TRUE(selector.Exec(nullptr, CAtlString(L"Select a folder")));
    EXPECT_EQ(QStringList{"You must have write permissions for this directory."}, answers.boxes);
    EXPECT_EQ(QStringList{"Curatool"}, answers.titles);
    EXPECT_EQ(good, selector.GetPath().ToQString().toStdString());

    answers.folder.clear();
    EXPECT_FALSE(selector.Exec(nullptr, CAtlString(L"Select a folder")));
    EXPECT_TRUE(selector.GetPath().IsEmpty());
    chmod(locked.c_str(), 0755);
}

}  // namespace
