// --downloadall and --downloadsome: a local copy of a server's gallery data that later serves
// as -source, the tidy-up of the copy, and the refusals of both modes.
#include "support/E2EGallery.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

class DownloadFromHttp : public ServedGallery {
protected:
    void SetUp() override
    {
        ServedGallery::SetUp();
        m_copy = m_base + "/copy";
    }

    RunResult Download(const char* action, std::vector<std::string> extra = {})
    {
        std::vector<std::string> arguments{action, "-configuration", m_collection, "-destination", m_copy};
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        return Curatool(arguments);
    }

    bool HasPackagesOf(const std::string& alias) const
    {
        for (const SampleCategory::Package& package : Category(alias).packages)
            if (ReadFile(m_copy + "/" + package.file) != ReadFile(m_source + "/" + package.file))
                return false;
        return true;
    }

    bool LacksPackagesOf(const std::string& alias) const
    {
        for (const SampleCategory::Package& package : Category(alias).packages)
            if (Exists(m_copy + "/" + package.file))
                return false;
        return true;
    }

    // A source tree: the categories document at the top, no install records, nothing unpacked.
    void ExpectTidySource()
    {
        EXPECT_EQ(ReadFile(m_source + "/gallery_categories.xml"), ReadFile(m_copy + "/gallery_categories.xml"));
        EXPECT_FALSE(Exists(m_copy + "/Uninstall"));
        EXPECT_FALSE(Exists(m_copy + "/imsmanifest.xml"));
        EXPECT_FALSE(Exists(m_copy + "/dog.png"));
    }

    std::string m_copy;
};

}  // namespace

TEST_F(DownloadFromHttp, DownloadAllMakesASourceThatInstallsLikeTheServer)
{
    const RunResult r = Download("--downloadall");
    EXPECT_EQ((Outcome{0, CheckedThenDone(), ""}), OutcomeOf(r));
    for (const SampleCategory& category : SampleCategories())
        EXPECT_TRUE(HasPackagesOf(category.alias)) << category.alias;
    ExpectTidySource();
    EXPECT_FALSE(IsRegistered()) << "a download leaves the settings alone";

    const RunResult install =
        Curatool({"--installall", "-configuration", m_collection, "-source", m_copy, "-destination", m_gallery});
    EXPECT_EQ((Outcome{0, "Done.\n", ""}), OutcomeOf(install));
    for (const SampleCategory& category : SampleCategories())
        EXPECT_TRUE(HasCategory(m_gallery, category.alias)) << category.alias;

    // A new download replaces the copy's categories document.
    WriteSource(m_source, {{"sounds", "1.1"}});
    const RunResult again = Download("--downloadall", {"-verbose"});
    EXPECT_EQ(0, again.exitCode);
    EXPECT_EQ("", again.err);
    EXPECT_TRUE(StartsWith(again.out, "Checking connection to: " + m_url + "\nCheck succeeded.\n")) << again.out;
    EXPECT_TRUE(EndsWith(again.out, "\nDone.\n")) << again.out;
    // A fetched file counts as done like an installed one, though nothing is unpacked.
    for (const char* word : {"Downloading: ", "Installing: "})
        EXPECT_TRUE(Contains(again.out, ProgressLine(word, 100, "Sounds", "bell.zip") + "\n")) << again.out;
    EXPECT_TRUE(HasPackagesOf("sounds"));
    ExpectTidySource();
}

TEST_F(DownloadFromHttp, DownloadSomeTakesKnownAliasesAndComplainsInLowerCase)
{
    RunResult r = Download("--downloadsome", {"-c", "maps", "-c", "x", "-c", "Sounds"});
    EXPECT_EQ((Outcome{0, CheckedThenDone(), "alias not found: x\nalias not found: Sounds\n"}), OutcomeOf(r));
    EXPECT_TRUE(HasPackagesOf("maps"));
    EXPECT_TRUE(LacksPackagesOf("animals"));
    EXPECT_TRUE(LacksPackagesOf("sounds"));
    ExpectTidySource();

    // The partial copy installs what it holds.
    r = Curatool(
        {"--installsome", "-configuration", m_collection, "-source", m_copy, "-destination", m_gallery, "-c", "maps"});
    EXPECT_EQ((Outcome{0, "Done.\n", ""}), OutcomeOf(r));
    EXPECT_TRUE(HasCategory(m_gallery, "maps"));

    // Only unknown aliases: the document is fetched, no package.
    m_copy = m_base + "/document-only";
    r = Download("--downloadsome", {"-c", "nonexistent"});
    EXPECT_EQ((Outcome{0, CheckedThenDone(), "alias not found: nonexistent\n"}), OutcomeOf(r));
    for (const SampleCategory& category : SampleCategories())
        EXPECT_TRUE(LacksPackagesOf(category.alias)) << category.alias;
    ExpectTidySource();
}

