// Scaling of manifest reading and merging. Each case runs at size N and 2N in interleaved pairs
// and prints the median and the spread of the ratio of the times: about 2 means linear, about 4
// would mean quadratic.   bench_manifest [scale] [pairs]
//   open:         parse an imsmanifest.xml whose activities all sit in one category, so that
//                 every resource is matched against a long waiting list
//   merge-known:  merge one package into a gallery that already holds all its objects, so that
//                 every category and activity is looked up by identifier
//   merge-many:   install N packages one after another into one gallery
//   find:         look up each of N sibling categories by identifier
#include "gallery/CGalleryActivity.h"
#include "gallery/CGalleryFolder.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryManifestIO.h"
#include "gallery/CGalleryMergeIndex.h"
#include "gallery/CGalleryMetadata.h"
#include "gallery/CGalleryOrganization.h"
#include "Pairs.h"
#include "Require.h"

#include <QString>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

CAtlString W(const std::string& text)
{
    return CAtlString(QString::fromStdString(text));
}

std::wstring Wide(const std::string& text)
{
    return std::wstring(text.begin(), text.end());
}

CGalleryFolder* NewCategory(const std::string& id)
{
    CGalleryFolder* folder = nullptr;
    bench::Require(CGalleryFolder::Create(&folder), "creating a category");
    bench::Require(folder->m_metadata->SetIdentifier(Wide(id).c_str()), "SetIdentifier");
    bench::Require(folder->m_metadata->m_titles->Add(L"en", Wide("Category " + id).c_str()), "adding a title");
    return folder;
}

void AddActivity(CGalleryFolder* folder, const std::string& id, const std::string& href)
{
    CGalleryActivity* activity = nullptr;
    bench::Require(CGalleryActivity::Create(&activity), "creating an activity");
    bench::Require(activity->m_metadata->SetIdentifier(Wide(id).c_str()), "SetIdentifier");
    bench::Require(activity->m_metadata->m_titles->Add(L"en", Wide("Activity " + id).c_str()), "adding a title");
    bench::Require(activity->SetHref(Wide(href).c_str()), "SetHref");
    bench::Require(folder->AddActivity(activity), "adding an activity");
}

CGalleryOrganization* AddOrganization(CGalleryManifest& manifest)
{
    CGalleryOrganization* organization = nullptr;
    bench::Require(CGalleryOrganization::Create(&organization), "creating the organization");
    bench::Require(organization->m_metadata->SetIdentifier(L"urn:bench:organization"), "SetIdentifier");
    bench::Require(organization->m_metadata->m_titles->Add(L"en", L"Bench organization"), "adding a title");
    bench::Require(manifest.AddOrganization(organization), "adding the organization");
    return organization;
}

void Touch(const fs::path& path)
{
    std::ofstream(path) << path.filename().string();
}

// A package folder: one category `category` with `activities` activities, their files included.
void WritePackage(const fs::path& folder, const std::string& packageId, const std::string& category, int activities,
                  bool withFiles)
{
    fs::create_directories(folder);
    CGalleryManifest manifest;
    bench::Require(manifest.m_metadata->SetIdentifier(Wide(packageId).c_str()), "SetIdentifier");
    bench::Require(manifest.m_metadata->SetVersion(L"1.0"), "SetVersion");
    CGalleryFolder* root = NewCategory(category);
    bench::Require(AddOrganization(manifest)->AddItem(root), "adding a category");
    for (int i = 0; i < activities; ++i) {
        const std::string href = category + "-" + std::to_string(i) + ".png";
        AddActivity(root, category + "/activity/" + std::to_string(i), href);
        if (withFiles)
            Touch(folder / href);
    }
    bench::Require(CGalleryManifestIO::Save(manifest, W((folder / "imsmanifest.xml").string()).GetString(), false),
                   "saving a package manifest");
}

