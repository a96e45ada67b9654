#include "support/E2EGallery.h"
#include "support/GallerySourceBuilder.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

constexpr int kPackages = 40;

// A source whose one category is large enough for a kill to land in the middle of its install.
class InterruptedRun : public E2EGallery {
protected:
    void SetUp() override
    {
        E2EGallery::SetUp();
        m_big = m_base + "/big-source";
        fs::create_directories(m_big);
        const SampleCategory& animals = Category("animals");
        CategorySpec offered{animals.guid, "1.0", {{"en", animals.title}}, {}, {}, ""};
        for (int i = 0; i < kPackages; ++i) {
            const std::string id = "pkg.bulk" + std::to_string(i);
            const std::string file = "bulk" + std::to_string(i) + ".zip";
            PackageSpec package{id, "1.0", "bulk" + std::to_string(i) + ".bin", Bytes(i), "Bulk " + std::to_string(i)};
            WritePackageZip(m_big, file, package);
            offered.files.push_back({file, id, "1.0", ""});
        }
        std::string xml = CategoriesXml({offered});
        xml.replace(xml.find("<categories>"), 12, std::string("<categories id=\"") + kGalleryGuid + "\">");
        ASSERT_TRUE(WriteFile(m_big + "/gallery_categories.xml", xml));
    }

    // Content that does not compress away, so that every package costs real work.
    static std::string Bytes(int seed)
    {
        std::string bytes(256 * 1024, '\0');
        unsigned state = 2166136261u + static_cast<unsigned>(seed);
        for (char& c : bytes) {
            state = state * 1664525u + 1013904223u;
            c = static_cast<char>(state >> 24);
        }
        return bytes;
    }

    std::vector<std::string> InstallArguments() const
    {
        return {"--installall", "-configuration", m_collection, "-source", m_big, "-destination", m_gallery};
    }

    // The merged manifest is whole whenever it is there: the old document or the new one.
    void ExpectManifestWhole(int delayMs) const
    {
        const std::string manifest = m_gallery + "/imsmanifest.xml";
        if (!Exists(manifest))
            return;
        EXPECT_TRUE(EndsWith(ReadFile(manifest), "</manifest>")) << "killed after " << delayMs << " ms";
    }

    std::string m_big;
};

TEST_F(InterruptedRun, AKilledInstallLeavesAWholeManifestAndTheNextRunCompletesIt)
{
    const auto started = std::chrono::steady_clock::now();
    const RunResult timing = Curatool(InstallArguments());
    const int fullMs = static_cast<int>(
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - started).count());
    ASSERT_EQ(0, timing.exitCode) << timing.err;
    // Start again from nothing, and kill runs at moments spread over a whole run.
    fs::remove_all(m_gallery);

    for (int step = 0; step < 8; ++step) {
        const int delayMs = fullMs * step / 8;
        BinaryProcess run(CURATOOL_BINARY, InstallArguments(), Options());
        ASSERT_TRUE(run.Started());
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
        run.Kill(SIGKILL);
        run.Wait();
        ExpectManifestWhole(delayMs);
    }

    const RunResult completing = Curatool(InstallArguments());
    EXPECT_EQ(0, completing.exitCode) << completing.err;
    EXPECT_EQ("Done.\n", completing.out);
    const std::string manifest = ReadFile(m_gallery + "/imsmanifest.xml");
    for (int i = 0; i < kPackages; ++i) {
        const std::string content = "bulk" + std::to_string(i) + ".bin";
        EXPECT_EQ(Bytes(i), ReadFile(m_gallery + "/" + content)) << content;
        EXPECT_NE(std::string::npos, manifest.find("href=\"" + content + "\"")) << content;
    }
    EXPECT_FALSE(Exists(m_gallery + "/Uninstall/run_journal.txt"));

    // Nothing is left to do afterwards.
    const RunResult again = Curatool(
        {"--installall", "-configuration", m_collection, "-source", m_big, "-destination", m_gallery, "-verbose"});
    EXPECT_EQ("Reading:  \t[100%] gallery_categories.xml\nDone.\n", again.out);
}

}  // namespace
