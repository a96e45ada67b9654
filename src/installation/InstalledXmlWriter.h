#pragma once

#include "installation/IInstallationObserver.h"

#include <memory>

class CConfiguration;

// Keeps "Uninstall/updateinfo.xml" of the gallery: which categories are there at which version.
// Registered as the controller's first observer, it rewrites the file after every open and
// every run, and deletes it when nothing counts as present.
class InstalledXmlWriter : public IInstallationObserver {
public:
    InstalledXmlWriter() = default;
    explicit InstalledXmlWriter(std::shared_ptr<CConfiguration> configuration)
        : m_configuration(std::move(configuration))
    {}

    void SetConfiguration(std::shared_ptr<CConfiguration> configuration) { m_configuration = std::move(configuration); }

    void OnOpening(CGalleryInstallation*) override {}
    void OnOpened(CGalleryInstallation* installation) override { Write(installation); }
    void OnOpenFailed(CGalleryInstallation*) override {}
    void OnRunning(CGalleryInstallation*) override {}
    void OnRunComplete(CGalleryInstallation* installation) override { Write(installation); }
    void OnRunCanceled(CGalleryInstallation* installation) override { Write(installation); }
    void OnRunFailed(CGalleryInstallation* installation) override { Write(installation); }

    // Nothing for a null installation; never throws.
    void Write(CGalleryInstallation* installation);

private:
    std::shared_ptr<CConfiguration> m_configuration;
};
