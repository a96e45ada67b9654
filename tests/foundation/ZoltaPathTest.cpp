#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/CZoltaFilePath.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <algorithm>
#include <set>
#include <cstdlib>
#include <dirent.h>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using curatool::test::Exists;
using curatool::test::MakeScratchDir;
using curatool::test::ReadFile;
using curatool::test::U;
using curatool::test::W;
using curatool::test::WriteFile;

template <typename Path>
std::vector<std::string> Paths(const std::vector<Path>& paths)
{
    std::vector<std::string> texts;
    for (const Path& path : paths)
        texts.push_back(U(path.GetPath()));
    return texts;
}

// True when `text` is `head`, then one or more digits, then `tail`.
bool IsNumbered(const std::string& text, const std::string& head, const std::string& tail)
{
    if (text.size() <= head.size() + tail.size() || text.compare(0, head.size(), head) != 0 ||
        text.compare(text.size() - tail.size(), tail.size(), tail) != 0)
        return false;
    const std::string number = text.substr(head.size(), text.size() - head.size() - tail.size());
    return number.find_first_not_of("0123456789") == std::string::npos;
}

std::vector<std::string> Sorted(std::vector<std::string> values)
{
    std::sort(values.begin(), values.end());
    return values;
}

// ---- text of paths --------------------------------------------------------------------------

TEST(ZoltaFilePathText, ExtensionIsTheLastDottedPartOfTheName)
{
    EXPECT_EQ(".gz", U(CZoltaFilePath(W("a.tar.gz")).GetExtension()));
    EXPECT_EQ("", U(CZoltaFilePath(W("a")).GetExtension()));
    EXPECT_EQ(".x", U(CZoltaFilePath(W(".x")).GetExtension()));
    // A dot in a folder name is not the file's extension.
    EXPECT_EQ("", U(CZoltaFilePath(W("/srv/pkg.d/README")).GetExtension()));
    EXPECT_EQ(".XML", U(CZoltaFilePath(W("/srv/IMSMANIFEST.XML")).GetExtension()));
}

TEST(ZoltaFilePathText, NameAndFolderSplitAtTheLastSeparator)
{
    const CZoltaFilePath path(W("/srv/galleries/pkg/item.gallery"));
    EXPECT_EQ("item.gallery", U(path.GetName()));
    EXPECT_EQ("/srv/galleries/pkg", U(path.GetFolder().GetPath()));
    EXPECT_EQ("/", U(CZoltaFilePath(W("/top.txt")).GetFolder().GetPath()));
    EXPECT_TRUE(CZoltaFilePath(W("bare.txt")).GetFolder().IsEmpty());
    EXPECT_TRUE(CZoltaFilePath().GetFolder().IsEmpty());
    EXPECT_EQ("bare.txt", U(CZoltaFilePath(W("bare.txt")).GetName()));
}

TEST(ZoltaDirectoryPathText, EqualityIgnoresOneTrailingSeparatorOnly)
{
    EXPECT_EQ(CZoltaDirectoryPath(W("/a/b")), CZoltaDirectoryPath(W("/a/b/")));
    EXPECT_NE(CZoltaDirectoryPath(W("/a/b")), CZoltaDirectoryPath(W("/a/B")));
    EXPECT_NE(CZoltaDirectoryPath(W("/a/b")), CZoltaDirectoryPath(W("/a/b/c")));
    EXPECT_EQ(CZoltaDirectoryPath(W("/")), CZoltaDirectoryPath(W("/")));
}

TEST(ZoltaDirectoryPathText, AppendAddsOneSeparatorAndGetFileFormatsLiterally)
{
    CZoltaDirectoryPath folder(W("/srv"));
    folder.Append(W("x"));
    EXPECT_EQ("/srv/x", U(folder.GetPath()));
    CZoltaDirectoryPath slashed(W("/srv/"));
    slashed.Append(W("x"));
    EXPECT_EQ("/srv/x", U(slashed.GetPath()));

    EXPECT_EQ("/srv/x/f.txt", U(folder.GetFile(W("f.txt")).GetPath()));
    EXPECT_EQ("/srv//f.txt", U(CZoltaDirectoryPath(W("/srv/")).GetFile(W("f.txt")).GetPath()));
    EXPECT_EQ("x", U(folder.GetName()));
    EXPECT_EQ("x", U(CZoltaDirectoryPath(W("/srv/x/")).GetName()));
}

