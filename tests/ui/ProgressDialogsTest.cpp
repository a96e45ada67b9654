// The progress dialogs over the real engine: the sample collection and a copy of its source,
// installed into a gallery folder in the scratch home.

#include "configuration/CConfiguration.h"
#include "installation/CGalleryCategory.h"
#include "installation/CGalleryInstallation.h"
#include "installation/CInstallationController.h"
#include "ui/ProgressDlg.h"
#include "installation/QtInstallationObserver.h"
#include "ui/ReadProgressDlg.h"
#include "support/TestEnvironment.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QLabel>
#include <QScreen>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

#include <filesystem>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

struct Seen {
    QString action, item, file;
    int bar;
    bool onGuiThread;
};

struct ProgressDialogs : ::testing::Test {
    std::string source = MakeScratchDir("source");
    std::string gallery = MakeScratchDir("gallery");
    std::shared_ptr<CConfiguration> configuration = std::make_shared<CConfiguration>();
    std::shared_ptr<CInstallationController> controller;

    void SetUp() override
    {
        fs::copy(std::string(CURATOOL_SOURCE_DIR) + "/samples/source", source, fs::copy_options::recursive);
        ASSERT_TRUE(configuration->OpenCollectionDirectory(CAtlString(CURATOOL_SOURCE_DIR "/samples/collection")));
        configuration->SetInstallDirectory(CZoltaDirectoryPath(gallery.c_str()));
        controller = std::make_shared<CInstallationController>(configuration);
    }

    // Opens the gallery with every category chosen for install.
    bool OpenAll(IGalleryInstallationObserver* observer)
    {
        if (!controller->OpenInstallation(CZoltaDirectoryPath(gallery.c_str()), CAtlString(source.c_str()), observer,
                                          false))
            return false;
        for (int i = 0; i < controller->GetInstallation()->CategoryCount(); ++i)
            controller->GetInstallation()->Category(i)->SetAction(eGalleryCategoryActionInstall);
        return true;
    }
};

TEST_F(ProgressDialogs, ARunUpdatesTheWindowThroughTheQueuedSignalAndFinishCloses)
{
    ProgressDlg dialog(controller);
    std::vector<Seen> seen;
    // Connected after the dialog's own slot, so each entry shows what that slot has just set.
    QObject::connect(
        static_cast<QtInstallationObserver*>(dialog.GetObserver()), &QtInstallationObserver::ProgressSignal, &dialog,
        [&] {
            seen.push_back({dialog.labelAction->text(), dialog.labelCurrentItem->text(),
                            dialog.labelCurrentFile->text(), dialog.progressBarTotal->value(),
                            QThread::currentThread() == dialog.thread()});
        },
        Qt::QueuedConnection);
    dialog.show();
    ASSERT_TRUE(OpenAll(dialog.GetObserver()));
    ASSERT_TRUE(controller->RunSelection(dialog.GetObserver()));
    QCoreApplication::processEvents();

    ASSERT_GE(seen.size(), 2u);
    bool sawInstalling = false;
    for (size_t i = 0; i < seen.size(); ++i) {
        EXPECT_TRUE(seen[i].onGuiThread);
        EXPECT_GE(seen[i].bar, i ? seen[i - 1].bar : 0);
        EXPECT_FALSE(seen[i].file.contains('/')) << seen[i].file.toStdString();
        EXPECT_TRUE(seen[i].action != "Installing..." || !seen[i].item.isEmpty());
        sawInstalling |= seen[i].action == "Installing...";
    }
    EXPECT_TRUE(sawInstalling);
    EXPECT_GT(seen.back().bar, 0);

    // Closing by the title bar does nothing, before and after the end.
    QCloseEvent close;
    QCoreApplication::sendEvent(&dialog, &close);
    EXPECT_FALSE(close.isAccepted());
    QTimer::singleShot(0, &dialog, [&] {
        EXPECT_EQ("Finish", dialog.cancelButton->text());
        EXPECT_EQ("The Gallery changes are complete.", dialog.labelAction->text());
        EXPECT_TRUE(dialog.labelCurrentFile->text().isEmpty());
        EXPECT_EQ(dialog.progressBarTotal->maximum(), dialog.progressBarTotal->value());
        QTest::keyClick(&dialog, Qt::Key_Escape);
        EXPECT_TRUE(dialog.isVisible());
        QTest::mouseClick(dialog.cancelButton, Qt::LeftButton);
    });
    dialog.Finish();
    EXPECT_EQ(QDialog::Accepted, dialog.result());
    EXPECT_FALSE(dialog.isVisible());
}

TEST_F(ProgressDialogs, CancelStopsTheEngineOnceAndItsTextStands)
{
    ProgressDlg dialog(controller);
    dialog.show();
    ASSERT_TRUE(OpenAll(dialog.GetObserver()));
    QTest::mouseClick(dialog.cancelButton, Qt::LeftButton);
    QTest::mouseClick(dialog.cancelButton, Qt::LeftButton);
    EXPECT_TRUE(controller->GetInstallation()->IsCancelled());
    EXPECT_EQ("Canceled...", dialog.labelAction->text());
    ASSERT_TRUE(controller->RunSelection(dialog.GetObserver()));
    QCoreApplication::processEvents();
    EXPECT_EQ("Canceled...", dialog.labelAction->text());
    EXPECT_FALSE(fs::exists(gallery + "/imsmanifest.xml"));
    EXPECT_TRUE(dialog.isVisible());

    QTimer::singleShot(0, &dialog, [&] {
        EXPECT_EQ("The Gallery changes are complete.", dialog.labelAction->text());
        dialog.cancelButton->click();
    });
    dialog.Finish();
    EXPECT_FALSE(dialog.isVisible());
}

TEST_F(ProgressDialogs, TheReadingWindowStandsWhileTheGalleryIsRead)
{
    ReadProgressDlg dialog(configuration);
    const QLabel* action = dialog.findChild<QLabel*>("labelAction");
    ASSERT_TRUE(action);

    std::vector<std::pair<QString, bool>> seen;
    QObject::connect(
        static_cast<QtInstallationObserver*>(dialog.GetObserver()), &QtInstallationObserver::ProgressSignal, &dialog,
        [&] { seen.emplace_back(action->text(), dialog.isVisible()); }, Qt::QueuedConnection);
    dialog.ShowCentred();
    EXPECT_EQ(dialog.screen()->availableGeometry().center(), dialog.frameGeometry().center());
    ASSERT_TRUE(controller->OpenInstallation(CZoltaDirectoryPath(gallery.c_str()), CAtlString(source.c_str()),
                                             dialog.GetObserver(), false));
    dialog.hide();
    QCoreApplication::processEvents();

    ASSERT_FALSE(seen.empty());
    EXPECT_EQ("Reading...", seen.front().first);
    EXPECT_TRUE(seen.front().second);
    QCloseEvent close;
    QCoreApplication::sendEvent(&dialog, &close);
    EXPECT_FALSE(close.isAccepted());

    // Removal has no text in this window.
    dialog.ProgressSlot(eGalleryInstallationProgressUninstalling, CAtlString(), CAtlString(), 0, 0);
    EXPECT_TRUE(action->text().isEmpty());
}

}  // namespace
