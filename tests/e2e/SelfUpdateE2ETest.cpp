// The self-update from the question to the restarted program: the check runs in this process over
// a loopback server; the installer is a script that records its argument and starts the real binary
// with it, and that run carries out the command line kept for it.

#include "support/E2EGallery.h"
#include "support/ModalAnswerer.h"
#include "support/ScratchUpdate.h"
#include "support/TestEnvironment.h"

#include "app/CApplicationFactory.h"
#include "configuration/CConfiguration.h"
#include "app/CProgramIdentity.h"
#include "app/CWorkFlow.h"
#include "installation/GalleryDownloader.h"
#include "ui/Output.h"
#include "foundation/QtEventProxy.h"

#include <QDeadlineTimer>
#include <QFileOpenEvent>
#include <QThread>

#include <gtest/gtest.h>

using namespace curatool::test;

namespace {

bool WaitForFile(const std::string& path)
{
    const QDeadlineTimer deadline(60000);
    while (!Exists(path) && !deadline.hasExpired())
        QThread::msleep(50);
    return Exists(path);
}

class SelfUpdateFlow : public E2EGallery {
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
        m_installer = "#!/bin/sh\nprintf '%s\\n' \"$@\" > '" + m_record +
                      "arguments'\n'" CURATOOL_BINARY "' \"$1\" -authorized > '" + m_record + "out' 2> '" + m_record +
                      "err'\necho $? > '" + m_record + "code.part' && mv '" + m_record + "code.part' '" + m_record +
                      "code'\n";
        ASSERT_TRUE(WriteFile(m_published + "/setup.sh", m_installer));
        m_local = MakeScratchDir("share") + "/CuratoolId.xml";
        // The program was started for a console install; the restart is to carry that out.
        for (const std::string& argument : std::vector<std::string>{"--installall", "-configuration", m_collection,
                                                                    "-source", m_source, "-destination", m_gallery})
            m_context.rawArguments << QString::fromStdString(argument);
        m_environment = CWorkFlow::MakeEnvironment(m_context, std::make_shared<CConfiguration>());
    }

    void Publish(int port, const std::string& remoteExtra) const
    {
        const std::string url = HttpUrl(port, QStringLiteral("/")).toStdString();
        ASSERT_TRUE(WriteFile(m_local, "<Update><Product CurrentVersion=\"1.0.0.0\" RemoteVersionFile=\"update.xml\" "
                                       "RemoteVersionFileURL=\"" +
                                           url + "\"/></Update>"));
        ASSERT_TRUE(WriteFile(m_published + "/update.xml",
                              "<Update><Product UpdateVersion=\"1.1.0.0\" UpdateInstallFile=\"setup.sh\" "
                              "UpdateArgument=\"--justupdated\" UpdateInstallURL=\"" +
                                  url + "\" " + remoteExtra + "/></Update>"));
    }

    bool Check()
    {
        ScratchUpdate update(m_local, m_environment.downloader);
        return CWorkFlow::CheckSelfUpdate(m_environment, update);
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
    Publish(server.Port(), "UpdateInstallSHA256=\"" + Sha256Hex(m_installer) + "\"");

    // From the event loop, as a work flow runs; the update leaves it with 0.
    ModalAnswerer boxes;
    QTimer::singleShot(0, [&] {
        if (!Check())
            QCoreApplication::exit(1);  // the update did not leave the loop itself
    });
    EXPECT_EQ(0, QCoreApplication::exec());
    EXPECT_EQ(QStringList{"There is an update for the application. Click OK to start."}, boxes.boxes);
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
    struct Case {
        const char* name;
        QMessageBox::StandardButton answer;
        std::string remoteExtra;
        QStringList texts;
    };
    const QString question = "There is an update for the application. Click OK to start.";
    const Case cases[] = {
        {"declined", QMessageBox::Cancel, "", {question}},
        {"other bytes than the digest",
         QMessageBox::Ok,
         "UpdateInstallSHA256=\"" + Sha256Hex("other") + "\"",
         {question, "Could not download the update for Curatool."}},
    };
    for (const Case& c : cases) {
        Publish(server.Port(), c.remoteExtra);
        ModalAnswerer boxes(c.answer);
        EXPECT_FALSE(Check()) << c.name;
        EXPECT_EQ(c.texts, boxes.boxes) << c.name;
        QStringList stored;
        CWorkFlow::LoadArguments(stored);
        EXPECT_TRUE(stored.isEmpty()) << c.name;
    }
    QThread::msleep(300);
    EXPECT_FALSE(Exists(m_record + "arguments")) << ReadFile(m_record + "arguments");
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
