// Nothing lost, nothing falsely reported: user files in and beside a gallery, full disks, damaged
// and hostile packages, a second run on the same gallery, leftovers of killed runs.
#include "support/E2EGallery.h"
#include "foundation/FileLock.h"
#include "support/GallerySourceBuilder.h"
#include "support/TestEnvironment.h"
#include "support/ZipTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <sys/mount.h>
#include <thread>
#include <unistd.h>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

const std::map<std::string, std::string> kUserFiles{
    {"notes.txt", "my notes"}, {"taxes.pdf", "%PDF my taxes"}, {"cat.png", "my cat"}};

// Every file below `folder` by relative path, with its bytes; `skipped` paths are left out whole.
std::map<std::string, std::string> Snapshot(const std::string& folder, const std::vector<std::string>& skipped = {})
{
    std::map<std::string, std::string> files;
    std::error_code missing;  // no folder: nothing in it
    for (auto it = fs::recursive_directory_iterator(folder, missing); it != fs::recursive_directory_iterator(); ++it) {
        if (std::find(skipped.begin(), skipped.end(), it->path().string()) != skipped.end())
            it.disable_recursion_pending();
        else
            files[fs::relative(it->path(), folder).string()] =
                it->is_regular_file() ? ReadFile(it->path().string()) : "<folder>";
    }
    return files;
}

class DataSafety : public E2EGallery {
protected:
    RunResult Install(const std::string& source) const
    {
        return Curatool(
            {"--installall", "-configuration", m_collection, "-source", source, "-destination", m_gallery, "-verbose"});
    }

    RunResult Uninstall() const { return Curatool({"--uninstall", "-configuration", m_collection}); }

    void InstallSample()
    {
        const RunResult r = Install(m_source);
        ASSERT_EQ(0, r.exitCode) << r.err;
        ASSERT_TRUE(HasCategory(m_gallery, "animals"));
    }

    // Everything of this test's world but the gallery and the program's own places.
    std::map<std::string, std::string> Outside() const
    {
        return Snapshot(m_base, {m_gallery, m_base + "/tmp", m_config, m_root, m_home, m_base + "/disk"});
    }

