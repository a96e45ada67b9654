// The main window over the real engine: a copy of the bundled sample collection and source, a
// gallery folder in the test's scratch tree, and boxes answered by a timer that looks for the
// active modal window.

#include "CConfiguration.h"
#include "CGalleryCategory.h"
#include "CGalleryInstallation.h"
#include "CInstallationController.h"
#include "InstalledXmlWriter.h"
#include "MainWindow.h"
#include "Output.h"
#include "ProxyAuth.h"
#include "ProxyHandler.h"
#include "GallerySourceBuilder.h"
#include "TestEnvironment.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTimer>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

enum { kAnimals, kMaps, kSounds };
const char* const kTitles[] = {"Animals", "Maps", "Sounds"};
const char* const kGuids[] = {"0c9b8f1e-3a52-4d1c-8e6f-7b2a4c9d1e01", "0c9b8f1e-3a52-4d1c-8e6f-7b2a4c9d1e02",
                              "0c9b8f1e-3a52-4d1c-8e6f-7b2a4c9d1e03"};

// Answers whatever modal window comes up while an event loop runs: message boxes with `box`,
// folder dialogs with `folder`, and the progress dialog's Finish (or, once, its Cancel).
struct ModalAnswers
{
    QMessageBox::StandardButton box = QMessageBox::Yes;
    QString folder;
    bool cancelRun = false;
    std::vector<QString> boxes;
    std::vector<QString> others;
    QTimer timer;

    ModalAnswers()
    {
        timer.setInterval(10);
        QObject::connect(&timer, &QTimer::timeout, [this] { Answer(); });
        timer.start();
    }

    void Answer()
    {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || !modal->isVisible())
            return;
        if (auto* message = qobject_cast<QMessageBox*>(modal))
        {
            boxes.push_back(message->text());
            if (QAbstractButton* button = message->button(box))
                button->click();
            else
                message->reject();
        }
        else if (auto* dialog = qobject_cast<QFileDialog*>(modal))
        {
            others.push_back(dialog->windowTitle());
            if (folder.isEmpty())
                dialog->reject();
            else
            {
                // Typed as the name, whatever the dialog started from; the accept comes after
                // this slot, since it may open a box of its own.
                dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(folder);
                QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
            }
        }
        else if (auto* finish = modal->objectName() == QLatin1String("ProgressDialog")
                                    ? modal->findChild<QPushButton*>(QStringLiteral("cancelButton"))
                                    : nullptr)
        {
            if (finish->isVisible() && (finish->text() == QLatin1String("Finish") || cancelRun))
            {
                cancelRun = false;
                finish->click();
            }
        }
        else if (auto* dialog = qobject_cast<QDialog*>(modal))
        {
            others.push_back(dialog->objectName());
            dialog->accept();
        }
    }
};

struct MainWindowTest : ::testing::Test
{
    std::string source = MakeScratchDir("source");
    std::string gallery = MakeScratchDir("gallery") + "/ZOLTA Sample Collection";
    std::shared_ptr<CConfiguration> configuration = std::make_shared<CConfiguration>();
    std::shared_ptr<CInstallationController> controller;
    std::shared_ptr<InstalledXmlWriter> writer = std::make_shared<InstalledXmlWriter>();
    ProxyHandler proxy;
    std::unique_ptr<MainWindow> window;

