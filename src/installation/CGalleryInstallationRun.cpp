// The run of an installation: removals, fetches, installs, string packages, and the manifest.
#include "installation/CGalleryInstallation.h"

#include "gallery/CGalleryI18N.h"
#include "gallery/CGalleryManifest.h"
#include "gallery/CGalleryManifestIO.h"
#include "foundation/SafeReplace.h"
#include "installation/PackagePrefetcher.h"
#include "installation/PackageUnpacker.h"
#include "gallery/GalleryContentFiles.h"
#include "ziparchive/ZipHelpers.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include <sys/stat.h>
#include <sys/statvfs.h>

namespace {

// Records settled together: each one's sync is a journal commit of the file system otherwise.
constexpr int kRecordsPerBatch = 100;

int Percent(int done, int total)
{
    return static_cast<int>(std::lround(static_cast<double>(done) * 100.0 / static_cast<double>(total)));
}

bool IsInstallAction(int action)
{
    return action == eGalleryCategoryActionInstall || action == eGalleryCategoryActionInstallWithoutStrings ||
           action == eGalleryCategoryActionUpdate;
}

// The file names a category's action asks for: all of them, or for an update only those that
// are missing or out of date.
std::vector<CAtlString> FilesToInstall(const CGalleryCategory& category)
{
    std::vector<CAtlString> names;
    for (const CGalleryCategoryFile& file : category.GetFiles())
        if (category.GetAction() != eGalleryCategoryActionUpdate || !file.IsInstalled() || file.NeedsUpdate())
            names.push_back(file.GetName());
    return names;
}

// Holds a manifest object for one step and frees it, with any extraction, at the end.
class ScopedManifest {
public:
    // A failed creation leaves the pointer null, which Get() tells the caller.
    ScopedManifest() { static_cast<void>(CGalleryManifest::Create(&m_manifest)); }
    ~ScopedManifest() { Close(); }
    CGalleryManifest* Get() const { return m_manifest; }
    // After a merge the other side belongs to the target in part; only the shell stays here.
    void Close()
    {
        if (!m_manifest)
            return;
        CGalleryManifestIO::Close(*m_manifest);
        CGalleryManifest::Destroy(m_manifest);
    }

private:
    CGalleryManifest* m_manifest = nullptr;
};

// Several connections at once over a URL, unless the user settings ask for one; null then.
std::unique_ptr<PackagePrefetcher> FetchAhead(std::vector<PackagePrefetcher::Package> packages,
                                              IProxyObserver* proxyObserver, const volatile bool* cancel)
{
    if (packages.empty())
        return nullptr;
    const int connections = PackagePrefetcher::ConfiguredConnections();
    if (connections <= 1)
        return nullptr;
    return std::make_unique<PackagePrefetcher>(std::move(packages), connections, proxyObserver, cancel);
}

PackagePrefetcher::Package ToFetch(const CAtlString& name, const CAtlString& source, const CZoltaDirectoryPath& folder)
{
    return {name, source + L"/" + CGalleryInstallation::EncodeUrlName(name), folder.GetFile(name)};
}

// Lends a helper of the install loop (the prefetcher, the unpacker) to the installation's
// pointer while the loop runs.
template <class Helper>
class ScopedLend {
public:
    ScopedLend(std::unique_ptr<Helper> helper, Helper*& lent)
        : m_helper(std::move(helper)),
          m_lent(lent)
    {
        m_lent = m_helper.get();
    }
    ~ScopedLend() { Reset(); }
    void Reset()
    {
        m_lent = nullptr;
        m_helper.reset();
    }

private:
    std::unique_ptr<Helper> m_helper;
    Helper*& m_lent;
};

}  // namespace

int CGalleryInstallation::CountSteps(bool isUrl) const
{
    int total = 0;
    for (const auto& category : m_categories) {
        const int files = static_cast<int>(category->GetFiles().size());
        if (category->GetAction() == eGalleryCategoryActionUninstall)
            total += files;
        else if (category->GetAction() != eGalleryCategoryActionNone)
            total += isUrl ? 2 * files : files;
    }
    return total;
}

