#pragma once

#include "libZoltaAtl/CAtlString.h"

#include <QByteArray>
#include <QString>

#include <cstdio>

class CZoltaDirectoryPath;

// The path of one file. Folder, name and extension are derived from the text on demand; nothing
// touches the disk until an operation asks for it.
class CZoltaFilePath {
public:
    CZoltaFilePath() = default;
    CZoltaFilePath(const CZoltaFilePath& other) = default;
    CZoltaFilePath& operator=(const CZoltaFilePath& other) = default;
    explicit CZoltaFilePath(const CAtlString& path);
    explicit CZoltaFilePath(const QString& path);
    // 8-bit text is taken as UTF-8.
    explicit CZoltaFilePath(const char* path);

    const CAtlString& GetPath() const { return m_path; }
    QString ToQString() const;
    bool IsEmpty() const;

    bool Exists() const;    // a regular file stands there
    bool IsFolder() const;  // the path names a folder

    // Everything before the last "/"; empty for a bare name.
    CZoltaDirectoryPath GetFolder() const;
    CAtlString GetName() const;
    // From the last "." of the name, dot included: "a.tar.gz" gives ".gz", ".x" gives ".x", "a" nothing.
    CAtlString GetExtension() const;

    bool Remove() const;
    // Copies the bytes onto `target`, replacing it unless `failIfExists`. A partial copy is removed.
    [[nodiscard]] bool CopyTo(const CZoltaFilePath& target, bool failIfExists = false) const;
    // Puts this file in the place of `target` in one step (both on one file system), its bytes on
    // the disk first: at every moment `target` is either the old file or the whole new one.
    [[nodiscard]] bool MoveOnto(const CZoltaFilePath& target) const;
    // Both paths made absolute and cleaned of "." , ".." and doubled separators, then compared.
    bool IsSameFile(const CZoltaFilePath& other) const;

private:
    CAtlString m_path;
};

// Paths reach the file system as UTF-8; names read from it come back the same way.
QByteArray ToFileSystemEncoding(const CAtlString& path);
CAtlString FromFileSystemEncoding(const char* bytes);

// fopen on the UTF-8 form of the path.
FILE* OpenFile(const CAtlString& path, const char* mode);
FILE* OpenFile(const CZoltaFilePath& path, const char* mode);

// Size in bytes, -1 when nothing can be found there.
long long GetFileSize(const CAtlString& path);
long long GetFileSize(const CZoltaFilePath& path);

// A file name not yet taken in the temporary folder (the override folder when one is set):
// "<prefix>(<number>)<extension>", with "SCVTemp" for a blank prefix. The file is not created.
CZoltaFilePath MakeTempFile(const CAtlString& extension, const CAtlString& prefix = CAtlString());

// `name` without any of the characters <>:"/\|?* ; nothing replaces them.
CAtlString SanitizeFileName(const CAtlString& name);
