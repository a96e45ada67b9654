#pragma once

#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/FileLock.h"

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

private:
    CZoltaDirectoryPath m_folder;
    FileLock m_lock;
    QByteArray m_previousTmpdir;
    bool m_hadTmpdir = false;
};
