// Download throughput over loopback: FetchUrl against curl, both fetching the same files from the
// same python http.server in this run, in 5 interleaved pairs per size (median and spread), and
// the peak memory of the fetching process, which must not follow the file's size.
//
//     bench_download [megabytes...]      (default: 50 200)

#include "network/FetchUrl.h"

#include "foundation/CZoltaFilePath.h"
#include "Pairs.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QFile>
#include <QHostAddress>
#include <QProcess>
#include <QRandomGenerator>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr int kPairs = 5;

// Kilobytes of the process's resident peak so far.
long PeakResidentKb()
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmHWM:", 0) == 0)
            return std::stol(line.substr(6));
    }
    return -1;
}

long ResidentKb()
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmRSS:", 0) == 0)
            return std::stol(line.substr(6));
    }
    return -1;
}

bool WriteFileOfSize(const QString& path, qint64 megabytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QByteArray block(1024 * 1024, Qt::Uninitialized);
    for (qsizetype index = 0; index < block.size(); index += 4)
        *reinterpret_cast<quint32*>(block.data() + index) = QRandomGenerator::global()->generate();
    for (qint64 count = 0; count < megabytes; ++count) {
        if (file.write(block) != block.size())
            return false;
    }
    return true;
}

int FreePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

bool WaitForServer(int port)
{
    for (int attempt = 0; attempt < 200; ++attempt) {
        QTcpSocket probe;
        probe.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(port));
        if (probe.waitForConnected(500))
            return true;
        QThread::msleep(50);
    }
    return false;
}

QByteArray Sha256(const QString& path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    return file.open(QIODevice::ReadOnly) && hash.addData(&file) ? hash.result() : QByteArray();
}

double Seconds(const QElapsedTimer& clock)
{
    return static_cast<double>(clock.nsecsElapsed()) / 1e9;
}

// One timed fetch; the program ends if it fails.
double Timed(const std::function<bool()>& fetch)
{
    QElapsedTimer clock;
    clock.start();
    if (!fetch()) {
        std::fprintf(stderr, "a fetch failed\n");
        std::exit(1);
    }
    return Seconds(clock);
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    std::vector<qint64> sizes;
    for (int index = 1; index < argc; ++index)
        sizes.push_back(std::atoll(argv[index]));
    if (sizes.empty())
        sizes = {50, 200};

    QTemporaryDir served;
    QTemporaryDir fetched;
    for (qint64 megabytes : sizes) {
        if (!WriteFileOfSize(served.filePath(QStringLiteral("%1.bin").arg(megabytes)), megabytes)) {
            std::fprintf(stderr, "cannot write the %lld MB file\n", static_cast<long long>(megabytes));
            return 1;
        }
    }

    const int port = FreePort();
    QProcess server;
    server.setStandardOutputFile(QProcess::nullDevice());
    server.setStandardErrorFile(QProcess::nullDevice());
    server.start(QStringLiteral("python3"),
                 {QStringLiteral("-m"), QStringLiteral("http.server"), QString::number(port), QStringLiteral("--bind"),
                  QStringLiteral("127.0.0.1"), QStringLiteral("--directory"), served.path()});
    if (!server.waitForStarted() || !WaitForServer(port)) {
        std::fprintf(stderr, "python3 -m http.server did not start\n");
        return 1;
    }

    std::printf("%-8s %12s %12s %18s %14s %14s\n", "size", "FetchUrl", "curl", "ratio", "peak RSS", "RSS after");
    int result = 0;
    const long baseline = ResidentKb();
    for (qint64 megabytes : sizes) {
        const QString url = QStringLiteral("http://127.0.0.1:%1/%2.bin").arg(port).arg(megabytes);
        const QString target = fetched.filePath(QStringLiteral("out.bin"));
        const auto ours = [&] {
            return Timed([&] {
                const bool good = SUCCEEDED(FetchUrl(CAtlString(url), CZoltaFilePath(target), nullptr)) &&
                                  QFile(target).size() == megabytes * 1024 * 1024;
                QFile::remove(target);
                return good;
            });
        };
        const auto theirs = [&] {
            return Timed([&] {
                const int code = QProcess::execute(QStringLiteral("curl"),
                                                   {QStringLiteral("-s"), QStringLiteral("-o"), target, url});
                const bool good = code == 0 && QFile(target).size() == megabytes * 1024 * 1024;
                QFile::remove(target);
                return good;
            });
        };
        const bench::PairResult pair = bench::RunPairs(kPairs, ours, theirs);
        // Fast is worth nothing if the bytes are wrong: one more fetch, compared whole, untimed.
        const bool same = SUCCEEDED(FetchUrl(CAtlString(url), CZoltaFilePath(target), nullptr)) &&
                          Sha256(target) == Sha256(served.filePath(QStringLiteral("%1.bin").arg(megabytes)));
        QFile::remove(target);
        if (!same) {
            std::fprintf(stderr, "a fetch of %lld MB failed\n", static_cast<long long>(megabytes));
            result = 1;
            continue;
        }
        const double mb = static_cast<double>(megabytes);
        std::printf("%5lld MB %8.0f MB/s %7.0f MB/s %7.0f%% (%.0f-%.0f%%) %11ld kB %11ld kB\n",
                    static_cast<long long>(megabytes), mb / pair.first.median, mb / pair.second.median,
                    100.0 / pair.ratio.median, 100.0 / pair.ratio.max, 100.0 / pair.ratio.min, PeakResidentKb(),
                    ResidentKb());
    }
    std::printf("throughput of the median times, speed ratio FetchUrl / curl as median (min-max) of %d interleaved "
                "pairs\n",
                kPairs);
    std::printf("resident before the first fetch: %ld kB\n", baseline);

    server.kill();
    server.waitForFinished();
    return result;
}