TEST(ZoltaFilePathText, SanitizeDropsOnlyTheForbiddenCharacters)
{
    EXPECT_EQ("abc", U(SanitizeFileName(W("a<b>:c?"))));
    EXPECT_EQ("", U(SanitizeFileName(W("<>:\"/\\|?*"))));
    EXPECT_EQ("Grüße – été.txt", U(SanitizeFileName(W("Grü/ße – é\\té.txt"))));
    EXPECT_EQ("AB", U(SanitizeFileName(W("A/B"))));
}

TEST(ZoltaFilePathText, SameFileComparesCleanedAbsolutePaths)
{
    EXPECT_TRUE(CZoltaFilePath(W("/a/b/../c.txt")).IsSameFile(CZoltaFilePath(W("/a//c.txt"))));
    EXPECT_FALSE(CZoltaFilePath(W("/a/c.txt")).IsSameFile(CZoltaFilePath(W("/a/C.txt"))));
    const std::string cwd = QDir::currentPath().toStdString();
    EXPECT_TRUE(CZoltaFilePath(W("rel/x.txt")).IsSameFile(CZoltaFilePath(W(cwd + "/rel/./x.txt"))));
}

// ---- the disk -------------------------------------------------------------------------------

TEST(ZoltaPathDisk, CreateMakesParentsRefusesAFileInTheWayAndKindsAreToldApart)
{
    const std::string root = MakeScratchDir("create");
    const CZoltaDirectoryPath nested(W(root + "/a/b/c"));
    EXPECT_FALSE(nested.Exists());
    EXPECT_TRUE(nested.Create());
    EXPECT_TRUE(nested.Exists());
    EXPECT_TRUE(nested.Create());  // already there

    ASSERT_TRUE(WriteFile(root + "/blocker", "x"));
    EXPECT_FALSE(CZoltaDirectoryPath(W(root + "/blocker")).Create());
    EXPECT_FALSE(CZoltaDirectoryPath(W(root + "/blocker/below")).Create());
    EXPECT_FALSE(CZoltaDirectoryPath().Create());

    // File and folder tests tell the kinds apart.
    ASSERT_TRUE(WriteFile(root + "/file.txt", "abc"));
    const CZoltaFilePath file(W(root + "/file.txt"));
    const CZoltaFilePath folderAsFile(W(root));
    EXPECT_TRUE(file.Exists());
    EXPECT_FALSE(file.IsFolder());
    EXPECT_FALSE(folderAsFile.Exists());
    EXPECT_TRUE(folderAsFile.IsFolder());
    EXPECT_FALSE(CZoltaDirectoryPath(W(root + "/file.txt")).Exists());
    EXPECT_EQ(3, GetFileSize(file));
    EXPECT_EQ(-1, GetFileSize(CZoltaFilePath(W(root + "/missing"))));
    EXPECT_TRUE(file.Remove());
    EXPECT_FALSE(file.Remove());
    EXPECT_FALSE(Exists(root + "/file.txt"));
}

TEST(ZoltaPathDisk, CopyToReplacesOrRefusesAndNeverTruncatesItself)
{
    const std::string root = MakeScratchDir("copy");
    std::string payload(200000, '\0');
    for (size_t i = 0; i < payload.size(); ++i)
        payload[i] = char(i * 7 + 3);
    ASSERT_TRUE(WriteFile(root + "/src.bin", payload));
    ASSERT_TRUE(WriteFile(root + "/dst.bin", "old"));
    const CZoltaFilePath source(W(root + "/src.bin"));
    const CZoltaFilePath target(W(root + "/dst.bin"));

    EXPECT_FALSE(source.CopyTo(target, true));
    EXPECT_EQ("old", ReadFile(root + "/dst.bin"));
    EXPECT_TRUE(source.CopyTo(target, false));
    EXPECT_EQ(payload, ReadFile(root + "/dst.bin"));

    EXPECT_TRUE(source.CopyTo(CZoltaFilePath(W(root + "/./src.bin"))));
    EXPECT_EQ(payload, ReadFile(root + "/src.bin"));

    EXPECT_FALSE(CZoltaFilePath(W(root + "/missing")).CopyTo(target));
    EXPECT_FALSE(source.CopyTo(CZoltaFilePath(W(root + "/no/such/folder/x"))));
    EXPECT_FALSE(CZoltaFilePath(W(root)).CopyTo(CZoltaFilePath(W(root + "/folder-copy"))));
    EXPECT_FALSE(Exists(root + "/folder-copy"));
}

