// Installing 200 small packages over loopback HTTP from a server that holds every reply back
// 50 ms, with 1, 2, 4 and 8 packages fetched at once (the user setting ParallelDownloads), and the
// same install from the same server without the delay, at 4. The runs of each round are
// interleaved; times and the ratios N=4 / N=1 and N=4 / no delay are given as median and spread
// (lowest to highest) of the rounds.
//
//     bench_HttpPrefetchBench [rounds]      (default 5)

#include "installation/CGalleryCategory.h"
#include "installation/CGalleryInstallation.h"
#include "foundation/CSettingsStore.h"
#include "GeneratedSource.h"
#include "installation/PackagePrefetcher.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr int kCategories = 10;
constexpr int kPackagesPerCategory = 20;
constexpr int kDelayMs = 50;
constexpr size_t kContentSize = 10 * 1000;

// The scripted loopback server serving `folder`, every reply held back `delayMs`.
class Server {
public:
    Server(const fs::path& folder, int delayMs)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral("python3"),
                        {QStringLiteral(CURATOOL_SOURCE_DIR "/tests/support/data/scripted_http_server.py"),
                         QStringLiteral("/dev/null"), QStringLiteral("--folder"), QString::fromStdString(folder),
                         QStringLiteral("--delay"), QString::number(delayMs)});
        if (!m_process.waitForStarted(10000))
            std::exit(3);
        while (!m_process.canReadLine())
            if (!m_process.waitForReadyRead(10000))
                std::exit(3);
        m_url = "http://127.0.0.1:" + m_process.readLine().trimmed().toStdString();
    }
    ~Server()
    {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
    const std::string& Url() const { return m_url; }

private:
    QProcess m_process;
    std::string m_url;
};

double Install(const std::string& url, int connections, const fs::path& gallery)
{
    CSettingsStore::WriteInt(true, PackagePrefetcher::kSection, PackagePrefetcher::kConnectionsKey, connections);
    fs::remove_all(gallery);
    fs::create_directories(gallery);
    const auto start = std::chrono::steady_clock::now();
    std::unique_ptr<CGalleryInstallation> installation = CGalleryInstallation::Create();
    if (FAILED(installation->Open(CZoltaDirectoryPath(gallery.c_str()), CAtlString(url.c_str()), true)))
        std::exit(4);
    for (int i = 0; i < installation->CategoryCount(); ++i)
        installation->Category(i)->SetAction(eGalleryCategoryActionInstall);
    const HRESULT result = installation->Run();
    installation.reset();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (result != S_OK)
        std::exit(5);
    return seconds;
}

struct Spread {
    double median, low, high;
};

Spread Of(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const size_t n = values.size();
    const double median = n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
    return {median, values.front(), values.back()};
}

}  // namespace

int main(int argc, char** argv)
{
    // Settings, temporary files and all go below a folder of this run, never the user's own.
    QTemporaryDir scratch;
    const fs::path root = scratch.path().toStdString();
    qputenv("XDG_CONFIG_HOME", (root / "config").c_str());
    qputenv("HOME", (root / "home").c_str());
    qputenv("TMPDIR", (root / "tmp").c_str());
    fs::create_directories(root / "tmp");
    QCoreApplication application(argc, argv);
    const int rounds = argc > 1 ? std::max(5, std::atoi(argv[1])) : 5;

    fs::create_directories(root / "source");
    bench::MakeSource(root / "source", root / "staging", kCategories, kPackagesPerCategory, kContentSize);
    fs::remove_all(root / "staging");
    const Server delayed(root / "source", kDelayMs);
    const Server prompt(root / "source", 0);
    std::printf("source: %d packages; server delay %d ms; %d rounds, interleaved\n", kCategories * kPackagesPerCategory,
                kDelayMs, rounds);

    const std::vector<int> connections{1, 2, 4, 8};
    std::vector<std::vector<double>> delayedTimes(connections.size());
    std::vector<double> promptTimes, toOne, toPrompt;
    for (int round = 0; round < rounds; ++round) {
        std::printf("round %d:", round + 1);
        for (size_t i = 0; i < connections.size(); ++i) {
            delayedTimes[i].push_back(Install(delayed.Url(), connections[i], root / "gallery"));
            std::printf(" N=%d %.2f s,", connections[i], delayedTimes[i].back());
            std::fflush(stdout);
        }
        promptTimes.push_back(Install(prompt.Url(), 4, root / "gallery"));
        std::printf(" N=4 without delay %.2f s\n", promptTimes.back());
        toOne.push_back(delayedTimes[2].back() / delayedTimes[0].back());
        toPrompt.push_back(delayedTimes[2].back() / promptTimes.back());
    }

    std::printf("\n%-22s %8s %8s %8s\n", "", "median", "lowest", "highest");
    for (size_t i = 0; i < connections.size(); ++i) {
        const Spread s = Of(delayedTimes[i]);
        std::printf("N=%d, 50 ms delay (s)  %8.2f %8.2f %8.2f\n", connections[i], s.median, s.low, s.high);
    }
    const Spread p = Of(promptTimes);
    std::printf("N=4, no delay (s)     %8.2f %8.2f %8.2f\n", p.median, p.low, p.high);
    const Spread a = Of(toOne);
    const Spread b = Of(toPrompt);
    std::printf("ratio N=4 / N=1       %8.3f %8.3f %8.3f   (goal <= 0.333)\n", a.median, a.low, a.high);
    std::printf("ratio N=4 / no delay  %8.3f %8.3f %8.3f   (goal <= 1.5)\n", b.median, b.low, b.high);
    // No number of installers beats the delays themselves: at N=4 they take this long at least.
    std::printf("floor of the delays at N=4: %d x %d ms / 4 = %.2f s\n", kCategories * kPackagesPerCategory, kDelayMs,
                kCategories * kPackagesPerCategory * kDelayMs / 4 / 1000.0);
    return 0;
}