double Seconds(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

using Measure = std::function<double()>;

// Each Time... sets its case up and gives back one measurement of it, to be repeated.
Measure TimeOpen(const fs::path& root, int activities)
{
    const fs::path folder = root / ("open-" + std::to_string(activities));
    WritePackage(folder, "urn:bench:open", "big", activities, false);
    return [folder] {
        CGalleryManifest manifest;
        const auto start = Clock::now();
        const HRESULT result = CGalleryManifestIO::Open(manifest, W(folder.string()).GetString(), nullptr, false);
        const double elapsed = Seconds(start);
        if (result != S_OK)
            std::fprintf(stderr, "open failed: 0x%x\n", static_cast<unsigned>(result));
        return elapsed;
    };
}

Measure TimeMergeKnown(const fs::path& root, int activities)
{
    const fs::path package = root / ("known-" + std::to_string(activities));
    WritePackage(package, "urn:bench:known", "known", activities, true);
    return [root, package] {
        const fs::path gallery = root / "known-gallery";
        fs::remove_all(gallery);
        fs::create_directories(gallery);
        CGalleryManifest installed;
        bench::Require(CGalleryManifestIO::Open(installed, W(gallery.string()).GetString(), nullptr, false),
                       "opening the gallery");
        CGalleryManifest first;
        bench::Require(CGalleryManifestIO::Open(first, W(package.string()).GetString(), nullptr, false),
                       "opening the package");
        bench::Require(CGalleryManifestIO::MergeFrom(installed, &first, nullptr), "the first merge");
        CGalleryManifest second;
        bench::Require(CGalleryManifestIO::Open(second, W(package.string()).GetString(), nullptr, false),
                       "opening the package");
        const auto start = Clock::now();
        const HRESULT result = CGalleryManifestIO::MergeFrom(installed, &second, nullptr);
        const double elapsed = Seconds(start);
        if (result != 4)
            std::fprintf(stderr, "merge failed: 0x%x\n", static_cast<unsigned>(result));
        CGalleryManifestIO::Close(installed);
        return elapsed;
    };
}

Measure TimeFind(int count)
{
    auto manifest = std::make_shared<CGalleryManifest>();
    CGalleryOrganization* organization = AddOrganization(*manifest);
    std::vector<std::wstring> identifiers;
    for (int i = 0; i < count; ++i) {
        identifiers.push_back(Wide("urn:bench:category:" + std::to_string(i)));
        bench::Require(organization->AddItem(NewCategory("urn:bench:category:" + std::to_string(i))),
                       "adding a category");
    }
    return [manifest, organization, identifiers] {
        CGalleryMergeIndex index;
        std::size_t found = 0;
        const auto start = Clock::now();
        for (const std::wstring& identifier : identifiers)
            found += index.Find(*organization->m_items, identifier.c_str()) != nullptr;
        const double elapsed = Seconds(start);
        if (found != identifiers.size())
            std::fprintf(stderr, "find missed %zu\n", identifiers.size() - found);
        return elapsed;
    };
}

Measure TimeMergeMany(const fs::path& root, int packages)
{
    std::vector<fs::path> folders;
    for (int i = 0; i < packages; ++i) {
        folders.push_back(root / ("many-" + std::to_string(i)));
        if (!fs::exists(folders.back() / "imsmanifest.xml"))
            WritePackage(folders.back(), "urn:bench:package:" + std::to_string(i), "cat" + std::to_string(i), 3, true);
    }
    return [root, folders] {
        const fs::path gallery = root / "many-gallery";
        fs::remove_all(gallery);
        fs::create_directories(gallery);
        CGalleryManifest installed;
        bench::Require(CGalleryManifestIO::Open(installed, W(gallery.string()).GetString(), nullptr, false),
                       "opening the gallery");
        double merging = 0;
        for (const fs::path& folder : folders) {
            CGalleryManifest package;
            bench::Require(CGalleryManifestIO::Open(package, W(folder.string()).GetString(), nullptr, false),
                           "opening a package");
            const auto start = Clock::now();
            const HRESULT result = CGalleryManifestIO::MergeFrom(installed, &package, nullptr);
            merging += Seconds(start);
            if (result != S_OK)
                std::fprintf(stderr, "merge of %s failed: 0x%x\n", folder.string().c_str(),
                             static_cast<unsigned>(result));
        }
        CGalleryManifestIO::Close(installed);
        return merging;
    };
}

// The case at 2N and at N in interleaved pairs; the ratio is 2N / N.
void Report(const char* name, int n, int pairs, const Measure& small, const Measure& large)
{
    const bench::PairResult result = bench::RunPairs(pairs, large, small);
    std::printf("%-12s N=%-6d %s   2N=%-6d %s   ratio %.2f (%.2f-%.2f)\n", name, n,
                bench::Format(result.second, 1.0, "s", 4).c_str(), 2 * n,
                bench::Format(result.first, 1.0, "s", 4).c_str(), result.ratio.median, result.ratio.min,
                result.ratio.max);
}

}  // namespace

int main(int argc, char** argv)
{
    const int scale = argc > 1 ? std::max(1, std::atoi(argv[1])) : 1;
    const int pairs = argc > 2 ? std::max(5, std::atoi(argv[2])) : 5;
    // A memory-backed folder when there is one: disk write-back would drown the merge timings.
    std::string base = fs::is_directory("/dev/shm") && access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    std::string patternText = base + "/bench_manifest.XXXXXX";
    std::vector<char> pattern(patternText.begin(), patternText.end());
    pattern.push_back('\0');
    if (!mkdtemp(pattern.data())) {
        std::perror("mkdtemp");
        return 1;
    }
    const fs::path root(pattern.data());

    const int openN = 20000 * scale;
    std::printf("median (min-max) of %d interleaved pairs\n", pairs);
    Report("open", openN, pairs, TimeOpen(root, openN), TimeOpen(root, 2 * openN));
    const int knownN = 5000 * scale;
    Report("merge-known", knownN, pairs, TimeMergeKnown(root, knownN), TimeMergeKnown(root, 2 * knownN));
    const int findN = 100000 * scale;
    Report("find", findN, pairs, TimeFind(findN), TimeFind(2 * findN));
    const int manyN = 500 * scale;
    Report("merge-many", manyN, pairs, TimeMergeMany(root, manyN), TimeMergeMany(root, 2 * manyN));

    std::error_code error;
    fs::remove_all(root, error);
    return 0;
}