    void SetUp() override
    {
        Output::Initialize();  // as start-up does: the texts of the coded messages
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
    void Show(bool sourceAvailable = true)
    {
        window = std::make_unique<MainWindow>(controller, configuration, &proxy, sourceAvailable);
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
        const std::string document = source + "/gallery_categories.xml";
        std::string text = ReadFile(document);
        const std::string old = "id=\"zsc.pkg.animals.birds\" version=\"1.0\"";
        const auto at = text.find(old);
        ASSERT_NE(std::string::npos, at);
        text.replace(at, old.size(), "id=\"zsc.pkg.animals.birds\" version=\"1.1\"");
        ASSERT_TRUE(WriteFile(document, text));
    }

    template <class Widget>
    Widget* Find(const char* name) const
    {
        auto* widget = window->findChild<Widget*>(QLatin1String(name));
        EXPECT_TRUE(widget) << name;
        return widget;
    }

    QTreeWidgetItem* CategoryRow(int index) const { return Find<QTreeWidget>("treeWidgetCategories")->topLevelItem(0)->child(index); }
    QTreeWidgetItem* UpdateRow(int index) const { return Find<QTreeWidget>("treeWidgetUpdates")->topLevelItem(0)->child(index); }

    // A click on a row as the user makes it, in the middle of its first column.
    void Click(QTreeWidget* tree, QTreeWidgetItem* item)
    {
        tree->scrollToItem(item);
        const QRect rect = tree->visualItemRect(item);
        ASSERT_TRUE(rect.isValid());
        const QPointF at = rect.center();
        const QPointF global = tree->viewport()->mapToGlobal(at);
        for (QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease})
        {
            QMouseEvent event(type, at, global, Qt::LeftButton,
                              type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
            QApplication::sendEvent(tree->viewport(), &event);
        }
    }

    int Action(int index) const { return controller->GetInstallation()->Category(index)->GetAction(); }

    QStringList Summary() const
    {
        QStringList shown;
        for (int row = 0; row < Find<QListWidget>("listWidgetActions")->count(); ++row)
            if (!Find<QListWidget>("listWidgetActions")->item(row)->isHidden())
                shown << Find<QListWidget>("listWidgetActions")->item(row)->text();
        return shown;
    }

    QPushButton* Next() const { return Find<QDialogButtonBox>("buttonBox")->button(QDialogButtonBox::Ok); }

    // What is installed now, read afresh from the gallery folder.
    std::vector<bool> Installed()
    {
        std::vector<bool> installed;
        EXPECT_TRUE(controller->Open(nullptr));
        if (controller->GetInstallation())
            for (int index : {kAnimals, kMaps, kSounds})
                installed.push_back(controller->GetInstallation()->Category(index)->IsInstalled());
        return installed;
    }

    // Runs `action` inside the application's event loop, as the program does; the result is the
    // code the window ends the application with (-1 when it never did).
    int RunToExit(const std::function<void()>& action)
    {
        QTimer::singleShot(0, action);
        QTimer::singleShot(20000, [] { QCoreApplication::exit(-1); });
        return QCoreApplication::exec();
    }

    // The gallery as the authoring application finds it registered.
    void Register()
    {
        ASSERT_TRUE(configuration->StoreConfiguration());
        configuration->ComposeRepositoryEntry();
        ASSERT_TRUE(configuration->Register());
    }

    std::string UpdateInfo() const { return ReadFile(gallery + "/Uninstall/updateinfo.xml"); }
};

}  // namespace

