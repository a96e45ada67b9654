// The helpers the system uses, over archives this layer writes itself.
#include "ziparchive/CZipArchive.h"
#include "ziparchive/CZipMemFile.h"
#include "ziparchive/ZipPlatform.h"
#include "support/TestEnvironment.h"
#include "ziparchive/ZipHelpers.h"
#include "support/ZipTestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <utime.h>

using namespace curatool::test;
using namespace ziptest;

namespace {

time_t ModTime(const std::string& path)
{
    struct stat info;
    return ::stat(path.c_str(), &info) == 0 ? info.st_mtime : 0;
}

void SetModTime(const std::string& path, time_t when)
{
    struct utimbuf times = {when, when};
    ::utime(path.c_str(), &times);
}

}  // namespace

TEST(ZipHelpers, DirectoryRoundTripKeepsBytesFoldersAndTimes)
{
    // Nested and empty folders, non-ASCII names, a file larger than one transfer buffer, an empty file.
    const std::string source = MakeScratchDir("tree");
    WriteFile(source + "/imsmanifest.xml", "<manifest/>\n");
    WriteFile(source + "/pictures/big.bin", SampleBytes(300000, 1));
    WriteFile(source + "/pictures/deep/er/leaf.txt", SampleBytes(777, 2));
    WriteFile(source + "/Gr\xC3\xBC\xC3\x9F"
                       "e/\xE6\x97\xA5\xE6\x9C\xAC.txt",
              "unicode\n");
    WriteFile(source + "/empty.txt", "");
    std::filesystem::create_directories(source + "/nothing/inside");
    SetModTime(source + "/imsmanifest.xml", 1000000001);  // odd second: DOS time alone would lose it
    SetModTime(source + "/pictures/big.bin", 1500000000);
    const std::string archive = MakeScratchDir("arc") + "/tree.zip";
    ASSERT_TRUE(ZipAddDirectory(FolderPath(source), FilePath(archive)));

    const std::string target = MakeScratchDir("out");
    ASSERT_TRUE(ZipExtractAll(FilePath(archive), FolderPath(target)));
    EXPECT_EQ(ReadTree(source), ReadTree(target));
    EXPECT_EQ(ModTime(target + "/imsmanifest.xml"), 1000000001);
    EXPECT_EQ(ModTime(target + "/pictures/big.bin"), 1500000000);

    // Names are stored relative, with "/" and folders as entries of their own.
    CZipArchive zip;
    ASSERT_TRUE(zip.Open(archive, CZipArchive::zipOpenReadOnly));
    EXPECT_GE(zip.FindFile("pictures/deep/er/leaf.txt", true), 0);
    const int folder = zip.FindFile("nothing/inside/", true);
    ASSERT_GE(folder, 0);
    CZipFileHeader header;
    zip.GetFileInfo(header, folder);
    EXPECT_TRUE(header.IsDirectory());
    for (int i = 0; i < zip.GetCount(); ++i) {
        zip.GetFileInfo(header, i);
        EXPECT_NE(header.GetFileName()[0], '/') << header.GetFileName();
        EXPECT_EQ(header.GetFileName().find(source), std::string::npos);
    }
    zip.Close();
}

TEST(ZipHelpers, AddFileRelativeAndAddFileBuildOneArchive)
{
    const std::string folder = MakeScratchDir("add");
    WriteFile(folder + "/sub/first.xml", "first");
    WriteFile(folder + "/second.bin", SampleBytes(100000, 9));
    const std::string archive = folder + "/out.zip";

    ASSERT_TRUE(ZipAddFileRelative(FilePath(folder + "/sub/first.xml"), FilePath(archive)));
    ASSERT_TRUE(ZipAddFile(FilePath(archive), CAtlString(L"data\\second.bin"), FilePath(folder + "/second.bin")));

    const std::string target = MakeScratchDir("add-out");
    ASSERT_TRUE(ZipExtractAll(FilePath(archive), FolderPath(target)));
    const auto tree = ReadTree(target);
    ASSERT_EQ(tree.size(), 3u);  // first.xml, data/, data/second.bin
    EXPECT_EQ(tree.at("first.xml"), "first");
    EXPECT_EQ(tree.at("data/second.bin"), ReadFile(folder + "/second.bin"));

    // Adding to an archive that is not there does not make one.
    EXPECT_FALSE(ZipAddFile(FilePath(folder + "/missing.zip"), CAtlString(L"x"), FilePath(folder + "/second.bin")));
    EXPECT_FALSE(Exists(folder + "/missing.zip"));
    EXPECT_FALSE(ZipAddFileRelative(FilePath(folder + "/no-such-file"), FilePath(folder + "/o.zip")));
    EXPECT_FALSE(ZipAddDirectory(FolderPath(folder + "/no-such-folder"), FilePath(folder + "/p.zip")));
}

