// Fetches through a real HTTP proxy (tinyproxy) that wants Basic credentials.

#include "support/LoopbackServers.h"
#include "support/TestEnvironment.h"

#include "network/FetchUrl.h"
#include "network/ProxyHandler.h"
#include "network/QtDownloader.h"

#include <QNetworkProxy>

#include <gtest/gtest.h>

#include <string>

using curatool::test::HttpUrl;
using curatool::test::ServerProcess;

namespace {

const std::string kContent(100000, 'p');

class ProxyRoadTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        const std::string served = curatool::test::MakeScratchDir("proxied");
        ASSERT_TRUE(curatool::test::WriteFile(served + "/file.bin", kContent));
        s_origin = new ServerProcess;
        s_proxy = new ServerProcess;
        ASSERT_TRUE(s_origin->StartStaticServer(QString::fromStdString(served)));
        ASSERT_TRUE(s_proxy->StartTinyproxy(QString::fromStdString(curatool::test::MakeScratchDir("tinyproxy")), "user",
                                            "pass"));
    }
    static void TearDownTestSuite()
    {
        delete s_proxy;
        delete s_origin;
        s_proxy = s_origin = nullptr;
    }
    void SetUp() override
    {
        ASSERT_TRUE(s_origin && s_origin->IsRunning());
        ASSERT_TRUE(s_proxy && s_proxy->IsRunning());
        m_local = curatool::test::MakeScratchDir("fetched") + "/file.bin";
    }

    // A handler pointed at the proxy the way the proxy options do it.
    void PointAtProxy(ProxyHandler& handler)
    {
        handler.SetPrompt([](ProxyPromptValues& values, bool, QObject*) {
            values.host = CAtlString(L"127.0.0.1");
            values.port = s_proxy->Port();
            return true;
        });
        ASSERT_TRUE(handler.ConfigureDialog(nullptr));
    }

    HRESULT Fetch(ProxyHandler& handler)
    {
        return FetchUrl(CAtlString(HttpUrl(s_origin->Port(), "/file.bin")), CZoltaFilePath(m_local.c_str()), &handler);
    }

    static ServerProcess* s_origin;
    static ServerProcess* s_proxy;
    std::string m_local;
};

ServerProcess* ProxyRoadTest::s_origin = nullptr;
ServerProcess* ProxyRoadTest::s_proxy = nullptr;

}  // namespace

TEST_F(ProxyRoadTest, WithoutCredentialsTheDialogIsAskedAndItsAnswerKept)
{
    ProxyHandler handler;
    PointAtProxy(handler);
    handler.SetAllowPrompt(true);
    std::vector<ProxyPromptValues> shown;
    handler.SetPrompt([&](ProxyPromptValues& values, bool hostEditable, QObject*) {
        EXPECT_FALSE(hostEditable);
        shown.push_back(values);
        values.user = CAtlString(L"user");
        values.password = CAtlString(L"pass");
        return true;
    });
    EXPECT_EQ(S_OK, Fetch(handler));
    EXPECT_EQ(kContent, curatool::test::ReadFile(m_local));
    ASSERT_EQ(1u, shown.size());
    EXPECT_EQ(CAtlString(L"127.0.0.1"), shown[0].host);
    EXPECT_EQ(s_proxy->Port(), shown[0].port);

    // What the dialog gave is what the next fetch starts with: no more dialogs.
    EXPECT_EQ(S_OK, Fetch(handler));
    EXPECT_EQ(1u, shown.size());
}

namespace {

// Hands out the right credentials once, counting the calls.
class SocksConnection : public ConnectionInfoBase {
public:
    void Cancelled() override {}
    bool Authenticate(const CAtlString&, int, CAtlString& userOut, CAtlString& passwordOut) override
    {
        ++calls;
        userOut = CAtlString(L"user");
        passwordOut = CAtlString(L"pass");
        return calls == 1;
    }
    void ReadProgress(int, int) override {}
    int calls = 0;
};

}  // namespace

TEST_F(ProxyRoadTest, ASocksProxyRefusingTheCredentialsCountsAsA407)
{
    const QString log = QString::fromStdString(curatool::test::MakeScratchDir("socks")) + "/auth.log";
    ServerProcess socks;
    ASSERT_TRUE(socks.StartSocksServer("user", "pass", log));
    const CAtlString url(HttpUrl(s_origin->Port(), "/file.bin"));

    SocksConnection connection;
    connection.type = ConnectionInfoBase::eProxySocks5;
    connection.host = CAtlString(L"127.0.0.1");
    connection.port = socks.Port();
    connection.user = CAtlString(L"user");
    connection.password = CAtlString(L"wrong");
    QtDownloader first;
    EXPECT_EQ(S_OK, first.Download(url, CZoltaFilePath(m_local.c_str()), &connection));
    EXPECT_EQ(kContent, curatool::test::ReadFile(m_local));
    EXPECT_EQ(1, connection.calls);
    EXPECT_EQ(CAtlString(L"pass"), connection.password);  // what worked is kept for the next file
    EXPECT_EQ("auth user refused\nauth user ok\n", curatool::test::ReadFile(log.toStdString()));

    // Refused for good: the fetch is aborted.
    connection.password = CAtlString(L"wrong");
    QtDownloader second;
    EXPECT_EQ(E_ABORT, second.Download(url, CZoltaFilePath(m_local.c_str()), &connection));
    EXPECT_EQ(2, connection.calls);
}
