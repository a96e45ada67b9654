// `curatool --installall` from a local source of many small packages, measured from outside as a
// new user would see it, against Info-ZIP's unzip extracting the same archives one after another
// into one folder. Each package is a manifest and 10 files of 20 kB; the packages are spread over
// 10 categories. Both sides run in turn (the order swaps every pair), each on a synced disk, and
// for each source size the median and the spread of the pairs are printed, with the ratio
// install / unzip.
//
//   bench_installall [pairs] [packages...]      default: 5 pairs at 250, 500 and 1000 packages
//   bench_installall --make DIR PACKAGES        only writes DIR/collection and DIR/source (to profile)
// CURATOOL_BENCH_BINARY names another curatool to measure (an earlier build, say).
#include "GeneratedSource.h"
#include "Pairs.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using bench::WriteFile;

constexpr int kCategories = 10;
constexpr int kFilesPerPackage = 10;
constexpr std::size_t kFileSize = 20 * 1000;
const char kGalleryGuid[] = "7d3e1a90-5b2c-4f8e-a1d6-3c9b0e7f2a44";

std::string CategoryGuid(int category)
{
    char guid[40];
    std::snprintf(guid, sizeof guid, "7d3e1a90-5b2c-4f8e-a1d6-%012d", category);
    return guid;
}

std::string Lom(const std::string& id, const std::string& title, const std::string& extra = "")
{
    return "<lom:lom><lom:general><lom:identifier><lom:category>URI</lom:category><lom:entry>" + id +
           "</lom:entry></lom:identifier><lom:title><lom:string language=\"en\">" + title +
           "</lom:string></lom:title><lom:keyword><lom:string language=\"en\">lesson</lom:string></lom:keyword>"
           "</lom:general>" +
           extra + "</lom:lom>";
}

// One package: an activity per content file, in the gallery category of its source category.
std::string PackageManifest(int category, int package)
{
    const std::string id = "bench.pkg" + std::to_string(package);
    std::string items;
    std::string resources;
    for (int f = 0; f < kFilesPerPackage; ++f) {
        const std::string n = std::to_string(f);
        const std::string file = "p" + std::to_string(package) + "_" + n + ".png";
        items +=
            "<item identifier=\"i" + n + "\" identifierref=\"r" + n + "\"><title>" + file + "</title><metadata>" +
            Lom(id + ".item" + n, "Picture " + n, "<lom:technical><lom:format>image/png</lom:format></lom:technical>") +
            "</metadata></item>\n";
        resources += "<resource identifier=\"r" + n + "\" type=\"webcontent\" href=\"" + file + "\"><file href=\"" +
                     file + "\"/></resource>\n";
    }
    const std::string title = "Category " + std::to_string(category);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
           "<manifest identifier=\"m\" version=\"2006-01\" xmlns=\"http://www.imsglobal.org/xsd/imscp_v1p1\" "
           "xmlns:lom=\"http://ltsc.ieee.org/xsd/LOM\">\n<metadata>" +
           Lom(id, id,
               "<lom:lifeCycle><lom:version><lom:string "
               "language=\"en\">1.0</lom:string></lom:version></lom:lifeCycle>") +
           "</metadata>\n<organizations default=\"o\"><organization identifier=\"o\"><title>Bench Collection</title>\n"
           "<item identifier=\"c\"><title>" +
           title + "</title>\n<metadata>" + Lom("bench.category" + std::to_string(category), title) + "</metadata>\n" +
           items + "</item>\n<metadata>" + Lom("bench.organization", "Bench Collection") +
           "</metadata></organization></organizations>\n<resources>\n" + resources + "</resources>\n</manifest>\n";
}

std::string Quoted(const fs::path& path)
{
    return "'" + path.string() + "'";
}

