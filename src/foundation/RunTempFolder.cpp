#include "foundation/RunTempFolder.h"

#include <QByteArray>

#include <unistd.h>

namespace {

const wchar_t kPrefix[] = L"curatool-run-";
const wchar_t kLockName[] = L".lock";

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
}

RunTempFolder::~RunTempFolder()
{
    if (m_folder.IsEmpty())
        return;
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
