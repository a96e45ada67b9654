#include "ui/PathSelector.h"

#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using curatool::test::MakeScratchDir;

QStringList Entries(const std::string& folder)
{
    return QDir(QString::fromStdString(folder)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

// The probe leaves nothing behind, and a file of the user's named like it stays as it was.
TEST(PathSelectorWriteTest, CreatesAMissingFolderWithItsParentsAndLeavesItAsItWas)
{
    const std::string root = MakeScratchDir("writable");
    const std::string nested = root + "/a/b/c";
    EXPECT_TRUE(PathSelector::IsWritableDirectory(CAtlString(QString::fromStdString(nested))));
    EXPECT_TRUE(QDir(QString::fromStdString(nested)).exists());
    EXPECT_TRUE(Entries(nested).isEmpty()) << Entries(nested).join(",").toStdString();

    ASSERT_TRUE(curatool::test::WriteFile(nested + "/test.tmp", "mine"));
    EXPECT_TRUE(PathSelector::IsWritableDirectory(CAtlString(QString::fromStdString(nested))));
    EXPECT_EQ("mine", curatool::test::ReadFile(nested + "/test.tmp"));
    EXPECT_EQ(QStringList{"test.tmp"}, Entries(nested));
}

TEST(PathSelectorWriteTest, FailsWhereNothingCanBeWritten)
{
    const std::string root = MakeScratchDir("not-writable");
    ASSERT_TRUE(curatool::test::WriteFile(root + "/plain-file", "x"));
    EXPECT_FALSE(PathSelector::IsWritableDirectory(CAtlString(QString::fromStdString(root + "/plain-file"))));
    EXPECT_FALSE(PathSelector::IsWritableDirectory(CAtlString(QString::fromStdString(root + "/plain-file/below"))));

    if (geteuid() == 0)
        GTEST_SKIP() << "permissions do not stop root";
    const std::string locked = root + "/locked";
    ASSERT_EQ(0, mkdir(locked.c_str(), 0555));
    EXPECT_FALSE(PathSelector::IsWritableDirectory(CAtlString(QString::fromStdString(locked))));
    EXPECT_FALSE(PathSelector::IsWritableDirectory(CAtlString(QString::fromStdString(locked + "/child"))));
    chmod(locked.c_str(), 0755);
}

}  // namespace
