// --uninstall and --register: what goes, what stays, what the settings store holds, and the
// refusals of both, with a gallery named by its collection or by its GUID.
#include "support/E2EGallery.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

class InstalledGallery : public E2EGallery {
protected:
    void Install()
    {
        const RunResult r =
            Curatool({"--installall", "-configuration", m_collection, "-source", m_source, "-destination", m_gallery});
        ASSERT_EQ(0, r.exitCode) << r.err;
        ASSERT_TRUE(IsRegistered());
    }

    void ExpectGalleryGone()
    {
        for (const SampleCategory& category : SampleCategories())
            EXPECT_TRUE(LacksCategory(m_gallery, category.alias)) << category.alias;
        EXPECT_FALSE(Exists(m_gallery + "/imsmanifest.xml"));
        EXPECT_FALSE(Exists(m_gallery + "/Uninstall"));
        EXPECT_FALSE(IsRegistered());
    }

    void ExpectNotLoaded(const RunResult& r)
    {
        EXPECT_EQ((Outcome{1, "", "Could not load the configuration.\n"}), OutcomeOf(r));
    }
};

}  // namespace

// Named by its collection the stored copy stays, since it was not what the run was given; named by
// its GUID the stored files go too (the folders stay). -verbose tells each removed package.
TEST_F(InstalledGallery, UninstallRemovesTheGalleryAndItsEntry)
{
    Install();
    RunResult r = Curatool({"--uninstall", "-configuration", m_collection});
    EXPECT_EQ((Outcome{0, "Uninstall complete.\n", ""}), OutcomeOf(r));
    ExpectGalleryGone();
    EXPECT_TRUE(Exists(StoredConfigurationDirectory() + "/configuration.xml"));
    // Gone means gone: a second removal finds nothing.
    ExpectNotLoaded(Curatool({"--uninstall", "-configuration", m_collection}));

    Install();
    r = Curatool({"--uninstall", "-guid", kGalleryGuid, "-verbose"});
    EXPECT_EQ(0, r.exitCode);
    EXPECT_EQ("", r.err);
    std::vector<std::string> removals;
    for (const std::string& line : Lines(r.out))
        if (StartsWith(line, "Uninstalling: "))
            removals.push_back(line);
    ASSERT_EQ(5u, removals.size()) << r.out;
    // In category order, the overall share growing by one package of five each time.
    const char* titles[] = {"Animals", "Animals", "Maps", "Maps", "Sounds"};
    for (size_t i = 0; i < removals.size(); ++i)
        EXPECT_TRUE(
            StartsWith(removals[i], "Uninstalling:  \t[" + std::to_string(20 * (i + 1)) + "%] (" + titles[i] + ") "))
            << removals[i];
    EXPECT_TRUE(EndsWith(r.out, "\nUninstall complete.\n")) << r.out;
    EXPECT_EQ(std::string::npos, r.out.find("Failed")) << r.out;
    ExpectGalleryGone();
    EXPECT_FALSE(Exists(StoredConfigurationDirectory() + "/configuration.xml"));
    EXPECT_FALSE(Exists(StoredConfigurationDirectory() + "/metadata.xml"));
    EXPECT_TRUE(fs::is_directory(StoredConfigurationDirectory()));
    ExpectNotLoaded(Curatool({"--uninstall", "-guid", kGalleryGuid}));
}

TEST_F(InstalledGallery, UninstallRefusesWhatIsNotInstalledOrCannotBeWritten)
{
    ExpectNotLoaded(Curatool({"--uninstall"}));
    ExpectNotLoaded(Curatool({"--uninstall", "-configuration", m_base + "/nothing"}));
    ExpectNotLoaded(Curatool({"--uninstall", "-configuration", m_collection}));
    ExpectNotLoaded(Curatool({"--uninstall", "-guid", kGalleryGuid}));

    // Registered where nobody may write: the entry stays.
    ASSERT_EQ(0, Curatool({"--register", "-configuration", m_collection, "-destination", "/proc"}).exitCode);
    const RunResult r = Curatool({"--uninstall", "-configuration", m_collection});
    EXPECT_EQ((Outcome{1, "", NotWritable("/proc")}), OutcomeOf(r));
    EXPECT_EQ("/proc/imsmanifest.xml", RegistryValue("ImsManifestXml"));
}

