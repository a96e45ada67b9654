#include "configuration/CConfiguration.h"

#include "CollectionFixture.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

using namespace curatool::test;

namespace {

const char* const MinimalApplication = "<Title Value=\"T\"/>";
const char* const MinimalOrganization = "<Name Value=\"Org\"/>";

std::string MinimalGallery(const std::string& body = std::string())
{
    return "<Gallery GUID=\"g-1\" DefaultSource=\"\" Name=\"Gal\">" + body + "</Gallery>";
}

// A collection made of the given configuration.xml and a good metadata.xml.
std::string CollectionWith(const std::string& configuration)
{
    CollectionFiles files;
    files.configuration = configuration;
    files.metadata = MetaDataDocument("g-1", "Gal");
    return WriteCollection("read", files);
}

bool Loads(const std::string& configuration)
{
    CConfiguration loaded;
    return loaded.OpenCollectionDirectory(W(CollectionWith(configuration)));
}

std::vector<std::string> Relative(const std::vector<CZoltaFilePath>& files, const std::string& base)
{
    std::vector<std::string> names;
    for (const CZoltaFilePath& file : files)
        names.push_back(U(file.GetPath()).substr(base.size() + 1));
    return names;
}

}  // namespace

TEST(ConfigurationRead, CompleteCollectionFillsEveryRecord)
{
    const std::string folder =
        WriteCollection("complete", CompleteCollection("ZOLTA Technologies Inc.", "Sample", "guid-1"));
    CConfiguration configuration;
    int callbacks = 0;
    const CConfiguration* seen = nullptr;
    configuration.SetLoadedCallback([&](CConfiguration const* loaded) {
        ++callbacks;
        seen = loaded;
    });

    ASSERT_TRUE(configuration.OpenCollectionDirectory(W(folder)));
    EXPECT_TRUE(configuration.IsLoaded());
    EXPECT_EQ(1, callbacks);
    EXPECT_EQ(&configuration, seen);
    EXPECT_FALSE(configuration.IsStored());

    const auto application = configuration.GetApplication();
    EXPECT_EQ("texts/splash.html", U(application->GetSplashText()));
    EXPECT_EQ(-7, application->GetTextOffsetY());
    EXPECT_EQ(folder + "/style.qss", U(configuration.GetStyleSheetPath()));
    EXPECT_EQ("images/logo.png", U(configuration.GetOrganization()->GetLogo()));
    EXPECT_EQ("http://example.invalid/data", U(configuration.GetGallery()->GetDefaultSource()));
    ASSERT_EQ(2u, configuration.GetGallery()->GetCategories().size());
    EXPECT_EQ("guid-animals", U(configuration.GetGallery()->GetCategories().begin()->second));
    EXPECT_EQ("Sample", U(configuration.GetMetaData()->Title(W("en"))));
    EXPECT_EQ("1.0.0.0", U(configuration.GetDocumentVersion().ToString()));

    // The file list follows the reading order, directories apart.
    const auto files = configuration.GetFileList();
    EXPECT_EQ((std::vector<std::string>{"configuration.xml", "texts/about.html", "texts/splash.html", "style.qss",
                                        "extra/readme.txt", "images/logo.png", "metadata.xml"}),
              Relative(files->GetFiles(), folder));
    ASSERT_EQ(1u, files->GetDirectories().size());
    EXPECT_EQ(folder + "/Languages", U(files->GetDirectories()[0].GetPath()));
}

TEST(ConfigurationRead, FailedLoadKeepsWhatWasReadButIsNotLoaded)
{
    CollectionFiles files = CompleteCollection("Org", "NoMeta", "guid-3");
    files.metadata.clear();
    CConfiguration configuration;
    int callbacks = 0;
    configuration.SetLoadedCallback([&](CConfiguration const*) { ++callbacks; });
    EXPECT_FALSE(configuration.OpenCollectionDirectory(W(WriteCollection("nometa", files))));
    EXPECT_FALSE(configuration.IsLoaded());
    EXPECT_EQ(0, callbacks);
    EXPECT_EQ("NoMeta", U(configuration.GetGallery()->GetName()));

    // A missing required element fails the load, but the ones read before it stay.
    CConfiguration partial;
    EXPECT_FALSE(partial.OpenCollectionDirectory(
        W(CollectionWith(ConfigurationDocument("", MinimalApplication, "", MinimalGallery())))));
    EXPECT_EQ("Gal", U(partial.GetGallery()->GetName()));
    EXPECT_EQ("T", U(partial.GetApplication()->GetTitle()));
}

