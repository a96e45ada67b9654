#include "configuration/CAutoDirectoryDestructor.h"
#include "configuration/FileList.h"
#include "configuration/MetaDataXml.h"

#include "CollectionFixture.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

using namespace curatool::test;

namespace {

std::vector<std::string> FilePaths(const FileList& list)
{
    std::vector<std::string> paths;
    for (const CZoltaFilePath& file : list.GetFiles())
        paths.push_back(U(file.GetPath()));
    return paths;
}

}  // namespace

TEST(FileList, RelativeEntriesGoBelowTheBaseAndEmptyOnesAreIgnored)
{
    FileList list;
    list.AddFile(CZoltaFilePath());
    list.AddDirectory(CZoltaDirectoryPath());
    list.AddRelativeFile(W("a.png"));  // no base yet
    EXPECT_TRUE(list.GetFiles().empty());
    list.SetBaseDirectory(CZoltaDirectoryPath(W("/x")));
    list.AddRelativeFile(CAtlString());
    list.AddRelativeDirectory(CAtlString());
    list.AddRelativeFile(W("sub/a.png"));
    list.AddFile(CZoltaFilePath(W("/elsewhere/a.xml")));
    list.AddRelativeFile(W("b.png"));
    EXPECT_EQ((std::vector<std::string>{"/x/sub/a.png", "/elsewhere/a.xml", "/x/b.png"}), FilePaths(list));
}

TEST(FileList, ReferencesLeavingTheBaseAreRefused)
{
    FileList list;
    list.SetBaseDirectory(CZoltaDirectoryPath(W("/x/base")));
    for (const char* hostile : {"../a.png", "/etc/passwd", "sub/../../a.png", "..", ".", "sub/..", "//etc/x"}) {
        list.AddRelativeFile(W(hostile));
        list.AddRelativeDirectory(W(hostile));
        EXPECT_TRUE(list.Resolve(W(hostile)).IsEmpty()) << hostile;
    }
    EXPECT_TRUE(list.GetFiles().empty() && list.GetDirectories().empty());
    EXPECT_EQ("/x/base/a/b.txt", U(list.Resolve(W("./a//b.txt"))));
}

TEST(MetaDataXml, ReadsIdentifierAndTitles)
{
    const std::string folder = MakeScratchDir("metadata");
    WriteFile(folder + "/metadata.xml",
              "<root><lom:general><lom:identifier><lom:entry>id-1</lom:entry></lom:identifier>"
              "<lom:title><lom:string language=\"de\">Alt</lom:string><lom:string language=\"\">none</lom:string>"
              "<lom:string language=\"de\">Neu</lom:string><lom:string language=\"fr\">Fran\xC3\xA7"
              "ais</lom:string>"
              "</lom:title></lom:general></root>");
    auto list = std::make_shared<FileList>();
    MetaDataXml metadata(list);
    ASSERT_TRUE(metadata.Read(W(folder + "/metadata.xml")));
    EXPECT_EQ("id-1", U(metadata.Identifier()));
    EXPECT_EQ(2u, metadata.Titles().size());
    EXPECT_EQ("Neu", U(metadata.Title(W("de"))));
    EXPECT_EQ("Fran\xC3\xA7"
              "ais",
              U(metadata.Title(W("fr"))));
    EXPECT_EQ((std::vector<std::string>{folder + "/metadata.xml"}), FilePaths(*list));
    // A language not there falls back to an English entry, created empty.
    EXPECT_TRUE(metadata.Title(W("es")).IsEmpty());
    EXPECT_EQ(1u, metadata.Titles().count(W("en")));
}

TEST(MetaDataXml, RequiredElementsAndBrokenDocumentsFail)
{
    const std::string folder = MakeScratchDir("metadata");
    const std::map<std::string, std::string> documents = {
        {"no-title", "<r><lom:general><lom:identifier><lom:entry>x</lom:entry></lom:identifier></lom:general></r>"},
        {"no-entry", "<r><lom:general><lom:identifier/><lom:title/></lom:general></r>"},
        {"no-general", "<r><lom:title/></r>"},
        {"truncated", "<r><lom:general><lom:identifier><lom:entry>x</lom:en"},
        {"empty", ""},
    };
    for (const auto& [name, content] : documents) {
        WriteFile(folder + "/" + name + ".xml", content);
        MetaDataXml metadata;
        EXPECT_FALSE(metadata.Read(W(folder + "/" + name + ".xml"))) << name;
    }
}

TEST(AutoDirectoryDestructor, LastHolderRemovesTheFolderWithItsContents)
{
    const std::string folder = MakeScratchDir("autodir");
    const std::string outside = MakeScratchDir("autodir-outside");
    WriteFile(folder + "/a/b/c.txt", "x");
    WriteFile(outside + "/keep.txt", "keep");
    std::filesystem::create_directory_symlink(outside, folder + "/link");
    auto holder = std::make_shared<CAutoDirectoryDestructor>(CZoltaDirectoryPath(W(folder)));
    auto second = holder;
    holder.reset();
    EXPECT_TRUE(Exists(folder + "/a/b/c.txt"));
    second.reset();
    EXPECT_FALSE(Exists(folder));
    EXPECT_EQ("keep", ReadFile(outside + "/keep.txt"));
}
