#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "foundation/CZoltaFilePath.h"

#include <QString>

#include <vector>

// The path of one folder, with every file-system operation on folders. Two paths are equal when
// their texts are, apart from a trailing separator. Constructing one never touches the disk.
class CZoltaDirectoryPath {
public:
    CZoltaDirectoryPath() = default;
    CZoltaDirectoryPath(const CZoltaDirectoryPath& other) = default;
    CZoltaDirectoryPath& operator=(const CZoltaDirectoryPath& other) = default;
    explicit CZoltaDirectoryPath(const CAtlString& path);
    explicit CZoltaDirectoryPath(const QString& path);
    // 8-bit text is taken as UTF-8.
    explicit CZoltaDirectoryPath(const char* path);

    const CAtlString& GetPath() const { return m_path; }
    QString ToQString() const;
    bool IsEmpty() const;

    bool Exists() const;
    // Makes the folder and every missing parent; true if the folder exists afterwards.
    bool Create() const;
    // Adds one component, without doubling a separator already there.
    void Append(const CAtlString& name);
    // The folder, "/", the name: literally, even when the folder already ends in "/".
    CZoltaFilePath GetFile(const CAtlString& name) const;
    CAtlString GetName() const;

    // The child `base`, or `base` followed by a random number, whichever is not yet a folder.
    CZoltaDirectoryPath GetUniqueChild(const CAtlString& base) const;
    // "<prefix><extension>", or "<prefix>(<random number>)<extension>", whichever is not yet a file.
    CZoltaFilePath GetUniqueFile(const CAtlString& prefix, const CAtlString& extension) const;

    // Full paths of the entries whose names match the shell pattern (case counts), in the order the
    // folder gives them. Names starting with "." are never listed.
    void ListFiles(const CAtlString& pattern, std::vector<CZoltaFilePath>& out) const;
    void ListFolders(const CAtlString& pattern, std::vector<CZoltaDirectoryPath>& out) const;
    // Every listed file below the folder, at any depth.
    void ListRecursive(std::vector<CZoltaFilePath>& out) const;

    // Deletes every listed file and folder below this one, going on past failures; true if all went.
    // Hidden entries are not listed and so stay. Links are removed, never followed.
    bool Empty() const;
    // Deletes the folder with all it holds, hidden entries included; true if it existed and is gone.
    bool Remove() const;

    bool operator==(const CZoltaDirectoryPath& other) const;
    bool operator!=(const CZoltaDirectoryPath& other) const { return !(*this == other); }

private:
    CAtlString m_path;
};

// The system's temporary folder: $TMPDIR when set, otherwise a per-user folder below the user's
// cache folder. Cut to 259 characters like the fixed buffer it used to be read into.
CZoltaDirectoryPath GetTempFolder();
// GetTempFolder() + "ZOLTA Technologies".
CZoltaDirectoryPath GetCompanyTempFolder();
// GetTempFolder() + "ZOLTA Scrivent".
CZoltaDirectoryPath GetApplicationTempFolder();
// GetCompanyTempFolder() + name + "TempFiles".
CZoltaDirectoryPath GetTempFilesFolder(const CAtlString& name);

// A process-wide folder that MakeTempFile uses instead of GetTempFolder(); an empty path clears it.
void SetTempFolderOverride(const CZoltaDirectoryPath& folder);
CZoltaDirectoryPath GetTempFolderOverride();