TEST_F(InstalledGallery, RegisterStoresTheCollectionAndWritesTheEntry)
{
    RunResult r = Curatool({"--register", "-configuration", m_collection});
    EXPECT_EQ((Outcome{0, "", ""}), OutcomeOf(r));
    // Never installed and no -destination: the default place.
    EXPECT_EQ(DefaultInstallDirectory() + "/imsmanifest.xml", RegistryValue("ImsManifestXml"));
    EXPECT_EQ(StoredConfigurationDirectory() + "/metadata.xml", RegistryValue("MetadataXml"));
    EXPECT_EQ(ReadFile(m_collection + "/configuration.xml"),
              ReadFile(StoredConfigurationDirectory() + "/configuration.xml"));
    EXPECT_EQ(CuratoolProgram(), RegistryValue("AppPath"));
    EXPECT_FALSE(Exists(DefaultInstallDirectory())) << "registering installs nothing";

    // -remote here leaves the file associations alone but not the application path.
    r = Curatool({"--register", "-configuration", m_collection, "-destination", m_base + "/elsewhere", "-remote"});
    EXPECT_EQ((Outcome{0, "", ""}), OutcomeOf(r));
    EXPECT_EQ(m_base + "/elsewhere/imsmanifest.xml", RegistryValue("ImsManifestXml"));
    EXPECT_EQ(CuratoolProgram(), RegistryValue("AppPath"));
}

TEST_F(InstalledGallery, RegisterRefusals)
{
    RunResult r = Curatool({"--register", "-configuration", m_base + "/nothing"});
    ExpectNotLoaded(r);
    // Only a named collection that fails to load is a complaint; an unknown GUID names none, and
    // a bare register does nothing at all.
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--register", "-guid", kGalleryGuid}, std::vector<std::string>{"--register"}})
    {
        r = Curatool(arguments);
        EXPECT_EQ((Outcome{0, "", ""}), OutcomeOf(r));
        EXPECT_FALSE(IsRegistered());
    }
    EXPECT_FALSE(Exists(StoredConfigurationDirectory()));

    ASSERT_TRUE(WriteFile(SystemPath(std::string(kSharedGalleries) + "/Configurations"), "in the way"));
    r = Curatool({"--register", "-configuration", m_collection});
    EXPECT_EQ((Outcome{1, "", "Could not copy the configuration files.\n"}), OutcomeOf(r));
    EXPECT_FALSE(IsRegistered());
    fs::remove(SystemPath(std::string(kSharedGalleries) + "/Configurations"));

    // Neither the machine's nor the user's settings file can be made.
    for (const std::string& folder : {SystemPath("/etc/xdg/zoltaworks"), m_config + "/zoltaworks"}) {
        fs::remove_all(folder);
        ASSERT_TRUE(WriteFile(folder, "in the way"));
    }
    r = Curatool({"--register", "-configuration", m_collection});
    EXPECT_EQ((Outcome{1, "", "Could not save preferences.\n"}), OutcomeOf(r));

    // An install does not stop for that.
    r = Curatool({"--installall", "-configuration", m_collection, "-source", m_source, "-destination", m_gallery});
    EXPECT_EQ((Outcome{0, "Done.\n", ""}), OutcomeOf(r));
    EXPECT_TRUE(HasCategory(m_gallery, "animals"));
}

TEST_F(InstalledGallery, AnInstalledGalleryKeepsItsPlaceAndIsReachedByItsGuid)
{
    Install();
    RunResult r = Curatool({"--register", "-configuration", m_collection});
    EXPECT_EQ((Outcome{0, "", ""}), OutcomeOf(r));
    EXPECT_EQ(m_gallery + "/imsmanifest.xml", RegistryValue("ImsManifestXml"));

    WriteSource(m_source, {{"sounds", "1.1"}});
    r = Curatool(
        {"--installsome", "-guid", kGalleryGuid, "-source", m_source, "-destination", m_gallery, "-c", "sounds"});
    EXPECT_EQ((Outcome{0, "Done.\n", ""}), OutcomeOf(r));
    EXPECT_TRUE(HasCategory(m_gallery, "sounds", "1.1"));
    EXPECT_TRUE(HasCategory(m_gallery, "animals", "1.0"));

    // The stored copy is the collection itself now.
    r = Curatool({"--register", "-guid", kGalleryGuid, "-destination", m_base + "/moved"});
    EXPECT_EQ((Outcome{0, "", ""}), OutcomeOf(r));
    EXPECT_EQ(m_base + "/moved/imsmanifest.xml", RegistryValue("ImsManifestXml"));
    EXPECT_EQ(StoredConfigurationDirectory() + "/metadata.xml", RegistryValue("MetadataXml"));
}
