// Extraction and packing through the zip helpers, against Info-ZIP's unzip and zip on the same
// data in the same run. The data: 1,000 files, 200 MB, a mix of gallery-like text and random
// bytes. Each comparison runs in interleaved pairs (5 unless the first argument asks for more) and
// prints the median and the spread of the time ratios (ours / theirs).
#include "ziparchive/ZipHelpers.h"

#include "Pairs.h"

#include <QString>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
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

CZoltaFilePath FilePath(const fs::path& path)
{
    return CZoltaFilePath(QString::fromStdString(path.string()));
}
CZoltaDirectoryPath FolderPath(const fs::path& path)
{
    return CZoltaDirectoryPath(QString::fromStdString(path.string()));
}

void Fresh(const fs::path& path)
{
    fs::remove_all(path);
    fs::create_directories(path);
}

double Seconds(const std::function<bool()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    if (!work()) {
        std::fprintf(stderr, "a side failed\n");
        std::exit(2);
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double ExtractOwn()
{
    const fs::path target = WorkRoot() / "extract-own";
    Fresh(target);
    return Seconds([&] { return ZipExtractAll(FilePath(SharedArchive()), FolderPath(target)); });
}

double ExtractUnzip()
{
    const fs::path target = WorkRoot() / "extract-unzip";
    Fresh(target);
    const std::string command = "unzip -q -o '" + SharedArchive().string() + "' -d '" + target.string() + "'";
    return Seconds([&] { return std::system(command.c_str()) == 0; });
}

double PackOwn()
{
    const fs::path archive = WorkRoot() / "pack-own.zip";
    fs::remove(archive);
    return Seconds([&] { return ZipAddDirectory(FolderPath(SourceFolder()), FilePath(archive)); });
}

double PackZip()
{
    const fs::path archive = WorkRoot() / "pack-zip.zip";
    fs::remove(archive);
    // zip's default level is 6, the same as zlib's default that the helper uses.
    const std::string command = "cd '" + SourceFolder().string() + "' && zip -q -r -6 '" + archive.string() + "' .";
    return Seconds([&] { return std::system(command.c_str()) == 0; });
}

}  // namespace

int main(int argc, char** argv)
{
    if (std::system("command -v zip >/dev/null && command -v unzip >/dev/null") != 0) {
        std::fprintf(stderr, "zip and unzip are needed for the comparison\n");
        return 1;
    }
    const int pairs = argc > 1 ? std::max(5, std::atoi(argv[1])) : 5;
    SharedArchive();  // made before the clock runs
    const bench::PairResult extract = bench::RunPairs(pairs, ExtractOwn, ExtractUnzip);
    const bench::PairResult pack = bench::RunPairs(pairs, PackOwn, PackZip);
    bench::PrintPairs("extract 200 MB against unzip -q -o (target <= 1.0)", "ours", "unzip", extract, pairs);
    bench::PrintPairs("pack the folder against zip -q -r -6 (target <= 1.2)", "ours", "zip", pack, pairs);
    std::error_code error;
    fs::remove_all(WorkRoot(), error);
    return 0;
}
