#pragma once

#include "foundation/CZoltaFilePath.h"

#include "libZoltaAtl/CAtlString.h"

// One URL to one local file, for the parts of the program that know nothing of installation.
class IDownloader {
public:
    virtual ~IDownloader() = default;

    // Nothing to tell; kept for implementations that want a hook before their first fetch.
    virtual void Notify() {}
    // The local file that now holds the URL's content; empty on failure.
    virtual CZoltaFilePath Download(const CAtlString& url) = 0;
};
