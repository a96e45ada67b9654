#pragma once

#include "libZoltaAtl/CAtlString.h"

#include <QStringList>

#include <vector>

// The parsed command line, handed by constant reference to every work flow.
struct CCmdLineContext {
    CAtlString applicationPath;               // the running program, as QCoreApplication sees it
    CAtlString source;                        // -source: a local path or a URL
    CAtlString destination;                   // -destination
    CAtlString configurationPath;             // absolute form of -configuration
    CAtlString locale;                        // -locale; kept, read by nothing
    CAtlString proxy;                         // -proxy, "proxyhost:port"
    CAtlString username;                      // -username
    CAtlString password;                      // -password
    std::vector<CAtlString> categoryAliases;  // one per -c, in order, duplicates kept
    std::vector<CAtlString> errors;           // parse complaints in order of discovery
    std::vector<CAtlString> defaultParams;    // positional arguments
    std::vector<CAtlString> openedFiles;      // files handed over by the desktop; none on Linux
    bool remote = false;                      // -remote
    bool allowDownload = false;               // -allowdownload
    bool verbose = false;                     // -verbose
    bool authorized = false;                  // -authorized: already relaunched with privileges
    bool overrideProxy = false;               // -overrideproxy
    QStringList rawArguments;                 // argv[1..] as given; replaced after a self-update restart
};