// The collection: the sample's texts and pictures with a gallery of 10 categories.
void MakeCollection(const fs::path& collection)
{
    fs::create_directories(collection);
    for (const char* file : {"about.html", "splash.html", "logo.png", "metadata.xml", "style.qss"})
        fs::copy_file(fs::path(CURATOOL_SOURCE_DIR) / "samples/collection" / file, collection / file);
    std::string categories;
    for (int c = 0; c < kCategories; ++c)
        categories += "    <Category ShortID=\"c" + std::to_string(c) + "\" GUID=\"" + CategoryGuid(c) + "\"/>\n";
    WriteFile(collection / "configuration.xml",
              "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<CCSettings Version=\"1.0.0.0\">\n"
              "  <Application>\n    <Title Value=\"Bench Collection\"/>\n    <About Value=\"about.html\"/>\n"
              "    <SplashScreen Text=\"splash.html\" TextOffset_X=\"180\" TextOffset_Y=\"40\" ShowText=\"true\"/>\n"
              "    <StyleSheet Value=\"style.qss\"/>\n  </Application>\n  <Organization>\n"
              "    <Name Value=\"Bench Organization\"/>\n    <Logo Value=\"logo.png\"/>\n  </Organization>\n"
              "  <Gallery GUID=\"" +
                  std::string(kGalleryGuid) +
                  "\" DefaultSource=\"http://localhost:1/none\" Name=\"Bench Collection\">\n" + categories +
                  "  </Gallery>\n</CCSettings>\n");
}

// Packages zipped by Info-ZIP, as a publisher would make them, and the categories document.
void MakeSource(const fs::path& source, const fs::path& staging, int packages)
{
    std::string document = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<gallery>\n<categories id=\"" +
                           std::string(kGalleryGuid) + "\">\n";
    const int perCategory = packages / kCategories;
    fs::create_directories(source);
    for (int c = 0; c < kCategories; ++c) {
        document += "<category id=\"" + CategoryGuid(c) +
                    "\" version=\"1.0\">\n<title><string language=\"en\">Category " + std::to_string(c) +
                    "</string></title>\n<files>\n";
        for (int p = 0; p < perCategory; ++p) {
            const int n = c * perCategory + p;
            const fs::path folder = staging / std::to_string(n);
            WriteFile(folder / "imsmanifest.xml", PackageManifest(c, n));
            for (int f = 0; f < kFilesPerPackage; ++f)
                WriteFile(folder / ("p" + std::to_string(n) + "_" + std::to_string(f) + ".png"),
                          bench::ContentBytes(unsigned(n * kFilesPerPackage + f), kFileSize));
            const std::string name = "package" + std::to_string(n) + ".zip";
            const std::string zip = "cd " + Quoted(folder) + " && zip -q -X -r " + Quoted(source / name) + " .";
            if (std::system(zip.c_str()) != 0)
                std::exit(2);
            document += "<file id=\"bench.pkg" + std::to_string(n) + "\" version=\"1.0\">" + name + "</file>\n";
        }
        document += "</files>\n</category>\n";
    }
    WriteFile(source / "gallery_categories.xml", document + "</categories>\n</gallery>\n");
}

// Runs a program to its end with its output (and with `quiet` its complaints) thrown away; the
// wall-clock seconds, or exits.
double Run(const std::vector<std::string>& arguments, const std::vector<std::string>& environment, bool quiet = false)
{
    std::vector<char*> argv;
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    // Each side starts on a disk with nothing left to write: what the other side (or the making
    // of the sources) left in the page cache would otherwise be written back during this run,
    // and only the side that syncs its files would wait for it.
    ::sync();
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
        for (const std::string& variable : environment)
            putenv(const_cast<char*>(variable.c_str()));
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDOUT_FILENO);
        if (quiet)
            dup2(null, STDERR_FILENO);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "%s failed (status %d)\n", arguments.front().c_str(), status);
        std::exit(3);
    }
    return seconds;
}

std::size_t CountFiles(const fs::path& folder, const std::string& extension)
{
    std::size_t count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file() && entry.path().extension() == extension)
            ++count;
    return count;
}

// What a run wrote stays until the end of the benchmark, like the sources and their staging:
// on some file systems (ext4 without a journal) the inodes of files deleted in the last half
// minute are passed over one by one when new ones are made, and a side that runs just after
// thousands of files were deleted would pay for it.
fs::path Output(const fs::path& root, const char* side)
{
    static int count = 0;
    return root / "outputs" / (side + std::to_string(++count));
}

