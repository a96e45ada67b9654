#include "CInstanceSemaphore.h"
#include "TestEnvironment.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

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

TEST(InstanceSemaphore, AKilledHolderLeavesNoStaleLock)
{
    const std::string path = LockFile();
    int ready[2];
    ASSERT_EQ(0, pipe(ready));
    const pid_t child = fork();
    if (child == 0) {
        CInstanceSemaphore held(path.c_str(), 0x71);
        const char answer = held.IsLocked() ? 'y' : 'n';
        (void)!write(ready[1], &answer, 1);
        pause();
        _exit(0);
    }
    close(ready[1]);
    char answer = 0;
    ASSERT_EQ(1, read(ready[0], &answer, 1));
    close(ready[0]);
    ASSERT_EQ('y', answer);

    {
        CInstanceSemaphore whileHeld(path.c_str(), 0x71);
        EXPECT_FALSE(whileHeld.IsLocked());
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);

    CInstanceSemaphore afterDeath(path.c_str(), 0x71);
    EXPECT_TRUE(afterDeath.IsLocked());
}

}  // namespace
