#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "installation/CGalleryCategory.h"
#include "installation/CGalleryInstallationMetaObserver.h"
#include "foundation/CZoltaDirectoryPath.h"
#include "installation/RunJournal.h"
#include "foundation/CZoltaFilePath.h"
#include "foundation/FileLock.h"
#include "foundation/ZoltaResult.h"

#include <map>
#include <memory>
#include <vector>

// Open's result when another run holds the gallery.
inline constexpr HRESULT E_GALLERY_BUSY = static_cast<HRESULT>(0x800700AAu);

class CGalleryI18N;
class IGalleryInstallationObserver;
class IProxyObserver;
class PackagePrefetcher;
class PackageUnpacker;
class ReplacementBatch;
struct CGalleryManifest;

// The engine: binds an install directory to a data source, reads what the source offers into
// category records, and carries out the action set on each category, file by file. It knows
// nothing of any interface; everything it tells goes through one observer. Open and Run are
// meant for a worker thread; Cancel may come from any thread.
class CGalleryInstallation {
public:
    static const wchar_t* const GalleryCategoriesXml;  // "gallery_categories.xml"
    static const wchar_t* const LockFileName;          // in "Uninstall", held while the engine lives

    // Null when the download directory can't be made.
    static std::unique_ptr<CGalleryInstallation> Create();
    ~CGalleryInstallation();
    CGalleryInstallation(const CGalleryInstallation&) = delete;
    CGalleryInstallation& operator=(const CGalleryInstallation&) = delete;

    // Opens the install directory's manifest, fetches or copies the source's categories document
    // into "Uninstall" (a failed fetch is forgiven when an older copy is there, and without
    // `refresh` an existing copy is used as it is) and reads it. A second Open fails.
    [[nodiscard]] HRESULT Open(const CZoltaDirectoryPath& installDirectory, const CAtlString& source, bool refresh);
    // Carries out the actions. 0 when all went well, 1 when nothing was done or some files
    // failed beside successes, E_FAIL when only failures, E_ABORT when cancelled.
    [[nodiscard]] HRESULT Run();
    void Cancel() { m_cancel = true; }
    bool IsCancelled() const { return m_cancel; }

    // Keep fetched files in `directory` and install nothing.
    void SetDownloadOnly(const CZoltaDirectoryPath& directory);
    bool IsDownloadOnly() const { return m_downloadOnly; }
    void SetPrefetch(int prefetch) { m_prefetch = prefetch; }
    void SetObserver(IGalleryInstallationObserver* observer) { m_observer.SetTarget(observer); }
    void SetProxyObserver(IProxyObserver* observer) { m_observer.SetProxyObserver(observer); }

    int CategoryCount() const { return static_cast<int>(m_categories.size()); }
    CGalleryCategory* Category(int index) const;
    CGalleryCategory* CategoryById(const wchar_t* id) const;
    // Every category back to "not touched": result 1, not finished.
    void ClearResults();
    const std::vector<CAtlString>& GetRemovals() const { return m_removals; }

    const CAtlString& GetSource() const { return m_source; }
    CZoltaDirectoryPath GetDestination() const { return m_installDirectory; }
    const CZoltaDirectoryPath& GetDownloadDirectory() const { return m_downloadDirectory; }
    const CZoltaFilePath& GetCategoriesDocument() const { return m_categoriesDocument; }
    // Why Open failed or the space check refused, for the user; empty when nothing went wrong.
    const CAtlString& GetProblem() const { return m_problem; }

    // Whether the destination and the temporary folder have room for what the actions set would
    // write (the sizes the categories document declares, else the packages' own sizes, plus a
    // margin); otherwise `problem` names the folder, the space needed and the space free.
    bool CheckFreeSpace(CAtlString& problem) const;
    // With `all` (set before Open), Run removes every package that has a record, listed by the
    // source or not, and Open does without a categories document it can't read.
    void SetRemoveAllRecords(bool all) { m_removeAllRecords = all; }

    // 3: "Gallery Data Files"; 1: that folder beside the program; 2: the download endpoint;
    // otherwise the folder of 1 if it holds the categories document, else the endpoint.
    static CAtlString DefaultSource(int kind);
    // At least zero of [0-9a-zA-Z+-.] followed by "://"; null counts as a URL.
    static bool IsUrl(const wchar_t* source);
    // `name` for a URL path: UTF-8 bytes outside the safe set as "%XX", a backslash as "/".
    static CAtlString EncodeUrlName(const CAtlString& name);
    // A name that would leave the folder it is joined to (absolute, or with a ".." component).
    static bool IsHostileName(const CAtlString& name);

