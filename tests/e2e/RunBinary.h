#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace curatool::test {

// How a child run differs from this test process: the child inherits this process's
// environment (and with it the scratch HOME, XDG_CONFIG_HOME, TMPDIR and CURATOOL_ROOT), with
// these variables set or removed on top.
struct RunOptions
{
    std::map<std::string, std::string> setEnvironment;
    std::vector<std::string> unsetEnvironment;
    std::string workingDirectory;   // empty: this process's
    std::string standardInput;      // fed to the child, then closed
    int timeoutMs = 60000;          // the child is killed after this long
    // A descriptor to hand the child as its standard output instead of a capturing pipe.
    int standardOutputFd = -1;
};

struct RunResult
{
    std::string out;
    std::string err;
    int exitCode = -1;       // valid when the child exited normally
    int signal = 0;          // the signal that ended the child, 0 if none
    bool timedOut = false;
};

// A child process that runs while the test goes on; Wait() collects what it printed.
class BinaryProcess
{
public:
    BinaryProcess(const std::string& program, const std::vector<std::string>& arguments,
                  const RunOptions& options = {});
    ~BinaryProcess();
    BinaryProcess(const BinaryProcess&) = delete;
    BinaryProcess& operator=(const BinaryProcess&) = delete;

    pid_t Pid() const { return m_pid; }
    bool Started() const { return m_pid > 0; }
    void Kill(int signal);
    // True while the child has not ended (it is not reaped by this).
    bool IsRunning() const;
    RunResult Wait();

private:
    RunOptions m_options;
    pid_t m_pid = -1;
    int m_outFd = -1;
    int m_errFd = -1;
    int m_inFd = -1;
    std::optional<RunResult> m_result;
};

// Runs a program to its end and returns what it printed and how it ended.
RunResult Run(const std::string& program, const std::vector<std::string>& arguments,
              const RunOptions& options = {});

// The same for the curatool binary under test.
RunResult RunCuratool(const std::vector<std::string>& arguments, const RunOptions& options = {});

// Options for a run on a machine without any display: no DISPLAY, no WAYLAND_DISPLAY, no
// QT_QPA_PLATFORM.
RunOptions Headless(RunOptions options = {});

}  // namespace curatool::test
