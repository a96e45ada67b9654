// A German desktop: the program's catalogue, as built next to the real binary, turns the texts of
// the windows German while standard error stays English; a collection's own catalogue comes from
// the collection's folder. The language is read from LANG once per process, so the checks run in
// a child of this test started under LANG=de_DE.UTF-8.

#include "E2EGallery.h"
#include "TestEnvironment.h"

#include "CApplicationFactory.h"
#include "CPasswordDialog.h"
#include "LanguageSettings.h"
#include "Output.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

using namespace curatool::test;

namespace {

const char kChildMarker[] = "CURATOOL_GERMAN_CHILD";
const char kTestName[] = "TranslationE2E.AGermanDesktopSeesGermanWindowsWhileStandardErrorStaysEnglish";

// The folder of the real program, where its catalogues are built.
QString ProgramFolder()
{
    return QFileInfo(QStringLiteral(CURATOOL_BINARY)).absolutePath();
}

// Shows code 1 in a box (answered from a timer); gives the box's title and text and what went to
// standard error.
struct Shown
{
    QString title;
    QString text;
    std::string err;
};
Shown ShowError()
{
    Shown shown;
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [&] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            shown.title = box->windowTitle();
            shown.text = box->text();
            box->button(QMessageBox::Ok)->click();
        }
    });
    closer.start(20);
    // The offscreen platform's own chatter is not the program's.
    const QtMessageHandler previous = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    testing::internal::CaptureStderr();
    Output::Error(Output::eNoWritePermission, "/srv/g", true);
    shown.err = testing::internal::GetCapturedStderr();
    qInstallMessageHandler(previous);
    closer.stop();
    return shown;
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
        std::filesystem::copy_file(ProgramFolder().toStdString() + "/Languages/de/CuratoolId.qm",
                                   collection + "/Languages/de/CuratoolId.qm");
        CApplicationFactory factory;
        ASSERT_TRUE(factory.LoadConfigurationPath(CAtlString(QString::fromStdString(collection))));
        factory.InstallTranslator(qApp);
        const Shown shown = ShowError();
        EXPECT_EQ(german, shown.text);
        EXPECT_EQ(english, shown.err);
    }
    EXPECT_EQ(QStringLiteral("You must have write permissions for the destination directory:\n%1"),
              Output::GetTranslated(Output::eNoWritePermission))
        << "the collection's catalogue goes with its factory";

    // The program's own catalogue, from where start-up looks beside the program.
    ASSERT_TRUE(LoadCatalogue(ProgramFolder(), QStringLiteral("CuratoolId"), true));
    const Shown shown = ShowError();
    EXPECT_EQ(QStringLiteral("Curatool"), shown.title);
    EXPECT_EQ(german, shown.text);
    EXPECT_EQ(english, shown.err);

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
