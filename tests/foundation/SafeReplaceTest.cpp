#include "CZoltaDirectoryPath.h"
#include "FileLock.h"
#include "SafeReplace.h"
#include "TestEnvironment.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

namespace {

using curatool::test::Exists;
using curatool::test::MakeScratchDir;
using curatool::test::ReadFile;
using curatool::test::WriteFile;

bool Put(std::FILE* file, const char* text)
{
    return std::fwrite(text, 1, std::strlen(text), file) == std::strlen(text);
}

TEST(SafeReplace, ANewFileTakesThePlaceWholeAndAFailedWriteKeepsTheOld)
{
    const std::string folder = MakeScratchDir("replace");
    const std::string target = folder + "/state.xml";
    const CZoltaFilePath path(target.c_str());
    ASSERT_TRUE(WriteFile(target, "old"));

    EXPECT_FALSE(ReplaceFileWith(path, [](std::FILE* file) { return Put(file, "cut") && false; }));
    EXPECT_EQ("old", ReadFile(target));
    EXPECT_FALSE(Exists(ReplacementFileFor(path).ToQString().toStdString()));

    EXPECT_TRUE(ReplaceFileWith(path, [](std::FILE* file) { return Put(file, "new"); }));
    EXPECT_EQ("new", ReadFile(target));
    ASSERT_TRUE(WriteFile(folder + "/copy.xml", "copied"));
    EXPECT_TRUE(ReplaceFileFrom(path, CZoltaFilePath((folder + "/copy.xml").c_str())));
    EXPECT_EQ("copied", ReadFile(target));

    // What a killed replacement leaves goes; the files themselves stay.
    ASSERT_TRUE(WriteFile(ReplacementFileFor(path).ToQString().toStdString(), "cut"));
    RemoveStaleReplacements(CZoltaDirectoryPath(folder.c_str()));
    EXPECT_FALSE(Exists(ReplacementFileFor(path).ToQString().toStdString()));
    EXPECT_EQ("copied", ReadFile(target));
}

TEST(FileLockTest, OneHolderAtATime)
{
    const CZoltaFilePath path((MakeScratchDir("lock") + "/.lock").c_str());
    FileLock first;
    ASSERT_TRUE(first.TryLock(path));
    FileLock second;  // another open of the file counts as another holder, as another process would
    EXPECT_FALSE(second.TryLock(path));
    EXPECT_TRUE(FileLock::IsHeld(path));
    first.Release();
    EXPECT_TRUE(second.TryLock(path));
}

}  // namespace