TEST(ConfigurationRead, WhichDocumentsLoad)
{
    const auto document = [](const std::string& root, const std::string& application = MinimalApplication,
                             const std::string& organization = MinimalOrganization,
                             const std::string& gallery = MinimalGallery()) {
        return ConfigurationDocument(root, application, organization, gallery);
    };
    const std::string good = document("");
    for (const auto& [text, loads] : std::vector<std::pair<std::string, bool>>{
             // Versions above the supported one are refused; text that is no version is never newer.
             {document("Version=\"1.0.0.1\""), false},
             {document("Version=\"1.0.0.0\""), true},
             {document("Version=\"0.9.9.9\""), true},
             {document("Version=\"abc\""), true},
             {good, true},
             // Each required element is needed.
             {document("", ""), false},
             {document("", MinimalApplication, ""), false},
             {document("", MinimalApplication, MinimalOrganization, ""), false},
             // Their order and the root's name do not matter.
             {"<?xml version=\"1.0\"?><AnyRoot><Organization><Name Value=\"O\"/></Organization>"
              "<Gallery GUID=\"g\" Name=\"N\"/><Application><Title Value=\"T\"/></Application></AnyRoot>",
              true},
             // Broken documents fail without harm.
             {good.substr(0, good.size() / 2), false},
             {"", false},
             {std::string("\0\xff\xfe<", 4), false},
             {"just text", false},
         })
        EXPECT_EQ(loads, Loads(text)) << text;

    CConfiguration configuration;
    EXPECT_FALSE(configuration.OpenCollectionDirectory(W(MakeScratchDir("empty"))));
    EXPECT_FALSE(configuration.OpenCollectionDirectory(CAtlString()));
}

TEST(ConfigurationRead, CategoriesNeedBothIdsAndALaterShortIdWins)
{
    CConfiguration configuration;
    ASSERT_TRUE(configuration.OpenCollectionDirectory(W(CollectionWith(
        ConfigurationDocument("", MinimalApplication, MinimalOrganization,
                              MinimalGallery("<Category ShortID=\"a\" GUID=\"first\"/><Category ShortID=\"b\"/>"
                                             "<Category GUID=\"orphan\"/><Category ShortID=\"\" GUID=\"x\"/>"
                                             "<Category ShortID=\"a\" GUID=\"second\"/>"))))));
    const auto& categories = configuration.GetGallery()->GetCategories();
    ASSERT_EQ(1u, categories.size());
    EXPECT_EQ("a", U(categories.begin()->first));
    EXPECT_EQ("second", U(categories.begin()->second));
}

TEST(ConfigurationRead, ShowTextIsTrueOnlyForExactlyTrue)
{
    for (const auto& [value, expected] :
         std::vector<std::pair<std::string, bool>>{{"true", true}, {"True", false}, {"1", false}})
    {
        CConfiguration configuration;
        ASSERT_TRUE(configuration.OpenCollectionDirectory(W(CollectionWith(ConfigurationDocument(
            "", "<SplashScreen ShowText=\"" + value + "\"/>", MinimalOrganization, MinimalGallery())))));
        EXPECT_EQ(expected, configuration.GetApplication()->GetShowText()) << value;
    }
}

TEST(ConfigurationRead, MissingOptionalElementsLeaveFieldsAsTheyWere)
{
    const std::string folder = CollectionWith(
        ConfigurationDocument("", "<Title Value=\"First\"/><SplashScreen TextOffset_X=\"5\" ShowText=\"true\"/>",
                              MinimalOrganization, MinimalGallery()));
    CConfiguration configuration;
    ASSERT_TRUE(configuration.OpenCollectionDirectory(W(folder)));
    // The directory road does not reset: a second document only changes what it names.
    WriteFile(folder + "/configuration.xml",
              ConfigurationDocument("", "<PathOverride Value=\"Elsewhere\"/>", MinimalOrganization, MinimalGallery()));
    ASSERT_TRUE(configuration.OpenCollectionDirectory(W(folder)));
    EXPECT_EQ("First", U(configuration.GetApplication()->GetTitle()));
    EXPECT_EQ(5, configuration.GetApplication()->GetTextOffsetX());
    EXPECT_TRUE(configuration.GetApplication()->GetShowText());
    EXPECT_EQ("Elsewhere", U(configuration.GetApplication()->GetPathOverride()));
}

