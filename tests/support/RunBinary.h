#pragma once

#include <map>
#include <ostream>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace curatool::test {

// How a child run differs from this test process: the child inherits this process's
// environment (and with it the scratch HOME, XDG_CONFIG_HOME, TMPDIR and CURATOOL_ROOT), with
// these variables set or removed on top.
struct RunOptions {
    std::map<std::string, std::string> setEnvironment;
    std::vector<std::string> unsetEnvironment;
    std::string workingDirectory;  // empty: this process's
    int timeoutMs = 60000;         // the child is killed after this long
    // A descriptor to hand the child as its standard output instead of a capturing pipe.
    int standardOutputFd = -1;
};

struct RunResult {
    std::string out;
    std::string err;
    int exitCode = -1;  // valid when the child exited normally
    int signal = 0;     // the signal that ended the child, 0 if none
    bool timedOut = false;
};

// How a run ended and what it printed, compared in one step.
struct Outcome {
    int exitCode = -1;
    std::string out;
    std::string err;
    bool operator==(const Outcome&) const = default;
    friend void PrintTo(const Outcome& o, std::ostream* os)
    {
        *os << "exit " << o.exitCode << "\n--- out:\n" << o.out << "--- err:\n" << o.err;
    }
};

inline Outcome OutcomeOf(const RunResult& r)
{
    return {r.exitCode, r.out, r.err};
}

// A child process that runs while the test goes on; Wait() collects what it printed.
class BinaryProcess {
public:
    BinaryProcess(const std::string& program, const std::vector<std::string>& arguments,
                  const RunOptions& options = {});
    ~BinaryProcess();
    BinaryProcess(const BinaryProcess&) = delete;
    BinaryProcess& operator=(const BinaryProcess&) = delete;

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
    std::optional<RunResult> m_result;
};

// The absolute, resolved path of the curatool binary under test.
std::string CuratoolProgram();

// Runs the curatool binary under test to its end: what it printed and how it ended.
RunResult RunCuratool(const std::vector<std::string>& arguments, const RunOptions& options = {});

// Options for a run on a machine without any display: no DISPLAY, no WAYLAND_DISPLAY, no
// QT_QPA_PLATFORM.
RunOptions Headless(RunOptions options = {});

// PATH holds no privilege tool, so a run that relaunches itself cannot reach a real sudo.
RunOptions NoPrivilegeTools(RunOptions options = {});

// The usage text, byte for byte, and the exit code the system makes of the work flow's 666.
std::string UsageText();
constexpr int kUsageExit = 666 & 0xFF;

}  // namespace curatool::test
