#include "app/CInstanceSemaphore.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

namespace {

std::string LockFile()
{
    const std::string path = curatool::test::MakeScratchDir("lock") + "/program";
    curatool::test::WriteFile(path, "binary");
    return path;
}

TEST(InstanceSemaphore, OneHolderPerProgramFileAndNoneForAMissingFile)
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

    CInstanceSemaphore lock("/no/such/program/anywhere", 0x71);
    EXPECT_FALSE(lock.IsLocked());
    EXPECT_EQ(-1, lock.SemaphoreId());
}

}  // namespace
