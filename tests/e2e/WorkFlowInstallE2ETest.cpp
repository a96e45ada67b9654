// --installall and --installsome from a local folder: what lands in the gallery, what is
// printed on which stream, and every refusal before the engine runs.
#include "support/E2EGallery.h"
#include "support/TestEnvironment.h"
#include "ziparchive/ZipHelpers.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include <sys/stat.h>
#include <unistd.h>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

const char kWordDownloading[] = "Downloading: ";
const char kWordInstalling[] = "Installing: ";

// The line of the categories document being read; its percentage and the form of the name
// are the engine's business.
const std::regex kReadingLine(R"(Reading:  \t\[\d+%\] (.*/)?gallery_categories\.xml)");

// A local source yields per package one finished "Downloading" and one "Installing" line.
std::vector<std::string> LocalPackageLines(const std::vector<std::string>& aliases)
{
    int total = 0;
    for (const std::string& alias : aliases)
        total += int(Category(alias).packages.size());
    std::vector<std::string> lines;
    int done = 0;
    for (const std::string& alias : aliases) {
        for (const SampleCategory::Package& package : Category(alias).packages) {
            const int overall = (++done * 100 + total / 2) / total;
            lines.push_back(ProgressLine(kWordDownloading, overall, Category(alias).title, package.file));
            lines.push_back(ProgressLine(kWordInstalling, overall, Category(alias).title, package.file));
        }
    }
    return lines;
}

class InstallFromFolder : public E2EGallery {
protected:
    RunResult InstallAll(std::vector<std::string> extra = {})
    {
        std::vector<std::string> arguments{"--installall", "-configuration", m_collection, "-source",
                                           m_source,       "-destination",   m_gallery};
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        return Curatool(arguments);
    }

    std::string UpdateInfo() const { return ReadFile(m_gallery + "/Uninstall/updateinfo.xml"); }

    static std::string Recorded(const std::string& alias, const std::string& version)
    {
        return "<category id=\"" + Category(alias).guid + "\" version=\"" + version + "\"/>";
    }

    // Everything after the reading line, which must come first.
    static std::vector<std::string> AfterReading(const RunResult& r)
    {
        std::vector<std::string> lines = Lines(r.out);
        EXPECT_FALSE(lines.empty());
        if (lines.empty())
            return lines;
        EXPECT_TRUE(std::regex_match(lines.front(), kReadingLine)) << lines.front();
        lines.erase(lines.begin());
        return lines;
    }
};

}  // namespace

// Without -destination the gallery goes below the shared galleries folder.
TEST_F(InstallFromFolder, InstallAllInstallsStoresAndRegistersQuietly)
{
    const RunResult r = Curatool({"--installall", "-configuration", m_collection, "-source", m_source});
    EXPECT_EQ((Outcome{0, "Done.\n", ""}), OutcomeOf(r));
    m_gallery = DefaultInstallDirectory();
    for (const SampleCategory& category : SampleCategories()) {
        EXPECT_TRUE(HasCategory(m_gallery, category.alias)) << category.alias;
        EXPECT_NE(std::string::npos, UpdateInfo().find(Recorded(category.alias, "1.0"))) << UpdateInfo();
    }
    EXPECT_TRUE(Exists(m_gallery + "/imsmanifest.xml"));
    EXPECT_EQ(ReadFile(m_source + "/gallery_categories.xml"),
              ReadFile(m_gallery + "/Uninstall/gallery_categories.xml"));

    // The collection is kept in the configurations folder, and the entry points at it.
    const std::string stored = StoredConfigurationDirectory();
    for (const char* file : {"configuration.xml", "metadata.xml", "logo.png"})
        EXPECT_EQ(ReadFile(m_collection + "/" + file), ReadFile(stored + "/" + file)) << file;
    EXPECT_EQ(m_gallery + "/imsmanifest.xml", RegistryValue("ImsManifestXml"));
    EXPECT_EQ(stored + "/metadata.xml", RegistryValue("MetadataXml"));
    EXPECT_EQ(0u, RegistryValue("Args").rfind("-configuration \"" + stored, 0)) << RegistryValue("Args");
    EXPECT_EQ(CuratoolProgram(), RegistryValue("AppPath"));
}

