// Archives of the common tools extract correctly here, and archives made here pass those tools.
#include "ziparchive/CZipArchive.h"
#include "support/TestEnvironment.h"
#include "ziparchive/ZipHelpers.h"
#include "support/ZipTestSupport.h"

#include <gtest/gtest.h>

using namespace curatool::test;
using namespace ziptest;

namespace {

// Files only, in nested folders; folder entries are checked where a tool is asked for them.
std::string MakeInteropTree(const std::string& name)
{
    const std::string root = MakeScratchDir(name) + "/content";
    WriteFile(root + "/imsmanifest.xml", "<manifest identifier=\"x\"/>\n");
    WriteFile(root + "/pictures/large.bin", SampleBytes(400000, 21));
    WriteFile(root + "/pictures/small/tiny.txt", "t");
    WriteFile(root + "/sounds/ding.wav", SampleBytes(70000, 22));
    WriteFile(root + "/empty.dat", "");
    return root;
}

std::map<std::string, std::string> FilesOnly(std::map<std::string, std::string> tree)
{
    std::erase_if(tree, [](const auto& item) { return item.first.back() == '/'; });
    return tree;
}

struct Producer {
    const char* label;
    const char* tool;
    // Runs in the folder that holds "content"; writes "out.zip".
    const char* command;
    bool folderEntries;
};

// Stored entries written to a stream that cannot seek, so each carries a data descriptor.
const char* kPythonWriter = R"PY(
import io, os, zipfile
class Unseekable(io.RawIOBase):
    def __init__(self, f): self.f = f
    def writable(self): return True
    def write(self, b): return self.f.write(b)
with open('out.zip', 'wb') as raw, zipfile.ZipFile(Unseekable(raw), 'w', zipfile.ZIP_STORED) as z:
    for folder, dirs, files in sorted(os.walk('content')):
        z.write(folder, os.path.relpath(folder, 'content'))
        for name in sorted(files):
            path = os.path.join(folder, name)
            z.write(path, os.path.relpath(path, 'content'))
)PY";

// One of each shape: deflated and stored, without folder entries, with data descriptors.
const Producer kProducers[] = {
    {"InfoZipDeflated", "zip", "cd content && zip -q -r ../out.zip .", true},
    {"InfoZipNoFolders", "zip", "cd content && zip -q -r -D ../out.zip .", false},
    {"InfoZipPipeDescriptors", "zip", "cd content && zip -q -r - . | cat > ../out.zip", true},
    {"BsdtarStored", "bsdtar", "cd content && bsdtar --format zip --options zip:compression=store -cf ../out.zip *",
     true},
    {"BsdtarPipeDescriptors", "bsdtar", "cd content && bsdtar --format zip -cf - * | cat > ../out.zip", true},
    {"SevenZipDeflated", "7z", "cd content && 7z a -tzip ../out.zip . >/dev/null", true},
    {"PythonStoredDescriptors", "python3", "python3 writer.py", true},
};

class ForeignArchive : public testing::TestWithParam<Producer> {};

}  // namespace

TEST_P(ForeignArchive, ExtractsToTheSameBytes)
{
    const Producer& producer = GetParam();
    if (!HasTool(producer.tool))
        GTEST_SKIP() << producer.tool << " is not installed";
    const std::string source = MakeInteropTree(producer.label);
    const std::string work = std::filesystem::path(source).parent_path().string();
    WriteFile(work + "/writer.py", kPythonWriter);
    ASSERT_EQ(RunShell("cd " + Quote(work) + " && " + producer.command), 0) << producer.command;

    const std::string target = MakeScratchDir(std::string(producer.label) + "-out");
    ASSERT_TRUE(ZipExtractAll(FilePath(work + "/out.zip"), FolderPath(target)));
    EXPECT_EQ(FilesOnly(ReadTree(target)), FilesOnly(ReadTree(source)));
    if (producer.folderEntries) {
        EXPECT_TRUE(std::filesystem::is_directory(target + "/pictures/small"));
    }

    // Lookups by name work on the foreign table of contents too.
    unsigned char* data = nullptr;
    size_t size = 0;
    ASSERT_TRUE(ZipExtractToBuffer(FilePath(work + "/out.zip"), CAtlString(L"IMSMANIFEST.XML"), data, size));
    EXPECT_EQ(std::string(reinterpret_cast<char*>(data), size), ReadFile(source + "/imsmanifest.xml"));
    std::free(data);
}

INSTANTIATE_TEST_SUITE_P(Tools, ForeignArchive, testing::ValuesIn(kProducers),
                         [](const testing::TestParamInfo<Producer>& param) { return param.param.label; });

TEST(OwnArchive, PassesTestsOfOtherToolsAndExtractsIdentically)
{
    const std::string source = MakeInteropTree("own");
    const std::string work = std::filesystem::path(source).parent_path().string();
    const std::string archive = work + "/own.zip";
    ASSERT_TRUE(ZipAddDirectory(FolderPath(source), FilePath(archive)));
    // One more entry through the read-write road, which rewrites the central directory.
    ASSERT_TRUE(ZipAddFile(FilePath(archive), CAtlString(L"extra\\added.txt"), FilePath(source + "/imsmanifest.xml")));
    std::map<std::string, std::string> expected = FilesOnly(ReadTree(source));
    expected["extra/added.txt"] = ReadFile(source + "/imsmanifest.xml");

    struct Extractor {
        const char* tool;
        std::string test;
        std::string extract;
    };
    const std::vector<Extractor> extractors = {
        {"unzip", "unzip -tq " + Quote(archive), "unzip -q -o " + Quote(archive) + " -d "},
        {"bsdtar", "bsdtar -tf " + Quote(archive), "bsdtar -xf " + Quote(archive) + " -C "},
        {"7z", "7z t " + Quote(archive), "7z x -y " + Quote(archive) + " -o"},
        {"python3", "python3 -m zipfile -t " + Quote(archive), "python3 -m zipfile -e " + Quote(archive) + " "},
    };
    int ran = 0;
    for (const Extractor& extractor : extractors) {
        if (!HasTool(extractor.tool))
            continue;
        ++ran;
        EXPECT_EQ(RunShell(extractor.test), 0) << extractor.test;
        const std::string target = MakeScratchDir(std::string("own-") + extractor.tool);
        ASSERT_EQ(RunShell(extractor.extract + Quote(target)), 0) << extractor.extract;
        EXPECT_EQ(FilesOnly(ReadTree(target)), expected) << extractor.tool;
    }
    if (ran == 0)
        GTEST_SKIP() << "no other archive tool is installed";
}

TEST(OwnArchive, Utf8NamesReadBackInPython)
{
    if (!HasTool("python3"))
        GTEST_SKIP() << "python3 is not installed";
    const std::string folder = MakeScratchDir("utf8");
    WriteFile(folder + "/src/Gr\xC3\xBC\xC3\x9F"
                       "e/\xE6\x97\xA5.txt",
              "x");
    ASSERT_TRUE(ZipAddDirectory(FolderPath(folder + "/src"), FilePath(folder + "/u.zip")));
    EXPECT_EQ(RunShell("cd " + Quote(folder) +
                       " && python3 -c \"import zipfile; assert 'Gr\\u00fc\\u00dfe/\\u65e5.txt' in "
                       "zipfile.ZipFile('u.zip').namelist()\""),
              0);
}