TEST(ZoltaPathDisk, NonAsciiNamesRoundTripThroughTheFileSystem)
{
    const std::string root = MakeScratchDir("unicode");
    const std::string folderName = "Grüße 日本";
    const std::string fileName = "naïve €–ß.txt";
    CZoltaDirectoryPath folder(W(root));
    folder.Append(W(folderName));
    ASSERT_TRUE(folder.Create());
    EXPECT_TRUE(Exists(root + "/" + folderName));  // the bytes on disk are the UTF-8 of the name

    const CZoltaFilePath file = folder.GetFile(W(fileName));
    FILE* out = OpenFile(file, "wb");
    ASSERT_NE(nullptr, out);
    fputs("content", out);
    fclose(out);
    EXPECT_EQ("content", ReadFile(root + "/" + folderName + "/" + fileName));
    // 8-bit text given to the path classes is UTF-8.
    EXPECT_EQ(U(file.GetPath()), U(CZoltaFilePath((root + "/" + folderName + "/" + fileName).c_str()).GetPath()));

    std::vector<CZoltaFilePath> listed;
    folder.ListFiles(W("*.txt"), listed);
    EXPECT_EQ(std::vector<std::string>{U(file.GetPath())}, Paths(listed));
    std::vector<CZoltaDirectoryPath> folders;
    CZoltaDirectoryPath(W(root)).ListFolders(W("Grüße*"), folders);
    EXPECT_EQ(std::vector<std::string>{U(folder.GetPath())}, Paths(folders));

    EXPECT_TRUE(file.CopyTo(folder.GetFile(W("kopie – ü.txt"))));
    EXPECT_EQ("content", ReadFile(root + "/" + folderName + "/kopie – ü.txt"));
    EXPECT_TRUE(folder.Remove());
    EXPECT_FALSE(Exists(root + "/" + folderName));
}

// ---- listing --------------------------------------------------------------------------------

std::vector<std::string> ReaddirOrder(const std::string& folder)
{
    std::vector<std::string> names;
    DIR* directory = opendir(folder.c_str());
    while (const dirent* entry = readdir(directory))
        names.push_back(entry->d_name);
    closedir(directory);
    return names;
}

TEST(ZoltaPathListing, PatternRespectsCaseAndHiddenNamesAreSkipped)
{
    const std::string root = MakeScratchDir("listing");
    for (const char* name :
         {"IMSMANIFEST.XML", "imsmanifest.xml", "imsmanifest_temp.xml", ".imsmanifest.xml", "notes.txt"})
        ASSERT_TRUE(WriteFile(root + "/" + name, "x"));
    ASSERT_TRUE(QDir().mkpath(QString::fromStdString(root + "/imsmanifest-folder.xml")));

    std::vector<CZoltaFilePath> files;
    CZoltaDirectoryPath(W(root)).ListFiles(W("imsmanifest*.xml"), files);
    EXPECT_EQ(Sorted({root + "/imsmanifest.xml", root + "/imsmanifest_temp.xml"}), Sorted(Paths(files)));

    std::vector<CZoltaDirectoryPath> folders;
    CZoltaDirectoryPath(W(root)).ListFolders(W("*"), folders);
    EXPECT_EQ(std::vector<std::string>{root + "/imsmanifest-folder.xml"}, Paths(folders));

    // A missing folder, an unmatched pattern and a file taken for a folder add nothing.
    std::vector<CZoltaFilePath> none;
    CZoltaDirectoryPath(W(root + "/absent")).ListFiles(W("*"), none);
    CZoltaDirectoryPath(W(root)).ListFiles(W("*.TXT"), none);
    CZoltaDirectoryPath(W(root + "/notes.txt")).ListFiles(W("*"), none);
    EXPECT_TRUE(none.empty());
}

TEST(ZoltaPathListing, ResultsFollowReaddirAndAppendToWhatIsThere)
{
    const std::string root = MakeScratchDir("order");
    for (int i = 0; i < 40; ++i)
        ASSERT_TRUE(WriteFile(root + "/f" + std::to_string(i * 37 % 41) + ".dat", "x"));

    std::vector<std::string> expected = {"sentinel"};
    for (const std::string& name : ReaddirOrder(root))
        if (name[0] != '.')
            expected.push_back(root + "/" + name);

    std::vector<CZoltaFilePath> files{CZoltaFilePath(W("sentinel"))};
    CZoltaDirectoryPath(W(root + "/")).ListFiles(W("*"), files);  // a trailing "/" is not doubled
    EXPECT_EQ(expected, Paths(files));
}