std::vector<CZoltaFilePath> CGalleryInstallation::ArchivesToUnpack() const
{
    std::vector<CZoltaFilePath> archives;
    if (m_downloadOnly || m_source.IsEmpty() || IsUrl(m_source))
        return archives;
    // A source inside the gallery, or a gallery inside the source, could have an archive
    // replaced by an earlier package's file.
    const CAtlString destination = m_installDirectory.GetPath();
    if (IsPathInside(m_source, destination) || IsPathInside(destination, m_source))
        return archives;
    const CZoltaDirectoryPath source(m_source);
    for (const auto& category : m_categories)
        if (IsInstallAction(category->GetAction()))
            for (const CAtlString& name : FilesToInstall(*category))
                if (!IsHostileName(name) && CGalleryManifestIO::IsArchiveName(name))
                    archives.push_back(source.GetFile(name));
    return archives;
}

void CGalleryInstallation::ApplyMandatoryRemovals()
{
    const CZoltaDirectoryPath uninstall = UninstallFolder();
    for (const CAtlString& id : m_removals) {
        const CZoltaFilePath record = CGalleryManifestIO::GetInstallRecordPath(uninstall, id);
        if (record.Exists()) {
            m_manifestsChanged = true;
            // A record that can't be read releases no files; it goes all the same.
            static_cast<void>(CGalleryManifestIO::CollectRecordFiles(*m_manifest, record, m_released));
            record.Remove();
        }
    }
}

void CGalleryInstallation::Prefetch(int total, int& done, std::map<CAtlString, CZoltaFilePath>& fetched)
{
    for (const auto& category : m_categories) {
        if (!IsInstallAction(category->GetAction()))
            continue;
        std::vector<CAtlString> names =
            ListLanguagePackages(*category, category->GetAction() == eGalleryCategoryActionUpdate);
        const std::vector<CAtlString> files = FilesToInstall(*category);
        names.insert(names.end(), files.begin(), files.end());
        for (const CAtlString& name : names) {
            if (m_cancel)
                return;
            ++done;
            const int overall = total > 0 ? Percent(done, total) : 0;
            Report(eGalleryInstallationProgressDownloading, category.get(), name, 0, overall);
            CZoltaFilePath path;
            bool temporary = false;
            if (SUCCEEDED(Locate(name, category.get(), overall, path, temporary))) {
                Report(eGalleryInstallationProgressDownloading, category.get(), name, 100, overall);
                fetched[name] = path;
            }
        }
    }
}

void CGalleryInstallation::UninstallCategory(CGalleryCategory& category, int total, int& done, bool& anySucceeded)
{
    std::vector<CZoltaFilePath> paths;
    for (const CGalleryCategoryFile& file : category.GetFiles())
        if (file.IsInstalled())
            paths.push_back(file.GetInstalledPath());
    anySucceeded = true;
    for (const CZoltaFilePath& path : paths) {
        if (m_cancel)
            break;
        ++done;
        const int overall = total > 0 ? Percent(done, total) : 0;
        Report(eGalleryInstallationProgressUninstalling, &category, path.GetPath(), 0, overall);
        HRESULT hr = E_ABORT;
        ScopedManifest record;
        if (!m_cancel)
            hr = record.Get() ? CGalleryManifestIO::Open(*record.Get(), path.GetPath(), nullptr, false) : E_OUTOFMEMORY;
        if (SUCCEEDED(hr)) {
            if (!m_cancel)  // the record was just opened; what it can't list is not released
                static_cast<void>(CGalleryManifestIO::CollectRecordFiles(*m_manifest, path, m_released));
            if (m_cancel)
                hr = E_ABORT;
            else if (path.Exists() && !path.Remove())
                hr = E_FAIL;
            else {
                // The merged manifest is rebuilt from the remaining records at the end.
                m_manifest->SetModified();
                m_manifestsChanged = true;
            }
        }
        if (FAILED(hr))
            anySucceeded = false;
        category.SetFinished(true);
        category.SetResult(hr);
        record.Close();
        if (FAILED(hr))
            Report(eGalleryInstallationProgressFailed, &category, path.GetPath(), 100, overall);
        else
            Report(eGalleryInstallationProgressUninstalling, &category, path.GetPath(), 100, overall);
    }
}