TEST(ConfigurationLocation, ConfigurationDirectoryCleansNamesInstallDirectoryKeepsThem)
{
    struct Case {
        std::string organization, gallery, expected;
    };
    for (const Case& c : std::vector<Case>{
             {"", "Gal", "/Gal"}, {"A/B", "G&lt;a&gt;l:&quot;|?*\\", "/AB/Gal"}, {"Org", "Gal", "/Org/Gal"}})
    {
        CConfiguration configuration;
        ASSERT_TRUE(configuration.OpenCollectionDirectory(W(CollectionWith(ConfigurationDocument(
            "", MinimalApplication,
            c.organization.empty() ? "<Logo Value=\"\"/>" : "<Name Value=\"" + c.organization + "\"/>",
            "<Gallery GUID=\"g\" Name=\"" + c.gallery + "\"/>")))));
        EXPECT_EQ(ConfigurationsFolder() + c.expected, U(configuration.GetConfigurationDirectory().GetPath()));
    }

    // The default install directory keeps the names as they are and honours a path override.
    const std::string shared = std::string(std::getenv("CURATOOL_ROOT")) + "/usr/local/share/ZOLTA Scrivent Galleries";
    CConfiguration configuration;
    ASSERT_TRUE(configuration.OpenCollectionDirectory(W(CollectionWith(ConfigurationDocument(
        "", MinimalApplication, "<Name Value=\"A/B\"/>", "<Gallery GUID=\"g\" Name=\"Gal\"/>")))));
    EXPECT_EQ(shared + "/A/B/Gal", U(configuration.DefaultInstallDirectory().GetPath()));
    CConfiguration overridden;
    ASSERT_TRUE(overridden.OpenCollectionDirectory(
        W(CollectionWith(ConfigurationDocument("", "<PathOverride Value=\"Shared/Place\"/>", "<Name Value=\"Org\"/>",
                                               "<Gallery GUID=\"g\" Name=\"Gal\"/>")))));
    EXPECT_EQ(shared + "/Shared/Place", U(overridden.DefaultInstallDirectory().GetPath()));
}

TEST(ConfigurationWrite, WrittenFormReadsBackWithBareFileNames)
{
    const std::string source = WriteCollection("write-source", CompleteCollection("Org", "Written", "guid-w"));
    CConfiguration original;
    ASSERT_TRUE(original.OpenCollectionDirectory(W(source)));
    const std::string target = MakeScratchDir("write-target");
    ASSERT_TRUE(original.WriteConfigurationXml(W(target + "/configuration.xml")));

    const std::string written = ReadFile(target + "/configuration.xml");
    EXPECT_EQ(0u, written.find("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>"));
    EXPECT_EQ(std::string::npos, written.find("AdditionalFiles"));
    EXPECT_LT(written.find("<Application"), written.find("<Organization"));
    EXPECT_LT(written.find("<Organization"), written.find("<Gallery"));

    WriteFile(target + "/metadata.xml", MetaDataDocument("guid-w", "Written"));
    CConfiguration copy;
    ASSERT_TRUE(copy.OpenCollectionDirectory(W(target)));
    EXPECT_EQ("Written Setup", U(copy.GetApplication()->GetTitle()));
    EXPECT_EQ("about.html", U(copy.GetApplication()->GetAbout()));
    EXPECT_EQ("splash.html", U(copy.GetApplication()->GetSplashText()));
    EXPECT_EQ("logo.png", U(copy.GetOrganization()->GetLogo()));
    EXPECT_EQ(-7, copy.GetApplication()->GetTextOffsetY());
    EXPECT_TRUE(copy.GetApplication()->GetShowText());
    EXPECT_EQ(original.GetGallery()->GetCategories(), copy.GetGallery()->GetCategories());
    EXPECT_EQ("http://example.invalid/data", U(copy.GetGallery()->GetDefaultSource()));
    EXPECT_EQ("1.0.0.0", U(copy.GetDocumentVersion().GetText()));
    EXPECT_TRUE(copy.GetFileList()->GetDirectories().empty());
}

TEST(ConfigurationWrite, OptionalPartsAreLeftOutWhenEmpty)
{
    CConfiguration configuration;
    ASSERT_TRUE(configuration.OpenCollectionDirectory(W(CollectionWith(
        ConfigurationDocument("", "<SplashScreen ShowText=\"no\"/>", "<Logo Value=\"\"/>", MinimalGallery())))));
    const std::string target = MakeScratchDir("write-minimal") + "/configuration.xml";
    ASSERT_TRUE(configuration.WriteConfigurationXml(W(target)));
    const std::string written = ReadFile(target);
    EXPECT_NE(std::string::npos, written.find("<Title"));
    EXPECT_NE(std::string::npos, written.find("<SplashScreen"));
    for (const char* absent : {"ShowText", "<About", "<StyleSheet", "<PathOverride", "<Name", "<Logo", "<Category"})
        EXPECT_EQ(std::string::npos, written.find(absent)) << absent;
    EXPECT_FALSE(configuration.WriteConfigurationXml(W(MakeScratchDir("write-fail") + "/absent/configuration.xml")));
}
