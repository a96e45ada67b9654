// Two runs of the same binary exclude each other. To keep a first run alive inside its locked
// section, its standard output is a pipe that is already full: the run takes the lock, then
// blocks writing the usage text until the test drains the pipe or kills it.
#include "support/RunBinary.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

#include <fcntl.h>
#include <signal.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <unistd.h>

namespace {

using namespace curatool::test;

const char kInstanceMessage[] = "Another instance of this application is running. Please use it instead.\n";

// A pipe whose buffer is full, so that the next write to it blocks.
struct FullPipe {
    int readEnd = -1;
    int writeEnd = -1;

    FullPipe()
    {
        int fds[2];
        if (pipe2(fds, O_CLOEXEC) != 0)
            return;
        readEnd = fds[0];
        writeEnd = fds[1];
        fcntl(writeEnd, F_SETFL, fcntl(writeEnd, F_GETFL) | O_NONBLOCK);
        const std::string chunk(4096, 'x');
        while (write(writeEnd, chunk.data(), chunk.size()) > 0) {
        }
        char one = 'x';
        while (write(writeEnd, &one, 1) > 0) {
        }
        // The writer in the child must block, not fail.
        fcntl(writeEnd, F_SETFL, fcntl(writeEnd, F_GETFL) & ~O_NONBLOCK);
    }
    ~FullPipe()
    {
        CloseWriteEnd();
        if (readEnd >= 0)
            close(readEnd);
    }
    // A run writing into the pipe: it takes the lock, then blocks until the pipe is drained.
    std::unique_ptr<BinaryProcess> Start(const std::vector<std::string>& arguments)
    {
        RunOptions options = NoPrivilegeTools();
        options.standardOutputFd = writeEnd;
        auto run = std::make_unique<BinaryProcess>(CURATOOL_BINARY, arguments, options);
        CloseWriteEnd();
        return run;
    }
    void CloseWriteEnd()
    {
        if (writeEnd >= 0)
            close(writeEnd);
        writeEnd = -1;
    }
    // Everything until every writer has closed.
    std::string Drain()
    {
        std::string all;
        char buffer[4096];
        ssize_t n;
        while ((n = read(readEnd, buffer, sizeof buffer)) > 0)
            all.append(buffer, size_t(n));
        return all;
    }
};

// Whether a process holds the binary's lock: the semaphore exists and is raised.
bool LockHeld()
{
    const key_t key = ftok(CURATOOL_BINARY, 0x71);
    const int id = key == -1 ? -1 : semget(key, 1, 0);
    return id != -1 && semctl(id, 0, GETVAL) == 1;
}

bool WaitForLock(const BinaryProcess& holder)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < deadline && holder.IsRunning()) {
        if (LockHeld())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

TEST(SingleInstanceE2E, SecondRunIsRefusedWhileTheFirstWorksAndAdmittedAfterwards)
{
    ASSERT_FALSE(LockHeld()) << "a run of this binary is already going on";
    FullPipe pipe;
    ASSERT_GE(pipe.writeEnd, 0);
    const auto first = pipe.Start({"--help"});
    ASSERT_TRUE(WaitForLock(*first));

    // Both ask for the usage text: only the first prints it, the second hears of the first.
    const RunResult second = RunCuratool({"--help"}, NoPrivilegeTools());
    EXPECT_EQ(1, second.exitCode);
    EXPECT_EQ(kInstanceMessage, second.err);
    EXPECT_EQ("", second.out);

    const std::string printed = pipe.Drain();
    const RunResult firstResult = first->Wait();
    EXPECT_EQ(kUsageExit, firstResult.exitCode);
    ASSERT_GE(printed.size(), UsageText().size());
    EXPECT_EQ(UsageText(), printed.substr(printed.size() - UsageText().size()));
    EXPECT_EQ("", firstResult.err);

    EXPECT_FALSE(LockHeld()) << "the lock goes with the run";
    const RunResult third = RunCuratool({"--help"}, NoPrivilegeTools());
    EXPECT_EQ(kUsageExit, third.exitCode);
    EXPECT_EQ(UsageText(), third.out);
}

TEST(SingleInstanceE2E, AKilledFirstRunLeavesNoStaleLock)
{
    FullPipe pipe;
    const auto first = pipe.Start({"--installall", "--uninstall"});
    ASSERT_TRUE(WaitForLock(*first));

    EXPECT_EQ(kInstanceMessage, RunCuratool({"--register"}, NoPrivilegeTools()).err);

    first->Kill(SIGKILL);
    EXPECT_EQ(SIGKILL, first->Wait().signal);

    const RunResult after = RunCuratool({"-h"}, NoPrivilegeTools());
    EXPECT_EQ((Outcome{kUsageExit, UsageText(), ""}), OutcomeOf(after));
}

}  // namespace
