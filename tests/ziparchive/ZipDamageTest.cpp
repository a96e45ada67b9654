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

std::string DeflatedArchive()
{
    const std::string folder = MakeScratchDir("deflated");
    WriteFile(folder + "/src/a.txt", SampleBytes(40000, 11));
    WriteFile(folder + "/src/b/c.txt", SampleBytes(3000, 12));
    EXPECT_TRUE(ZipAddDirectory(FolderPath(folder + "/src"), FilePath(folder + "/d.zip")));
    return ReadFile(folder + "/d.zip");
}

}  // namespace

TEST(ZipDamage, NoEndRecordIs116AndTheHelperFails)
{
    EXPECT_EQ(CauseOfReadingAll(""), CZipException::cdirNotFound);
    EXPECT_EQ(CauseOfReadingAll(SampleBytes(100000, 5)), CZipException::cdirNotFound);

    const std::string folder = MakeScratchDir("noend");
    WriteFile(folder + "/plain.zip", "this is not an archive at all");
    const std::string target = MakeScratchDir("noend-out");
    EXPECT_FALSE(ZipExtractAll(FilePath(folder + "/plain.zip"), FolderPath(target)));
    EXPECT_FALSE(ZipExtractAll(FilePath(folder + "/absent.zip"), FolderPath(target)));
    EXPECT_TRUE(ReadTree(target).empty());
}

TEST(ZipDamage, DiskNumbersMustDescribeOneVolume)
{
    RawZip raw;
    raw.Add("a.txt", "a");
    EXPECT_EQ(CauseOfReadingAll(raw.Build(0, 0)), 0);
    EXPECT_EQ(CauseOfReadingAll(raw.Build(1, 0)), CZipException::badZipFile);
    // The last volume of a set whose earlier volumes are missing.
    EXPECT_EQ(CauseOfReadingAll(raw.Build(2, 2)), CZipException::cdirNotFound);
}

TEST(ZipDamage, WrongCrcIs102AndLeavesNoFileBehind)
{
    RawZip raw;
    raw.Add("good.txt", "good");
    RawEntry bad;
    bad.name = "bad.txt";
    bad.data = "bad data";
    bad.badCrc = true;
    raw.Add(bad);
    EXPECT_EQ(CauseOfReadingAll(raw.Build()), CZipException::badCrc);

    const std::string folder = MakeScratchDir("crc");
    WriteFile(folder + "/c.zip", raw.Build());
    const std::string target = MakeScratchDir("crc-out");
    EXPECT_FALSE(ZipExtractAll(FilePath(folder + "/c.zip"), FolderPath(target)));
    EXPECT_FALSE(Exists(target + "/bad.txt"));
    unsigned char* data = nullptr;
    size_t size = 0;
    EXPECT_FALSE(ZipExtractToBuffer(FilePath(folder + "/c.zip"), CAtlString(L"bad.txt"), data, size));
    EXPECT_EQ(data, nullptr);
}