    // Whether the network may be used; cleared when a connection test fails.
    static void SetConnectionAvailable(bool available);
    static bool IsConnectionAvailable();

    // The local path of a file of the source: joined for a folder, fetched into the download
    // directory for a URL (`temporary` is then true on success).
    [[nodiscard]] HRESULT Locate(const CAtlString& name, CGalleryCategory* category, int overall, CZoltaFilePath& path,
                                 bool& temporary);

private:
    CGalleryInstallation() = default;

    [[nodiscard]] HRESULT ReadCategoriesDocument();
    void RemoveTemporaryManifests() const;
    // Whether a fetched or copied document can stand for the source: E_INVALIDARG when it does not
    // parse (a cut transfer), E_FAIL without "categories".
    [[nodiscard]] HRESULT CheckCategoriesDocument(const CZoltaFilePath& path);
    void RemoveUnlistedRecords(bool& anySucceeded);
    void LoadInstalledRecords(CGalleryInstalledRecords& records) const;
    CZoltaDirectoryPath UninstallFolder() const;
    void Report(eGalleryInstallationProgress stage, CGalleryCategory* category, const wchar_t* item, int percent,
                int overall);
    // Keeps the first reason given since the last Failed event; that event carries it out.
    void NoteFailureReason(const CAtlString& reason);

    // Run steps.
    int CountSteps(bool isUrl) const;
    void ApplyMandatoryRemovals();
    // The archives the run's installs will open from a local source, in their order; none when
    // unpacking them ahead could see a file that the run itself changes first.
    std::vector<CZoltaFilePath> ArchivesToUnpack() const;
    void Prefetch(int total, int& done, std::map<CAtlString, CZoltaFilePath>& fetched);
    void UninstallCategory(CGalleryCategory& category, int total, int& done, bool& anySucceeded);
    void InstallCategory(CGalleryCategory& category, bool isUrl, int total, int& done, bool usePrefetch,
                         const std::map<CAtlString, CZoltaFilePath>& fetched, bool& anyFailed, bool& anySucceeded);
    void SettleRecords(ReplacementBatch& records);
    [[nodiscard]] HRESULT InstallFile(const CZoltaFilePath& path, CGalleryCategory& category, const CAtlString& name,
                                      int overall);
    void ApplyStringPackages(bool usePrefetch, const std::map<CAtlString, CZoltaFilePath>& fetched);
    void ApplyCatalogues(const std::vector<std::shared_ptr<CGalleryI18N>>& catalogues);
    // Writes the installed manifest when it is dirty; S_FALSE when there is nothing to write.
    [[nodiscard]] HRESULT WriteManifest();

    CAtlString m_source;
    volatile bool m_cancel = false;
    bool m_downloadOnly = false;
    CGalleryManifest* m_manifest = nullptr;
    std::vector<std::unique_ptr<CGalleryCategory>> m_categories;
    std::vector<CAtlString> m_removals;
    CZoltaDirectoryPath m_downloadDirectory;
    bool m_ownsDownloadDirectory = true;
    CZoltaDirectoryPath m_temporaryDirectory;
    CZoltaFilePath m_categoriesDocument;
    CGalleryInstallationMetaObserver m_observer;
    int m_prefetch = 0;
    // The packages of this run coming ahead over several connections, for the length of Run's loop.
    PackagePrefetcher* m_ahead = nullptr;
    // The archives of this run from a local source, unpacked ahead, for the length of Run's loop.
    PackageUnpacker* m_unpacker = nullptr;
    bool m_manifestsChanged = false;
    bool m_recordsUnsettled = false;
    CZoltaDirectoryPath m_installDirectory;
    RunJournal m_journal;
    CAtlString m_failureReason;
    CAtlString m_problem;
    FileLock m_galleryLock;
    bool m_removeAllRecords = false;
    std::vector<CAtlString> m_released;  // files of records removed without a category
};

// The string packages of a category in the order to apply them: all its languages, or with
// `updatesOnly` those whose installed versions are behind, thinned to one per language and
// mapped onto the category's own keys; gives the package file names.
std::vector<CAtlString> ListLanguagePackages(const CGalleryCategory& category, bool updatesOnly);
