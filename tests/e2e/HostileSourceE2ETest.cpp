// Sources that misbehave, seen from the console: the server given is the one asked, every failed
// file says why on standard error, the download modes count their failures in the exit code, and
// nothing a source names reaches the terminal unescaped.
#include "support/E2EGallery.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"
#include "support/ZipTestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

class HostileSource : public ServedGallery {
protected:
    RunResult Download(std::vector<std::string> extra = {})
    {
        std::vector<std::string> arguments{"--downloadall", "-configuration", m_collection, "-destination",
                                           m_base + "/copy"};
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        return Curatool(arguments);
    }

    void ReplaceInDocument(const std::string& from, const std::string& to)
    {
        std::string document = ReadFile(m_source + "/gallery_categories.xml");
        ASSERT_NE(std::string::npos, document.find(from));
        document.replace(document.find(from), from.size(), to);
        ASSERT_TRUE(WriteFile(m_source + "/gallery_categories.xml", document));
    }
};

// A package whose two entries are made of the one stream.
std::string OverlappingArchive()
{
    ziptest::RawZip raw;
    for (int copy = 0; copy < 2; ++copy) {
        ziptest::RawEntry entry;
        entry.name = "imsmanifest.xml";
        entry.data = "<manifest/>";
        entry.sharesDataOf = copy == 0 ? -1 : 0;
        raw.Add(entry);
    }
    return raw.Build();
}

}  // namespace

TEST_F(HostileSource, TheSourceGivenIsTheServerAsked)
{
    // The configuration's own server is dead: the given one serves everything.
    const std::string dead = HttpUrl(FreeLoopbackPort(), QStringLiteral("/gallery")).toStdString();
    SetDefaultSource(dead);
    RunResult r = Download({"-source", m_url + "/"});
    EXPECT_EQ((Outcome{0, "Done.\n", ""}), OutcomeOf(r));
    EXPECT_EQ(ReadFile(m_source + "/bell.zip"), ReadFile(m_base + "/copy/bell.zip"));

    // The other way round: the dead one given is the one asked, and the run fails.
    SetDefaultSource(m_url);
    fs::remove_all(m_base + "/copy");
    r = Download({"-source", dead});
    EXPECT_EQ(1, r.exitCode);
    EXPECT_EQ("Failed: gallery_categories.xml: Connection refused (" + dead +
                  "/gallery_categories.xml)\n"
                  "Could not read the list of categories of the source " +
                  dead + "\n",
              r.err);
    EXPECT_FALSE(Exists(m_base + "/copy/bell.zip"));
}

// Each way a source can fail a download names the file and why on standard error, and the run
// ends with exit code 1: with the count of failed files, or, when the list of categories itself
// could not be read, with that and without "Done.".
TEST_F(HostileSource, EveryFailedFileSaysWhyAndTheRunCountsThem)
{
    const std::string document = m_url + "/gallery_categories.xml";
    struct Case {
        const char* name;
        std::function<void()> spoil;
        std::vector<std::string> complaints;
    };
    const std::string noList = "Could not read the list of categories of the source " + m_url + "\n";
    const Case cases[] = {
        {"cut document",
         [&] {
             const std::string whole = ReadFile(m_source + "/gallery_categories.xml");
             WriteFile(m_source + "/gallery_categories.xml", whole.substr(0, whole.size() / 2));
         },
         {"Failed: gallery_categories.xml: Cannot parse " + document + ": ", noList}},
        {"UTF-16 document",
         [&] {
             const std::string whole = ReadFile(m_source + "/gallery_categories.xml");
             std::string wide = "\xFF\xFE";
             for (char c : whole)
                 wide += std::string{c, '\0'};
             WriteFile(m_source + "/gallery_categories.xml", wide);
         },
         {"Failed: gallery_categories.xml: Cannot parse " + document + ": ", noList}},
        {"over-deep document",
         [&] {
             std::string nested;
             for (int depth = 0; depth < 2000; ++depth)
                 nested += "<a>";
             for (int depth = 0; depth < 2000; ++depth)
                 nested += "</a>";
             WriteFile(m_source + "/gallery_categories.xml", "<gallery>" + nested + "</gallery>");
         },
         {"Failed: gallery_categories.xml: Cannot parse " + document + ": ", noList}},
        {"control characters in a name",
         [&] {
             ReplaceInDocument(">bell.zip<", ">\x1b[2Jbell\x07.zip<");
             ReplaceInDocument(">Animals<", ">Ani\x1b[31mmals<");
         },
         {"Failed: \\x1B[2Jbell\\x07.zip: The source names it with control characters", "1 file failed.\n"}},
    };
    for (const Case& one : cases) {
        WriteSource(m_source);
        fs::remove_all(m_base + "/copy");
        one.spoil();
        const RunResult r = Download({"-verbose"});
        EXPECT_EQ(1, r.exitCode) << one.name;
        for (const std::string& complaint : one.complaints)
            EXPECT_TRUE(Contains(r.err, complaint)) << one.name << ": " << r.err;
        // Standard output keeps the failed item as the progress shows it; no byte of a source
        // reaches the terminal as a control character.
        EXPECT_TRUE(Contains(r.out, "Failed\n")) << one.name << ": " << r.out;
        EXPECT_FALSE(Contains(r.out + r.err, "\x1b")) << one.name;
        EXPECT_EQ(!Contains(r.err, noList), EndsWith(r.out, "Done.\n")) << one.name;
    }
    EXPECT_FALSE(Exists(m_base + "/copy/\x1b[2Jbell\x07.zip"));
}

TEST_F(HostileSource, AnInstallNamesTheDocumentItCannotParseAndTheDamagedPackage)
{
    ASSERT_TRUE(WriteFile(m_source + "/dog.zip", OverlappingArchive()));
    RunResult r =
        Curatool({"--installall", "-configuration", m_collection, "-source", m_source, "-destination", m_gallery});
    EXPECT_EQ(0, r.exitCode) << "an install reports its preparation only";
    EXPECT_EQ("Failed: dog.zip: Damaged package: Damaged or not a zip file\n", r.err);
    EXPECT_TRUE(HasCategory(m_gallery, "maps"));
    // The damaged package left nothing in the temporary folder.
    EXPECT_TRUE(fs::is_empty(m_base + "/tmp"));

    ASSERT_TRUE(WriteFile(m_source + "/gallery_categories.xml", "<gallery><categories>"));
    r = Curatool(
        {"--installall", "-configuration", m_collection, "-source", m_source, "-destination", m_base + "/other"});
    EXPECT_EQ(1, r.exitCode);
    EXPECT_TRUE(StartsWith(r.err, "Cannot parse " + m_source + "/gallery_categories.xml: ")) << r.err;
}
