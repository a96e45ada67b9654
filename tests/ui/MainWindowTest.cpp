// The main window over the real engine: a copy of the bundled sample collection and source, a
// gallery folder in the test's scratch tree, and modal windows answered from a timer.

#include "configuration/CConfiguration.h"
#include "installation/CGalleryCategory.h"
#include "installation/CGalleryInstallation.h"
#include "installation/CInstallationController.h"
#include "installation/InstalledXmlWriter.h"
#include "ui/MainWindow.h"
#include "support/ModalAnswerer.h"
#include "ui/Output.h"
#include "ui/ProxyAuth.h"
#include "network/ProxyHandler.h"
#include "support/GallerySourceBuilder.h"
#include "support/TestEnvironment.h"

#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <vector>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

enum { kAnimals, kMaps, kSounds };
const char* const kGuids[] = {"0c9b8f1e-3a52-4d1c-8e6f-7b2a4c9d1e01", "0c9b8f1e-3a52-4d1c-8e6f-7b2a4c9d1e02",
                              "0c9b8f1e-3a52-4d1c-8e6f-7b2a4c9d1e03"};

// Boxes get Yes; the progress dialog its Finish (or, once, its Cancel); other dialogs are accepted.
struct Answers : ModalAnswerer {
    bool cancelRun = false;
    QStringList others;

    Answers()
        : ModalAnswerer(QMessageBox::Yes)
    {
        other = [this](QWidget* modal) {
            if (modal->objectName() != QLatin1String("ProgressDialog")) {
                if (auto* dialog = qobject_cast<QDialog*>(modal))
                    others << dialog->objectName(), dialog->accept();
                return;
            }
            auto* finish = modal->findChild<QPushButton*>(QStringLiteral("cancelButton"));
            if (finish->isVisible() && (finish->text() == QLatin1String("Finish") || cancelRun)) {
                cancelRun = false;
                finish->click();
            }
        };
    }
};

struct MainWindowTest : ::testing::Test {
    std::string source = MakeScratchDir("source");
    std::string gallery = MakeScratchDir("gallery") + "/ZOLTA Sample Collection";
    std::shared_ptr<CConfiguration> configuration = std::make_shared<CConfiguration>();
    std::shared_ptr<CInstallationController> controller;
    std::shared_ptr<InstalledXmlWriter> writer = std::make_shared<InstalledXmlWriter>();
    ProxyHandler proxy;
    std::unique_ptr<MainWindow> window;

    void SetUp() override
    {
        Output::Initialize();
        fs::copy(std::string(CURATOOL_SOURCE_DIR) + "/samples/source", source, fs::copy_options::recursive);
        ASSERT_TRUE(configuration->OpenCollectionDirectory(CAtlString(CURATOOL_SOURCE_DIR "/samples/collection")));
        configuration->SetInstallDirectory(CZoltaDirectoryPath(CAtlString(gallery.c_str())));
        proxy.SetPrompt(&ProxyAuth::Prompt);
        controller = std::make_shared<CInstallationController>(configuration, &proxy);
        writer->SetConfiguration(configuration);
        controller->AddObserver(writer.get());
        ASSERT_TRUE(controller->FindSource(CAtlString(source.c_str())));
    }

    // The window as the work flow makes it, after the first read of the gallery.
    void Show()
    {
        window = std::make_unique<MainWindow>(controller, configuration, &proxy, true);
        controller->AddObserver(window.get());
        ASSERT_TRUE(controller->Open(nullptr));
        window->show();
    }

    // Installs categories straight through the engine, before the window comes.
    void Install(std::initializer_list<int> categories)
    {
        ASSERT_TRUE(controller->Open(nullptr));
        for (int index : categories)
            controller->GetInstallation()->Category(index)->SetAction(eGalleryCategoryActionInstall);
        ASSERT_TRUE(controller->Run(nullptr));
        controller->Close();
    }

    // The source moves on: the first package of "Animals" gets a newer version.
    void OfferAnimalsUpdate()
    {
        std::string text = ReadFile(source + "/gallery_categories.xml");
        const std::string old = "id=\"zsc.pkg.animals.birds\" version=\"1.0\"";
        ASSERT_NE(std::string::npos, text.find(old));
        text.replace(text.find(old), old.size(), "id=\"zsc.pkg.animals.birds\" version=\"1.1\"");
        ASSERT_TRUE(WriteFile(source + "/gallery_categories.xml", text));
    }

