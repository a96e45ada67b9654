#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/CZoltaFilePath.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"

#include <gtest/gtest.h>

#include <QDir>

#include <algorithm>
#include <cstdlib>
#include <dirent.h>
#include <filesystem>
#include <set>
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
    std::sort(texts.begin(), texts.end());
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

TEST(ZoltaPathText, ExtensionNameAndFolder)
{
    struct Case {
        const char* path;
        const char* extension;
        const char* name;
        const char* folder;
    };
    // A dot in a folder name is not the file's extension.
    for (const Case c :
         {Case{"a.tar.gz", ".gz", "a.tar.gz", ""}, Case{".x", ".x", ".x", ""},
          Case{"/srv/pkg.d/README", "", "README", "/srv/pkg.d"},
          Case{"/srv/IMSMANIFEST.XML", ".XML", "IMSMANIFEST.XML", "/srv"}, Case{"/top.txt", ".txt", "top.txt", "/"}})
    {
        SCOPED_TRACE(c.path);
        const CZoltaFilePath path(W(c.path));
        EXPECT_EQ(c.extension, U(path.GetExtension()));
        EXPECT_EQ(c.name, U(path.GetName()));
        EXPECT_EQ(c.folder, U(path.GetFolder().GetPath()));
    }
}

TEST(ZoltaPathText, FolderEqualityAppendSanitizeAndSameFile)
{
    EXPECT_EQ(CZoltaDirectoryPath(W("/a/b")), CZoltaDirectoryPath(W("/a/b/")));
    EXPECT_NE(CZoltaDirectoryPath(W("/a/b")), CZoltaDirectoryPath(W("/a/B")));
    CZoltaDirectoryPath slashed(W("/srv/"));
    EXPECT_EQ("/srv//f.txt", U(slashed.GetFile(W("f.txt")).GetPath()));  // formatted literally
    slashed.Append(W("x"));
    EXPECT_EQ("/srv/x", U(slashed.GetPath()));
    EXPECT_EQ("x", U(CZoltaDirectoryPath(W("/srv/x/")).GetName()));

    EXPECT_EQ("abc", U(SanitizeFileName(W("a<b>:c?"))));
    EXPECT_EQ("", U(SanitizeFileName(W("<>:\"/\\|?*"))));
    EXPECT_EQ("Grüße – été.txt", U(SanitizeFileName(W("Grü/ße – é\\té.txt"))));

    EXPECT_TRUE(CZoltaFilePath(W("/a/b/../c.txt")).IsSameFile(CZoltaFilePath(W("/a//c.txt"))));
    EXPECT_FALSE(CZoltaFilePath(W("/a/c.txt")).IsSameFile(CZoltaFilePath(W("/a/C.txt"))));
    const std::string cwd = QDir::currentPath().toStdString();
    EXPECT_TRUE(CZoltaFilePath(W("rel/x.txt")).IsSameFile(CZoltaFilePath(W(cwd + "/rel/./x.txt"))));
}

TEST(ZoltaPathText, FileSystemBytesAreTheUtf8OfTheNameAsQtWouldEncodeIt)
{
    // One to four bytes a code point; a lone surrogate or a value beyond Unicode as Qt replaces it.
    for (const std::wstring& name : {std::wstring(L"/plain/a.png"), std::wstring(L"/Grüße/日本/\U0001F600.png"),
                                     std::wstring(L"/\u07FF\u0800\uFFFF\U00010000\U0010FFFF"),
                                     std::wstring{L'/', wchar_t(0xD800), L'x'}, std::wstring{wchar_t(0x110000)}})
    {
        const CAtlString path(name.c_str());
        EXPECT_EQ(path.ToQString().toUtf8(), ToFileSystemEncoding(path));
    }
}

