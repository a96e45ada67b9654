// A German desktop sees German windows while standard error stays English. LANG is read once per
// process, so the checks run in a child of this test started under LANG=de_DE.UTF-8.

#include "support/E2EGallery.h"
#include "support/TestEnvironment.h"

#include "app/CApplicationFactory.h"
#include "ui/CPasswordDialog.h"
#include "foundation/LanguageSettings.h"
#include "support/ModalAnswerer.h"
#include "ui/Output.h"

#include <QFileInfo>
#include <QLabel>
#include <QPushButton>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

using namespace curatool::test;

namespace {

const char kChildMarker[] = "CURATOOL_GERMAN_CHILD";
const char kTestName[] = "TranslationE2E.AGermanDesktopSeesGermanWindowsWhileStandardErrorStaysEnglish";

// The folder of the real program, where its catalogues are built.
const QString kProgramFolder = QFileInfo(QStringLiteral(CURATOOL_BINARY)).absolutePath();

// Shows code 1 in a box (answered by the caller's ModalAnswerer); gives what went to standard error.
std::string ShowError()
{
    // The offscreen platform's own chatter is not the program's.
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    testing::internal::CaptureStderr();
    Output::Error(Output::eNoWritePermission, "/srv/g", true);
    const std::string err = testing::internal::GetCapturedStderr();
    qInstallMessageHandler(previous);
    return err;
}

void CheckInGerman()
{
    ASSERT_EQ(QStringLiteral("de"), GetUILanguage(true));
    Output::Initialize();
    const std::string english = "You must have write permissions for the destination directory:\n/srv/g\n";
    const QString german = QStringLiteral("Sie benötigen Schreibrechte für den Zielordner:\n/srv/g");

    // A collection that brings its own catalogue in Languages/<language> of its folder.
    {
        const std::string collection = MakeScratchDir("collection");
        std::filesystem::copy(CURATOOL_SOURCE_DIR "/samples/collection", collection,
                              std::filesystem::copy_options::recursive);
        std::filesystem::create_directories(collection + "/Languages/de");
        std::filesystem::copy_file(kProgramFolder.toStdString() + "/Languages/de/CuratoolId.qm",
                                   collection + "/Languages/de/CuratoolId.qm");
        CApplicationFactory factory;
        ASSERT_TRUE(factory.LoadConfigurationPath(CAtlString(QString::fromStdString(collection))));
        factory.InstallTranslator(qApp);
        ModalAnswerer answers;
        EXPECT_EQ(english, ShowError());
        EXPECT_EQ(QStringList{german}, answers.boxes);
    }
    EXPECT_EQ(QStringLiteral("You must have write permissions for the destination directory:\n%1"),
              Output::GetTranslated(Output::eNoWritePermission))
        << "the collection's catalogue goes with its factory";

    // The program's own catalogue, from where start-up looks beside the program.
    ASSERT_TRUE(LoadCatalogue(kProgramFolder, QStringLiteral("CuratoolId"), true));
    ModalAnswerer answers;
    EXPECT_EQ(english, ShowError());
    EXPECT_EQ(QStringList{"Curatool"}, answers.titles);
    EXPECT_EQ(QStringList{german}, answers.boxes);

    // Every coded message has its German text (the title is the name in both languages).
    for (int code = 0; code <= 13; ++code) {
        if (code != Output::eTitle) {
            EXPECT_NE(QString::fromUtf8(Output::GetText(code).GetString()), Output::GetTranslated(code)) << code;
        }
    }
    EXPECT_EQ(QStringLiteral("Für die Anwendung ist ein Update verfügbar. Klicken Sie auf OK, um es zu starten."),
              Output::GetTranslated(Output::eUpdateAvailable));

    // A window built from its form.
    QString user, password;
    CPasswordDialog dialog(nullptr, user, password, false);
    EXPECT_EQ(QStringLiteral("Authentifizierung"), dialog.windowTitle());
    EXPECT_EQ(QStringLiteral("Benutzername:"), dialog.findChild<QLabel*>("labelUser")->text());
    EXPECT_EQ(QStringLiteral("Passwort:"), dialog.findChild<QLabel*>("labelPassword")->text());
    EXPECT_EQ(QStringLiteral("Abbrechen"), dialog.findChild<QPushButton*>("buttonCancel")->text());
}

TEST(TranslationE2E, AGermanDesktopSeesGermanWindowsWhileStandardErrorStaysEnglish)
{
    if (std::getenv(kChildMarker)) {
        CheckInGerman();
        return;
    }
    RunOptions options;
    options.setEnvironment["LANG"] = "de_DE.UTF-8";
    options.setEnvironment[kChildMarker] = "1";
    options.unsetEnvironment = {"LC_ALL", "LC_MESSAGES", "LANGUAGE", "KDE_FULL_SESSION"};
    BinaryProcess child(QCoreApplication::applicationFilePath().toStdString(),
                        {std::string("--gtest_filter=") + kTestName}, options);
    ASSERT_TRUE(child.Started());
    const RunResult r = child.Wait();
    EXPECT_EQ(0, r.exitCode) << r.out << r.err;
    EXPECT_NE(std::string::npos, r.out.find("[  PASSED  ] 1 test")) << r.out;
}

}  // namespace
