// Installing a generated local source of 1,000 packages (over 200 MB zipped) into an empty gallery,
// against the floor of extracting the same packages with Info-ZIP's unzip into one folder, in the
// same run, in interleaved pairs (5 unless the first argument asks for more). Prints the median and
// the spread of both times and of the ratio (install / unzip).
#include "installation/CGalleryCategory.h"
#include "installation/CGalleryInstallation.h"
#include "GeneratedSource.h"
#include "Pairs.h"
#include "ziparchive/ZipHelpers.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr int kCategories = 10;
constexpr int kPackagesPerCategory = 100;
constexpr size_t kContentSize = 270 * 1000;

double Seconds(std::chrono::steady_clock::time_point since)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

double UnzipFloor(const fs::path& source, const fs::path& target)
{
    fs::create_directories(target);
    const std::string command = "unzip -qq -o '" + source.string() + "/*.zip' -d '" + target.string() + "' 2>/dev/null";
    const auto start = std::chrono::steady_clock::now();
    if (std::system(command.c_str()) != 0)
        std::exit(3);
    return Seconds(start);
}

double Install(const fs::path& source, const fs::path& gallery)
{
    fs::create_directories(gallery);
    const auto start = std::chrono::steady_clock::now();
    std::unique_ptr<CGalleryInstallation> installation = CGalleryInstallation::Create();
    if (FAILED(installation->Open(CZoltaDirectoryPath(gallery.c_str()), CAtlString(source.c_str()), true)))
        std::exit(4);
    for (int i = 0; i < installation->CategoryCount(); ++i)
        installation->Category(i)->SetAction(eGalleryCategoryActionInstall);
    const HRESULT result = installation->Run();
    installation.reset();
    const double seconds = Seconds(start);
    if (result != S_OK)
        std::exit(5);
    return seconds;
}

uint64_t FolderBytes(const fs::path& folder)
{
    uint64_t total = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            total += entry.file_size();
    return total;
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const char* tmp = std::getenv("TMPDIR");
    const fs::path root = fs::path(tmp && *tmp ? tmp : "/tmp") / ("bench_install-" + std::to_string(getpid()));
    const fs::path source = root / "source";
    fs::create_directories(source);
    bench::MakeSource(source, root / "staging", kCategories, kPackagesPerCategory, kContentSize);
    fs::remove_all(root / "staging");
    std::printf("source: %d packages, %.1f MB\n", kCategories * kPackagesPerCategory,
                static_cast<double>(FolderBytes(source)) / 1e6);

    const int pairs = argc > 1 ? std::max(5, std::atoi(argv[1])) : 5;
    const bench::PairResult result = bench::RunPairs(
        pairs,
        [&] {
            const double seconds = Install(source, root / "gallery");
            fs::remove_all(root / "gallery");
            return seconds;
        },
        [&] {
            const double seconds = UnzipFloor(source, root / "floor");
            fs::remove_all(root / "floor");
            return seconds;
        });
    bench::PrintPairs("install into an empty gallery against unzip into one folder", "install", "unzip", result, pairs);
    fs::remove_all(root);
    return 0;
}
