// The update check and the installer's fetch against a loopback server: which rows decide, when
// the network is asked at all, and what becomes of a fetched installer.

#include "support/LoopbackServers.h"
#include "support/ScratchUpdate.h"
#include "support/TestEnvironment.h"

#include "network/CSelfUpdate.h"
#include "network/FetchUrl.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <memory>
#include <string>

using namespace curatool::test;

namespace {

// The real fetch into a temporary file, counting the URLs asked for.
class CountingDownloader : public IDownloader {
public:
    CZoltaFilePath Download(const CAtlString& url) override
    {
        ++requests;
        return FetchToTempFile(url, nullptr);
    }
    int requests = 0;
};

const char kInstaller[] = "#!/bin/sh\necho installing\n";

std::string LocalDocument(const std::string& attributes)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Update Location=\"Client\">\n  <Product " + attributes +
           "/>\n</Update>\n";
}

class SelfUpdateTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_published = MakeScratchDir("published");
        ASSERT_TRUE(WriteFile(m_published + "/setup.sh", kInstaller));
        ASSERT_TRUE(m_server.StartStaticServer(QString::fromStdString(m_published)));
        m_url = HttpUrl(m_server.Port(), QStringLiteral("/")).toStdString();
        m_local = MakeScratchDir("share") + "/CuratoolId.xml";
    }

    // Publishes the remote document with `rows` inside its root.
    void Publish(const std::string& rows) const
    {
        ASSERT_TRUE(WriteFile(m_published + "/update.xml",
                              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Update Location=\"Server\">" + rows +
                                  "</Update>\n"));
    }
    std::string Row(const std::string& element, const std::string& version, const std::string& extra = "",
                    const std::string& installer = "setup.sh") const
    {
        return "<" + element + " UpdateVersion=\"" + version + "\" UpdateInstallFile=\"" + installer +
               "\" UpdateArgument=\"--justupdated\" UpdateInstallURL=\"" + m_url + "\" " + extra + "/>";
    }
    std::string Endpoint(const std::string& current) const
    {
        return "CurrentVersion=\"" + current + "\" RemoteVersionFile=\"update.xml\" RemoteVersionFileURL=\"" +
               m_url.substr(0, m_url.size() - 1) + "\"";
    }
    std::unique_ptr<ScratchUpdate> MakeUpdate() { return std::make_unique<ScratchUpdate>(m_local, m_downloader); }

    ServerProcess m_server;
    std::string m_published;
    std::string m_url;  // ends with "/"
    std::string m_local;
    std::shared_ptr<CountingDownloader> m_downloader = std::make_shared<CountingDownloader>();
};

TEST_F(SelfUpdateTest, TheDecisionReadsTheRemoteDocumentOnlyWhenTheLocalOneAllowsIt)
{
    struct Case {
        const char* name;
        std::string local;
        std::string remote;
        bool marker;
        bool available;
        int requests;
    };
    const std::string endpoint = Endpoint("1.0.0.0");
    const Case cases[] = {
        {"newer", LocalDocument(endpoint), Row("Product", "1.1.0.0"), false, true, 1},
        {"equal", LocalDocument(endpoint), Row("Product", "1.0.0.0"), false, false, 1},
        {"update version no version", LocalDocument(endpoint), Row("Product", "next"), false, false, 1},
        {"switched off", LocalDocument(endpoint + " NoUpdates=\"true\""), Row("Product", "2.0.0.0"), false, false, 0},
        {"NoUpdates other than true", LocalDocument(endpoint + " NoUpdates=\"yes\""), Row("Product", "2.0.0.0"), false,
         true, 1},
        {"no current version", LocalDocument(Endpoint("")), Row("Product", "2.0.0.0"), false, false, 0},
        {"no Product row", "<Update><Other " + endpoint + "/></Update>", Row("Product", "2.0.0.0"), false, false, 0},
        {"not XML", "<Update", Row("Product", "2.0.0.0"), false, false, 0},
        {"remote without Product", LocalDocument(endpoint), Row("Other", "2.0.0.0"), false, false, 1},
        {"test row without marker", LocalDocument(endpoint), Row("Product", "1.0.0.0") + Row("TestProduct", "2.0.0.0"),
         false, false, 1},
        {"test row with marker", LocalDocument(endpoint), Row("Product", "1.0.0.0") + Row("TestProduct", "2.0.0.0"),
         true, true, 1},
        {"marker without test row", LocalDocument(endpoint), Row("Product", "2.0.0.0"), true, true, 1},
    };
    const std::string marker = CUpdateXmlReader::TestMarkerPath().ToQString().toStdString();
    ASSERT_NE(std::string::npos, marker.find(getenv("CURATOOL_ROOT"))) << "the marker moves with the system root";
    for (const Case& c : cases) {
        ASSERT_TRUE(WriteFile(m_local, c.local));
        Publish(c.remote);
        std::filesystem::remove(marker);
        if (c.marker) {
            ASSERT_TRUE(WriteFile(marker, ""));
        }
        m_downloader->requests = 0;
        EXPECT_EQ(c.available, MakeUpdate()->IsUpdateAvailable()) << c.name;
        EXPECT_EQ(c.requests, m_downloader->requests) << c.name;
    }
    std::filesystem::remove(marker);
    EXPECT_TRUE(QDir(QString::fromStdString(ScratchRoot() + "/tmp")).entryList({"SCVTemp*"}).isEmpty())
        << "the fetched remote document is deleted after reading";
}

