// Several packages on their way at once over HTTP: failures stay with their files and in their
// place, a proxy's request for credentials is answered once for all connections, and a cancel
// stops every transfer at once without leaving part of a file.
#include "installation/CGalleryInstallation.h"
#include "foundation/CSettingsStore.h"
#include "support/GallerySourceBuilder.h"
#include "network/IProxyObserver.h"
#include "support/LocalHttpServer.h"
#include "installation/PackagePrefetcher.h"
#include "ProgressRecorder.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QThread>

#include <atomic>
#include <filesystem>
#include <thread>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

constexpr int kPackages = 8;

std::string PackageFile(int index)
{
    return "package" + std::to_string(index) + ".zip";
}
std::string ContentFile(int index)
{
    return "content" + std::to_string(index) + ".png";
}

// Bytes that do not compress, so that half a package is a partial file of some size.
std::string Noise(int seed)
{
    std::string bytes(60000, '\0');
    unsigned state = 2654435761u * static_cast<unsigned>(seed + 1);
    for (char& byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

void SetConnections(int connections)
{
    ASSERT_EQ(CSettingsStore::eStatusOk, CSettingsStore::WriteInt(true, PackagePrefetcher::kSection,
                                                                  PackagePrefetcher::kConnectionsKey, connections));
}

// A proxy that wants "user:pass" and is told it on every 407, counting how often it is asked.
struct CountingProxy : IProxyObserver {
    int port = 0;
    std::atomic<int> asked{0};
    void GetProxy(CAtlString& host, int& proxyPort, CAtlString&, CAtlString&) override
    {
        host = L"127.0.0.1";
        proxyPort = port;
    }
    bool Authenticate(const CAtlString&, int, CAtlString& user, CAtlString& password) override
    {
        ++asked;
        QThread::msleep(100);  // a user takes a while: the other connections meet their 407 meanwhile
        user = L"user";
        password = L"pass";
        return true;
    }
    void Cancelled() override {}
    void ReadProgress(int, int) override {}
};

// Two categories of four zipped packages each, served over loopback.
struct ParallelFetchFixture : ::testing::Test {
    std::string source = MakeScratchDir("source");
    std::string gallery = MakeScratchDir("gallery");
    ProgressRecorder recorder;
    std::unique_ptr<CGalleryInstallation> installation = CGalleryInstallation::Create();

    void SetUp() override
    {
        std::vector<CategorySpec> categories;
        for (int c = 0; c < 2; ++c) {
            CategorySpec category{"cat." + std::to_string(c), "1.0", {{"en", "Category"}}, {}, {}, ""};
            for (int p = c * kPackages / 2; p < (c + 1) * kPackages / 2; ++p) {
                const std::string id = "pkg." + std::to_string(p);
                WritePackageZip(source, PackageFile(p), {id, "1.0", ContentFile(p), Noise(p)});
                category.files.push_back({PackageFile(p), id, "1.0", ""});
            }
            categories.push_back(category);
        }
        ASSERT_TRUE(WriteFile(source + "/gallery_categories.xml", CategoriesXml(categories)));
    }

    HRESULT Open(const std::string& url, const std::string& destination)
    {
        installation->SetObserver(&recorder);
        const HRESULT opened =
            installation->Open(CZoltaDirectoryPath(destination.c_str()), CAtlString(url.c_str()), true);
        for (int c = 0; c < installation->CategoryCount(); ++c)
            installation->Category(c)->SetAction(eGalleryCategoryActionInstall);
        recorder.Clear();
        return opened;
    }

    // The finished events of the run, one per step: a file's repeated download lines count once.
    std::vector<std::string> FinishedSteps() const
    {
        std::vector<std::string> steps;
        for (const auto& event : recorder.Events()) {
            if (event.percent < 100)
                continue;
            const std::string step = "DIUR..F"[event.stage - 1] + (" " + event.item);
            if (steps.empty() || steps.back() != step)
                steps.push_back(step);
        }
        return steps;
    }
};

}  // namespace

TEST_F(ParallelFetchFixture, InterleavedFailuresFailOnlyTheirFilesInTheirPlace)
{
    SetConnections(4);
    const std::string missing = PackageFile(1);
    const std::string stalled = PackageFile(2);
    LocalHttpServer server(source, {20, {stalled}, {missing}, "", ""});
    ASSERT_TRUE(server.IsRunning());
    ASSERT_EQ(S_OK, Open(server.Url(), gallery));

    EXPECT_EQ(S_FALSE, installation->Run()) << "failures beside successes";

    std::vector<std::string> expected;
    for (int p = 0; p < kPackages; ++p) {
        const bool fails = PackageFile(p) == missing || PackageFile(p) == stalled;
        expected.push_back("D " + PackageFile(p));
        expected.push_back((fails ? "F " : "I ") + PackageFile(p));
        EXPECT_EQ(!fails, Exists(gallery + "/" + ContentFile(p))) << p;
    }
    EXPECT_EQ(expected, FinishedSteps());
    EXPECT_TRUE(fs::is_empty(installation->GetDownloadDirectory().GetPath().ToQString().toStdString()));
}

TEST_F(ParallelFetchFixture, AProxyAskingForCredentialsIsAnsweredOnceForAllConnections)
{
    SetConnections(4);
    const std::string log = MakeScratchDir("log") + "/requests.txt";
    LocalHttpServer server(source, {100, {}, {}, "user:pass", log});
    ASSERT_TRUE(server.IsRunning());
    CountingProxy proxy;
    proxy.port = std::stoi(server.Url().substr(server.Url().rfind(':') + 1));
    installation->SetProxyObserver(&proxy);
    // Through the proxy the host of the source is the proxy's business.
    ASSERT_EQ(S_OK, Open("http://gallery.invalid", gallery));
    ASSERT_EQ(1, proxy.asked.load());

    EXPECT_EQ(S_OK, installation->Run());
    EXPECT_EQ(2, proxy.asked.load()) << "once more for all the connections of the run";
    for (int p = 0; p < kPackages; ++p)
        EXPECT_TRUE(Exists(gallery + "/" + ContentFile(p))) << p;
    EXPECT_NE(std::string::npos, ReadFile(log).find("GET http://gallery.invalid/" + PackageFile(3)));
}

TEST_F(ParallelFetchFixture, CancelDuringFourTransfersStopsThemAllAndLeavesNoPartialFile)
{
    SetConnections(4);
    std::vector<std::string> stalled;
    for (int p = 0; p < kPackages; ++p)
        stalled.push_back(PackageFile(p));
    LocalHttpServer server(source, {0, stalled, {}, "", ""});
    ASSERT_TRUE(server.IsRunning());
    const std::string copy = MakeScratchDir("copy");
    installation->SetDownloadOnly(CZoltaDirectoryPath(copy.c_str()));
    ASSERT_EQ(S_OK, Open(server.Url(), copy));

    const auto partialFiles = [&] {
        int count = 0;
        for (int p = 0; p < kPackages; ++p)
            count += Exists(copy + "/" + PackageFile(p)) && fs::file_size(copy + "/" + PackageFile(p)) > 0;
        return count;
    };
    HRESULT result = S_OK;
    std::thread run([&] { result = installation->Run(); });
    QElapsedTimer clock;
    clock.start();
    while (partialFiles() < 4 && clock.elapsed() < 10000)
        QThread::msleep(20);
    EXPECT_EQ(4, partialFiles()) << "four transfers under way, no more";

    clock.restart();
    installation->Cancel();
    run.join();
    EXPECT_LT(clock.elapsed(), 2000) << "not after the 20 seconds of idleness";
    EXPECT_EQ(E_ABORT, result);
    for (int p = 0; p < kPackages; ++p)
        EXPECT_FALSE(Exists(copy + "/" + PackageFile(p))) << p;
}