// What an archive may make the disk take is bounded: no entry beyond its declared size, no two
// entries out of the same bytes, no archive whose declared sizes exceed the free space.
TEST(ZipDamage, BombsStopAtTheirDeclaredSizeAndNeverReachTheDisk)
{
    const std::string zeros(8 * 1024 * 1024, '\0');
    RawEntry liar;  // 8 MB of zeros that claims to be 100 kB
    liar.name = "liar.bin";
    liar.data = zeros;
    liar.deflate = true;
    liar.declaredSize = 100 * 1024;
    RawZip lying;
    lying.Add(liar);

    RawZip sharing;  // four entries, one stream: each honest about its size
    for (int index = 0; index < 4; ++index) {
        RawEntry entry;
        entry.name = "copy" + std::to_string(index) + ".bin";
        entry.data = zeros;
        entry.deflate = true;
        entry.sharesDataOf = index == 0 ? -1 : 0;
        sharing.Add(entry);
    }

    RawZip huge;  // a thousand entries of one byte that each claim almost 4 GB
    for (int index = 0; index < 1000; ++index) {
        RawEntry entry;
        entry.name = "big" + std::to_string(index);
        entry.data = "b";
        entry.declaredSize = 0xFFFFFFF0;
        huge.Add(entry);
    }

    struct Case {
        const char* name;
        std::string bytes;
        int cause;  // met when every entry is read into memory
        const char* reason;
    };
    const Case cases[] = {
        {"lying", lying.Build(), CZipException::badCrc, "Crc mismatched"},
        {"sharing", sharing.Build(), CZipException::badZipFile, "Damaged or not a zip file"},
        {"huge", huge.Build(), CZipException::badCrc, "No space left on device"},
    };
    for (const Case& one : cases) {
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
    CZipMemFile memory(cases[0].bytes.data(), cases[0].bytes.size());
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

TEST(ZipDamage, EveryTruncationFailsWithAKnownCode)
{
    const std::string whole = DeflatedArchive();
    ASSERT_EQ(CauseOfReadingAll(whole), 0);
    const std::set<int> expected = {CZipException::badZipFile, CZipException::badCrc, CZipException::cdirNotFound};
    for (size_t length = 0; length < whole.size(); length += 97) {
        // A copy of exactly `length` bytes, so a read past its end is one a sanitizer would see.
        const int cause = CauseOfReadingAll(whole.substr(0, length));
        EXPECT_TRUE(expected.count(cause)) << "length " << length << " cause " << cause;
    }
}

TEST(ZipDamage, FlippedBytesNeverCrashAndFailOnlyWithArchiveCodes)
{
    const std::string whole = DeflatedArchive();
    const std::set<int> allowed = {0,
                                   CZipException::badZipFile,
                                   CZipException::badCrc,
                                   CZipException::cdirNotFound,
                                   CZipException::badPassword,
                                   CZipException::needDict,
                                   CZipException::dataError};
    for (size_t at = 0; at < whole.size(); at += 13) {
        std::string damaged = whole;
        damaged[at] = char(damaged[at] ^ 0xA5);
        const int cause = CauseOfReadingAll(damaged);
        EXPECT_TRUE(allowed.count(cause)) << "offset " << at << " cause " << cause;
    }
    // Damage inside the compressed data of the first entry is caught on reading.
    std::string damaged = whole;
    for (size_t at = 200; at < 260; ++at)
        damaged[at] = char(damaged[at] ^ 0x3C);
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
        RawZip raw;
        raw.Add("before.txt", "fine");
        raw.Add(name, "pwned");
        WriteFile(sandbox + "/h.zip", raw.Build());
        EXPECT_FALSE(ZipExtractAll(FilePath(sandbox + "/h.zip"), FolderPath(target))) << name;
        const CAtlString wide(QString::fromUtf8(name.data(), qsizetype(name.size())));
        EXPECT_FALSE(ZipExtractFile(FilePath(sandbox + "/h.zip"), wide, FolderPath(target))) << name;
        EXPECT_FALSE(Exists(outside)) << name;
    }

    // Names with control characters (ESC, CR, the C1 CSI) are refused, not created.
    for (const std::string name : {"\x1b[2J.txt", "cr\r.txt", "c1\xC2\x9B.txt", "dir\x7F/x.txt"}) {
        RawZip raw;
        raw.Add(name, "shown raw");
        WriteFile(sandbox + "/h.zip", raw.Build());
        EXPECT_FALSE(ZipExtractAll(FilePath(sandbox + "/h.zip"), FolderPath(target))) << name;
        EXPECT_FALSE(Exists(target + "/" + name)) << name;
    }

    RawZip link;
    RawEntry entry;
    entry.name = "link";
    entry.data = "/etc/passwd";
    entry.externalAttr = 0120777u << 16;
    link.Add(entry);
    link.Add("link/written-through.txt", "pwned");
    WriteFile(sandbox + "/l.zip", link.Build());
    EXPECT_FALSE(ZipExtractAll(FilePath(sandbox + "/l.zip"), FolderPath(target)));
    struct stat info;
    EXPECT_NE(::lstat((target + "/link").c_str(), &info), 0);

    // Whatever was extracted stayed below the destination.
    for (const auto& [path, bytes] : ReadTree(sandbox))
        EXPECT_TRUE(path.rfind("dest/", 0) == 0 || path == "h.zip" || path == "l.zip" || path == "dest/") << path;
}

TEST(ZipDamage, HarmlessOddNamesStayInside)
{
    RawZip raw;
    raw.Add("./a//b/./c.txt", "c");
    raw.Add("C:\\x.txt", "x");
    raw.Add("..a/b..", "dots");
    const std::string folder = MakeScratchDir("odd");
    WriteFile(folder + "/o.zip", raw.Build());
    const std::string target = MakeScratchDir("odd-out");
    ASSERT_TRUE(ZipExtractAll(FilePath(folder + "/o.zip"), FolderPath(target)));
    const auto tree = ReadTree(target);
    EXPECT_EQ(tree.at("a/b/c.txt"), "c");
    EXPECT_EQ(tree.at("C:/x.txt"), "x");
    EXPECT_EQ(tree.at("..a/b.."), "dots");
}

TEST(ZipDamage, EncryptedAndUnknownMethodsAreRefused)
{
    RawZip raw;
    RawEntry secret;
    secret.name = "secret.txt";
    secret.data = "xxxxxxxxxxxx";
    secret.flags = 1;
    raw.Add(secret);
    EXPECT_EQ(CauseOfReadingAll(raw.Build()), CZipException::badPassword);

    RawZip other;
    RawEntry bzip;
    bzip.name = "b.txt";
    bzip.data = "BZh9";
    bzip.method = 12;
    other.Add(bzip);
    EXPECT_EQ(CauseOfReadingAll(other.Build()), CZipException::badZipFile);
}
