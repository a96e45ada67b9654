#include "configuration/CConfiguration.h"
#include "foundation/CSettingsStore.h"

#include "CollectionFixture.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

const char* const RepositorySection = "Software\\ZOLTA Technologies Inc.\\Gallery\\TeamContent\\";

std::string ReadSetting(const std::string& guid, const char* key)
{
    return U(CSettingsStore::ReadString(false, W(RepositorySection + guid), W(key), CAtlString()));
}

// Every path below `folder`, relative to it.
std::set<std::string> Tree(const std::string& folder)
{
    std::set<std::string> paths;
    std::error_code error;
    for (auto it = fs::recursive_directory_iterator(folder, error); !error && it != fs::recursive_directory_iterator();
         it.increment(error))
        paths.insert(fs::relative(it->path(), folder).string());
    return paths;
}

}  // namespace

TEST(ConfigurationStore, CopiesEveryListedFileAndDirectoryIntoTheConfigurationFolder)
{
    const std::string source =
        WriteCollection("store", CompleteCollection("Store Org", "Store:Gallery?", "guid-store"));
    CConfiguration configuration;
    ASSERT_TRUE(configuration.OpenCollectionDirectory(W(source)));
    ASSERT_TRUE(configuration.StoreConfiguration());
    EXPECT_FALSE(configuration.IsStored());

    const std::string stored = ConfigurationsFolder() + "/Store Org/StoreGallery";
    EXPECT_EQ(stored, U(configuration.GetConfigurationDirectory().GetPath()));
    EXPECT_EQ((std::set<std::string>{"configuration.xml", "metadata.xml", "about.html", "splash.html", "style.qss",
                                     "logo.png", "readme.txt", "Languages", "Languages/de",
                                     "Languages/de/CuratoolId.qm", "Languages/fr", "Languages/fr/CuratoolId.qm"}),
              Tree(stored));
    EXPECT_EQ(ReadFile(source + "/texts/about.html"), ReadFile(stored + "/about.html"));

    // A second store overwrites what is there.
    WriteFile(source + "/style.qss", "changed");
    ASSERT_TRUE(configuration.StoreConfiguration());
    EXPECT_EQ("changed", ReadFile(stored + "/style.qss"));
}

TEST(ConfigurationStore, MissingFilesFailTheStoreButTheRestIsCopied)
{
    CollectionFiles files = CompleteCollection("Org", "Partial", "guid-partial");
    files.others.erase("style.qss");
    files.others.erase("Languages/de/CuratoolId.qm");
    files.others.erase("Languages/fr/CuratoolId.qm");
    CConfiguration configuration;
    ASSERT_TRUE(configuration.OpenCollectionDirectory(W(WriteCollection("partial", files))));
    EXPECT_FALSE(configuration.StoreConfiguration());
    const std::string stored = ConfigurationsFolder() + "/Org/Partial";
    EXPECT_TRUE(Exists(stored + "/metadata.xml"));
    EXPECT_FALSE(Exists(stored + "/Languages"));
}

TEST(ConfigurationStore, StoringTheStoredCopyUnderAnotherSpellingKeepsItsFiles)
{
    const std::string source = WriteCollection("respelt", CompleteCollection("Spelt", "Respelt", "guid-respelt"));
    CConfiguration original;
    ASSERT_TRUE(original.OpenCollectionDirectory(W(source)));
    ASSERT_TRUE(original.StoreConfiguration());
    const std::string stored = ConfigurationsFolder() + "/Spelt/Respelt";
    const std::string about = ReadFile(stored + "/about.html");
    ASSERT_FALSE(about.empty());

    // The written form is what makes the flat stored copy readable with its references.
    ASSERT_TRUE(original.WriteConfigurationXml(W(stored + "/configuration.xml")));
    CConfiguration respelt;
    ASSERT_TRUE(respelt.OpenCollectionDirectory(W(ConfigurationsFolder() + "/Spelt/../Spelt/Respelt")));
    EXPECT_EQ(about, ReadFile(U(respelt.ResolvePath(respelt.GetApplication()->GetAbout()))));
    EXPECT_TRUE(respelt.StoreConfiguration());
    EXPECT_EQ(about, ReadFile(stored + "/about.html"));
}