    std::vector<std::string> Records() const
    {
        std::vector<std::string> names;
        if (fs::exists(m_gallery + "/Uninstall"))
            for (const auto& entry : fs::directory_iterator(m_gallery + "/Uninstall"))
                if (StartsWith(entry.path().filename().string(), "imsmanifest"))
                    names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    // Nothing the program keeps for itself half-written, and no run still open.
    void ExpectNoLeftovers() const
    {
        for (const std::string& folder : {m_gallery, m_gallery + "/Uninstall"}) {
            if (!fs::exists(folder))
                continue;
            for (const auto& entry : fs::directory_iterator(folder)) {
                const std::string name = entry.path().filename().string();
                EXPECT_FALSE(StartsWith(name, "imsmanifest_temp") || EndsWith(name, ".curatool-new") ||
                             name == "run_journal.txt")
                    << entry.path();
            }
        }
        for (const auto& entry : fs::directory_iterator(m_base + "/tmp"))
            EXPECT_FALSE(StartsWith(entry.path().filename().string(), "curatool-run-")) << entry.path();
    }

    void ExpectUninstalledCleanly()
    {
        const RunResult r = Uninstall();
        EXPECT_EQ((Outcome{0, "Uninstall complete.\n", ""}), OutcomeOf(r));
        for (const SampleCategory& category : SampleCategories())
            EXPECT_TRUE(LacksCategory(m_gallery, category.alias)) << category.alias;
        EXPECT_TRUE(Records().empty());
        EXPECT_FALSE(IsRegistered());
    }
};

TEST_F(DataSafety, AFolderOfTheUsersFilesIsRefusedBeforeAnythingIsWritten)
{
    fs::create_directories(m_gallery);
    for (const auto& [name, bytes] : kUserFiles)
        ASSERT_TRUE(WriteFile(m_gallery + "/" + name, bytes));
    const auto before = Snapshot(m_gallery);
    const auto outside = Outside();
    const RunResult r = Install(m_source);
    EXPECT_EQ((Outcome{1, "",
                       "The destination folder is not empty and holds no gallery: " + m_gallery +
                           "\nChoose an empty folder, or the folder of an installed gallery.\n"}),
              OutcomeOf(r));
    EXPECT_EQ(before, Snapshot(m_gallery));
    EXPECT_EQ(outside, Outside());
    EXPECT_FALSE(IsRegistered());
}

// A run killed during its write test leaves the test file: the folder is still the program's to fill.
// A file of the user's under a name of that kind is not mistaken for one.
TEST_F(DataSafety, AWriteTestLeftByAKilledRunDoesNotMakeTheFolderForeign)
{
    fs::create_directories(m_gallery);
    ASSERT_TRUE(WriteFile(m_gallery + "/test.tmp", "te"));
    EXPECT_EQ(0, Install(m_source).exitCode);
    EXPECT_TRUE(HasCategory(m_gallery, "animals"));

    fs::remove_all(m_gallery);
    fs::create_directories(m_gallery);
    ASSERT_TRUE(WriteFile(m_gallery + "/test(7).tmp", "my notes"));
    EXPECT_EQ(1, Install(m_source).exitCode);
    EXPECT_EQ("my notes", ReadFile(m_gallery + "/test(7).tmp"));
}

TEST_F(DataSafety, TheUsersFilesInAGalleryOutliveUpdatesStringPackagesAndTheUninstall)
{
    // The sample source carries string packages, so its install rebuilds the manifest.
    ASSERT_EQ(0, Install(m_source).exitCode);
    for (const auto& [name, bytes] : kUserFiles)
        ASSERT_TRUE(WriteFile(m_gallery + "/" + name, bytes));
    ASSERT_TRUE(WriteFile(m_gallery + "/map.png.keep", "mine"));
    const std::string samples = CURATOOL_SOURCE_DIR "/samples/source";
    const std::string updated = m_base + "/updated";
    WriteSource(updated, {{"animals", "2.0"}, {"maps", "2.0"}});
    const auto outside = Outside();

    EXPECT_EQ(0, Install(samples).exitCode);
    EXPECT_EQ(0, Install(updated).exitCode);
    EXPECT_TRUE(HasCategory(m_gallery, "animals", "2.0"));
    ExpectUninstalledCleanly();

    for (const auto& [name, bytes] : kUserFiles)
        EXPECT_EQ(bytes, ReadFile(m_gallery + "/" + name)) << name;
    EXPECT_EQ("mine", ReadFile(m_gallery + "/map.png.keep"));
    EXPECT_EQ(outside, Outside());
    ExpectNoLeftovers();
}

TEST_F(DataSafety, AUserFileNamedLikeAPackageFileIsNeverOverwritten)
{
    ASSERT_EQ(0, Curatool({"--installsome", "-configuration", m_collection, "-source", m_source, "-destination",
                           m_gallery, "-c", "animals"})
                     .exitCode);
    ASSERT_TRUE(WriteFile(m_gallery + "/map.png", "my own map"));
    const RunResult r = Install(m_source);
    EXPECT_EQ(0, r.exitCode);
    EXPECT_TRUE(HasInOrder(Lines(r.out), {"Failed"})) << r.out;
    EXPECT_NE(std::string::npos, r.out.find("map.zip")) << r.out;
    EXPECT_EQ("my own map", ReadFile(m_gallery + "/map.png"));
    EXPECT_EQ(ContentBytes("globe.png", "1.0"), ReadFile(m_gallery + "/globe.png"));

    // Once the user has moved the file away, the package goes in.
    fs::remove(m_gallery + "/map.png");
    EXPECT_EQ(0, Install(m_source).exitCode);
    EXPECT_TRUE(HasCategory(m_gallery, "maps"));
}

// A package that can't go in whole fails whole: no record, none of its files, offered again.
TEST_F(DataSafety, ADamagedOrHostilePackageFailsWholeAndTheRepairedOneInstalls)
{
    InstallSample();
    const std::string manifestOf = PackageManifestXml({"pkg.dog", "2.0", "dog.png", "", "Dog", "", {}});
    const std::string record = Records().front();
    auto hrefManifest = [&](const std::string& href) {
        return PackageManifestXml({"pkg.dog", "2.0", href, "", "Dog", "", {}});
    };
    struct Case {
        std::string what;
        std::vector<ziptest::RawEntry> entries;
    };
    const std::vector<Case> cases{
        {"entry leaving the folder", {{"imsmanifest.xml", manifestOf}, {"../dog.png", "evil"}}},
        {"absolute entry", {{"imsmanifest.xml", manifestOf}, {"/tmp/dog.png", "evil"}}},
        {"crc error", {{"imsmanifest.xml", manifestOf}, {.name = "dog.png", .data = "dog.png at 2.0", .badCrc = true}}},
        {"unsupported method",
         {{"imsmanifest.xml", manifestOf}, {.name = "dog.png", .data = "dog.png at 2.0", .method = 99}}},
        {"missing file", {{"imsmanifest.xml", manifestOf}}},
        {"writes the categories document",
         {{"imsmanifest.xml", hrefManifest("Uninstall/gallery_categories.xml")},
          {"Uninstall/gallery_categories.xml", "<evil/>"}}},
        {"writes another record",
         {{"imsmanifest.xml", hrefManifest("Uninstall/" + record)}, {"Uninstall/" + record, "<evil/>"}}},
        {"writes the merged manifest", {{"imsmanifest.xml", hrefManifest("imsmanifest.xml")}}},
    };
    const std::string damaged = m_base + "/damaged";
    WriteSource(damaged, {{"animals", "2.0"}});
    for (const Case& c : cases) {
        ASSERT_TRUE(WriteFile(damaged + "/dog.zip", ziptest::Archive(c.entries))) << c.what;
        const auto records = Records();
        const RunResult r = Install(damaged);
        EXPECT_EQ(0, r.exitCode) << c.what;
        EXPECT_NE(std::string::npos, r.out.find("Failed")) << c.what << "\n" << r.out;
        for (const std::string& line : Lines(r.out))
            EXPECT_FALSE(StartsWith(line, "Installing:") && EndsWith(line, "dog.zip")) << c.what << ": " << line;
        EXPECT_EQ(ContentBytes("dog.png", "1.0"), ReadFile(m_gallery + "/dog.png")) << c.what;
        EXPECT_EQ(std::string::npos, ReadFile(m_gallery + "/Uninstall/gallery_categories.xml").find("<evil/>"))
            << c.what;
        EXPECT_EQ(std::string::npos, ReadFile(m_gallery + "/Uninstall/" + record).find("<evil/>")) << c.what;
        EXPECT_TRUE(EndsWith(ReadFile(m_gallery + "/imsmanifest.xml"), "</manifest>")) << c.what;
        EXPECT_FALSE(Exists(m_base + "/dog.png") || Exists("/tmp/dog.png")) << c.what;
        EXPECT_EQ(records, Records()) << c.what;
    }
    // The repaired package: the update is offered again and goes in.
    WriteSource(damaged, {{"animals", "2.0"}});
    EXPECT_EQ(0, Install(damaged).exitCode);
    EXPECT_TRUE(HasCategory(m_gallery, "animals", "2.0"));
    ExpectNoLeftovers();
}

using ServedDataSafety = ServedGallery;

TEST_F(ServedDataSafety, ACutCategoriesDocumentNeverReplacesTheStoredOne)
{
    const std::vector<std::string> install{"--installall", "-allowdownload", "-configuration",
                                           m_collection,   "-destination",   m_gallery};
    ASSERT_EQ(0, Curatool(install).exitCode);
    const std::string stored = ReadFile(m_gallery + "/Uninstall/gallery_categories.xml");
    // The server now gives half of a newer document, as a transfer cut short leaves it.
    WriteSource(m_source, {{"animals", "2.0"}});
    const std::string whole = ReadFile(m_source + "/gallery_categories.xml");
    ASSERT_TRUE(WriteFile(m_source + "/gallery_categories.xml", whole.substr(0, whole.size() / 2)));
    const RunResult r = Curatool(install);
    EXPECT_EQ((Outcome{0, CheckedThenDone(), ""}), OutcomeOf(r));
    EXPECT_EQ(stored, ReadFile(m_gallery + "/Uninstall/gallery_categories.xml"));
    EXPECT_TRUE(HasCategory(m_gallery, "animals", "1.0"));

    const RunResult u = Curatool({"--uninstall", "-configuration", m_collection});
    EXPECT_EQ((Outcome{0, "Uninstall complete.\n", ""}), OutcomeOf(u));
    for (const SampleCategory& category : SampleCategories())
        EXPECT_TRUE(LacksCategory(m_gallery, category.alias)) << category.alias;
}

TEST_F(DataSafety, ADownloadIntoAnInstalledGalleryOrASecondRunOnItIsRefused)
{
    InstallSample();
    const auto before = Snapshot(m_gallery);
    const RunResult r = Curatool({"--downloadall", "-configuration", m_collection, "-destination", m_gallery});
    EXPECT_EQ((Outcome{1, "",
                       "The destination holds an installed gallery; choose another folder for the download: " +
                           m_gallery + "\n"}),
              OutcomeOf(r));
    EXPECT_EQ(before, Snapshot(m_gallery));

    // A second run on the same gallery stops while the first holds it.
    const std::string updated = m_base + "/updated";
    WriteSource(updated, {{"animals", "2.0"}});
    {
        // Another copy of the program, as far as the gallery can tell.
        FileLock other;
        ASSERT_TRUE(other.TryLock(CZoltaFilePath(QString::fromStdString(m_gallery + "/Uninstall/.curatool.lock"))));
        const auto held = Snapshot(m_gallery);
        const RunResult i = Install(updated);
        EXPECT_EQ(
            (Outcome{1, "",
                     "Another run is changing the gallery in " + m_gallery + "; try again when it has finished.\n"}),
            OutcomeOf(i));
        const RunResult u = Uninstall();
        EXPECT_EQ(1, u.exitCode);
        EXPECT_TRUE(IsRegistered());
        EXPECT_EQ(held, Snapshot(m_gallery));
    }
    EXPECT_EQ(0, Install(updated).exitCode);
    EXPECT_TRUE(HasCategory(m_gallery, "animals", "2.0"));
}

TEST_F(DataSafety, UninstallRemovesPackagesTheSourceNoLongerListsAndNoFolderAboveTheGallery)
{
    m_gallery = m_base + "/Galleries/School/gallery";
    InstallSample();
    // A newer source that dropped the sounds category.
    const std::string newer = m_base + "/newer";
    WriteSource(newer);
    std::string xml = ReadFile(newer + "/gallery_categories.xml");
    const size_t from = xml.find("<category id=\"" + Category("sounds").guid);
    xml.erase(from, xml.find("</category>", from) + 12 - from);
    ASSERT_TRUE(WriteFile(newer + "/gallery_categories.xml", xml));
    ASSERT_EQ(0, Install(newer).exitCode);
    ASSERT_TRUE(HasCategory(m_gallery, "sounds"));

    ExpectUninstalledCleanly();
    EXPECT_FALSE(Exists(m_gallery));
    EXPECT_TRUE(fs::is_directory(m_base + "/Galleries/School"));
}

TEST_F(DataSafety, TheNextRunRemovesWhatKilledRunsLeft)
{
    InstallSample();
    // A run that died: its folder of temporary files, nobody holding its lock.
    const std::string dead = m_base + "/tmp/curatool-run-999999";
    fs::create_directories(dead);
    ASSERT_TRUE(WriteFile(dead + "/.lock", ""));
    ASSERT_TRUE(WriteFile(dead + "/big.bin", std::string(1 << 20, 'x')));
    ASSERT_TRUE(WriteFile(m_gallery + "/Uninstall/imsmanifest_temp.xml", "<cut"));
    ASSERT_TRUE(WriteFile(m_gallery + "/.imsmanifest.xml.curatool-new", "<cut"));
    // A run that is alive keeps its folder.
    const std::string alive = m_base + "/tmp/curatool-run-1";
    fs::create_directories(alive);
    FileLock aliveLock;
    ASSERT_TRUE(aliveLock.TryLock(CZoltaFilePath(QString::fromStdString(alive + "/.lock"))));

    const RunResult r = Install(m_source);
    EXPECT_EQ(0, r.exitCode) << r.err;
    EXPECT_FALSE(Exists(dead));
    EXPECT_TRUE(Exists(alive + "/.lock"));
    aliveLock.Release();
    fs::remove_all(alive);
    ExpectNoLeftovers();

    // A run killed for real leaves nothing the next one keeps.
    const std::string updated = m_base + "/updated";
    WriteSource(updated, {{"animals", "2.0"}});
    BinaryProcess killed(
        CURATOOL_BINARY,
        {"--installall", "-configuration", m_collection, "-source", updated, "-destination", m_gallery}, Options());
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    killed.Kill(SIGKILL);
    killed.Wait();
    EXPECT_EQ(0, Install(updated).exitCode);
    EXPECT_TRUE(HasCategory(m_gallery, "animals", "2.0"));
    ExpectNoLeftovers();
}

// A small file system of its own, filled by the test: only root may mount one.
class FullDisk : public DataSafety {
protected:
    void SetUp() override
    {
        DataSafety::SetUp();
        if (::geteuid() != 0)
            GTEST_SKIP() << "mounting a small file system needs root";
        m_disk = m_base + "/disk";
        fs::create_directories(m_disk);
        if (::mount("tmpfs", m_disk.c_str(), "tmpfs", 0, "size=16m") != 0)
            GTEST_SKIP() << "tmpfs can't be mounted here";
        m_mounted = true;
        m_gallery = m_disk + "/gallery";
    }