HRESULT CGalleryInstallation::InstallFile(const CZoltaFilePath& path, CGalleryCategory& category,
                                          const CAtlString& name, int overall)
{
    if (m_cancel)
        return E_ABORT;
    Report(eGalleryInstallationProgressInstalling, &category, name, 0, overall);
    ScopedManifest package;
    if (!package.Get())
        return E_OUTOFMEMORY;
    if (!path.Exists() && !CZoltaDirectoryPath(path.GetPath()).Exists())  // a package is a file or a folder
    {
        NoteFailureReason(L"Not found: " + path.GetPath());
        return E_FAIL;
    }
    ZipTakeLastError();  // an earlier archive's failure is not this package's
    std::optional<PackageUnpacker::Unpacked> unpacked;
    if (m_unpacker && path.Exists() && CGalleryManifestIO::IsArchiveName(path.GetPath()))
        unpacked = m_unpacker->Take(path);
    HRESULT hr =
        unpacked ? CGalleryManifestIO::OpenUnpacked(*package.Get(), unpacked->folder, unpacked->whole, nullptr, false)
                 : CGalleryManifestIO::Open(*package.Get(), path.GetPath(), nullptr, false);
    // An archive that does not unpack whole opens as an empty manifest; it fails here, with why.
    const std::string zipError = unpacked ? unpacked->error : ZipTakeLastError();
    if (!zipError.empty()) {
        NoteFailureReason(L"Damaged package: " + CAtlString::FromUtf8(zipError.c_str()));
        return E_FAIL;
    }
    if (FAILED(hr) || hr == S_FALSE)
        NoteFailureReason(L"Not a readable package");
    if (FAILED(hr)) {
        NoteFailureReason(CAtlString(L"the package could not be read or extracted whole"));
        return hr;
    }
    // A package that isn't there opens as an empty manifest; it installs nothing.
    if (hr == S_FALSE) {
        NoteFailureReason(CAtlString(L"the package is not there"));
        return E_FAIL;
    }
    if (m_cancel)
        return E_ABORT;
    const CZoltaFilePath record =
        CGalleryManifestIO::GetInstallRecordPath(UninstallFolder(), package.Get()->GetIdentifier());
    // The merge reads the package's record as it stands: one still waiting in the batch is settled first.
    ReplacementBatch* batch = ReplacementBatch::Open();
    if (batch && batch->Holds(record))
        SettleRecords(*batch);
    m_journal.Note(record);
    CAtlString reason;
    hr = CGalleryManifestIO::MergeFrom(*m_manifest, package.Get(), nullptr, &reason);
    if (FAILED(hr) && !reason.IsEmpty())
        NoteFailureReason(reason);
    if (hr == S_GALLERY_RECORD_REPLACED)
        m_manifestsChanged = true;
    if (SUCCEEDED(hr))
        m_manifest->SetModified();
    return hr;
}

void CGalleryInstallation::InstallCategory(CGalleryCategory& category, bool isUrl, int total, int& done,
                                           bool usePrefetch, const std::map<CAtlString, CZoltaFilePath>& fetched,
                                           bool& anyFailed, bool& anySucceeded)
{
    // A record waits beside its place until the batch is settled; a run killed before then
    // leaves it there, and the journal, which noted it, has the next open release its files.
    // Without a journal each record is settled on its own.
    std::optional<ReplacementBatch> records;
    if (m_journal.IsOpen())
        records.emplace();
    int waiting = 0;
    for (const CAtlString& name : FilesToInstall(category)) {
        if (m_cancel)
            break;
        if (records && ++waiting > kRecordsPerBatch) {
            SettleRecords(*records);
            waiting = 1;
        }
        ++done;
        int overall = total > 0 ? Percent(done, total) : 0;
        Report(eGalleryInstallationProgressDownloading, &category, name, 0, overall);

        CZoltaFilePath path;
        bool temporary = false;
        HRESULT hr = S_OK;
        if (!usePrefetch) {
            if (m_ahead && m_ahead->IsNext(name)) {
                // Fetched ahead, or still on its way: its events come now, as its own fetch would send them.
                Report(eGalleryInstallationProgressDownloading, &category, name, 0, overall);
                CAtlString reason;
                hr = m_ahead->Take(name, path, reason,
                                   [this](unsigned int got, unsigned int size) { m_observer.ReadProgress(got, size); });
                if (FAILED(hr))
                    NoteFailureReason(reason + L" (" + m_source + L"/" + EncodeUrlName(name) + L")");
                Report(eGalleryInstallationProgressDownloading, &category, name, 100, overall);
                temporary = SUCCEEDED(hr);
            } else
                hr = Locate(name, &category, overall, path, temporary);
            if (isUrl) {
                ++done;
                overall = total > 0 ? Percent(done, total) : 0;
            }
        } else {
            const auto entry = fetched.find(name);
            temporary = true;
            if (entry == fetched.end() || !entry->second.Exists())
                hr = E_FAIL;
            else
                path = entry->second;
        }
        if (SUCCEEDED(hr))
            Report(eGalleryInstallationProgressDownloading, &category, name, 100, overall);

        if (m_downloadOnly)
            temporary = false;
        else if (SUCCEEDED(hr))
            hr = InstallFile(path, category, name, overall);

        category.SetResult(hr);
        category.SetFinished(true);
        if (temporary)
            path.Remove();

        if (FAILED(hr)) {
            anyFailed = true;
            Report(eGalleryInstallationProgressFailed, &category, name, 100, overall);
        } else {
            anySucceeded = true;
            Report(eGalleryInstallationProgressInstalling, &category, name, 100, overall);
        }
    }
    if (records)
        SettleRecords(*records);
}

