// Installs from a loopback HTTP server: the connection check, an unreachable server, a URL given
// as -source, and the road through a proxy that wants Basic credentials.
#include "support/E2EGallery.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

using namespace curatool::test;

namespace {

const char kProxyUser[] = "curator";
const char kProxyPassword[] = "s3cret";

class InstallOverHttp : public ServedGallery {
protected:
    RunResult InstallWithDownload(std::vector<std::string> extra = {})
    {
        std::vector<std::string> arguments{"--installall", "-allowdownload", "-configuration",
                                           m_collection,   "-destination",   m_gallery};
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        return Curatool(arguments);
    }

    void ExpectEverythingInstalled()
    {
        for (const SampleCategory& category : SampleCategories())
            EXPECT_TRUE(HasCategory(m_gallery, category.alias)) << category.alias;
    }

    // The check failed: its first line, maybe the downloader's own word, and code 7 with the
    // reason on a line of its own (any reason and wording, when none is given here).
    void ExpectCheckFailed(const RunResult& r, const std::string& url, const std::string& reason = "")
    {
        EXPECT_EQ(1, r.exitCode);
        EXPECT_TRUE(StartsWith(r.out, "Checking connection to: " + url + "\n")) << r.out;
        EXPECT_EQ(std::string::npos, r.out.find("Check succeeded.")) << r.out;
        EXPECT_EQ(std::string::npos, r.out.find("Done.")) << r.out;
        if (!reason.empty())
            EXPECT_EQ(DownloadFailure(url, reason), r.err);
        else
            EXPECT_TRUE(StartsWith(r.err, "Could not download the file:\n" + url + "\n")) << r.err;
        EXPECT_TRUE(LacksCategory(m_gallery, "animals"));
    }
};

}  // namespace

TEST_F(InstallOverHttp, AllowDownloadChecksTheDefaultSourceThenInstallsFromIt)
{
    const RunResult r = InstallWithDownload({"-verbose"});
    EXPECT_EQ(0, r.exitCode);
    EXPECT_EQ("", r.err);
    // Over HTTP every package counts twice: once when asked for, once when it has come.
    std::vector<std::string> wanted{"Checking connection to: " + m_url, "Check succeeded.",
                                    "Downloading:  \t[0%] gallery_categories.xml"};
    int step = 0;
    for (const SampleCategory& category : SampleCategories()) {
        for (const SampleCategory::Package& package : category.packages) {
            wanted.push_back(ProgressLine("Downloading: ", ++step * 10, category.title, package.file));
            wanted.push_back(ProgressLine("Downloading: ", ++step * 10, category.title, package.file));
            wanted.push_back(ProgressLine("Installing: ", step * 10, category.title, package.file));
        }
    }
    wanted.push_back("Done.");
    EXPECT_TRUE(HasInOrder(Lines(r.out), wanted)) << r.out;
    EXPECT_TRUE(EndsWith(r.out, "\nDone.\n")) << r.out;
    ExpectEverythingInstalled();
    // Every fetched file went once it was used, and so did the check's copy.
    EXPECT_EQ(std::vector<std::string>{}, FilesBelow(m_base + "/tmp"));
    // A check that worked keeps the proxy settings it used: none, on the default port.
    EXPECT_EQ("", StoredProxyValue("HttpProxyHost"));
    EXPECT_EQ("8080", StoredProxyValue("HttpProxyPort"));

    m_gallery = m_base + "/some";
    const RunResult some = Curatool({"--installsome", "-allowdownload", "-configuration", m_collection, "-destination",
                                     m_gallery, "-c", "maps", "-c", "nope"});
    EXPECT_EQ((Outcome{0, CheckedThenDone(), "Alias not found: nope\n"}), OutcomeOf(some));
    EXPECT_TRUE(HasCategory(m_gallery, "maps"));
    EXPECT_TRUE(LacksCategory(m_gallery, "animals"));
}

