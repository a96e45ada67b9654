#pragma once

#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/FileLock.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

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

    // Both may be called from any thread.
    // An empty folder below the temporary folder for one unpacking ("<base>" and a number),
    // made, or reused when an earlier one was given back empty; an empty path when none could be
    // made. Making and removing a folder for each of thousands of packages costs more than
    // filling it: a removal can wait on the disk (a discard of its blocks), and on some file
    // systems new files then skip over the inodes freed in the last minute one by one.
    static CZoltaDirectoryPath TakeFolder(const CAtlString& base);

    // Done with `folder`, a folder of the run's own temporary folder: an empty one is kept for
    // the next TakeFolder, any other removed in the background. Outside a run it is removed at
    // once. What the background has not removed yet goes with the run folder at the end.
    static void GiveBack(const CZoltaDirectoryPath& folder);

private:
    void RemoveInBackground();

    CZoltaDirectoryPath m_folder;
    FileLock m_lock;
    QByteArray m_previousTmpdir;
    bool m_hadTmpdir = false;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    // Paths as QString, whose sharing is safe across threads, unlike the path classes'.
    std::deque<QString> m_toRemove;
    std::vector<QString> m_emptyFolders;
    bool m_stopping = false;
    std::thread m_remover;
};
