#include "foundation/RunTempFolder.h"

#include <QByteArray>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <unistd.h>

namespace {

const wchar_t kPrefix[] = L"curatool-run-";
const wchar_t kLockName[] = L".lock";

// The run folder of this process, while it exists.
std::atomic<RunTempFolder*> g_current{nullptr};

// A plain folder (not a link to one) with no entry at all.
bool IsEmptyFolder(const CZoltaDirectoryPath& folder)
{
    const int descriptor =
        ::open(ToFileSystemEncoding(folder.GetPath()).constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    DIR* const listing = ::fdopendir(descriptor);
    if (!listing) {
        ::close(descriptor);
        return false;
    }
    bool empty = true;
    while (const dirent* entry = ::readdir(listing)) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            empty = false;
            break;
        }
    }
    ::closedir(listing);
    return empty;
}

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

CZoltaDirectoryPath RunTempFolder::TakeFolder(const CAtlString& base)
{
    if (RunTempFolder* const run = g_current) {
        const std::lock_guard<std::mutex> lock(run->m_mutex);
        if (!run->m_emptyFolders.empty()) {
            const QString folder = run->m_emptyFolders.back();
            run->m_emptyFolders.pop_back();
            return CZoltaDirectoryPath(folder);
        }
    }
    // Made here and now, never one that exists: two threads never unpack into one folder.
    static std::atomic<unsigned> made{0};
    const CZoltaDirectoryPath parent = GetTempFolder();
    if (!parent.Create())
        return CZoltaDirectoryPath();
    for (int attempt = 0; attempt < 100; ++attempt) {
        CZoltaDirectoryPath folder = parent;
        folder.Append(CAtlString(base.ToQString() + QString::number(++made)));
        if (::mkdir(ToFileSystemEncoding(folder.GetPath()).constData(), 0700) == 0)
            return folder;
        if (errno != EEXIST)
            break;
    }
    return CZoltaDirectoryPath();
}

void RunTempFolder::GiveBack(const CZoltaDirectoryPath& folder)
{
    RunTempFolder* const run = g_current;
    QString inside = run ? run->m_folder.ToQString() : QString();
    if (!inside.endsWith(QLatin1Char('/')))
        inside += QLatin1Char('/');
    if (!run || !folder.ToQString().startsWith(inside) || folder.ToQString().size() <= inside.size()) {
        folder.Remove();
        return;
    }
    const bool empty = IsEmptyFolder(folder);
    const QString path = folder.ToQString();
    {
        const std::lock_guard<std::mutex> lock(run->m_mutex);
        if (empty) {
            // Given back twice, it would be handed to two unpackings.
            if (std::find(run->m_emptyFolders.begin(), run->m_emptyFolders.end(), path) == run->m_emptyFolders.end())
                run->m_emptyFolders.push_back(path);
            return;
        }
        run->m_toRemove.push_back(path);
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
        const CZoltaDirectoryPath folder(m_toRemove.front());
        m_toRemove.pop_front();
        lock.unlock();
        folder.Remove();
        lock.lock();
    }
}