TEST(ConfigurationRegistry, RegisterNeedsAnIdThenWritesTheFiveValues)
{
    const std::string source = WriteCollection("register", CompleteCollection("Reg Org", "Registered", "guid-reg"));
    CConfiguration configuration;
    ASSERT_TRUE(configuration.OpenCollectionDirectory(W(source)));
    EXPECT_FALSE(configuration.Register());
    EXPECT_TRUE(ReadSetting("guid-reg", "ImsManifestXml").empty());
    EXPECT_FALSE(configuration.RemoveStoredFiles());  // only a stored copy removes its files
    EXPECT_TRUE(Exists(source + "/configuration.xml"));

    EXPECT_FALSE(configuration.FindInstalled());
    const std::string install = MakeScratchDir("install");
    configuration.SetInstallDirectory(CZoltaDirectoryPath(W(install)));
    configuration.SetApplicationPath(W("/opt/curatool/curatool"));
    ASSERT_TRUE(configuration.StoreConfiguration());
    ASSERT_TRUE(configuration.Register());

    // The paths it names are checked on the real binary; the flag and the listing are not.
    const std::string stored = ConfigurationsFolder() + "/Reg Org/Registered";
    EXPECT_EQ(1, CSettingsStore::ReadInt(false, W(RepositorySection + std::string("guid-reg")), W("Enabled"), -1));

    bool listed = false;
    for (const CGalleryRepositoryEntry& entry : CConfiguration::InstalledGalleries())
        listed |= U(entry.id) == "guid-reg";
    EXPECT_TRUE(listed);

    // Found again by its GUID: the install directory comes from the manifest path.
    CConfiguration again;
    ASSERT_TRUE(again.OpenCollectionDirectory(W(source)));
    EXPECT_TRUE(again.FindInstalled());
    EXPECT_EQ(install, U(again.GetInstallDirectory().GetPath()));

    // Opened as installed, the stored copy is reloaded and is its own configuration folder.
    CConfiguration reopened;
    ASSERT_TRUE(reopened.OpenInstalled(W("guid-reg")));
    EXPECT_TRUE(reopened.IsStored());
    EXPECT_EQ(stored, U(reopened.GetDirectory().GetPath()));
    EXPECT_EQ(install, U(reopened.GetInstallDirectory().GetPath()));
    EXPECT_TRUE(reopened.StoreConfiguration());  // copies nothing onto itself

    ASSERT_TRUE(reopened.RemoveStoredFiles());
    EXPECT_TRUE(Exists(stored + "/Languages/de/CuratoolId.qm"));

    ASSERT_TRUE(reopened.Unregister());
    EXPECT_TRUE(ReadSetting("guid-reg", "ImsManifestXml").empty());
    EXPECT_FALSE(CConfiguration().OpenInstalled(W("guid-reg")));
}

TEST(ConfigurationRegistry, OpenInstalledNeedsManifestAndMetadataOrApplicationPath)
{
    const CAtlString section = W(std::string(RepositorySection) + "guid-half");
    CSettingsStore::WriteString(false, section, W("MetadataXml"), W("/nowhere/metadata.xml"));
    CConfiguration configuration;
    EXPECT_FALSE(configuration.OpenInstalled(W("guid-half")));
    CSettingsStore::WriteString(false, section, W("ImsManifestXml"), W("/nowhere/imsmanifest.xml"));
    // The entry reads, but the stored copy it points at does not exist.
    EXPECT_FALSE(configuration.OpenInstalled(W("guid-half")));
    EXPECT_TRUE(configuration.IsStored());
    EXPECT_EQ("/nowhere", U(configuration.GetInstallDirectory().GetPath()));
    EXPECT_FALSE(configuration.OpenInstalled(W("guid-never-written")));
}