void CGalleryInstallation::SettleRecords(ReplacementBatch& records)
{
    // A record that could not be put in place keeps the journal, so that the next open releases its files.
    if (!records.Commit())
        m_recordsUnsettled = true;
}

void CGalleryInstallation::ApplyStringPackages(bool usePrefetch, const std::map<CAtlString, CZoltaFilePath>& fetched)
{
    std::vector<std::shared_ptr<CGalleryI18N>> catalogues;
    std::vector<PackagePrefetcher::Package> toFetch;
    for (const auto& category : m_categories) {
        const int action = category->GetAction();
        if (!usePrefetch && IsUrl(m_source) &&
            (action == eGalleryCategoryActionInstall || action == eGalleryCategoryActionUpdate))
            for (const CAtlString& name : ListLanguagePackages(*category, action == eGalleryCategoryActionUpdate))
                toFetch.push_back(ToFetch(name, m_source, m_downloadDirectory));
    }
    const std::unique_ptr<PackagePrefetcher> ahead =
        FetchAhead(std::move(toFetch), m_observer.GetProxyObserver(), &m_cancel);
    for (const auto& category : m_categories) {
        const int action = category->GetAction();
        if (action != eGalleryCategoryActionInstall && action != eGalleryCategoryActionUpdate)
            continue;
        const std::vector<CAtlString> packages =
            ListLanguagePackages(*category, category->GetAction() == eGalleryCategoryActionUpdate);
        if (!packages.empty() && !m_downloadOnly)
            m_manifestsChanged = true;
        for (const CAtlString& name : packages) {
            if (m_cancel)
                break;
            CZoltaFilePath path;
            bool temporary = false;
            HRESULT hr = S_OK;
            if (!usePrefetch) {
                if (IsUrl(m_source)) {
                    // No progress for string packages: fetch quietly.
                    if (IsHostileName(name))
                        continue;
                    CAtlString reason;
                    if (ahead && ahead->IsNext(name))
                        hr = ahead->Take(name, path, reason, {});
                    else {
                        path = m_downloadDirectory.GetFile(name);
                        path.GetFolder().Create();
                        hr = FetchUrl(m_source + L"/" + EncodeUrlName(name), path, m_observer.GetProxyObserver(),
                                      nullptr);
                    }
                    temporary = SUCCEEDED(hr) && !m_downloadOnly;
                } else
                    hr = Locate(name, category.get(), 0, path, temporary);
            } else {
                const auto entry = fetched.find(name);
                if (entry == fetched.end() || !entry->second.Exists())
                    continue;
                path = entry->second;
                temporary = true;
            }
            if (m_downloadOnly)
                continue;  // a local source keeps its packages
            if (SUCCEEDED(hr)) {
                auto catalogue = std::make_shared<CGalleryI18N>();
                if (SUCCEEDED(catalogue->Load(path.GetPath())))
                    catalogues.push_back(catalogue);
            }
            if (temporary)
                path.Remove();
        }
    }
    if (!catalogues.empty())
        ApplyCatalogues(catalogues);
}

void CGalleryInstallation::ApplyCatalogues(const std::vector<std::shared_ptr<CGalleryI18N>>& catalogues)
{
    std::vector<CZoltaFilePath> records;
    UninstallFolder().ListFiles(L"imsmanifest*.xml", records);
    for (const CZoltaFilePath& path : records) {
        if (m_cancel)
            break;
        ScopedManifest record;
        if (!record.Get() || FAILED(CGalleryManifestIO::Open(*record.Get(), path.GetPath(), nullptr, false)))
            continue;
        bool changed = false;
        for (const auto& catalogue : catalogues) {
            const HRESULT hr = catalogue->Apply(*record.Get());
            if (FAILED(hr))
                break;
            if (hr == S_OK)
                changed = true;
        }
        // String packages are best effort: a record that can't be written keeps its old texts.
        if (changed)
            static_cast<void>(CGalleryManifestIO::Save(*record.Get(), path.GetPath(), false));
    }
}