TEST(ZoltaPathListing, RecursiveListingFindsEveryVisibleFileAndSurvivesLinkLoops)
{
    const std::string root = MakeScratchDir("recursive");
    for (const char* name :
         {"top.txt", "a/one.txt", "a/b/two.txt", "a/b/c/three.bin", ".hidden/secret.txt", "a/.dot.txt"})
        ASSERT_TRUE(WriteFile(root + "/" + name, "x"));
    ASSERT_EQ(0, symlink("..", (root + "/a/b/up").c_str()));

    std::vector<CZoltaFilePath> files;
    CZoltaDirectoryPath(W(root)).ListRecursive(files);
    const auto paths = Sorted(Paths(files));
    for (const char* name : {"/top.txt", "/a/one.txt", "/a/b/two.txt", "/a/b/c/three.bin"})
        EXPECT_EQ(1, std::count(paths.begin(), paths.end(), root + name)) << name;
    for (const std::string& path : paths)
        EXPECT_EQ(std::string::npos, path.find("/.")) << path;
}

// ---- deleting -------------------------------------------------------------------------------

TEST(ZoltaPathDeleting, EmptyClearsVisibleContentKeepsHiddenEntriesAndGoesOnPastWhatStays)
{
    const std::string root = MakeScratchDir("empty");
    for (const char* name : {"f.txt", "sub/g.txt", "sub/deeper/h.txt", ".keep", "a/.pinned", "a/x.txt"})
        ASSERT_TRUE(WriteFile(root + "/" + name, "x"));
    const CZoltaDirectoryPath folder(W(root));
    EXPECT_FALSE(folder.Empty());  // "a" keeps its hidden file, so it stays
    EXPECT_TRUE(folder.Exists());
    for (const char* gone : {"/f.txt", "/sub", "/a/x.txt"})
        EXPECT_FALSE(Exists(root + gone)) << gone;
    EXPECT_TRUE(Exists(root + "/.keep"));
    EXPECT_TRUE(Exists(root + "/a/.pinned"));

    ASSERT_TRUE(std::filesystem::remove(root + "/a/.pinned"));
    EXPECT_TRUE(folder.Empty());
    EXPECT_FALSE(Exists(root + "/a"));
}

TEST(ZoltaPathDeleting, LinksAreRemovedWithoutTouchingTheirTargetsAndRemoveTakesAll)
{
    const std::string root = MakeScratchDir("links");
    const std::string outside = MakeScratchDir("outside");
    ASSERT_TRUE(WriteFile(outside + "/precious.txt", "keep"));
    ASSERT_TRUE(WriteFile(root + "/inner/file.txt", "x"));
    ASSERT_EQ(0, symlink(outside.c_str(), (root + "/link-to-folder").c_str()));
    ASSERT_EQ(0, symlink((outside + "/precious.txt").c_str(), (root + "/inner/link-to-file").c_str()));

    EXPECT_TRUE(CZoltaDirectoryPath(W(root)).Empty());
    EXPECT_FALSE(Exists(root + "/link-to-folder"));
    EXPECT_EQ("keep", ReadFile(outside + "/precious.txt"));

    // Remove takes hidden content along, and fails when there is nothing to remove.
    ASSERT_EQ(0, symlink(outside.c_str(), (root + "/again").c_str()));
    ASSERT_TRUE(WriteFile(root + "/.hidden/x", "x"));
    EXPECT_TRUE(CZoltaDirectoryPath(W(root)).Remove());
    EXPECT_FALSE(Exists(root));
    EXPECT_EQ("keep", ReadFile(outside + "/precious.txt"));
    EXPECT_FALSE(CZoltaDirectoryPath(W(root)).Remove());
}

// ---- unique and temporary names -------------------------------------------------------------

TEST(ZoltaPathUniqueNames, ThePlainNameUntilItIsTakenThenANumber)
{
    const std::string root = MakeScratchDir("unique");
    const CZoltaDirectoryPath folder(W(root));
    const CZoltaDirectoryPath child = folder.GetUniqueChild(W("gallery"));
    const CZoltaFilePath file = folder.GetUniqueFile(W("test"), W(".tmp"));
    EXPECT_EQ(root + "/gallery", U(child.GetPath()));
    EXPECT_EQ(root + "/test.tmp", U(file.GetPath()));
    EXPECT_FALSE(child.Exists());  // only names
    EXPECT_FALSE(file.Exists());
    ASSERT_TRUE(child.Create());
    ASSERT_TRUE(WriteFile(root + "/test.tmp", ""));

    const std::string nextChild = U(folder.GetUniqueChild(W("gallery")).GetPath());
    EXPECT_TRUE(IsNumbered(nextChild, root + "/gallery", "")) << nextChild;
    EXPECT_FALSE(Exists(nextChild));
    const std::string nextFile = U(folder.GetUniqueFile(W("test"), W(".tmp")).GetPath());
    EXPECT_TRUE(IsNumbered(nextFile, root + "/test(", ").tmp")) << nextFile;
}