TEST(ZoltaPathDisk, CreateMakesParentsKindsAreToldApartAndNamesAreUtf8OnDisk)
{
    const std::string root = MakeScratchDir("create");
    const CZoltaDirectoryPath nested(W(root + "/a/Grüße 日本/c"));
    EXPECT_TRUE(nested.Create());
    EXPECT_TRUE(Exists(root + "/a/Grüße 日本/c"));  // the bytes on disk are the UTF-8 of the name
    EXPECT_TRUE(nested.Create());                   // already there
    ASSERT_TRUE(WriteFile(root + "/naïve €.txt", "abc"));
    EXPECT_FALSE(CZoltaDirectoryPath(W(root + "/naïve €.txt/below")).Create());

    // 8-bit text given to the path classes is UTF-8.
    const CZoltaFilePath file((root + "/naïve €.txt").c_str());
    EXPECT_TRUE(file.Exists() && !file.IsFolder());
    EXPECT_TRUE(!CZoltaFilePath(W(root)).Exists() && CZoltaFilePath(W(root)).IsFolder());
    EXPECT_FALSE(CZoltaDirectoryPath(W(root + "/naïve €.txt")).Exists());
    EXPECT_EQ(3, GetFileSize(file));
    EXPECT_EQ(-1, GetFileSize(CZoltaFilePath(W(root + "/missing"))));
    EXPECT_TRUE(file.Remove());
    EXPECT_FALSE(file.Remove());
}

TEST(ZoltaPathDisk, CopyToReplacesOrRefusesAndNeverTruncatesItself)
{
    const std::string root = MakeScratchDir("copy");
    std::string payload(200000, '\0');
    for (size_t i = 0; i < payload.size(); ++i)
        payload[i] = static_cast<char>(i * 7 + 3);
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
    EXPECT_EQ((std::vector<std::string>{root + "/imsmanifest.xml", root + "/imsmanifest_temp.xml"}), Paths(files));
    std::vector<CZoltaDirectoryPath> folders;
    CZoltaDirectoryPath(W(root)).ListFolders(W("*"), folders);
    EXPECT_EQ(std::vector<std::string>{root + "/imsmanifest-folder.xml"}, Paths(folders));

    std::vector<CZoltaFilePath> none;
    CZoltaDirectoryPath(W(root + "/absent")).ListFiles(W("*"), none);
    CZoltaDirectoryPath(W(root)).ListFiles(W("*.TXT"), none);
    EXPECT_TRUE(none.empty());
}

TEST(ZoltaPathListing, ResultsFollowReaddirAndAppendToWhatIsThere)
{
    const std::string root = MakeScratchDir("order");
    for (int i = 0; i < 40; ++i)
        ASSERT_TRUE(WriteFile(root + "/f" + std::to_string(i * 37 % 41) + ".dat", "x"));
    std::vector<std::string> expected = {"sentinel"};
    DIR* directory = opendir(root.c_str());
    while (const dirent* entry = readdir(directory))
        if (entry->d_name[0] != '.')
            expected.push_back(root + "/" + entry->d_name);
    closedir(directory);

    std::vector<CZoltaFilePath> files{CZoltaFilePath(W("sentinel"))};
    CZoltaDirectoryPath(W(root + "/")).ListFiles(W("*"), files);  // a trailing "/" is not doubled
    std::vector<std::string> listed;
    for (const CZoltaFilePath& file : files)
        listed.push_back(U(file.GetPath()));
    EXPECT_EQ(expected, listed);
}

TEST(ZoltaPathListing, RecursiveListingFindsEveryVisibleFileAndSurvivesLinkLoops)
{
    const std::string root = MakeScratchDir("recursive");
    for (const char* name : {"top.txt", "a/b/two.txt", "a/b/c/three.bin", ".hidden/secret.txt", "a/.dot.txt"})
        ASSERT_TRUE(WriteFile(root + "/" + name, "x"));
    ASSERT_EQ(0, symlink("..", (root + "/a/b/up").c_str()));
    std::vector<CZoltaFilePath> files;
    CZoltaDirectoryPath(W(root)).ListRecursive(files);
    EXPECT_EQ((std::vector<std::string>{root + "/a/b/c/three.bin", root + "/a/b/two.txt", root + "/top.txt"}),
              Paths(files));
}

TEST(ZoltaPathDeleting, EmptyKeepsHiddenEntriesAndLinksGoWithoutTheirTargets)
{
    const std::string root = MakeScratchDir("empty");
    const std::string outside = MakeScratchDir("outside");
    ASSERT_TRUE(WriteFile(outside + "/precious.txt", "keep"));
    for (const char* name : {"f.txt", "sub/deeper/h.txt", ".keep", "a/.pinned", "a/x.txt"})
        ASSERT_TRUE(WriteFile(root + "/" + name, "x"));
    ASSERT_EQ(0, symlink(outside.c_str(), (root + "/link-to-folder").c_str()));
    ASSERT_EQ(0, symlink((outside + "/precious.txt").c_str(), (root + "/sub/link-to-file").c_str()));

    const CZoltaDirectoryPath folder(W(root));
    EXPECT_FALSE(folder.Empty());  // "a" keeps its hidden file, so it stays
    for (const char* gone : {"/f.txt", "/sub", "/a/x.txt", "/link-to-folder"})
        EXPECT_FALSE(Exists(root + gone)) << gone;
    EXPECT_TRUE(Exists(root + "/.keep"));
    EXPECT_TRUE(Exists(root + "/a/.pinned"));
    EXPECT_EQ("keep", ReadFile(outside + "/precious.txt"));

    // Remove takes hidden content along, and fails when there is nothing to remove.
    ASSERT_EQ(0, symlink(outside.c_str(), (root + "/again").c_str()));
    EXPECT_TRUE(folder.Remove());
    EXPECT_FALSE(Exists(root));
    EXPECT_EQ("keep", ReadFile(outside + "/precious.txt"));
    EXPECT_FALSE(folder.Remove());
}

