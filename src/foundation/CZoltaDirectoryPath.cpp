#include "foundation/CZoltaDirectoryPath.h"

#include <QDir>
#include <QStandardPaths>

#include <cstdlib>
#include <dirent.h>
#include <filesystem>
#include <fnmatch.h>
#include <functional>
#include <mutex>
#include <set>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

// Folders and files are listed by one walk that differs only in which kind it keeps.
enum class EntryKind { File, Folder };

using EntryVisitor = std::function<void(const QByteArray& fullPath)>;

QByteArray JoinEntry(const QByteArray& folder, const char* name)
{
    QByteArray path = folder;
    if (!path.endsWith('/'))
        path += '/';
    return path + name;
}

void WalkEntries(const CAtlString& folder, const CAtlString& pattern, EntryKind kind, const EntryVisitor& visit)
{
    const QByteArray folderBytes = ToFileSystemEncoding(folder);
    const QByteArray patternBytes = ToFileSystemEncoding(pattern);
    DIR* directory = folderBytes.isEmpty() ? nullptr : ::opendir(folderBytes.constData());
    if (!directory)
        return;
    while (const dirent* entry = ::readdir(directory)) {
        if (entry->d_name[0] == '.')
            continue;
        const QByteArray fullPath = JoinEntry(folderBytes, entry->d_name);
        struct stat info;
        if (::stat(fullPath.constData(), &info) != 0)
            continue;
        if (S_ISDIR(info.st_mode) != (kind == EntryKind::Folder))
            continue;
        if (::fnmatch(patternBytes.constData(), entry->d_name, 0) != 0)
            continue;
        visit(fullPath);
    }
    ::closedir(directory);
}

bool IsLink(const CAtlString& path)
{
    struct stat info;
    return ::lstat(ToFileSystemEncoding(path).constData(), &info) == 0 && S_ISLNK(info.st_mode);
}

using InodeSet = std::set<std::pair<dev_t, ino_t>>;

// A link back up the tree must not send the walk round in circles.
bool FirstVisit(const CZoltaDirectoryPath& folder, InodeSet& visited)
{
    struct stat info;
    if (::stat(ToFileSystemEncoding(folder.GetPath()).constData(), &info) != 0)
        return false;
    return visited.insert({info.st_dev, info.st_ino}).second;
}

void ListRecursiveInto(const CZoltaDirectoryPath& folder, std::vector<CZoltaFilePath>& out, InodeSet& visited)
{
    if (!FirstVisit(folder, visited))
        return;
    folder.ListFiles(CAtlString(L"*"), out);
    std::vector<CZoltaDirectoryPath> children;
    folder.ListFolders(CAtlString(L"*"), children);
    for (const CZoltaDirectoryPath& child : children)
        ListRecursiveInto(child, out, visited);
}

QString TrimTrailingSeparators(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

QString UserTempFolder()
{
    const QByteArray tmpdir = qgetenv("TMPDIR");
    if (!tmpdir.isEmpty())
        return QString::fromUtf8(tmpdir);
    // Without TMPDIR, a folder of the user's own: a shared /tmp would hand the company folder to
    // whichever user (or elevated run) made it first.
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    if (cache.isEmpty())
        return QDir::tempPath();
    const QString folder = cache + QStringLiteral("/curatool-tmp");
    QDir().mkpath(folder);
    return folder;
}

std::mutex g_overrideMutex;
CZoltaDirectoryPath g_tempFolderOverride;

}  // namespace

CZoltaDirectoryPath::CZoltaDirectoryPath(const CAtlString& path)
    : m_path(path)
{}

CZoltaDirectoryPath::CZoltaDirectoryPath(const QString& path)
    : m_path(path)
{}

CZoltaDirectoryPath::CZoltaDirectoryPath(const char* path)
    : m_path(QString::fromUtf8(path ? path : ""))
{}

QString CZoltaDirectoryPath::ToQString() const
{
    return m_path.ToQString();
}

bool CZoltaDirectoryPath::IsEmpty() const
{
    return m_path.IsEmpty();
}

