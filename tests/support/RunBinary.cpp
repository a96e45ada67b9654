#include "RunBinary.h"

#include "TestEnvironment.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace curatool::test {

namespace {

std::vector<std::string> ChildEnvironment(const RunOptions& options)
{
    std::vector<std::string> result;
    for (char** entry = environ; *entry; ++entry) {
        const std::string text = *entry;
        const std::string name = text.substr(0, text.find('='));
        const bool removed = std::find(options.unsetEnvironment.begin(), options.unsetEnvironment.end(), name) !=
                             options.unsetEnvironment.end();
        if (!removed && !options.setEnvironment.count(name))
            result.push_back(text);
    }
    for (const auto& [name, value] : options.setEnvironment)
        result.push_back(name + "=" + value);
    return result;
}

std::vector<char*> PointerArray(std::vector<std::string>& strings)
{
    std::vector<char*> pointers;
    for (std::string& s : strings)
        pointers.push_back(s.data());
    pointers.push_back(nullptr);
    return pointers;
}

void CloseFd(int& fd)
{
    if (fd >= 0)
        close(fd);
    fd = -1;
}

}  // namespace

BinaryProcess::BinaryProcess(const std::string& program, const std::vector<std::string>& arguments,
                             const RunOptions& options)
    : m_options(options)
{
    std::vector<std::string> argStrings{program};
    argStrings.insert(argStrings.end(), arguments.begin(), arguments.end());
    std::vector<std::string> envStrings = ChildEnvironment(options);
    std::vector<char*> argv = PointerArray(argStrings);
    std::vector<char*> envp = PointerArray(envStrings);

    int outPipe[2] = {-1, -1}, errPipe[2];
    if ((options.standardOutputFd < 0 && pipe2(outPipe, O_CLOEXEC) != 0) || pipe2(errPipe, O_CLOEXEC) != 0)
        return;

    m_pid = fork();
    if (m_pid == 0) {
        const int outTarget = options.standardOutputFd >= 0 ? options.standardOutputFd : outPipe[1];
        const int devNull = open("/dev/null", O_RDONLY);
        dup2(devNull, 0);
        dup2(outTarget, 1);
        dup2(errPipe[1], 2);
        if (!options.workingDirectory.empty() && chdir(options.workingDirectory.c_str()) != 0)
            _exit(126);
        execve(program.c_str(), argv.data(), envp.data());
        _exit(127);
    }

    close(errPipe[1]);
    if (outPipe[1] >= 0)
        close(outPipe[1]);
    m_outFd = outPipe[0];
    m_errFd = errPipe[0];
    if (m_pid < 0) {
        CloseFd(m_outFd);
        CloseFd(m_errFd);
    }
}

BinaryProcess::~BinaryProcess()
{
    if (m_pid > 0 && !m_result) {
        kill(m_pid, SIGKILL);
        Wait();
    }
    CloseFd(m_outFd);
    CloseFd(m_errFd);
}

void BinaryProcess::Kill(int signal)
{
    if (m_pid > 0 && !m_result)
        kill(m_pid, signal);
}

bool BinaryProcess::IsRunning() const
{
    if (m_pid <= 0 || m_result)
        return false;
    siginfo_t info{};
    info.si_pid = 0;
    return waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == 0;
}

RunResult BinaryProcess::Wait()
{
    if (m_result)
        return *m_result;
    RunResult result;
    if (m_pid <= 0) {
        m_result = result;
        return result;
    }

    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(m_options.timeoutMs);
    while (m_outFd >= 0 || m_errFd >= 0) {
        pollfd fds[2];
        nfds_t count = 0;
        for (int fd : {m_outFd, m_errFd})
            if (fd >= 0)
                fds[count++] = {fd, POLLIN, 0};

        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
        if (left <= 0) {
            result.timedOut = true;
            kill(m_pid, SIGKILL);
            break;
        }
        if (poll(fds, count, int(std::min<long long>(left, 200))) < 0 && errno != EINTR)
            break;

        for (nfds_t i = 0; i < count; ++i) {
            if (!fds[i].revents)
                continue;
            char buffer[4096];
            const ssize_t n = read(fds[i].fd, buffer, sizeof buffer);
            const bool isOut = fds[i].fd == m_outFd;
            if (n > 0) {
                (isOut ? result.out : result.err).append(buffer, size_t(n));
            } else if (n == 0 || errno != EINTR) {
                CloseFd(isOut ? m_outFd : m_errFd);
            }
        }
    }

    int status = 0;
    while (waitpid(m_pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status))
        result.exitCode = WEXITSTATUS(status);
    else if (WIFSIGNALED(status))
        result.signal = WTERMSIG(status);
    m_result = result;
    return result;
}

RunResult RunCuratool(const std::vector<std::string>& arguments, const RunOptions& options)
{
    return BinaryProcess(CURATOOL_BINARY, arguments, options).Wait();
}

std::string CuratoolProgram()
{
    return std::filesystem::canonical(CURATOOL_BINARY).string();
}

RunOptions Headless(RunOptions options)
{
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        options.setEnvironment.erase(name);
        options.unsetEnvironment.push_back(name);
    }
    return options;
}

RunOptions NoPrivilegeTools(RunOptions options)
{
    options.setEnvironment["PATH"] = MakeScratchDir("empty-path");
    return options;
}

std::string UsageText()
{
    return ReadFile(CURATOOL_SOURCE_DIR "/tests/e2e/data/usage.txt");
}

}  // namespace curatool::test
