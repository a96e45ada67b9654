#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "foundation/CZoltaDirectoryPath.h"

#include <memory>
#include <vector>

class CConfiguration;
class CGalleryInstallation;
class IGalleryInstallationObserver;
class IInstallationObserver;
class IProxyObserver;

// Stands between the work flows and the engine: finds the source, opens an installation, sets
// the categories' actions and runs the long steps on a worker thread while this (main) thread
// keeps its events flowing. Lifecycle events go to the observers on this thread.
class CInstallationController {
public:
    enum eEvent {
        eOpening = 0,
        eOpened = 1,
        eOpenFailed = 2,
        eRunning = 3,
        eRunComplete = 4,
        eRunCanceled = 5,
        eRunFailed = 6,
    };

    explicit CInstallationController(std::shared_ptr<CConfiguration> configuration,
                                     IProxyObserver* proxyObserver = nullptr);
    virtual ~CInstallationController();
    CInstallationController(const CInstallationController&) = delete;
    CInstallationController& operator=(const CInstallationController&) = delete;

    void SetProxyObserver(IProxyObserver* proxyObserver) { m_proxyObserver = proxyObserver; }
    void AddObserver(IInstallationObserver* observer) { m_observers.push_back(observer); }
    // The open engine, or null.
    CGalleryInstallation* GetInstallation() const { return m_installation.get(); }
    std::shared_ptr<CConfiguration> GetConfiguration() const { return m_configuration; }

    void Close();
    bool HasUpdates() const;
    void SelectUpdates();
    void ClearSelection();
    bool NoneInstalled() const;
    bool HasChanges() const;

    CZoltaDirectoryPath GetDestination() const;
    CAtlString GetSource() const { return m_source; }
    void SetSource(const CAtlString& source) { m_source = source; }
    bool IsLocalSource() const;
    CAtlString GetGalleryId() const;
    CAtlString GetGalleryUrl() const;
    CAtlString GetGalleryFolder() const;
    bool HasLocalGalleryData() const;
    bool HasInstalledData() const;

    // The folder holding gallery_categories.xml at `directory`, below "Gallery Data Files", or
    // below "<folderName>/Gallery Data Files"; empty when none does.
    static CZoltaDirectoryPath LocateGalleryData(const CZoltaDirectoryPath& directory, const CAtlString& folderName);
    // Takes the data found at `path` as the source if its categories document belongs to this
    // gallery; otherwise the gallery's URL becomes the source and the result is false.
    bool FindSource(const CAtlString& path);
    // Whether the categories document can be fetched from `url`.
    bool TestUrl(const CAtlString& url, CAtlString* reason = nullptr);
    static void SetConnectionAvailable(bool available);

    // The window-based open: destination and source as they stand.
    [[nodiscard]] bool Open(IGalleryInstallationObserver* observer);
    [[nodiscard]] bool OpenInstallation(const CZoltaDirectoryPath& destination, const CAtlString& source,
                                        IGalleryInstallationObserver* observer, bool downloadOnly);
    // Runs the actions as set. A cancel counts as success.
    [[nodiscard]] bool Run(IGalleryInstallationObserver* observer);
    // Tells OnRunning, clears the results of an earlier run, runs.
    [[nodiscard]] bool RunSelection(IGalleryInstallationObserver* observer);
    // Runs the updates of installed categories only, leaving the chosen actions as they were.
    void ApplyUpdatesOnly(IGalleryInstallationObserver* observer);

    bool InstallAll(IGalleryInstallationObserver* observer);
    bool InstallSome(const std::vector<CAtlString>& ids, IGalleryInstallationObserver* observer);
    bool DownloadAll(IGalleryInstallationObserver* observer);
    bool DownloadSome(const std::vector<CAtlString>& ids, IGalleryInstallationObserver* observer);
    CZoltaDirectoryPath UninstallAll(IGalleryInstallationObserver* observer);

    // The gallery id a category id carries: "{guid}" at its start, or all before its last ".".
    static CAtlString GalleryIdFromCategoryId(const CAtlString& categoryId);

    // Why the last open or batch stopped before changing anything (another run holds the gallery,
    // its state can't be read, too little space), for the user; empty otherwise.
    const CAtlString& GetProblem() const { return m_problem; }
    // Whether the open installation's chosen actions fit on the disks; otherwise `problem` says
    // which folder, how much is needed and how much is free. True when nothing is open.
    bool CheckFreeSpace(CAtlString& problem) const;
    // A destination must be missing, empty, or a gallery already (it has "Uninstall" or
    // "imsmanifest.xml"): a folder of other files is refused before anything is written, since
    // the user's own files have no place in a gallery. `problem` then holds the line to show.
    static bool CheckDestination(const CZoltaDirectoryPath& destination, CAtlString& problem);
    // Whether `destination` holds an installed gallery (records or a merged manifest).
    static bool HoldsInstalledGallery(const CZoltaDirectoryPath& destination);

private:
    void Notify(eEvent event);
    void SelectIds(const std::vector<CAtlString>& ids);
    [[nodiscard]] bool RunBatch(bool downloadOnly, const std::vector<CAtlString>* ids,
                                IGalleryInstallationObserver* observer);
    bool BelongsToGallery(const CZoltaFilePath& document) const;

    std::unique_ptr<CGalleryInstallation> m_installation;
    IProxyObserver* m_proxyObserver;
    std::vector<IInstallationObserver*> m_observers;
    CAtlString m_source;
    std::shared_ptr<CConfiguration> m_configuration;
    CAtlString m_problem;
    bool m_openForRemoval = false;
};
