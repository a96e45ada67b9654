#pragma once

// Progress of the installation engine, as its observers see it.

class CGalleryCategory;

enum eGalleryInstallationProgress {
    eGalleryInstallationProgressNone = 0,
    eGalleryInstallationProgressDownloading = 1,
    eGalleryInstallationProgressInstalling = 2,
    eGalleryInstallationProgressUninstalling = 3,
    eGalleryInstallationProgressReading = 4,
    eGalleryInstallationProgressCanceled = 5,
    eGalleryInstallationProgressComplete = 6,
    eGalleryInstallationProgressFailed = 7,
};

class IGalleryInstallationObserver {
public:
    virtual ~IGalleryInstallationObserver() = default;
    // Called on the engine's worker thread. `category` may be null; `percent` (of this item) and
    // `overall` (of the whole run) run from 0 to 100.
    virtual void Progress(eGalleryInstallationProgress stage, CGalleryCategory* category, const wchar_t* item,
                          int percent, int overall) = 0;
    // Why `item` failed, told just before its Failed event when the engine knows the reason
    // (a refused name, a damaged archive, a full disk, an HTTP status). Plain words, English.
    virtual void FailureReason(CGalleryCategory* category, const wchar_t* item, const wchar_t* reason) {}
};
