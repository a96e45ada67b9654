#include "foundation/RunTempFolder.h"

#include <QByteArray>

#include <atomic>

#include <unistd.h>

namespace {

const wchar_t kPrefix[] = L"curatool-run-";
const wchar_t kLockName[] = L".lock";

// The run folder of this process, while it exists.
std::atomic<RunTempFolder*> g_current{nullptr};

}  // namespace

RunTempFolder::RunTempFolder()
{
    const CZoltaDirectoryPath base = GetTempFolder();
    RemoveAbandoned(base);
    CZoltaDirectoryPath folder = base;
    folder.Append(CAtlString(kPrefix) + CAtlString(QString::number(::getpid())));
    // A folder of this pid can only be left by a dead run whose number came round again.
    folder.Remove();
    if (!folder.Create() || !m_lock.TryLock(folder.GetFile(kLockName)))
        return;  // temporary files then go to the system's folder as before
    m_folder = folder;
    m_hadTmpdir = qEnvironmentVariableIsSet("TMPDIR");
    m_previousTmpdir = qgetenv("TMPDIR");
    qputenv("TMPDIR", ToFileSystemEncoding(m_folder.GetPath()));
    m_remover = std::thread([this] { RemoveInBackground(); });
    g_current = this;
}

RunTempFolder::~RunTempFolder()
{
    if (m_folder.IsEmpty())
        return;
    g_current = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_one();
    m_remover.join();
    if (m_hadTmpdir)
        qputenv("TMPDIR", m_previousTmpdir);
    else
        qunsetenv("TMPDIR");
    m_folder.Remove();
    m_lock.Release();
}

void RunTempFolder::RemoveAbandoned(const CZoltaDirectoryPath& base)
{
    std::vector<CZoltaDirectoryPath> runs;
    base.ListFolders(CAtlString(kPrefix) + L"*", runs);
    for (const CZoltaDirectoryPath& run : runs) {
        FileLock probe;
        // A run that is alive holds its lock; one that has none yet is being made right now.
        if (run.GetFile(kLockName).Exists() && probe.TryLock(run.GetFile(kLockName)))
            run.Remove();
    }
}

void RunTempFolder::RemoveLater(const CZoltaDirectoryPath& folder)
{
    RunTempFolder* const run = g_current;
    QString inside = run ? run->m_folder.ToQString() : QString();
    if (!inside.endsWith(QLatin1Char('/')))
        inside += QLatin1Char('/');
    if (!run || !folder.ToQString().startsWith(inside) || folder.ToQString().size() <= inside.size()) {
        folder.Remove();
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(run->m_mutex);
        run->m_toRemove.push_back(folder);
    }
    run->m_wake.notify_one();
}

void RunTempFolder::RemoveInBackground()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_stopping || !m_toRemove.empty(); });
        // At the end the rest goes with the run folder itself.
        if (m_stopping)
            return;
        const CZoltaDirectoryPath folder = m_toRemove.front();
        m_toRemove.pop_front();
        lock.unlock();
        folder.Remove();
        lock.lock();
    }
}