    template <class Widget>
    Widget* Find(const char* name) const
    {
        auto* widget = window->findChild<Widget*>(QLatin1String(name));
        EXPECT_TRUE(widget) << name;
        return widget;
    }
    QTreeWidget* Categories() const { return Find<QTreeWidget>("treeWidgetCategories"); }
    QTreeWidget* Updates() const { return Find<QTreeWidget>("treeWidgetUpdates"); }
    QTreeWidgetItem* CategoryRow(int index) const { return Categories()->topLevelItem(0)->child(index); }
    QTreeWidgetItem* UpdateRow(int index) const { return Updates()->topLevelItem(0)->child(index); }
    QPushButton* Next() const { return Find<QDialogButtonBox>("buttonBox")->button(QDialogButtonBox::Ok); }
    std::vector<int> Actions() const
    {
        std::vector<int> actions;
        for (int index : {kAnimals, kMaps, kSounds})
            actions.push_back(controller->GetInstallation()->Category(index)->GetAction());
        return actions;
    }

    // A click on a row as the user makes it, in the middle of its first column.
    void Click(QTreeWidget* tree, QTreeWidgetItem* item)
    {
        tree->scrollToItem(item);
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(item).center());
    }

    QStringList Summary() const
    {
        QStringList shown;
        auto* list = Find<QListWidget>("listWidgetActions");
        for (int row = 0; row < list->count(); ++row)
            if (!list->item(row)->isHidden())
                shown << list->item(row)->text();
        return shown;
    }

    // What is installed now, read afresh from the gallery folder.
    std::vector<bool> Installed()
    {
        std::vector<bool> installed;
        if (!controller->Open(nullptr))
            return installed;
        for (int index : {kAnimals, kMaps, kSounds})
            installed.push_back(controller->GetInstallation()->Category(index)->IsInstalled());
        return installed;
    }

    // Whether the record of the installed categories names each one.
    std::vector<bool> Recorded() const
    {
        const std::string info = ReadFile(gallery + "/Uninstall/updateinfo.xml");
        std::vector<bool> recorded;
        for (const char* guid : kGuids)
            recorded.push_back(info.find(guid) != std::string::npos);
        return recorded;
    }

    // "Next >>" inside the application's event loop, as the program runs; the result is the code
    // the window ends the application with (-1 when it never did).
    int NextToExit()
    {
        QTimer::singleShot(0, [this] { Next()->click(); });
        QTimer::singleShot(20000, [] { QCoreApplication::exit(-1); });
        return QCoreApplication::exec();
    }
};

}  // namespace

TEST_F(MainWindowTest, FirstInstallShowsEveryCategoryAndNothingToDo)
{
    Show();
    EXPECT_EQ(QStringLiteral("ZOLTA Sample Collection"), window->windowTitle());
    auto* buttons = Find<QDialogButtonBox>("buttonBox");
    EXPECT_EQ(QStringLiteral("Next >>"), Next()->text());
    EXPECT_EQ(QStringLiteral("About"), buttons->button(QDialogButtonBox::Help)->text());
    EXPECT_EQ(QStringLiteral("Connection Options"), buttons->button(QDialogButtonBox::Reset)->text());
    EXPECT_FALSE(buttons->button(QDialogButtonBox::Reset)->isEnabled()) << "a local source";
    EXPECT_FALSE(Next()->isEnabled());
    EXPECT_TRUE(Find<QPushButton>("buttonBrowse")->isEnabled());
    EXPECT_EQ(QString::fromStdString(gallery), Find<QLineEdit>("lineEditLocation")->text());
    EXPECT_EQ(QStringLiteral("All Categories"), Categories()->topLevelItem(0)->text(0));
    ASSERT_EQ(3, Categories()->topLevelItem(0)->childCount());
    for (int index : {kAnimals, kMaps, kSounds})
        EXPECT_EQ(Qt::Unchecked, CategoryRow(index)->checkState(0));
    EXPECT_EQ(QStringLiteral("No updates available at this time"), Updates()->topLevelItem(0)->text(0));
    EXPECT_EQ(Qt::NoItemFlags, Updates()->topLevelItem(0)->flags());
    EXPECT_TRUE(Summary().isEmpty()) << "headings without items stay hidden";
    // The highlight bars: the labels' window colour is the highlight colour.
    const QPalette palette = Find<QLabel>("labelUpdates")->palette();
    EXPECT_EQ(palette.color(QPalette::Highlight), palette.color(QPalette::Window));
    EXPECT_EQ(palette.color(QPalette::HighlightedText), palette.color(QPalette::WindowText));
}