TEST(SelfUpdateLocalDocument, LiesInTheShareFolderBesideTheProgramsFolder)
{
    // This test program stands for the program: <folder>/<its folder>/test_network reads <folder>/share.
    const QDir prefix = QFileInfo(QCoreApplication::applicationDirPath()).dir();
    CSelfUpdate update(CAtlString(L"CuratoolId.xml"), std::make_shared<CountingDownloader>());
    EXPECT_EQ(prefix.absoluteFilePath("share/CuratoolId.xml"), update.LocalFilePath().ToQString());
}

TEST_F(SelfUpdateTest, TheInstallerIsFetchedIntoAPrivateFolderAndHeldToItsDigest)
{
    ASSERT_TRUE(WriteFile(m_local, LocalDocument(Endpoint("1.0.0.0"))));
    struct Case {
        const char* name;
        std::string extra;
        std::string installer;
        bool fetched;
    };
    const Case cases[] = {
        {"no digest", "", "setup.sh", true},
        {"matching digest, upper case",
         "UpdateInstallSHA256=\"" + QString::fromStdString(Sha256Hex(kInstaller)).toUpper().toStdString() + "\"",
         "setup.sh", true},
        {"other digest", "UpdateInstallSHA256=\"" + Sha256Hex("something else") + "\"", "setup.sh", false},
        {"missing installer", "", "gone.sh", false},
    };
    const QDir base(CSelfUpdate::DownloadBaseFolder().ToQString());
    for (const Case& c : cases) {
        Publish(Row("Product", "2.0.0.0", c.extra, c.installer));
        const QStringList before = base.entryList({"Curatool-update-*"}, QDir::Dirs);
        auto update = MakeUpdate();
        ASSERT_TRUE(update->IsUpdateAvailable()) << c.name;
        EXPECT_EQ(c.fetched, update->DownloadUpdate()) << c.name;
        const QStringList after = base.entryList({"Curatool-update-*"}, QDir::Dirs);
        if (!c.fetched) {
            EXPECT_EQ(before, after) << c.name << ": nothing is left behind";
            EXPECT_TRUE(update->GetDownloadedFile().IsEmpty()) << c.name;
            continue;
        }
        ASSERT_EQ(before.size() + 1, after.size()) << c.name;
        const QFileInfo file(update->GetDownloadedFile().ToQString());
        EXPECT_EQ(kInstaller, ReadFile(file.filePath().toStdString())) << c.name;
        EXPECT_EQ(base.absolutePath(), QFileInfo(file.absolutePath()).absolutePath()) << c.name;
        struct stat folderStat {
        }, fileStat{};
        ASSERT_EQ(0, stat(file.absolutePath().toLocal8Bit().constData(), &folderStat));
        ASSERT_EQ(0, stat(file.filePath().toLocal8Bit().constData(), &fileStat));
        EXPECT_EQ(0700u, folderStat.st_mode & 07777) << c.name;
        EXPECT_EQ(0700u, fileStat.st_mode & 07777) << c.name << ": executable by its owner only";
    }
}

}  // namespace
