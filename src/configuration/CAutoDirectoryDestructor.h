#pragma once

#include "foundation/CZoltaDirectoryPath.h"

// Owns a folder on disk: when the last holder lets go, the folder goes with all it contains.
// Used for the unpacked copy of a .gallerycollection file.
class CAutoDirectoryDestructor {
public:
    explicit CAutoDirectoryDestructor(const CZoltaDirectoryPath& directory);
    ~CAutoDirectoryDestructor();
    CAutoDirectoryDestructor(const CAutoDirectoryDestructor&) = delete;
    CAutoDirectoryDestructor& operator=(const CAutoDirectoryDestructor&) = delete;

    const CZoltaDirectoryPath& GetDirectory() const { return m_directory; }

private:
    CZoltaDirectoryPath m_directory;
};