HRESULT CGalleryInstallation::WriteManifest()
{
    if (!m_manifest || !m_manifest->IsModified())
        return S_FALSE;
    const HRESULT result = CGalleryManifestIO::Save(*m_manifest, m_manifest->GetPath(), true);
    // A manifest that could not be written stays dirty, and the journal stays for the next open.
    if (SUCCEEDED(result))
        m_manifest->SetModified(false);
    return result;
}

void CGalleryInstallation::RemoveUnlistedRecords(bool& anySucceeded)
{
    // Packages that the source no longer lists still have records: they go as well, files and all.
    std::vector<CZoltaFilePath> records;
    UninstallFolder().ListFiles(L"imsmanifest*.xml", records);
    for (const CZoltaFilePath& record : records) {
        if (m_cancel)
            break;
        // A record that can't be read releases no files; it goes all the same.
        static_cast<void>(CGalleryManifestIO::CollectRecordFiles(*m_manifest, record, m_released));
        if (record.Remove()) {
            m_manifestsChanged = true;
            anySucceeded = true;
        }
    }
}

namespace {

// Bytes free for this user in the file system holding `folder` (or its nearest existing
// parent), and that file system's id; -1 when it can't be told.
long long FreeBytes(const CZoltaDirectoryPath& folder, unsigned long long& device)
{
    QString path = folder.ToQString();
    struct stat status {};
    while (!path.isEmpty() && ::stat(path.toUtf8().constData(), &status) != 0) {
        const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
        path = slash > 0 ? path.left(slash)
                         : (slash == 0 && path != QStringLiteral("/") ? QStringLiteral("/") : QString());
    }
    struct statvfs space {};
    if (path.isEmpty() || ::statvfs(path.toUtf8().constData(), &space) != 0)
        return -1;
    device = static_cast<unsigned long long>(status.st_dev);
    return static_cast<long long>(space.f_bavail) * static_cast<long long>(space.f_frsize);
}

CAtlString Megabytes(long long bytes)
{
    return CAtlString(QString::number(static_cast<double>(bytes) / (1024.0 * 1024.0), 'f', 1) + QStringLiteral(" MB"));
}

}  // namespace

bool CGalleryInstallation::CheckFreeSpace(CAtlString& problem) const
{
    const bool isUrl = IsUrl(m_source);
    long long destinationNeed = 0;
    long long temporaryNeed = 0;
    for (const auto& category : m_categories) {
        if (!IsInstallAction(category->GetAction()))
            continue;
        const std::vector<CAtlString> names = FilesToInstall(*category);
        if (names.empty())
            continue;
        long long packed = category->GetSize() > 0 ? category->GetSize() : 0;
        long long unpacked = category->GetDiskSize() > 0 ? category->GetDiskSize() : 0;
        if (!isUrl && packed == 0)
            for (const CAtlString& name : names)
                if (!IsHostileName(name))
                    packed += std::max(0LL, GetFileSize(CZoltaDirectoryPath(m_source).GetFile(name)));
        if (unpacked == 0)
            unpacked = packed;
        const long long files = static_cast<long long>(category->GetFiles().size());
        const long long share = files > 0 ? static_cast<long long>(names.size()) : 1;
        // Only what the action asks for; the declared sizes are of the whole category.
        packed = files > 0 ? packed * share / files : packed;
        unpacked = files > 0 ? unpacked * share / files : unpacked;
        if (m_downloadOnly)
            destinationNeed += packed;
        else
            destinationNeed += unpacked;
        // One package at a time is fetched and unpacked in the temporary folder.
        const long long perPackage = (unpacked + (isUrl ? packed : 0)) / static_cast<long long>(names.size());
        temporaryNeed = std::max(temporaryNeed, m_downloadOnly ? 0 : perPackage);
    }
    if (destinationNeed == 0 && temporaryNeed == 0)
        return true;
    const long long margin = 1024 * 1024;
    destinationNeed += destinationNeed / 20 + margin;
    temporaryNeed += temporaryNeed / 20 + margin;

    unsigned long long destinationDevice = 0;
    unsigned long long temporaryDevice = 1;
    const long long destinationFree =
        FreeBytes(m_downloadOnly ? m_downloadDirectory : m_installDirectory, destinationDevice);
    const long long temporaryFree = FreeBytes(m_temporaryDirectory, temporaryDevice);
    if (destinationFree >= 0 && temporaryFree >= 0 && destinationDevice == temporaryDevice)
        destinationNeed += temporaryNeed;  // one file system holds both
    const CZoltaDirectoryPath& destination = m_downloadOnly ? m_downloadDirectory : m_installDirectory;
    if (destinationFree >= 0 && destinationFree < destinationNeed) {
        problem = CAtlString(L"Not enough free space in ") + destination.GetPath() + L": " +
                  Megabytes(destinationNeed) + L" needed, " + Megabytes(destinationFree) + L" free.";
        return false;
    }
    if (temporaryFree >= 0 && temporaryFree < temporaryNeed && destinationDevice != temporaryDevice) {
        problem = CAtlString(L"Not enough free space in ") + m_temporaryDirectory.GetPath() + L": " +
                  Megabytes(temporaryNeed) + L" needed, " + Megabytes(temporaryFree) + L" free.";
        return false;
    }
    return true;
}

