// The window-based steps of the work flows over the real engine and a copy of the sample source.
#include "app/CCmdLineContext.h"
#include "configuration/CConfiguration.h"
#include "installation/CGalleryCategory.h"
#include "installation/CGalleryInstallation.h"
#include "installation/CInstallationController.h"
#include "app/CWorkFlow.h"
#include "support/ModalAnswerer.h"
#include "ui/Output.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

class WindowWorkFlow : public ::testing::Test {
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
        ModalAnswerer answers;
        answers.folder = choose ? QString::fromStdString(chosen) : QString();

        EXPECT_EQ(choose, CWorkFlow::EnsureWritableDestination(m_environment));
        EXPECT_EQ(QStringList{Output::GetTranslated(Output::eNoWritePermission, blocked.c_str()) + "\n" +
                              Output::GetTranslated(Output::eSelectAnotherDirectory)},
                  answers.boxes);
        // A new folder is read at once: the gallery state is the one there.
        EXPECT_EQ(choose ? chosen : blocked, Destination());
        EXPECT_EQ("not a folder", ReadFile(blocked));
    }
}

TEST_F(WindowWorkFlow, UninstallWithDialogRemovesTheGalleryAndItsEntry)
{
    const std::string gallery = MakeScratchDir("gallery");
    SetDestination(gallery);
    ASSERT_TRUE(m_configuration->StoreConfiguration() && m_configuration->ComposeRepositoryEntry() &&
                m_configuration->Register());
    CInstallationController& controller = *m_environment.controller;
    ASSERT_TRUE(controller.Open(nullptr));
    for (int index = 0; index < controller.GetInstallation()->CategoryCount(); ++index)
        controller.GetInstallation()->Category(index)->SetAction(eGalleryCategoryActionInstall);
    ASSERT_TRUE(controller.Run(nullptr));
    controller.Close();
    ASSERT_TRUE(Exists(gallery + "/imsmanifest.xml"));

    auto installed = std::make_shared<CConfiguration>();
    ASSERT_TRUE(installed->OpenInstalled(CAtlString(L"5a0f3c2e-8d41-4b6a-9c57-2e1d7b9f0a31")));
    ModalAnswerer answers;
    EXPECT_TRUE(CWorkFlow::UninstallWithDialog(m_context, installed, true, nullptr));

    EXPECT_TRUE(answers.boxes.isEmpty()) << answers.boxes.join("|").toStdString();
    EXPECT_FALSE(Exists(gallery));
    EXPECT_TRUE(CConfiguration::InstalledGalleries().empty());
    // Gone means gone: a second removal finds nothing and says so.
    EXPECT_FALSE(CWorkFlow::UninstallWithDialog(m_context, installed, true, nullptr));
    EXPECT_EQ(QStringList{Output::GetTranslated(Output::eCouldNotLoadConfiguration)}, answers.boxes);
}

}  // namespace