TEST(ZoltaPathUniqueNames, ThePlainNameUntilItIsTakenThenANumber)
{
    const std::string root = MakeScratchDir("unique");
    const CZoltaDirectoryPath folder(W(root));
    EXPECT_EQ(root + "/gallery", U(folder.GetUniqueChild(W("gallery")).GetPath()));
    EXPECT_EQ(root + "/test.tmp", U(folder.GetUniqueFile(W("test"), W(".tmp")).GetPath()));
    EXPECT_FALSE(Exists(root + "/gallery"));  // only names
    ASSERT_TRUE(WriteFile(root + "/gallery/x", ""));
    ASSERT_TRUE(WriteFile(root + "/test.tmp", ""));

    const std::string nextChild = U(folder.GetUniqueChild(W("gallery")).GetPath());
    EXPECT_TRUE(IsNumbered(nextChild, root + "/gallery", "")) << nextChild;
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

TEST_F(ZoltaTempFolders, FoldersAreBuiltBelowTmpdirOrTheUsersOwn)
{
    const std::string tmp = MakeScratchDir("tmpdir");
    setenv("TMPDIR", (tmp + "/").c_str(), 1);
    EXPECT_EQ(tmp, U(GetTempFolder().GetPath()));
    EXPECT_EQ(tmp + "/ZOLTA Scrivent", U(GetApplicationTempFolder().GetPath()));
    EXPECT_EQ(tmp + "/ZOLTA Technologies/CuratoolId/TempFiles", U(GetTempFilesFolder(W("CuratoolId")).GetPath()));

    // An overlong TMPDIR is cut like the old fixed buffer.
    const std::string longPath = tmp + "/" + std::string(300, 'd');
    setenv("TMPDIR", longPath.c_str(), 1);
    EXPECT_EQ(longPath.substr(0, 259), U(GetTempFolder().GetPath()));

    unsetenv("TMPDIR");
    unsetenv("XDG_CACHE_HOME");
    const std::string folder = U(GetTempFolder().GetPath());
    const std::string home = std::getenv("HOME");
    EXPECT_EQ(home + "/", folder.substr(0, home.size() + 1));
    EXPECT_EQ(0, access(folder.c_str(), W_OK));
}

TEST_F(ZoltaTempFolders, TempFileNamesAreNumberedNeverTakenAndFollowTheOverride)
{
    const std::string tmp = MakeScratchDir("tempfiles");
    setenv("TMPDIR", tmp.c_str(), 1);
    std::set<std::string> seen;
    for (int i = 0; i < 20; ++i) {
        const CZoltaFilePath name = i % 2 ? MakeTempFile(W(".xml")) : MakeTempFile(W(".xml"), W("  "));
        EXPECT_EQ(tmp, U(name.GetFolder().GetPath()));
        EXPECT_TRUE(IsNumbered(U(name.GetName()), "SCVTemp(", ").xml")) << U(name.GetName());
        ASSERT_TRUE(WriteFile(U(name.GetPath()), ""));
        seen.insert(U(name.GetPath()));
    }
    EXPECT_EQ(20u, seen.size());

    const std::string chosen = MakeScratchDir("override") + "/not-yet-there";
    SetTempFolderOverride(CZoltaDirectoryPath(W(chosen)));
    const CZoltaFilePath raw = MakeTempFile(W(".rawstream"), W("raw"));
    EXPECT_EQ(chosen, U(raw.GetFolder().GetPath()));
    EXPECT_TRUE(IsNumbered(U(raw.GetName()), "raw(", ").rawstream")) << U(raw.GetName());
}

}  // namespace
