#pragma once

#include "foundation/CZoltaFilePath.h"

// An advisory lock (flock) on one file, held while the object lives. It is taken by whatever
// process opens the same file, whichever copy of the program it runs, and the system lets it go
// when the process ends, however it ends.
class FileLock {
public:
    FileLock() = default;
    ~FileLock() { Release(); }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    // Creates the file when missing and takes the lock without waiting; false when another
    // process holds it or the file can't be made.
    [[nodiscard]] bool TryLock(const CZoltaFilePath& path);
    bool IsLocked() const { return m_descriptor >= 0; }
    void Release();

    // Whether some process holds the lock on `path` (false when the file is not there).
    static bool IsHeld(const CZoltaFilePath& path);

private:
    int m_descriptor = -1;
};