TEST_F(MainWindowTest, ClicksAndTheSpaceKeyOnTheTrees)
{
    Show();
    Click(Categories(), CategoryRow(kSounds));
    Click(Categories(), CategoryRow(kMaps));
    EXPECT_EQ(std::vector<int>({0, 1, 1}), Actions());
    EXPECT_EQ(QStringList({"Categories to Add", "  - Maps", "  - Sounds", ""}), Summary());
    EXPECT_TRUE(Next()->isEnabled());

    // The space key neither toggles nor moves.
    Categories()->setFocus();
    Categories()->setCurrentItem(CategoryRow(kAnimals));
    for (QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent key(type, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "));
        QApplication::sendEvent(Categories(), &key);
    }
    EXPECT_EQ(std::vector<int>({0, 1, 1}), Actions());
    EXPECT_EQ(CategoryRow(kAnimals), Categories()->currentItem());

    // A click on the partly checked root clears everything again: nothing to do.
    Click(Categories(), Categories()->topLevelItem(0));
    EXPECT_EQ(std::vector<int>({0, 0, 0}), Actions());
    EXPECT_TRUE(Summary().isEmpty());
    EXPECT_FALSE(Next()->isEnabled());
}

TEST_F(MainWindowTest, NextInstallsTheChosenCategoriesAndEnds)
{
    Answers answers;
    Show();
    Click(Categories(), CategoryRow(kAnimals));
    Click(Categories(), CategoryRow(kSounds));
    EXPECT_EQ(0, NextToExit());

    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(answers.boxes.isEmpty()) << answers.boxes.join('|').toStdString();
    EXPECT_EQ(std::vector<bool>({true, false, true}), Installed());
    EXPECT_EQ(std::vector<bool>({true, false, true}), Recorded());
    EXPECT_TRUE(Exists(gallery + "/imsmanifest.xml"));
}

TEST_F(MainWindowTest, AnUpdateAndARemovalInOneChange)
{
    Install({kAnimals, kMaps});
    OfferAnimalsUpdate();
    Answers answers;
    Show();
    EXPECT_FALSE(Find<QPushButton>("buttonBrowse")->isEnabled()) << "installed content can't move";
    EXPECT_EQ(QStringLiteral("All Updates"), Updates()->topLevelItem(0)->text(0));
    EXPECT_FALSE(UpdateRow(kAnimals)->isHidden());
    EXPECT_TRUE(UpdateRow(kMaps)->isHidden());

    Click(Updates(), UpdateRow(kAnimals));
    Click(Categories(), CategoryRow(kMaps));
    EXPECT_EQ(QStringList({"Categories to Update", "  - Animals", "", "Categories to Remove", "  - Maps", ""}),
              Summary());
    EXPECT_EQ(0, NextToExit());

    EXPECT_TRUE(answers.boxes.isEmpty()) << "Animals stays, so nothing more is asked";
    EXPECT_EQ(std::vector<bool>({true, false, false}), Installed());
    EXPECT_EQ(std::vector<bool>({true, false, false}), Recorded());
}

struct RemovingEverything : MainWindowTest, ::testing::WithParamInterface<QMessageBox::StandardButton> {};

TEST_P(RemovingEverything, AsksWhetherTheGalleryRecordsGoToo)
{
    const bool keep = GetParam() == QMessageBox::No;
    Install({kMaps});
    ASSERT_TRUE(configuration->StoreConfiguration());
    configuration->ComposeRepositoryEntry();
    ASSERT_TRUE(configuration->Register());
    // As a later start finds it: from the stored copy of the collection.
    ASSERT_TRUE(configuration->OpenInstalled(CAtlString(L"5a0f3c2e-8d41-4b6a-9c57-2e1d7b9f0a31")));
    Answers answers;
    answers.box = GetParam();
    Show();
    Click(Categories(), CategoryRow(kMaps));
    EXPECT_EQ(0, NextToExit());

    EXPECT_EQ(QStringList{"Do you also want to delete all the information about this Gallery?"}, answers.boxes);
    EXPECT_EQ(std::vector<bool>({false, false, false}), Installed());
    EXPECT_EQ(keep, !CConfiguration::InstalledGalleries().empty());
    EXPECT_EQ(keep, configuration->GetConfigurationDirectory().GetFile(L"about.html").Exists());
}

INSTANTIATE_TEST_SUITE_P(Answers, RemovingEverything, ::testing::Values(QMessageBox::No, QMessageBox::Yes));

TEST_F(MainWindowTest, ANewFolderKeepsTheCategoriesChosenToAdd)
{
    const std::string elsewhere = MakeScratchDir("elsewhere");
    Answers answers;
    answers.folder = QString::fromStdString(elsewhere);
    Show();
    Click(Categories(), CategoryRow(kSounds));
    Find<QPushButton>("buttonBrowse")->click();

    EXPECT_EQ(QString::fromStdString(elsewhere), Find<QLineEdit>("lineEditLocation")->text());
    EXPECT_EQ(QString::fromStdString(elsewhere), controller->GetDestination().ToQString());
    EXPECT_EQ(std::vector<int>({0, 0, 1}), Actions());
    EXPECT_EQ(QStringList({"Categories to Add", "  - Sounds", ""}), Summary());

    // A folder dialog that is canceled changes nothing.
    answers.folder.clear();
    Find<QPushButton>("buttonBrowse")->click();
    EXPECT_EQ(QString::fromStdString(elsewhere), controller->GetDestination().ToQString());
    EXPECT_EQ(std::vector<int>({0, 0, 1}), Actions());
}

TEST_F(MainWindowTest, AFailedConnectionTestLeavesOnlyWhatIsInstalledToChange)
{
    Install({kAnimals});
    OfferAnimalsUpdate();
    Answers answers;
    Show();
    Click(Categories(), CategoryRow(kSounds));
    Click(Updates(), UpdateRow(kAnimals));
    // The source turns out to be a server that no longer answers.
    const CAtlString url(L"http://127.0.0.1:9/sample-collection");
    controller->SetSource(url);
    window->OnProxyOptions();

    EXPECT_EQ(QStringList{"ProxyAuth"}, answers.others);
    EXPECT_TRUE(window->IsOffline());
    ASSERT_EQ(1, answers.boxes.size());
    EXPECT_TRUE(answers.boxes.front().startsWith("Could not download the file:\n" + url.ToQString()));
    EXPECT_EQ(std::vector<int>({0, 0, 0}), Actions());
    EXPECT_FALSE(Next()->isEnabled());
    EXPECT_FALSE(CategoryRow(kSounds)->flags().testFlag(Qt::ItemIsEnabled));
    EXPECT_TRUE(CategoryRow(kAnimals)->flags().testFlag(Qt::ItemIsEnabled));
    EXPECT_TRUE(UpdateRow(kAnimals)->isHidden() || !UpdateRow(kAnimals)->flags().testFlag(Qt::ItemIsEnabled));
}

TEST_F(MainWindowTest, ACancelDuringTheRunIsToldAndLeavesARecordOfWhatWasDone)
{
    // Animals, the first category, carries enough bulk that the cancel lands before the others.
    std::string bulk;
    for (int i = 0; i < 40; ++i) {
        std::string bytes(256 * 1024, '\0');
        unsigned state = 2166136261u + static_cast<unsigned>(i);
        for (char& c : bytes)
            c = static_cast<char>((state = state * 1664525u + 1013904223u) >> 24);
        const std::string n = std::to_string(i);
        WritePackageZip(source, "bulk" + n + ".zip", {"pkg.bulk" + n, "1.0", "bulk" + n + ".bin", bytes});
        bulk += "<file id=\"pkg.bulk" + n + "\" version=\"1.0\">bulk" + n + ".zip</file>";
    }
    std::string document = ReadFile(source + "/gallery_categories.xml");
    document.insert(document.find("animals/birds.zip</file>") + 24, bulk);
    ASSERT_TRUE(WriteFile(source + "/gallery_categories.xml", document));

    Answers answers;
    answers.cancelRun = true;
    Show();
    Click(Categories(), Categories()->topLevelItem(0));
    EXPECT_EQ(0, NextToExit());

    EXPECT_EQ(QStringList{"The Gallery changes have been canceled."}, answers.boxes);
    const std::vector<bool> installed = Installed();
    EXPECT_NE(std::vector<bool>({true, true, true}), installed);
    EXPECT_EQ(installed, Recorded());
}
