// Opening a manifest of 100,000 activities from its binary cache, against parsing its XML and
// against the floor of any cache reader: reading the file and computing its CRC. Each comparison
// runs in interleaved pairs (5 unless the first argument asks for more) and prints the median and
// the spread of both sides and of the ratio. Works in a temporary home of its own.
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryManifestIO.h"
#include "gallery/CGalleryMetadata.h"
#include "gallery/cache/ManifestCache.h"
#include "Pairs.h"
#include "Require.h"

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/mman.h>

namespace {

constexpr int kFolders = 100;
constexpr int kActivitiesPerFolder = 1000;

std::string g_root;
std::string g_xml;
std::string g_cache;

std::string Narrow(const wchar_t* text)
{
    return CAtlString(text).ToQString().toStdString();
}

CAtlString Wide(const std::string& text)
{
    return CAtlString(QString::fromStdString(text));
}

void Fill(CGalleryMetadata& metadata, const std::wstring& identifier, const std::wstring& title)
{
    bench::Require(metadata.SetIdentifier(identifier.c_str()), "SetIdentifier");
    bench::Require(metadata.SetVersion(L"1.0"), "SetVersion");
    bench::Require(metadata.m_titles->Add(L"en", title.c_str()), "adding a title");
    bench::Require(metadata.m_titles->Add(L"fr", (title + L" (fr)").c_str()), "adding a title");
    bench::Require(metadata.m_keywords->Add(L"en", L"science;nature;picture"), "adding keywords");
}

void WriteLargeManifest()
{
    CGalleryManifest manifest;
    Fill(*manifest.m_metadata, L"urn:bench:manifest", L"Bench");
    CGalleryOrganization* organization = nullptr;
    bench::Require(CGalleryOrganization::Create(&organization), "creating the organization");
    Fill(*organization->m_metadata, L"urn:bench:organization", L"Organization");
    bench::Require(manifest.AddOrganization(organization), "adding the organization");
    for (int f = 0; f < kFolders; ++f) {
        CGalleryFolder* folder = nullptr;
        bench::Require(CGalleryFolder::Create(&folder), "creating a category");
        Fill(*folder->m_metadata, L"urn:bench:folder" + std::to_wstring(f), L"Category " + std::to_wstring(f));
        bench::Require(organization->AddItem(folder), "adding a category");
        for (int a = 0; a < kActivitiesPerFolder; ++a) {
            CGalleryActivity* activity = nullptr;
            bench::Require(CGalleryActivity::Create(&activity), "creating an activity");
            const std::wstring number = std::to_wstring(f) + L"_" + std::to_wstring(a);
            Fill(*activity->m_metadata, L"urn:bench:activity" + number, L"Picture " + number);
            bench::Require(activity->m_metadata->SetFormat(L"image/png"), "SetFormat");
            bench::Require(activity->SetHref((L"Content/pictures/picture" + number + L".png").c_str()), "SetHref");
            bench::Require(folder->AddActivity(activity), "adding an activity");
        }
    }
    if (FAILED(CGalleryManifestIO::Save(manifest, Wide(g_xml).GetString(), false))) {
        std::fprintf(stderr, "saving the manifest failed\n");
        std::exit(1);
    }
}

template <class Body>
double Seconds(Body body)
{
    const auto start = std::chrono::steady_clock::now();
    body();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double OpenSeconds(bool useCache)
{
    CGalleryManifest manifest;
    const double seconds = Seconds([&] {
        if (FAILED(CGalleryManifestIO::Open(manifest, Wide(g_xml).GetString(), nullptr, useCache))) {
            std::fprintf(stderr, "opening failed\n");
            std::exit(1);
        }
    });
    if (useCache && manifest.m_cachePath[0] == 0) {
        std::fprintf(stderr, "the cache was not used\n");
        std::exit(1);
    }
    benchmark::DoNotOptimize(manifest.m_organizations);
    return seconds;
}

double XmlSeconds()
{
    return OpenSeconds(false);
}
double CacheSeconds()
{
    return OpenSeconds(true);
}

// What no cache reader can beat: one read of the file into one buffer and its CRC, done the
// way the reader does it (large pages asked for, the CRC taken slice by slice as it comes in).
double ReadAndCrcSeconds()
{
    std::uint32_t crc = 0;
    const double seconds = Seconds([&] {
        std::FILE* file = std::fopen(g_cache.c_str(), "rb");
        std::fseek(file, 0, SEEK_END);
        const std::size_t size = static_cast<std::size_t>(std::ftell(file));
        std::fseek(file, 0, SEEK_SET);
        auto* buffer = static_cast<unsigned char*>(std::malloc(size));
        constexpr std::uintptr_t kLargePage = 2u << 20;
        const auto begin = (reinterpret_cast<std::uintptr_t>(buffer) + kLargePage - 1) & ~(kLargePage - 1);
        const auto end = (reinterpret_cast<std::uintptr_t>(buffer) + size) & ~(kLargePage - 1);
        if (end > begin)
            madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
        uLong running = crc32(0, Z_NULL, 0);
        constexpr std::size_t kSlice = 256 * 1024;
        for (std::size_t done = 0; done < size;) {
            const std::size_t want = std::min(kSlice, size - done);
            if (std::fread(buffer + done, 1, want, file) != want)
                std::exit(1);
            const std::size_t from = std::max<std::size_t>(done, 68);
            if (done + want > from)
                running = crc32(running, buffer + from, static_cast<uInt>(done + want - from));
            done += want;
        }
        std::fclose(file);
        crc = static_cast<std::uint32_t>(running);
        std::free(buffer);
    });
    benchmark::DoNotOptimize(crc);
    return seconds;
}

// The same without the reader's care: one fread into fresh memory, then the CRC.
double NaiveReadAndCrcSeconds()
{
    std::uint32_t crc = 0;
    const double seconds = Seconds([&] {
        std::FILE* file = std::fopen(g_cache.c_str(), "rb");
        std::fseek(file, 0, SEEK_END);
        const long told = std::ftell(file);
        if (told < 68)  // not even a header: nothing to check
            std::exit(1);
        const auto size = static_cast<std::size_t>(told);
        std::fseek(file, 0, SEEK_SET);
        auto* buffer = static_cast<unsigned char*>(std::malloc(size));
        if (std::fread(buffer, 1, size, file) != size)
            std::exit(1);
        std::fclose(file);
        crc = static_cast<std::uint32_t>(crc32(crc32(0, Z_NULL, 0), buffer + 68, static_cast<uInt>(size - 68)));
        std::free(buffer);
    });
    benchmark::DoNotOptimize(crc);
    return seconds;
}

}  // namespace

int main(int argc, char** argv)
{
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/curatool-bench-cache-XXXXXX";
    if (!mkdtemp(pattern.data())) {
        std::perror("mkdtemp");
        return 1;
    }
    g_root = pattern;
    // The cache goes to the per-user gallery folder: keep it inside the scratch folder.
    setenv("HOME", g_root.c_str(), 1);
    std::filesystem::create_directories(g_root + "/Large Gallery");
    g_xml = g_root + "/Large Gallery/imsmanifest.xml";
    WriteLargeManifest();
    {
        // The first open with the cache allowed parses and writes the cache.
        CGalleryManifest manifest;
        if (FAILED(CGalleryManifestIO::Open(manifest, Wide(g_xml).GetString(), nullptr, true))) {
            std::fprintf(stderr, "writing the cache failed\n");
            return 1;
        }
    }
    g_cache = Narrow(GetManifestCachePath(Wide(g_xml)).GetPath().GetString());
    std::printf("activities: %d, XML: %.1f MB, cache: %.1f MB\n", kFolders * kActivitiesPerFolder,
                static_cast<double>(std::filesystem::file_size(g_xml)) / 1048576.0,
                static_cast<double>(std::filesystem::file_size(g_cache)) / 1048576.0);

    const int pairs = argc > 1 ? std::max(5, std::atoi(argv[1])) : 5;
    // Each comparison in interleaved pairs, so that both sides see the same machine.
    const bench::PairResult xmlCache = bench::RunPairs(pairs, XmlSeconds, CacheSeconds);
    const bench::PairResult cacheFloor = bench::RunPairs(pairs, CacheSeconds, ReadAndCrcSeconds);
    const bench::PairResult cachePlain = bench::RunPairs(pairs, CacheSeconds, NaiveReadAndCrcSeconds);
    bench::PrintPairs("open from XML against open from cache (target >= 20)", "XML", "cache", xmlCache, pairs);
    bench::PrintPairs("open from cache against read file + CRC (target <= 2)", "cache", "read+CRC", cacheFloor, pairs);
    bench::PrintPairs("open from cache against plain fread + CRC", "cache", "fread+CRC", cachePlain, pairs);
    const bool met = xmlCache.ratio.median >= 20.0 && cacheFloor.ratio.median <= 2.0;
    std::printf("targets %s: XML / cache %.1f (>= 20), cache / (read+CRC) %.2f (<= 2), medians\n",
                met ? "met" : "MISSED", xmlCache.ratio.median, cacheFloor.ratio.median);
    std::filesystem::remove_all(g_root);
    return met ? 0 : 1;
}