TEST(ZipHelpers, LookupIgnoresCaseAndSeparatorStyleAndSoundsComeOutFlattened)
{
    const std::string folder = MakeScratchDir("lookup");
    WriteFile(folder + "/a.zip", Archive({{.name = "Folder\\Sub\\I18N.xml", .data = "<catalogue/>"},
                                          {.name = "sounds/a.wav", .data = "A"},
                                          {.name = "sounds\\deeper\\b.wav", .data = "B"},
                                          {.name = "sounds/", .data = ""},
                                          {.name = "soundsextra/c.wav", .data = "C"},
                                          {.name = "pictures/sounds/d.wav", .data = "D"}}));
    const CZoltaFilePath archive = FilePath(folder + "/a.zip");

    unsigned char* data = reinterpret_cast<unsigned char*>(1);
    size_t size = 99;
    ASSERT_TRUE(ZipExtractToBuffer(archive, CAtlString(L"folder/sub/i18n.XML"), data, size));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(data), size), "<catalogue/>");
    std::free(data);
    ASSERT_TRUE(ZipExtractToMemory(archive, CAtlString(L"FOLDER\\SUB\\i18n.xml"), data, size));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(data), size), "<catalogue/>");
    std::free(data);
    EXPECT_FALSE(ZipExtractToBuffer(archive, CAtlString(L"missing.xml"), data, size));
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(size, 0u);
    EXPECT_FALSE(ZipExtractToMemory(archive, CAtlString(L"i18n.xml"), data, size));
    EXPECT_EQ(data, nullptr);

    // A backslash name extracts exactly like its slash twin, under its last component.
    const std::string target = MakeScratchDir("lookup-out");
    EXPECT_TRUE(ZipExtractFile(archive, CAtlString(L"folder/sub/i18n.xml"), FolderPath(target)));
    EXPECT_EQ(ReadFile(target + "/I18N.xml"), "<catalogue/>");
    EXPECT_FALSE(ZipExtractFile(archive, CAtlString(L"nothing.xml"), FolderPath(target)));
    const std::string all = MakeScratchDir("lookup-all");
    ASSERT_TRUE(ZipExtractAll(archive, FolderPath(all)));
    EXPECT_EQ(ReadFile(all + "/Folder/Sub/I18N.xml"), "<catalogue/>");

    const std::string sounds = MakeScratchDir("match-out");
    ASSERT_TRUE(ZipExtractMatching(archive, FolderPath(sounds)));
    EXPECT_EQ(ReadTree(sounds), (std::map<std::string, std::string>{{"a.wav", "A"}, {"b.wav", "B"}}));
}

