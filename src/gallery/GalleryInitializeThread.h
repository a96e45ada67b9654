#pragma once

#include "libZoltaAtl/CAtlString.h"
#include "foundation/CQtGalleryThreadBase.h"
#include "foundation/CZoltaDirectoryPath.h"
#include "foundation/CZoltaFilePath.h"
#include "gallery/IGalleryManifestOpenObserver.h"
#include "foundation/ZoltaResult.h"

#include <memory>
#include <vector>

struct CGalleryManifest;

// The opening of one gallery at start-up: a new manifest from `path`, or null when `thread` was
// cancelled, the manifest failed (logged) or there is none. The observer hears the parse.
std::shared_ptr<CGalleryManifest> OpenGalleryManifest(const CAtlString& path, const CQtGalleryThreadBase& thread,
                                                      IGalleryManifestOpenObserver* observer);

// Finds the galleries of this machine and opens their manifests into the library's
// process-wide state (GalleryLibrary.h). Cancellable: Cancel() is seen at every cancel point
// and, through the open observer, at the next end tag of a manifest being parsed.
class CGalleryInitializeThread : public CQtGalleryThreadBase,
                                 public CGalleryThreadBase,
                                 public IGalleryManifestOpenObserver {
public:
    CGalleryInitializeThread();
    ~CGalleryInitializeThread() override;

    // The steps of start-up; S_OK also when single galleries failed, E_ABORT after a cancel,
    // E_OUTOFMEMORY when the process-wide lists can't be made.
    [[nodiscard]] HRESULT Run() override;

    [[nodiscard]] HRESULT OnManifestProgress(float fraction) override;

    // A new manifest opened from `path`, or null (cancelled, failed, or no manifest there).
    std::shared_ptr<CGalleryManifest> OpenGallery(const CAtlString& path);

    // The existing folders named by the setting "Repositories" ("|"-separated).
    static void GetRepositories(std::vector<CZoltaDirectoryPath>& out);
    // Manifests of the subfolders of `folder`, "CVS" left out.
    static void ScanGalleryFolder(const CZoltaDirectoryPath& folder, std::vector<CZoltaFilePath>& out);

    // Where the My Content folder of versions before 9.2 is looked for; nowhere ("/dev/null")
    // unless a test points it at a folder of its own.
    void SetOldMyContentFolder(const CZoltaDirectoryPath& folder) { m_oldMyContent = folder; }

protected:
    int Work() override;

private:
    [[nodiscard]] HRESULT CreateMyContent(const CZoltaFilePath& path);
    void MigrateOldMyContent();
    void OpenRegisteredGalleries(bool userScope);
    void OpenRepositories();
    void AddGallery(const CAtlString& path);

    CZoltaDirectoryPath m_oldMyContent;
};
