#pragma once

#include "network/CUpdateXmlReader.h"
#include "network/IDownloader.h"

#include <memory>

// One check for a newer version of the program, and the fetch of its installer. Nothing is
// reported from here: a failure anywhere means "no update" to the caller.
class CSelfUpdate : public CUpdateXmlReader {
public:
    // The local document is `localFileName` in the "share" folder beside the program's folder:
    // the program in <prefix>/bin reads <prefix>/share/<localFileName>.
    CSelfUpdate(const CAtlString& localFileName, std::shared_ptr<IDownloader> downloader);
    ~CSelfUpdate() override;

    CAtlString LocalFilePath() override;
    // The remote document through the downloader (and so through the run's proxy).
    CAtlString FetchRemoteFile() override;

    [[nodiscard]] bool ReadLocal();
    [[nodiscard]] bool ReadRemote();
    // The installed version is older than the published one.
    bool IsNewer() const;
    // The decision in its order: the local document is read, updates are not switched off, the
    // remote document is read, and it offers a newer version. The remote one is not fetched
    // unless the local one allows it.
    bool IsUpdateAvailable();

    // Fetches the installer into a folder of its own that only this user can enter, checks it
    // against UpdateInstallSHA256 when the document gives one (a mismatch deletes it), and only
    // then makes it executable. The file is left for the installer to deal with.
    [[nodiscard]] bool DownloadUpdate();

    bool IsDownloaded() const { return m_downloaded; }
    const CAtlString& GetDownloadedFile() const { return m_downloadedFile; }

    // Where the private folders of downloaded installers are made.
    static CAtlString DownloadBaseFolder();

private:
    bool m_downloaded = false;
    CAtlString m_downloadedFile;
    CAtlString m_localFile;
    std::shared_ptr<IDownloader> m_downloader;
};
