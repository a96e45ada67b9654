// Installing a generated local source of 1,000 packages (over 200 MB zipped) into an empty gallery,
// against the floor of extracting the same packages with Info-ZIP's unzip into one folder, in the
// same run, in interleaved pairs (5 unless the first argument asks for more). Prints the median and
// the spread of both times and of the ratio (install / unzip).
#include "CGalleryCategory.h"
#include "CGalleryInstallation.h"
#include "Pairs.h"
#include "ZipHelpers.h"

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

// Pictures and sounds barely compress: mostly random bytes, a little text.
std::string ContentBytes(unsigned seed)
{
    std::string bytes;
    bytes.reserve(kContentSize);
    uint64_t state = seed * 0x9E3779B97F4A7C15ull + 1;
    while (bytes.size() < kContentSize) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        if (state % 16 == 0)
            bytes += "<meta name=\"picture\" content=\"lesson " + std::to_string(state % 977) + "\"/>\n";
        else
            bytes.append(reinterpret_cast<const char*>(&state), 8);
    }
    bytes.resize(kContentSize);
    return bytes;
}

std::string Lom(const std::string& id)
{
    return "<lom:lom><lom:general><lom:identifier><lom:entry>" + id +
           "</lom:entry></lom:identifier><lom:title><lom:string language=\"en\">" + id +
           "</lom:string></lom:title></lom:general><lom:lifeCycle><lom:version><lom:string language=\"en\">1.0"
           "</lom:string></lom:version></lom:lifeCycle></lom:lom>";
}

// One package: a category of the gallery holding one activity with its content file.
std::string PackageManifest(int category, const std::string& id, const std::string& content)
{
    const std::string folder = "bench.category" + std::to_string(category);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<manifest identifier=\"m\" version=\"2006-01\"><metadata>" +
           Lom(id) + "</metadata>\n<organizations default=\"o\"><organization identifier=\"o\"><title>Bench</title>\n"
           "<item identifier=\"c\"><title>" + folder + "</title>\n<item identifier=\"a\" identifierref=\"r\"><title>" +
           id + "</title><metadata>" + Lom(id + ".activity") + "</metadata></item>\n<metadata>" + Lom(folder) +
           "</metadata></item>\n<metadata>" + Lom("bench.organization") +
           "</metadata></organization></organizations>\n<resources><resource identifier=\"r\" type=\"webcontent\" "
           "href=\"" + content + "\"><file href=\"" + content + "\"/></resource></resources>\n</manifest>\n";
}

void WriteFile(const fs::path& path, const std::string& bytes)
{
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

// Packages zipped by Info-ZIP, as a publisher would make them, and the categories document.
void MakeSource(const fs::path& source, const fs::path& staging)
{
    std::string document = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<gallery>\n<categories>\n";
    for (int c = 0; c < kCategories; ++c) {
        document += "<category id=\"bench.category" + std::to_string(c) +
                    "\" version=\"1.0\">\n<title><t language=\"en\">Category " + std::to_string(c) +
                    "</t></title>\n<files>\n";
        for (int p = 0; p < kPackagesPerCategory; ++p) {
            const int n = c * kPackagesPerCategory + p;
            const std::string id = "bench.package" + std::to_string(n);
            const std::string content = "content" + std::to_string(n) + ".bin";
            const fs::path folder = staging / std::to_string(n);
            WriteFile(folder / "imsmanifest.xml", PackageManifest(c, id, content));
            WriteFile(folder / content, ContentBytes(unsigned(n)));
            const std::string zip = "cd '" + folder.string() + "' && zip -q -r '" +
                                    (source / ("package" + std::to_string(n) + ".zip")).string() + "' .";
            if (std::system(zip.c_str()) != 0)
                std::exit(2);
            document += "<file id=\"" + id + "\" version=\"1.0\">package" + std::to_string(n) + ".zip</file>\n";
        }
        document += "</files>\n</category>\n";
    }
    WriteFile(source / "gallery_categories.xml", document + "</categories>\n</gallery>\n");
}

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
    MakeSource(source, root / "staging");
    fs::remove_all(root / "staging");
    std::printf("source: %d packages, %.1f MB\n", kCategories * kPackagesPerCategory, FolderBytes(source) / 1e6);

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
