// Damaged, truncated and hostile archives: the right codes, no crash, nothing written outside.
#include "ziparchive/CZipArchive.h"
#include "ziparchive/CZipException.h"
#include "ziparchive/CZipMemFile.h"
#include "support/TestEnvironment.h"
#include "ziparchive/ZipHelpers.h"
#include "support/ZipTestSupport.h"

#include <gtest/gtest.h>

#include <set>
#include <sys/stat.h>

using namespace curatool::test;
using namespace ziptest;

namespace {

// The cause of the first failure met while listing and reading every entry, 0 for none.
int CauseOfReadingAll(const std::string& bytes)
{
    CZipMemFile memory(bytes.data(), bytes.size());
    CZipArchive zip;
    try {
        zip.Open(memory, CZipArchive::zipOpenReadOnly);
        for (int i = 0; i < zip.GetCount(); ++i) {
            CZipMemFile out;
            zip.ExtractFile(i, out);
        }
        zip.Close();
    }
    catch (const CZipException& error) {
        if (!zip.IsClosed())
            zip.Close(true);
        return error.m_iCause;
    }
    return 0;
}

}  // namespace

TEST(ZipDamage, CodesOfBrokenArchives)
{
    const std::string notAnArchive = SampleBytes(100000, 5);
    const std::string oneEntry = Archive({{.name = "a.txt", .data = "a"}});
    RawZip volumes;
    volumes.Add("a.txt", "a");
    const struct {
        const char* name;
        std::string bytes;
        int cause;
    } cases[] = {
        {"empty", "", CZipException::cdirNotFound},
        {"no end record", notAnArchive, CZipException::cdirNotFound},
        {"one volume", volumes.Build(0, 0), 0},
        {"central directory on another disk", volumes.Build(1, 0), CZipException::badZipFile},
        // The last volume of a set whose earlier volumes are missing.
        {"last volume", volumes.Build(2, 2), CZipException::cdirNotFound},
        {"encrypted", Archive({{.name = "s.txt", .data = "xxxxxxxxxxxx", .flags = 1}}), CZipException::badPassword},
        {"bzip2", Archive({{.name = "b.txt", .data = "BZh9", .method = 12}}), CZipException::badZipFile},
        {"crc", Archive({{.name = "good.txt", .data = "good"}, {.name = "bad.txt", .data = "bad", .badCrc = true}}),
         CZipException::badCrc},
    };
    for (const auto& c : cases)
        EXPECT_EQ(CauseOfReadingAll(c.bytes), c.cause) << c.name;
    EXPECT_EQ(CauseOfReadingAll(oneEntry), 0);

    // The helpers fail on them without leaving anything behind.
    const std::string folder = MakeScratchDir("broken");
    WriteFile(folder + "/plain.zip", "this is not an archive at all");
    WriteFile(folder + "/crc.zip", cases[7].bytes);
    const std::string target = folder + "/out";
    for (const char* name : {"plain.zip", "absent.zip", "crc.zip"})
        EXPECT_FALSE(ZipExtractAll(FilePath(folder + "/" + name), FolderPath(target))) << name;
    EXPECT_FALSE(Exists(target + "/bad.txt"));
    unsigned char* data = nullptr;
    size_t size = 0;
    EXPECT_FALSE(ZipExtractToBuffer(FilePath(folder + "/crc.zip"), CAtlString(L"bad.txt"), data, size));
    EXPECT_EQ(data, nullptr);
}

// What an archive may make the disk take is bounded: no entry beyond its declared size, no two
// entries out of the same bytes, no archive whose declared sizes exceed the free space.
TEST(ZipDamage, BombsStopAtTheirDeclaredSizeAndNeverReachTheDisk)
{
    const std::string zeros(8 * 1024 * 1024, '\0');
    // 8 MB of zeros that claims to be 100 kB.
    const std::string lying =
        Archive({{.name = "liar.bin", .data = zeros, .deflate = true, .declaredSize = 100 * 1024}});
    std::vector<RawEntry> sharing;  // four entries, one stream: each honest about its size
    std::vector<RawEntry> huge;     // a thousand entries of one byte that each claim almost 4 GB
    for (int index = 0; index < 4; ++index)
        sharing.push_back({.name = "copy" + std::to_string(index),
                           .data = zeros,
                           .deflate = true,
                           .sharesDataOf = index == 0 ? -1 : 0});
    for (int index = 0; index < 1000; ++index)
        huge.push_back({.name = "big" + std::to_string(index), .data = "b", .declaredSize = 0xFFFFFFF0});

    const struct {
        const char* name;
        std::string bytes;
        int cause;  // met when every entry is read into memory
        const char* reason;
    } cases[] = {
        {"lying", lying, CZipException::badCrc, "Crc mismatched"},
        {"sharing", Archive(sharing), CZipException::badZipFile, "Damaged or not a zip file"},
        {"huge", Archive(huge), CZipException::badCrc, "No space left on device"},
    };
    for (const auto& one : cases) {
        const std::string folder = MakeScratchDir(std::string("bomb-") + one.name);
        WriteFile(folder + "/bomb.zip", one.bytes);
        const std::string target = folder + "/out";
        EXPECT_FALSE(ZipExtractAll(FilePath(folder + "/bomb.zip"), FolderPath(target))) << one.name;
        const std::string reason = ZipTakeLastError();
        EXPECT_NE(reason.find(one.reason), std::string::npos) << one.name << ": " << reason;
        EXPECT_TRUE(!Exists(target) || ReadTree(target).empty()) << one.name;
        EXPECT_EQ(CauseOfReadingAll(one.bytes), one.cause) << one.name;
    }

    // Read in pieces, the liar gives no byte past its claim before it fails.
    CZipMemFile memory(lying.data(), lying.size());
    CZipArchive zip;
    zip.Open(memory, CZipArchive::zipOpenReadOnly);
    ASSERT_TRUE(zip.OpenFile(0));
    std::string buffer(4096, '\0');
    size_t given = 0;
    try {
        while (size_t got = zip.ReadFile(buffer.data(), buffer.size()))
            given += got;
        ADD_FAILURE() << "no failure";
    }
    catch (const CZipException& error) {
        EXPECT_EQ(CZipException::badCrc, error.m_iCause);
    }
    EXPECT_LE(given, size_t(100 * 1024));
    zip.Close(true);
}

