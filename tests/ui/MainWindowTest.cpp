// The main window over the real engine: a copy of the bundled sample collection and source, a
// gallery folder in the test's scratch tree, and boxes answered by a timer that looks for the
// active modal window.

#include "CConfiguration.h"
#include "CGalleryCategory.h"
#include "CGalleryInstallation.h"
#include "CInstallationController.h"
#include "InstalledXmlWriter.h"
#include "MainWindow.h"
#include "ProxyHandler.h"
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
            message->done(box);
        }
        else if (auto* dialog = qobject_cast<QFileDialog*>(modal))
        {
            others.push_back(dialog->windowTitle());
            if (folder.isEmpty())
                dialog->reject();
            else
            {
                dialog->setDirectory(folder);
                dialog->selectFile(folder);
                QMetaObject::invokeMethod(dialog, "accept");
            }
        }
        else if (auto* finish = modal->findChild<QPushButton*>(QStringLiteral("cancelButton")))
        {
            if (finish->isVisible() && (finish->text() == QLatin1String("Finish") || cancelRun))
            {
                cancelRun = false;
                finish->click();
            }
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
    std::vector<std::pair<CAtlString, CAtlString>> connectionFailures;

    void SetUp() override
    {
        fs::copy(std::string(CURATOOL_SOURCE_DIR) + "/samples/source", source, fs::copy_options::recursive);
        ASSERT_TRUE(configuration->OpenCollectionDirectory(CAtlString(CURATOOL_SOURCE_DIR "/samples/collection")));
        configuration->SetInstallDirectory(CZoltaDirectoryPath(CAtlString(gallery.c_str())));
        controller = std::make_shared<CInstallationController>(configuration, &proxy);
        writer->SetConfiguration(configuration);
        controller->AddObserver(writer.get());
        ASSERT_TRUE(controller->FindSource(CAtlString(source.c_str())));
    }

    // The window as the work flow makes it, after the first read of the gallery.
    void Show(bool sourceAvailable = true)
    {
        window = std::make_unique<MainWindow>(controller, configuration, &proxy, sourceAvailable);
        window->SetConnectionFailureReport(
            [this](const CAtlString& url, const CAtlString& reason) { connectionFailures.emplace_back(url, reason); });
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
        CInstallationController reader(configuration);
        reader.SetSource(CAtlString(source.c_str()));
        EXPECT_TRUE(reader.Open(nullptr));
        std::vector<bool> installed;
        for (int index : {kAnimals, kMaps, kSounds})
            installed.push_back(reader.GetInstallation()->Category(index)->IsInstalled());
        return installed;
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
