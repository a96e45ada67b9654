// The window-based steps of the work flows over the real engine and a copy of the sample source;
// the boxes and folder dialogs they open are answered by a timer that looks for the active modal
// window.
#include "CCmdLineContext.h"
#include "CConfiguration.h"
#include "CGalleryCategory.h"
#include "CGalleryInstallation.h"
#include "CInstallationController.h"
#include "CWorkFlow.h"
#include "Output.h"
#include "TestEnvironment.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>

#include <gtest/gtest.h>

#include <filesystem>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

const wchar_t kGalleryGuid[] = L"5a0f3c2e-8d41-4b6a-9c57-2e1d7b9f0a31";

// Message boxes get Ok; folder dialogs get `folder`, or are canceled when it is empty.
struct Answers
{
    QString folder;
    QStringList boxes;
    QTimer timer;

    Answers()
    {
        timer.setInterval(10);
        QObject::connect(&timer, &QTimer::timeout, [this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (auto* box = qobject_cast<QMessageBox*>(modal)) {
                boxes << box->text();
                box->button(QMessageBox::Ok)->click();
            } else if (auto* dialog = qobject_cast<QFileDialog*>(modal)) {
                if (folder.isEmpty()) {
                    dialog->reject();
                } else {
                    // Typed as the name, whatever the dialog started from; the accept comes after
                    // this slot, since it may open a box of its own.
                    dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(folder);
                    QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
                }
            }
        });
        timer.start();
    }
};

class WindowWorkFlow : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Output::Initialize();
        fs::copy(CURATOOL_SOURCE_DIR "/samples/source", m_source, fs::copy_options::recursive);
        ASSERT_TRUE(m_configuration->OpenCollectionDirectory(CAtlString(CURATOOL_SOURCE_DIR "/samples/collection")));
        m_environment = CWorkFlow::MakeEnvironment(m_context, m_configuration);
        ASSERT_TRUE(m_environment.controller->FindSource(CAtlString(m_source.c_str())));
    }

    void SetDestination(const std::string& path)
    {
        m_configuration->SetInstallDirectory(CZoltaDirectoryPath(CAtlString(path.c_str())));
    }

    std::string Destination() const { return m_environment.controller->GetDestination().ToQString().toStdString(); }

    std::string m_source = MakeScratchDir("source");
    CCmdLineContext m_context;
    std::shared_ptr<CConfiguration> m_configuration = std::make_shared<CConfiguration>();
    CWorkFlowEnvironment m_environment;
};

TEST_F(WindowWorkFlow, AnUnwritableDestinationOfANewGalleryCanBeChangedOrGivenUp)
{
    const std::string blocked = MakeScratchDir("blocked") + "/a-file";
    ASSERT_TRUE(WriteFile(blocked, "not a folder"));
    const std::string chosen = MakeScratchDir("chosen");

    for (const bool choose : {false, true}) {
        SetDestination(blocked);
        Answers answers;
        answers.folder = choose ? QString::fromStdString(chosen) : QString();

        EXPECT_EQ(choose, CWorkFlow::EnsureWritableDestination(m_environment));
        ASSERT_EQ(1, answers.boxes.size());
        EXPECT_EQ(Output::GetTranslated(Output::eNoWritePermission, blocked.c_str()) + "\n" +
                      Output::GetTranslated(Output::eSelectAnotherDirectory),
                  answers.boxes.front());
        // A new folder is read at once: the gallery state is the one there.
        EXPECT_EQ(choose ? chosen : blocked, Destination());
        EXPECT_EQ("not a folder", ReadFile(blocked));
    }
}

TEST_F(WindowWorkFlow, UninstallWithDialogRemovesTheGalleryAndItsEntry)
{
    const std::string gallery = MakeScratchDir("gallery");
    SetDestination(gallery);
    ASSERT_TRUE(m_configuration->StoreConfiguration());
    ASSERT_TRUE(m_configuration->ComposeRepositoryEntry());
    ASSERT_TRUE(m_configuration->Register());
    CInstallationController& controller = *m_environment.controller;
    ASSERT_TRUE(controller.Open(nullptr));
    for (int index = 0; index < controller.GetInstallation()->CategoryCount(); ++index)
        controller.GetInstallation()->Category(index)->SetAction(eGalleryCategoryActionInstall);
    ASSERT_TRUE(controller.Run(nullptr));
    controller.Close();
    ASSERT_TRUE(Exists(gallery + "/imsmanifest.xml"));

    auto installed = std::make_shared<CConfiguration>();
    ASSERT_TRUE(installed->OpenInstalled(CAtlString(kGalleryGuid)));
    Answers answers;
    EXPECT_TRUE(CWorkFlow::UninstallWithDialog(m_context, installed, true, nullptr));

    EXPECT_TRUE(answers.boxes.isEmpty()) << answers.boxes.join("|").toStdString();
    EXPECT_FALSE(Exists(gallery));
    EXPECT_TRUE(CConfiguration::InstalledGalleries().empty());
    // Gone means gone: a second removal finds nothing and says so.
    EXPECT_FALSE(CWorkFlow::UninstallWithDialog(m_context, installed, true, nullptr));
    EXPECT_EQ(QStringList{Output::GetTranslated(Output::eCouldNotLoadConfiguration)}, answers.boxes);
}

}  // namespace