TEST(ZipDamage, TruncatedOrFlippedArchivesNeverCrashAndFailOnlyWithArchiveCodes)
{
    const std::string folder = MakeScratchDir("deflated");
    WriteFile(folder + "/src/a.txt", SampleBytes(40000, 11));
    WriteFile(folder + "/src/b/c.txt", SampleBytes(3000, 12));
    ASSERT_TRUE(ZipAddDirectory(FolderPath(folder + "/src"), FilePath(folder + "/d.zip")));
    const std::string whole = ReadFile(folder + "/d.zip");
    ASSERT_EQ(CauseOfReadingAll(whole), 0);

    const std::set<int> truncated = {CZipException::badZipFile, CZipException::badCrc, CZipException::cdirNotFound};
    for (size_t length = 0; length < whole.size(); length += 97) {
        // A copy of exactly `length` bytes, so a read past its end is one a sanitizer would see.
        const int cause = CauseOfReadingAll(whole.substr(0, length));
        EXPECT_TRUE(truncated.count(cause)) << "length " << length << " cause " << cause;
    }
    std::set<int> flipped = truncated;
    flipped.insert({0, CZipException::badPassword, CZipException::needDict, CZipException::dataError});
    for (size_t at = 0; at < whole.size(); at += 13) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(damaged[at] ^ 0xA5);
        const int cause = CauseOfReadingAll(damaged);
        EXPECT_TRUE(flipped.count(cause)) << "offset " << at << " cause " << cause;
    }
    // Damage inside the compressed data of the first entry is caught on reading.
    std::string damaged = whole;
    for (size_t at = 200; at < 260; ++at)
        damaged[at] = static_cast<char>(damaged[at] ^ 0x3C);
    EXPECT_NE(CauseOfReadingAll(damaged), 0);
}

TEST(ZipDamage, HostileNamesAndLinksAreRefusedWithoutWritingOutside)
{
    const std::string sandbox = MakeScratchDir("hostile");
    const std::string target = sandbox + "/dest";
    std::filesystem::create_directories(target);
    const std::string outside = sandbox + "/escaped.txt";

    const std::vector<std::string> names = {"../escaped.txt",
                                            "a/../../escaped.txt",
                                            "..\\escaped.txt",
                                            "a\\..\\..\\escaped.txt",
                                            outside,
                                            "\\" + outside.substr(1),
                                            std::string("ok\0/../../escaped.txt", 22)};
    for (const std::string& name : names) {
        WriteFile(sandbox + "/h.zip",
                  Archive({{.name = "before.txt", .data = "fine"}, {.name = name, .data = "pwned"}}));
        EXPECT_FALSE(ZipExtractAll(FilePath(sandbox + "/h.zip"), FolderPath(target))) << name;
        const CAtlString wide(QString::fromUtf8(name.data(), qsizetype(name.size())));
        EXPECT_FALSE(ZipExtractFile(FilePath(sandbox + "/h.zip"), wide, FolderPath(target))) << name;
        EXPECT_FALSE(Exists(outside)) << name;
    }

    // Names with control characters (ESC, CR, the C1 CSI) are refused, not created.
    for (const std::string name : {"\x1b[2J.txt", "cr\r.txt", "c1\xC2\x9B.txt", "dir\x7F/x.txt"}) {
        WriteFile(sandbox + "/h.zip", Archive({{.name = name, .data = "shown raw"}}));
        EXPECT_FALSE(ZipExtractAll(FilePath(sandbox + "/h.zip"), FolderPath(target))) << name;
        EXPECT_FALSE(Exists(target + "/" + name)) << name;
    }

    WriteFile(sandbox + "/l.zip", Archive({{.name = "link", .data = "/etc/passwd", .externalAttr = 0120777u << 16},
                                           {.name = "link/written-through.txt", .data = "pwned"}}));
    EXPECT_FALSE(ZipExtractAll(FilePath(sandbox + "/l.zip"), FolderPath(target)));
    struct stat info;
    EXPECT_NE(::lstat((target + "/link").c_str(), &info), 0);

    // Whatever was extracted stayed below the destination.
    for (const auto& [path, bytes] : ReadTree(sandbox))
        EXPECT_TRUE(path.rfind("dest/", 0) == 0 || path == "h.zip" || path == "l.zip" || path == "dest/") << path;

    // Odd but harmless names land inside, normalised.
    WriteFile(sandbox + "/o.zip", Archive({{.name = "./a//b/./c.txt", .data = "c"},
                                           {.name = "C:\\x.txt", .data = "x"},
                                           {.name = "..a/b..", .data = "dots"}}));
    const std::string odd = MakeScratchDir("odd-out");
    ASSERT_TRUE(ZipExtractAll(FilePath(sandbox + "/o.zip"), FolderPath(odd)));
    const auto tree = ReadTree(odd);
    EXPECT_EQ(tree.at("a/b/c.txt"), "c");
    EXPECT_EQ(tree.at("C:/x.txt"), "x");
    EXPECT_EQ(tree.at("..a/b.."), "dots");
}
