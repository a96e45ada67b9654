// The self-update from the question to the restarted program: the update check of a window-based
// start runs in this process over the real fetch from a loopback server, its boxes answered from a
// timer; the installer is a script that records its argument and then starts the real binary with
// it, as a real installer would, and that run carries out the command line kept for it. Also the
// desktop's open-file events reaching the restart's arguments.

#include "E2EGallery.h"
#include "TestEnvironment.h"

#include "CApplicationFactory.h"
#include "CConfiguration.h"
#include "CProgramIdentity.h"
#include "CSelfUpdate.h"
#include "CWorkFlow.h"
#include "GalleryDownloader.h"
#include "Output.h"
#include "QtEventProxy.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QFileOpenEvent>
#include <QMessageBox>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

using namespace curatool::test;

namespace {

// The local document read from a scratch file instead of the program's share folder.
class ScratchUpdate : public CSelfUpdate
{
public:
    ScratchUpdate(const std::string& localFile, std::shared_ptr<IDownloader> downloader)
        : CSelfUpdate(CAtlString(L"CuratoolId.xml"), std::move(downloader)), m_path(localFile)
    {
    }
    CAtlString LocalFilePath() override { return CAtlString(QString::fromStdString(m_path)); }

private:
    std::string m_path;
};

// What the message boxes of one call said; each is answered with `answer` (or its only button).
struct Boxes
{
    QStringList texts;
    QStringList buttons;  // the standard buttons of each box, as "Ok|Cancel"
};

Boxes AnswerBoxes(QMessageBox::StandardButton answer, const std::function<void()>& call)
{
    Boxes boxes;
    QTimer answering;
    QObject::connect(&answering, &QTimer::timeout, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        boxes.texts << box->text();
        QStringList names;
        for (QAbstractButton* button : box->buttons())
            names << button->text().remove(QLatin1Char('&'));
        names.sort();
        boxes.buttons << names.join(QLatin1Char('|'));
        QAbstractButton* chosen = box->button(answer);
        (chosen ? chosen : box->buttons().first())->click();
    });
    answering.start(20);
    call();
    answering.stop();
    return boxes;
}

bool WaitForFile(const std::string& path)
{
    const QDeadlineTimer deadline(60000);
    while (!Exists(path) && !deadline.hasExpired())
        QThread::msleep(50);
    return Exists(path);
}

class SelfUpdateFlow : public E2EGallery
{
protected:
    void SetUp() override
    {
        E2EGallery::SetUp();
        // The arguments are kept where the program itself looks for them.
        CProgramIdentity::Apply();
        Output::Initialize();
        m_published = MakeScratchDir("published");
        // Records its argument, then starts the updated program with it and records how that ended.
        m_record = MakeScratchDir("record") + "/";
        m_installer = "#!/bin/sh\nprintf '%s\\n' \"$@\" > '" + m_record + "arguments'\n'" CURATOOL_BINARY
                      "' \"$1\" -authorized > '" + m_record + "out' 2> '" + m_record + "err'\necho $? > '" +
                      m_record + "code.part' && mv '" + m_record + "code.part' '" + m_record + "code'\n";
        ASSERT_TRUE(WriteFile(m_published + "/setup.sh", m_installer));
        m_local = MakeScratchDir("share") + "/CuratoolId.xml";
        // The program was started for a console install; the restart is to carry that out.
        m_context.rawArguments = QStringList{"--installall", "-configuration", QString::fromStdString(m_collection),
                                             "-source", QString::fromStdString(m_source), "-destination",
                                             QString::fromStdString(m_gallery)};
        m_environment = CWorkFlow::MakeEnvironment(m_context, std::make_shared<CConfiguration>());
    }

    void Publish(int port, const std::string& localExtra, const std::string& remoteExtra) const
    {
        const std::string url = HttpUrl(port, QStringLiteral("/")).toStdString();
        ASSERT_TRUE(WriteFile(m_local, "<Update><Product CurrentVersion=\"1.0.0.0\" RemoteVersionFile=\"update.xml\" "
                                       "RemoteVersionFileURL=\"" + url + "\" " + localExtra + "/></Update>"));
        ASSERT_TRUE(WriteFile(m_published + "/update.xml",
                              "<Update><Product UpdateVersion=\"1.1.0.0\" UpdateInstallFile=\"setup.sh\" "
                              "UpdateArgument=\"--justupdated\" UpdateInstallURL=\"" + url + "\" " + remoteExtra +
                                  "/></Update>"));
    }

    bool Check(QMessageBox::StandardButton answer, Boxes& boxes)
    {
        ScratchUpdate update(m_local, m_environment.downloader);
        bool started = false;
        boxes = AnswerBoxes(answer, [&] { started = CWorkFlow::CheckSelfUpdate(m_environment, update); });
        return started;
    }