// -verbose tells each finished item on standard output.
TEST_F(InstallFromFolder, ARerunChangesNothingUntilACategoryVersionIsRaisedThenOnlyThatOne)
{
    RunResult r = InstallAll({"-verbose"});
    EXPECT_EQ(0, r.exitCode);
    EXPECT_EQ("", r.err);
    std::vector<std::string> expected = LocalPackageLines({"animals", "maps", "sounds"});
    expected.push_back("Done.");
    EXPECT_EQ(expected, AfterReading(r)) << r.out;
    const auto before = fs::last_write_time(m_gallery + "/dog.png");
    const std::string manifest = ReadFile(m_gallery + "/imsmanifest.xml");

    r = InstallAll({"-verbose"});
    EXPECT_EQ(0, r.exitCode);
    EXPECT_EQ("", r.err);
    EXPECT_EQ(std::vector<std::string>{"Done."}, AfterReading(r)) << r.out;
    EXPECT_EQ(before, fs::last_write_time(m_gallery + "/dog.png"));
    EXPECT_EQ(manifest, ReadFile(m_gallery + "/imsmanifest.xml"));

    WriteSource(m_source, {{"maps", "1.1"}});
    r = InstallAll({"-verbose"});
    EXPECT_EQ(0, r.exitCode);
    EXPECT_EQ("", r.err);
    expected = LocalPackageLines({"maps"});
    expected.push_back("Done.");
    EXPECT_EQ(expected, AfterReading(r)) << r.out;

    EXPECT_TRUE(HasCategory(m_gallery, "maps", "1.1"));
    EXPECT_TRUE(HasCategory(m_gallery, "animals", "1.0"));
    EXPECT_TRUE(HasCategory(m_gallery, "sounds", "1.0"));
    // A re-install that replaced the earlier records has result 4, not 0: only clean installs and
    // categories left as they were are recorded.
    EXPECT_EQ(std::string::npos, UpdateInfo().find("version=\"1.1\"")) << UpdateInfo();
    EXPECT_NE(std::string::npos, UpdateInfo().find(Recorded("animals", "1.0"))) << UpdateInfo();
}

TEST_F(InstallFromFolder, AFailedPackageSaysWhyAndTheRunStillSucceeds)
{
    WriteSource(m_source, {}, {"cow.zip"});
    const std::string why = "Failed: cow.zip: Not found: " + m_source + "/cow.zip\n";
    const RunResult quiet = InstallAll();
    EXPECT_EQ((Outcome{0, "Done.\n", why}), OutcomeOf(quiet));
    EXPECT_TRUE(Exists(m_gallery + "/dog.png"));
    EXPECT_FALSE(Exists(m_gallery + "/cow.png"));
    EXPECT_TRUE(HasCategory(m_gallery, "maps"));

    // Animals is still not complete, so the next run tries it again and says so.
    const RunResult verbose = InstallAll({"-verbose"});
    EXPECT_EQ(0, verbose.exitCode);
    EXPECT_EQ(why, verbose.err);
    EXPECT_NE(std::string::npos, verbose.out.find("Failed\n \t[100%] (Animals) cow.zip\n")) << verbose.out;
    EXPECT_EQ(std::string::npos, verbose.out.find("(Maps)")) << verbose.out;
    EXPECT_TRUE(EndsWith(verbose.out, "\nDone.\n")) << verbose.out;
}

TEST_F(InstallFromFolder, InstallSomeTakesKnownAliasesAndComplainsOfTheOthers)
{
    const RunResult r = Curatool({"--installsome", "-configuration", m_collection, "-source", m_source, "-destination",
                                  m_gallery, "-c", "sounds", "-c", "b", "-c", "Animals"});
    EXPECT_EQ(0, r.exitCode);
    EXPECT_EQ("Done.\n", r.out);
    EXPECT_EQ("Alias not found: b\nAlias not found: Animals\n", r.err) << "aliases are case-sensitive";
    EXPECT_TRUE(HasCategory(m_gallery, "sounds"));
    EXPECT_TRUE(LacksCategory(m_gallery, "animals"));
    EXPECT_TRUE(LacksCategory(m_gallery, "maps"));

    // Only unknown aliases: the engine runs with nothing chosen.
    const RunResult none = Curatool({"--installsome", "-configuration", m_collection, "-source", m_source,
                                     "-destination", m_gallery, "-c", "unknown", "-verbose"});
    EXPECT_EQ(0, none.exitCode);
    EXPECT_EQ("Alias not found: unknown\n", none.err);
    EXPECT_EQ(std::vector<std::string>{"Done."}, AfterReading(none)) << none.out;
    EXPECT_TRUE(LacksCategory(m_gallery, "maps"));
}

TEST_F(InstallFromFolder, InstallSomeWithoutAliasesRegistersButInstallsNothing)
{
    const RunResult r =
        Curatool({"--installsome", "-configuration", m_collection, "-source", m_source, "-destination", m_gallery});
    EXPECT_EQ((Outcome{1, "Nothing to install\n", ""}), OutcomeOf(r));
    for (const SampleCategory& category : SampleCategories())
        EXPECT_TRUE(LacksCategory(m_gallery, category.alias));
    // Registration comes before the aliases are looked at.
    EXPECT_EQ(m_gallery + "/imsmanifest.xml", RegistryValue("ImsManifestXml"));
}

