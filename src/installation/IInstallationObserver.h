#pragma once

class CGalleryInstallation;

// The lifecycle of an installation's open and run, told on the controller's (main) thread after
// each wait. `installation` may be null.
class IInstallationObserver {
public:
    virtual ~IInstallationObserver() = default;
    virtual void OnOpening(CGalleryInstallation* installation) = 0;
    virtual void OnOpened(CGalleryInstallation* installation) = 0;
    virtual void OnOpenFailed(CGalleryInstallation* installation) = 0;
    virtual void OnRunning(CGalleryInstallation* installation) = 0;
    virtual void OnRunComplete(CGalleryInstallation* installation) = 0;
    virtual void OnRunCanceled(CGalleryInstallation* installation) = 0;
    virtual void OnRunFailed(CGalleryInstallation* installation) = 0;
};
