#pragma once

#include <memory>

class CConfiguration;
class CInstallationController;
class GalleryDownloader;
class InstalledXmlWriter;
class ProxyHandler;
struct CCmdLineContext;

// What the shared set-up of a mode builds: the engine's controller with its first observer,
// the downloader and the proxy, all over one configuration. Passed around by value.
struct CWorkFlowEnvironment {
    const CCmdLineContext* context = nullptr;  // not owned
    std::shared_ptr<CConfiguration> configuration;
    std::shared_ptr<CInstallationController> controller;
    std::shared_ptr<InstalledXmlWriter> installedWriter;
    std::shared_ptr<GalleryDownloader> downloader;
    std::shared_ptr<ProxyHandler> proxy;

    CWorkFlowEnvironment() = default;
    CWorkFlowEnvironment(const CWorkFlowEnvironment&) = default;
    CWorkFlowEnvironment& operator=(const CWorkFlowEnvironment&) = default;
    // The controller holds plain pointers to the writer and the proxy, so it goes first.
    ~CWorkFlowEnvironment() { controller.reset(); }
};
