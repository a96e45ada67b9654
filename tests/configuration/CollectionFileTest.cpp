#include "configuration/CConfiguration.h"

#include "CollectionFixture.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

std::string Quoted(const std::string& text)
{
    return "'" + text + "'";
}

// Packs a folder the way collections are made by hand: Info-ZIP's zip, recursively.
std::string Pack(const std::string& folder, const std::string& archiveName)
{
    const std::string archive = MakeScratchDir("archives") + "/" + archiveName;
    const std::string command = "cd " + Quoted(folder) + " && zip -q -r " + Quoted(archive) + " . >/dev/null 2>&1";
    EXPECT_EQ(0, std::system(command.c_str())) << command;
    return archive;
}

// Unpacked collections live below the temporary folder, each in a folder named "Configuration...".
std::vector<std::string> UnpackedFolders()
{
    std::vector<std::string> folders;
    std::error_code error;
    for (auto it = fs::recursive_directory_iterator(std::getenv("TMPDIR"), error);
         !error && it != fs::recursive_directory_iterator(); it.increment(error))
    {
        if (it->is_directory() && it->path().filename().string().rfind("Configuration", 0) == 0) {
            folders.push_back(it->path().string());
            it.disable_recursion_pending();
        }
    }
    return folders;
}

bool AnywhereBelow(const std::string& root, const std::string& name)
{
    std::error_code error;
    for (auto it = fs::recursive_directory_iterator(root, error); !error && it != fs::recursive_directory_iterator();
         it.increment(error))
    {
        if (it->path().filename() == name)
            return true;
    }
    return false;
}

std::string GoodArchive(const std::string& name, const std::string& gallery)
{
    return Pack(WriteCollection("packed", CompleteCollection("Zip Org", gallery, "guid-" + gallery)), name);
}

}  // namespace

TEST(CollectionFile, ZippedCollectionLoadsFromAFolderThatDiesWithTheConfiguration)
{
    ASSERT_TRUE(UnpackedFolders().empty());
    const std::string archive = GoodArchive("Zipped.gallerycollection", "Zipped");
    std::string unpacked;
    {
        CConfiguration configuration;
        ASSERT_TRUE(configuration.OpenCollectionFile(W(archive)));
        EXPECT_EQ(fs::path(archive).parent_path().string(), U(configuration.GetCollectionLocation()));
        unpacked = U(configuration.GetDirectory().GetPath());
        EXPECT_EQ((std::vector<std::string>{unpacked}), UnpackedFolders());
        EXPECT_EQ(0u, unpacked.rfind(std::getenv("TMPDIR"), 0));
        EXPECT_EQ("<p>about</p>", ReadFile(U(configuration.ResolvePath(configuration.GetApplication()->GetAbout()))));

        ASSERT_TRUE(configuration.StoreConfiguration());
        EXPECT_EQ("catalogue", ReadFile(ConfigurationsFolder() + "/Zip Org/Zipped/Languages/de/CuratoolId.qm"));
    }
    EXPECT_FALSE(Exists(unpacked));
    EXPECT_TRUE(Exists(ConfigurationsFolder() + "/Zip Org/Zipped/about.html"));
}

TEST(CollectionFile, OpeningAnotherCollectionDropsThePreviousOne)
{
    // The second collection lies inside the unpacked first one.
    CollectionFiles outer = CompleteCollection("Org", "Outer", "guid-outer");
    outer.others["inner/Inner.gallerycollection"] = ReadFile(GoodArchive("Inner.gallerycollection", "Inner"));
    CConfiguration configuration;
    ASSERT_TRUE(configuration.OpenCollectionFile(W(Pack(WriteCollection("outer", outer), "Outer.gallerycollection"))));
    const std::string first = U(configuration.GetDirectory().GetPath());
    ASSERT_TRUE(configuration.OpenCollectionFile(W(first + "/inner/Inner.gallerycollection")));
    // The first folder went before the second was made, so its name may well be taken again.
    EXPECT_EQ((std::vector<std::string>{U(configuration.GetDirectory().GetPath())}), UnpackedFolders());
    EXPECT_TRUE(first == U(configuration.GetDirectory().GetPath()) || !Exists(first));
    EXPECT_EQ("Inner", U(configuration.GetGallery()->GetName()));
    configuration.Reset();
    EXPECT_TRUE(UnpackedFolders().empty());
    EXPECT_FALSE(configuration.IsLoaded());
    EXPECT_TRUE(configuration.GetCollectionLocation().IsEmpty());
}

TEST(CollectionFile, BadArchivesAndOtherExtensionsFailAndLeaveNoTemporaryFolder)
{
    const std::string folder = MakeScratchDir("bad-archives");
    const std::string good = ReadFile(GoodArchive("Good.gallerycollection", "Good"));
    CollectionFiles withoutConfiguration = CompleteCollection("Org", "NoConfig", "guid-noconfig");
    withoutConfiguration.configuration.clear();
    const std::map<std::string, std::string> archives = {
        {"empty.gallerycollection", ""},
        {"truncated.gallerycollection", good.substr(0, good.size() / 2)},
        {"noconfig.gallerycollection",
         ReadFile(Pack(WriteCollection("noconfig", withoutConfiguration), "NoConfig.gallerycollection"))},
        // Only the exact extension is accepted, however good the content.
        {"x.zip", good},
        {"x.GalleryCollection", good},
    };
    for (const auto& [name, content] : archives) {
        WriteFile(folder + "/" + name, content);
        CConfiguration configuration;
        EXPECT_FALSE(configuration.OpenCollectionFile(W(folder + "/" + name))) << name;
        EXPECT_TRUE(UnpackedFolders().empty()) << name;
    }
}

TEST(CollectionFile, EntryNamesThatClimbOutStayInside)
{
    const std::string folder = MakeScratchDir("climbing-archive");
    const std::string archive = folder + "/Climb.gallerycollection";
    const CollectionFiles files = CompleteCollection("Org", "Climb", "guid-climb-zip");
    WriteFile(folder + "/configuration.xml", files.configuration);
    WriteFile(folder + "/metadata.xml", files.metadata);
    const std::string script = "import zipfile,sys\n"
                               "z=zipfile.ZipFile(sys.argv[1],'w')\n"
                               "z.write(sys.argv[2]+'/configuration.xml','configuration.xml')\n"
                               "z.write(sys.argv[2]+'/metadata.xml','metadata.xml')\n"
                               "z.writestr('../escaped-entry.txt','x')\n"
                               "z.writestr('../../escaped-entry.txt','x')\n"
                               "z.writestr('/tmp/escaped-absolute-entry.txt','x')\n"
                               "z.close()\n";
    WriteFile(folder + "/make.py", script);
    ASSERT_EQ(
        0,
        std::system(("python3 " + Quoted(folder + "/make.py") + " " + Quoted(archive) + " " + Quoted(folder)).c_str()));

    {
        CConfiguration configuration;
        configuration.OpenCollectionFile(W(archive));
    }
    EXPECT_FALSE(AnywhereBelow(ScratchRoot(), "escaped-entry.txt"));
    EXPECT_FALSE(Exists("/tmp/escaped-absolute-entry.txt"));
    EXPECT_TRUE(UnpackedFolders().empty());
}
