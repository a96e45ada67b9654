#pragma once

#include <mutex>

// The one process-wide lock around the final steps of writing a manifest (Save, the closing
// steps of RebuildFromInstalled) and the opening of galleries at start-up. It does not protect
// a tree: a manifest belongs to the thread that opened it. The lock is recursive because a
// rebuild saves while holding it, and start-up saves the user's own collection under it.
std::recursive_mutex& GetManifestLock();

// Holds the manifest lock for the lifetime of the object.
class CManifestLockHolder {
public:
    CManifestLockHolder()
        : m_guard(GetManifestLock())
    {}
    CManifestLockHolder(const CManifestLockHolder&) = delete;
    CManifestLockHolder& operator=(const CManifestLockHolder&) = delete;

private:
    std::lock_guard<std::recursive_mutex> m_guard;
};