TEST_F(DownloadFromHttp, APackageMissingOnTheServerFailsTheRunButNotTheOthers)
{
    WriteSource(m_source, {}, {"cow.zip"});
    const RunResult r = Download("--downloadall", {"-verbose"});
    EXPECT_EQ(1, r.exitCode);
    EXPECT_EQ("Failed: cow.zip: HTTP status 404 (" + m_url + "/cow.zip)\n1 file failed.\n", r.err);
    // cow.zip is the second of five packages: asked for at 30%, given up at 40%.
    EXPECT_NE(std::string::npos, r.out.find("Failed\n \t[40%] (Animals) cow.zip\n")) << r.out;
    EXPECT_TRUE(EndsWith(r.out, "\nDone.\n")) << r.out;
    EXPECT_FALSE(Exists(m_copy + "/cow.zip"));
    EXPECT_TRUE(HasPackagesOf("sounds"));
    ExpectTidySource();
}

TEST_F(DownloadFromHttp, AHostileNameInTheDocumentWritesNothingOutsideTheCopy)
{
    // The document sends a package one folder up; the server has a file there to give.
    std::string document = ReadFile(m_source + "/gallery_categories.xml");
    document.replace(document.find(">bell.zip<"), 10, ">../escaped.zip<");
    ASSERT_TRUE(WriteFile(m_source + "/gallery_categories.xml", document));
    fs::copy_file(m_source + "/bell.zip", m_source + "/escaped.zip");

    const std::string refused =
        "Failed: ../escaped.zip: The source names it with control characters or a path outside its folder\n";
    const RunResult r = Download("--downloadall");
    EXPECT_EQ((Outcome{1, CheckedThenDone(), refused + "1 file failed.\n"}), OutcomeOf(r));
    EXPECT_FALSE(Exists(m_base + "/escaped.zip"));
    EXPECT_TRUE(HasPackagesOf("animals"));

    const RunResult install =
        Curatool({"--installall", "-allowdownload", "-configuration", m_collection, "-destination", m_gallery});
    EXPECT_EQ((Outcome{0, CheckedThenDone(), refused}), OutcomeOf(install));
    EXPECT_FALSE(Exists(m_base + "/escaped.zip"));
    EXPECT_FALSE(Exists(m_base + "/tmp/escaped.zip"));
    EXPECT_TRUE(HasCategory(m_gallery, "maps"));
}

// ---- Refusals of both download modes ----

namespace {

class DownloadRefusals : public DownloadFromHttp, public ::testing::WithParamInterface<const char*> {
protected:
    RunResult Run(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), {GetParam(), "-c", "maps"});
        return Curatool(arguments);
    }

    void ExpectRefused(const RunResult& r, const std::string& err)
    {
        EXPECT_EQ((Outcome{1, "", err}), OutcomeOf(r));
        EXPECT_FALSE(Exists(m_copy + "/map.zip"));
    }
};

}  // namespace

TEST_P(DownloadRefusals, WithoutConfigurationOrDestinationOrFromALocalPath)
{
    ExpectRefused(Run({"-destination", m_copy}), "Could not load the configuration.\n");
    ExpectRefused(Run({"-destination", m_copy, "-configuration", m_base + "/nothing"}),
                  "Could not load the configuration.\n");
    ExpectRefused(Run({"-configuration", m_collection}), "-destination not specified\n");
    ExpectRefused(Run({"-configuration", m_collection, "-destination", m_copy, "-source", m_source}),
                  "-source is local path\n");
}

TEST_P(DownloadRefusals, WhenTheDestinationCannotBeMadeOrWritten)
{
    ASSERT_TRUE(WriteFile(m_base + "/file", "in the way"));
    m_copy = m_base + "/file/copy";
    ExpectRefused(Run({"-configuration", m_collection, "-destination", m_copy}),
                  "Could not create destination directory " + m_copy + "\n");

    m_copy = "/proc";
    ExpectRefused(Run({"-configuration", m_collection, "-destination", m_copy}), NotWritable(m_copy));
}

TEST_P(DownloadRefusals, WhenTheServerCannotBeReached)
{
    const std::string dead = HttpUrl(FreeLoopbackPort(), QStringLiteral("/gallery")).toStdString();
    SetDefaultSource(dead);
    const RunResult r = Run({"-configuration", m_collection, "-destination", m_copy});
    EXPECT_EQ(1, r.exitCode);
    EXPECT_TRUE(StartsWith(r.out, "Checking connection to: " + dead + "\n")) << r.out;
    EXPECT_EQ(std::string::npos, r.out.find("Done.")) << r.out;
    EXPECT_EQ(DownloadFailure(dead), r.err);
    EXPECT_FALSE(Exists(m_copy + "/map.zip"));
}

INSTANTIATE_TEST_SUITE_P(Modes, DownloadRefusals, ::testing::Values("--downloadall", "--downloadsome"),
                         [](const ::testing::TestParamInfo<const char*>& mode) { return std::string(mode.param + 2); });

TEST_F(DownloadFromHttp, DownloadSomeWithoutAliasesHasNothingToDownload)
{
    // With a URL given there is no connection check before the aliases are looked at.
    const RunResult r = Download("--downloadsome", {"-source", m_url});
    EXPECT_EQ((Outcome{1, "nothing to download\n", ""}), OutcomeOf(r));
    EXPECT_FALSE(Exists(m_copy + "/gallery_categories.xml"));

    // Without one, the server is checked first.
    const RunResult checked = Download("--downloadsome");
    EXPECT_EQ((Outcome{1, "Checking connection to: " + m_url + "\nCheck succeeded.\nnothing to download\n", ""}),
              OutcomeOf(checked));
    EXPECT_FALSE(Exists(m_copy + "/gallery_categories.xml"));
}