TEST_F(MainWindowTest, FirstInstallShowsEveryCategoryAndNothingToDo)
{
    Show();
    EXPECT_EQ(QStringLiteral("ZOLTA Sample Collection"), window->windowTitle());
    EXPECT_EQ(QStringLiteral("Next >>"), Next()->text());
    EXPECT_EQ(QStringLiteral("About"), Find<QDialogButtonBox>("buttonBox")->button(QDialogButtonBox::Help)->text());
    EXPECT_EQ(QStringLiteral("Connection Options"), Find<QDialogButtonBox>("buttonBox")->button(QDialogButtonBox::Reset)->text());
    EXPECT_FALSE(Find<QDialogButtonBox>("buttonBox")->button(QDialogButtonBox::Reset)->isEnabled()) << "a local source";
    EXPECT_FALSE(Next()->isEnabled());
    EXPECT_TRUE(Find<QPushButton>("buttonBrowse")->isEnabled());
    EXPECT_EQ(QString::fromStdString(gallery), Find<QLineEdit>("lineEditLocation")->text());

    QTreeWidgetItem* root = Find<QTreeWidget>("treeWidgetCategories")->topLevelItem(0);
    EXPECT_EQ(QStringLiteral("All Categories"), root->text(0));
    ASSERT_EQ(3, root->childCount());
    for (int index : {kAnimals, kMaps, kSounds})
    {
        EXPECT_EQ(QString::fromLatin1(kTitles[index]), CategoryRow(index)->text(0));
        EXPECT_EQ(Qt::Unchecked, CategoryRow(index)->checkState(0));
    }
    QTreeWidgetItem* updates = Find<QTreeWidget>("treeWidgetUpdates")->topLevelItem(0);
    EXPECT_EQ(QStringLiteral("No updates available at this time"), updates->text(0));
    EXPECT_EQ(Qt::NoItemFlags, updates->flags());
    EXPECT_TRUE(Summary().isEmpty()) << "headings without items stay hidden";
    EXPECT_EQ(3, Find<QListWidget>("listWidgetActions")->count()) << "and have no separator";

    // The highlight bars: the labels' window colour is the highlight colour.
    const QPalette palette = Find<QLabel>("labelUpdates")->palette();
    EXPECT_EQ(palette.color(QPalette::Highlight), palette.color(QPalette::Window));
    EXPECT_EQ(palette.color(QPalette::HighlightedText), palette.color(QPalette::WindowText));
}

TEST_F(MainWindowTest, ClicksAndTheSpaceKeyOnTheTrees)
{
    Show();
    Click(Find<QTreeWidget>("treeWidgetCategories"), CategoryRow(kSounds));
    Click(Find<QTreeWidget>("treeWidgetCategories"), CategoryRow(kMaps));
    EXPECT_EQ(eGalleryCategoryActionInstall, Action(kSounds));
    EXPECT_EQ(eGalleryCategoryActionInstall, Action(kMaps));
    EXPECT_EQ(QStringList({"Categories to Add", "  - Maps", "  - Sounds", ""}), Summary());
    EXPECT_TRUE(Next()->isEnabled());

    // The space key neither toggles nor moves.
    Find<QTreeWidget>("treeWidgetCategories")->setFocus();
    Find<QTreeWidget>("treeWidgetCategories")->setCurrentItem(CategoryRow(kAnimals));
    for (QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease})
    {
        QKeyEvent key(type, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "));
        QApplication::sendEvent(Find<QTreeWidget>("treeWidgetCategories"), &key);
    }
    EXPECT_EQ(eGalleryCategoryActionNone, Action(kAnimals));
    EXPECT_EQ(CategoryRow(kAnimals), Find<QTreeWidget>("treeWidgetCategories")->currentItem());

    // A click on the partly checked root clears everything again: nothing to do.
    Click(Find<QTreeWidget>("treeWidgetCategories"), Find<QTreeWidget>("treeWidgetCategories")->topLevelItem(0));
    EXPECT_EQ(eGalleryCategoryActionNone, Action(kSounds));
    EXPECT_TRUE(Summary().isEmpty());
    EXPECT_FALSE(Next()->isEnabled());
    // The row of "No updates" has no flags: a click does nothing.
    Click(Find<QTreeWidget>("treeWidgetUpdates"), Find<QTreeWidget>("treeWidgetUpdates")->topLevelItem(0));
    EXPECT_EQ(QStringLiteral("No updates available at this time"), Find<QTreeWidget>("treeWidgetUpdates")->topLevelItem(0)->text(0));
}

