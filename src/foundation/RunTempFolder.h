#pragma once

#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/FileLock.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

// The temporary folder of one run: "curatool-run-<pid>" below the system's temporary folder,
// held by a lock file inside it. While it exists every temporary file of the process goes there
// (TMPDIR points at it); it is removed at the end of the run. Folders of earlier runs whose lock
// nobody holds any more (the run was killed) are removed when the next run starts.
class RunTempFolder {
public:
    RunTempFolder();
    ~RunTempFolder();
    RunTempFolder(const RunTempFolder&) = delete;
    RunTempFolder& operator=(const RunTempFolder&) = delete;

    const CZoltaDirectoryPath& GetFolder() const { return m_folder; }

    // Removes the folders of runs below `base` that are no longer alive.
    static void RemoveAbandoned(const CZoltaDirectoryPath& base);

    // Removes `folder`, a folder of the run's own temporary folder, in the background when a run
    // folder exists, and at once otherwise. Removing a folder can wait on the disk (a discard of
    // its blocks) for longer than it took to fill it: a run that unpacks a package into a folder
    // of its own each time need not wait for each. What the background has not removed yet goes
    // with the run folder at the end of the run.
    static void RemoveLater(const CZoltaDirectoryPath& folder);

private:
    void RemoveInBackground();

    CZoltaDirectoryPath m_folder;
    FileLock m_lock;
    QByteArray m_previousTmpdir;
    bool m_hadTmpdir = false;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<CZoltaDirectoryPath> m_toRemove;
    bool m_stopping = false;
    std::thread m_remover;
};