HRESULT CGalleryInstallation::Run()
{
    if (!m_manifest)
        return E_FAIL;
    const bool isUrl = IsUrl(m_source);
    const int total = CountSteps(isUrl);
    int done = 0;
    if (!m_downloadOnly) {
        // Without a journal the run still runs; only a crash in it could not be completed later.
        static_cast<void>(m_journal.Begin(UninstallFolder()));
        ApplyMandatoryRemovals();
    }

    std::map<CAtlString, CZoltaFilePath> fetched;
    bool usePrefetch = false;
    if (isUrl && m_prefetch == 1 && !m_cancel) {
        Prefetch(total, done, fetched);
        usePrefetch = true;
    }
    std::vector<PackagePrefetcher::Package> packages;
    for (const auto& category : m_categories)
        if (isUrl && !usePrefetch && IsInstallAction(category->GetAction()))
            for (const CAtlString& name : FilesToInstall(*category))
                packages.push_back(ToFetch(name, m_source, m_downloadDirectory));
    ScopedLend<PackagePrefetcher> ahead(FetchAhead(std::move(packages), m_observer.GetProxyObserver(), &m_cancel),
                                        m_ahead);
    const std::vector<CZoltaFilePath> archives = ArchivesToUnpack();
    ScopedLend<PackageUnpacker> unpacker(archives.empty() ? nullptr : std::make_unique<PackageUnpacker>(archives),
                                         m_unpacker);

    bool anyFailed = false;
    bool anySucceeded = false;
    for (const auto& category : m_categories) {
        if (m_cancel)
            break;
        const int action = category->GetAction();
        if (action == eGalleryCategoryActionNone) {
            category->SetResult(S_FALSE);
            category->SetFinished(true);
        } else if (action == eGalleryCategoryActionUninstall) {
            if (!m_downloadOnly)
                UninstallCategory(*category, total, done, anySucceeded);
        } else if (IsInstallAction(action))
            InstallCategory(*category, isUrl, total, done, usePrefetch, fetched, anyFailed, anySucceeded);
    }
    ahead.Reset();
    unpacker.Reset();

    if (m_removeAllRecords && !m_cancel && !m_downloadOnly)
        RemoveUnlistedRecords(anySucceeded);
    if (!m_cancel)
        ApplyStringPackages(usePrefetch, fetched);

    if (m_cancel) {
        if (SUCCEEDED(WriteManifest()) && !m_recordsUnsettled)
            m_journal.End();
        for (const auto& category : m_categories) {
            if (!category->IsFinished() && category->GetAction() != eGalleryCategoryActionNone && !m_cancel) {
                category->SetResult(E_ABORT);
                category->SetFinished(true);
            }
        }
        return E_ABORT;
    }

    if (m_manifestsChanged && !m_downloadOnly) {
        // A rebuild that fails keeps the journal: the next open tries again.
        if (SUCCEEDED(CGalleryManifestIO::RebuildFromInstalled(*m_manifest, m_released)) && !m_recordsUnsettled)
            m_journal.End();
        m_manifest->SetModified(false);
    } else if (!m_downloadOnly) {
        const HRESULT written = WriteManifest();
        if (FAILED(written))
            return written;
        if (!m_recordsUnsettled)
            m_journal.End();
    }

    if (anyFailed)
        return anySucceeded ? S_FALSE : E_FAIL;
    return anySucceeded ? S_OK : S_FALSE;
}