TEST_F(MainWindowTest, NextInstallsTheChosenCategoriesAndEnds)
{
    ModalAnswers answers;
    Show();
    Click(Find<QTreeWidget>("treeWidgetCategories"), CategoryRow(kAnimals));
    Click(Find<QTreeWidget>("treeWidgetCategories"), CategoryRow(kSounds));
    EXPECT_EQ(0, RunToExit([this] { Next()->click(); }));

    EXPECT_FALSE(window->isVisible());
    EXPECT_TRUE(answers.boxes.empty()) << answers.boxes.front().toStdString();
    EXPECT_EQ(std::vector<bool>({true, false, true}), Installed());
    EXPECT_TRUE(Exists(gallery + "/imsmanifest.xml"));
    const std::string info = UpdateInfo();
    EXPECT_NE(std::string::npos, info.find(kGuids[kAnimals])) << info;
    EXPECT_EQ(std::string::npos, info.find(kGuids[kMaps])) << info;
    EXPECT_NE(std::string::npos, info.find(kGuids[kSounds])) << info;
}

TEST_F(MainWindowTest, AnUpdateAndARemovalInOneChange)
{
    Install({kAnimals, kMaps});
    OfferAnimalsUpdate();
    ModalAnswers answers;
    Show();
    EXPECT_FALSE(Find<QPushButton>("buttonBrowse")->isEnabled()) << "installed content can't move";
    EXPECT_EQ(QStringLiteral("All Updates"), Find<QTreeWidget>("treeWidgetUpdates")->topLevelItem(0)->text(0));
    EXPECT_FALSE(UpdateRow(kAnimals)->isHidden());
    EXPECT_TRUE(UpdateRow(kMaps)->isHidden());

    Click(Find<QTreeWidget>("treeWidgetUpdates"), UpdateRow(kAnimals));
    Click(Find<QTreeWidget>("treeWidgetCategories"), CategoryRow(kMaps));
    EXPECT_EQ(QStringList({"Categories to Update", "  - Animals", "", "Categories to Remove", "  - Maps", ""}),
              Summary());
    EXPECT_EQ(0, RunToExit([this] { Next()->click(); }));

    EXPECT_TRUE(answers.boxes.empty()) << "Animals stays, so nothing more is asked";
    EXPECT_EQ(std::vector<bool>({true, false, false}), Installed());
    const std::string info = UpdateInfo();
    EXPECT_NE(std::string::npos, info.find(kGuids[kAnimals])) << info;
    EXPECT_EQ(std::string::npos, info.find(kGuids[kMaps])) << info;
}

struct RemovingEverything : MainWindowTest, ::testing::WithParamInterface<QMessageBox::StandardButton>
{
};

TEST_P(RemovingEverything, AsksWhetherTheGalleryRecordsGoToo)
{
    const bool keep = GetParam() == QMessageBox::No;
    Install({kMaps});
    Register();
    // As a later start finds it: from the stored copy of the collection.
    ASSERT_TRUE(configuration->OpenInstalled(CAtlString(L"5a0f3c2e-8d41-4b6a-9c57-2e1d7b9f0a31")));
    ASSERT_EQ(QString::fromStdString(gallery), configuration->GetInstallDirectory().ToQString());
    ModalAnswers answers;
    answers.box = GetParam();
    Show();
    Click(Find<QTreeWidget>("treeWidgetCategories"), CategoryRow(kMaps));
    EXPECT_EQ(0, RunToExit([this] { Next()->click(); }));

    ASSERT_EQ(1u, answers.boxes.size());
    EXPECT_EQ(QStringLiteral("Do you also want to delete all the information about this Gallery?"),
              answers.boxes.front());
    EXPECT_EQ(std::vector<bool>({false, false, false}), Installed());
    EXPECT_EQ(keep, !CConfiguration::InstalledGalleries().empty());
    EXPECT_EQ(keep, configuration->GetConfigurationDirectory().GetFile(L"about.html").Exists());
}

INSTANTIATE_TEST_SUITE_P(Answers, RemovingEverything, ::testing::Values(QMessageBox::No, QMessageBox::Yes));

