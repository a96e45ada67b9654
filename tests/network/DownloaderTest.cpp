// The downloader against real loopback servers: python's http.server for the normal road, and a
// scripted server for replies that go wrong.

#include "support/LoopbackServers.h"
#include "support/TestEnvironment.h"

#include "network/ConnectionInfo.h"
#include "foundation/CZoltaDirectoryPath.h"
#include "network/FetchUrl.h"
#include "network/HttpGetRequest.h"
#include "network/ProxyHandler.h"
#include "network/QtDownloader.h"

#include "foundation/QThreadWithLoop.h"
#include "foundation/WaitWithQtEvents.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHostAddress>
#include <QRandomGenerator>
#include <QStorageInfo>
#include <QTcpServer>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using curatool::test::HttpUrl;
using curatool::test::ServerProcess;

namespace {

// A connection that records what the downloader tells it.
class RecordingConnection : public ConnectionInfoBase {
public:
    void Cancelled() override { ++cancelled; }
    bool Authenticate(const CAtlString&, int, CAtlString&, CAtlString&) override { return false; }
    void ReadProgress(int done, int total) override { progress.emplace_back(done, total); }

    int cancelled = 0;
    std::vector<std::pair<int, int>> progress;
};

std::string ScratchFile(const std::string& folder, const std::string& name)
{
    return curatool::test::MakeScratchDir(folder) + "/" + name;
}

HRESULT Fetch(const QString& url, const std::string& localFile, ConnectionInfoBase& connection)
{
    QtDownloader downloader;
    return downloader.Download(CAtlString(url), CZoltaFilePath(localFile.c_str()), &connection);
}

QByteArray RandomBytes(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (qsizetype index = 0; index < size; ++index)
        bytes[index] = static_cast<char>(QRandomGenerator::global()->bounded(256));
    return bytes;
}

// One scripted server for the whole suite; its log holds every request line it received.
class ScriptedServerTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_log = new QString(QString::fromStdString(curatool::test::MakeScratchDir("scripted")) + "/requests.log");
        s_server = new ServerProcess;
        ASSERT_TRUE(s_server->StartScriptedServer(*s_log));
    }
    static void TearDownTestSuite()
    {
        delete s_server;
        delete s_log;
        s_server = nullptr;
        s_log = nullptr;
    }
    void SetUp() override
    {
        ASSERT_TRUE(s_server && s_server->IsRunning());
        QFile::remove(*s_log);
    }

    static QString Url(const QString& path) { return HttpUrl(s_server->Port(), path); }
    static QStringList Requests()
    {
        QFile log(*s_log);
        if (!log.open(QIODevice::ReadOnly))
            return {};
        return QString::fromLatin1(log.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    static ServerProcess* s_server;
    static QString* s_log;
};

ServerProcess* ScriptedServerTest::s_server = nullptr;
QString* ScriptedServerTest::s_log = nullptr;

}  // namespace

TEST(DownloaderStaticServer, FetchesWholeFilesWithProgressAndReplacesAnOldLocalFile)
{
    const std::string served = curatool::test::MakeScratchDir("served");
    const QByteArray big = RandomBytes(3 * 1024 * 1024 + 17);
    const QByteArray small = RandomBytes(1);
    ASSERT_TRUE(curatool::test::WriteFile(served + "/big file.bin", big.toStdString()));
    ASSERT_TRUE(curatool::test::WriteFile(served + "/one.bin", small.toStdString()));
    ServerProcess server;
    ASSERT_TRUE(server.StartStaticServer(QString::fromStdString(served)));

    const std::string local = ScratchFile("static", "big.bin");
    ASSERT_TRUE(curatool::test::WriteFile(local, std::string(10 * 1024 * 1024, 'o')));  // left from before
    RecordingConnection connection;
    connection.user = CAtlString(L"kept");
    // A space in the name goes out encoded; the query string is dropped and changes nothing.
    EXPECT_EQ(S_OK, Fetch(HttpUrl(server.Port(), "/big%20file.bin?x=1"), local, connection));
    EXPECT_EQ(big.toStdString(), curatool::test::ReadFile(local));

    ASSERT_FALSE(connection.progress.empty());
    EXPECT_TRUE(std::is_sorted(connection.progress.begin(), connection.progress.end(),
                               [](const auto& a, const auto& b) { return a.first < b.first; }));
    EXPECT_EQ(std::make_pair(static_cast<int>(big.size()), static_cast<int>(big.size())), connection.progress.back());
    EXPECT_EQ(CAtlString(L"kept"), connection.user);

    EXPECT_EQ(S_OK, Fetch(HttpUrl(server.Port(), "/one.bin"), local, connection));
    EXPECT_EQ(small.toStdString(), curatool::test::ReadFile(local));

    // Not there: 404, and the old local file is gone too.
    EXPECT_EQ(E_FAIL, Fetch(HttpUrl(server.Port(), "/absent.bin"), local, connection));
    EXPECT_FALSE(curatool::test::Exists(local));
}