bool CZoltaDirectoryPath::Exists() const
{
    struct stat info;
    return !IsEmpty() && ::stat(ToFileSystemEncoding(m_path).constData(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool CZoltaDirectoryPath::Create() const
{
    if (IsEmpty())
        return false;
    QDir().mkpath(ToQString());
    return Exists();
}

void CZoltaDirectoryPath::Append(const CAtlString& name)
{
    QString path = ToQString();
    if (!path.isEmpty() && !path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    m_path = CAtlString(path + name.ToQString());
}

CZoltaFilePath CZoltaDirectoryPath::GetFile(const CAtlString& name) const
{
    return CZoltaFilePath(ToQString() + QLatin1Char('/') + name.ToQString());
}

CAtlString CZoltaDirectoryPath::GetName() const
{
    const QString path = TrimTrailingSeparators(ToQString());
    if (path == QLatin1String("/"))
        return CAtlString();
    return CAtlString(path.mid(path.lastIndexOf(QLatin1Char('/')) + 1));
}

CZoltaDirectoryPath CZoltaDirectoryPath::GetUniqueChild(const CAtlString& base) const
{
    CZoltaDirectoryPath child(*this);
    child.Append(base);
    while (child.Exists()) {
        child = *this;
        child.Append(CAtlString(base.ToQString() + QString::number(std::rand())));
    }
    return child;
}

CZoltaFilePath CZoltaDirectoryPath::GetUniqueFile(const CAtlString& prefix, const CAtlString& extension) const
{
    const QString stem = ToQString() + QLatin1Char('/') + prefix.ToQString();
    const QString suffix = extension.ToQString();
    CZoltaFilePath candidate(stem + suffix);
    while (candidate.Exists())
        candidate = CZoltaFilePath(stem + QStringLiteral("(%1)").arg(std::rand()) + suffix);
    return candidate;
}

void CZoltaDirectoryPath::ListFiles(const CAtlString& pattern, std::vector<CZoltaFilePath>& out) const
{
    WalkEntries(m_path, pattern, EntryKind::File,
                [&out](const QByteArray& path) { out.emplace_back(FromFileSystemEncoding(path.constData())); });
}

void CZoltaDirectoryPath::ListFolders(const CAtlString& pattern, std::vector<CZoltaDirectoryPath>& out) const
{
    WalkEntries(m_path, pattern, EntryKind::Folder,
                [&out](const QByteArray& path) { out.emplace_back(FromFileSystemEncoding(path.constData())); });
}

void CZoltaDirectoryPath::ListRecursive(std::vector<CZoltaFilePath>& out) const
{
    InodeSet visited;
    ListRecursiveInto(*this, out, visited);
}

bool CZoltaDirectoryPath::Empty() const
{
    bool all = true;
    std::vector<CZoltaFilePath> files;
    ListFiles(CAtlString(L"*"), files);
    for (const CZoltaFilePath& file : files)
        all = file.Remove() && all;

    std::vector<CZoltaDirectoryPath> folders;
    ListFolders(CAtlString(L"*"), folders);
    for (const CZoltaDirectoryPath& folder : folders) {
        const QByteArray path = ToFileSystemEncoding(folder.GetPath());
        // A link to a folder goes as a link; what it points at is not ours to delete.
        if (IsLink(folder.GetPath())) {
            all = ::unlink(path.constData()) == 0 && all;
            continue;
        }
        all = folder.Empty() && all;
        all = ::rmdir(path.constData()) == 0 && all;
    }
    return all;
}

bool CZoltaDirectoryPath::Remove() const
{
    if (!Exists())
        return false;
    std::error_code error;
    std::filesystem::remove_all(std::filesystem::path(ToFileSystemEncoding(m_path).toStdString()), error);
    return !Exists();
}

bool CZoltaDirectoryPath::operator==(const CZoltaDirectoryPath& other) const
{
    return TrimTrailingSeparators(ToQString()) == TrimTrailingSeparators(other.ToQString());
}

CZoltaDirectoryPath GetTempFolder()
{
    // The folder used to be read into a buffer of 260 characters, terminator included.
    return CZoltaDirectoryPath(TrimTrailingSeparators(UserTempFolder()).left(259));
}

CZoltaDirectoryPath GetCompanyTempFolder()
{
    CZoltaDirectoryPath folder = GetTempFolder();
    folder.Append(CAtlString(L"ZOLTA Technologies"));
    return folder;
}

CZoltaDirectoryPath GetApplicationTempFolder()
{
    CZoltaDirectoryPath folder = GetTempFolder();
    folder.Append(CAtlString(L"ZOLTA Scrivent"));
    return folder;
}

CZoltaDirectoryPath GetTempFilesFolder(const CAtlString& name)
{
    CZoltaDirectoryPath folder = GetCompanyTempFolder();
    folder.Append(name);
    folder.Append(CAtlString(L"TempFiles"));
    return folder;
}

void SetTempFolderOverride(const CZoltaDirectoryPath& folder)
{
    std::lock_guard<std::mutex> lock(g_overrideMutex);
    g_tempFolderOverride = folder;
}

CZoltaDirectoryPath GetTempFolderOverride()
{
    std::lock_guard<std::mutex> lock(g_overrideMutex);
    // A copy by text: the string's counts are not shared across threads.
    return CZoltaDirectoryPath(g_tempFolderOverride.ToQString());
}