    void TearDown() override
    {
        if (m_mounted)
            ::umount2(m_disk.c_str(), MNT_DETACH);
        DataSafety::TearDown();
    }

    // Fills the disk until `left` bytes stay free (none at all for 0).
    void Fill(long long left)
    {
        const long long fill = static_cast<long long>(fs::space(m_disk).available) - left;
        std::FILE* filler = std::fopen((m_disk + "/filler").c_str(), "wb");
        ASSERT_NE(nullptr, filler);
        const std::string block(4096, 'f');
        for (long long written = 0; written < fill; written += static_cast<long long>(block.size()))
            if (std::fwrite(block.data(), 1, block.size(), filler) != block.size() || std::fflush(filler) != 0)
                break;
        std::fclose(filler);
    }

    // The animals category at 2.0 with packages of `bytes` of content that does not compress.
    std::string BigUpdate(size_t bytes, long long declaredDiskSize)
    {
        const std::string folder = m_base + "/big";
        WriteSource(folder, {{"animals", "2.0"}});
        for (const SampleCategory::Package& package : Category("animals").packages) {
            std::string content(bytes, '\0');
            unsigned state = 12345u + static_cast<unsigned>(package.file.size());
            for (char& c : content)
                c = static_cast<char>((state = state * 1664525u + 1013904223u) >> 24);
            WritePackageZip(folder, package.file, {package.id, "2.0", package.content, content, "Big", "", {}});
        }
        std::string xml = ReadFile(folder + "/gallery_categories.xml");
        const std::string tag = "<category id=\"" + Category("animals").guid + "\" version=\"2.0\" ";
        xml.replace(xml.find(tag), tag.size(), tag + "disksize=\"" + std::to_string(declaredDiskSize) + "\"");
        EXPECT_TRUE(WriteFile(folder + "/gallery_categories.xml", xml));
        return folder;
    }