TEST_F(InstallFromFolder, RemoteRegistersWithoutTheApplicationPathAndAnUnknownOptionIsOnlyReported)
{
    const RunResult r = InstallAll({"-remote", "--bogus"});
    EXPECT_EQ((Outcome{0, "Done.\n", "Errors in parameters:\n   Unknown: \"bogus\"\n\n"}), OutcomeOf(r));
    EXPECT_TRUE(HasCategory(m_gallery, "sounds"));
    EXPECT_TRUE(IsRegistered());
    EXPECT_EQ("", RegistryValue("AppPath"));
}

TEST_F(InstallFromFolder, SourcesAreFoundWhereverTheDataMaySit)
{
    // The data in the gallery's own folder on a disc, its name in any case.
    const std::string shelf = m_base + "/shelf";
    WriteSource(shelf + "/zolta SAMPLE collection/Gallery Data Files");
    RunResult r = Curatool(
        {"--installall", "-configuration", m_collection, "-source", shelf, "-destination", m_base + "/from-shelf"});
    EXPECT_EQ((Outcome{0, "Done.\n", ""}), OutcomeOf(r));
    EXPECT_TRUE(HasCategory(m_base + "/from-shelf", "animals"));

    // No -source, or one that holds nothing: the collection's own folder is tried next.
    WriteSource(m_collection);
    r = Curatool({"--installall", "-configuration", m_collection, "-destination", m_base + "/no-source"});
    EXPECT_EQ((Outcome{0, "Done.\n", ""}), OutcomeOf(r));
    EXPECT_TRUE(HasCategory(m_base + "/no-source", "animals"));

    const std::string empty = m_base + "/empty";
    fs::create_directories(empty);
    r = Curatool({"--installsome", "-configuration", m_collection, "-source", empty, "-destination",
                  m_base + "/empty-source", "-c", "maps"});
    EXPECT_EQ((Outcome{0, "Done.\n", ""}), OutcomeOf(r));
    EXPECT_TRUE(HasCategory(m_base + "/empty-source", "maps"));
}

TEST_F(InstallFromFolder, NonAsciiPathsAndAliasesWorkAndArePrintedAsUtf8)
{
    m_gallery = m_base + "/galerie \xC3\xA9t\xC3\xA9";
    RunResult r = Curatool({"--installsome", "-configuration", m_collection, "-source", m_source, "-destination",
                            m_gallery, "-c", "maps", "-c", "cartes-\xC3\xA9"});
    EXPECT_EQ((Outcome{0, "Done.\n", "Alias not found: cartes-\xC3\xA9\n"}), OutcomeOf(r));
    EXPECT_TRUE(HasCategory(m_gallery, "maps"));
    EXPECT_EQ(m_gallery + "/imsmanifest.xml", RegistryValue("ImsManifestXml"));

    ASSERT_TRUE(WriteFile(m_base + "/file", "in the way"));
    const std::string blocked = m_base + "/file/\xC3\xA9";
    r = Curatool({"--installall", "-configuration", m_collection, "-source", m_source, "-destination", blocked});
    EXPECT_EQ(1, r.exitCode);
    EXPECT_EQ("Could not create destination directory: " + blocked + "\n", r.err);
}

TEST_F(InstallFromFolder, ACollectionFileInstallsLikeItsFolderAndLeavesNoTemporaryFiles)
{
    const std::string packed = m_base + "/packed/sample.gallerycollection";
    fs::create_directories(m_base + "/packed");
    ASSERT_TRUE(ZipAddDirectory(CZoltaDirectoryPath(m_collection.c_str()), CZoltaFilePath(packed.c_str())));

    const RunResult r = Curatool(
        {"--installall", "-configuration", packed, "-source", m_source, "-destination", m_gallery, "-verbose"});
    EXPECT_EQ(0, r.exitCode);
    EXPECT_EQ("", r.err);
    EXPECT_TRUE(EndsWith(r.out, "\nDone.\n")) << r.out;
    for (const SampleCategory& category : SampleCategories())
        EXPECT_TRUE(HasCategory(m_gallery, category.alias)) << category.alias;
    // The unpacked copy is gone; the stored one stays and is what the entry names.
    EXPECT_EQ(ReadFile(m_collection + "/configuration.xml"),
              ReadFile(StoredConfigurationDirectory() + "/configuration.xml"));
    EXPECT_EQ(StoredConfigurationDirectory() + "/metadata.xml", RegistryValue("MetadataXml"));
    EXPECT_EQ(std::vector<std::string>{}, FilesBelow(m_base + "/tmp"));

    // Another extension is no collection file.
    fs::copy_file(packed, m_base + "/packed/sample.zip");
    const RunResult zip = Curatool({"--installall", "-configuration", m_base + "/packed/sample.zip", "-source",
                                    m_source, "-destination", m_gallery});
    EXPECT_EQ(1, zip.exitCode);
    EXPECT_EQ("Could not load the configuration.\n", zip.err);
}