    std::string Sha256(const std::string& bytes) const
    {
        return QCryptographicHash::hash(QByteArray::fromStdString(bytes), QCryptographicHash::Sha256)
            .toHex()
            .toStdString();
    }

    std::string m_published;
    std::string m_record;
    std::string m_installer;
    std::string m_local;
    CCmdLineContext m_context;
    CWorkFlowEnvironment m_environment;
};

TEST_F(SelfUpdateFlow, AnAcceptedUpdateStartsTheInstallerAndTheRestartedProgramRunsOnceWithTheKeptArguments)
{
    ServerProcess server;
    ASSERT_TRUE(server.StartStaticServer(QString::fromStdString(m_published)));
    Publish(server.Port(), "", "UpdateInstallSHA256=\"" + Sha256(m_installer) + "\"");

    // From the event loop, as a work flow runs; the update leaves it with 0.
    Boxes boxes;
    bool started = false;
    QTimer::singleShot(0, [&] {
        started = Check(QMessageBox::Ok, boxes);
        if (!started)
            QCoreApplication::exit(1);  // the update did not leave the loop itself
    });
    EXPECT_EQ(0, QCoreApplication::exec());
    EXPECT_TRUE(started);
    EXPECT_EQ(QStringList{"There is an update for the application. Click OK to start."}, boxes.texts);
    EXPECT_EQ(QStringList{"Cancel|OK"}, boxes.buttons);

    ASSERT_TRUE(WaitForFile(m_record + "code")) << "the installer or the restart did not finish";
    EXPECT_EQ("--justupdated\n", ReadFile(m_record + "arguments"));
    EXPECT_EQ("0\n", ReadFile(m_record + "code")) << ReadFile(m_record + "err");
    EXPECT_EQ("Done.\n", ReadFile(m_record + "out"));
    for (const SampleCategory& category : SampleCategories())
        EXPECT_TRUE(HasCategory(m_gallery, category.alias)) << category.alias;

    // The hand-over served that one start: a later --justupdated finds nothing.
    QStringList stored;
    EXPECT_TRUE(CWorkFlow::LoadArguments(stored));
    EXPECT_TRUE(stored.isEmpty()) << stored.join(' ').toStdString();
}

TEST_F(SelfUpdateFlow, ADeclinedOrFailedUpdateStartsNothingAndKeepsNoArguments)
{
    ServerProcess server;
    ASSERT_TRUE(server.StartStaticServer(QString::fromStdString(m_published)));
    struct Case
    {
        const char* name;
        QMessageBox::StandardButton answer;
        std::string remoteExtra;
        QStringList texts;
    };
    const QString question = "There is an update for the application. Click OK to start.";
    const Case cases[] = {
        {"declined", QMessageBox::Cancel, "", {question}},
        {"other bytes than the digest", QMessageBox::Ok, "UpdateInstallSHA256=\"" + Sha256("other") + "\"",
         {question, "Could not download the update for Curatool."}},
    };
    for (const Case& c : cases) {
        Publish(server.Port(), "", c.remoteExtra);
        Boxes boxes;
        EXPECT_FALSE(Check(c.answer, boxes)) << c.name;
        EXPECT_EQ(c.texts, boxes.texts) << c.name;
        QStringList stored;
        CWorkFlow::LoadArguments(stored);
        EXPECT_TRUE(stored.isEmpty()) << c.name;
    }
    QThread::msleep(300);
    EXPECT_FALSE(Exists(m_record + "arguments")) << ReadFile(m_record + "arguments");
}

TEST_F(SelfUpdateFlow, UpdatesSwitchedOffAskNothingOfTheServer)
{
    const std::string log = MakeScratchDir("log") + "/requests";
    ServerProcess server;
    ASSERT_TRUE(server.StartScriptedServer(QString::fromStdString(log)));
    Publish(server.Port(), "NoUpdates=\"true\"", "");

    Boxes boxes;
    EXPECT_FALSE(Check(QMessageBox::Ok, boxes));
    EXPECT_TRUE(boxes.texts.isEmpty());
    EXPECT_EQ("", ReadFile(log));
}

TEST(FileOpenEvent, FilesHandedOverByTheDesktopJoinTheRestartArguments)
{
    CApplicationFactory factory;
    factory.InstallEventHook(qApp);
    for (const char* file : {"/home/u/Primer.gallerycollection", "/home/u/Ünterricht.gallerycollection"}) {
        QFileOpenEvent event{QString::fromUtf8(file)};
        QCoreApplication::sendEvent(qApp, &event);
    }
    delete qApp->findChild<QtEventProxy*>();  // the factory goes before the application here

    factory.Context().rawArguments = QStringList{"-authorized"};
    EXPECT_EQ((QStringList{"-authorized", "/home/u/Primer.gallerycollection", "/home/u/Ünterricht.gallerycollection"}),
              CWorkFlow::ArgumentsForRestart(factory.Context()));
}

}  // namespace
