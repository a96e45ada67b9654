#include "installation/PackageUnpacker.h"
#include "support/GallerySourceBuilder.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

std::string Text(const CZoltaDirectoryPath& folder)
{
    return ToFileSystemEncoding(folder.GetPath()).toStdString();
}

std::size_t UnpackingsLeft()
{
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(std::getenv("TMPDIR")))
        if (entry.path().filename().string().rfind("gallery", 0) == 0)
            ++count;
    return count;
}

// The installer takes the archives in their order, passes some over, and stops early: each
// archive it takes is the one it asked for, and nothing it did not take stays behind.
TEST(PackageUnpackerTest, GivesEachArchiveInItsTurnAndLeavesNothingOfThoseNotTaken)
{
    const std::string source = MakeScratchDir("unpack-source");
    std::vector<CZoltaFilePath> archives;
    for (const char* name : {"a", "b", "c", "d", "e", "f"}) {
        WritePackageZip(source, std::string(name) + ".zip", {std::string("pkg.") + name, "1.0", name, name});
        archives.emplace_back((source + "/" + name + ".zip").c_str());
    }
    ASSERT_TRUE(WriteFile(source + "/c.zip", "not an archive"));
    const std::size_t before = UnpackingsLeft();
    {
        PackageUnpacker unpacker(archives, 2, 2);
        std::optional<PackageUnpacker::Unpacked> a = unpacker.Take(archives[0]);
        ASSERT_TRUE(a && a->whole);
        EXPECT_EQ("a", ReadFile(Text(a->folder) + "/a"));
        std::optional<PackageUnpacker::Unpacked> c = unpacker.Take(archives[2]);  // b passed over
        ASSERT_TRUE(c);
        EXPECT_FALSE(c->whole);
        EXPECT_FALSE(c->error.empty());
        EXPECT_FALSE(unpacker.Take(archives[1]));                                  // passed: not to come
        EXPECT_FALSE(unpacker.Take(CZoltaFilePath((source + "/x.zip").c_str())));  // never listed
        std::optional<PackageUnpacker::Unpacked> d = unpacker.Take(archives[3]);
        ASSERT_TRUE(d && d->whole);
        EXPECT_EQ("d", ReadFile(Text(d->folder) + "/d"));
        for (const auto* taken : {&a, &c, &d})
            EXPECT_TRUE((*taken)->folder.Remove());
    }  // e and f are not taken
    EXPECT_EQ(before, UnpackingsLeft());
}

}  // namespace
