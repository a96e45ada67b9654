#include "foundation/RunTempFolder.h"

#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <thread>

namespace {

namespace fs = std::filesystem;

std::string Text(const CZoltaDirectoryPath& folder)
{
    return ToFileSystemEncoding(folder.GetPath()).toStdString();
}

TEST(RunTempFolderTest, AnEmptyFolderGivenBackIsTakenAgainAndAnyOtherGoes)
{
    const RunTempFolder run;
    ASSERT_FALSE(run.GetFolder().IsEmpty());
    const CZoltaDirectoryPath first = RunTempFolder::TakeFolder(L"unpack");
    const CZoltaDirectoryPath second = RunTempFolder::TakeFolder(L"unpack");
    ASSERT_TRUE(fs::is_directory(Text(first)));
    ASSERT_TRUE(fs::is_directory(Text(second)));
    EXPECT_FALSE(first == second);

    RunTempFolder::GiveBack(first);
    RunTempFolder::GiveBack(first);  // twice: still handed out once
    EXPECT_TRUE(RunTempFolder::TakeFolder(L"unpack") == first);
    EXPECT_FALSE(RunTempFolder::TakeFolder(L"unpack") == first);

    ASSERT_TRUE(curatool::test::WriteFile(Text(second) + "/left.png", "x"));
    RunTempFolder::GiveBack(second);
    EXPECT_FALSE(RunTempFolder::TakeFolder(L"unpack") == second);
    for (int wait = 0; wait < 400 && fs::exists(Text(second)); ++wait)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_FALSE(fs::exists(Text(second)));
}

}  // namespace
