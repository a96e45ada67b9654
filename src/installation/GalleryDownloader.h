#pragma once

#include "network/FetchUrl.h"
#include "network/IDownloader.h"
#include "network/IProxyObserver.h"

// The downloader handed to the parts of the program that know nothing of installation (the
// self-update): each URL lands in a temporary file of its own, through the run's proxy.
class GalleryDownloader : public IDownloader {
public:
    explicit GalleryDownloader(IProxyObserver* proxyObserver = nullptr)
        : m_proxyObserver(proxyObserver)
    {}

    void SetProxyObserver(IProxyObserver* proxyObserver) { m_proxyObserver = proxyObserver; }
    IProxyObserver* GetProxyObserver() const { return m_proxyObserver; }

    // A new "SCVTemp" file with the URL's extension; empty on failure.
    CZoltaFilePath Download(const CAtlString& url) override { return FetchToTempFile(url, m_proxyObserver); }

private:
    IProxyObserver* m_proxyObserver;
};