TEST(ZipHelpers, ArchiveApiReadsInPiecesAndRefusesCallsOutOfOrder)
{
    const std::string folder = MakeScratchDir("api");
    const std::string content = SampleBytes(200000, 4);
    WriteFile(folder + "/in.bin", content);
    const std::string archive = folder + "/api.zip";

    std::vector<std::string> log;
    ZipPlatform::SetTraceSink([&log](const std::string& line) { log.push_back(line); });
    CZipArchive zip;
    EXPECT_FALSE(zip.OpenFile(0));
    ASSERT_TRUE(zip.Open(archive, CZipArchive::zipCreate));
    EXPECT_FALSE(zip.Open(archive, CZipArchive::zipCreate));
    CZipAddNewFileInfo info(folder + "/in.bin", std::string("in.bin"));
    info.m_nBufSize = 4096;
    ASSERT_TRUE(zip.AddNewFile(info));
    zip.Close();
    zip.Close();

    ASSERT_TRUE(zip.Open(archive, CZipArchive::zipOpenReadOnly));
    CZipAddNewFileInfo readOnly(folder + "/in.bin", std::string("again"));
    EXPECT_FALSE(zip.AddNewFile(readOnly));
    ASSERT_TRUE(zip.OpenFile(0));
    EXPECT_FALSE(zip.OpenFile(0));
    std::string back;
    char piece[1000];
    while (size_t got = zip.ReadFile(piece, sizeof piece))
        back.append(piece, got);
    EXPECT_EQ(back, content);
    EXPECT_EQ(zip.CloseFile(), 1);
    EXPECT_EQ(zip.ReadFile(piece, sizeof piece), 0u);
    EXPECT_TRUE(zip.TestFile(0));
    zip.Close();
    ZipPlatform::SetTraceSink(nullptr);

    auto logged = [&log](const char* text) {
        for (const std::string& line : log)
            if (line.find(text) != std::string::npos)
                return true;
        return false;
    };
    EXPECT_TRUE(logged(" : ZipArchive is closed.\n"));
    EXPECT_TRUE(logged(" : ZipArchive already opened.\n"));
    EXPECT_TRUE(logged(" : A file already opened.\n"));
    EXPECT_TRUE(logged(" : No opened file.\n"));
}

TEST(ZipHelpers, IncompressibleDataIsStoredAndStreamsGetDefaultNames)
{
    const std::string folder = MakeScratchDir("store");
    std::string noise(70000, '\0');
    uint32_t state = 7;
    for (char& c : noise) {
        state = state * 1664525u + 1013904223u;
        c = char(state >> 24);
    }
    WriteFile(folder + "/noise.bin", noise);
    const std::string archive = folder + "/s.zip";
    {
        CZipArchive zip;
        ASSERT_TRUE(zip.Open(archive, CZipArchive::zipCreate));
        CZipAddNewFileInfo file(folder + "/noise.bin", false);
        ASSERT_TRUE(zip.AddNewFile(file));
        CZipMemFile memory(noise.data(), 10);
        CZipAddNewFileInfo stream(&memory, std::string());
        ASSERT_TRUE(zip.AddNewFile(stream));
        zip.Close();
    }
    CZipArchive zip;
    ASSERT_TRUE(zip.Open(archive, CZipArchive::zipOpenReadOnly));
    CZipFileHeader header;
    ASSERT_TRUE(zip.GetFileInfo(header, 0));
    EXPECT_EQ(header.GetFileName(), "noise.bin");
    EXPECT_EQ(header.m_uMethod, CZipFileHeader::methodStored);
    EXPECT_EQ(header.GetEffComprSize(), noise.size());
    ASSERT_TRUE(zip.GetFileInfo(header, 1));
    EXPECT_EQ(header.GetFileName(), "file1");
    CZipMemFile out;
    ASSERT_TRUE(zip.ExtractFile(0, out));
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(out.GetData()), size_t(out.GetLength())), noise);
    zip.Close();
}

TEST(ZipHelpers, EntryCountStopsAtTheFormatLimit)
{
    const std::string archive = MakeScratchDir("limit") + "/many.zip";
    CZipArchive zip;
    ASSERT_TRUE(zip.Open(archive, CZipArchive::zipCreate));
    bool refused = false;
    for (int i = 0; i <= 0xFFFF && !refused; ++i) {
        CZipMemFile empty;
        CZipAddNewFileInfo info(&empty, "e" + std::to_string(i));
        info.m_iComprLevel = 0;
        refused = !zip.AddNewFile(info);
        if (refused) {
            EXPECT_EQ(i, 0xFFFF);
        }
    }
    EXPECT_TRUE(refused);
    zip.Close();
    ASSERT_TRUE(zip.Open(archive, CZipArchive::zipOpenReadOnly));
    EXPECT_EQ(zip.GetCount(), 0xFFFF);
    zip.Close();
}