TEST(DownloaderSchemes, OnlyHttpIsServedARefusedConnectionLeavesAnEmptyFile)
{
    QTcpServer listener;
    ASSERT_TRUE(listener.listen(QHostAddress::LocalHost, 0));
    const QString hostPort = QStringLiteral("127.0.0.1:%1").arg(listener.serverPort());
    const std::string local = ScratchFile("schemes", "x.bin");
    for (const QString scheme : {"https", "ftp", "file", "httpx", ""}) {
        RecordingConnection connection;
        const QString url = scheme.isEmpty() ? QStringLiteral("//%1/x.bin").arg(hostPort)
                                             : QStringLiteral("%1://%2/x.bin").arg(scheme, hostPort);
        EXPECT_EQ(E_FAIL, Fetch(url, local, connection)) << url.toStdString();
    }
    QCoreApplication::processEvents();
    EXPECT_FALSE(listener.waitForNewConnection(200));
    EXPECT_FALSE(curatool::test::Exists(local));

    RecordingConnection connection;
    EXPECT_EQ(E_FAIL, Fetch(HttpUrl(curatool::test::FreeLoopbackPort(), "/x.bin"), local, connection));
    EXPECT_TRUE(curatool::test::Exists(local));
    EXPECT_EQ("", curatool::test::ReadFile(local));
    connection.type = 4;
    EXPECT_EQ(E_NOTIMPL, Fetch(HttpUrl(curatool::test::FreeLoopbackPort(), "/x"), local, connection));
}

TEST_F(ScriptedServerTest, SendsOnlyThePathToTheGivenPort)
{
    const std::string local = ScratchFile("echo", "echo.txt");
    RecordingConnection connection;
    ASSERT_EQ(S_OK, Fetch(Url("/echo?secret=1&b=2"), local, connection));
    const QString request = QString::fromStdString(curatool::test::ReadFile(local));
    EXPECT_TRUE(request.startsWith("GET /echo HTTP/1.1\r\n")) << request.toStdString();
    EXPECT_TRUE(request.contains(QStringLiteral("\r\nHost: 127.0.0.1:%1\r\n").arg(s_server->Port())));
    EXPECT_FALSE(request.contains("Proxy-Authorization"));
}

TEST_F(ScriptedServerTest, BadStatusesRemoveTheFileAndBrokenRepliesLeaveItEmpty)
{
    struct Case {
        QString path;
        bool removed;
        QString reason;
    };
    QStringList requested;
    for (const Case& one :
         {Case{"/redirect", true, "HTTP status 302"}, Case{"/missing", true, "HTTP status 404"},
          Case{"/created", true, "HTTP status 201"}, Case{"/empty.zip", false, "The reply was empty"},
          Case{"/garbage", false, "Invalid HTTP response header"}, Case{"/close", false, "Connection closed"}})
    {
        const std::string local = ScratchFile("status", "reply.bin");
        RecordingConnection connection;
        QtDownloader downloader;
        testing::internal::CaptureStdout();
        EXPECT_EQ(E_FAIL, downloader.Download(CAtlString(Url(one.path)), CZoltaFilePath(local.c_str()), &connection))
            << one.path.toStdString();
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(one.reason, downloader.GetFailureReason()) << one.path.toStdString();
        EXPECT_EQ(!one.removed, curatool::test::Exists(local)) << one.path.toStdString();
        EXPECT_EQ("", curatool::test::ReadFile(local)) << one.path.toStdString();
        if (!one.removed) {
            EXPECT_TRUE(connection.progress.empty()) << one.path.toStdString();
        }
        requested << QStringLiteral("GET %1 HTTP/1.1").arg(one.path);
    }
    // The redirect was not followed: one request per fetch, and none to its target.
    EXPECT_EQ(requested, Requests());
}