TEST(ConfigurationHostile, ReferencesOutsideTheCollectionAreNeitherCopiedNorDeleted)
{
    const std::string outside = MakeScratchDir("victims");
    WriteFile(outside + "/victim.txt", "victim");
    WriteFile(outside + "/dir/inner.txt", "inner");
    CollectionFiles files;
    files.configuration =
        ConfigurationDocument("",
                              "<About Value=\"../victim.txt\"/>"
                              "<SplashScreen Text=\"" +
                                  outside +
                                  "/victim.txt\"/>"
                                  "<StyleSheet Value=\"sub/../../victim.txt\"/>"
                                  "<AdditionalFiles><Directory Path=\"..\"/><Directory Path=\"" +
                                  outside +
                                  "/dir\"/>"
                                  "<Directory Path=\".\"/><File Path=\"../../../victim.txt\"/><File Path=\"" +
                                  outside +
                                  "/victim.txt\"/>"
                                  "</AdditionalFiles>",
                              "<Name Value=\"Hostile\"/><Logo Value=\"/etc/passwd\"/>",
                              "<Gallery GUID=\"guid-hostile\" Name=\"Hostile Gallery\"/>");
    files.metadata = MetaDataDocument("guid-hostile", "Hostile Gallery");
    const std::string source = WriteCollection("hostile", files);

    CConfiguration configuration;
    ASSERT_TRUE(configuration.OpenCollectionDirectory(W(source)));
    EXPECT_TRUE(configuration.ResolvePath(configuration.GetOrganization()->GetLogo()).IsEmpty());
    ASSERT_TRUE(configuration.StoreConfiguration());

    const std::string stored = ConfigurationsFolder() + "/Hostile/Hostile Gallery";
    EXPECT_EQ((std::set<std::string>{"configuration.xml", "metadata.xml"}), Tree(stored));
    EXPECT_EQ((std::set<std::string>{"victim.txt", "dir", "dir/inner.txt"}), Tree(outside));

    // The stored copy, read back and removed, touches nothing beside itself.
    WriteFile(ConfigurationsFolder() + "/Hostile/victim.txt", "neighbour");
    configuration.FindInstalled();
    ASSERT_TRUE(configuration.Register());
    CConfiguration reopened;
    ASSERT_TRUE(reopened.OpenInstalled(W("guid-hostile")));
    ASSERT_TRUE(reopened.RemoveStoredFiles());
    EXPECT_EQ("neighbour", ReadFile(ConfigurationsFolder() + "/Hostile/victim.txt"));
    EXPECT_EQ("victim", ReadFile(outside + "/victim.txt"));
    EXPECT_EQ("inner", ReadFile(outside + "/dir/inner.txt"));
    EXPECT_TRUE(Exists("/etc/passwd"));
    EXPECT_FALSE(Exists(stored + "/configuration.xml"));
}

TEST(ConfigurationHostile, GalleryNamesCannotClimbOutOfTheConfigurationsFolder)
{
    // "??" cleans to no name at all.
    for (const char* name : {"..", ".", "??"}) {
        CollectionFiles files = CompleteCollection("Climb", name, "guid-climb");
        CConfiguration configuration;
        ASSERT_TRUE(configuration.OpenCollectionDirectory(W(WriteCollection("climb", files)))) << name;
        EXPECT_TRUE(configuration.GetConfigurationDirectory().IsEmpty()) << name;
        EXPECT_FALSE(configuration.StoreConfiguration()) << name;
        EXPECT_FALSE(configuration.ComposeRepositoryEntry()) << name;
    }
    EXPECT_FALSE(CConfiguration().StoreConfiguration());
    EXPECT_FALSE(Exists(ConfigurationsFolder() + "/Climb"));
    EXPECT_FALSE(Exists(ConfigurationsFolder() + "/about.html"));
}
