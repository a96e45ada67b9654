#include "CInstanceSemaphore.h"
#include "TestEnvironment.h"

#include <gtest/gtest.h>


namespace {

std::string LockFile()
{
    const std::string path = curatool::test::MakeScratchDir("lock") + "/program";
    curatool::test::WriteFile(path, "binary");
    return path;
}

TEST(InstanceSemaphore, OneHolderPerPathAtATime)
{
    const std::string path = LockFile();
    CInstanceSemaphore first(path.c_str(), 0x71);
    ASSERT_TRUE(first.IsLocked());
    EXPECT_NE(-1, first.SemaphoreId());

    CInstanceSemaphore second(path.c_str(), 0x71);
    EXPECT_FALSE(second.IsLocked());

    const std::string other = LockFile();
    CInstanceSemaphore elsewhere(other.c_str(), 0x71);
    EXPECT_TRUE(elsewhere.IsLocked()) << "another program file is another lock";
}

TEST(InstanceSemaphore, ReleasedLockCanBeTakenAgain)
{
    const std::string path = LockFile();
    {
        CInstanceSemaphore first(path.c_str(), 0x71);
        ASSERT_TRUE(first.IsLocked());
    }
    CInstanceSemaphore again(path.c_str(), 0x71);
    EXPECT_TRUE(again.IsLocked());
    again.Release();
    EXPECT_FALSE(again.IsLocked());
    CInstanceSemaphore third(path.c_str(), 0x71);
    EXPECT_TRUE(third.IsLocked());
}

TEST(InstanceSemaphore, MissingProgramFileGivesNoLock)
{
    CInstanceSemaphore lock("/no/such/program/anywhere", 0x71);
    EXPECT_FALSE(lock.IsLocked());
    EXPECT_EQ(-1, lock.SemaphoreId());
}

}  // namespace