// What the disk takes is bounded by the announced length, or without one by the free space; a body
// cut short fails, and what it left is removed.
TEST_F(ScriptedServerTest, TheBodyIsBoundedAndACutOneFailsAndGoes)
{
    const std::string local = ScratchFile("length", "reply.bin");
    const qint64 freeNow = QStorageInfo(QString::fromStdString(local).section('/', 0, -2)).bytesAvailable();
    ASSERT_GT(freeNow, 64 * 1024 * 1024);
    struct Case {
        QString path;
        qint64 margin;  // 0 keeps the product's
        HRESULT expected;
        std::string content;
        bool exists;
        QString reason;
        std::string printed;
    };
    const Case cases[] = {
        // More bytes than announced: only the announced ones are kept.
        {"/short-length", 0, S_OK, "12345", true, "", ""},
        // The connection drops after 300 of 1000 bytes.
        {"/drop", 0, E_FAIL, "", false, "Wrong content length", "Wrong content length\n"},
        // A length no disk holds is refused before a byte is written.
        {"/huge-length", 0, E_FAIL, "", true, "Not enough free disk space for 1000000000000000 bytes", ""},
        // No length and no end: stopped once the free space falls below the margin (set here to
        // 16 MB less than there is now).
        {"/endless", freeNow - 16 * 1024 * 1024, E_FAIL, "", false, "Free disk space fell below", ""},
    };
    for (const Case& one : cases) {
        QtDownloader::Limits limits;
        if (one.margin > 0)
            limits.freeSpaceMargin = one.margin;
        QtDownloader downloader;
        downloader.SetLimits(limits);
        RecordingConnection connection;
        testing::internal::CaptureStdout();
        const HRESULT result =
            downloader.Download(CAtlString(Url(one.path)), CZoltaFilePath(local.c_str()), &connection);
        const std::string printed = testing::internal::GetCapturedStdout();
        EXPECT_EQ(one.expected, result) << one.path.toStdString();
        EXPECT_EQ(one.exists, curatool::test::Exists(local)) << one.path.toStdString();
        EXPECT_EQ(one.content, curatool::test::ReadFile(local)) << one.path.toStdString();
        EXPECT_TRUE(one.reason.isEmpty() ? downloader.GetFailureReason().isEmpty()
                                         : downloader.GetFailureReason().startsWith(one.reason))
            << one.path.toStdString() << ": " << downloader.GetFailureReason().toStdString();
        if (!one.printed.empty()) {
            EXPECT_EQ(one.printed, printed);
        }
        if (one.path == "/endless") {
            // Checked every megabyte: no more than that beyond the margin.
            ASSERT_FALSE(connection.progress.empty());
            EXPECT_LT(connection.progress.back().first,
                      16 * 1024 * 1024 + 2 * HttpGetRequest::kBodyCheckInterval + HttpGetRequest::kReadChunk);
        }
    }
}

// The idle limit takes 20 s of real time, so the cases run side by side, each fetch on a thread
// of its own pumping its own events. The rate window is shortened for the cases that test it.
TEST_F(ScriptedServerTest, IdlenessAndATrickleBelowTheRateEndAFetchButDurationDoesNot)
{
    struct Case {
        QString path;
        QtDownloader::Limits limits;
        HRESULT expected;
        std::string content;
        bool exists;
        qint64 minimumMs, maximumMs;
        QString reason;
        std::string local{};
        HRESULT result = S_FALSE;
        qint64 elapsedMs = 0;
        QString failure{};
        std::unique_ptr<QThreadWithLoop> thread{};
    };
    std::string trickled;
    for (int index = 0; index < 13; ++index)
        trickled += std::string(100, static_cast<char>('A' + index));
    const qint64 limit = QtDownloader::kTimeOutMs;
    const QtDownloader::Limits product;
    const QtDownloader::Limits window3s{limit, 3000, 1024, product.freeSpaceMargin};
    const QtDownloader::Limits window5s{limit, 5000, 100, product.freeSpaceMargin};
    Case cases[] = {
        // 24 s in all, with 100 bytes every 2 s: never idle long enough.
        {"/trickle", product, S_OK, trickled, true, 23000, 60000, ""},
        // The same keeps 100 bytes in every 5 s, even when a busy machine stretches a gap: it passes that rate too.
        {"/trickle", window5s, S_OK, trickled, true, 23000, 60000, ""},
        // One byte every 0.2 s is never idle, but below 1024 bytes in 3 s.
        {"/slow-trickle", window3s, E_FAIL, "", false, 3000, 6000, "Fewer than 1024 bytes in 3 seconds"},
        // Nothing at all: given up after 20 s of silence, with an empty file.
        {"/stall-header", product, E_FAIL, "", true, limit, limit + 5000, "No data for 20 seconds after 0 bytes"},
        // Silence after part of the body: given up 20 s after the last bytes, which go.
        {"/stall-body", product, E_FAIL, "", false, limit, limit + 5000, "No data for 20 seconds after 300 bytes"},
    };
    int index = 0;
    for (Case& one : cases) {
        one.local = ScratchFile("idle" + std::to_string(index++), "reply.bin");
        one.thread = std::make_unique<QThreadWithLoop>([&one] {
            QElapsedTimer clock;
            clock.start();
            RecordingConnection connection;
            QtDownloader downloader;
            downloader.SetLimits(one.limits);
            one.result = downloader.Download(CAtlString(Url(one.path)), CZoltaFilePath(one.local.c_str()), &connection);
            one.failure = downloader.GetFailureReason();
            one.elapsedMs = clock.elapsed();
            return 0;
        });
        one.thread->start();
    }
    WaitWithQtEvents([&] {
        return std::any_of(std::begin(cases), std::end(cases), [](const Case& one) { return one.thread->isRunning(); });
    }).Wait();
    for (const Case& one : cases) {
        const std::string name = one.path.toStdString() + " " + std::to_string(one.limits.windowMs);
        EXPECT_EQ(one.expected, one.result) << name;
        EXPECT_GE(one.elapsedMs, one.minimumMs) << name;
        EXPECT_LT(one.elapsedMs, one.maximumMs) << name;
        EXPECT_EQ(one.exists, curatool::test::Exists(one.local)) << name;
        EXPECT_EQ(one.content, curatool::test::ReadFile(one.local)) << name;
        EXPECT_TRUE(one.reason.isEmpty() ? one.failure.isEmpty() : one.failure.startsWith(one.reason))
            << name << ": " << one.failure.toStdString();
    }
}