TEST_F(InstallOverHttp, AnUnreachableServerOrOneWithoutTheGalleryEndsTheRunWithItsUrl)
{
    const std::string dead = HttpUrl(FreeLoopbackPort(), QStringLiteral("/gallery")).toStdString();
    SetDefaultSource(dead);
    ExpectCheckFailed(InstallWithDownload(), dead, "Connection refused");
    ExpectCheckFailed(Curatool({"--installsome", "-allowdownload", "-configuration", m_collection, "-destination",
                                m_gallery, "-c", "maps"}),
                      dead, "Connection refused");

    // A server that answers was reached: its status, and no advice about the connection.
    const std::string wrong = m_url + "/missing";
    SetDefaultSource(wrong);
    const RunResult r = InstallWithDownload();
    EXPECT_EQ(1, r.exitCode);
    EXPECT_EQ("Could not download the file:\n" + wrong + "\nHTTP status 404\n", r.err);
}

TEST_F(InstallOverHttp, AUrlAsSourceIsNoSourceWithoutAllowDownload)
{
    // The URL is looked for as a folder, then the collection's folder: neither holds the data.
    const RunResult r =
        Curatool({"--installall", "-configuration", m_collection, "-source", m_url, "-destination", m_gallery});
    EXPECT_EQ((Outcome{1, "", "Gallery files not found on the source path, download is not allowed.\n"}), OutcomeOf(r));
    EXPECT_TRUE(LacksCategory(m_gallery, "animals"));
}

// ---- Through tinyproxy with Basic authentication ----

namespace {

class InstallThroughProxy : public InstallOverHttp {
protected:
    static void SetUpTestSuite()
    {
        s_proxy = new ServerProcess;
        if (!s_proxy->StartTinyproxy(QString::fromStdString(MakeScratchDir("tinyproxy")), kProxyUser, kProxyPassword)) {
            delete s_proxy;
            s_proxy = nullptr;
        }
    }
    static void TearDownTestSuite()
    {
        delete s_proxy;
        s_proxy = nullptr;
    }
    void SetUp() override
    {
        ASSERT_TRUE(s_proxy && s_proxy->IsRunning()) << "tinyproxy did not start";
        InstallOverHttp::SetUp();
    }

    static int ProxyPort() { return s_proxy->Port(); }

    static ServerProcess* s_proxy;
};

ServerProcess* InstallThroughProxy::s_proxy = nullptr;

}  // namespace

TEST_F(InstallThroughProxy, StoredProxyPassesOnlyWithTheRightCredentials)
{
    StoreProxy("127.0.0.1", ProxyPort());
    ExpectCheckFailed(InstallWithDownload({"-username", kProxyUser, "-password", "wrong"}), m_url);
    ExpectCheckFailed(InstallWithDownload(), m_url);

    const RunResult r = InstallWithDownload({"-username", kProxyUser, "-password", kProxyPassword});
    EXPECT_EQ((Outcome{0, CheckedThenDone(), ""}), OutcomeOf(r));
    ExpectEverythingInstalled();
    EXPECT_EQ("127.0.0.1", StoredProxyValue("HttpProxyHost"));
    EXPECT_EQ(std::to_string(ProxyPort()), StoredProxyValue("HttpProxyPort"));
}

TEST_F(InstallThroughProxy, OverrideTakesTheWholeProxyTextAsHostWithoutPort)
{
    // host:port as one host name and port 0: the proxy cannot be reached that way.
    StoreProxy("127.0.0.1", ProxyPort());
    const std::string proxy = "127.0.0.1:" + std::to_string(ProxyPort());
    ExpectCheckFailed(
        InstallWithDownload({"-overrideproxy", "-proxy", proxy, "-username", kProxyUser, "-password", kProxyPassword}),
        m_url);
    EXPECT_EQ(std::to_string(ProxyPort()), StoredProxyValue("HttpProxyPort")) << "a failed check keeps the store";
}

TEST_F(InstallThroughProxy, OverrideWithoutProxyGoesDirectAndKeepsThat)
{
    // A stored proxy that nobody runs blocks the plain run.
    StoreProxy("127.0.0.1", FreeLoopbackPort());
    ExpectCheckFailed(InstallWithDownload(), m_url);

    const RunResult r = InstallWithDownload({"-overrideproxy"});
    EXPECT_EQ((Outcome{0, CheckedThenDone(), ""}), OutcomeOf(r));
    ExpectEverythingInstalled();
    // What worked is kept: no host, and the port that was never loaded.
    EXPECT_EQ("", StoredProxyValue("HttpProxyHost"));
    EXPECT_EQ("0", StoredProxyValue("HttpProxyPort"));
}
