#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/CZoltaFilePath.h"

#include <vector>

// Every file and directory that belongs to a collection, so that the collection can be copied
// to its stored place and removed from there again. Relative references resolve against the
// base directory, the folder the collection's documents were read from.
class FileList {
public:
    FileList();
    virtual ~FileList();

    void SetBaseDirectory(const CZoltaDirectoryPath& directory);
    const CZoltaDirectoryPath& GetBaseDirectory() const { return m_baseDirectory; }

    // An empty path is ignored.
    void AddFile(const CZoltaFilePath& path);
    void AddDirectory(const CZoltaDirectoryPath& path);
    // Below the base directory; ignored while the path or the base is empty, and for a
    // reference that would leave the base (absolute, or with a ".." component).
    void AddRelativeFile(const CAtlString& path);
    void AddRelativeDirectory(const CAtlString& path);

    // The full path of a reference as AddRelativeFile would enter it; empty when refused.
    CAtlString Resolve(const CAtlString& relative) const;

    const std::vector<CZoltaFilePath>& GetFiles() const { return m_files; }
    const std::vector<CZoltaDirectoryPath>& GetDirectories() const { return m_directories; }

    void Clear();

private:
    CZoltaDirectoryPath m_baseDirectory;
    std::vector<CZoltaFilePath> m_files;
    std::vector<CZoltaDirectoryPath> m_directories;
};

// True when a reference taken from a collection document stays below the folder it is
// relative to: not absolute, no "." or ".." component, not empty.
bool IsContainedReference(const CAtlString& relative);
