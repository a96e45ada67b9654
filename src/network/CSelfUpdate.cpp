#include "network/CSelfUpdate.h"

#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/CZoltaFilePath.h"
#include "libZoltaAtl/ZoltaAssert.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <cstdlib>

#include <sys/stat.h>

namespace {

QByteArray ReadWhole(const CAtlString& path, bool* ok)
{
    QFile file(path.ToQString());
    *ok = file.open(QIODevice::ReadOnly);
    return *ok ? file.readAll() : QByteArray();
}

// A new folder below `base` that only this user may enter (mkdtemp makes it 0700).
CZoltaDirectoryPath MakePrivateFolder(const CAtlString& base)
{
    if (!QDir().mkpath(base.ToQString()))
        return CZoltaDirectoryPath();
    QByteArray pattern = ToFileSystemEncoding(base) + "/Curatool-update-XXXXXX";
    if (!::mkdtemp(pattern.data()))
        return CZoltaDirectoryPath();
    return CZoltaDirectoryPath(FromFileSystemEncoding(pattern.constData()));
}

bool MatchesSha256(const CAtlString& path, const CAtlString& expected)
{
    QFile file(path.ToQString());
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!hash.addData(&file))
        return false;
    return hash.result().toHex() == expected.ToQString().trimmed().toLower().toLatin1();
}

// Puts a temporary-file folder in place for as long as it lives.
class TempFolderOverride {
public:
    explicit TempFolderOverride(const CZoltaDirectoryPath& folder)
        : m_previous(GetTempFolderOverride())
    {
        SetTempFolderOverride(folder);
    }
    ~TempFolderOverride() { SetTempFolderOverride(m_previous); }

private:
    CZoltaDirectoryPath m_previous;
};

}  // namespace

CSelfUpdate::CSelfUpdate(const CAtlString& localFileName, std::shared_ptr<IDownloader> downloader)
    : m_localFile(localFileName),
      m_downloader(std::move(downloader))
{
    QDir programFolder(QCoreApplication::applicationDirPath());
    if (programFolder.cdUp())
        m_localFile = CAtlString(programFolder.filePath(QStringLiteral("share/") + localFileName.ToQString()));
}

CSelfUpdate::~CSelfUpdate() = default;

CAtlString CSelfUpdate::LocalFilePath()
{
    return m_localFile;
}

CAtlString CSelfUpdate::FetchRemoteFile()
{
    ZOLTA_ASSERT(m_downloader != nullptr);
    return m_downloader->Download(m_remoteVersionFileURL + m_remoteVersionFile).GetPath();
}

bool CSelfUpdate::ReadLocal()
{
    bool ok = false;
    const QByteArray text = ReadWhole(LocalFilePath(), &ok);
    return ok && ParseLocal(text);
}

bool CSelfUpdate::ReadRemote()
{
    const CAtlString path = FetchRemoteFile();
    if (path.IsEmpty())
        return false;
    bool ok = false;
    const QByteArray text = ReadWhole(path, &ok);
    CZoltaFilePath(path).Remove();
    return ok && ParseRemote(text);
}

bool CSelfUpdate::IsNewer() const
{
    return m_currentVersion < m_updateVersion;
}

bool CSelfUpdate::IsUpdateAvailable()
{
    return ReadLocal() && !m_noUpdates && ReadRemote() && IsNewer();
}

CAtlString CSelfUpdate::DownloadBaseFolder()
{
    return CAtlString(QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                      QStringLiteral("/zoltaworks"));
}

bool CSelfUpdate::DownloadUpdate()
{
    ZOLTA_ASSERT(m_downloader != nullptr);
    // Not the run's temporary folder: that goes when this program exits, and the installer
    // outlives it.
    const CZoltaDirectoryPath folder = MakePrivateFolder(DownloadBaseFolder());
    if (folder.IsEmpty())
        return false;
    CZoltaFilePath file;
    {
        const TempFolderOverride inFolder(folder);
        file = m_downloader->Download(m_installURL + m_installFile);
    }
    // Only a file inside the private folder is ever made executable.
    if (file.IsEmpty() || !(file.GetFolder() == folder)) {
        file.Remove();
        folder.Remove();
        return false;
    }
    // A publisher that names the installer's digest is held to it: other bytes never run.
    if ((!m_installSha256.IsEmpty() && !MatchesSha256(file.GetPath(), m_installSha256)) ||
        ::chmod(ToFileSystemEncoding(file.GetPath()).constData(), S_IRWXU) != 0)
    {
        file.Remove();
        folder.Remove();
        return false;
    }
    m_downloadedFile = file.GetPath();
    m_downloaded = true;
    return true;
}