TEST_F(ScriptedServerTest, TempFileTakesTheExtensionOfThePathAndGoesOnFailure)
{
    const CZoltaFilePath fetched = FetchToTempFile(CAtlString(Url("/until-close?name=a.zip")), nullptr);
    ASSERT_FALSE(fetched.IsEmpty());
    EXPECT_TRUE(fetched.GetName().ToQString().startsWith("SCVTemp"));
    EXPECT_EQ(CAtlString(L""), fetched.GetExtension());
    EXPECT_EQ("no length, ends with the connection", curatool::test::ReadFile(fetched.ToQString().toStdString()));
    fetched.Remove();

    const QString folder = CZoltaFilePath(fetched).GetFolder().ToQString();
    EXPECT_TRUE(FetchToTempFile(CAtlString(Url("/empty.zip")), nullptr).IsEmpty());
    EXPECT_TRUE(QDir(folder).entryList({"SCVTemp*.zip"}, QDir::Files).isEmpty());
}

namespace {

// A handler whose proxy is the scripted server, set the way the proxy options set it.
void PointAt(ProxyHandler& handler, int port)
{
    handler.SetPrompt([port](ProxyPromptValues& values, bool, QObject*) {
        values.host = CAtlString(L"127.0.0.1");
        values.port = port;
        return true;
    });
    ASSERT_TRUE(handler.ConfigureDialog(nullptr));
}

}  // namespace

TEST_F(ScriptedServerTest, Each407AsksTheHandlerAgainAndResends)
{
    const std::string local = ScratchFile("proxy407", "reply.bin");
    const QString url = QStringLiteral("http://origin.example:81/proxy-auth?dropped=1");
    const QString requestLine = QStringLiteral("GET http://origin.example:81/proxy-auth HTTP/1.1");

    // Command-line credentials that are wrong: sent, handed out once more, then the dialog. Each
    // answer goes out as a new request in the absolute form, without the query.
    ProxyHandler handler;
    PointAt(handler, s_server->Port());
    handler.SetCredentials(CAtlString(L"user"), CAtlString(L"wrong"));
    handler.SetAllowPrompt(true);
    int prompts = 0;
    handler.SetPrompt([&](ProxyPromptValues& values, bool, QObject*) {
        ++prompts;
        values.password = CAtlString(L"pass");
        return true;
    });
    EXPECT_EQ(S_OK, FetchUrl(CAtlString(url), CZoltaFilePath(local.c_str()), &handler));
    EXPECT_EQ("through the proxy", curatool::test::ReadFile(local));
    EXPECT_EQ(1, prompts);
    EXPECT_EQ(QStringList({requestLine, requestLine, requestLine}), Requests());
}
