// Extraction and packing through the zip helpers, against Info-ZIP's unzip and zip on the same
// data in the same run. The data: 1,000 files, 200 MB, a mix of gallery-like text and random
// bytes. Prints the time ratios (ours / theirs) at the end.
#include "ZipHelpers.h"

#include <benchmark/benchmark.h>

#include <QString>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr int kFiles = 1000;
constexpr size_t kFileSize = 200 * 1000;

const fs::path& WorkRoot()
{
    static const fs::path root = [] {
        const char* tmp = std::getenv("TMPDIR");
        fs::path path = fs::path(tmp && *tmp ? tmp : "/tmp") / ("bench_zip-" + std::to_string(getpid()));
        fs::create_directories(path);
        return path;
    }();
    return root;
}

// About a third random bytes in short runs, the rest text lines: deflate gets roughly 2:1.
std::string FileBytes(unsigned seed)
{
    std::string bytes;
    bytes.reserve(kFileSize);
    uint64_t state = seed * 0x9E3779B97F4A7C15ull + 1;
    auto next = [&state] {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return state;
    };
    while (bytes.size() < kFileSize) {
        if (next() % 3 == 0) {
            for (int i = 0; i < 32; ++i) {
                const uint64_t word = next();
                bytes.append(reinterpret_cast<const char*>(&word), 8);
            }
        } else {
            bytes += "<item id=\"" + std::to_string(next() % 100000) + "\" title=\"Gallery picture " +
                     std::to_string(next() % 977) + "\" keywords=\"lesson activity sound\"/>\n";
        }
    }
    bytes.resize(kFileSize);
    return bytes;
}

const fs::path& SourceFolder()
{
    static const fs::path folder = [] {
        const fs::path path = WorkRoot() / "source";
        for (int i = 0; i < kFiles; ++i) {
            const fs::path file = path / ("category" + std::to_string(i / 100)) / ("item" + std::to_string(i) + ".dat");
            fs::create_directories(file.parent_path());
            std::ofstream(file, std::ios::binary) << FileBytes(unsigned(i));
        }
        return path;
    }();
    return folder;
}

// The archive both extraction runs read, made by Info-ZIP zip so neither side reads its own.
const fs::path& SharedArchive()
{
    static const fs::path archive = [] {
        const fs::path path = WorkRoot() / "shared.zip";
        const std::string command = "cd '" + SourceFolder().string() + "' && zip -q -r '" + path.string() + "' .";
        if (std::system(command.c_str()) != 0)
            std::fprintf(stderr, "zip failed\n");
        return path;
    }();
    return archive;
}

CZoltaFilePath FilePath(const fs::path& path) { return CZoltaFilePath(QString::fromStdString(path.string())); }
CZoltaDirectoryPath FolderPath(const fs::path& path)
{
    return CZoltaDirectoryPath(QString::fromStdString(path.string()));
}

void Fresh(const fs::path& path)
{
    fs::remove_all(path);
    fs::create_directories(path);
}

void BM_ExtractOwn(benchmark::State& state)
{
    const fs::path archive = SharedArchive();
    const fs::path target = WorkRoot() / "extract-own";
    for (auto _ : state) {
        state.PauseTiming();
        Fresh(target);
        state.ResumeTiming();
        if (!ZipExtractAll(FilePath(archive), FolderPath(target)))
            state.SkipWithError("extraction failed");
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kFiles * int64_t(kFileSize));
}

void BM_ExtractUnzip(benchmark::State& state)
{
    const fs::path archive = SharedArchive();
    const fs::path target = WorkRoot() / "extract-unzip";
    const std::string command = "unzip -q -o '" + archive.string() + "' -d '" + target.string() + "'";
    for (auto _ : state) {
        state.PauseTiming();
        Fresh(target);
        state.ResumeTiming();
        if (std::system(command.c_str()) != 0)
            state.SkipWithError("unzip failed");
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kFiles * int64_t(kFileSize));
}

void BM_PackOwn(benchmark::State& state)
{
    const fs::path source = SourceFolder();
    const fs::path archive = WorkRoot() / "pack-own.zip";
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove(archive);
        state.ResumeTiming();
        if (!ZipAddDirectory(FolderPath(source), FilePath(archive)))
            state.SkipWithError("packing failed");
    }
    state.counters["archive_MB"] = double(fs::file_size(archive)) / 1e6;
}

void BM_PackZip(benchmark::State& state)
{
    const fs::path source = SourceFolder();
    const fs::path archive = WorkRoot() / "pack-zip.zip";
    // zip's default level is 6, the same as zlib's default that the helper uses.
    const std::string command = "cd '" + source.string() + "' && zip -q -r -6 '" + archive.string() + "' .";
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove(archive);
        state.ResumeTiming();
        if (std::system(command.c_str()) != 0)
            state.SkipWithError("zip failed");
    }
    state.counters["archive_MB"] = double(fs::file_size(archive)) / 1e6;
}

BENCHMARK(BM_ExtractOwn)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_ExtractUnzip)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_PackOwn)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(BM_PackZip)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

// Keeps each benchmark's real time per iteration so the ratios can be printed at the end.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            m_times[run.benchmark_name()] = run.GetAdjustedRealTime();
        ConsoleReporter::ReportRuns(runs);
    }
    void PrintRatio(const char* label, const std::string& ours, const std::string& theirs, double target) const
    {
        const auto a = m_times.find(ours);
        const auto b = m_times.find(theirs);
        if (a == m_times.end() || b == m_times.end() || b->second <= 0)
            return;
        const double ratio = a->second / b->second;
        std::printf("%-40s %.3f (target <= %.1f) %s\n", label, ratio, target, ratio <= target ? "ok" : "SLOWER");
    }

private:
    std::map<std::string, double> m_times;
};

}  // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (std::system("command -v zip >/dev/null && command -v unzip >/dev/null") != 0) {
        std::fprintf(stderr, "zip and unzip are needed for the comparison\n");
        return 1;
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\n");
    reporter.PrintRatio("extract 200 MB / unzip -q -o", "BM_ExtractOwn/iterations:3/real_time",
                        "BM_ExtractUnzip/iterations:3/real_time", 1.0);
    reporter.PrintRatio("pack folder / zip -q -r -6", "BM_PackOwn/iterations:3/real_time",
                        "BM_PackZip/iterations:3/real_time", 1.2);
    std::error_code error;
    fs::remove_all(WorkRoot(), error);
    benchmark::Shutdown();
    return 0;
}