    std::string m_disk;
    bool m_mounted = false;
};

TEST_F(FullDisk, AFullDiskKeepsTheGalleryWholeSaysSoAndALaterRunCompletes)
{
    struct Case {
        std::string what;
        long long left;      // bytes free when the run starts
        long long declared;  // disksize in the categories document
        int exitCode;
        std::string said;  // on standard error (or in the progress lines)
    };
    const std::vector<Case> cases{
        {"checked before the run", 1200 * 1024, 4 * 1024 * 1024, 1, "Not enough free space in " + m_gallery + ": "},
        {"nothing left at all", 0, 1, 1, "gallery_categories.xml (No space left on device)"},
        {"full in the middle of the run", 1600 * 1024, 1, 0, "Failed"},
    };
    for (const Case& c : cases) {
        InstallSample();
        const std::string update = BigUpdate(1024 * 1024, c.declared);
        const std::string categories = ReadFile(m_gallery + "/Uninstall/gallery_categories.xml");
        const auto records = Records();
        const auto outside = Outside();
        Fill(c.left);

        const RunResult r = Install(update);
        EXPECT_EQ(c.exitCode, r.exitCode) << c.what << "\n" << r.out << r.err;
        EXPECT_NE(std::string::npos, (r.out + r.err).find(c.said)) << c.what << "\n" << r.out << r.err;
        // The stored categories document is the old one or the new one, never a cut one.
        const std::string stored = ReadFile(m_gallery + "/Uninstall/gallery_categories.xml");
        EXPECT_TRUE(stored == categories || stored == ReadFile(update + "/gallery_categories.xml")) << c.what;
        EXPECT_EQ(records, Records()) << c.what;
        EXPECT_TRUE(EndsWith(ReadFile(m_gallery + "/imsmanifest.xml"), "</manifest>")) << c.what;
        EXPECT_TRUE(HasCategory(m_gallery, "maps")) << c.what;
        EXPECT_TRUE(ReadFile(m_gallery + "/cow.png") == ContentBytes("cow.png", "1.0")) << c.what;
        EXPECT_EQ(outside, Outside()) << c.what;
        ExpectNoLeftovers();

        // With room again, the update completes and the gallery can still be removed whole.
        fs::remove(m_disk + "/filler");
        EXPECT_EQ(0, Install(update).exitCode) << c.what;
        EXPECT_EQ(1024u * 1024u, ReadFile(m_gallery + "/cow.png").size()) << c.what;
        ExpectUninstalledCleanly();
        ExpectNoLeftovers();
    }
}

}  // namespace