class ZoltaTempFolders : public testing::Test {
protected:
    void SetUp() override { savedTmpdir = std::getenv("TMPDIR"); }
    void TearDown() override
    {
        setenv("TMPDIR", savedTmpdir.c_str(), 1);
        SetTempFolderOverride(CZoltaDirectoryPath());
    }
    std::string savedTmpdir;
};

TEST_F(ZoltaTempFolders, FoldersAreBuiltBelowTmpdir)
{
    const std::string tmp = MakeScratchDir("tmpdir");
    setenv("TMPDIR", (tmp + "/").c_str(), 1);
    EXPECT_EQ(tmp, U(GetTempFolder().GetPath()));
    EXPECT_EQ(tmp + "/ZOLTA Technologies", U(GetCompanyTempFolder().GetPath()));
    EXPECT_EQ(tmp + "/ZOLTA Scrivent", U(GetApplicationTempFolder().GetPath()));
    EXPECT_EQ(tmp + "/ZOLTA Technologies/CuratoolId/TempFiles", U(GetTempFilesFolder(W("CuratoolId")).GetPath()));
}

TEST_F(ZoltaTempFolders, WithoutTmpdirTheFolderIsTheUsersOwn)
{
    unsetenv("TMPDIR");
    unsetenv("XDG_CACHE_HOME");
    const CZoltaDirectoryPath folder = GetTempFolder();
    const std::string home = std::getenv("HOME");
    EXPECT_EQ(home + "/", U(folder.GetPath()).substr(0, home.size() + 1));
    EXPECT_TRUE(folder.Exists());
    EXPECT_EQ(0, access(U(folder.GetPath()).c_str(), W_OK));
}

TEST_F(ZoltaTempFolders, AnOverlongTmpdirIsCutLikeTheOldFixedBuffer)
{
    const std::string tmp = MakeScratchDir("long");
    const std::string longPath = tmp + "/" + std::string(300, 'd');
    setenv("TMPDIR", longPath.c_str(), 1);
    EXPECT_EQ(longPath.substr(0, 259), U(GetTempFolder().GetPath()));
}

TEST_F(ZoltaTempFolders, TheOverrideFolderTakesThePlaceOfTheSystemOne)
{
    const std::string chosen = MakeScratchDir("override") + "/not-yet-there";
    SetTempFolderOverride(CZoltaDirectoryPath(W(chosen)));
    const CZoltaFilePath file = MakeTempFile(W(".bin"), W("x"));
    EXPECT_EQ(chosen, U(file.GetFolder().GetPath()));
    EXPECT_TRUE(Exists(chosen));
    SetTempFolderOverride(CZoltaDirectoryPath());
    EXPECT_NE(chosen, U(MakeTempFile(W(".bin"), W("x")).GetFolder().GetPath()));
}

TEST_F(ZoltaTempFolders, TempFileNamesAreNumberedAndTakenNamesAreNeverHandedOut)
{
    const std::string tmp = MakeScratchDir("tempfiles");
    setenv("TMPDIR", tmp.c_str(), 1);
    std::set<std::string> seen;
    for (int i = 0; i < 50; ++i) {
        const CZoltaFilePath name = i % 2 ? MakeTempFile(W(".xml")) : MakeTempFile(W(".xml"), W("  "));
        EXPECT_EQ(tmp, U(name.GetFolder().GetPath()));
        EXPECT_TRUE(IsNumbered(U(name.GetName()), "SCVTemp(", ").xml")) << U(name.GetName());
        ASSERT_FALSE(name.Exists());
        ASSERT_TRUE(WriteFile(U(name.GetPath()), "")) << U(name.GetPath());
        seen.insert(U(name.GetPath()));
    }
    EXPECT_EQ(50u, seen.size());
    const CZoltaFilePath raw = MakeTempFile(W(".rawstream"), W("raw"));
    EXPECT_TRUE(IsNumbered(U(raw.GetName()), "raw(", ").rawstream")) << U(raw.GetName());
}

}  // namespace