TEST_F(MainWindowTest, ANewFolderKeepsTheCategoriesChosenToAdd)
{
    const std::string elsewhere = MakeScratchDir("elsewhere");
    ModalAnswers answers;
    answers.folder = QString::fromStdString(elsewhere);
    Show();
    Click(Find<QTreeWidget>("treeWidgetCategories"), CategoryRow(kSounds));
    Find<QPushButton>("buttonBrowse")->click();

    EXPECT_EQ(QString::fromStdString(elsewhere), Find<QLineEdit>("lineEditLocation")->text());
    EXPECT_EQ(QString::fromStdString(elsewhere), controller->GetDestination().ToQString());
    EXPECT_EQ(std::vector<int>({0, 0, 1}), std::vector<int>({Action(kAnimals), Action(kMaps), Action(kSounds)}));
    EXPECT_EQ(Qt::Checked, CategoryRow(kSounds)->checkState(0));
    EXPECT_EQ(QStringList({"Categories to Add", "  - Sounds", ""}), Summary());
    EXPECT_TRUE(Next()->isEnabled());

    // A folder dialog that is canceled changes nothing.
    answers.folder.clear();
    Find<QPushButton>("buttonBrowse")->click();
    EXPECT_EQ(QString::fromStdString(elsewhere), controller->GetDestination().ToQString());
    EXPECT_EQ(eGalleryCategoryActionInstall, Action(kSounds));
}

TEST_F(MainWindowTest, AFailedConnectionTestLeavesOnlyWhatIsInstalledToChange)
{
    Install({kAnimals});
    OfferAnimalsUpdate();
    ModalAnswers answers;
    Show();
    Click(Find<QTreeWidget>("treeWidgetCategories"), CategoryRow(kSounds));
    Click(Find<QTreeWidget>("treeWidgetUpdates"), UpdateRow(kAnimals));
    // The source turns out to be a server that no longer answers.
    const CAtlString url(L"http://127.0.0.1:9/sample-collection");
    controller->SetSource(url);
    window->OnProxyOptions();

    EXPECT_EQ(std::vector<QString>({QStringLiteral("ProxyAuth")}), answers.others);
    EXPECT_TRUE(window->IsOffline());
    ASSERT_EQ(1u, answers.boxes.size());
    EXPECT_TRUE(answers.boxes.front().startsWith("Could not download the file:\n" + url.ToQString())) << answers.boxes.front().toStdString();
    EXPECT_EQ(std::vector<int>({0, 0, 0}), std::vector<int>({Action(kAnimals), Action(kMaps), Action(kSounds)}));
    EXPECT_TRUE(Summary().isEmpty());
    EXPECT_FALSE(Next()->isEnabled());
    EXPECT_FALSE(CategoryRow(kSounds)->flags().testFlag(Qt::ItemIsEnabled));
    EXPECT_TRUE(CategoryRow(kAnimals)->flags().testFlag(Qt::ItemIsEnabled));
    EXPECT_TRUE(UpdateRow(kAnimals)->isHidden() || !UpdateRow(kAnimals)->flags().testFlag(Qt::ItemIsEnabled));
    EXPECT_FALSE(Find<QTreeWidget>("treeWidgetCategories")->alternatingRowColors());
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

    ModalAnswers answers;
    answers.cancelRun = true;
    Show();
    Click(Find<QTreeWidget>("treeWidgetCategories"), Find<QTreeWidget>("treeWidgetCategories")->topLevelItem(0));
    EXPECT_EQ(0, RunToExit([this] { Next()->click(); }));

    EXPECT_EQ(std::vector<QString>({QStringLiteral("The Gallery changes have been canceled.")}), answers.boxes);
    const std::vector<bool> installed = Installed();
    EXPECT_NE(std::vector<bool>({true, true, true}), installed);
    const std::string info = UpdateInfo();
    for (int index : {kAnimals, kMaps, kSounds})
        EXPECT_EQ(installed[index], info.find(kGuids[index]) != std::string::npos) << kTitles[index] << info;
}