// Installs into a new gallery in a new world: its own HOME, settings, temporary folder and root.
double Install(const fs::path& root, const fs::path& collection, const fs::path& source, int packages)
{
    const fs::path world = Output(root, "world");
    for (const char* folder : {"home", "config", "tmp", "root"})
        fs::create_directories(world / folder);
    const fs::path gallery = world / "gallery";
    const char* other = std::getenv("CURATOOL_BENCH_BINARY");
    const double seconds = Run({other && *other ? other : CURATOOL_BINARY, "--installall", "-configuration",
                                collection.string(), "-source", source.string(), "-destination", gallery.string()},
                               {"HOME=" + (world / "home").string(), "XDG_CONFIG_HOME=" + (world / "config").string(),
                                "TMPDIR=" + (world / "tmp").string(), "CURATOOL_ROOT=" + (world / "root").string(),
                                "QT_QPA_PLATFORM=offscreen"});
    if (CountFiles(gallery, ".png") != std::size_t(packages) * kFilesPerPackage) {
        std::fprintf(stderr, "the gallery lacks files\n");
        std::exit(4);
    }
    std::fprintf(stderr, "  %d packages: install %.2f s\n", packages, seconds);
    return seconds;
}

double Unzip(const fs::path& root, const fs::path& source, int packages)
{
    const fs::path floor = Output(root, "floor");
    fs::create_directories(floor);
    // Quiet: unzip tells the count of archives it went through even with -qq.
    const double seconds = Run({"unzip", "-qq", "-o", (source / "*.zip").string(), "-d", floor.string()}, {}, true);
    if (CountFiles(floor, ".png") != std::size_t(packages) * kFilesPerPackage) {
        std::fprintf(stderr, "unzip left files out\n");
        std::exit(4);
    }
    return seconds;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc == 4 && std::strcmp(argv[1], "--make") == 0) {
        const fs::path folder = fs::absolute(argv[2]);
        MakeCollection(folder / "collection");
        MakeSource(folder / "source", folder / "staging", std::max(kCategories, std::atoi(argv[3])));
        fs::remove_all(folder / "staging");
        return 0;
    }
    const int pairs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
    std::vector<int> sizes;
    for (int i = 2; i < argc; ++i)
        sizes.push_back(std::max(kCategories, std::atoi(argv[i]) / kCategories * kCategories));
    if (sizes.empty())
        sizes = {250, 500, 1000};

    const char* tmp = std::getenv("TMPDIR");
    const fs::path root = fs::path(tmp && *tmp ? tmp : "/tmp") / ("bench_installall-" + std::to_string(getpid()));
    const fs::path collection = root / "collection";
    MakeCollection(collection);

    std::printf("%8s  %-28s  %-28s  %-22s  %s\n", "packages", "install s (median, min-max)",
                "unzip s (median, min-max)", "ratio (median, min-max)", "install ms/package");
    // Every source first, and nothing deleted until the end (see Output).
    std::vector<fs::path> sources;
    for (const int packages : sizes) {
        sources.push_back(root / ("source" + std::to_string(packages)));
        MakeSource(sources.back(), root / ("staging" + std::to_string(packages)), packages);
    }
    for (std::size_t index = 0; index < sizes.size(); ++index) {
        const int packages = sizes[index];
        const fs::path& source = sources[index];
        int pair = 0;
        const bench::PairResult result = bench::RunPairs(
            pairs, [&] { return Install(root, collection, source, packages); },
            [&] {
                const double seconds = Unzip(root, source, packages);
                std::fprintf(stderr, "  %d packages, pair %d: unzip %.2f s\n", packages, ++pair, seconds);
                return seconds;
            });
        const auto text = [](const bench::Spread& spread) {
            char line[64];
            std::snprintf(line, sizeof line, "%.2f (%.2f-%.2f)", spread.median, spread.min, spread.max);
            return std::string(line);
        };
        std::printf("%8d  %-28s  %-28s  %-22s  %.2f\n", packages, text(result.first).c_str(),
                    text(result.second).c_str(), text(result.ratio).c_str(), result.first.median * 1000 / packages);
        std::fflush(stdout);
    }
    std::printf("%d interleaved pairs per size; the spread is the range of the pairs.\n", pairs);
    fs::remove_all(root);
    return 0;
}