// ---- Refusals before the engine runs, for both installs ----

namespace {

struct InstallMode {
    const char* action;
    const char* createFailure;    // followed by the path
    const char* noSourceFailure;  // a whole line

    friend void PrintTo(const InstallMode& mode, std::ostream* out) { *out << mode.action; }
};

class InstallRefusals : public InstallFromFolder, public ::testing::WithParamInterface<InstallMode> {
protected:
    // The action with the collection and an alias that exists, plus `extra`.
    RunResult Run(const std::vector<std::string>& extra, bool withCollection = true)
    {
        std::vector<std::string> arguments{GetParam().action, "-c", "maps"};
        if (withCollection)
            arguments.insert(arguments.end(), {"-configuration", m_collection});
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        return Curatool(arguments);
    }

    void ExpectRefused(const RunResult& r, const std::string& err)
    {
        EXPECT_EQ((Outcome{1, "", err}), OutcomeOf(r));
        EXPECT_FALSE(Exists(m_gallery + "/imsmanifest.xml"));
        EXPECT_TRUE(LacksCategory(m_gallery, "maps"));
    }
};

}  // namespace

TEST_P(InstallRefusals, WithoutConfiguration)
{
    ExpectRefused(Run({"-source", m_source, "-destination", m_gallery}, false), "Could not load the configuration.\n");
    ExpectRefused(Run({"-source", m_source, "-destination", m_gallery, "-configuration", m_base + "/nothing"}, false),
                  "Could not load the configuration.\n");
    // A collection without metadata.xml does not load either.
    fs::remove(m_collection + "/metadata.xml");
    ExpectRefused(Run({"-source", m_source, "-destination", m_gallery}), "Could not load the configuration.\n");
    EXPECT_FALSE(IsRegistered());
}

TEST_P(InstallRefusals, WhenTheConfigurationCannotBeStored)
{
    ASSERT_TRUE(WriteFile(SystemPath(std::string(kSharedGalleries) + "/Configurations"), "in the way"));
    ExpectRefused(Run({"-source", m_source, "-destination", m_gallery}), "Could not copy the configuration files.\n");
    EXPECT_FALSE(IsRegistered());
}

TEST_P(InstallRefusals, WhenTheDestinationCannotBeMade)
{
    ASSERT_TRUE(WriteFile(m_base + "/file", "in the way"));
    m_gallery = m_base + "/file/gallery";
    ExpectRefused(Run({"-source", m_source, "-destination", m_gallery}),
                  std::string(GetParam().createFailure) + m_gallery + "\n");
}

TEST_P(InstallRefusals, WhenTheDestinationCannotBeWritten)
{
    // Nobody, not even root, makes files in /proc; a read-only folder stops everyone but root.
    m_gallery = "/proc";
    ExpectRefused(Run({"-source", m_source, "-destination", m_gallery}), NotWritable(m_gallery));
    if (geteuid() != 0) {
        m_gallery = m_base + "/read-only";
        fs::create_directories(m_gallery);
        ASSERT_EQ(0, chmod(m_gallery.c_str(), 0555));
        ExpectRefused(Run({"-source", m_source, "-destination", m_gallery}), NotWritable(m_gallery));
        EXPECT_TRUE(fs::is_empty(m_gallery));
    }
}

TEST_P(InstallRefusals, WithoutSourceOrDownload)
{
    const std::string empty = m_base + "/empty";
    fs::create_directories(empty);
    ExpectRefused(Run({"-source", empty, "-destination", m_gallery}), std::string(GetParam().noSourceFailure) + "\n");
    ExpectRefused(Run({"-destination", m_gallery}), std::string(GetParam().noSourceFailure) + "\n");

    // Data of another gallery does not count as a source.
    std::string document = ReadFile(m_source + "/gallery_categories.xml");
    document.replace(document.find(kGalleryGuid), std::string(kGalleryGuid).size(), "another-gallery");
    ASSERT_TRUE(WriteFile(m_source + "/gallery_categories.xml", document));
    ExpectRefused(Run({"-source", m_source, "-destination", m_gallery}),
                  std::string(GetParam().noSourceFailure) + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Modes, InstallRefusals,
    ::testing::Values(InstallMode{"--installall", "Could not create destination directory: ",
                                  "Gallery files not found on the source path, download is not allowed."},
                      InstallMode{"--installsome", "Could not create destination directory ",
                                  "-source not specified, -allowdownload not set"}),
    [](const ::testing::TestParamInfo<InstallMode>& mode) { return std::string(mode.param.action + 2); });
